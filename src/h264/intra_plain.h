// The definitions of H.264 intra prediction (clause 8.3). P is the sample type: Vek8u with bit depth 8, Vek16u with 8
// to 14.
#ifndef VEKVC_H264_INTRA_PLAIN_H
#define VEKVC_H264_INTRA_PLAIN_H

#include "core/arith.h"
#include "core/memory.h"

namespace vekvc::h264 {

// Which neighbours of a block are available; the values are those of the predictors' `availability` argument. Whole
// chroma blocks tell the two halves of the left edge apart: `left` is its upper half.
enum Neighbour : Vek32u {
    above = 1,
    left = 2,
    leftLower = 4,
    aboveLeft = 32,
    aboveRight = 64,
};

// Intra 4x4 and 8x8 modes (Tables 8-2 and 8-3).
enum DirectionalMode {
    vertical,
    horizontal,
    dc,
    diagonalDownLeft,
    diagonalDownRight,
    verticalRight,
    horizontalDown,
    verticalLeft,
    horizontalUp,
};

// The neighbours that each of these modes cannot do without. DC takes what there is of the above row and left column.
inline constexpr Vek32u neededNeighbours[9] = {
    above, left, 0, above, above | left | aboveLeft, above | left | aboveLeft, above | left | aboveLeft, above, left};

constexpr Vek32u usedNeighbours(int mode, Vek32u available) {
    return (mode == dc ? above | left : neededNeighbours[mode]) & available;
}

// Intra 16x16 modes (Table 8-4); chroma modes (Table 8-5) have another order.
enum class Intra16x16Mode { vertical, horizontal, dc, plane };
enum class ChromaMode { dc, horizontal, vertical, plane };

inline constexpr Vek32u needed16x16[4] = {above, left, 0, above | left | aboveLeft};
inline constexpr Vek32u neededChroma[4] = {0, left | leftLower, above, above | left | leftLower | aboveLeft};

// The neighbours where the left edge is one piece.
constexpr Vek32u withWholeLeft(Vek32u available) {
    return available & left ? available | leftLower : available & ~Vek32u{leftLower};
}

// Does the mode lack a neighbour?
constexpr bool lacksNeighbour(Intra16x16Mode mode, Vek32u available) {
    return (needed16x16[static_cast<int>(mode)] & ~available) != 0;
}
constexpr bool lacksNeighbour(ChromaMode mode, Vek32u available) {
    return (neededChroma[static_cast<int>(mode)] & ~available) != 0;
}

}  // namespace vekvc::h264

namespace vekvc::plain {

// The reference samples of an n x n block, in line from the bottom of the left column over the corner to the end of the
// above row.
template <int n>
struct Reference {
    int samples[3 * n + 1];

    int& line(int k) { return samples[n + k]; }  // k = -n .. 2n; the corner p(-1, -1) is 0
    int& above(int x) { return line(x + 1); }    // p(x, -1)
    int& left(int y) { return line(-y - 1); }    // p(-1, y)
    int& corner() { return line(0); }
    int line(int k) const { return samples[n + k]; }
    int above(int x) const { return line(x + 1); }
    int left(int y) const { return line(-y - 1); }
};

constexpr int average2(int a, int b) { return (a + b + 1) >> 1; }
constexpr int average3(int a, int b, int c) { return (a + 2 * b + c + 2) >> 2; }

// Reads the reference samples that `mode` uses; those not available become `missing`. The above-right ones repeat the
// last of the above row instead (8.3.1.2, 8.3.2.2).
template <int n, class P>
Reference<n> readReference(MutableBlock<P> block, int mode, Vek32u available, int missing) {
    using namespace h264;
    const Vek32u used = usedNeighbours(mode, available);
    const bool useRight =
        (mode == diagonalDownLeft || mode == verticalLeft) && (used & above) && (available & aboveRight);
    Reference<n> p;
    for (int x = 0; x < n; ++x) p.above(x) = used & above ? block(x, -1) : missing;
    for (int x = n; x < 2 * n; ++x) p.above(x) = useRight ? block(x, -1) : p.above(n - 1);
    for (int y = 0; y < n; ++y) p.left(y) = used & left ? block(-1, y) : missing;
    p.corner() = used & aboveLeft ? block(-1, -1) : missing;
    return p;
}

// Mean of the available edges (8.3.1.2.3, 8.3.2.2.4), or `missing` without any.
template <int n>
int dcValue(const Reference<n>& p, Vek32u available, int missing) {
    int sumAbove = 0, sumLeft = 0;
    for (int k = 0; k < n; ++k) {
        sumAbove += p.above(k);
        sumLeft += p.left(k);
    }
    const bool hasAbove = available & h264::above, hasLeft = available & h264::left;
    if (hasAbove && hasLeft) return (sumAbove + sumLeft + n) / (2 * n);
    if (hasAbove) return (sumAbove + n / 2) / n;
    if (hasLeft) return (sumLeft + n / 2) / n;
    return missing;
}

// The prediction of sample (x, y): 8.3.1.2.1 to 8.3.1.2.9 for n = 4, 8.3.2.2.2 to 8.3.2.2.10 for n = 8.
template <int n>
int directional(const Reference<n>& p, int mode, int x, int y) {
    using namespace h264;
    const auto line2 = [&](int k) { return average2(p.line(k), p.line(k + 1)); };
    const auto line3 = [&](int k) { return average3(p.line(k - 1), p.line(k), p.line(k + 1)); };
    switch (mode) {
        case vertical:
            return p.above(x);
        case horizontal:
            return p.left(y);
        case diagonalDownLeft:
            return x + y == 2 * n - 2 ? average3(p.above(2 * n - 2), p.above(2 * n - 1), p.above(2 * n - 1))
                                      : line3(x + y + 2);
        case diagonalDownRight:
            return line3(x - y);
        case verticalRight: {
            const int z = 2 * x - y;
            if (z < -1) return line3(-(y - 2 * x - 1));
            return z % 2 == 0 ? line2(x - (y >> 1)) : line3(x - (y >> 1));
        }
        case horizontalDown: {
            const int z = 2 * y - x;
            if (z < -1) return line3(x - 2 * y - 1);
            return z % 2 == 0 ? line2(-(y - (x >> 1)) - 1) : line3(-(y - (x >> 1)));
        }
        case verticalLeft: {
            const int k = x + (y >> 1) + 1;
            return y % 2 == 0 ? line2(k) : line3(k + 1);
        }
        default: {  // horizontalUp
            const int z = x + 2 * y, k = y + (x >> 1);
            if (z > 2 * n - 3) return p.left(n - 1);
            if (z == 2 * n - 3) return average3(p.left(n - 2), p.left(n - 1), p.left(n - 1));
            return z % 2 == 0 ? average2(p.left(k), p.left(k + 1)) : average3(p.left(k), p.left(k + 1), p.left(k + 2));
        }
    }
}

template <int n, class P>
void putDirectional(const Reference<n>& p, int mode, Vek32u available, int missing, MutableBlock<P> block) {
    for (int y = 0; y < n; ++y)
        for (int x = 0; x < n; ++x)
            block.put(x, y,
                      static_cast<P>(mode == h264::dc ? dcValue(p, available, missing) : directional(p, mode, x, y)));
}

// Predicts a 4x4 block; true if a needed neighbour was not available and the mid value stood in for it.
template <class P>
bool predictIntra4x4(MutableBlock<P> block, int mode, Vek32u available, int bitDepth) {
    const int missing = 1 << (bitDepth - 1);
    putDirectional(readReference<4>(block, mode, available, missing), mode, available, missing, block);
    return (h264::neededNeighbours[mode] & ~available) != 0;
}

// The same for a block of 8-bit samples, as the export tells it.
inline VekStatus predictIntra4x4(Vek8u* p, Vek32s step, Vek32s mode, Vek32u available) {
    return predictIntra4x4(MutableBlock(p, step), mode, available, 8) ? vekStsWrnUnavailableNeighbour : vekStsOk;
}

// The reference samples that `mode` uses, filtered (8.3.2.2.1); those not available become `missing`. The corner takes
// part in the filtering of either edge.
template <class P>
Reference<8> filteredReference(MutableBlock<P> block, int mode, Vek32u available, int missing) {
    using namespace h264;
    const Vek32u used = usedNeighbours(mode, available);
    const bool hasAbove = used & above, hasLeft = used & left, hasCorner = available & aboveLeft;
    Reference<8> p{};
    for (int x = 0; x < 8 && hasAbove; ++x) p.above(x) = block(x, -1);
    for (int x = 8; x < 16 && hasAbove; ++x) p.above(x) = available & aboveRight ? block(x, -1) : p.above(7);
    for (int y = 0; y < 8 && hasLeft; ++y) p.left(y) = block(-1, y);
    if (hasCorner) p.corner() = block(-1, -1);

    Reference<8> f;
    for (int x = 0; x < 16; ++x) {
        const int before = x > 0 ? p.above(x - 1) : hasCorner ? p.corner() : p.above(0);
        const int after = x < 15 ? p.above(x + 1) : p.above(15);
        f.above(x) = hasAbove ? average3(before, p.above(x), after) : missing;
    }
    for (int y = 0; y < 8; ++y) {
        const int before = y > 0 ? p.left(y - 1) : hasCorner ? p.corner() : p.left(0);
        const int after = y < 7 ? p.left(y + 1) : p.left(7);
        f.left(y) = hasLeft ? average3(before, p.left(y), after) : missing;
    }
    f.corner() = !hasCorner            ? missing
                 : hasAbove && hasLeft ? average3(p.above(0), p.corner(), p.left(0))
                 : hasAbove || hasLeft ? (3 * p.corner() + (hasAbove ? p.above(0) : p.left(0)) + 2) >> 2
                                       : p.corner();
    return f;
}

// Predicts an 8x8 luma block; true if a needed neighbour was not available and the mid value stood in for it.
template <class P>
bool predictIntra8x8(MutableBlock<P> block, int mode, Vek32u available, int bitDepth) {
    const int missing = 1 << (bitDepth - 1);
    putDirectional(filteredReference(block, mode, available, missing), mode, available, missing, block);
    return (h264::neededNeighbours[mode] & ~available) != 0;
}

// Plane prediction (8.3.3.4, 8.3.4.4) of a block of 16 or 8 columns and rows.
template <int width, int height, class P>
void predictPlane(MutableBlock<P> block, int bitDepth) {
    constexpr int xCF = width / 2 - 4, yCF = height / 2 - 4;  // 4 for 16 samples, 0 for 8
    int h = 0, v = 0;
    for (int x = 0; x <= 3 + xCF; ++x) h += (x + 1) * (block(4 + xCF + x, -1) - block(2 + xCF - x, -1));
    for (int y = 0; y <= 3 + yCF; ++y) v += (y + 1) * (block(-1, 4 + yCF + y) - block(-1, 2 + yCF - y));
    // (5 H + 32) >> 6 for 16 samples of luma; (34 - 29 * (16 samples)) H for chroma, which is the same.
    const int b = ((width == 16 ? 5 : 34) * h + 32) >> 6;
    const int c = ((height == 16 ? 5 : 34) * v + 32) >> 6;
    const int a = 16 * (block(-1, height - 1) + block(width - 1, -1));
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            block.put(x, y, static_cast<P>(clipDepth((a + b * (x - 3 - xCF) + c * (y - 3 - yCF) + 16) >> 5, bitDepth)));
}

template <int width, int height, class P>
void predictVertical(MutableBlock<P> block) {
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) block.put(x, y, block(x, -1));
}

template <int width, int height, class P>
void predictHorizontal(MutableBlock<P> block) {
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) block.put(x, y, block(-1, y));
}

// Predicts a 16x16 luma block; all neighbours that the mode needs must be available.
template <class P>
void predictIntra16x16(MutableBlock<P> block, h264::Intra16x16Mode mode, Vek32u available, int bitDepth) {
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
    const int missing = 1 << (bitDepth - 1);
    const Reference<16> p = readReference<16>(block, h264::dc, available, missing);
    putDirectional(p, h264::dc, available, missing, block);
}

// DC prediction of the 4x4 chroma block at (x0, y0) (8.3.4.1 to 8.3.4.3).
template <class P>
int chromaDC(MutableBlock<P> block, int x0, int y0, bool hasAbove, bool hasLeft, int missing) {
    const bool aboveFirst = x0 > 0 && y0 == 0, leftFirst = x0 == 0 && y0 > 0;
    if (aboveFirst && hasAbove) hasLeft = false;
    if (leftFirst && hasLeft) hasAbove = false;
    int sum = 0;
    for (int k = 0; k < 4 && hasAbove; ++k) sum += block(x0 + k, -1);
    for (int k = 0; k < 4 && hasLeft; ++k) sum += block(-1, y0 + k);
    return hasAbove && hasLeft ? (sum + 4) >> 3 : hasAbove || hasLeft ? (sum + 2) >> 2 : missing;
}

// Predicts a chroma block of 8 columns and 8 or 16 rows (8.3.4); all neighbours that the mode needs must be available.
template <int height, class P>
void predictIntraChroma(MutableBlock<P> block, h264::ChromaMode mode, Vek32u available, int bitDepth) {
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
    for (int y0 = 0; y0 < height; y0 += 4)
        for (int x0 = 0; x0 < 8; x0 += 4) {
            const bool hasLeft = available & (y0 < height / 2 ? h264::left : h264::leftLower);
            const int value = chromaDC(block, x0, y0, available & h264::above, hasLeft, 1 << (bitDepth - 1));
            for (int k = 0; k < 16; ++k) block.put(x0 + k % 4, y0 + k / 4, static_cast<P>(value));
        }
}

// Both for blocks of 8-bit samples, as the exports tell them: the left edge is one piece.
inline VekStatus predictIntra16x16(Vek8u* p, Vek32s step, Vek32s predMode, Vek32u available) {
    const auto mode = static_cast<h264::Intra16x16Mode>(predMode);
    if (lacksNeighbour(mode, available)) return vekStsErrUnavailableNeighbour;
    predictIntra16x16(MutableBlock(p, step), mode, available, 8);
    return vekStsOk;
}
inline VekStatus predictIntraChroma8x8(Vek8u* p, Vek32s step, Vek32s predMode, Vek32u available) {
    const auto mode = static_cast<h264::ChromaMode>(predMode);
    const Vek32u neighbours = h264::withWholeLeft(available);
    if (lacksNeighbour(mode, neighbours)) return vekStsErrUnavailableNeighbour;
    predictIntraChroma<8>(MutableBlock(p, step), mode, neighbours, 8);
    return vekStsOk;
}

}  // namespace vekvc::plain

#endif
