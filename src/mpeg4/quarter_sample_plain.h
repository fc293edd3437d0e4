// Quarter-sample prediction (ISO/IEC 14496-2 7.6.2.2).
#ifndef VEKVC_MPEG4_QUARTER_SAMPLE_PLAIN_H
#define VEKVC_MPEG4_QUARTER_SAMPLE_PLAIN_H

#include "core/arith.h"
#include "core/memory.h"

namespace vekvc {

namespace mpeg4 {

// A block's reference and the quarter-sample position at which it is read.
struct QuarterSample {
    const Vek8u* src;
    std::ptrdiff_t srcStep;
    int dx, dy;
    int rounding;
};

// What becomes of the prediction.
enum class Into { destination, average };

}  // namespace mpeg4

namespace plain {

// The block reads samples 0 to n of a filtered direction; those beyond are mirrored.
constexpr int mirrored(int i, int n) { return i < 0 ? -1 - i : i > n ? 2 * n + 1 - i : i; }

// The value at i and `fraction` quarters, from the samples at(0) to at(n) of one row or column.
template <class At>
int quarterSample(At at, int i, int n, int fraction, int rounding) {
    if (fraction == 0) return at(i);
    const auto x = [&](int k) -> int { return at(mirrored(i + k, n)); };
    const int half =
        clip255((20 * (x(0) + x(1)) - 6 * (x(-1) + x(2)) + 3 * (x(-2) + x(3)) - (x(-3) + x(4)) + 16 - rounding) >> 5);
    if (fraction == 2) return half;
    return (x(fraction == 1 ? 0 : 1) + half + 1 - rounding) >> 1;
}

// Rows first, to samples of 8 bits, then the columns of these.
template <mpeg4::Into into, int W, int H>
void predictQuarterSample(const mpeg4::QuarterSample& q, Vek8u* pDst, std::ptrdiff_t dstStep) {
    Vek8u across[H + 1][W];
    for (int y = 0; y < (q.dy != 0 ? H + 1 : H); ++y)
        for (int x = 0; x < W; ++x)
            across[y][x] = static_cast<Vek8u>(
                quarterSample([&](int i) -> int { return q.src[y * q.srcStep + i]; }, x, W, q.dx, q.rounding));
    for (int y = 0; y < H; ++y)
        for (int x = 0; x < W; ++x) {
            Vek8u& dst = pDst[y * dstStep + x];
            const int p = quarterSample([&](int i) -> int { return across[i][x]; }, y, H, q.dy, q.rounding);
            dst = static_cast<Vek8u>(into == mpeg4::Into::average ? (dst + p + 1) >> 1 : p);
        }
}

}  // namespace plain
}  // namespace vekvc

#endif
