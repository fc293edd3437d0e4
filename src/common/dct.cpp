// Exports: the 8x8 DCTs.
#include "vekvc/dct.h"

#include "common/dct_plain.h"
#include "core/check.h"
#include "core/kernel.h"
#if VEKVC_SIMD
#include "common/dct_fast_simd.h"
#include "common/dct_simd.h"
#endif

using namespace vekvc;

namespace {

template <int corner, class T>
[[gnu::always_inline]] inline VekStatus inverse(const Vek16s* pSrc, T* pDst, Vek32s dstStep) {
    using Destination = std::conditional_t<sizeof(T) == 1, dct::Picture, dct::Residual>;
    if (anyNull(pSrc, pDst)) return vekStsErrNullPtr;
    kernel::dctInverse<corner>(pSrc, Destination{{pDst, dstStep}});
    return vekStsOk;
}

template <int corner>
[[gnu::always_inline]] inline VekStatus inverseAdd(const Vek16s* pSrc, Vek8u* pSrcDst, Vek32s srcDstStep) {
    if (anyNull(pSrc, pSrcDst)) return vekStsErrNullPtr;
    kernel::dctInverse<corner>(pSrc, dct::Prediction{{pSrcDst, srcDstStep}});
    return vekStsOk;
}

template <class T>
[[gnu::always_inline]] inline VekStatus forward(const T* pSrc, Vek32s srcStep, Vek16s* pDst) {
    if (anyNull(pSrc, pDst)) return vekStsErrNullPtr;
    kernel::dctForward(Block<T>{pSrc, srcStep}, pDst);
    return vekStsOk;
}

constexpr Vek32s kRow = 8 * sizeof(Vek16s);  // the step of contiguous rows

}  // namespace

VekStatus vekiDCT8x8Fwd_16s_C1(const Vek16s* pSrc, Vek16s* pDst) { return forward(pSrc, kRow, pDst); }

VekStatus vekiDCT8x8Fwd_16s_C1I(Vek16s* pSrcDst) { return forward<Vek16s>(pSrcDst, kRow, pSrcDst); }

VekStatus vekiDCT8x8Fwd_16s_C1R(const Vek16s* pSrc, Vek32s srcStep, Vek16s* pDst) {
    return forward(pSrc, srcStep, pDst);
}

VekStatus vekiDCT8x8Fwd_8u16s_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek16s* pDst) {
    return forward(pSrc, srcStep, pDst);
}

VekStatus vekiDCT8x8Inv_16s_C1(const Vek16s* pSrc, Vek16s* pDst) { return inverse<8>(pSrc, pDst, kRow); }

VekStatus vekiDCT8x8Inv_16s_C1I(Vek16s* pSrcDst) { return inverse<8>(pSrcDst, pSrcDst, kRow); }

VekStatus vekiDCT8x8Inv_16s_C1R(const Vek16s* pSrc, Vek16s* pDst, Vek32s dstStep) {
    return inverse<8>(pSrc, pDst, dstStep);
}

VekStatus vekiDCT8x8Inv_16s8u_C1R(const Vek16s* pSrc, Vek8u* pDst, Vek32s dstStep) {
    return inverse<8>(pSrc, pDst, dstStep);
}

VekStatus vekiDCT8x8InvAdd_16s8u_C1IR(const Vek16s* pSrc, Vek8u* pSrcDst, Vek32s srcDstStep) {
    return inverseAdd<8>(pSrc, pSrcDst, srcDstStep);
}

VekStatus vekiDCT8x8InvNZ4x4_16s_C1I(Vek16s* pSrcDst) { return inverse<4>(pSrcDst, pSrcDst, kRow); }

VekStatus vekiDCT8x8InvNZ2x2_16s_C1I(Vek16s* pSrcDst) { return inverse<2>(pSrcDst, pSrcDst, kRow); }

VekStatus vekiDCT8x8InvNZ4x4_16s8u_C1R(const Vek16s* pSrc, Vek8u* pDst, Vek32s dstStep) {
    return inverse<4>(pSrc, pDst, dstStep);
}

VekStatus vekiDCT8x8InvNZ2x2_16s8u_C1R(const Vek16s* pSrc, Vek8u* pDst, Vek32s dstStep) {
    return inverse<2>(pSrc, pDst, dstStep);
}

VekStatus vekiDCT8x8InvAddNZ4x4_16s8u_C1IR(const Vek16s* pSrc, Vek8u* pSrcDst, Vek32s srcDstStep) {
    return inverseAdd<4>(pSrc, pSrcDst, srcDstStep);
}

VekStatus vekiDCT8x8InvAddNZ2x2_16s8u_C1IR(const Vek16s* pSrc, Vek8u* pSrcDst, Vek32s srcDstStep) {
    return inverseAdd<2>(pSrc, pSrcDst, srcDstStep);
}

VekStatus vekiDCT8x8Inv_AANTransposed_16s_C1R(const Vek16s* pSrc, Vek16s* pDst, Vek32s dstStep) {
    if (anyNull(pSrc, pDst)) return vekStsErrNullPtr;
    if (anyBelow(16, dstStep)) return vekStsErrStep;
    kernel::dctInverseFast(pSrc, dct::Residual{{pDst, dstStep}});
    return vekStsOk;
}

VekStatus vekiDCT8x8Inv_AANTransposed_16s8u_C1R(const Vek16s* pSrc, Vek8u* pDst, Vek32s dstStep) {
    if (anyNull(pSrc, pDst)) return vekStsErrNullPtr;
    if (anyBelow(8, dstStep)) return vekStsErrStep;
    kernel::dctInverseFast(pSrc, dct::Picture{{pDst, dstStep}});
    return vekStsOk;
}

VekStatus vekiDCT8x8Inv_AANTransposed_16s8u_P2C2R(const Vek16s* pSrcU, const Vek16s* pSrcV, Vek8u* pDst,
                                                  Vek32s dstStep) {
    if (anyNull(pSrcU, pSrcV, pDst)) return vekStsErrNullPtr;
    if (anyBelow(16, dstStep)) return vekStsErrStep;
    kernel::dctInverseFastPair(pSrcU, pSrcV, {pDst, dstStep});
    return vekStsOk;
}
