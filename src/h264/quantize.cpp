// Exports: forward transform with quantization, quantizers, scale generators, SP and SI blocks.
#include <initializer_list>

#include "core/check.h"
#include "core/kernel.h"
#include "core/opaque.h"
#include "h264/quantize_plain.h"
#include "vekvc/h264_transform.h"
#if VEKVC_SIMD
#include "h264/quantize_simd.h"
#endif
#if VEKVC_VECTOR512
#include "h264/quantize_simd512.h"
#endif

using namespace vekvc;
using plain::LevelCount;
using plain::QuantRounding;

namespace {

// plain::quantRounding of every qbits up to 30, intra and inter in turn; in memory, from where it fills vectors.
struct QuantRoundings {
    QuantRounding rounding[2 * 31] = {};

    constexpr QuantRoundings() {
        for (int qbits = 0; qbits < 31; ++qbits) {
            rounding[2 * qbits] = plain::quantRounding(qbits, true);
            rounding[2 * qbits + 1] = plain::quantRounding(qbits, false);
        }
    }
};
constexpr QuantRoundings kQuantRoundings;
const QuantRounding& quantRounding(Vek32u qbits, bool isIntra) {
    return kQuantRoundings.rounding[2 * qbits + (isIntra ? 0 : 1)];
}
// That of luma DC with a scale, of QP / 6: the offset is 1364 * 2^(QP/6), deliberately not the third of 2^qbits.
struct ScaledDCRoundings {
    QuantRounding rounding[15] = {};

    constexpr ScaledDCRoundings() {
        for (int n = 0; n < 15; ++n) rounding[n] = {12 + n, 1364 << n};
    }
};
constexpr ScaledDCRoundings kScaledDCRoundings;

// QP / 6 of a QP up to 90 that has been checked, as a short product; and the remainder.
constexpr Vek32u sixth(Vek32u QP) { return QP * 43 >> 8; }
constexpr Vek32u sixth(Vek32s QP) { return sixth(static_cast<Vek32u>(QP)); }
constexpr Vek32s ofSix(Vek32u QP) { return static_cast<Vek32s>(QP - 6 * sixth(QP)); }
constexpr Vek32s ofSix(Vek32s QP) { return ofSix(static_cast<Vek32u>(QP)); }
static_assert([] {
    for (Vek32u QP = 0; QP <= 90; ++QP)
        if (sixth(QP) != QP / 6) return false;
    return true;
}());

// The count of levels, negated if the DC is one of them, which no branch predictor foresees.
Vek32s signedByDC(Vek32s numLevels, bool hasDC) {
    const Vek32s sign = opaque(-Vek32s{hasDC});
    return (numLevels ^ sign) - sign;
}

template <class D>
VekStatus transformQuantFwd4x4(const Vek16s* pSrc, D* pDst, Vek32s QP, Vek32s maxQP, Vek32s* pNumLevels, Vek32u isIntra,
                               const Vek16s* pScanPos, Vek32s* pLastPos, const Vek16s* pScale) {
    if (anyNull(pSrc, pDst, pNumLevels, pScanPos, pLastPos)) return vekStsErrNullPtr;
    if (outside(QP, 0, maxQP)) return vekStsErrOutOfRange;
    const Vek16s* multipliers = opaque(pScale);  // not to be kept in the argument's place in memory
    Vek32u qbits = 11 + sixth(QP);
    if (!multipliers) {
        multipliers = h264::forwardMultipliers4x4[ofSix(QP)].data();
        qbits += 4;
    }
    const LevelCount count =
        kernel::transformQuantFwd4x4(pSrc, pDst, multipliers, quantRounding(qbits, isIntra != 0), pScanPos);
    store<Vek32s>(pNumLevels, signedByDC(count.numLevels, load<D>(pDst) != 0));
    store<Vek32s>(pLastPos, count.lastPos);
    return vekStsOk;
}

// One of the quantizers of transformed blocks; `multipliers` is the caller's scale.
template <int n, class C, class M, class Count>
VekStatus quantize(const C* pSrc, C* pDst, Count* pNumLevels, Count* pLastPos, const M* multipliers,
                   const Vek16s* pScanPos, const QuantRounding& rounding) {
    const LevelCount count = kernel::quantize<n>(pSrc, pDst, multipliers, rounding, pScanPos);
    store(pNumLevels, static_cast<Count>(count.numLevels));
    store(pLastPos, static_cast<Count>(count.lastPos));
    return vekStsOk;
}

template <class C>
VekStatus forwardLumaDC(C* pDst, C* pSrc, Vek32s QP, Vek32s maxQP, Vek32s* pNumLevels, Vek32u needTransform,
                        const Vek16s* pScanPos, Vek32s* pLastPos, const Vek16s* pScaleDC) {
    if (anyNull(pDst, pSrc, pNumLevels, pScanPos, pLastPos)) return vekStsErrNullPtr;
    if (outside(QP, 0, maxQP)) return vekStsErrOutOfRange;
    const QuantRounding& rounding =
        pScaleDC ? kScaledDCRoundings.rounding[sixth(QP)] : quantRounding(16 + sixth(QP), true);
    const Vek32s multiplier = pScaleDC ? load<Vek16s>(pScaleDC) : h264::forwardMultipliers4x4[ofSix(QP)][0];
    if (needTransform) kernel::forwardDC<4, 4>(pSrc);
    const bool hasDC = load<C>(pSrc) != 0;
    const LevelCount count = kernel::quantizeDC<16>(pSrc, pDst, multiplier, rounding, pScanPos);
    store<Vek32s>(pNumLevels, signedByDC(count.numLevels, hasDC));
    store<Vek32s>(pLastPos, count.lastPos);
    return vekStsOk;
}

// qpOffset: 3 for 4:2:2, where DC blocks have a QP of their own.
template <int rows, int qpOffset, class C>
VekStatus forwardChromaDC(C* pDst, C* pSrc, Vek32s QP, Vek32s maxQP, Vek32s* pNumLevels, Vek32u isIntra,
                          Vek32u needTransform, const Vek16s* pScaleDC) {
    if (anyNull(pDst, pSrc, pNumLevels)) return vekStsErrNullPtr;
    if (outside(QP, 0, maxQP)) return vekStsErrOutOfRange;
    const int qpDC = QP + qpOffset;
    const QuantRounding& rounding = quantRounding((pScaleDC ? 12 : 16) + sixth(qpDC), isIntra != 0);
    const Vek32s multiplier = pScaleDC ? load<Vek16s>(pScaleDC) : h264::forwardMultipliers4x4[ofSix(qpDC)][0];
    if (needTransform) kernel::forwardDC<rows, 2>(pSrc);
    const LevelCount count = kernel::quantizeDC<2 * rows>(pSrc, pDst, multiplier, rounding, nullptr);
    store<Vek32s>(pNumLevels, count.numLevels);
    return vekStsOk;
}

plain::SpQuantizers spQuantizers(Vek32s QP, Vek32s QS, Vek32u isSwitching) {
    return {clip3(0, 51, QP), clip3(0, 51, QS), isSwitching != 0};
}

}  // namespace

// ---- 4x4 blocks

VekStatus vekiTransformQuantFwd4x4_H264_16s_C1(const Vek16s* pSrc, Vek16s* pDst, Vek32s QP, Vek32s* pNumLevels,
                                               Vek32u isIntra, const Vek16s* pScanPos, Vek32s* pLastPos,
                                               const Vek16s* pScale) {
    return transformQuantFwd4x4(pSrc, pDst, QP, 51, pNumLevels, isIntra, pScanPos, pLastPos, pScale);
}

VekStatus vekiTransformQuantFwd4x4_H264_16s32s_C1(const Vek16s* pSrc, Vek32s* pDst, Vek32s QP, Vek32s* pNumLevels,
                                                  Vek32u isIntra, const Vek16s* pScanPos, Vek32s* pLastPos,
                                                  const Vek16s* pScale) {
    return transformQuantFwd4x4(pSrc, pDst, QP, 87, pNumLevels, isIntra, pScanPos, pLastPos, pScale);
}

VekStatus vekiTransformQuantResidual_H264_16s_C1I(Vek16s* pSrcDst, Vek32s QP, Vek32u isIntra, Vek32s* pNumLevels,
                                                  const Vek16s* pScanPos, Vek32s* pLastPos) {
    return transformQuantFwd4x4<Vek16s>(pSrcDst, pSrcDst, QP, 51, pNumLevels, isIntra,
                                        pScanPos ? pScanPos : h264::zigzagPosition.data(), pLastPos, nullptr);
}

VekStatus vekiQuantizeResidual4x4Fwd_H264_16s32s_C1(const Vek16s* pSrc, Vek16s* pDst, Vek32u* pNumLevels,
                                                    Vek32u* pLastPos, const Vek32u* pScale, const Vek16s* pScanPos,
                                                    Vek32s QP, Vek32u isIntra) {
    if (anyNull(pSrc, pDst, pNumLevels, pLastPos, pScale, pScanPos)) return vekStsErrNullPtr;
    if (outside(QP, 0, 51)) return vekStsErrOutOfRange;
    return quantize<16>(pSrc, pDst, pNumLevels, pLastPos, pScale, pScanPos,
                        quantRounding(11 + sixth(QP), isIntra != 0));
}

VekStatus vekiQuantizeResidual4x4Fwd_H264_16s_C1(const Vek16s* pSrc, Vek16s* pDst, Vek32u* pNumLevels, Vek32u* pLastPos,
                                                 const Vek16s* pScale, const Vek16s* pScanPos, Vek32u QP,
                                                 Vek32u isIntra) {
    if (anyNull(pSrc, pDst, pNumLevels, pLastPos, pScanPos)) return vekStsErrNullPtr;
    if (QP > 51) return vekStsErrOutOfRange;
    return quantize<16>(pSrc, pDst, pNumLevels, pLastPos,
                        pScale ? pScale : h264::forwardMultipliers4x4[ofSix(QP)].data(), pScanPos,
                        quantRounding((pScale ? 11 : 15) + sixth(QP), isIntra != 0));
}

VekStatus vekiQuantizeResidual4x4Fwd_H264_32s_C1(const Vek32s* pSrc, Vek32s* pDst, Vek32u* pNumLevels, Vek32u* pLastPos,
                                                 const Vek32u* pScale, const Vek16s* pScanPos, Vek32u QP,
                                                 Vek32u isIntra) {
    if (anyNull(pSrc, pDst, pNumLevels, pLastPos, pScanPos)) return vekStsErrNullPtr;
    if (QP > 87) return vekStsErrOutOfRange;
    const QuantRounding& rounding = quantRounding((pScale ? 11 : 15) + sixth(QP), isIntra != 0);
    if (pScale) return quantize<16>(pSrc, pDst, pNumLevels, pLastPos, pScale, pScanPos, rounding);
    return quantize<16>(pSrc, pDst, pNumLevels, pLastPos, h264::forwardMultipliers4x4[ofSix(QP)].data(), pScanPos,
                        rounding);
}

// ---- DC blocks

VekStatus vekiTransformQuantFwdLumaDC4x4_H264_16s_C1I(Vek16s* pDst, Vek16s* pSrc, Vek32s QP, Vek32s* pNumLevels,
                                                      Vek32u needTransform, const Vek16s* pScanPos, Vek32s* pLastPos,
                                                      const Vek16s* pScaleDC) {
    return forwardLumaDC(pDst, pSrc, QP, 51, pNumLevels, needTransform, pScanPos, pLastPos, pScaleDC);
}

VekStatus vekiTransformQuantFwdLumaDC4x4_H264_32s_C1I(Vek32s* pDst, Vek32s* pSrc, Vek32s QP, Vek32s* pNumLevels,
                                                      Vek32u needTransform, const Vek16s* pScanPos, Vek32s* pLastPos,
                                                      const Vek16s* pScaleDC) {
    return forwardLumaDC(pDst, pSrc, QP, 87, pNumLevels, needTransform, pScanPos, pLastPos, pScaleDC);
}

VekStatus vekiTransformQuantLumaDC_H264_16s_C1I(Vek16s* pDst, Vek16s* pSrc, Vek32s QP, Vek32s* pNumLevels,
                                                Vek32u needTransform, const Vek16s* pScanPos, Vek32s* pLastPos) {
    return forwardLumaDC(pDst, pSrc, QP, 51, pNumLevels, needTransform, pScanPos, pLastPos, nullptr);
}

VekStatus vekiTransformQuantFwdChromaDC2x2_H264_16s_C1I(Vek16s* pDst, Vek16s* pSrc, Vek32s QP, Vek32s* pNumLevels,
                                                        Vek32u isIntra, Vek32u needTransform, const Vek16s* pScaleDC) {
    return forwardChromaDC<2, 0>(pDst, pSrc, QP, 39, pNumLevels, isIntra, needTransform, pScaleDC);
}

VekStatus vekiTransformQuantFwdChromaDC2x2_H264_32s_C1I(Vek32s* pDst, Vek32s* pSrc, Vek32s QP, Vek32s* pNumLevels,
                                                        Vek32u isIntra, Vek32u needTransform, const Vek16s* pScaleDC) {
    return forwardChromaDC<2, 0>(pDst, pSrc, QP, 75, pNumLevels, isIntra, needTransform, pScaleDC);
}

VekStatus vekiTransformQuantChromaDC_H264_16s_C1I(Vek16s* pDst, Vek16s* pSrc, Vek32s QP, Vek32s* pNumLevels,
                                                  Vek32u isIntra, Vek32u needTransform) {
    return forwardChromaDC<2, 0>(pDst, pSrc, QP, 39, pNumLevels, isIntra, needTransform, nullptr);
}

VekStatus vekiTransformQuantFwdChromaDC2x4_H264_16s_C1I(Vek16s* pDst, Vek16s* pSrc, Vek32s QP, Vek32s* pNumLevels,
                                                        Vek32u isIntra, Vek32u needTransform, const Vek16s* pScaleDC) {
    return forwardChromaDC<4, 3>(pDst, pSrc, QP, 39, pNumLevels, isIntra, needTransform, pScaleDC);
}

VekStatus vekiTransformQuantFwdChromaDC2x4_H264_32s_C1I(Vek32s* pDst, Vek32s* pSrc, Vek32s QP, Vek32s* pNumLevels,
                                                        Vek32u isIntra, Vek32u needTransform, const Vek16s* pScaleDC) {
    return forwardChromaDC<4, 3>(pDst, pSrc, QP, 75, pNumLevels, isIntra, needTransform, pScaleDC);
}

// ---- 8x8 blocks

VekStatus vekiQuantLuma8x8_H264_16s_C1(const Vek16s* pSrc, Vek16s* pDst, Vek32s QPdiv6, Vek32u isIntra,
                                       Vek32s* pNumLevels, const Vek16s* pScanPos, Vek32s* pLastPos,
                                       const Vek16s* pScale) {
    if (anyNull(pSrc, pDst, pNumLevels, pScanPos, pLastPos, pScale)) return vekStsErrNullPtr;
    if (outside(QPdiv6, 0, 8)) return vekStsErrQPRange;
    return quantize<64>(pSrc, pDst, pNumLevels, pLastPos, pScale, pScanPos,
                        quantRounding(12 + static_cast<Vek32u>(QPdiv6), isIntra != 0));
}

VekStatus vekiQuantLuma8x8_H264_32s_C1(const Vek32s* pSrc, Vek32s* pDst, Vek32s QPdiv6, Vek32u isIntra,
                                       Vek32s* pNumLevels, const Vek16s* pScanPos, Vek32s* pLastPos,
                                       const Vek16s* pScale) {
    if (anyNull(pSrc, pDst, pNumLevels, pScanPos, pLastPos, pScale)) return vekStsErrNullPtr;
    if (outside(QPdiv6, 0, 14)) return vekStsErrQPRange;
    return quantize<64>(pSrc, pDst, pNumLevels, pLastPos, pScale, pScanPos,
                        quantRounding(12 + static_cast<Vek32u>(QPdiv6), isIntra != 0));
}

// ---- scales

VekStatus vekiGenScaleLevel4x4_H264_8u16s_C1(const Vek8u* pSrc, Vek16s* pDstInv, Vek16s* pDstFwd, Vek32s QPmod6) {
    if (anyNull(pSrc, pDstInv, pDstFwd)) return vekStsErrNullPtr;
    if (outside(QPmod6, 0, 5)) return vekStsErrOutOfRange;
    kernel::genScaleLevel<16>(pSrc, pDstInv, pDstFwd, QPmod6);
    return vekStsOk;
}

VekStatus vekiGenScaleLevel8x8_H264_8u16s_D2(const Vek8u* pSrc, Vek16s* pDstInv, Vek16s* pDstFwd, Vek32s QPmod6) {
    if (anyNull(pSrc, pDstInv, pDstFwd)) return vekStsErrNullPtr;
    if (outside(QPmod6, 0, 5)) return vekStsErrQPRange;
    kernel::genScaleLevel<64>(pSrc, pDstInv, pDstFwd, QPmod6);
    return vekStsOk;
}

// ---- SP and SI slices

VekStatus vekiDequantTransformResidual_SISP_H264_16s_C1I(Vek16s* pSrcDst, const Vek16s* pPred, const Vek16s* pDC,
                                                         Vek32s QP, Vek32s QS, Vek32u isSwitching) {
    if (anyNull(pSrcDst, pPred)) return vekStsErrNullPtr;
    kernel::dequantTransformResidualSISP(pSrcDst, pPred, pDC, spQuantizers(QP, QS, isSwitching));
    return vekStsOk;
}

VekStatus vekiTransformDequantChromaDC_SISP_H264_16s_C1I(Vek16s* pSrcDst, const Vek16s* pPred, Vek32s QP, Vek32s QS,
                                                         Vek32u isSwitching) {
    if (anyNull(pSrcDst, pPred)) return vekStsErrNullPtr;
    kernel::dequantChromaDCSISP(pSrcDst, pPred, spQuantizers(QP, QS, isSwitching));
    return vekStsOk;
}
