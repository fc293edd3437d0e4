// Fast form: 16 or 32 pixels at a time; the last pixel of an odd row by the definition.
#ifndef VEKVC_PROCESSING_CONVERT_LAYOUT_SIMD_H
#define VEKVC_PROCESSING_CONVERT_LAYOUT_SIMD_H

#include "processing/convert_layout_plain.h"
#include "processing/convert_rows_simd.h"

namespace vekvc::simd {

inline void separateLuma(const Vek8u* from, Vek8u* y, std::ptrdiff_t w) {
    const std::ptrdiff_t done = forVectors(0, w & ~std::ptrdiff_t{1}, [&]<class V>(V, std::ptrdiff_t x) {
        store(y + x, oddBytes(load<V>(from + 2 * x), load<V>(from + 2 * x + V::kBytes)));
    });
    plain::separateLuma(from + 2 * done, y + done, w - done);
}

inline void separateRow(const Vek8u* from, Vek8u* y, Vek8u* cb, Vek8u* cr, std::ptrdiff_t w) {
    const std::ptrdiff_t done = forVectors(0, w & ~std::ptrdiff_t{1}, [&]<class V>(V, std::ptrdiff_t x) {
        const auto [luma, chroma] = lumaAndChroma(load<V>(from + 2 * x), load<V>(from + 2 * x + V::kBytes));
        store(y + x, luma);
        storeHalves(cb + x / 2, cr + x / 2, inHalves(chroma));
    });
    plain::separateRow(from + 2 * done, y + done, cb + done / 2, cr + done / 2, w - done);
}

inline void separateRows(const Vek8u* const (&from)[2], Vek8u* const (&y)[2], Vek8u* cb, Vek8u* cr, int quarters,
                         std::ptrdiff_t w) {
    const auto rows = [&](auto mix) __attribute__((always_inline)) {
        return forVectors(0, w & ~std::ptrdiff_t{1}, [&]<class V>(V, std::ptrdiff_t x) {
            V chroma[2];
            for (int i = 0; i < 2; ++i) {
                const V a = load<V>(from[i] + 2 * x), b = load<V>(from[i] + 2 * x + V::kBytes);
                store(y[i] + x, oddBytes(a, b));
                chroma[i] = evenBytes(a, b);
            }
            storeHalves(cb + x / 2, cr + x / 2, separatePairs(mix(chroma[0], chroma[1])));
        });
    };
    const std::ptrdiff_t done = quarters == 2 ? rows([](auto a, auto b) { return average(a, b); })
                                              : rows([=](auto a, auto b) { return mixed<2>(a, b, quarters); });
    plain::separateRows({from[0] + 2 * done, from[1] + 2 * done}, {y[0] + done, y[1] + done}, cb + done / 2,
                        cr + done / 2, quarters, w - done);
}

// Chroma samples from the i-th on: Cb in the low half, Cr in the high half.
template <class V>
[[gnu::always_inline]] inline V loadChroma(const plain::ChromaRow& row, std::ptrdiff_t i) {
    return loadHalves<V>(row.cb + i, row.cr + i);
}
template <class V>
[[gnu::always_inline]] inline V loadChroma(const plain::MixedChromaRows& rows, std::ptrdiff_t i) {
    return mixed<3>(loadChroma<V>(rows.a, i), loadChroma<V>(rows.b, i), rows.eighths);
}

template <class Chroma>
void interleaveRow(const Vek8u* y, const Chroma& chroma, Vek8u* to, std::ptrdiff_t first, std::ptrdiff_t w) {
    const std::ptrdiff_t done = forVectors(first, w & ~std::ptrdiff_t{1}, [&]<class V>(V, std::ptrdiff_t x) {
        const V luma = load<V>(y + x), pairs = interleaveHalves(loadChroma<V>(chroma, x / 2));
        storeInOrder(to + 2 * x, interleaveLow(pairs, luma), interleaveHigh(pairs, luma));
    });
    plain::interleaveRow(y, chroma, to, done, w);
}

inline void interleaveChroma(const Vek8u* cb, const Vek8u* cr, Vek8u* to, std::ptrdiff_t n) {
    const std::ptrdiff_t done = forVectors(0, n, [&]<class V>(V, std::ptrdiff_t i) {
        const V b = load<V>(cb + i), r = load<V>(cr + i);
        storeInOrder(to + 2 * i, interleaveLow(b, r), interleaveHigh(b, r));
    });
    plain::interleaveChroma(cb + done, cr + done, to + 2 * done, n - done);
}

inline void separateChroma(const Vek8u* from, Vek8u* cb, Vek8u* cr, std::ptrdiff_t n) {
    const std::ptrdiff_t done = forVectors(0, n, [&]<class V>(V, std::ptrdiff_t i) {
        const V a = load<V>(from + 2 * i), b = load<V>(from + 2 * i + V::kBytes);
        store(cb + i, evenBytes(a, b));
        store(cr + i, oddBytes(a, b));
    });
    plain::separateChroma(from + 2 * done, cb + done, cr + done, n - done);
}

}  // namespace vekvc::simd

#endif
