// Luma interpolation of 8-bit samples, H.264 8.4.2.2.1: the half-sample values b, h and j of whole rows in vectors, and
// the quarter-sample values as their averages.
//
// A shape says how the rows of a block lie in vectors. V holds the 16-bit sums of kRows rows; U holds the samples of a
// group of 2 * kRows rows, in an order of the shape's own that its load, pack and store share. Its class Vertical gives
// the half samples h of one group after the other.
#ifndef VEKVC_H264_INTERPOLATE_LUMA_SIMD_H
#define VEKVC_H264_INTERPOLATE_LUMA_SIMD_H

#include <array>
#include <utility>

#include "core/memory.h"
#include "core/opaque.h"
#include "core/simd.h"
#include "h264/interpolate_copy_simd.h"
#include "h264/interpolate_luma16_simd.h"

namespace vekvc::simd {

// The taps (1, -5, 20, 20, -5, 1) on samples that come in pairs of neighbours. The sum of 8-bit samples lies in
// -10 * 255 .. 42 * 255: 16 bits hold it. The constants are taken from memory, once for a block.
struct LumaConstants {
    Filled<std::int16_t> first{static_cast<std::int16_t>(0xFB01)}, second{0x1414}, third{0x01FB}, half{1024};
};
inline constexpr LumaConstants kLumaConstants;

template <class U>
struct SixTaps {
    using V = Vec<std::int16_t, U::kBytes / 2>;
    using Pairs = Vec<std::int8_t, U::kBytes>;
    Pairs first, second, third;
    V half;

    [[gnu::always_inline]] SixTaps() {
        const LumaConstants* constants = opaque(&kLumaConstants);  // GCC 12 would build some in general registers
        first = load<Pairs>(&constants->first), second = load<Pairs>(&constants->second);
        third = load<Pairs>(&constants->third), half = load<V>(&constants->half);
    }
    [[gnu::always_inline]] V sum(U a, U b, U c) const {
        return mulAddPairs(a, first) + mulAddPairs(b, second) + mulAddPairs(c, third);
    }
    // (x + 16) >> 5
    [[gnu::always_inline]] V roundOnce(V x) const { return mulHighRound(x, half); }
};

// r without its first `dropped` vectors. Written out: GCC 12 keeps an array in memory whose indices it learns late.
template <int dropped, class V, std::size_t n>
[[gnu::always_inline]] inline void moveOn(V (&r)[n]) {
    [&]<std::size_t... k>(std::index_sequence<k...>) { ((r[k] = r[k + dropped]), ...); }
    (std::make_index_sequence<n - dropped>());
}

// (r0 - 5 r1 + 20 r2 + 20 r3 - 5 r4 + r5 + 512) >> 10 of sums r, short of the final clipping to 0..255. With a, b, c
// the sums of the outer, middle and inner pair, floor((a - 5b + 20c) / 16) = ((((a - b) >> 2) - b + c) >> 2) + c. All
// of it fits 16 bits but for "- b + c", which may reach +-33150; where it saturates the result is outside 0..255 all
// the same.
template <class V>
[[gnu::always_inline]] inline V roundTwice(V r0, V r1, V r2, V r3, V r4, V r5) {
    const V a = r0 + r5, b = r1 + r4, c = r2 + r3;
    const V sixteenth = (addSat(((a - b) >> 2) - b, c) >> 2) + c;
    return mulHighRound(sixteenth, constant<V, 512>());
}

// The bytes of a shuffle that puts two neighbours into each 16-bit lane; at(k) is the byte that holds the left one of
// output k, and the right one is at(k + 1).
using ByteOrder = std::array<std::uint8_t, 32>;
template <class At>
constexpr ByteOrder pairsOf(At at) {
    ByteOrder order = {};
    for (int i = 0; i < 32; ++i) order[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(at(i / 2, i % 2));
    return order;
}
template <class U>
[[gnu::always_inline]] inline U shuffled(U v, const ByteOrder& order) {
    return shuffleBytes(v, load<U>(order.data()));
}

// ---- 4 wide: two rows in a vector of 128 bits, groups of four rows

struct Luma4 {
    static constexpr int kWidth = 4, kRows = 2;
    using V = i16x8;
    using U = u8x16;

    [[gnu::always_inline]] static V horizontal(const SixTaps<U>& taps, const Vek8u* row0, const Vek8u* row1) {
        static constexpr auto order = [](int first) {
            return pairsOf([=](int k, int right) { return k % 8 / 4 * 8 + k % 4 + first + right; });
        };
        static constexpr ByteOrder k0 = order(0), k2 = order(2), k3 = order(3);
        const U s = loadPair8<U>(row0 - 2, row1 - 2), next = loadPair8<U>(row0 - 1, row1 - 1);
        return taps.sum(shuffled(s, k0), shuffled(s, k2), shuffled(next, k3));
    }
    [[gnu::always_inline]] static V between(V a, V b) { return alignRight<8>(b, a); }
    [[gnu::always_inline]] static U pack(V a, V b) { return narrowU8(a, b); }
    [[gnu::always_inline]] static U load(const Vek8u* p, std::ptrdiff_t step) {
        const Vek8u* const row2 = twoRowsOn(p, step);
        return insertBytes<3, 4>(insertBytes<2, 4>(loadPair4<U>(p, p + step), row2), row2 + step);
    }
    [[gnu::always_inline]] static void store(Vek8u* p, std::ptrdiff_t step, U v) {
        Vek8u* const row2 = twoRowsOn(p, step);
        storeLanes32([=](int y) { return (y < 2 ? p : row2) + y % 2 * step; }, as<u32x4>(v));
    }

    class Vertical {
      public:
        Vertical(const SixTaps<U>& taps, const Vek8u* p, std::ptrdiff_t step)
            : taps_(taps), next_(p + 2 * step), step_(step), above_(Luma4::load(p - 2 * step, step)) {}
        [[gnu::always_inline]] U group() {
            const U below = Luma4::load(next_, step_);
            next_ = twoRowsOn(twoRowsOn(next_, step_), step_);
            const U last = loadBytes<U, 4>(next_);
            const U r1 = alignRight<4>(below, above_), r5 = alignRight<4>(last, below);
            // Rows -2 to 1, each with the next one, and rows 2 to 5; two rows to a vector.
            const U outer = interleaveLow(above_, r1), inner = interleaveHigh(above_, r1);
            const U nextInner = interleaveLow(below, r5), nextOuter = interleaveHigh(below, r5);
            const V top = taps_.sum(outer, inner, nextInner), low = taps_.sum(inner, nextInner, nextOuter);
            above_ = below;
            return pack(taps_.roundOnce(top), taps_.roundOnce(low));
        }

      private:
        const SixTaps<U>& taps_;
        const Vek8u* next_;
        std::ptrdiff_t step_;
        U above_;  // the four rows from two above the group
    };
};

// ---- 8 wide: one row in a vector of 128 bits, groups of two rows; or two rows in 256 bits, groups of four

// The 13 samples around a row, as -2..5 and 3..10, and the pairs of them that begin with the samples from `first` - 2
// on.
constexpr ByteOrder pairsOf8(int first) {
    return pairsOf([=](int k, int right) {
        const int sample = k % 8 + first + right;
        return sample < 8 ? sample : sample + 3;
    });
}
inline constexpr ByteOrder kPairs8[3] = {pairsOf8(0), pairsOf8(2), pairsOf8(4)};

struct Luma8 {
#if VEKVC_VECTOR256
    static constexpr int kWidth = 8, kRows = 2;
    using V = i16x16;
    using U = u8x32;  // rows 0, 2, 1, 3

    [[gnu::always_inline]] static V horizontal(const SixTaps<U>& taps, const Vek8u* row0, const Vek8u* row1) {
        const U s = loadFour8<U>(row0 - 2, row0 + 3, row1 - 2, row1 + 3);
        return taps.sum(shuffled(s, kPairs8[0]), shuffled(s, kPairs8[1]), shuffled(s, kPairs8[2]));
    }
    [[gnu::always_inline]] static V between(V a, V b) { return highThenLow(a, b); }
    [[gnu::always_inline]] static U pack(V a, V b) { return narrowU8(a, b); }
    [[gnu::always_inline]] static U load(const Vek8u* p, std::ptrdiff_t step) {
        const Vek8u* const row2 = twoRowsOn(p, step);
        return loadFour8<U>(p, row2, p + step, row2 + step);
    }
    [[gnu::always_inline]] static void store(Vek8u* p, std::ptrdiff_t step, U v) {
        Vek8u* const row2 = twoRowsOn(p, step);
        storePair8(p, row2, lowHalf(v));
        storePair8(p + step, row2 + step, highHalf(v));
    }

    class Vertical {
      public:
        Vertical(const SixTaps<U>& taps, const Vek8u* p, std::ptrdiff_t step)
            : taps_(taps), next_(p - 2 * step), step_(step) {
            const u8x16 r0 = row(next_), r1 = row(next_ + step);
            next_ = twoRowsOn(next_, step);
            const u8x16 r2 = row(next_), r3 = row(next_ + step);
            next_ = twoRowsOn(next_, step);
            last_ = row(next_);
            next_ = oneRowOn(next_, step);
            pairs0_ = join(interleaveLow(r0, r1), interleaveLow(r1, r2));
            pairs2_ = join(interleaveLow(r2, r3), interleaveLow(r3, last_));
        }
        [[gnu::always_inline]] U group() {
            const V first = two();
            return pack(first, two());
        }

      private:
        [[gnu::always_inline]] static u8x16 row(const Vek8u* p) { return loadBytes<u8x16, 8>(p); }
        [[gnu::always_inline]] V two() {
            const u8x16 r5 = row(next_), r6 = row(next_ + step_);
            const U pairs4 = join(interleaveLow(last_, r5), interleaveLow(r5, r6));
            const V sum = taps_.sum(pairs0_, pairs2_, pairs4);
            pairs0_ = pairs2_;
            pairs2_ = pairs4;
            last_ = r6;
            next_ = twoRowsOn(next_, step_);
            return taps_.roundOnce(sum);
        }
        const SixTaps<U>& taps_;
        const Vek8u* next_;
        std::ptrdiff_t step_;
        u8x16 last_;         // the row before next_
        U pairs0_, pairs2_;  // rows (-2, -1) and (0, 1) of the next row, in the high half of the row after it
    };
#else
    static constexpr int kWidth = 8, kRows = 1;
    using V = i16x8;
    using U = u8x16;

    [[gnu::always_inline]] static V horizontal(const SixTaps<U>& taps, const Vek8u* row, const Vek8u*) {
        const U s = loadPair8<U>(row - 2, row + 3);
        return taps.sum(shuffled(s, kPairs8[0]), shuffled(s, kPairs8[1]), shuffled(s, kPairs8[2]));
    }
    [[gnu::always_inline]] static U pack(V a, V b) { return narrowU8(a, b); }
    [[gnu::always_inline]] static U load(const Vek8u* p, std::ptrdiff_t step) { return loadPair8<U>(p, p + step); }
    [[gnu::always_inline]] static void store(Vek8u* p, std::ptrdiff_t step, U v) { storePair8(p, p + step, v); }

    class Vertical {
      public:
        Vertical(const SixTaps<U>& taps, const Vek8u* p, std::ptrdiff_t step)
            : taps_(taps), next_(p + 3 * step), step_(step) {
            const Vek8u* row = p - 2 * step;
            last_ = loadBytes<U, 8>(row);
            for (U& pairs : pairs_) pairs = pairWith(row = oneRowOn(row, step));
        }
        [[gnu::always_inline]] U group() {
            const V first = one();
            return pack(first, one());
        }

      private:
        [[gnu::always_inline]] U pairWith(const Vek8u* row) {
            const U above = last_;
            last_ = loadBytes<U, 8>(row);
            return interleaveLow(above, last_);
        }
        [[gnu::always_inline]] V one() {
            const U pairs4 = pairWith(next_);
            const V sum = taps_.sum(pairs_[0], pairs_[2], pairs4);
            moveOn<1>(pairs_);
            pairs_[3] = pairs4;
            next_ += step_;
            return taps_.roundOnce(sum);
        }
        const SixTaps<U>& taps_;
        const Vek8u* next_;
        std::ptrdiff_t step_;
        U last_;      // the row before next_
        U pairs_[4];  // rows (-2, -1), (-1, 0), (0, 1), (1, 2) of the next row
    };
#endif
};

// ---- 16 wide: one row in a vector of 256 bits, groups of two rows

#if VEKVC_VECTOR256
struct Luma16 {
    static constexpr int kWidth = 16, kRows = 1;
    using V = i16x16;
    using U = u8x32;

    [[gnu::always_inline]] static V horizontal(const SixTaps<U>& taps, const Vek8u* row, const Vek8u*) {
        // Samples -2..13 for the outputs of the low half, 3..18 for those of the high half.
        static constexpr auto order = [](int first) {
            return pairsOf([=](int k, int right) { return k % 8 + k / 8 * 3 + first + right; });
        };
        static constexpr ByteOrder k0 = order(0), k2 = order(2), k4 = order(4);
        const U s = loadPair16<U>(row - 2, row + 3);
        return taps.sum(shuffled(s, k0), shuffled(s, k2), shuffled(s, k4));
    }
    // The half samples b of two rows: columns 0 to 7 of both, then 8 to 15, so that they lie in order when packed.
    [[gnu::always_inline]] static U horizontalTwo(const SixTaps<U>& taps, const Vek8u* row0, const Vek8u* row1) {
        static constexpr auto order = [](int first) {
            return pairsOf([=](int k, int right) { return k % 8 + first + right; });
        };
        static constexpr ByteOrder k0 = order(0), k2 = order(2), k4 = order(4), k3 = order(3), k5 = order(5),
                                   k7 = order(7);
        const U s = loadPair16<U>(row0 - 2, row1 - 2), right = loadPair16<U>(row0 + 3, row1 + 3);
        const V low = taps.sum(shuffled(s, k0), shuffled(s, k2), shuffled(s, k4));
        const V high = taps.sum(shuffled(right, k3), shuffled(right, k5), shuffled(right, k7));
        return narrowU8(taps.roundOnce(low), taps.roundOnce(high));
    }
    [[gnu::always_inline]] static U pack(V a, V b) { return shuffle64<0, 2, 1, 3>(narrowU8(a, b)); }
    [[gnu::always_inline]] static U load(const Vek8u* p, std::ptrdiff_t step) { return loadPair16<U>(p, p + step); }
    [[gnu::always_inline]] static void store(Vek8u* p, std::ptrdiff_t step, U v) { storePair16(p, p + step, v); }

    class Vertical {
      public:
        Vertical(const SixTaps<U>& taps, const Vek8u* p, std::ptrdiff_t step)
            : taps_(taps), next_(p + 2 * step), step_(step) {
            pairs0_ = pairs(p - 2 * step);
            pairs2_ = pairs(p);
        }
        [[gnu::always_inline]] U group() {
            const Pairs pairs4 = pairs(next_);
            const V low = taps_.sum(pairs0_.low, pairs2_.low, pairs4.low);
            const V high = taps_.sum(pairs0_.high, pairs2_.high, pairs4.high);
            pairs0_ = pairs2_;
            pairs2_ = pairs4;
            next_ = twoRowsOn(next_, step_);
            return narrowU8(taps_.roundOnce(low), taps_.roundOnce(high));
        }

      private:
        // Rows 0 and 1 side by side, with rows 1 and 2 in the high halves: columns 0 to 7, and 8 to 15.
        struct Pairs {
            U low, high;
        };
        [[gnu::always_inline]] Pairs pairs(const Vek8u* p) const {
            const U upper = loadPair16<U>(p, p + step_), lower = loadPair16<U>(p + step_, twoRowsOn(p, step_));
            return {interleaveLow(upper, lower), interleaveHigh(upper, lower)};
        }
        const SixTaps<U>& taps_;
        const Vek8u* next_;
        std::ptrdiff_t step_;
        Pairs pairs0_, pairs2_;
    };
};
#endif

template <int W>
using LumaShape =
#if VEKVC_VECTOR256
    std::conditional_t<W == 16, Luma16, std::conditional_t<W == 8, Luma8, Luma4>>;
#else
    std::conditional_t<W == 8, Luma8, Luma4>;
#endif

// ---- the half-sample values that need sums of rows

// The half samples b of one group after the other.
template <class S>
class LumaHorizontal {
  public:
    LumaHorizontal(const SixTaps<typename S::U>& taps, const Vek8u* p, std::ptrdiff_t step)
        : taps_(taps), p_(p), step_(step) {}
    [[gnu::always_inline]] typename S::U group() {
        if constexpr (requires { S::horizontalTwo(taps_, p_, p_); }) {
            const Vek8u* const row0 = p_;
            p_ = twoRowsOn(p_, step_);
            return S::horizontalTwo(taps_, row0, row0 + step_);
        }
        const auto first = rows(), second = rows();
        return S::pack(taps_.roundOnce(first), taps_.roundOnce(second));
    }

  private:
    [[gnu::always_inline]] typename S::V rows() {
        const Vek8u* const second = oneRowOn(p_, step_);
        const auto sums = S::horizontal(taps_, p_, second);
        p_ = S::kRows == 1 ? second : twoRowsOn(p_, step_);
        return sums;
    }
    const SixTaps<typename S::U>& taps_;
    const Vek8u* p_;
    std::ptrdiff_t step_;
};

// The half samples j of one group after the other, with the half samples of its rows: b, or s if `below` is 1.
template <class S, int below>
class LumaCentre {
  public:
    using V = typename S::V;
    LumaCentre(const SixTaps<typename S::U>& taps, const Vek8u* p, std::ptrdiff_t step)
        : taps_(taps), next_(p - 2 * step), step_(step) {
        const Vek8u* const top = next_;
        if constexpr (S::kRows == 1) {
            [&]<std::size_t... k>(std::index_sequence<k...>) {
                ((r_[k] = rows(next_), next_ = oneRowOn(next_, step)), ...);
            }
            (std::make_index_sequence<5>());
        } else {
            next_ = oneRowOn(next_, step);
            r_[1] = rows(next_);
            next_ = twoRowsOn(next_, step);
            r_[3] = rows(next_);
            next_ = twoRowsOn(next_, step);
            r_[0] = S::between(S::horizontal(taps_, top, top), r_[1]);
            r_[2] = S::between(r_[1], r_[3]);
        }
    }
    struct Group {
        typename S::U centre, rows;
    };
    [[gnu::always_inline]] Group group() {
        if constexpr (S::kRows == 1) {
            r_[5] = rows(next_);
            r_[6] = rows(oneRowOn(next_, step_));
            next_ = twoRowsOn(next_, step_);
        } else {
            r_[5] = rows(next_);
            next_ = twoRowsOn(next_, step_);
            r_[7] = rows(next_);
            next_ = twoRowsOn(next_, step_);
            r_[4] = S::between(r_[3], r_[5]);
            r_[6] = S::between(r_[5], r_[7]);
        }
        const V* second = r_ + S::kRows;
        const Group result{S::pack(roundTwice(r_[0], r_[1], r_[2], r_[3], r_[4], r_[5]),
                                   roundTwice(second[0], second[1], second[2], second[3], second[4], second[5])),
                           S::pack(taps_.roundOnce(r_[2 + below]), taps_.roundOnce(second[2 + below]))};
        moveOn<kGroup>(r_);
        return result;
    }

  private:
    static constexpr int kGroup = 2 * S::kRows, kWindow = 6 + S::kRows;
    [[gnu::always_inline]] V rows(const Vek8u* p) const { return S::horizontal(taps_, p, oneRowOn(p, step_)); }
    const SixTaps<typename S::U>& taps_;
    const Vek8u* next_;
    std::ptrdiff_t step_;
    V r_[kWindow];  // sums of the rows from 2 above the group on, each with kRows - 1 more
};

// ---- the sixteen positions (Table 8-12)

template <class S, int dx, int dy>
[[gnu::always_inline]] inline VekStatus lumaColumn(const Vek8u* src, std::ptrdiff_t srcStep, Vek8u* dst,
                                                   std::ptrdiff_t dstStep, Vek32s height) {
    constexpr int kGroup = 2 * S::kRows;
    constexpr int right = dx == 3, below = dy == 3;  // of the two integer samples or half samples the second one
    const auto rowsOn = [](auto* p, std::ptrdiff_t step) {
        return kGroup == 2 ? twoRowsOn(p, step) : twoRowsOn(twoRowsOn(p, step), step);
    };
    const SixTaps<typename S::U> taps;
    const auto forGroups = [&](auto&& value) {
        do {
            S::store(dst, dstStep, value());
            src = rowsOn(src, srcStep), dst = rowsOn(dst, dstStep);
        } while ((height -= kGroup) != 0);
        return vekStsOk;
    };
    if constexpr (dy == 0) {
        LumaHorizontal<S> b(taps, src, srcStep);
        return forGroups([&] { return dx == 2 ? b.group() : average(S::load(src + right, srcStep), b.group()); });
    } else if constexpr (dx == 0) {
        typename S::Vertical h(taps, src, srcStep);
        return forGroups(
            [&] { return dy == 2 ? h.group() : average(S::load(src + below * srcStep, srcStep), h.group()); });
    } else if constexpr (dx != 2 && dy != 2) {
        LumaHorizontal<S> b(taps, src + below * srcStep, srcStep);
        typename S::Vertical h(taps, src + right, srcStep);
        return forGroups([&] { return average(b.group(), h.group()); });
    } else if constexpr (dx == 2) {
        LumaCentre<S, below> j(taps, src, srcStep);
        return forGroups([&] {
            const auto group = j.group();
            return dy == 2 ? group.centre : average(group.centre, group.rows);
        });
    } else {
        LumaCentre<S, 0> j(taps, src, srcStep);
        typename S::Vertical h(taps, src + right, srcStep);
        return forGroups([&] { return average(j.group().centre, h.group()); });
    }
}

// The kernel for a width and a position, 4 * dy + dx. It takes its arguments where the exports have them and returns
// vekStsOk: an export ends in a jump.
template <int W, int position>
VekStatus lumaKernel(const Vek8u* src, std::ptrdiff_t srcStep, Vek8u* dst, std::ptrdiff_t dstStep, Vek32s height) {
    constexpr bool isOne = W == 4 || W == 8 || (W == 16 && (VEKVC_VECTOR256 || position == 0));
    if constexpr (!isOne) {  // no partition's width, or wider than the vectors: two columns
        constexpr int first = W > 16 ? 16 : W == 12 ? 4 : 8;
        lumaKernel<first, position>(src, srcStep, dst, dstStep, height);
        return lumaKernel<W - first, position>(src + first, srcStep, dst + first, dstStep, height);
    } else if constexpr (position == 0) {
        return copyColumn<W, 4>(src, srcStep, dst, dstStep, height);
    } else {
        return lumaColumn<LumaShape<W>, position % 4, position / 4>(src, srcStep, dst, dstStep, height);
    }
}

// For every width and position: 4 * width + position.
using LumaKernel = VekStatus (*)(const Vek8u*, std::ptrdiff_t, Vek8u*, std::ptrdiff_t, Vek32s);
template <std::size_t... i>
constexpr std::array<LumaKernel, 128> lumaKernels(std::index_sequence<i...>) {
    return {(i < 16 ? nullptr : lumaKernel < i < 16 ? 4 : i / 16 * 4, i % 16 >)...};
}
inline constexpr auto kLumaKernels = lumaKernels(std::make_index_sequence<128>());

[[gnu::always_inline]] inline VekStatus interpolateLuma(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep,
                                                        Vek32s dx, Vek32s dy, VekiSize size, int) {
    const auto kernel = kLumaKernels[static_cast<Vek32u>(4 * size.width + 4 * dy + dx)];
    return kernel(pSrc, srcStep, pDst, dstStep, size.height);
}

}  // namespace vekvc::simd

#endif
