// The loop filter of H.261 (3.2.3).
#ifndef VEKVC_MPEG4_LOOP_FILTER_PLAIN_H
#define VEKVC_MPEG4_LOOP_FILTER_PLAIN_H

#include "core/memory.h"

namespace vekvc::plain {

// 1/4, 1/2, 1/4 along columns, then along rows, rounded once at the end; 0, 1, 0 at the block's sides.
inline void filterLoop8x8(const Vek8u* pSrc, std::ptrdiff_t srcStep, Vek8u* pDst, std::ptrdiff_t dstStep) {
    int t[8][8];
    const auto sample = [&](int x, int y) -> int { return pSrc[y * srcStep + x]; };
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x)
            t[y][x] = y == 0 || y == 7 ? 4 * sample(x, y) : sample(x, y - 1) + 2 * sample(x, y) + sample(x, y + 1);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) {
            const int sum = x == 0 || x == 7 ? 4 * t[y][x] : t[y][x - 1] + 2 * t[y][x] + t[y][x + 1];
            pDst[y * dstStep + x] = static_cast<Vek8u>((sum + 8) >> 4);
        }
}

}  // namespace vekvc::plain

#endif
