// The exports of variance, mean and deviation.
#include "common/variance_plain.h"
#include "core/check.h"
#include "core/kernel.h"
#include "vekvc/common.h"
#if VEKVC_SIMD
#include "common/variance_simd.h"
#endif
#if VEKVC_VECTOR512
#include "common/variance_simd512.h"
#endif

using namespace vekvc;

namespace {

template <class T>
VekStatus varMean8x8(const T* pSrc, Vek32s srcStep, Vek32s* pVar, Vek32s* pMean) {
    if (anyNull(pSrc, pVar, pMean)) return vekStsErrNullPtr;
    const auto result = kernel::varianceAndSum8x8(Block<T>(pSrc, srcStep));
    store(pVar, result.variance);
    store(pMean, result.sum);
    return vekStsOk;
}

template <int W, int H>
VekStatus varMeanDiff(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep, Vek32s* pVar, Vek32s* pMean,
                      Vek32s mcType) {
    if (anyNull(pSrc, pRef, pVar, pMean)) return vekStsErrNullPtr;
    return finish([&] {
        return kernel::putVarianceOfDifference<W, H>(Block<Vek8u>(pSrc, srcStep), Block<Vek8u>(pRef, refStep),
                                                     halfOfMcType(mcType), pVar, pMean);
    });
}

template <int W, int H>
VekStatus meanAbsDev(const Vek8u* pSrc, Vek32s srcStep, Vek32s* pDev) {
    if (anyNull(pSrc, pDev)) return vekStsErrNullPtr;
    store(pDev, kernel::sumOfDeviations<W, H>(Block<Vek8u>(pSrc, srcStep)));
    return vekStsOk;
}

}  // namespace

VekStatus vekiVarMean8x8_8u32s_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek32s* pVar, Vek32s* pMean) {
    return varMean8x8(pSrc, srcStep, pVar, pMean);
}

VekStatus vekiVarSum8x8_8u32s_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek32s* pVar, Vek32s* pMean) {
    return varMean8x8(pSrc, srcStep, pVar, pMean);
}

VekStatus vekiVarMean8x8_16s32s_C1R(const Vek16s* pSrc, Vek32s srcStep, Vek32s* pVar, Vek32s* pMean) {
    return varMean8x8(pSrc, srcStep, pVar, pMean);
}

VekStatus vekiVarSum8x8_16s32s_C1R(const Vek16s* pSrc, Vek32s srcStep, Vek32s* pVar, Vek32s* pMean) {
    return varMean8x8(pSrc, srcStep, pVar, pMean);
}

VekStatus vekiVariance16x16_8u32s(const Vek8u* pSrc, Vek32s srcStep, Vek32s* pVar) {
    if (anyNull(pSrc, pVar)) return vekStsErrNullPtr;
    const auto m = kernel::moments<16, 16>(Block<Vek8u>(pSrc, srcStep));
    // Deliberately not exact: the square of the sum wraps at 32 bits and is read as signed.
    store(pVar, wrapSub(m.squares, wrapMul(m.sum, m.sum) / 256));
    return vekStsOk;
}

VekStatus vekiVarMeanDiff16x16_8u32s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep,
                                         Vek32s* pVar, Vek32s* pMean, Vek32s mcType) {
    return varMeanDiff<16, 16>(pSrc, srcStep, pRef, refStep, pVar, pMean, mcType);
}

VekStatus vekiVarMeanDiff16x8_8u32s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep,
                                        Vek32s* pVar, Vek32s* pMean, Vek32s mcType) {
    return varMeanDiff<16, 8>(pSrc, srcStep, pRef, refStep, pVar, pMean, mcType);
}

VekStatus vekiMeanAbsDev8x8_8u32s_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek32s* pDev) {
    return meanAbsDev<8, 8>(pSrc, srcStep, pDev);
}

VekStatus vekiMeanAbsDev16x16_8u32s_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek32s* pDev) {
    return meanAbsDev<16, 16>(pSrc, srcStep, pDev);
}
