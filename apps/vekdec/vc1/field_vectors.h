// Motion vectors of P fields (SMPTE 421M 10.3.4.5): a vector refers to the field of the same or of the other parity.
#pragma once

#include "vc1/picture.h"

namespace vekdec::vc1 {

// IMVDATA.
struct FieldVectorData {
    int x = 0, y = 0;      // the differential, in quarter samples
    bool unusual = false;  // of two reference fields not the one that the neighbours predict
};

class FieldVectorDecoder {
  public:
    void begin(const PictureContext& context);
    void beginSlice(int firstRow) { firstRow_ = firstRow; }

    FieldVectorData parse(WordReader& bits) const;

    static constexpr int kWhole = 4;
    // Sets the vector of luma block `block`, or of all (kWhole), and the field that it refers to.
    void decode(WordReader& bits, int mbX, int mbY, int block, const FieldVectorData& data, Macroblock& mb) const;

  private:
    struct Neighbour {
        bool valid = false, otherField = false;
        MotionVector mv;
    };
    Neighbour neighbour(int blockX, int blockY) const;
    MotionVector scaled(MotionVector v, bool toOther) const;
    int scaledToSame(int v, int zone, int offset, int most, int range) const;

    const PictureContext* context_ = nullptr;
    int firstRow_ = 0;
    int distance_ = 0;  // REFDIST as the scale tables count it
    int rangeX_ = 0, rangeY_ = 0, bitsX_ = 0, bitsY_ = 0;
};

}  // namespace vekdec::vc1
