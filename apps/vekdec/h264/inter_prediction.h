// Inter prediction samples (H.264 8.4.2): fractional interpolation and weighting, by the library's exports. What is
// left to do here is the border: references end at their last sample.
#pragma once

#include "h264/slice_context.h"

namespace vekdec::h264 {

// Predicts the whole macroblock into the picture from mb.mv, refIdx and its partitioning. Throws BadSyntax where a
// reference is missing.
template <typename Sample>
void predictInter(const SliceContext& context, const CurrentMacroblock& current);

}  // namespace vekdec::h264
