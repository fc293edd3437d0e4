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

// Each operation rounds to single precision; the library is compiled without contraction to multiply-add.
Vek32s varianceOf64(const plain::Moments& m) {
    const float mean = static_cast<float>(m.sum) / 64.0f;
    const float meanOfSquares = static_cast<float>(m.squares) / 64.0f;
    const float squareOfMean = mean * mean;
    return static_cast<Vek32s>(meanOfSquares - squareOfMean);
}

VekStatus varMean8x8(const Vek8u* pSrc, Vek32s srcStep, Vek32s* pVar, Vek32s* pMean) {
    if (anyNull(pSrc, pVar, pMean)) return vekStsErrNullPtr;
    const auto m = kernel::moments<8, 8>(Block<Vek8u>(pSrc, srcStep));
    store(pVar, varianceOf64(m));
    store(pMean, m.sum);
    return vekStsOk;
}

VekStatus varMean8x8(const Vek16s* pSrc, Vek32s srcStep, Vek32s* pVar, Vek32s* pMean) {
    if (anyNull(pSrc, pVar, pMean)) return vekStsErrNullPtr;
    const auto m = kernel::moments8x8(Block<Vek16s>(pSrc, srcStep));
    store(pVar, varianceOf64(m));
    store(pMean, m.sum);
    return vekStsOk;
}

template <int W, int H>
VekStatus varMeanDiff(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep, Vek32s* pVar, Vek32s* pMean,
                      Vek32s mcType) {
    if (anyNull(pSrc, pRef, pVar, pMean)) return vekStsErrNullPtr;
    const auto m = kernel::momentsOfDifference<W, H>(Block<Vek8u>(pSrc, srcStep), Block<Vek8u>(pRef, refStep),
                                                     halfOfMcType(mcType));
    // The square takes all 32 bits without sign: 256 * 255 squared is 4261478400.
    const Vek32u squareOfSum = magnitude(m.sum) * magnitude(m.sum);
    store(pVar, m.squares - static_cast<Vek32s>(squareOfSum / (W * H)));
    store(pMean, m.sum);
    return vekStsOk;
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
