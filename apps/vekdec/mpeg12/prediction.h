// Motion compensation (ISO 13818-2 7.6): predictions from frames and fields, straight into the picture.
#pragma once

#include "frames/reference.h"
#include "mpeg12/picture.h"
#include "plane_set.h"

namespace vekdec::mpeg12 {

// A frame, and its fields by parity (0 top, 1 bottom).
struct PictureViews {
    PictureViews() = default;
    explicit PictureViews(Picture& picture)
        : frame(picture.plane, picture.progress),
          field{{picture.plane, picture.progress, kTopField}, {picture.plane, picture.progress, kBottomField}} {}
    PlaneSet frame, field[2];
};

// What the macroblocks of a frame or field are decoded from and into.
struct PictureContext {
    const Sequence* sequence = nullptr;
    const PictureHeader* header = nullptr;
    const Matrices* matrices = nullptr;
    Picture* picture = nullptr;
    PictureViews current;
    PictureViews reference[2];  // forward, backward
    bool hasReference[2] = {false, false};

    bool isFrame() const { return header->structure == kFrame; }
    int parity() const { return header->structure == kBottomField ? 1 : 0; }
    const PlaneSet& target() const { return isFrame() ? current.frame : current.field[parity()]; }
};

// Frame pictures: Field (two fields of the macroblock), Frame, DualPrime. Field pictures: Field, TwoHalves (16x8),
// DualPrime. (Tables 6-17, 6-18.)
enum class MotionType { Field, Frame, TwoHalves, DualPrime };

// The vectors of a macroblock: [first, second][forward, backward].
struct Vectors {
    MotionVector mv[2][2];
    int fieldSelect[2][2] = {};  // parity of the reference field
    int dmvector[2] = {};        // dual prime
};

// Predicts the macroblock at column x and row y (in macroblocks of the frame or field) from the directions that it
// uses.
void predictMacroblock(const PictureContext& context, int x, int y, MotionType motion, const Vectors& vectors,
                       const bool (&uses)[2]);

}  // namespace vekdec::mpeg12
