// Motion compensation (GB/T 20090.2 clause 9): predictions, straight into the picture.
#pragma once

#include "avs/picture.h"

namespace vekdec::avs {

// Predicts the inter macroblock at column x and row y (in macroblocks of the frame or field); its references are there.
// `weights`: by number of the reference; nullptr: none.
void predictMacroblock(const PictureContext& context, int x, int y, const Macroblock& mb, const Weight* weights);

}  // namespace vekdec::avs
