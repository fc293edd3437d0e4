// The definitions of macroblock reconstruction: prediction, then the residual from the packed coefficient stream
// (clauses 8.3 and 8.5). C is the coefficient type, P the sample type.
#ifndef VEKVC_H264_RECONSTRUCT_PLAIN_H
#define VEKVC_H264_RECONSTRUCT_PLAIN_H

#include "h264/macroblock.h"
#include "h264/transform_plain.h"

namespace vekvc::plain {

using h264::CodedBlocks;
using h264::Scaling;
using h264::takeCoeffs;

template <class P>
MutableBlock<P> blockAt(MutableBlock<P> mb, int x, int y) {
    mb.base = mb.at(x, y);
    return mb;
}

template <class P>
Block<P> readable(MutableBlock<P> block) {
    Block<P> result(block.base, 0);
    result.step = block.step;
    return result;
}

// Adds the residual of one 4x4 block (8.5.1, 8.5.2, 8.5.4). pCoeffs is null if the block is not coded, pDC points at
// its DC if that was coded apart.
template <class C, class P>
void addResidual4x4(const C* pCoeffs, const C* pDC, MutableBlock<P> block, const Scaling& s, int bitDepth) {
    constexpr Values<16, C> none{};
    const C* coeffs = pCoeffs ? pCoeffs : none.data();
    if (!s.bypass) {
        transformQuantInvAddPred4x4(readable(block), coeffs, pDC, block, s.qp, pCoeffs != nullptr, s.levelScale,
                                    bitDepth);
        return;
    }
    Values<16, C> r = loadValues<16>(coeffs);
    if (pDC) r[0] = *pDC;
    addToPrediction(r, readable(block), block, bitDepth);
}

// Adds the residual of one coded 8x8 block (8.5.3).
template <class C, class P>
void addResidual8x8(const C* pCoeffs, MutableBlock<P> block, const Scaling& s, int bitDepth) {
    Values<64, C> r = loadValues<64>(pCoeffs);
    if (!s.bypass) {
        scaleBlock8x8(r.data(), s.levelScale, s.qp / 6);
        inverse8x8(r);
    }
    addToPrediction(r, readable(block), block, bitDepth);
}

// ---- luma

template <class C, class P>
void reconstructInter4x4(C*& coeffs, MutableBlock<P> mb, Vek32u coded, const Scaling& s, int bitDepth) {
    for (int k = 0; k < 16; ++k) {
        if (!(coded >> k & 1)) continue;
        const C* pDC = nullptr;
        addResidual4x4(takeCoeffs(coeffs, 16), pDC, blockAt(mb, h264::blockX4x4(k), h264::blockY4x4(k)), s, bitDepth);
    }
}

template <class C, class P>
void reconstructInter8x8(C*& coeffs, MutableBlock<P> mb, Vek32u coded, const Scaling& s, int bitDepth) {
    for (int k = 0; k < 4; ++k) {
        if (!(coded >> 4 * k & 15)) continue;
        addResidual8x8(takeCoeffs(coeffs, 64), blockAt(mb, h264::blockX8x8(k), h264::blockY8x8(k)), s, bitDepth);
    }
}

// True if a prediction lacked a neighbour.
template <class C, class P>
bool reconstructIntra4x4(C*& coeffs, MutableBlock<P> mb, const Vek32u* pPredModes, Vek32u coded, Vek32u neighbours,
                         const Scaling& s, int bitDepth) {
    bool lacking = false;
    for (int k = 0; k < 16; ++k) {
        const MutableBlock<P> block = blockAt(mb, h264::blockX4x4(k), h264::blockY4x4(k));
        const int mode = static_cast<int>(load<Vek32u>(pPredModes + k));
        lacking |= predictIntra4x4(block, mode, h264::blockNeighbours4x4(neighbours, k), bitDepth);
        const C* pDC = nullptr;
        if (coded >> k & 1) addResidual4x4(takeCoeffs(coeffs, 16), pDC, block, s, bitDepth);
    }
    return lacking;
}

template <class C, class P>
bool reconstructIntra8x8(C*& coeffs, MutableBlock<P> mb, const Vek32u* pPredModes, Vek32u coded, Vek32u neighbours,
                         const Scaling& s, int bitDepth) {
    bool lacking = false;
    for (int k = 0; k < 4; ++k) {
        const MutableBlock<P> block = blockAt(mb, h264::blockX8x8(k), h264::blockY8x8(k));
        const int mode = static_cast<int>(load<Vek32u>(pPredModes + k));
        lacking |= predictIntra8x8(block, mode, h264::blockNeighbours8x8(neighbours, k), bitDepth);
        if (coded >> 4 * k & 15) addResidual8x8(takeCoeffs(coeffs, 64), block, s, bitDepth);
    }
    return lacking;
}

// Blocks whose DC values were coded in a block of their own: adds block k, at position at(k), with DC value dc[k].
template <class C, class P, class Position>
void addResidualWithDC(C*& coeffs, MutableBlock<P> plane, int blocks, Vek32u coded, const C* dc, Position at,
                       const Scaling& s, int bitDepth) {
    for (int k = 0; k < blocks; ++k) {
        const bool isCoded = coded >> k & 1;
        if (!isCoded && dc[k] == 0) continue;
        addResidual4x4(isCoded ? takeCoeffs(coeffs, 16) : nullptr, dc + k, at(plane, k), s, bitDepth);
    }
}

template <class C, class P>
void reconstructIntra16x16(C*& coeffs, MutableBlock<P> mb, h264::Intra16x16Mode mode, CodedBlocks coded,
                           Vek32u neighbours, const Scaling& s, int bitDepth) {
    predictIntra16x16(mb, mode, neighbours, bitDepth);
    Values<16, C> raster{};
    if (coded.dc) {
        raster = loadValues<16>(takeCoeffs(coeffs, 16));
        if (!s.bypass) inverseLumaDC(raster.data(), s.qp, s.levelScaleDC);
    }
    Values<16, C> dc;  // in block-index order (8.5.2)
    for (int k = 0; k < 16; ++k) dc[k] = raster[h264::blockY4x4(k) + h264::blockX4x4(k) / 4];
    addResidualWithDC(
        coeffs, mb, 16, coded.ac, dc.data(),
        [](MutableBlock<P> b, int k) { return blockAt(b, h264::blockX4x4(k), h264::blockY4x4(k)); }, s, bitDepth);
}

// ---- chroma: two planes of 8 columns and `height` rows, 8 (4:2:0) or 16 (4:2:2)

template <int height, class C, class P>
void reconstructChroma(C*& coeffs, const MutableBlock<P> (&planes)[2], const CodedBlocks (&coded)[2],
                       const Scaling (&scaling)[2], int bitDepth) {
    constexpr int blocks = height / 2;
    Values<blocks, C> dc[2]{};
    for (int plane = 0; plane < 2; ++plane) {
        const Scaling& s = scaling[plane];
        if (!coded[plane].dc) continue;
        dc[plane] = loadValues<blocks>(takeCoeffs(coeffs, blocks));
        if (s.bypass) continue;
        if constexpr (height == 8)
            inverseChromaDC2x2(dc[plane].data(), s.qp, s.levelScaleDC);
        else
            inverseChromaDC2x4(dc[plane].data(), s.qp + 3, s.levelScaleDC);
    }
    for (int plane = 0; plane < 2; ++plane)
        addResidualWithDC(
            coeffs, planes[plane], blocks, coded[plane].ac, dc[plane].data(),
            [](MutableBlock<P> b, int k) { return blockAt(b, k % 2 * 4, k / 2 * 4); }, scaling[plane], bitDepth);
}

}  // namespace vekvc::plain

#endif
