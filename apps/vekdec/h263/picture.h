// A decoded picture of H.263: its samples, and what prediction, filters and overlays ask of its macroblocks.
#pragma once

#include <vector>

#include "h263/headers.h"
#include "h263/vectors.h"

namespace vekdec::h263 {

enum class MbKind : std::uint8_t { Lost, Intra, Inter, FourVectors, Skipped };

struct Macroblock {
    MbKind kind = MbKind::Lost;
    std::uint8_t quantizer = 0, chromaQuantizer = 0;
    MotionVector mv[4];  // of the luma blocks

    bool coded() const { return kind != MbKind::Lost && kind != MbKind::Skipped; }
};

struct Picture : vekapp::PictureMemory {
    explicit Picture(const vekapp::PictureFormat& format)
        : PictureMemory(format), mbs(static_cast<std::size_t>(format.width / 16 * (format.height / 16))) {}

    std::vector<Macroblock> mbs;
    PictureHeader header;
};

}  // namespace vekdec::h263
