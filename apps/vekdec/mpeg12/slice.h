// The slice and macroblock layers (ISO 13818-2 6.2.4, 6.2.5): from bits to samples, one macroblock after the other.
#pragma once

#include <functional>

#include "mpeg12/prediction.h"
#include "mpeg12/tables.h"

namespace vekdec::mpeg12 {

class SliceDecoder {
  public:
    // All slices of a frame or field are decoded between two calls.
    void begin(const PictureContext& context);
    // Decodes the slice behind its start code from `row` on. Throws BadSyntax where it breaks off; what is decoded
    // stands. Calls reached(y) when the slice leaves the rows above y for good.
    void decode(WordReader& bits, int row, const std::function<void(int y)>& reached);

  private:
    void decodeMacroblock(int address);
    void skipMacroblock(int address);
    void resetVectors() {
        for (auto& r : pmv_)
            for (MotionVector& v : r) v = {};
    }
    void resetDc();
    void parseScale();
    void parseVectors(int direction, Macroblock& mb);
    int parseVectorDelta(int fCode);
    void predict(const Macroblock& mb);
    void decodeBlocks(unsigned flags, bool fieldDct);
    void decodeIntraBlock(int block, std::uint8_t* to, std::ptrdiff_t step);
    void decodeInterBlock(int block, std::uint8_t* to, std::ptrdiff_t step);
    void decodeDcOnly(int block, std::uint8_t* to, std::ptrdiff_t step);

    Tables tables_;
    PictureContext context_;
    WordReader* bits_ = nullptr;
    int widthInMbs_ = 0, mbCount_ = 0, blocks_ = 6;
    Macroblock* mbs_ = nullptr;  // of the frame or field
    const Vek32s* scan_ = kZigzagScan;

    // Of the slice.
    int scale_ = 0;
    Vek16s dcPredictor_[3] = {};
    MotionVector pmv_[2][2];  // first and second vector, forward and backward (7.6.3)
    const Macroblock* before_ = nullptr;

    // Of the macroblock.
    int x_ = 0, y_ = 0;  // in macroblocks
    MotionType motion_ = MotionType::Frame;
    Vectors vectors_;
    unsigned pattern_ = 0;  // bit `blocks_ - 1` is the first block
};

}  // namespace vekdec::mpeg12
