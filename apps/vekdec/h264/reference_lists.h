// Reference picture lists (H.264 8.2.4).
#pragma once

#include "h264/slice.h"

namespace vekdec::h264 {

// RefPicList0 and RefPicList1 of a slice, initialised and modified, out of the buffer's pictures (the current frame's
// first field among them). Entries that the stream never sent stay null.
void makeReferenceLists(const std::vector<std::shared_ptr<Picture>>& pictures, Slice& slice);

}  // namespace vekdec::h264
