// Motion vectors of progressive pictures: their differentials and predictions (SMPTE 421M 8.3.5.2, 8.3.5.3, 8.4.5).
#pragma once

#include "vc1/picture.h"

namespace vekdec::vc1 {

// MVDATA.
struct VectorData {
    int x = 0, y = 0;  // the differential, in quarter samples
    bool intra = false, coefficients = false;
};

class VectorDecoder {
  public:
    void begin(const PictureContext& context);
    void beginSlice(int firstRow) { firstRow_ = firstRow; }

    VectorData parse(WordReader& bits) const;

    // P pictures: the vector of luma block `block`, or of the whole macroblock, from its differential. Reads the bit
    // of hybrid prediction where there is one.
    MotionVector vector(WordReader& bits, int mbX, int mbY, int block, const VectorData& data) const;
    MotionVector vector(WordReader& bits, int mbX, int mbY, const VectorData& data) const {
        return vector(bits, mbX, mbY, kWhole, data);
    }
    // B pictures.
    MotionVector vectorB(int mbX, int mbY, bool backward, const VectorData& data) const;
    // Both vectors of direct mode.
    void direct(int mbX, int mbY, MotionVector& forward, MotionVector& backward) const;

  private:
    static constexpr int kWhole = 4;
    struct Neighbours {
        const Macroblock *above = nullptr, *beside = nullptr, *left = nullptr;  // A, B, C; none: outside
        int aboveBlock = 0, besideBlock = 0, leftBlock = 0;
    };
    Neighbours neighbours(int mbX, int mbY, int block) const;
    MotionVector sum(int x, int y, const VectorData& data) const;

    const PictureContext* context_ = nullptr;
    int firstRow_ = 0;
    int rangeX_ = 0, rangeY_ = 0;  // half of the number of values
    int escapeBitsX_ = 0, escapeBitsY_ = 0;
};

constexpr int median(int a, int b, int c) {
    const int least = a < b ? a : b, most = a < b ? b : a;
    return c < least ? least : c > most ? most : c;
}

}  // namespace vekdec::vc1
