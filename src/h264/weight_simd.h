// Weighted prediction and averages of two predictions in vectors, for blocks of any size: columns 16, 8, 4 and 2
// samples wide, several short rows in one vector.
#ifndef VEKVC_H264_WEIGHT_SIMD_H
#define VEKVC_H264_WEIGHT_SIMD_H

#include "common/tile.h"
#include "h264/weight_plain.h"

namespace vekvc::simd {

// ---- walking over a block: op(a, b) makes the samples of the result

// One column of a block, R rows at a time, then the rows left over one by one.
template <int W, class Op>
[[gnu::always_inline]] inline void tileColumn(const Vek8u* a, const Vek8u* b, Vek8u* out, std::ptrdiff_t aStep,
                                              std::ptrdiff_t bStep, std::ptrdiff_t outStep, int height, Op op) {
    const auto rows = [&]<int R>(std::integral_constant<int, R>) {
#pragma GCC unroll 1
        for (; height >= R; height -= R) {
            Tile<W, R>::store(out, outStep, op(Tile<W, R>::load(a, aStep), Tile<W, R>::load(b, bStep)));
            a += R * aStep, b += R * bStep, out += R * outStep;
        }
    };
    rows(std::integral_constant<int, kTileRows<W, 4>>());
    if constexpr (kTileRows < W, 4 >> 1)
        if (height > 0) [[unlikely]]
            rows(std::integral_constant<int, 1>());
}
// The parts of a block that are no usual width. The last odd column is the plain form's: onlyColumn(x).
template <class Op, class Odd>
[[gnu::noinline]] void tileOdd(Block<Vek8u> a, Block<Vek8u> b, MutableBlock<Vek8u> out, VekiSize size, Op op,
                               Odd onlyColumn) {
    int x = 0;
    const auto columns = [&]<int W>(std::integral_constant<int, W>) {
        for (; x + W <= size.width; x += W)
            tileColumn<W>(a.base + x, b.base + x, out.base + x, a.step, b.step, out.step, size.height, op);
    };
    columns(std::integral_constant<int, 16>());
    columns(std::integral_constant<int, 8>());
    columns(std::integral_constant<int, 4>());
    columns(std::integral_constant<int, 2>());
    if (x < size.width) onlyColumn(x);
}
template <class Op, class Odd>
[[gnu::always_inline]] inline void tileBlock(Block<Vek8u> a, Block<Vek8u> b, MutableBlock<Vek8u> out, VekiSize size,
                                             Op op, Odd onlyColumn) {
    if (size.width == 16)
        tileColumn<16>(a.base, b.base, out.base, a.step, b.step, out.step, size.height, op);
    else if (size.width == 8)
        tileColumn<8>(a.base, b.base, out.base, a.step, b.step, out.step, size.height, op);
    else if (size.width == 4)
        tileColumn<4>(a.base, b.base, out.base, a.step, b.step, out.step, size.height, op);
    else
        tileOdd(a, b, out, size, op, onlyColumn);
}

// 16-bit samples: eight, four or two of a row at a time.
template <class Op, class Odd>
void tileBlock(Block<Vek16u> a, Block<Vek16u> b, MutableBlock<Vek16u> out, VekiSize size, Op op, Odd onlyColumn) {
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
    if (x < size.width) onlyColumn(x);
}

// The block from column x on.
template <class B>
B fromColumn(const B& block, int x) {
    return {block.at(x, 0), static_cast<Vek32s>(block.step)};
}

// ---- averages

template <class T>
[[gnu::always_inline]] inline void averageBlocks(Block<T> src1, Block<T> src2, MutableBlock<T> dst, VekiSize size) {
    tileBlock(
        src1, src2, dst, size, [](auto a, auto b) { return average(a, b); },
        [&](int x) {
            plain::averageBlocks(fromColumn(src1, x), fromColumn(src2, x), fromColumn(dst, x), {1, size.height});
        });
}

// ---- weights

// Sums in 16 bits. Where round is half of 2^shift, (sum + round) >> shift = (sum * 2^(15 - shift) + 2^14) >> 15.
struct Weigh16 {
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

    // Can this do it? The products must fit bytes, their sums 16 bits. A shift of 0 is one of 1 with twice the weights.
    [[gnu::always_inline]] static bool fits(const Weighting& w, Weigh16& result) {
        const int doubled = w.shift == 0, shift = w.shift + doubled;
        const std::int64_t twice1 = w.weight1 << doubled, twice2 = w.weight2 << doubled;
        const auto isByte = [](std::int64_t x) { return x >= -128 && x <= 127; };
        if (!isByte(twice1) || !isByte(twice2) || shift > 14) return false;
        if (w.offset < -32768 || w.offset > 32767) return false;
        const int w1 = static_cast<int>(twice1), w2 = static_cast<int>(twice2);
        const int most = (w1 > 0 ? w1 : 0) + (w2 > 0 ? w2 : 0), least = (w1 < 0 ? w1 : 0) + (w2 < 0 ? w2 : 0);
        if (most > 128 || least < -128) return false;  // 255 * 128 = 32640
        result = {(w1 & 255) | w2 * 256, 1 << (15 - shift), static_cast<int>(w.offset)};
        return true;
    }
};

// Sums in 32 bits, of samples of at most 14 bits.
struct Weigh32 {
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
        const auto isShort = [](std::int64_t x) { return x >= -32768 && x <= 32767; };
        if (!isShort(w.weight1) || !isShort(w.weight2) || w.shift > 30 || w.round > 1 << 29) return false;
        if (w.offset < -(1 << 29) || w.offset > 1 << 29) return false;
        const auto low = static_cast<std::uint32_t>(w.weight1) & 0xFFFF, high = static_cast<std::uint32_t>(w.weight2)
                                                                                << 16;
        result = {static_cast<int>(low | high), static_cast<int>(w.round), w.shift, static_cast<int>(w.offset),
                  maxSample};
        return true;
    }
};

// The column x of a block alone.
template <class T>
auto weightColumn(Block<T> src1, Block<T> src2, MutableBlock<T> dst, int height, const Weighting& w, int maxSample) {
    return [=](int x) {
        plain::weightTwo(fromColumn(src1, x), fromColumn(src2, x), fromColumn(dst, x), {1, height}, w, maxSample);
    };
}
template <class T>
[[gnu::noinline]] void weightTwoWide(Block<T> src1, Block<T> src2, MutableBlock<T> dst, VekiSize size,
                                     const Weighting& w, int maxSample) {
    Weigh32 wide;
    if (!Weigh32::fits(w, maxSample, wide)) return plain::weightTwo(src1, src2, dst, size, w, maxSample);
    tileBlock(src1, src2, dst, size, wide, weightColumn(src1, src2, dst, size.height, w, maxSample));
}
template <class T>
[[gnu::always_inline]] inline void weightTwo(Block<T> src1, Block<T> src2, MutableBlock<T> dst, VekiSize size,
                                             const Weighting& w, int maxSample) {
    if constexpr (sizeof(T) == 1)
        if (Weigh16 narrow; Weigh16::fits(w, narrow)) [[likely]]
            return tileBlock(src1, src2, dst, size, narrow, weightColumn(src1, src2, dst, size.height, w, maxSample));
    weightTwoWide(src1, src2, dst, size, w, maxSample);
}

// One prediction is two halves of itself: a weight of 128 has room in two bytes.
template <class T>
[[gnu::always_inline]] inline void weightOne(Block<T> src, MutableBlock<T> dst, VekiSize size, const Weighting& w,
                                             int maxSample) {
    const std::int64_t half = w.weight1 >> 1;
    weightTwo(src, src, dst, size, {half, w.weight1 - half, w.round, w.shift, w.offset}, maxSample);
}

}  // namespace vekvc::simd

#endif
