// Deblocking of 8-bit chroma, H.264 8.7.2 with chromaStyleFilteringFlag 1. The two edges of a block share no sample and
// are filtered together: a vector holds one sample of lines of both.
//
// A group is the lines that share a strength; groups 0 to 3 belong to the first edge, 4 to 7 to the second one. What
// is off is left alone without a branch on the strengths where that is possible: they are hard to foresee.
#ifndef VEKVC_H264_DEBLOCK_CHROMA_SIMD_H
#define VEKVC_H264_DEBLOCK_CHROMA_SIMD_H

#include <bit>

#include "core/memory.h"
#include "core/simd.h"
#include "h264/deblock_luma_simd.h"

namespace vekvc::simd {

// Per line: alpha (0 in lines without a strength: nothing is below it), beta, tC, and all ones where bS is 4.
template <class U>
struct ChromaLimits {
    U alpha;
    U beta;
    U tC;
    U strong;
};

template <class U>
[[gnu::always_inline]] inline void filterChroma(U p1, U& p0, U& q0, U q1, const ChromaLimits<U>& l) {
    const U below = min(subSat(l.alpha, absDiff(p0, q0)), subSat(l.beta, max(absDiff(p1, p0), absDiff(q1, q0))));
    const U off = below == zero<U>(), oldP0 = p0, oldQ0 = q0;
    filterInner(p0, q0, p1, q1, andNot(off, l.tC));
    if (allZero(l.strong)) return;
    // (2 p1 + p0 + q1 + 2) >> 2
    const U full = andNot(off, l.strong);
    p0 = select(full, average(p1, averageDown(oldP0, q1)), p0);
    q0 = select(full, average(q1, averageDown(oldQ0, p1)), q0);
}

template <class U, int lane>
using Lanes =
    Vec<std::conditional_t<lane == 2, std::uint16_t, std::conditional_t<lane == 4, std::uint32_t, std::uint64_t>>,
        U::kBytes / lane>;

// The values of two edges; vectors of 32 bytes hold the same in both halves.
template <class U>
struct ChromaEdges {
    U bS, tC0;      // byte g is group g's
    U alpha, beta;  // byte e is edge e's

    // Of the lines whose groups and edges are given.
    ChromaLimits<U> limits(U group, U edge) const {
        const U strengths = shuffleBytes(bS, group);
        return {andNot(strengths == zero<U>(), shuffleBytes(alpha, edge)), shuffleBytes(beta, edge),
                shuffleBytes(tC0, group) + constant<U, 1>(), isStrong(strengths)};
    }
    // The same where the edges follow from the groups.
    ChromaLimits<U> limits(U group) const {
        return limits(group, as<U>(as<Lanes<U, 2>>(group) >> 2) & constant<U, 1>());
    }
    // A bit per group with a strength.
    std::uint32_t on() const { return ~byteMask(bS == zero<U>()) & 0xFF; }
};

// Chroma 4:2:0, and vertical edges of 4:2:2: strengths of luma edges 0 and 2.
template <class U>
[[gnu::always_inline]] inline ChromaEdges<U> outerAndMiddleEdge(const DeblockOperands<Vek8u>& o) {
    const auto first = splatFrom<Lanes<U, 4>>(o.bS), second = splatFrom<Lanes<U, 4>>(o.bS + 8);
    return {as<U>(blend16<0xCC>(first, second)), as<U>(splatFrom<Lanes<U, 8>>(o.thresholds)),
            as<U>(splatFrom<Lanes<U, 2>>(o.alpha)), as<U>(splatFrom<Lanes<U, 2>>(o.beta))};
}

// ---- horizontal edges

// The four rows around two edges that begin at q0 and q0 + distance, eight columns each, of which some have a strength
// and some not: only the first ones may be touched. A group that is off is replaced by one that is on.
[[gnu::noinline]] inline void filterSomeColumns(Vek8u* q0, std::ptrdiff_t distance, std::ptrdiff_t step,
                                                std::uint32_t on, u8x16 bS, u8x16 tC0, u8x16 alpha, u8x16 beta) {
    const ChromaEdges<u8x16> edges = {bS, tC0, alpha, beta};
    alignas(16) static constexpr std::uint8_t kGroups[16] = {0, 1, 2, 3, 4, 5, 6, 7};
    const u8x16 any = splat<u8x16>(std::countr_zero(on));
    const u8x16 chosen = select(bS == zero<u8x16>(), any, load<u8x16>(kGroups));
    std::ptrdiff_t place[8];
    const auto placeOf = [=](int g) { return (g & 3) * 2 + (g >> 2) * distance; };
    const std::ptrdiff_t anyPlace = (std::countr_zero(on) & 3) * 2 + ((on & 15) != 0 ? 0 : distance);
#pragma GCC unroll 8
    for (int g = 0; g < 8; ++g) place[g] = on >> g & 1 ? placeOf(g) : anyPlace;
    const auto row = [&](std::ptrdiff_t k) {
        const Vek8u* base = q0 + k * step;
        return as<u8x16>(loadLanes16([&](int g) { return base + place[g]; }));
    };
    const auto putRow = [&](std::ptrdiff_t k, u8x16 v) {
        Vek8u* base = q0 + k * step;
        storeLanes16([&](int g) { return base + place[g]; }, as<u16x8>(v));
    };
    u8x16 p0 = row(-1), q = row(0);
    filterChroma(row(-2), p0, q, row(1), edges.limits(interleaveLow(chosen, chosen)));
    putRow(-1, p0);
    putRow(0, q);
}
// The same rows, whatever is on.
[[gnu::always_inline]] inline void filterRows(Vek8u* q0, std::ptrdiff_t distance, std::ptrdiff_t step,
                                              const ChromaEdges<u8x16>& edges) {
    const auto filter = [&](Vek8u* first, Vek8u* second, u8x16 groups) {
        const auto row = [&](int k) { return loadPair8<u8x16>(first + k * step, second + k * step); };
        u8x16 p0 = row(-1), q = row(0);
        filterChroma(row(-2), p0, q, row(1), edges.limits(groups));
        storePair8(first - step, second - step, p0);
        storePair8(first, second, q);
    };
    const u8x16 groups = lanes<u8x16>(0, 0, 1, 1, 2, 2, 3, 3, 4, 4, 5, 5, 6, 6, 7, 7);
    const std::uint32_t on = edges.on();
    if (on == 0xFF) return filter(q0, q0 + distance, groups);
    // An edge that is off is replaced by the other one: done twice alike.
    if (on == 0x0F) return filter(q0, q0, joinLow(groups, groups));
    if (on == 0xF0) return filter(q0 + distance, q0 + distance, joinHigh(groups, groups));
    if (on != 0) filterSomeColumns(q0, distance, step, on, edges.bS, edges.tC0, edges.alpha, edges.beta);
}

template <class T>
[[gnu::always_inline]] inline void deblockChromaHorizontal(const DeblockOperands<T>& o) requires(sizeof(T) == 1) {
    filterRows(o.pixels, 4 * o.step, o.step, outerAndMiddleEdge<u8x16>(o));
}
template <class T>
[[gnu::always_inline]] inline void deblockChroma422Horizontal(const DeblockOperands<T>& o) requires(sizeof(T) == 1) {
    const auto values = [&](int e, u8x16 alpha, u8x16 beta) {
        return ChromaEdges<u8x16>{loadBytes<u8x16, 8>(o.bS + 4 * e), loadBytes<u8x16, 8>(o.thresholds + 4 * e), alpha,
                                  beta};
    };
    filterRows(o.pixels, 4 * o.step, o.step, values(0, loadBytes<u8x16, 2>(o.alpha), loadBytes<u8x16, 2>(o.beta)));
    filterRows(o.pixels + 8 * o.step, 4 * o.step, o.step, values(2, splat<u8x16>(o.alpha[1]), splat<u8x16>(o.beta[1])));
}

// Interleaved: four bytes to a group, sixteen to a row of an edge; vectors of 32 bytes take both edges at once.
[[gnu::always_inline]] inline void deblockChromaPairsHorizontal(const DeblockOperands<Vek8u>& o) {
    alignas(32) static constexpr std::uint8_t kGroups[32] = {0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3,
                                                             4, 4, 4, 4, 5, 5, 5, 5, 6, 6, 6, 6, 7, 7, 7, 7};
    alignas(32) static constexpr std::uint8_t kEdges[32] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                                                            1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};
    const ChromaEdges<WideBytes> edges = outerAndMiddleEdge<WideBytes>(o);
    const auto filter = [&](int e, auto loadRow, auto storeRow) {
        const auto limits = edges.limits(load<WideBytes>(kGroups + 16 * e), load<WideBytes>(kEdges + 16 * e));
        WideBytes p0 = loadRow(-1), q0 = loadRow(0);
        filterChroma(loadRow(-2), p0, q0, loadRow(1), limits);
        storeRow(-1, p0);
        storeRow(0, q0);
    };
    const auto at = [&](int k) { return o.pixels + k * o.step; };
#if VEKVC_VECTOR256
    if (edges.on() == 0xFF)
        return filter(
            0, [&](int k) { return loadPair16<u8x32>(at(k), at(k + 4)); },
            [&](int k, u8x32 v) { storePair16(at(k), at(k + 4), v); });
    const u8x32 on = hasStrength(shuffleBytes(edges.bS, load<u8x32>(kGroups)));
    const i32x4 first = as<i32x4>(lowHalf(on)), second = as<i32x4>(highHalf(on));
    filter(
        0, [&](int k) { return join(loadMasked<u8x16>(at(k), first), loadMasked<u8x16>(at(k + 4), second)); },
        [&](int k, u8x32 v) {
            storeMasked(at(k), first, lowHalf(v));
            storeMasked(at(k + 4), second, highHalf(v));
        });
#else
    for (int e = 0; e < 2; ++e) {
        const u8x16 on = hasStrength(shuffleBytes(edges.bS, load<u8x16>(kGroups + 16 * e)));
        if (byteMask(on) == 0xFFFF)
            filter(
                e, [&](int k) { return load<u8x16>(at(4 * e + k)); }, [&](int k, u8x16 v) { store(at(4 * e + k), v); });
        else
            filter(
                e, [&](int k) { return loadMasked<u8x16>(at(4 * e + k), as<i32x4>(on)); },
                [&](int k, u8x16 v) { storeMasked(at(4 * e + k), as<i32x4>(on), v); });
    }
#endif
}

// ---- vertical edges: rows are transposed

// The groups and edges of eight lines of both edges: lines 0 to 3 of the first edge, of the second one, lines 4 to 7
// likewise; in vectors of 32 bytes each half has its eight bytes in the lower quarter.
struct ColumnLines {
    alignas(WideBytes::kBytes) std::uint8_t group[WideBytes::kBytes] = {};
    alignas(WideBytes::kBytes) std::uint8_t edge[WideBytes::kBytes] = {};

    constexpr ColumnLines(int linesPerGroup, int firstGroup) {
        for (int e = 0; e < 2; ++e)
            for (int line = 0; line < 8; ++line) {
                const int at = line / 4 * (WideBytes::kBytes / 2) + 4 * e + line % 4;
                group[at] = static_cast<std::uint8_t>(4 * e + firstGroup + line / linesPerGroup);
                edge[at] = static_cast<std::uint8_t>(e);
            }
    }
};
// Which of a row's groups of `bytes` bytes, one of each edge, have a strength: group g and group 4 + g.
template <int bytes, class U>
[[gnu::always_inline]] inline i32x4 rowMask(U on, int g) {
    struct Table {
        alignas(16) std::uint8_t group[4][16];
        constexpr Table() : group() {
            for (int g = 0; g < 4; ++g)
                for (int i = 0; i < 16; ++i)
                    group[g][i] = static_cast<std::uint8_t>(i < 2 * bytes ? i / bytes * 4 + g : 128);
        }
    };
    static constexpr Table kTable;
    if constexpr (U::kBytes == 16) {
        return as<i32x4>(shuffleBytes(on, load<u8x16>(kTable.group[g])));
#if VEKVC_VECTOR256
    } else {
        return as<i32x4>(shuffleBytes(lowHalf(on), load<u8x16>(kTable.group[g])));
#endif
    }
}

// Columns p1, p0, q0, q1 of both edges, eight lines each as ColumnLines has them.
struct ChromaColumns {
    WideBytes p1, p0, q0, q1;
};
// Of rows 0 to 7, each pair in one vector: eight bytes around both edges to a row.
[[gnu::always_inline]] inline ChromaColumns columnsOf(const u8x16 (&pairs)[4]) {
#if VEKVC_VECTOR256
    u8x32 x[2] = {join(pairs[0], pairs[2]), join(pairs[1], pairs[3])};
    for (int turn = 0; turn < 2; ++turn) interleaveBytes(x);  // four lines to a column, first and second edge
    const u8x32 p = as<u8x32>(interleaveLow(as<u32x8>(x[0]), as<u32x8>(x[1])));
    const u8x32 q = as<u8x32>(interleaveHigh(as<u32x8>(x[0]), as<u32x8>(x[1])));
    return {p, swapHalves(p), q, swapHalves(q)};
#else
    u8x16 p[2], q[2];
    for (int half = 0; half < 2; ++half) {
        u8x16 x[2] = {pairs[2 * half], pairs[2 * half + 1]};
        for (int turn = 0; turn < 2; ++turn) interleaveBytes(x);
        p[half] = as<u8x16>(interleaveLow(as<u32x4>(x[0]), as<u32x4>(x[1])));
        q[half] = as<u8x16>(interleaveHigh(as<u32x4>(x[0]), as<u32x4>(x[1])));
    }
    return {joinLow(p[0], p[1]), joinHigh(p[0], p[1]), joinLow(q[0], q[1]), joinHigh(q[0], q[1])};
#endif
}
[[gnu::always_inline]] inline void rowsOf(const ChromaColumns& c, u8x16 (&pairs)[4]) {
    using V = WideBytes;
    const auto rows = [](V p, V q, V& rows0, V& rows2) {  // p1 and p0, q0 and q1 in turn
        using W = Lanes<V, 2>;
        using D = Lanes<V, 4>;
        const D first = as<D>(interleaveLow(as<W>(p), as<W>(q))), second = as<D>(interleaveHigh(as<W>(p), as<W>(q)));
        rows0 = as<V>(interleaveLow(first, second));
        rows2 = as<V>(interleaveHigh(first, second));
    };
#if VEKVC_VECTOR256
    V rows0, rows2;
    rows(interleaveLow(c.p1, c.p0), interleaveLow(c.q0, c.q1), rows0, rows2);
    pairs[0] = lowHalf(rows0), pairs[1] = lowHalf(rows2), pairs[2] = highHalf(rows0), pairs[3] = highHalf(rows2);
#else
    rows(interleaveLow(c.p1, c.p0), interleaveLow(c.q0, c.q1), pairs[0], pairs[1]);
    rows(interleaveHigh(c.p1, c.p0), interleaveHigh(c.q0, c.q1), pairs[2], pairs[3]);
#endif
}

// Eight lines of both edges: bytes -2 to 5 of eight rows. pairGroup(i) is the group of rows 2i and 2i + 1.
template <class PairGroup>
[[gnu::always_inline]] inline void filterColumns(Vek8u* q0, std::ptrdiff_t step, const ChromaEdges<WideBytes>& edges,
                                                 const ColumnLines& lines, PairGroup pairGroup) {
    const auto row = [&](int k) { return q0 - 2 + k * step; };
    const auto filter = [&](auto loadPair, auto storePair) {
        u8x16 pairs[4];
        for (int i = 0; i < 4; ++i) pairs[i] = loadPair(i);
        ChromaColumns c = columnsOf(pairs);
        filterChroma(c.p1, c.p0, c.q0, c.q1, edges.limits(load<WideBytes>(lines.group), load<WideBytes>(lines.edge)));
        rowsOf(c, pairs);
        for (int i = 0; i < 4; ++i) storePair(i, pairs[i]);
    };
    if (edges.on() == 0xFF)
        return filter([&](int i) { return loadPair8<u8x16>(row(2 * i), row(2 * i + 1)); },
                      [&](int i, u8x16 v) { storePair8(row(2 * i), row(2 * i + 1), v); });
    const WideBytes on = hasStrength(edges.bS);
    const auto mask = [=](int i) { return rowMask<4>(on, pairGroup(i)); };
    filter([&](int i) { return loadPairMasked8<u8x16>(row(2 * i), row(2 * i + 1), mask(i)); },
           [&](int i, u8x16 v) { storePairMasked8(row(2 * i), row(2 * i + 1), mask(i), v); });
}

template <class T>
[[gnu::always_inline]] inline void deblockChromaVertical(const DeblockOperands<T>& o) requires(sizeof(T) == 1) {
    static constexpr ColumnLines kLines(2, 0);
    filterColumns(o.pixels, o.step, outerAndMiddleEdge<WideBytes>(o), kLines, [](int i) { return i; });
}
// Sixteen lines, four to a group.
template <class T>
[[gnu::always_inline]] inline void deblockChroma422Vertical(const DeblockOperands<T>& o) requires(sizeof(T) == 1) {
    static constexpr ColumnLines kUpper(4, 0), kLower(4, 2);
    const ChromaEdges<WideBytes> edges = outerAndMiddleEdge<WideBytes>(o);
    filterColumns(o.pixels, o.step, edges, kUpper, [](int i) { return i / 2; });
    filterColumns(o.pixels + 8 * o.step, o.step, edges, kLower, [](int i) { return 2 + i / 2; });
}

// Interleaved: eight rows of eight pairs around both edges, transposed by pairs. Rows k and k + 4 are the halves of a
// vector of 32 bytes; vectors of 16 take four rows at a time.
[[gnu::always_inline]] inline void deblockChromaPairsVertical(const DeblockOperands<Vek8u>& o) {
    using V = WideBytes;
    using W = Lanes<V, 2>;
    using D = Lanes<V, 4>;
    struct Lines {
        alignas(32) std::uint8_t group[32], edge[32];
        constexpr Lines() : group(), edge() {
            for (int i = 0; i < 32; ++i) {
                edge[i] = static_cast<std::uint8_t>(i / 8 % 2);
                group[i] = static_cast<std::uint8_t>(4 * edge[i] + i / 16 * 2 + i / 4 % 2);
            }
        }
    };
    static constexpr Lines kLines;
    const ChromaEdges<V> edges = outerAndMiddleEdge<V>(o);
    const auto at = [&](int k) { return o.pixels - 4 + k * o.step; };
    const auto filter = [&](auto loadRow, auto storeRow) {
        for (int half = 0; half < 2; half += V::kBytes / 16) {
            D rows[4];
            for (int k = 0; k < 4; ++k) {
#if VEKVC_VECTOR256
                rows[k] = join(loadRow(k), loadRow(k + 4));
#else
                rows[k] = loadRow(k + 4 * half);
#endif
            }
            const auto low = [&](int k) { return as<D>(interleaveLow(as<W>(rows[k]), as<W>(rows[k + 1]))); };
            const auto high = [&](int k) { return as<D>(interleaveHigh(as<W>(rows[k]), as<W>(rows[k + 1]))); };
            const D p = interleaveLow(low(0), low(2)), q = interleaveHigh(low(0), low(2));  // of the first edge
            const D nextP = interleaveLow(high(0), high(2)), nextQ = interleaveHigh(high(0), high(2));
            const V p1 = as<V>(joinLow(p, nextP)), q1 = as<V>(joinHigh(q, nextQ));
            V p0 = as<V>(joinHigh(p, nextP)), q0 = as<V>(joinLow(q, nextQ));
            filterChroma(p1, p0, q0, q1,
                         edges.limits(load<V>(kLines.group + 16 * half), load<V>(kLines.edge + 16 * half)));
            rows[0] = as<D>(interleaveLow(as<W>(p1), as<W>(p0))), rows[1] = as<D>(interleaveLow(as<W>(q0), as<W>(q1)));
            rows[2] = as<D>(interleaveHigh(as<W>(p1), as<W>(p0)));
            rows[3] = as<D>(interleaveHigh(as<W>(q0), as<W>(q1)));
            transpose4x4(rows[0], rows[1], rows[2], rows[3]);
            for (int k = 0; k < 4; ++k) {
#if VEKVC_VECTOR256
                storeRow(k, lowHalf(rows[k])), storeRow(k + 4, highHalf(rows[k]));
#else
                storeRow(k + 4 * half, rows[k]);
#endif
            }
        }
    };
    if (edges.on() == 0xFF)
        return filter([&](int k) { return load<u32x4>(at(k)); }, [&](int k, u32x4 v) { store(at(k), v); });
    const V on = hasStrength(edges.bS);
    filter([&](int k) { return loadMasked<u32x4>(at(k), rowMask<8>(on, k / 2)); },
           [&](int k, u32x4 v) { storeMasked(at(k), rowMask<8>(on, k / 2), v); });
}

// Part of a left edge between a frame and a field pair: four lines, one to a strength. Lines without one are replaced
// by zeros, and stored to a spare place.
template <class T>
void deblockChromaLeftMbaff(T* pixels, std::ptrdiff_t step, const EdgeLimits& limits, const T* thresholds,
                            const Vek8u* bS) requires(sizeof(T) == 1) {
    if (limits.alpha > 255 || limits.beta > 255 || (load<std::uint32_t>(thresholds) & 0xC0C0C0C0) != 0)
        return plain::deblockChromaLeftMbaff(pixels, step, limits, thresholds, bS);
    static constexpr Vek8u kZeros[4] = {};
    Vek8u spare[4];
    const auto rowOr = [&](int k, auto* other) { return bS[k] != 0 ? pixels - 2 + k * step : other; };
    // Four bytes for each column, and back.
    const u8x16 turn = lanes<u8x16>(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15);
    const u8x16 columns = shuffleBytes(loadLanes32<u8x16>([&](int k) { return rowOr(k, kZeros); }), turn);
    const u8x16 p1 = columns, q1 = bytesRight<12>(columns);
    u8x16 p0 = bytesRight<4>(columns), q0 = bytesRight<8>(columns);
    const u8x16 strengths = loadBytes<u8x16, 4>(bS);
    filterChroma(p1, p0, q0, q1,
                 {splat<u8x16>(limits.alpha), splat<u8x16>(limits.beta),
                  loadBytes<u8x16, 4>(thresholds) + constant<u8x16, 1>(), isStrong(strengths)});
    const u32x4 p = interleaveLow(as<u32x4>(p1), as<u32x4>(p0)), q = interleaveLow(as<u32x4>(q0), as<u32x4>(q1));
    storeLanes32([&](int k) { return rowOr(k, spare); }, as<u32x4>(shuffleBytes(joinLow(p, q), turn)));
}

}  // namespace vekvc::simd

#endif
