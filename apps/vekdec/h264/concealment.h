// Lost macroblocks.
#pragma once

#include "h264/picture.h"

namespace vekdec::h264 {

// Fills the macroblocks of the picture (a frame or one field of it) that no slice decoded, from the same place of
// `previous`, or with mid grey where there is none. Returns how many there were.
int concealMissing(Picture& picture, int structure, const Picture* previous, int bitDepthLuma, int bitDepthChroma);

}  // namespace vekdec::h264
