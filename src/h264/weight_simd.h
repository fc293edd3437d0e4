// Weighted prediction and averages of two predictions in vectors, for blocks of any size: columns 16, 8, 4 and 2
// samples wide, several short rows in one vector.
#ifndef VEKVC_H264_WEIGHT_SIMD_H
#define VEKVC_H264_WEIGHT_SIMD_H

#include "common/tile.h"
#include "h264/weight_plain.h"

namespace vekvc::simd {

// ---- walking over a block: op(a, b) makes the samples of the result; where Op::kOneSource is set, b is a;
// Op::kRows says how many rows of a width it takes at once

// One column of a block, R rows at a time, then the rows left over one by one.
template <int W, class Op>
[[gnu::always_inline]] inline void tileColumn(const Vek8u* a, const Vek8u* b, Vek8u* out, std::ptrdiff_t aStep,
                                              std::ptrdiff_t bStep, std::ptrdiff_t outStep, int height, Op op) {
    const auto rows = [&]<int R>(std::integral_constant<int, R>) {
#pragma GCC unroll 2
        for (; height >= R; height -= R) {
            const auto first = Tile<W, R>::load(a, aStep);
            if constexpr (Op::kOneSource) {
                Tile<W, R>::store(out, outStep, op(first, first));
            } else {
                Tile<W, R>::store(out, outStep, op(first, Tile<W, R>::load(b, bStep)));
                b += R * bStep;
            }
            a += R * aStep, out += R * outStep;
        }
    };
    constexpr int R = Op::template kRows<W>;
    rows(std::integral_constant<int, R>());
    if constexpr (R > 1)
        if (height > 0) [[unlikely]]
            rows(std::integral_constant<int, 1>());
}
// Blocks 16, 8 and 4 wide; false for others.
template <class Op>
[[gnu::always_inline]] inline bool tileBlock(Block<Vek8u> a, Block<Vek8u> b, MutableBlock<Vek8u> out, VekiSize size,
                                             Op op) {
    if (size.width == 16)
        tileColumn<16>(a.base, b.base, out.base, a.step, b.step, out.step, size.height, op);
    else if (size.width == 8)
        tileColumn<8>(a.base, b.base, out.base, a.step, b.step, out.step, size.height, op);
    else if (size.width == 4)
        tileColumn<4>(a.base, b.base, out.base, a.step, b.step, out.step, size.height, op);
    else
        return false;
    return true;
}

// Blocks of any width, in columns of usual ones: gives the columns that are left over (0 or 1).
template <class Op>
int tileColumns(Block<Vek8u> a, Block<Vek8u> b, MutableBlock<Vek8u> out, VekiSize size, Op op) {
    int x = 0;
    const auto columns = [&]<int W>(std::integral_constant<int, W>) {
        for (; x + W <= size.width; x += W)
            tileColumn<W>(a.base + x, b.base + x, out.base + x, a.step, b.step, out.step, size.height, op);
    };
    columns(std::integral_constant<int, 16>());
    columns(std::integral_constant<int, 8>());
    columns(std::integral_constant<int, 4>());
    columns(std::integral_constant<int, 2>());
    return size.width - x;
}
template <class Op>
int tileColumns(Block<Vek16u> a, Block<Vek16u> b, MutableBlock<Vek16u> out, VekiSize size, Op op) {
    int x = 0;
    const auto columns = [&]<int W>(std::integral_constant<int, W>) {
        for (; x + W <= size.width; x += W)
            for (int y = 0; y < size.height; ++y)
                storeBytes<2 * W>(out.at(x, y),
                                  op(loadBytes<u16x8, 2 * W>(a.at(x, y)), loadBytes<u16x8, 2 * W>(b.at(x, y))));
    };
    columns(std::integral_constant<int, 8>());
    columns(std::integral_constant<int, 4>());
    columns(std::integral_constant<int, 2>());
    return size.width - x;
}
// The last column of a block alone, for the plain form.
template <class B>
B lastColumn(const B& block, int width) {
    return {block.at(width - 1, 0), static_cast<Vek32s>(block.step)};
}

// ---- averages

struct Average {
    static constexpr bool kOneSource = false;
    template <int W>
    static constexpr int kRows = kTileRows<W, 4>;
    template <class U>
    [[gnu::always_inline]] U operator()(U a, U b) const {
        return average(a, b);
    }
};

template <class T>
[[gnu::noinline]] void averageAnyWidth(Block<T> src1, Block<T> src2, MutableBlock<T> dst, VekiSize size) {
    if (tileColumns(src1, src2, dst, size, Average()) > 0)
        plain::averageBlocks(lastColumn(src1, size.width), lastColumn(src2, size.width), lastColumn(dst, size.width),
                             {1, size.height});
}
template <class T>
[[gnu::always_inline]] inline void averageBlocks(Block<T> src1, Block<T> src2, MutableBlock<T> dst, VekiSize size) {
    if constexpr (sizeof(T) == 1)
        if (tileBlock(src1, src2, dst, size, Average())) return;
    averageAnyWidth(src1, src2, dst, size);
}

// ---- weights

// Sums in 16 bits: (sum + half of 2^shift) >> shift = (sum * 2^(15 - shift) + 2^14) >> 15. One prediction is two halves of
// itself, so that a weight of 128 has room in two bytes.
template <bool oneSource>
struct Weigh16 {
    static constexpr bool kOneSource = oneSource;
    template <int W>
    static constexpr int kRows = kWideTileRows<W, 4>;
    int weights;  // weight1 and weight2, a byte each
    int factor;   // 2^(15 - shift)
    int offset;

    template <class U>
    [[gnu::always_inline]] U operator()(U a, U b) const {
        using V = Vec<std::int16_t, U::kBytes / 2>;
        using B = Vec<std::int8_t, U::kBytes>;
        const B both = as<B>(splat<V>(weights));
        const V scale = splat<V>(factor), added = splat<V>(offset);
        const V low = mulHighRound(mulAddPairs(interleaveLow(a, b), both), scale);
        const V high = mulHighRound(mulAddPairs(interleaveHigh(a, b), both), scale);
        return narrowU8(addSat(low, added), addSat(high, added));
    }

    // Can this do it? Each weight must fit a byte and the sums 16 bits: 255 * 128 = 32640. Weights of different signs keep
    // within that by themselves. A shift of 0 is one of 1 with twice the weights.
    [[gnu::always_inline]] static bool fits(const Weighting& w, Weigh16& result) {
        constexpr Vek32u kMost = 128;
        const auto within = [](Vek32s x, Vek32u limit) { return static_cast<Vek32u>(x) + limit <= 2 * limit; };
        if (!within(w.offset, 32767) || static_cast<Vek32u>(w.shift) > 14) return false;
        const int doubled = w.shift == 0;
        Vek32s w1 = w.weight1, w2 = w.weight2;
        if constexpr (oneSource) {
            if (!within(w1, kMost >> doubled)) return false;
            w1 <<= doubled;
            w2 = w1 - (w1 >> 1);
            w1 >>= 1;
        } else {
            const auto isByte = [&](Vek32s x) {
                return static_cast<Vek32u>(x) + (kMost >> doubled) < 2 * (kMost >> doubled);
            };
            if (!isByte(w1) || !isByte(w2) || !within(w1 + w2, kMost >> doubled)) return false;
            w1 <<= doubled;
            w2 <<= doubled;
        }
        result = {(w1 & 255) | w2 * 256, 1 << (15 - doubled) >> w.shift, w.offset};
        return true;
    }
};

// Sums in 32 bits, of samples of at most 14 bits.
struct Weigh32 {
    static constexpr bool kOneSource = false;
    template <int W>
    static constexpr int kRows = kWideTileRows<W, 4>;
    int weights;  // 16 bits each
    int round, shift, offset;
    int maxSample;

    [[gnu::always_inline]] i32x4 weigh(i16x8 pairs) const {
        return ((mulAddPairs(pairs, as<i16x8>(splat<i32x4>(weights))) + splat<i32x4>(round)) >> shift) +
               splat<i32x4>(offset);
    }
    [[gnu::always_inline]] u16x8 operator()(u16x8 a, u16x8 b) const {
        const u16x8 sums = narrowU16(weigh(as<i16x8>(interleaveLow(a, b))), weigh(as<i16x8>(interleaveHigh(a, b))));
        return min(sums, splat<u16x8>(maxSample));
    }
    [[gnu::always_inline]] u8x16 operator()(u8x16 a, u8x16 b) const {
        const u16x8 low = (*this)(as<u16x8>(widenLow(a)), as<u16x8>(widenLow(b)));
        const u16x8 high = (*this)(as<u16x8>(widenHigh(a)), as<u16x8>(widenHigh(b)));
        return narrowU8(as<i16x8>(low), as<i16x8>(high));
    }
#if VEKVC_VECTOR256
    [[gnu::always_inline]] u8x32 operator()(u8x32 a, u8x32 b) const {
        return join((*this)(lowHalf(a), lowHalf(b)), (*this)(highHalf(a), highHalf(b)));
    }
#endif

    // Two products are below 2^30 in magnitude where the weights have 16 bits.
    static bool fits(const Weighting& w, int maxSample, Weigh32& result) {
        const auto isShort = [](Vek32s x) { return x >= -32768 && x <= 32767; };
        if (!isShort(w.weight1) || !isShort(w.weight2) || w.shift > 30) return false;
        if (w.offset < -(1 << 29) || w.offset > 1 << 29) return false;
        const Vek32u low = static_cast<Vek32u>(w.weight1) & 0xFFFF, high = static_cast<Vek32u>(w.weight2) << 16;
        result = {static_cast<int>(low | high), w.shift >= 1 ? 1 << (w.shift - 1) : 0, w.shift, w.offset, maxSample};
        return true;
    }
};

template <class T>
[[gnu::noinline]] void weightAnyWidth(Block<T> src1, Block<T> src2, MutableBlock<T> dst, VekiSize size,
                                      const Weighting& w, int maxSample) {
    Weigh32 wide;
    if (!Weigh32::fits(w, maxSample, wide)) return plain::weightTwo(src1, src2, dst, size, w, maxSample);
    if (tileColumns(src1, src2, dst, size, wide) > 0)
        plain::weightTwo(lastColumn(src1, size.width), lastColumn(src2, size.width), lastColumn(dst, size.width),
                         {1, size.height}, w, maxSample);
}
template <class T, bool oneSource = false>
[[gnu::always_inline]] inline void weightTwo(Block<T> src1, Block<T> src2, MutableBlock<T> dst, VekiSize size,
                                             const Weighting& w, int maxSample) {
    if constexpr (sizeof(T) == 1)
        if (Weigh16<oneSource> narrow; narrow.fits(w, narrow) && tileBlock(src1, src2, dst, size, narrow)) return;
    weightAnyWidth(src1, src2, dst, size, w, maxSample);
}

template <class T>
[[gnu::always_inline]] inline void weightOne(Block<T> src, MutableBlock<T> dst, VekiSize size, const Weighting& w,
                                             int maxSample) {
    weightTwo<T, true>(src, src, dst, size, w, maxSample);
}

}  // namespace vekvc::simd

#endif
