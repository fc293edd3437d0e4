// Chroma interpolation, H.264 8.4.2.2.2, in vectors: pairs of neighbouring samples times pairs of weights.
#ifndef VEKVC_H264_INTERPOLATE_CHROMA_SIMD_H
#define VEKVC_H264_INTERPOLATE_CHROMA_SIMD_H

#include <array>

#include "core/memory.h"
#include "core/simd.h"
#include "h264/interpolate_copy_simd.h"

namespace vekvc::simd {

// The weights of A, B, C and D, a byte each, A's lowest: products of two numbers that add up to 8.
constexpr std::uint32_t chromaWeights(int dx, int dy) {
    const auto across = static_cast<std::uint32_t>((8 - dx) | dx << 8);
    return across * static_cast<std::uint32_t>((8 - dy) | dy << 16);
}
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

// ---- planar chroma
//
// A shape says how the rows of a block lie in vectors: U holds kRows of them, and the pairs of their samples with
// others are in two vectors, low and high.

template <class U>
struct ChromaPairs {
    U low, high;
};

// Four rows of 4 samples in 128 bits.
struct Chroma4 {
    static constexpr int kWidth = 4, kRows = 4;
    using U = u8x16;
    using Pairs = ChromaPairs<U>;

    static U load(const Vek8u* row0, const Vek8u* row1, const Vek8u* row2, const Vek8u* row3) {
        return insertBytes<3, 4>(insertBytes<2, 4>(loadPair4<U>(row0, row1), row2), row3);
    }
    // Every row the one at p.
    static U oneRow(const Vek8u* p) { return as<U>(splatFrom<u32x4>(p)); }
    // The rows (the pairs of rows) that begin one above those of `rows`, after those of `before`.
    static U oneUp(U before, U rows) { return alignRight<12>(rows, before); }
    static Pairs oneUp(Pairs before, Pairs rows) {
        return {alignRight<8>(rows.low, before.high), alignRight<8>(rows.high, rows.low)};
    }
    static void store(Vek8u* p, Vek8u* row2, std::ptrdiff_t step, U v) {
        storeLanes32([=](int y) { return (y < 2 ? p : row2) + y % 2 * step; }, as<u32x4>(v));
    }
};

// Four rows of 8 samples in 256 bits; or two in 128 bits.
struct Chroma8 {
    static constexpr int kWidth = 8;
#if VEKVC_VECTOR256
    static constexpr int kRows = 4;
    using U = u8x32;
    using Pairs = ChromaPairs<U>;  // of rows 0 and 2, and of rows 1 and 3

    static U load(const Vek8u* row0, const Vek8u* row1, const Vek8u* row2, const Vek8u* row3) {
        return loadFour8<U>(row0, row1, row2, row3);
    }
    static U oneRow(const Vek8u* p) { return as<U>(splatFrom<u64x4>(p)); }
    static U oneUp(U before, U rows) { return alignRight<8>(rows, highThenLow(before, rows)); }
    static Pairs oneUp(Pairs before, Pairs rows) { return {highThenLow(before.high, rows.high), rows.low}; }
    static void store(Vek8u* p, Vek8u* row2, std::ptrdiff_t step, U v) {
        storePair8(p, p + step, lowHalf(v));
        storePair8(row2, row2 + step, highHalf(v));
    }
#else
    static constexpr int kRows = 2;
    using U = u8x16;
    using Pairs = ChromaPairs<U>;  // of row 0, and of row 1

    static U load(const Vek8u* row0, const Vek8u* row1, const Vek8u*, const Vek8u*) { return loadPair8<U>(row0, row1); }
    static U oneRow(const Vek8u* p) { return loadPair8<U>(p, p); }
    static U oneUp(U before, U rows) { return alignRight<8>(rows, before); }
    static Pairs oneUp(Pairs before, Pairs rows) { return {before.high, rows.low}; }
    static void store(Vek8u* p, Vek8u*, std::ptrdiff_t step, U v) { storePair8(p, p + step, v); }
#endif
};

// What a position asks for. The pairs of weights stand twice, to be broadcast in 32 bits.
using ChromaKernel = VekStatus (*)(const Vek8u*, std::ptrdiff_t, Vek8u*, std::ptrdiff_t, const struct ChromaPosition&,
                                   Vek32s height);
struct ChromaPosition {
    std::int16_t first[2], second[2];  // of A and B, or A and C if B and D weigh nothing; of C and D
    const ChromaKernel* kernels;       // by half the width
};

// A sum is at most 64 * 255; (sum + 32) >> 6 = (sum * 512 + 2^14) >> 15.
template <class U>
[[gnu::always_inline]] inline U roundedSums(Vec<std::int16_t, U::kBytes / 2> low,
                                            Vec<std::int16_t, U::kBytes / 2> high) {
    const auto factor = constant<decltype(low), 512>();
    return narrowU8(mulHighRound(low, factor), mulHighRound(high, factor));
}

template <class S, bool right, bool below>
[[gnu::always_inline]] inline void chromaGroups(const Vek8u* src, std::ptrdiff_t srcStep, Vek8u* dst,
                                                std::ptrdiff_t dstStep, const ChromaPosition& position, Vek32s height) {
    using U = typename S::U;
    using Pairs = typename S::Pairs;
    using B = Vec<std::int8_t, U::kBytes>;
    const auto weights = [](const std::int16_t* w) { return as<B>(splatFrom<Vec<std::uint32_t, U::kBytes / 4>>(w)); };
    const B first = weights(position.first), second = weights(position.second);
    const auto pairsOf = [](U a, U b) { return Pairs{interleaveLow(a, b), interleaveHigh(a, b)}; };

    U above;  // the rows before the group, or their pairs: the last one counts
    Pairs pairsAbove;
    if constexpr (below) {
        above = S::oneRow(src);
        if constexpr (right) pairsAbove = pairsOf(above, S::oneRow(src + 1));
        src += srcStep;
    }
    do {
        const Vek8u *const row1 = oneRowOn(src, srcStep), *const row2 = twoRowsOn(src, srcStep);
        const Vek8u* const row3 = S::kRows == 4 ? oneRowOn(row2, srcStep) : row2;
        const auto rowsFrom = [&](int x) { return S::load(src + x, row1 + x, row2 + x, row3 + x); };
        const U rows = rowsFrom(0);
        Pairs pairs;
        if constexpr (right)
            pairs = pairsOf(rows, rowsFrom(1));
        else
            pairs = pairsOf(S::oneUp(above, rows), rows);
        U result;
        if constexpr (right && below) {
            const Pairs up = S::oneUp(pairsAbove, pairs);
            result = roundedSums<U>(mulAddPairs(up.low, first) + mulAddPairs(pairs.low, second),
                                    mulAddPairs(up.high, first) + mulAddPairs(pairs.high, second));
        } else {
            result = roundedSums<U>(mulAddPairs(pairs.low, first), mulAddPairs(pairs.high, first));
        }
        Vek8u* const dstRow2 = twoRowsOn(dst, dstStep);
        S::store(dst, dstRow2, dstStep, result);
        above = rows;
        pairsAbove = pairs;
        src = S::kRows == 2 ? row2 : twoRowsOn(row2, srcStep);
        dst = S::kRows == 2 ? dstRow2 : twoRowsOn(dstRow2, dstStep);
    } while ((height -= S::kRows) != 0);
}

// Two rows of 2 or 4 samples.
template <int W, bool right, bool below>
[[gnu::always_inline]] inline void chromaTwoRows(const Vek8u* src, std::ptrdiff_t srcStep, Vek8u* dst,
                                                 std::ptrdiff_t dstStep, const ChromaPosition& position) {
    const auto weights = [](const std::int16_t* w) { return as<i8x16>(splatFrom<u32x4>(w)); };
    const auto rows = [=](const Vek8u* p) {
        const u8x16 two = insertBytes<1, W>(loadBytes<u8x16, W>(p), p + srcStep);
        return below ? insertBytes<2, W>(two, p + 2 * srcStep) : two;
    };
    const u8x16 a = rows(src), b = right ? rows(src + 1) : bytesRight<W>(a), pairs = interleaveLow(a, b);
    i16x8 sums = mulAddPairs(pairs, weights(position.first));
    if constexpr (right && below)
        sums += mulAddPairs(alignRight<2 * W>(interleaveHigh(a, b), pairs), weights(position.second));
    const u8x16 result = roundedSums<u8x16>(sums, sums);
    storeBytes<W>(dst, result);
    storeBytes<W>(dst + dstStep, bytesRight<W>(result));
}

// The kernels take their arguments where the exports have them and return vekStsOk: an export ends in a jump.
template <int W, bool right, bool below>
VekStatus chromaColumn(const Vek8u* src, std::ptrdiff_t srcStep, Vek8u* dst, std::ptrdiff_t dstStep,
                       const ChromaPosition& position, Vek32s height);

// A column cut into narrower ones, or its first two rows and the others.
template <int W, int first, bool right, bool below>
[[gnu::noinline]] VekStatus chromaTwoColumns(const Vek8u* src, std::ptrdiff_t srcStep, Vek8u* dst,
                                             std::ptrdiff_t dstStep, const ChromaPosition& position, Vek32s height) {
    chromaColumn<first, right, below>(src, srcStep, dst, dstStep, position, height);
    return chromaColumn<W - first, right, below>(src + first, srcStep, dst + first, dstStep, position, height);
}
template <int W, bool right, bool below>
[[gnu::noinline]] VekStatus chromaTwoRowsFirst(const Vek8u* src, std::ptrdiff_t srcStep, Vek8u* dst,
                                               std::ptrdiff_t dstStep, const ChromaPosition& position, Vek32s height) {
    if constexpr (!right && !below) {
        copyColumn<W, 2>(src, srcStep, dst, dstStep, 2);
    } else {
        for (int x = 0; x < W; x += 4) chromaTwoRows<4, right, below>(src + x, srcStep, dst + x, dstStep, position);
    }
    if (height == 2) return vekStsOk;
    return chromaColumn<W, right, below>(twoRowsOn(src, srcStep), srcStep, twoRowsOn(dst, dstStep), dstStep, position,
                                         height - 2);
}

template <int W, bool right, bool below>
VekStatus chromaColumn(const Vek8u* src, std::ptrdiff_t srcStep, Vek8u* dst, std::ptrdiff_t dstStep,
                       const ChromaPosition& position, Vek32s height) {
    if constexpr (W != 2 && W != 4 && W != 8) {
        return chromaTwoColumns < W, W == 6 ? 4 : 8, right, below > (src, srcStep, dst, dstStep, position, height);
    } else if constexpr (W == 2) {
        if constexpr (!right && !below) return copyColumn<2, 2>(src, srcStep, dst, dstStep, height);
        do {
            chromaTwoRows<2, right, below>(src, srcStep, dst, dstStep, position);
            src = twoRowsOn(src, srcStep), dst = twoRowsOn(dst, dstStep);
        } while ((height -= 2) != 0);
        return vekStsOk;
    } else {
        using S = std::conditional_t<W == 4, Chroma4, Chroma8>;
        constexpr int rows = !right && !below ? 4 : S::kRows;
        if (height % rows != 0) [[unlikely]]
            return chromaTwoRowsFirst<W, right, below>(src, srcStep, dst, dstStep, position, height);
        if constexpr (!right && !below) return copyColumn<W, 4>(src, srcStep, dst, dstStep, height);
        chromaGroups<S, right, below>(src, srcStep, dst, dstStep, position, height);
        return vekStsOk;
    }
}
template <bool right, bool below>
inline constexpr ChromaKernel kChromaKernels[8] = {
    nullptr,
    chromaColumn<2, right, below>,
    chromaColumn<4, right, below>,
    chromaColumn<6, right, below>,
    chromaColumn<8, right, below>,
    chromaColumn<10, right, below>,
    chromaColumn<12, right, below>,
    chromaColumn<14, right, below>,
};
// For every position: 8 * dy + dx.
inline constexpr auto kChromaPositions = [] {
    std::array<ChromaPosition, 64> all = {};
    for (int i = 0; i < 64; ++i) {
        const int dx = i % 8, dy = i / 8;
        const std::uint32_t w = chromaWeights(dx, dy);
        const std::int16_t first = dx != 0 ? weightsAB(w) : weightsAC(w), second = weightsCD(w);
        all[static_cast<std::size_t>(i)] = {
            {first, first},
            {second, second},
            dx != 0 ? (dy != 0 ? kChromaKernels<true, true> : kChromaKernels<true, false>)
                    : (dy != 0 ? kChromaKernels<false, true> : kChromaKernels<false, false>)};
    }
    return all;
}();

[[gnu::always_inline]] inline VekStatus interpolateChroma(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst,
                                                          Vek32s dstStep, Vek32s dx, Vek32s dy, VekiSize size) {
    const ChromaPosition& position = kChromaPositions[static_cast<Vek32u>(8 * dy + dx)];
    return position.kernels[static_cast<Vek32u>(size.width) / 2](pSrc, srcStep, pDst, dstStep, position, size.height);
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
