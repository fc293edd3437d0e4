// Deblocking of 16-bit chroma, H.264 8.7.2 with chromaStyleFilteringFlag 1, for samples of at most 14 bits: eight lines
// of one edge at a time.
#ifndef VEKVC_H264_DEBLOCK_CHROMA16_SIMD_H
#define VEKVC_H264_DEBLOCK_CHROMA16_SIMD_H

#include "core/memory.h"
#include "core/simd.h"
#include "h264/deblock_plain.h"

namespace vekvc::simd {

// Eight lines of an edge: how many lines share a strength, and the strength of the first line.
struct ChromaLines16u {
    int linesPerStrength;
    int firstStrength;
};

// What eight lines of an edge are filtered with, and which of them have a strength.
struct ChromaEdge16u {
    i16x8 alpha, beta, tC0, maxSample, active, strong;
    std::uint32_t on;  // a bit per line

    // Limits beyond the range of differences mean the same as its end.
    ChromaEdge16u(const EdgeLimits& limits, const Vek8u* bS, const Vek16u* thresholds, ChromaLines16u lines) {
        alignas(16) static constexpr std::uint8_t kSpread[3][16] = {
            {0, 1, 2, 3, 4, 5, 6, 7, 128, 128, 128, 128, 128, 128, 128, 128},
            {0, 1, 0, 1, 2, 3, 2, 3, 4, 5, 4, 5, 6, 7, 6, 7},
            {0, 1, 0, 1, 0, 1, 0, 1, 2, 3, 2, 3, 2, 3, 2, 3}};
        const u8x16 spread = load<u8x16>(kSpread[lines.linesPerStrength / 2]) + splat<u8x16>(2 * lines.firstStrength);
        const u8x16 strength = min(loadBytes<u8x16, 4>(bS), splat<u8x16>(4));
        const i16x8 strengths = shuffleBytes(as<i16x8>(widenLow(strength)), spread);
        alpha = splat<i16x8>(limits.alpha < 32767 ? limits.alpha : 32767);
        beta = splat<i16x8>(limits.beta < 32767 ? limits.beta : 32767);
        tC0 = as<i16x8>(shuffleBytes(min(loadBytes<u16x8, 8>(thresholds), splat<u16x8>(20000)), spread));
        maxSample = splat<i16x8>(limits.maxSample);
        active = strengths > zero<i16x8>();
        strong = strengths == splat<i16x8>(4);
        on = byteMask(narrowI8(active, active)) & 0xFF;
    }
};

[[gnu::always_inline]] inline void filterChroma16u(i16x8 p1, i16x8& p0, i16x8& q0, i16x8 q1, const ChromaEdge16u& l) {
    const auto distance = [](i16x8 a, i16x8 b) { return abs(a - b); };
    const auto quarter = [](i16x8 x) { return as<i16x8>(as<u16x8>(x + splat<i16x8>(2)) >> 2); };
    const i16x8 mask =
        (l.alpha > distance(p0, q0)) & (l.beta > distance(p1, p0)) & (l.beta > distance(q1, q0)) & l.active;
    const i16x8 zeros = zero<i16x8>(), tC = (l.tC0 + splat<i16x8>(1)) & mask, full = mask & l.strong;
    // ((q0 - p0) * 4 + (p1 - q1) + 4) >> 3 = ((q0 - p0) + ((p1 - q1 + 4) >> 2)) >> 1
    const i16x8 difference = ((q0 - p0) + ((p1 - q1 + splat<i16x8>(4)) >> 2)) >> 1;
    const i16x8 delta = min(max(difference, zeros - tC), tC);
    // Four samples of 14 bits add up to less than 2^16.
    const i16x8 strongP = quarter(p1 + p1 + p0 + q1), strongQ = quarter(q1 + q1 + q0 + p1);
    p0 = select(full, strongP, min(max(p0 + delta, zeros), l.maxSample));
    q0 = select(full, strongQ, min(max(q0 - delta, zeros), l.maxSample));
}

// Eight columns around a horizontal edge at q0, two to a strength.
inline void filterRows16u(Vek16u* q0, std::ptrdiff_t step, const ChromaEdge16u& edge) {
    if (edge.on == 0) return;
    const auto row = [&](int k) { return offsetBytes(q0, k * step); };
    if (edge.on == 0xFF) {
        i16x8 p = load<i16x8>(row(-1)), q = load<i16x8>(row(0));
        filterChroma16u(load<i16x8>(row(-2)), p, q, load<i16x8>(row(1)), edge);
        store(row(-1), p);
        store(row(0), q);
        return;
    }
    const i32x4 mask = as<i32x4>(edge.active);
    i16x8 p = loadMasked<i16x8>(row(-1), mask), q = loadMasked<i16x8>(row(0), mask);
    filterChroma16u(loadMasked<i16x8>(row(-2), mask), p, q, loadMasked<i16x8>(row(1), mask), edge);
    storeMasked(row(-1), mask, p);
    storeMasked(row(0), mask, q);
}

// Eight rows around a vertical edge at q0: four columns, transposed. Rows without a strength are left alone.
inline void filterColumns16u(Vek16u* q0, std::ptrdiff_t step, const ChromaEdge16u& edge) {
    if (edge.on == 0) return;
    const auto row = [&](int k) { return offsetBytes(q0, k * step) - 2; };
    i16x8 rows[8];
    for (int k = 0; k < 8; ++k) rows[k] = edge.on >> k & 1 ? loadBytes<i16x8, 8>(row(k)) : zero<i16x8>();
    i16x8 pairs[4], halves[4];  // rows k and k + 4, then k, k + 2, k + 4, k + 6, columns 0 and 1 or 2 and 3
    for (int k = 0; k < 4; ++k) pairs[k] = interleaveLow(rows[k], rows[k + 4]);
    for (int k = 0; k < 2; ++k) {
        halves[2 * k] = interleaveLow(pairs[k], pairs[k + 2]);
        halves[2 * k + 1] = interleaveHigh(pairs[k], pairs[k + 2]);
    }
    const i16x8 p1 = interleaveLow(halves[0], halves[2]), q1 = interleaveHigh(halves[1], halves[3]);
    i16x8 p = interleaveHigh(halves[0], halves[2]), q = interleaveLow(halves[1], halves[3]);
    filterChroma16u(p1, p, q, q1, edge);
    const i16x8 left0 = interleaveLow(p1, p), left4 = interleaveHigh(p1, p);  // rows 0 to 3, and 4 to 7
    const i16x8 right0 = interleaveLow(q, q1), right4 = interleaveHigh(q, q1);
    const auto both = [](i16x8 a, i16x8 b, bool high) {
        return high ? as<i16x8>(interleaveHigh(as<i32x4>(a), as<i32x4>(b)))
                    : as<i16x8>(interleaveLow(as<i32x4>(a), as<i32x4>(b)));
    };
    const i16x8 out[4] = {both(left0, right0, false), both(left0, right0, true), both(left4, right4, false),
                          both(left4, right4, true)};
    for (int k = 0; k < 8; ++k)
        if (edge.on >> k & 1) storeBytes<8>(row(k), k % 2 != 0 ? bytesRight<8>(out[k / 2]) : out[k / 2]);
}

template <class T>
void deblockChromaHorizontal(const DeblockOperands<T>& o) requires(sizeof(T) == 2) {
    for (int e = 0; e < 2; ++e)
        filterRows16u(offsetBytes(o.pixels, 4 * e * o.step), o.step,
                      ChromaEdge16u(plain::limitsOf(o, e), o.bS + 8 * e, o.thresholds + 4 * e, {2, 0}));
}
template <class T>
void deblockChroma422Horizontal(const DeblockOperands<T>& o) requires(sizeof(T) == 2) {
    for (int e = 0; e < 4; ++e)
        filterRows16u(offsetBytes(o.pixels, 4 * e * o.step), o.step,
                      ChromaEdge16u(plain::limitsOf(o, e), o.bS + 4 * e, o.thresholds + 4 * e, {2, 0}));
}
template <class T>
void deblockChromaVertical(const DeblockOperands<T>& o) requires(sizeof(T) == 2) {
    for (int e = 0; e < 2; ++e)
        filterColumns16u(o.pixels + 4 * e, o.step,
                         ChromaEdge16u(plain::limitsOf(o, e), o.bS + 8 * e, o.thresholds + 4 * e, {2, 0}));
}
template <class T>
void deblockChroma422Vertical(const DeblockOperands<T>& o) requires(sizeof(T) == 2) {
    for (int e = 0; e < 2; ++e)
        for (int half = 0; half < 2; ++half)
            filterColumns16u(offsetBytes(o.pixels, 8 * half * o.step) + 4 * e, o.step,
                             ChromaEdge16u(plain::limitsOf(o, e), o.bS + 8 * e, o.thresholds + 4 * e, {4, 2 * half}));
}
template <class T>
void deblockChromaLeftMbaff(T* pixels, std::ptrdiff_t step, const EdgeLimits& limits, const T* thresholds,
                            const Vek8u* bS) requires(sizeof(T) == 2) {
    filterColumns16u(pixels, step, ChromaEdge16u(limits, bS, thresholds, {1, 0}));
}

}  // namespace vekvc::simd

#endif
