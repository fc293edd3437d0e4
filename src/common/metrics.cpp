// The exports of block matching.
#include "common/metrics_plain.h"
#include "core/check.h"
#include "core/kernel.h"
#include "vekvc/common.h"
#if VEKVC_SIMD
#include "common/metrics_simd.h"
#endif

using namespace vekvc;

namespace {

template <int W, int H, class T>
VekStatus sad(const T* pSrc, Vek32s srcStep, const T* pRef, Vek32s refStep, Vek32s* pResult, Half half) {
    if (anyNull(pSrc, pRef, pResult)) [[unlikely]]
        return vekStsErrNullPtr;
    return finish([&] {
        return kernel::putSumOfAbsoluteDifferences<W, H>(Block<T>(pSrc, srcStep), Block<T>(pRef, refStep), half,
                                                         pResult);
    });
}

template <int W, int H>
VekStatus ssd(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep, Vek32s* pResult, Half half) {
    if (anyNull(pSrc, pRef, pResult)) [[unlikely]]
        return vekStsErrNullPtr;
    store(pResult,
          kernel::sumOfSquaredDifferences<W, H>(Block<Vek8u>(pSrc, srcStep), Block<Vek8u>(pRef, refStep), half));
    return vekStsOk;
}

// count is rounded down to a multiple of 8, the group in which positions are searched.
constexpr Vek32s wholeGroups(Vek32s count) { return count & ~7; }

template <int W, int H>
VekStatus search(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep, Vek16u* pDstSAD, Vek32s count) {
    if (anyNull(pSrc, pRef, pDstSAD)) return vekStsErrNullPtr;
    if (anyBelow(1, wholeGroups(count))) return vekStsErrSize;
    kernel::searchRow<W, H, false>(Block<Vek8u>(pSrc, srcStep), Block<Vek8u>(pRef, refStep), pDstSAD,
                                   wholeGroups(count));
    return vekStsOk;
}

template <int W, int H>
VekStatus searchMinimum(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep, Vek16u* pDstSAD,
                        Vek32s count, Vek32u* pMinIndex) {
    if (anyNull(pSrc, pRef, pDstSAD, pMinIndex)) return vekStsErrNullPtr;
    if (anyBelow(1, wholeGroups(count))) return vekStsErrSize;
    store(pMinIndex, kernel::searchRow<W, H, true>(Block<Vek8u>(pSrc, srcStep), Block<Vek8u>(pRef, refStep), pDstSAD,
                                                   wholeGroups(count)));
    return vekStsOk;
}

}  // namespace

VekStatus vekiSAD16x16_8u32s(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep, Vek32s* pResult,
                             Vek32s mcType) {
    return sad<16, 16>(pSrc, srcStep, pRef, refStep, pResult, halfOfMcType(mcType));
}

VekStatus vekiSAD16x8_8u32s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep, Vek32s* pResult,
                                Vek32s mcType) {
    return sad<16, 8>(pSrc, srcStep, pRef, refStep, pResult, halfOfMcType(mcType));
}

VekStatus vekiSAD8x8_8u32s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep, Vek32s* pResult,
                               Vek32s mcType) {
    return sad<8, 8>(pSrc, srcStep, pRef, refStep, pResult, halfOfMcType(mcType));
}

VekStatus vekiSAD16x16_16u32s_C1R(const Vek16u* pSrc, Vek32s srcStep, const Vek16u* pRef, Vek32s refStep,
                                  Vek32s* pResult, Vek32s mcType) {
    return sad<16, 16>(pSrc, srcStep, pRef, refStep, pResult, halfOfMcType(mcType));
}

VekStatus vekiSAD8x8_16u32s_C1R(const Vek16u* pSrc, Vek32s srcStep, const Vek16u* pRef, Vek32s refStep, Vek32s* pResult,
                                Vek32s mcType) {
    return sad<8, 8>(pSrc, srcStep, pRef, refStep, pResult, halfOfMcType(mcType));
}

VekStatus vekiSAD4x4_16u32s_C1R(const Vek16u* pSrc, Vek32s srcStep, const Vek16u* pRef, Vek32s refStep, Vek32s* pResult,
                                Vek32s mcType) {
    return sad<4, 4>(pSrc, srcStep, pRef, refStep, pResult, halfOfMcType(mcType));
}

VekStatus vekiSAD4x4_8u32s(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep, Vek32s* pResult) {
    return sad<4, 4>(pSrc, srcStep, pRef, refStep, pResult, Half::none);
}

VekStatus vekiSAD4x8_8u32s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep, Vek32s* pResult) {
    return sad<4, 8>(pSrc, srcStep, pRef, refStep, pResult, Half::none);
}

VekStatus vekiSAD8x4_8u32s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep, Vek32s* pResult) {
    return sad<8, 4>(pSrc, srcStep, pRef, refStep, pResult, Half::none);
}

VekStatus vekiSAD8x16_8u32s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep, Vek32s* pResult) {
    return sad<8, 16>(pSrc, srcStep, pRef, refStep, pResult, Half::none);
}

VekStatus vekiSAD8x8_8u32s_C2R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep, Vek32s* pResultU,
                               Vek32s* pResultV, Vek32s mcType) {
    if (anyNull(pSrc, pRef, pResultU, pResultV)) return vekStsErrNullPtr;
    if (anyBelow(1, srcStep, refStep)) return vekStsErrStep;
    const auto sums = kernel::sumsOfAbsoluteDifferences8x8(Block<Vek8u>(pSrc, srcStep), Block<Vek8u>(pRef, refStep),
                                                           halfOfMcType(mcType));
    store(pResultU, sums.u);
    store(pResultV, sums.v);
    return vekStsOk;
}

VekStatus vekiSSD8x8_8u32s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep, Vek32s* pResult,
                               Vek32s mcType) {
    return ssd<8, 8>(pSrc, srcStep, pRef, refStep, pResult, halfOfMcType(mcType));
}

VekStatus vekiSSD4x4_8u32s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep, Vek32s* pResult,
                               Vek32s mcType) {
    return ssd<4, 4>(pSrc, srcStep, pRef, refStep, pResult, halfOfMcType(mcType));
}

VekStatus vekiSAD4x4xN_8u16u_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep, Vek16u* pDstSAD,
                                 Vek32s count) {
    return search<4, 4>(pSrc, srcStep, pRef, refStep, pDstSAD, count);
}

VekStatus vekiSAD4x4xNI_8u16u_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep, Vek16u* pDstSAD,
                                  Vek32s count, Vek32u* pMinIndex) {
    return searchMinimum<4, 4>(pSrc, srcStep, pRef, refStep, pDstSAD, count, pMinIndex);
}

VekStatus vekiSAD8x8xN_8u16u_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep, Vek16u* pDstSAD,
                                 Vek32s count) {
    return search<8, 8>(pSrc, srcStep, pRef, refStep, pDstSAD, count);
}

VekStatus vekiSAD8x8xNI_8u16u_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep, Vek16u* pDstSAD,
                                  Vek32s count, Vek32u* pMinIndex) {
    return searchMinimum<8, 8>(pSrc, srcStep, pRef, refStep, pDstSAD, count, pMinIndex);
}

VekStatus vekiSAD16x16xN_8u16u_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep,
                                   Vek16u* pDstSAD, Vek32s count) {
    return search<16, 16>(pSrc, srcStep, pRef, refStep, pDstSAD, count);
}

VekStatus vekiSAD16x16xNI_8u16u_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep,
                                    Vek16u* pDstSAD, Vek32s count, Vek32u* pMinIndex) {
    return searchMinimum<16, 16>(pSrc, srcStep, pRef, refStep, pDstSAD, count, pMinIndex);
}
