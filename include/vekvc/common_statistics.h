/** @file common_statistics.h
 *  Statistics of a block: variance and sum.
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

#ifdef __cplusplus
}
#endif

#endif
