// Deblocking of 8-bit luma, H.264 8.7.2, sixteen lines at a time: a vector holds one sample of every line.
//
// The samples of a macroblock's lines are brought into an array of such vectors (for vertical edges by transposition),
// filtered there, and stored back. Lines of segments with strength 0 are masked out of loads and stores.
#ifndef VEKVC_H264_DEBLOCK_LUMA_SIMD_H
#define VEKVC_H264_DEBLOCK_LUMA_SIMD_H

#include <algorithm>

#include "core/memory.h"
#include "core/simd.h"
#include "h264/deblock_plain.h"

namespace vekvc::simd {

// The widest vector of bytes.
#if VEKVC_VECTOR256
using WideBytes = u8x32;
#else
using WideBytes = u8x16;
#endif

// All ones where the strength is not 0 ...
template <class U>
[[gnu::always_inline]] inline U hasStrength(U bS) {
    return max(bS, constant<U, 1>()) == bS;
}
// ... and where it is 4 (or more, which counts as 4).
template <class U>
[[gnu::always_inline]] inline U isStrong(U bS) {
    return max(bS, constant<U, 4>()) == bS;
}

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

// p0 + delta and q0 - delta with delta = Clip3(-tC, tC, (((q0 - p0) << 2) + (p1 - q1) + 4) >> 3). With r = (q0 - p0) &
// 1, h = (q0 - p0) >> 1 and f = (p1 - q1) >> 2, delta = h + ((f + r + 1) >> 1). In unsigned bytes h + 128 = average(q0,
// ~p0), f + 66 = average(average(p1, ~q1), 3) and 33 + ((f + r + 1) >> 1) = average(f + 66, r): their sum is delta +
// 161, which saturates at a delta of 94.
template <class U>
[[gnu::always_inline]] inline void filterInner(U& p0, U& q0, U p1, U q1, U tC) {
    const U ones = splat<U>(255);
    const U h = average(q0, p0 ^ ones), r = (p0 ^ q0) & constant<U, 1>();
    const U f = average(average(p1, q1 ^ ones), constant<U, 3>());
    const U sum = addSat(h, average(f, r)), zeroAt = constant<U, 161>();
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

// (a + b + c + d + 2) >> 2, given x and y, the averages of the pairs, and the odd bits of the pairs: (x + y + 1) >> 1
// is too large by one where a pair was rounded up and x + y too.
template <class U>
[[gnu::always_inline]] inline U averageOfFour(U x, U y, U pairIsOdd) {
    return average(x, y) - (pairIsOdd & (x ^ y) & constant<U, 1>());
}
// bS 4 (8.7.2.4): the samples p0, p1, p2 of side p, and p0 where only it changes; side q is its mirror.
template <class U>
struct StrongSide {
    U s0, s1, s2, weak;
};
template <class U>
[[gnu::always_inline]] inline StrongSide<U> strongSide(U p3, U p2, U p1, U p0, U q0, U q1) {
    const U outer = average(p2, p1), inner = average(p0, q0), innerIsOdd = p0 ^ q0;
    const U isOdd = (p2 ^ p1) | innerIsOdd;
    const U s1 = averageOfFour(outer, inner, isOdd);
    // (p2 + 2 p1 + 2 p0 + 2 q0 + q1 + 4) >> 3 = (m + p1 + p0 + q0 + 2) >> 2
    const U m = averageDown(p2, q1);
    const U s0 = averageOfFour(average(m, p1), inner, (m ^ p1) | innerIsOdd);
    // With u = p2 + p1 + p0 + q0: (2 p3 + 2 p2 + u + 4) >> 3 = (p3 + p2 + (u >> 1) + 2) >> 2, where u >> 1 is s1 and
    // s1 or s1 - 1, by the second bit of u.
    const U second = outer ^ inner ^ isOdd;
    const U s2 = averageOfFour(average(p3, p2), s1, (p3 ^ p2) | second);
    return {s0, s1, s2, average(p1, averageDown(p0, q1))};  // (2 p1 + p0 + q1 + 2) >> 2
}

// The eight samples p3 to q3 of sixteen lines across an edge, with strengths of any kind; `strong` marks the lines with
// bS 4.
#if VEKVC_VECTOR256
[[gnu::always_inline]]
#else
[[gnu::noinline]]  // too much for the registers, amid the edges around it
#endif
inline void
mixedLuma(u8x16 (&r)[8], const LineLimits<u8x16>& l, u8x16 strong, int alpha) {
    const u8x16 p2 = r[1], p1 = r[2], p0 = r[3], q0 = r[4], q1 = r[5], q2 = r[6];
    const u8x16 full = filterMask(p1, p0, q0, q1, l) & strong;
    const u8x16 closeLimit = splat<u8x16>(clip3(0, 255, (alpha >> 2) + 1));
    const u8x16 close = (subSat(absDiff(p0, q0), closeLimit) == zero<u8x16>()) & full;
#if VEKVC_VECTOR256
    const auto both = [](u8x16 a, u8x16 b) { return join(a, b); };
    const u8x32 a0 = both(p0, q0), a1 = both(p1, q1), a2 = both(p2, q2);
    const StrongSide<u8x32> side = strongSide(both(r[0], r[7]), a2, a1, a0, both(q0, p0), both(q1, p1));
    const u8x32 use = withinBeta(a2, a0, both(l.beta, l.beta), both(close, close));
    const u8x32 new0 = select(use, side.s0, side.weak), new1 = select(use, side.s1, a1),
                new2 = select(use, side.s2, a2);
    const u8x16 newP0 = lowHalf(new0), newP1 = lowHalf(new1), newP2 = lowHalf(new2);
    const u8x16 newQ0 = highHalf(new0), newQ1 = highHalf(new1), newQ2 = highHalf(new2);
#else
    const StrongSide<u8x16> p = strongSide(r[0], p2, p1, p0, q0, q1), q = strongSide(r[7], q2, q1, q0, p0, p1);
    const u8x16 useP = withinBeta(p2, p0, l.beta, close), useQ = withinBeta(q2, q0, l.beta, close);
    const u8x16 newP0 = select(useP, p.s0, p.weak), newP1 = select(useP, p.s1, p1), newP2 = select(useP, p.s2, p2);
    const u8x16 newQ0 = select(useQ, q.s0, q.weak), newQ1 = select(useQ, q.s1, q1), newQ2 = select(useQ, q.s2, q2);
#endif
    const u8x16 others = andNot(strong, l.active);
    if (!allZero(others)) {
        LineLimits<u8x16> normal = l;
        normal.active = others;
        normalLuma(r[2], r[3], r[4], r[5], q2, normal, [=](u8x16) { return p2; });
    }
    r[1] = newP2, r[6] = newQ2;  // unchanged where not strong
    r[2] = select(strong, newP1, r[2]), r[5] = select(strong, newQ1, r[5]);
    r[3] = select(full, newP0, r[3]), r[4] = select(full, newQ0, r[4]);
}

// ---- the edges of a macroblock

// The strengths and values of four edges, and which of them do something.
struct LumaEdges {
    const DeblockOperands<Vek8u>& o;
    WideBytes bS, thresholds;  // in vectors of 32 bytes: in both halves
    std::uint32_t on;          // four bits per edge, a bit per segment with a strength
    std::uint32_t strong;      // likewise: strength 4

    explicit LumaEdges(const DeblockOperands<Vek8u>& operands)
        : o(operands), bS(twice(o.bS)), thresholds(twice(o.thresholds)) {
        on = byteMask(hasStrength(bS)) & 0xFFFF;
        strong = byteMask(isStrong(bS)) & 0xFFFF;
    }
    bool isOn(int e) const { return (on >> 4 * e & 15) != 0; }
    bool anyStrong(int e) const { return (strong >> 4 * e & 15) != 0; }

    // Edge e's values: four lines to a strength. In vectors of 32 bytes those of edges e and e + 1.
    template <class U>
    LineLimits<U> limits(int e) const {
        alignas(32) static constexpr std::uint8_t kEdges[48] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                                                                1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1,
                                                                1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};
        using W = Vec<std::uint16_t, U::kBytes / 2>;
        const U index = segments<U>(e), edge = load<U>(kEdges + (e != 0 ? 16 : 0));
        return {shuffleBytes(as<U>(splatFrom<W>(o.alpha)), edge), shuffleBytes(as<U>(splatFrom<W>(o.beta)), edge),
                shuffleBytes(as<U>(part<U>(thresholds)), index), hasStrength(shuffleBytes(part<U>(bS), index))};
    }
    u8x16 strongLines(int e) const { return isStrong(shuffleBytes(part<u8x16>(bS), segments<u8x16>(e))); }
    // The columns (or rows) of the segments with a strength, in the four rows above edge e, or below the last one.
    i32x4 linesAbove(int e) const {
        const u8x16 segmentIsOn = hasStrength(part<u8x16>(bS)), next = bytesLeft<4>(segmentIsOn);
        return as<i32x4>(e < 4 ? shuffleBytes(segmentIsOn | next, segments<u8x16>(e))
                               : shuffleBytes(segmentIsOn, segments<u8x16>(3)));
    }

  private:
    // The segments of the lines of an edge.
    template <class U>
    static U segments(int e) {
        alignas(32) static constexpr std::uint8_t kSegments[64] = {
            0,  0,  0,  0,  1,  1,  1,  1,  2,  2,  2,  2,  3,  3,  3,  3,  4,  4,  4,  4,  5,  5,
            5,  5,  6,  6,  6,  6,  7,  7,  7,  7,  8,  8,  8,  8,  9,  9,  9,  9,  10, 10, 10, 10,
            11, 11, 11, 11, 12, 12, 12, 12, 13, 13, 13, 13, 14, 14, 14, 14, 15, 15, 15, 15};
        return load<U>(kSegments + 16 * e);
    }
#if VEKVC_VECTOR256
    static u8x32 twice(const Vek8u* p) { return loadTwice16<u8x32>(p); }
    template <class U>
    static U part(u8x32 v) {
        if constexpr (U::kBytes == 32)
            return v;
        else
            return lowHalf(v);
    }
#else
    static u8x16 twice(const Vek8u* p) { return load<u8x16>(p); }
    template <class U>
    static U part(u8x16 v) {
        return v;
    }
#endif
};

// ---- rows of sixteen lines, and the edges between them: edge e lies above row 4 * e

// All of the rows, counted from the one below edge 0.
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

    MaskedRows(const LumaEdges& edges) : pixels(edges.o.pixels), step(edges.o.step) {
        for (int e = 0; e < 5; ++e) masks[e] = edges.linesAbove(e);
    }
    u8x16 load(int i) const { return loadMasked<u8x16>(pixels + i * step, masks[(i + 4) / 4]); }
    void store(int i, u8x16 v) const { storeMasked(pixels + i * step, masks[(i + 4) / 4], v); }
};

// Columns, kept in an array, from the fourth one before edge 0 on.
struct Columns {
    u8x16* r;
    u8x16 load(int i) const { return r[i + 4]; }
    void store(int i, u8x16 v) const { r[i + 4] = v; }
};

// Edge e, with strong lines; returns the next one's p2 ...
template <class Rows>
[[gnu::always_inline]] inline u8x16 filterMixedEdge(const Rows& rows, const LumaEdges& edges, int e) {
    u8x16 r[8];
    for (int k = 0; k < 8; ++k) r[k] = rows.load(4 * e - 4 + k);
    mixedLuma(r, edges.limits<u8x16>(e), edges.strongLines(e), edges.o.alpha[e != 0]);
    for (int k = 1; k < 7; ++k) rows.store(4 * e - 4 + k, r[k]);
    return r[5];
}
// ... without any, given its p2; returns the next one's ...
template <class Rows>
[[gnu::always_inline]] inline u8x16 filterNormalEdge(const Rows& rows, const LumaEdges& edges, int e, u8x16 p2) {
    const int y = 4 * e;
    u8x16 p1 = rows.load(y - 2), p0 = rows.load(y - 1), q0 = rows.load(y), q1 = rows.load(y + 1);
    normalLuma(p1, p0, q0, q1, rows.load(y + 2), edges.limits<u8x16>(e), [=](u8x16) { return p2; });
    rows.store(y - 2, p1), rows.store(y - 1, p0), rows.store(y, q0), rows.store(y + 1, q1);
    return q1;
}
// ... and edges e and e + 1, both without, given the first one's p2; returns the p2 of edge e + 2. The second one's p2
// is the first one's q1; what else they share they do not change.
template <class Rows>
[[gnu::always_inline]] inline u8x16 filterTwoNormalEdges(const Rows& rows, const LumaEdges& edges, int e, u8x16 p2) {
#if VEKVC_VECTOR256
    const int y = 4 * e;
    const u8x16 shared = rows.load(y + 2);
    u8x32 p1 = join(rows.load(y - 2), shared), p0 = join(rows.load(y - 1), rows.load(y + 3));
    u8x32 q0 = join(rows.load(y), rows.load(y + 4)), q1 = join(rows.load(y + 1), rows.load(y + 5));
    normalLuma(p1, p0, q0, q1, join(shared, rows.load(y + 6)), edges.limits<u8x32>(e),
               [=](u8x32 newQ1) { return join(p2, lowHalf(newQ1)); });
    rows.store(y - 2, lowHalf(p1)), rows.store(y - 1, lowHalf(p0));
    rows.store(y, lowHalf(q0)), rows.store(y + 1, lowHalf(q1));
    rows.store(y + 2, highHalf(p1)), rows.store(y + 3, highHalf(p0));
    rows.store(y + 4, highHalf(q0)), rows.store(y + 5, highHalf(q1));
    return highHalf(q1);
#else
    return filterNormalEdge(rows, edges, e + 1, filterNormalEdge(rows, edges, e, p2));
#endif
}
// All edges: the usual cases, strong lines at the outer edge alone or nowhere, without a branch on what else is on ...
template <class Rows>
[[gnu::noinline]] void filterEdgesOfAnyKind(const Rows& rows, const LumaEdges& edges);
template <class Rows>
[[gnu::always_inline]] inline void filterEdges(const Rows& rows, const LumaEdges& edges) {
    if (edges.strong == 0) {
        const u8x16 p2 = filterTwoNormalEdges(rows, edges, 0, rows.load(-3));
        filterTwoNormalEdges(rows, edges, 2, p2);
    } else if ((edges.strong & ~15u) == 0) {
        u8x16 p2 = filterMixedEdge(rows, edges, 0);
        p2 = filterTwoNormalEdges(rows, edges, 1, p2);
        filterNormalEdge(rows, edges, 3, p2);
    } else {
        filterEdgesOfAnyKind(rows, edges);
    }
}
// ... and any others.
template <class Rows>
void filterEdgesOfAnyKind(const Rows& rows, const LumaEdges& edges) {
    for (int e = 0; e < 4; ++e) {
        if (edges.anyStrong(e))
            filterMixedEdge(rows, edges, e);
        else
            filterNormalEdge(rows, edges, e, rows.load(4 * e - 3));
    }
}

// ---- horizontal edges

template <class T>
[[gnu::always_inline]] inline void deblockLumaHorizontal(const DeblockOperands<T>& o) requires(sizeof(T) == 1) {
    const LumaEdges edges(o);
    if (edges.on == 0) return;
    if (edges.on == 0xFFFF)
        filterEdges(WholeRows{o.pixels, o.step}, edges);
    else
        filterEdges(MaskedRows(edges), edges);
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
    const auto row = [&](int i) { return o.pixels + i * o.step; };
    u8x16 r[20];  // the columns from -4 on
    const Columns columns{r};
    const int count = edges.isOn(0) + edges.isOn(1) + edges.isOn(2) + edges.isOn(3);
    if (count <= 2) {
        for (int e = 0; e < 4; ++e) {
            if (!edges.isOn(e)) continue;
            const std::uint32_t segments = edges.on >> 4 * e & 15;
            Vek8u* q0 = o.pixels + 4 * e;
            loadLeft(r + 4 * e, q0, o.step, segments);
            loadLeft(r + 4 * e + 4, q0 + 4, o.step, segments);
            if (edges.anyStrong(e))
                filterMixedEdge(columns, edges, e);
            else
                filterNormalEdge(columns, edges, e, r[4 * e + 1]);
            storeLeft(r + 4 * e, q0, o.step, segments);
            storeLeft(r + 4 * e + 4, q0 + 4, o.step, segments);
        }
        return;
    }
    if (edges.isOn(0))
        loadLeft(r, o.pixels, o.step, edges.on & 15);
    else
        std::fill_n(r, 4, zero<u8x16>());
    if (edges.on == 0xFFFF) {
        loadColumns(r + 4, [&](int i) { return load<u8x16>(row(i)); });
        filterEdges(columns, edges);
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
    filterEdges(columns, edges);
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
    const u8x16 strengths = shuffleBytes(loadBytes<u8x16, 4>(bS), index);
    const u8x16 tC0 = shuffleBytes(loadBytes<u8x16, 4>(thresholds), index);
    if (limits.alpha > 255 || limits.beta > 255 || !allZero(subSat(tC0, splat<u8x16>(kLargestThreshold))))
        return plain::deblockLumaLeftMbaff(pixels, step, limits, thresholds, bS);
    const u8x16 active = hasStrength(strengths), strong = isStrong(strengths);
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
