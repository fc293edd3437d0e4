// Weighted prediction in vectors. (a * scale + 16) >> 5 = (((a * scale) >> 4) + 1) >> 1: the high half of (a << 8) *
// (scale << 4), averaged with 0.
#ifndef VEKVC_AVS_WEIGHT_SIMD_H
#define VEKVC_AVS_WEIGHT_SIMD_H

#include "avs/weight_plain.h"
#include "h264/weight_simd.h"

namespace vekvc::simd {

template <class U>
struct AvsWeigh {
    using V = Vec<std::int16_t, U::kBytes / 2>;
    using W = Vec<std::uint16_t, U::kBytes / 2>;
    W scale;
    V shift;

    [[gnu::always_inline]] explicit AvsWeigh(const avs::Weight& w)
        : scale(splat<W>(w.scale << 4)), shift(splat<V>(w.shift)) {}
    [[gnu::always_inline]] U operator()(U a) const {
        return narrowU8(half(interleaveLow(zero<U>(), a)), half(interleaveHigh(zero<U>(), a)));
    }

  private:
    [[gnu::always_inline]] V half(U high) const {
        return as<V>(average(mulHigh(as<W>(high), scale), zero<W>())) + shift;
    }
};
// Weights that fit a signed byte make (a * scale + 32 * shift + 16) >> 5 a sum of two products: H.264's form with a
// logarithmic denominator of 5, which also saturates only where the result is 255.
template <class U>
[[gnu::always_inline]] inline WeighOne<U> smallWeigh(const avs::Weight& w) {
    return {twoBytes(w.scale, w.shift), splatFrom<i16x8>(&kScales[5]), splatFrom<i16x8>(&kPowers[5])};
}
template <class Weigh>
struct AvsWeighOne {
    Weigh weigh;

    template <int W>
    static constexpr int kRows = kTileRows<W, 4>;
    template <class U>
    [[gnu::always_inline]] U operator()(U a, U) const {
        return weigh(a);
    }
    template <class U>
    [[gnu::always_inline]] U operator()(U a0, U, U a1, U) const {
        return weigh(a0, a1);
    }
};
template <class Weigh>
struct AvsWeighTwo {
    Weigh weigh1, weigh2;

    template <int W>
    static constexpr int kRows = kTileRows<W, 4>;
    template <class U>
    [[gnu::always_inline]] U operator()(U a, U b) const {
        return average(weigh1(a), weigh2(b));
    }
    template <class U>
    [[gnu::always_inline]] U operator()(U a0, U b0, U a1, U b1) const {
        return average(weigh1(a0, a1), weigh2(b0, b1));
    }
};

// Blocks 8 and 16 wide, R rows at a time, which divide the height.
template <int W, int R, class Op>
[[gnu::always_inline]] inline void avsColumn(Block<Vek8u> a, Block<Vek8u> b, MutableBlock<Vek8u> dst, int height,
                                             const Op& op) {
    using G = RowGroup<W, R>;
    for (; height > 0; height -= R) {
        G::store(dst.base, dst.step, combineRows<W, R>(op, a.base, b.base, a.step, b.step));
        a.base = groupOn<R>(a.base, a.step), b.base = groupOn<R>(b.base, b.step);
        dst.base = groupOn<R>(dst.base, dst.step);
    }
}
// Gives the columns that are left over (0 or 1).
template <template <class> class Op, class... W>
[[gnu::always_inline]] inline int avsWeighBlock(Block<Vek8u> a, Block<Vek8u> b, MutableBlock<Vek8u> dst, VekiSize size,
                                                const W&... weights) {
    const auto columns = [&]<int width>(std::integral_constant<int, width>) {
        constexpr int R = kGroupRows<width, 8>;
        using U = typename RowGroup<width, R>::U;
        avsColumn<width, R>(a, b, dst, size.height, Op<WeighOne<U>>{smallWeigh<U>(weights)...});
        return 0;
    };
    if (size.height % 2 == 0 && (avs::isSmall(weights) && ...)) {
        if (size.width == 16) return columns(std::integral_constant<int, 16>());
        if (size.width == 8) return columns(std::integral_constant<int, 8>());
    }
    return tileColumns(a, b, dst, size, Op<AvsWeigh<u8x16>>{AvsWeigh<u8x16>(weights)...});
}

// The kernels end their exports; what is left over of odd widths is out of their way.
[[gnu::noinline, gnu::cold]] inline VekStatus weightLastAvs(Block<Vek8u> src, MutableBlock<Vek8u> dst, VekiSize size,
                                                            avs::Weight w) {
    plain::weightAvsOne(lastColumn(src, size.width), lastColumn(dst, size.width), {1, size.height}, w);
    return vekStsOk;
}
[[gnu::noinline]] inline VekStatus weightAvsOne(Block<Vek8u> src, MutableBlock<Vek8u> dst, VekiSize size,
                                                avs::Weight w) {
    if (avsWeighBlock<AvsWeighOne>(src, src, dst, size, w) > 0) [[unlikely]]
        return weightLastAvs(src, dst, size, w);
    return vekStsOk;
}
[[gnu::always_inline]] inline VekStatus weightAvsInPlace(MutableBlock<Vek8u> block, std::uint64_t size,
                                                         const avs::Weight& w) {
    if (isBlockSize(size) && avs::isSmall(w)) [[likely]]
        return weighInPlace(block, size, {w.scale, 0, w.shift, 5});
    return weightAvsOne({block.base, static_cast<Vek32s>(block.step)}, block, unpackedSize(size), w);
}
[[gnu::noinline, gnu::cold]] inline VekStatus weightLastAvs(Block<Vek8u> src1, Block<Vek8u> src2,
                                                            MutableBlock<Vek8u> dst, VekiSize size, avs::Weight w1,
                                                            avs::Weight w2) {
    plain::weightAvsTwo(lastColumn(src1, size.width), lastColumn(src2, size.width), lastColumn(dst, size.width),
                        {1, size.height}, w1, w2);
    return vekStsOk;
}
[[gnu::noinline]] inline VekStatus weightAvsTwo(Block<Vek8u> src1, Block<Vek8u> src2, MutableBlock<Vek8u> dst,
                                                VekiSize size, avs::Weight w1, avs::Weight w2) {
    if (avsWeighBlock<AvsWeighTwo>(src1, src2, dst, size, w1, w2) > 0) [[unlikely]]
        return weightLastAvs(src1, src2, dst, size, w1, w2);
    return vekStsOk;
}
[[gnu::always_inline]] inline VekStatus averageAvs(Block<Vek8u> src1, Block<Vek8u> src2, MutableBlock<Vek8u> dst,
                                                   VekiSize size) {
    return averageBlocks(src1, src2, dst, size);
}

}  // namespace vekvc::simd

#endif
