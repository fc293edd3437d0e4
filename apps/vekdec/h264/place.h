// Where a macroblock lies in its frame.
#pragma once

#include "h264/picture.h"

namespace vekdec::h264 {

// The place of a macroblock's samples in a plane in which macroblocks are width x height: its first sample, and how
// many rows of the frame its rows lie apart (2 for field macroblocks).
struct Place {
    int x, y, rowDistance;
};

// `address` counts from 0 within the frame, or within the field that `structure` names.
inline Place placeOf(const Picture& picture, int structure, int address, int width, int height) {
    const int w = picture.widthInMbs;
    if (structure != kFrame) return {address % w * width, address / w * height * 2 + (structure == kBottomField), 2};
    if (!picture.mbaff) return {address % w * width, address / w * height, 1};
    const int pair = address / 2;
    const int bottom = address % 2;
    const int top = pair / w * 2 * height;
    const bool field = picture.mbs[static_cast<std::size_t>(address)].field;
    return {pair % w * width, field ? top + bottom : top + bottom * height, field ? 2 : 1};
}

}  // namespace vekdec::h264
