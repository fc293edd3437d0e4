// Deblocking across an edge of eight samples: the filter of H.263 Annex J, and the post-filter of ISO/IEC 14496-2
// Annex F.3.1.
#ifndef VEKVC_MPEG4_DEBLOCK_PLAIN_H
#define VEKVC_MPEG4_DEBLOCK_PLAIN_H

#include <algorithm>
#include <cstdlib>

#include "core/arith.h"
#include "core/memory.h"

namespace vekvc {

namespace mpeg4 {

enum class Edge { horizontal, vertical };

// Annex J: STRENGTH by QUANT, 1 to 31.
inline constexpr Vek8u kStrength[32] = {0, 1, 1, 2, 2, 3, 3, 4,  4,  4,  5,  5,  6,  6,  7,  7,
                                        7, 8, 8, 8, 9, 9, 9, 10, 10, 10, 11, 11, 11, 12, 12, 12};

// x / 8, to the nearest integer, halves away from zero.
constexpr int eighth(int x) { return x < 0 ? -((4 - x) >> 3) : (x + 4) >> 3; }

}  // namespace mpeg4

namespace plain {

// Calls filter(p, across) for the eight lines across an edge; p is the first sample behind it, `across` the way to the
// next.
template <mpeg4::Edge edge, class Filter>
void forLinesAcross(Vek8u* p, std::ptrdiff_t step, Filter&& filter) {
    constexpr bool kVertical = edge == mpeg4::Edge::vertical;
    for (int i = 0; i < 8; ++i) filter(p + i * (kVertical ? step : 1), kVertical ? 1 : step);
}

// H.263 Annex J.3, on A B | C D.
template <mpeg4::Edge edge>
void deblockH263(Vek8u* pSrcDst, std::ptrdiff_t step, Vek32s QP) {
    const int strength = mpeg4::kStrength[QP];
    forLinesAcross<edge>(pSrcDst, step, [=](Vek8u* p, std::ptrdiff_t across) {
        const int A = p[-2 * across], B = p[-across], C = p[0], D = p[across];
        const int d = (A - 4 * B + 4 * C - D) / 8;
        const int ramp = std::max(0, std::abs(d) - std::max(0, 2 * (std::abs(d) - strength)));
        const int d1 = d < 0 ? -ramp : ramp;
        const int d2 = clip3(-(ramp >> 1), ramp >> 1, (A - D) / 4);
        p[-2 * across] = static_cast<Vek8u>(A - d2);
        p[-across] = clip255(B + d1);
        p[0] = clip255(C - d1);
        p[across] = static_cast<Vek8u>(D + d2);
    });
}

// 14496-2 Annex F.3.1, on v0..v4 | v5..v9: a smoothing filter where the line is flat, else a correction of the two
// samples at the edge.
template <mpeg4::Edge edge>
void deblockMpeg4(Vek8u* pSrcDst, std::ptrdiff_t step, Vek32s QP) {
    forLinesAcross<edge>(pSrcDst, step, [=](Vek8u* p, std::ptrdiff_t across) {
        int v[10];
        for (int i = 0; i < 10; ++i) v[i] = p[(i - 5) * across];
        const auto put = [=](int i, int value) { p[(i - 5) * across] = static_cast<Vek8u>(value); };
        int equal = 0;
        for (int i = 0; i < 9; ++i) equal += std::abs(v[i] - v[i + 1]) <= 2;
        if (equal >= 6) {
            if (*std::max_element(v + 1, v + 9) - *std::min_element(v + 1, v + 9) >= 2 * QP) return;
            const int before = std::abs(v[1] - v[0]) < QP ? v[0] : v[1];
            const int behind = std::abs(v[8] - v[9]) < QP ? v[9] : v[8];
            const auto at = [&](int m) { return m < 1 ? before : m > 8 ? behind : v[m]; };
            for (int k = 1; k <= 8; ++k)
                put(k, (at(k - 4) + at(k - 3) + 2 * at(k - 2) + 2 * at(k - 1) + 4 * at(k) + 2 * at(k + 1) +
                        2 * at(k + 2) + at(k + 3) + at(k + 4) + 8) >>
                           4);
        } else {
            const auto e = [&](int i) { return mpeg4::eighth(2 * v[i] - 5 * v[i + 1] + 5 * v[i + 2] - 2 * v[i + 3]); };
            const int e0 = e(3), e1 = e(1), e2 = e(5);
            if (std::abs(e0) >= QP) return;
            const int least = std::min({std::abs(e0), std::abs(e1), std::abs(e2)});
            const int t = mpeg4::eighth(5 * ((e0 < 0 ? -least : least) - e0));
            const int half = (v[4] - v[5]) / 2;
            const int d = clip3(std::min(0, half), std::max(0, half), t);
            put(4, v[4] - d);
            put(5, v[5] + d);
        }
    });
}

}  // namespace plain
}  // namespace vekvc

#endif
