// Fast forms of deringing: a row of a macroblock or chroma block at a time.
#ifndef VEKVC_MPEG4_DERING_SIMD_H
#define VEKVC_MPEG4_DERING_SIMD_H

#include "core/simd.h"
#include "mpeg4/dering_plain.h"

namespace vekvc::simd {

template <int W>
[[gnu::always_inline]] inline u8x16 loadRow(const Vek8u* p) {
    return loadBytes<u8x16, W>(p);
}

// The least and the most of 8 rows, in byte 0 for columns 0 to 7 and in byte 8 for 8 to 15.
struct Extremes {
    u8x16 least, most;
};
template <int W>
[[gnu::always_inline]] inline Extremes extremes(const Vek8u* src, std::ptrdiff_t step) {
    Extremes e = {loadRow<W>(src), loadRow<W>(src)};
    for (int y = 1; y < 8; ++y) {
        const u8x16 row = loadRow<W>(src + y * step);
        e.least = min(e.least, row), e.most = max(e.most, row);
    }
    const auto fold = [&]<int n>(std::integral_constant<int, n>) {
        const auto right = [](u8x16 v) { return as<u8x16>(as<u64x2>(v) >> (8 * n)); };
        e.least = min(e.least, right(e.least)), e.most = max(e.most, right(e.most));
    };
    fold(std::integral_constant<int, 4>());
    fold(std::integral_constant<int, 2>());
    fold(std::integral_constant<int, 1>());
    return e;
}

// Of a row: least and most of each sample and its two neighbours, and their sum weighted by (1, 2, 1).
template <int W>
struct DeringRow {
    u8x16 sample, least, most;
    i16x8 low, high;

    [[gnu::always_inline]] explicit DeringRow(const Vek8u* p) : sample(loadRow<W>(p)) {
        const u8x16 left = loadRow<W>(p - 1), right = loadRow<W>(p + 1);
        least = min(sample, min(left, right)), most = max(sample, max(left, right));
        const i16x8 s = widenLow(sample);
        low = widenLow(left) + widenLow(right) + s + s;
        if constexpr (W == 16) {
            const i16x8 t = widenHigh(sample);
            high = widenHigh(left) + widenHigh(right) + t + t;
        } else {
            high = low;
        }
    }
};

// Eight rows of W columns, with the threshold of each byte.
template <int W>
[[gnu::always_inline]] inline void deringRows(const Vek8u* src, std::ptrdiff_t srcStep, Vek8u* dst,
                                              std::ptrdiff_t dstStep, u8x16 threshold, u8x16 limit) {
    DeringRow<W> above(src - srcStep), here(src);
    const i16x8 eight = constant<i16x8, 8>();
#pragma GCC unroll 1
    for (int y = 0; y < 8; ++y) {
        src += srcStep;
        const DeringRow<W> below(src);
        const u8x16 least = min(here.least, min(above.least, below.least));
        const u8x16 most = max(here.most, max(above.most, below.most));
        // Not below the threshold: max(x, threshold) == x.
        const u8x16 oneSide =
            (max(least, threshold) == least) | ((max(most, threshold) == most) ^ constant<u8x16, 255>());
        const i16x8 low = (above.low + below.low + here.low + here.low + eight) >> 4;
        const i16x8 high = (above.high + below.high + here.high + here.high + eight) >> 4;
        const u8x16 smooth = min(max(narrowU8(low, high), subSat(here.sample, limit)), addSat(here.sample, limit));
        storeBytes<W>(dst, select(oneSide, smooth, here.sample));
        dst += dstStep;
        above = here;
        here = below;
    }
}

template <int n>
[[gnu::always_inline]] inline void copySquareRows(const Vek8u* src, std::ptrdiff_t srcStep, Vek8u* dst,
                                                  std::ptrdiff_t dstStep) {
    for (int y = 0; y < n; ++y) storeBytes<n>(dst + y * dstStep, loadRow<n>(src + y * srcStep));
}

inline void deringLuma(const Vek8u* src, std::ptrdiff_t srcStep, Vek8u* dst, std::ptrdiff_t dstStep, Vek32s QP) {
    mpeg4::Contrast blocks[4];
    for (int k = 0; k < 4; k += 2) {
        const Extremes e = extremes<16>(src + 4 * k * srcStep, srcStep);
        blocks[k] = {lane<0>(e.least), lane<0>(e.most)};
        blocks[k + 1] = {lane<8>(e.least), lane<8>(e.most)};
    }
    if (mpeg4::shareThreshold(blocks) < mpeg4::kLeastRange) return copySquareRows<16>(src, srcStep, dst, dstStep);
    const u8x16 limit = splat<u8x16>(QP / 2);
    for (int k = 0; k < 4; k += 2)
        deringRows<16>(src + 4 * k * srcStep, srcStep, dst + 4 * k * dstStep, dstStep,
                       joinLow(splat<u8x16>(blocks[k].threshold), splat<u8x16>(blocks[k + 1].threshold)), limit);
}

inline void deringChroma(const Vek8u* src, std::ptrdiff_t srcStep, Vek8u* dst, std::ptrdiff_t dstStep, Vek32s QP) {
    const Extremes e = extremes<8>(src, srcStep);
    const mpeg4::Contrast block = {lane<0>(e.least), lane<0>(e.most)};
    if (block.range < mpeg4::kLeastRange) return copySquareRows<8>(src, srcStep, dst, dstStep);
    deringRows<8>(src, srcStep, dst, dstStep, splat<u8x16>(block.threshold), splat<u8x16>(QP / 2));
}

}  // namespace vekvc::simd

#endif
