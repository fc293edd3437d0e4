// The exports of block prediction: copies and averages.
#include "common/predict_plain.h"
#include "core/check.h"
#include "core/kernel.h"
#include "core/opaque.h"
#include "vekvc/common.h"
#if VEKVC_SIMD
#include "common/predict_simd.h"
#endif

using namespace vekvc;

namespace {

constexpr Reference fullSample(const Vek8u* p, Vek32s step) { return {p, step, Half::none}; }

// Opaque: the compilers would work on acc before the pointers are checked, and keep the outcome of both.
template <int W, int H>
VekStatus copy(const Vek8u* pSrc, Vek32s srcStep, Vek32s acc, Vek32s rounding, Vek8u* pDst, Vek32s dstStep) {
    if (anyNull(pSrc, pDst)) [[unlikely]]
        return vekStsErrNullPtr;
    kernel::copyBlock<W, H>({pSrc, srcStep, halfOfAcc(opaque(acc))}, roundingOf(rounding), pDst, dstStep);
    return vekStsOk;
}

template <int W, int H>
VekStatus average(const Vek8u* pSrc1, Vek32s src1Step, const Vek8u* pSrc2, Vek32s src2Step, Vek8u* pDst,
                  Vek32s dstStep) {
    if (anyNull(pSrc1, pSrc2, pDst)) return vekStsErrNullPtr;
    kernel::averageBlock<W, H>(fullSample(pSrc1, src1Step), 0, pSrc2, src2Step, pDst, dstStep);
    return vekStsOk;
}

template <int W, int H>
VekStatus averageInPlace(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pSrcDst, Vek32s srcDstStep, Vek32s acc,
                         Vek32s rounding) {
    if (anyNull(pSrc, pSrcDst)) [[unlikely]]
        return vekStsErrNullPtr;
    kernel::averageBlock<W, H>({pSrc, srcStep, halfOfAcc(opaque(acc))}, roundingOf(rounding), pSrcDst, srcDstStep,
                               pSrcDst, srcDstStep);
    return vekStsOk;
}

}  // namespace

VekStatus vekiCopy8x8_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep) {
    if (anyNull(pSrc, pDst)) return vekStsErrNullPtr;
    kernel::copyBlock<8, 8>(fullSample(pSrc, srcStep), 0, pDst, dstStep);
    return vekStsOk;
}

VekStatus vekiCopy16x16_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep) {
    if (anyNull(pSrc, pDst)) return vekStsErrNullPtr;
    kernel::copyBlock<16, 16>(fullSample(pSrc, srcStep), 0, pDst, dstStep);
    return vekStsOk;
}

VekStatus vekiCopy16x16HP_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep, Vek32s acc,
                                 Vek32s rounding) {
    return copy<16, 16>(pSrc, srcStep, acc, rounding, pDst, dstStep);
}

VekStatus vekiCopy16x8HP_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep, Vek32s acc,
                                Vek32s rounding) {
    return copy<16, 8>(pSrc, srcStep, acc, rounding, pDst, dstStep);
}

VekStatus vekiCopy8x8HP_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep, Vek32s acc,
                               Vek32s rounding) {
    return copy<8, 8>(pSrc, srcStep, acc, rounding, pDst, dstStep);
}

VekStatus vekiCopy8x4HP_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep, Vek32s acc,
                               Vek32s rounding) {
    return copy<8, 4>(pSrc, srcStep, acc, rounding, pDst, dstStep);
}

VekStatus vekiAverage8x8_8u_C1R(const Vek8u* pSrc1, Vek32s src1Step, const Vek8u* pSrc2, Vek32s src2Step, Vek8u* pDst,
                                Vek32s dstStep) {
    return average<8, 8>(pSrc1, src1Step, pSrc2, src2Step, pDst, dstStep);
}

VekStatus vekiAverage16x16_8u_C1R(const Vek8u* pSrc1, Vek32s src1Step, const Vek8u* pSrc2, Vek32s src2Step, Vek8u* pDst,
                                  Vek32s dstStep) {
    return average<16, 16>(pSrc1, src1Step, pSrc2, src2Step, pDst, dstStep);
}

VekStatus vekiAverage8x8_8u_C1IR(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pSrcDst, Vek32s srcDstStep) {
    return average<8, 8>(pSrc, srcStep, pSrcDst, srcDstStep, pSrcDst, srcDstStep);
}

VekStatus vekiAverage16x16_8u_C1IR(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pSrcDst, Vek32s srcDstStep) {
    return average<16, 16>(pSrc, srcStep, pSrcDst, srcDstStep, pSrcDst, srcDstStep);
}

VekStatus vekiInterpolateAverage16x16_8u_C1IR(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pSrcDst, Vek32s srcDstStep,
                                              Vek32s acc, Vek32s rounding) {
    return averageInPlace<16, 16>(pSrc, srcStep, pSrcDst, srcDstStep, acc, rounding);
}

VekStatus vekiInterpolateAverage16x8_8u_C1IR(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pSrcDst, Vek32s srcDstStep,
                                             Vek32s acc, Vek32s rounding) {
    return averageInPlace<16, 8>(pSrc, srcStep, pSrcDst, srcDstStep, acc, rounding);
}

VekStatus vekiInterpolateAverage8x8_8u_C1IR(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pSrcDst, Vek32s srcDstStep,
                                            Vek32s acc, Vek32s rounding) {
    return averageInPlace<8, 8>(pSrc, srcStep, pSrcDst, srcDstStep, acc, rounding);
}

VekStatus vekiInterpolateAverage8x4_8u_C1IR(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pSrcDst, Vek32s srcDstStep,
                                            Vek32s acc, Vek32s rounding) {
    return averageInPlace<8, 4>(pSrc, srcStep, pSrcDst, srcDstStep, acc, rounding);
}
