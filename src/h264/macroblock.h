// What the reconstruction of a macroblock is told: where its blocks lie, which neighbours they have, how its residual
// is coded and scaled.
#ifndef VEKVC_H264_MACROBLOCK_H
#define VEKVC_H264_MACROBLOCK_H

#include "h264/intra_plain.h"

namespace vekvc::h264 {

// Position of a luma block in its macroblock, by luma4x4BlkIdx (6.4.3) and luma8x8BlkIdx (6.4.4).
constexpr int blockX4x4(int k) { return 8 * (k >> 2 & 1) + 4 * (k & 1); }
constexpr int blockY4x4(int k) { return 8 * (k >> 3) + 4 * (k >> 1 & 1); }
constexpr int blockX8x8(int k) { return 8 * (k & 1); }
constexpr int blockY8x8(int k) { return 8 * (k >> 1); }

// The macroblock's available neighbours from edgeFlags, in which a set bit marks a missing one. Without halves bit 0
// speaks for the whole left edge.
constexpr Vek32u availableNeighbours(Vek8u edgeFlags, bool halves) {
    const Vek32u lowerBit = halves ? 2 : 1;
    Vek32u available = 0;
    if (!(edgeFlags & 1)) available |= left;
    if (!(edgeFlags & lowerBit)) available |= leftLower;
    if (!(edgeFlags & 4)) available |= above;
    if (!(edgeFlags & 16)) available |= aboveLeft;
    if (!(edgeFlags & 4) && !(edgeFlags & 32)) available |= aboveRight;
    return available;
}

// The neighbours of the block at (x, y) of a luma macroblock with neighbours `mb`, without the above-right one.
constexpr Vek32u blockNeighbours(Vek32u mb, int x, int y) {
    const auto leftOfRow = [mb](int row) { return (mb & (row < 8 ? left : leftLower)) != 0; };
    Vek32u available = 0;
    if (y > 0 || (mb & above)) available |= above;
    if (x > 0 || leftOfRow(y)) available |= left;
    const bool corner = x > 0 ? y > 0 || (mb & above) : y > 0 ? leftOfRow(y - 1) : (mb & aboveLeft) != 0;
    return corner ? available | aboveLeft : available;
}

// A block's above-right neighbour lies in the row of macroblocks above, or inside and before it in decoding order.
constexpr Vek32u blockNeighbours4x4(Vek32u mb, int k) {
    constexpr Vek32u decodedLater = 1 << 3 | 1 << 7 | 1 << 11 | 1 << 13 | 1 << 15;
    const Vek32u available = blockNeighbours(mb, blockX4x4(k), blockY4x4(k));
    const bool right = k == 5 ? (mb & aboveRight) != 0 : (available & above) && !(decodedLater >> k & 1);
    return right ? available | aboveRight : available;
}
constexpr Vek32u blockNeighbours8x8(Vek32u mb, int k) {
    const Vek32u available = blockNeighbours(mb, blockX8x8(k), blockY8x8(k));
    const bool right = k == 1 ? (mb & aboveRight) != 0 : (available & above) && k != 3;
    return right ? available | aboveRight : available;
}

// Scaling of the residual of one plane. In a chroma plane levelScaleDC belongs to qp for 4:2:0, to qp + 3 for 4:2:2.
struct Scaling {
    const Vek16s* levelScale;  // for qp%6, in raster order
    int levelScaleDC;          // of the DC block, where there is one
    int qp;                    // QP'Y or QP'c
    bool bypass;               // the coefficients are the residual
};

// Which blocks of a macroblock are coded: DC, and block k by bit k.
struct CodedBlocks {
    bool dc;
    Vek32u ac;
};

// The next n coefficients of the packed stream.
template <class C>
C* takeCoeffs(C*& coeffs, int n) {
    C* block = coeffs;
    coeffs += n;
    return block;
}

}  // namespace vekvc::h264

#endif
