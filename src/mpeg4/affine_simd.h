// Rows of samples that lie on a line through another picture: positions by an affine map, values between four samples.
// The common part of warps and of reference picture resampling.
#ifndef VEKVC_MPEG4_AFFINE_SIMD_H
#define VEKVC_MPEG4_AFFINE_SIMD_H

#include <algorithm>
#include <cstdint>
#include <type_traits>

#include "core/arith.h"
#include "core/memory.h"
#include "core/simd.h"

namespace vekvc::simd {

// How positions and values are rounded: coordinates >> shift are in 1/s samples, values (sum + rounding) >> (2 bits).
struct AffineScale {
    int shift, bits;  // bits: log2 of s, 1 to 4
    int rounding;     // at most s * s / 2
};

// One coordinate's way from a column to the next, and its multiples for eight columns.
struct ColumnSteps {
    std::int64_t perColumn;
    bool bounded;  // 7 columns stay far from 2^63
    bool narrow;   // 32 bits hold 7 columns and a remainder below 2^(shift + bits)
    i32x4 low, high;

    [[gnu::always_inline]] ColumnSteps(std::int64_t step, const AffineScale& scale)
        : perColumn(step),
          bounded(step > -(std::int64_t{1} << 40) && step < std::int64_t{1} << 40),
          narrow(scale.shift <= 24 && step >= -(1 << 27) && step <= 1 << 27),
          low(splat<i32x4>(step) * lanes<i32x4>(0, 1, 2, 3)),
          high(splat<i32x4>(step) * lanes<i32x4>(4, 5, 6, 7)) {}
};

// One coordinate of eight columns: the whole samples of the first and, relative to it, of the last one.
struct EightPositions {
    std::int64_t first, last, remainder;

    [[gnu::always_inline]] EightPositions(std::int64_t start, const ColumnSteps& steps, const AffineScale& scale) {
        const int wholeShift = scale.shift + scale.bits;
        remainder = start & ((std::int64_t{1} << wholeShift) - 1);
        first = start >> wholeShift;
        last = (remainder + 7 * steps.perColumn) >> wholeShift;
    }
    [[gnu::always_inline]] std::int64_t least() const { return first + std::min<std::int64_t>(last, 0); }
    [[gnu::always_inline]] std::int64_t most() const { return first + std::max<std::int64_t>(last, 0); }
    [[gnu::always_inline]] bool within(int span) const { return last >= -span && last <= span; }
    // Is the first one so near that no coordinate wraps on the way to the last? That would be at 2^63 >> (31 + 4).
    bool bounded() const { return first > -kFarthest && first < kFarthest; }
    static constexpr std::int64_t kFarthest = 1 << 24;
    // All of them, if they are within 14 samples, in 1/s samples from the first whole one on.
    [[gnu::always_inline]] i16x8 distances(const ColumnSteps& steps, const AffineScale& scale) const {
        if (steps.narrow) [[likely]] {
            const i32x4 base = splat<i32x4>(remainder);
            return narrowI16((base + steps.low) >> scale.shift, (base + steps.high) >> scale.shift);
        }
        Vek16s each[8];
        for (int i = 0; i < 8; ++i) each[i] = static_cast<Vek16s>((remainder + i * steps.perColumn) >> scale.shift);
        return load<i16x8>(each);
    }
};

// The value between two rows, whose pairs of neighbours are already weighted: (s - v) upper + v lower. At most
// 16 * 16 * 255 + 128, in 16 bits without sign.
[[gnu::always_inline]] inline u16x8 betweenRows(i16x8 upper, i16x8 lower, i16x8 v, const AffineScale& scale) {
    const i16x8 sum = (upper << scale.bits) + v * (lower - upper) + splat<i16x8>(scale.rounding);
    return as<u16x8>(sum) >> (2 * scale.bits);
}

// What eight columns lie between, if they are near each other.
class EightColumns {
  public:
    // Are there such groups in a picture, and in rows of `width` columns? A group reads 16 samples of a row.
    static bool possible(VekiSize size, int width) {
        return width >= 8 && size.width >= 16 && std::max(size.width, size.height) < EightPositions::kFarthest;
    }
    // Do they span no more than 16 columns, and two or three rows?
    [[gnu::always_inline]] static bool near(const EightPositions& x, const EightPositions& y) {
        return x.within(14) && y.within(1);
    }
    // Are all samples that they lie between inside the picture?
    [[gnu::always_inline]] static bool inside(const EightPositions& x, const EightPositions& y, VekiSize size) {
        return x.least() >= 0 && x.most() + 1 < size.width && y.least() >= 0 && y.most() + 1 < size.height;
    }

    // Coordinates are limited to the picture, which those inside() can do without.
    template <bool limited>
    [[gnu::always_inline]] EightColumns(std::bool_constant<limited>, const EightPositions& x, const ColumnSteps& fSteps,
                                        const EightPositions& y, const ColumnSteps& gSteps, const AffineScale& scale,
                                        VekiSize size)
        : scale_(scale), threeRows_(y.last != 0) {
        const i16x8 f = x.distances(fSteps, scale), g = y.distances(gSteps, scale);
        const i16x8 fractionBits = splat<i16x8>((1 << scale.bits) - 1), u = f & fractionBits;
        down_ = g & fractionBits;
        weights_ = as<i8x16>(splat<i16x8>(1 << scale.bits) + (u << 8) - u);
        inUpper_ = (g >> scale.bits) == splat<i16x8>(y.least() - y.first);
        for (int k = 0; k < 3; ++k) row_[k] = y.least() + k;
        column_ = std::min<std::int64_t>(x.least(), size.width - 16);
        if constexpr (limited) {
            for (auto& row : row_) row = clip3(0, size.height - 1, row);
            column_ = std::max<std::int64_t>(column_, 0);
            // Further than 32 samples away, all eight are beyond the same end of what is read.
            const i16x8 left = (f >> scale.bits) + splat<i16x8>(clip3(-32, 32, x.first - column_));
            const i16x8 none = zero<i16x8>(), end = constant<i16x8, 15>();
            const auto within = [&](i16x8 index) { return max(min(index, end), none); };
            order_ = as<u8x16>(within(left) | within(left + constant<i16x8, 1>()) << 8);
        } else {
            const i16x8 left = (f >> scale.bits) + splat<i16x8>(x.first - column_);
            order_ = as<u8x16>(left * constant<i16x8, 0x0101>() + constant<i16x8, 0x0100>());
        }
    }

    [[gnu::always_inline]] void interpolate(const Vek8u* src, std::ptrdiff_t step, Vek8u* dst) const {
        const auto across = [&](int k) {
            const auto samples = load<u8x16>(src + row_[k] * step + column_);
            return mulAddPairs(shuffleBytes(samples, order_), weights_);
        };
        i16x8 upper = across(0), lower = across(1);
        if (threeRows_) {
            const i16x8 last = across(2);
            upper = select(inUpper_, upper, lower);
            lower = select(inUpper_, lower, last);
        }
        const auto value = as<i16x8>(betweenRows(upper, lower, down_, scale_));
        storeBytes<8>(dst, narrowU8(value, value));
    }

  private:
    const AffineScale& scale_;
    std::int64_t row_[3], column_;  // what is read
    bool threeRows_;
    u8x16 order_;  // picks the pairs of neighbours from a row
    i8x16 weights_;
    i16x8 inUpper_, down_;
};

// A row of `width` columns whose first one lies at (f, g), in groups of eight of which the last may overlap the one
// before: together(columns, x) does those from x on; where they are not near each other or, unless coordinates are to
// be limited, reach beyond the picture, oneByOne(x). EightColumns must be possible.
template <class Together, class OneByOne>
[[gnu::always_inline]] inline void forColumns(std::int64_t f, const ColumnSteps& fSteps, std::int64_t g,
                                              const ColumnSteps& gSteps, const AffineScale& scale, VekiSize size,
                                              bool limited, int width, Together&& together, OneByOne&& oneByOne) {
    const auto at = [](std::int64_t start, const ColumnSteps& steps, int x) {
        return static_cast<std::int64_t>(static_cast<std::uint64_t>(start) +
                                         static_cast<std::uint64_t>(steps.perColumn) * static_cast<std::uint64_t>(x));
    };
    for (int x = 0; x < width; x += 8) {
        x = std::min(x, width - 8);
        if (fSteps.bounded && gSteps.bounded) [[likely]] {
            const EightPositions across(at(f, fSteps, x), fSteps, scale), down(at(g, gSteps, x), gSteps, scale);
            if (EightColumns::near(across, down)) [[likely]] {
                if (EightColumns::inside(across, down, size)) [[likely]] {
                    together(EightColumns(std::false_type(), across, fSteps, down, gSteps, scale, size), x);
                    continue;
                }
                if (limited && across.bounded() && down.bounded()) {
                    together(EightColumns(std::true_type(), across, fSteps, down, gSteps, scale, size), x);
                    continue;
                }
            }
        }
        oneByOne(x);
    }
}

}  // namespace vekvc::simd

#endif
