// The deblocking filter (H.264 8.7): boundary strengths here, samples in the library.
#pragma once

#include "parameter_sets.h"
#include "picture.h"

namespace vekdec::h264 {

// Filters a whole decoded picture: the frame, or one field of it.
void deblockPicture(Picture& picture, int structure, const SequenceParameterSet& sps);

}  // namespace vekdec::h264
