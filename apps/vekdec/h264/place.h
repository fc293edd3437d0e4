// Where a macroblock lies in its frame.
#pragma once

#include "h264/picture.h"

namespace vekdec::h264 {

// The place of a macroblock's samples in a plane in which macroblocks are width x height: its first sample, and how
// many rows of the frame its rows lie apart (2 for field macroblocks).
struct Place {
    int x, y, rowDistance;
};

// A macroblock of a frame or field, or a pair of an MBAFF frame, by column and row; of a pair the bottom one if
// `bottom`. `field`: a field macroblock of an MBAFF frame.
struct MacroblockPosition {
    int structure = kFrame;
    bool mbaff = false;
    int column = 0, row = 0;
    bool bottom = false, field = false;
};

inline Place placeOf(const MacroblockPosition& p, int width, int height) {
    const int x = p.column * width;
    if (p.structure != kFrame) return {x, p.row * height * 2 + (p.structure == kBottomField), 2};
    if (!p.mbaff) return {x, p.row * height, 1};
    const int top = p.row * 2 * height;
    return {x, p.field ? top + p.bottom : top + p.bottom * height, p.field ? 2 : 1};
}

// `address` counts from 0 within the frame, or within the field that `structure` names.
inline Place placeOf(const Picture& picture, int structure, int address, int width, int height) {
    const bool mbaff = structure == kFrame && picture.mbaff;
    const int unit = mbaff ? address / 2 : address;
    const bool field = mbaff && picture.mbs[static_cast<std::size_t>(address)].field;
    return placeOf({structure, mbaff, unit % picture.widthInMbs, unit / picture.widthInMbs, address % 2 != 0, field},
                   width, height);
}

}  // namespace vekdec::h264
