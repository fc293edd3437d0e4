// Fast forms of H.264 intra prediction. Directional modes are windows on rows of two- and three-tap means along the
// line of reference samples; those of 16-bit samples are left to the plain form.
#ifndef VEKVC_H264_INTRA_SIMD_H
#define VEKVC_H264_INTRA_SIMD_H

#include <utility>

#include "core/simd.h"
#include "h264/intra16x16_simd.h"
#include "h264/intra4x4_simd.h"
#include "h264/intra_plain.h"

namespace vekvc::simd {

// The left column, its first sample in the lowest byte, or last row first.
[[gnu::always_inline]] inline Vek32u leftColumn4(MutableBlock<Vek8u> b, int y) {
    return static_cast<Vek32u>(b(-1, y) | b(-1, y + 1) << 8 | b(-1, y + 2) << 16) | static_cast<Vek32u>(b(-1, y + 3))
                                                                                        << 24;
}
[[gnu::always_inline]] inline std::uint64_t leftColumn8(MutableBlock<Vek8u> b, int y) {
    return leftColumn4(b, y) | std::uint64_t{leftColumn4(b, y + 4)} << 32;
}

// ---- n x n blocks of 16-bit samples

// Rows 0, step .. of a block: windows of n samples on `sequence`, the first at `first`, the others `stride` apart.
template <int n>
[[gnu::always_inline]] inline void putWindows(MutableBlock<Vek16u> b, const Vek16u* sequence, int first, int stride,
                                              int y0 = 0, int step = 1) {
    for (int y = y0; y < n; y += step, first += stride)
        storeBytes<2 * n>(b.at(0, y), loadBytes<u16x8, 2 * n>(sequence + first));
}

template <int n>
void putDirectional(const plain::Reference<n>& p, int mode, Vek32u available, int missing, MutableBlock<Vek16u> block) {
    using namespace h264;
    if (mode == dc || mode == horizontal) {
        for (int y = 0; y < n; ++y)
            storeBytes<2 * n>(block.at(0, y),
                              splat<u16x8>(mode == dc ? plain::dcValue(p, available, missing) : p.left(y)));
        return;
    }
    // The line of reference samples, its last one repeated; sample k of Reference::line is line[n + k]. mean2[i] is the
    // mean of line[i] and its successor, mean3[i] that of line[i .. i + 2].
    constexpr int length = 3 * n + 1, room = (length + 7) / 8 * 8;
    Vek16u line[room + 8], mean2[room], mean3[room], sequence[3 * n];
    for (int i = 0; i < room + 8; ++i) line[i] = static_cast<Vek16u>(p.samples[i < length ? i : length - 1]);
    for (int i = 0; i < room; i += 8) {
        const u16x8 a = load<u16x8>(line + i), b = load<u16x8>(line + i + 1), c = load<u16x8>(line + i + 2);
        store(mean2 + i, average(a, b));
        store(mean3 + i, average(average(a, c) - ((a ^ c) & constant<u16x8, 1>()), b));
    }
    switch (mode) {
        case vertical:
            return putWindows<n>(block, line, n + 1, 0);
        case diagonalDownLeft:
            return putWindows<n>(block, mean3, n + 1, 1);
        case diagonalDownRight:
            return putWindows<n>(block, mean3, n - 1, -1);
        case verticalLeft:
            putWindows<n>(block, mean2, n + 1, 1, 0, 2);
            return putWindows<n>(block, mean3, n + 1, 1, 1, 2);
        case verticalRight:
            // Left of the means along the above row come every other mean along the left column.
            for (const int odd : {0, 1}) {
                constexpr int more = n / 2 - 1;
                for (int i = 0; i < more; ++i) sequence[i] = mean3[2 * i + 2 - odd];
                for (int x = 0; x < n; ++x) sequence[more + x] = odd ? mean3[n - 1 + x] : mean2[n + x];
                putWindows<n>(block, sequence, more, -1, odd, 2);
            }
            return;
        case horizontalDown:
            for (int i = 0; i < n; ++i) {
                sequence[2 * i] = mean2[i];
                sequence[2 * i + 1] = mean3[i];
            }
            for (int x = 0; x < n; ++x) sequence[2 * n + x] = mean3[n + x];
            return putWindows<n>(block, sequence, 2 * n - 2, -2);
        default:  // horizontalUp
            for (int i = 0; i < n - 1; ++i) {
                sequence[2 * i] = mean2[n - 2 - i];
                sequence[2 * i + 1] =
                    i < n - 2 ? mean3[n - 3 - i] : static_cast<Vek16u>((line[1] + 3 * line[0] + 2) >> 2);
            }
            for (int i = 2 * n - 2; i < 3 * n; ++i) sequence[i] = line[0];
            return putWindows<n>(block, sequence, 0, 2);
    }
}

// ---- 4x4

inline bool predictIntra4x4(MutableBlock<Vek16u> block, int mode, Vek32u available, int bitDepth) {
    const int missing = 1 << (bitDepth - 1);
    putDirectional(plain::readReference<4>(block, mode, available, missing), mode, available, missing, block);
    return (h264::neededNeighbours[mode] & ~available) != 0;
}

// ---- 8x8

// Rows 0 .. 7 are the eight bytes of low:high that begin at first + step * row.
template <int first, int step, int... y>
[[gnu::always_inline]] inline void putWindows(MutableBlock<Vek8u> b, u8x16 low, u8x16 high,
                                              std::integer_sequence<int, y...>) {
    (storeBytes<8>(b.at(0, y), alignRight<first + step * y>(high, low)), ...);
}
template <int first, int step>
[[gnu::always_inline]] inline void putWindows(MutableBlock<Vek8u> b, u8x16 low, u8x16 high) {
    putWindows<first, step>(b, low, high, std::make_integer_sequence<int, 8>{});
}
// Even rows from one sequence, odd rows from another; pairs of rows begin at first + step * pair.
template <int first, int step, int... i>
[[gnu::always_inline]] inline void putWindowPairs(MutableBlock<Vek8u> b, u8x16 even, u8x16 odd,
                                                  std::integer_sequence<int, i...>) {
    ((storeBytes<8>(b.at(0, 2 * i), bytesRight<first + step * i>(even)),
      storeBytes<8>(b.at(0, 2 * i + 1), bytesRight<first + step * i>(odd))),
     ...);
}
template <int first, int step>
[[gnu::always_inline]] inline void putWindowPairs(MutableBlock<Vek8u> b, u8x16 even, u8x16 odd) {
    putWindowPairs<first, step>(b, even, odd, std::make_integer_sequence<int, 4>{});
}

[[gnu::always_inline]] inline void putRows8(MutableBlock<Vek8u> b, u8x16 row) {
    for (int y = 0; y < 8; ++y) storeBytes<8>(b.at(0, y), row);
}

// The filtered above row and left column (8.3.2.2.1); 128 where they are not available.
[[gnu::always_inline]] inline u8x16 filteredAbove(MutableBlock<Vek8u> b, Vek32u available) {
    if (!(available & h264::above)) return constant<u8x16, 128>();
    u8x16 row;
    if (available & h264::aboveRight)
        row = load<u8x16>(b.at(0, -1));
    else
        row = shuffleBytes(loadBytes<u8x16, 8>(b.at(0, -1)),
                           lanes<u8x16>(0, 1, 2, 3, 4, 5, 6, 7, 7, 7, 7, 7, 7, 7, 7, 7));
    const u8x16 before = splat<u8x16>(available & h264::aboveLeft ? b(-1, -1) : b(0, -1));
    const u8x16 last = shuffleBytes(row, constant<u8x16, 15>());
    return average3(alignRight<15>(row, before), row, alignRight<1>(last, row));
}
[[gnu::always_inline]] inline u8x16 filteredLeft(MutableBlock<Vek8u> b, Vek32u available) {
    if (!(available & h264::left)) return constant<u8x16, 128>();
    const std::uint64_t samples = leftColumn8(b, 0);
    const u8x16 column =
        shuffleBytes(loadBytes<u8x16, 8>(&samples), lanes<u8x16>(0, 1, 2, 3, 4, 5, 6, 7, 7, 7, 7, 7, 7, 7, 7, 7));
    const u8x16 before = splat<u8x16>(available & h264::aboveLeft ? b(-1, -1) : b(-1, 0));
    return average3(alignRight<15>(column, before), column, bytesRight<1>(column));
}
// Lanes 0 to 7 of the left column; the others repeat lane 7.
[[gnu::always_inline]] inline u8x16 repeatLast(u8x16 column) {
    return shuffleBytes(column, lanes<u8x16>(0, 1, 2, 3, 4, 5, 6, 7, 7, 7, 7, 7, 7, 7, 7, 7));
}
inline int filteredCorner(MutableBlock<Vek8u> b, Vek32u available) {
    if (!(available & h264::aboveLeft)) return 128;
    const int corner = b(-1, -1);
    const bool hasAbove = available & h264::above, hasLeft = available & h264::left;
    if (hasAbove && hasLeft) return (b(0, -1) + 2 * corner + b(-1, 0) + 2) >> 2;
    if (hasAbove || hasLeft) return (3 * corner + (hasAbove ? b(0, -1) : b(-1, 0)) + 2) >> 2;
    return corner;
}

inline bool predictIntra8x8(MutableBlock<Vek8u> block, int mode, Vek32u available, int) {
    using namespace h264;
    const bool lacking = (neededNeighbours[mode] & ~available) != 0;
    switch (mode) {
        case vertical:
            putRows8(block, filteredAbove(block, available));
            return lacking;
        case horizontal: {
            const u8x16 column = filteredLeft(block, available);
            for (int y = 0; y < 8; ++y) storeBytes<8>(block.at(0, y), shuffleBytes(column, splat<u8x16>(y)));
            return lacking;
        }
        case dc: {
            const Vek32u both = available & (above | left);
            const auto sum8 = [](u8x16 v) { return lane<0>(as<i32x4>(sumAbsDiff(v, zero<u8x16>()))); };
            int value = 128;
            if (both == (above | left))
                value = (sum8(filteredAbove(block, available)) + sum8(filteredLeft(block, available)) + 8) >> 4;
            else if (both)
                value =
                    (sum8(both & above ? filteredAbove(block, available) : filteredLeft(block, available)) + 4) >> 3;
            putRows8(block, splat<u8x16>(value));
            return lacking;
        }
        case diagonalDownLeft:
        case verticalLeft: {
            const u8x16 line = filteredAbove(block, available);
            const u8x16 end = shuffleBytes(line, constant<u8x16, 15>());
            const u8x16 next = alignRight<1>(end, line);
            const u8x16 mean3 = average3(line, next, alignRight<2>(end, line));
            if (mode == diagonalDownLeft)
                putWindows<0, 1>(block, mean3, mean3);
            else
                putWindowPairs<0, 1>(block, average(line, next), mean3);
            return lacking;
        }
        case horizontalUp: {
            const u8x16 line = repeatLast(filteredLeft(block, available));
            const u8x16 end = shuffleBytes(line, constant<u8x16, 15>());
            const u8x16 next = bytesRight<1>(line);
            putWindows<0, 2>(block, interleaveLow(average(line, next), average3(line, next, bytesRight<2>(line))), end);
            return lacking;
        }
        default:
            break;
    }
    // The line from the bottom of the left column over the corner to the end of the above row, 17 samples.
    const u8x16 row = filteredAbove(block, available);
    const u8x16 column = shuffleBytes(filteredLeft(block, available),
                                      lanes<u8x16>(7, 6, 5, 4, 3, 2, 1, 0, 128, 128, 128, 128, 128, 128, 128, 128));
    const Vek32u corner = static_cast<Vek32u>(filteredCorner(block, available));
    const u8x16 line = column | bytesLeft<8>(loadBytes<u8x16, 4>(&corner)) | bytesLeft<9>(row);
    const u8x16 end = bytesRight<7>(row);
    const u8x16 next = alignRight<1>(end, line);
    const u8x16 mean2 = average(line, next), mean3 = average3(line, next, alignRight<2>(end, line));
    if (mode == diagonalDownRight) {
        putWindows<7, -1>(block, mean3, mean3);
    } else if (mode == verticalRight) {
        // Three means to the left of row 0 are taken from every other place of the line.
        const u8x16 even = shuffleBytes(mean3, lanes<u8x16>(2, 4, 6, 128, 128, 128, 128, 128, 128, 128, 128, 128, 128,
                                                            128, 128, 128)) |
                           bytesLeft<3>(bytesRight<8>(mean2));
        const u8x16 odd =
            shuffleBytes(mean3, lanes<u8x16>(1, 3, 5, 7, 8, 9, 10, 11, 12, 13, 14, 128, 128, 128, 128, 128));
        putWindowPairs<3, -1>(block, even, odd);
    } else {
        putWindows<14, -2>(block, interleaveLow(mean2, mean3), bytesRight<8>(mean3));
    }
    return lacking;
}

inline bool predictIntra8x8(MutableBlock<Vek16u> block, int mode, Vek32u available, int bitDepth) {
    const int missing = 1 << (bitDepth - 1);
    putDirectional(plain::filteredReference(block, mode, available, missing), mode, available, missing, block);
    return (h264::neededNeighbours[mode] & ~available) != 0;
}

}  // namespace vekvc::simd

#endif
