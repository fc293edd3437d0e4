// What the parts of the slice data and macroblock layers share: one slice being decoded.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "h264/macroblock_layer.h"
#include "h264/motion_vector_prediction.h"
#include "h264/reconstruction.h"

namespace vekdec::h264 {

// The slice data being decoded. Buffers are as large as any macroblock needs, for good.
struct SliceDecoder::State {
    CavlcTables tables;
    LevelScales scales;
    SliceContext context;
    CurrentMacroblock current;
    Neighbours neighbours;
    MotionCache motion;
    // Macroblocks are parsed a row ahead of their reconstruction: the code of both would not fit the processor's
    // instruction cache together.
    struct Parsed {
        CurrentMacroblock macroblock;
        unsigned intraEdges = 0;
        std::size_t coeffs = 0;  // where its coefficients begin, one macroblock's behind the other's
        Vek32u coded = 0, codedChroma = 0;
    };
    std::vector<Parsed> parsed;
    std::size_t mostParsed = 0;
    Parsed item;                   // of the current macroblock
    std::size_t coeffsParsed = 0;  // their end
    std::vector<Vek16s> coeffs16;  // for samples of 8 bits
    std::vector<Vek32s> coeffs32;  // for wider ones
    BitReader* bits = nullptr;
    bool inMacroblock = false;  // one is begun and not yet whole
    int qp = 0;                 // QPY of the macroblock before
    int qpBdOffsetY = 0, qpBdOffsetC = 0;
    std::int8_t chromaQps[2][52 + 36];  // QPc of Cb and Cr by QPY + QpBdOffsetY
    bool wide = false;                  // samples of 16 bits
    int planes = 1, mbWidth[3] = {}, mbHeight[3] = {};

    void decodeSlice(BitReader& reader, const Slice& slice, const std::function<void(int)>& reached);
    void reconstructParsed();

  private:
    bool isB() const { return context.slice->header.type == SliceType::B; }
    int nextAddress(int address) const;
    void start(int address, bool field);
    void decodeSkipped(int address, bool field);
    void decodeMacroblock(int address, bool field);
    void setQp(Macroblock& mb) const;

    void parseIntra(unsigned mbType);
    void parsePcm();
    void parseInter(unsigned mbType);
    void parsePartitions(Partitioning partitioning, const std::uint8_t* lists);
    void parseSubMacroblocks(bool refsAreZero);
    void parsePatternAndResidual(bool transform8x8Allowed);
    int parseRefIdx(std::size_t list);
    MotionVector parseMvd(MotionVector predicted);
    void predictDirect();
    void storeMotion();
    void finishMacroblock();
    template <typename Sample, typename Coeff>
    void reconstructOne(const Parsed& p, std::vector<Coeff>& coeffs);
    template <typename Coeff>
    void parseCoefficients(std::vector<Coeff>& coeffs);

    int unit_ = -1, column_ = 0, row_ = 0;  // the last macroblock (pair) and its place
};

}  // namespace vekdec::h264
