// H.261 for the list of formats.
#pragma once

#include "decoder.h"

namespace vekdec::h261 {

Format format();

}  // namespace vekdec::h261
