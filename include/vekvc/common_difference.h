/** @file common_difference.h
 *  Difference blocks: what is left of a block when its prediction is taken away. The predictions are those of the
 *  vekiMC functions in common_predict.h, half-sample positions and rounding included: a vekiMC function with the same
 *  arguments that gets the difference as its residual gives back the source.
 */
#ifndef VEKVC_COMMON_DIFFERENCE_H
#define VEKVC_COMMON_DIFFERENCE_H

#include "vekvc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @name Difference
 *  @{ */

/** pDst = pSrc - p, p being the reference at a full- or half-sample position.
 *  @param pSrc, srcStep the source block
 *  @param pRef, refStep the reference block; one more column and/or row is read where the case needs it
 *  @param pDst, dstStep the difference; the step counts bytes
 *  @param mcType the case, in bits 3 and 2: 0 full sample, 4 vertical half, 8 horizontal half, 12 diagonal half; other
 *  bits are ignored
 *  @param roundControl the rounding, in bit 0; other bits are ignored
 *  @retval vekStsErrNullPtr a pointer is null
 */
VEKVC_API VekStatus vekiDiff16x16_8u16s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep,
                                            Vek16s* pDst, Vek32s dstStep, Vek32s mcType, Vek32s roundControl);
VEKVC_API VekStatus vekiDiff16x8_8u16s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep,
                                           Vek16s* pDst, Vek32s dstStep, Vek32s mcType, Vek32s roundControl);
VEKVC_API VekStatus vekiDiff8x8_8u16s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep,
                                          Vek16s* pDst, Vek32s dstStep, Vek32s mcType, Vek32s roundControl);
VEKVC_API VekStatus vekiDiff8x4_8u16s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep,
                                          Vek16s* pDst, Vek32s dstStep, Vek32s mcType, Vek32s roundControl);
/** @} */

/** @name Difference, full sample
 *  @{ */

/** pDst = pSrc - pRef, limited to 16 bits.
 *  @param pSrc, srcStep the source block
 *  @param pRef, refStep the reference block
 *  @param pDst, dstStep the difference; the step counts bytes
 *  @retval vekStsErrNullPtr a pointer is null
 */
VEKVC_API VekStatus vekiDiff4x4_8u16s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep,
                                          Vek16s* pDst, Vek32s dstStep);
VEKVC_API VekStatus vekiDiff4x4_16u16s_C1R(const Vek16u* pSrc, Vek32s srcStep, const Vek16u* pRef, Vek32s refStep,
                                           Vek16s* pDst, Vek32s dstStep);
VEKVC_API VekStatus vekiDiff8x8_16u16s_C1R(const Vek16u* pSrc, Vek32s srcStep, const Vek16u* pRef, Vek32s refStep,
                                           Vek16s* pDst, Vek32s dstStep);
/** @} */

/** @name Difference, two references
 *  @{ */

/** pDst = pSrc - ((f + b + 1) >> 1), f and b being the references at their full- or half-sample positions. The average
 *  rounds up under either rounding.
 *  @param pSrc, srcStep the source block
 *  @param pRefF, refStepF the forward reference block; one more column and/or row is read where the case needs it
 *  @param mcTypeF the forward case, in bits 3 and 2: 0 full sample, 4 vertical half, 8 horizontal half, 12 diagonal
 *  half
 *  @param pRefB, refStepB, mcTypeB the backward reference and its case, likewise
 *  @param pDst, dstStep the difference; the step counts bytes
 *  @param roundControl the rounding of both predictions, in bit 0
 *  @retval vekStsErrNullPtr a pointer is null
 */
VEKVC_API VekStatus vekiDiff16x16B_8u16s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRefF, Vek32s refStepF,
                                             Vek32s mcTypeF, const Vek8u* pRefB, Vek32s refStepB, Vek32s mcTypeB,
                                             Vek16s* pDst, Vek32s dstStep, Vek32s roundControl);
VEKVC_API VekStatus vekiDiff16x8B_8u16s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRefF, Vek32s refStepF,
                                            Vek32s mcTypeF, const Vek8u* pRefB, Vek32s refStepB, Vek32s mcTypeB,
                                            Vek16s* pDst, Vek32s dstStep, Vek32s roundControl);
VEKVC_API VekStatus vekiDiff8x8B_8u16s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRefF, Vek32s refStepF,
                                           Vek32s mcTypeF, const Vek8u* pRefB, Vek32s refStepB, Vek32s mcTypeB,
                                           Vek16s* pDst, Vek32s dstStep, Vek32s roundControl);
VEKVC_API VekStatus vekiDiff8x4B_8u16s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRefF, Vek32s refStepF,
                                           Vek32s mcTypeF, const Vek8u* pRefB, Vek32s refStepB, Vek32s mcTypeB,
                                           Vek16s* pDst, Vek32s dstStep, Vek32s roundControl);
/** @} */

/** @name Difference, interleaved chroma
 *  @{ */

/** As the difference of 8x8 samples, of each of two interleaved components: a row holds 8 pairs of Cb and Cr, 16 bytes.
 *  The horizontal neighbour is the next sample of the same component. 8x16 samples (4:2:2) are two calls.
 *  @param pSrc, srcStep the source block
 *  @param pRef, refStep the reference block; two more bytes a row and/or one more row are read where the case needs it
 *  @param pDstU, pDstV the differences of the samples in the even and odd bytes, 8 values a row each
 *  @param dstStep the step of both, in bytes
 *  @param mcType the case, in bits 3 and 2: 0 full sample, 4 vertical half, 8 horizontal half, 12 diagonal half; other
 *  bits are ignored
 *  @param roundControl the rounding, in bit 0; other bits are ignored
 *  @retval vekStsErrNullPtr a pointer is null
 */
VEKVC_API VekStatus vekiDiff8x8_8u16s_C2P2R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep,
                                            Vek16s* pDstU, Vek16s* pDstV, Vek32s dstStep, Vek32s mcType,
                                            Vek32s roundControl);
/** @} */

/** @name Difference, interleaved chroma, two references
 *  @{ */

/** As the difference from two references of 8x8 samples, of each of two interleaved components: a row holds 8 pairs of
 *  Cb and Cr, 16 bytes. The horizontal neighbour is the next sample of the same component.
 *  @param pSrc, srcStep the source block
 *  @param pRefF, refStepF the forward reference block; two more bytes a row and/or one more row are read where the case
 *  needs it
 *  @param mcTypeF the forward case, in bits 3 and 2: 0 full sample, 4 vertical half, 8 horizontal half, 12 diagonal
 *  half
 *  @param pRefB, refStepB, mcTypeB the backward reference and its case, likewise
 *  @param pDstU, pDstV the differences of the samples in the even and odd bytes, 8 values a row each
 *  @param dstStep the step of both, in bytes
 *  @param roundControl the rounding of both predictions, in bit 0
 *  @retval vekStsErrNullPtr a pointer is null
 */
VEKVC_API VekStatus vekiDiff8x8B_8u16s_C2P2R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRefF, Vek32s refStepF,
                                             Vek32s mcTypeF, const Vek8u* pRefB, Vek32s refStepB, Vek32s mcTypeB,
                                             Vek16s* pDstU, Vek16s* pDstV, Vek32s dstStep, Vek32s roundControl);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
