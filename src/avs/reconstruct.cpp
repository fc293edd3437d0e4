// Exports: intra prediction, and the reconstruction of macroblocks.
#include "avs/intra_plain.h"
#include "avs/transform_kernel.h"
#include "core/check.h"
#include "core/kernel.h"
#include "vekvc/avs.h"
#if VEKVC_SIMD
#include "avs/intra_simd.h"
#endif

using namespace vekvc;

namespace {

// A mode without its neighbours.
constexpr bool lacks(Vek32u available, Vek32u needed) { return (available & needed) != needed; }

Vek8u* lumaBlock(Vek8u* pixels, Vek32s step, int k) {
    return offsetBytes(pixels, 8 * (k >> 1) * std::ptrdiff_t{step}) + 8 * (k & 1);
}

// Adds the residual of the next block of levels if the block is coded.
void addCoded(const Vek16s*& levels, bool coded, Vek8u* pixels, Vek32s step, Vek32s qp) {
    if (!coded) return;
    kernel::reconstructAvs(levels, pixels, step, qp);
    levels += 64;
}

void predictLuma(Vek8u* pSrcDst, Vek32s step, Vek32u mode, Vek32u available) {
    const MutableBlock<Vek8u> b(pSrcDst, step);
    switch (mode) {
        case 0:
            return kernel::predictAvsVertical(b);
        case 1:
            return kernel::predictAvsHorizontal(b);
        case 2:
            return kernel::predictAvsDc(b, available);
        case 3:
            return kernel::predictAvsDownLeft(b, available);
        default:
            return kernel::predictAvsDownRight(b);
    }
}

// Below left does not count here.
void predictChroma(Vek8u* pSrcDst, Vek32s step, Vek32u mode, Vek32u available) {
    const MutableBlock<Vek8u> b(pSrcDst, step);
    switch (mode) {
        case 0:
            return kernel::predictAvsDc(b, available & ~avs::kBelowLeft);
        case 1:
            return kernel::predictAvsHorizontal(b);
        case 2:
            return kernel::predictAvsVertical(b);
        default:
            return kernel::predictAvsPlane(b);
    }
}

}  // namespace

VekStatus vekiPredictIntraLuma8x8_AVS_8u_C1IR(Vek8u* pSrcDst, Vek32s srcDstStep, Vek32s predMode, Vek32u availability) {
    if (anyNull(pSrcDst)) return vekStsErrNullPtr;
    if (outside(predMode, 0, avs::kLumaModes - 1)) return vekStsErrOutOfRange;
    if (lacks(availability, avs::kLumaNeeds[predMode])) return vekStsErrBadArg;
    predictLuma(pSrcDst, srcDstStep, static_cast<Vek32u>(predMode), availability);
    return vekStsOk;
}

VekStatus vekiPredictIntraChroma8x8_AVS_8u_C1IR(Vek8u* pSrcDst, Vek32s srcDstStep, Vek32s predMode,
                                                Vek32u availability) {
    if (anyNull(pSrcDst)) return vekStsErrNullPtr;
    if (outside(predMode, 0, avs::kChromaModes - 1)) return vekStsErrOutOfRange;
    if (lacks(availability, avs::kChromaNeeds[predMode])) return vekStsErrBadArg;
    predictChroma(pSrcDst, srcDstStep, static_cast<Vek32u>(predMode), availability);
    return vekStsOk;
}

VekStatus vekiReconstructLumaIntraMB_AVS_16s8u_C1R(Vek16s** ppCoeffs, Vek8u* pSrcDst, Vek32s srcDstStep,
                                                   const Vek32u* pPredModes, Vek32u cbp, Vek32s QP,
                                                   Vek32u availability) {
    if (anyNull(ppCoeffs) || anyNull(pSrcDst) || anyNull(pPredModes)) return vekStsErrNullPtr;
    if (anyNull(load<Vek16s*>(ppCoeffs))) return vekStsErrNullPtr;
    for (int k = 0; k < 4; ++k) {
        const auto mode = load<Vek32u>(pPredModes + k);
        if (mode >= avs::kLumaModes) return vekStsErrOutOfRange;
        if (lacks(avs::blockNeighbours(availability, k), avs::kLumaNeeds[mode])) return vekStsErrBadArg;
    }
    if (outside(QP, 0, avs::kMaxQP)) return vekStsErrOutOfRange;
    const Vek16s* levels = load<Vek16s*>(ppCoeffs);
    for (int k = 0; k < 4; ++k) {
        Vek8u* const pixels = lumaBlock(pSrcDst, srcDstStep, k);
        predictLuma(pixels, srcDstStep, load<Vek32u>(pPredModes + k), avs::blockNeighbours(availability, k));
        addCoded(levels, (cbp >> k & 1) != 0, pixels, srcDstStep, QP);
    }
    store(ppCoeffs, const_cast<Vek16s*>(levels));
    return vekStsOk;
}

VekStatus vekiReconstructLumaInterMB_AVS_16s8u_C1R(Vek16s** ppCoeffs, Vek8u* pSrcDst, Vek32s srcDstStep, Vek32u cbp,
                                                   Vek32s QP) {
    if (anyNull(ppCoeffs) || anyNull(pSrcDst)) return vekStsErrNullPtr;
    if (anyNull(load<Vek16s*>(ppCoeffs))) return vekStsErrNullPtr;
    if (outside(QP, 0, avs::kMaxQP)) return vekStsErrOutOfRange;
    const Vek16s* levels = load<Vek16s*>(ppCoeffs);
    for (int k = 0; k < 4; ++k)
        addCoded(levels, (cbp >> k & 1) != 0, lumaBlock(pSrcDst, srcDstStep, k), srcDstStep, QP);
    store(ppCoeffs, const_cast<Vek16s*>(levels));
    return vekStsOk;
}

VekStatus vekiReconstructChromaIntraMB_AVS_16s8u_P2R(Vek16s** ppCoeffs, Vek8u* pSrcDstU, Vek8u* pSrcDstV,
                                                     Vek32s srcDstStep, Vek32s predMode, Vek32u cbp, Vek32s chromaQP,
                                                     Vek32u availability) {
    if (anyNull(ppCoeffs) || anyNull(pSrcDstU, pSrcDstV)) return vekStsErrNullPtr;
    if (anyNull(load<Vek16s*>(ppCoeffs))) return vekStsErrNullPtr;
    if (outside(predMode, 0, avs::kChromaModes - 1)) return vekStsErrOutOfRange;
    if (lacks(availability, avs::kChromaNeeds[predMode])) return vekStsErrBadArg;
    if (outside(chromaQP, 0, avs::kMaxChromaQP)) return vekStsErrOutOfRange;
    const Vek16s* levels = load<Vek16s*>(ppCoeffs);
    const auto mode = static_cast<Vek32u>(predMode);
    predictChroma(pSrcDstU, srcDstStep, mode, availability);
    addCoded(levels, (cbp & 16) != 0, pSrcDstU, srcDstStep, chromaQP);
    predictChroma(pSrcDstV, srcDstStep, mode, availability);
    addCoded(levels, (cbp & 32) != 0, pSrcDstV, srcDstStep, chromaQP);
    store(ppCoeffs, const_cast<Vek16s*>(levels));
    return vekStsOk;
}

VekStatus vekiReconstructChromaInterMB_AVS_16s8u_P2R(Vek16s** ppCoeffs, Vek8u* pSrcDstU, Vek8u* pSrcDstV,
                                                     Vek32s srcDstStep, Vek32u cbp, Vek32s chromaQP) {
    if (anyNull(ppCoeffs) || anyNull(pSrcDstU, pSrcDstV)) return vekStsErrNullPtr;
    if (anyNull(load<Vek16s*>(ppCoeffs))) return vekStsErrNullPtr;
    if (outside(chromaQP, 0, avs::kMaxChromaQP)) return vekStsErrOutOfRange;
    const Vek16s* levels = load<Vek16s*>(ppCoeffs);
    addCoded(levels, (cbp & 16) != 0, pSrcDstU, srcDstStep, chromaQP);
    addCoded(levels, (cbp & 32) != 0, pSrcDstV, srcDstStep, chromaQP);
    store(ppCoeffs, const_cast<Vek16s*>(levels));
    return vekStsOk;
}
