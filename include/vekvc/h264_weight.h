/** @file h264_weight.h
 *  H.264/AVC weighted sample prediction (H.264 8.4.2.3): one block of one component per call.
 *
 *  Common to the forms of this header:
 *  - Every result is clipped to 0..255 (8-bit) or 0 .. 2^bitDepth - 1 (16-bit). Shifts of negative values round down.
 *  - Samples, weights, offsets and logWD are used as they are given, exact for every value: nothing overflows on the
 *    way. So samples of 16-bit forms may exceed the bit depth.
 *    Offsets of 16-bit forms come scaled to the bit depth (luma_offset_l0 << (bitDepth - 8), 8.4.2.3).
 *  - Steps count bytes. The destination may be one of the sources in place; other overlaps may not be.
 *  - Exactly width x height samples of each block are read or written.
 */
#ifndef VEKVC_H264_WEIGHT_H
#define VEKVC_H264_WEIGHT_H

#include "vekvc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** The operands of the 16-bit forms. */
typedef struct {
    const Vek16u* pSrc1; /**< first (or only) prediction */
    const Vek16u* pSrc2; /**< second prediction; the unidirectional form does not read it, but it may not be null */
    Vek16u* pDst;        /**< the block to write; may be pSrc1 or pSrc2 */
    Vek32s src1Step;     /**< row step of pSrc1, in bytes */
    Vek32s src2Step;     /**< row step of pSrc2, in bytes */
    Vek32s dstStep;      /**< row step of pDst, in bytes */
    Vek32s blockWidth;   /**< samples, 2 to 16 */
    Vek32s blockHeight;  /**< rows, 2 to 16 */
    Vek32s bitDepth;     /**< 8 to 14; the plain average does not look at it */
    Vek32u logWD;        /**< the explicit forms: luma_log2_weight_denom or chroma_log2_weight_denom, 0 to 7 */
    Vek32s weight1;      /**< weight of the first prediction */
    Vek32s offset1;      /**< the explicit forms: offset of the first prediction, scaled to the bit depth */
    Vek32s weight2;      /**< the bidirectional forms: weight of the second prediction */
    Vek32s offset2;      /**< the explicit bidirectional form: offset of the second prediction, scaled */
} VekWeightParams16u;

/** Explicit weighting of one prediction, in place (H.264 8.4.2.3.2):
 *  ((p * weight + 2^(logWD - 1)) >> logWD) + offset, or p * weight + offset when logWD is 0.
 *  @param pSrcDst    the prediction and the result
 *  @param srcDstStep row step, in bytes; at least the width
 *  @param logWD      base 2 logarithm of the weight denominator, 0 to 7
 *  @param weight     -128 to 128
 *  @param offset     -128 to 127
 *  @param roiSize    width and height: 2, 4, 8 or 16 each
 *  @return vekStsOk, vekStsErrNullPtr, vekStsErrStep, vekStsErrSize
 */
VEKVC_API VekStatus vekiUniDirWeightBlock_H264_8u_C1R(Vek8u* pSrcDst, Vek32s srcDstStep, Vek32u logWD, Vek32s weight,
                                                      Vek32s offset, VekiSize roiSize);

/** The same operation as vekiUniDirWeightBlock_H264_8u_C1R under a second name.
 *  @param pSrcDst    the prediction and the result
 *  @param srcDstStep row step, in bytes; at least the width
 *  @param logWD      base 2 logarithm of the weight denominator, 0 to 7
 *  @param weight     -128 to 128
 *  @param offset     -128 to 127
 *  @param roiSize    width and height: 2, 4, 8 or 16 each
 *  @return as vekiUniDirWeightBlock_H264_8u_C1R
 */
VEKVC_API VekStatus vekiUniDirWeightBlock_H264_8u_C1IR(Vek8u* pSrcDst, Vek32s srcDstStep, Vek32u logWD, Vek32s weight,
                                                       Vek32s offset, VekiSize roiSize);

/** Explicit weighting of two predictions (H.264 8.4.2.3.2):
 *  ((p1 * weight1 + p2 * weight2 + 2^logWD) >> (logWD + 1)) + ((offset1 + offset2 + 1) >> 1).
 *  @param pSrc1,pSrc2 the predictions
 *  @param pDst        the block to write
 *  @param srcStep     row step of both predictions, in bytes; at least the width
 *  @param dstStep     row step of the result, in bytes; at least the width
 *  @param logWD       0 to 7
 *  @param weight1,offset1,weight2,offset2 weight and offset of either prediction
 *  @param roiSize     width and height: 2, 4, 8 or 16 each
 *  @return vekStsOk, vekStsErrNullPtr, vekStsErrStep, vekStsErrSize
 */
VEKVC_API VekStatus vekiBiDirWeightBlock_H264_8u_P2P1R(const Vek8u* pSrc1, const Vek8u* pSrc2, Vek8u* pDst,
                                                       Vek32s srcStep, Vek32s dstStep, Vek32u logWD, Vek32s weight1,
                                                       Vek32s offset1, Vek32s weight2, Vek32s offset2,
                                                       VekiSize roiSize);

/** Explicit weighting of two predictions with a step for each; as vekiBiDirWeightBlock_H264_8u_P2P1R.
 *  @param pSrc1,pSrc2            the predictions
 *  @param pDst                   the block to write
 *  @param src1Step,src2Step,dstStep row steps, in bytes; each at least the width
 *  @param logWD                  0 to 7
 *  @param weight1,offset1,weight2,offset2 weight and offset of either prediction
 *  @param roiSize                width and height: 2, 4, 8 or 16 each
 *  @return as vekiBiDirWeightBlock_H264_8u_P2P1R
 */
VEKVC_API VekStatus vekiBiDirWeightBlock_H264_8u_P3P1R(const Vek8u* pSrc1, const Vek8u* pSrc2, Vek8u* pDst,
                                                       Vek32s src1Step, Vek32s src2Step, Vek32s dstStep, Vek32u logWD,
                                                       Vek32s weight1, Vek32s offset1, Vek32s weight2, Vek32s offset2,
                                                       VekiSize roiSize);

/** Implicit weighting of two predictions (H.264 8.4.2.3.2 with logWD 5 and no offsets):
 *  (p1 * weight1 + p2 * weight2 + 32) >> 6.
 *  @param pSrc1,pSrc2     the predictions
 *  @param pDst            the block to write
 *  @param srcStep         row step of both predictions, in bytes; at least the width
 *  @param dstStep         row step of the result, in bytes; at least the width
 *  @param weight1,weight2 the standard's sum to 64; others are as good
 *  @param roiSize         width and height: 2, 4, 8 or 16 each
 *  @return vekStsOk, vekStsErrNullPtr, vekStsErrStep, vekStsErrSize
 */
VEKVC_API VekStatus vekiBiDirWeightBlockImplicit_H264_8u_P2P1R(const Vek8u* pSrc1, const Vek8u* pSrc2, Vek8u* pDst,
                                                               Vek32s srcStep, Vek32s dstStep, Vek32s weight1,
                                                               Vek32s weight2, VekiSize roiSize);

/** Implicit weighting of two predictions with a step for each. Unlike its siblings it checks its pointers alone: steps
 *  may be anything, the block may have any size, and a width or height of 0 or less does nothing.
 *  @param pSrc1,pSrc2            the predictions
 *  @param pDst                   the block to write
 *  @param src1Step,src2Step,dstStep row steps, in bytes; not checked
 *  @param weight1,weight2        the standard's sum to 64; others are as good
 *  @param roiSize                width and height: 2, 4, 8 or 16 each
 *  @return vekStsOk, vekStsErrNullPtr
 */
VEKVC_API VekStatus vekiBiDirWeightBlockImplicit_H264_8u_P3P1R(const Vek8u* pSrc1, const Vek8u* pSrc2, Vek8u* pDst,
                                                               Vek32s src1Step, Vek32s src2Step, Vek32s dstStep,
                                                               Vek32s weight1, Vek32s weight2, VekiSize roiSize);

/** Weighted average of two predictions, in place: ((p1 * weight1 + p2 * weight2 + r) >> logWD) + offset with r =
 *  2^(logWD - 1), or 0 when logWD is 0. Unlike vekiBiDirWeightBlock_H264_8u_P2P1R it shifts by logWD, not logWD + 1,
 *  and adds its one offset whole.
 *  @param pSrc1           the first prediction
 *  @param pSrcDst         the second prediction and the result
 *  @param srcDstStep      row step of both, in bytes; at least the width
 *  @param weight1,weight2 weights of `pSrc1` and `pSrcDst`
 *  @param logWD           the shift
 *  @param offset          added after the shift
 *  @param roiSize         width and height: 2, 4, 8 or 16 each
 *  @return vekStsOk, vekStsErrNullPtr, vekStsErrStep, vekStsErrSize
 */
VEKVC_API VekStatus vekiWeightedAverage_H264_8u_C1IR(const Vek8u* pSrc1, Vek8u* pSrcDst, Vek32s srcDstStep,
                                                     Vek32s weight1, Vek32s weight2, Vek32u logWD, Vek32s offset,
                                                     VekiSize roiSize);

/** Average of two predictions, (p1 + p2 + 1) >> 1 (H.264 8.4.2.3.1), 16-bit samples of any depth.
 *  @param pParams the operands; weights, offsets, logWD and bit depth are not looked at
 *  @return vekStsOk, vekStsErrNullPtr (the record or one of its three pointers), vekStsErrSize (2 to 16 each)
 */
VEKVC_API VekStatus vekiBidir_H264_16u_P2P1R(const VekWeightParams16u* pParams);

/** Explicit weighting of two predictions, 16-bit samples; formula as vekiBiDirWeightBlock_H264_8u_P2P1R.
 *  @param pParams the operands
 *  @return vekStsOk, vekStsErrNullPtr, vekStsErrSize, vekStsErrOutOfRange (bitDepth)
 */
VEKVC_API VekStatus vekiBidirWeight_H264_16u_P2P1R(const VekWeightParams16u* pParams);

/** Implicit weighting of two predictions, 16-bit samples; formula as vekiBiDirWeightBlockImplicit_H264_8u_P2P1R.
 *  @param pParams the operands; offsets and logWD are not looked at
 *  @return vekStsOk, vekStsErrNullPtr, vekStsErrSize, vekStsErrOutOfRange (bitDepth)
 */
VEKVC_API VekStatus vekiBidirWeightImplicit_H264_16u_P2P1R(const VekWeightParams16u* pParams);

/** Explicit weighting of one prediction, 16-bit samples; formula as vekiUniDirWeightBlock_H264_8u_C1R. Reads `pSrc1`
 *  and writes `pDst`, in place when both are the same block.
 *  @param pParams the operands; `pSrc2` must not be null (pass `pSrc1` again), it is not read
 *  @return vekStsOk, vekStsErrNullPtr, vekStsErrSize, vekStsErrOutOfRange (bitDepth)
 */
VEKVC_API VekStatus vekiUnidirWeight_H264_16u_IP2P1R(const VekWeightParams16u* pParams);

#ifdef __cplusplus
}
#endif

#endif
