// Deblocking of 8-bit chroma, H.264 8.7.2 with chromaStyleFilteringFlag 1. The two edges of a block share no sample: a
// vector of 16 bytes holds eight lines of one edge, then eight lines of the other.
//
// A group is two lines with one strength; groups 0 to 3 belong to the first edge, 4 to 7 to the second one.
#ifndef VEKVC_H264_DEBLOCK_CHROMA_SIMD_H
#define VEKVC_H264_DEBLOCK_CHROMA_SIMD_H

#include <bit>

#include "core/memory.h"
#include "core/simd.h"
#include "h264/deblock_luma_simd.h"

namespace vekvc::simd {

template <class U>
[[gnu::always_inline]] inline void filterChroma(U p1, U& p0, U& q0, U q1, const LineLimits<U>& l, U strong) {
    const U mask = filterMask(p1, p0, q0, q1, l);
    const U oldP0 = p0, oldQ0 = q0, full = mask & strong;
    filterInner(p0, q0, p1, q1, addSat(l.tC0, splat<U>(1)) & mask);
    if (allZero(full)) return;
    // (2 p1 + p0 + q1 + 2) >> 2
    p0 = select(full, average(p1, averageDown(oldP0, q1)), p0);
    q0 = select(full, average(q1, averageDown(oldQ0, p1)), q0);
}

// One byte per group, of two edges.
struct ChromaGroups {
    u8x16 bS, tC0, alpha, beta;

    // Strengths and thresholds from the low eight bytes, the first edge's alpha and beta from place `firstEdge`.
    ChromaGroups(u8x16 strengths, u8x16 thresholds, const Vek8u* alphas, const Vek8u* betas, int firstEdge)
        : bS(min(strengths, splat<u8x16>(4))), tC0(thresholds) {
        alignas(16) static constexpr std::uint8_t kEdge[2][16] = {{0, 0, 0, 0, 1, 1, 1, 1}, {1, 1, 1, 1, 1, 1, 1, 1}};
        const u8x16 edge = load<u8x16>(kEdge[firstEdge]);
        alpha = shuffleBytes(loadBytes<u8x16, 2>(alphas), edge);
        beta = shuffleBytes(loadBytes<u8x16, 2>(betas), edge);
    }
    std::uint32_t on() const { return ~byteMask(bS == zero<u8x16>()) & 0xFF; }
    bool tooLargeThresholds() const { return !allZero(subSat(tC0, splat<u8x16>(kLargestThreshold))); }

    // The bytes that index names.
    template <class U>
    LineLimits<U> limits(U index, U& strong) const {
        const auto pick = [=](u8x16 v) {
            if constexpr (U::kBytes == 16)
                return shuffleBytes(v, index);
#if VEKVC_VECTOR256
            else
                return shuffleBytes(join(v, v), index);
#endif
        };
        const U strengths = pick(bS);
        strong = strengths == splat<U>(4);
        return {pick(alpha), pick(beta), pick(tC0), (strengths == zero<U>()) ^ splat<U>(255)};
    }
};

// Chroma 4:2:0, and vertical edges of 4:2:2: strengths of luma edges 0 and 2.
inline ChromaGroups groupsOfTwo(const DeblockOperands<Vek8u>& o) {
    const u8x16 index = lanes<u8x16>(0, 1, 2, 3, 8, 9, 10, 11, 255, 255, 255, 255, 255, 255, 255, 255);
    return {shuffleBytes(loadBytes<u8x16, 12>(o.bS), index), loadBytes<u8x16, 8>(o.thresholds), o.alpha, o.beta, 0};
}

// ---- horizontal edges

// The four rows around two edges that begin at q0 and q0 + distance, eight columns each.
inline void filterRows(Vek8u* q0, std::ptrdiff_t distance, std::ptrdiff_t step, const ChromaGroups& groups) {
    const std::uint32_t on = groups.on();
    if (on == 0) return;
    alignas(16) static constexpr std::uint8_t kLines[16] = {0, 0, 1, 1, 2, 2, 3, 3, 4, 4, 5, 5, 6, 6, 7, 7};
    u8x16 strong;
    if ((on == 0xFF) | (on == 0x0F) | (on == 0xF0)) {
        // An edge that is off is replaced by the other one: done twice alike.
        Vek8u* first = on == 0xF0 ? q0 + distance : q0;
        Vek8u* second = on == 0x0F ? q0 : q0 + distance;
        const u8x16 index = (load<u8x16>(kLines) & splat<u8x16>(on == 0x0F ? 3 : 7)) | splat<u8x16>(on == 0xF0 ? 4 : 0);
        const LineLimits<u8x16> limits = groups.limits(index, strong);
        const auto row = [&](int k) { return loadPair8<u8x16>(first + k * step, second + k * step); };
        u8x16 p0 = row(-1), q = row(0);
        filterChroma(row(-2), p0, q, row(1), limits, strong);
        storePair8(first - step, second - step, p0);
        storePair8(first, second, q);
        return;
    }
    // Columns without a strength may not be touched: a group that is off is replaced by one that is on.
    alignas(16) static constexpr std::uint8_t kGroups[16] = {0, 1, 2, 3, 4, 5, 6, 7};
    const u8x16 any = splat<u8x16>(std::countr_zero(on)), groupIsOff = groups.bS == zero<u8x16>();
    const u8x16 chosen = select(groupIsOff, any, load<u8x16>(kGroups));
    std::ptrdiff_t place[8];
    const auto placeOf = [=](int g) { return (g & 3) * 2 + (g >> 2) * distance; };
    const std::ptrdiff_t anyPlace = placeOf(std::countr_zero(on));
#pragma GCC unroll 8
    for (int g = 0; g < 8; ++g) place[g] = on >> g & 1 ? placeOf(g) : anyPlace;
    const LineLimits<u8x16> limits = groups.limits(interleaveLow(chosen, chosen), strong);
    const auto row = [&](std::ptrdiff_t k) {
        const Vek8u* base = q0 + k * step;
        return as<u8x16>(loadLanes16([&](int g) { return base + place[g]; }));
    };
    const auto putRow = [&](std::ptrdiff_t k, u8x16 v) {
        Vek8u* base = q0 + k * step;
        storeLanes16([&](int g) { return base + place[g]; }, as<u16x8>(v));
    };
    u8x16 p0 = row(-1), q = row(0);
    filterChroma(row(-2), p0, q, row(1), limits, strong);
    putRow(-1, p0);
    putRow(0, q);
}

template <class T>
void deblockChromaHorizontal(const DeblockOperands<T>& o) requires(sizeof(T) == 1) {
    const ChromaGroups groups = groupsOfTwo(o);
    if (groups.tooLargeThresholds()) return plain::deblockChromaHorizontal(o);
    filterRows(o.pixels, 4 * o.step, o.step, groups);
}
template <class T>
void deblockChroma422Horizontal(const DeblockOperands<T>& o) requires(sizeof(T) == 1) {
    if (!allZero(subSat(load<u8x16>(o.thresholds), splat<u8x16>(kLargestThreshold))))
        return plain::deblockChroma422Horizontal(o);
    for (int e = 0; e < 4; e += 2) {
        const ChromaGroups groups(loadBytes<u8x16, 8>(o.bS + 4 * e), loadBytes<u8x16, 8>(o.thresholds + 4 * e), o.alpha,
                                  o.beta, e != 0);
        filterRows(o.pixels + 4 * e * o.step, 4 * o.step, o.step, groups);
    }
}

// Both edges of interleaved chroma in vectors of 32 bytes, or in two of 16: four bytes to a group. The vectors of row
// or column k (p1, p0, q0, q1) are taken from sample(e, k), and the changed ones given to put(e, k, v).
template <class Sample, class Put>
[[gnu::always_inline]] inline void filterPairs(const ChromaGroups& groups, Sample sample, Put put) {
#if VEKVC_VECTOR256
    const auto both = [&](int k) { return join(sample(0, k), sample(1, k)); };
    u8x32 p0 = both(1), q0 = both(2), strong;
    const LineLimits<u8x32> limits = groups.limits(join(LumaEdges::spread(0), LumaEdges::spread(1)), strong);
    filterChroma(both(0), p0, q0, both(3), limits, strong);
    put(0, 1, lowHalf(p0)), put(0, 2, lowHalf(q0));
    put(1, 1, highHalf(p0)), put(1, 2, highHalf(q0));
#else
    for (int e = 0; e < 2; ++e) {
        u8x16 p0 = sample(e, 1), q0 = sample(e, 2), strong;
        const LineLimits<u8x16> limits = groups.limits(LumaEdges::spread(e), strong);
        filterChroma(sample(e, 0), p0, q0, sample(e, 3), limits, strong);
        put(e, 1, p0), put(e, 2, q0);
    }
#endif
}
inline void deblockChromaPairsHorizontal(const DeblockOperands<Vek8u>& o) {
    const ChromaGroups groups = groupsOfTwo(o);
    if (groups.tooLargeThresholds()) return plain::deblockChromaPairsHorizontal(o);
    const std::uint32_t on = groups.on();
    if (on == 0) return;
    const auto row = [&](int e, int k) { return o.pixels + (4 * e + k - 2) * o.step; };
    if (on == 0xFF)
        return filterPairs(
            groups, [&](int e, int k) { return load<u8x16>(row(e, k)); },
            [&](int e, int k, u8x16 v) { store(row(e, k), v); });
    const i32x4 bits = lanes<i32x4>(1, 2, 4, 8);
    const i32x4 masks[2] = {(splat<i32x4>(on) & bits) == bits, (splat<i32x4>(on >> 4) & bits) == bits};
    filterPairs(
        groups, [&](int e, int k) { return loadMasked<u8x16>(row(e, k), masks[e]); },
        [&](int e, int k, u8x16 v) { storeMasked(row(e, k), masks[e], v); });
}

// ---- vertical edges

// Eight lines of both edges: bytes -2 to 5 of eight rows, transposed. A row's two groups of four bytes are touched
// where their edge has a strength.
inline void filterColumns(Vek8u* q0, std::ptrdiff_t step, const ChromaGroups& groups) {
    const std::uint32_t on = groups.on();
    if (on == 0) return;
    const auto row = [&](int k) { return q0 - 2 + k * step; };
    const auto maskOf = [=](int pair) {
        const i32x4 bits = lanes<i32x4>(1, 16, -1, -1);
        return (splat<i32x4>(on >> pair & 0x11) & bits) == bits;
    };
    u8x16 x[4];
    if (on == 0xFF) {
        for (int i = 0; i < 4; ++i) x[i] = loadPair8<u8x16>(row(2 * i), row(2 * i + 1));
    } else {
        for (int i = 0; i < 4; ++i) {
            const i32x4 mask = maskOf(i);
            x[i] =
                as<u8x16>(interleaveLow(loadMasked<u64x2>(row(2 * i), mask), loadMasked<u64x2>(row(2 * i + 1), mask)));
        }
    }
    for (int turn = 0; turn < 3; ++turn) interleaveBytes(x);
    // Now p1 and p0, q0 and q1 of the first edge, then of the second one, eight lines each.
    const auto low = [](u8x16 a, u8x16 b) { return as<u8x16>(interleaveLow(as<u64x2>(a), as<u64x2>(b))); };
    const auto high = [](u8x16 a, u8x16 b) { return as<u8x16>(interleaveHigh(as<u64x2>(a), as<u64x2>(b))); };
    const u8x16 p1 = low(x[0], x[2]), q1 = high(x[1], x[3]);
    u8x16 p0 = high(x[0], x[2]), q = low(x[1], x[3]), strong;
    alignas(16) static constexpr std::uint8_t kLines[16] = {0, 0, 1, 1, 2, 2, 3, 3, 4, 4, 5, 5, 6, 6, 7, 7};
    const LineLimits<u8x16> limits = groups.limits(load<u8x16>(kLines), strong);
    filterChroma(p1, p0, q, q1, limits, strong);
    u8x16 y[4] = {low(p1, p0), low(q, q1), high(p1, p0), high(q, q1)};
    for (int turn = 0; turn < 3; ++turn) interleaveBytes(y);
    for (int i = 0; i < 4; ++i) {
        if (on == 0xFF) {
            storePair8(row(2 * i), row(2 * i + 1), y[i]);
        } else {
            const i32x4 mask = maskOf(i);
            storeMasked(row(2 * i), mask, y[i]);
            storeMasked(row(2 * i + 1), mask, bytesRight<8>(y[i]));
        }
    }
}

template <class T>
void deblockChromaVertical(const DeblockOperands<T>& o) requires(sizeof(T) == 1) {
    const ChromaGroups groups = groupsOfTwo(o);
    if (groups.tooLargeThresholds()) return plain::deblockChromaVertical(o);
    filterColumns(o.pixels, o.step, groups);
}
// Sixteen lines, four to a strength: eight with the first two strengths of each edge, eight with the last two.
template <class T>
void deblockChroma422Vertical(const DeblockOperands<T>& o) requires(sizeof(T) == 1) {
    const ChromaGroups groups = groupsOfTwo(o);
    if (groups.tooLargeThresholds()) return plain::deblockChroma422Vertical(o);
    for (int half = 0; half < 2; ++half) {
        const u8x16 index = lanes<u8x16>(0, 0, 1, 1, 4, 4, 5, 5, 255, 255, 255, 255, 255, 255, 255, 255);
        ChromaGroups part = groups;
        part.bS = shuffleBytes(groups.bS, index + splat<u8x16>(2 * half) | (index & splat<u8x16>(128)));
        part.tC0 = shuffleBytes(groups.tC0, index + splat<u8x16>(2 * half) | (index & splat<u8x16>(128)));
        filterColumns(o.pixels + 8 * half * o.step, o.step, part);
    }
}

// Interleaved: eight rows of eight pairs around both edges, transposed by pairs; a vector holds one pair of eight
// lines.
inline void deblockChromaPairsVertical(const DeblockOperands<Vek8u>& o) {
    const ChromaGroups groups = groupsOfTwo(o);
    if (groups.tooLargeThresholds()) return plain::deblockChromaPairsVertical(o);
    const std::uint32_t on = groups.on();
    if (on == 0) return;
    const auto row = [&](int k) { return o.pixels - 4 + k * o.step; };
    const auto maskOf = [=](int k) {
        const i32x4 bits = lanes<i32x4>(1, 1, 16, 16);
        return (splat<i32x4>(on >> k / 2 & 0x11) & bits) == bits;
    };
    i16x8 x[8];
    for (int k = 0; k < 8; ++k) x[k] = on == 0xFF ? load<i16x8>(row(k)) : loadMasked<i16x8>(row(k), maskOf(k));
    transpose8x8(x);
    filterPairs(
        groups, [&](int e, int k) { return as<u8x16>(x[4 * e + k]); },
        [&](int e, int k, u8x16 v) { x[4 * e + k] = as<i16x8>(v); });
    transpose8x8(x);
    for (int k = 0; k < 8; ++k) {
        if (on == 0xFF)
            store(row(k), x[k]);
        else
            storeMasked(row(k), maskOf(k), x[k]);
    }
}

}  // namespace vekvc::simd

#endif
