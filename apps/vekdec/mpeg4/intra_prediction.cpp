#include "mpeg4/intra_prediction.h"

#include <cstdlib>

namespace vekdec::mpeg4 {

IntraPredictor intraPredictor(h263::IntraStore& store, int mbX, int mbY, int k, const IntraNeighbours& beside,
                              int quantizer) {
    static constexpr h263::IntraValues kNone = {{1024}, {1024}};
    struct Place {
        const h263::IntraValues* values;
        int quantizer;
    };
    const auto own = [&](int block) { return Place{&store.at(mbX, mbY, block), quantizer}; };
    const auto in = [&](const IntraNeighbours::Macroblock& mb, int x, int y, int block) {
        return mb.usable ? Place{&store.at(x, y, block), mb.quantizer} : Place{&kNone, quantizer};
    };
    const auto left = [&](int block) { return in(beside.left, mbX - 1, mbY, block); };
    const auto above = [&](int block) { return in(beside.above, mbX, mbY - 1, block); };
    const auto aboveLeft = [&](int block) { return in(beside.aboveLeft, mbX - 1, mbY - 1, block); };
    // Left, above left and above of the block (Figure 7-5).
    Place a, b, c;
    switch (k) {
        case 0:
            a = left(1), b = aboveLeft(3), c = above(2);
            break;
        case 1:
            a = own(0), b = above(2), c = above(3);
            break;
        case 2:
            a = left(3), b = left(1), c = own(0);
            break;
        case 3:
            a = own(2), b = own(0), c = own(1);
            break;
        default:
            a = left(k), b = aboveLeft(k), c = above(k);
            break;
    }
    const int dcA = a.values->column[0], dcB = b.values->column[0], dcC = c.values->column[0];
    if (std::abs(dcA - dcB) < std::abs(dcB - dcC)) return {c.values->row, c.quantizer, true};
    return {a.values->column, a.quantizer, false};
}

}  // namespace vekdec::mpeg4
