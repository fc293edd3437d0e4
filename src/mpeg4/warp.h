// The warp of a VOP with global motion (ISO/IEC 14496-2 7.8): what ...Init derives from the decoded differentials.
#ifndef VEKVC_MPEG4_WARP_H
#define VEKVC_MPEG4_WARP_H

#include <algorithm>
#include <bit>
#include <cstdint>
#include <type_traits>

#include "mpeg4/state.h"

namespace vekvc::mpeg4 {

// A coordinate in the reference, in 1/s samples: (perColumn I + perRow J + constant) >> shift.
struct WarpedCoordinate {
    std::int64_t perColumn, perRow, constant;

    // Of sample (I, J), before the shift; wraps at 64 bits, which no warp of a real VOP reaches.
    std::int64_t at(std::int64_t I, std::int64_t J) const {
        const auto bits = [](std::int64_t x) { return static_cast<std::uint64_t>(x); };
        return static_cast<std::int64_t>(bits(perColumn) * bits(I) + bits(perRow) * bits(J) + bits(constant));
    }
};

struct WarpedPlane {
    WarpedCoordinate f, g;  // horizontal, vertical
    VekiSize size;          // of the reference
    Vek32s shift;
    Vek32s accuracyBits;  // log2 of s
};

struct Warp : Specification {
    WarpedPlane luma{}, chroma{};
    Vek32s roundControl = 0;
    Vek32s quarterSample = 0;

    Warp() : Specification(Kind::warp) {}
};
static_assert(fits<Warp>(kWarpSize));
static_assert(std::has_unique_object_representations_v<Warp>);  // ...Init leaves no byte to chance

// What is added before a shift by n for rounding: half of its unit.
constexpr std::int64_t halfOf(int n) { return n > 0 ? std::int64_t{1} << (n - 1) : 0; }

// 7.8.5. With sizes up to 8192 and any 32-bit differentials all values stay within 62 bits.
inline Warp makeWarp(const Vek32s (&du)[3], const Vek32s (&dv)[3], int points, int accuracy, VekiSize vop, VekiSize ref,
                     int roundControl, bool quarterSample) {
    using Wide = std::int64_t;
    const int bits = accuracy + 1, s = 1 << bits;
    const Wide r = 16 / s, W = vop.width, H = vop.height;
    Warp w;
    w.luma.accuracyBits = w.chroma.accuracyBits = bits;
    w.roundControl = roundControl;
    w.quarterSample = quarterSample;
    w.luma.size = ref;
    w.chroma.size = {(ref.width + 1) / 2, (ref.height + 1) / 2};

    // The reference points, in 1/s samples.
    const Wide half = s / 2, du0 = du[0], dv0 = dv[0];
    const Wide i0 = half * du0, j0 = half * dv0;
    if (points < 2) {  // a translation, or none
        const auto chroma = [](Wide x) { return (x >> 1) | (x & 1); };
        w.luma.f = {s, 0, i0}, w.luma.g = {0, s, j0};
        w.chroma.f = {s, 0, chroma(i0)}, w.chroma.g = {0, s, chroma(j0)};
        return w;
    }
    const Wide i1 = half * (2 * W + du0 + du[1]), j1 = half * (dv0 + dv[1]);
    const Wide i2 = half * (du0 + du[2]), j2 = half * (2 * H + dv0 + dv[2]);

    // The virtual points, in 1/16 samples, at distances that are powers of two.
    const auto ceilLog2 = [](Wide x) { return static_cast<int>(std::bit_width(static_cast<std::uint64_t>(x - 1))); };
    const int a = ceilLog2(W), b = ceilLog2(H);
    const Wide W1 = Wide{1} << a, H1 = Wide{1} << b;
    const Wide i1v = 16 * W1 + divideRound((W - W1) * r * i0 + W1 * (r * i1 - 16 * W), W);
    const Wide j1v = divideRound((W - W1) * r * j0 + W1 * r * j1, W);
    const Wide i2v = divideRound((H - H1) * r * i0 + H1 * r * i2, H);
    const Wide j2v = 16 * H1 + divideRound((H - H1) * r * j0 + H1 * (r * j2 - 16 * H), H);

    const auto set = [&](Wide fColumn, Wide fRow, Wide gColumn, Wide gRow, int n, Wide distance) {
        w.luma.shift = n;
        w.luma.f = {fColumn, fRow, i0 * (Wide{1} << n) + halfOf(n)};
        w.luma.g = {gColumn, gRow, j0 * (Wide{1} << n) + halfOf(n)};
        w.chroma.shift = n + 2;
        const auto constant = [&](Wide column, Wide row, Wide origin) {
            return column + row + 2 * distance * r * origin - 16 * distance + halfOf(n + 2);
        };
        w.chroma.f = {4 * fColumn, 4 * fRow, constant(fColumn, fRow, i0)};
        w.chroma.g = {4 * gColumn, 4 * gRow, constant(gColumn, gRow, j0)};
    };
    if (points == 2) {
        set(i1v - r * i0, r * j0 - j1v, j1v - r * j0, i1v - r * i0, a + 4 - bits, W1);
    } else {
        const int m = std::min(a, b);
        const Wide w3 = W1 >> m, h3 = H1 >> m;
        set((i1v - r * i0) * h3, (i2v - r * i0) * w3, (j1v - r * j0) * h3, (j2v - r * j0) * w3, a + b - m + 4 - bits,
            W1 * h3);
    }
    return w;
}

}  // namespace vekvc::mpeg4

#endif
