// From prediction and residual to samples (H.264 8.3, 8.5): the library does it, one call for luma and one for chroma.
#pragma once

#include "h264/residual.h"

namespace vekdec::h264 {

// LevelScale4x4 and LevelScale8x8 (8.5.9) of the scaling lists in force.
class LevelScales {
  public:
    // Makes them anew where the lists differ from the last ones.
    void update(const ScalingLists& lists);
    const Vek16s* scale4x4(int list, int qp) const { return scale4x4_[list][qp % 6]; }
    const Vek16s* scale8x8(int list, int qp) const { return scale8x8_[list][qp % 6]; }

  private:
    bool made_ = false;
    ScalingLists lists_{};
    alignas(64) Vek16s scale4x4_[6][6][16];
    alignas(64) Vek16s scale8x8_[2][6][64];
};

// QPc of a chroma component (8.5.8): -QpBdOffsetC to 39.
int chromaQp(int qpY, int chromaQpIndexOffset, int qpBdOffsetC);

// Predicts an intra macroblock, or takes the inter prediction that stands in the picture, and adds the residual. Throws BadSyntax where an intra mode needs a missing neighbour.
template <typename Sample, typename Coeff>
void reconstruct(const SliceContext& context, const CurrentMacroblock& current, unsigned edgeFlags,
                 const LevelScales& scales, Residual<Coeff> residual);

}  // namespace vekdec::h264
