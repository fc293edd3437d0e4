// Exports: overlap smoothing.
#include "core/check.h"
#include "core/kernel.h"
#include "vc1/smoothing_plain.h"
#include "vekvc/vc1.h"
#if VEKVC_SIMD
#include "vc1/smoothing_simd.h"
#endif

using namespace vekvc;
using vc1::Rows;

VekStatus vekiSmoothingLuma_HorEdge_VC1_16s8u_C1R(const Vek16s* pSrcUpper, Vek32s srcUpperStep,
                                                  const Vek16s* pSrcBottom, Vek32s srcBottomStep, Vek8u* pDst,
                                                  Vek32s dstStep, Vek32s edgeSmoothFlag) {
    if (anyNull(pSrcUpper, pSrcBottom, pDst)) return vekStsErrNullPtr;
    const Block<Vek16s> upper(pSrcUpper, srcUpperStep), bottom(pSrcBottom, srcBottomStep);
    for (int half = 0; half < 2; ++half)
        if (vc1::smoothsHalf(edgeSmoothFlag, half))
            kernel::smoothHorizontalEdge({upper.at(8 * half, 0), srcUpperStep}, {bottom.at(8 * half, 0), srcBottomStep},
                                         pDst + 8 * half, dstStep);
    return vekStsOk;
}

VekStatus vekiSmoothingLuma_VerEdge_VC1_16s8u_C1R(const Vek16s* pSrcLeft, Vek32s srcLeftStep, const Vek16s* pSrcRight,
                                                  Vek32s srcRightStep, Vek8u* pDst, Vek32s dstStep,
                                                  Vek32s fieldNeighbourFlag, Vek32s edgeSmoothFlag) {
    if (anyNull(pSrcLeft, pSrcRight, pDst)) return vekStsErrNullPtr;
    if (edgeSmoothFlag == 0 || outside(fieldNeighbourFlag, 0, 3)) return vekStsOk;
    const Rows left = (fieldNeighbourFlag & 2) != 0 ? Rows::field : Rows::frame;
    const Rows right = (fieldNeighbourFlag & 1) != 0 ? Rows::field : Rows::frame;
    for (int half = 0; half < 2; ++half)
        if (fieldNeighbourFlag != 0 || vc1::smoothsHalf(edgeSmoothFlag, half))
            kernel::smoothVerticalEdge({pSrcLeft, srcLeftStep}, left, {pSrcRight, srcRightStep}, right, pDst, dstStep,
                                       8 * half);
    return vekStsOk;
}

VekStatus vekiSmoothingChroma_HorEdge_VC1_16s8u_C1R(const Vek16s* pSrcUpper, Vek32s srcUpperStep,
                                                    const Vek16s* pSrcBottom, Vek32s srcBottomStep, Vek8u* pDst,
                                                    Vek32s dstStep) {
    if (anyNull(pSrcUpper, pSrcBottom, pDst)) return vekStsErrNullPtr;
    kernel::smoothHorizontalEdge({pSrcUpper, srcUpperStep}, {pSrcBottom, srcBottomStep}, pDst, dstStep);
    return vekStsOk;
}

VekStatus vekiSmoothingChroma_VerEdge_VC1_16s8u_C1R(const Vek16s* pSrcLeft, Vek32s srcLeftStep, const Vek16s* pSrcRight,
                                                    Vek32s srcRightStep, Vek8u* pDst, Vek32s dstStep) {
    if (anyNull(pSrcLeft, pSrcRight, pDst)) return vekStsErrNullPtr;
    kernel::smoothVerticalEdge({pSrcLeft, srcLeftStep}, Rows::frame, {pSrcRight, srcRightStep}, Rows::frame, pDst,
                               dstStep, 0);
    return vekStsOk;
}

VekStatus vekiSmoothingChroma_HorEdge_VC1_16s8u_P2C2R(const Vek16s* pSrcUpperU, Vek32s srcUpperUStep,
                                                      const Vek16s* pSrcBottomU, Vek32s srcBottomUStep,
                                                      const Vek16s* pSrcUpperV, Vek32s srcUpperVStep,
                                                      const Vek16s* pSrcBottomV, Vek32s srcBottomVStep, Vek8u* pDst,
                                                      Vek32s dstStep) {
    if (anyNull(pSrcUpperU, pSrcBottomU, pSrcUpperV, pSrcBottomV, pDst)) return vekStsErrNullPtr;
    kernel::smoothHorizontalEdge(plain::ValuePlanes{{pSrcUpperU, srcUpperUStep}, {pSrcUpperV, srcUpperVStep}},
                                 plain::ValuePlanes{{pSrcBottomU, srcBottomUStep}, {pSrcBottomV, srcBottomVStep}}, pDst,
                                 dstStep);
    return vekStsOk;
}

VekStatus vekiSmoothingChroma_VerEdge_VC1_16s8u_P2C2R(const Vek16s* pSrcLeftU, Vek32s srcLeftUStep,
                                                      const Vek16s* pSrcRightU, Vek32s srcRightUStep,
                                                      const Vek16s* pSrcLeftV, Vek32s srcLeftVStep,
                                                      const Vek16s* pSrcRightV, Vek32s srcRightVStep, Vek8u* pDst,
                                                      Vek32s dstStep) {
    if (anyNull(pSrcLeftU, pSrcRightU, pSrcLeftV, pSrcRightV, pDst)) return vekStsErrNullPtr;
    kernel::smoothVerticalEdge(plain::ValuePlanes{{pSrcLeftU, srcLeftUStep}, {pSrcLeftV, srcLeftVStep}},
                               plain::ValuePlanes{{pSrcRightU, srcRightUStep}, {pSrcRightV, srcRightVStep}}, pDst,
                               dstStep);
    return vekStsOk;
}
