// The deblocking filter (H.264 8.7): boundary strengths here, samples in the library.
#pragma once

#include "h264/parameter_sets.h"
#include "h264/picture.h"

namespace vekdec::h264 {

// Filters the macroblock rows (of MBAFF frames: rows of pairs) from firstRow to before endRow of the frame or field.
// The rows above are filtered; those below may be unfiltered still, but intra prediction no longer needs the rows'
// samples.
void deblockRows(Picture& picture, int structure, const SequenceParameterSet& sps, int firstRow, int endRow);

}  // namespace vekdec::h264
