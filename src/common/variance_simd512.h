// Variance of blocks of 16 columns in 512 bits.
#ifndef VEKVC_COMMON_VARIANCE_SIMD512_H
#define VEKVC_COMMON_VARIANCE_SIMD512_H

#include "common/variance_simd.h"

namespace vekvc::simd512 {

[[gnu::always_inline]] inline plain::Moments momentsOf(i16x32 sum, i32x16 squares) {
    return simd::momentsOf(simd::sumAndSquares(lowHalf(sum) + highHalf(sum), lowHalf(squares) + highHalf(squares)));
}

// Two rows of 16, widened.
[[gnu::always_inline]] inline i16x32 widenedRows(Block<Vek8u> b) {
    return widen(loadPair16<u8x32>(b.base, offsetBytes(b.base, b.step)));
}

// Each lane takes 8 samples.
template <int W, int H>
[[gnu::always_inline]] inline plain::Moments moments(Block<Vek8u> s) {
    static_assert(W == 16 && H == 16);
    i16x32 sum = zero<i16x32>();
    i32x16 squares = zero<i32x16>();
#pragma GCC unroll 8
    for (int y = 0; y < H; y += 2, s.base = twoRowsOn(s.base, s.step)) {
        const i16x32 rows = widenedRows(s);
        sum += rows;
        squares += mulAddPairs(rows, rows);
    }
    return momentsOf(sum, squares);
}

template <int W, int H>
[[gnu::always_inline]] inline VekStatus putVarianceOfDifference(Block<Vek8u> s, Block<Vek8u> ref, Half half,
                                                                Vek32s* pVar, Vek32s* pMean) {
    static_assert(W == 16);
    if (half != Half::none) return simd::putVarianceAtHalfSample<W, H>(s, ref, half, pVar, pMean);
    i16x32 sum = zero<i16x32>();
    i32x16 squares = zero<i32x16>();
#pragma GCC unroll 8
    for (int y = 0; y < H; y += 2) {
        const i16x32 difference = widenedRows(s) - widenedRows(ref);
        sum += difference;
        squares += mulAddPairs(difference, difference);
        s.base = twoRowsOn(s.base, s.step);
        ref.base = twoRowsOn(ref.base, ref.step);
    }
    return simd::putVariance<W, H>(momentsOf(sum, squares), pVar, pMean);
}

}  // namespace vekvc::simd512

#endif
