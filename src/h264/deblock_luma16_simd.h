// Deblocking of 16-bit luma, H.264 8.7.2, for samples of at most 14 bits: a vector holds one sample of sixteen lines
// (of eight where vectors have 128 bits).
#ifndef VEKVC_H264_DEBLOCK_LUMA16_SIMD_H
#define VEKVC_H264_DEBLOCK_LUMA16_SIMD_H

#include "core/memory.h"
#include "core/simd.h"
#include "h264/deblock_luma_simd.h"
#include "h264/deblock_plain.h"

namespace vekvc::simd {

#if VEKVC_VECTOR256
using Lines16u = u16x16;
#else
using Lines16u = u16x8;
#endif
using SignedLines16u = Vec<std::int16_t, Lines16u::kBytes / 2>;
inline constexpr int kLines16u = Lines16u::kBytes / 2;

// Per line: alpha, (alpha >> 2) + 2, beta, tc0, the largest sample, and all ones where the line has a strength, where
// it has 4.
template <class S>
struct LineLimits16u {
    S alpha, closeLimit, beta, tC0, maxSample, active, strong;
};

template <class S>
[[gnu::always_inline]] inline S limit(S low, S high, S x) {
    return min(max(x, low), high);
}
// The samples of the side p with bS 4, near enough to be smoothed all the way. All sums are below 2^16 for 14 bits:
// (2 s + t + 4) >> 3 = (s + (t >> 1) + 2) >> 2.
template <class S>
struct StrongSide16u {
    S s0, s1, s2;
};
template <class S>
[[gnu::always_inline]] inline StrongSide16u<S> strongSide16u(S p3, S p2, S p1, S p0, S q0, S q1) {
    using U = Vec<std::uint16_t, S::kBytes / 2>;
    const auto half = [](S x) { return as<S>(as<U>(x) >> 1); };
    const auto quarter = [](S x) { return as<S>(as<U>(x + constant<S, 2>()) >> 2); };
    const S s = p1 + p0 + q0, v = p2 + s;
    return {quarter(s + half(p2 + q1)), quarter(v), quarter(p3 + p2 + half(v))};
}

// The lines across one edge.
template <class S>
[[gnu::always_inline]] inline void filterLuma16u(S* lines, const LineLimits16u<S>& l, bool anyStrong) {
    using U = Vec<std::uint16_t, S::kBytes / 2>;
    const S p3 = lines[0], p2 = lines[1], p1 = lines[2], p0 = lines[3];
    const S q0 = lines[4], q1 = lines[5], q2 = lines[6], q3 = lines[7];
    const auto distance = [](S a, S b) { return abs(a - b); };
    const S mask = (l.alpha > distance(p0, q0)) & (l.beta > max(distance(p1, p0), distance(q1, q0))) & l.active;
    const S ap = (l.beta > distance(p2, p0)) & mask, aq = (l.beta > distance(q2, q0)) & mask;
    const S tC0 = l.tC0 & mask, zeros = zero<S>();
    // ((q0 - p0) * 4 + (p1 - q1) + 4) >> 3 = ((q0 - p0) + ((p1 - q1 + 4) >> 2)) >> 1
    const S tC = tC0 - ap - aq;
    const S delta = limit(zeros - tC, tC, ((q0 - p0) + ((p1 - q1 + constant<S, 4>()) >> 2)) >> 1);
    const S middle = as<S>(average(as<U>(p0), as<U>(q0)));
    const S tP = tC0 & ap, tQ = tC0 & aq;
    lines[2] = p1 + limit(zeros - tP, tP, (p2 + middle - p1 - p1) >> 1);
    lines[5] = q1 + limit(zeros - tQ, tQ, (q2 + middle - q1 - q1) >> 1);
    lines[3] = limit(zeros, l.maxSample, p0 + delta);
    lines[4] = limit(zeros, l.maxSample, q0 - delta);
    if (!anyStrong) return;

    const S strong = mask & l.strong, close = (l.closeLimit > distance(p0, q0)) & strong;
    const auto quarter = [](S x) { return as<S>(as<U>(x + constant<S, 2>()) >> 2); };
    const StrongSide16u<S> p = strongSide16u(p3, p2, p1, p0, q0, q1), q = strongSide16u(q3, q2, q1, q0, p0, p1);
    const S useP = ap & close, useQ = aq & close;
    lines[3] = select(strong, select(useP, p.s0, quarter(p1 + p1 + p0 + q1)), lines[3]);
    lines[4] = select(strong, select(useQ, q.s0, quarter(q1 + q1 + q0 + p1)), lines[4]);
    lines[2] = select(strong, select(useP, p.s1, p1), lines[2]);
    lines[5] = select(strong, select(useQ, q.s1, q1), lines[5]);
    lines[1] = select(useP, p.s2, p2);
    lines[6] = select(useQ, q.s2, q2);
}

// Limits beyond the range of differences mean the same as its end.
template <class S>
[[gnu::always_inline]] inline S limit16u(const Vek16u* p) {
    using U = Vec<std::uint16_t, S::kBytes / 2>;
    return as<S>(min(splatFrom<U>(p), constant<U, 32767>()));
}

// The strengths and values of four edges, and which of them do something.
struct LumaEdges16u {
    using S = SignedLines16u;

    const DeblockOperands<Vek16u>& o;
    WideBytes bS;          // in vectors of 32 bytes: in both halves
    std::uint32_t on;      // four bits per edge, a bit per segment with a strength
    std::uint32_t strong;  // likewise: strength 4

    explicit LumaEdges16u(const DeblockOperands<Vek16u>& operands) : o(operands) {
#if VEKVC_VECTOR256
        bS = loadTwice16<u8x32>(o.bS);
#else
        bS = load<u8x16>(o.bS);
#endif
        on = byteMask(hasStrength(bS)) & 0xFFFF;
        strong = byteMask(isStrong(bS)) & 0xFFFF;
    }
    bool isOn(int e) const { return (on >> 4 * e & 15) != 0; }
    bool anyStrong(int e) const { return (strong >> 4 * e & 15) != 0; }

    // Edge e's values for the lines from `first` on.
    LineLimits16u<S> limits(int e, int first) const {
        alignas(32) static constexpr std::uint8_t kWords[32] = {0, 1, 0, 1, 0, 1, 0, 1, 2, 3, 2, 3, 2, 3, 2, 3,
                                                                4, 5, 4, 5, 4, 5, 4, 5, 6, 7, 6, 7, 6, 7, 6, 7};
        using Words = Vec<std::uint64_t, S::kBytes / 8>;
        using U = Vec<std::uint16_t, S::kBytes / 2>;
        const U tC0 = min(as<U>(splatFrom<Words>(o.thresholds + 4 * e)), constant<U, 20000>());
        const WideBytes strengths = shuffleBytes(bS, segments(e, first));
        return {limit16u<S>(o.alpha + (e != 0)), as<S>((splatFrom<U>(o.alpha + (e != 0)) >> 2) + constant<U, 2>()),
                limit16u<S>(o.beta + (e != 0)),  as<S>(shuffleBytes(tC0, load<WideBytes>(kWords + 2 * first))),
                splat<S>(o.maxSample),           as<S>(hasStrength(strengths)),
                as<S>(isStrong(strengths))};
    }
    // The columns of the segments with a strength, in the four rows above edge e, or below the last one.
    Vec<std::int32_t, S::kBytes / 4> linesAbove(int e, int first) const {
        const WideBytes segmentIsOn = hasStrength(bS), either = segmentIsOn | bytesLeft<4>(segmentIsOn);
        using Mask = Vec<std::int32_t, S::kBytes / 4>;
        return as<Mask>(e < 4 ? shuffleBytes(either, segments(e, first))
                              : shuffleBytes(segmentIsOn, segments(3, first)));
    }

  private:
    // The segment of each byte of an edge's lines.
    static WideBytes segments(int e, int first) {
        alignas(32) static constexpr std::uint8_t kSegments[32] = {0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1, 1, 1,
                                                                   2, 2, 2, 2, 2, 2, 2, 2, 3, 3, 3, 3, 3, 3, 3, 3};
        return load<WideBytes>(kSegments + 2 * first) + splat<WideBytes>(4 * e);
    }
};

// ---- horizontal edges

// Rows of a macroblock, the lines from `first` on: all of them ...
struct WholeRows16u {
    Vek16u* pixels;
    std::ptrdiff_t step;

    WholeRows16u(const LumaEdges16u& edges, int first) : pixels(edges.o.pixels + first), step(edges.o.step) {}
    SignedLines16u load(int i) const { return vekvc::load<SignedLines16u>(offsetBytes(pixels, i * step)); }
    void store(int i, SignedLines16u v) const { vekvc::store(offsetBytes(pixels, i * step), v); }
};
// ... or the columns of segments with a strength: of the four rows between two edges, where either one has one.
struct MaskedRows16u {
    Vek16u* pixels;
    std::ptrdiff_t step;
    Vec<std::int32_t, SignedLines16u::kBytes / 4> masks[5];

    MaskedRows16u(const LumaEdges16u& edges, int first) : pixels(edges.o.pixels + first), step(edges.o.step) {
        for (int e = 0; e < 5; ++e) masks[e] = edges.linesAbove(e, first);
    }
    SignedLines16u load(int i) const {
        return loadMasked<SignedLines16u>(offsetBytes(pixels, i * step), masks[(i + 4) / 4]);
    }
    void store(int i, SignedLines16u v) const { storeMasked(offsetBytes(pixels, i * step), masks[(i + 4) / 4], v); }
};

// Each row is loaded and stored once; those between two edges stay where they are.
template <class Rows>
[[gnu::noinline]] void filterRows16u(const LumaEdges16u& edges) {
    for (int first = 0; first < 16; first += kLines16u) {
        const Rows rows(edges, first);
        SignedLines16u lines[8];
        for (int k = 0; k < 4; ++k) lines[k] = rows.load(k - 4);
#pragma GCC unroll 4
        for (int e = 0; e < 4; ++e) {
            for (int k = 0; k < 4; ++k) lines[4 + k] = rows.load(4 * e + k);
            filterLuma16u(lines, edges.limits(e, first), edges.anyStrong(e));
            for (int k = e == 0 ? 1 : 0; k < 4; ++k) rows.store(4 * e - 4 + k, lines[k]);
            for (int k = 0; k < 4; ++k) lines[k] = lines[k + 4];
        }
        for (int k = 0; k < 3; ++k) rows.store(12 + k, lines[k]);
    }
}

template <class T>
void deblockLumaHorizontal(const DeblockOperands<T>& o) requires(sizeof(T) == 2) {
    const LumaEdges16u edges(o);
    if (edges.on == 0) return;
    if (edges.on == 0xFFFF)
        filterRows16u<WholeRows16u>(edges);
    else
        filterRows16u<MaskedRows16u>(edges);
}

// ---- vertical edges: groups of four columns are transposed, each group once

// A rotation of the address of each 16-bit lane (its vector, then its place) by one bit: see interleaveBytes. Here in
// each half of the vectors: rows of four lanes in pairs, 0 and 1, 2 and 3 ..., become columns of eight by three steps,
// and rows again by two.
[[gnu::always_inline]] inline void interleaveLanes(SignedLines16u (&x)[4]) {
    const SignedLines16u y[4] = {interleaveLow(x[0], x[2]), interleaveHigh(x[0], x[2]), interleaveLow(x[1], x[3]),
                                 interleaveHigh(x[1], x[3])};
    for (int i = 0; i < 4; ++i) x[i] = y[i];
}
// Four columns of the rows from p on; only rows of the segments whose bit is set are touched.
[[gnu::always_inline]] inline void loadColumns16u(SignedLines16u* columns, const Vek16u* p, std::ptrdiff_t step,
                                                  std::uint32_t segments) {
    const auto rows = [&](int k) {
        const Vek16u *row = offsetBytes(p, k * step), *next = offsetBytes(p, (k + 1) * step);
        return segments >> k / 4 & 1 ? loadPair8<i16x8>(row, next) : zero<i16x8>();
    };
    SignedLines16u x[4];
    for (int i = 0; i < 4; ++i) {
#if VEKVC_VECTOR256
        x[i] = join(rows(2 * i), rows(2 * i + 8));
#else
        x[i] = rows(2 * i);
#endif
    }
    for (int turn = 0; turn < 3; ++turn) interleaveLanes(x);
    for (int i = 0; i < 4; ++i) columns[i] = x[i];
}
[[gnu::always_inline]] inline void storeColumns16u(const SignedLines16u* columns, Vek16u* p, std::ptrdiff_t step,
                                                   std::uint32_t segments) {
    SignedLines16u x[4] = {columns[0], columns[1], columns[2], columns[3]};
    for (int turn = 0; turn < 2; ++turn) interleaveLanes(x);
    const auto rows = [&](int k, i16x8 both) {
        if (segments >> k / 4 & 1) storePair8(offsetBytes(p, k * step), offsetBytes(p, (k + 1) * step), both);
    };
    for (int i = 0; i < 4; ++i) {
#if VEKVC_VECTOR256
        rows(2 * i, lowHalf(x[i]));
        rows(2 * i + 8, highHalf(x[i]));
#else
        rows(2 * i, x[i]);
#endif
    }
}

template <class T>
void deblockLumaVertical(const DeblockOperands<T>& o) requires(sizeof(T) == 2) {
    const LumaEdges16u edges(o);
    if (edges.on == 0) return;
    // Group g lies between edges g - 1 and g; its rows are touched in the segments in which either has a strength.
    const std::uint32_t groups = edges.on << 4 | edges.on;
    for (int first = 0; first < 16; first += kLines16u) {
        const auto segmentsOf = [&](int g) { return groups >> (4 * g + first / 4) & (kLines16u == 16 ? 15u : 3u); };
        Vek16u* p = offsetBytes(o.pixels, first * o.step) - 4;
        SignedLines16u lines[8];
        loadColumns16u(lines, p, o.step, segmentsOf(0));
        for (int e = 0; e < 4; ++e, p += 4) {
            loadColumns16u(lines + 4, p + 4, o.step, segmentsOf(e + 1));
            if (edges.isOn(e)) filterLuma16u(lines, edges.limits(e, first), edges.anyStrong(e));
            storeColumns16u(lines, p, o.step, segmentsOf(e));
            for (int k = 0; k < 4; ++k) lines[k] = lines[k + 4];
        }
        storeColumns16u(lines, p, o.step, segmentsOf(4));
    }
}

// Part of a left edge between a frame and a field pair: eight lines, two to a strength. Lines without one are replaced
// by zeros, and stored to a spare place.
template <class T>
void deblockLumaLeftMbaff(T* pixels, std::ptrdiff_t step, const EdgeLimits& limits, const T* thresholds,
                          const Vek8u* bS) requires(sizeof(T) == 2) {
    alignas(16) static constexpr std::uint8_t kBytes[16] = {0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3};
    alignas(16) static constexpr std::uint8_t kWords[16] = {0, 1, 0, 1, 2, 3, 2, 3, 4, 5, 4, 5, 6, 7, 6, 7};
    const u8x16 strengths = shuffleBytes(loadBytes<u8x16, 4>(bS), load<u8x16>(kBytes));
    const u8x16 active = hasStrength(strengths), strong = isStrong(strengths);
    const u16x8 tC0 = min(loadBytes<u16x8, 8>(thresholds), constant<u16x8, 20000>());
    const LineLimits16u<i16x8> l{splat<i16x8>(limits.alpha < 32767 ? limits.alpha : 32767),
                                 splat<i16x8>((limits.alpha >> 2) + 2),
                                 splat<i16x8>(limits.beta < 32767 ? limits.beta : 32767),
                                 as<i16x8>(shuffleBytes(tC0, load<u8x16>(kWords))),
                                 splat<i16x8>(limits.maxSample),
                                 as<i16x8>(active),
                                 as<i16x8>(strong)};
    alignas(16) static constexpr Vek16u kZeros[8] = {};
    alignas(16) Vek16u spare[8];
    const std::uint32_t on = byteMask(active);
    const auto rowOr = [&](int k, auto* other) { return on >> 2 * k & 1 ? offsetBytes(pixels, k * step) - 4 : other; };
    i16x8 lines[8];
    for (int k = 0; k < 8; ++k) lines[k] = load<i16x8>(rowOr(k, kZeros));
    transpose8x8(lines);
    filterLuma16u(lines, l, !allZero(strong));
    transpose8x8(lines);
    for (int k = 0; k < 8; ++k) store(rowOr(k, spare), lines[k]);
}

}  // namespace vekvc::simd

#endif
