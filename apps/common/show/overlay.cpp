#include "show/overlay.h"

#include <algorithm>
#include <cmath>

#include "show/text.h"

namespace vekapp {
namespace {

constexpr Colour kForward{90, 255, 90}, kBackward{255, 120, 255};

void blend(Image& image, int x, int y, Colour c, int percent) {
    if (x < 0 || y < 0 || x >= image.width || y >= image.height) return;
    std::uint8_t* p = image.at(x, y);
    const int target[3] = {c.r, c.g, c.b};
    for (int i = 0; i < 3; ++i) p[i] = static_cast<std::uint8_t>((p[i] * (100 - percent) + target[i] * percent) / 100);
}

void line(Image& image, int x0, int y0, int x1, int y1, Colour c) {
    // A damaged stream may point anywhere.
    const int most = 4 * std::max(image.width, image.height);
    x1 = std::clamp(x1, x0 - most, x0 + most);
    y1 = std::clamp(y1, y0 - most, y0 + most);
    const int steps = std::max({std::abs(x1 - x0), std::abs(y1 - y0), 1});
    for (int i = 0; i <= steps; ++i) blend(image, x0 + (x1 - x0) * i / steps, y0 + (y1 - y0) * i / steps, c, 85);
}

// Blue for a fine quantizer over green to red for a coarse one.
Colour colourOfQp(int qp, int finest, int coarsest) {
    const double t = std::clamp(static_cast<double>(qp - finest) / std::max(coarsest - finest, 1), 0.0, 1.0);
    return {static_cast<int>(255 * std::clamp(2 * t - 0.6, 0.0, 1.0)),
            static_cast<int>(255 * (1 - std::abs(2 * t - 1))),
            static_cast<int>(255 * std::clamp(1.2 - 2 * t, 0.0, 1.0))};
}

}  // namespace

void drawOverlay(Image& image, const BlockMap& map, Overlay overlay) {
    if (overlay == Overlay::Vectors) {
        for (const BlockVector& v : map.vectors)
            line(image, v.x, v.y, v.x + v.dx, v.y + v.dy, v.backward ? kBackward : kForward);
        return;
    }
    for (const Block& block : map.blocks) {
        const Colour c = overlay == Overlay::Qp ? colourOfQp(block.qp, map.finestQp, map.coarsestQp)
                                                : map.kinds[static_cast<std::size_t>(block.kind)].colour;
        for (int row = 0; row < block.height; ++row)
            for (int column = 0; column < block.width; ++column)
                blend(image, block.x + column, block.y + row * block.rowDistance, c, row == 0 || column == 0 ? 70 : 38);
    }
}

void Legend::add(const BlockMap& map) {
    kinds_ = map.kinds;
    finestQp_ = map.finestQp;
    coarsestQp_ = map.coarsestQp;
    for (const Block& block : map.blocks) drawn_.insert(block.kind);
}

Image Legend::strip(int width) const {
    constexpr int kMargin = 6, kSquare = 9, kLine = 16;
    struct Entry {
        std::string text;
        Colour colour;
    };
    std::vector<Entry> entries;
    if (overlay_ == Overlay::Vectors) {
        entries = {{"forward", kForward}, {"backward or second list", kBackward}};
    } else if (overlay_ == Overlay::Qp) {
        for (int i = 0; i <= 4; ++i) {
            const int qp = finestQp_ + (coarsestQp_ - finestQp_) * i / 4;
            entries.push_back({"qp " + std::to_string(qp), colourOfQp(qp, finestQp_, coarsestQp_)});
        }
    } else {
        for (const int kind : drawn_) {
            const BlockKind& k = kinds_[static_cast<std::size_t>(kind)];
            entries.push_back({k.name, k.colour});
        }
    }
    // Entries follow one another, in as many lines as they need.
    const auto widthOf = [](const Entry& e) { return kSquare + 4 + textWidth(e.text) + 12; };
    int lines = 1, x = kMargin;
    for (const Entry& e : entries) {
        if (x > kMargin && x + widthOf(e) > width) {
            ++lines;
            x = kMargin;
        }
        x += widthOf(e);
    }
    Image strip(width, 2 * kMargin + lines * kLine - (kLine - kSquare), {32, 32, 32});
    x = kMargin;
    int y = kMargin;
    for (const Entry& e : entries) {
        if (x > kMargin && x + widthOf(e) > width) {
            x = kMargin;
            y += kLine;
        }
        paste(strip, Image(kSquare, kSquare, e.colour), x, y);
        drawText(strip, e.text, x + kSquare + 4, y + 1, {230, 230, 230});
        x += widthOf(e);
    }
    return strip;
}

}  // namespace vekapp
