// Fast form: tile by tile the picture is resized into planes, which are rotated and converted.
#ifndef VEKVC_PROCESSING_RESIZE_SIMD_H
#define VEKVC_PROCESSING_RESIZE_SIMD_H

#include "processing/resize_enlarge_simd.h"
#include "processing/resize_reduce_simd.h"
#include "processing/rotate_simd.h"

namespace vekvc::simd {

// Planes of a chroma sample for each pixel.
struct RowFull {
    const Vek8u *y, *cb, *cr;

    plain::Ycc at(std::ptrdiff_t x, std::ptrdiff_t) const { return {y[x], cb[x], cr[x]}; }
};
constexpr std::ptrdiff_t columnsAhead(const RowFull&) { return 0; }
template <class V>
[[gnu::always_inline]] inline YccVectors<V> loadPixels(const RowFull& row, std::ptrdiff_t x) {
    const Words<V> cb = loadWords<V>(row.cb + x), cr = loadWords<V>(row.cr + x);
    return {loadWords<V>(row.y + x), interleaveLow(cb, cr), interleaveHigh(cb, cr)};
}

using FillTile = void (*)(const Resize&, const ResizeWindow&, ResizeTile&);

template <int f>
constexpr FillTile reducerOf(Interpolation interpolation) {
    switch (interpolation) {
        case Interpolation::Nearest:
            return reduceTile<f, Interpolation::Nearest>;
        case Interpolation::Linear:
            return reduceTile<f, Interpolation::Linear>;
        default:
            return reduceTile<f, Interpolation::Smooth>;
    }
}
inline FillTile resizerOf(const Resize& r) {
    switch (8 * r.enlarge + r.reduce) {
        case 8 + 2:
            return reducerOf<2>(r.interpolation);
        case 8 + 4:
            return reducerOf<4>(r.interpolation);
        case 8 + 8:
            return reducerOf<8>(r.interpolation);
        case 16 + 1:
            return enlargeTile<2>;
        case 32 + 1:
            return enlargeTile<4>;
        default:
            return enlargeTile<1>;
    }
}

// Calls convert(planes, x, y, area) for every tile of the rotated picture, whose first pixel is (x, y), an even column.
// Vectors may read beyond the planes' columns.
template <class Convert>
void forResizedTiles(const Resize& r, int rotation, Convert convert) {
    const FillTile fill = resizerOf(r);
    const Area resized = r.resized(), area = processing::rotated(resized, rotation);
    const ResizeShape shape = processing::swapsSides(rotation) ? kTurned : kUpright;
    const Area most = processing::rotated({shape.columns, shape.rows}, rotation);
    ResizeTile tile(shape.columns), turned(most.width);
    for (std::ptrdiff_t y = 0; y < area.height; y += most.height)
        for (std::ptrdiff_t x = 0; x < area.width; x += most.width) {
            const Area size(std::min(most.width, area.width - x), std::min(most.height, area.height - y));
            const auto a = processing::beforeRotation(x, y, resized, rotation);
            const auto b = processing::beforeRotation(x + size.width - 1, y + size.height - 1, resized, rotation);
            const ResizeWindow window = {std::min(a.x, b.x), std::min(a.y, b.y), std::max(a.x, b.x) + 1,
                                         std::max(a.y, b.y) + 1};
            fill(r, window, tile);
            const std::ptrdiff_t offset = r.reduce > 1 ? 0 : window.left & 3;
            const auto plane = [&](int component) {
                const Plane<const Vek8u> from = {tile.row(component, 0) + offset, tile.step()};
                if (rotation == 0) return from;
                Vek8u* to = turned.row(component, 0);
                rotatePlane(from, Area(window.width(), window.height()), rotation, {to, turned.step()});
                return Plane<const Vek8u>{to, turned.step()};
            };
            const Plane<const Vek8u> planes[3] = {plane(0), plane(1), plane(2)};
            convert(planes, x, y, size);
        }
}

// Pixels of planes to Cb Y Cr Y by whole vectors. Each pair of pixels has the mean of its chroma.
inline void interleaveFull(const RowFull& row, Vek8u* to, std::ptrdiff_t w) {
    using V = WidestBytes;
    using U = UnsignedWords<V>;
    const auto means = [](const Vek8u* p) {
        const U pairs = load<U>(p);
        return average(pairs & splat<U>(255), pairs >> 8);
    };
    for (std::ptrdiff_t x = 0; x < w; x += V::kBytes) {
        const V chroma = as<V>(means(row.cb + x) | means(row.cr + x) << 8), luma = load<V>(row.y + x);
        storeInOrder(to + 2 * x, interleaveLow(chroma, luma), interleaveHigh(chroma, luma));
    }
}

inline void resizeToCbYCr(const Resize& r, int rotation, Plane<Vek8u> to) {
    if (r.reduce == 1 && r.enlarge == 1 && rotation == 0) {
        const std::ptrdiff_t bytes = 4 * halved(r.area.width), odd = r.area.width & 1;
        for (std::ptrdiff_t y = 0; y < r.area.height; ++y) {
            std::memcpy(to.row(y), r.from.row(y), static_cast<std::size_t>(bytes - odd));
            if (odd != 0) to(bytes - 1, y) = to(bytes - 3, y);
        }
        return;
    }
    forResizedTiles(r, rotation, [&](const Plane<const Vek8u>(&p)[3], std::ptrdiff_t x, std::ptrdiff_t y, Area size) {
        for (std::ptrdiff_t v = 0; v < size.height; ++v) {
            const RowFull row = {p[0].row(v), p[1].row(v), p[2].row(v)};
            Vek8u* place = to.row(y + v) + 2 * x;
            if (size.width % WidestBytes::kBytes == 0) {
                interleaveFull(row, place, size.width);
                continue;
            }
            Vek8u groups[2 * kResizeColumns];
            interleaveFull(row, groups, size.width);
            if (size.width % 2 != 0) {  // the last pixel is its own partner
                const std::ptrdiff_t last = size.width - 1;
                Vek8u* group = groups + 2 * last;
                group[0] = row.cb[last];
                group[2] = row.cr[last];
                group[3] = row.y[last];
            }
            std::memcpy(place, groups, static_cast<std::size_t>(4 * halved(size.width)));
        }
    });
}

inline void resizeToBgr565(const Resize& r, int rotation, const processing::ToBgr& matrix, Plane<Vek8u> to) {
    forResizedTiles(r, rotation, [&](const Plane<const Vek8u>(&p)[3], std::ptrdiff_t x, std::ptrdiff_t y, Area size) {
        for (std::ptrdiff_t v = 0; v < size.height; ++v)
            simd::toBgrRow(RowFull{p[0].row(v), p[1].row(v), p[2].row(v)}, plain::Bgr565{}, to.row(y + v) + 2 * x, 0,
                           size.width, matrix);
    });
}

}  // namespace vekvc::simd

#endif
