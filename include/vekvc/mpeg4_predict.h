/** @file mpeg4_predict.h
 *  MPEG-4 Part 2, H.263 and H.261: quarter-sample prediction, overlapped motion compensation and global motion.
 *  Half-sample prediction is that of common_predict.h.
 *
 *  Steps are signed counts of bytes. Where none is checked they are used as they are.
 */
#ifndef VEKVC_MPEG4_PREDICT_H
#define VEKVC_MPEG4_PREDICT_H

#include "vekvc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @name Copy from a quarter-sample position
 *  @{ */

/** Predicts a block of W x H samples at a quarter-sample position (ISO/IEC 14496-2 7.6.2.2): every row is filtered by
 *  the horizontal fraction, then every column of that result by the vertical one, with samples of 8 bits between.
 *
 *  Along a filtered direction the block reads samples 0 to N, N being its own extent; those that the filter of eight
 *  taps wants beyond are mirrored: x[-1-k] = x[k], x[N+1+k] = x[N-k]. The half sample behind x[i] is h = (20 (x[i] +
 *  x[i+1]) - 6 (x[i-1] + x[i+2]) + 3 (x[i-2] + x[i+3]) - (x[i-3] + x[i+4]) + 16 - rounding) >> 5, limited to 0..255; a
 *  quarter is (h + the nearest sample + 1 - rounding) >> 1. So W columns are read, W + 1 if the horizontal fraction is
 *  not 0, and H rows, H + 1 if the vertical one is not 0. A field's part of a macroblock is a 16x8 block whose step
 *  spans two rows of the frame.
 *  @param[in] pSrc   the sample at the block's whole-sample position
 *  @param srcStep    bytes between its rows
 *  @param[out] pDst  the block; must not overlap what is read
 *  @param dstStep    bytes between its rows
 *  @param acc        the position: bits 1 and 0 are the horizontal fraction, bits 3 and 2 the vertical one, in
 *                    quarters; other bits are ignored
 *  @param rounding   the rounding control, in bit 0; other bits are ignored
 *  @return vekStsOk; vekStsErrNullPtr
 */
VEKVC_API VekStatus vekiCopy16x16QP_MPEG4_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep,
                                                 Vek32s acc, Vek32s rounding);
VEKVC_API VekStatus vekiCopy16x8QP_MPEG4_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep,
                                                Vek32s acc, Vek32s rounding);
VEKVC_API VekStatus vekiCopy8x8QP_MPEG4_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep,
                                               Vek32s acc, Vek32s rounding);
/** @} */

/** @name Average with a quarter-sample position
 *  @{ */

/** Averages a block with the one that vekiCopy16x16QP_MPEG4_8u_C1R() and its siblings predict: (a + p + 1) >> 1,
 *  whatever the rounding control.
 *  @param[in] pSrc         the sample at the block's whole-sample position
 *  @param srcStep          bytes between its rows
 *  @param[in,out] pSrcDst  the block; must not overlap what is read of @p pSrc
 *  @param srcDstStep       bytes between its rows
 *  @param acc              the position, as for the copies
 *  @param rounding         the rounding control of the prediction, in bit 0
 *  @return vekStsOk; vekStsErrNullPtr
 */
VEKVC_API VekStatus vekiInterpolateAverage16x16QP_MPEG4_8u_C1IR(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pSrcDst,
                                                                Vek32s srcDstStep, Vek32s acc, Vek32s rounding);
VEKVC_API VekStatus vekiInterpolateAverage16x8QP_MPEG4_8u_C1IR(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pSrcDst,
                                                               Vek32s srcDstStep, Vek32s acc, Vek32s rounding);
VEKVC_API VekStatus vekiInterpolateAverage8x8QP_MPEG4_8u_C1IR(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pSrcDst,
                                                              Vek32s srcDstStep, Vek32s acc, Vek32s rounding);
/** @} */

/** @name Overlapped motion compensation
 *  @{ */

/** Predicts an 8x8 block from five vectors (H.263 Annex F, ISO/IEC 14496-2 7.6.6): (q H0 + r H1 + s H2 + 4) >> 3 with
 *  the weights of these clauses, q being the prediction by the block's own vector, r the one by the vector above in
 *  rows 0 to 3 and below in rows 4 to 7, s the one by the vector to the left in columns 0 to 3 and to the right in
 *  columns 4 to 7. Of each reference these rows and columns are read, and one more where the position needs it.
 *  @param[in] ppSrc     five pointers, for the vectors of the block itself, above, below, left and right: the
 *                       whole-sample position to which the vector moves the block's first sample
 *  @param srcStep       bytes between the rows of all five
 *  @param[in] pMcType   their positions, in the same order: bits 3 and 2 are 0 full sample, 1 vertical half, 2
 *                       horizontal half, 3 diagonal half; other bits are ignored
 *  @param[out] pDst     the block; must not overlap what is read
 *  @param dstStep       bytes between its rows
 *  @param roundControl  the rounding control of the half samples, in bit 0; other bits are ignored
 *  @return vekStsOk; vekStsErrNullPtr for an argument, then for one of the five pointers
 */
VEKVC_API VekStatus vekiOBMC8x8HP_H263_8u_C1R(const Vek8u* const* ppSrc, Vek32s srcStep, const Vek32s* pMcType,
                                              Vek8u* pDst, Vek32s dstStep, Vek32s roundControl);
/** @} */

/** @name Global motion
 *
 *  vekiWarpInit_MPEG4() derives the warp of an S(GMC)-VOP from its differentials (ISO/IEC 14496-2 7.8) and keeps it in
 *  a buffer of the caller's; the other functions only read the buffer, from any thread. They return
 *  vekStsErrContextMatch where it was not initialised as a warp. The structure stands at the buffer's first address
 *  that is a multiple of 16 and holds no pointers: after a move to another alignment it is initialised again. No VOP
 *  needs more than 64 bits for its coordinates; differentials of no VOP wrap there.
 *  @{ */

/** The size of the buffer.
 *  @param[out] pSpecSize  384, in bytes, with what alignment needs
 *  @return vekStsOk; vekStsErrNullPtr
 */
VEKVC_API VekStatus vekiWarpGetSize_MPEG4(Vek32u* pSpecSize);

/** Prepares the warp of a VOP (7.8.4, 7.8.5).
 *  @param[out] pSpec         the buffer, of the size that vekiWarpGetSize_MPEG4() tells, at any address
 *  @param[in] pDU            the horizontal differentials as decoded, one for each point, in half samples; may be null
 *                            if there is no point
 *  @param[in] pDV            the vertical ones, likewise
 *  @param numWarpingPoints   0 to 3: 0 is no motion, 1 a translation, 2 a similarity, 3 an affine map
 *  @param warpingAccuracy    0 to 3: positions in 1/2, 1/4, 1/8 or 1/16 samples
 *  @param vopSize            the VOP's size, both fields 1 to 8192
 *  @param refSize            the reference's size, both fields 1 to 8192: all decoded samples, with those of the last
 *                            macroblocks that lie outside the VOP. That of chroma is (refSize + 1) / 2.
 *  @param roundControl       vop_rounding_type, in bit 0; other bits are ignored
 *  @param quarterSampleFlag  0: average vectors are in half samples, else in quarters
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrOutOfRange for @p numWarpingPoints, @p warpingAccuracy; vekStsErrSize
 */
VEKVC_API VekStatus vekiWarpInit_MPEG4(Vek8u* pSpec, const Vek32s* pDU, const Vek32s* pDV, Vek32s numWarpingPoints,
                                       Vek32s warpingAccuracy, VekiSize vopSize, VekiSize refSize, Vek32s roundControl,
                                       Vek32s quarterSampleFlag);

/** Predicts a block of luma (7.8.6): each sample lies between four of the reference, whose coordinates are limited to
 *  the reference. Only samples of the reference are read.
 *  @param[in] pSrc   sample (0, 0) of the reference
 *  @param srcStep    bytes between its rows
 *  @param[out] pDst  the block; must not overlap the reference
 *  @param dstStep    bytes between its rows
 *  @param dstX       column of the block's first sample in the VOP; any number
 *  @param dstY       its row
 *  @param roiSize    the block's size
 *  @param[in] pSpec  the warp
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrContextMatch; vekStsErrStep for a step, of source or result, below the
 *      block's width; vekStsErrSize
 */
VEKVC_API VekStatus vekiWarpLuma_MPEG4_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep,
                                              Vek32s dstX, Vek32s dstY, VekiSize roiSize, const Vek8u* pSpec);

/** Predicts a block of both chroma components in the same way.
 *  @param[in] pSrcCb   sample (0, 0) of the reference's Cb
 *  @param srcCbStep    bytes between its rows
 *  @param[in] pSrcCr   sample (0, 0) of the reference's Cr
 *  @param srcCrStep    bytes between its rows
 *  @param[out] pDstCb  the block of Cb
 *  @param dstCbStep    bytes between its rows
 *  @param[out] pDstCr  the block of Cr
 *  @param dstCrStep    bytes between its rows
 *  @param dstX         column of the blocks' first sample, in chroma samples; any number
 *  @param dstY         its row
 *  @param roiSize      the size of each block, in chroma samples
 *  @param[in] pSpec    the warp
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrContextMatch; vekStsErrStep for a step, of source or result, below the
 *      blocks' width; vekStsErrSize
 */
VEKVC_API VekStatus vekiWarpChroma_MPEG4_8u_P2R(const Vek8u* pSrcCb, Vek32s srcCbStep, const Vek8u* pSrcCr,
                                                Vek32s srcCrStep, Vek8u* pDstCb, Vek32s dstCbStep, Vek8u* pDstCr,
                                                Vek32s dstCrStep, Vek32s dstX, Vek32s dstY, VekiSize roiSize,
                                                const Vek8u* pSpec);

/** The vector that stands for a macroblock with global motion where others are predicted from it (7.8.7): the mean
 *  displacement of its 256 luma samples, rounded to the nearest half or quarter sample, halves away from 0, and limited
 *  to -2^(fcode+4) .. 2^(fcode+4) - 1.
 *  @param mbX        column of the macroblock's first luma sample
 *  @param mbY        its row
 *  @param fcode      vop_fcode_forward, 1 to 7
 *  @param[out] pMV   two values, horizontal and vertical
 *  @param[in] pSpec  the warp
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrContextMatch; vekStsErrOutOfRange for @p fcode
 */
VEKVC_API VekStatus vekiWarpAverageMV_MPEG4_16s(Vek32s mbX, Vek32s mbY, Vek32s fcode, Vek16s* pMV, const Vek8u* pSpec);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
