/** @file common.h
 *  Block primitives of all standards: copies, averages, motion compensation with residual, block matching, coefficient
 *  scans, variance, smoothing. 8-bit samples are Vek8u, residuals and coefficients Vek16s.
 *
 *  Block sizes are columns by rows, as in the names. Steps are signed counts of bytes for all element types and are
 *  used as they are: negative steps, zero source steps and odd addresses work. Operands must not overlap unless the
 *  function works in place.
 *
 *  Half-sample positions. r(x, y) is the reference block:
 *
 *  | case            | rounding 0                                          | rounding 1              |
 *  |-----------------|-----------------------------------------------------|-------------------------|
 *  | full sample     | r(x, y)                                             | the same                |
 *  | horizontal half | (r(x, y) + r(x+1, y) + 1) >> 1                      | without the 1           |
 *  | vertical half   | (r(x, y) + r(x, y+1) + 1) >> 1                      | without the 1           |
 *  | diagonal half   | (r(x, y) + r(x+1, y) + r(x, y+1) + r(x+1, y+1) + 2) >> 2 | 1 in place of the 2 |
 *
 *  A horizontal case reads one column to the right of the block, a vertical case one row below it, the diagonal case
 *  both; a full-sample case reads the block alone.
 */
#ifndef VEKVC_COMMON_H
#define VEKVC_COMMON_H

#include "vekvc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @name Copy
 *  @{ */

/** Copies a block.
 *  @param pSrc, srcStep the block to copy
 *  @param pDst, dstStep the copy
 *  @retval vekStsErrNullPtr a pointer is null
 */
VEKVC_API VekStatus vekiCopy8x8_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep);
VEKVC_API VekStatus vekiCopy16x16_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep);
/** @} */

/** @name Copy from a half-sample position
 *  @{ */

/** Copies the block found at a full- or half-sample position.
 *  @param pSrc, srcStep the reference block; one more column and/or row is read where the case needs it
 *  @param pDst, dstStep the result
 *  @param acc the case, in bits 0 and 1: 0 full sample, 1 horizontal half, 2 vertical half, 3 diagonal half. (mcType of
 *  the other functions orders the cases differently.) Other bits are ignored.
 *  @param rounding the rounding, in bit 0; other bits are ignored
 *  @retval vekStsErrNullPtr a pointer is null
 */
VEKVC_API VekStatus vekiCopy16x16HP_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep, Vek32s acc,
                                           Vek32s rounding);
VEKVC_API VekStatus vekiCopy16x8HP_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep, Vek32s acc,
                                          Vek32s rounding);
VEKVC_API VekStatus vekiCopy8x8HP_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep, Vek32s acc,
                                         Vek32s rounding);
VEKVC_API VekStatus vekiCopy8x4HP_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep, Vek32s acc,
                                         Vek32s rounding);
/** @} */

/** @name Average
 *  @{ */

/** Averages two blocks: (a + b + 1) >> 1.
 *  @param pSrc1, src1Step the first block
 *  @param pSrc2, src2Step the second block
 *  @param pDst, dstStep the result
 *  @retval vekStsErrNullPtr a pointer is null
 */
VEKVC_API VekStatus vekiAverage8x8_8u_C1R(const Vek8u* pSrc1, Vek32s src1Step, const Vek8u* pSrc2, Vek32s src2Step,
                                          Vek8u* pDst, Vek32s dstStep);
VEKVC_API VekStatus vekiAverage16x16_8u_C1R(const Vek8u* pSrc1, Vek32s src1Step, const Vek8u* pSrc2, Vek32s src2Step,
                                            Vek8u* pDst, Vek32s dstStep);
/** @} */

/** @name Average in place
 *  @{ */

/** Averages a block into another: pSrcDst = (pSrcDst + pSrc + 1) >> 1.
 *  @param pSrc, srcStep the block to average in
 *  @param pSrcDst, srcDstStep the other block, and the result
 *  @retval vekStsErrNullPtr a pointer is null
 */
VEKVC_API VekStatus vekiAverage8x8_8u_C1IR(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pSrcDst, Vek32s srcDstStep);
VEKVC_API VekStatus vekiAverage16x16_8u_C1IR(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pSrcDst, Vek32s srcDstStep);
/** @} */

/** @name Average from a half-sample position
 *  @{ */

/** Averages the block found at a full- or half-sample position into another: pSrcDst = (pSrcDst + p + 1) >> 1. The
 *  average rounds up for either rounding of p.
 *  @param pSrc, srcStep the reference block; one more column and/or row is read where the case needs it
 *  @param pSrcDst, srcDstStep the other block, and the result
 *  @param acc the case, in bits 0 and 1: 0 full sample, 1 horizontal half, 2 vertical half, 3 diagonal half
 *  @param rounding the rounding of p, in bit 0
 *  @retval vekStsErrNullPtr a pointer is null
 */
VEKVC_API VekStatus vekiInterpolateAverage16x16_8u_C1IR(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pSrcDst,
                                                        Vek32s srcDstStep, Vek32s acc, Vek32s rounding);
VEKVC_API VekStatus vekiInterpolateAverage16x8_8u_C1IR(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pSrcDst,
                                                       Vek32s srcDstStep, Vek32s acc, Vek32s rounding);
VEKVC_API VekStatus vekiInterpolateAverage8x8_8u_C1IR(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pSrcDst,
                                                      Vek32s srcDstStep, Vek32s acc, Vek32s rounding);
VEKVC_API VekStatus vekiInterpolateAverage8x4_8u_C1IR(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pSrcDst,
                                                      Vek32s srcDstStep, Vek32s acc, Vek32s rounding);
/** @} */

/** @name Motion compensation with residual
 *  @{ */

/** Predicts a block from one reference and adds the residual: clip255(p + residual), the sum limited to 16 bits before
 *  it is clipped. In the UV forms a row holds 8 pairs of interleaved Cb and Cr samples (16 bytes, 8 rows), the residual
 *  likewise (16 values a row), and the horizontal neighbour is the next sample of the same component, two bytes on: a
 *  horizontal case reads two bytes to the right of the block.
 *  @param pSrcRef, srcStep the reference block; one more column and/or row is read where the case needs it
 *  @param pSrcYData, srcYDataStep the residual
 *  @param pDst, dstStep the result
 *  @param mcType the case, in bits 3 and 2: 0 full sample, 4 vertical half, 8 horizontal half, 12 diagonal half; other
 *  bits are ignored
 *  @param roundControl the rounding, in bit 0; other bits are ignored
 *  @retval vekStsErrNullPtr a pointer is null
 */
VEKVC_API VekStatus vekiMC16x16_8u_C1(const Vek8u* pSrcRef, Vek32s srcStep, const Vek16s* pSrcYData,
                                      Vek32s srcYDataStep, Vek8u* pDst, Vek32s dstStep, Vek32s mcType,
                                      Vek32s roundControl);
VEKVC_API VekStatus vekiMC16x8_8u_C1(const Vek8u* pSrcRef, Vek32s srcStep, const Vek16s* pSrcYData, Vek32s srcYDataStep,
                                     Vek8u* pDst, Vek32s dstStep, Vek32s mcType, Vek32s roundControl);
VEKVC_API VekStatus vekiMC16x4_8u_C1(const Vek8u* pSrcRef, Vek32s srcStep, const Vek16s* pSrcYData, Vek32s srcYDataStep,
                                     Vek8u* pDst, Vek32s dstStep, Vek32s mcType, Vek32s roundControl);
VEKVC_API VekStatus vekiMC8x16_8u_C1(const Vek8u* pSrcRef, Vek32s srcStep, const Vek16s* pSrcYData, Vek32s srcYDataStep,
                                     Vek8u* pDst, Vek32s dstStep, Vek32s mcType, Vek32s roundControl);
VEKVC_API VekStatus vekiMC8x8_8u_C1(const Vek8u* pSrcRef, Vek32s srcStep, const Vek16s* pSrcYData, Vek32s srcYDataStep,
                                    Vek8u* pDst, Vek32s dstStep, Vek32s mcType, Vek32s roundControl);
VEKVC_API VekStatus vekiMC8x4_8u_C1(const Vek8u* pSrcRef, Vek32s srcStep, const Vek16s* pSrcYData, Vek32s srcYDataStep,
                                    Vek8u* pDst, Vek32s dstStep, Vek32s mcType, Vek32s roundControl);
VEKVC_API VekStatus vekiMC4x8_8u_C1(const Vek8u* pSrcRef, Vek32s srcStep, const Vek16s* pSrcYData, Vek32s srcYDataStep,
                                    Vek8u* pDst, Vek32s dstStep, Vek32s mcType, Vek32s roundControl);
VEKVC_API VekStatus vekiMC4x4_8u_C1(const Vek8u* pSrcRef, Vek32s srcStep, const Vek16s* pSrcYData, Vek32s srcYDataStep,
                                    Vek8u* pDst, Vek32s dstStep, Vek32s mcType, Vek32s roundControl);
VEKVC_API VekStatus vekiMC4x2_8u_C1(const Vek8u* pSrcRef, Vek32s srcStep, const Vek16s* pSrcYData, Vek32s srcYDataStep,
                                    Vek8u* pDst, Vek32s dstStep, Vek32s mcType, Vek32s roundControl);
VEKVC_API VekStatus vekiMC2x4_8u_C1(const Vek8u* pSrcRef, Vek32s srcStep, const Vek16s* pSrcYData, Vek32s srcYDataStep,
                                    Vek8u* pDst, Vek32s dstStep, Vek32s mcType, Vek32s roundControl);
VEKVC_API VekStatus vekiMC2x2_8u_C1(const Vek8u* pSrcRef, Vek32s srcStep, const Vek16s* pSrcYData, Vek32s srcYDataStep,
                                    Vek8u* pDst, Vek32s dstStep, Vek32s mcType, Vek32s roundControl);
VEKVC_API VekStatus vekiMC16x8UV_8u_C1(const Vek8u* pSrcRef, Vek32s srcStep, const Vek16s* pSrcYData,
                                       Vek32s srcYDataStep, Vek8u* pDst, Vek32s dstStep, Vek32s mcType,
                                       Vek32s roundControl);
/** @} */

/** @name Motion compensation with residual, two references
 *  @{ */

/** Predicts a block from two references and adds the residual: clip255(((f + b + 1) >> 1) + residual), the sum limited
 *  to 16 bits before it is clipped. The average of the two predictions rounds up in all cases. In the UV forms a row
 *  holds 8 pairs of interleaved Cb and Cr samples (16 bytes, 8 rows), the residual likewise (16 values a row), and the
 *  horizontal neighbour is the next sample of the same component, two bytes on: a horizontal case reads two bytes to
 *  the right of the block.
 *  @param pSrcRefF, srcStepF the forward reference block; one more column and/or row is read where the case needs it
 *  @param mcTypeF the forward case, in bits 3 and 2: 0 full sample, 4 vertical half, 8 horizontal half, 12 diagonal
 *  half
 *  @param pSrcRefB, srcStepB, mcTypeB the backward reference and its case, likewise
 *  @param pSrcYData, srcYDataStep the residual
 *  @param pDst, dstStep the result
 *  @param roundControl the rounding of both predictions, in bit 0
 *  @retval vekStsErrNullPtr a pointer is null
 */
VEKVC_API VekStatus vekiMC16x16B_8u_C1(const Vek8u* pSrcRefF, Vek32s srcStepF, Vek32s mcTypeF, const Vek8u* pSrcRefB,
                                       Vek32s srcStepB, Vek32s mcTypeB, const Vek16s* pSrcYData, Vek32s srcYDataStep,
                                       Vek8u* pDst, Vek32s dstStep, Vek32s roundControl);
VEKVC_API VekStatus vekiMC16x8B_8u_C1(const Vek8u* pSrcRefF, Vek32s srcStepF, Vek32s mcTypeF, const Vek8u* pSrcRefB,
                                      Vek32s srcStepB, Vek32s mcTypeB, const Vek16s* pSrcYData, Vek32s srcYDataStep,
                                      Vek8u* pDst, Vek32s dstStep, Vek32s roundControl);
VEKVC_API VekStatus vekiMC16x4B_8u_C1(const Vek8u* pSrcRefF, Vek32s srcStepF, Vek32s mcTypeF, const Vek8u* pSrcRefB,
                                      Vek32s srcStepB, Vek32s mcTypeB, const Vek16s* pSrcYData, Vek32s srcYDataStep,
                                      Vek8u* pDst, Vek32s dstStep, Vek32s roundControl);
VEKVC_API VekStatus vekiMC8x16B_8u_C1(const Vek8u* pSrcRefF, Vek32s srcStepF, Vek32s mcTypeF, const Vek8u* pSrcRefB,
                                      Vek32s srcStepB, Vek32s mcTypeB, const Vek16s* pSrcYData, Vek32s srcYDataStep,
                                      Vek8u* pDst, Vek32s dstStep, Vek32s roundControl);
VEKVC_API VekStatus vekiMC8x8B_8u_C1(const Vek8u* pSrcRefF, Vek32s srcStepF, Vek32s mcTypeF, const Vek8u* pSrcRefB,
                                     Vek32s srcStepB, Vek32s mcTypeB, const Vek16s* pSrcYData, Vek32s srcYDataStep,
                                     Vek8u* pDst, Vek32s dstStep, Vek32s roundControl);
VEKVC_API VekStatus vekiMC8x4B_8u_C1(const Vek8u* pSrcRefF, Vek32s srcStepF, Vek32s mcTypeF, const Vek8u* pSrcRefB,
                                     Vek32s srcStepB, Vek32s mcTypeB, const Vek16s* pSrcYData, Vek32s srcYDataStep,
                                     Vek8u* pDst, Vek32s dstStep, Vek32s roundControl);
VEKVC_API VekStatus vekiMC4x8B_8u_C1(const Vek8u* pSrcRefF, Vek32s srcStepF, Vek32s mcTypeF, const Vek8u* pSrcRefB,
                                     Vek32s srcStepB, Vek32s mcTypeB, const Vek16s* pSrcYData, Vek32s srcYDataStep,
                                     Vek8u* pDst, Vek32s dstStep, Vek32s roundControl);
VEKVC_API VekStatus vekiMC4x4B_8u_C1(const Vek8u* pSrcRefF, Vek32s srcStepF, Vek32s mcTypeF, const Vek8u* pSrcRefB,
                                     Vek32s srcStepB, Vek32s mcTypeB, const Vek16s* pSrcYData, Vek32s srcYDataStep,
                                     Vek8u* pDst, Vek32s dstStep, Vek32s roundControl);
VEKVC_API VekStatus vekiMC4x2B_8u_C1(const Vek8u* pSrcRefF, Vek32s srcStepF, Vek32s mcTypeF, const Vek8u* pSrcRefB,
                                     Vek32s srcStepB, Vek32s mcTypeB, const Vek16s* pSrcYData, Vek32s srcYDataStep,
                                     Vek8u* pDst, Vek32s dstStep, Vek32s roundControl);
VEKVC_API VekStatus vekiMC2x4B_8u_C1(const Vek8u* pSrcRefF, Vek32s srcStepF, Vek32s mcTypeF, const Vek8u* pSrcRefB,
                                     Vek32s srcStepB, Vek32s mcTypeB, const Vek16s* pSrcYData, Vek32s srcYDataStep,
                                     Vek8u* pDst, Vek32s dstStep, Vek32s roundControl);
VEKVC_API VekStatus vekiMC2x2B_8u_C1(const Vek8u* pSrcRefF, Vek32s srcStepF, Vek32s mcTypeF, const Vek8u* pSrcRefB,
                                     Vek32s srcStepB, Vek32s mcTypeB, const Vek16s* pSrcYData, Vek32s srcYDataStep,
                                     Vek8u* pDst, Vek32s dstStep, Vek32s roundControl);
VEKVC_API VekStatus vekiMC16x8BUV_8u_C1(const Vek8u* pSrcRefF, Vek32s srcStepF, Vek32s mcTypeF, const Vek8u* pSrcRefB,
                                        Vek32s srcStepB, Vek32s mcTypeB, const Vek16s* pSrcYData, Vek32s srcYDataStep,
                                        Vek8u* pDst, Vek32s dstStep, Vek32s roundControl);
/** @} */

/** @name Motion compensation with residual, interleaved chroma
 *  @{ */

/** Predicts an interleaved chroma block from one reference and adds the residual, which lies in two planes. 8x8 (8x4)
 *  counts samples of each component: a row holds 8 pairs of Cb and Cr, 16 bytes. The horizontal neighbour is the next
 *  sample of the same component.
 *  @param pSrcRef, srcStep the reference block; two more bytes a row and/or one more row are read where the case needs
 *  it
 *  @param pSrcU, pSrcV the residuals of the samples in the even and odd bytes, 8 values a row each
 *  @param srcUVStep the step of both residuals
 *  @param pDst, dstStep the result
 *  @param mcType the case, in bits 3 and 2: 0 full sample, 4 vertical half, 8 horizontal half, 12 diagonal half
 *  @param roundControl the rounding, in bit 0
 *  @retval vekStsErrNullPtr a pointer is null
 */
VEKVC_API VekStatus vekiMC8x8_16s8u_P2C2R(const Vek8u* pSrcRef, Vek32s srcStep, const Vek16s* pSrcU,
                                          const Vek16s* pSrcV, Vek32s srcUVStep, Vek8u* pDst, Vek32s dstStep,
                                          Vek32s mcType, Vek32s roundControl);
VEKVC_API VekStatus vekiMC8x4_16s8u_P2C2R(const Vek8u* pSrcRef, Vek32s srcStep, const Vek16s* pSrcU,
                                          const Vek16s* pSrcV, Vek32s srcUVStep, Vek8u* pDst, Vek32s dstStep,
                                          Vek32s mcType, Vek32s roundControl);
/** @} */

/** @name Motion compensation with residual, interleaved chroma, two references
 *  @{ */

/** Predicts an interleaved chroma block from two references and adds the residual, which lies in two planes. The
 *  average of the two predictions rounds up in all cases.
 *  @param pSrcRefF, srcStepF the forward reference; two more bytes a row and/or one more row are read where the case
 *  needs it
 *  @param mcTypeF the forward case, in bits 3 and 2: 0 full sample, 4 vertical half, 8 horizontal half, 12 diagonal
 *  half
 *  @param pSrcRefB, srcStepB, mcTypeB the backward reference and its case, likewise
 *  @param pSrcU, pSrcV the residuals of the samples in the even and odd bytes, 8 values a row each
 *  @param srcUVStep the step of both residuals
 *  @param pDst, dstStep the result
 *  @param roundControl the rounding of both predictions, in bit 0
 *  @retval vekStsErrNullPtr a pointer is null
 */
VEKVC_API VekStatus vekiMC8x8B_16s8u_P2C2R(const Vek8u* pSrcRefF, Vek32s srcStepF, Vek32s mcTypeF,
                                           const Vek8u* pSrcRefB, Vek32s srcStepB, Vek32s mcTypeB, const Vek16s* pSrcU,
                                           const Vek16s* pSrcV, Vek32s srcUVStep, Vek8u* pDst, Vek32s dstStep,
                                           Vek32s roundControl);
VEKVC_API VekStatus vekiMC8x4B_16s8u_P2C2R(const Vek8u* pSrcRefF, Vek32s srcStepF, Vek32s mcTypeF,
                                           const Vek8u* pSrcRefB, Vek32s srcStepB, Vek32s mcTypeB, const Vek16s* pSrcU,
                                           const Vek16s* pSrcV, Vek32s srcUVStep, Vek8u* pDst, Vek32s dstStep,
                                           Vek32s roundControl);
/** @} */

/** @name Residual addition
 *  @{ */

/** Adds a residual to a block in place: pSrcDst = clip255(pSrcDst + residual), the sum limited to 16 bits before it is
 *  clipped.
 *  @param pSrc, srcStep the residual
 *  @param pSrcDst, srcDstStep the block
 *  @retval vekStsErrNullPtr a pointer is null
 */
VEKVC_API VekStatus vekiAdd8x8_16s8u_C1IRS(const Vek16s* pSrc, Vek32s srcStep, Vek8u* pSrcDst, Vek32s srcDstStep);
/** @} */

/** @name Residual addition from a half-sample position
 *  @{ */

/** Adds a residual to the block found at a full- or half-sample position: pDst = clip255(p + residual), the sum limited
 *  to 16 bits before it is clipped.
 *  @param pSrc, srcStep the residual
 *  @param pRef, refStep the reference block; one more column and/or row is read where the case needs it
 *  @param pDst, dstStep the result
 *  @param acc the case, in bits 0 and 1: 0 full sample, 1 horizontal half, 2 vertical half, 3 diagonal half
 *  @param rounding the rounding, in bit 0
 *  @retval vekStsErrNullPtr a pointer is null
 */
VEKVC_API VekStatus vekiAdd8x8HP_16s8u_C1RS(const Vek16s* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep,
                                            Vek8u* pDst, Vek32s dstStep, Vek32s acc, Vek32s rounding);
/** @} */

/** @name Constant addition
 *  @{ */

/** Adds a constant to a block in place. Unlike the residual additions, the 16-bit sum wraps before it is clipped to
 *  0..255: 100 plus 32700 stores 0.
 *  @param value the constant
 *  @param pSrcDst, srcDstStep the block
 *  @retval vekStsErrNullPtr the pointer is null
 */
VEKVC_API VekStatus vekiAddC8x8_16s8u_C1IR(Vek16s value, Vek8u* pSrcDst, Vek32s srcDstStep);
/** @} */

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

/** @name Forward scan
 *  @{ */

/** Puts the coefficients of an 8x8 block into scan order: pDst[i] = pSrc[scan position i].
 *  With countNonZero of 20 or more the whole block is permuted. Below 20, countNonZero is trusted: the walk through the
 *  scan stops when so many non-zero coefficients were found, and all later ones become 0.
 *  @param pSrc 64 coefficients in raster order; all may be read
 *  @param[out] pDst 64 coefficients in scan order
 *  @param countNonZero the number of non-zero coefficients, 1 to 64
 *  @param scan the scan: 1 the alternate scan (ISO 13818-2 figure 7-3), 2 the alternate horizontal scan (ISO 14496-2),
 *  any other value the zigzag scan (ISO 13818-2 figure 7-2)
 *  @retval vekStsErrNullPtr a pointer is null
 *  @retval vekStsErrOutOfRange countNonZero is outside 1..64
 */
VEKVC_API VekStatus vekiScanFwd_16s_C1(const Vek16s* pSrc, Vek16s* pDst, Vek32s countNonZero, Vek32s scan);
/** @} */

/** @name Inverse scan
 *  @{ */

/** Puts coefficients in scan order back into an 8x8 block: pDst[scan position i] = pSrc[i] for i up to indxLastNonZero;
 *  all other coefficients become 0.
 *  @param pSrc coefficients in scan order; those behind indxLastNonZero are not read
 *  @param[out] pDst 64 coefficients in raster order
 *  @param indxLastNonZero the scan position of the last coefficient, 0 to 63
 *  @param scan the scan: 1 the alternate scan (ISO 13818-2 figure 7-3), 2 the alternate horizontal scan (ISO 14496-2),
 *  any other value the zigzag scan (ISO 13818-2 figure 7-2)
 *  @retval vekStsErrNullPtr a pointer is null
 *  @retval vekStsErrOutOfRange indxLastNonZero is outside 0..63
 */
VEKVC_API VekStatus vekiScanInv_16s_C1(const Vek16s* pSrc, Vek16s* pDst, Vek32s indxLastNonZero, Vek32s scan);
/** @} */

/** @name Zero count
 *  @{ */

/** Counts the zeros of an 8x8 block.
 *  @param pSrc 64 coefficients
 *  @param[out] pCount the number of coefficients that are 0
 *  @retval vekStsErrNullPtr a pointer is null
 */
VEKVC_API VekStatus vekiCountZeros8x8_16s_C1(const Vek16s* pSrc, Vek32u* pCount);
/** @} */

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
