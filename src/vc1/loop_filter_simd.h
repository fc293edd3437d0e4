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
[[gnu::always_inline]] inline V thirdPlace(V mask) {
    if constexpr (places == Places::pairs) {
        return shuffle32<2, 2, 2, 2>(mask);
    } else {
        alignas(32) static constexpr Vek8u kThird[32] = {4, 5, 4, 5, 4, 5, 4, 5, 12, 13, 12, 13, 12, 13, 12, 13,
                                                         4, 5, 4, 5, 4, 5, 4, 5, 12, 13, 12, 13, 12, 13, 12, 13};
        return shuffleBytes(mask, load<V>(kThird));
    }
}

// The samples across an edge, in pairs: P1 and P2, P3 and P4, P5 and P6, P7 and P8 side by side in each 16-bit lane.
template <class V>
struct Across {
    V pair[4];

    [[gnu::always_inline]] inline V P4() const { return as<V>(as<Vec<Vek16u, V::kBytes / 2>>(pair[1]) >> 8); }
    [[gnu::always_inline]] inline V P5() const { return pair[2] & constant<V, 255>(); }
};

// (2 (a - d) - 5 (b - c) + 4) >> 3 of the pairs a and b, c and d: at most 224 either way.
template <class V>
[[gnu::always_inline]] inline V activity(V ab, V cd) {
    using Bytes = Vec<Vek8u, V::kBytes>;
    using Weights = Vec<std::int8_t, V::kBytes>;
    const V sum = mulAddPairs(as<Bytes>(ab), as<Weights>(constant<V, 2 + -5 * 256>())) +
                  mulAddPairs(as<Bytes>(cd), as<Weights>(constant<V, 5 + -2 * 256>()));
    return (sum + constant<V, 4>()) >> 3;
}

// What is taken from P4 and added to P5. a0 and d have opposite signs, so that d goes with clip where a0 and P4 - P5
// differ in sign.
template <Places places, class V>
[[gnu::always_inline]] inline V edgeChange(const Across<V>& P, Vek32s pQuant) {
    const V step = P.P4() - P.P5(), clip = abs(step) >> 1;
    const V a0 = activity(P.pair[1], P.pair[2]);
    const V a1 = activity(P.pair[0], P.pair[1]), a2 = activity(P.pair[2], P.pair[3]);
    const V size = abs(a0), excess = size - min(abs(a1), abs(a2));
    const auto quant32 = splat<Vec<Vek32s, V::kBytes / 4>>(pQuant);
    const V quant = narrowI16(quant32, quant32);
    const V filtered = (min(clip, excess) > zero<V>()) & (quant > size);
    const V away = (a0 ^ step) >> 15;
    const V d = min(excess * constant<V, 5>() >> 3, clip);
    return withSign(d & filtered & thirdPlace<places>(filtered) & away, step);
}

// The 16-bit lanes of one vector as bytes.
[[gnu::always_inline]] inline u8x16 bytesOf(i16x8 v) { return narrowU8(v, v); }
#if VEKVC_VECTOR256
[[gnu::always_inline]] inline u8x16 bytesOf(i16x16 v) { return narrowU8(lowHalf(v), highHalf(v)); }
#endif

// Bytes of two rows in the 16-bit lanes of V: the low eight, or all.
template <class V>
[[gnu::always_inline]] inline V sideBySide(u8x16 first, u8x16 second) {
    const i16x8 low = as<i16x8>(interleaveLow(first, second));
#if VEKVC_VECTOR256
    if constexpr (V::kBytes == 32)
        return join(low, as<i16x8>(interleaveHigh(first, second)));
    else
#endif
        return low;
}

// ---- one plane

// Rows of eight pixels, transposed in pairs. Of `rows` rows, 4 or 8 come into each half of the lanes.
template <int rows, class V>
[[gnu::always_inline]] inline Across<V> loadColumns(const Vek8u* p, std::ptrdiff_t step) {
    const auto twoRows = [=](int y) {
        return y % 8 < rows ? loadPair8<i16x8>(p + y * step, p + (y + 1) * step) : zero<i16x8>();
    };
    V x[4];
    for (int i = 0; i < 4; ++i) {
#if VEKVC_VECTOR256
        if constexpr (rows == 16)
            x[i] = join(twoRows(2 * i), twoRows(2 * i + 8));
        else
#endif
            x[i] = twoRows(2 * i);
    }
    for (int bit = 0; bit < 3; ++bit) {
        const V y[4] = {interleaveLow(x[0], x[2]), interleaveHigh(x[0], x[2]), interleaveLow(x[1], x[3]),
                        interleaveHigh(x[1], x[3])};
        for (int i = 0; i < 4; ++i) x[i] = y[i];
    }
    return {{x[0], x[1], x[2], x[3]}};
}
template <int rows, class V>
[[gnu::always_inline]] inline void storeRows16(Vek8u* p, std::ptrdiff_t step, V v) {
    if constexpr (rows == 8) {
        storeLanes16([=](int i) { return p + i * step; }, as<u16x8>(v));
    } else {
        storeBytes<2>(p, v);
        storeBytes<2>(p + step, bytesRight<2>(v));
        storeBytes<2>(p + 2 * step, bytesRight<4>(v));
        storeBytes<2>(p + 3 * step, bytesRight<6>(v));
    }
}

// `n` samples along an edge, in the lanes of V.
template <Edge edge, int n, class V>
[[gnu::always_inline]] inline void filterSamples(Vek8u* p, std::ptrdiff_t step, Vek32s pQuant) {
    Across<V> P;
    if constexpr (edge == Edge::horizontal) {
        const auto row = [=](int i) { return loadBytes<u8x16, n>(p + (i - 4) * step); };
        for (int i = 0; i < 4; ++i) P.pair[i] = sideBySide<V>(row(2 * i), row(2 * i + 1));
    } else {
        P = loadColumns<n, V>(p - 4, step);
    }
    const V change = edgeChange<Places::samples>(P, pQuant);
    const V P4 = P.P4() - change, P5 = P.P5() + change;
    if constexpr (edge == Edge::horizontal) {
        storeBytes<n>(p - step, bytesOf(P4));
        storeBytes<n>(p, bytesOf(P5));
    } else {
        const V both = P4 | P5 << 8;
#if VEKVC_VECTOR256
        if constexpr (n == 16) {
            storeRows16<8>(p - 1, step, lowHalf(both));
            storeRows16<8>(p - 1 + 8 * step, step, highHalf(both));
        } else
#endif
            storeRows16<n>(p - 1, step, both);
    }
}
template <Edge edge, int n>
[[gnu::always_inline]] inline void filterSamples(Vek8u* p, std::ptrdiff_t step, Vek32s pQuant) {
    if constexpr (n == 16) {
#if VEKVC_VECTOR256
        filterSamples<edge, 16, i16x16>(p, step, pQuant);
#else
        filterSamples<edge, 8, i16x8>(p, step, pQuant);
        filterSamples<edge, 8, i16x8>(p + 8 * (edge == Edge::horizontal ? 1 : step), step, pQuant);
#endif
    } else {
        filterSamples<edge, n, i16x8>(p, step, pQuant);
    }
}

template <Edge edge, int segments>
[[gnu::always_inline]] inline void filterEdge(Vek8u* p, std::ptrdiff_t step, Vek32s pQuant, unsigned enabled) {
    if (enabled == (1u << segments) - 1) {
        filterSamples<edge, 4 * segments>(p, step, pQuant);
        return;
    }
    const std::ptrdiff_t next = 4 * (edge == Edge::horizontal ? 1 : step);
    for (; enabled != 0; enabled >>= 1, p += next)
        if ((enabled & 1) != 0) filterSamples<edge, 4>(p, step, pQuant);
}

// ---- pairs of interleaved chroma

// The components that are filtered in a segment, as a mask of each pair's 16-bit lanes.
[[gnu::always_inline]] inline i16x8 enabledLanes(unsigned u, unsigned v, int segment) {
    const unsigned mask = (u >> segment & 1) * 0xFFFFu | (v >> segment & 1) * 0xFFFF0000u;
    return as<i16x8>(splat<i32x4>(static_cast<Vek32s>(mask)));
}

struct ChangedPixels {
    u8x16 P4, P5;
};

// The low 8 bytes along an edge, or all 16; `low` and `high` are the masks of the two segments.
template <int bytes>
[[gnu::always_inline]] inline ChangedPixels filterAlong(const u8x16 (&P)[8], Vek32s pQuant, i16x8 low, i16x8 high) {
    const auto run = [&](auto enabled, auto pairOf) {
        using V = decltype(enabled);
        const Across<V> across = {{pairOf(P[0], P[1]), pairOf(P[2], P[3]), pairOf(P[4], P[5]), pairOf(P[6], P[7])}};
        const V change = edgeChange<Places::pairs>(across, pQuant) & enabled;
        return ChangedPixels{bytesOf(across.P4() - change), bytesOf(across.P5() + change)};
    };
    if constexpr (bytes <= 8) return run(low, sideBySide<i16x8>);
#if VEKVC_VECTOR256
    return run(join(low, high), sideBySide<i16x16>);
#else
    const ChangedPixels a = run(low, sideBySide<i16x8>);
    const ChangedPixels b =
        run(high, [](u8x16 first, u8x16 second) { return as<i16x8>(interleaveHigh(first, second)); });
    return {joinLow(a.P4, b.P4), joinLow(a.P5, b.P5)};
#endif
}

// `n` pairs along an edge.
template <Edge edge, int n>
[[gnu::always_inline]] inline void filterPairs(Vek8u* p, std::ptrdiff_t step, Vek32s pQuant, i16x8 low, i16x8 high) {
    u8x16 P[8];
    if constexpr (edge == Edge::horizontal) {
        for (int i = 0; i < 8; ++i) P[i] = loadBytes<u8x16, 2 * n>(p + (i - 4) * step);
    } else {
        i16x8 rows[8];
        for (int y = 0; y < 8; ++y) rows[y] = y < n ? load<i16x8>(p - 8 + y * step) : zero<i16x8>();
        transpose8x8(rows);
        for (int i = 0; i < 8; ++i) P[i] = as<u8x16>(rows[i]);
    }
    const ChangedPixels c = filterAlong<2 * n>(P, pQuant, low, high);
    if constexpr (edge == Edge::horizontal) {
        storeBytes<2 * n>(p - step, c.P4);
        storeBytes<2 * n>(p, c.P5);
    } else {
        const auto row = [=](int y) { return p - 2 + y * step; };
        storeLanes32(row, as<u32x4>(interleaveLow(as<u16x8>(c.P4), as<u16x8>(c.P5))));
        if constexpr (n == 8)
            storeLanes32([=](int y) { return row(y + 4); },
                         as<u32x4>(interleaveHigh(as<u16x8>(c.P4), as<u16x8>(c.P5))));
    }
}

template <Edge edge>
[[gnu::always_inline]] inline void filterEdgeInterleaved(Vek8u* p, std::ptrdiff_t step, Vek32s pQuant,
                                                         unsigned enabledU, unsigned enabledV) {
    const i16x8 low = enabledLanes(enabledU, enabledV, 0), high = enabledLanes(enabledU, enabledV, 1);
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
