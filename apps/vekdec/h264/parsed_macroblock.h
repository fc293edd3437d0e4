// What parsing hands to reconstruction: the macroblocks of a row, and their coefficients one behind the other.
#pragma once

#include <cstddef>
#include <vector>

#include "h264/residual.h"
#include "h264/slice_context.h"

namespace vekdec::h264 {

struct ParsedMacroblock : CurrentMacroblock {
    unsigned intraEdges = 0;  // of an intra macroblock: the library's edge flags
    std::size_t coeffs = 0;   // where its coefficients begin, or the samples of an I_PCM macroblock, plane by plane
    Vek32u coded = 0, codedChroma = 0;
};

// Macroblocks are parsed a row ahead of their reconstruction: the code of both would not fit the processor's
// instruction cache together. Buffers are as large as any row needs, for good.
struct ParsedRow {
    std::vector<ParsedMacroblock> macroblocks;
    std::vector<Vek16s> coeffs16;  // for samples of 8 bits
    std::vector<Vek32s> coeffs32;  // for wider ones
    std::size_t coeffsEnd = 0;

    void reserve(std::size_t most, bool wide) {
        clear();
        macroblocks.reserve(most);
        const std::size_t coeffs = most * Residual<Vek16s>::kMost;
        if (wide && coeffs32.size() < coeffs) coeffs32.resize(coeffs);
        if (!wide && coeffs16.size() < coeffs) coeffs16.resize(coeffs);
    }
    void clear() {
        macroblocks.clear();
        coeffsEnd = 0;
    }
};

}  // namespace vekdec::h264
