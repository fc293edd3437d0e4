// Exports: the loop filter.
#include "core/check.h"
#include "core/kernel.h"
#include "vc1/loop_filter_plain.h"
#include "vekvc/vc1.h"
#if VEKVC_SIMD
#include "vc1/loop_filter_simd.h"
#endif

using namespace vekvc;

namespace {

using vc1::Edge;

template <Edge edge>
VekStatus luma(Vek8u* pSrcDst, Vek32s pQuant, Vek32s srcDstStep, Vek32s edgeDisableFlag) {
    if (anyNull(pSrcDst)) return vekStsErrNullPtr;
    kernel::filterEdge<edge, 4>(pSrcDst, srcDstStep, pQuant, vc1::enabledLuma(edgeDisableFlag));
    return vekStsOk;
}

template <Edge edge>
VekStatus chroma(Vek8u* pSrcDst, Vek32s pQuant, Vek32s srcDstStep, Vek32s edgeDisableFlag) {
    if (anyNull(pSrcDst)) return vekStsErrNullPtr;
    kernel::filterEdge<edge, 2>(pSrcDst, srcDstStep, pQuant, vc1::enabledChroma(edgeDisableFlag));
    return vekStsOk;
}

template <Edge edge>
VekStatus interleaved(Vek8u* pSrcDst, Vek32s pQuant, Vek32s srcDstStep, Vek32s edgeDisableFlagU,
                      Vek32s edgeDisableFlagV) {
    if (anyNull(pSrcDst)) return vekStsErrNullPtr;
    kernel::filterEdgeInterleaved<edge>(pSrcDst, srcDstStep, pQuant, vc1::enabledChroma(edgeDisableFlagU),
                                        vc1::enabledChroma(edgeDisableFlagV));
    return vekStsOk;
}

}  // namespace

VekStatus vekiFilterDeblockingLuma_HorEdge_VC1_8u_C1IR(Vek8u* pSrcDst, Vek32s pQuant, Vek32s srcDstStep,
                                                       Vek32s edgeDisableFlag) {
    return luma<Edge::horizontal>(pSrcDst, pQuant, srcDstStep, edgeDisableFlag);
}

VekStatus vekiFilterDeblockingLuma_VerEdge_VC1_8u_C1IR(Vek8u* pSrcDst, Vek32s pQuant, Vek32s srcDstStep,
                                                       Vek32s edgeDisableFlag) {
    return luma<Edge::vertical>(pSrcDst, pQuant, srcDstStep, edgeDisableFlag);
}

VekStatus vekiFilterDeblockingChroma_HorEdge_VC1_8u_C1IR(Vek8u* pSrcDst, Vek32s pQuant, Vek32s srcDstStep,
                                                         Vek32s edgeDisableFlag) {
    return chroma<Edge::horizontal>(pSrcDst, pQuant, srcDstStep, edgeDisableFlag);
}

VekStatus vekiFilterDeblockingChroma_VerEdge_VC1_8u_C1IR(Vek8u* pSrcDst, Vek32s pQuant, Vek32s srcDstStep,
                                                         Vek32s edgeDisableFlag) {
    return chroma<Edge::vertical>(pSrcDst, pQuant, srcDstStep, edgeDisableFlag);
}

VekStatus vekiFilterDeblockingChroma_HorEdge_VC1_8u_C2IR(Vek8u* pSrcDst, Vek32s pQuant, Vek32s srcDstStep,
                                                         Vek32s edgeDisableFlagU, Vek32s edgeDisableFlagV) {
    return interleaved<Edge::horizontal>(pSrcDst, pQuant, srcDstStep, edgeDisableFlagU, edgeDisableFlagV);
}

VekStatus vekiFilterDeblockingChroma_VerEdge_VC1_8u_C2IR(Vek8u* pSrcDst, Vek32s pQuant, Vek32s srcDstStep,
                                                         Vek32s edgeDisableFlagU, Vek32s edgeDisableFlagV) {
    return interleaved<Edge::vertical>(pSrcDst, pQuant, srcDstStep, edgeDisableFlagU, edgeDisableFlagV);
}
