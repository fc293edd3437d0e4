// Fast forms of intra prediction: the neighbours lie in vectors, and a row is a part of one.
#ifndef VEKVC_AVS_INTRA_SIMD_H
#define VEKVC_AVS_INTRA_SIMD_H

#include "avs/intra_plain.h"
#include "core/simd.h"

namespace vekvc::simd {

// 0, 1, 2 ... and 15 for all that would be above.
struct AvsShifts {
    Vek8u at[32];

    constexpr AvsShifts() : at() {
        for (int i = 0; i < 32; ++i) at[i] = static_cast<Vek8u>(i < 15 ? i : 15);
    }
};
inline constexpr AvsShifts kAvsShifts;

// v without its first n bytes; its last byte is repeated.
[[gnu::always_inline]] inline u8x16 avsFrom(u8x16 v, int n) { return shuffleBytes(v, load<u8x16>(kAvsShifts.at + n)); }
// (a + 2 b + c + 2) >> 2
[[gnu::always_inline]] inline u8x16 avsFiltered(u8x16 a, u8x16 b, u8x16 c) { return average(averageDown(a, c), b); }

// Eight samples of the column at p, the first one lowest.
[[gnu::always_inline]] inline std::uint64_t avsColumn(const Vek8u* p, std::ptrdiff_t step) {
    std::uint64_t column = 0;
    for (int i = 0; i < 8; ++i) column |= std::uint64_t{p[i * step]} << 8 * i;
    return column;
}
template <class RowAt>
[[gnu::always_inline]] inline void avsRows(const MutableBlock<Vek8u>& b, RowAt rowAt) {
    for (int y = 0; y < 8; ++y) storeBytes<8>(b.at(0, y), rowAt(y));
}

inline void predictAvsVertical(const MutableBlock<Vek8u>& b) {
    const u8x16 row = loadBytes<u8x16, 8>(b.at(0, -1));
    avsRows(b, [=](int) { return row; });
}
inline void predictAvsHorizontal(const MutableBlock<Vek8u>& b) {
    avsRows(b, [&](int y) { return splat<u8x16>(b(-1, y)); });
}
// Elements 1 to 8 of the filtered neighbours; `corner` and `further` are the samples before and behind them.
[[gnu::always_inline]] inline u8x16 avsSmooth(u8x16 edge, const Vek8u* corner, const Vek8u* further) {
    return avsFiltered(insertBytes<0, 1>(bytesLeft<1>(edge), corner), edge,
                       insertBytes<7, 1>(bytesRight<1>(edge), further));
}
inline void predictAvsDc(const MutableBlock<Vek8u>& b, Vek32u available) {
    const bool corner = (available & avs::kCorner) == avs::kCorner;
    const u8x16 ones = splat<u8x16>(255);
    u8x16 t = zero<u8x16>(), l = zero<u8x16>();
    if ((available & avs::kAbove) != 0) {
        const Vek8u* const row = b.at(0, -1);
        t = avsSmooth(loadBytes<u8x16, 8>(row), row - corner, row + ((available & avs::kAboveRight) != 0 ? 8 : 7));
    }
    if ((available & avs::kLeft) != 0) {
        const std::uint64_t column = avsColumn(b.at(-1, 0), b.step);
        l = avsSmooth(loadBytes<u8x16, 8>(&column), b.at(-1, corner ? -1 : 0),
                      b.at(-1, (available & avs::kBelowLeft) != 0 ? 8 : 7));
    }
    const auto leftOfRow = [](u8x16 v, int y) { return shuffleBytes(v, splat<u8x16>(y)); };
    switch (available & (avs::kAbove | avs::kLeft)) {
        case 0:
            return avsRows(b, [](int) { return splat<u8x16>(128); });
        case avs::kAbove:
            return avsRows(b, [=](int) { return t; });
        case avs::kLeft:
            return avsRows(b, [=](int y) { return leftOfRow(l, y); });
        default:  // the average rounded down, of complements
            return avsRows(
                b, [=, notT = t ^ ones, notL = l ^ ones](int y) { return average(notT, leftOfRow(notL, y)) ^ ones; });
    }
}
// The filtered neighbours 2 to 17 of an edge whose neighbours 1 to 16 are given.
[[gnu::always_inline]] inline u8x16 avsDiagonal(u8x16 edge) {
    return avsFiltered(edge, avsFrom(edge, 1), avsFrom(edge, 2));
}
inline void predictAvsDownLeft(const MutableBlock<Vek8u>& b, Vek32u available) {
    const Vek8u* const row = b.at(0, -1);
    std::uint64_t column[2];
    column[0] = avsColumn(b.at(-1, 0), b.step);
    column[1] =
        (available & avs::kBelowLeft) != 0 ? avsColumn(b.at(-1, 8), b.step) : (column[0] >> 56) * 0x0101010101010101u;
    const u8x16 above =
        (available & avs::kAboveRight) != 0
            ? load<u8x16>(row)
            : shuffleBytes(loadBytes<u8x16, 8>(row), lanes<u8x16>(0, 1, 2, 3, 4, 5, 6, 7, 7, 7, 7, 7, 7, 7, 7, 7));
    const u8x16 both = averageDown(avsDiagonal(above), avsDiagonal(load<u8x16>(column)));
    avsRows(b, [=](int y) { return avsFrom(both, y); });
}
// The edge from the lowest sample on the left, round the corner, to the one above the last column.
inline void predictAvsDownRight(const MutableBlock<Vek8u>& b) {
    const Vek8u* const row = b.at(0, -1);
    const std::uint64_t column = __builtin_bswap64(avsColumn(b.at(-1, 0), b.step));
    const u8x16 edge = loadPair8<u8x16>(&column, row - 1);
    const u8x16 next = insertBytes<15, 1>(avsFrom(edge, 1), row + 7);
    const u8x16 smooth = avsFiltered(edge, next, avsFrom(next, 1));
    avsRows(b, [=](int y) { return avsFrom(smooth, 7 - y); });
}
// Sums are within 16 bits: 510 * 16 + 2 * 4 * 1354 + 16.
inline void predictAvsPlane(const MutableBlock<Vek8u>& b) {
    const auto weights = lanes<i16x8>(-4, -3, -2, -1, 0, 1, 2, 3);
    const Vek8u* const row = b.at(0, -1);
    const std::uint64_t column = avsColumn(b.at(-1, 0), b.step);
    // Neighbours 0 to 7 weighted from -4 to 3, and the eighth by 4.
    const auto slope = [&](u8x16 edge, int last) {
        const int sum = sumLanes(mulAddPairs(widenLow(edge), weights)) + 4 * last;
        return (17 * sum + 16) >> 5;
    };
    const std::uint64_t cornerAndColumn = column << 8 | row[-1];
    const int last = static_cast<int>(column >> 56);
    const int slopeX = slope(loadBytes<u8x16, 8>(row - 1), row[7]);
    const int slopeY = slope(loadBytes<u8x16, 8>(&cornerAndColumn), last);
    i16x8 sum = splat<i16x8>(slopeX) * lanes<i16x8>(-3, -2, -1, 0, 1, 2, 3, 4) +
                splat<i16x8>(((row[7] + last) << 4) - 3 * slopeY + 16);
    for (int y = 0; y < 8; ++y) {
        const i16x8 samples = sum >> 5;
        storeBytes<8>(b.at(0, y), narrowU8(samples, samples));
        sum += splat<i16x8>(slopeY);
    }
}

}  // namespace vekvc::simd

#endif
