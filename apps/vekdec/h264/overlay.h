// Macroblock types, motion vectors and QP drawn over a frame.
#pragma once

#include "image.h"

namespace vekdec::h264 {

void drawOverlay(Image& image, const Frame& frame, Overlay overlay);

}  // namespace vekdec::h264
