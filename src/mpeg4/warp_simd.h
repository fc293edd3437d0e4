// Fast forms of global motion.
#ifndef VEKVC_MPEG4_WARP_SIMD_H
#define VEKVC_MPEG4_WARP_SIMD_H

#include "core/simd.h"
#include "mpeg4/affine_simd.h"
#include "mpeg4/warp_plain.h"

namespace vekvc::simd {

// ---- translations: the same fraction for all samples of a block

// `rows` rows of W samples between those of rows + 1 rows of W + 1.
template <int W>
[[gnu::always_inline]] inline void translateRows(const Vek8u* src, std::ptrdiff_t srcStep, Vek8u* dst,
                                                 std::ptrdiff_t dstStep, int rows, int u, int v,
                                                 const AffineScale& scale) {
    const i8x16 weights = as<i8x16>(splat<i16x8>((1 << scale.bits) - u + u * 256));
    const i16x8 down = splat<i16x8>(v);
    struct Across {
        i16x8 low, high;
    };
    const auto across = [&](const Vek8u* p) {
        const u8x16 a = loadBytes<u8x16, W>(p), b = loadBytes<u8x16, W>(p + 1);
        const i16x8 low = mulAddPairs(interleaveLow(a, b), weights);
        return Across{low, W == 16 ? mulAddPairs(interleaveHigh(a, b), weights) : low};
    };
    Across upper = across(src);
    for (; rows > 0; --rows) {
        src += srcStep;
        const Across lower = across(src);
        const auto low = as<i16x8>(betweenRows(upper.low, lower.low, down, scale));
        const auto high = W == 16 ? as<i16x8>(betweenRows(upper.high, lower.high, down, scale)) : low;
        storeBytes<W>(dst, narrowU8(low, high));
        dst += dstStep;
        upper = lower;
    }
}

// A block of up to 16 columns and 16 rows, from sample (x, y) of the reference on. One that reaches beyond the
// reference, or has an odd width, is gathered first; what it computes from columns that were not gathered goes nowhere.
inline void translateBlock(const mpeg4::WarpedPlane& warp, const AffineScale& scale, const Vek8u* src,
                           std::ptrdiff_t srcStep, std::int64_t x, std::int64_t y, int u, int v, Vek8u* dst,
                           std::ptrdiff_t dstStep, VekiSize size) {
    constexpr int kStep = 32;
    Vek8u gathered[17 * kStep], out[16 * 16];
    const bool whole = size.width == 16 || size.width == 8;
    if (!whole || x < 0 || y < 0 || x + size.width >= warp.size.width || y + size.height >= warp.size.height) {
        for (int j = 0; j <= size.height; ++j) {
            const Vek8u* const row = src + clip3(0, warp.size.height - 1, y + j) * srcStep;
            for (int i = 0; i <= size.width; ++i) gathered[j * kStep + i] = row[clip3(0, warp.size.width - 1, x + i)];
        }
        src = gathered;
        srcStep = kStep;
    } else {
        src += y * srcStep + x;
    }
    if (size.width == 16) return translateRows<16>(src, srcStep, dst, dstStep, size.height, u, v, scale);
    if (size.width == 8) return translateRows<8>(src, srcStep, dst, dstStep, size.height, u, v, scale);
    translateRows<16>(src, srcStep, out, 16, size.height, u, v, scale);
    for (int j = 0; j < size.height; ++j)
        std::memcpy(dst + j * dstStep, out + 16 * j, static_cast<std::size_t>(size.width));
}

// ---- any warp

// The definition itself for the part of a block from (x, y) on, apart from the code of groups.
template <int planes>
[[gnu::noinline]] void warpApart(const mpeg4::WarpedPlane& warp, int roundControl, const mpeg4::WarpedBlock<planes>& b,
                                 int x, int y, VekiSize size) {
    const mpeg4::WarpedPlane copy = warp;  // which the samples written cannot be part of
    plain::warpBlock<planes>(copy, roundControl, b, x, y, size);
}

template <int planes>
void warpBlock(const mpeg4::WarpedPlane& warp, int roundControl, const mpeg4::WarpedBlock<planes>& b) {
    const int bits = warp.accuracyBits, s = 1 << bits, shift = warp.shift;
    const AffineScale scale = {shift, bits, s * s / 2 - roundControl};
    const std::int64_t one = std::int64_t{s} << shift;
    if (warp.f.perColumn == one && warp.f.perRow == 0 && warp.g.perColumn == 0 && warp.g.perRow == one) {
        for (int y = 0; y < b.size.height; y += 16)
            for (int x = 0; x < b.size.width; x += 16) {
                const std::int64_t F = warp.f.at(std::int64_t{b.x} + x, 0) >> shift;
                const std::int64_t G = warp.g.at(0, std::int64_t{b.y} + y) >> shift;
                const VekiSize size = {std::min(b.size.width - x, 16), std::min(b.size.height - y, 16)};
                for (const auto& p : b.plane)
                    translateBlock(warp, scale, p.src, p.srcStep, F >> bits, G >> bits, static_cast<int>(F & (s - 1)),
                                   static_cast<int>(G & (s - 1)), p.dst + y * p.dstStep + x, p.dstStep, size);
            }
        return;
    }
    if (!EightColumns::possible(warp.size, b.size.width)) return warpApart<planes>(warp, roundControl, b, 0, 0, b.size);
    const ColumnSteps fSteps(warp.f.perColumn, scale), gSteps(warp.g.perColumn, scale);
    for (int y = 0; y < b.size.height; ++y) {
        const std::int64_t J = std::int64_t{b.y} + y;
        forColumns(
            warp.f.at(b.x, J), fSteps, warp.g.at(b.x, J), gSteps, scale, warp.size, true, b.size.width,
            [&](const EightColumns& columns, int x) {
                for (const auto& p : b.plane) columns.interpolate(p.src, p.srcStep, p.dst + y * p.dstStep + x);
            },
            [&](int x) {
                warpApart<planes>(warp, roundControl, b, x, y, {8, 1});
            });
    }
}

// ---- average vectors

// The sum of (c.at(I, J) >> shift) over 16x16 samples: a row's first value, and the distances from it in 32 bits. They
// are below 2^17, so that a lane takes the 64 of its columns.
inline std::int64_t sumOfCoordinates(const mpeg4::WarpedCoordinate& c, int shift, std::int64_t x, std::int64_t y) {
    const i32x4 column = splat<i32x4>(c.perColumn);
    i32x4 distances = zero<i32x4>();
    std::uint64_t sum = 0;
    for (int row = 0; row < 16; ++row) {
        const std::int64_t start = c.at(x, y + row);
        sum += 16 * static_cast<std::uint64_t>(start >> shift);
        i32x4 position = splat<i32x4>(start & ((std::int64_t{1} << shift) - 1)) + column * lanes<i32x4>(0, 1, 2, 3);
        for (int i = 0; i < 4; ++i) {
            distances += position >> shift;
            position += column << 2;
        }
    }
    return static_cast<std::int64_t>(sum + static_cast<std::uint64_t>(std::int64_t{sumLanes(distances)}));
}

inline plain::DistanceSums sumDistances(const mpeg4::WarpedPlane& plane, std::int64_t x, std::int64_t y) {
    const auto fits = [&](std::int64_t perColumn) {
        const std::int64_t size = perColumn < 0 ? -perColumn : perColumn;
        return size < 1 << 26 && size >> plane.shift < 1 << 13;
    };
    if (!fits(plane.f.perColumn) || !fits(plane.g.perColumn)) return plain::sumDistances(plane, x, y);
    const auto distance = [&](const mpeg4::WarpedCoordinate& c, std::int64_t first) {
        const std::int64_t samples = (256 * first + 16 * 120) * (std::int64_t{1} << plane.accuracyBits);
        return static_cast<std::int64_t>(static_cast<std::uint64_t>(sumOfCoordinates(c, plane.shift, x, y)) -
                                         static_cast<std::uint64_t>(samples));
    };
    return {distance(plane.f, x), distance(plane.g, y)};
}

}  // namespace vekvc::simd

#endif
