// Fast forms of deblocking: the eight lines across an edge in 16-bit lanes.
#ifndef VEKVC_MPEG4_DEBLOCK_SIMD_H
#define VEKVC_MPEG4_DEBLOCK_SIMD_H

#include "core/simd.h"
#include "mpeg4/deblock_plain.h"

namespace vekvc::simd {

using mpeg4::Edge;

[[gnu::always_inline]] inline u8x16 upperBytes(u8x16 v) { return bytesRight<8>(v); }

// ---- H.263 Annex J

// Samples A and B, C and D of eight lines, side by side in bytes.
struct EdgeSamples {
    u8x16 AB, CD;
};

[[gnu::always_inline]] inline EdgeSamples filterH263(EdgeSamples s, Vek32s QP) {
    using V = i16x8;
    const V A = widenLow(s.AB), B = widenHigh(s.AB), C = widenLow(s.CD), D = widenHigh(s.CD);
    const V across = A - D, sum = across + ((C - B) << 2);
    // Quotients towards zero keep the sign of the dividend: magnitudes are shifted.
    const V size = abs(sum) >> 3;
    const u16x8 strength = splat<u16x8>(mpeg4::kStrength[QP]), excess = subSat(as<u16x8>(size), strength);
    const V ramp = as<V>(subSat(as<u16x8>(size), excess + excess));
    const V d1 = withSign(ramp, sum), d2 = withSign(min(abs(across) >> 2, ramp >> 1), across);
    return {narrowU8(A - d2, B + d1), narrowU8(C - d1, D + d2)};
}

template <Edge edge>
[[gnu::always_inline]] inline VekStatus deblockH263(Vek8u* p, std::ptrdiff_t step, Vek32s QP) {
    if constexpr (edge == Edge::horizontal) {
        Vek8u* const above = p - 2 * step;
        const EdgeSamples s = filterH263({loadPair8<u8x16>(above, above + step), loadPair8<u8x16>(p, p + step)}, QP);
        storePair8(above, above + step, s.AB);
        storePair8(p, p + step, s.CD);
    } else {
        const auto row = [=](int y) { return p - 2 + y * step; };
        const auto lowerRow = [=](int y) { return p - 2 + (y + 4) * step; };
        const u8x16 columns = lanes<u8x16>(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15);
        const u32x4 x = as<u32x4>(shuffleBytes(loadLanes32<u8x16>(row), columns));
        const u32x4 y = as<u32x4>(shuffleBytes(loadLanes32<u8x16>(lowerRow), columns));
        const EdgeSamples s = filterH263({as<u8x16>(interleaveLow(x, y)), as<u8x16>(interleaveHigh(x, y))}, QP);
        const auto AB = as<u16x8>(interleaveLow(s.AB, upperBytes(s.AB)));
        const auto CD = as<u16x8>(interleaveLow(s.CD, upperBytes(s.CD)));
        storeLanes32(row, as<u32x4>(interleaveLow(AB, CD)));
        storeLanes32(lowerRow, as<u32x4>(interleaveHigh(AB, CD)));
    }
    return vekStsOk;
}

// ---- 14496-2 Annex F.3.1

// x / 8 to the nearest integer, for magnitudes.
[[gnu::always_inline]] inline i16x8 eighthOf(i16x8 size) { return (size + constant<i16x8, 4>()) >> 3; }

// (1 1 2 2 4 2 2 1 1) / 16 of v1 to v8: windows of nine and of five samples, and twice the one in the middle.
[[gnu::always_inline]] inline void smoothLines(const i16x8 (&v)[10], i16x8 before, i16x8 behind, i16x8 (&out)[8]) {
    const auto at = [&](int m) { return m < 1 ? before : m > 8 ? behind : v[m]; };
    i16x8 nine = ((before + before) << 1) + v[1] + v[2] + v[3] + v[4] + v[5] + constant<i16x8, 8>();
    i16x8 five = before + before + v[1] + v[2] + v[3];
    for (int k = 1; k <= 8; ++k) {
        out[k - 1] = (nine + five + v[k] + v[k]) >> 4;
        nine += at(k + 5) - at(k - 4);
        five += at(k + 3) - at(k - 2);
    }
}

// v1 to v8 as they leave the filter, in w; false where nothing changes.
[[gnu::always_inline]] inline bool filterMpeg4(const i16x8 (&v)[10], Vek32s QP, i16x8 (&w)[8]) {
    using V = i16x8;
    const V qp = splat<V>(QP), three = constant<V, 3>();
    V equal = zero<V>();  // less one for each pair
    for (int i = 0; i < 9; ++i) equal += three > abs(v[i] - v[i + 1]);
    const V flat = constant<V, -5>() > equal;
    V most = v[1], least = v[1];
    for (int i = 2; i < 9; ++i) most = max(most, v[i]), least = min(least, v[i]);
    const V smooth = flat & (qp + qp > most - least);

    // The three frequencies, and the change at the edge: by (5 (|e0| - least) + 4) >> 3, against the sign of e0, towards
    // each other only.
    const auto frequency = [&](int i) {
        const V middle = v[i + 2] - v[i + 1];
        return ((v[i] - v[i + 3]) << 1) + (middle << 2) + middle;
    };
    const V e0 = frequency(3), size = eighthOf(abs(e0));
    const V calmest = min(size, min(eighthOf(abs(frequency(1))), eighthOf(abs(frequency(5)))));
    const V excess = size - calmest, t = eighthOf((excess << 2) + excess);
    const V gap = v[4] - v[5], opposite = (e0 ^ gap) >> 15;
    const V change = andNot(flat, qp > size) & opposite;
    const V d = withSign(min(t, abs(gap) >> 1) & change, gap);
    if (allZero(smooth | d)) return false;

    const V before = select(qp > abs(v[1] - v[0]), v[0], v[1]), behind = select(qp > abs(v[8] - v[9]), v[9], v[8]);
    smoothLines(v, before, behind, w);
    for (int k = 1; k <= 8; ++k) {
        const V other = k == 4 ? v[4] - d : k == 5 ? v[5] + d : v[k];
        w[k - 1] = select(smooth, w[k - 1], other);
    }
    return true;
}

template <Edge edge>
[[gnu::always_inline]] inline VekStatus deblockMpeg4(Vek8u* p, std::ptrdiff_t step, Vek32s QP) {
    i16x8 v[10], w[8];
    if constexpr (edge == Edge::horizontal) {
        for (int i = 0; i < 10; ++i) v[i] = widenLow(loadBytes<u8x16, 8>(p + (i - 5) * step));
        if (!filterMpeg4(v, QP, w)) return vekStsOk;
        for (int i = 0; i < 8; i += 2) {
            Vek8u* const row = p + (i - 4) * step;
            storePair8(row, row + step, narrowU8(w[i], w[i + 1]));
        }
    } else {
        // v0 to v7 by a transposition of eight bytes of each row, v8 and v9 as pairs of bytes.
        u8x16 x[4];
        for (int i = 0; i < 4; ++i) x[i] = loadPair8<u8x16>(p - 5 + 2 * i * step, p - 5 + (2 * i + 1) * step);
        for (int turn = 0; turn < 3; ++turn) interleaveBytes(x);
        for (int i = 0; i < 4; ++i) v[2 * i] = widenLow(x[i]), v[2 * i + 1] = widenHigh(x[i]);
        const u16x8 last = loadLanes16([=](int y) { return p + 3 + y * step; });
        v[8] = as<i16x8>(last & constant<u16x8, 255>()), v[9] = as<i16x8>(last >> 8);
        if (!filterMpeg4(v, QP, w)) return vekStsOk;
        for (int i = 0; i < 4; ++i) x[i] = narrowU8(w[2 * i], w[2 * i + 1]);
        for (int turn = 0; turn < 3; ++turn) interleaveBytes(x);
        for (int i = 0; i < 4; ++i) storePair8(p - 4 + 2 * i * step, p - 4 + (2 * i + 1) * step, x[i]);
    }
    return vekStsOk;
}

}  // namespace vekvc::simd

#endif
