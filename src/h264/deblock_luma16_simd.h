// Deblocking of 16-bit luma, H.264 8.7.2, for samples of at most 14 bits: a vector holds one sample of sixteen lines
// (of eight where vectors have 128 bits).
#ifndef VEKVC_H264_DEBLOCK_LUMA16_SIMD_H
#define VEKVC_H264_DEBLOCK_LUMA16_SIMD_H

#include "core/memory.h"
#include "core/simd.h"
#include "h264/deblock_plain.h"

namespace vekvc::simd {

#if VEKVC_VECTOR256
using Lines16u = u16x16;
#else
using Lines16u = u16x8;
#endif
using SignedLines16u = Vec<std::int16_t, Lines16u::kBytes / 2>;
inline constexpr int kLines16u = Lines16u::kBytes / 2;

// Per line: alpha, beta, tc0, the largest sample, and all ones where the line has a strength, where it has 4.
struct LineLimits16u {
    SignedLines16u alpha, beta, tC0, maxSample, active, strong;
    SignedLines16u closeLimit;  // (alpha >> 2) + 2
    bool anyStrong;
};

[[gnu::always_inline]] inline SignedLines16u limit(SignedLines16u low, SignedLines16u high, SignedLines16u x) {
    return min(max(x, low), high);
}
// The samples of the side p with bS 4, near enough to be smoothed all the way. All sums are below 2^16 for 14 bits:
// (2 s + t + 4) >> 3 = (s + (t >> 1) + 2) >> 2.
struct StrongSide16u {
    SignedLines16u s0, s1, s2;
};
[[gnu::always_inline]] inline StrongSide16u strongSide16u(SignedLines16u p3, SignedLines16u p2, SignedLines16u p1,
                                                          SignedLines16u p0, SignedLines16u q0, SignedLines16u q1) {
    using S = SignedLines16u;
    const auto half = [](S x) { return as<S>(as<Lines16u>(x) >> 1); };
    const auto quarter = [](S x) { return as<S>(as<Lines16u>(x + splat<S>(2)) >> 2); };
    const S s = p1 + p0 + q0, v = p2 + s;
    return {quarter(s + half(p2 + q1)), quarter(v), quarter(p3 + p2 + half(v))};
}

// The lines across one edge.
[[gnu::always_inline]] inline void filterLuma16u(SignedLines16u* lines, const LineLimits16u& l) {
    using S = SignedLines16u;
    const S p3 = lines[0], p2 = lines[1], p1 = lines[2], p0 = lines[3];
    const S q0 = lines[4], q1 = lines[5], q2 = lines[6], q3 = lines[7];
    const auto distance = [](S a, S b) { return abs(a - b); };
    const S mask = (l.alpha > distance(p0, q0)) & (l.beta > distance(p1, p0)) & (l.beta > distance(q1, q0)) & l.active;
    const S ap = (l.beta > distance(p2, p0)) & mask, aq = (l.beta > distance(q2, q0)) & mask;
    const S tC0 = l.tC0 & mask, zeros = zero<S>();
    // ((q0 - p0) * 4 + (p1 - q1) + 4) >> 3 = ((q0 - p0) + ((p1 - q1 + 4) >> 2)) >> 1
    const S tC = tC0 - ap - aq;
    const S delta = limit(zeros - tC, tC, ((q0 - p0) + ((p1 - q1 + splat<S>(4)) >> 2)) >> 1);
    const S middle = as<S>(average(as<Lines16u>(p0), as<Lines16u>(q0)));
    const S tP = tC0 & ap, tQ = tC0 & aq;
    lines[2] = p1 + limit(zeros - tP, tP, (p2 + middle - p1 - p1) >> 1);
    lines[5] = q1 + limit(zeros - tQ, tQ, (q2 + middle - q1 - q1) >> 1);
    lines[3] = limit(zeros, l.maxSample, p0 + delta);
    lines[4] = limit(zeros, l.maxSample, q0 - delta);
    if (!l.anyStrong) return;

    const S strong = mask & l.strong, close = (l.closeLimit > distance(p0, q0)) & strong;
    const auto quarter = [](S x) { return as<S>(as<Lines16u>(x + splat<S>(2)) >> 2); };
    const StrongSide16u p = strongSide16u(p3, p2, p1, p0, q0, q1), q = strongSide16u(q3, q2, q1, q0, p0, p1);
    const S useP = ap & close, useQ = aq & close;
    lines[3] = select(strong, select(useP, p.s0, quarter(p1 + p1 + p0 + q1)), lines[3]);
    lines[4] = select(strong, select(useQ, q.s0, quarter(q1 + q1 + q0 + p1)), lines[4]);
    lines[2] = select(strong, select(useP, p.s1, p1), lines[2]);
    lines[5] = select(strong, select(useQ, q.s1, q1), lines[5]);
    lines[1] = select(useP, p.s2, p2);
    lines[6] = select(useQ, q.s2, q2);
}

// The strengths and values of four edges, and which of them do something.
struct LumaEdges16u {
    const DeblockOperands<Vek16u>& o;
    u8x16 bS;
    std::uint32_t on;  // four bits per edge, a bit per segment with a strength

    explicit LumaEdges16u(const DeblockOperands<Vek16u>& operands)
        : o(operands), bS(min(load<u8x16>(o.bS), splat<u8x16>(4))), on(~byteMask(bS == zero<u8x16>()) & 0xFFFF) {}
    bool isOn(int e) const { return (on >> 4 * e & 15) != 0; }

    // Edge e's values for the lines from `first` on. Limits beyond the range of differences mean the same as its end.
    LineLimits16u limits(int e, int first) const {
        using S = SignedLines16u;
        const int alpha = load<Vek16u>(o.alpha + (e != 0)), beta = load<Vek16u>(o.beta + (e != 0));
        const u16x8 tC0 = min(loadBytes<u16x8, 8>(o.thresholds + 4 * e), splat<u16x8>(20000));
        const S strengths = spread(as<i16x8>(widenLow(shuffleBytes(bS, splat<u8x16>(4 * e) + iota()))), first);
        const S strong = strengths == splat<S>(4);
        return {splat<S>(alpha < 32767 ? alpha : 32767),
                splat<S>(beta < 32767 ? beta : 32767),
                spread(as<i16x8>(tC0), first),
                splat<S>(o.maxSample),
                strengths > zero<S>(),
                strong,
                splat<S>((alpha >> 2) + 2),
                !allZero(strong)};
    }

  private:
    static u8x16 iota() {
        alignas(16) static constexpr std::uint8_t kIota[16] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
        return load<u8x16>(kIota);
    }
    // Four values, one per segment, to four lines each.
    static SignedLines16u spread(i16x8 values, int first) {
        alignas(16) static constexpr std::uint8_t kIndex[32] = {0, 1, 0, 1, 0, 1, 0, 1, 2, 3, 2, 3, 2, 3, 2, 3,
                                                                4, 5, 4, 5, 4, 5, 4, 5, 6, 7, 6, 7, 6, 7, 6, 7};
        const std::uint8_t* index = kIndex + 2 * first;
#if VEKVC_VECTOR256
        return shuffleBytes(join(values, values), load<u8x32>(index));
#else
        return shuffleBytes(values, load<u8x16>(index));
#endif
    }
};

// The 32-bit lanes of eight samples from `first` on in a row: two segments of four.
inline i32x4 segmentMask(std::uint32_t segments, int first) {
    const i32x4 bits = lanes<i32x4>(1, 1, 2, 2);
    return (splat<i32x4>(segments >> first / 4) & bits) == bits;
}

// ---- horizontal edges

template <class T>
void deblockLumaHorizontal(const DeblockOperands<T>& o) requires(sizeof(T) == 2) {
    using S = SignedLines16u;
    const LumaEdges16u edges(o);
    const auto at = [&](int row, int column) { return offsetBytes(o.pixels, row * o.step) + column; };
    for (int e = 0; e < 4; ++e) {
        const std::uint32_t segments = edges.on >> 4 * e & 15;
        if (segments == 0) continue;
        for (int first = 0; first < 16; first += kLines16u) {
            const LineLimits16u limits = edges.limits(e, first);
            S lines[8];
            // The normal filter needs neither p3 nor q3, and changes neither p2 nor q2.
            const int outermost = limits.anyStrong ? 0 : 1, outermostWritten = outermost + 1;
            const auto each = [&](int from, auto use) {
#pragma GCC unroll 8
                for (int k = 0; k < 8; ++k)
                    if (k >= from && k < 8 - from) use(k, at(4 * e - 4 + k, first));
            };
            lines[0] = lines[7] = zero<S>();
            if (segments == 15) {
                each(outermost, [&](int k, const Vek16u* p) { lines[k] = load<S>(p); });
                filterLuma16u(lines, limits);
                each(outermostWritten, [&](int k, Vek16u* p) { store(p, lines[k]); });
                continue;
            }
            const i32x4 mask = segmentMask(segments, first);
#if VEKVC_VECTOR256
            const i32x4 highMask = segmentMask(segments, 8);
            each(outermost, [&](int k, const Vek16u* p) {
                lines[k] = join(loadMasked<i16x8>(p, mask), loadMasked<i16x8>(p + 8, highMask));
            });
            filterLuma16u(lines, limits);
            each(outermostWritten, [&](int k, Vek16u* p) {
                storeMasked(p, mask, lowHalf(lines[k]));
                storeMasked(p + 8, highMask, highHalf(lines[k]));
            });
#else
            each(outermost, [&](int k, const Vek16u* p) { lines[k] = loadMasked<S>(p, mask); });
            filterLuma16u(lines, limits);
            each(outermostWritten, [&](int k, Vek16u* p) { storeMasked(p, mask, lines[k]); });
#endif
        }
    }
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
            if (edges.isOn(e)) filterLuma16u(lines, edges.limits(e, first));
            storeColumns16u(lines, p, o.step, segmentsOf(e));
            for (int k = 0; k < 4; ++k) lines[k] = lines[k + 4];
        }
        storeColumns16u(lines, p, o.step, segmentsOf(4));
    }
}

}  // namespace vekvc::simd

#endif
