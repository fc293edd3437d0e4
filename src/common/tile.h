// Short rows of 8-bit samples gathered in one vector: Tile<W, R> holds R rows of W samples.
#ifndef VEKVC_COMMON_TILE_H
#define VEKVC_COMMON_TILE_H

#include <utility>

#include "common/halfpel.h"
#include "core/memory.h"
#include "core/simd.h"

namespace vekvc::simd {

// R rows of W bytes; the samples fill the vector's low bytes, row after row.
template <int W, int R>
struct Tile {
    static u8x16 load(const Vek8u* p, std::ptrdiff_t step) {
        if constexpr (R == 1) {
            return loadBytes<u8x16, W>(p);
        } else if constexpr (W == 8) {
            return loadPair8<u8x16>(p, p + step);
        } else if constexpr (R == 2 && W == 4) {
            return loadPair4<u8x16>(p, p + step);
        } else if constexpr (R == 2) {
            return as<u8x16>(
                interleaveLow(as<u16x8>(loadBytes<u8x16, 2>(p)), as<u16x8>(loadBytes<u8x16, 2>(p + step))));
        } else {  // the two halves of the rows side by side
            const u8x16 a = Tile<W, R / 2>::load(p, step), b = Tile<W, R / 2>::load(p + R / 2 * step, step);
            if constexpr (W * R == 16)
                return as<u8x16>(interleaveLow(as<u64x2>(a), as<u64x2>(b)));
            else
                return as<u8x16>(interleaveLow(as<u32x4>(a), as<u32x4>(b)));
        }
    }

    static void store(Vek8u* p, std::ptrdiff_t step, u8x16 v) {
        if constexpr (R == 1) {
            storeBytes<W>(p, v);
        } else if constexpr (W == 8) {
            storePair8(p, p + step, v);
        } else {
            storeRows(p, step, v, std::make_integer_sequence<int, R>());
        }
    }

  private:
    template <int... row>
    static void storeRows(Vek8u* p, std::ptrdiff_t step, u8x16 v, std::integer_sequence<int, row...>) {
        (storeBytes<W>(p + row * step, bytesRight<row * W>(v)), ...);
    }
};

// How many rows of a W x H block go into one vector. Where each row is only loaded, averaged and stored, rows of 8 and
// 16 samples go one by one: joining rows costs more than it saves, also in 256 bits (8x8 vertical half-sample copy: 19
// against 12 cycles; g++ 12).
template <int W, int H>
inline constexpr int kTileRows = W >= 8       ? 1
                                 : W* H >= 16 ? 16 / W
                                              : H;

// The same where the samples are widened for a residual: whole vectors.
template <int W, int H>
inline constexpr int kWideTileRows = W* H >= 16 ? 16 / W : H;

// Calls use() once for every R of the H rows. Unrolled a little: further, the compilers would keep the addresses of all
// rows at once.
template <int H, int R, class Use>
[[gnu::always_inline]] inline void forTileRows(Use&& use) {
    static_assert(H % R == 0);
#pragma GCC unroll 8
    for (int y = 0; y < H; y += R) use();
}

// The same step, but a value of its own to the compiler: otherwise the address arithmetic of all cases of a switch is
// shared at its head and spilled (8x8 half-sample copy: 17 against 12 cycles; g++ 12).
inline std::ptrdiff_t ownStep(std::ptrdiff_t step) {
    asm("" : "+r"(step));
    return step;
}

// Reads or writes a block from the top, R rows at a time.
template <int W, int R>
class TileReader {
  public:
    TileReader(const Vek8u* p, std::ptrdiff_t step) : p_(p), step_(ownStep(step)) {}
    auto rows() {
        const auto v = Tile<W, R>::load(p_, step_);
        p_ += R * step_;
        return v;
    }

  private:
    const Vek8u* p_;
    std::ptrdiff_t step_;
};
template <int W, int R>
class TileWriter {
  public:
    TileWriter(Vek8u* p, std::ptrdiff_t step) : p_(p), step_(ownStep(step)) {}
    void rows(u8x16 v) {
        Tile<W, R>::store(p_, step_, v);
        p_ += R * step_;
    }

  private:
    Vek8u* p_;
    std::ptrdiff_t step_;
};

// The samples of a full- or half-sample position, R rows at a time from the top: each call of rows() gives the next R.
// The averages round up first and are corrected where the exact value is one less:
//   rounding 1:  (a + b) >> 1 = average(a, b) - ((a ^ b) & 1)
//   diagonal, with A = average(a, b), C = average(c, d), e = a ^ b, f = c ^ d (bit 0: what the averages rounded away):
//   rounding 0:  (a + b + c + d + 2) >> 2 = average(A, C) - ((A ^ C) & (e | f) & 1)
//   rounding 1:  (a + b + c + d + 1) >> 2 = average(A, C) - (((A ^ C) | (e & f)) & 1)
template <int W, int R, Half half, int rounding, int next = 1>
class Predictor {
  public:
    using T = Tile<W, R>;
    using V = u8x16;
    static constexpr bool kCarries = R == 1 && (half == Half::vertical || half == Half::both);

    Predictor(const Vek8u* p, std::ptrdiff_t step) : p_(p), step_(ownStep(step)) {
        if constexpr (kCarries) above_ = line(p);
    }

    [[gnu::always_inline]] V rows() {
        const Vek8u* p = p_;
        p_ += R * step_;
        if constexpr (half == Half::none || half == Half::horizontal) {
            return line(p).mean;
        } else {
            const Line top = kCarries ? above_ : line(p);
            const Line low = line(p + step_);
            above_ = low;
            const V mean = average(top.mean, low.mean);
            const V differ = top.mean ^ low.mean;
            if constexpr (half == Half::vertical)
                return rounding ? mean - (differ & ones()) : mean;
            else if constexpr (rounding == 0)
                return mean - (differ & (top.lost | low.lost) & ones());
            else
                return mean - ((differ | (top.lost & low.lost)) & ones());
        }
    }

  private:
    struct Line {
        V mean;  // of each sample and its neighbour in the cases that need it
        V lost;
    };
    static V ones() { return splat<V>(1); }
    [[gnu::always_inline]] Line line(const Vek8u* p) const {
        const V a = T::load(p, step_);
        if constexpr (half == Half::none || half == Half::vertical) {
            return {a, a};
        } else {
            const V b = T::load(p + next, step_);
            const V mean = average(a, b), differ = a ^ b;
            if constexpr (half == Half::horizontal && rounding == 1)
                return {mean - (differ & ones()), differ};
            else
                return {mean, differ};
        }
    }

    const Vek8u* p_;
    std::ptrdiff_t step_;
    Line above_ = {};
};

// A position by how its samples are formed. A mean of two may also be one of a sample with itself: the two lie `next`
// bytes, one row or nothing apart, so that all but the diagonal half-sample position are one kind, and two predictions
// need a kernel for each pair of kinds only, not for each of 31 pairs of positions and roundings. The vertical one by
// itself reads every row once.
enum class Mean { ofOne, ofTwo, ofRows, ofFour };

template <int W, int R, Mean mean, int rounding, int next = 1>
class Position : public Predictor<W, R,
                                  mean == Mean::ofOne    ? Half::none
                                  : mean == Mean::ofRows ? Half::vertical
                                                         : Half::both,
                                  rounding, next> {
  public:
    explicit Position(const Reference& ref) : Position::Predictor(ref.pixels, ref.step) {}
};
template <int W, int R, int rounding, int next>
class Position<W, R, Mean::ofTwo, rounding, next> {
  public:
    explicit Position(const Reference& ref)
        : p_(ref.pixels),
          step_(ownStep(ref.step)),
          distance_(ref.half == Half::vertical     ? ref.step
                    : ref.half == Half::horizontal ? next
                                                   : 0) {}
    [[gnu::always_inline]] u8x16 rows() {
        const u8x16 a = Tile<W, R>::load(p_, step_), b = Tile<W, R>::load(p_ + distance_, step_);
        p_ += R * step_;
        const u8x16 mean = average(a, b);
        return rounding ? mean - ((a ^ b) & splat<u8x16>(1)) : mean;
    }

  private:
    const Vek8u* p_;
    std::ptrdiff_t step_, distance_;
};

// Calls use<mean of one, mean of the other, rounding>(one, other) for two references in any order. Apart tells whether
// a vertical position beside a mean of two is worth a kernel of its own.
template <bool apart, class Use>
[[gnu::always_inline]] inline void withPositions(const Reference& f, const Reference& b, int rounding, Use&& use) {
    if (f.half == Half::none && b.half == Half::none) return use.template operator()<Mean::ofOne, Mean::ofOne, 0>(f, b);
    // The references are passed by name in each branch: chosen by a condition, they would go through memory.
    const auto with = [&]<Mean one, Mean other>(const Reference& r1, const Reference& r2)
        __attribute__((always_inline)) {
        return rounding ? use.template operator()<one, other, 1>(r1, r2)
                        : use.template operator()<one, other, 0>(r1, r2);
    };
    const bool fFour = f.half == Half::both, bFour = b.half == Half::both;
    if (fFour && bFour) return with.template operator()<Mean::ofFour, Mean::ofFour>(f, b);
    if (fFour) return with.template operator()<Mean::ofTwo, Mean::ofFour>(b, f);
    if (bFour) return with.template operator()<Mean::ofTwo, Mean::ofFour>(f, b);
    if constexpr (apart) {
        const bool fRows = f.half == Half::vertical, bRows = b.half == Half::vertical;
        if (fRows && !bRows) return with.template operator()<Mean::ofTwo, Mean::ofRows>(b, f);
        if (bRows && !fRows) return with.template operator()<Mean::ofTwo, Mean::ofRows>(f, b);
    }
    with.template operator()<Mean::ofTwo, Mean::ofTwo>(f, b);
}

}  // namespace vekvc::simd

#endif
