// H.264 deblocking: the edges of one macroblock, but luma of 8-bit samples, which loses by being compiled for AVX-512.
#include "h264/deblock_export.h"
#if VEKVC_SIMD
#include "h264/deblock_chroma16_simd.h"
#include "h264/deblock_chroma_simd.h"
#include "h264/deblock_luma16_simd.h"
#include "h264/deblock_luma_simd.h"
#endif
#if VEKVC_VECTOR512
#include "h264/deblock_simd512.h"
#endif

using namespace vekvc;

// ---- 8-bit samples, chroma

VekStatus vekiFilterDeblockingChroma_VerEdge_H264_8u_C1IR(Vek8u* pSrcDst, Vek32s srcDstStep, const Vek8u* pAlpha,
                                                          const Vek8u* pBeta, const Vek8u* pThresholds,
                                                          const Vek8u* pBs) {
    return deblock<2, kernel::deblockChromaVertical<Vek8u>, plain::deblockChromaVertical<Vek8u>>(
        pSrcDst, srcDstStep, pAlpha, pBeta, pThresholds, pBs);
}

VekStatus vekiFilterDeblockingChroma_HorEdge_H264_8u_C1IR(Vek8u* pSrcDst, Vek32s srcDstStep, const Vek8u* pAlpha,
                                                          const Vek8u* pBeta, const Vek8u* pThresholds,
                                                          const Vek8u* pBs) {
    return deblock<2, kernel::deblockChromaHorizontal<Vek8u>, plain::deblockChromaHorizontal<Vek8u>>(
        pSrcDst, srcDstStep, pAlpha, pBeta, pThresholds, pBs);
}

VekStatus vekiFilterDeblockingChroma_VerEdge_H264_8u_C2IR(Vek8u* pSrcDst, Vek32s srcDstStep, const Vek8u* pAlpha,
                                                          const Vek8u* pBeta, const Vek8u* pThresholds,
                                                          const Vek8u* pBs) {
    return deblock<2, kernel::deblockChromaPairsVertical, plain::deblockChromaPairsVertical>(
        pSrcDst, srcDstStep, pAlpha, pBeta, pThresholds, pBs);
}

VekStatus vekiFilterDeblockingChroma_HorEdge_H264_8u_C2IR(Vek8u* pSrcDst, Vek32s srcDstStep, const Vek8u* pAlpha,
                                                          const Vek8u* pBeta, const Vek8u* pThresholds,
                                                          const Vek8u* pBs) {
    return deblock<2, kernel::deblockChromaPairsHorizontal, plain::deblockChromaPairsHorizontal>(
        pSrcDst, srcDstStep, pAlpha, pBeta, pThresholds, pBs);
}

VekStatus vekiFilterDeblockingChroma422VerEdge_H264_8u_C1IR(const VekDeblockingParams8u* pParams) {
    return deblock<2, kernel::deblockChroma422Vertical<Vek8u>, plain::deblockChroma422Vertical<Vek8u>>(pParams);
}

VekStatus vekiFilterDeblockingChroma422HorEdge_H264_8u_C1IR(const VekDeblockingParams8u* pParams) {
    return deblock<4, kernel::deblockChroma422Horizontal<Vek8u>, plain::deblockChroma422Horizontal<Vek8u>>(pParams);
}

VekStatus vekiFilterDeblockingChroma_VerEdge_MBAFF_H264_8u_C1IR(Vek8u* pSrcDst, Vek32s srcDstStep, Vek32u alpha,
                                                                Vek32u beta, const Vek8u* pThresholds,
                                                                const Vek8u* pBs) {
    if (anyNull(pSrcDst, pThresholds, pBs)) return vekStsErrNullPtr;
    if (isOff(alpha, pBs)) return vekStsOk;
    const auto filter =
        rowsMeet<Vek8u>(srcDstStep) ? plain::deblockChromaLeftMbaff<Vek8u> : kernel::deblockChromaLeftMbaff<Vek8u>;
    filter(pSrcDst, srcDstStep, {alpha, beta, 255}, pThresholds, pBs);
    return vekStsOk;
}

// ---- 16-bit samples

namespace {

bool anyNullIn(const VekDeblockingParams16u* p) {
    return anyNull(p) || anyNull(p->pSrcDstPlane, p->pAlpha, p->pBeta, p->pThresholds, p->pBs);
}

// The record's step counts samples.
std::ptrdiff_t stepOf(const VekDeblockingParams16u& p) { return std::ptrdiff_t{p.srcDstStep} * 2; }
int maxSampleOf(const VekDeblockingParams16u& p) { return (1 << (p.bitDepth & 15)) - 1; }

using Filter16u = void (*)(const DeblockOperands<Vek16u>&);

template <Filter16u filter, Filter16u definition>
VekStatus deblock(const VekDeblockingParams16u* p) {
    if (anyNullIn(p)) return vekStsErrNullPtr;
    const DeblockOperands<Vek16u> operands = {p->pSrcDstPlane, stepOf(*p), p->pAlpha,      p->pBeta,
                                              p->pThresholds,  p->pBs,     maxSampleOf(*p)};
    if (rowsMeet<Vek16u>(stepOf(*p))) [[unlikely]]
        definition(operands);
    else
        filter(operands);
    return vekStsOk;
}

using FilterLeft16u = void (*)(Vek16u*, std::ptrdiff_t, const EdgeLimits&, const Vek16u*, const Vek8u*);

template <FilterLeft16u fast, FilterLeft16u definition>
VekStatus deblockMbaff(const VekDeblockingParams16u* p) {
    if (anyNullIn(p)) return vekStsErrNullPtr;
    const EdgeLimits limits{load<Vek16u>(p->pAlpha), load<Vek16u>(p->pBeta), maxSampleOf(*p)};
    if (isOff(limits.alpha, p->pBs)) return vekStsOk;
    const auto filter = rowsMeet<Vek16u>(stepOf(*p)) ? definition : fast;
    filter(p->pSrcDstPlane, stepOf(*p), limits, p->pThresholds, p->pBs);
    return vekStsOk;
}

}  // namespace

VekStatus vekiFilterDeblockingLumaVerEdge_H264_16u_C1IR(const VekDeblockingParams16u* pParams) {
    return deblock<kernel::deblockLumaVertical<Vek16u>, plain::deblockLumaVertical<Vek16u>>(pParams);
}

VekStatus vekiFilterDeblockingLumaHorEdge_H264_16u_C1IR(const VekDeblockingParams16u* pParams) {
    return deblock<kernel::deblockLumaHorizontal<Vek16u>, plain::deblockLumaHorizontal<Vek16u>>(pParams);
}

VekStatus vekiFilterDeblockingChromaVerEdge_H264_16u_C1IR(const VekDeblockingParams16u* pParams) {
    return deblock<kernel::deblockChromaVertical<Vek16u>, plain::deblockChromaVertical<Vek16u>>(pParams);
}

VekStatus vekiFilterDeblockingChromaHorEdge_H264_16u_C1IR(const VekDeblockingParams16u* pParams) {
    return deblock<kernel::deblockChromaHorizontal<Vek16u>, plain::deblockChromaHorizontal<Vek16u>>(pParams);
}

VekStatus vekiFilterDeblockingChroma422VerEdge_H264_16u_C1IR(const VekDeblockingParams16u* pParams) {
    return deblock<kernel::deblockChroma422Vertical<Vek16u>, plain::deblockChroma422Vertical<Vek16u>>(pParams);
}

VekStatus vekiFilterDeblockingChroma422HorEdge_H264_16u_C1IR(const VekDeblockingParams16u* pParams) {
    return deblock<kernel::deblockChroma422Horizontal<Vek16u>, plain::deblockChroma422Horizontal<Vek16u>>(pParams);
}

VekStatus vekiFilterDeblockingLumaVerEdgeMBAFF_H264_16u_C1IR(const VekDeblockingParams16u* pParams) {
    return deblockMbaff<kernel::deblockLumaLeftMbaff<Vek16u>, plain::deblockLumaLeftMbaff<Vek16u>>(pParams);
}

VekStatus vekiFilterDeblockingChromaVerEdgeMBAFF_H264_16u_C1IR(const VekDeblockingParams16u* pParams) {
    return deblockMbaff<kernel::deblockChromaLeftMbaff<Vek16u>, plain::deblockChromaLeftMbaff<Vek16u>>(pParams);
}

// ---- not provided: the argument is not looked at

VekStatus vekiFilterDeblockingChroma422VerEdgeMBAFF_H264_8u_C1IR(const VekDeblockingParams8u*) {
    return vekStsErrUnsupported;
}

VekStatus vekiFilterDeblockingChroma422VerEdgeMBAFF_H264_16u_C1IR(const VekDeblockingParams16u*) {
    return vekStsErrUnsupported;
}
