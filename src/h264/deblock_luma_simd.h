// Deblocking of 8-bit luma, H.264 8.7.2, sixteen lines at a time: a vector holds one sample of every line.
//
// The samples of a macroblock's lines are brought into an array of such vectors (for vertical edges by transposition),
// filtered there, and stored back. Lines of segments with strength 0 are masked out of loads and stores.
#ifndef VEKVC_H264_DEBLOCK_LUMA_SIMD_H
#define VEKVC_H264_DEBLOCK_LUMA_SIMD_H

#include "core/memory.h"
#include "core/simd.h"
#include "h264/deblock_plain.h"

namespace vekvc::simd {

// tc0 up to which the sums of normalLuma() are exact in 8 bits (the standard's largest is 25).
inline constexpr int kLargestThreshold = 92;

// Per line: alpha, beta, tc0, and all ones where the line has a strength.
template <class U>
struct LineLimits {
    U alpha;
    U beta;
    U tC0;
    U active;
};

// mask without the lines in which |a - b| < beta does not hold.
template <class U>
[[gnu::always_inline]] inline U withinBeta(U a, U b, U beta, U mask) {
    return andNot(subSat(beta, absDiff(a, b)) == zero<U>(), mask);
}
// filterSamplesFlag
template <class U>
[[gnu::always_inline]] inline U filterMask(U p1, U p0, U q0, U q1, const LineLimits<U>& l) {
    const U below =
        min(subSat(l.alpha, absDiff(p0, q0)), min(subSat(l.beta, absDiff(p1, p0)), subSat(l.beta, absDiff(q1, q0))));
    return andNot(below == zero<U>(), l.active);
}
// (a + b) >> 1
template <class U>
[[gnu::always_inline]] inline U averageDown(U a, U b) {
    return average(a, b) - ((a ^ b) & splat<U>(1));
}

// p0 + delta and q0 - delta with delta = Clip3(-tC, tC, (((q0 - p0) << 2) + (p1 - q1) + 4) >> 3). With r = (q0 - p0) &
// 1, h = (q0 - p0) >> 1 and f = (p1 - q1) >> 2, delta = h + ((f + r + 1) >> 1). In unsigned bytes h + 128 = average(q0,
// ~p0), f + 66 = average(average(p1, ~q1), 3) and 33 + ((f + r + 1) >> 1) = average(f + 66, r): their sum is delta +
// 161, which saturates at a delta of 94.
template <class U>
[[gnu::always_inline]] inline void filterInner(U& p0, U& q0, U p1, U q1, U tC) {
    const U ones = splat<U>(255);
    const U h = average(q0, p0 ^ ones), r = (p0 ^ q0) & splat<U>(1);
    const U f = average(average(p1, q1 ^ ones), splat<U>(3));
    const U sum = addSat(h, average(f, r)), zeroAt = splat<U>(161);
    const U up = min(subSat(sum, zeroAt), tC), down = min(subSat(zeroAt, sum), tC);
    p0 = subSat(addSat(p0, up), down);
    q0 = addSat(subSat(q0, up), down);
}

// p1 + Clip3(-tC0, tC0, (p2 + ((p0 + q0 + 1) >> 1) - (p1 << 1)) >> 1)
template <class U>
[[gnu::always_inline]] inline U filterOuter(U p1, U p2, U middle, U tC0) {
    return min(max(averageDown(p2, middle), subSat(p1, tC0)), addSat(p1, tC0));
}

// bS 1 to 3 (8.7.2.3). p2Given(q1) is asked for p2 when q1 is final: the p2 of one edge may be the q1 of another.
template <class U, class P2>
[[gnu::always_inline]] inline void normalLuma(U& p1, U& p0, U& q0, U& q1, U q2, const LineLimits<U>& l, P2 p2Given) {
    const U mask = filterMask(p1, p0, q0, q1, l), tC0 = l.tC0 & mask;
    const U oldP1 = p1, oldQ1 = q1, middle = average(p0, q0);
    const U aq = withinBeta(q2, q0, l.beta, mask);
    q1 = filterOuter(q1, q2, middle, tC0 & aq);
    const U p2 = p2Given(q1);
    const U ap = withinBeta(p2, p0, l.beta, mask);
    p1 = filterOuter(p1, p2, middle, tC0 & ap);
    filterInner(p0, q0, oldP1, oldQ1, tC0 - ap - aq);
}

// bS 4 (8.7.2.4) of eight lines in 16 bits: the samples p0, p1, p2 of the side p; the other side is its mirror.
struct StrongSide {
    i16x8 s0, s1, s2;
};
[[gnu::always_inline]] inline StrongSide strongSide(i16x8 p3, i16x8 p2, i16x8 p1, i16x8 middle, i16x8 q1) {
    const i16x8 t = p1 + middle, u = p2 + t;
    const i16x8 two = splat<i16x8>(2), four = splat<i16x8>(4);
    return {(u + t + q1 + four) >> 3, (u + two) >> 2, (p3 + p3 + p2 + p2 + u + four) >> 3};
}
[[gnu::always_inline]] inline void strongSides(u8x16& p2, u8x16& p1, u8x16& p0, u8x16 p3, u8x16 q0, u8x16 q1,
                                               u8x16 use) {
    const auto low = [](u8x16 v) { return widenLow(v); };
    const auto high = [](u8x16 v) { return widenHigh(v); };
    const StrongSide a = strongSide(low(p3), low(p2), low(p1), low(p0) + low(q0), low(q1));
    const StrongSide b = strongSide(high(p3), high(p2), high(p1), high(p0) + high(q0), high(q1));
    p0 = select(use, narrowU8(a.s0, b.s0), p0);
    p1 = select(use, narrowU8(a.s1, b.s1), p1);
    p2 = select(use, narrowU8(a.s2, b.s2), p2);
}

// The eight samples of sixteen lines across an edge with strengths of any kind; `strong` marks the lines with bS 4.
[[gnu::noinline]] inline void mixedLuma(u8x16* p3, const LineLimits<u8x16>& l, u8x16 strong, int alpha) {
    u8x16 &p2 = p3[1], &p1 = p3[2], &p0 = p3[3], &q0 = p3[4], &q1 = p3[5], &q2 = p3[6];
    const u8x16 q3 = p3[7], old[6] = {p2, p1, p0, q0, q1, q2};
    const u8x16 mask = filterMask(p1, p0, q0, q1, l) & strong;
    if (!allZero(andNot(strong, l.active))) {
        LineLimits<u8x16> normal = l;
        normal.active = andNot(strong, l.active);
        normalLuma(p1, p0, q0, q1, q2, normal, [&](u8x16) { return p2; });
    }
    const u8x16 close = splat<u8x16>(clip3(0, 255, (alpha >> 2) + 1));
    const u8x16 strongest = (subSat(absDiff(old[2], old[3]), close) == zero<u8x16>()) & mask;
    // One third of the way: (2 p1 + p0 + q1 + 2) >> 2
    p0 = select(mask, average(old[1], averageDown(old[2], old[4])), p0);
    q0 = select(mask, average(old[4], averageDown(old[3], old[1])), q0);
    u8x16 s2 = old[0], s1 = old[1], s0 = old[2];
    const u8x16 ap = withinBeta(old[0], old[2], l.beta, strongest), aq = withinBeta(old[5], old[3], l.beta, strongest);
    strongSides(s2, s1, s0, *p3, old[3], old[4], ap);
    u8x16 t2 = old[5], t1 = old[4], t0 = old[3];
    strongSides(t2, t1, t0, q3, old[2], old[1], aq);
    p2 = select(ap, s2, p2), p1 = select(ap, s1, p1), p0 = select(ap, s0, p0);
    q2 = select(aq, t2, q2), q1 = select(aq, t1, q1), q0 = select(aq, t0, q0);
}

// ---- the edges of a macroblock

// The strengths and values of four edges, and which of them do something.
struct LumaEdges {
    const DeblockOperands<Vek8u>& o;
    u8x16 bS, thresholds;
    std::uint32_t on;      // four bits per edge, a bit per segment with a strength
    std::uint32_t strong;  // likewise: strength 4

    explicit LumaEdges(const DeblockOperands<Vek8u>& operands)
        : o(operands), bS(min(load<u8x16>(o.bS), splat<u8x16>(4))), thresholds(load<u8x16>(o.thresholds)) {
        on = ~byteMask(bS == zero<u8x16>()) & 0xFFFF;
        strong = byteMask(bS == splat<u8x16>(4));
    }
    bool isOn(int e) const { return (on >> 4 * e & 15) != 0; }
    bool anyStrong(int e) const { return (strong >> 4 * e & 15) != 0; }
    int count() const { return isOn(0) + isOn(1) + isOn(2) + isOn(3); }
    bool tooLargeThresholds() const { return !allZero(subSat(thresholds, splat<u8x16>(kLargestThreshold))); }

    // Edge e's values: four lines to a strength.
    LineLimits<u8x16> limits(int e) const {
        const u8x16 index = spread(e), strengths = shuffleBytes(bS, index);
        return {splat<u8x16>(o.alpha[e != 0]), splat<u8x16>(o.beta[e != 0]), shuffleBytes(thresholds, index),
                as<u8x16>(as<i8x16>(strengths) > zero<i8x16>())};
    }
    u8x16 strongLines(int e) const { return shuffleBytes(bS, spread(e)) == splat<u8x16>(4); }
    static u8x16 spread(int e) {
        alignas(16) static constexpr std::uint8_t kIndex[16] = {0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3};
        return load<u8x16>(kIndex) + splat<u8x16>(4 * e);
    }
#if VEKVC_VECTOR256
    // The values of edges e and e + 1 in the halves.
    LineLimits<u8x32> limitsOfTwo(int e) const {
        const u8x32 index = join(spread(e), spread(e + 1));
        u8x32 alpha = splat<u8x32>(o.alpha[1]), beta = splat<u8x32>(o.beta[1]);
        if (e == 0) {
            alpha = join(splat<u8x16>(o.alpha[0]), lowHalf(alpha));
            beta = join(splat<u8x16>(o.beta[0]), lowHalf(beta));
        }
        return {alpha, beta, shuffleBytes(join(thresholds, thresholds), index),
                as<u8x32>(as<i8x32>(shuffleBytes(join(bS, bS), index)) > zero<i8x32>())};
    }
#endif
};

// r[0] to r[7] are the samples p3 to q3 of edge e, which has no strong lines ...
[[gnu::always_inline]] inline void filterNormalEdge(u8x16* r, const LumaEdges& edges, int e) {
    const u8x16 p2 = r[1];
    normalLuma(r[2], r[3], r[4], r[5], r[6], edges.limits(e), [=](u8x16) { return p2; });
}
// ... or has some.
[[gnu::always_inline]] inline void filterMixedEdge(u8x16* r, const LumaEdges& edges, int e) {
    u8x16 lines[8];
    for (int k = 0; k < 8; ++k) lines[k] = r[k];
    const LineLimits<u8x16> limits = edges.limits(e);
    mixedLuma(lines, limits, edges.strongLines(e), edges.o.alpha[e != 0]);
    for (int k = 1; k < 7; ++k) r[k] = lines[k];
}
// r[0] to r[11] are the samples of edges e and e + 1, neither with strong lines. The second one's p2 is the first one's
// q1; what else they share they do not change.
[[gnu::always_inline]] inline void filterTwoNormalEdges(u8x16* r, const LumaEdges& edges, int e) {
#if VEKVC_VECTOR256
    u8x32 p1 = join(r[2], r[6]), p0 = join(r[3], r[7]), q0 = join(r[4], r[8]), q1 = join(r[5], r[9]);
    const u8x16 p2 = r[1];
    normalLuma(p1, p0, q0, q1, join(r[6], r[10]), edges.limitsOfTwo(e),
               [=](u8x32 newQ1) { return join(p2, lowHalf(newQ1)); });
    r[2] = lowHalf(p1), r[3] = lowHalf(p0), r[4] = lowHalf(q0), r[5] = lowHalf(q1);
    r[6] = highHalf(p1), r[7] = highHalf(p0), r[8] = highHalf(q0), r[9] = highHalf(q1);
#else
    filterNormalEdge(r, edges, e);
    filterNormalEdge(r + 4, edges, e + 1);
#endif
}

// r[4 * e] to r[4 * e + 7] are the samples p3 to q3 of edge e. The usual cases first: no strong edge, the outer one
// alone.
[[gnu::always_inline]] inline void filterLuma(u8x16 (&r)[20], const LumaEdges& edges) {
    if (edges.strong == 0) {
        if (edges.isOn(0) || edges.isOn(1)) filterTwoNormalEdges(r, edges, 0);
        if (edges.isOn(2) || edges.isOn(3)) filterTwoNormalEdges(r + 8, edges, 2);
    } else if ((edges.strong & ~15u) == 0) {
        filterMixedEdge(r, edges, 0);
        if (edges.isOn(1) || edges.isOn(2)) filterTwoNormalEdges(r + 4, edges, 1);
        if (edges.isOn(3)) filterNormalEdge(r + 12, edges, 3);
    } else {
        for (int e = 0; e < 4; ++e)
            if (edges.isOn(e)) filterMixedEdge(r + 4 * e, edges, e);
    }
}

// ---- horizontal edges: the rows are the vectors

// The rows of a macroblock, counted from its first one.
struct WholeRows {
    Vek8u* pixels;
    std::ptrdiff_t step;
    u8x16 load(int i) const { return vekvc::load<u8x16>(pixels + i * step); }
    void store(int i, u8x16 v) const { vekvc::store(pixels + i * step, v); }
};
// The same in the columns of segments with a strength: of the four rows between two edges, where either one has one.
struct MaskedRows {
    Vek8u* pixels;
    std::ptrdiff_t step;
    i32x4 masks[5];

    MaskedRows(const DeblockOperands<Vek8u>& o, std::uint32_t on) : pixels(o.pixels), step(o.step) {
        const i32x4 bits = lanes<i32x4>(1, 2, 4, 8), groups = splat<i32x4>(on << 4 | on);
        masks[0] = (groups & bits) == bits;
        masks[1] = ((groups >> 4) & bits) == bits;
        masks[2] = ((groups >> 8) & bits) == bits;
        masks[3] = ((groups >> 12) & bits) == bits;
        masks[4] = ((groups >> 16) & bits) == bits;
    }
    u8x16 load(int i) const { return loadMasked<u8x16>(pixels + i * step, masks[(i + 4) / 4]); }
    void store(int i, u8x16 v) const { storeMasked(pixels + i * step, masks[(i + 4) / 4], v); }
};

// Edge e, without strong lines, given its p2; returns the next one's.
template <class Rows>
[[gnu::always_inline]] inline u8x16 filterRowEdge(const Rows& rows, const LumaEdges& edges, int e, u8x16 p2) {
    const int y = 4 * e;
    u8x16 p1 = rows.load(y - 2), p0 = rows.load(y - 1), q0 = rows.load(y), q1 = rows.load(y + 1);
    normalLuma(p1, p0, q0, q1, rows.load(y + 2), edges.limits(e), [=](u8x16) { return p2; });
    rows.store(y - 2, p1), rows.store(y - 1, p0), rows.store(y, q0), rows.store(y + 1, q1);
    return q1;
}
// Edges e and e + 1, neither with strong lines, likewise.
template <class Rows>
[[gnu::always_inline]] inline u8x16 filterTwoRowEdges(const Rows& rows, const LumaEdges& edges, int e, u8x16 p2) {
#if VEKVC_VECTOR256
    const int y = 4 * e;
    const u8x16 shared = rows.load(y + 2);
    u8x32 p1 = join(rows.load(y - 2), shared), p0 = join(rows.load(y - 1), rows.load(y + 3));
    u8x32 q0 = join(rows.load(y), rows.load(y + 4)), q1 = join(rows.load(y + 1), rows.load(y + 5));
    normalLuma(p1, p0, q0, q1, join(shared, rows.load(y + 6)), edges.limitsOfTwo(e),
               [=](u8x32 newQ1) { return join(p2, lowHalf(newQ1)); });
    rows.store(y - 2, lowHalf(p1)), rows.store(y - 1, lowHalf(p0));
    rows.store(y, lowHalf(q0)), rows.store(y + 1, lowHalf(q1));
    rows.store(y + 2, highHalf(p1)), rows.store(y + 3, highHalf(p0));
    rows.store(y + 4, highHalf(q0)), rows.store(y + 5, highHalf(q1));
    return highHalf(q1);
#else
    return filterRowEdge(rows, edges, e + 1, filterRowEdge(rows, edges, e, p2));
#endif
}
template <class Rows>
[[gnu::always_inline]] inline void filterMixedRowEdge(const Rows& rows, const LumaEdges& edges, int e) {
    u8x16 lines[8];
    for (int k = 0; k < 8; ++k) lines[k] = rows.load(4 * e - 4 + k);
    filterMixedEdge(lines, edges, e);
    for (int k = 1; k < 7; ++k) rows.store(4 * e - 4 + k, lines[k]);
}
template <class Rows>
[[gnu::always_inline]] inline void filterRowEdges(const Rows& rows, const LumaEdges& edges) {
    if (edges.strong == 0) {
        if (edges.isOn(0) || edges.isOn(1)) {
            const u8x16 p2 = filterTwoRowEdges(rows, edges, 0, rows.load(-3));
            if (edges.isOn(2) || edges.isOn(3)) filterTwoRowEdges(rows, edges, 2, p2);
        } else {
            filterTwoRowEdges(rows, edges, 2, rows.load(5));
        }
    } else if ((edges.strong & ~15u) == 0) {
        filterMixedRowEdge(rows, edges, 0);
        if (edges.isOn(1) || edges.isOn(2)) filterTwoRowEdges(rows, edges, 1, rows.load(1));
        if (edges.isOn(3)) filterRowEdge(rows, edges, 3, rows.load(9));
    } else {
        for (int e = 0; e < 4; ++e)
            if (edges.isOn(e)) filterMixedRowEdge(rows, edges, e);
    }
}

template <class T>
void deblockLumaHorizontal(const DeblockOperands<T>& o) requires(sizeof(T) == 1) {
    const LumaEdges edges(o);
    if (edges.on == 0) return;
    if (edges.tooLargeThresholds()) return plain::deblockLumaHorizontal(o);
    if (edges.on == 0xFFFF)
        filterRowEdges(WholeRows{o.pixels, o.step}, edges);
    else
        filterRowEdges(MaskedRows(o, edges.on), edges);
}

// ---- vertical edges: the rows are transposed

// Sixteen rows of four bytes as four vectors, one per column, and back.
[[gnu::always_inline]] inline void columnsOfFour(u8x16 (&x)[4]) {
    for (int step = 0; step < 4; ++step) interleaveBytes(x);
}
[[gnu::always_inline]] inline void rowsOfFour(u8x16 (&x)[4]) {
    for (int step = 0; step < 2; ++step) interleaveBytes(x);
}

// Sixteen rows of sixteen bytes, given and taken row by row, as sixteen vectors, one per column.
template <class LoadRow>
[[gnu::always_inline]] inline void loadColumns(u8x16* columns, LoadRow loadRow) {
#if VEKVC_VECTOR256
    u8x32 x[8];  // rows 0 to 7 in the low halves, 8 to 15 in the high ones
    for (int i = 0; i < 8; ++i) x[i] = join(loadRow(i), loadRow(i + 8));
    for (int step = 0; step < 3; ++step) interleaveBytes(x);
    for (int k = 0; k < 8; ++k) store(columns + 2 * k, shuffle64<0, 2, 1, 3>(x[k]));
#else
    u8x16 x[16];
    for (int i = 0; i < 16; ++i) x[i] = loadRow(i);
    for (int step = 0; step < 4; ++step) interleaveBytes(x);
    for (int k = 0; k < 16; ++k) columns[k] = x[k];
#endif
}
template <class StoreRow>
[[gnu::always_inline]] inline void storeColumns(const u8x16* columns, StoreRow storeRow) {
#if VEKVC_VECTOR256
    u8x32 x[8];
    for (int k = 0; k < 8; ++k) x[k] = shuffle64<0, 2, 1, 3>(load<u8x32>(columns + 2 * k));
    for (int step = 0; step < 4; ++step) interleaveBytes(x);
    for (int i = 0; i < 8; ++i) storeRow(i, lowHalf(x[i])), storeRow(i + 8, highHalf(x[i]));
#else
    u8x16 x[16];
    for (int k = 0; k < 16; ++k) x[k] = columns[k];
    for (int step = 0; step < 4; ++step) interleaveBytes(x);
    for (int i = 0; i < 16; ++i) storeRow(i, x[i]);
#endif
}

// The four columns left of p, of the segments (four rows each) whose bit is set.
[[gnu::always_inline]] inline void loadLeft(u8x16* columns, const Vek8u* p, std::ptrdiff_t step,
                                            std::uint32_t segments) {
    u8x16 x[4];
    for (int s = 0; s < 4; ++s) {
        x[s] = zero<u8x16>();
        if (segments >> s & 1) {
            const Vek8u* row = p - 4 + 4 * s * step;
            x[s] = as<u8x16>(interleaveLow(as<u64x2>(loadPair4<u8x16>(row, row + step)),
                                           as<u64x2>(loadPair4<u8x16>(row + 2 * step, row + 3 * step))));
        }
    }
    columnsOfFour(x);
    for (int k = 0; k < 4; ++k) columns[k] = x[k];
}
[[gnu::always_inline]] inline void storeLeft(const u8x16* columns, Vek8u* p, std::ptrdiff_t step,
                                             std::uint32_t segments) {
    u8x16 x[4] = {columns[0], columns[1], columns[2], columns[3]};
    rowsOfFour(x);
    for (int s = 0; s < 4; ++s) {
        if (!(segments >> s & 1)) continue;
        Vek8u* row = p - 4 + 4 * s * step;
        storeBytes<4>(row, x[s]);
        storeBytes<4>(row + step, bytesRight<4>(x[s]));
        storeBytes<4>(row + 2 * step, bytesRight<8>(x[s]));
        storeBytes<4>(row + 3 * step, bytesRight<12>(x[s]));
    }
}

template <class T>
void deblockLumaVertical(const DeblockOperands<T>& o) requires(sizeof(T) == 1) {
    const LumaEdges edges(o);
    if (edges.on == 0) return;
    if (edges.tooLargeThresholds()) return plain::deblockLumaVertical(o);
    const auto row = [&](int i) { return o.pixels + i * o.step; };
    u8x16 r[20];
    if (edges.count() <= 2) {
        for (int e = 0; e < 4; ++e) {
            if (!edges.isOn(e)) continue;
            const std::uint32_t segments = edges.on >> 4 * e & 15;
            Vek8u* q0 = o.pixels + 4 * e;
            loadLeft(r, q0, o.step, segments);
            loadLeft(r + 4, q0 + 4, o.step, segments);
            if (edges.anyStrong(e))
                filterMixedEdge(r, edges, e);
            else
                filterNormalEdge(r, edges, e);
            storeLeft(r, q0, o.step, segments);
            storeLeft(r + 4, q0 + 4, o.step, segments);
        }
        return;
    }
    if (edges.isOn(0)) loadLeft(r, o.pixels, o.step, edges.on & 15);
    if (edges.on == 0xFFFF) {
        loadColumns(r + 4, [&](int i) { return load<u8x16>(row(i)); });
        filterLuma(r, edges);
        storeColumns(r + 4, [&](int i, u8x16 v) { store(row(i), v); });
        storeLeft(r, o.pixels, o.step, 15);
        return;
    }
    // The rows of segment s are touched in the groups of four columns beside an edge with a strength.
    i32x4 masks[4];
    const std::uint32_t groups = edges.on | edges.on >> 4;
    for (int s = 0; s < 4; ++s) {
        const i32x4 bits = lanes<i32x4>(1, 1 << 4, 1 << 8, 1 << 12);
        masks[s] = (splat<i32x4>(groups >> s) & bits) == bits;
    }
    loadColumns(r + 4, [&](int i) { return loadMasked<u8x16>(row(i), masks[i / 4]); });
    filterLuma(r, edges);
    storeColumns(r + 4, [&](int i, u8x16 v) { storeMasked(row(i), masks[i / 4], v); });
    if (edges.isOn(0)) storeLeft(r, o.pixels, o.step, edges.on & 15);
}

// ---- part of a left edge between a frame and a field pair: eight lines, two to a strength

template <class T>
void deblockLumaLeftMbaff(T* pixels, std::ptrdiff_t step, const EdgeLimits& limits, const T* thresholds,
                          const Vek8u* bS) requires(sizeof(T) == 1) {
    alignas(16) static constexpr std::uint8_t kLines[16] = {0,   0,   1,   1,   2,   2,   3,   3,
                                                            128, 128, 128, 128, 128, 128, 128, 128};
    const u8x16 index = load<u8x16>(kLines);
    const u8x16 strengths = shuffleBytes(min(loadBytes<u8x16, 4>(bS), splat<u8x16>(4)), index);
    const u8x16 tC0 = shuffleBytes(loadBytes<u8x16, 4>(thresholds), index);
    if (limits.alpha > 255 || limits.beta > 255 || !allZero(subSat(tC0, splat<u8x16>(kLargestThreshold))))
        return plain::deblockLumaLeftMbaff(pixels, step, limits, thresholds, bS);
    const u8x16 active = as<u8x16>(as<i8x16>(strengths) > zero<i8x16>()), strong = strengths == splat<u8x16>(4);
    const LineLimits<u8x16> l{splat<u8x16>(limits.alpha), splat<u8x16>(limits.beta), tC0, active};
    const std::uint32_t on = byteMask(active);
    const auto row = [&](int k) { return pixels - 4 + k * step; };
    u8x16 x[4];
    for (int i = 0; i < 4; ++i) x[i] = on >> 2 * i & 1 ? loadPair8<u8x16>(row(2 * i), row(2 * i + 1)) : zero<u8x16>();
    for (int turn = 0; turn < 3; ++turn) interleaveBytes(x);  // p3 and p2, p1 and p0, q0 and q1, q2 and q3
    u8x16 lines[8];
    for (int k = 0; k < 8; ++k) lines[k] = k % 2 != 0 ? bytesRight<8>(x[k / 2]) : x[k / 2];
    if (allZero(strong)) {
        const u8x16 p2 = lines[1];
        normalLuma(lines[2], lines[3], lines[4], lines[5], lines[6], l, [=](u8x16) { return p2; });
    } else {
        mixedLuma(lines, l, strong, static_cast<int>(limits.alpha));
    }
    for (int i = 0; i < 4; ++i) x[i] = as<u8x16>(interleaveLow(as<u64x2>(lines[2 * i]), as<u64x2>(lines[2 * i + 1])));
    for (int turn = 0; turn < 3; ++turn) interleaveBytes(x);
    for (int i = 0; i < 4; ++i)
        if (on >> 2 * i & 1) storePair8(row(2 * i), row(2 * i + 1), x[i]);
}

}  // namespace vekvc::simd

#endif
