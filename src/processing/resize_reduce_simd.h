// Rows of a reduced picture, eight pixels at a time from 8 f columns of Cb Y Cr Y. A last pixel within whose columns
// the picture ends is made by the definition.
#ifndef VEKVC_PROCESSING_RESIZE_REDUCE_SIMD_H
#define VEKVC_PROCESSING_RESIZE_REDUCE_SIMD_H

#include "processing/convert_layout_simd.h"
#include "processing/resize_plain.h"
#include "processing/resize_tile.h"

namespace vekvc::simd {

using processing::Interpolation;
using processing::Resize;

// Eight pixels as 16-bit lanes: luma, and four times two (Cb, Cr).
struct EightPixels {
    i16x8 y, chroma[2];
};

// Sums of f lanes in a row of f vectors.
template <int f>
[[gnu::always_inline]] inline i16x8 sumLanesBy(const i16x8* v) {
    if constexpr (f == 2)
        return addNeighbours(v[0], v[1]);
    else
        return addNeighbours(sumLanesBy<f / 2>(v), sumLanesBy<f / 2>(v + f / 2));
}
// Sums of n pairs of lanes in a row of n vectors.
template <int n>
[[gnu::always_inline]] inline i16x8 sumPairsBy(const i16x8* v) {
    if constexpr (n == 1) {
        return v[0];
    } else {
        const i16x8 a = sumPairsBy<n / 2>(v), b = sumPairsBy<n / 2>(v + n / 2);
        return evenLanes32(a, b) + oddLanes32(a, b);
    }
}

[[gnu::always_inline]] inline i16x8 chromaOf(u8x16 groups) { return as<i16x8>(groups) & splat<i16x8>(255); }
[[gnu::always_inline]] inline i16x8 lumaOf(u8x16 groups) { return as<i16x8>(as<u16x8>(groups) >> 8); }

// Means of f x f pixels: sums of at most 64 samples stay below 1 << 14. A group's chroma belongs to two pixels.
template <int f>
[[gnu::always_inline]] inline EightPixels meanOfAll(const Vek8u* const* rows, std::ptrdiff_t u) {
    i16x8 luma[f], chroma[f];
    for (int i = 0; i < f; ++i) {
        luma[i] = chroma[i] = zero<i16x8>();
        for (int y = 0; y < f; ++y) {
            const u8x16 groups = load<u8x16>(rows[y] + 2 * f * u + 16 * i);
            luma[i] += lumaOf(groups);
            chroma[i] += chromaOf(groups);
        }
    }
    constexpr int kShift = f == 2 ? 2 : f == 4 ? 4 : 6;
    const auto mean = [](i16x8 sum) { return (sum + splat<i16x8>(f * f / 2)) >> kShift; };
    const auto twice = [](i16x8 sum) { return sum + sum; };
    return {mean(sumLanesBy<f>(luma)),
            {mean(twice(sumPairsBy<f / 2>(chroma))), mean(twice(sumPairsBy<f / 2>(chroma + f / 2)))}};
}

// The groups that hold the columns f u + f/2 - 1 and f u + f/2, four at a time: f vectors hold those of eight pixels.
struct MiddleGroups {
    u8x16 left, right;
};
template <int f>
[[gnu::always_inline]] inline MiddleGroups middleGroups(const Vek8u* groups) {
    const auto at = [&](int i) { return load<u8x16>(groups + 16 * i); };
    if constexpr (f == 2) {
        return {at(0), at(0)};
    } else if constexpr (f == 4) {
        return {evenLanes32(at(0), at(1)), oddLanes32(at(0), at(1))};
    } else {  // groups 1 and 2 of four
        const u8x16 even0 = evenLanes32(at(0), at(1)), even1 = evenLanes32(at(2), at(3));
        const u8x16 odd0 = oddLanes32(at(0), at(1)), odd1 = oddLanes32(at(2), at(3));
        return {evenLanes32(odd0, odd1), oddLanes32(even0, even1)};
    }
}

template <int f>
[[gnu::always_inline]] inline EightPixels nearest(const Vek8u* const* rows, std::ptrdiff_t u) {
    EightPixels p;
    i32x4 luma[2];
    for (int i = 0; i < 2; ++i) {
        const u8x16 groups = middleGroups<f>(rows[f / 2] + 2 * f * u + 8 * f * i).right;
        p.chroma[i] = chromaOf(groups);
        luma[i] = f == 2 ? as<i32x4>(as<u32x4>(groups) >> 24) : as<i32x4>(lumaOf(groups)) & splat<i32x4>(255);
    }
    p.y = narrowI16(luma[0], luma[1]);
    return p;
}

template <int f>
[[gnu::always_inline]] inline EightPixels meanOfFour(const Vek8u* const* rows, std::ptrdiff_t u) {
    EightPixels p;
    i32x4 luma[2];
    for (int i = 0; i < 2; ++i) {
        i32x4 sum = splat<i32x4>(2);
        p.chroma[i] = splat<i16x8>(2);
        for (int y = f / 2 - 1; y <= f / 2; ++y) {
            const MiddleGroups g = middleGroups<f>(rows[y] + 2 * f * u + 8 * f * i);
            p.chroma[i] += chromaOf(g.left) + chromaOf(g.right);
            sum += as<i32x4>(as<u32x4>(g.left) >> 24) + (as<i32x4>(lumaOf(g.right)) & splat<i32x4>(255));
        }
        p.chroma[i] = p.chroma[i] >> 2;
        luma[i] = sum >> 2;
    }
    p.y = narrowI16(luma[0], luma[1]);
    return p;
}

// A row of the tile, from f rows of the source (rows below the picture are its last one).
template <int f, Interpolation interpolation>
void reduceRow(const Resize& r, const ResizeWindow& window, std::ptrdiff_t v, Vek8u* y, Vek8u* cb, Vek8u* cr) {
    const Vek8u* rows[f];
    for (int i = 0; i < f; ++i) rows[i] = r.from.row(std::min(f * v + i, r.area.height - 1));
    const auto eight = [&](std::ptrdiff_t u) __attribute__((always_inline)) {
        if constexpr (interpolation == Interpolation::Nearest)
            return nearest<f>(rows, u);
        else if constexpr (interpolation == Interpolation::Linear && f > 2)
            return meanOfFour<f>(rows, u);
        else
            return meanOfAll<f>(rows, u);
    };
    const std::ptrdiff_t whole = std::min(window.right, r.area.width / f);  // pixels before this one have all columns
    std::ptrdiff_t done = window.left;
    if (whole >= 8 && whole > window.left) {
        // Units that would pass `whole` begin earlier, if need be before the window.
        for (std::ptrdiff_t u = window.left; u < whole; u += 8) {
            const std::ptrdiff_t from = std::min(u, whole - 8), to = from - window.left;
            const EightPixels p = eight(from);
            storeBytes<8>(y + to, narrowU8(p.y, p.y));
            storeHalves(cb + to, cr + to, separatePairs(narrowU8(p.chroma[0], p.chroma[1])));
        }
        done = whole;
    }
    for (std::ptrdiff_t u = done; u < window.right; ++u) {
        const plain::Ycc p = plain::resizedPixel(r, u, v);
        y[u - window.left] = static_cast<Vek8u>(p.y);
        cb[u - window.left] = static_cast<Vek8u>(p.cb);
        cr[u - window.left] = static_cast<Vek8u>(p.cr);
    }
}

template <int f, Interpolation interpolation>
void reduceTile(const Resize& r, const ResizeWindow& window, ResizeTile& tile) {
    for (std::ptrdiff_t v = window.top; v < window.bottom; ++v) {
        const std::ptrdiff_t y = v - window.top;
        reduceRow<f, interpolation>(r, window, v, tile.row(0, y), tile.row(1, y), tile.row(2, y));
    }
}

}  // namespace vekvc::simd

#endif
