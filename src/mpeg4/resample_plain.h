// Spatial interpolation (H.263 Annex O) and reference picture resampling (Annex P).
#ifndef VEKVC_MPEG4_RESAMPLE_PLAIN_H
#define VEKVC_MPEG4_RESAMPLE_PLAIN_H

#include <cstdint>

#include "core/arith.h"
#include "core/memory.h"

namespace vekvc {

namespace mpeg4 {

// The directions in which a picture is doubled.
enum class Doubled { horizontally = 1, vertically, both };

// Annex P: where the samples of the new picture lie in the old one, in 1/16 samples.
struct ResampleMap {
    std::int64_t constant, perColumn, perRow, perBoth;

    // Before the shift; wraps at 64 bits.
    std::int64_t at(std::int64_t x, std::int64_t y) const {
        const auto bits = [](std::int64_t n) { return static_cast<std::uint64_t>(n); };
        return static_cast<std::int64_t>(bits(constant) + bits(perColumn) * bits(x) + bits(perRow) * bits(y) +
                                         bits(perBoth) * bits(x) * bits(y));
    }
};

struct Resampling {
    const Vek8u* src;
    std::ptrdiff_t srcStep;
    VekiSize srcSize;
    Vek8u* dst;
    std::ptrdiff_t dstStep;
    VekiSize dstSize;
    ResampleMap mapX, mapY;
    int shift, roundControl, fillValue;
};

}  // namespace mpeg4

namespace plain {

// Along a direction: the nearest sample A and the next-nearest B, or A itself where B lies outside.
inline void upsample2x(const Vek8u* src, std::ptrdiff_t srcStep, VekiSize size, Vek8u* dst, std::ptrdiff_t dstStep,
                       mpeg4::Doubled doubled) {
    using mpeg4::Doubled;
    const bool wider = doubled != Doubled::vertically, higher = doubled != Doubled::horizontally;
    const auto nextNearest = [](std::ptrdiff_t i, std::ptrdiff_t n) {
        const std::ptrdiff_t b = i % 2 == 0 ? i / 2 - 1 : i / 2 + 1;
        return b < 0 || b >= n ? i / 2 : b;
    };
    const std::ptrdiff_t W = size.width, H = size.height;
    for (std::ptrdiff_t y = 0; y < (higher ? 2 * H : H); ++y)
        for (std::ptrdiff_t x = 0; x < (wider ? 2 * W : W); ++x) {
            const std::ptrdiff_t x0 = wider ? x / 2 : x, x1 = wider ? nextNearest(x, W) : x;
            const std::ptrdiff_t y0 = higher ? y / 2 : y, y1 = higher ? nextNearest(y, H) : y;
            const auto at = [=](std::ptrdiff_t i, std::ptrdiff_t j) -> int { return src[j * srcStep + i]; };
            const int A = at(x0, y0), B = at(x1, y0), C = at(x0, y1), D = at(x1, y1);
            int value = 0;
            if (x0 == x1 && y0 == y1)
                value = A;
            else if (y0 == y1)
                value = (3 * A + B + 2) >> 2;
            else if (x0 == x1)
                value = (3 * A + C + 2) >> 2;
            else
                value = (9 * A + 3 * B + 3 * C + D + 8) >> 4;
            dst[y * dstStep + x] = static_cast<Vek8u>(value);
        }
}

// The source at (X, Y), in 1/16 samples. Outside it: the nearest sample, or the fill value if that is not negative.
inline Vek8u resampledSample(const mpeg4::Resampling& r, std::int64_t X, std::int64_t Y) {
    const auto at = [&](std::int64_t x, std::int64_t y) -> int {
        const std::int64_t i = clip3(0, r.srcSize.width - 1, x), j = clip3(0, r.srcSize.height - 1, y);
        return r.fillValue >= 0 && (i != x || j != y) ? r.fillValue : r.src[j * r.srcStep + i];
    };
    const std::int64_t x = X >> 4, y = Y >> 4;
    const int u = X & 15, v = Y & 15;
    const int sum = (16 - v) * ((16 - u) * at(x, y) + u * at(x + 1, y)) +
                    v * ((16 - u) * at(x, y + 1) + u * at(x + 1, y + 1)) + 127 + r.roundControl;
    return static_cast<Vek8u>(sum >> 8);
}

// The part of the new picture from (left, top) on.
inline void resample(const mpeg4::Resampling& r, int left, int top, VekiSize size) {
    for (int y = top; y < top + size.height; ++y)
        for (int x = left; x < left + size.width; ++x)
            r.dst[y * r.dstStep + x] = resampledSample(r, r.mapX.at(x, y) >> r.shift, r.mapY.at(x, y) >> r.shift);
}

inline void resample(const mpeg4::Resampling& r) { resample(r, 0, 0, r.dstSize); }

}  // namespace plain
}  // namespace vekvc

#endif
