// Prediction of the DC and AC levels of intra blocks from their neighbours (SMPTE 421M 8.1.1.6 to 8.1.1.9).
#pragma once

#include <vector>

#include "vc1/residual.h"

namespace vekdec::vc1 {

// DCStepSize by MQUANT.
constexpr int dcStep(int quant) { return quant <= 2 ? 2 * quant : quant <= 4 ? 8 : quant / 2 + 6; }

class IntraPredictor {
  public:
    struct Levels {
        Vek16s dc = 0;
        Vek16s column[7] = {}, row[7] = {};  // AC levels of the first column and row
    };
    struct Prediction {
        int dc = 0;
        bool left = true;                // the direction
        const Levels* source = nullptr;  // the neighbour in that direction, if it is there
        const Macroblock* sourceMb = nullptr;
        bool anyNeighbour = false;
    };

    void begin(const PictureContext& context);
    void beginSlice(int firstRow) { firstRow_ = firstRow; }

    // Whether the block's left or upper neighbour is there and intra.
    bool hasNeighbour(int mbX, int mbY, int block) const;
    Prediction predict(int mbX, int mbY, int block) const;
    // Adds the prediction to the block's levels, its DC differential first, and keeps them for later blocks.
    void finish(int mbX, int mbY, int block, const Prediction& prediction, bool acPrediction, Coefficients& levels);

  private:
    struct Neighbour {
        const Macroblock* mb = nullptr;  // none: outside the picture or slice
        const Levels* levels = nullptr;
        int block = 0;
        bool intra() const { return mb != nullptr && mb->isIntra(block); }
    };
    Neighbour neighbour(int mbX, int mbY, int block, int left, int up) const;
    std::size_t index(int mbX, int mbY, int block) const {
        return static_cast<std::size_t>(((mbY & 1) * context_->width + mbX) * 6 + block);
    }

    const PictureContext* context_ = nullptr;
    int firstRow_ = 0;
    bool fixedBorder_ = false, zeroBorder_ = false;  // Simple and Main I pictures: DC levels outside the picture
    std::vector<Levels> levels_;                     // of two rows of macroblocks
};

}  // namespace vekdec::vc1
