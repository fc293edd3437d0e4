// Blocks of reference pictures for motion compensation: a vector may point anywhere, and samples beyond the borders
// repeat the nearest one inside.
#pragma once

#include <cstdint>

#include "frames/plane.h"

namespace vekapp {

struct ReferenceBlock {
    const std::uint8_t* data;
    std::int32_t step;  // bytes
};

// Room for the copy of one block.
struct ReferenceScratch {
    static constexpr int kMostWidth = 32, kMostHeight = 32;
    std::uint8_t samples[kMostWidth * kMostHeight];
};

// The block as a copy in `scratch`, always.
ReferenceBlock copyReferenceBlock(const Plane& plane, std::int64_t x, std::int64_t y, int width, int height,
                                  ReferenceScratch& scratch, int rowDistance);

// The block of an 8-bit plane whose first sample is (x, y), up to 32x32, of every `rowDistance`-th row: where it lies
// inside the plane that memory itself, else a copy in `scratch`.
inline ReferenceBlock referenceBlock(const Plane& plane, std::int64_t x, std::int64_t y, int width, int height,
                                     ReferenceScratch& scratch, int rowDistance = 1) {
    if (x >= 0 && y >= 0 && x + width <= plane.width && y + (height - 1) * rowDistance < plane.height) [[likely]]
        return {plane.data + plane.stride * static_cast<std::ptrdiff_t>(y) + x,
                static_cast<std::int32_t>(plane.stride) * rowDistance};
    return copyReferenceBlock(plane, x, y, width, height, scratch, rowDistance);
}

}  // namespace vekapp
