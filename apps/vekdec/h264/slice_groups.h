// Slice groups (H.264 8.2.2): which slice group each macroblock belongs to.
#pragma once

#include <cstdint>
#include <vector>

#include "h264/slice_header.h"

namespace vekdec::h264 {

// mbToSliceGroupMap of the picture, by macroblock address (MBAFF: by pair, address / 2 of a frame counted in pairs).
void makeSliceGroupMap(const SliceHeader& slice, std::vector<std::uint8_t>& mbToSliceGroupMap);

}  // namespace vekdec::h264
