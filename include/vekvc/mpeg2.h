/** @file mpeg2.h
 *  MPEG-1 and MPEG-2 video: variable-length code tables, block decoders and writers, quantization.
 *
 *  Bit streams are sequences of native 32-bit words, each read or written from its most significant bit down;
 *  `**ppBitStream` is the current word, `*pBitOffset` (31 down to 0, 31 the most significant; not checked) its next
 *  bit. A reader touches at most the word that follows the one holding the last bit that it consumes.
 *
 *  Code lists. A code table of a standard is handed to the builders as an array of Vek32s:
 *  - word 0 is not read (by convention the longest code length);
 *  - word 1 is N, the number of lookup levels; words 2 to N + 1 give the bits that each level looks up. Codes longer
 *    than their sum are left out;
 *  - then, for code lengths 1, 2, 3 ... in turn, a count of codes and as many records; a negative count ends the list.
 *    A record is `code, value` for vekiHuffmanTableInitAlloc_32s(), and `code, run, level` for
 *    vekiHuffmanRunLevelTableInitAlloc_32s() and vekiCreateRLEncodeTable(); `code` is right-aligned. There `run` 255
 *    marks the escape code and `run` 254 the end-of-block code, whose levels are ignored.
 *
 *  Lists are not validated: the caller ends them and makes them prefix-free.
 *
 *  Decode tables (VekVlcTable_32s) are arrays of 32-bit entries. A (sub-)table at entry `off` holds the number b of
 *  bits to look up at `off` and its 2^b slots at `off` + 1 onwards; the first one starts at entry 0, the others follow
 *  in the order in which the list first needs them. A slot is one of
 *  - `(off << 8) | 0x80`: look up the next bits in the sub-table at `off`;
 *  - `(value << 8) | g`, or `(level << 16) | ((run & 0xFF) << 8) | g`: a code that ends g bits before the last bit
 *  looked up; a value keeps its low 24 bits, a level its low 16; the level of escape and end of block is stored as 0;
 *  - `0x00F0F101`: no code.
 *
 *  Encode tables (VekRLEncodeTable) are arrays of 32-bit words. Word 0 holds the escape code in bits 0-9 and the
 *  end-of-block code in bits 10-19, each as `(code << 4) | length`, and the largest run in bits 20-31. Word 1 + r holds
 *  the byte offset, from the table's start, of the centre word of run r. The centre holds the largest magnitude of a
 *  level with that run (-1 if there is none); the word `level` words from the centre holds `(code << 16) | length`.
 *
 *  Tables do not change once built; any number of threads may share them.
 */
#ifndef VEKVC_MPEG2_H
#define VEKVC_MPEG2_H

#include "vekvc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef Vek32s VekVlcTable_32s;  /**< an entry of a decode table; a table is passed by its first entry */
typedef Vek32s VekRLEncodeTable; /**< a word of a run/level encode table; a table is passed by its first word */

/** Builds a decode table of single values.
 *  @param[in] pSrcTable   the code list, records `code, value`
 *  @param[out] ppDstSpec  receives the table, one block from vekMalloc(); release it with vekiHuffmanTableFree_32s()
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrMemAlloc, with nothing written, if there is no memory for the table or
 *          its layout cannot address it (a sub-table beyond entry 2^23)
 */
VEKVC_API VekStatus vekiHuffmanTableInitAlloc_32s(const Vek32s* pSrcTable, VekVlcTable_32s** ppDstSpec);

/** Builds a decode table of run/level pairs.
 *  @param[in] pSrcTable   the code list, records `code, run, level`
 *  @param[out] ppDstSpec  receives the table, one block from vekMalloc(); release it with vekiHuffmanTableFree_32s()
 *  @return as vekiHuffmanTableInitAlloc_32s()
 */
VEKVC_API VekStatus vekiHuffmanRunLevelTableInitAlloc_32s(const Vek32s* pSrcTable, VekVlcTable_32s** ppDstSpec);

/** Releases a table of vekiHuffmanTableInitAlloc_32s() or vekiHuffmanRunLevelTableInitAlloc_32s().
 *  @param[in] pDecodeTable  the table
 *  @return vekStsOk; vekStsErrNullPtr
 */
VEKVC_API VekStatus vekiHuffmanTableFree_32s(VekVlcTable_32s* pDecodeTable);

/** Decodes one value.
 *  @param[in,out] ppBitStream  the word cursor; moves past the code. Where no code matches it moves past all bits
 *  looked up (unlike vekiDecodeHuffmanPair_1u16s())
 *  @param[in,out] pBitOffset   the word cursor's bit
 *  @param[out] pDst            receives the value, -2^23 to 2^23 - 1; where no code matches 61681
 *  @param[in] pDecodeTable     a table of vekiHuffmanTableInitAlloc_32s()
 *  @return vekStsOk; vekStsErrNullPtr for a null pointer or `*ppBitStream`; vekStsErrVlcData if no code matches. The
 *          value 61681 is the mark of no code and cannot be a code's value.
 */
VEKVC_API VekStatus vekiDecodeHuffmanOne_1u32s(Vek32u** ppBitStream, Vek32s* pBitOffset, Vek32s* pDst,
                                               const VekVlcTable_32s* pDecodeTable);

/** Decodes one run/level pair. Escape and end of block come back as run 255 and 254.
 *  @param[in,out] ppBitStream  the word cursor; moves past the code; stays where no code matches
 *  @param[in,out] pBitOffset   the word cursor's bit
 *  @param[in] pDecodeTable     a table of vekiHuffmanRunLevelTableInitAlloc_32s()
 *  @param[out] pFirst          receives the run
 *  @param[out] pSecond         receives the level
 *  @return vekStsOk; vekStsErrNullPtr for a null pointer or `*ppBitStream`; vekStsErrVlcData, with nothing written, if
 *          no code matches (which is also what the pair run 241, level 240 reads as)
 */
VEKVC_API VekStatus vekiDecodeHuffmanPair_1u16s(Vek32u** ppBitStream, Vek32s* pBitOffset,
                                                const VekVlcTable_32s* pDecodeTable, Vek8u* pFirst, Vek16s* pSecond);

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

/** Builds a run/level encode table.
 *  @param[in] pSrcTable   the code list, records `code, run, level` with both signs of each level
 *  @param[out] ppDstSpec  receives the table, one block from vekMalloc(); release it with vekFree()
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrMemAlloc, with nothing written, if there is no memory for the table.
 *          Records with a negative run, a run above 4095 or a place outside the table are not entered. Where a run's
 *          levels do not come in pairs of both signs, codes may take the place of other runs' codes.
 */
VEKVC_API VekStatus vekiCreateRLEncodeTable(const Vek32s* pSrcTable, VekRLEncodeTable** ppDstSpec);

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
 *  one
 *  is flipped. The sum is formed in eight lanes that saturate at 16 bits (lane k: positions k, k + 8, ... k + 56) and
 *  only then joined.
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
