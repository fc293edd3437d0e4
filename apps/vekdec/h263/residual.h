// Residuals of inter blocks.
#pragma once

#include "vekvc.h"

namespace vekdec::h263 {

// Adds the inverse DCT of a block to its prediction. `last` is the index of its last coefficient in the zigzag scan,
// which tells what corner is filled; 63 is never wrong.
inline void addResidual(const Vek16s* block, int last, Vek8u* to, Vek32s step) {
    if (last == 0)
        vekiAddC8x8_16s8u_C1IR(static_cast<Vek16s>((block[0] + 4) >> 3), to, step);
    else if (last < 3)
        vekiDCT8x8InvAddNZ2x2_16s8u_C1IR(block, to, step);
    else if (last < 10)
        vekiDCT8x8InvAddNZ4x4_16s8u_C1IR(block, to, step);
    else
        vekiDCT8x8InvAdd_16s8u_C1IR(block, to, step);
}

}  // namespace vekdec::h263
