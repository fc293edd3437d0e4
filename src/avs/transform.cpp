// Exports: dequantization, the inverse transform, and both with the addition to the prediction.
#include "avs/transform_kernel.h"
#include "core/check.h"
#include "vekvc/avs.h"

using namespace vekvc;

VekStatus vekiQuantInv8x8_AVS_16s_C1I(Vek16s* pSrcDst, Vek32s QP) {
    if (anyNull(pSrcDst)) return vekStsErrNullPtr;
    if (outside(QP, 0, avs::kMaxQP)) return vekStsErrOutOfRange;
    return finish([&] { return kernel::quantInvAvs(pSrcDst, pSrcDst, QP); });
}

VekStatus vekiTransform8x8Inv_AVS_16s_C1I(Vek16s* pSrcDst) {
    if (anyNull(pSrcDst)) return vekStsErrNullPtr;
    return finish([&] { return kernel::transformInvAvs(pSrcDst); });
}

VekStatus vekiReconstruct8x8_AVS_16s8u_C1IR(const Vek16s* pCoeffs, Vek8u* pSrcDst, Vek32s srcDstStep, Vek32s QP) {
    if (anyNull(pCoeffs) || anyNull(pSrcDst)) return vekStsErrNullPtr;
    if (outside(QP, 0, avs::kMaxQP)) return vekStsErrOutOfRange;
    return finish([&] { return kernel::reconstructAvs(pCoeffs, pSrcDst, srcDstStep, QP); });
}
