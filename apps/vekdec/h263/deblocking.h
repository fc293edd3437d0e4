// The deblocking filter of H.263 Annex J.
#pragma once

#include "h263/picture.h"

namespace vekdec::h263 {

// Filters the whole picture once all of it is reconstructed.
void filterPicture(Picture& picture);

}  // namespace vekdec::h263
