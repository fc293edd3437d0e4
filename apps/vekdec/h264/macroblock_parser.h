// The slice data and macroblock layers (H.264 7.3.4, 7.3.5): from the bits of a slice to parsed macroblocks, with their
// motion and coefficients.
#pragma once

#include <functional>

#include "h264/cabac_syntax.h"
#include "h264/cavlc_syntax.h"
#include "h264/parsed_macroblock.h"

namespace vekdec::h264 {

// `Syntax` reads the syntax elements: CavlcSyntax or CabacSyntax.
template <typename Syntax>
class MacroblockParser {
  public:
    // Parses the slice data at `bits` into `parsed`, row by row. At the end of every macroblock row and of the slice
    // `rowIsParsed` takes what is there and clears it; it is told the address before which all of the slice's
    // macroblocks are parsed, or -1 where slice groups take them out of their order, and returns false to stop.
    // Throws BadSyntax; abandon() then ends the macroblock that is not whole.
    void parse(BitReader& bits, const SliceContext& context, ParsedRow& parsed,
               const std::function<bool(int)>& rowIsParsed);
    int abandon();  // returns its address

  private:
    bool isB() const { return context_->slice->header.type == SliceType::B; }
    int nextAddress(int address) const;
    void start(int address, bool field);
    void place(const Picture& picture, bool field);
    void parseMacroblock();
    void setQp(Macroblock& mb) const;

    void parseIntra(unsigned mbType);
    void parsePcm();
    void predictSkipped();
    void parseInter(unsigned mbType);
    void parseWhole(std::uint8_t lists);
    void parsePartitions(Partitioning partitioning, const std::uint8_t* lists);
    void parseSubMacroblocks(bool refsAreZero);
    void parsePatternAndResidual(bool transform8x8Allowed);
    int parseRefIdx(int list, int x, int y, int w, int h);
    MotionVector parseVector(int list, int x, int y, int w, int h, MotionVector predicted);
    void predictDirect();
    void storeMotion();
    void finishMacroblock();
    template <typename Coeff>
    void parseCoefficients(std::vector<Coeff>& coeffs);

    Syntax syntax_;
    const SliceContext* context_ = nullptr;
    ParsedRow* parsed_ = nullptr;
    ParsedMacroblock current_;
    Neighbours neighbours_;
    MotionCache motion_;
    bool inMacroblock_ = false;  // one is begun and not yet whole
    int qp_ = 0;                 // QPY of the macroblock before
    int qpBdOffsetY_ = 0;
    std::int8_t chromaQps_[2][52 + 36];  // QPc of Cb and Cr by QPY + QpBdOffsetY
    bool wide_ = false;                  // samples of 16 bits
    int planes_ = 1, mbWidth_[3] = {}, mbHeight_[3] = {};
    int unit_ = -1, column_ = 0, row_ = 0;  // the last macroblock (pair) and its place
};

}  // namespace vekdec::h264
