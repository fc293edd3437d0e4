/** @file mpeg2.h
 *  MPEG-1 and MPEG-2 video: block decoders and writers, quantization. Streams, code lists and tables are those of
 *  vlc.h.
 *
 *  Where these functions depart from ISO 13818-2 7.4, and what a conforming decoder does about it:
 *  - The MPEG-2 block decoders do not saturate (7.4.3) before the mismatch control (7.4.4): they keep 16 bits. Where a
 *    coefficient left -2048 .. 2047 the caller limits it and, if the sum is even then, flips the last bit of the last
 *    coefficient.
 *  - The MPEG-1 block decoders saturate as ISO 11172-2 2.4.4 says; their products wrap at 32 bits before.
 *  - The inverse quantizers, vekiQuantInvIntra_MPEG2_16s_C1I() and vekiQuantInv_MPEG2_16s_C1I(), multiply modulo
 *    2^16, do not saturate to 12 bits, leave the DC as it is and sum for the mismatch control in lanes that saturate:
 *    they are for an encoder's own reconstruction. A decoder takes the block decoders.
 *  - Escapes with the levels that 7.2.2.3 forbids are read like others.
 */
#ifndef VEKVC_MPEG2_H
#define VEKVC_MPEG2_H

#include "vekvc/vlc.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Decodes and inverse-quantizes one non-intra block of MPEG-1 (ISO 11172-2 2.4.3.7, 2.4.4.2).
 *  A first bit of 1 is the first coefficient's short code: run 0, level +1 or -1 by the next bit. Coefficients are
 *  (2 * level + sign) * W * QP / 16 truncated toward zero in 32 bits (wrapping), made odd toward zero when even,
 *  limited to -2048 .. 2047. Levels of the table are read as 8-bit values; an escape is followed by 6 bits of run and 8
 *  or 16 bits of level.
 *
 *  @param[in,out] ppBitStream     the word cursor; moves past the end-of-block code
 *  @param[in,out] pBitOffset      the word cursor's bit
 *  @param[in] pFirstCoefTable     run/level decode table of the first coefficient
 *  @param[in] pACTable            run/level decode table of the others
 *  @param[in] pScanMatrix         64 raster positions (0 to 63) by scan index
 *  @param QP                      the quantizer scale as a factor
 *  @param[in] pQuantMatrix        64 weights W, raster order
 *  @param[out] pDstBlock          receives 64 coefficients, raster order, those not coded zero
 *  @param[out] pDstSize           receives the scan index of the last coefficient, 0 if there is none
 *  @return vekStsOk; vekStsErrNullPtr for a null pointer or `*ppBitStream`; vekStsErrVlcData if a scan index passes 63
 *          (so too where no code matches): the cursor stands behind the offending code (for an escape behind its
 *  level), the block holds the coefficients up to it, `*pDstSize` is not written
 */
VEKVC_API VekStatus vekiReconstructDCTBlock_MPEG1_32s(Vek32u** ppBitStream, Vek32s* pBitOffset,
                                                      const VekVlcTable_32s* pFirstCoefTable,
                                                      const VekVlcTable_32s* pACTable, const Vek32s* pScanMatrix,
                                                      Vek32s QP, const Vek16s* pQuantMatrix, Vek16s* pDstBlock,
                                                      Vek32s* pDstSize);

/** Decodes and inverse-quantizes one non-intra block of MPEG-2 (ISO 13818-2 7.2.2, 7.4), with mismatch control.
 *  Like vekiReconstructDCTBlock_MPEG1_32s(), but: an escape is followed by 6 bits of run and 12 bits of level;
 *  coefficients are (2 * level + sign) * W * QP / 32 and keep their low 16 bits, unlimited; if the sum of all of them
 *  is even, the last bit of block[63] is flipped.
 *
 *  @param[in,out] ppBitStream     the word cursor; moves past the end-of-block code
 *  @param[in,out] pBitOffset      the word cursor's bit
 *  @param[in] pFirstCoefTable     run/level decode table of the first coefficient
 *  @param[in] pACTable            run/level decode table of the others
 *  @param[in] pScanMatrix         64 raster positions by scan index
 *  @param QP                      the quantizer scale as a factor
 *  @param[in] pQuantMatrix        64 weights W, raster order
 *  @param[out] pDstBlock          receives 64 coefficients
 *  @param[out] pDstSize           receives the scan index of the last coefficient, 0 if there is none
 *  @return as vekiReconstructDCTBlock_MPEG1_32s(); a failed block has no mismatch control
 */
VEKVC_API VekStatus vekiReconstructDCTBlock_MPEG2_32s(Vek32u** ppBitStream, Vek32s* pBitOffset,
                                                      const VekVlcTable_32s* pFirstCoefTable,
                                                      const VekVlcTable_32s* pACTable, const Vek32s* pScanMatrix,
                                                      Vek32s QP, const Vek16s* pQuantMatrix, Vek16s* pDstBlock,
                                                      Vek32s* pDstSize);

/** Decodes and inverse-quantizes one intra block of MPEG-1 (ISO 11172-2 2.4.3.7, 2.4.4.1).
 *  The DC is the prediction plus 8 times the difference (16 bits, wrapping); the others are 2 * level * W * QP / 16,
 *  then as in vekiReconstructDCTBlock_MPEG1_32s().
 *
 *  @param[in,out] ppBitStream     the word cursor; moves past the end-of-block code
 *  @param[in,out] pBitOffset      the word cursor's bit
 *  @param[in] pDCSizeTable        single-value decode table of dct_dc_size; a value is read as 8 bits
 *  @param[in] pACTable            run/level decode table
 *  @param[in] pScanMatrix         64 raster positions by scan index
 *  @param QP                      the quantizer scale as a factor
 *  @param[in] pQuantMatrix        64 weights W, raster order; the DC's is not used
 *  @param[in,out] pDCPred         the DC prediction; becomes the block's DC
 *  @param[out] pDstBlock          receives 64 coefficients
 *  @param[out] pDstSize           receives the scan index of the last coefficient, 0 if there is only the DC
 *  @return as vekiReconstructDCTBlock_MPEG1_32s(); vekStsErrVlcData also where no DC size matches or it is negative or
 *          above 32: the cursor then stands behind that code, the block is zero, `*pDCPred` unchanged
 */
VEKVC_API VekStatus vekiReconstructDCTBlockIntra_MPEG1_32s(Vek32u** ppBitStream, Vek32s* pBitOffset,
                                                           const VekVlcTable_32s* pDCSizeTable,
                                                           const VekVlcTable_32s* pACTable, const Vek32s* pScanMatrix,
                                                           Vek32s QP, const Vek16s* pQuantMatrix, Vek16s* pDCPred,
                                                           Vek16s* pDstBlock, Vek32s* pDstSize);

/** Decodes and inverse-quantizes one intra block of MPEG-2 (ISO 13818-2 7.2.1, 7.2.2, 7.4), with mismatch control.
 *  The DC is the prediction plus the difference, shifted left by @p shiftDCVal (16 bits, wrapping); the others are
 *  2 * level * W * QP / 32, then as in vekiReconstructDCTBlock_MPEG2_32s().
 *
 *  @param[in,out] ppBitStream     the word cursor; moves past the end-of-block code
 *  @param[in,out] pBitOffset      the word cursor's bit
 *  @param[in] pDCSizeTable        single-value decode table of dct_dc_size; a value is read as 8 bits
 *  @param[in] pACTable            run/level decode table
 *  @param[in] pScanMatrix         64 raster positions by scan index
 *  @param QP                      the quantizer scale as a factor
 *  @param[in] pQuantMatrix        64 weights W, raster order; the DC's is not used
 *  @param[in,out] pDCPred         the DC prediction, before the shift; becomes the block's
 *  @param shiftDCVal              0 to 31: 3 - intra_dc_precision
 *  @param[out] pDstBlock          receives 64 coefficients
 *  @param[out] pDstSize           receives the scan index of the last coefficient, 0 if there is only the DC
 *  @return as vekiReconstructDCTBlockIntra_MPEG1_32s()
 */
VEKVC_API VekStatus vekiReconstructDCTBlockIntra_MPEG2_32s(Vek32u** ppBitStream, Vek32s* pBitOffset,
                                                           const VekVlcTable_32s* pDCSizeTable,
                                                           const VekVlcTable_32s* pACTable, const Vek32s* pScanMatrix,
                                                           Vek32s QP, const Vek16s* pQuantMatrix, Vek16s* pDCPred,
                                                           Vek32s shiftDCVal, Vek16s* pDstBlock, Vek32s* pDstSize);

/** Writes one intra block: DC size and difference, run/level codes, end of block (ISO 13818-2 7.2.1, 7.2.2).
 *  A pair that the table does not hold is written as an MPEG-2 escape: 000001, 6 bits of run, 12 bits of level. Bits
 *  before the cursor and behind the last bit written keep their values; no other word is touched.
 *
 *  @param[in,out] ppBitStream  the word cursor; moves past the bits written
 *  @param[in,out] pBitOffset   the word cursor's bit
 *  @param[in] pSrcBlock        64 quantized coefficients, raster order
 *  @param[in,out] pDCPred      the DC prediction; becomes the block's DC
 *  @param[in] pDCSizeCodes     pairs code, length by DC size
 *  @param[in] pACTable         a table of vekiCreateRLEncodeTable()
 *  @param[in] pScanMatrix      64 raster positions by scan index; the first is not used
 *  @param EOBLen               length of the end-of-block code, 0 to 32
 *  @param EOBCode              the end-of-block code
 *  @param count                number of non-zero AC coefficients to write; the walk ends at scan index 63 at the
 *  latest
 *  @return vekStsOk; vekStsErrNullPtr for a null pointer or `*ppBitStream`
 */
VEKVC_API VekStatus vekiPutIntraBlock(Vek32u** ppBitStream, Vek32s* pBitOffset, const Vek16s* pSrcBlock,
                                      Vek32s* pDCPred, const Vek32s* pDCSizeCodes, const VekRLEncodeTable* pACTable,
                                      const Vek32s* pScanMatrix, Vek32s EOBLen, Vek32s EOBCode, Vek32s count);

/** Writes one non-intra block: run/level codes and end of block (ISO 13818-2 7.2.2). A first coefficient of +1 or -1 is
 *  written as 10 or 11. Escapes and untouched bits as in vekiPutIntraBlock().
 *
 *  @param[in,out] ppBitStream  the word cursor; moves past the bits written
 *  @param[in,out] pBitOffset   the word cursor's bit
 *  @param[in] pSrcBlock        64 quantized coefficients, raster order
 *  @param[in] pACTable         a table of vekiCreateRLEncodeTable()
 *  @param[in] pScanMatrix      64 raster positions by scan index; the first is not used
 *  @param EOBLen               length of the end-of-block code, 0 to 32
 *  @param EOBCode              the end-of-block code
 *  @param count                number of non-zero coefficients to write, pSrcBlock[0] included (which is written
 *  whatever
 *                              @p count says); the walk ends at scan index 63 at the latest
 *  @return vekStsOk; vekStsErrNullPtr for a null pointer or `*ppBitStream`
 */
VEKVC_API VekStatus vekiPutNonIntraBlock(Vek32u** ppBitStream, Vek32s* pBitOffset, const Vek16s* pSrcBlock,
                                         const VekRLEncodeTable* pACTable, const Vek32s* pScanMatrix, Vek32s EOBLen,
                                         Vek32s EOBCode, Vek32s count);

/** Quantizes one intra block of MPEG-2 in place, in single precision: ((float)x * (16.0f / QP)) * M truncated toward
 *  zero, limited to -2047 .. 2047. The DC keeps its value.
 *  @param[in,out] pSrcDst    64 coefficients, raster order
 *  @param QP                 the quantizer scale as a factor, not 0
 *  @param[in] pQuantMatrix   64 reciprocal weights M, raster order; null: those of the default intra matrix
 *                            (ISO 13818-2 6.3.11)
 *  @param[out] pCount        receives the number of non-zero coefficients without the DC
 *  @return vekStsOk; vekStsErrNullPtr if @p pSrcDst or @p pCount is null; vekStsErrDivByZero if @p QP is 0
 */
VEKVC_API VekStatus vekiQuantIntra_MPEG2_16s_C1I(Vek16s* pSrcDst, Vek32s QP, const Vek32f* pQuantMatrix,
                                                 Vek32s* pCount);

/** Quantizes one non-intra block of MPEG-2 in place: with a matrix as vekiQuantIntra_MPEG2_16s_C1I(), the DC included;
 *  without one in integers: (|x| * m) >> 16 with m = (QP / 2 + 65536) / QP, at most 2047, with the sign of x, where
 *  -32768 counts as -32767. Without a matrix and with @p QP below 2 the block keeps its values and is only counted.
 *  @param[in,out] pSrcDst    64 coefficients, raster order
 *  @param QP                 the quantizer scale as a factor, not 0
 *  @param[in] pQuantMatrix   64 reciprocal weights, raster order, or null
 *  @param[out] pCount        receives the number of non-zero coefficients
 *  @return as vekiQuantIntra_MPEG2_16s_C1I()
 */
VEKVC_API VekStatus vekiQuant_MPEG2_16s_C1I(Vek16s* pSrcDst, Vek32s QP, const Vek32f* pQuantMatrix, Vek32s* pCount);

/** Inverse-quantizes one intra block of MPEG-2 in place, with mismatch control (ISO 13818-2 7.4.2, 7.4.4):
 *  (x * QP * W + (x < 0 ? 15 : 0)) >> 4, the products taken modulo 2^16, the sum saturated to 16 bits; the result is
 *  not limited to -2048 .. 2047. The DC keeps its value. If the sum of the results is even, the last bit of the last
 *  one is flipped. The sum is formed in eight lanes that saturate at 16 bits (lane k: positions k, k + 8, ... k + 56)
 *  and only then joined.
 *  @param[in,out] pSrcDst    64 coefficients, raster order
 *  @param QP                 the quantizer scale as a factor
 *  @param[in] pQuantMatrix   64 weights W, raster order; the DC's is not used
 *  @return vekStsOk; vekStsErrNullPtr
 */
VEKVC_API VekStatus vekiQuantInvIntra_MPEG2_16s_C1I(Vek16s* pSrcDst, Vek32s QP, const Vek16s* pQuantMatrix);

/** Inverse-quantizes one non-intra block of MPEG-2 in place, with the mismatch control of
 *  vekiQuantInvIntra_MPEG2_16s_C1I() (ISO 13818-2 7.4.2.3, 7.4.4): with m = QP * W and p = x * m, both modulo 2^16,
 *  (p +- (m >> 1) + (p < 0 ? 15 : 0)) >> 4, the half weight added away from 0 where x is not 0, sums saturated to 16
 *  bits. Rounding follows the sign of p. Without a matrix all weights are 16: with t = 2 * x + sign(x), saturated, and
 *  p = t * QP modulo 2^16, (p + (x < 0 ? 1 : 0)) >> 1.
 *  @param[in,out] pSrcDst    64 coefficients, raster order
 *  @param QP                 the quantizer scale as a factor
 *  @param[in] pQuantMatrix   64 weights W, raster order, or null
 *  @return vekStsOk; vekStsErrNullPtr if @p pSrcDst is null
 */
VEKVC_API VekStatus vekiQuantInv_MPEG2_16s_C1I(Vek16s* pSrcDst, Vek32s QP, const Vek16s* pQuantMatrix);

#ifdef __cplusplus
}
#endif

#endif
