// A few rows of a block of 8-bit samples in one vector, and kernels for the block sizes of motion compensation.
#ifndef VEKVC_H264_ROW_GROUP_SIMD_H
#define VEKVC_H264_ROW_GROUP_SIMD_H

#include <array>
#include <bit>
#include <utility>

#include "core/memory.h"
#include "core/simd.h"

namespace vekvc::simd {

// R rows of W samples; the samples fill the vector's low bytes, row after row.
template <int W, int R>
struct RowGroup {
    using U = u8x16;

    [[gnu::always_inline]] static U load(const Vek8u* p, std::ptrdiff_t step) {
        if constexpr (R == 1) {
            return loadBytes<U, W>(p);
        } else if constexpr (W == 8) {
            return loadPair8<U>(p, p + step);
        } else {
            const U two = insertBytes<1, W>(loadBytes<U, W>(p), p + step);
            if constexpr (R == 2) return two;
            const Vek8u* const row2 = twoRowsOn(p, step);
            return insertBytes<3, W>(insertBytes<2, W>(two, row2), row2 + step);
        }
    }
    [[gnu::always_inline]] static void store(Vek8u* p, std::ptrdiff_t step, U v) {
        if constexpr (R == 1) {
            storeBytes<W>(p, v);
        } else if constexpr (W == 8) {
            storePair8(p, p + step, v);
        } else if constexpr (R == 2) {
            storeBytes<W>(p, v);
            storeBytes<W>(p + step, bytesRight<W>(v));
        } else {
            static_assert(W == 4);
            Vek8u* const row2 = twoRowsOn(p, step);
            storeLanes32([=](int y) { return (y < 2 ? p : row2) + y % 2 * step; }, as<u32x4>(v));
        }
    }
};
#if VEKVC_VECTOR256
template <>
struct RowGroup<16, 2> {
    using U = u8x32;

    [[gnu::always_inline]] static U load(const Vek8u* p, std::ptrdiff_t step) { return loadPair16<U>(p, p + step); }
    [[gnu::always_inline]] static void store(Vek8u* p, std::ptrdiff_t step, U v) { storePair16(p, p + step, v); }
};
#endif
// How many rows of a block of H rows go into one vector. Rows of 8 stay in 128 bits: joining and parting four of them
// takes one execution port longer than it spares work on the others.
template <int W, int H>
inline constexpr int kGroupRows = W == 16            ? 1 + VEKVC_VECTOR256
                                  : W == 4 && H >= 4 ? 4
                                                     : 2;
template <int R, class P>
[[gnu::always_inline]] inline P* groupOn(P* p, std::ptrdiff_t step) {
    return R == 1 ? oneRowOn(p, step) : R == 2 ? twoRowsOn(p, step) : twoRowsOn(twoRowsOn(p, step), step);
}

// R rows of samples from those of a and b: op(x, y) takes groups of rows in vectors, op(x0, y0, x1, y1) two rows of 8
// in the low halves of vectors.
template <int W, int R, class Op>
[[gnu::always_inline]] inline auto combineRows(const Op& op, const Vek8u* a, const Vek8u* b, std::ptrdiff_t aStep,
                                               std::ptrdiff_t bStep) {
    using G = RowGroup<W, R>;
    if constexpr (W == 8) {
        static_assert(R == 2);
        const auto row = [](const Vek8u* p) { return loadBytes<u8x16, 8>(p); };
        return op(row(a), row(b), row(a + aStep), row(b + bStep));
    } else {
        return op(G::load(a, aStep), G::load(b, bStep));
    }
}
// Every sample of a block of W x H from those of a and b in its place. Op<U> is made from the constants.
template <template <class> class Op, int W, int H, class... Constant>
VekStatus combineBlock(const Vek8u* a, const Vek8u* b, Vek8u* dst, std::ptrdiff_t aStep, std::ptrdiff_t bStep,
                       std::ptrdiff_t dstStep, Constant... constants) {
    constexpr int R = kGroupRows<W, H>;
    using G = RowGroup<W, R>;
    const Op<typename G::U> op{constants...};
#pragma GCC unroll 4
    for (int y = 0; y < H; y += R) {
        G::store(dst, dstStep, combineRows<W, R>(op, a, b, aStep, bStep));
        a = groupOn<R>(a, aStep), b = groupOn<R>(b, bStep), dst = groupOn<R>(dst, dstStep);
    }
    return vekStsOk;
}
// The same in place, of the samples alone: op(x), and op(x0, x1) of two rows of 8.
template <template <class> class Op, int W, int H, class... Constant>
VekStatus changeBlock(Vek8u* block, std::ptrdiff_t step, Constant... constants) {
    constexpr int R = kGroupRows<W, H>;
    using G = RowGroup<W, R>;
    const Op<typename G::U> op{constants...};
#pragma GCC unroll 4
    for (int y = 0; y < H; y += R) {
        if constexpr (W == 8)
            G::store(block, step, op(loadBytes<u8x16, 8>(block), loadBytes<u8x16, 8>(block + step)));
        else
            G::store(block, step, op(G::load(block, step)));
        block = groupOn<R>(block, step);
    }
    return vekStsOk;
}

// The kernels for all blocks with sides of 2, 4, 8 and 16: 4 log2(width) + log2(height) is the index.
template <class Kernel, class KernelFor>
constexpr auto kernelsBySize(KernelFor kernelFor) {
    return [=]<std::size_t... i>(std::index_sequence<i...>) {
        return std::array<Kernel, sizeof...(i)>{kernelFor(std::integral_constant<int, (i < 5 ? 2 : 1 << (i - 1) / 4)>(),
                                                          std::integral_constant<int, 2 << (i - 1) % 4>())...};
    }
    (std::make_index_sequence<21>());
}
template <class... Constant>
using CombineKernel = VekStatus (*)(const Vek8u*, const Vek8u*, Vek8u*, std::ptrdiff_t, std::ptrdiff_t, std::ptrdiff_t,
                                    Constant...);
template <template <class> class Op, class... Constant>
inline constexpr auto kCombineKernels = kernelsBySize<CombineKernel<Constant...>>(
    []<int W, int H>(std::integral_constant<int, W>, std::integral_constant<int, H>) {
        return combineBlock<Op, W, H, Constant...>;
    });
template <class... Constant>
using ChangeKernel = VekStatus (*)(Vek8u*, std::ptrdiff_t, Constant...);
template <template <class> class Op, class... Constant>
inline constexpr auto kChangeKernels = kernelsBySize<ChangeKernel<Constant...>>(
    []<int W, int H>(std::integral_constant<int, W>, std::integral_constant<int, H>) {
        return changeBlock<Op, W, H, Constant...>;
    });

}  // namespace vekvc::simd

#endif
