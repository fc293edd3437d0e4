// The export of range mapping.
#include "core/check.h"
#include "core/kernel.h"
#include "vc1/range_mapping_plain.h"
#include "vekvc/vc1.h"
#if VEKVC_SIMD
#include "vc1/range_mapping_simd.h"
#endif

using namespace vekvc;

VekStatus vekiRangeMapping_VC1_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep, VekiSize roiSize,
                                      Vek32s rangeMapValue) {
    if (anyNull(pSrc, pDst)) return vekStsErrNullPtr;
    if (outside(rangeMapValue, 0, 7)) return vekStsErrOutOfRange;
    if (anyBelow(1, roiSize.width, roiSize.height)) return vekStsOk;  // an empty region is done
    kernel::mapRange({pSrc, srcStep}, {pDst, dstStep}, roiSize, rangeMapValue);
    return vekStsOk;
}
