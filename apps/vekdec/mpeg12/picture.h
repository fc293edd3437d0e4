// A decoded frame of MPEG-1 or MPEG-2: its samples, and what overlays and concealment ask of its macroblocks.
#pragma once

#include <cstdint>
#include <vector>

#include "mpeg12/headers.h"
#include "row_progress.h"

namespace vekdec::mpeg12 {

struct MotionVector {
    int x = 0, y = 0;  // half samples
};

enum class MbKind : std::uint8_t { Lost, Intra, Forward, Backward, Both, Skipped };

struct Macroblock {
    MbKind kind = MbKind::Lost;
    std::uint8_t scale = 0;         // quantiser_scale
    bool uses[2] = {false, false};  // forward, backward
    MotionVector mv[2];             // the first vector of each direction
};

struct Picture : vekapp::PictureMemory {
    explicit Picture(const vekapp::PictureFormat& format)
        : PictureMemory(format), mbs(static_cast<std::size_t>(format.width / 16 * (format.height / 16))) {}

    // By raster; of a frame of two fields the top field's first, then the bottom field's.
    std::vector<Macroblock> mbs;
    bool codedAsFields = false;
    PictureHeader header;  // of the frame or its first field
    RowProgress progress;
};

}  // namespace vekdec::mpeg12
