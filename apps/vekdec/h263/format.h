// H.263 for the list of formats.
#pragma once

#include "decoder.h"

namespace vekdec::h263 {

Format format();

}  // namespace vekdec::h263
