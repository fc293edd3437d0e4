// Overlapped block motion compensation (H.263 Annex F, ISO/IEC 14496-2 7.6.6).
#ifndef VEKVC_MPEG4_OBMC_PLAIN_H
#define VEKVC_MPEG4_OBMC_PLAIN_H

#include "common/predict_plain.h"

namespace vekvc {

namespace mpeg4 {

// The five predictions of a block: where each vector points for the block's first sample.
struct Overlapped {
    Reference current, above, below, left, right;
    int rounding;
};

// Weights of the prediction by the current vector, and by the one above or below; those by the one to the left or right
// make up the rest of 8.
inline constexpr Vek8u kWeightCurrent[8][8] = {
    {4, 5, 5, 5, 5, 5, 5, 4}, {5, 5, 5, 5, 5, 5, 5, 5}, {5, 5, 6, 6, 6, 6, 5, 5}, {5, 5, 6, 6, 6, 6, 5, 5},
    {5, 5, 6, 6, 6, 6, 5, 5}, {5, 5, 6, 6, 6, 6, 5, 5}, {5, 5, 5, 5, 5, 5, 5, 5}, {4, 5, 5, 5, 5, 5, 5, 4},
};
inline constexpr Vek8u kWeightAboveBelow[8][8] = {
    {2, 2, 2, 2, 2, 2, 2, 2}, {1, 1, 2, 2, 2, 2, 1, 1}, {1, 1, 1, 1, 1, 1, 1, 1}, {1, 1, 1, 1, 1, 1, 1, 1},
    {1, 1, 1, 1, 1, 1, 1, 1}, {1, 1, 1, 1, 1, 1, 1, 1}, {1, 1, 2, 2, 2, 2, 1, 1}, {2, 2, 2, 2, 2, 2, 2, 2},
};

}  // namespace mpeg4

namespace plain {

inline void overlap8x8(const mpeg4::Overlapped& o, Vek8u* pDst, std::ptrdiff_t dstStep) {
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) {
            const int q = samplePosition(o.current, o.rounding, x, y);
            const int r = samplePosition(y < 4 ? o.above : o.below, o.rounding, x, y);
            const int s = samplePosition(x < 4 ? o.left : o.right, o.rounding, x, y);
            const int h0 = mpeg4::kWeightCurrent[y][x], h1 = mpeg4::kWeightAboveBelow[y][x], h2 = 8 - h0 - h1;
            pDst[y * dstStep + x] = static_cast<Vek8u>((q * h0 + r * h1 + s * h2 + 4) >> 3);
        }
}

}  // namespace plain
}  // namespace vekvc

#endif
