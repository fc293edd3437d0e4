// The fast inverse DCT: products of pairs of 16-bit values in both passes.
#ifndef VEKVC_COMMON_DCT_FAST_SIMD_H
#define VEKVC_COMMON_DCT_FAST_SIMD_H

#include "common/dct_rows_simd.h"

namespace vekvc::simd {

// Pairs of frequencies (0, 4), (2, 6), (1, 3), (5, 7), one of each of eight lines in 32-bit lanes: 4 or 8 lines a
// vector.
#if VEKVC_VECTOR256
using FastPairs = i16x16;
using FastSums = i32x8;
#else
using FastPairs = i16x8;
using FastSums = i32x4;
#endif
inline constexpr int kFastParts = 32 / FastSums::kBytes;
struct FastLines {
    FastPairs at[4][kFastParts];
};
struct FastResults {
    FastSums at[8][kFastParts];
};

template <int first, int second, int x>
[[gnu::always_inline]] inline FastSums fastProduct(FastPairs pairs) {
    constexpr auto low = static_cast<std::uint16_t>(dct::fastBasis(first, x));
    constexpr auto high = static_cast<std::uint16_t>(dct::fastBasis(second, x));
    return mulAddPairs(pairs,
                       as<FastPairs>(splat<FastSums>(static_cast<std::int32_t>(low | std::uint32_t{high} << 16))));
}

// One pass. The samples 7 - x have the even part's sum and the odd part's negated.
template <int shift>
[[gnu::always_inline]] inline FastResults fastPass(const FastLines& lines) {
    FastResults r;
    for (int p = 0; p < kFastParts; ++p) {
        const auto rounding = splat<FastSums>(1 << (shift - 1));
        const FastSums e0 = fastProduct<0, 4, 0>(lines.at[0][p]) + rounding;
        const FastSums e1 = fastProduct<0, 4, 1>(lines.at[0][p]) + rounding;
        const FastSums outer = fastProduct<2, 6, 0>(lines.at[1][p]), inner = fastProduct<2, 6, 1>(lines.at[1][p]);
        const FastSums even[4] = {e0 + outer, e1 + inner, e1 - inner, e0 - outer};
        const FastSums odd[4] = {fastProduct<1, 3, 0>(lines.at[2][p]) + fastProduct<5, 7, 0>(lines.at[3][p]),
                                 fastProduct<1, 3, 1>(lines.at[2][p]) + fastProduct<5, 7, 1>(lines.at[3][p]),
                                 fastProduct<1, 3, 2>(lines.at[2][p]) + fastProduct<5, 7, 2>(lines.at[3][p]),
                                 fastProduct<1, 3, 3>(lines.at[2][p]) + fastProduct<5, 7, 3>(lines.at[3][p])};
        for (int x = 0; x < 4; ++x) {
            r.at[x][p] = (even[x] + odd[x]) >> shift;
            r.at[7 - x][p] = (even[x] - odd[x]) >> shift;
        }
    }
    return r;
}

// Lanes v of the source's rows in the order 0 4 2 6, 1 3 5 7.
[[gnu::always_inline]] inline FastLines fastLines(const Vek16s* src) {
    constexpr int pairOf[4][2] = {{0, 4}, {2, 6}, {1, 3}, {5, 7}};
    FastLines lines;
    for (int i = 0; i < 4; ++i) {
        const Vek16s *first = src + 8 * pairOf[i][0], *second = src + 8 * pairOf[i][1];
#if VEKVC_VECTOR256
        const auto even = lanes<u8x32>(0, 1, 128, 128, 8, 9, 128, 128, 4, 5, 128, 128, 12, 13, 128, 128,  //
                                       2, 3, 128, 128, 6, 7, 128, 128, 10, 11, 128, 128, 14, 15, 128, 128);
        const auto odd = lanes<u8x32>(128, 128, 0, 1, 128, 128, 8, 9, 128, 128, 4, 5, 128, 128, 12, 13,  //
                                      128, 128, 2, 3, 128, 128, 6, 7, 128, 128, 10, 11, 128, 128, 14, 15);
        lines.at[i][0] =
            shuffleBytes(loadTwice16<i16x16>(first), even) | shuffleBytes(loadTwice16<i16x16>(second), odd);
#else
        const auto order = lanes<u8x16>(0, 1, 8, 9, 4, 5, 12, 13, 2, 3, 6, 7, 10, 11, 14, 15);
        const i16x8 a = shuffleBytes(load<i16x8>(first), order), b = shuffleBytes(load<i16x8>(second), order);
        lines.at[i][0] = interleaveLow(a, b);
        lines.at[i][1] = interleaveHigh(a, b);
#endif
    }
    return lines;
}

[[gnu::always_inline]] inline DctRows fastInverse(const Vek16s* src) {
    FastResults columns = fastPass<11>(fastLines(src));
    FastLines lines;
#if VEKVC_VECTOR256
    // x and x + 4 side by side: pairs 04 and 26 of both in the low half, 13 and 57 in the high one.
    FastSums r[4];
    for (int x = 0; x < 4; ++x) r[x] = as<FastSums>(narrowI16(columns.at[x][0], columns.at[x + 4][0]));
    transpose4x4(r[0], r[1], r[2], r[3]);
    for (int i = 0; i < 2; ++i) {
        lines.at[i][0] = as<FastPairs>(join(lowHalf(r[i]), lowHalf(r[i + 2])));
        lines.at[i + 2][0] = as<FastPairs>(joinHighHalves(r[i], r[i + 2]));
    }
#else
    for (int p = 0; p < 2; ++p) {
        FastSums r[4];
        for (int x = 0; x < 4; ++x) r[x] = as<FastSums>(narrowI16(columns.at[4 * p + x][0], columns.at[4 * p + x][1]));
        transpose4x4(r[0], r[1], r[2], r[3]);
        for (int i = 0; i < 4; ++i) lines.at[i][p] = as<FastPairs>(r[i]);
    }
#endif
    const FastResults samples = fastPass<20>(lines);
    DctRows rows;
#if VEKVC_VECTOR256
    for (int i = 0; i < 4; ++i) rows.pair[i] = swapMiddleQuarters(narrowI16(samples.at[i][0], samples.at[i + 4][0]));
#else
    for (int i = 0; i < 8; ++i) rows.row[i] = narrowI16(samples.at[i][0], samples.at[i][1]);
#endif
    return rows;
}

template <class Destination>
[[gnu::always_inline]] inline void dctInverseFast(const Vek16s* src, const Destination& dst) {
    storeRows(dst, fastInverse(src));
}

[[gnu::always_inline]] inline void dctInverseFastPair(const Vek16s* even, const Vek16s* odd, MutableBlock<Vek8u> dst) {
    const DctRows a = fastInverse(even), b = fastInverse(odd);
#if VEKVC_VECTOR256
    for (int i = 0; i < 4; ++i) {
        const u8x32 samples = narrowU8(a.pair[i], b.pair[i]);  // of each half: one row of the first, one of the second
        storePair16(dst.at(0, i), dst.at(0, i + 4), interleaveLow(samples, swapHalves(samples)));
    }
#else
    for (int i = 0; i < 8; ++i) {
        const u8x16 samples = narrowU8(a.row[i], b.row[i]);
        store(dst.at(0, i), interleaveLow(samples, swapHalves(samples)));
    }
#endif
}

}  // namespace vekvc::simd

#endif
