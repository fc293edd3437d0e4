// Bit planes: one bit for each macroblock of a picture, sent in its header (SMPTE 421M 7.2, 8.7).
#pragma once

#include <vector>

#include "bits/word_reader.h"

namespace vekdec::vc1 {

struct BitPlane {
    std::vector<std::uint8_t> bit;  // by raster
    bool raw = false;               // one bit in each macroblock instead

    // Of a plane of as many columns and rows. Throws BadSyntax.
    void parse(WordReader& bits, int width, int height);
    // The bit of the macroblock, which stands at the reader's cursor where the plane is raw.
    bool at(WordReader& bits, std::size_t macroblock) const { return raw ? bits.flag() : bit[macroblock] != 0; }
};

}  // namespace vekdec::vc1
