/** @file h264_interpolate.h
 *  H.264/AVC fractional sample interpolation (H.264 8.4.2.2): one rectangular block of a prediction per call.
 *
 *  Luma takes quarter-sample fractions and the six-tap filter (8.4.2.2.1), chroma eighth-sample fractions and the
 *  bilinear weights (8.4.2.2.2). A decoder with 4:2:2 chroma passes the vertical chroma fraction as 2 * (mvCLX[1] &
 *  3): the vertical unit of 4:2:2 is a quarter of a chroma sample (8.4.1.4).
 *
 *  Common to the forms of this header:
 *  - Steps count bytes, for 16-bit samples too; they may be negative and are not checked.
 *  - Source and destination may not overlap, except that the averages may write over either source in place.
 *  - Beside the block itself a luma form reads two columns before and three behind when `dx` is not 0, two rows above
 *    and three below when `dy` is not 0, and nothing of the kind otherwise. A chroma form reads one more column when
 *    `dx` is not 0 and one more row when `dy` is not 0. Of positions with both fractions (luma) all rows may be read
 *    over the widened width: the block read is (width + 5) x (height + 5) samples.
 *  - Luma sizes: the width is a sum of 4, 8 and 16 (no other bit set), the height a multiple of 4. Chroma sizes: the
 *    width is a sum of 2, 4 and 8, the height even. Sizes that a partition does not have (a width of 12 or 24, a
 *    height of 64) are done in full; a width or height below 1 is vekStsErrSize.
 *  - 16-bit samples: `bitDepth` is 8 to 14, and every sample read must lie in 0 .. 2^bitDepth - 1. Luma clips its
 *    results to that range; chroma cannot leave it and takes the argument so that both have the same list.
 *  - Checks: null pointers (vekStsErrNullPtr); a fraction outside 0..3 (luma) or 0..7 (chroma) (vekStsErrBadArg); the
 *    size (vekStsErrSize); the bit depth (vekStsErrOutOfRange).
 */
#ifndef VEKVC_H264_INTERPOLATE_H
#define VEKVC_H264_INTERPOLATE_H

#include "vekvc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** A block and its motion, for the block forms: 8-bit samples. All planes keep the reference's own layout; the
 *  reference must extend as far as the vector reaches (see vekiExpandPlane_H264_8u_C1R), nothing is clamped. */
typedef struct {
    const Vek8u* pSrcPlane;  /**< sample (0, 0) of the reference plane: luma, Cb, or interleaved Cb and Cr */
    Vek32s srcPlaneStep;     /**< its row step in bytes; of `pSrcPlane2` too */
    Vek8u* pDstBlock;        /**< the block to write: luma or Cb */
    Vek32s dstBlockStep;     /**< its row step in bytes; of `pDstBlock2` too */
    Vek32s blockWidth;       /**< samples (chroma forms: chroma samples of one component) */
    Vek32s blockHeight;      /**< rows */
    Vek32s blockX;           /**< the block's column in the plane, in samples of the plane (interleaved: in pairs) */
    Vek32s blockY;           /**< the block's row in the plane */
    Vek32s mvX;              /**< motion: quarter luma samples; chroma forms: eighth chroma samples */
    Vek32s mvY;              /**< as `mvX`, downwards. Chroma of a 4:2:2 picture: twice the vector's component */
    const Vek8u* pSrcPlane2; /**< sample (0, 0) of the reference's Cr plane; read by the P2R form only */
    Vek8u* pDstBlock2;       /**< the Cr block to write; used by the chroma forms only */
} VekInterpolationBlock;

/** A block and its motion, for the block forms: 16-bit samples. Fields as in VekInterpolationBlock. */
typedef struct {
    const Vek16u* pSrcPlane;  /**< sample (0, 0) of the reference plane: luma or Cb */
    Vek32s srcPlaneStep;      /**< its row step in bytes; of `pSrcPlane2` too */
    Vek16u* pDstBlock;        /**< the block to write: luma or Cb */
    Vek32s dstBlockStep;      /**< its row step in bytes; of `pDstBlock2` too */
    Vek32s blockWidth;        /**< samples */
    Vek32s blockHeight;       /**< rows */
    Vek32s blockX;            /**< the block's column in the plane, in samples */
    Vek32s blockY;            /**< the block's row in the plane */
    Vek32s mvX;               /**< motion: quarter luma samples; chroma form: eighth chroma samples */
    Vek32s mvY;               /**< as `mvX`, downwards. Chroma of a 4:2:2 picture: twice the vector's component */
    Vek32s bitDepth;          /**< 8 to 14 */
    const Vek16u* pSrcPlane2; /**< sample (0, 0) of the reference's Cr plane; read by the chroma form only */
    Vek16u* pDstBlock2;       /**< the Cr block to write; used by the chroma form only */
} VekInterpolationBlock16u;

/** Luma block at a quarter-sample position (H.264 8.4.2.2.1), 8-bit.
 *  @param pSrc    the integer sample of the reference that the block's first sample starts from
 *  @param srcStep row step of the reference, in bytes
 *  @param pDst    the block to write
 *  @param dstStep its row step, in bytes
 *  @param dx,dy   fractions xFracL and yFracL, 0 to 3; (0, 0) copies the block
 *  @param roiSize the block's size: width a sum of 4, 8 and 16, height a multiple of 4
 *  @return vekStsOk, vekStsErrNullPtr, vekStsErrBadArg (dx, dy), vekStsErrSize
 */
VEKVC_API VekStatus vekiInterpolateLuma_H264_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep,
                                                    Vek32s dx, Vek32s dy, VekiSize roiSize);

/** Luma block at a quarter-sample position, 16-bit samples. As vekiInterpolateLuma_H264_8u_C1R, and:
 *  @param pSrc     the integer sample of the reference that the block's first sample starts from
 *  @param srcStep  row step of the reference, in bytes
 *  @param pDst     the block to write
 *  @param dstStep  its row step, in bytes
 *  @param dx,dy    fractions xFracL and yFracL, 0 to 3; (0, 0) copies the block
 *  @param roiSize  the block's size: width a sum of 4, 8 and 16, height a multiple of 4
 *  @param bitDepth 8 to 14; results are clipped to 0 .. 2^bitDepth - 1
 *  @return also vekStsErrOutOfRange (bitDepth)
 */
VEKVC_API VekStatus vekiInterpolateLuma_H264_16u_C1R(const Vek16u* pSrc, Vek32s srcStep, Vek16u* pDst, Vek32s dstStep,
                                                     Vek32s dx, Vek32s dy, VekiSize roiSize, Vek32s bitDepth);

/** Luma block whose reference reaches above the picture: rows above the picture's first row repeat that row and are
 *  never read. As vekiInterpolateLuma_H264_8u_C1R, and:
 *  @param pSrc      the block's position as if the picture went on upwards
 *  @param srcStep   row step of the reference, in bytes
 *  @param pDst      the block to write
 *  @param dstStep   its row step, in bytes
 *  @param dx,dy     fractions xFracL and yFracL, 0 to 3; (0, 0) copies the block
 *  @param outPixels the number of rows by which the block's first row lies above the picture's first row; 0 or
 *                   negative when the block starts inside. The picture's first row is at pSrc + outPixels * srcStep.
 *  @param roiSize   the block's size: width a sum of 4, 8 and 16, height a multiple of 4
 *  @return as vekiInterpolateLuma_H264_8u_C1R
 */
VEKVC_API VekStatus vekiInterpolateLumaTop_H264_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep,
                                                       Vek32s dx, Vek32s dy, Vek32s outPixels, VekiSize roiSize);

/** Luma block whose reference reaches below the picture: rows below the picture's last row repeat that row and are
 *  never read. The mirror of vekiInterpolateLumaTop_H264_8u_C1R:
 *  @param pSrc      the block's position as if the picture went on downwards
 *  @param srcStep   row step of the reference, in bytes
 *  @param pDst      the block to write
 *  @param dstStep   its row step, in bytes
 *  @param dx,dy     fractions xFracL and yFracL, 0 to 3; (0, 0) copies the block
 *  @param outPixels the number of rows by which the block's last row lies below the picture's last row; 0 or negative
 *                   when the block ends inside. The picture's last row is at pSrc + (roiSize.height - 1 - outPixels) *
 *                   srcStep.
 *  @param roiSize   the block's size: width a sum of 4, 8 and 16, height a multiple of 4
 *  @return as vekiInterpolateLumaTop_H264_8u_C1R
 */
VEKVC_API VekStatus vekiInterpolateLumaBottom_H264_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst,
                                                          Vek32s dstStep, Vek32s dx, Vek32s dy, Vek32s outPixels,
                                                          VekiSize roiSize);

/** vekiInterpolateLumaTop_H264_8u_C1R for 16-bit samples; `bitDepth` as in vekiInterpolateLuma_H264_16u_C1R.
 *  @param pSrc      the block's position as if the picture went on upwards
 *  @param srcStep   row step of the reference, in bytes
 *  @param pDst      the block to write
 *  @param dstStep   its row step, in bytes
 *  @param dx,dy     fractions xFracL and yFracL, 0 to 3; (0, 0) copies the block
 *  @param outPixels the number of rows by which the block's first row lies above the picture's first row; 0 or
 *                   negative when the block starts inside. The picture's first row is at pSrc + outPixels * srcStep.
 *  @param roiSize   the block's size: width a sum of 4, 8 and 16, height a multiple of 4
 *  @param bitDepth  8 to 14; results are clipped to 0 .. 2^bitDepth - 1
 *  @return as vekiInterpolateLuma_H264_16u_C1R
 */
VEKVC_API VekStatus vekiInterpolateLumaTop_H264_16u_C1R(const Vek16u* pSrc, Vek32s srcStep, Vek16u* pDst,
                                                        Vek32s dstStep, Vek32s dx, Vek32s dy, Vek32s outPixels,
                                                        VekiSize roiSize, Vek32s bitDepth);

/** vekiInterpolateLumaBottom_H264_8u_C1R for 16-bit samples; `bitDepth` as in vekiInterpolateLuma_H264_16u_C1R.
 *  @param pSrc      the block's position as if the picture went on downwards
 *  @param srcStep   row step of the reference, in bytes
 *  @param pDst      the block to write
 *  @param dstStep   its row step, in bytes
 *  @param dx,dy     fractions xFracL and yFracL, 0 to 3; (0, 0) copies the block
 *  @param outPixels the number of rows by which the block's last row lies below the picture's last row; 0 or negative
 *                   when the block ends inside. The picture's last row is at pSrc + (roiSize.height - 1 - outPixels) *
 *                   srcStep.
 *  @param roiSize   the block's size: width a sum of 4, 8 and 16, height a multiple of 4
 *  @param bitDepth  8 to 14; results are clipped to 0 .. 2^bitDepth - 1
 *  @return as vekiInterpolateLuma_H264_16u_C1R
 */
VEKVC_API VekStatus vekiInterpolateLumaBottom_H264_16u_C1R(const Vek16u* pSrc, Vek32s srcStep, Vek16u* pDst,
                                                           Vek32s dstStep, Vek32s dx, Vek32s dy, Vek32s outPixels,
                                                           VekiSize roiSize, Vek32s bitDepth);

/** Chroma block at an eighth-sample position (H.264 8.4.2.2.2), 8-bit, one component.
 *  @param pSrc    the integer sample of the reference that the block's first sample starts from
 *  @param srcStep row step of the reference, in bytes
 *  @param pDst    the block to write
 *  @param dstStep its row step, in bytes
 *  @param dx,dy   fractions xFracC and yFracC, 0 to 7; (0, 0) copies the block
 *  @param roiSize the block's size: width a sum of 2, 4 and 8, height even
 *  @return vekStsOk, vekStsErrNullPtr, vekStsErrBadArg (dx, dy), vekStsErrSize
 */
VEKVC_API VekStatus vekiInterpolateChroma_H264_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep,
                                                      Vek32s dx, Vek32s dy, VekiSize roiSize);

/** Chroma block at an eighth-sample position, 16-bit samples. As vekiInterpolateChroma_H264_8u_C1R, and:
 *  @param pSrc     the integer sample of the reference that the block's first sample starts from
 *  @param srcStep  row step of the reference, in bytes
 *  @param pDst     the block to write
 *  @param dstStep  its row step, in bytes
 *  @param dx,dy    fractions xFracC and yFracC, 0 to 7; (0, 0) copies the block
 *  @param roiSize  the block's size: width a sum of 2, 4 and 8, height even
 *  @param bitDepth 8 to 14; checked, the result does not depend on it
 *  @return also vekStsErrOutOfRange (bitDepth)
 */
VEKVC_API VekStatus vekiInterpolateChroma_H264_16u_C1R(const Vek16u* pSrc, Vek32s srcStep, Vek16u* pDst, Vek32s dstStep,
                                                       Vek32s dx, Vek32s dy, VekiSize roiSize, Vek32s bitDepth);

/** Chroma of both components from an interleaved plane (Cb, Cr, Cb, Cr, ...) into two planes.
 *  @param pSrc    the Cb sample of the pair that the block's first samples start from
 *  @param srcStep row step of the interleaved reference, in bytes
 *  @param pDstCb  the Cb block to write
 *  @param pDstCr  the Cr block to write
 *  @param dstStep row step of both blocks, in bytes
 *  @param dx,dy   fractions, 0 to 7
 *  @param roiSize the size of one component's block, in its samples: width a sum of 2, 4 and 8, height even
 *  @return vekStsOk, vekStsErrNullPtr, vekStsErrBadArg (dx, dy), vekStsErrSize
 */
VEKVC_API VekStatus vekiInterpolateChroma_H264_8u_C2P2R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDstCb, Vek8u* pDstCr,
                                                        Vek32s dstStep, Vek32s dx, Vek32s dy, VekiSize roiSize);

/** Chroma block whose reference reaches above the picture; `outPixels` as in vekiInterpolateLumaTop_H264_8u_C1R.
 *  @param pSrc      the block's position as if the picture went on upwards
 *  @param srcStep   row step of the reference, in bytes
 *  @param pDst      the block to write
 *  @param dstStep   its row step, in bytes
 *  @param dx,dy     fractions xFracC and yFracC, 0 to 7; (0, 0) copies the block
 *  @param outPixels the number of rows by which the block's first row lies above the picture's first row; 0 or
 *                   negative when the block starts inside. The picture's first row is at pSrc + outPixels * srcStep.
 *  @param roiSize   the block's size: width a sum of 2, 4 and 8, height even
 *  @return as vekiInterpolateChroma_H264_8u_C1R
 */
VEKVC_API VekStatus vekiInterpolateChromaTop_H264_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep,
                                                         Vek32s dx, Vek32s dy, Vek32s outPixels, VekiSize roiSize);

/** Chroma block whose reference reaches below the picture; `outPixels` as in vekiInterpolateLumaBottom_H264_8u_C1R.
 *  @param pSrc      the block's position as if the picture went on downwards
 *  @param srcStep   row step of the reference, in bytes
 *  @param pDst      the block to write
 *  @param dstStep   its row step, in bytes
 *  @param dx,dy     fractions xFracC and yFracC, 0 to 7; (0, 0) copies the block
 *  @param outPixels the number of rows by which the block's last row lies below the picture's last row; 0 or negative
 *                   when the block ends inside. The picture's last row is at pSrc + (roiSize.height - 1 - outPixels) *
 *                   srcStep.
 *  @param roiSize   the block's size: width a sum of 2, 4 and 8, height even
 *  @return as vekiInterpolateChroma_H264_8u_C1R
 */
VEKVC_API VekStatus vekiInterpolateChromaBottom_H264_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst,
                                                            Vek32s dstStep, Vek32s dx, Vek32s dy, Vek32s outPixels,
                                                            VekiSize roiSize);

/** vekiInterpolateChromaTop_H264_8u_C1R for 16-bit samples; `bitDepth` as in vekiInterpolateChroma_H264_16u_C1R.
 *  @param pSrc      the block's position as if the picture went on upwards
 *  @param srcStep   row step of the reference, in bytes
 *  @param pDst      the block to write
 *  @param dstStep   its row step, in bytes
 *  @param dx,dy     fractions xFracC and yFracC, 0 to 7; (0, 0) copies the block
 *  @param outPixels the number of rows by which the block's first row lies above the picture's first row; 0 or
 *                   negative when the block starts inside. The picture's first row is at pSrc + outPixels * srcStep.
 *  @param roiSize   the block's size: width a sum of 2, 4 and 8, height even
 *  @param bitDepth  8 to 14; results are clipped to 0 .. 2^bitDepth - 1
 *  @return as vekiInterpolateChroma_H264_16u_C1R
 */
VEKVC_API VekStatus vekiInterpolateChromaTop_H264_16u_C1R(const Vek16u* pSrc, Vek32s srcStep, Vek16u* pDst,
                                                          Vek32s dstStep, Vek32s dx, Vek32s dy, Vek32s outPixels,
                                                          VekiSize roiSize, Vek32s bitDepth);

/** vekiInterpolateChromaBottom_H264_8u_C1R for 16-bit samples; `bitDepth` as in vekiInterpolateChroma_H264_16u_C1R.
 *  @param pSrc      the block's position as if the picture went on downwards
 *  @param srcStep   row step of the reference, in bytes
 *  @param pDst      the block to write
 *  @param dstStep   its row step, in bytes
 *  @param dx,dy     fractions xFracC and yFracC, 0 to 7; (0, 0) copies the block
 *  @param outPixels the number of rows by which the block's last row lies below the picture's last row; 0 or negative
 *                   when the block ends inside. The picture's last row is at pSrc + (roiSize.height - 1 - outPixels) *
 *                   srcStep.
 *  @param roiSize   the block's size: width a sum of 2, 4 and 8, height even
 *  @param bitDepth  8 to 14; results are clipped to 0 .. 2^bitDepth - 1
 *  @return as vekiInterpolateChroma_H264_16u_C1R
 */
VEKVC_API VekStatus vekiInterpolateChromaBottom_H264_16u_C1R(const Vek16u* pSrc, Vek32s srcStep, Vek16u* pDst,
                                                             Vek32s dstStep, Vek32s dx, Vek32s dy, Vek32s outPixels,
                                                             VekiSize roiSize, Vek32s bitDepth);

/** Average of two predictions, (a + b + 1) >> 1 (H.264 8.4.2.3.1), all three blocks with one step.
 *  @param pSrc1,pSrc2  the predictions
 *  @param pDst         the block to write; may be one of the sources
 *  @param width,height 2 to 16 each, odd values too
 *  @param step         row step of all three, in bytes
 *  @return vekStsOk, vekStsErrNullPtr, vekStsErrSize
 */
VEKVC_API VekStatus vekiInterpolateBlock_H264_8u_P2P1R(const Vek8u* pSrc1, const Vek8u* pSrc2, Vek8u* pDst,
                                                       Vek32s width, Vek32s height, Vek32s step);

/** Average of two predictions with a step for each block. As vekiInterpolateBlock_H264_8u_P2P1R, and:
 *  @param pSrc1,pSrc2            the predictions
 *  @param pDst                   the block to write; may be one of the sources
 *  @param width,height           2 to 16 each, odd values too
 *  @param src1Step,src2Step,dstStep row steps of `pSrc1`, `pSrc2` and `pDst`, in bytes
 *  @return as vekiInterpolateBlock_H264_8u_P2P1R
 */
VEKVC_API VekStatus vekiInterpolateBlock_H264_8u_P3P1R(const Vek8u* pSrc1, const Vek8u* pSrc2, Vek8u* pDst,
                                                       Vek32s width, Vek32s height, Vek32s src1Step, Vek32s src2Step,
                                                       Vek32s dstStep);

/** Luma block of a record: reads the reference at (blockX + (mvX >> 2), blockY + (mvY >> 2)) with the fractions
 *  (mvX & 3, mvY & 3) and writes `pDstBlock`. `pSrcPlane2` and `pDstBlock2` are not looked at.
 *  @param pBlock the record
 *  @return vekStsOk, vekStsErrNullPtr (the record, pSrcPlane, pDstBlock), vekStsErrSize (as the luma forms)
 */
VEKVC_API VekStatus vekiInterpolateLumaBlock_H264_8u_P1R(const VekInterpolationBlock* pBlock);

/** vekiInterpolateLumaBlock_H264_8u_P1R for 16-bit samples.
 *  @param pBlock the record
 *  @return also vekStsErrOutOfRange (bitDepth)
 */
VEKVC_API VekStatus vekiInterpolateLumaBlock_H264_16u_P1R(const VekInterpolationBlock16u* pBlock);

/** Both chroma blocks of a record, from two planes: reads the references at (blockX + (mvX >> 3), blockY + (mvY >> 3))
 *  with the fractions (mvX & 7, mvY & 7); Cb goes from `pSrcPlane` to `pDstBlock`, Cr from `pSrcPlane2` to
 *  `pDstBlock2`. Of a 4:2:0 picture mvX and mvY are the luma vector as it is (with the vertical offset of Table 8-9
 *  between fields of different parity), of a 4:2:2 picture mvY is twice the luma vector's vertical component.
 *  @param pBlock the record
 *  @return vekStsOk, vekStsErrNullPtr (the record or one of its four pointers), vekStsErrSize (as the chroma forms)
 */
VEKVC_API VekStatus vekiInterpolateChromaBlock_H264_8u_P2R(const VekInterpolationBlock* pBlock);

/** vekiInterpolateChromaBlock_H264_8u_P2R with an interleaved reference (Cb, Cr, Cb, Cr, ...) at `pSrcPlane`, written
 *  to the two blocks; `pSrcPlane2` is not looked at.
 *  @param pBlock the record
 *  @return as vekiInterpolateChromaBlock_H264_8u_P2R, of the other three pointers
 */
VEKVC_API VekStatus vekiInterpolateChromaBlock_H264_8u_C2P2R(const VekInterpolationBlock* pBlock);

/** vekiInterpolateChromaBlock_H264_8u_P2R for 16-bit samples.
 *  @param pBlock the record
 *  @return also vekStsErrOutOfRange (bitDepth)
 */
VEKVC_API VekStatus vekiInterpolateChromaBlock_H264_16u_P2R(const VekInterpolationBlock16u* pBlock);

/** Extends a plane on all four sides by repeating its border samples, so that vectors may point outside (the clipping
 *  of sample positions in H.264 8.4.2.2). A field is extended by itself: its first row, twice the frame's step.
 *  @param pSrcDst      the picture's top-left sample; memory for the borders must be there around it
 *  @param srcDstStep   row step, in bytes; may be negative
 *  @param roiSize      the picture's size; at least 1 x 1
 *  @param borderWidth  samples to write left of and right of every row; at least 0
 *  @param borderHeight rows to write above and below, corners included; at least 0
 *  @return vekStsOk, vekStsErrNullPtr, vekStsErrSize (the size or a border)
 */
VEKVC_API VekStatus vekiExpandPlane_H264_8u_C1R(Vek8u* pSrcDst, Vek32s srcDstStep, VekiSize roiSize, Vek32s borderWidth,
                                                Vek32s borderHeight);

#ifdef __cplusplus
}
#endif

#endif
