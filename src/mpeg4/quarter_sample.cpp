// Exports: quarter-sample prediction.
#include "core/check.h"
#include "core/kernel.h"
#include "mpeg4/quarter_sample_plain.h"
#include "vekvc/mpeg4_predict.h"
#if VEKVC_SIMD
#include "mpeg4/quarter_sample_simd.h"
#endif

using namespace vekvc;

namespace {

template <mpeg4::Into into, int W, int H>
VekStatus predict(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep, Vek32s acc, Vek32s rounding) {
    if (anyNull(pSrc, pDst)) return vekStsErrNullPtr;
    return finish([&] {
        return kernel::predictQuarterSample<into, W, H>({pSrc, srcStep, acc & 3, acc >> 2 & 3, rounding & 1}, pDst,
                                                        dstStep);
    });
}

}  // namespace

VekStatus vekiCopy16x16QP_MPEG4_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep, Vek32s acc,
                                       Vek32s rounding) {
    return predict<mpeg4::Into::destination, 16, 16>(pSrc, srcStep, pDst, dstStep, acc, rounding);
}

VekStatus vekiCopy16x8QP_MPEG4_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep, Vek32s acc,
                                      Vek32s rounding) {
    return predict<mpeg4::Into::destination, 16, 8>(pSrc, srcStep, pDst, dstStep, acc, rounding);
}

VekStatus vekiCopy8x8QP_MPEG4_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep, Vek32s acc,
                                     Vek32s rounding) {
    return predict<mpeg4::Into::destination, 8, 8>(pSrc, srcStep, pDst, dstStep, acc, rounding);
}

VekStatus vekiInterpolateAverage16x16QP_MPEG4_8u_C1IR(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pSrcDst,
                                                      Vek32s srcDstStep, Vek32s acc, Vek32s rounding) {
    return predict<mpeg4::Into::average, 16, 16>(pSrc, srcStep, pSrcDst, srcDstStep, acc, rounding);
}

VekStatus vekiInterpolateAverage16x8QP_MPEG4_8u_C1IR(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pSrcDst,
                                                     Vek32s srcDstStep, Vek32s acc, Vek32s rounding) {
    return predict<mpeg4::Into::average, 16, 8>(pSrc, srcStep, pSrcDst, srcDstStep, acc, rounding);
}

VekStatus vekiInterpolateAverage8x8QP_MPEG4_8u_C1IR(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pSrcDst,
                                                    Vek32s srcDstStep, Vek32s acc, Vek32s rounding) {
    return predict<mpeg4::Into::average, 8, 8>(pSrc, srcStep, pSrcDst, srcDstStep, acc, rounding);
}
