// Deblocking of horizontal chroma edges under byte masks.
#ifndef VEKVC_H264_DEBLOCK_SIMD512_H
#define VEKVC_H264_DEBLOCK_SIMD512_H

#include "h264/deblock_chroma16_simd.h"
#include "h264/deblock_chroma_simd.h"

namespace vekvc::simd512 {

// As simd::filterRows, whose other cases are one: columns without a strength are masked off.
[[gnu::always_inline]] inline void filterRows(Vek8u* q0, std::ptrdiff_t distance, std::ptrdiff_t step,
                                              const simd::ChromaEdges<u8x16>& edges) {
    if (edges.on() == 0xFF) return simd::filterRows(q0, distance, step, edges);
    const u8x16 groups = lanes<u8x16>(0, 0, 1, 1, 2, 2, 3, 3, 4, 4, 5, 5, 6, 6, 7, 7);
    const Vek32u on = nonZeroLanes(shuffleBytes(edges.bS, groups)), first = on << 8, second = on & 0xFF00;
    // The half of a vector that is masked off lies before the rows: to the processor the instruction touches all 16
    // bytes, and a load of what lies behind the rows, the usual next one, would have to wait.
    Vek8u* const firstRow = q0 - 8;
    Vek8u* const secondRow = q0 + distance - 8;
    const auto row = [&](int k) {
        return joinHigh(loadLanes<u8x16>(firstRow + k * step, first), loadLanes<u8x16>(secondRow + k * step, second));
    };
    u8x16 p0 = row(-1), q = row(0);
    simd::filterChroma(row(-2), p0, q, row(1), edges.limits(groups));
    const auto putRow = [&](int k, u8x16 v) {
        storeLanes(firstRow + k * step, joinLow(v, v), static_cast<Vek16u>(first));
        storeLanes(secondRow + k * step, v, static_cast<Vek16u>(second));
    };
    putRow(-1, p0);
    putRow(0, q);
}

template <class T>
[[gnu::always_inline]] inline void deblockChromaHorizontal(const DeblockOperands<T>& o) {
    if constexpr (sizeof(T) == 2)
        simd::deblockChromaHorizontal(o);
    else
        simd512::filterRows(o.pixels, 4 * o.step, o.step, simd::outerAndMiddleEdge<u8x16>(o));
}

}  // namespace vekvc::simd512

#endif
