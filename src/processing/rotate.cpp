// Exports: 4:2:2 to rotated 4:2:0.
#include "core/check.h"
#include "core/kernel.h"
#include "processing/rotate_plain.h"
#include "vekvc/processing_convert.h"
#if VEKVC_SIMD
#include "processing/rotate_simd.h"
#endif

using namespace vekvc;
using namespace vekvc::processing;

namespace {

template <class From>
VekStatus rotateTo420(const From& from, const Planes<Vek8u>& to, VekiSize roiSize, Vek32s rotation) {
    if (anyBelow(1, roiSize.width, roiSize.height)) return vekStsErrSize;
    if (!isRotation(rotation)) return vekStsErrBadArg;
    kernel::rotateTo420(from, roiSize, rotation, to);
    return Area(roiSize).odd() ? vekStsWrnOddSize : vekStsOk;
}

}  // namespace

VekStatus vekiCbYCr422ToYCbCr420_Rotate_8u_C2P3R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDstY, Vek32s dstYStep,
                                                 Vek8u* pDstCb, Vek8u* pDstCr, Vek32s dstCStep, VekiSize roiSize,
                                                 Vek32s rotation) {
    if (anyNull(pSrc, pDstY, pDstCb, pDstCr)) return vekStsErrNullPtr;
    return rotateTo420(Plane<const Vek8u>{pSrc, srcStep}, {pDstY, dstYStep, pDstCb, pDstCr, dstCStep}, roiSize,
                       rotation);
}

VekStatus vekiCbYCr422ToYCbCr420_Rotate_8u_P3R(const Vek8u* pSrcY, Vek32s srcYStep, const Vek8u* pSrcCb,
                                               const Vek8u* pSrcCr, Vek32s srcCStep, Vek8u* pDstY, Vek32s dstYStep,
                                               Vek8u* pDstCb, Vek8u* pDstCr, Vek32s dstCStep, VekiSize roiSize,
                                               Vek32s rotation) {
    if (anyNull(pSrcY, pSrcCb, pSrcCr, pDstY, pDstCb, pDstCr)) return vekStsErrNullPtr;
    return rotateTo420(Planes<const Vek8u>(pSrcY, srcYStep, pSrcCb, pSrcCr, srcCStep),
                       {pDstY, dstYStep, pDstCb, pDstCr, dstCStep}, roiSize, rotation);
}
