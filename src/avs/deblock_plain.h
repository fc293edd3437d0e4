// The loop filter as GB/T 20090.2 clause 9 defines it, one line across an edge at a time.
#ifndef VEKVC_AVS_DEBLOCK_PLAIN_H
#define VEKVC_AVS_DEBLOCK_PLAIN_H

#include <cstdlib>

#include "core/arith.h"
#include "core/memory.h"

namespace vekvc {

namespace avs {

enum class Plane { luma, chroma };
enum class Edges { vertical, horizontal };

// Of one edge.
struct EdgeLimits {
    int alpha, beta, c;
};
// A block's edges: per edge alpha, beta and C, per half of an edge a strength.
struct DeblockOperands {
    Vek8u* pixels;
    std::ptrdiff_t step;
    const Vek8u *alpha, *beta, *c, *bS;
};

}  // namespace avs

namespace plain {

// The line whose samples p2 p1 p0 | q0 q1 q2 lie `across` bytes from one to the next; q points to q0.
template <avs::Plane plane>
void filterAvsLine(Vek8u* q, std::ptrdiff_t across, int bS, const avs::EdgeLimits& limits) {
    constexpr bool kLuma = plane == avs::Plane::luma;
    const auto [alpha, beta, c] = limits;
    const auto at = [&](int i) -> Vek8u& { return q[i * across]; };
    const int p2 = at(-3), p1 = at(-2), p0 = at(-1), q0 = at(0), q1 = at(1), q2 = at(2);
    if (std::abs(p0 - q0) >= alpha || std::abs(p1 - p0) >= beta || std::abs(q1 - q0) >= beta) return;
    const bool flatP = std::abs(p2 - p0) < beta, flatQ = std::abs(q2 - q0) < beta;
    if (bS >= 2) {
        const int s = p0 + q0 + 2;
        const bool close = std::abs(p0 - q0) < (alpha >> 2) + 2;
        at(-1) = static_cast<Vek8u>((flatP && close ? p1 + p0 + s : 2 * p1 + s) >> 2);
        at(0) = static_cast<Vek8u>((flatQ && close ? q1 + q0 + s : 2 * q1 + s) >> 2);
        if (kLuma && flatP && close) at(-2) = static_cast<Vek8u>((2 * p1 + s) >> 2);
        if (kLuma && flatQ && close) at(1) = static_cast<Vek8u>((2 * q1 + s) >> 2);
        return;
    }
    const int delta = clip3(-c, c, ((q0 - p0) * 3 + (p1 - q1) + 4) >> 3);
    const int newP0 = clip255(p0 + delta), newQ0 = clip255(q0 - delta);
    at(-1) = static_cast<Vek8u>(newP0);
    at(0) = static_cast<Vek8u>(newQ0);
    if (kLuma && flatP) at(-2) = clip255(p1 + clip3(-c, c, ((newP0 - p1) * 3 + (p2 - newQ0) + 4) >> 3));
    if (kLuma && flatQ) at(1) = clip255(q1 - clip3(-c, c, ((q1 - newQ0) * 3 + (newP0 - q2) + 4) >> 3));
}

// Luma has two edges of 16 lines, chroma one of 8.
template <avs::Plane plane, avs::Edges edges>
void deblockAvs(const avs::DeblockOperands& o) {
    constexpr bool kLuma = plane == avs::Plane::luma;
    constexpr int kLines = kLuma ? 8 : 4;  // of half an edge
    const std::ptrdiff_t across = edges == avs::Edges::vertical ? 1 : o.step;
    const std::ptrdiff_t along = edges == avs::Edges::vertical ? o.step : 1;
    for (int e = 0; e < (kLuma ? 2 : 1); ++e)
        for (int half = 0; half < 2; ++half) {
            const int bS = o.bS[2 * e + half];
            if (bS == 0) continue;
            for (int i = 0; i < kLines; ++i)
                filterAvsLine<plane>(o.pixels + 8 * e * across + (half * kLines + i) * along, across, bS,
                                     {o.alpha[e], o.beta[e], o.c[e]});
        }
}

}  // namespace plain
}  // namespace vekvc

#endif
