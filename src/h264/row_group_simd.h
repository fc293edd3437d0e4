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
struct RowGroup<8, 4> {
    using U = u8x32;

    [[gnu::always_inline]] static U load(const Vek8u* p, std::ptrdiff_t step) {
        const Vek8u* const row2 = twoRowsOn(p, step);
        return loadFour8<U>(p, p + step, row2, row2 + step);
    }
    [[gnu::always_inline]] static void store(Vek8u* p, std::ptrdiff_t step, U v) {
        Vek8u* const row2 = twoRowsOn(p, step);
        storePair8(p, p + step, lowHalf(v));
        storePair8(row2, row2 + step, highHalf(v));
    }
};
template <>
struct RowGroup<16, 2> {
    using U = u8x32;

    [[gnu::always_inline]] static U load(const Vek8u* p, std::ptrdiff_t step) { return loadPair16<U>(p, p + step); }
    [[gnu::always_inline]] static void store(Vek8u* p, std::ptrdiff_t step, U v) { storePair16(p, p + step, v); }
};
#endif
// How many rows of a block of H rows go into one vector.
template <int W, int H>
inline constexpr int kGroupRows = W == 16                        ? 1 + VEKVC_VECTOR256
                                  : W == 8 && !VEKVC_VECTOR256   ? 2
                                  : H >= 4 && (W == 8 || W == 4) ? 4
                                                                 : 2;
template <int R, class P>
[[gnu::always_inline]] inline P* groupOn(P* p, std::ptrdiff_t step) {
    return R == 1 ? oneRowOn(p, step) : R == 2 ? twoRowsOn(p, step) : twoRowsOn(twoRowsOn(p, step), step);
}

// Every sample of a block of W x H from those of a and b in its place. Op<U> is made from the constants; op(x, y) takes
// groups of rows in vectors U.
template <template <class> class Op, int W, int H, class... Constant>
VekStatus combineBlock(const Vek8u* a, const Vek8u* b, Vek8u* dst, std::ptrdiff_t aStep, std::ptrdiff_t bStep,
                       std::ptrdiff_t dstStep, Constant... constants) {
    constexpr int R = kGroupRows<W, H>;
    using G = RowGroup<W, R>;
    const Op<typename G::U> op{constants...};
#pragma GCC unroll 2
    for (int y = 0; y < H; y += R) {
        G::store(dst, dstStep, op(G::load(a, aStep), G::load(b, bStep)));
        a = groupOn<R>(a, aStep), b = groupOn<R>(b, bStep), dst = groupOn<R>(dst, dstStep);
    }
    return vekStsOk;
}
// The same in place, of the samples alone.
template <template <class> class Op, int W, int H, class... Constant>
VekStatus changeBlock(Vek8u* block, std::ptrdiff_t step, Constant... constants) {
    constexpr int R = kGroupRows<W, H>;
    using G = RowGroup<W, R>;
    const Op<typename G::U> op{constants...};
#pragma GCC unroll 2
    for (int y = 0; y < H; y += R) {
        G::store(block, step, op(G::load(block, step)));
        block = groupOn<R>(block, step);
    }
    return vekStsOk;
}

// The kernels for all blocks with sides of 2, 4, 8 and 16, by the logarithms of the sides.
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
// Of the packed size of such a block.
constexpr Vek32u sizeIndex(std::uint64_t size) {
    const auto width = static_cast<Vek32u>(size), height = static_cast<Vek32u>(size >> 32);
    return static_cast<Vek32u>(4 * __builtin_ctz(width)) + static_cast<Vek32u>(__builtin_ctz(height));
}

}  // namespace vekvc::simd

#endif
