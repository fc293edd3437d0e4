// Results of the correctly rounded DCTs that single precision leaves undecided (see common/dct_simd.h): exact sums.
#ifndef VEKVC_COMMON_DCT_EXACT_SIMD_H
#define VEKVC_COMMON_DCT_EXACT_SIMD_H

#include <bit>

#include "common/dct_plain.h"
#include "core/simd.h"

namespace vekvc::simd {

// The values of an 8x8 block in `parts`: columns (or rows) 4p to 4p + 3 or all 8 in the lanes of part[p].
#if VEKVC_VECTOR256
using DctFloats = f32x8;
using DctInts = i32x8;
#else
using DctFloats = f32x4;
using DctInts = i32x4;
#endif
inline constexpr int kDctParts = 8 * sizeof(float) / DctFloats::kBytes;

// Results with 16 fraction bits. In the inverse, lanes are rows and at[p][x] is column x.
struct DctSums {
    DctInts at[kDctParts][8];
};

// |cos(angle(u, x) pi / 16)| is cos(m pi / 16) for an m of 1 to 7, its class. D(a, b) changes its sign with the sign
// of either cosine, so that 7 x 7 values make all sums. Each, below 2^43, is split into digits of 15 bits, the highest
// one signed: products of digits and 16-bit values are added in 32 bits, exactly while the magnitudes of the values
// add up to less than 2^15.
struct ExactLine {
    Vek8u gather[16];  // class of each of the line's 8 columns, as places of bytes in a table row
    Vek16s sign[8];
    Vek8u row[8];  // the same for the block's 8 rows: class, plus 8 if negative
};
struct ExactTables {
    Vek16s digit[16][3][8];  // of D(row's class, column's class), negated in rows from 8 on
    ExactLine ofPlace[8];    // one place, the 8 frequencies
    ExactLine ofFrequency[8];
};
constexpr ExactTables exactTables() {
    ExactTables t = {};
    for (int row = 1; row < 8; ++row)
        for (int column = 1; column < 8; ++column)
            for (const int sign : {1, -1}) {
                const std::int64_t d = sign * dct::basis(row, column);
                auto& digit = t.digit[sign > 0 ? row : row + 8];
                digit[0][column] = static_cast<Vek16s>(d & 32767);
                digit[1][column] = static_cast<Vek16s>(d >> 15 & 32767);
                digit[2][column] = static_cast<Vek16s>(d >> 30);
            }
    for (int u = 0; u < 8; ++u)
        for (int x = 0; x < 8; ++x) {
            const int turn = dct::angle(u, x) & 31, half = turn > 16 ? 32 - turn : turn;
            const bool negative = half > 8;
            const int m = negative ? 16 - half : half;
            const auto enter = [&](ExactLine& line, int i) {
                line.gather[2 * i] = static_cast<Vek8u>(2 * m);
                line.gather[2 * i + 1] = static_cast<Vek8u>(2 * m + 1);
                line.sign[i] = negative ? -1 : 1;
                line.row[i] = static_cast<Vek8u>(negative ? m + 8 : m);
            };
            enter(t.ofPlace[x], u);
            enter(t.ofFrequency[u], x);
        }
    return t;
}
inline constexpr ExactTables kExactTables = exactTables();

// The sum over 8 rows of 8 values whose magnitudes add up to less than 2^15.
[[gnu::always_inline]] inline std::int64_t exactSum(const i16x8 (&values)[8], const ExactLine& columns,
                                                    const ExactLine& rows) {
    const u8x16 gather = load<u8x16>(columns.gather);
    const i16x8 sign = load<i16x8>(columns.sign);
    i32x4 sum[3] = {zero<i32x4>(), zero<i32x4>(), zero<i32x4>()};
    for (int i = 0; i < 8; ++i) {
        const i16x8 signedValues = withSign(values[i], sign);
        for (int k = 0; k < 3; ++k)
            sum[k] += mulAddPairs(signedValues, shuffleBytes(load<i16x8>(kExactTables.digit[rows.row[i]][k]), gather));
    }
    return (std::int64_t{sumLanes(sum[2])} << 30) + (std::int64_t{sumLanes(sum[1])} << 15) + sumLanes(sum[0]);
}
// The same for all values, by their low and high 8 bits.
[[gnu::always_inline]] inline std::int64_t exactSumOfAny(const i16x8 (&values)[8], const ExactLine& columns,
                                                         const ExactLine& rows) {
    i16x8 low[8], high[8];
    for (int i = 0; i < 8; ++i) {
        low[i] = values[i] & splat<i16x8>(255);
        high[i] = values[i] >> 8;
    }
    return exactSum(low, columns, rows) + (exactSum(high, columns, rows) << 8);
}

// The sums in memory: at[x][y] of the inverse, at[u][v] of the forward transform.
struct DctSpill {
    alignas(32) Vek32s at[8][8];

    [[gnu::always_inline]] inline explicit DctSpill(const DctSums& sums) {
        for (int i = 0; i < 8; ++i)
            for (int p = 0; p < kDctParts; ++p) store(&at[i][p * 8 / kDctParts], sums.at[p][i]);
    }
    [[gnu::always_inline]] inline void fetch(DctSums& sums) const {
        for (int i = 0; i < 8; ++i)
            for (int p = 0; p < kDctParts; ++p) sums.at[p][i] = load<DctInts>(&at[i][p * 8 / kDctParts]);
    }
};
// Which sums have low 16 bits below the margin: bit 8 i + j for at[i][j].
inline std::uint64_t undecided(const DctSpill& sums, Vek32s margin) {
    const i32x4 limit = splat<i32x4>(margin), fraction = splat<i32x4>(0xFFFF);
    std::uint64_t found = 0;
    for (int i = 6; i >= 0; i -= 2) {
        const auto below = [&](int row, int column) { return (load<i32x4>(&sums.at[row][column]) & fraction) < limit; };
        const i16x8 first = narrowI16(below(i, 0), below(i, 4)), second = narrowI16(below(i + 1, 0), below(i + 1, 4));
        found = found << 16 | byteMask(narrowI8(first, second));
    }
    return found;
}

// Makes sums anew that have a bit in `which`.
[[gnu::always_inline]] inline void decide(DctSpill& sums, std::uint64_t which, const i16x8 (&values)[8],
                                          const ExactLine (&lines)[8]) {
    for (; which != 0; which &= which - 1) {
        const int n = std::countr_zero(which), i = n >> 3, j = n & 7;
        sums.at[i][j] = dct::roundSum(exactSum(values, lines[i], lines[j])) * 65536;
    }
}
// All sums of a block with any values.
[[gnu::noinline]] inline DctSums exactSums(const i16x8 (&values)[8], const ExactLine (&lines)[8]) {
    DctSums sums = {};
    DctSpill spilled(sums);
    for (int i = 0; i < 8; ++i)
        for (int j = 0; j < 8; ++j) spilled.at[i][j] = dct::roundSum(exactSumOfAny(values, lines[i], lines[j])) * 65536;
    spilled.fetch(sums);
    return sums;
}

// The inverse transform's sums below the margin. With coefficients 0 and 4 alone in both directions 8 X is an integer,
// and ties are frequent.
[[gnu::noinline]] inline void decideInverse(const i16x8 (&rows)[8], DctSpill& sums, Vek32s margin) {
    std::uint64_t which = undecided(sums, margin);
    const i16x8 not04 = lanes<i16x8>(0, -1, -1, -1, 0, -1, -1, -1);
    i16x8 others = (rows[0] | rows[4]) & not04;
    for (const int v : {1, 2, 3, 5, 6, 7}) others = others | rows[v];
    if (!allZero(others)) return decide(sums, which, rows, kExactTables.ofPlace);
    const auto sign = [](int i) { return ((i + 1) & 2) != 0 ? -1 : 1; };  // of cos((2i + 1) pi / 4)
    for (; which != 0; which &= which - 1) {
        const int n = std::countr_zero(which), x = n >> 3, y = n & 7;
        const int even = lane<0>(rows[0]) + sign(x) * lane<4>(rows[0]);
        const int odd = lane<0>(rows[4]) + sign(x) * lane<4>(rows[4]);
        sums.at[x][y] = ((even + sign(y) * odd + 4) >> 3) * 65536;
    }
}

}  // namespace vekvc::simd

#endif
