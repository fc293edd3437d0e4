#include "vc1/intra_prediction.h"

#include <cstdlib>

namespace vekdec::vc1 {
namespace {

// 2^18 / i, rounded (DQScale).
constexpr std::int64_t scaleOf(int i) { return (0x40000 + i / 2) / i; }

int scaled(int value, int from, int to) { return static_cast<int>((value * from * scaleOf(to) + 0x20000) >> 18); }

int acStep(const Macroblock& mb) { return 2 * mb.quant + (mb.halfStep ? 1 : 0) - 1; }

}  // namespace

void IntraPredictor::begin(const PictureContext& context) {
    context_ = &context;
    firstRow_ = 0;
    fixedBorder_ = !context.sequence->advanced() && context.header->isIntra();
    zeroBorder_ = context.sequence->overlap && context.header->pquant >= 9;
    levels_.resize(static_cast<std::size_t>(2 * 6 * context.width));
}

// The block `left` blocks to the left and `up` blocks above, each 0 or 1.
IntraPredictor::Neighbour IntraPredictor::neighbour(int mbX, int mbY, int block, int left, int up) const {
    Neighbour n;
    if (block >= 4) {
        n.block = block;
    } else {
        const int x = 2 * mbX + (block & 1) - left, y = 2 * mbY + (block >> 1) - up;
        n.block = (x & 1) | (y & 1) << 1;
        left = mbX - (x >> 1);
        up = mbY - (y >> 1);
    }
    mbX -= left;
    mbY -= up;
    if (mbX < 0 || mbY < firstRow_) return n;
    n.mb = &context_->mb(mbX, mbY);
    n.levels = &levels_[index(mbX, mbY, n.block)];
    return n;
}

bool IntraPredictor::hasNeighbour(int mbX, int mbY, int block) const {
    return neighbour(mbX, mbY, block, 1, 0).intra() || neighbour(mbX, mbY, block, 0, 1).intra();
}

IntraPredictor::Prediction IntraPredictor::predict(int mbX, int mbY, int block) const {
    const Neighbour above = neighbour(mbX, mbY, block, 0, 1), left = neighbour(mbX, mbY, block, 1, 0),
                    corner = neighbour(mbX, mbY, block, 1, 1);
    const int quant = context_->mb(mbX, mbY).quant, step = dcStep(quant);
    const auto dcOf = [&](const Neighbour& n) {
        if (n.intra()) return n.mb->quant == quant ? n.levels->dc : scaled(n.levels->dc, dcStep(n.mb->quant), step);
        return fixedBorder_ && !zeroBorder_ ? (1024 + step / 2) / step : 0;
    };
    const bool hasAbove = fixedBorder_ || above.intra(), hasLeft = fixedBorder_ || left.intra();
    Prediction p;
    p.anyNeighbour = above.intra() || left.intra();
    if (hasAbove && hasLeft) {
        const int a = dcOf(above), b = dcOf(corner), c = dcOf(left);
        p.left = std::abs(a - b) <= std::abs(b - c);
        p.dc = p.left ? c : a;
    } else if (hasAbove || hasLeft) {
        p.left = hasLeft;
        p.dc = dcOf(hasLeft ? left : above);
    }
    const Neighbour& chosen = p.left ? left : above;
    if (chosen.intra()) {
        p.source = chosen.levels;
        p.sourceMb = chosen.mb;
    }
    return p;
}

void IntraPredictor::finish(int mbX, int mbY, int block, const Prediction& prediction, bool acPrediction,
                            Coefficients& coefficients) {
    const Macroblock& mb = context_->mb(mbX, mbY);
    Vek16s* const value = coefficients.value;
    value[0] = static_cast<Vek16s>(value[0] + prediction.dc);
    coefficients.include(0);
    if (acPrediction && prediction.source != nullptr) {
        const Macroblock& from = *prediction.sourceMb;
        const Vek16s* const levels = prediction.left ? prediction.source->column : prediction.source->row;
        const int apart = prediction.left ? 8 : 1;
        for (int i = 1; i < 8; ++i) {
            int level = levels[i - 1];
            if (level == 0) continue;
            if (from.quant != mb.quant) level = scaled(level, acStep(from), acStep(mb));
            value[i * apart] = static_cast<Vek16s>(value[i * apart] + level);
            coefficients.include(i * apart);
        }
    }
    Levels& kept = levels_[index(mbX, mbY, block)];
    kept.dc = value[0];
    for (int i = 1; i < 8; ++i) {
        kept.column[i - 1] = value[8 * i];
        kept.row[i - 1] = value[i];
    }
}

}  // namespace vekdec::vc1
