// Variance of a 16x16 block in 512 bits.
#ifndef VEKVC_COMMON_VARIANCE_SIMD512_H
#define VEKVC_COMMON_VARIANCE_SIMD512_H

#include "common/variance_simd.h"

namespace vekvc::simd512 {

// Two rows at a time; each lane takes 8 samples.
template <int W, int H>
[[gnu::always_inline]] inline plain::Moments moments(Block<Vek8u> s) {
    if constexpr (W == 8) {
        return simd::moments<W, H>(s);
    } else {
        i16x32 sum = zero<i16x32>();
        i32x16 squares = zero<i32x16>();
#pragma GCC unroll 8
        for (int y = 0; y < H; y += 2, s.base = offsetBytes(s.base, 2 * s.step)) {
            const i16x32 rows = widen(loadPair16<u8x32>(s.base, offsetBytes(s.base, s.step)));
            sum += rows;
            squares += mulAddPairs(rows, rows);
        }
        return {sumLanes(lowHalf(sum) + highHalf(sum)), sumLanes(lowHalf(squares) + highHalf(squares))};
    }
}

}  // namespace vekvc::simd512

#endif
