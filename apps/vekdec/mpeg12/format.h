// MPEG-1 and MPEG-2 for the list of formats.
#pragma once

#include "decoder.h"

namespace vekdec::mpeg12 {

Format format();

}  // namespace vekdec::mpeg12
