// The loop filter (GB/T 20090.2 clause 9).
#pragma once

#include "avs/picture.h"

namespace vekdec::avs {

// Filters a frame or field that is decoded. What is lost, and the edges to it, stay as they are.
void filterRow(const PictureContext& context, int y);

}  // namespace vekdec::avs
