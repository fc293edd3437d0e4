/** @file common_metrics.h
 *  Block metrics: how far a block lies from its prediction. The full- and half-sample positions of a reference are those
 *  of common_predict.h.
 */
#ifndef VEKVC_COMMON_METRICS_H
#define VEKVC_COMMON_METRICS_H

#include "vekvc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @name Sum of absolute differences
 *  @{ */

/** The sum of |pSrc - p| over a block, p being the reference at a full- or half-sample position; exact.
 *  @param pSrc, srcStep the source block
 *  @param pRef, refStep the reference block; one more column and/or row is read where the case needs it
 *  @param[out] pResult the sum
 *  @param mcType the case, in bits 3 and 2: 0 full sample, 4 vertical half, 8 horizontal half, 12 diagonal half, always
 *  with rounding 0; other bits are ignored
 *  @retval vekStsErrNullPtr a pointer is null
 */
VEKVC_API VekStatus vekiSAD16x16_8u32s(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep,
                                       Vek32s* pResult, Vek32s mcType);
VEKVC_API VekStatus vekiSAD16x8_8u32s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep,
                                          Vek32s* pResult, Vek32s mcType);
VEKVC_API VekStatus vekiSAD8x8_8u32s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep,
                                         Vek32s* pResult, Vek32s mcType);
VEKVC_API VekStatus vekiSAD16x16_16u32s_C1R(const Vek16u* pSrc, Vek32s srcStep, const Vek16u* pRef, Vek32s refStep,
                                            Vek32s* pResult, Vek32s mcType);
VEKVC_API VekStatus vekiSAD8x8_16u32s_C1R(const Vek16u* pSrc, Vek32s srcStep, const Vek16u* pRef, Vek32s refStep,
                                          Vek32s* pResult, Vek32s mcType);
VEKVC_API VekStatus vekiSAD4x4_16u32s_C1R(const Vek16u* pSrc, Vek32s srcStep, const Vek16u* pRef, Vek32s refStep,
                                          Vek32s* pResult, Vek32s mcType);
/** @} */

/** @name Sum of absolute differences, full sample
 *  @{ */

/** The sum of |pSrc - pRef| over a block; exact.
 *  @param pSrc, srcStep the source block
 *  @param pRef, refStep the reference block
 *  @param[out] pResult the sum
 *  @retval vekStsErrNullPtr a pointer is null
 */
VEKVC_API VekStatus vekiSAD4x4_8u32s(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep,
                                     Vek32s* pResult);
VEKVC_API VekStatus vekiSAD4x8_8u32s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep,
                                         Vek32s* pResult);
VEKVC_API VekStatus vekiSAD8x4_8u32s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep,
                                         Vek32s* pResult);
VEKVC_API VekStatus vekiSAD8x16_8u32s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep,
                                          Vek32s* pResult);
/** @} */

/** @name Sum of absolute differences, interleaved chroma
 *  @{ */

/** The sums of |pSrc - p| over 8x8 samples of each of two interleaved components (16 bytes a row). The horizontal
 *  neighbour is the next sample of the same component.
 *  @param pSrc, srcStep the source block; the step must be at least 1
 *  @param pRef, refStep the reference block; the step must be at least 1; two more bytes a row and/or one more row are
 *  read where the case needs it
 *  @param[out] pResultU the sum of the even bytes
 *  @param[out] pResultV the sum of the odd bytes
 *  @param mcType the case, in bits 3 and 2: 0 full sample, 4 vertical half, 8 horizontal half, 12 diagonal half, always
 *  with rounding 0; other bits are ignored
 *  @retval vekStsErrNullPtr a pointer is null
 *  @retval vekStsErrStep a step is below 1
 */
VEKVC_API VekStatus vekiSAD8x8_8u32s_C2R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep,
                                         Vek32s* pResultU, Vek32s* pResultV, Vek32s mcType);
/** @} */

/** @name Sum of squared differences
 *  @{ */

/** The sum of (p - pSrc)^2 over a block, p being the reference at a full- or half-sample position; exact.
 *  @param pSrc, srcStep the source block
 *  @param pRef, refStep the reference block; one more column and/or row is read where the case needs it
 *  @param[out] pResult the sum
 *  @param mcType the case, in bits 3 and 2: 0 full sample, 4 vertical half, 8 horizontal half, 12 diagonal half, always
 *  with rounding 0; other bits are ignored
 *  @retval vekStsErrNullPtr a pointer is null
 */
VEKVC_API VekStatus vekiSSD8x8_8u32s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep,
                                         Vek32s* pResult, Vek32s mcType);
VEKVC_API VekStatus vekiSSD4x4_8u32s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep,
                                         Vek32s* pResult, Vek32s mcType);
/** @} */

/** @name Search along a row
 *  @{ */

/** The sums of absolute differences of one source block against reference blocks at consecutive horizontal positions.
 *  @param pSrc, srcStep the source block
 *  @param pRef, refStep the reference block of the first position; count + width - 1 bytes of each row are read, with
 *  count rounded down to a multiple of 8
 *  @param[out] pDstSAD pDstSAD[i] receives the sum at pRef + i, for i below the rounded count
 *  @param count the number of positions, at least 8; rounded down to a multiple of 8
 *  @retval vekStsErrNullPtr a pointer is null
 *  @retval vekStsErrSize count is below 8
 */
VEKVC_API VekStatus vekiSAD4x4xN_8u16u_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep,
                                           Vek16u* pDstSAD, Vek32s count);
VEKVC_API VekStatus vekiSAD8x8xN_8u16u_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep,
                                           Vek16u* pDstSAD, Vek32s count);
VEKVC_API VekStatus vekiSAD16x16xN_8u16u_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep,
                                             Vek16u* pDstSAD, Vek32s count);
/** @} */

/** @name Search along a row, with the best position
 *  @{ */

/** As the search without index, and finds the smallest sum.
 *  @param pSrc, srcStep the source block
 *  @param pRef, refStep the reference block of the first position; count + width - 1 bytes of each row are read, with
 *  count rounded down to a multiple of 8
 *  @param[out] pDstSAD pDstSAD[i] receives the sum at pRef + i, for i below the rounded count
 *  @param count the number of positions, at least 8; rounded down to a multiple of 8
 *  @param[out] pMinIndex the index of the smallest sum, the lowest one among equals
 *  @retval vekStsErrNullPtr a pointer is null
 *  @retval vekStsErrSize count is below 8
 */
VEKVC_API VekStatus vekiSAD4x4xNI_8u16u_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep,
                                            Vek16u* pDstSAD, Vek32s count, Vek32u* pMinIndex);
VEKVC_API VekStatus vekiSAD8x8xNI_8u16u_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep,
                                            Vek16u* pDstSAD, Vek32s count, Vek32u* pMinIndex);
VEKVC_API VekStatus vekiSAD16x16xNI_8u16u_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep,
                                              Vek16u* pDstSAD, Vek32s count, Vek32u* pMinIndex);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
