// The exports of the sums of absolute transformed differences.
#include "common/satd_plain.h"
#include "core/check.h"
#include "core/kernel.h"
#include "vekvc/common.h"
#if VEKVC_SIMD
#include "common/satd_simd.h"
#endif
#if VEKVC_VECTOR512
#include "common/satd_simd512.h"
#endif

using namespace vekvc;

namespace {

template <int W, int H, class T>
VekStatus satd4x4(const T* pSrc, Vek32s srcStep, const T* pRef, Vek32s refStep, Vek32s* pResult) {
    if (anyNull(pSrc, pRef, pResult)) return vekStsErrNullPtr;
    store(pResult, kernel::satd4x4<W, H>(Block<T>(pSrc, srcStep), Block<T>(pRef, refStep)));
    return vekStsOk;
}

template <int W, int H>
VekStatus satd8x8(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep, Vek32s* pResult,
                  Vek32s mcType) {
    if (anyNull(pSrc, pRef, pResult)) return vekStsErrNullPtr;
    return finish([&] {
        return kernel::putSatd8x8<W, H>(Block<Vek8u>(pSrc, srcStep), Block<Vek8u>(pRef, refStep), halfOfMcType(mcType),
                                        pResult);
    });
}

}  // namespace

VekStatus vekiSATD4x4_8u32s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep, Vek32s* pResult) {
    return satd4x4<4, 4>(pSrc, srcStep, pRef, refStep, pResult);
}

VekStatus vekiSATD8x8_8u32s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep, Vek32s* pResult) {
    return satd4x4<8, 8>(pSrc, srcStep, pRef, refStep, pResult);
}

VekStatus vekiSATD16x16_8u32s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep,
                                  Vek32s* pResult) {
    return satd4x4<16, 16>(pSrc, srcStep, pRef, refStep, pResult);
}

VekStatus vekiSATD4x4_16u32s_C1R(const Vek16u* pSrc, Vek32s srcStep, const Vek16u* pRef, Vek32s refStep,
                                 Vek32s* pResult) {
    return satd4x4<4, 4>(pSrc, srcStep, pRef, refStep, pResult);
}

VekStatus vekiSATD8x8_16u32s_C1R(const Vek16u* pSrc, Vek32s srcStep, const Vek16u* pRef, Vek32s refStep,
                                 Vek32s* pResult) {
    return satd4x4<8, 8>(pSrc, srcStep, pRef, refStep, pResult);
}

VekStatus vekiSATD16x16_16u32s_C1R(const Vek16u* pSrc, Vek32s srcStep, const Vek16u* pRef, Vek32s refStep,
                                   Vek32s* pResult) {
    return satd4x4<16, 16>(pSrc, srcStep, pRef, refStep, pResult);
}

VekStatus vekiSATD8x8T8_8u32s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep, Vek32s* pResult,
                                  Vek32s mcType) {
    return satd8x8<8, 8>(pSrc, srcStep, pRef, refStep, pResult, mcType);
}

VekStatus vekiSATD16x8T8_8u32s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep,
                                   Vek32s* pResult, Vek32s mcType) {
    return satd8x8<16, 8>(pSrc, srcStep, pRef, refStep, pResult, mcType);
}

VekStatus vekiSATD16x16T8_8u32s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep,
                                    Vek32s* pResult, Vek32s mcType) {
    return satd8x8<16, 16>(pSrc, srcStep, pRef, refStep, pResult, mcType);
}
