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
        const auto half = [&](U high) { return as<V>(average(mulHigh(as<W>(high), scale), zero<W>())) + shift; };
        return narrowU8(half(interleaveLow(zero<U>(), a)), half(interleaveHigh(zero<U>(), a)));
    }
};
template <class U>
struct AvsWeighOne {
    AvsWeigh<U> weigh;

    template <int W>
    static constexpr int kRows = kTileRows<W, 4>;
    [[gnu::always_inline]] U operator()(U a, U) const { return weigh(a); }
};
template <class U>
struct AvsWeighTwo {
    AvsWeigh<U> weigh1, weigh2;

    template <int W>
    static constexpr int kRows = kTileRows<W, 4>;
    [[gnu::always_inline]] U operator()(U a, U b) const { return average(weigh1(a), weigh2(b)); }
};

// Blocks 8 and 16 wide in whole vectors: R rows at a time, which divide the height.
template <int W, int R, class Op>
[[gnu::always_inline]] inline void avsColumn(Block<Vek8u> a, Block<Vek8u> b, MutableBlock<Vek8u> dst, int height,
                                             const Op& op) {
    using G = RowGroup<W, R>;
    for (; height > 0; height -= R) {
        G::store(dst.base, dst.step, op(G::load(a.base, a.step), G::load(b.base, b.step)));
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
        avsColumn<width, R>(a, b, dst, size.height, Op<U>{AvsWeigh<U>(weights)...});
        return 0;
    };
    if (size.height % 4 == 0) {
        if (size.width == 16) return columns(std::integral_constant<int, 16>());
        if (size.width == 8) return columns(std::integral_constant<int, 8>());
    }
    return tileColumns(a, b, dst, size, Op<u8x16>{AvsWeigh<u8x16>(weights)...});
}

inline void weightAvsOne(Block<Vek8u> src, MutableBlock<Vek8u> dst, VekiSize size, const avs::Weight& w) {
    if (avsWeighBlock<AvsWeighOne>(src, src, dst, size, w) > 0)
        plain::weightAvsOne(lastColumn(src, size.width), lastColumn(dst, size.width), {1, size.height}, w);
}
inline void weightAvsTwo(Block<Vek8u> src1, Block<Vek8u> src2, MutableBlock<Vek8u> dst, VekiSize size,
                         const avs::Weight& w1, const avs::Weight& w2) {
    if (avsWeighBlock<AvsWeighTwo>(src1, src2, dst, size, w1, w2) > 0)
        plain::weightAvsTwo(lastColumn(src1, size.width), lastColumn(src2, size.width), lastColumn(dst, size.width),
                            {1, size.height}, w1, w2);
}
inline void averageAvs(Block<Vek8u> src1, Block<Vek8u> src2, MutableBlock<Vek8u> dst, VekiSize size) {
    averageBlocks(src1, src2, dst, size);
}

}  // namespace vekvc::simd

#endif
