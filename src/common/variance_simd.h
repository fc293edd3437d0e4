// Variance, sum and deviations of a block. The fast form of variance_plain.h.
#ifndef VEKVC_COMMON_VARIANCE_SIMD_H
#define VEKVC_COMMON_VARIANCE_SIMD_H

#include <bit>

#include "common/predict_simd.h"
#include "common/variance_plain.h"

namespace vekvc::simd {

using plain::Moments;

#if VEKVC_VECTOR256
// Four rows of bytes at a time. Both sums are added up in one register at the end.
inline Moments moments8x8(Block<Vek8u> s) {
    const auto rows = [&](const Vek8u* p) {
        const Vek8u* below = twoRowsOn(p, s.step);
        return loadFour8<u8x32>(p, p + s.step, below, below + s.step);
    };
    const auto squares = [](u8x32 v) {
        const i16x16 even = as<i16x16>(v) & constant<i16x16, 0x00FF>(), odd = as<i16x16>(as<u16x16>(v) >> 8);
        return mulAddPairs(even, even) + mulAddPairs(odd, odd);
    };
    const u8x32 top = rows(s.base), bottom = rows(twoRowsOn(twoRowsOn(s.base, s.step), s.step));
    const u64x4 sums = sumAbsDiff(top, zero<u8x32>()) + sumAbsDiff(bottom, zero<u8x32>());
    const i32x8 products = squares(top) + squares(bottom);
    const i32x4 halves = lowHalf(products) + highHalf(products);
    const i32x4 inOddLanes = halves + as<i32x4>(as<u64x2>(halves) << 32);
    const i32x4 both = blend32<0b1010>(as<i32x4>(lowHalf(sums) + highHalf(sums)), inOddLanes);
    return std::bit_cast<Moments>(lane<0>(as<u64x2>(both + swapHalves(both))));
}
#endif

// Rows of 8 or 16 samples, widened while they are loaded. Each lane takes at most 16 * 2 samples: 32 * 255 fits 16
// bits.
template <int W, int H>
Moments moments(Block<Vek8u> s) {
#if VEKVC_VECTOR256
    if constexpr (W == 8 && H == 8) return moments8x8(s);
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
    return {sumLanes(sum), sumLanes(squares)};
}

inline Moments moments8x8(Block<Vek16s> s) {
    i16x8 columns = zero<i16x8>();
    i32x4 squares = zero<i32x4>();
    for (int y = 0; y < 8; ++y) {
        const i16x8 row = load<i16x8>(s.at(0, y));
        columns = addSat(columns, row);
        squares += mulAddPairs(row, row);
    }
    return {sumLanes(columns), sumLanes(squares)};
}

// Each lane takes at most 16 * 2 differences: 32 * 255 fits 16 bits.
template <int H>
[[gnu::always_inline]] inline Moments momentsOfDifference16(Block<Vek8u> s, Block<Vek8u> p) {
#if VEKVC_VECTOR256
    i16x16 sum = zero<i16x16>();
    i32x8 squares = zero<i32x8>();
#pragma GCC unroll 4
    for (int y = 0; y < H; ++y, s.base += s.step, p.base += p.step) {
        const i16x16 difference = widen(load<u8x16>(s.base)) - widen(load<u8x16>(p.base));
        sum += difference;
        squares += mulAddPairs(difference, difference);
    }
    return {sumLanes(sum), sumLanes(squares)};
#else
    // From the bytes of both in turn, less than to widen each.
    const i8x16 plusMinus = plusMinusOne();
    i16x8 sum = zero<i16x8>();
    i32x4 squares = zero<i32x4>();
#pragma GCC unroll 4
    for (int y = 0; y < H; ++y, s.base += s.step, p.base += p.step) {
        const u8x16 a = load<u8x16>(s.base), b = load<u8x16>(p.base);
        const i16x8 low = mulAddPairs(interleaveLow(a, b), plusMinus);
        const i16x8 high = mulAddPairs(interleaveHigh(a, b), plusMinus);
        sum += low + high;
        squares += mulAddPairs(low, low) + mulAddPairs(high, high);
    }
    return {sumLanes(sum), sumLanes(squares)};
#endif
}

template <int H>
[[gnu::noinline]] Moments momentsAtHalfSample(Block<Vek8u> s, Block<Vek8u> ref, Half half) {
    alignas(16) Vek8u copy[16 * H];
    return momentsOfDifference16<H>(s, halfSampleBlock<16, H>(ref, half, copy));
}

template <int W, int H>
[[gnu::always_inline]] inline Moments momentsOfDifference(Block<Vek8u> s, Block<Vek8u> ref, Half half) {
    static_assert(W == 16);
    return half == Half::none ? momentsOfDifference16<H>(s, ref) : momentsAtHalfSample<H>(s, ref, half);
}

template <int W, int H>
[[gnu::always_inline]] inline Vek32s sumOfDeviations(Block<Vek8u> s) {
#if VEKVC_VECTOR256
    using V = u8x32;
    constexpr int kVectors = W * H / 32;
    const auto vector = [&](int i) {
        if constexpr (W == 16)
            return loadPair16<V>(s.at(0, 2 * i), s.at(0, 2 * i + 1));
        else
            return loadFour8<V>(s.at(0, 4 * i), s.at(0, 4 * i + 1), s.at(0, 4 * i + 2), s.at(0, 4 * i + 3));
    };
#else
    using V = u8x16;
    constexpr int kVectors = W * H / 16;
    const auto vector = [&](int i) {
        if constexpr (W == 16)
            return load<V>(s.at(0, i));
        else
            return loadPair8<V>(s.at(0, 2 * i), s.at(0, 2 * i + 1));
    };
#endif
    using Sum = Vec<std::uint64_t, V::kBytes / 8>;
    V block[kVectors];
    Sum sum = zero<Sum>(), deviations = zero<Sum>();
#pragma GCC unroll 16
    for (int i = 0; i < kVectors; ++i) {
        block[i] = vector(i);
        sum += sumAbsDiff(block[i], zero<V>());
    }
    const V mean = splat<V>(sumLanes(sum) / (W * H));
#pragma GCC unroll 16
    for (int i = 0; i < kVectors; ++i) deviations += sumAbsDiff(block[i], mean);
    return sumLanes(deviations);
}

}  // namespace vekvc::simd

#endif
