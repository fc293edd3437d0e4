// A frame as it is shown: cropped planes, ready for output. The same for all standards.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vekdec {

struct FramePlane {
    const std::uint8_t* data = nullptr;
    std::ptrdiff_t stride = 0;  // bytes
    int width = 0, height = 0;  // samples
};

struct Frame {
    FramePlane plane[3];
    int bitDepth = 8;               // 8: one byte per sample, more: 16-bit little endian words
    int chromaFormatIdc = 1;        // 0 monochrome (chroma planes absent), 1 4:2:0, 2 4:2:2
    int number = 0;                 // in output order, from 0
    const void* details = nullptr;  // the standard's own picture, for overlays
};

}  // namespace vekdec
