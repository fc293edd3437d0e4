// AVS for the list of formats.
#pragma once

#include "decoder.h"

namespace vekdec::avs {

Format format();

}  // namespace vekdec::avs
