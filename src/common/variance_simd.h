// Variance, sum and squared deviations of a block. The fast form of variance_plain.h.
#ifndef VEKVC_COMMON_VARIANCE_SIMD_H
#define VEKVC_COMMON_VARIANCE_SIMD_H

#include "common/variance_plain.h"
#include "core/simd.h"

namespace vekvc::simd {

using plain::Moments;
using plain::momentsOfDifference;
using plain::sumOfDeviations;

// Rows of 8 or 16 samples, widened while they are loaded. Each lane takes at most 16 * 2 samples: 32 * 255 fits 16
// bits.
template <int W, int H>
Moments moments(Block<Vek8u> s) {
#if VEKVC_VECTOR256
    using Wide = std::conditional_t<W == 16, i16x16, i16x8>;
#else
    using Wide = i16x8;
#endif
    using Sum = Vec<Vek32s, Wide::kBytes / 4>;
    Wide sum = zero<Wide>();
    Sum squares = zero<Sum>();
    const auto add = [&](Wide row) {
        sum += row;
        squares += mulAddPairs(row, row);
    };
    const Vek8u* p = s.base;
#pragma GCC unroll 8
    for (int y = 0; y < H; ++y, p += s.step) {
        if constexpr (W == 8) {
            add(widenLow(loadBytes<u8x16, 8>(p)));
        } else {
            const u8x16 row = load<u8x16>(p);
#if VEKVC_VECTOR256
            add(widen(row));
#else
            add(widenLow(row));
            add(widenHigh(row));
#endif
        }
    }
    return {sumLanes(mulAddPairs(sum, splat<Wide>(1))), sumLanes(squares)};
}

inline Moments moments8x8(Block<Vek16s> s) {
    i16x8 columns = zero<i16x8>();
    i32x4 squares = zero<i32x4>();
    for (int y = 0; y < 8; ++y) {
        const i16x8 row = load<i16x8>(s.at(0, y));
        columns = addSat(columns, row);
        squares += mulAddPairs(row, row);
    }
    return {sumLanes(mulAddPairs(columns, splat<i16x8>(1))), sumLanes(squares)};
}

}  // namespace vekvc::simd

#endif
