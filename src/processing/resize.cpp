// Export: a picture of Cb Y Cr Y resized, converted and rotated.
#include "core/check.h"
#include "core/kernel.h"
#include "processing/resize_plain.h"
#include "vekvc/processing_convert.h"
#if VEKVC_SIMD
#include "processing/resize_simd.h"
#endif

using namespace vekvc;
using namespace vekvc::processing;

VekStatus vekiResizeCCRotate_8u_C2R(const Vek8u* pSrc, Vek32s srcStep, VekiSize roiSize, Vek8u* pDst, Vek32s dstStep,
                                    Vek32s factor, Vek32s interpolation, Vek32s conversion, Vek32s rotation) {
    if (anyNull(pSrc, pDst)) return vekStsErrNullPtr;
    if (anyBelow(1, roiSize.width, roiSize.height)) return vekStsErrSize;
    const bool reduces = factor == 1 || factor == 2 || factor == 4 || factor == 8;
    if (!reduces && factor != -2 && factor != -4) return vekStsErrResizeFactor;
    if (outside(interpolation, 0, 2)) return vekStsErrInterpolation;
    if (outside(conversion, 0, 2)) return vekStsErrBadArg;
    if (!isRotation(rotation)) return vekStsErrBadArg;
    const Resize resize = {
        {pSrc, srcStep}, roiSize, reduces ? factor : 1, reduces ? 1 : -factor, Interpolation{interpolation}};
    if (conversion == 0)
        kernel::resizeToCbYCr(resize, rotation, {pDst, dstStep});
    else
        kernel::resizeToBgr565(resize, rotation, kToBgr[conversion - 1], {pDst, dstStep});
    return resize.area.odd() ? vekStsWrnOddSize : vekStsOk;
}
