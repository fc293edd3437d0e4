// The loop filter (SMPTE 421M 8.6), over a whole frame or field.
#pragma once

#include "vc1/picture.h"

namespace vekdec::vc1 {

void filterPicture(const PictureContext& context);

}  // namespace vekdec::vc1
