// Tables of the macroblock layer and the loop filter (GB/T 20090.2 clauses 8 and 9).
#pragma once

#include <cstdint>

namespace vekdec::avs {

// Coded blocks by cbp code: bits 0 to 3 the luma blocks in raster order, bit 4 Cb, bit 5 Cr.
extern const std::uint8_t kCodedIntra[64], kCodedInter[64];

extern const std::uint8_t kChromaQp[64];  // by luma QP

// Thresholds of the loop filter, by QP and offset.
extern const std::uint8_t kAlpha[64], kBeta[64], kClip[64];

}  // namespace vekdec::avs
