// Intra prediction modes (H.264 8.3.1.1, 8.3.2.1) and which neighbours intra prediction may use.
#pragma once

#include "h264/neighbours.h"
#include "h264/residual.h"

namespace vekdec::h264 {

// predIntra4x4PredMode or predIntra8x8PredMode of luma block `raster`: from mb.predMode4x4 of the blocks before it.
int predictIntraMode(const Neighbours& neighbours, bool constrainedIntraPred, const Macroblock& mb, int raster);

// Sets mb.predMode4x4 of an I_NxN macroblock, whose type says which blocks it has: parseMode() makes a mode of the
// predicted one.
template <typename ParseMode>
void parseIntraModes(const Neighbours& neighbours, bool constrainedIntraPred, Macroblock& mb, ParseMode parseMode) {
    const bool is8x8 = mb.type == MbType::I8x8;
    for (int i = 0; i < 16; i += is8x8 ? 4 : 1) {
        const int raster = kBlockRaster[i];
        const auto mode =
            static_cast<std::int8_t>(parseMode(predictIntraMode(neighbours, constrainedIntraPred, mb, raster)));
        mb.predMode4x4[raster] = mode;
        if (is8x8) mb.predMode4x4[raster + 1] = mb.predMode4x4[raster + 4] = mb.predMode4x4[raster + 5] = mode;
    }
}

// The library's edge flags: set bits mark neighbours that intra prediction may not use. Bits 0 and 1 are the upper and
// lower half of the left edge; they differ only in MBAFF frames with constrained intra prediction.
unsigned intraEdgeFlags(const Neighbours& neighbours, bool constrainedIntraPred, bool field);

}  // namespace vekdec::h264
