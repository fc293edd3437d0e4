// VC-1 for the list of formats.
#pragma once

#include "decoder.h"

namespace vekdec::vc1 {

Format format();

}  // namespace vekdec::vc1
