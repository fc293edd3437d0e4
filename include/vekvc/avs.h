/** @file avs.h
 *  AVS1-P2 (GB/T 20090.2), Jizhun profile, 8 bits: entropy decoding of coefficient blocks, inverse quantization and the
 *  8x8 transform, intra prediction and reconstruction of macroblocks, motion compensation with weighting, and the loop
 *  filter. The functions know 8x8 blocks and serve 4:2:2 as well as 4:2:0.
 *
 *  A packed coefficient stream is reached through the address of a running pointer. It holds blocks of 64 levels in
 *  raster order (8 * row + column), coded blocks only, in the order luma 0 to 3, Cb, Cr.
 *
 *  | selector | values |
 *  |---|---|
 *  | `cbp` | bits 0 to 3: luma blocks in raster order; bit 4: Cb; bit 5: Cr. Others are ignored |
 *  | `availability` | samples: bit 0 (1) above; 1 (2) left; 5 (32) above left; 6 (64) above right; 7 (128) below left |
 *  | luma prediction mode | 0 vertical, 1 horizontal, 2 DC, 3 down-left, 4 down-right |
 *  | chroma prediction mode | 0 DC, 1 horizontal, 2 vertical, 3 plane |
 *  | `scanMode` | 0 zigzag, 1 field |
 *
 *  Of `availability`, bit 5 counts only with bits 0 and 1, bit 6 only with bit 0, bit 7 only with bit 1; others are
 *  ignored.
 *
 *  For the fields of a frame pass the field's first row and twice the step. Steps are not checked.
 */
#ifndef VEKVC_AVS_H
#define VEKVC_AVS_H

#include "vekvc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** A block and its motion, for the forms that clamp at the edges of the reference. Luma uses index 0 only, chroma 0 for
 *  Cb and 1 for Cr. */
typedef struct {
    const Vek8u* pSrcPlane[2]; /**< sample (0, 0) of the reference plane */
    Vek32s srcPlaneStep;       /**< its row step in bytes */
    Vek8u* pDstBlock[2];       /**< first sample of the prediction */
    Vek32s dstBlockStep;       /**< its row step in bytes */
    VekiSize planeSize;        /**< of the reference plane, in its own samples */
    VekiSize blockSize;        /**< luma: 8 or 16 each; chroma: 4 or 8 each */
    Vek32s blockX;             /**< the block's column in the plane, in the plane's own samples */
    Vek32s blockY;             /**< its row */
    Vek32s mvX;                /**< the luma vector in quarter samples, for chroma too: there they are eighths */
    Vek32s mvY;                /**< downwards */
} VekAVSInterpolationParams8u;

/** @name Coefficients
 *  @{ */

/** Decodes one block of 64 levels (GB/T 20090.2 clause 8, adaptive two-dimensional variable-length codes): run/level
 *  pairs in k-th order Exp-Golomb codes of tables that change with the level, from the highest frequency down. The
 *  three functions are for luma blocks of intra macroblocks, of inter macroblocks, and for chroma blocks of both.
 *
 *  They load at most the word behind the one that holds the last bit of the block, or the bit that shows a fault.
 *  Sixteen zero bits are a fault: with two zero words behind the data any input is safe.
 *  @param[in,out] ppBitStream  current word; moved behind the block's end
 *  @param[in,out] pBitOffset   next bit, 31 (most significant) to 0
 *  @param[in,out] ppDstCoeffs  receives all 64 levels; moved on by 64
 *  @param scanMode             0 zigzag, 1 field
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrBadArg for @p pBitOffset outside 0..31, for @p scanMode; and
 *      vekStsErrOutOfRange, with nothing written, for data that no block has: 16 zero bits before a code's one bit,
 *      code 58 of a first table, more than 64 positions, a level above 32767
 */
VEKVC_API VekStatus vekiDecodeCoeffsLumaIntra_AVS_1u16s(Vek32u** ppBitStream, Vek32s* pBitOffset, Vek16s** ppDstCoeffs,
                                                        Vek32s scanMode);
VEKVC_API VekStatus vekiDecodeCoeffsLumaInter_AVS_1u16s(Vek32u** ppBitStream, Vek32s* pBitOffset, Vek16s** ppDstCoeffs,
                                                        Vek32s scanMode);
VEKVC_API VekStatus vekiDecodeCoeffsChroma_AVS_1u16s(Vek32u** ppBitStream, Vek32s* pBitOffset, Vek16s** ppDstCoeffs,
                                                     Vek32s scanMode);
/** @} */

/** @name Dequantization, transform, reconstruction
 *  @{ */

/** Dequantizes a block in place (GB/T 20090.2 clause 9): (level * multiplier + half of 2^shift) >> shift with the
 *  multiplier and the shift of the quantization parameter, saturated to 16 bits.
 *  @param[in,out] pSrcDst  64 levels, replaced by coefficients
 *  @param QP               0 to 63
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrOutOfRange for @p QP
 */
VEKVC_API VekStatus vekiQuantInv8x8_AVS_16s_C1I(Vek16s* pSrcDst, Vek32s QP);

/** The inverse 8x8 transform in place (GB/T 20090.2 clause 9): rows, (sum + 4) >> 3, then columns, (sum + 64) >> 7.
 *  Sums are exact, and the results of both passes saturated to 16 bits.
 *  @param[in,out] pSrcDst  64 coefficients, replaced by the residual
 *  @return vekStsOk; vekStsErrNullPtr
 */
VEKVC_API VekStatus vekiTransform8x8Inv_AVS_16s_C1I(Vek16s* pSrcDst);

/** Both of a block of levels, and the addition of the residual to the prediction, clipped to 0..255.
 *  @param[in] pCoeffs      64 levels; left as they are
 *  @param[in,out] pSrcDst  8x8 samples: the prediction
 *  @param srcDstStep       bytes between rows
 *  @param QP               0 to 63
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrOutOfRange for @p QP
 */
VEKVC_API VekStatus vekiReconstruct8x8_AVS_16s8u_C1IR(const Vek16s* pCoeffs, Vek8u* pSrcDst, Vek32s srcDstStep,
                                                      Vek32s QP);
/** @} */

/** @name Intra prediction
 *  @{ */

/** Predicts a luma (chroma) block in place from its neighbours (GB/T 20090.2 clause 9), which must not yet be
 *  deblocked. Modes take the neighbours that are available; a missing above-right or below-left arm is replaced by
 *  copies of the last sample. DC without neighbours is 128. Chroma ignores bit 7 of @p availability.
 *
 *  Only available neighbours are read: by luma modes 0 and 1 and chroma modes 1 and 2 just the eight above or left; by
 *  DC those above, left, above left, and one beyond each end; by mode 3 of luma no corner but eight beyond each end.
 *  @param[in,out] pSrcDst  8x8 samples to write, amid the picture
 *  @param srcDstStep       bytes between rows
 *  @param predMode         luma 0 to 4, chroma 0 to 3
 *  @param availability     see the head of this file
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrOutOfRange for @p predMode; vekStsErrBadArg where neighbours are
 *      missing: above (luma 0, chroma 2), left (1), both (luma 3), both and above left (luma 4, chroma 3)
 */
VEKVC_API VekStatus vekiPredictIntraLuma8x8_AVS_8u_C1IR(Vek8u* pSrcDst, Vek32s srcDstStep, Vek32s predMode,
                                                        Vek32u availability);
VEKVC_API VekStatus vekiPredictIntraChroma8x8_AVS_8u_C1IR(Vek8u* pSrcDst, Vek32s srcDstStep, Vek32s predMode,
                                                          Vek32u availability);
/** @} */

/** @name Macroblocks
 *  @{ */

/** Predicts and reconstructs the luma of an intra macroblock, block after block, each predicted from the picture as the
 *  blocks before it left it.
 *  @param[in,out] ppCoeffs  the coded blocks' levels; moved on by 64 for each. `*ppCoeffs` is never null
 *  @param[in,out] pSrcDst   16x16 samples to write, amid the picture
 *  @param srcDstStep        bytes between rows
 *  @param[in] pPredModes    four modes, 0 to 4
 *  @param cbp               bits 0 to 3
 *  @param QP                0 to 63
 *  @param availability      of the macroblock
 *  @return vekStsOk; vekStsErrNullPtr; block after block vekStsErrOutOfRange for its mode and vekStsErrBadArg where its
 *      neighbours are missing; vekStsErrOutOfRange for @p QP
 */
VEKVC_API VekStatus vekiReconstructLumaIntraMB_AVS_16s8u_C1R(Vek16s** ppCoeffs, Vek8u* pSrcDst, Vek32s srcDstStep,
                                                             const Vek32u* pPredModes, Vek32u cbp, Vek32s QP,
                                                             Vek32u availability);

/** Adds the residual of the coded luma blocks to the prediction.
 *  @param[in,out] ppCoeffs  the coded blocks' levels; moved on by 64 for each
 *  @param[in,out] pSrcDst   16x16 samples: the prediction
 *  @param srcDstStep        bytes between rows
 *  @param cbp               bits 0 to 3
 *  @param QP                0 to 63
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrOutOfRange for @p QP
 */
VEKVC_API VekStatus vekiReconstructLumaInterMB_AVS_16s8u_C1R(Vek16s** ppCoeffs, Vek8u* pSrcDst, Vek32s srcDstStep,
                                                             Vek32u cbp, Vek32s QP);

/** Predicts and reconstructs the 8x8 chroma blocks of an intra macroblock, Cb, then Cr.
 *  @param[in,out] ppCoeffs  the coded blocks' levels; moved on by 64 for each
 *  @param[in,out] pSrcDstU  8x8 samples of Cb, amid the picture
 *  @param[in,out] pSrcDstV  8x8 samples of Cr
 *  @param srcDstStep        bytes between rows, of both
 *  @param predMode          0 to 3
 *  @param cbp               bits 4 and 5
 *  @param chromaQP          0 to 51: the value of the chroma QP table
 *  @param availability      of the macroblock
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrOutOfRange for @p predMode; vekStsErrBadArg where its neighbours are
 *      missing; vekStsErrOutOfRange for @p chromaQP
 */
VEKVC_API VekStatus vekiReconstructChromaIntraMB_AVS_16s8u_P2R(Vek16s** ppCoeffs, Vek8u* pSrcDstU, Vek8u* pSrcDstV,
                                                               Vek32s srcDstStep, Vek32s predMode, Vek32u cbp,
                                                               Vek32s chromaQP, Vek32u availability);

/** Adds the residual of the coded chroma blocks to the prediction; the arguments are those of
 *  vekiReconstructChromaIntraMB_AVS_16s8u_P2R().
 *  @param[in,out] ppCoeffs  the packed coefficients; moved behind those of the coded blocks
 *  @param[in,out] pSrcDstU  8x8 samples of Cb
 *  @param[in,out] pSrcDstV  8x8 samples of Cr
 *  @param srcDstStep        bytes between rows, of both
 *  @param cbp               bits 4 and 5
 *  @param chromaQP          0 to 51: the value of the chroma QP table
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrOutOfRange for @p chromaQP
 */
VEKVC_API VekStatus vekiReconstructChromaInterMB_AVS_16s8u_P2R(Vek16s** ppCoeffs, Vek8u* pSrcDstU, Vek8u* pSrcDstV,
                                                               Vek32s srcDstStep, Vek32u cbp, Vek32s chromaQP);
/** @} */

/** @name Luma interpolation
 *  @{ */

/** Interpolates luma at quarter-sample positions (GB/T 20090.2 clause 9): the filter of @p dx along the rows, of @p dy
 *  along the columns, without rounding between; with both fractions odd, half of the way from the centre of four
 *  samples to the one of them that is nearest.
 *
 *  A fraction of 1 reads two samples before and behind the block in its direction, 2 reads one and two, 3 reads one and
 *  three; two odd fractions read one before and two behind in both directions. Nothing else is read.
 *  @param[in] pSrc   the sample at the block's whole-sample position
 *  @param srcStep    bytes between rows
 *  @param[out] pDst  the block: columns x rows as in the name
 *  @param dstStep    bytes between rows
 *  @param dx         0 to 3 quarters
 *  @param dy         0 to 3 quarters
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrBadArg for @p dx, @p dy
 */
VEKVC_API VekStatus vekiInterpolateLuma16x16_AVS_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep,
                                                        Vek32s dx, Vek32s dy);
VEKVC_API VekStatus vekiInterpolateLuma16x8_AVS_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep,
                                                       Vek32s dx, Vek32s dy);
VEKVC_API VekStatus vekiInterpolateLuma8x16_AVS_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep,
                                                       Vek32s dx, Vek32s dy);
VEKVC_API VekStatus vekiInterpolateLuma8x8_AVS_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep,
                                                      Vek32s dx, Vek32s dy);
/** @} */

/** @name Chroma interpolation
 *  @{ */

/** Interpolates chroma between four samples by eighths (GB/T 20090.2 clause 9). One more column (row) is read only if
 *  @p dx (@p dy) is not 0.
 *  @param[in] pSrc   the sample at the block's whole-sample position
 *  @param srcStep    bytes between rows
 *  @param[out] pDst  the block: columns x rows as in the name
 *  @param dstStep    bytes between rows
 *  @param dx         0 to 7 eighths
 *  @param dy         0 to 7 eighths
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrBadArg for @p dx, @p dy
 */
VEKVC_API VekStatus vekiInterpolateChroma8x8_AVS_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep,
                                                        Vek32s dx, Vek32s dy);
VEKVC_API VekStatus vekiInterpolateChroma8x4_AVS_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep,
                                                        Vek32s dx, Vek32s dy);
VEKVC_API VekStatus vekiInterpolateChroma4x8_AVS_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep,
                                                        Vek32s dx, Vek32s dy);
VEKVC_API VekStatus vekiInterpolateChroma4x4_AVS_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep,
                                                        Vek32s dx, Vek32s dy);
/** @} */

/** @name Interpolation clamped at the reference's edges
 *  @{ */

/** The same for a block and a vector that may point anywhere: each coordinate of the reference is limited to the plane
 *  before a sample is read. The chroma form does both planes.
 *  @param[in] pParams  the block and its motion; the samples are written where its pDstBlock points
 *  @return vekStsOk; vekStsErrNullPtr for the record or a pointer that is used; vekStsErrSize for a plane without
 *      samples, then for a block size that is not 8 or 16 (luma), 4 or 8 (chroma) in both directions
 */
VEKVC_API VekStatus vekiInterpolateLumaBlock_AVS_8u_P1R(const VekAVSInterpolationParams8u* pParams);
VEKVC_API VekStatus vekiInterpolateChromaBlock_AVS_8u_P2R(const VekAVSInterpolationParams8u* pParams);
/** @} */

/** @name Averages and weights
 *  @{ */

/** The average of two predictions, (a + b + 1) >> 1.
 *  @param[in] pSrc1  first prediction
 *  @param src1Step   bytes between its rows
 *  @param[in] pSrc2  second prediction
 *  @param src2Step   bytes between its rows
 *  @param[out] pDst  the result; may be one of the predictions, with its step
 *  @param dstStep    bytes between its rows
 *  @param roiSize    2 to 16 columns and rows
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrSize
 */
VEKVC_API VekStatus vekiInterpolateBlock_AVS_8u_P3P1R(const Vek8u* pSrc1, Vek32s src1Step, const Vek8u* pSrc2,
                                                      Vek32s src2Step, Vek8u* pDst, Vek32s dstStep, VekiSize roiSize);

/** Weights a prediction (GB/T 20090.2 clause 9): ((a * scale + 16) >> 5) + shift, clipped to 0..255.
 *  @param[in,out] pSrcDst  the prediction
 *  @param srcDstStep       bytes between rows
 *  @param scale            0 to 255
 *  @param shift            -128 to 127
 *  @param roiSize          2 to 16 columns and rows
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrOutOfRange for @p scale, @p shift; vekStsErrSize
 */
VEKVC_API VekStatus vekiUniDirWeightBlock_AVS_8u_C1IR(Vek8u* pSrcDst, Vek32s srcDstStep, Vek32s scale, Vek32s shift,
                                                      VekiSize roiSize);

/** The same from one place to another.
 *  @param[in] pSrc   the prediction
 *  @param srcStep    bytes between its rows
 *  @param[out] pDst  the result; may be the prediction, with its step
 *  @param dstStep    bytes between its rows
 *  @param scale      0 to 255
 *  @param shift      -128 to 127
 *  @param roiSize    2 to 16 columns and rows
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrOutOfRange for @p scale, @p shift; vekStsErrSize
 */
VEKVC_API VekStatus vekiUniDirWeightBlock_AVS_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep,
                                                     Vek32s scale, Vek32s shift, VekiSize roiSize);

/** Weights two predictions, each clipped to 0..255, and averages them as vekiInterpolateBlock_AVS_8u_P3P1R() does.
 *  @param[in] pSrc1  first prediction
 *  @param src1Step   bytes between its rows
 *  @param[in] pSrc2  second prediction
 *  @param src2Step   bytes between its rows
 *  @param[out] pDst  the result; may be one of the predictions, with its step
 *  @param dstStep    bytes between its rows
 *  @param scale1     0 to 255, of the first
 *  @param shift1     -128 to 127
 *  @param scale2     0 to 255, of the second
 *  @param shift2     -128 to 127
 *  @param roiSize    2 to 16 columns and rows
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrOutOfRange for a scale or shift; vekStsErrSize
 */
VEKVC_API VekStatus vekiBiDirWeightBlock_AVS_8u_P3P1R(const Vek8u* pSrc1, Vek32s src1Step, const Vek8u* pSrc2,
                                                      Vek32s src2Step, Vek8u* pDst, Vek32s dstStep, Vek32s scale1,
                                                      Vek32s shift1, Vek32s scale2, Vek32s shift2, VekiSize roiSize);
/** @} */

/** @name Loop filter
 *  @{ */

/** Filters the vertical (horizontal) luma edges of a macroblock at 0 and 8 (GB/T 20090.2 clause 9), edge 0 on all its
 *  lines before edge 1. Three samples on each side of an edge are read and at most two written; a half of an edge
 *  without strength is not touched.
 *  @param[in,out] pSrcDst   the macroblock's first sample, amid the picture
 *  @param srcDstStep        bytes between rows
 *  @param[in] pAlpha        alpha of the two edges
 *  @param[in] pBeta         beta of the two edges
 *  @param[in] pThresholds   C of the two edges
 *  @param[in] pBs           four strengths: 2 e + h of half h (lines 8 h to 8 h + 7) of edge e; 0 none, 1, 2 and above
 *  @return vekStsOk; vekStsErrNullPtr
 */
VEKVC_API VekStatus vekiFilterDeblockingLuma_VerEdge_AVS_8u_C1IR(Vek8u* pSrcDst, Vek32s srcDstStep, const Vek8u* pAlpha,
                                                                 const Vek8u* pBeta, const Vek8u* pThresholds,
                                                                 const Vek8u* pBs);
VEKVC_API VekStatus vekiFilterDeblockingLuma_HorEdge_AVS_8u_C1IR(Vek8u* pSrcDst, Vek32s srcDstStep, const Vek8u* pAlpha,
                                                                 const Vek8u* pBeta, const Vek8u* pThresholds,
                                                                 const Vek8u* pBs);

/** Filters the vertical (horizontal) edge at 0 of an 8x8 chroma block. Three samples on each side are read and at most
 *  one is written.
 *  @param[in,out] pSrcDst   the block's first sample, amid the picture
 *  @param srcDstStep        bytes between rows
 *  @param[in] pAlpha        alpha
 *  @param[in] pBeta         beta
 *  @param[in] pThresholds   C
 *  @param[in] pBs           two strengths: of lines 0 to 3 and 4 to 7
 *  @return vekStsOk; vekStsErrNullPtr
 */
VEKVC_API VekStatus vekiFilterDeblockingChroma_VerEdge_AVS_8u_C1IR(Vek8u* pSrcDst, Vek32s srcDstStep,
                                                                   const Vek8u* pAlpha, const Vek8u* pBeta,
                                                                   const Vek8u* pThresholds, const Vek8u* pBs);
VEKVC_API VekStatus vekiFilterDeblockingChroma_HorEdge_AVS_8u_C1IR(Vek8u* pSrcDst, Vek32s srcDstStep,
                                                                   const Vek8u* pAlpha, const Vek8u* pBeta,
                                                                   const Vek8u* pThresholds, const Vek8u* pBs);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
