#include "overlay.h"

#include <algorithm>
#include <cmath>

#include "place.h"

namespace vekdec::h264 {
namespace {

struct Colour {
    int r, g, b;
};

void blend(Image& image, int x, int y, Colour c, int percent) {
    if (x < 0 || y < 0 || x >= image.width || y >= image.height) return;
    std::uint8_t* p = image.at(x, y);
    const int target[3] = {c.r, c.g, c.b};
    for (int i = 0; i < 3; ++i) p[i] = static_cast<std::uint8_t>((p[i] * (100 - percent) + target[i] * percent) / 100);
}

void line(Image& image, int x0, int y0, int x1, int y1, Colour c) {
    const int steps = std::max({std::abs(x1 - x0), std::abs(y1 - y0), 1});
    for (int i = 0; i <= steps; ++i) blend(image, x0 + (x1 - x0) * i / steps, y0 + (y1 - y0) * i / steps, c, 85);
}

Colour colourOfType(const Macroblock& mb) {
    switch (mb.type) {
        case MbType::I4x4:
            return {230, 60, 60};
        case MbType::I8x8:
            return {240, 130, 40};
        case MbType::I16x16:
            return {240, 210, 60};
        case MbType::IPcm:
            return {255, 255, 255};
        case MbType::Inter:
            return mb.skipped ? Colour{60, 60, 70} : mb.transform8x8 ? Colour{60, 190, 120} : Colour{60, 120, 230};
        default:
            return {255, 0, 255};
    }
}

// Blue for a fine quantizer over green to red for a coarse one.
Colour colourOfQp(int qp) {
    const double t = std::clamp(qp / 51.0, 0.0, 1.0);
    return {static_cast<int>(255 * std::clamp(2 * t - 0.6, 0.0, 1.0)),
            static_cast<int>(255 * (1 - std::abs(2 * t - 1))),
            static_cast<int>(255 * std::clamp(1.2 - 2 * t, 0.0, 1.0))};
}

}  // namespace

void drawOverlay(Image& image, const Frame& frame, Overlay overlay) {
    const Picture& picture = *static_cast<const Picture*>(frame.details);
    // Cropping: where the frame's corner lies in the picture.
    const std::ptrdiff_t corner = frame.plane[0].data - picture.plane[0].data;
    const int cropY = static_cast<int>(corner / picture.plane[0].stride),
              cropX = static_cast<int>(corner % picture.plane[0].stride) / picture.bytesPerSample;
    const int count = static_cast<int>(picture.mbs.size()), perField = count / 2;
    for (int i = 0; i < count; ++i) {
        const Macroblock& mb = picture.mbs[static_cast<std::size_t>(i)];
        const int structure = !picture.codedAsFields ? kFrame : i < perField ? kTopField : kBottomField;
        const Place at = placeOf(picture, structure, structure == kBottomField ? i - perField : i, 16, 16);
        const auto y = [&](int row) { return at.y + row * at.rowDistance - cropY; };
        const int x = at.x - cropX;
        if (overlay == Overlay::MotionVectors) {
            if (mb.type != MbType::Inter) continue;
            for (int list = 0; list < 2; ++list)
                for (int block = 0; block < 16; ++block) {
                    const int bx = block % 4, by = block / 4;
                    if (mb.refIdx[list][bx / 2 + by / 2 * 2] < 0) continue;
                    const MotionVector mv = mb.mv[list][block];
                    // One line for neighbouring blocks that move alike.
                    if ((bx > 0 && mv == mb.mv[list][block - 1]) || (by > 0 && mv == mb.mv[list][block - 4])) continue;
                    const int fromX = x + 4 * bx + 2, fromY = y(4 * by + 2);
                    line(image, fromX, fromY, fromX + mv.x / 4, fromY + mv.y / 4 * at.rowDistance,
                         list == 0 ? Colour{90, 255, 90} : Colour{255, 120, 255});
                }
            continue;
        }
        const Colour c = overlay == Overlay::Qp ? colourOfQp(mb.qp) : colourOfType(mb);
        for (int row = 0; row < 16; ++row)
            for (int column = 0; column < 16; ++column)
                blend(image, x + column, y(row), c, row == 0 || column == 0 ? 70 : 38);
    }
}

}  // namespace vekdec::h264
