/** @file common_smooth.h
 *  Smoothing of a plane.
 */
#ifndef VEKVC_COMMON_SMOOTH_H
#define VEKVC_COMMON_SMOOTH_H

#include "vekvc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @name Smoothing
 *  @{ */

/** Smooths a plane with the 3x3 binomial filter: weights 1 2 1 by 1 2 1, (sum + 8) >> 4. Samples beyond the region's
 *  border are those of the border.
 *  @param pSrc, srcStep the source region; the step may be negative
 *  @param pDst, dstStep the result; the step may be negative; must not overlap the source
 *  @param roiSize the region, width and height at least 1
 *  @return vekStsOk; vekStsErrNullPtr if a pointer is null; vekStsErrSize if width or height is below 1;
 *          vekStsErrUnsupported if the region has fewer than 3 rows; vekStsErrMemAlloc if there is no memory for the
 *          intermediate rows; nothing is written
 */
VEKVC_API VekStatus vekiFilterDenoiseSmooth_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep,
                                                   VekiSize roiSize);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
