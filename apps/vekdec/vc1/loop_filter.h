// The loop filter (SMPTE 421M 8.6).
#pragma once

#include "vc1/picture.h"

namespace vekdec::vc1 {

// A row of macroblocks behind those above it, once the row below it is decoded. Frame-interlaced pictures are filtered
// with their last row.
void filterRow(const PictureContext& context, int mbY);

}  // namespace vekdec::vc1
