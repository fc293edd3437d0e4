// The export of the smoothing filter.
#include "core/check.h"
#include "core/filter_frame.h"
#include "vekcore.h"
#include "vekvc/common.h"

using namespace vekvc;

VekStatus vekiFilterDenoiseSmooth_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep,
                                         VekiSize roiSize) {
    if (anyNull(pSrc, pDst)) return vekStsErrNullPtr;
    if (anyBelow(1, roiSize.width, roiSize.height)) return vekStsErrSize;
    if (roiSize.height < 3) return vekStsErrUnsupported;
    return smoothBinomial3x3(FilterSamples::Vek8u, pSrc, srcStep, pDst, dstStep, roiSize, ownGetNumThreads());
}
