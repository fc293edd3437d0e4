// Sums of absolute transformed differences. The fast form of satd_plain.h.
#ifndef VEKVC_COMMON_SATD_SIMD_H
#define VEKVC_COMMON_SATD_SIMD_H

#include "common/hadamard_simd.h"
#include "common/predict_simd.h"
#include "common/satd_plain.h"

namespace vekvc::simd {

// ---- 8-bit samples, 4x4 transforms

[[gnu::always_inline]] inline Vek32s satdOf4x4(Block<Vek8u> s, Block<Vek8u> ref) {
    const auto block = [](Block<Vek8u> b) { return loadLanes32<u8x16>([&](int y) { return b.at(0, y); }); };
    const i8x16 ones = constant<i8x16, 1>(), differ = plusMinusOne();
    const u8x16 a = block(s), b = block(ref);
    i16x8 sums = mulAddPairs(a, ones) - mulAddPairs(b, ones);  // lane: row and half of the row
    i16x8 differences = mulAddPairs(a, differ) - mulAddPairs(b, differ);
    butterflyHalves(sums, differences);
    butterflyPairs(sums, differences);
    return sumLanes(halfSumOfNeighbours(sums, differences));
}

template <int W, int H>
[[gnu::always_inline]] inline Vek32s satd4x4(Block<Vek8u> s, Block<Vek8u> ref) {
    if constexpr (W == 4) {
        return satdOf4x4(s, ref);
    } else {
#if VEKVC_VECTOR256
        if constexpr (W == 8) {
            static_assert(H == 8);
            const EightRows a(s), b(ref);
            return sumLanes(halfSumOf4Rows([&](int y) { return a.firstStage(y) - b.firstStage(y); }));
        } else {
            i16x16 sum = zero<i16x16>();
#pragma GCC unroll 2
            for (int top = 0; top < H; top += 4, s.base += 4 * s.step, ref.base += 4 * ref.step)
                sum += halfSumOf4Rows([&](int y) { return firstStageOf16(s.at(0, y)) - firstStageOf16(ref.at(0, y)); });
            return sumLanes(sum);
        }
#else
        i16x8 sum = zero<i16x8>();
        for (int top = 0; top < H; top += 4, s.base += 4 * s.step, ref.base += 4 * ref.step)
            for (int left = 0; left < W; left += 8)
                sum += halfSumOf4Rows(
                    [&](int y) { return firstStageOf8(s.at(left, y)) - firstStageOf8(ref.at(left, y)); });
        return sumLanes(sum);
#endif
    }
}

// ---- 8-bit samples, 8x8 transforms

template <int W, int H>
[[gnu::always_inline]] inline Vek32s halfSumOfTransforms8x8(Block<Vek8u> s, Block<Vek8u> ref) {
#if VEKVC_VECTOR256
    if constexpr (W == 8) {
        static_assert(H == 8);
        const EightRows a(s), b(ref);
        return sumLanes(halfSumOf8RowsIn4([&](int y) { return a.firstStage(y) - b.firstStage(y); }));
    } else {
        i32x8 sum = zero<i32x8>();
#pragma GCC unroll 1
        for (int top = 0; top < H; top += 8, s.base += 8 * s.step, ref.base += 8 * ref.step)
            sum += mulAddPairs(
                halfSumOf8Rows([&](int y) { return firstStageOf16(s.at(0, y)) - firstStageOf16(ref.at(0, y)); }),
                constant<i16x16, 1>());
        return sumLanes(sum);
    }
#else
    i32x4 sum = zero<i32x4>();
#pragma GCC unroll 1
    for (int top = 0; top < H; top += 8, s.base += 8 * s.step, ref.base += 8 * ref.step)
#pragma GCC unroll 1
        for (int left = 0; left < W; left += 8)
            sum += mulAddPairs(
                halfSumOf8Rows([&](int y) { return firstStageOf8(s.at(left, y)) - firstStageOf8(ref.at(left, y)); }),
                constant<i16x8, 1>());
    return sumLanes(sum);
#endif
}

template <int W, int H>
[[gnu::always_inline]] inline VekStatus putSatdOf8x8(Block<Vek8u> s, Block<Vek8u> ref, Vek32s* pResult) {
    store(pResult, (halfSumOfTransforms8x8<W, H>(s, ref) + 1) >> 1);  // (2 * half the sum + 2) >> 2
    return vekStsOk;
}
// At half samples a function of its own, to which the export jumps.
template <int W, int H>
[[gnu::noinline]] VekStatus putSatdAtHalfSample(Block<Vek8u> s, Block<Vek8u> ref, Half half, Vek32s* pResult) {
    alignas(16) Vek8u copy[W * H];
    return putSatdOf8x8<W, H>(s, halfSampleBlock<W, H>(ref, half, copy), pResult);
}
template <int W, int H>
[[gnu::always_inline]] inline VekStatus putSatd8x8(Block<Vek8u> s, Block<Vek8u> ref, Half half, Vek32s* pResult) {
    if (half != Half::none) return putSatdAtHalfSample<W, H>(s, ref, half, pResult);
    return putSatdOf8x8<W, H>(s, ref, pResult);
}

// ---- 16-bit samples, 4x4 transforms

// Samples of any size, in 32 bits.
template <int W, int H>
[[gnu::noinline]] Vek32s satdOfLargeSamples(Block<Vek16u> s, Block<Vek16u> ref) {
    i32x4 sum = zero<i32x4>();
    for (int top = 0; top < H; top += 4)
        for (int left = 0; left < W; left += 4) {
            i32x4 rows[4];
            const auto row = [&](Block<Vek16u> b, int y) { return widenLow(loadBytes<u16x8, 8>(b.at(left, top + y))); };
            for (int y = 0; y < 4; ++y) rows[y] = row(s, y) - row(ref, y);
            butterflyRows(rows[0], rows[1], rows[2], rows[3]);
            transpose4x4(rows[0], rows[1], rows[2], rows[3]);
            butterflyRows(rows[0], rows[1], rows[2], rows[3]);
            for (const i32x4 c : rows) sum += abs(c);
        }
    return sumLanes(sum) / 2;
}

// Samples of up to 12 bits, as all video has, need 16: a stage before the last one gives at most 8 * 4095.
template <int W, int H>
[[gnu::always_inline]] inline Vek32s satd4x4(Block<Vek16u> s, Block<Vek16u> ref) {
#if VEKVC_VECTOR256
    using V = std::conditional_t<W == 4, i16x8, i16x16>;
#else
    using V = i16x8;
#endif
    // A vector is a row of a 16-wide block (or half of it), two rows of an 8-wide one that lie 4 apart, two
    // neighbouring rows of a 4-wide one.
    constexpr int kRowsBetween = W == 4 ? 1 : 4;
    constexpr int kRowsInOne = W == 4 || (W == 8 && V::kBytes == 32) ? 2 : 1;
    const auto row = [&](Block<Vek16u> b, int x, int y) {
        if constexpr (W == 4)
            return loadPair8<V>(b.at(x, y), b.at(x, y + kRowsBetween));
#if VEKVC_VECTOR256
        else if constexpr (kRowsInOne == 2)
            return loadPair16<V>(b.at(x, y), b.at(x, y + kRowsBetween));
#endif
        else
            return load<V>(b.at(x, y));
    };
    V seen = zero<V>();
    using Sum = Vec<Vek32s, V::kBytes / 4>;
    Sum sum = zero<Sum>();
    const auto difference = [&](int x, int y) {
        const V a = row(s, x, y), b = row(ref, x, y);
        seen = seen | (a | b);
        return a - b;
    };
    const auto add = [&](V halfSums) { sum += mulAddPairs(halfSums, constant<V, 1>()); };
    if constexpr (W == 4) {
        V top = difference(0, 0), bottom = difference(0, 2);
        butterfly(top, bottom);
        butterflyHalves(top, bottom);
        butterflyPairs(top, bottom);
        add(halfSumOfNeighbours(top, bottom));
    } else {
        for (int y = 0; y < H; y += 4 * kRowsInOne)
            for (int x = 0; x < W; x += V::kBytes / 2 / kRowsInOne) {
                V a = difference(x, y), b = difference(x, y + 1), c = difference(x, y + 2), d = difference(x, y + 3);
                butterflyRows(a, b, c, d);
                butterflyPairs(a, b);
                butterflyPairs(c, d);
                add(halfSumOfNeighbours(a, b));
                add(halfSumOfNeighbours(c, d));
            }
    }
    if (!allZero(seen & constant<V, 0xF000>())) return satdOfLargeSamples<W, H>(s, ref);
    return sumLanes(sum);
}

}  // namespace vekvc::simd

#endif
