// Fast forms of H.264 intra prediction. Directional modes are windows on rows of two- and three-tap means along the
// line of reference samples; those of 16-bit samples are left to the plain form.
#ifndef VEKVC_H264_INTRA_SIMD_H
#define VEKVC_H264_INTRA_SIMD_H

#include <utility>

#include "core/simd.h"
#include "h264/intra_plain.h"

namespace vekvc::simd {

// (a + 2 b + c + 2) >> 2: the mean of a and c rounded down, then that with b rounded up.
VEKVC_SIMD_INLINE u8x16 average3(u8x16 a, u8x16 b, u8x16 c) {
    return average(average(a, c) - ((a ^ c) & constant<u8x16, 1>()), b);
}

inline Vek32u fourTimes(int sample) { return static_cast<Vek32u>(sample) * 0x01010101u; }

// The left column, its first sample in the lowest byte, or last row first.
VEKVC_SIMD_INLINE Vek32u leftColumn4(MutableBlock<Vek8u> b, int y) {
    return static_cast<Vek32u>(b(-1, y) | b(-1, y + 1) << 8 | b(-1, y + 2) << 16) | static_cast<Vek32u>(b(-1, y + 3))
                                                                                        << 24;
}
VEKVC_SIMD_INLINE std::uint64_t leftColumn8(MutableBlock<Vek8u> b, int y) {
    return leftColumn4(b, y) | std::uint64_t{leftColumn4(b, y + 4)} << 32;
}

inline int sumOf4(Vek32u samples) { return sumLanes(sumAbsDiff(loadBytes<u8x16, 4>(&samples), zero<u8x16>())); }

// ---- n x n blocks of 16-bit samples

// Rows 0, step .. of a block: windows of n samples on `sequence`, the first at `first`, the others `stride` apart.
template <int n>
VEKVC_SIMD_INLINE void putWindows(MutableBlock<Vek16u> b, const Vek16u* sequence, int first, int stride, int y0 = 0,
                                  int step = 1) {
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

VEKVC_SIMD_INLINE void putRow4(MutableBlock<Vek8u> b, int y, std::uint64_t row) {
    store<Vek32u>(b.at(0, y), static_cast<Vek32u>(row));
}
VEKVC_SIMD_INLINE std::uint64_t low64(u8x16 v) {
    std::uint64_t bits;
    storeBytes<8>(&bits, v);
    return bits;
}

inline bool predictIntra4x4(MutableBlock<Vek8u> block, int mode, Vek32u available, int) {
    using namespace h264;
    constexpr Vek32u missing = 0x80808080;
    const bool lacking = (neededNeighbours[mode] & ~available) != 0;
    const auto aboveRow = [&] { return available & above ? load<Vek32u>(block.at(0, -1)) : missing; };
    const auto leftColumn = [&] { return available & left ? leftColumn4(block, 0) : missing; };
    switch (mode) {
        case vertical: {
            const Vek32u row = aboveRow();
            for (int y = 0; y < 4; ++y) putRow4(block, y, row);
            return lacking;
        }
        case horizontal:
            for (int y = 0; y < 4; ++y) putRow4(block, y, fourTimes(available & left ? block(-1, y) : 128));
            return lacking;
        case dc: {
            const Vek32u both = available & (above | left);
            int value = 128;
            if (both == (above | left))
                value = (sumOf4(aboveRow()) + block(-1, 0) + block(-1, 1) + block(-1, 2) + block(-1, 3) + 4) >> 3;
            else if (both)
                value = (sumOf4(both & above ? aboveRow() : leftColumn()) + 2) >> 2;
            for (int y = 0; y < 4; ++y) putRow4(block, y, fourTimes(value));
            return lacking;
        }
        case diagonalDownLeft:
        case verticalLeft: {
            u8x16 line;  // A .. H, then H again
            if ((available & (above | aboveRight)) == (above | aboveRight))
                line = shuffleBytes(loadBytes<u8x16, 8>(block.at(0, -1)),
                                    lanes<u8x16>(0, 1, 2, 3, 4, 5, 6, 7, 7, 7, 7, 7, 7, 7, 7, 7));
            else {
                const Vek32u row = aboveRow();
                line = shuffleBytes(loadBytes<u8x16, 4>(&row),
                                    lanes<u8x16>(0, 1, 2, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3));
            }
            const u8x16 next = bytesRight<1>(line);
            const std::uint64_t mean3 = low64(average3(line, next, bytesRight<2>(line)));
            if (mode == diagonalDownLeft) {
                for (int y = 0; y < 4; ++y) putRow4(block, y, mean3 >> 8 * y);
                return lacking;
            }
            const std::uint64_t mean2 = low64(average(line, next));
            putRow4(block, 0, mean2);
            putRow4(block, 1, mean3);
            putRow4(block, 2, mean2 >> 8);
            putRow4(block, 3, mean3 >> 8);
            return lacking;
        }
        case horizontalUp: {
            const Vek32u column = leftColumn();
            const u8x16 line = shuffleBytes(loadBytes<u8x16, 4>(&column),
                                            lanes<u8x16>(0, 1, 2, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3));
            const u8x16 next = bytesRight<1>(line);
            const std::uint64_t means =
                low64(interleaveLow(average(line, next), average3(line, next, bytesRight<2>(line))));
            putRow4(block, 0, means);
            putRow4(block, 1, means >> 16);
            putRow4(block, 2, means >> 32);
            putRow4(block, 3, fourTimes(static_cast<int>(column >> 24)));
            return lacking;
        }
        default:
            break;
    }
    // The line L K J I M A B C D.
    const auto leftUpwards = [&]() -> std::uint64_t {
        if (!(available & left)) return missing;
        return static_cast<Vek32u>(block(-1, 3) | block(-1, 2) << 8 | block(-1, 1) << 16) |
               static_cast<Vek32u>(block(-1, 0)) << 24;
    };
    const Vek32u row = aboveRow();
    const std::uint64_t corner = available & aboveLeft ? block(-1, -1) : 128;
    const std::uint64_t first = leftUpwards() | corner << 32 | std::uint64_t{row} << 40;
    const std::uint64_t last = row >> 24;
    const u8x16 line = joinLow(loadBytes<u8x16, 8>(&first), loadBytes<u8x16, 8>(&last));
    const u8x16 next = bytesRight<1>(line);
    const u8x16 means3 = average3(line, next, bytesRight<2>(line));
    const std::uint64_t mean3 = low64(means3);
    if (mode == diagonalDownRight) {
        for (int y = 0; y < 4; ++y) putRow4(block, y, mean3 >> (24 - 8 * y));
    } else if (mode == verticalRight) {
        const std::uint64_t row0 = low64(average(line, next)) >> 32, row1 = mean3 >> 24;
        putRow4(block, 0, row0);
        putRow4(block, 1, row1);
        putRow4(block, 2, row0 << 8 | (mean3 >> 16 & 255));
        putRow4(block, 3, row1 << 8 | (mean3 >> 8 & 255));
    } else {
        const std::uint64_t means = low64(interleaveLow(average(line, next), means3));
        putRow4(block, 0, means >> 48 | mean3 >> 32 << 16);
        putRow4(block, 1, means >> 32);
        putRow4(block, 2, means >> 16);
        putRow4(block, 3, means);
    }
    return lacking;
}

inline bool predictIntra4x4(MutableBlock<Vek16u> block, int mode, Vek32u available, int bitDepth) {
    const int missing = 1 << (bitDepth - 1);
    putDirectional(plain::readReference<4>(block, mode, available, missing), mode, available, missing, block);
    return (h264::neededNeighbours[mode] & ~available) != 0;
}

// ---- 8x8

// Rows 0 .. 7 are the eight bytes of low:high that begin at first + step * row.
template <int first, int step, int... y>
VEKVC_SIMD_INLINE void putWindows(MutableBlock<Vek8u> b, u8x16 low, u8x16 high, std::integer_sequence<int, y...>) {
    (storeBytes<8>(b.at(0, y), alignRight<first + step * y>(high, low)), ...);
}
template <int first, int step>
VEKVC_SIMD_INLINE void putWindows(MutableBlock<Vek8u> b, u8x16 low, u8x16 high) {
    putWindows<first, step>(b, low, high, std::make_integer_sequence<int, 8>{});
}
// Even rows from one sequence, odd rows from another; pairs of rows begin at first + step * pair.
template <int first, int step, int... i>
VEKVC_SIMD_INLINE void putWindowPairs(MutableBlock<Vek8u> b, u8x16 even, u8x16 odd, std::integer_sequence<int, i...>) {
    ((storeBytes<8>(b.at(0, 2 * i), bytesRight<first + step * i>(even)),
      storeBytes<8>(b.at(0, 2 * i + 1), bytesRight<first + step * i>(odd))),
     ...);
}
template <int first, int step>
VEKVC_SIMD_INLINE void putWindowPairs(MutableBlock<Vek8u> b, u8x16 even, u8x16 odd) {
    putWindowPairs<first, step>(b, even, odd, std::make_integer_sequence<int, 4>{});
}

VEKVC_SIMD_INLINE void putRows8(MutableBlock<Vek8u> b, u8x16 row) {
    for (int y = 0; y < 8; ++y) storeBytes<8>(b.at(0, y), row);
}

// The filtered above row and left column (8.3.2.2.1); 128 where they are not available.
VEKVC_SIMD_INLINE u8x16 filteredAbove(MutableBlock<Vek8u> b, Vek32u available) {
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
VEKVC_SIMD_INLINE u8x16 filteredLeft(MutableBlock<Vek8u> b, Vek32u available) {
    if (!(available & h264::left)) return constant<u8x16, 128>();
    const std::uint64_t samples = leftColumn8(b, 0);
    const u8x16 column =
        shuffleBytes(loadBytes<u8x16, 8>(&samples), lanes<u8x16>(0, 1, 2, 3, 4, 5, 6, 7, 7, 7, 7, 7, 7, 7, 7, 7));
    const u8x16 before = splat<u8x16>(available & h264::aboveLeft ? b(-1, -1) : b(-1, 0));
    return average3(alignRight<15>(column, before), column, bytesRight<1>(column));
}
// Lanes 0 to 7 of the left column; the others repeat lane 7.
VEKVC_SIMD_INLINE u8x16 repeatLast(u8x16 column) {
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

// ---- 16x16 and chroma

// One row of width samples: 8 or 16 bytes, or 16 or 32 bytes of 16-bit samples.
template <int width, class P>
struct SampleRow {
    static constexpr int bytes = width * static_cast<int>(sizeof(P));
    u8x16 part[bytes == 32 ? 2 : 1];

    static SampleRow read(const P* p) {
        SampleRow r;
        if constexpr (bytes == 32) r.part[1] = load<u8x16>(offsetBytes(p, 16));
        r.part[0] = loadBytes < u8x16, bytes == 8 ? 8 : 16 > (p);
        return r;
    }
    static SampleRow allLike(const P* p) {
        using V = std::conditional_t<sizeof(P) == 1, u8x16, u16x8>;
        SampleRow r;
        for (u8x16& v : r.part) v = as<u8x16>(splatFrom<V>(p));
        return r;
    }
    void write(P* p) const {
        storeBytes<bytes == 8 ? 8 : 16>(p, part[0]);
        if constexpr (bytes == 32) store(offsetBytes(p, 16), part[1]);
    }
};

template <int width, int height, class P>
VEKVC_SIMD_INLINE void predictVertical(MutableBlock<P> block) {
    const auto row = SampleRow<width, P>::read(block.at(0, -1));
    for (int y = 0; y < height; ++y) row.write(block.at(0, y));
}

template <int width, int height, class P>
VEKVC_SIMD_INLINE void predictHorizontal(MutableBlock<P> block) {
    for (int y = 0; y < height; ++y) {
        if constexpr (sizeof(P) == 1 && width == 16) {  // the left sample with three of the block's own
            const u8x16 row = shuffleBytes(loadBytes<u8x16, 4>(block.at(-1, y)), zero<u8x16>());
            storeBytes<width>(block.at(0, y), row);
        } else {
            SampleRow<width, P>::allLike(block.at(-1, y)).write(block.at(0, y));
        }
    }
}

// The slope of the plane along n samples from `line` on, `stride` bytes apart, with the sample before them: k times the
// difference of the samples k places after and before the middle, summed. Each difference joins the sum once for every
// place, from the outermost inwards.
template <int n, class P>
int planeSlope(const P* line, std::ptrdiff_t stride) {
    const P *before = offsetBytes(line, -stride), *after = offsetBytes(line, (n - 1) * stride);
    int sum = 0, outer = 0;
    for (int k = 0; k < n / 2; ++k, before = offsetBytes(before, stride), after = offsetBytes(after, -stride)) {
        outer += load<P>(after) - load<P>(before);
        sum += outer;
    }
    return ((n == 16 ? 5 : 34) * sum + 32) >> 6;
}

// 8-bit samples. Every value stays within 16 bits: |b| and |c| are at most 1354 with 4 columns or rows from the middle,
// 717 with 8, and a is at most 8160.
template <int width, int height>
void predictPlane(MutableBlock<Vek8u> block, int) {
    constexpr int xMiddle = width / 2 - 1, yMiddle = height / 2 - 1;
    int b;
    if constexpr (width == 16) {
        // Weights -8 .. -1 for x = -1 .. 6 and 1 .. 8 for x = 8 .. 15.
        const i16x8 before = widenLow(loadBytes<u8x16, 8>(block.at(-1, -1))),
                    after = widenLow(loadBytes<u8x16, 8>(block.at(8, -1)));
        const i32x4 sums = mulAddPairs(before, lanes<i16x8>(-8, -7, -6, -5, -4, -3, -2, -1)) +
                           mulAddPairs(after, lanes<i16x8>(1, 2, 3, 4, 5, 6, 7, 8));
        b = (5 * sumLanes(sums) + 32) >> 6;
    } else {
        b = planeSlope<width>(block.at(0, -1), 1);
    }
    const int c = planeSlope<height>(block.at(-1, 0), block.step);
    const int a = 16 * (block(-1, height - 1) + block(width - 1, -1));
    const i16x8 slope = splat<i16x8>(b) * lanes<i16x8>(0, 1, 2, 3, 4, 5, 6, 7), down = splat<i16x8>(c);
    i16x8 row = slope + splat<i16x8>(a - b * xMiddle - c * yMiddle + 16);
    if constexpr (width == 16) {
#if VEKVC_VECTOR256
        i16x16 near = join(row, row + down), far = near + splat<i16x16>(8 * b);  // two rows, columns 0 to 7 and 8 to 15
        const i16x16 downTwo = splat<i16x16>(2 * c);
        for (int y = 0; y < height; y += 2, near += downTwo, far += downTwo)
            storePair16(block.at(0, y), block.at(0, y + 1), narrowU8(near >> 5, far >> 5));
#else
        const i16x8 right = splat<i16x8>(8 * b);
        for (int y = 0; y < height; ++y, row += down) store(block.at(0, y), narrowU8(row >> 5, (row + right) >> 5));
#endif
    } else {
        for (int y = 0; y < height; y += 2) {
            const i16x8 lower = row + down;
            storePair8(block.at(0, y), block.at(0, y + 1), narrowU8(row >> 5, lower >> 5));
            row = lower + down;
        }
    }
}
template <int width, int height>
void predictPlane(MutableBlock<Vek16u> block, int bitDepth) {
    const int b = planeSlope<width>(block.at(0, -1), sizeof(Vek16u));
    const int c = planeSlope<height>(block.at(-1, 0), block.step);
    const int a = 16 * (block(-1, height - 1) + block(width - 1, -1));
    const i32x4 right = splat<i32x4>(4 * b), down = splat<i32x4>(c);
    const u16x8 most = splat<u16x8>((1 << bitDepth) - 1);
    i32x4 row = splat<i32x4>(b) * lanes<i32x4>(0, 1, 2, 3);
    row += splat<i32x4>(a - b * (width / 2 - 1) - c * (height / 2 - 1) + 16);
    for (int y = 0; y < height; ++y, row += down) {
        i32x4 v = row;
        for (int x = 0; x < width; x += 8, v += right + right)
            store(block.at(x, y), min(narrowU16(v >> 5, (v + right) >> 5), most));
    }
}

// The sum of n samples of the above row from x on (n: 4, 8 or 16), or of the left column.
template <int n, class P>
int sumAbove(MutableBlock<P> block, int x) {
    if constexpr (sizeof(P) == 1 && n > 4)
        return sumLanes(sumAbsDiff(loadBytes<u8x16, n>(block.at(x, -1)), zero<u8x16>()));
    int sum = 0;
    for (int k = 0; k < n; ++k) sum += block(x + k, -1);
    return sum;
}
template <int n, class P>
int sumLeft(MutableBlock<P> block, int y) {
    const P* p = block.at(-1, y);
    int sum = 0;
    for (int k = 0; k < n; ++k, p = offsetBytes(p, block.step)) sum += load<P>(p);
    return sum;
}

template <class P>
VEKVC_SIMD_INLINE void predictIntra16x16(MutableBlock<P> block, h264::Intra16x16Mode mode, Vek32u available,
                                         int bitDepth) {
    switch (mode) {
        case h264::Intra16x16Mode::vertical:
            return predictVertical<16, 16>(block);
        case h264::Intra16x16Mode::horizontal:
            return predictHorizontal<16, 16>(block);
        case h264::Intra16x16Mode::plane:
            return predictPlane<16, 16>(block, bitDepth);
        case h264::Intra16x16Mode::dc:
            break;
    }
    const bool hasAbove = available & h264::above, hasLeft = available & h264::left;
    int value = 1 << (bitDepth - 1);
    if (hasAbove && hasLeft)
        value = (sumAbove<16>(block, 0) + sumLeft<16>(block, 0) + 16) >> 5;
    else if (hasAbove)
        value = (sumAbove<16>(block, 0) + 8) >> 4;
    else if (hasLeft)
        value = (sumLeft<16>(block, 0) + 8) >> 4;
    const P sample = static_cast<P>(value);
    const auto row = SampleRow<16, P>::allLike(&sample);
    for (int y = 0; y < 16; ++y) row.write(block.at(0, y));
}

template <int height, class P>
VEKVC_SIMD_INLINE void predictIntraChroma(MutableBlock<P> block, h264::ChromaMode mode, Vek32u available,
                                          int bitDepth) {
    switch (mode) {
        case h264::ChromaMode::vertical:
            return predictVertical<8, height>(block);
        case h264::ChromaMode::horizontal:
            return predictHorizontal<8, height>(block);
        case h264::ChromaMode::plane:
            return predictPlane<8, height>(block, bitDepth);
        case h264::ChromaMode::dc:
            break;
    }
    // 8.3.4.1 to 8.3.4.3: where one edge is preferred, the other stands in if it is missing.
    const int missing = 1 << (bitDepth - 1);
    const bool hasAbove = available & h264::above;
    int above0 = 0, above1 = 0;
    if (hasAbove) {
        if constexpr (sizeof(P) == 1) {
            const u8x16 row = loadBytes<u8x16, 8>(block.at(0, -1));
            const u64x2 sums = sumAbsDiff(as<u8x16>(interleaveLow(as<u32x4>(row), zero<u32x4>())), zero<u8x16>());
            above0 = lane<0>(as<i32x4>(sums));
            above1 = lane<2>(as<i32x4>(sums));
        } else {
            above0 = sumAbove<4>(block, 0);
            above1 = sumAbove<4>(block, 4);
        }
    }
    const auto one = [](int sum) { return (sum + 2) >> 2; };
    for (int y = 0; y < height; y += 4) {
        const bool hasLeft = available & (y < height / 2 ? h264::left : h264::leftLower);
        const int left = hasLeft ? sumLeft<4>(block, y) : 0;
        int value0, value1;
        if (hasAbove && hasLeft) {
            value0 = y == 0 ? (above0 + left + 4) >> 3 : one(left);
            value1 = y == 0 ? one(above1) : (above1 + left + 4) >> 3;
        } else {
            value0 = hasAbove ? one(above0) : hasLeft ? one(left) : missing;
            value1 = hasAbove ? one(above1) : hasLeft ? one(left) : missing;
        }
        if constexpr (sizeof(P) == 1) {
            const std::uint64_t row = fourTimes(value0) | std::uint64_t{fourTimes(value1)} << 32;
            for (int k = 0; k < 4; ++k) store(block.at(0, y + k), row);
        } else {
            const u16x8 row = joinLow(splat<u16x8>(value0), splat<u16x8>(value1));
            for (int k = 0; k < 4; ++k) store(block.at(0, y + k), row);
        }
    }
}

}  // namespace vekvc::simd

#endif
