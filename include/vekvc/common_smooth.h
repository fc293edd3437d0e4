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
 *  @param pSrc, srcStep the source region; the step must be at least the width
 *  @param pDst, dstStep the result; the step must be at least the width; must not overlap the source
 *  @param roiSize the region, width and height at least 1
 *  @retval vekStsErrNullPtr a pointer is null
 *  @retval vekStsErrStep a step is below the width
 *  @retval vekStsErrSize width or height is below 1
 *  @retval vekStsErrUnsupported the region has fewer than 3 rows
 *  @retval vekStsErrMemAlloc there is no memory for the intermediate rows; nothing is written
 */
VEKVC_API VekStatus vekiFilterDenoiseSmooth_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep,
                                                   VekiSize roiSize);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
