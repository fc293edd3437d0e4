// Fast forms of the VC-1 loop filter: up to 16 bytes along an edge at once, in 16-bit lanes.
#ifndef VEKVC_VC1_LOOP_FILTER_SIMD_H
#define VEKVC_VC1_LOOP_FILTER_SIMD_H

#include <utility>

#include "core/simd.h"
#include "vc1/loop_filter_plain.h"

namespace vekvc::simd {

using vc1::Edge;

// What follows along an edge: samples of one plane, or pairs of interleaved chroma.
enum class Places { samples, pairs };

// Of each segment (8 bytes of samples in 16-bit lanes, or 16 of pairs) the third place's mask, all over.
template <Places places, class V>
VEKVC_SIMD_INLINE V thirdPlace(V mask) {
    if constexpr (places == Places::pairs) {
        return shuffle32<2, 2, 2, 2>(mask);
    } else {
        alignas(32) static constexpr Vek8u kThird[32] = {4, 5, 4, 5, 4, 5, 4, 5, 12, 13, 12, 13, 12, 13, 12, 13,
                                                         4, 5, 4, 5, 4, 5, 4, 5, 12, 13, 12, 13, 12, 13, 12, 13};
        return shuffleBytes(mask, load<V>(kThird));
    }
}

// (2 (a - d) - 5 (b - c) + 4) >> 3: at most 224 either way.
template <class V>
VEKVC_SIMD_INLINE V activity(V a, V b, V c, V d) {
    const V outer = a - d, inner = b - c;
    return (outer + outer - inner * constant<V, 5>() + constant<V, 4>()) >> 3;
}

// What is taken from P4 and added to P5, where `enabled` is set. P[0] to P[7] are P1 to P8. a0 and d have opposite
// signs, so that d goes with clip where a0 and P4 - P5 differ in sign.
template <Places places, class V>
VEKVC_SIMD_INLINE V edgeChange(const V (&P)[8], V pQuant, V enabled) {
    const V step = P[3] - P[4], clip = abs(step) >> 1;
    const V a0 = activity(P[2], P[3], P[4], P[5]);
    const V a1 = activity(P[0], P[1], P[2], P[3]), a2 = activity(P[4], P[5], P[6], P[7]);
    const V size = abs(a0), excess = size - min(abs(a1), abs(a2));
    const V filtered = (clip > zero<V>()) & (pQuant > size) & (excess > zero<V>());
    const V away = (a0 ^ step) >> 15;
    const V d = min(excess * constant<V, 5>() >> 3, clip);
    return withSign(d & filtered & thirdPlace<places>(filtered) & away & enabled, step);
}

// Which bytes of pairs of chroma are filtered: one 32-bit lane for each place of the two segments.
struct EnabledPairs {
    Vek32s segment[2];

    EnabledPairs(unsigned u, unsigned v) {
        for (int i = 0; i < 2; ++i)
            segment[i] = static_cast<Vek32s>((u >> i & 1) * 0xFFFFu | (v >> i & 1) * 0xFFFF0000u);
    }
};

struct ChangedPixels {
    u8x16 P4, P5;
};

// Filters the low `bytes` bytes along an edge (the others must be 0 and stay so).
template <Places places, int bytes>
VEKVC_SIMD_INLINE ChangedPixels filterAlong(const u8x16 (&P)[8], Vek32s pQuant, i32x4 low, i32x4 high) {
    const auto run = [&](auto widened, auto enabled) {
        using V = decltype(enabled);
        V lanes[8];
        for (int i = 0; i < 8; ++i) lanes[i] = widened(P[i]);
        const V change = edgeChange<places>(lanes, splat<V>(clip3(0, 256, pQuant)), enabled);
        return std::pair{lanes[3] - change, lanes[4] + change};
    };
    if constexpr (bytes <= 8) {
        const auto [P4, P5] = run([](u8x16 v) { return widenLow(v); }, as<i16x8>(low));
        return {narrowU8(P4, P4), narrowU8(P5, P5)};
    } else {
#if VEKVC_VECTOR256
        const auto [P4, P5] = run([](u8x16 v) { return widen(v); }, as<i16x16>(join(low, high)));
        return {narrowU8(lowHalf(P4), highHalf(P4)), narrowU8(lowHalf(P5), highHalf(P5))};
#else
        const auto [a4, a5] = run([](u8x16 v) { return widenLow(v); }, as<i16x8>(low));
        const auto [b4, b5] = run([](u8x16 v) { return widenHigh(v); }, as<i16x8>(high));
        return {narrowU8(a4, b4), narrowU8(a5, b5)};
#endif
    }
}

// Columns of 8-byte rows: P1 and P2 in x[0], P3 and P4 in x[1] ... Rows beyond the first `rows` count as 0.
template <int rows>
VEKVC_SIMD_INLINE void loadColumns(const Vek8u* p, std::ptrdiff_t step, u8x16 (&x)[4]) {
    for (int i = 0; i < 4; ++i)
        x[i] = 2 * i < rows ? loadPair8<u8x16>(p + 2 * i * step, p + (2 * i + 1) * step) : zero<u8x16>();
    for (int bit = 0; bit < 3; ++bit) interleaveBytes(x);
}
template <int rows, class V>
VEKVC_SIMD_INLINE void storeRows16(Vek8u* p, std::ptrdiff_t step, V v) {
    if constexpr (rows == 8) {
        storeLanes16([=](int i) { return p + i * step; }, as<u16x8>(v));
    } else {
        storeBytes<2>(p, v);
        storeBytes<2>(p + step, bytesRight<2>(v));
        storeBytes<2>(p + 2 * step, bytesRight<4>(v));
        storeBytes<2>(p + 3 * step, bytesRight<6>(v));
    }
}
VEKVC_SIMD_INLINE void storeRows32(Vek8u* p, std::ptrdiff_t step, u16x8 v) {
    storeLanes32([=](int i) { return p + i * step; }, as<u32x4>(v));
}

// `n` samples along an edge, all enabled.
template <Edge edge, int n>
VEKVC_SIMD_INLINE void filterSamples(Vek8u* p, std::ptrdiff_t step, Vek32s pQuant) {
    const i32x4 all = splat<i32x4>(-1);
    u8x16 P[8];
    if constexpr (edge == Edge::horizontal) {
        for (int i = 0; i < 8; ++i) P[i] = loadBytes<u8x16, n>(p + (i - 4) * step);
        const ChangedPixels c = filterAlong<Places::samples, n>(P, pQuant, all, all);
        storeBytes<n>(p - step, c.P4);
        storeBytes<n>(p, c.P5);
    } else {
        u8x16 top[4];
        loadColumns<n == 4 ? 4 : 8>(p - 4, step, top);
        if constexpr (n == 16) {
            u8x16 bottom[4];
            loadColumns<8>(p - 4 + 8 * step, step, bottom);
            for (int i = 0; i < 4; ++i) {
                P[2 * i] = joinLow(top[i], bottom[i]);
                P[2 * i + 1] = joinHigh(top[i], bottom[i]);
            }
        } else {
            for (int i = 0; i < 4; ++i) {
                P[2 * i] = top[i];
                P[2 * i + 1] = swapHalves(top[i]);
            }
        }
        const ChangedPixels c = filterAlong<Places::samples, n>(P, pQuant, all, all);
        storeRows16<n == 4 ? 4 : 8>(p - 1, step, interleaveLow(c.P4, c.P5));
        if constexpr (n == 16) storeRows16<8>(p - 1 + 8 * step, step, interleaveHigh(c.P4, c.P5));
    }
}

template <Edge edge, int segments>
VEKVC_SIMD_INLINE void filterEdge(Vek8u* p, std::ptrdiff_t step, Vek32s pQuant, unsigned enabled) {
    if (enabled == (1u << segments) - 1) {
        filterSamples<edge, 4 * segments>(p, step, pQuant);
        return;
    }
    const std::ptrdiff_t next = 4 * (edge == Edge::horizontal ? 1 : step);
    for (; enabled != 0; enabled >>= 1, p += next)
        if ((enabled & 1) != 0) filterSamples<edge, 4>(p, step, pQuant);
}

// `n` pairs along an edge, enabled by component.
template <Edge edge, int n>
VEKVC_SIMD_INLINE void filterPairs(Vek8u* p, std::ptrdiff_t step, Vek32s pQuant, i32x4 low, i32x4 high) {
    u8x16 P[8];
    if constexpr (edge == Edge::horizontal) {
        for (int i = 0; i < 8; ++i) P[i] = loadBytes<u8x16, 2 * n>(p + (i - 4) * step);
        const ChangedPixels c = filterAlong<Places::pairs, 2 * n>(P, pQuant, low, high);
        storeBytes<2 * n>(p - step, c.P4);
        storeBytes<2 * n>(p, c.P5);
    } else {
        i16x8 rows[8];
        for (int y = 0; y < 8; ++y) rows[y] = y < n ? load<i16x8>(p - 8 + y * step) : zero<i16x8>();
        transpose8x8(rows);
        for (int i = 0; i < 8; ++i) P[i] = as<u8x16>(rows[i]);
        const ChangedPixels c = filterAlong<Places::pairs, 2 * n>(P, pQuant, low, high);
        storeRows32(p - 2, step, interleaveLow(as<u16x8>(c.P4), as<u16x8>(c.P5)));
        if constexpr (n == 8) storeRows32(p - 2 + 4 * step, step, interleaveHigh(as<u16x8>(c.P4), as<u16x8>(c.P5)));
    }
}

template <Edge edge>
VEKVC_SIMD_INLINE void filterEdgeInterleaved(Vek8u* p, std::ptrdiff_t step, Vek32s pQuant, unsigned enabledU,
                                             unsigned enabledV) {
    const EnabledPairs enabled(enabledU, enabledV);
    const i32x4 low = splat<i32x4>(enabled.segment[0]), high = splat<i32x4>(enabled.segment[1]);
    switch (enabledU | enabledV) {
        case 1:
            return filterPairs<edge, 4>(p, step, pQuant, low, low);
        case 2:
            return filterPairs<edge, 4>(p + 4 * (edge == Edge::horizontal ? 2 : step), step, pQuant, high, high);
        case 3:
            return filterPairs<edge, 8>(p, step, pQuant, low, high);
    }
}

}  // namespace vekvc::simd

#endif
