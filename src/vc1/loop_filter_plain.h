// The VC-1 loop filter (SMPTE 421M 8.6.4).
#ifndef VEKVC_VC1_LOOP_FILTER_PLAIN_H
#define VEKVC_VC1_LOOP_FILTER_PLAIN_H

#include <algorithm>
#include <cstdlib>

#include "core/arith.h"
#include "core/memory.h"

namespace vekvc::vc1 {

enum class Edge { horizontal, vertical };

constexpr int kSegment = 4;  // pairs of pixels that are filtered or left together

// One bit per segment, from the first: set where it is filtered.
constexpr unsigned enabledLuma(Vek32s edgeDisableFlag) { return ~static_cast<unsigned>(edgeDisableFlag) & 15; }
constexpr unsigned enabledChroma(Vek32s edgeDisableFlag) { return ~static_cast<unsigned>(edgeDisableFlag) >> 1 & 3; }

}  // namespace vekvc::vc1

namespace vekvc::plain {

using vc1::Edge;

// The pixels across an edge at one place: P1 to P4 before p, P5 to P8 from p on.
struct PixelsAcross {
    Vek8u* p;
    std::ptrdiff_t across;

    int P(int i) const { return p[(i - 5) * across]; }

    // What is taken from P4 and added to P5, and whether the pair meets the conditions of filtering.
    struct Decision {
        bool filtered;
        int d;
    };
    Decision decide(Vek32s pQuant) const {
        const int clip = (P(4) - P(5)) / 2;
        const int a0 = (2 * (P(3) - P(6)) - 5 * (P(4) - P(5)) + 4) >> 3;
        const int a1 = (2 * (P(1) - P(4)) - 5 * (P(2) - P(3)) + 4) >> 3;
        const int a2 = (2 * (P(5) - P(8)) - 5 * (P(6) - P(7)) + 4) >> 3;
        const int a3 = std::min(std::abs(a1), std::abs(a2));
        if (clip == 0 || std::abs(a0) >= pQuant || a3 >= std::abs(a0)) return {false, 0};
        int d = 5 * ((a0 < 0 ? -a3 : a3) - a0) / 8;
        if ((d < 0) != (clip < 0))
            d = 0;
        else if (std::abs(d) > std::abs(clip))
            d = clip;
        return {true, d};
    }
    void apply(int d) const {
        p[-across] = clip255(P(4) - d);
        p[0] = clip255(P(5) + d);
    }
};

// Filters the segments of an edge whose bit is set in `enabled`; pairs lie `along` bytes apart.
inline void filterSegments(Vek8u* p, std::ptrdiff_t across, std::ptrdiff_t along, Vek32s pQuant, unsigned enabled) {
    for (; enabled != 0; enabled >>= 1, p += vc1::kSegment * along) {
        if ((enabled & 1) == 0 || !PixelsAcross{p + 2 * along, across}.decide(pQuant).filtered) continue;
        for (int i = 0; i < vc1::kSegment; ++i) {
            const PixelsAcross pixels{p + i * along, across};
            const PixelsAcross::Decision decision = pixels.decide(pQuant);
            if (decision.filtered) pixels.apply(decision.d);
        }
    }
}

// An edge of `segments` times four pixels.
template <Edge edge, int segments>
void filterEdge(Vek8u* p, std::ptrdiff_t step, Vek32s pQuant, unsigned enabled) {
    if constexpr (edge == Edge::horizontal)
        filterSegments(p, step, 1, pQuant, enabled);
    else
        filterSegments(p, 1, step, pQuant, enabled);
}

// An edge of eight pairs of interleaved chroma.
template <Edge edge>
void filterEdgeInterleaved(Vek8u* p, std::ptrdiff_t step, Vek32s pQuant, unsigned enabledU, unsigned enabledV) {
    const std::ptrdiff_t across = edge == Edge::horizontal ? step : 2, along = edge == Edge::horizontal ? 2 : step;
    filterSegments(p, across, along, pQuant, enabledU);
    filterSegments(p + 1, across, along, pQuant, enabledV);
}

}  // namespace vekvc::plain

#endif
