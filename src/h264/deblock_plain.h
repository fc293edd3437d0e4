// The deblocking filter as H.264 8.7.2 defines it, line by line.
#ifndef VEKVC_H264_DEBLOCK_PLAIN_H
#define VEKVC_H264_DEBLOCK_PLAIN_H

#include <cstdlib>

#include "core/arith.h"
#include "core/memory.h"

namespace vekvc {

// The operands of the forms that filter all edges of a block in one direction.
template <class T>
struct DeblockOperands {
    T* pixels;
    std::ptrdiff_t step;  // bytes
    const T* alpha;
    const T* beta;
    const T* thresholds;
    const Vek8u* bS;
    int maxSample;
};

// What one edge or segment is filtered with.
struct EdgeLimits {
    std::int64_t alpha;
    std::int64_t beta;
    int maxSample;
};

namespace plain {

// One line across an edge: p(0), p(1) ... lead away from it to the left or up, q(0), q(1) ... to the right or down.
template <class T>
struct Line {
    T* q0;
    std::ptrdiff_t across;  // bytes from one sample of the line to the next

    int p(int i) const { return load<T>(offsetBytes(q0, -(i + 1) * across)); }
    int q(int i) const { return load<T>(offsetBytes(q0, i * across)); }
    void putP(int i, int value) const { store(offsetBytes(q0, -(i + 1) * across), static_cast<T>(value)); }
    void putQ(int i, int value) const { store(offsetBytes(q0, i * across), static_cast<T>(value)); }
};

// filterSamplesFlag without its bS term (8.7.2.2).
template <class T>
bool crossesLimits(const Line<T>& l, const EdgeLimits& limits) {
    return std::abs(l.p(0) - l.q(0)) < limits.alpha && std::abs(l.p(1) - l.p(0)) < limits.beta &&
           std::abs(l.q(1) - l.q(0)) < limits.beta;
}

inline int delta(int p1, int p0, int q0, int q1, int tC) {
    return clip3(-tC, tC, (((q0 - p0) << 2) + (p1 - q1) + 4) >> 3);
}

// 8.7.2.3 (bS below 4) and 8.7.2.4 (bS 4) with chromaStyleFilteringFlag 0.
template <class T>
void filterLumaLine(const Line<T>& l, const EdgeLimits& limits, int bS, int tC0) {
    if (bS == 0 || !crossesLimits(l, limits)) return;
    const int p0 = l.p(0), p1 = l.p(1), p2 = l.p(2), q0 = l.q(0), q1 = l.q(1), q2 = l.q(2);
    const bool ap = std::abs(p2 - p0) < limits.beta, aq = std::abs(q2 - q0) < limits.beta;
    if (bS < 4) {
        const int tC = tC0 + ap + aq;
        const int d = delta(p1, p0, q0, q1, tC);
        l.putP(0, clip3(0, limits.maxSample, p0 + d));
        l.putQ(0, clip3(0, limits.maxSample, q0 - d));
        if (ap) l.putP(1, p1 + clip3(-tC0, tC0, (p2 + ((p0 + q0 + 1) >> 1) - (p1 << 1)) >> 1));
        if (aq) l.putQ(1, q1 + clip3(-tC0, tC0, (q2 + ((p0 + q0 + 1) >> 1) - (q1 << 1)) >> 1));
        return;
    }
    const bool close = std::abs(p0 - q0) < (limits.alpha >> 2) + 2;
    if (ap && close) {
        const int p3 = l.p(3);
        l.putP(0, (p2 + 2 * p1 + 2 * p0 + 2 * q0 + q1 + 4) >> 3);
        l.putP(1, (p2 + p1 + p0 + q0 + 2) >> 2);
        l.putP(2, (2 * p3 + 3 * p2 + p1 + p0 + q0 + 4) >> 3);
    } else {
        l.putP(0, (2 * p1 + p0 + q1 + 2) >> 2);
    }
    if (aq && close) {
        const int q3 = l.q(3);
        l.putQ(0, (p1 + 2 * p0 + 2 * q0 + 2 * q1 + q2 + 4) >> 3);
        l.putQ(1, (p0 + q0 + q1 + q2 + 2) >> 2);
        l.putQ(2, (2 * q3 + 3 * q2 + q1 + q0 + p0 + 4) >> 3);
    } else {
        l.putQ(0, (2 * q1 + q0 + p1 + 2) >> 2);
    }
}

// The same with chromaStyleFilteringFlag 1.
template <class T>
void filterChromaLine(const Line<T>& l, const EdgeLimits& limits, int bS, int tC0) {
    if (bS == 0 || !crossesLimits(l, limits)) return;
    const int p0 = l.p(0), p1 = l.p(1), q0 = l.q(0), q1 = l.q(1);
    if (bS < 4) {
        const int d = delta(p1, p0, q0, q1, tC0 + 1);
        l.putP(0, clip3(0, limits.maxSample, p0 + d));
        l.putQ(0, clip3(0, limits.maxSample, q0 - d));
    } else {
        l.putP(0, (2 * p1 + p0 + q1 + 2) >> 2);
        l.putQ(0, (2 * q1 + q0 + p1 + 2) >> 2);
    }
}

// The directions of an edge: bytes from sample to sample across it, and from line to line along it.
struct Direction {
    std::ptrdiff_t across;
    std::ptrdiff_t along;
};
template <class T>
Direction verticalEdges(const DeblockOperands<T>& o) {
    return {sizeof(T), o.step};
}
template <class T>
Direction horizontalEdges(const DeblockOperands<T>& o) {
    return {o.step, sizeof(T)};
}

// The edge of luma or chroma lines at q0, with four strengths of `linesPerStrength` lines each.
template <class T, class Filter>
void filterEdge(T* q0, Direction d, const EdgeLimits& limits, const Vek8u* bS, const T* tC0, int linesPerStrength,
                Filter filterLine) {
    for (int k = 0; k < 4 * linesPerStrength; ++k) {
        const int s = k / linesPerStrength;
        filterLine(Line<T>{offsetBytes(q0, k * d.along), d.across}, limits, bS[s], load<T>(tC0 + s));
    }
}

template <class T>
EdgeLimits limitsOf(const DeblockOperands<T>& o, int edge) {
    const int inner = edge != 0;
    return {load<T>(o.alpha + inner), load<T>(o.beta + inner), o.maxSample};
}

// The edges at luma columns or rows 0, 4, 8 and 12.
template <class T>
void filterLumaEdges(const DeblockOperands<T>& o, Direction d) {
    for (int e = 0; e < 4; ++e)
        filterEdge(offsetBytes(o.pixels, 4 * e * d.across), d, limitsOf(o, e), o.bS + 4 * e, o.thresholds + 4 * e, 4,
                   filterLumaLine<T>);
}
template <class T>
void deblockLumaVertical(const DeblockOperands<T>& o) {
    filterLumaEdges(o, verticalEdges(o));
}
template <class T>
void deblockLumaHorizontal(const DeblockOperands<T>& o) {
    filterLumaEdges(o, horizontalEdges(o));
}

// The chroma edges 0 and 4 with the strengths of luma edges 0 and 2; a line is `channels` interleaved samples wide.
template <class T>
void filterTwoChromaEdges(const DeblockOperands<T>& o, Direction d, int linesPerStrength) {
    for (int e = 0; e < 2; ++e)
        filterEdge(offsetBytes(o.pixels, 4 * e * d.across), d, limitsOf(o, e), o.bS + 8 * e, o.thresholds + 4 * e,
                   linesPerStrength, filterChromaLine<T>);
}
template <class T>
void deblockChromaVertical(const DeblockOperands<T>& o) {
    filterTwoChromaEdges(o, verticalEdges(o), 2);
}
template <class T>
void deblockChromaHorizontal(const DeblockOperands<T>& o) {
    filterTwoChromaEdges(o, horizontalEdges(o), 2);
}
template <class T>
void deblockChroma422Vertical(const DeblockOperands<T>& o) {
    filterTwoChromaEdges(o, verticalEdges(o), 4);
}
// Four edges with the strengths of luma edges 0 to 3: chroma row 4e is luma row 4e.
template <class T>
void deblockChroma422Horizontal(const DeblockOperands<T>& o) {
    const Direction d = horizontalEdges(o);
    for (int e = 0; e < 4; ++e)
        filterEdge(offsetBytes(o.pixels, 4 * e * d.across), d, limitsOf(o, e), o.bS + 4 * e, o.thresholds + 4 * e, 2,
                   filterChromaLine<T>);
}

// Interleaved chroma: both components with the same values.
inline void deblockChromaPairsVertical(const DeblockOperands<Vek8u>& o) {
    for (int c = 0; c < 2; ++c) {
        DeblockOperands<Vek8u> component = o;
        component.pixels += c;
        filterTwoChromaEdges(component, {2, o.step}, 2);
    }
}
inline void deblockChromaPairsHorizontal(const DeblockOperands<Vek8u>& o) {
    for (int c = 0; c < 2; ++c) {
        DeblockOperands<Vek8u> component = o;
        component.pixels += c;
        filterTwoChromaEdges(component, {o.step, 2}, 2);
    }
}

// Part of a left edge between a frame and a field pair: eight luma or four chroma lines.
template <class T>
void deblockLumaLeftMbaff(T* pixels, std::ptrdiff_t step, const EdgeLimits& limits, const T* thresholds,
                          const Vek8u* bS) {
    filterEdge(pixels, {sizeof(T), step}, limits, bS, thresholds, 2, filterLumaLine<T>);
}
template <class T>
void deblockChromaLeftMbaff(T* pixels, std::ptrdiff_t step, const EdgeLimits& limits, const T* thresholds,
                            const Vek8u* bS) {
    filterEdge(pixels, {sizeof(T), step}, limits, bS, thresholds, 1, filterChromaLine<T>);
}

}  // namespace plain
}  // namespace vekvc

#endif
