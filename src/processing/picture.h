// Pictures as the conversions see them: planes of bytes, rows of Cb Y Cr Y, and quarter turns.
#ifndef VEKVC_PROCESSING_PICTURE_H
#define VEKVC_PROCESSING_PICTURE_H

#include <algorithm>
#include <cstddef>

#include "vekvc/types.h"

namespace vekvc::processing {

// Chroma columns (rows) beside n luma ones.
constexpr std::ptrdiff_t halved(std::ptrdiff_t n) { return (n + 1) >> 1; }

// A width and height with which products are formed: 32 bits would not hold them all.
struct Area {
    std::ptrdiff_t width, height;

    constexpr Area(std::ptrdiff_t w, std::ptrdiff_t h) : width(w), height(h) {}
    constexpr Area(VekiSize size) : width(size.width), height(size.height) {}
    constexpr bool odd() const { return ((width | height) & 1) != 0; }
    constexpr Area halvedColumns() const { return {halved(width), height}; }
    constexpr Area halvedBoth() const { return {halved(width), halved(height)}; }
};

// Bytes with a step between rows: T is Vek8u or const Vek8u.
template <class T>
struct Plane {
    T* base;
    std::ptrdiff_t step;

    constexpr T* row(std::ptrdiff_t y) const { return base + step * y; }
    constexpr T& operator()(std::ptrdiff_t x, std::ptrdiff_t y) const { return row(y)[x]; }
};

// Luma, and two chroma planes with one step.
template <class T>
struct Planes {
    Plane<T> y, cb, cr;

    constexpr Planes(T* pY, Vek32s yStep, T* pCb, T* pCr, Vek32s cStep)
        : y{pY, yStep}, cb{pCb, cStep}, cr{pCr, cStep} {}
};

// A quarter turn clockwise for each 90 degrees.
constexpr bool isRotation(Vek32s rotation) {
    return rotation == 0 || rotation == 90 || rotation == 180 || rotation == 270;
}
constexpr bool swapsSides(int rotation) { return rotation == 90 || rotation == 270; }
constexpr Area rotated(Area a, int rotation) { return swapsSides(rotation) ? Area(a.height, a.width) : a; }

// Where sample (x, y) of the rotated picture lies in the picture of the given area that was rotated.
struct Position {
    std::ptrdiff_t x, y;
};
constexpr Position beforeRotation(std::ptrdiff_t x, std::ptrdiff_t y, Area area, int rotation) {
    switch (rotation) {
        case 90:
            return {y, area.height - 1 - x};
        case 180:
            return {area.width - 1 - x, area.height - 1 - y};
        case 270:
            return {area.width - 1 - y, x};
        default:
            return {x, y};
    }
}

}  // namespace vekvc::processing

#endif
