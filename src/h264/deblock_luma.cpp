// H.264 deblocking: the luma edges of one macroblock, 8-bit samples.
#include "h264/deblock_export.h"
#if VEKVC_SIMD
#include "h264/deblock_luma_simd.h"
#endif

using namespace vekvc;

VekStatus vekiFilterDeblockingLuma_VerEdge_H264_8u_C1IR(Vek8u* pSrcDst, Vek32s srcDstStep, const Vek8u* pAlpha,
                                                        const Vek8u* pBeta, const Vek8u* pThresholds,
                                                        const Vek8u* pBs) {
    return deblock<4, kernel::deblockLumaVertical<Vek8u>, plain::deblockLumaVertical<Vek8u>>(
        pSrcDst, srcDstStep, pAlpha, pBeta, pThresholds, pBs);
}

VekStatus vekiFilterDeblockingLuma_HorEdge_H264_8u_C1IR(Vek8u* pSrcDst, Vek32s srcDstStep, const Vek8u* pAlpha,
                                                        const Vek8u* pBeta, const Vek8u* pThresholds,
                                                        const Vek8u* pBs) {
    return deblock<4, kernel::deblockLumaHorizontal<Vek8u>, plain::deblockLumaHorizontal<Vek8u>>(
        pSrcDst, srcDstStep, pAlpha, pBeta, pThresholds, pBs);
}

VekStatus vekiFilterDeblockingLuma_VerEdge_MBAFF_H264_8u_C1IR(Vek8u* pSrcDst, Vek32s srcDstStep, Vek32u alpha,
                                                              Vek32u beta, const Vek8u* pThresholds, const Vek8u* pBs) {
    if (anyNull(pSrcDst, pThresholds, pBs)) return vekStsErrNullPtr;
    if (isOff(alpha, pBs)) return vekStsOk;
    const auto filter =
        rowsMeet<Vek8u>(srcDstStep) ? plain::deblockLumaLeftMbaff<Vek8u> : kernel::deblockLumaLeftMbaff<Vek8u>;
    filter(pSrcDst, srcDstStep, {alpha, beta, 255}, pThresholds, pBs);
    return vekStsOk;
}
