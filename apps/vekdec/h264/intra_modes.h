// Intra prediction modes (H.264 8.3.1.1, 8.3.2.1) and which neighbours intra prediction may use.
#pragma once

#include "h264/neighbours.h"

namespace vekdec::h264 {

// Parses prev_intra4x4_pred_mode_flag and the like of an I_NxN macroblock, whose type says which blocks it has, into
// mb.predMode4x4.
void parseIntraModes(BitReader& bits, const Neighbours& neighbours, bool constrainedIntraPred, Macroblock& mb);

// The library's edge flags: set bits mark neighbours that intra prediction may not use. Bits 0 and 1 are the upper and
// lower half of the left edge; they differ only in MBAFF frames with constrained intra prediction.
unsigned intraEdgeFlags(const Neighbours& neighbours, bool constrainedIntraPred, bool field);

}  // namespace vekdec::h264
