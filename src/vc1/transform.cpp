// Exports: forward and inverse transforms.
#include "core/check.h"
#include "core/kernel.h"
#include "vc1/transform_plain.h"
#include "vekvc/vc1.h"
#if VEKVC_SIMD
#include "vc1/transform_simd.h"
#endif

using namespace vekvc;

namespace {

template <int W, int H>
[[gnu::always_inline]] inline VekStatus inverse(const Vek16s* pSrc, Vek32s srcStep, Vek16s* pDst, Vek32s dstStep,
                                                VekiSize sizeNZ) {
    if (anyNull(pSrc, pDst)) return vekStsErrNullPtr;
    kernel::transformInverse<W, H>({pSrc, srcStep}, {pDst, dstStep}, sizeNZ);
    return vekStsOk;
}

template <int W, int H>
VekStatus forward(const Vek16s* pSrc, Vek32s srcStep, Vek16s* pDst, Vek32s dstStep) {
    if (anyNull(pSrc, pDst)) return vekStsErrNullPtr;
    kernel::transformForward<W, H>({pSrc, srcStep}, {pDst, dstStep});
    return vekStsOk;
}

}  // namespace

VekStatus vekiTransform8x8Inv_VC1_16s_C1IR(Vek16s* pSrcDst, Vek32s srcDstStep, VekiSize sizeNZ) {
    return inverse<8, 8>(pSrcDst, srcDstStep, pSrcDst, srcDstStep, sizeNZ);
}

VekStatus vekiTransform8x8Inv_VC1_16s_C1R(const Vek16s* pSrc, Vek32s srcStep, Vek16s* pDst, Vek32s dstStep,
                                          VekiSize sizeNZ) {
    return inverse<8, 8>(pSrc, srcStep, pDst, dstStep, sizeNZ);
}

VekStatus vekiTransform8x4Inv_VC1_16s_C1IR(Vek16s* pSrcDst, Vek32s srcDstStep, VekiSize sizeNZ) {
    return inverse<8, 4>(pSrcDst, srcDstStep, pSrcDst, srcDstStep, sizeNZ);
}

VekStatus vekiTransform8x4Inv_VC1_16s_C1R(const Vek16s* pSrc, Vek32s srcStep, Vek16s* pDst, Vek32s dstStep,
                                          VekiSize sizeNZ) {
    return inverse<8, 4>(pSrc, srcStep, pDst, dstStep, sizeNZ);
}

VekStatus vekiTransform4x8Inv_VC1_16s_C1IR(Vek16s* pSrcDst, Vek32s srcDstStep, VekiSize sizeNZ) {
    return inverse<4, 8>(pSrcDst, srcDstStep, pSrcDst, srcDstStep, sizeNZ);
}

VekStatus vekiTransform4x8Inv_VC1_16s_C1R(const Vek16s* pSrc, Vek32s srcStep, Vek16s* pDst, Vek32s dstStep,
                                          VekiSize sizeNZ) {
    return inverse<4, 8>(pSrc, srcStep, pDst, dstStep, sizeNZ);
}

VekStatus vekiTransform4x4Inv_VC1_16s_C1IR(Vek16s* pSrcDst, Vek32s srcDstStep, VekiSize sizeNZ) {
    return inverse<4, 4>(pSrcDst, srcDstStep, pSrcDst, srcDstStep, sizeNZ);
}

VekStatus vekiTransform4x4Inv_VC1_16s_C1R(const Vek16s* pSrc, Vek32s srcStep, Vek16s* pDst, Vek32s dstStep,
                                          VekiSize sizeNZ) {
    return inverse<4, 4>(pSrc, srcStep, pDst, dstStep, sizeNZ);
}

VekStatus vekiTransform8x8Fwd_VC1_16s_C1IR(Vek16s* pSrcDst, Vek32s srcDstStep) {
    return forward<8, 8>(pSrcDst, srcDstStep, pSrcDst, srcDstStep);
}

VekStatus vekiTransform8x8Fwd_VC1_16s_C1R(const Vek16s* pSrc, Vek32s srcStep, Vek16s* pDst, Vek32s dstStep) {
    return forward<8, 8>(pSrc, srcStep, pDst, dstStep);
}

VekStatus vekiTransform8x4Fwd_VC1_16s_C1IR(Vek16s* pSrcDst, Vek32s srcDstStep) {
    return forward<8, 4>(pSrcDst, srcDstStep, pSrcDst, srcDstStep);
}

VekStatus vekiTransform8x4Fwd_VC1_16s_C1R(const Vek16s* pSrc, Vek32s srcStep, Vek16s* pDst, Vek32s dstStep) {
    return forward<8, 4>(pSrc, srcStep, pDst, dstStep);
}

VekStatus vekiTransform4x8Fwd_VC1_16s_C1IR(Vek16s* pSrcDst, Vek32s srcDstStep) {
    return forward<4, 8>(pSrcDst, srcDstStep, pSrcDst, srcDstStep);
}

VekStatus vekiTransform4x8Fwd_VC1_16s_C1R(const Vek16s* pSrc, Vek32s srcStep, Vek16s* pDst, Vek32s dstStep) {
    return forward<4, 8>(pSrc, srcStep, pDst, dstStep);
}

VekStatus vekiTransform4x4Fwd_VC1_16s_C1IR(Vek16s* pSrcDst, Vek32s srcDstStep) {
    return forward<4, 4>(pSrcDst, srcDstStep, pSrcDst, srcDstStep);
}

VekStatus vekiTransform4x4Fwd_VC1_16s_C1R(const Vek16s* pSrc, Vek32s srcStep, Vek16s* pDst, Vek32s dstStep) {
    return forward<4, 4>(pSrc, srcStep, pDst, dstStep);
}
