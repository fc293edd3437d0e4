// Exports: deringing.
#include "core/check.h"
#include "core/kernel.h"
#include "mpeg4/dering_plain.h"
#include "vekvc/mpeg4_filter.h"
#if VEKVC_SIMD
#include "mpeg4/dering_simd.h"
#endif

using namespace vekvc;

VekStatus vekiFilterDeringingLuma_MPEG4_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep,
                                               Vek32s QP) {
    if (anyNull(pSrc, pDst)) return vekStsErrNullPtr;
    if (outside(QP, 1, 31)) return vekStsErrQPRange;
    kernel::deringLuma(pSrc, srcStep, pDst, dstStep, QP);
    return vekStsOk;
}

VekStatus vekiFilterDeringingChroma_MPEG4_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep,
                                                 Vek32s QP) {
    if (anyNull(pSrc, pDst)) return vekStsErrNullPtr;
    if (outside(QP, 1, 31)) return vekStsErrQPRange;
    kernel::deringChroma(pSrc, srcStep, pDst, dstStep, QP);
    return vekStsOk;
}
