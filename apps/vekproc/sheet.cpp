#include "sheet.h"

#include <algorithm>
#include <cstdlib>

#include "show/text.h"

namespace vekproc {
namespace {

constexpr std::size_t kColumns = 3;
constexpr int kCellWidth = 400, kPartWidth = 96, kPartHeight = 64, kEnlarged = 4, kGap = 6, kCaption = 14;
constexpr Colour kBackground = {32, 32, 32}, kInk = {230, 230, 230};

struct Place {
    int x = 0, y = 0;
};

int differenceOf(const Image& a, const Image& b, Place at) {
    int sum = 0;
    for (int y = at.y; y < std::min(at.y + kPartHeight, a.height); ++y)
        for (int x = at.x; x < std::min(at.x + kPartWidth, a.width); ++x)
            for (int c = 0; c < 3; ++c) sum += std::abs(a.at(x, y)[c] - b.at(x, y)[c]);
    return sum;
}

// Where the two differ most; the middle where they have not one size.
Place partToShow(const Image& source, const Image& result) {
    const int right = std::max(source.width - kPartWidth, 0), bottom = std::max(source.height - kPartHeight, 0);
    if (source.width != result.width || source.height != result.height) return {right / 2, bottom / 2};
    Place best = {right / 2, bottom / 2};
    int most = 0;
    for (int y = 0; y <= bottom; y += kPartHeight / 2)
        for (int x = 0; x <= right; x += kPartWidth / 2)
            if (const int sum = differenceOf(source, result, {x, y}); sum > most) {
                most = sum;
                best = {x, y};
            }
    return best;
}

// The part from (x, y) on, each sample a square.
Image enlarge(const Image& image, Place at) {
    Image large(kPartWidth * kEnlarged, kPartHeight * kEnlarged);
    for (int y = 0; y < large.height; ++y)
        for (int x = 0; x < large.width; ++x)
            std::copy_n(image.at(std::min(at.x + x / kEnlarged, image.width - 1),
                                 std::min(at.y + y / kEnlarged, image.height - 1)),
                        3, large.at(x, y));
    return large;
}

}  // namespace

void Sheet::add(const Picture& source, const Picture& result) {
    const Image before = imageOf(source), after = imageOf(result);
    const Place part = partToShow(before, after);
    const Place same = before.width == after.width ? part
                                                   : Place{std::max(after.width - kPartWidth, 0) / 2,
                                                           std::max(after.height - kPartHeight, 0) / 2};
    columns_.push_back(
        {shrink(before, kCellWidth), shrink(after, kCellWidth), enlarge(before, part), enlarge(after, same)});
    if (columns_.size() < 2 * kColumns) return;
    for (std::size_t i = 1; i < kColumns; ++i) columns_[i] = std::move(columns_[2 * i]);
    columns_.resize(kColumns);
    interval_ *= 2;
}

void Sheet::finish() const {
    if (columns_.empty()) return;
    const std::size_t count = std::min(columns_.size(), kColumns);
    constexpr const char* kCaptions[] = {"SOURCE", "RESULT", "SOURCE, ENLARGED", "RESULT, ENLARGED"};
    constexpr Image Column::*kRows[] = {&Column::source, &Column::result, &Column::sourcePart, &Column::resultPart};
    int width = 0, rowHeights[4] = {}, height = kGap;
    for (std::size_t i = 0; i < count; ++i)
        for (std::size_t row = 0; row < 4; ++row) {
            const Image& image = columns_[i * columns_.size() / count].*kRows[row];
            width = std::max(width, image.width);
            rowHeights[row] = std::max(rowHeights[row], image.height);
        }
    for (const int rowHeight : rowHeights) height += kCaption + rowHeight + kGap;
    Image sheet(static_cast<int>(count) * (width + kGap) + kGap, height, kBackground);
    int y = kGap;
    for (std::size_t row = 0; row < 4; ++row) {
        drawText(sheet, kCaptions[row], kGap, y + 2, kInk);
        y += kCaption;
        for (std::size_t i = 0; i < count; ++i)
            paste(sheet, columns_[i * columns_.size() / count].*kRows[row], kGap + static_cast<int>(i) * (width + kGap),
                  y);
        y += rowHeights[row] + kGap;
    }
    writePng(sheet, file_);
}

}  // namespace vekproc
