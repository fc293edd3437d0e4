// Exports: forward and inverse transforms, scaling, DC blocks.
#include "core/check.h"
#include "core/kernel.h"
#include "h264/transform_plain.h"
#include "vekvc/h264_transform.h"
#if VEKVC_SIMD
#include "h264/transform_dc_simd.h"
#endif

using namespace vekvc;

namespace {

int levelScaleDC(const Vek16s* pScaleDC, Vek32s QP) { return load<Vek16s>(plain::levelScaleOrFlat(pScaleDC, QP)); }

template <class C>
VekStatus inverseLumaDC(C* pSrcDst, Vek32s QP, Vek32s maxQP, const Vek16s* pScaleDC) {
    if (anyNull(pSrcDst)) return vekStsErrNullPtr;
    if (outside(QP, 0, maxQP)) return vekStsErrOutOfRange;
    kernel::inverseLumaDC(pSrcDst, QP, levelScaleDC(pScaleDC, QP));
    return vekStsOk;
}

template <class C>
VekStatus inverseChromaDC2x2(C* pSrcDst, Vek32s QP, Vek32s maxQP, const Vek16s* pScaleDC) {
    if (anyNull(pSrcDst)) return vekStsErrNullPtr;
    if (outside(QP, 0, maxQP)) return vekStsErrOutOfRange;
    kernel::inverseChromaDC2x2(pSrcDst, QP, levelScaleDC(pScaleDC, QP));
    return vekStsOk;
}

template <class C>
VekStatus inverseChromaDC2x4(C* pSrcDst, Vek32s QP, Vek32s maxQP, const Vek16s* pScaleDC) {
    if (anyNull(pSrcDst)) return vekStsErrNullPtr;
    if (outside(QP, 0, maxQP)) return vekStsErrOutOfRange;
    kernel::inverseChromaDC2x4(pSrcDst, QP + 3, levelScaleDC(pScaleDC, QP + 3));
    return vekStsOk;
}

}  // namespace

// ---- 4x4 blocks

VekStatus vekiTransformResidual4x4Fwd_H264_16s_C1(const Vek16s* pSrc, Vek16s* pDst) {
    if (anyNull(pSrc, pDst)) return vekStsErrNullPtr;
    kernel::transformResidual4x4Fwd(pSrc, pDst);
    return vekStsOk;
}

VekStatus vekiTransformResidual4x4Fwd_H264_32s_C1(const Vek32s* pSrc, Vek32s* pDst) {
    if (anyNull(pSrc, pDst)) return vekStsErrNullPtr;
    kernel::transformResidual4x4Fwd(pSrc, pDst);
    return vekStsOk;
}

VekStatus vekiTransformResidual4x4Inv_H264_16s_C1(const Vek16s* pSrc, Vek16s* pDst) {
    if (anyNull(pSrc, pDst)) return vekStsErrNullPtr;
    kernel::transformResidual4x4Inv(pSrc, pDst);
    return vekStsOk;
}

VekStatus vekiTransformResidual4x4Inv_H264_32s_C1(const Vek32s* pSrc, Vek32s* pDst) {
    if (anyNull(pSrc, pDst)) return vekStsErrNullPtr;
    kernel::transformResidual4x4Inv(pSrc, pDst);
    return vekStsOk;
}

VekStatus vekiTransformQuantInvAddPred4x4_H264_16s_C1IR(const Vek8u* pPred, Vek32s predStep, Vek16s* pSrcDst,
                                                        const Vek16s* pDC, Vek8u* pDst, Vek32s dstStep, Vek32s QP,
                                                        Vek32u hasAC, const Vek16s* pScale) {
    if (anyNull(pPred, pSrcDst, pDst)) return vekStsErrNullPtr;
    if (outside(QP, 0, 51)) return vekStsErrOutOfRange;
    kernel::transformQuantInvAddPred4x4<Vek16s, Vek8u>({pPred, predStep}, pSrcDst, pDC, {pDst, dstStep}, QP, hasAC != 0,
                                                       pScale, 8);
    return vekStsOk;
}

VekStatus vekiTransformQuantInvAddPred4x4_H264_32s_C1IR(const Vek16u* pPred, Vek32s predStep, Vek32s* pSrcDst,
                                                        const Vek32s* pDC, Vek16u* pDst, Vek32s dstStep, Vek32s QP,
                                                        Vek32u hasAC, const Vek16s* pScale, Vek32s bitDepth) {
    if (anyNull(pPred, pSrcDst, pDst)) return vekStsErrNullPtr;
    if (outside(QP, 0, 87) || outside(bitDepth, 9, 14)) return vekStsErrOutOfRange;
    kernel::transformQuantInvAddPred4x4<Vek32s, Vek16u>({pPred, predStep}, pSrcDst, pDC, {pDst, dstStep}, QP,
                                                        hasAC != 0, pScale, bitDepth);
    return vekStsOk;
}

VekStatus vekiDequantTransformResidualAndAdd_H264_16s_C1I(const Vek8u* pPred, Vek32s predStep, Vek16s* pSrcDst,
                                                          const Vek16s* pDC, Vek8u* pDst, Vek32s dstStep, Vek32s QP,
                                                          Vek32u hasAC) {
    if (anyNull(pPred, pDst) || (pSrcDst == nullptr && pDC == nullptr)) return vekStsErrNullPtr;
    if (outside(QP, 0, 51)) return vekStsErrOutOfRange;
    kernel::transformQuantInvAddPred4x4<Vek16s, Vek8u>({pPred, predStep}, pSrcDst, pDC, {pDst, dstStep}, QP,
                                                       hasAC != 0 && pSrcDst != nullptr, nullptr, 8);
    return vekStsOk;
}

VekStatus vekiDequantTransformResidual_H264_16s_C1I(Vek16s* pSrcDst, Vek32s srcDstStep, const Vek16s* pDC, Vek32s QP,
                                                    Vek32u hasAC) {
    if (anyNull(pSrcDst)) return vekStsErrNullPtr;
    if (anyBelow(8, srcDstStep)) return vekStsErrStep;
    if (outside(QP, 0, 51)) return vekStsErrOutOfRange;
    kernel::dequantTransformResidual({pSrcDst, srcDstStep}, pDC, QP, hasAC != 0);
    return vekStsOk;
}

VekStatus vekiTransformPrediction_H264_8u16s_C1(const Vek8u* pSrc, Vek32s srcStep, Vek16s* pDst) {
    if (anyNull(pSrc, pDst)) return vekStsErrNullPtr;
    kernel::transformPrediction({pSrc, srcStep}, pDst);
    return vekStsOk;
}

// ---- DC blocks

VekStatus vekiTransformDequantLumaDC_H264_16s_C1I(Vek16s* pSrcDst, Vek32s QP) {
    return inverseLumaDC(pSrcDst, QP, 51, nullptr);
}

VekStatus vekiTransformQuantInvLumaDC4x4_H264_16s_C1I(Vek16s* pSrcDst, Vek32s QP, const Vek16s* pScaleDC) {
    return inverseLumaDC(pSrcDst, QP, 51, pScaleDC);
}

VekStatus vekiTransformQuantInvLumaDC4x4_H264_32s_C1I(Vek32s* pSrcDst, Vek32s QP, const Vek16s* pScaleDC) {
    return inverseLumaDC(pSrcDst, QP, 87, pScaleDC);
}

VekStatus vekiTransformDequantChromaDC_H264_16s_C1I(Vek16s* pSrcDst, Vek32s QP) {
    return inverseChromaDC2x2(pSrcDst, QP, 51, nullptr);
}

VekStatus vekiTransformQuantInvChromaDC2x2_H264_16s_C1I(Vek16s* pSrcDst, Vek32s QP, const Vek16s* pScaleDC) {
    return inverseChromaDC2x2(pSrcDst, QP, 39, pScaleDC);
}

VekStatus vekiTransformQuantInvChromaDC2x2_H264_32s_C1I(Vek32s* pSrcDst, Vek32s QP, const Vek16s* pScaleDC) {
    return inverseChromaDC2x2(pSrcDst, QP, 75, pScaleDC);
}

VekStatus vekiTransformQuantInvChromaDC2x4_H264_16s_C1I(Vek16s* pSrcDst, Vek32s QP, const Vek16s* pScaleDC) {
    return inverseChromaDC2x4(pSrcDst, QP, 39, pScaleDC);
}

VekStatus vekiTransformQuantInvChromaDC2x4_H264_32s_C1I(Vek32s* pSrcDst, Vek32s QP, const Vek16s* pScaleDC) {
    return inverseChromaDC2x4(pSrcDst, QP, 75, pScaleDC);
}

// ---- 8x8 blocks

VekStatus vekiTransformFwdLuma8x8_H264_16s_C1(const Vek16s* pSrc, Vek16s* pDst) {
    if (anyNull(pSrc, pDst)) return vekStsErrNullPtr;
    kernel::transformFwd8x8(pSrc, pDst);
    return vekStsOk;
}

VekStatus vekiTransformFwdLuma8x8_H264_16s32s_C1(const Vek16s* pSrc, Vek32s* pDst) {
    if (anyNull(pSrc, pDst)) return vekStsErrNullPtr;
    kernel::transformFwd8x8(pSrc, pDst);
    return vekStsOk;
}

VekStatus vekiTransformLuma8x8Fwd_H264_16s_C1I(Vek16s* pSrcDst) {
    if (anyNull(pSrcDst)) return vekStsErrNullPtr;
    kernel::transformFwd8x8(pSrcDst, pSrcDst);
    return vekStsOk;
}

VekStatus vekiQuantLuma8x8Inv_H264_16s_C1I(Vek16s* pSrcDst, Vek32s QPdiv6, const Vek16s* pScale) {
    if (anyNull(pSrcDst, pScale)) return vekStsErrNullPtr;
    if (outside(QPdiv6, 0, 8)) return vekStsErrQPRange;
    kernel::scaleBlock8x8(pSrcDst, pScale, QPdiv6);
    return vekStsOk;
}

VekStatus vekiQuantInvLuma8x8_H264_32s_C1I(Vek32s* pSrcDst, Vek32s QPdiv6, const Vek16s* pScale) {
    if (anyNull(pSrcDst, pScale)) return vekStsErrNullPtr;
    if (outside(QPdiv6, 0, 14)) return vekStsErrQPRange;
    kernel::scaleBlock8x8(pSrcDst, pScale, QPdiv6);
    return vekStsOk;
}

VekStatus vekiTransformLuma8x8InvAddPred_H264_16s8u_C1R(const Vek8u* pPred, Vek32s predStep, const Vek16s* pSrc,
                                                        Vek8u* pDst, Vek32s dstStep) {
    if (anyNull(pPred, pSrc, pDst)) return vekStsErrNullPtr;
    kernel::transformInvAddPred8x8<Vek16s, Vek8u>({pPred, predStep}, pSrc, {pDst, dstStep}, 8);
    return vekStsOk;
}

VekStatus vekiTransformInvAddPredLuma8x8_H264_32s16u_C1R(const Vek16u* pPred, Vek32s predStep, const Vek32s* pSrc,
                                                         Vek16u* pDst, Vek32s dstStep, Vek32s bitDepth) {
    if (anyNull(pPred, pSrc, pDst)) return vekStsErrNullPtr;
    kernel::transformInvAddPred8x8<Vek32s, Vek16u>({pPred, predStep}, pSrc, {pDst, dstStep}, clip3(8, 14, bitDepth));
    return vekStsOk;
}
