// A decoded picture of H.261: its samples, and what overlays and concealment ask of its macroblocks.
#pragma once

#include <cstdint>
#include <vector>

#include "frames/plane.h"

namespace vekdec::h261 {

enum class MbKind : std::uint8_t { Lost, Intra, Inter, Filtered, Skipped };

struct Macroblock {
    MbKind kind = MbKind::Lost;
    std::uint8_t quantizer = 0;
    int mvX = 0, mvY = 0;  // full samples
};

struct Picture : vekapp::PictureMemory {
    explicit Picture(const vekapp::PictureFormat& format)
        : PictureMemory(format), mbs(static_cast<std::size_t>(format.width / 16 * (format.height / 16))) {}

    int widthInMbs() const { return plane[0].width / 16; }

    std::vector<Macroblock> mbs;
};

}  // namespace vekdec::h261
