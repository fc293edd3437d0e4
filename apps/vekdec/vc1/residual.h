// Blocks of coefficients: run-level codes, scans, dequantization and the inverse transforms (SMPTE 421M 8.1.1, 8.3.6).
#pragma once

#include <cstdint>

#include "vc1/picture.h"
#include "vc1/tables.h"

namespace vekdec::vc1 {

// 8x8 values, and the leading columns and rows that may be other than 0.
struct Coefficients {
    alignas(32) Vek16s value[64];
    int columns, rows;
    std::uint64_t zeroLevels;  // positions of levels that are sent and 0

    void clear() {
        for (Vek16s& v : value) v = 0;
        columns = rows = 0;
        zeroLevels = 0;
    }
    void include(int position) {
        columns = columns > (position & 7) ? columns : (position & 7) + 1;
        rows = rows > (position >> 3) ? rows : (position >> 3) + 1;
    }
};

// What TTMB and TTBLK say: a transform, and which of its two halves are coded where it has two.
struct TransformCode {
    Transform type = Transform::T8x8;
    int pattern = 3;  // bit 1: first half, bit 0: second half
};
TransformCode transformCode(int symbol);  // 0 to 7

class ResidualDecoder {
  public:
    void begin(const PictureContext& context);
    // At the beginning of a picture or slice the lengths of escapes are not known.
    void beginSlice() { escapeLengthsKnown_ = false; }
    const std::uint8_t* interScan() const { return scans_[0]; }  // of 8x8 blocks
    int quantClass() const { return quantClass_; }

    // The levels of an intra block from scan index 1 on.
    void parseIntra(WordReader& bits, bool luma, const std::uint8_t* scan, Coefficients& block);
    // The DC differential.
    int parseDc(WordReader& bits, bool luma, int quant);
    void dequantizeIntra(const Macroblock& mb, Coefficients& block) const;

    // An inter block, from its sub-block patterns to its residual. `told` is the transform that the macroblock gave the
    // block, or none where the block says. Sets the macroblock's transform and corners of the block.
    void parseInter(WordReader& bits, const TransformCode* told, bool patternTold, Macroblock& mb, int block,
                    Coefficients& residual);

  private:
    struct Symbol {
        int run, level;
        bool last;
    };
    Symbol parseSymbol(WordReader& bits, const CoefficientSet& set);
    Symbol parseEscape(WordReader& bits, const CoefficientSet& set);
    void parseLevels(WordReader& bits, const CoefficientSet& set, const std::uint8_t* scan, int from, int count,
                     int offset, Coefficients& block);

    const PictureContext* context_ = nullptr;
    const CoefficientSet *intraLuma_ = nullptr, *intraChroma_ = nullptr, *inter_ = nullptr;
    const std::uint8_t* scans_[4] = {};  // by Transform
    int quantClass_ = 0;                 // of the tables of transform types
    bool escapeLengthsKnown_ = false;
    int escapeLevelLength_ = 0, escapeRunLength_ = 0;
};

}  // namespace vekdec::vc1
