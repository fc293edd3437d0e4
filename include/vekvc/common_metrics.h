/** @file common_metrics.h
 *  Block metrics: how far a block lies from its prediction, or its rows from one another. The full- and half-sample
 *  positions of a reference are those of common_predict.h.
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

/** @name Sums of absolute differences of the 4x4 blocks
 *  @{ */

/** The sums of |pSrc - pRef| over each of the sixteen 4x4 blocks of a macroblock. Added up, they are the sums of any
 *  partition.
 *  @param pSrc, srcStep the source block, 16x16
 *  @param pRef, refStep the reference block, 16x16
 *  @param[out] pSAD 16 sums: entry 4 * row + column of the 4x4 block
 *  @retval vekStsErrNullPtr a pointer is null
 */
VEKVC_API VekStatus vekiSAD16x16Blocks4x4_8u16u_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef,
                                                    Vek32s refStep, Vek16u* pSAD);
/** @} */

/** @name Sums of differences of the 4x4 blocks
 *  @{ */

/** The sums of pSrc - pRef over each 4x4 block: before scaling, the first coefficients that H.264's 4x4 transform gives
 *  of the difference.
 *  @param pSrc, srcStep the source block
 *  @param pRef, refStep the reference block
 *  @param[out] pSums one sum per 4x4 block, in raster order: 4 of 8x8 samples, 16 of 16x16
 *  @retval vekStsErrNullPtr a pointer is null
 */
VEKVC_API VekStatus vekiSumsDiff8x8Blocks4x4_8u16s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef,
                                                       Vek32s refStep, Vek16s* pSums);
VEKVC_API VekStatus vekiSumsDiff16x16Blocks4x4_8u16s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef,
                                                         Vek32s refStep, Vek16s* pSums);
/** @} */

/** @name Sum of absolute transformed differences, 4x4 transforms
 *  @{ */

/** With D = pSrc - pRef of a 4x4 block and H the Hadamard matrix of +1 and -1, the sum of the sixteen |H D H^T| is
 *  even; half of it, added over all 4x4 blocks, is the result. Exact for all samples, of 16 bits too.
 *  @param pSrc, srcStep the source block
 *  @param pRef, refStep the reference block
 *  @param[out] pResult the sum
 *  @retval vekStsErrNullPtr a pointer is null
 */
VEKVC_API VekStatus vekiSATD4x4_8u32s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep,
                                          Vek32s* pResult);
VEKVC_API VekStatus vekiSATD8x8_8u32s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep,
                                          Vek32s* pResult);
VEKVC_API VekStatus vekiSATD16x16_8u32s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep,
                                            Vek32s* pResult);
VEKVC_API VekStatus vekiSATD4x4_16u32s_C1R(const Vek16u* pSrc, Vek32s srcStep, const Vek16u* pRef, Vek32s refStep,
                                           Vek32s* pResult);
VEKVC_API VekStatus vekiSATD8x8_16u32s_C1R(const Vek16u* pSrc, Vek32s srcStep, const Vek16u* pRef, Vek32s refStep,
                                           Vek32s* pResult);
VEKVC_API VekStatus vekiSATD16x16_16u32s_C1R(const Vek16u* pSrc, Vek32s srcStep, const Vek16u* pRef, Vek32s refStep,
                                             Vek32s* pResult);
/** @} */

/** @name Sum of absolute transformed differences, 8x8 transforms
 *  @{ */

/** With D = pSrc - p of an 8x8 block, p being the reference at a full- or half-sample position, and H the Hadamard
 *  matrix of +1 and -1, the sum R of the 64 |H D H^T| is formed and added over all 8x8 blocks; the result is (R + 2) >>
 *  2, rounded once.
 *  @param pSrc, srcStep the source block
 *  @param pRef, refStep the reference block; one more column and/or row is read where the case needs it
 *  @param[out] pResult the sum
 *  @param mcType the case, in bits 3 and 2: 0 full sample, 4 vertical half, 8 horizontal half, 12 diagonal half, always
 *  with rounding 0; other bits are ignored
 *  @retval vekStsErrNullPtr a pointer is null
 */
VEKVC_API VekStatus vekiSATD8x8T8_8u32s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep,
                                            Vek32s* pResult, Vek32s mcType);
VEKVC_API VekStatus vekiSATD16x8T8_8u32s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep,
                                             Vek32s* pResult, Vek32s mcType);
VEKVC_API VekStatus vekiSATD16x16T8_8u32s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep,
                                              Vek32s* pResult, Vek32s mcType);
/** @} */

/** @name Activity in frame order and in field order
 *  @{ */

/** The sums of |p(x, y) - p(x, y + 1)| for y = 0..6 and 8..14 and of |p(x, y) - p(x, y + 2)| for y = 0..13, over all 16
 *  columns: the differences of neighbouring rows within the 8x8 blocks that a frame DCT transforms (rows 0 to 7 and 8
 *  to 15), and a field DCT (even and odd rows). The smaller sum names the better type. Exact for all samples.
 *  @param pSrc, srcStep the macroblock, of the picture or of the residual; the step counts bytes
 *  @param[out] pFrame the sum in frame order
 *  @param[out] pField the sum in field order
 *  @retval vekStsErrNullPtr a pointer is null
 */
VEKVC_API VekStatus vekiSADFrameField16x16_8u32s_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek32s* pFrame, Vek32s* pField);
VEKVC_API VekStatus vekiSADFrameField16x16_16s32s_C1R(const Vek16s* pSrc, Vek32s srcStep, Vek32s* pFrame,
                                                      Vek32s* pField);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
