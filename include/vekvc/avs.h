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
 *  | `cbp` | bits 0 to 3: luma blocks 0 (top left), 1 (top right), 2 (bottom left), 3; bit 4: Cb; bit 5: Cr. Others are ignored |
 *  | `availability` | bit 0 (1): the samples above; bit 1 (2): left; bit 5 (32): above left, with bits 0 and 1 only; bit 6 (64): above right, with bit 0 only; bit 7 (128): below left, with bit 1 only. Others are ignored |
 *  | luma prediction mode | 0 vertical, 1 horizontal, 2 DC, 3 down-left, 4 down-right |
 *  | chroma prediction mode | 0 DC, 1 horizontal, 2 vertical, 3 plane |
 *  | `scanMode` | 0 zigzag, 1 field |
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
 *      vekStsErrOutOfRange, with nothing written, for data that no block has: 16 zero bits before a code's one bit, code
 *      58 of a first table, more than 64 positions, a level above 32767
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

/** The inverse 8x8 transform in place (GB/T 20090.2 clause 9): rows, (sum + 4) >> 3, then columns, (sum + 64) >> 7. Sums
 *  are exact, and the results of both passes saturated to 16 bits.
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

#ifdef __cplusplus
}
#endif

#endif
