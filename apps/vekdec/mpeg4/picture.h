// A decoded VOP: its samples, and what later VOPs, overlays and concealment ask of its macroblocks.
#pragma once

#include <vector>

#include "h263/vectors.h"
#include "mpeg4/headers.h"
#include "row_progress.h"

namespace vekdec::mpeg4 {

using h263::MotionVector;

enum class MbKind : std::uint8_t {
    Lost,
    Intra,
    Inter,
    FourVectors,
    Fields,
    Global,
    Skipped,
    Direct,
    Forward,
    Backward,
    Both
};

struct Macroblock {
    MbKind kind = MbKind::Lost;
    std::uint8_t quantizer = 0;
    bool coded = true;             // false: a not-coded one of a P-VOP
    std::uint8_t fieldOf[2] = {};  // MbKind::Fields: parity of the field that the top and the bottom field take
    MotionVector fieldMv[2];       // their vectors
    MotionVector mv[4];            // forward, of the luma blocks; of Fields their mean, as neighbours see it
    MotionVector backward;         // of B-VOPs
};

struct Picture : vekapp::PictureMemory {
    explicit Picture(const vekapp::PictureFormat& format)
        : PictureMemory(format), mbs(static_cast<std::size_t>(format.width / 16 * (format.height / 16))) {}

    std::vector<Macroblock> mbs;
    Vop vop;
    std::int64_t time = 0;  // ticks
    RowProgress progress;   // of samples and macroblocks
};

}  // namespace vekdec::mpeg4
