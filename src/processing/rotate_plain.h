// Pictures of 4:2:2 reduced to 4:2:0 and rotated. The definition.
#ifndef VEKVC_PROCESSING_ROTATE_PLAIN_H
#define VEKVC_PROCESSING_ROTATE_PLAIN_H

#include "processing/picture.h"

namespace vekvc::plain {

using processing::Area;
using processing::Plane;
using processing::Planes;

// at(x, y): the samples of the picture of the given area before the rotation.
template <class At>
void rotate(At at, Area area, int rotation, Plane<Vek8u> to) {
    const Area after = processing::rotated(area, rotation);
    for (std::ptrdiff_t y = 0; y < after.height; ++y)
        for (std::ptrdiff_t x = 0; x < after.width; ++x) {
            const auto from = processing::beforeRotation(x, y, area, rotation);
            to(x, y) = at(from.x, from.y);
        }
}

// luma(x, y), cb(i, y), cr(i, y): the samples of 4:2:2. Chroma rows are means of two; a last row without a partner
// stands for itself.
template <class Luma, class Chroma>
void rotateTo420(Luma luma, Chroma cb, Chroma cr, Area area, int rotation, const Planes<Vek8u>& to) {
    const auto mean = [=](Chroma c) {
        return [=](std::ptrdiff_t i, std::ptrdiff_t v) {
            return static_cast<Vek8u>((c(i, 2 * v) + c(i, std::min(2 * v + 1, area.height - 1)) + 1) >> 1);
        };
    };
    rotate(luma, area, rotation, to.y);
    rotate(mean(cb), area.halvedBoth(), rotation, to.cb);
    rotate(mean(cr), area.halvedBoth(), rotation, to.cr);
}

// Cb Y Cr Y, and planes.
inline void rotateTo420(Plane<const Vek8u> from, Area area, int rotation, const Planes<Vek8u>& to) {
    const auto luma = [=](std::ptrdiff_t x, std::ptrdiff_t y) { return from(2 * x + 1, y); };
    const auto chroma = [=](int first) {
        return [=](std::ptrdiff_t i, std::ptrdiff_t y) { return from(4 * i + first, y); };
    };
    rotateTo420(luma, chroma(0), chroma(2), area, rotation, to);
}
inline void rotateTo420(const Planes<const Vek8u>& from, Area area, int rotation, const Planes<Vek8u>& to) {
    rotateTo420(from.y, from.cb, from.cr, area, rotation, to);
}

}  // namespace vekvc::plain

#endif
