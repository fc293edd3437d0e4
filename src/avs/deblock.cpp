// Exports: the loop filter.
#include "avs/deblock_plain.h"
#include "core/check.h"
#include "core/kernel.h"
#include "vekvc/avs.h"
#if VEKVC_SIMD
#include "avs/deblock_simd.h"
#endif

using namespace vekvc;

namespace {

template <avs::Plane plane, avs::Edges edges>
VekStatus deblock(const avs::DeblockOperands& o) {
    if (anyNull(o.pixels) || anyNull(o.alpha, o.beta, o.c, o.bS)) return vekStsErrNullPtr;
    kernel::deblockAvs<plane, edges>(o);
    return vekStsOk;
}

}  // namespace

VekStatus vekiFilterDeblockingLuma_VerEdge_AVS_8u_C1IR(Vek8u* pSrcDst, Vek32s srcDstStep, const Vek8u* pAlpha,
                                                       const Vek8u* pBeta, const Vek8u* pThresholds, const Vek8u* pBs) {
    return deblock<avs::Plane::luma, avs::Edges::vertical>({pSrcDst, srcDstStep, pAlpha, pBeta, pThresholds, pBs});
}

VekStatus vekiFilterDeblockingLuma_HorEdge_AVS_8u_C1IR(Vek8u* pSrcDst, Vek32s srcDstStep, const Vek8u* pAlpha,
                                                       const Vek8u* pBeta, const Vek8u* pThresholds, const Vek8u* pBs) {
    return deblock<avs::Plane::luma, avs::Edges::horizontal>({pSrcDst, srcDstStep, pAlpha, pBeta, pThresholds, pBs});
}

VekStatus vekiFilterDeblockingChroma_VerEdge_AVS_8u_C1IR(Vek8u* pSrcDst, Vek32s srcDstStep, const Vek8u* pAlpha,
                                                         const Vek8u* pBeta, const Vek8u* pThresholds,
                                                         const Vek8u* pBs) {
    return deblock<avs::Plane::chroma, avs::Edges::vertical>({pSrcDst, srcDstStep, pAlpha, pBeta, pThresholds, pBs});
}

VekStatus vekiFilterDeblockingChroma_HorEdge_AVS_8u_C1IR(Vek8u* pSrcDst, Vek32s srcDstStep, const Vek8u* pAlpha,
                                                         const Vek8u* pBeta, const Vek8u* pThresholds,
                                                         const Vek8u* pBs) {
    return deblock<avs::Plane::chroma, avs::Edges::horizontal>({pSrcDst, srcDstStep, pAlpha, pBeta, pThresholds, pBs});
}
