// Prediction by a warp, and its average over a macroblock (ISO/IEC 14496-2 7.8.6 and 7.8.7).
#ifndef VEKVC_MPEG4_WARP_PLAIN_H
#define VEKVC_MPEG4_WARP_PLAIN_H

#include "core/arith.h"
#include "core/memory.h"
#include "mpeg4/warp.h"

namespace vekvc {

namespace mpeg4 {

// A block at (x, y) of one plane, or of both chroma planes.
template <int planes>
struct WarpedBlock {
    struct Plane {
        const Vek8u* src;
        std::ptrdiff_t srcStep;
        Vek8u* dst;
        std::ptrdiff_t dstStep;
    } plane[planes];
    int x, y;
    VekiSize size;
};

}  // namespace mpeg4

namespace plain {

// The reference at (F, G), in 1/s samples; coordinates are limited to it.
inline Vek8u warpedSample(const mpeg4::WarpedPlane& plane, int roundControl, const Vek8u* src, std::ptrdiff_t step,
                          std::int64_t F, std::int64_t G) {
    const int bits = plane.accuracyBits, s = 1 << bits;
    const std::int64_t x = F >> bits, y = G >> bits;
    const int u = static_cast<int>(F & (s - 1)), v = static_cast<int>(G & (s - 1));
    const auto at = [=](std::int64_t i, std::int64_t j) -> int {
        return src[clip3(0, plane.size.height - 1, j) * step + clip3(0, plane.size.width - 1, i)];
    };
    const int sum = (s - v) * ((s - u) * at(x, y) + u * at(x + 1, y)) +
                    v * ((s - u) * at(x, y + 1) + u * at(x + 1, y + 1)) + s * s / 2 - roundControl;
    return static_cast<Vek8u>(sum >> (2 * bits));
}

// The part of the block from (left, top) on.
template <int planes>
void warpBlock(const mpeg4::WarpedPlane& warp, int roundControl, const mpeg4::WarpedBlock<planes>& b, int left, int top,
               VekiSize size) {
    for (const auto& p : b.plane)
        for (int y = top; y < top + size.height; ++y)
            for (int x = left; x < left + size.width; ++x) {
                const std::int64_t I = std::int64_t{b.x} + x, J = std::int64_t{b.y} + y;
                p.dst[y * p.dstStep + x] = warpedSample(warp, roundControl, p.src, p.srcStep,
                                                        warp.f.at(I, J) >> warp.shift, warp.g.at(I, J) >> warp.shift);
            }
}

template <int planes>
void warpBlock(const mpeg4::WarpedPlane& warp, int roundControl, const mpeg4::WarpedBlock<planes>& b) {
    warpBlock<planes>(warp, roundControl, b, 0, 0, b.size);
}

// The sums of F - s I and of G - s J over the 16x16 samples from (x, y) on.
struct DistanceSums {
    std::int64_t f, g;
};
inline DistanceSums sumDistances(const mpeg4::WarpedPlane& plane, std::int64_t x, std::int64_t y) {
    const std::int64_t s = std::int64_t{1} << plane.accuracyBits;
    std::uint64_t f = 0, g = 0;
    for (std::int64_t J = y; J < y + 16; ++J)
        for (std::int64_t I = x; I < x + 16; ++I) {
            f += static_cast<std::uint64_t>((plane.f.at(I, J) >> plane.shift) - s * I);
            g += static_cast<std::uint64_t>((plane.g.at(I, J) >> plane.shift) - s * J);
        }
    return {static_cast<std::int64_t>(f), static_cast<std::int64_t>(g)};
}

}  // namespace plain
}  // namespace vekvc

#endif
