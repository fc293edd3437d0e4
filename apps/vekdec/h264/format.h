// H.264 for the list of formats.
#pragma once

#include "h264/stream_decoder.h"

namespace vekdec::h264 {

Format format();

}  // namespace vekdec::h264
