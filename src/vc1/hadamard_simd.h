// Hadamard sums of 8x8 blocks. The fast form of hadamard_plain.h.
#ifndef VEKVC_VC1_HADAMARD_SIMD_H
#define VEKVC_VC1_HADAMARD_SIMD_H

#include "common/hadamard_simd.h"

namespace vekvc::simd {

[[gnu::always_inline]] inline Vek16s hadamardSum(Block<Vek8u> p) {
    u64x2 samples = zero<u64x2>();  // their sum is the first C
    for (int y = 0; y < 8; y += 2) samples += sumAbsDiff(loadPair8<u8x16>(p.at(0, y), p.at(0, y + 1)), zero<u8x16>());
#if VEKVC_VECTOR256
    const EightRows rows(p);
    const auto halfSums = halfSumOf8RowsIn4([&](int y) { return rows.firstStage(y); });
#else
    const auto halfSums = halfSumOf8Rows([&](int y) { return firstStageOf8(p.at(0, y)); });
#endif
    return static_cast<Vek16s>((2 * sumLanes(halfSums) - sumLanes(samples) + 2) >> 2);
}

// All stages in 16 bits, which wrap as the definition does: the magnitudes, up to 32768, are added without sign.
[[gnu::always_inline]] inline Vek16s hadamardSum(Block<Vek16s> p) {
    const auto row = [&](int y) { return load<i16x8>(p.at(0, y)); };
    i16x8 a = row(0), b = row(1), c = row(2), d = row(3), e = row(4), f = row(5), g = row(6), h = row(7);
    butterflyRows(a, b, c, d, e, f, g, h);
    i32x4 sum = zero<i32x4>();
    const auto addRest = [&](i16x8& v, i16x8& w) {
        butterflyHalves(v, w);
        butterflyPairs(v, w);
        butterflyNeighbours(v, w);
        // Less 32768 and as signed values, for the instruction that adds pairs; eight times four of them in all.
        const i16x8 bias = splat<i16x8>(-32768), ones = constant<i16x8, 1>();
        sum += mulAddPairs(abs(v) ^ bias, ones) + mulAddPairs(abs(w) ^ bias, ones);
    };
    addRest(a, b);
    addRest(c, d);
    addRest(e, f);
    addRest(g, h);
    return saturate16((sumLanes(sum) + 64 * 32768 + 2) >> 2);
}

}  // namespace vekvc::simd

#endif
