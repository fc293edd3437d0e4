// Weighted prediction and averages of two predictions in vectors: kernels for the blocks of motion compensation, and
// columns 16, 8, 4 and 2 samples wide for all others.
#ifndef VEKVC_H264_WEIGHT_SIMD_H
#define VEKVC_H264_WEIGHT_SIMD_H

#include "common/tile.h"
#include "h264/row_group_simd.h"
#include "h264/weight_plain.h"

namespace vekvc::simd {

// ---- blocks of any size: op(a, b) makes the samples of the result; Op::kRows says how many rows of a width it takes
// at once

// One column of a block, R rows at a time, then the rows left over one by one.
template <int W, class Op>
[[gnu::always_inline]] inline void tileColumn(const Vek8u* a, const Vek8u* b, Vek8u* out, std::ptrdiff_t aStep,
                                              std::ptrdiff_t bStep, std::ptrdiff_t outStep, int height, Op op) {
    const auto rows = [&]<int R>(std::integral_constant<int, R>) {
#pragma GCC unroll 2
        for (; height >= R; height -= R) {
            const auto first = Tile<W, R>::load(a, aStep);
            Tile<W, R>::store(out, outStep, op(first, Tile<W, R>::load(b, bStep)));
            a += R * aStep, b += R * bStep, out += R * outStep;
        }
    };
    constexpr int R = Op::template kRows<W>;
    rows(std::integral_constant<int, R>());
    if constexpr (R > 1)
        if (height > 0) [[unlikely]]
            rows(std::integral_constant<int, 1>());
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
    template <int W>
    static constexpr int kRows = kTileRows<W, 4>;
    template <class U>
    [[gnu::always_inline]] U operator()(U a, U b) const {
        return average(a, b);
    }
};
template <class T>
[[gnu::noinline]] VekStatus averageAnySize(Block<T> src1, Block<T> src2, MutableBlock<T> dst, VekiSize size) {
    if (tileColumns(src1, src2, dst, size, Average()) > 0)
        plain::averageBlocks(lastColumn(src1, size.width), lastColumn(src2, size.width), lastColumn(dst, size.width),
                             {1, size.height});
    return vekStsOk;
}
// Rows are averaged one by one: joining them would cost more than the average.
template <int W>
[[gnu::always_inline]] inline VekStatus averageColumn(Block<Vek8u> a, Block<Vek8u> b, MutableBlock<Vek8u> dst,
                                                      Vek32s height) {
    if (height % 4 != 0) [[unlikely]]
        return averageAnySize(a, b, dst, {W, height});
    const auto twoRows = [&] {
        const auto mean = [&](int y) {
            return average(loadBytes<u8x16, W>(a.at(0, y)), loadBytes<u8x16, W>(b.at(0, y)));
        };
        const u8x16 first = mean(0), second = mean(1);
        storeBytes<W>(dst.base, first);
        storeBytes<W>(dst.at(0, 1), second);
        a.base = groupOn<2>(a.base, a.step), b.base = groupOn<2>(b.base, b.step);
        dst.base = groupOn<2>(dst.base, dst.step);
    };
    do {
        twoRows();
        twoRows();
    } while ((height -= 4) != 0);
    return vekStsOk;
}
template <class T>
[[gnu::always_inline]] inline VekStatus averageBlocks(Block<T> src1, Block<T> src2, MutableBlock<T> dst,
                                                      VekiSize size) {
    if constexpr (sizeof(T) == 1) {
        if (size.width == 16) return averageColumn<16>(src1, src2, dst, size.height);
        if (size.width == 8) return averageColumn<8>(src1, src2, dst, size.height);
        if (size.width == 4) return averageColumn<4>(src1, src2, dst, size.height);
    }
    return averageAnySize(src1, src2, dst, size);
}

// ---- weights
//
// Sums in 16 bits: (sum + half of 2^shift) >> shift = (sum * 2^(15 - shift) + 2^14) >> 15, for shifts from 1 on.

// Two predictions. Weights that fit a byte and whose sum lies within +-128 keep the sums within 16 bits: 255 * 128 =
// 32640. Weights of different signs keep within that by themselves.
// The kernels get what is loaded, scales and powers, in all lanes of 128 bits, what is computed in the lowest ones.
template <class V>
[[gnu::always_inline]] inline V inAllLanes(i16x8 splat) {
#if VEKVC_VECTOR256
    if constexpr (!is128<V>)
        return join(splat, splat);
    else
#endif
        return splat;
}
template <bool hasOffset, class U>
struct WeighTwo {
    using V = Vec<std::int16_t, U::kBytes / 2>;
    V weights, scale, offset;  // the weights a byte each

    explicit WeighTwo(i16x8 w, i16x8 s, i16x8 o = zero<i16x8>())
        : weights(splatLowest<V>(w)), scale(inAllLanes<V>(s)), offset(splatLowest<V>(o)) {}
    [[gnu::always_inline]] U operator()(U a, U b) const {
        return narrowU8(weigh(interleaveLow(a, b)), weigh(interleaveHigh(a, b)));
    }
    [[gnu::always_inline]] U operator()(U a0, U b0, U a1, U b1) const {
        return narrowU8(weigh(interleaveLow(a0, b0)), weigh(interleaveLow(a1, b1)));
    }
    [[gnu::always_inline]] V weigh(U pairs) const {
        const V rounded = mulHighRound(mulAddPairs(pairs, as<Vec<std::int8_t, U::kBytes>>(weights)), scale);
        return hasOffset ? addSat(rounded, offset) : rounded;
    }
};
template <class U>
using WeighTwoWithOffset = WeighTwo<true, U>;
template <class U>
using WeighTwoWithout = WeighTwo<false, U>;
// One prediction, in place, for weights and offsets that fit a byte and shifts up to 7: p * weight + 2^shift * offset
// is a sum of two products too. Where it saturates at 16 bits, the result is outside 0..255 all the same (or 255).
template <class U>
struct WeighOne {
    using V = Vec<std::int16_t, U::kBytes / 2>;
    V weights, scale;  // weight and offset a byte each
    U power;

    WeighOne(i16x8 w, i16x8 s, i16x8 p)
        : weights(splatLowest<V>(w)), scale(inAllLanes<V>(s)), power(as<U>(inAllLanes<V>(p))) {}
    [[gnu::always_inline]] U operator()(U p) const {
        return narrowU8(weigh(interleaveLow(p, power)), weigh(interleaveHigh(p, power)));
    }
    [[gnu::always_inline]] U operator()(U p0, U p1) const {
        return narrowU8(weigh(interleaveLow(p0, power)), weigh(interleaveLow(p1, power)));
    }
    [[gnu::always_inline]] V weigh(U pairs) const {
        return mulHighRound(mulAddPairs(pairs, as<Vec<std::int8_t, U::kBytes>>(weights)), scale);
    }
};

// For shifts of 0 to 8: 2^(15 - shift), and 2^shift in both bytes.
inline constexpr std::uint16_t kScales[9] = {0, 1 << 14, 1 << 13, 1 << 12, 1 << 11, 1 << 10, 1 << 9, 1 << 8, 1 << 7};
inline constexpr std::uint16_t kPowers[8] = {0x0101, 0x0202, 0x0404, 0x0808, 0x1010, 0x2020, 0x4040, 0x8080};

constexpr Vek32u fromLeastByte(Vek32s x) { return static_cast<Vek32u>(x) + 128; }  // below 256 for a byte
constexpr bool fitsOne(const Weighting& w) {
    return (fromLeastByte(w.weight1) | fromLeastByte(w.offset)) < 256 && w.shift - 1 < 7;
}
// Without an offset the sum of the weights does not matter for shifts up to 7: where the sums saturate, the result is
// outside 0..255 all the same (or 255).
template <bool hasOffset>
constexpr bool fitsTwo(const Weighting& w) {
    const Vek32u bytes = fromLeastByte(w.weight1) | fromLeastByte(w.weight2);
    if (!hasOffset) return bytes < 256 && w.shift - 1 < 7;
    // The sum wraps for weights that `bytes` refuses.
    const Vek32u sum = static_cast<Vek32u>(w.weight1) + static_cast<Vek32u>(w.weight2) - 1;
    return (bytes | fromLeastByte(w.offset) | fromLeastByte(static_cast<Vek32s>(sum))) < 256 && w.shift - 1 < 8;
}
[[gnu::always_inline]] inline i16x8 lowest(Vek32s x) { return loadBytes<i16x8, 4>(&x); }
[[gnu::always_inline]] inline i16x8 twoBytes(Vek32s low, Vek32s high) { return lowest((low & 255) | high * 256); }
[[gnu::always_inline]] inline VekStatus weighInPlace(MutableBlock<Vek8u> block, std::uint64_t size,
                                                     const Weighting& w) {
    return kChangeKernels<WeighOne, i16x8, i16x8, i16x8>[blockSizeIndex(size)](
        block.base, block.step, twoBytes(w.weight1, w.offset), splatFrom<i16x8>(opaque(&kScales[w.shift])),
        splatFrom<i16x8>(&kPowers[w.shift]));
}
template <bool hasOffset>
[[gnu::always_inline]] inline VekStatus weighTwo(Block<Vek8u> src1, Block<Vek8u> src2, MutableBlock<Vek8u> dst,
                                                 std::uint64_t size, const Weighting& w) {
    const i16x8 weights = twoBytes(w.weight1, w.weight2), scale = splatFrom<i16x8>(opaque(&kScales[w.shift]));
    if constexpr (hasOffset)
        return kCombineKernels<WeighTwoWithOffset, i16x8, i16x8, i16x8>[blockSizeIndex(size)](
            src1.base, src2.base, dst.base, src1.step, src2.step, dst.step, weights, scale, lowest(w.offset));
    else
        return kCombineKernels<WeighTwoWithout, i16x8, i16x8>[blockSizeIndex(size)](
            src1.base, src2.base, dst.base, src1.step, src2.step, dst.step, weights, scale);
}

// Sums in 32 bits. The products are of signed numbers: 16-bit samples p come as p - 2^15, and `round` makes good for
// it.
struct Weigh32 {
    template <int W>
    static constexpr int kRows = kWideTileRows<W, 4>;
    int weights;  // 16 bits each
    int round, shift, offset;
    int maxSample;

    [[gnu::always_inline]] i32x4 weigh(i16x8 pairs) const {
        return ((mulAddPairs(pairs, as<i16x8>(splat<i32x4>(weights))) + splat<i32x4>(round)) >> shift) +
               splat<i32x4>(offset);
    }
    [[gnu::always_inline]] u16x8 weigh(u16x8 a, u16x8 b) const {
        const u16x8 sums = narrowU16(weigh(as<i16x8>(interleaveLow(a, b))), weigh(as<i16x8>(interleaveHigh(a, b))));
        return min(sums, splat<u16x8>(maxSample));
    }
    [[gnu::always_inline]] u16x8 operator()(u16x8 a, u16x8 b) const {
        const u16x8 half = splat<u16x8>(0x8000);
        return weigh(a ^ half, b ^ half);
    }
    [[gnu::always_inline]] u8x16 operator()(u8x16 a, u8x16 b) const {
        const u16x8 low = weigh(as<u16x8>(widenLow(a)), as<u16x8>(widenLow(b)));
        const u16x8 high = weigh(as<u16x8>(widenHigh(a)), as<u16x8>(widenHigh(b)));
        return narrowU8(as<i16x8>(low), as<i16x8>(high));
    }
#if VEKVC_VECTOR256
    [[gnu::always_inline]] u8x32 operator()(u8x32 a, u8x32 b) const {
        return join((*this)(lowHalf(a), lowHalf(b)), (*this)(highHalf(a), highHalf(b)));
    }
#endif

    // With weights of up to 2^13 two products of 16-bit samples p are at most 2^30 - 2^14 in magnitude, of p - 2^15 at
    // most 2^29, like the difference. Half of 2^shift, at most 2^29, and an offset of at most 2^29 leave all sums
    // within 32 bits.
    template <class T>
    static bool fits(const Weighting& w, int maxSample, Weigh32& result) {
        constexpr Vek32s kMost = 1 << 13;
        const auto isSmall = [](Vek32s x) { return x >= -kMost && x <= kMost; };
        if (!isSmall(w.weight1) || !isSmall(w.weight2) || w.shift > 30) return false;
        if (w.offset < -(1 << 29) || w.offset > 1 << 29) return false;
        const Vek32u low = static_cast<Vek32u>(w.weight1) & 0xFFFF, high = static_cast<Vek32u>(w.weight2) << 16;
        const int shift = static_cast<int>(w.shift);
        const int missing = sizeof(T) == 2 ? (w.weight1 + w.weight2) * (1 << 15) : 0;
        result = {static_cast<int>(low | high), (shift >= 1 ? 1 << (shift - 1) : 0) + missing, shift, w.offset,
                  maxSample};
        return true;
    }
};

// The same weighting with small numbers where there is one: a shift of 1 with twice the weights for a shift of 0, and
// half of even weights with a shift that is less by one.
constexpr Weighting simplified(Weighting w) {
    const auto isSmall = [](Vek32s x) { return x >= -128 && x <= 128; };
    if (!isSmall(w.weight1) || !isSmall(w.weight2)) return w;
    if (w.shift == 0) return {2 * w.weight1, 2 * w.weight2, w.offset, 1};
    if (w.shift > 1 && (w.weight1 == 128 || w.weight2 == 128) && (w.weight1 & 1) == 0 && (w.weight2 & 1) == 0)
        return {w.weight1 / 2, w.weight2 / 2, w.offset, w.shift - 1};
    return w;
}

template <class T>
VekStatus weightAnySize(Block<T> src1, Block<T> src2, MutableBlock<T> dst, VekiSize size, const Weighting& w,
                        int maxSample) {
    Weigh32 wide;
    if (!Weigh32::fits<T>(w, maxSample, wide)) {
        plain::weightTwo(src1, src2, dst, size, w, maxSample);
    } else if (tileColumns(src1, src2, dst, size, wide) > 0) {
        plain::weightTwo(lastColumn(src1, size.width), lastColumn(src2, size.width), lastColumn(dst, size.width),
                         {1, size.height}, w, maxSample);
    }
    return vekStsOk;
}

// All that the exports leave aside at first. The weighting comes in pieces: whole, it would need room on the stack of
// the exports.
[[gnu::noinline, gnu::cold]] inline VekStatus weightTwoRarely(Block<Vek8u> src1, Block<Vek8u> src2,
                                                              MutableBlock<Vek8u> dst, std::uint64_t size,
                                                              Vek32s weight1, Vek32s weight2, Vek32s offset,
                                                              std::uint64_t shift) {
    const Weighting w = simplified({weight1, weight2, offset, shift});
    if (isBlockSize(size) && fitsTwo<true>(w)) return weighTwo<true>(src1, src2, dst, size, w);
    return weightAnySize(src1, src2, dst, unpackedSize(size), w, 255);
}
[[gnu::noinline, gnu::cold]] inline VekStatus weightOneRarely(MutableBlock<Vek8u> block, std::uint64_t size,
                                                              Vek32s weight, Vek32s offset, std::uint64_t shift) {
    const Weighting w = simplified({weight, 0, offset, shift});
    if (isBlockSize(size) && fitsOne(w)) return weighInPlace(block, size, w);
    const Block<Vek8u> src(block.base, static_cast<Vek32s>(block.step));
    return weightAnySize(src, src, block, unpackedSize(size), w, 255);
}

// Blocks of 8-bit samples, their size in one register.
template <bool hasOffset>
[[gnu::always_inline]] inline VekStatus weightTwo(Block<Vek8u> src1, Block<Vek8u> src2, MutableBlock<Vek8u> dst,
                                                  std::uint64_t size, const Weighting& w) {
    if (isBlockSize(size) && fitsTwo<hasOffset>(w)) [[likely]]
        return weighTwo<hasOffset>(src1, src2, dst, size, w);
    return weightTwoRarely(src1, src2, dst, size, w.weight1, w.weight2, w.offset, w.shift);
}
[[gnu::always_inline]] inline VekStatus weightInPlace(MutableBlock<Vek8u> block, std::uint64_t size,
                                                      const Weighting& w) {
    if (isBlockSize(size) && fitsOne(w)) [[likely]]
        return weighInPlace(block, size, w);
    return weightOneRarely(block, size, w.weight1, w.offset, w.shift);
}

// 16-bit samples.
template <class T>
VekStatus weightTwo(Block<T> src1, Block<T> src2, MutableBlock<T> dst, VekiSize size, const Weighting& w,
                    int maxSample) {
    return weightAnySize(src1, src2, dst, size, w, maxSample);
}
template <class T>
VekStatus weightOne(Block<T> src, MutableBlock<T> dst, VekiSize size, const Weighting& w, int maxSample) {
    return weightAnySize(src, src, dst, size, w, maxSample);
}

}  // namespace vekvc::simd

#endif
