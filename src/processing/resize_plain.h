// A picture of Cb Y Cr Y reduced or enlarged by a power of two, rotated, and converted. The definition.
#ifndef VEKVC_PROCESSING_RESIZE_PLAIN_H
#define VEKVC_PROCESSING_RESIZE_PLAIN_H

#include <bit>

#include "processing/convert_bgr_plain.h"

namespace vekvc {

namespace processing {

enum class Interpolation { Nearest, Linear, Smooth };

// The size is divided by `reduce` or multiplied by `enlarge`; one of them is 1.
struct Resize {
    Plane<const Vek8u> from;
    Area area;
    int reduce, enlarge;
    Interpolation interpolation;

    constexpr Area resized() const {
        return {(area.width + reduce - 1) / reduce * enlarge, (area.height + reduce - 1) / reduce * enlarge};
    }
};

// Cubic convolution (Keys, a = -1/2) at the phases of eighths, in units of 1/1024: the weights of columns -1 to 2.
inline constexpr int kCubic[8][4] = {
    {0, 1024, 0, 0},      {-49, 987, 93, -7},   {-72, 888, 232, -24}, {-75, 745, 399, -45},
    {-64, 576, 576, -64}, {-45, 399, 745, -75}, {-24, 232, 888, -72}, {-7, 93, 987, -49},
};

// The sample before place u of a picture enlarged by e, and how many eighths of the way to the next one u lies.
struct Phase {
    std::ptrdiff_t before;
    int eighths;
};
constexpr Phase phaseOf(std::ptrdiff_t u, int e) {
    const std::ptrdiff_t t = 2 * u + 1 - e, before = (t + 2 * e) / (2 * e) - 1;  // t is at least 1 - e: rounds down
    return {before, static_cast<int>(t - 2 * e * before) * 4 / e};
}

}  // namespace processing

namespace plain {

using processing::Interpolation;
using processing::Resize;

// Component sample (u, v) of the resized picture; at(x, y): those of the source.
template <class At>
int resizedSample(const Resize& r, At at, std::ptrdiff_t u, std::ptrdiff_t v) {
    const auto sample = [&](std::ptrdiff_t x, std::ptrdiff_t y) -> int {
        return at(clip3(0, r.area.width - 1, x), clip3(0, r.area.height - 1, y));
    };
    if (r.reduce > 1) {
        const int f = r.reduce;
        const auto mean = [&](std::ptrdiff_t left, std::ptrdiff_t top, int n) {  // of n x n samples
            int sum = n * n / 2;
            for (int y = 0; y < n; ++y)
                for (int x = 0; x < n; ++x) sum += sample(left + x, top + y);
            return sum >> (2 * std::countr_zero(static_cast<unsigned>(n)));
        };
        switch (r.interpolation) {
            case Interpolation::Nearest:
                return sample(f * u + f / 2, f * v + f / 2);
            case Interpolation::Linear:
                return mean(f * u + f / 2 - 1, f * v + f / 2 - 1, 2);
            default:
                return mean(f * u, f * v, f);
        }
    }
    if (r.enlarge == 1 || r.interpolation == Interpolation::Nearest) return sample(u / r.enlarge, v / r.enlarge);
    const auto [i, f] = processing::phaseOf(u, r.enlarge);
    const auto [j, g] = processing::phaseOf(v, r.enlarge);
    if (r.interpolation == Interpolation::Linear)
        return ((8 - f) * (8 - g) * sample(i, j) + f * (8 - g) * sample(i + 1, j) + (8 - f) * g * sample(i, j + 1) +
                f * g * sample(i + 1, j + 1) + 32) >>
               6;
    int sum = 8192;
    for (int y = 0; y < 4; ++y) {
        int row = 32;
        for (int x = 0; x < 4; ++x) row += processing::kCubic[f][x] * sample(i - 1 + x, j - 1 + y);
        sum += processing::kCubic[g][y] * (row >> 6);
    }
    return clip255(sum >> 14);
}

// A pixel has the chroma of its group.
inline Ycc resizedPixel(const Resize& r, std::ptrdiff_t u, std::ptrdiff_t v) {
    const auto luma = [&](std::ptrdiff_t x, std::ptrdiff_t y) { return r.from(2 * x + 1, y); };
    const auto cb = [&](std::ptrdiff_t x, std::ptrdiff_t y) { return r.from(4 * (x >> 1), y); };
    const auto cr = [&](std::ptrdiff_t x, std::ptrdiff_t y) { return r.from(4 * (x >> 1) + 2, y); };
    return {resizedSample(r, luma, u, v), resizedSample(r, cb, u, v), resizedSample(r, cr, u, v)};
}

// The rotated picture's pixel.
inline Ycc rotatedPixel(const Resize& r, int rotation, std::ptrdiff_t x, std::ptrdiff_t y) {
    const auto p = processing::beforeRotation(x, y, r.resized(), rotation);
    return resizedPixel(r, p.x, p.y);
}

inline void resizeToCbYCr(const Resize& r, int rotation, processing::Plane<Vek8u> to) {
    const processing::Area area = processing::rotated(r.resized(), rotation);
    for (std::ptrdiff_t y = 0; y < area.height; ++y)
        for (std::ptrdiff_t x = 0; x < area.width; x += 2) {
            const Ycc a = rotatedPixel(r, rotation, x, y);
            const Ycc b = rotatedPixel(r, rotation, std::min(x + 1, area.width - 1), y);
            Vek8u* group = to.row(y) + 2 * x;
            group[0] = static_cast<Vek8u>((a.cb + b.cb + 1) >> 1);
            group[1] = static_cast<Vek8u>(a.y);
            group[2] = static_cast<Vek8u>((a.cr + b.cr + 1) >> 1);
            group[3] = static_cast<Vek8u>(b.y);
        }
}

inline void resizeToBgr565(const Resize& r, int rotation, const ToBgr& matrix, processing::Plane<Vek8u> to) {
    const processing::Area area = processing::rotated(r.resized(), rotation);
    for (std::ptrdiff_t y = 0; y < area.height; ++y)
        for (std::ptrdiff_t x = 0; x < area.width; ++x)
            Bgr565{}.put(to.row(y), x, toBgr(rotatedPixel(r, rotation, x, y), matrix));
}

}  // namespace plain
}  // namespace vekvc

#endif
