// Fast forms of upsampling and resampling.
#ifndef VEKVC_MPEG4_RESAMPLE_SIMD_H
#define VEKVC_MPEG4_RESAMPLE_SIMD_H

#include "core/opaque.h"
#include "core/simd.h"
#include "mpeg4/affine_simd.h"
#include "mpeg4/resample_plain.h"

namespace vekvc::simd {

// ---- upsampling
//
// All rules are one: (3 (3 A + C) + (3 B + D) + 8) >> 4, a sample that lies outside being its neighbour inside. Three
// equal samples and one give (12 A + 4 B + 8) >> 4 = (3 A + B + 2) >> 2.

// Eight sums 3 A + C of two rows, from column x on; scalars likewise.
struct RowSums {
    const Vek8u *near, *next;

    [[gnu::always_inline]] i16x8 eight(std::ptrdiff_t x) const {
        const i16x8 a = widenLow(loadBytes<u8x16, 8>(near + x)), c = widenLow(loadBytes<u8x16, 8>(next + x));
        return a + a + a + c;
    }
    int one(std::ptrdiff_t x) const { return 3 * near[x] + next[x]; }
};

// A row of width samples becomes one of twice as many.
inline void doubleRow(const RowSums& s, std::ptrdiff_t width, Vek8u* dst) {
    const auto between = [](int a, int b) { return static_cast<Vek8u>((3 * a + b + 8) >> 4); };
    const auto pair = [&](std::ptrdiff_t x) {
        const int here = s.one(x);
        dst[2 * x] = between(here, x > 0 ? s.one(x - 1) : here);
        dst[2 * x + 1] = between(here, x + 1 < width ? s.one(x + 1) : here);
    };
    pair(0);
    std::ptrdiff_t x = 1;
    if (width >= 10) {  // eight columns with a neighbour on both sides; the last group may overlap the one before
        const i16x8 rounding = constant<i16x8, 8>();
        for (; x < width - 1; x += 8) {
            x = std::min(x, width - 9);
            const i16x8 here = s.eight(x), three = here + here + here + rounding;
            const i16x8 left = (three + s.eight(x - 1)) >> 4, right = (three + s.eight(x + 1)) >> 4;
            store(dst + 2 * x, as<u8x16>(left | right << 8));
        }
    }
    for (; x < width; ++x) pair(x);
}

// A row between two others: (3 A + C + 2) >> 2.
inline void rowBetween(const RowSums& s, std::ptrdiff_t width, Vek8u* dst) {
    std::ptrdiff_t x = 0;
    if (width >= 8) {
        for (; x < width; x += 8) {
            x = std::min(x, width - 8);
            const i16x8 value = (s.eight(x) + constant<i16x8, 2>()) >> 2;
            storeBytes<8>(dst + x, narrowU8(value, value));
        }
    }
    for (; x < width; ++x) dst[x] = static_cast<Vek8u>((s.one(x) + 2) >> 2);
}

inline void upsample2x(const Vek8u* src, std::ptrdiff_t srcStep, VekiSize size, Vek8u* dst, std::ptrdiff_t dstStep,
                       mpeg4::Doubled doubled) {
    const auto row = [=](std::ptrdiff_t y) { return src + clip3(0, size.height - 1, y) * srcStep; };
    for (std::ptrdiff_t y = 0; y < size.height; ++y) {
        if (doubled == mpeg4::Doubled::horizontally) {
            doubleRow({row(y), row(y)}, size.width, dst + y * dstStep);
            continue;
        }
        for (const int lower : {0, 1}) {
            const RowSums s = {row(y), row(lower != 0 ? y + 1 : y - 1)};
            Vek8u* const to = dst + (2 * y + lower) * dstStep;
            if (doubled == mpeg4::Doubled::both)
                doubleRow(s, size.width, to);
            else
                rowBetween(s, size.width, to);
        }
    }
}

// ---- resampling

// The part of a picture from (left, top) on, sample by sample, apart from the code of groups. The record is copied, so
// that the samples written cannot be parts of it: it need not be read anew for each.
[[gnu::noinline]] inline void resampleApart(const mpeg4::Resampling& all, int left, int top, VekiSize size) {
    const mpeg4::Resampling r = all;
    for (int y = top; y < top + size.height; ++y)
        for (int x = left; x < left + size.width; ++x)
            r.dst[y * r.dstStep + x] =
                plain::resampledSample(r, opaque(r.mapX.at(x, y) >> r.shift), opaque(r.mapY.at(x, y) >> r.shift));
}

inline void resample(const mpeg4::Resampling& r) {
    if (!EightColumns::possible(r.srcSize, r.dstSize.width)) return resampleApart(r, 0, 0, r.dstSize);
    const AffineScale scale = {r.shift, 4, 127 + r.roundControl};
    // The way from one column to the next, which the last element of a map changes from row to row.
    const auto perColumn = [&](const mpeg4::ResampleMap& map, int y) {
        return ColumnSteps(static_cast<std::int64_t>(static_cast<std::uint64_t>(map.at(1, y)) -
                                                     static_cast<std::uint64_t>(map.at(0, y))),
                           scale);
    };
    for (int y = 0; y < r.dstSize.height; ++y) {
        Vek8u* const dst = r.dst + y * r.dstStep;
        forColumns(
            r.mapX.at(0, y), perColumn(r.mapX, y), r.mapY.at(0, y), perColumn(r.mapY, y), scale, r.srcSize,
            r.fillValue < 0, r.dstSize.width,
            [&](const EightColumns& columns, int x) { columns.interpolate(r.src, r.srcStep, dst + x); },
            [&](int x) {
                resampleApart(r, x, y, {8, 1});
            });
    }
}

}  // namespace vekvc::simd

#endif
