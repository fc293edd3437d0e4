// The exports of quantization.
#include "core/check.h"
#include "core/kernel.h"
#include "vc1/quantize_plain.h"
#include "vekvc/vc1.h"
#if VEKVC_SIMD
#include "vc1/quantize_simd.h"
#endif

namespace vekvc {
namespace {

VekStatus checkRegion(VekiSize roiSize, Vek32s quant) {
    if ((roiSize.width != 4 && roiSize.width != 8) || outside(roiSize.height, 1, 8)) return vekStsErrSize;
    if (outside(quant, 1, 31)) return vekStsErrOutOfRange;
    return vekStsOk;
}

template <bool intra, bool uniform>
VekStatus dequantize(Vek16s* pSrcDst, Vek32s srcDstStep, VekiSize roiSize, Vek32s quant, Vek32s halfStep) {
    if (anyNull(pSrcDst)) return vekStsErrNullPtr;
    if (const VekStatus status = checkRegion(roiSize, quant); status != vekStsOk) return status;
    kernel::dequantizeVc1<intra, uniform>({pSrcDst, srcDstStep}, roiSize, {quant, halfStep});
    return vekStsOk;
}

template <bool intra, bool uniform>
VekStatus quantize(Vek16s* pSrcDst, Vek32s srcDstStep, VekiSize roiSize, Vek32s quant, Vek32s halfStep, Vek32s offset,
                   Vek32s* pCount) {
    if (anyNull(pSrcDst, pCount)) return vekStsErrNullPtr;
    if (const VekStatus status = checkRegion(roiSize, quant); status != vekStsOk) return status;
    const Vc1Quantizer q(quant, halfStep);
    if (outside(offset, 0, q.step - 1)) return vekStsErrOutOfRange;
    store(pCount, kernel::quantizeVc1<intra, uniform>({pSrcDst, srcDstStep}, roiSize, q, offset));
    return vekStsOk;
}

}  // namespace
}  // namespace vekvc

using namespace vekvc;

VekStatus vekiQuantInvIntraUniform_VC1_16s_C1IR(Vek16s* pSrcDst, Vek32s srcDstStep, VekiSize roiSize, Vek32s quant,
                                                Vek32s halfStep) {
    return dequantize<true, true>(pSrcDst, srcDstStep, roiSize, quant, halfStep);
}

VekStatus vekiQuantInvIntraNonuniform_VC1_16s_C1IR(Vek16s* pSrcDst, Vek32s srcDstStep, VekiSize roiSize, Vek32s quant,
                                                   Vek32s halfStep) {
    return dequantize<true, false>(pSrcDst, srcDstStep, roiSize, quant, halfStep);
}

VekStatus vekiQuantInvInterUniform_VC1_16s_C1IR(Vek16s* pSrcDst, Vek32s srcDstStep, VekiSize roiSize, Vek32s quant,
                                                Vek32s halfStep) {
    return dequantize<false, true>(pSrcDst, srcDstStep, roiSize, quant, halfStep);
}

VekStatus vekiQuantInvInterNonuniform_VC1_16s_C1IR(Vek16s* pSrcDst, Vek32s srcDstStep, VekiSize roiSize, Vek32s quant,
                                                   Vek32s halfStep) {
    return dequantize<false, false>(pSrcDst, srcDstStep, roiSize, quant, halfStep);
}

VekStatus vekiQuantIntraUniform_VC1_16s_C1IR(Vek16s* pSrcDst, Vek32s srcDstStep, VekiSize roiSize, Vek32s quant,
                                             Vek32s halfStep, Vek32s offset, Vek32s* pCount) {
    return quantize<true, true>(pSrcDst, srcDstStep, roiSize, quant, halfStep, offset, pCount);
}

VekStatus vekiQuantIntraNonuniform_VC1_16s_C1IR(Vek16s* pSrcDst, Vek32s srcDstStep, VekiSize roiSize, Vek32s quant,
                                                Vek32s halfStep, Vek32s offset, Vek32s* pCount) {
    return quantize<true, false>(pSrcDst, srcDstStep, roiSize, quant, halfStep, offset, pCount);
}

VekStatus vekiQuantInterUniform_VC1_16s_C1IR(Vek16s* pSrcDst, Vek32s srcDstStep, VekiSize roiSize, Vek32s quant,
                                             Vek32s halfStep, Vek32s offset, Vek32s* pCount) {
    return quantize<false, true>(pSrcDst, srcDstStep, roiSize, quant, halfStep, offset, pCount);
}

VekStatus vekiQuantInterNonuniform_VC1_16s_C1IR(Vek16s* pSrcDst, Vek32s srcDstStep, VekiSize roiSize, Vek32s quant,
                                                Vek32s halfStep, Vek32s offset, Vek32s* pCount) {
    return quantize<false, false>(pSrcDst, srcDstStep, roiSize, quant, halfStep, offset, pCount);
}
