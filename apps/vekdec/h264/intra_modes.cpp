#include "h264/intra_modes.h"

#include <algorithm>

namespace vekdec::h264 {
namespace {

constexpr int kDc = 2;

// intraMxMPredModeN; -1 stands for dcPredModePredictedFlag.
int neighbourMode(const Macroblock* mb, int raster, bool constrainedIntraPred) {
    if (mb == nullptr || (constrainedIntraPred && !mb->intra())) return -1;
    return mb->type == MbType::I4x4 || mb->type == MbType::I8x8 ? mb->predMode4x4[raster] : kDc;
}

}  // namespace

int predictIntraMode(const Neighbours& n, bool constrainedIntraPred, const Macroblock& mb, int raster) {
    const int x = raster & 3, y = raster >> 2;
    const std::uint8_t entry = n.rows->luma[y];
    const int a =
        x > 0 ? mb.predMode4x4[raster - 1] : neighbourMode(n.leftOf(entry), (entry & 3) * 4 + 3, constrainedIntraPred);
    const int b = y > 0 ? mb.predMode4x4[raster - 4] : neighbourMode(n.above, 12 + x, constrainedIntraPred);
    return a < 0 || b < 0 ? kDc : std::min(a, b);
}

unsigned intraEdgeFlags(const Neighbours& n, bool constrainedIntraPred, bool field) {
    const auto barred = [&](const Macroblock* mb) { return mb == nullptr || (constrainedIntraPred && !mb->intra()); };
    bool upper = barred(n.left[0]), lower = barred(n.left[1]);
    if (n.leftMixed && !field) upper = lower = upper || lower;  // rows of both field macroblocks by turns
    return (upper ? 1u : 0u) | (lower ? 2u : 0u) | (barred(n.above) ? 4u : 0u) | (barred(n.aboveLeft) ? 16u : 0u) |
           (barred(n.aboveRight) ? 32u : 0u);
}

}  // namespace vekdec::h264
