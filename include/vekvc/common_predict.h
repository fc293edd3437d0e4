/** @file common_predict.h
 *  Block prediction: copies, averages, motion compensation with residual, residual addition. 8-bit samples are Vek8u,
 *  residuals Vek16s.
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
#ifndef VEKVC_COMMON_PREDICT_H
#define VEKVC_COMMON_PREDICT_H

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

#ifdef __cplusplus
}
#endif

#endif
