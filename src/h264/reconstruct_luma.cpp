// Exports: reconstruction of luma macroblocks.
#include "core/check.h"
#include "core/kernel.h"
#include "h264/reconstruct_plain.h"
#include "vekvc/h264_reconstruct.h"
#if VEKVC_SIMD
#include "h264/reconstruct_simd.h"
#endif

using namespace vekvc;
using h264::CodedBlocks;
using h264::Scaling;

namespace {

enum class LeftEdge { whole, halves };

// The flat LevelScale4x4; any table will do for a QP that the checks will reject.
const Vek16s* flatLevelScale(Vek32s QP) { return h264::flatLevelScale4x4[outside(QP, 0, 51) ? 0 : QP % 6].data(); }

bool outsideQP(Vek32s QP, Vek32s bitDepth) {
    return outside(bitDepth, 8, 14) || outside(QP, 0, 51 + 6 * (bitDepth - 8));
}

Scaling scaling(Vek32s QP, const Vek16s* pLevelScale, Vek8u bypass) {
    return {pLevelScale, load<Vek16s>(pLevelScale), QP, bypass != 0 && QP == 0};
}

constexpr Vek32u lumaBlocks(Vek32u cbp) { return cbp >> 1 & 0xFFFF; }

template <int transformSize, class C, class P>
VekStatus reconstructInter(C** ppCoeffs, P* pSrcDst, Vek32s step, Vek32u cbp, Vek32s QP, const Vek16s* pLevelScale,
                           Vek8u bypass, Vek32s bitDepth) {
    if (anyNull(ppCoeffs, pSrcDst, pLevelScale) || anyNull(*ppCoeffs)) return vekStsErrNullPtr;
    if (outsideQP(QP, bitDepth)) return vekStsErrOutOfRange;
    if (lumaBlocks(cbp) == 0) return vekStsOk;
    const Scaling s = scaling(QP, pLevelScale, bypass);
    if constexpr (transformSize == 4)
        kernel::reconstructInter4x4<C, P>(*ppCoeffs, {pSrcDst, step}, lumaBlocks(cbp), s, bitDepth);
    else
        kernel::reconstructInter8x8<C, P>(*ppCoeffs, {pSrcDst, step}, lumaBlocks(cbp), s, bitDepth);
    return vekStsOk;
}

// Is one of the n prediction modes above 8?
bool anyUnknownMode(const Vek32u* pPredModes, int n) {
    bool unknown = false;
    for (int k = 0; k < n; ++k) unknown |= load<Vek32u>(pPredModes + k) > 8;
    return unknown;
}

template <int transformSize, LeftEdge leftEdge, class C, class P>
VekStatus reconstructIntra(C** ppCoeffs, P* pSrcDst, Vek32s step, const Vek32u* pPredModes, Vek32u cbp, Vek32s QP,
                           Vek8u edgeFlags, const Vek16s* pLevelScale, Vek8u bypass, Vek32s bitDepth) {
    if (anyNull(ppCoeffs, pSrcDst, pPredModes, pLevelScale) || anyNull(*ppCoeffs)) return vekStsErrNullPtr;
    if (anyUnknownMode(pPredModes, 256 / (transformSize * transformSize)) || outsideQP(QP, bitDepth))
        return vekStsErrOutOfRange;
    const Scaling s = scaling(QP, pLevelScale, bypass);
    const Vek32u neighbours = h264::availableNeighbours(edgeFlags, leftEdge == LeftEdge::halves);
    bool lacking;
    if constexpr (transformSize == 4)
        lacking = kernel::reconstructIntra4x4<C, P>(*ppCoeffs, {pSrcDst, step}, pPredModes, lumaBlocks(cbp), neighbours,
                                                    s, bitDepth);
    else
        lacking = kernel::reconstructIntra8x8<C, P>(*ppCoeffs, {pSrcDst, step}, pPredModes, lumaBlocks(cbp), neighbours,
                                                    s, bitDepth);
    return lacking ? vekStsWrnUnavailableNeighbour : vekStsOk;
}

template <class C, class P>
VekStatus reconstructIntra16x16(C** ppCoeffs, P* pSrcDst, Vek32s step, Vek32s predMode, Vek32u cbp, Vek32s QP,
                                Vek8u edgeFlags, const Vek16s* pLevelScale, Vek8u bypass, Vek32s bitDepth) {
    if (anyNull(ppCoeffs, pSrcDst, pLevelScale) || anyNull(*ppCoeffs)) return vekStsErrNullPtr;
    if (outside(predMode, 0, 3) || outsideQP(QP, bitDepth)) return vekStsErrOutOfRange;
    const auto mode = static_cast<h264::Intra16x16Mode>(predMode);
    const Vek32u neighbours = h264::availableNeighbours(edgeFlags, false);
    if (lacksNeighbour(mode, neighbours)) return vekStsErrUnavailableNeighbour;
    const CodedBlocks coded = {(cbp & 1) != 0, lumaBlocks(cbp)};
    kernel::reconstructIntra16x16<C, P>(*ppCoeffs, {pSrcDst, step}, mode, coded, neighbours,
                                        scaling(QP, pLevelScale, bypass), bitDepth);
    return vekStsOk;
}

}  // namespace

VekStatus vekiReconstructLumaInterMB_H264_16s8u_C1R(Vek16s** ppCoeffs, Vek8u* pSrcDst, Vek32s srcDstStep, Vek32u cbp,
                                                    Vek32s QP) {
    return reconstructInter<4>(ppCoeffs, pSrcDst, srcDstStep, cbp, QP, flatLevelScale(QP), 0, 8);
}

VekStatus vekiReconstructLumaInter4x4MB_H264_16s8u_C1R(Vek16s** ppCoeffs, Vek8u* pSrcDst, Vek32s srcDstStep, Vek32u cbp,
                                                       Vek32s QP, const Vek16s* pLevelScale, Vek8u bypass) {
    return reconstructInter<4>(ppCoeffs, pSrcDst, srcDstStep, cbp, QP, pLevelScale, bypass, 8);
}

VekStatus vekiReconstructLumaInter8x8MB_H264_16s8u_C1R(Vek16s** ppCoeffs, Vek8u* pSrcDst, Vek32s srcDstStep, Vek32u cbp,
                                                       Vek32s QP, const Vek16s* pLevelScale, Vek8u bypass) {
    return reconstructInter<8>(ppCoeffs, pSrcDst, srcDstStep, cbp, QP, pLevelScale, bypass, 8);
}

VekStatus vekiReconstructLumaIntraMB_H264_16s8u_C1R(Vek16s** ppCoeffs, Vek8u* pSrcDst, Vek32s srcDstStep,
                                                    const Vek32u* pPredModes, Vek32u cbp, Vek32s QP, Vek8u edgeFlags) {
    return reconstructIntra<4, LeftEdge::whole>(ppCoeffs, pSrcDst, srcDstStep, pPredModes, cbp, QP, edgeFlags,
                                                flatLevelScale(QP), 0, 8);
}

VekStatus vekiReconstructLumaIntra4x4MB_H264_16s8u_C1R(Vek16s** ppCoeffs, Vek8u* pSrcDst, Vek32s srcDstStep,
                                                       const Vek32u* pPredModes, Vek32u cbp, Vek32s QP, Vek8u edgeFlags,
                                                       const Vek16s* pLevelScale, Vek8u bypass) {
    return reconstructIntra<4, LeftEdge::whole>(ppCoeffs, pSrcDst, srcDstStep, pPredModes, cbp, QP, edgeFlags,
                                                pLevelScale, bypass, 8);
}

VekStatus vekiReconstructLumaIntra8x8MB_H264_16s8u_C1R(Vek16s** ppCoeffs, Vek8u* pSrcDst, Vek32s srcDstStep,
                                                       const Vek32u* pPredModes, Vek32u cbp, Vek32s QP, Vek8u edgeFlags,
                                                       const Vek16s* pLevelScale, Vek8u bypass) {
    return reconstructIntra<8, LeftEdge::whole>(ppCoeffs, pSrcDst, srcDstStep, pPredModes, cbp, QP, edgeFlags,
                                                pLevelScale, bypass, 8);
}

VekStatus vekiReconstructLumaIntra_16x16MB_H264_16s8u_C1R(Vek16s** ppCoeffs, Vek8u* pSrcDst, Vek32s srcDstStep,
                                                          Vek32s predMode, Vek32u cbp, Vek32s QP, Vek8u edgeFlags) {
    return reconstructIntra16x16(ppCoeffs, pSrcDst, srcDstStep, predMode, cbp, QP, edgeFlags, flatLevelScale(QP), 0, 8);
}

VekStatus vekiReconstructLumaIntra16x16MB_H264_16s8u_C1R(Vek16s** ppCoeffs, Vek8u* pSrcDst, Vek32s srcDstStep,
                                                         Vek32s predMode, Vek32u cbp, Vek32s QP, Vek8u edgeFlags,
                                                         const Vek16s* pLevelScale, Vek8u bypass) {
    return reconstructIntra16x16(ppCoeffs, pSrcDst, srcDstStep, predMode, cbp, QP, edgeFlags, pLevelScale, bypass, 8);
}

VekStatus vekiReconstructLumaIntraHalfMB_H264_16s8u_C1R(Vek16s** ppCoeffs, Vek8u* pSrcDst, Vek32s srcDstStep,
                                                        const Vek32u* pPredModes, Vek32u cbp, Vek32s QP,
                                                        Vek8u edgeFlags) {
    return reconstructIntra<4, LeftEdge::halves>(ppCoeffs, pSrcDst, srcDstStep, pPredModes, cbp, QP, edgeFlags,
                                                 flatLevelScale(QP), 0, 8);
}

VekStatus vekiReconstructLumaIntraHalf4x4MB_H264_16s8u_C1R(Vek16s** ppCoeffs, Vek8u* pSrcDst, Vek32s srcDstStep,
                                                           const Vek32u* pPredModes, Vek32u cbp, Vek32s QP,
                                                           Vek8u edgeFlags, const Vek16s* pLevelScale, Vek8u bypass) {
    return reconstructIntra<4, LeftEdge::halves>(ppCoeffs, pSrcDst, srcDstStep, pPredModes, cbp, QP, edgeFlags,
                                                 pLevelScale, bypass, 8);
}

VekStatus vekiReconstructLumaIntraHalf8x8MB_H264_16s8u_C1R(Vek16s** ppCoeffs, Vek8u* pSrcDst, Vek32s srcDstStep,
                                                           const Vek32u* pPredModes, Vek32u cbp, Vek32s QP,
                                                           Vek8u edgeFlags, const Vek16s* pLevelScale, Vek8u bypass) {
    return reconstructIntra<8, LeftEdge::halves>(ppCoeffs, pSrcDst, srcDstStep, pPredModes, cbp, QP, edgeFlags,
                                                 pLevelScale, bypass, 8);
}

VekStatus vekiReconstructLumaInter4x4_H264High_32s16u_IP1R(Vek32s** ppCoeffs, Vek16u* pSrcDst, Vek32s srcDstStep,
                                                           Vek32u cbp, Vek32s QP, const Vek16s* pLevelScale,
                                                           Vek8u bypass, Vek32s bitDepth) {
    return reconstructInter<4>(ppCoeffs, pSrcDst, srcDstStep, cbp, QP, pLevelScale, bypass, bitDepth);
}

VekStatus vekiReconstructLumaInter8x8_H264High_32s16u_IP1R(Vek32s** ppCoeffs, Vek16u* pSrcDst, Vek32s srcDstStep,
                                                           Vek32u cbp, Vek32s QP, const Vek16s* pLevelScale,
                                                           Vek8u bypass, Vek32s bitDepth) {
    return reconstructInter<8>(ppCoeffs, pSrcDst, srcDstStep, cbp, QP, pLevelScale, bypass, bitDepth);
}

VekStatus vekiReconstructLumaIntra4x4_H264High_32s16u_IP1R(Vek32s** ppCoeffs, Vek16u* pSrcDst, Vek32s srcDstStep,
                                                           const Vek32u* pPredModes, Vek32u cbp, Vek32s QP,
                                                           Vek8u edgeFlags, const Vek16s* pLevelScale, Vek8u bypass,
                                                           Vek32s bitDepth) {
    return reconstructIntra<4, LeftEdge::whole>(ppCoeffs, pSrcDst, srcDstStep, pPredModes, cbp, QP, edgeFlags,
                                                pLevelScale, bypass, bitDepth);
}

VekStatus vekiReconstructLumaIntra8x8_H264High_32s16u_IP1R(Vek32s** ppCoeffs, Vek16u* pSrcDst, Vek32s srcDstStep,
                                                           const Vek32u* pPredModes, Vek32u cbp, Vek32s QP,
                                                           Vek8u edgeFlags, const Vek16s* pLevelScale, Vek8u bypass,
                                                           Vek32s bitDepth) {
    return reconstructIntra<8, LeftEdge::whole>(ppCoeffs, pSrcDst, srcDstStep, pPredModes, cbp, QP, edgeFlags,
                                                pLevelScale, bypass, bitDepth);
}

VekStatus vekiReconstructLumaIntra16x16_H264High_32s16u_IP1R(Vek32s** ppCoeffs, Vek16u* pSrcDst, Vek32s srcDstStep,
                                                             Vek32s predMode, Vek32u cbp, Vek32s QP, Vek8u edgeFlags,
                                                             const Vek16s* pLevelScale, Vek8u bypass, Vek32s bitDepth) {
    return reconstructIntra16x16(ppCoeffs, pSrcDst, srcDstStep, predMode, cbp, QP, edgeFlags, pLevelScale, bypass,
                                 bitDepth);
}

VekStatus vekiReconstructLumaIntraHalf4x4_H264High_32s16u_IP1R(Vek32s** ppCoeffs, Vek16u* pSrcDst, Vek32s srcDstStep,
                                                               const Vek32u* pPredModes, Vek32u cbp, Vek32s QP,
                                                               Vek8u edgeFlags, const Vek16s* pLevelScale, Vek8u bypass,
                                                               Vek32s bitDepth) {
    return reconstructIntra<4, LeftEdge::halves>(ppCoeffs, pSrcDst, srcDstStep, pPredModes, cbp, QP, edgeFlags,
                                                 pLevelScale, bypass, bitDepth);
}

VekStatus vekiReconstructLumaIntraHalf8x8_H264High_32s16u_IP1R(Vek32s** ppCoeffs, Vek16u* pSrcDst, Vek32s srcDstStep,
                                                               const Vek32u* pPredModes, Vek32u cbp, Vek32s QP,
                                                               Vek8u edgeFlags, const Vek16s* pLevelScale, Vek8u bypass,
                                                               Vek32s bitDepth) {
    return reconstructIntra<8, LeftEdge::halves>(ppCoeffs, pSrcDst, srcDstStep, pPredModes, cbp, QP, edgeFlags,
                                                 pLevelScale, bypass, bitDepth);
}
