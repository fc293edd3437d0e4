// Neighbouring macroblocks and blocks of the current macroblock (H.264 6.4).
#pragma once

#include "h264/slice_context.h"

namespace vekdec::h264 {

// Which macroblock of the left pair lies beside each row of 4x4 blocks, and which row of its blocks: 4 * macroblock +
// row.
struct LeftRows {
    std::uint8_t luma[4];       // beside luma rows 0, 4, 8, 12
    std::uint8_t lumaAbove[4];  // beside luma rows 3, 7, 11 (of rows 1, 2, 3; element 0 is not used)
    std::uint8_t chroma420[2];  // beside chroma rows 0 and 4
    std::uint8_t chroma422[4];
};

struct Neighbours {
    // Null where not available: outside the picture, in another slice, or not yet decoded.
    const Macroblock* left[2];  // only in MBAFF frames two different ones: upper and lower, or top and bottom field
    const Macroblock* above;
    const Macroblock* aboveRight;
    const Macroblock* aboveLeft;
    int aboveLeftRow;  // the row of its 4x4 blocks that touches
    const LeftRows* rows;
    bool leftMixed;  // the left pair has field macroblocks and the current one has not, or the other way round

    const Macroblock* leftOf(std::uint8_t entry) const { return left[entry >> 2]; }
};

void findNeighbours(const SliceContext& context, const CurrentMacroblock& current, Neighbours& n);
// Of a macroblock of an MBAFF frame, by address and whether it is a field macroblock.
void findNeighboursInPairs(const SliceContext& context, int address, bool field, Neighbours& n);

// The top macroblocks of the pairs around, null where there is none in the slice.
struct PairsAround {
    const Macroblock *left, *above;
};
PairsAround pairsAround(const SliceContext& context, int topAddress);
// mb_field_decoding_flag of a pair that carries none: that of the left, else of the upper pair of the slice (7.4.4).
bool inferFieldDecodingFlag(const SliceContext& context, int topAddress);

}  // namespace vekdec::h264
