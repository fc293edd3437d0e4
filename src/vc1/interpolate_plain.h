// VC-1 sub-pixel interpolation (SMPTE 421M 8.3.6.5).
#ifndef VEKVC_VC1_INTERPOLATE_PLAIN_H
#define VEKVC_VC1_INTERPOLATE_PLAIN_H

#include <algorithm>

#include "core/arith.h"
#include "core/memory.h"

namespace vekvc::vc1 {

// One block to be interpolated. `size` is the caller's, in samples (interleaved chroma: in pairs across).
struct Interpolation {
    const Vek8u* src;
    std::ptrdiff_t srcStep;
    Vek8u* dst;
    std::ptrdiff_t dstStep;
    int dx, dy, RND;
    VekiSize size;
};

// What of a block the kernels write: they come in the shapes that a decoder needs, and stay inside the block.
constexpr VekiSize cutTo(VekiSize shape, VekiSize block) {
    return {std::min(shape.width, block.width), std::min(shape.height, block.height)};
}
constexpr VekiSize bicubicSize(VekiSize block) {
    const int shape = (block.width >> 4) + (block.height >> 4);
    return cutTo({shape <= 0 ? 8 : 16, shape <= 1 ? 8 : 16}, block);
}
constexpr VekiSize bilinearSize(VekiSize block) {
    if (block.width == 8) return {8, block.height == 8 ? 8 : std::min(4, block.height)};
    if (block.width == 16) return {16, std::min(16, block.height)};
    return cutTo({4, 4}, block);
}
constexpr VekiSize bilinearPairsSize(VekiSize block) {
    return block.width == 8 ? bilinearSize(block) : cutTo({4, 4}, block);
}
template <int channels>
constexpr VekiSize bilinearSizeOf(VekiSize block) {
    return channels == 2 ? bilinearPairsSize(block) : bilinearSize(block);
}

// The bicubic filters by fraction (8.3.6.5.2): the taps for the samples at -1, 0, 1 and 2, and the bits of their sum.
struct Taps {
    int at[4];
    int shift;
};
inline constexpr Taps kBicubic[4] = {
    {{0, 64, 0, 0}, 6}, {{-4, 53, 18, -3}, 6}, {{-1, 9, 9, -1}, 4}, {{-3, 18, 53, -4}, 6}};

}  // namespace vekvc::vc1

namespace vekvc::plain {

using vc1::Interpolation;

inline void interpolateBicubic(const Interpolation& p) {
    const vc1::Taps &horizontal = vc1::kBicubic[p.dx], &vertical = vc1::kBicubic[p.dy];
    const auto sample = [&](std::ptrdiff_t x, std::ptrdiff_t y) -> int { return p.src[y * p.srcStep + x]; };
    const auto sum = [](const vc1::Taps& taps, auto at) {
        return taps.at[0] * at(-1) + taps.at[1] * at(0) + taps.at[2] * at(1) + taps.at[3] * at(2);
    };
    const auto rounded = [](int s, int rounding, int shift) { return (s + (1 << (shift - 1)) + rounding) >> shift; };
    const auto down = [&](int x, int y, int shift) {
        return rounded(sum(vertical, [&](int i) { return sample(x, y + i); }), p.RND - 1, shift);
    };
    const VekiSize size = vc1::bicubicSize(p.size);
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            int value = 0;
            if (p.dx == 0 && p.dy == 0) {
                value = sample(x, y);
            } else if (p.dx == 0) {
                value = down(x, y, vertical.shift);
            } else if (p.dy == 0) {
                value = rounded(sum(horizontal, [&](int i) { return sample(x + i, y); }), -p.RND, horizontal.shift);
            } else {
                const int firstShift = horizontal.shift + vertical.shift - 7;
                value = rounded(sum(horizontal, [&](int i) { return down(x + i, y, firstShift); }), -p.RND, 7);
            }
            p.dst[y * p.dstStep + x] = clip255(value);
        }
}

// The horizontal neighbour lies `channels` bytes on.
template <int channels>
void interpolateBilinear(const Interpolation& p) {
    const std::ptrdiff_t right = p.dx != 0 ? channels : 0, below = p.dy != 0 ? p.srcStep : 0;  // 0: not to be read
    const VekiSize size = vc1::bilinearSizeOf<channels>(p.size);
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width * channels; ++x) {
            const Vek8u* s = p.src + y * p.srcStep + x;
            const int A = s[0], B = s[right], C = s[below], D = s[below + right];
            const int sum =
                (4 - p.dx) * (4 - p.dy) * A + p.dx * (4 - p.dy) * B + (4 - p.dx) * p.dy * C + p.dx * p.dy * D;
            p.dst[y * p.dstStep + x] = clip255((sum + 8 - p.RND) >> 4);
        }
}

}  // namespace vekvc::plain

#endif
