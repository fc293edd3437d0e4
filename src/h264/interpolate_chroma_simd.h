// Chroma interpolation, H.264 8.4.2.2.2, in vectors: pairs of neighbouring samples times pairs of weights.
#ifndef VEKVC_H264_INTERPOLATE_CHROMA_SIMD_H
#define VEKVC_H264_INTERPOLATE_CHROMA_SIMD_H

#include <array>

#include "core/memory.h"
#include "core/simd.h"

namespace vekvc::simd {

// The weights of A, B, C and D, a byte each, A's lowest: products of two numbers that add up to 8.
constexpr std::uint32_t chromaWeights(int dx, int dy) {
    const auto across = static_cast<std::uint32_t>((8 - dx) | dx << 8);
    return across * static_cast<std::uint32_t>((8 - dy) | dy << 16);
}
// For every position: 8 * dy + dx.
inline constexpr auto kChromaWeights = [] {
    std::array<std::uint32_t, 64> all = {};
    for (int i = 0; i < 64; ++i) all[static_cast<std::size_t>(i)] = chromaWeights(i % 8, i / 8);
    return all;
}();
// The weights of A and B, of C and D, and of A and C where B and D weigh nothing.
constexpr std::int16_t weightsAB(std::uint32_t w) { return static_cast<std::int16_t>(w); }
constexpr std::int16_t weightsCD(std::uint32_t w) { return static_cast<std::int16_t>(w >> 16); }
constexpr std::int16_t weightsAC(std::uint32_t w) { return static_cast<std::int16_t>((w & 255) | (w >> 8 & 0xFF00)); }

// The sums of 8-bit samples, row after row: of A and B, with C and D of the row below, or of A and C. A sum is at most
// 64 * 255; (sum + 32) >> 6 = (sum * 512 + 2^14) >> 15.
template <int bytes, int next, bool right, bool below>
class ChromaRows {
  public:
    using U = u8x16;
    ChromaRows(const Vek8u* p, std::ptrdiff_t step, std::uint32_t w)
        : p_(p),
          step_(step),
          first_(splat<i16x8>(right ? weightsAB(w) : weightsAC(w))),
          second_(splat<i16x8>(weightsCD(w))) {
        if constexpr (below) above_ = row();
    }
    // The rounded sums of the low (and, where a row has more than 8 bytes, high) half of the next row.
    struct Sums {
        i16x8 low, high;
    };
    [[gnu::always_inline]] Sums nextRow() {
        const Row r = row();
        if constexpr (!below) return {rounded(weigh(r.low, first_)), rounded(weigh(r.high, first_))};
        const Row above = above_;
        above_ = r;
        if constexpr (right)
            return {rounded(weigh(above.low, first_) + weigh(r.low, second_)),
                    rounded(weigh(above.high, first_) + weigh(r.high, second_))};
        else
            return {rounded(weigh(interleaveLow(above.low, r.low), first_)),
                    rounded(weigh(interleaveHigh(above.low, r.low), first_))};
    }

  private:
    struct Row {
        U low, high;
    };
    [[gnu::always_inline]] Row row() {
        const U a = loadBytes<U, bytes>(p_);
        Row r{a, a};
        if constexpr (right) {
            const U b = loadBytes<U, bytes>(p_ + next);
            r = {interleaveLow(a, b), interleaveHigh(a, b)};
        }
        p_ += step_;
        return r;
    }
    [[gnu::always_inline]] static i16x8 weigh(U pairs, i16x8 weights) { return mulAddPairs(pairs, as<i8x16>(weights)); }
    [[gnu::always_inline]] static i16x8 rounded(i16x8 sums) { return mulHighRound(sums, splat<i16x8>(512)); }

    const Vek8u* p_;
    std::ptrdiff_t step_;
    i16x8 first_, second_;
    Row above_;
};

// The kernels take their arguments where the exports have them and return vekStsOk: an export ends in a jump.
using ChromaKernel = VekStatus (*)(const Vek8u*, Vek32s, Vek8u*, Vek32s, Vek32s height, std::uint32_t weights);
template <int W, bool right, bool below>
VekStatus chromaColumn(const Vek8u* src, Vek32s srcStep32, Vek8u* dst, Vek32s dstStep32, Vek32s height,
                       std::uint32_t w) {
    const std::ptrdiff_t srcStep = srcStep32, dstStep = dstStep32;
    if constexpr (!right && !below) {
#pragma GCC unroll 1
        for (; height > 0; height -= 2, src += 2 * srcStep, dst += 2 * dstStep) {
            const u8x16 row0 = loadBytes<u8x16, W>(src), row1 = loadBytes<u8x16, W>(src + srcStep);
            storeBytes<W>(dst, row0);
            storeBytes<W>(dst + dstStep, row1);
        }
    } else if (height > 0) {
        ChromaRows<W, 1, right, below> rows(src, srcStep, w);
#pragma GCC unroll 1
        for (; height > 0; height -= 2, dst += 2 * dstStep) {
            const i16x8 row0 = rows.nextRow().low, row1 = rows.nextRow().low;
            const u8x16 both = narrowU8(row0, row1);
            storeBytes<W>(dst, both);
            storeBytes<W>(dst + dstStep, bytesRight<8>(both));
        }
    }
    return vekStsOk;
}
template <int W>
constexpr std::array<ChromaKernel, 4> chromaKernels() {
    return {chromaColumn<W, false, false>, chromaColumn<W, true, false>, chromaColumn<W, false, true>,
            chromaColumn<W, true, true>};
}
// By width: 2, 4, 8. By fractions: 1 for dx, 2 for dy.
inline constexpr std::array<ChromaKernel, 4> kChromaKernels[3] = {chromaKernels<2>(), chromaKernels<4>(),
                                                                  chromaKernels<8>()};

// Widths that are no block's: columns 8, 4 and 2 wide.
[[gnu::noinline, gnu::cold]] inline VekStatus chromaColumns(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst,
                                                            Vek32s dstStep, VekiSize size, std::size_t fractions,
                                                            std::uint32_t w) {
    int x = 0;
    for (int width : {8, 4, 2})
        if (size.width & width) {
            kChromaKernels[width / 4][fractions](pSrc + x, srcStep, pDst + x, dstStep, size.height, w);
            x += width;
        }
    return vekStsOk;
}

[[gnu::always_inline]] inline VekStatus interpolateChroma(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst,
                                                          Vek32s dstStep, Vek32s dx, Vek32s dy, VekiSize size) {
    const std::size_t fractions = static_cast<std::size_t>((dx != 0) + 2 * (dy != 0));
    const std::uint32_t w = kChromaWeights[static_cast<std::size_t>(8 * dy + dx)];
    if (size.width == 0 || (size.width & (size.width - 1)) != 0)
        return chromaColumns(pSrc, srcStep, pDst, dstStep, size, fractions, w);
    return kChromaKernels[size.width / 4][fractions](pSrc, srcStep, pDst, dstStep, size.height, w);
}

// ---- interleaved chroma: rows of pairs, taken apart when they are stored

template <int W, bool right, bool below>
void chromaPairsColumn(const Vek8u* src, std::ptrdiff_t srcStep, Vek8u* cb, Vek8u* cr, std::ptrdiff_t dstStep,
                       int height, std::uint32_t w) {
    alignas(16) static constexpr std::uint8_t kApart[16] = {0, 2, 4, 6, 8, 10, 12, 14, 1, 3, 5, 7, 9, 11, 13, 15};
    const auto storeRow = [&](u8x16 row) {
        const u8x16 pairs = shuffleBytes(row, load<u8x16>(kApart));
        storeBytes<W>(cb, pairs);
        storeBytes<W>(cr, bytesRight<8>(pairs));
        cb += dstStep, cr += dstStep;
    };
    if constexpr (!right && !below) {
        for (; height > 0; --height, src += srcStep) storeRow(loadBytes<u8x16, 2 * W>(src));
    } else if (height > 0) {
        ChromaRows<2 * W, 2, right, below> rows(src, srcStep, w);
        for (; height > 0; --height) {
            const auto sums = rows.nextRow();
            storeRow(narrowU8(sums.low, sums.high));
        }
    }
}

inline VekStatus interpolateChromaPairs(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDstCb, Vek8u* pDstCr, Vek32s dstStep,
                                        int dx, int dy, VekiSize size) {
    const std::uint32_t w = chromaWeights(dx, dy);
    int x = 0;
    const auto column = [&]<int W>(std::integral_constant<int, W>) {
        if (!(size.width & W)) return;
        const auto kernel = dx != 0
                                ? (dy != 0 ? chromaPairsColumn<W, true, true> : chromaPairsColumn<W, true, false>)
                                : (dy != 0 ? chromaPairsColumn<W, false, true> : chromaPairsColumn<W, false, false>);
        kernel(pSrc + 2 * x, srcStep, pDstCb + x, pDstCr + x, dstStep, size.height, w);
        x += W;
    };
    column(std::integral_constant<int, 8>());
    column(std::integral_constant<int, 4>());
    column(std::integral_constant<int, 2>());
    return vekStsOk;
}

// ---- 16-bit samples, of at most 14 bits: sums in 32 bits

template <int W, bool right, bool below>
void chromaColumn16u(const Vek16u* src, std::ptrdiff_t srcStep, Vek16u* dst, std::ptrdiff_t dstStep, int height,
                     std::uint32_t w) {
    const auto pair = [](std::int16_t weights) {  // two bytes as two 16-bit lanes
        return as<i16x8>(splat<i32x4>((weights & 255) | (weights >> 8) << 16));
    };
    const i16x8 first = pair(right ? weightsAB(w) : weightsAC(w)), second = pair(weightsCD(w));
    const auto row = [](const Vek16u* p) { return loadBytes<i16x8, 2 * W>(p); };
    for (; height > 0; --height, src = offsetBytes(src, srcStep), dst = offsetBytes(dst, dstStep)) {
        const i16x8 a = row(src);
        if constexpr (!right && !below) {
            storeBytes<2 * W>(dst, a);
            continue;
        }
        i16x8 b = a, c = a, d = a;
        if constexpr (right) b = row(src + 1);
        if constexpr (below) c = row(offsetBytes(src, srcStep));
        if constexpr (right && below) d = row(offsetBytes(src, srcStep) + 1);
        i32x4 low = mulAddPairs(interleaveLow(a, right ? b : c), first);
        i32x4 high = mulAddPairs(interleaveHigh(a, right ? b : c), first);
        if constexpr (right && below) {
            low += mulAddPairs(interleaveLow(c, d), second);
            high += mulAddPairs(interleaveHigh(c, d), second);
        }
        const i32x4 half = splat<i32x4>(32);
        storeBytes<2 * W>(dst, narrowU16((low + half) >> 6, (high + half) >> 6));
    }
}

inline VekStatus interpolateChroma(const Vek16u* pSrc, Vek32s srcStep, Vek16u* pDst, Vek32s dstStep, Vek32s dx,
                                   Vek32s dy, VekiSize size) {
    const std::uint32_t w = chromaWeights(dx, dy);
    int x = 0;
    const auto column = [&]<int W>(std::integral_constant<int, W>) {
        if (!(size.width & W)) return;
        const auto kernel = dx != 0 ? (dy != 0 ? chromaColumn16u<W, true, true> : chromaColumn16u<W, true, false>)
                                    : (dy != 0 ? chromaColumn16u<W, false, true> : chromaColumn16u<W, false, false>);
        kernel(pSrc + x, srcStep, pDst + x, dstStep, size.height, w);
        x += W;
    };
    column(std::integral_constant<int, 8>());
    column(std::integral_constant<int, 4>());
    column(std::integral_constant<int, 2>());
    return vekStsOk;
}

}  // namespace vekvc::simd

#endif
