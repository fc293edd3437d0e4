#include "h264/neighbours.h"

namespace vekdec::h264 {
namespace {

constexpr LeftRows kSameKind = {{0, 1, 2, 3}, {0, 0, 1, 2}, {0, 1}, {0, 1, 2, 3}};

// 6.4.12.2: a row of the current macroblock lies beside that row of the left pair which has the same place in the
// frame.
constexpr int besideRow(bool currentField, int bottom, int row, int height) {
    if (currentField) {  // frame pair at the left
        const int frameRow = 2 * row + bottom;
        return frameRow / height * 4 + frameRow % height / 4;
    }
    const int frameRow = row + height * bottom;
    return frameRow % 2 * 4 + frameRow / 2 / 4;
}

constexpr LeftRows mixedRows(bool currentField, int bottom) {
    LeftRows rows{};
    for (int i = 0; i < 4; ++i) {
        rows.luma[i] = static_cast<std::uint8_t>(besideRow(currentField, bottom, 4 * i, 16));
        if (i > 0) rows.lumaAbove[i] = static_cast<std::uint8_t>(besideRow(currentField, bottom, 4 * i - 1, 16));
        rows.chroma422[i] = rows.luma[i];
        if (i < 2) rows.chroma420[i] = static_cast<std::uint8_t>(besideRow(currentField, bottom, 4 * i, 8));
    }
    return rows;
}

constexpr LeftRows kMixedRows[2][2] = {{mixedRows(false, 0), mixedRows(false, 1)},
                                       {mixedRows(true, 0), mixedRows(true, 1)}};

// The macroblock, null where it is not decoded or of another slice.
const Macroblock* available(const SliceContext& context, const Macroblock* mb) {
    return mb->type != MbType::Missing && mb->slice == static_cast<std::uint16_t>(context.slice->number) ? mb : nullptr;
}
const Macroblock* availableAt(const SliceContext& context, int address) {
    return available(context, context.mbs + address);
}

}  // namespace

void findNeighboursInPairs(const SliceContext& context, int address, bool field, Neighbours& n) {
    const int pair = address / 2, width = context.widthInMbs, column = pair % width;
    const bool bottom = address % 2 != 0;
    const auto pairAt = [&](bool inside, int offset) {
        return inside && pair + offset >= 0 ? availableAt(context, 2 * (pair + offset)) : nullptr;
    };
    const Macroblock* a = pairAt(column > 0, -1);
    const Macroblock* b = pairAt(true, -width);
    const Macroblock* c = pairAt(column + 1 < width, 1 - width);
    const Macroblock* d = pairAt(column > 0, -width - 1);
    // Of a pair above: its last row of the frame or, for a top field macroblock, the last row of the top field.
    const auto lastOf = [&](const Macroblock* p) {
        return p == nullptr ? nullptr : field && !bottom && p->field ? p : p + 1;
    };
    n = {};
    n.aboveLeftRow = 3;
    n.rows = &kSameKind;
    if (a != nullptr) {
        n.leftMixed = a->field != field;
        if (n.leftMixed) {
            n.rows = &kMixedRows[field][bottom];
            n.left[0] = a;
            n.left[1] = a + 1;
        } else {
            n.left[0] = n.left[1] = a + bottom;
        }
    }
    if (!field && bottom) {
        n.above = &context.mbs[address - 1];
        if (a != nullptr) {
            n.aboveLeft = a->field ? a + 1 : a;  // the sample row 15 of the pair
            n.aboveLeftRow = a->field ? 1 : 3;
        }
    } else {
        n.above = lastOf(b);
        n.aboveRight = lastOf(c);
        n.aboveLeft = lastOf(d);
    }
}

void findNeighbours(const SliceContext& context, const CurrentMacroblock& current, Neighbours& n) {
    if (context.mbaff) return findNeighboursInPairs(context, current.address, current.mb->field, n);
    const int address = current.address, width = context.widthInMbs;
    const bool first = current.x == 0, last = current.x == 16 * (width - 1);
    n = {};
    n.aboveLeftRow = 3;
    n.rows = &kSameKind;
    n.left[0] = n.left[1] = first ? nullptr : available(context, current.mb - 1);
    if (address >= width) {
        const Macroblock* const above = current.mb - width;
        n.above = available(context, above);
        n.aboveRight = last ? nullptr : available(context, above + 1);
        n.aboveLeft = first ? nullptr : available(context, above - 1);
    }
}

PairsAround pairsAround(const SliceContext& context, int topAddress) {
    const int pair = topAddress / 2, width = context.widthInMbs;
    return {pair % width > 0 ? availableAt(context, topAddress - 2) : nullptr,
            pair >= width ? availableAt(context, topAddress - 2 * width) : nullptr};
}

bool inferFieldDecodingFlag(const SliceContext& context, int topAddress) {
    const PairsAround pairs = pairsAround(context, topAddress);
    const Macroblock* pair = pairs.left != nullptr ? pairs.left : pairs.above;
    return pair != nullptr && pair->field;
}

}  // namespace vekdec::h264
