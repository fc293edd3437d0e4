// Intra prediction of whole 16x16 blocks and of chroma blocks (H.264 8.3.3, 8.3.4).
#ifndef VEKVC_H264_INTRA16X16_SIMD_H
#define VEKVC_H264_INTRA16X16_SIMD_H

#include <utility>

#include "core/simd.h"
#include "h264/intra4x4_simd.h"

namespace vekvc::simd {

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
        if constexpr (!VEKVC_VECTOR256 && sizeof(P) == 1 && width == 16)
            r.part[0] = shuffleBytes(loadBytes<u8x16, 4>(p), zero<u8x16>());  // p is in front of a row: three more
        else
            for (u8x16& v : r.part) v = as<u8x16>(splatFrom<V>(p));
        return r;
    }
    void write(P* p) const {
        storeBytes<bytes == 8 ? 8 : 16>(p, part[0]);
        if constexpr (bytes == 32) store(offsetBytes(p, 16), part[1]);
    }
};

template <int width, int height, class P>
[[gnu::always_inline]] inline void predictVertical(MutableBlock<P> block) {
    const auto row = SampleRow<width, P>::read(block.at(0, -1));
    P* to = block.base;
#pragma GCC unroll 8
    for (int y = 0; y < height; y += 2, to = twoRowsOn(to, block.step)) {
        row.write(to);
        row.write(offsetBytes(to, block.step));
    }
}

template <int width, int height, class P>
[[gnu::always_inline]] inline void predictHorizontal(MutableBlock<P> block) {
    P* row = block.base;
#pragma GCC unroll 8
    for (int y = 0; y < height; y += 2, row = twoRowsOn(row, block.step)) {
        P* const next = offsetBytes(row, block.step);
        SampleRow<width, P>::allLike(row - 1).write(row);
        SampleRow<width, P>::allLike(next - 1).write(next);
    }
}

// Sixteen samples of the left column from p on, the topmost one lowest: four at a time, so that few wait for others.
[[gnu::always_inline]] inline u8x16 leftColumn(const Vek8u* p, std::ptrdiff_t step) {
    u8x16 quads[4];
    for (u8x16& quad : quads) {
        quad = insertBytes<1, 1>(insertBytes<0, 1>(zero<u8x16>(), p), p + step);
        p = twoRowsOn(p, step);
        quad = insertBytes<3, 1>(insertBytes<2, 1>(quad, p), p + step);
        p = twoRowsOn(p, step);
    }
    const auto pair = [&](int k) { return interleaveLow(as<u32x4>(quads[k]), as<u32x4>(quads[k + 1])); };
    return as<u8x16>(joinLow(pair(0), pair(2)));
}

// The slope of the plane along n 16-bit samples from `line` on, `stride` bytes apart, with the sample before them: k
// times the difference of the samples k places after and before the middle, summed. Each difference joins the sum once
// for every place, from the outermost inwards.
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

// The same for 8-bit samples in a vector, the one in the middle, which has no weight, replaced by that before the line.
template <int n>
[[gnu::always_inline]] inline i16x8 planeSlope(u8x16 line) {
    const i8x16 places = n == 16 ? lanes<i8x16>(-7, -6, -5, -4, -3, -2, -1, -8, 1, 2, 3, 4, 5, 6, 7, 8)
                                 : lanes<i8x16>(-3, -2, -1, -4, 1, 2, 3, 4, 0, 0, 0, 0, 0, 0, 0, 0);
    i32x4 sum = mulAddPairs(mulAddPairs(line, places), constant<i16x8, 1>());
    sum += swapHalves(sum);
    sum += shuffle32<1, 0, 3, 2>(sum);
    // (5 sum + 32) >> 6, or (34 sum + 32) >> 6
    const i32x4 slope =
        n == 16 ? ((sum << 2) + sum + constant<i32x4, 32>()) >> 6 : ((sum << 4) + sum + constant<i32x4, 16>()) >> 5;
    return splatLowest<i16x8>(as<i16x8>(slope));
}

// The slope down the left column: from its ends inwards, in general registers, beside the vectors of the other slope.
template <int n>
[[gnu::always_inline]] inline int planeSlopeDown(const Vek8u* corner, std::ptrdiff_t step) {
    const Vek8u *before = corner, *after = corner + n * step;
    int sum = 0;
#pragma GCC unroll 4
    for (int k = n / 2; k > 0; k -= 2) {
        sum += k * (after[0] - before[0]) + (k - 1) * (after[-step] - before[step]);
        before = twoRowsOn(before, step), after = twoRowsOn(after, -step);
    }
    return ((n == 16 ? 5 : 34) * sum + 32) >> 6;
}

// 8-bit samples. Every value stays within 16 bits: |b| and |c| are at most 1354 with 4 columns or rows from the middle,
// 717 with 8, and a is at most 8160.
template <int width, int height>
[[gnu::always_inline]] inline void predictPlane(MutableBlock<Vek8u> block, int) {
    constexpr int xMiddle = width / 2 - 1, yMiddle = height / 2 - 1;
    const Vek8u *const above = block.at(0, -1), *const corner = above - 1;
    const u8x16 line = insertBytes<xMiddle, 1>(loadBytes<u8x16, width>(above), corner);
    const i16x8 b = planeSlope<width>(line), c = splat<i16x8>(planeSlopeDown<height>(corner, block.step));
    const int a = 16 * (block(-1, height - 1) + block(width - 1, -1));
    i16x8 row = b * lanes<i16x8>(-xMiddle, 1 - xMiddle, 2 - xMiddle, 3 - xMiddle, 4 - xMiddle, 5 - xMiddle, 6 - xMiddle,
                                 7 - xMiddle) +
                (splat<i16x8>(a + 16) - c * constant<i16x8, yMiddle>());
    Vek8u* to = block.base;
    if constexpr (width == 16) {
#if VEKVC_VECTOR256
        // Two rows, columns 0 to 7 and 8 to 15.
        i16x16 near = join(row, row + c), far = near + splatLowest<i16x16>(b << 3);
        const i16x16 downTwo = splatLowest<i16x16>(c + c);
        for (int y = 0; y < height; y += 2, near += downTwo, far += downTwo) {
            storePair16(to, to + block.step, narrowU8(near >> 5, far >> 5));
            to = twoRowsOn(to, block.step);
        }
#else
        const i16x8 right = b << 3;
        for (int y = 0; y < height; ++y, row += c) store(block.at(0, y), narrowU8(row >> 5, (row + right) >> 5));
#endif
    } else {
        for (int y = 0; y < height; y += 2) {
            const i16x8 lower = row + c;
            storePair8(to, to + block.step, narrowU8(row >> 5, lower >> 5));
            to = twoRowsOn(to, block.step);
            row = lower + c;
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

// The sum of n samples of the above row from x on, or of the left column.
template <int n, class P>
int sumAbove(MutableBlock<P> block, int x) {
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
[[gnu::always_inline]] inline void predictIntra16x16(MutableBlock<P> block, h264::Intra16x16Mode mode, Vek32u available,
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
[[gnu::always_inline]] inline void predictIntraChroma(MutableBlock<P> block, h264::ChromaMode mode, Vek32u available,
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

// ---- the exports' kernels, which take their arguments where the exports have them and check the neighbours

using IntraKernel = VekStatus (*)(Vek8u* p, std::ptrdiff_t step, Vek32u available);

template <int height>
[[gnu::always_inline]] inline void fillRows(Vek8u* p, std::ptrdiff_t step, u8x16 row) {
#pragma GCC unroll 8
    for (int y = 0; y < height; y += 2, p = twoRowsOn(p, step)) {
        store(p, row);
        store(p + step, row);
    }
}

template <h264::Intra16x16Mode mode>
[[gnu::aligned(64)]] VekStatus predict16x16(Vek8u* p, std::ptrdiff_t step, Vek32u available) {
    using Mode = h264::Intra16x16Mode;
    constexpr Vek32u needed = h264::needed16x16[static_cast<int>(mode)];
    if ((available & needed) != needed) [[unlikely]]
        return vekStsErrUnavailableNeighbour;
    const MutableBlock<Vek8u> block(p, static_cast<Vek32s>(step));
    if constexpr (mode == Mode::vertical) {
        predictVertical<16, 16>(block);
    } else if constexpr (mode == Mode::horizontal) {
        predictHorizontal<16, 16>(block);
    } else if constexpr (mode == Mode::plane) {
        predictPlane<16, 16>(block, 8);
    } else {
        constexpr Vek32u both = h264::above | h264::left;
        if ((available & both) != both) [[unlikely]] {
            plain::predictIntra16x16(block, mode, available, 8);
            return vekStsOk;
        }
        // (sum + 16) >> 5 is half of sum >> 4, rounded up.
        const auto sums = [](u8x16 v) { return as<u16x8>(sumAbsDiff(v, zero<u8x16>())); };
        const u16x8 eights = sums(load<u8x16>(p - step)) + sums(leftColumn(p - 1, step));
        const u16x8 sum = eights + bytesRight<8>(eights);
        fillRows<16>(p, step, shuffleBytes(as<u8x16>(average(sum >> 4, zero<u16x8>())), zero<u8x16>()));
    }
    return vekStsOk;
}
inline constexpr IntraKernel kIntra16x16Kernels[4] = {
    predict16x16<h264::Intra16x16Mode::vertical>, predict16x16<h264::Intra16x16Mode::horizontal>,
    predict16x16<h264::Intra16x16Mode::dc>, predict16x16<h264::Intra16x16Mode::plane>};

[[gnu::always_inline]] inline VekStatus predictIntra16x16(Vek8u* p, Vek32s step, Vek32s mode, Vek32u available) {
    return kIntra16x16Kernels[static_cast<Vek32u>(mode)](p, step, available);
}
[[gnu::always_inline]] inline void predictIntra16x16(MutableBlock<Vek8u> block, h264::Intra16x16Mode mode,
                                                     Vek32u available, int) {
    kIntra16x16Kernels[static_cast<int>(mode)](block.base, block.step, available);
}

template <h264::ChromaMode mode>
[[gnu::aligned(64)]] VekStatus predictChroma8x8(Vek8u* p, std::ptrdiff_t step, Vek32u available) {
    using Mode = h264::ChromaMode;
    constexpr Vek32u needed = h264::neededChroma[static_cast<int>(mode)] & ~Vek32u{h264::leftLower};
    if ((available & needed) != needed) [[unlikely]]
        return vekStsErrUnavailableNeighbour;
    const MutableBlock<Vek8u> block(p, static_cast<Vek32s>(step));
    if constexpr (mode == Mode::vertical) {
        predictVertical<8, 8>(block);
    } else if constexpr (mode == Mode::horizontal) {
        predictHorizontal<8, 8>(block);
    } else if constexpr (mode == Mode::plane) {
        predictPlane<8, 8>(block, 8);
    } else {
        constexpr Vek32u both = h264::above | h264::left;
        if ((available & both) != both) [[unlikely]] {
            plain::predictIntraChroma<8>(block, mode, h264::withWholeLeft(available), 8);
            return vekStsOk;
        }
        // Sums a0 and a1 of the halves of the above row, l0 and l1 of those of the left column. The blocks' values are
        // (a0 + l0 + 4) >> 3, (a1 + 2) >> 2 = (a1 + a1 + 4) >> 3, the same of l1, and (a1 + l1 + 4) >> 3.
        const auto halves = [](u8x16 v) {
            return as<u16x8>(sumAbsDiff(as<u8x16>(interleaveLow(as<u32x4>(v), zero<u32x4>())), zero<u8x16>()));
        };
        const u16x8 a = halves(loadBytes<u8x16, 8>(p - step));
        const auto fourLeft = [=](const Vek8u* row) {
            const Vek8u* const row2 = twoRowsOn(row, step);
            return static_cast<Vek32u>(row[-1] + row[step - 1] + row2[-1] + row2[step - 1]);
        };
        Vek8u* const lower = twoRowsOn(twoRowsOn(p, step), step);
        const std::uint64_t left = std::uint64_t{fourLeft(p)} << 16 | std::uint64_t{fourLeft(lower)} << 32;
        const u8x16 sums = as<u8x16>(a | loadBytes<u16x8, 8>(&left));  // a0 l0 l1 - a1 - - -
        const u16x8 first =
            as<u16x8>(shuffleBytes(sums, lanes<u8x16>(0, 1, 8, 9, 4, 5, 8, 9, 128, 128, 128, 128, 128, 128, 128, 128)));
        const u16x8 second =
            as<u16x8>(shuffleBytes(sums, lanes<u8x16>(2, 3, 8, 9, 4, 5, 4, 5, 128, 128, 128, 128, 128, 128, 128, 128)));
        const u16x8 values = average((first + second) >> 2, zero<u16x8>());
        const u8x16 rows =
            shuffleBytes(as<u8x16>(values), lanes<u8x16>(0, 0, 0, 0, 2, 2, 2, 2, 4, 4, 4, 4, 6, 6, 6, 6));
        Vek8u *const row2 = twoRowsOn(p, step), *const row6 = twoRowsOn(lower, step);
        storePair8(p, lower, rows);
        storePair8(p + step, lower + step, rows);
        storePair8(row2, row6, rows);
        storePair8(row2 + step, row6 + step, rows);
    }
    return vekStsOk;
}
inline constexpr IntraKernel kIntraChromaKernels[4] = {
    predictChroma8x8<h264::ChromaMode::dc>, predictChroma8x8<h264::ChromaMode::horizontal>,
    predictChroma8x8<h264::ChromaMode::vertical>, predictChroma8x8<h264::ChromaMode::plane>};

[[gnu::always_inline]] inline VekStatus predictIntraChroma8x8(Vek8u* p, Vek32s step, Vek32s mode, Vek32u available) {
    return kIntraChromaKernels[static_cast<Vek32u>(mode)](p, step, available);
}

}  // namespace vekvc::simd

#endif
