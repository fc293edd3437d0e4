/** @file common_statistics.h
 *  Statistics of a block: variance and sum, deviation from the mean, edges.
 */
#ifndef VEKVC_COMMON_STATISTICS_H
#define VEKVC_COMMON_STATISTICS_H

#include "vekvc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @name Variance and sum of 8x8 samples of 8 bits
 *  @{ */

/** With S the sum of the 64 samples and Q that of their squares, both exact: m = S / 64 and v = Q / 64 - m * m, each
 *  operation rounded to single precision. Both names are one operation.
 *  @param pSrc, srcStep the block
 *  @param[out] pVar v, the fraction dropped
 *  @param[out] pMean S: the sum of the samples, not divided by 64
 *  @retval vekStsErrNullPtr a pointer is null
 */
VEKVC_API VekStatus vekiVarMean8x8_8u32s_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek32s* pVar, Vek32s* pMean);
VEKVC_API VekStatus vekiVarSum8x8_8u32s_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek32s* pVar, Vek32s* pMean);
/** @} */

/** @name Variance and sum of 8x8 samples of 16 bits
 *  @{ */

/** As the 8-bit form on signed 16-bit samples, with two differences: each of the eight column sums is limited to 16
 *  bits after every addition, from the first row to the last, before they are added up to S; and Q is formed in 32 bits
 *  with wrap-around and read as signed. Both names are one operation.
 *  @param pSrc, srcStep the block; the step counts bytes
 *  @param[out] pVar v, the fraction dropped
 *  @param[out] pMean S: the sum of the samples, not divided by 64
 *  @retval vekStsErrNullPtr a pointer is null
 */
VEKVC_API VekStatus vekiVarMean8x8_16s32s_C1R(const Vek16s* pSrc, Vek32s srcStep, Vek32s* pVar, Vek32s* pMean);
VEKVC_API VekStatus vekiVarSum8x8_16s32s_C1R(const Vek16s* pSrc, Vek32s srcStep, Vek32s* pVar, Vek32s* pMean);
/** @} */

/** @name Squared deviations of 16x16 samples
 *  @{ */

/** The sum of squared deviations from the mean (256 times the variance): Q - T, with S the sum of the 256 samples, Q
 *  that of their squares and T = S * S / 256. S * S is formed in 32 bits with wrap-around and read as signed: for S
 *  above 46340 it is wrong in a fixed way that callers rely on.
 *  @param pSrc, srcStep the block
 *  @param[out] pVar Q - T
 *  @retval vekStsErrNullPtr a pointer is null
 */
VEKVC_API VekStatus vekiVariance16x16_8u32s(const Vek8u* pSrc, Vek32s srcStep, Vek32s* pVar);
/** @} */

/** @name Absolute deviations from the mean
 *  @{ */

/** The sum of |pSrc - m| over a block, m being the mean with the fraction dropped. It is not divided, so that it
 *  compares with a sum of absolute differences.
 *  @param pSrc, srcStep the block
 *  @param[out] pDev the sum
 *  @retval vekStsErrNullPtr a pointer is null
 */
VEKVC_API VekStatus vekiMeanAbsDev8x8_8u32s_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek32s* pDev);
VEKVC_API VekStatus vekiMeanAbsDev16x16_8u32s_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek32s* pDev);
/** @} */

/** @name Variance and sum of a difference
 *  @{ */

/** With d = pSrc - p over the N samples of a block, p being the reference at a full- or half-sample position (see
 *  common_predict.h), S the sum of d and Q that of d * d: S, and Q - floor(S * S / N), which is N times the variance;
 *  exact.
 *  @param pSrc, srcStep the source block
 *  @param pRef, refStep the reference block; one more column and/or row is read where the case needs it
 *  @param[out] pVar Q - floor(S * S / N)
 *  @param[out] pMean S: the sum of the differences, not divided by N
 *  @param mcType the case, in bits 3 and 2: 0 full sample, 4 vertical half, 8 horizontal half, 12 diagonal half, always
 *  with rounding 0; other bits are ignored
 *  @retval vekStsErrNullPtr a pointer is null
 */
VEKVC_API VekStatus vekiVarMeanDiff16x16_8u32s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep,
                                                   Vek32s* pVar, Vek32s* pMean, Vek32s mcType);
VEKVC_API VekStatus vekiVarMeanDiff16x8_8u32s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep,
                                                  Vek32s* pVar, Vek32s* pMean, Vek32s mcType);
/** @} */

/** @name Edge detection
 *  @{ */

/** Counts the pairs of neighbouring samples inside a block, 240 side by side and 240 one above the other, whose
 *  difference is larger than edgeLevel in magnitude.
 *  @param pSrc, srcStep the block
 *  @param edgeLevel the difference that is no edge yet; any value
 *  @param edgeCount the number of pairs that make an edge; any value
 *  @param[out] pIsEdge 1 if at least edgeCount pairs were counted, else 0
 *  @retval vekStsErrNullPtr a pointer is null
 */
VEKVC_API VekStatus vekiEdgeDetect16x16_8u32s_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek32s edgeLevel, Vek32s edgeCount,
                                                  Vek32s* pIsEdge);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
