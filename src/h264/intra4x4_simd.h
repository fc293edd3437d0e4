// Intra prediction of 4x4 blocks of 8-bit samples (H.264 8.3.1.2), a kernel for each mode.
#ifndef VEKVC_H264_INTRA4X4_SIMD_H
#define VEKVC_H264_INTRA4X4_SIMD_H

#include <array>
#include <initializer_list>

#include "core/simd.h"
#include "h264/intra_plain.h"

namespace vekvc::simd {

// (a + 2 b + c + 2) >> 2: the mean of a and c rounded down, then that with b rounded up.
[[gnu::always_inline]] inline u8x16 average3(u8x16 a, u8x16 b, u8x16 c) {
    return average(average(a, c) - ((a ^ c) & constant<u8x16, 1>()), b);
}

inline Vek32u fourTimes(int sample) { return static_cast<Vek32u>(sample) * 0x01010101u; }

// The kernels take their arguments where the export has them: an export ends in a jump. They return
// vekStsWrnUnavailableNeighbour if a neighbour that the mode needs is missing.
using Intra4x4Kernel = VekStatus (*)(Vek8u* p, std::ptrdiff_t step, Vek32s mode, Vek32u available);

[[gnu::noinline, gnu::cold]] inline VekStatus predictLacking4x4(Vek8u* p, std::ptrdiff_t step, Vek32s mode,
                                                                Vek32u available) {
    return plain::predictIntra4x4(p, static_cast<Vek32s>(step), mode, available);
}

// Every sample of a directional mode is average3(a, b, c) of three neighbours: the mean of two of them, (x + y + 1) >>
// 1, is average3(x, y, x). The neighbours stand in a vector, for the modes that look at both edges in the order A B C D
// M I J K L, for the others from A or I on; bytes[0] to bytes[2] say where a, b and c of the 16 samples are.
struct Directions4x4 {
    std::array<std::uint8_t, 16> bytes[3];
};
constexpr Directions4x4 directions4x4(int mode) {
    Directions4x4 d = {};
    for (int i = 0; i < 16; ++i) {
        const int x = i % 4, y = i / 4,
                  half = mode == h264::horizontalUp || mode == h264::horizontalDown ? x / 2 : y / 2;
        // The first of the neighbours, on the line A .. H, or I .. L, or L .. I M A .. D, and how many of them.
        int first = 0, count = 3;
        switch (mode) {
            case h264::diagonalDownLeft:
                first = x + y;
                break;
            case h264::verticalLeft:
                first = x + half;
                count = 2 + y % 2;
                break;
            case h264::horizontalUp:
                first = y + half;
                count = 2 + x % 2;
                break;
            case h264::diagonalDownRight:
                first = 3 - y + x;
                break;
            case h264::verticalRight:
                first = 2 * x < y - 1 ? 4 - y : 4 + x - half - y % 2;
                count = 2 * x < y - 1 ? 3 : 2 + y % 2;
                break;
            default:  // horizontalDown
                first = 2 * y < x - 1 ? 2 + x : 3 - y + half;
                count = 2 * y < x - 1 ? 3 : 2 + x % 2;
        }
        for (int k = 0; k < 3; ++k) {
            const int at = first + k % count;
            int byte = 0;
            if (mode == h264::diagonalDownLeft || mode == h264::verticalLeft)
                byte = at < 7 ? at : 7;
            else if (mode == h264::horizontalUp)
                byte = at < 3 ? at : 3;
            else
                byte = at < 5 ? 8 - at : at - 5;
            d.bytes[k][static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(byte);
        }
    }
    return d;
}

[[gnu::always_inline]] inline void putRows4x4(Vek8u* p, std::ptrdiff_t step, u8x16 rows) {
    Vek8u* const row2 = twoRowsOn(p, step);
    storeLanes32([=](int y) { return (y < 2 ? p : row2) + y % 2 * step; }, as<u32x4>(rows));
}
// The left column from byte `first` of v on.
template <int first>
[[gnu::always_inline]] inline u8x16 insertLeft4(u8x16 v, const Vek8u* p, std::ptrdiff_t step) {
    const Vek8u* const row2 = twoRowsOn(p, step);
    v = insertBytes<first, 1>(v, p - 1);
    v = insertBytes<first + 1, 1>(v, p + step - 1);
    v = insertBytes<first + 2, 1>(v, row2 - 1);
    return insertBytes<first + 3, 1>(v, row2 + step - 1);
}

// Where a kernel this small begins matters as much as what it does.
template <int mode>
[[gnu::aligned(64)]] VekStatus predict4x4(Vek8u* p, std::ptrdiff_t step, Vek32s sameMode, Vek32u available) {
    using namespace h264;
    constexpr Vek32u needed = mode == dc ? above | left : neededNeighbours[mode];
    if ((available & needed) != needed) [[unlikely]]
        return predictLacking4x4(p, step, sameMode, available);
    const Vek8u* const aboveRow = p - step;
    if constexpr (mode == vertical) {
        const auto row = load<Vek32u>(aboveRow);
        Vek8u* const row2 = twoRowsOn(p, step);
        for (Vek8u* const to : {p, p + step, row2, row2 + step}) store(to, row);
    } else if constexpr (mode == horizontal) {
        Vek8u* const row2 = twoRowsOn(p, step);
        for (Vek8u* const row : {p, p + step, row2, row2 + step}) store(row, fourTimes(row[-1]));
    } else if constexpr (mode == dc) {
        Vek8u* const row2 = twoRowsOn(p, step);
        const int left = p[-1] + p[step - 1] + row2[-1] + row2[step - 1];
        const int sum = lane<0>(as<i32x4>(sumAbsDiff(loadBytes<u8x16, 4>(aboveRow), zero<u8x16>())));
        const Vek32u row = fourTimes((sum + left + 4) >> 3);
        for (Vek8u* const to : {p, p + step, row2, row2 + step}) store(to, row);
    } else {
        static constexpr Directions4x4 directions = directions4x4(mode);
        u8x16 v;
        if constexpr (mode == horizontalUp) {
            v = insertLeft4<0>(zero<u8x16>(), p, step);
        } else if constexpr (needed != above) {
            v = insertLeft4<5>(insertBytes<4, 1>(loadBytes<u8x16, 4>(aboveRow), aboveRow - 1), p, step);
        } else if (available & aboveRight) {
            v = loadBytes<u8x16, 8>(aboveRow);
        } else {
            v = shuffleBytes(loadBytes<u8x16, 4>(aboveRow),
                             lanes<u8x16>(0, 1, 2, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3));
        }
        const auto chosen = [&](int k) { return shuffleBytes(v, load<u8x16>(directions.bytes[k].data())); };
        putRows4x4(p, step, average3(chosen(0), chosen(1), chosen(2)));
    }
    return vekStsOk;
}
inline constexpr Intra4x4Kernel kIntra4x4Kernels[9] = {predict4x4<0>, predict4x4<1>, predict4x4<2>,
                                                       predict4x4<3>, predict4x4<4>, predict4x4<5>,
                                                       predict4x4<6>, predict4x4<7>, predict4x4<8>};

[[gnu::always_inline]] inline VekStatus predictIntra4x4(Vek8u* p, Vek32s step, Vek32s mode, Vek32u available) {
    // The small ones, which are also the frequent ones, stay in the export.
    if (mode == h264::vertical) return predict4x4<h264::vertical>(p, step, mode, available);
    if (mode == h264::dc) return predict4x4<h264::dc>(p, step, mode, available);
    if (mode == h264::horizontal) return predict4x4<h264::horizontal>(p, step, mode, available);
    return kIntra4x4Kernels[static_cast<Vek32u>(mode)](p, step, mode, available);
}
inline bool predictIntra4x4(MutableBlock<Vek8u> block, int mode, Vek32u available, int) {
    return kIntra4x4Kernels[mode](block.base, block.step, mode, available) != vekStsOk;
}

}  // namespace vekvc::simd

#endif
