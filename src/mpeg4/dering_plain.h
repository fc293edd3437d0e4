// The deringing post-filter of ISO/IEC 14496-2 Annex F.3.2.
#ifndef VEKVC_MPEG4_DERING_PLAIN_H
#define VEKVC_MPEG4_DERING_PLAIN_H

#include <algorithm>

#include "core/arith.h"
#include "core/memory.h"

namespace vekvc {

namespace mpeg4 {

// What decides on the filtering of an 8x8 block.
struct Contrast {
    int threshold, range;

    constexpr Contrast(int least, int most) : threshold((most + least + 1) >> 1), range(most - least) {}
    Contrast() = default;
};

// Below it a block or macroblock is copied.
inline constexpr int kLeastRange = 16;

// The thresholds of a macroblock's blocks: flat ones beside a strong one take over its threshold. The largest range is
// returned.
inline int shareThreshold(Contrast (&blocks)[4]) {
    const Contrast strongest =
        *std::max_element(blocks, blocks + 4, [](const Contrast& a, const Contrast& b) { return a.range < b.range; });
    for (Contrast& block : blocks)
        if (block.range < 32 && strongest.range >= 64) block.threshold = strongest.threshold;
    return strongest.range;
}

}  // namespace mpeg4

namespace plain {

inline mpeg4::Contrast contrast8x8(const Vek8u* src, std::ptrdiff_t step) {
    int least = 255, most = 0;
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) {
            least = std::min<int>(least, src[y * step + x]);
            most = std::max<int>(most, src[y * step + x]);
        }
    return {least, most};
}

// A block of 8x8 samples: smoothed where the nine around a sample lie on one side of the threshold.
inline void dering8x8(const Vek8u* src, std::ptrdiff_t srcStep, Vek8u* dst, std::ptrdiff_t dstStep, int threshold,
                      Vek32s QP) {
    constexpr int kWeight[3] = {1, 2, 1};
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) {
            int above = 0, sum = 8;
            for (int j = 0; j < 3; ++j)
                for (int i = 0; i < 3; ++i) {
                    const int sample = src[(y + j - 1) * srcStep + x + i - 1];
                    above += sample >= threshold;
                    sum += kWeight[j] * kWeight[i] * sample;
                }
            const int sample = src[y * srcStep + x];
            const bool smooth = above == 0 || above == 9;
            dst[y * dstStep + x] =
                static_cast<Vek8u>(smooth ? clip3(sample - QP / 2, sample + QP / 2, sum >> 4) : sample);
        }
}

template <int n>
void copySquare(const Vek8u* src, std::ptrdiff_t srcStep, Vek8u* dst, std::ptrdiff_t dstStep) {
    for (int y = 0; y < n; ++y)
        for (int x = 0; x < n; ++x) dst[y * dstStep + x] = src[y * srcStep + x];
}

inline void deringLuma(const Vek8u* src, std::ptrdiff_t srcStep, Vek8u* dst, std::ptrdiff_t dstStep, Vek32s QP) {
    mpeg4::Contrast blocks[4];
    for (int k = 0; k < 4; ++k) blocks[k] = contrast8x8(src + k / 2 * 8 * srcStep + k % 2 * 8, srcStep);
    if (mpeg4::shareThreshold(blocks) < mpeg4::kLeastRange) return copySquare<16>(src, srcStep, dst, dstStep);
    for (int k = 0; k < 4; ++k)
        dering8x8(src + k / 2 * 8 * srcStep + k % 2 * 8, srcStep, dst + k / 2 * 8 * dstStep + k % 2 * 8, dstStep,
                  blocks[k].threshold, QP);
}

inline void deringChroma(const Vek8u* src, std::ptrdiff_t srcStep, Vek8u* dst, std::ptrdiff_t dstStep, Vek32s QP) {
    const mpeg4::Contrast block = contrast8x8(src, srcStep);
    if (block.range < mpeg4::kLeastRange) return copySquare<8>(src, srcStep, dst, dstStep);
    dering8x8(src, srcStep, dst, dstStep, block.threshold, QP);
}

}  // namespace plain
}  // namespace vekvc

#endif
