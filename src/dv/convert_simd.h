// Fast form of the conversions: rows of 16 luma and 2 x 8 chroma samples.
#ifndef VEKVC_DV_CONVERT_SIMD_H
#define VEKVC_DV_CONVERT_SIMD_H

#include "core/simd.h"
#include "dv/convert_plain.h"

namespace vekvc::simd {

// Columns x to x + 15 of row y, plus 128; what leaves 16 bits is far outside 8 bits too.
struct DvRow {
    i16x8 y0, y1, cb, cr;
};
template <class M>
[[gnu::always_inline]] inline DvRow dvRow(const Vek16s* pSrc, int x, int y) {
    const auto at = [&](dv::Place p, int blocks) {
        return addSat(load<i16x8>(pSrc + 64 * (blocks + p.block) + 8 * p.row), splat<i16x8>(128));
    };
    DvRow row{at(M::luma(x, y), 0), at(M::luma(x + 8, y), 0), at(M::chroma(x / 2, y), M::kCb),
              at(M::chroma(x / 2, y), M::kCr)};
    if constexpr (M::chroma(1, 0).column == 0) {  // 4:1:1: four samples, twice each
        const bool left = M::chroma(x / 2, y).column == 0;
        row.cb = left ? interleaveLow(row.cb, row.cb) : interleaveHigh(row.cb, row.cb);
        row.cr = left ? interleaveLow(row.cr, row.cr) : interleaveHigh(row.cr, row.cr);
    }
    return row;
}

template <class M>
void convertWhole(const Vek16s* pSrc, Vek8u* pDst, std::ptrdiff_t dstStep) {
    for (int y = 0; y < M::kHeight; ++y)
        for (int x = 0; x < M::kWidth; x += 16) {
            const DvRow row = dvRow<M>(pSrc, x, y);
            const u8x16 luma = narrowU8(row.y0, row.y1), both = narrowU8(row.cb, row.cr);
            const u8x16 chroma = interleaveLow(both, swapHalves(both));
            store(pDst + dstStep * y + 2 * x, interleaveLow(chroma, luma));
            store(pDst + dstStep * y + 2 * x + 16, interleaveHigh(chroma, luma));
        }
}

// Sums of columns over n rows, then of neighbours: at most 64 * 255.
template <class M, int zoom>
void convertReduced(const Vek16s* pSrc, Vek8u* pDst, std::ptrdiff_t dstStep) {
    constexpr int n = 1 << zoom;
    const auto clip = [](i16x8 a) { return min(max(a, splat<i16x8>(0)), splat<i16x8>(255)); };
    const auto mean = [](i16x8 sum) { return (sum + splat<i16x8>(n * n / 2)) >> (2 * zoom); };
    for (int top = 0; top < M::kHeight; top += n)
        for (int x = 0; x < M::kWidth; x += 16) {
            DvRow sum{};
            for (int y = top; y < top + n; ++y) {
                const DvRow row = dvRow<M>(pSrc, x, y);
                sum.y0 = sum.y0 + clip(row.y0);
                sum.y1 = sum.y1 + clip(row.y1);
                sum.cb = sum.cb + clip(row.cb);
                sum.cr = sum.cr + clip(row.cr);
            }
            Vek8u* to = pDst + dstStep * (top / n) + 2 * x / n;
            const i16x8 luma = addNeighbours(sum.y0, sum.y1), chroma = addNeighbours(sum.cb, sum.cr);
            if constexpr (zoom == 1) {
                const u8x16 order = lanes<u8x16>(8, 0, 12, 1, 9, 2, 13, 3, 10, 4, 14, 5, 11, 6, 15, 7);
                store(to, shuffleBytes(narrowU8(mean(luma), mean(chroma)), order));
            } else {
                const i16x8 four = addNeighbours(luma, chroma);  // 4 luma, 2 Cb, 2 Cr
                if constexpr (zoom == 2) {
                    const i16x8 m = mean(four);
                    const u8x16 order = lanes<u8x16>(4, 0, 6, 1, 5, 2, 7, 3, 0, 0, 0, 0, 0, 0, 0, 0);
                    storeBytes<8>(to, shuffleBytes(narrowU8(m, m), order));
                } else {
                    const i16x8 m = mean(addNeighbours(four, four));  // 2 luma, Cb, Cr
                    const u8x16 order = lanes<u8x16>(2, 0, 3, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
                    storeBytes<4>(to, shuffleBytes(narrowU8(m, m), order));
                }
            }
        }
}

template <class Macroblock>
void convert(const Vek16s* pSrc, Vek8u* pDst, std::ptrdiff_t dstStep, int zoom) {
    switch (zoom) {
        case 0:
            return convertWhole<Macroblock>(pSrc, pDst, dstStep);
        case 1:
            return convertReduced<Macroblock, 1>(pSrc, pDst, dstStep);
        case 2:
            return convertReduced<Macroblock, 2>(pSrc, pDst, dstStep);
        default:
            return convertReduced<Macroblock, 3>(pSrc, pDst, dstStep);
    }
}

}  // namespace vekvc::simd

#endif
