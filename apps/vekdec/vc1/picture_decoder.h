// The macroblock layer (SMPTE 421M 8.1 to 8.4): a frame or field from bits to samples, one macroblock after the other.
#pragma once

#include "vc1/field_vectors.h"
#include "vc1/intra_prediction.h"
#include "vc1/motion_vectors.h"
#include "vc1/overlap.h"
#include "vc1/prediction.h"
#include "vc1/residual.h"

namespace vekdec::vc1 {

// From a coded block pattern as it is sent, whose bit 5 is block 0, to one whose bit k is block k.
constexpr unsigned patternByBlock(unsigned sent) {
    unsigned pattern = 0;
    for (int k = 0; k < 6; ++k) pattern |= (sent >> (5 - k) & 1) << k;
    return pattern;
}

class PictureDecoder {
  public:
    // Of a frame or field: its macroblocks are lost until they are decoded.
    void begin(const PictureContext& context);
    // A row of macroblocks. Throws BadSyntax where the data break off; what is decoded stands.
    void decodeRow(WordReader& bits, int row, bool beginsSlice);
    // Overlap smoothing and the loop filter: the rows before endRow are decoded. Returns how many luma rows are final.
    int finishRows(int endRow);

  private:
    void decodeI(Macroblock& mb);
    void decodeP(Macroblock& mb);
    void decodeIntra(Macroblock& mb, bool coefficients);
    void decodeOneMv(Macroblock& mb, bool skipped);
    void decodeFourMv(Macroblock& mb, bool skipped);
    void decodeB(Macroblock& mb);
    void decodeFieldP(Macroblock& mb);

    void parseQuant(Macroblock& mb);
    void setPictureQuant(Macroblock& mb) const;
    unsigned predictedLumaFlags(unsigned pattern, Macroblock& mb) const;
    void decodeBlocks(Macroblock& mb, unsigned coded, bool acPrediction);
    void decodeIntraBlock(Macroblock& mb, int block, bool coded, bool acPrediction);
    void storeIntra(const Macroblock& mb, int block, Coefficients& coefficients);
    void parseTransform();
    void decodeInterBlock(Macroblock& mb, int block);
    vekapp::Plane blockPlane(const Macroblock& mb, int block, std::uint8_t*& to) const;

    void setVector(Macroblock& mb, MotionVector v) const;
    void setChromaOf(Macroblock& mb, unsigned blocks) const;
    void setFieldFourMvChroma(Macroblock& mb) const;
    void predict(const Macroblock& mb) const;
    void predictField(const Macroblock& mb) const;
    MotionVector roundedChroma(MotionVector chroma) const {
        return context_.sequence->fastChroma ? fastChromaVector(chroma) : chroma;
    }

    PictureContext context_;
    WordReader* bits_ = nullptr;
    ResidualDecoder residual_;
    IntraPredictor intra_;
    VectorDecoder vectors_;
    FieldVectorDecoder fieldVectors_;
    OverlapSmoother overlap_;
    int firstRow_ = 0;      // of the slice
    int smoothedRows_ = 0;  // of macroblocks
    int filteredRows_ = 0;

    // Of the macroblock.
    int x_ = 0, y_ = 0;
    std::size_t address_ = 0;
    // Of its inter blocks: the transform that TTMB or TTFRM gives.
    TransformCode transform_;
    bool transformOfAll_ = false;         // not of the first coded block only
    bool transformGivesPattern_ = false;  // for the first coded block
    bool firstCoded_ = false;
};

}  // namespace vekdec::vc1
