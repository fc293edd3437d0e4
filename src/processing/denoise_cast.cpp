// The export of the content-adaptive spatio-temporal denoiser.
#include "core/check.h"
#include "core/kernel.h"
#include "processing/denoise_cast_plain.h"
#include "vekvc/processing_denoise.h"
#if VEKVC_SIMD
#include "processing/denoise_cast_simd.h"
#endif

using namespace vekvc;

VekStatus vekiFilterDenoiseCAST_8u_C1R(const Vek8u* pPrev, const Vek8u* pCur, const Vek8u* pNext, Vek32s srcStep,
                                       Vek8u* pDst, Vek32s dstStep, VekiSize roiSize, Vek32s noise) {
    if (anyNull(pPrev, pCur, pNext, pDst)) return vekStsErrNullPtr;
    if (anyBelow(1, roiSize.width, roiSize.height)) return vekStsErrSize;
    const CastFrames frames = {{pPrev, srcStep}, {pCur, srcStep}, {pNext, srcStep}};
    kernel::denoiseCast(frames, {pDst, dstStep}, roiSize, CastWeights(clip3(6, 255, noise)));
    return vekStsOk;
}
