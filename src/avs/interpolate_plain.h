// Sub-sample interpolation as GB/T 20090.2 clause 9 defines it: luma at quarters, chroma at eighths of a sample.
#ifndef VEKVC_AVS_INTERPOLATE_PLAIN_H
#define VEKVC_AVS_INTERPOLATE_PLAIN_H

#include "core/arith.h"
#include "core/memory.h"

namespace vekvc {

namespace avs {

// The filter of a fraction on the samples -2 to 3, and the exponent of its gain. The quarter filters are the standard's
// (1, 7, 7, 1) / 16 over whole samples and half-samples that are not rounded, joined into one.
inline constexpr int kTaps[4][6] = {
    {0, 0, 1, 0, 0, 0}, {-1, -2, 96, 42, -7, 0}, {0, -1, 5, 5, -1, 0}, {0, -7, 42, 96, -2, -1}};
inline constexpr int kGain[4] = {0, 7, 3, 7};

// How far the filters reach before and behind a block.
struct Reach {
    int before, behind;
};
constexpr Reach lumaReach(int d, bool bothOdd) {
    constexpr Reach kReach[4] = {{0, 0}, {2, 2}, {1, 2}, {1, 3}};
    return bothOdd ? kReach[2] : kReach[d];
}
constexpr Reach chromaReach(int d) { return {0, d != 0 ? 1 : 0}; }

}  // namespace avs

namespace plain {

// The sample at (x, y), filtered by rows with the taps of dx, then with those of dy. Nothing is read for a tap of 0.
inline int filterAvs(const Block<Vek8u>& in, int x, int y, int dx, int dy) {
    int sum = 0;
    for (int j = 0; j < 6; ++j) {
        if (avs::kTaps[dy][j] == 0) continue;
        int row = 0;
        for (int i = 0; i < 6; ++i)
            if (avs::kTaps[dx][i] != 0) row += avs::kTaps[dx][i] * in(x + i - 2, y + j - 2);
        sum += avs::kTaps[dy][j] * row;
    }
    return sum;
}

// With fractions in both directions that are no half, half of the way to the sample at the near corner.
inline void interpolateAvsLuma(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep, int dx, int dy,
                               VekiSize size) {
    const Block<Vek8u> in(pSrc, srcStep);
    const MutableBlock<Vek8u> out(pDst, dstStep);
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            if (dx % 2 != 0 && dy % 2 != 0) {
                const int corner = in(x + (dx == 3), y + (dy == 3));
                out.put(x, y, clip255((64 * corner + filterAvs(in, x, y, 2, 2) + 64) >> 7));
                continue;
            }
            const int gain = avs::kGain[dx] + avs::kGain[dy], half = gain > 0 ? 1 << (gain - 1) : 0;
            out.put(x, y, clip255((filterAvs(in, x, y, dx, dy) + half) >> gain));
        }
}

inline void interpolateAvsChroma(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep, int dx, int dy,
                                 VekiSize size) {
    const Block<Vek8u> in(pSrc, srcStep);
    const MutableBlock<Vek8u> out(pDst, dstStep);
    const int right = dx != 0, below = dy != 0;
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            const int upper = (8 - dx) * in(x, y) + dx * in(x + right, y);
            const int lower = (8 - dx) * in(x, y + below) + dx * in(x + right, y + below);
            out.put(x, y, static_cast<Vek8u>(((8 - dy) * upper + dy * lower + 32) >> 6));
        }
}

}  // namespace plain
}  // namespace vekvc

#endif
