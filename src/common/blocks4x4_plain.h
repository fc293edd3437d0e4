// One sum per 4x4 block: absolute differences and differences. The definition.
#ifndef VEKVC_COMMON_BLOCKS4X4_PLAIN_H
#define VEKVC_COMMON_BLOCKS4X4_PLAIN_H

#include "core/memory.h"

namespace vekvc::plain {

// pSums[i] = the sum of s - ref, or of its magnitudes, over the i-th 4x4 block in raster order. 16 * 255 fits 16 bits.
template <int W, int H, bool absolute, class Sum>
void sumBlocks4x4(Block<Vek8u> s, Block<Vek8u> ref, Sum* pSums) {
    for (int top = 0; top < H; top += 4)
        for (int left = 0; left < W; left += 4) {
            int sum = 0;
            for (int y = 0; y < 4; ++y)
                for (int x = 0; x < 4; ++x) {
                    const int difference = s(left + x, top + y) - ref(left + x, top + y);
                    sum += absolute && difference < 0 ? -difference : difference;
                }
            store(pSums + W / 4 * (top / 4) + left / 4, static_cast<Sum>(sum));
        }
}

// 16 sums of absolute differences of a macroblock.
inline void sadBlocks4x4(Block<Vek8u> s, Block<Vek8u> ref, Vek16u* pSad) { sumBlocks4x4<16, 16, true>(s, ref, pSad); }

// W * H / 16 sums of differences.
template <int W, int H>
void sumsDiffBlocks4x4(Block<Vek8u> s, Block<Vek8u> ref, Vek16s* pSums) {
    sumBlocks4x4<W, H, false>(s, ref, pSums);
}

}  // namespace vekvc::plain

#endif
