// Fast forms of the deinterlacers that look at one column only: the triangle and the median with a threshold.
#ifndef VEKVC_PROCESSING_DEINTERLACE_FIELD_SIMD_H
#define VEKVC_PROCESSING_DEINTERLACE_FIELD_SIMD_H

#include "processing/deinterlace_rows.h"
#include "processing/filter_rows_simd.h"

namespace vekvc::simd {

// Copies the rows of the kept parity and calls rebuild(y) for the others.
template <class Rebuild>
void rebuildField(Block<Vek8u> kept, MutableBlock<Vek8u> dst, VekiSize roiSize, Vek32s field, Rebuild&& rebuild) {
    for (Vek32s y = 0; y < roiSize.height; ++y)
        if ((y & 1) != field)
            rebuild(y);
        else if (dst.at(0, y) != kept.at(0, y))
            std::memcpy(dst.at(0, y), kept.at(0, y), static_cast<std::size_t>(roiSize.width));
}

inline void deinterlaceTriangle(Block<Vek8u> src, MutableBlock<Vek8u> dst, VekiSize roiSize, Vek32s field) {
    rebuildField(src, dst, roiSize, field, [&](Vek32s y) {
        const NeighbourRows rows(y, roiSize.height);
        const Vek8u *a = src.at(0, rows.above), *b = src.at(0, rows.below);
        Vek8u* to = dst.at(0, y);
        forVectors(0, roiSize.width, [&](Vek32s x, auto samples) {
            samples.store(to + x, average(samples.load(a + x), samples.load(b + x)));
        });
    });
}

// (a + 2 s + b + 2) >> 2: what averageDown() cuts off of a + b = 2 m + 1 makes no difference, as 2 (s + m) + 3 is odd.
[[gnu::always_inline]] inline RowU8 triangle(RowU8 a, RowU8 s, RowU8 b) { return average(averageDown(a, b), s); }

inline void mixFields(Block<Vek8u> src, MutableBlock<Vek8u> dst, VekiSize roiSize) {
    for (Vek32s y = 0; y < roiSize.height; ++y) {
        const NeighbourRows rows(y, roiSize.height);
        const Vek8u *a = src.at(0, rows.above), *s = src.at(0, y), *b = src.at(0, rows.below);
        Vek8u* to = dst.at(0, y);
        forVectors(0, roiSize.width, [&](Vek32s x, auto samples) {
            samples.store(to + x, triangle(samples.load(a + x), samples.load(s + x), samples.load(b + x)));
        });
    }
}

// What is left of an excursion e: min(e, T - (e - T)) with differences that stop at 0; below T this is e, from there on
// 2 T - e.
inline void deinterlaceMedianThreshold(Block<Vek8u> src, MutableBlock<Vek8u> dst, VekiSize roiSize, Vek32s field,
                                       Vek32s threshold) {
    const auto t = splat<RowU8>(threshold);
    const auto rest = [&](RowU8 e) __attribute__((always_inline)) { return min(e, subSat(t, subSat(e, t))); };
    rebuildField(src, dst, roiSize, field, [&](Vek32s y) {
        const NeighbourRows rows(y, roiSize.height);
        const Vek8u *above = src.at(0, rows.above), *here = src.at(0, y), *below = src.at(0, rows.below);
        Vek8u* to = dst.at(0, y);
        forVectors(0, roiSize.width, [&](Vek32s x, auto samples) {
            const RowU8 a = samples.load(above + x), b = samples.load(below + x), v = samples.load(here + x);
            const RowU8 median = max(min(v, max(a, b)), min(a, b));
            samples.store(to + x, median + rest(subSat(v, median)) - rest(subSat(median, v)));
        });
    });
}

}  // namespace vekvc::simd

#endif
