#include "frames/reference.h"

#include <algorithm>
#include <cstring>

namespace vekapp {

ReferenceBlock copyReferenceBlock(const Plane& plane, std::int64_t x, std::int64_t y, int width, int height,
                                  ReferenceScratch& scratch, int rowDistance) {
    const auto clampX = [&](std::int64_t v) { return std::clamp<std::int64_t>(v, 0, plane.width - 1); };
    // Columns before the plane's first one, inside it, and behind its last one.
    const int before = static_cast<int>(std::clamp<std::int64_t>(-x, 0, width));
    const int behind = static_cast<int>(std::clamp<std::int64_t>(x + width - plane.width, 0, width - before));
    const int inside = width - before - behind;
    std::uint8_t* to = scratch.samples;
    for (int row = 0; row < height; ++row, to += ReferenceScratch::kMostWidth) {
        const std::int64_t line = std::clamp<std::int64_t>(y + row * rowDistance, 0, plane.height - 1);
        const std::uint8_t* from = plane.data + plane.stride * static_cast<std::ptrdiff_t>(line);
        std::memset(to, from[0], static_cast<std::size_t>(before));
        std::memcpy(to + before, from + clampX(x + before), static_cast<std::size_t>(inside));
        std::memset(to + before + inside, from[plane.width - 1], static_cast<std::size_t>(behind));
    }
    return {scratch.samples, ReferenceScratch::kMostWidth};
}

}  // namespace vekapp
