// The macroblocks of a picture for overlays.
#pragma once

#include "h264/picture.h"
#include "show/blocks.h"

namespace vekdec::h264 {

// (left, top): the luma sample of the picture with which the shown frame begins.
vekapp::BlockMap blocksOf(const Picture& picture, int left, int top);

}  // namespace vekdec::h264
