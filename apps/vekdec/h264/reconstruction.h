// From prediction and residual to samples (H.264 8.3, 8.5): the library does it, one call for luma and one for chroma.
#pragma once

#include "h264/parsed_macroblock.h"

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

// Turns a parsed macroblock into samples: I_PCM samples are stored, inter macroblocks predicted (8.4.2), intra ones
// predicted block by block (8.3), and the residual added. `coeffs` are those of its row. Throws BadSyntax where an
// intra mode needs a missing neighbour, or a reference is missing.
template <typename Sample, typename Coeff>
void reconstruct(const SliceContext& context, const ParsedMacroblock& parsed, const LevelScales& scales,
                 const Coeff* coeffs);

}  // namespace vekdec::h264
