// Fast form: planes are rotated by transposed blocks of 16 columns and 16 or 32 rows; what is not a plane of 4:2:0 yet
// is made one tile by tile.
#ifndef VEKVC_PROCESSING_ROTATE_SIMD_H
#define VEKVC_PROCESSING_ROTATE_SIMD_H

#include <cstring>

#include "processing/convert_layout_simd.h"
#include "processing/rotate_plain.h"

namespace vekvc::simd {

using processing::Area;
using processing::halved;
using processing::Plane;
using processing::Planes;

// The plane with its rows in reverse.
template <class T>
Plane<T> flipped(Plane<T> plane, std::ptrdiff_t rows) {
    return {plane.row(rows - 1), -plane.step};
}

// V::kBytes rows of 16 columns become 16 rows.
template <class V>
[[gnu::always_inline]] inline void transposeBlock(Plane<const Vek8u> from, Plane<Vek8u> to) {
    V rows[16];
    for (int i = 0; i < 16; ++i) {
        if constexpr (is128<V>) rows[i] = load<V>(from.row(i));
#if VEKVC_VECTOR256
        else
            rows[i] = loadPair16<V>(from.row(i), from.row(i + 16));
#endif
    }
    for (int step = 0; step < 4; ++step) interleaveBytes(rows);
    for (int i = 0; i < 16; ++i) store(to.row(i), rows[i]);
}

// to(y, x) = from(x, y).
inline void transposePlane(Plane<const Vek8u> from, Area area, Plane<Vek8u> to) {
    const auto transpose = [&]<class V>(V) {
        if (area.width < 16 || area.height < V::kBytes) return false;
        const auto columns = [&](u8x16, std::ptrdiff_t x) {
            const auto block = [&](V, std::ptrdiff_t y) {
                transposeBlock<V>({from.row(y) + x, from.step}, {to.row(x) + y, to.step});
            };
            coverBy<V>(V::kBytes, 0, area.height, block);
        };
        return coverBy<u8x16>(16, 0, area.width, columns);
    };
    if (transpose(WidestBytes()) || (!is128<WidestBytes> && transpose(u8x16()))) return;
    for (std::ptrdiff_t y = 0; y < area.height; ++y)
        for (std::ptrdiff_t x = 0; x < area.width; ++x) to(y, x) = from(x, y);
}

template <class V>
[[gnu::always_inline]] inline V reversed(V v) {
    const V each = shuffleEach16(v, lanes<u8x16>(15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0));
    if constexpr (is128<V>) return each;
#if VEKVC_VECTOR256
    else
        return highThenLow(each, each);
#endif
}

// A quarter turn is a transposition of the rows in reverse, or one into the rows in reverse.
inline void rotatePlane(Plane<const Vek8u> from, Area area, int rotation, Plane<Vek8u> to) {
    switch (rotation) {
        case 90:
            return transposePlane(flipped(from, area.height), area, to);
        case 270:
            return transposePlane(from, area, flipped(to, area.width));
        case 180:
            for (std::ptrdiff_t y = 0; y < area.height; ++y) {
                const Vek8u* row = from.row(y);
                Vek8u* end = to.row(area.height - 1 - y) + area.width;
                const std::ptrdiff_t done = forVectors(0, area.width, [&]<class V>(V, std::ptrdiff_t x) {
                    store(end - x - V::kBytes, reversed(load<V>(row + x)));
                });
                for (std::ptrdiff_t x = done; x < area.width; ++x) end[-x - 1] = row[x];
            }
            return;
        default:
            for (std::ptrdiff_t y = 0; y < area.height; ++y)
                std::memcpy(to.row(y), from.row(y), static_cast<std::size_t>(area.width));
    }
}

// The part of the rotated plane that a tile becomes whose top left sample was (x, y).
inline Plane<Vek8u> rotatedPlace(Plane<Vek8u> to, std::ptrdiff_t x, std::ptrdiff_t y, Area tile, Area area,
                                 int rotation) {
    const std::ptrdiff_t right = area.width - x - tile.width, below = area.height - y - tile.height;
    switch (rotation) {
        case 90:
            return {to.row(x) + below, to.step};
        case 180:
            return {to.row(below) + right, to.step};
        case 270:
            return {to.row(right) + y, to.step};
        default:
            return {to.row(y) + x, to.step};
    }
}

inline void meanRow(const Vek8u* a, const Vek8u* b, Vek8u* to, std::ptrdiff_t n) {
    const std::ptrdiff_t done =
        forVectors(0, n, [&]<class V>(V, std::ptrdiff_t x) { store(to + x, average(load<V>(a + x), load<V>(b + x))); });
    for (std::ptrdiff_t x = done; x < n; ++x) to[x] = static_cast<Vek8u>((a[x] + b[x] + 1) >> 1);
}

// Chroma samples of a tile; of luma there are twice as many columns and rows.
inline constexpr std::ptrdiff_t kTileColumns = 64, kTileRows = 32;

// Calls reduce(x, y, tile) for tiles of 4:2:0 chroma, whose first sample is (x, y).
template <class Reduce>
void forChromaTiles(Area chroma, Reduce reduce) {
    for (std::ptrdiff_t y = 0; y < chroma.height; y += kTileRows)
        for (std::ptrdiff_t x = 0; x < chroma.width; x += kTileColumns)
            reduce(x, y, Area(std::min(kTileColumns, chroma.width - x), std::min(kTileRows, chroma.height - y)));
}

inline void rotateTo420(Plane<const Vek8u> from, Area area, int rotation, const Planes<Vek8u>& to) {
    // Row pair v of columns x to x + w - 1.
    const auto separatePair = [&](std::ptrdiff_t x, std::ptrdiff_t v, std::ptrdiff_t w, Vek8u* upper, Vek8u* lower,
                                  Vek8u* cb, Vek8u* cr) {
        const bool alone = 2 * v + 1 == area.height;
        const Vek8u* row = from.row(2 * v) + 2 * x;
        separateRows({row, alone ? row : row + from.step}, {upper, alone ? upper : lower}, cb, cr, 2, w);
    };
    const Area chroma = area.halvedBoth();
    if (rotation == 0) {
        for (std::ptrdiff_t v = 0; v < chroma.height; ++v)
            separatePair(0, v, area.width, to.y.row(2 * v), to.y.row(2 * v + 1), to.cb.row(v), to.cr.row(v));
        return;
    }
    alignas(32) Vek8u luma[4 * kTileRows * kTileColumns], cb[kTileRows * kTileColumns], cr[kTileRows * kTileColumns];
    forChromaTiles(chroma, [&](std::ptrdiff_t x, std::ptrdiff_t y, Area tile) {
        const Area lumaTile(std::min(2 * tile.width, area.width - 2 * x),
                            std::min(2 * tile.height, area.height - 2 * y));
        for (std::ptrdiff_t v = 0; v < tile.height; ++v) {
            Vek8u* upper = luma + 4 * kTileColumns * v;
            separatePair(2 * x, y + v, lumaTile.width, upper, upper + 2 * kTileColumns, cb + kTileColumns * v,
                         cr + kTileColumns * v);
        }
        rotatePlane({luma, 2 * kTileColumns}, lumaTile, rotation,
                    rotatedPlace(to.y, 2 * x, 2 * y, lumaTile, area, rotation));
        rotatePlane({cb, kTileColumns}, tile, rotation, rotatedPlace(to.cb, x, y, tile, chroma, rotation));
        rotatePlane({cr, kTileColumns}, tile, rotation, rotatedPlace(to.cr, x, y, tile, chroma, rotation));
    });
}

inline void rotateTo420(const Planes<const Vek8u>& from, Area area, int rotation, const Planes<Vek8u>& to) {
    rotatePlane(from.y, area, rotation, to.y);
    const Area chroma = area.halvedBoth();
    const auto reduce = [&](Plane<const Vek8u> source, Plane<Vek8u> plane) {
        alignas(32) Vek8u means[kTileRows * kTileColumns];
        forChromaTiles(chroma, [&](std::ptrdiff_t x, std::ptrdiff_t y, Area tile) {
            for (std::ptrdiff_t v = 0; v < tile.height; ++v)
                meanRow(source.row(2 * (y + v)) + x, source.row(std::min(2 * (y + v) + 1, area.height - 1)) + x,
                        means + kTileColumns * v, tile.width);
            rotatePlane({means, kTileColumns}, tile, rotation, rotatedPlace(plane, x, y, tile, chroma, rotation));
        });
    };
    reduce(from.cb, to.cb);
    reduce(from.cr, to.cr);
}

}  // namespace vekvc::simd

#endif
