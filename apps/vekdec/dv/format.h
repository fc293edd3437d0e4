// DV and DV100 for the list of formats.
#pragma once

#include "decoder.h"

namespace vekdec::dv {

Format format();

}  // namespace vekdec::dv
