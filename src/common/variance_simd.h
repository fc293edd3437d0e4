// Variance, sum and deviations of a block. The fast form of variance_plain.h.
#ifndef VEKVC_COMMON_VARIANCE_SIMD_H
#define VEKVC_COMMON_VARIANCE_SIMD_H

#include <bit>

#include "common/predict_simd.h"
#include "common/variance_plain.h"

namespace vekvc::simd {

using plain::Moments;

using plain::VarianceAndSum;

// From lanes that each take a part: the sum of the samples in lane 0, that of the squares in lane 1.
[[gnu::always_inline]] inline i32x4 sumAndSquares(i32x4 sum, i32x4 squares) {
    const i32x4 pairs = interleaveLow(sum, squares) + interleaveHigh(sum, squares);
    return pairs + swapHalves(pairs);
}
#if VEKVC_VECTOR256
[[gnu::always_inline]] inline i32x4 sumAndSquares(i32x8 sum, i32x8 squares) {
    const i32x8 pairs = interleaveLow(sum, squares) + interleaveHigh(sum, squares);
    const i32x4 halves = lowHalf(pairs) + highHalf(pairs);
    return halves + swapHalves(halves);
}
#endif
template <int N>
[[gnu::always_inline]] inline i32x4 sumAndSquares(Vec<Vek16s, N> sum, Vec<Vek32s, N / 2> squares) {
    return sumAndSquares(mulAddPairs(sum, constant<Vec<Vek16s, N>, 1>()), squares);
}
[[gnu::always_inline]] inline Moments momentsOf(i32x4 sumAndSquares) {
    return std::bit_cast<Moments>(lane<0>(as<u64x2>(sumAndSquares)));
}

// As plain::varianceAndSumOf64, of the sum in lane 0 and the sum of the squares in lane 1.
[[gnu::always_inline]] inline VarianceAndSum varianceAndSumOf64(i32x4 sumAndSquares) {
    const f32x4 means = toFloat(sumAndSquares) * splatFloat(1.0f / 64.0f);
    const f32x4 variance = as<f32x4>(as<u64x2>(means) >> 32) - means * means;
    return {lane<0>(truncate(variance)), lane<0>(sumAndSquares)};
}

#if VEKVC_VECTOR256
// Four rows of bytes at a time. Both sums are added up in one register: that of the samples in the low and that of the
// squares in the high half of 64 bits.
[[gnu::always_inline]] inline VarianceAndSum varianceAndSum8x8(Block<Vek8u> s) {
    const auto squares = [](u8x32 v) {
        const i16x16 even = as<i16x16>(v) & constant<i16x16, 0x00FF>(), odd = as<i16x16>(as<u16x16>(v) >> 8);
        return mulAddPairs(even, even) + mulAddPairs(odd, odd);
    };
    const EightRowAddresses rows(s.base, s.step);
    const u8x32 top = loadFour8<u8x32>(rows(0), rows(1), rows(2), rows(3));
    const u8x32 bottom = loadFour8<u8x32>(rows(4), rows(5), rows(6), rows(7));
    const u64x4 sums = sumAbsDiff(top, zero<u8x32>()) + sumAbsDiff(bottom, zero<u8x32>());
    const i32x8 products = squares(top) + squares(bottom);
    const i32x8 inHighHalves = products + as<i32x8>(as<u64x4>(products) << 32);
    const i32x8 both = as<i32x8>(blend16<0b11001100>(as<i16x16>(sums), as<i16x16>(inHighHalves)));
    const i32x4 halves = lowHalf(both) + highHalf(both);
    return varianceAndSumOf64(halves + swapHalves(halves));
}
#else
[[gnu::always_inline]] inline VarianceAndSum varianceAndSum8x8(Block<Vek8u> s) {
    i16x8 sum = zero<i16x8>();
    i32x4 squares = zero<i32x4>();
    for (int y = 0; y < 8; ++y, s.base += s.step) {
        const i16x8 row = widenLow(loadBytes<u8x16, 8>(s.base));
        sum += row;
        squares += mulAddPairs(row, row);
    }
    return varianceAndSumOf64(sumAndSquares(sum, squares));
}
#endif

[[gnu::always_inline]] inline VarianceAndSum varianceAndSum8x8(Block<Vek16s> s) {
    i16x8 columns = zero<i16x8>();
    i32x4 squares = zero<i32x4>();
    for (int y = 0; y < 8; ++y) {
        const i16x8 row = load<i16x8>(s.at(0, y));
        columns = addSat(columns, row);
        squares += mulAddPairs(row, row);
    }
    return varianceAndSumOf64(sumAndSquares(columns, squares));
}

// Rows of 16 samples, widened while they are loaded. Each lane takes at most 16 * 2 samples: 32 * 255 fits 16 bits.
template <int W, int H>
[[gnu::always_inline]] inline Moments moments(Block<Vek8u> s) {
    static_assert(W == 16 && H == 16);
#if VEKVC_VECTOR256
    using Wide = i16x16;
#else
    using Wide = i16x8;
#endif
    Wide sum = zero<Wide>();
    Vec<Vek32s, Wide::kBytes / 4> squares = zero<Vec<Vek32s, Wide::kBytes / 4>>();
    const auto add = [&](Wide row) {
        sum += row;
        squares += mulAddPairs(row, row);
    };
    const Vek8u* p = s.base;
#pragma GCC unroll 8
    for (int y = 0; y < H; ++y, p += s.step) {
        const u8x16 row = load<u8x16>(p);
#if VEKVC_VECTOR256
        add(widen(row));
#else
        add(widenLow(row));
        add(widenHigh(row));
#endif
    }
    return momentsOf(sumAndSquares(sum, squares));
}

// Each lane takes at most 16 * 2 differences: 32 * 255 fits 16 bits.
template <int H>
[[gnu::always_inline]] inline Moments momentsOfDifference16(Block<Vek8u> s, Block<Vek8u> p) {
#if VEKVC_VECTOR256
    i16x16 sum = zero<i16x16>();
    i32x8 squares = zero<i32x8>();
#pragma GCC unroll 8
    for (int y = 0; y < H; ++y, s.base += s.step, p.base += p.step) {
        const i16x16 difference = widen(load<u8x16>(s.base)) - widen(load<u8x16>(p.base));
        sum += difference;
        squares += mulAddPairs(difference, difference);
    }
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
#endif
    return momentsOf(sumAndSquares(sum, squares));
}

template <int W, int H>
[[gnu::always_inline]] inline VekStatus putVariance(const Moments& m, Vek32s* pVar, Vek32s* pMean) {
    const VarianceAndSum result = plain::varianceAndSumOfDifference<W, H>(m);
    store(pVar, result.variance);
    store(pMean, result.sum);
    return vekStsOk;
}

// A function of its own, to which the export jumps.
template <int W, int H>
[[gnu::noinline]] VekStatus putVarianceAtHalfSample(Block<Vek8u> s, Block<Vek8u> ref, Half half, Vek32s* pVar,
                                                    Vek32s* pMean) {
    alignas(16) Vek8u copy[W * H];
    const Moments m = momentsOfDifference16<H>(s, halfSampleBlock<W, H>(ref, half, copy));
    return putVariance<W, H>(m, pVar, pMean);
}

template <int W, int H>
[[gnu::always_inline]] inline VekStatus putVarianceOfDifference(Block<Vek8u> s, Block<Vek8u> ref, Half half,
                                                                Vek32s* pVar, Vek32s* pMean) {
    static_assert(W == 16);
    if (half != Half::none) return putVarianceAtHalfSample<W, H>(s, ref, half, pVar, pMean);
    return putVariance<W, H>(momentsOfDifference16<H>(s, ref), pVar, pMean);
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
