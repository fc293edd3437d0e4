// Motion compensation (SMPTE 421M 8.3.6.5): predictions straight into the picture.
#pragma once

#include "vc1/picture.h"

namespace vekdec::vc1 {

struct BlockPlace {
    int x = 0, y = 0;  // of the macroblock, in macroblocks
};

// The chroma vector of a macroblock from its luma vector, in quarter chroma samples, before it is rounded.
MotionVector chromaVector(MotionVector luma);
// FASTUVMC (8.3.5.4.5): toward zero to half samples.
MotionVector fastChromaVector(MotionVector chroma);

// A luma block of 16x16 or 8x8 samples with its first sample at (x, y).
void predictLuma(const PictureContext& context, const Reference& reference, int x, int y, int size, MotionVector mv,
                 const vekapp::Plane& to);
// Both chroma blocks of the macroblock with its first sample at (x, y); planes 1 and 2 of `to`.
void predictChroma(const PictureContext& context, const Reference& reference, int x, int y, MotionVector mv,
                   const vekapp::Plane* to);

// The macroblock averaged with the prediction from another reference.
void averageMacroblock(const PictureContext& context, const Reference& reference, int mbX, int mbY, MotionVector luma,
                       MotionVector chroma);

}  // namespace vekdec::vc1
