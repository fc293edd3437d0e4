// MPEG-4 Part 2 for the list of formats.
#pragma once

#include "decoder.h"

namespace vekdec::mpeg4 {

Format format();

}  // namespace vekdec::mpeg4
