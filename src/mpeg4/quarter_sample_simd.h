// Fast forms of quarter-sample prediction: a pass along rows, a pass along columns, or one after the other. Mirrored
// samples are picked by the byte shuffles of the first and by the order of rows of the second; nothing is copied.
#ifndef VEKVC_MPEG4_QUARTER_SAMPLE_SIMD_H
#define VEKVC_MPEG4_QUARTER_SAMPLE_SIMD_H

#include <array>

#include "common/predict_simd.h"
#include "core/opaque.h"
#include "core/simd.h"
#include "mpeg4/quarter_sample_plain.h"

namespace vekvc::simd {

using mpeg4::Into;

// The taps (-1, 3, -6, 20, 20, -6, 3, -1) on samples that come in pairs of neighbours. The sum lies in -14 * 255 ..
// 46 * 255.
template <class U>
struct QuarterTaps {
    using V = Vec<std::int16_t, U::kBytes / 2>;
    using Pairs = Vec<std::int8_t, U::kBytes>;
    template <int a, int b>
    [[gnu::always_inline]] static Pairs weights() {
        return as<Pairs>(constant<V, (a & 255) | b * 256>());
    }
    Pairs first = weights<-1, 3>(), second = weights<-6, 20>(), third = weights<20, -6>(), fourth = weights<3, -1>();
    V rounding;

    [[gnu::always_inline]] explicit QuarterTaps(int r) : rounding(splat<V>(16 - r)) {}
    // The half samples, short of the limits 0 and 255.
    [[gnu::always_inline]] V half(U a, U b, U c, U d) const {
        const V sum =
            (mulAddPairs(a, first) + mulAddPairs(b, second)) + (mulAddPairs(c, third) + mulAddPairs(d, fourth));
        return (sum + rounding) >> 5;
    }
};

// What a pass makes of half samples and of the samples nearest to a quarter: (half + nearest + 1 - r) >> 1, r in every
// byte.
template <int fraction>
[[gnu::always_inline]] inline u8x16 atFraction(u8x16 half, u8x16 nearest, u8x16 r) {
    return fraction == 2 ? half : average(half, nearest) - ((half ^ nearest) & r);
}

// Two rows of 8, or one or two of 16, to their place.
template <Into into>
[[gnu::always_inline]] inline void putPair8(Vek8u* row0, Vek8u* row1, u8x16 v) {
    storePair8(row0, row1, into == Into::average ? average(v, loadPair8<u8x16>(row0, row1)) : v);
}
template <Into into>
[[gnu::always_inline]] inline void put16(Vek8u* row, u8x16 v) {
    store(row, into == Into::average ? average(v, load<u8x16>(row)) : v);
}

// ---- along rows

// The shuffles that make pairs of neighbours, four for the eight taps. byteOf(j, half) is the place of sample j, for
// the outputs of each half of 16.
using PairOrders = std::array<std::array<Vek8u, 32>, 4>;
template <class ByteOf>
constexpr PairOrders pairOrders(int width, ByteOf byteOf) {
    PairOrders orders = {};
    for (std::size_t tap = 0; tap < 4; ++tap)
        for (int i = 0; i < 32; ++i) {
            const int output = i / 2 % width, sample = output - 3 + 2 * static_cast<int>(tap) + i % 2;
            orders[tap][static_cast<std::size_t>(i)] =
                static_cast<Vek8u>(byteOf(plain::mirrored(sample, width), i / 16));
        }
    return orders;
}
// Samples 0 to 7, then 1 to 8; in each half of 256 bits a row.
alignas(32) inline constexpr PairOrders kPairOrders8 = pairOrders(8, [](int j, int) { return j < 8 ? j : 15; });
// Samples 0 to 15 for outputs 0 to 7, samples 1 to 16 for the others.
alignas(32) inline constexpr PairOrders kPairOrders16 = pairOrders(16, [](int j, int half) { return j - half; });

template <class U>
[[gnu::always_inline]] inline auto halfAcross(const QuarterTaps<U>& taps, const PairOrders& orders, int half, U s) {
    const auto pairs = [&](std::size_t tap) { return shuffleBytes(s, load<U>(orders[tap].data() + 16 * half)); };
    return taps.half(pairs(0), pairs(1), pairs(2), pairs(3));
}

template <int W, int fraction, Into into>
[[gnu::noinline]] VekStatus quarterAcross(const Vek8u* src, std::ptrdiff_t srcStep, Vek8u* dst, std::ptrdiff_t dstStep,
                                          int rows, int rounding) {
    const u8x16 r = splat<u8x16>(rounding);
#if VEKVC_VECTOR256
    const QuarterTaps<u8x32> taps(rounding);
#else
    const QuarterTaps<u8x16> taps(rounding);
#endif
    if constexpr (W == 16) {
#pragma GCC unroll 2
        for (; rows > 0; --rows) {
#if VEKVC_VECTOR256
            const u8x32 s = loadPair16<u8x32>(src, src + 1);
            const i16x16 half = halfAcross(taps, kPairOrders16, 0, s);
            put16<into>(dst, atFraction<fraction>(narrowU8(lowHalf(half), highHalf(half)),
                                                  fraction == 1 ? lowHalf(s) : highHalf(s), r));
#else
            const u8x16 s = load<u8x16>(src), t = load<u8x16>(src + 1);
            const i16x8 low = halfAcross(taps, kPairOrders16, 0, s), high = halfAcross(taps, kPairOrders16, 1, t);
            put16<into>(dst, atFraction<fraction>(narrowU8(low, high), fraction == 1 ? s : t, r));
#endif
            src += srcStep;
            dst += dstStep;
        }
    } else {
#pragma GCC unroll 1
        for (; rows > 0; rows -= 2) {  // an odd last row is made twice
            const Vek8u* const src1 = rows > 1 ? src + srcStep : src;
            Vek8u* const dst1 = rows > 1 ? dst + dstStep : dst;
            const u8x16 s = loadPair8<u8x16>(src, src + 1), t = loadPair8<u8x16>(src1, src1 + 1);
#if VEKVC_VECTOR256
            const i16x16 half = halfAcross(taps, kPairOrders8, 0, join(s, t));
            const u8x16 halves = narrowU8(lowHalf(half), highHalf(half));
#else
            const u8x16 halves = narrowU8(halfAcross(taps, kPairOrders8, 0, s), halfAcross(taps, kPairOrders8, 0, t));
#endif
            putPair8<into>(dst, dst1, atFraction<fraction>(halves, fraction == 1 ? joinLow(s, t) : joinHigh(s, t), r));
            src += 2 * srcStep;
            dst += 2 * dstStep;
        }
    }
    return vekStsOk;
}

// ---- along columns, two rows at a time

// Eight columns: pairs of a row and the next one, in 256 bits beside the pairs that begin a row later.
struct Columns8 {
    const Vek8u* src;
    std::ptrdiff_t step;

    [[gnu::always_inline]] u8x16 row(std::ptrdiff_t y) const { return loadBytes<u8x16, 8>(src + y * step); }
#if VEKVC_VECTOR256
    using U = u8x32;
    [[gnu::always_inline]] static U pairs(u8x16 a, u8x16 b, u8x16 c) {
        return join(interleaveLow(a, b), interleaveLow(b, c));
    }
    [[gnu::always_inline]] static u8x16 packed(i16x16 v) { return narrowU8(lowHalf(v), highHalf(v)); }
#else
    using U = u8x16;
#endif
    template <int fraction, Into into>
    [[gnu::always_inline]] void put(Vek8u* dst, std::ptrdiff_t dstStep, std::ptrdiff_t y, u8x16 halves, u8x16 r) const {
        const Vek8u* const nearest = src + (fraction == 3 ? y + 1 : y) * step;
        putPair8<into>(dst, dst + dstStep, atFraction<fraction>(halves, loadPair8<u8x16>(nearest, nearest + step), r));
    }
};

template <int fraction, Into into>
[[gnu::always_inline]] inline void quarterDown8(const Columns8& s, Vek8u* dst, std::ptrdiff_t dstStep, int rows,
                                                int rounding) {
    using U = Columns8::U;
    const QuarterTaps<U> taps(rounding);
    const u8x16 r = splat<u8x16>(rounding);
    const u8x16 r0 = s.row(0), r1 = s.row(1), r2 = s.row(2);
    u8x16 last = s.row(3);
#if VEKVC_VECTOR256
    U pairs0 = s.pairs(r2, r1, r0), pairs2 = s.pairs(r0, r0, r1), pairs4 = s.pairs(r1, r2, last);
#else
    U p[8] = {interleaveLow(r2, r1), interleaveLow(r1, r0), interleaveLow(r0, r0),
              interleaveLow(r0, r1), interleaveLow(r1, r2), interleaveLow(r2, last)};
#endif
#pragma GCC unroll 1
    for (int y = 0; y < rows; y += 2) {
        const u8x16 a = s.row(plain::mirrored(y + 4, rows)), b = s.row(plain::mirrored(y + 5, rows));
#if VEKVC_VECTOR256
        const U pairs6 = s.pairs(last, a, b);
        const u8x16 halves = s.packed(taps.half(pairs0, pairs2, pairs4, pairs6));
        pairs0 = pairs2, pairs2 = pairs4, pairs4 = pairs6;
#else
        p[6] = interleaveLow(last, a), p[7] = interleaveLow(a, b);
        const u8x16 halves = narrowU8(taps.half(p[0], p[2], p[4], p[6]), taps.half(p[1], p[3], p[5], p[7]));
        p[0] = p[2], p[1] = p[3], p[2] = p[4], p[3] = p[5], p[4] = p[6], p[5] = p[7];
#endif
        last = b;
        s.put<fraction, into>(dst, dstStep, y, halves, r);
        dst += 2 * dstStep;
    }
}

#if VEKVC_VECTOR256
// Sixteen columns: a row in 16-bit lanes, a pair of rows in the bytes of these.
template <int fraction, Into into>
[[gnu::always_inline]] inline void quarterDown16(const Vek8u* src, std::ptrdiff_t step, Vek8u* dst,
                                                 std::ptrdiff_t dstStep, int rows, int rounding) {
    const QuarterTaps<u8x32> taps(rounding);
    const u8x16 r = splat<u8x16>(rounding);
    const auto row = [=](std::ptrdiff_t y) { return widen(load<u8x16>(src + y * step)); };
    const auto pair = [](i16x16 a, i16x16 b) { return as<u8x32>(a | b << 8); };
    const i16x16 r0 = row(0), r1 = row(1), r2 = row(2);
    i16x16 last = row(3);
    u8x32 p[8] = {pair(r2, r1), pair(r1, r0), pair(r0, r0), pair(r0, r1), pair(r1, r2), pair(r2, last)};
#pragma GCC unroll 1
    for (int y = 0; y < rows; y += 2) {
        const i16x16 a = row(plain::mirrored(y + 4, rows)), b = row(plain::mirrored(y + 5, rows));
        p[6] = pair(last, a), p[7] = pair(a, b);
        last = b;
        const i16x16 half0 = taps.half(p[0], p[2], p[4], p[6]), half1 = taps.half(p[1], p[3], p[5], p[7]);
        const u8x32 halves = swapMiddleQuarters(narrowU8(half0, half1));
        const Vek8u* const nearest = src + (fraction == 3 ? y + 1 : y) * step;
        put16<into>(dst, atFraction<fraction>(lowHalf(halves), load<u8x16>(nearest), r));
        put16<into>(dst + dstStep, atFraction<fraction>(highHalf(halves), load<u8x16>(nearest + step), r));
        p[0] = p[2], p[1] = p[3], p[2] = p[4], p[3] = p[5], p[4] = p[6], p[5] = p[7];
        dst += 2 * dstStep;
    }
}
#endif

template <int W, int fraction, Into into>
[[gnu::noinline]] VekStatus quarterDown(const Vek8u* src, std::ptrdiff_t srcStep, Vek8u* dst, std::ptrdiff_t dstStep,
                                        int rows, int rounding) {
#if VEKVC_VECTOR256
    if constexpr (W == 16) {
        quarterDown16<fraction, into>(src, srcStep, dst, dstStep, rows, rounding);
        return vekStsOk;
    }
#endif
#pragma GCC unroll 1
    for (int x = 0; x < W; x += 8) quarterDown8<fraction, into>({src + x, srcStep}, dst + x, dstStep, rows, rounding);
    return vekStsOk;
}

// ---- the positions

using QuarterPass = VekStatus (*)(const Vek8u* src, std::ptrdiff_t srcStep, Vek8u* dst, std::ptrdiff_t dstStep,
                                  int rows, int rounding);
template <int W, Into into>
inline constexpr QuarterPass kQuarterAcross[4] = {nullptr, quarterAcross<W, 1, into>, quarterAcross<W, 2, into>,
                                                  quarterAcross<W, 3, into>};
template <int W, Into into>
inline constexpr QuarterPass kQuarterDown[4] = {nullptr, quarterDown<W, 1, into>, quarterDown<W, 2, into>,
                                                quarterDown<W, 3, into>};

// Both ways. By itself, so that the other cases have no stack.
template <Into into, int W, int H>
[[gnu::noinline]] VekStatus quarterBoth(const Vek8u* src, std::ptrdiff_t srcStep, Vek8u* dst, std::ptrdiff_t dstStep,
                                        int acc, int rounding) {
    alignas(16) Vek8u across[(H + 1) * W];
    kQuarterAcross<W, Into::destination>[acc & 3](src, srcStep, across, W, H + 1, rounding);
    return kQuarterDown<W, into>[acc >> 2](across, W, dst, dstStep, H, rounding);
}

template <Into into, int W, int H>
[[gnu::always_inline]] inline VekStatus predictQuarterSample(const mpeg4::QuarterSample& q, Vek8u* dst,
                                                             std::ptrdiff_t dstStep) {
    if (q.dx != 0 && q.dy != 0)
        return quarterBoth<into, W, H>(q.src, q.srcStep, dst, dstStep, q.dx | q.dy << 2, q.rounding);
    if (q.dx != 0) return kQuarterAcross<W, into>[q.dx](q.src, q.srcStep, dst, dstStep, H, q.rounding);
    if (q.dy != 0) return kQuarterDown<W, into>[q.dy](q.src, q.srcStep, dst, dstStep, H, q.rounding);
    const Reference whole = {q.src, static_cast<Vek32s>(q.srcStep), Half::none};
    const auto step = static_cast<Vek32s>(dstStep);
    if constexpr (into == Into::average)
        averageBlock<W, H>(whole, 0, dst, step, dst, step);
    else
        copyBlock<W, H>(whole, 0, dst, step);
    return vekStsOk;
}

}  // namespace vekvc::simd

#endif
