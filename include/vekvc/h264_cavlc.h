/** @file h264_cavlc.h
 *  H.264 residual coding: CAVLC block decoding, Exp-Golomb codes, and the analysis half of a CAVLC encoder.
 *
 *  The bit stream is a sequence of native 32-bit words, each read from its most significant bit down; `**ppBitStream`
 *  is the current word, `*pBitOffset` (31 down to 0, 31 the most significant) its next unread bit. A byte stream is
 *  loaded with the first byte of each group of four in the word's top eight bits. There is no length argument: a
 *  decoder
 *  reads at most the word that follows the one holding the last bit it consumes, so one word of padding behind the
 *  stream is enough for a valid stream, and the caller bounds a broken one.
 *
 *  Decoding tables are those of vekiHuffmanTableInitAlloc_32s(), built from the code tables of the standard. Their
 *  values: coeff_token (Table 9-5) TrailingOnes + 256 * TotalCoeff, total_zeros (Tables 9-7 to 9-9) and run_before
 *  (Table 9-10) the number itself.
 *
 *  Decoded blocks are packed: each block with at least one coefficient takes 16 (4x4), 4 (2x2) or 8 (2x4) elements at
 *  `*ppCoeffs`, which then moves past it; a block without coefficients takes none and leaves memory as it was. That is
 *  the input of the macroblock reconstruction functions.
 */
#ifndef VEKVC_H264_CAVLC_H
#define VEKVC_H264_CAVLC_H

#include "vekvc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Decodes one 4x4 block of residual_block_cavlc() (H.264 7.3.5.3.2, 9.2) into 16-bit coefficients.
 *  Levels are bounded to -32768 .. 32768 by taking levelCode modulo 65536; 32768 is stored as -32768. A run_before
 *  larger than zerosLeft is taken as zerosLeft.
 *
 *  @param[in,out] ppBitStream  the word cursor; moves past the block on success
 *  @param[in,out] pBitOffset   the word cursor's bit, 31 down to 0
 *  @param[out] pTotalCoeff     receives TotalCoeff, 0 to 16
 *  @param[in,out] ppCoeffs     where the 16 coefficients go, raster order, the others zero; moves on by 16 unless
 *                              TotalCoeff is 0, when nothing is written
 *  @param nC                   the number predicted from the neighbours (9.2.1), 0 or more; 8 and above select the
 *                              6-bit codes, for which no coefficient-token table is read
 *  @param maxNumCoeff          16, or 15 for an AC block, whose coefficients are placed one scan index higher
 *  @param[in] ppCoeffTokenTables  three tables: nC 0 and 1, 2 and 3, 4 to 7
 *  @param[in] ppTotalZerosTables  16 tables by TotalCoeff; element 0 is not read
 *  @param[in] ppRunBeforeTables   15 tables by zerosLeft, 7 to 14 all holding the column above 6; element 0 is not read
 *  @param[in] pScan            16 raster positions (0 to 15) by scan index
 *  @return vekStsOk; vekStsErrNullPtr if a pointer, `*ppBitStream` or `*ppCoeffs` is null; vekStsErrOutOfRange if
 *          @p maxNumCoeff is neither 15 nor 16, or @p nC is negative.
 *          vekStsErrVlcData if the bits match no code, TotalCoeff is above @p maxNumCoeff, total_zeros places a
 *          coefficient outside the block, or a level_prefix exceeds 35: the cursor is as on entry, `*ppCoeffs` has not
 *          moved, `*pTotalCoeff` (once coeff_token is decoded) and the 16 coefficients may be written.
 *          vekStsErrNullPtr too if a table that is needed is null: the cursor then stands where decoding stopped.
 */
VEKVC_API VekStatus vekiDecodeCAVLCCoeffs_H264_1u16s(Vek32u** ppBitStream, Vek32s* pBitOffset, Vek16s* pTotalCoeff,
                                                     Vek16s** ppCoeffs, Vek32s nC, Vek16s maxNumCoeff,
                                                     const Vek32s** ppCoeffTokenTables,
                                                     const Vek32s** ppTotalZerosTables,
                                                     const Vek32s** ppRunBeforeTables, const Vek32s* pScan);

/** Decodes one 4x4 block like vekiDecodeCAVLCCoeffs_H264_1u16s() into 32-bit coefficients; a level of 32768 is kept.
 *  @param[in,out] ppBitStream  the word cursor
 *  @param[in,out] pBitOffset   the word cursor's bit
 *  @param[out] pTotalCoeff     receives TotalCoeff, 0 to 16
 *  @param[in,out] ppCoeffs     where the 16 coefficients go; moves on by 16 unless TotalCoeff is 0
 *  @param nC                   as in the 16-bit form
 *  @param maxNumCoeff          15 or 16
 *  @param[in] ppCoeffTokenTables  three tables
 *  @param[in] ppTotalZerosTables  16 tables by TotalCoeff
 *  @param[in] ppRunBeforeTables   15 tables by zerosLeft
 *  @param[in] pScan            16 raster positions by scan index
 *  @return as in the 16-bit form
 */
VEKVC_API VekStatus vekiDecodeCAVLCCoeffs_H264_1u32s(Vek32u** ppBitStream, Vek32s* pBitOffset, Vek16s* pTotalCoeff,
                                                     Vek32s** ppCoeffs, Vek32s nC, Vek16s maxNumCoeff,
                                                     const Vek32s** ppCoeffTokenTables,
                                                     const Vek32s** ppTotalZerosTables,
                                                     const Vek32s** ppRunBeforeTables, const Vek32s* pScan);

/** Decodes the 2x2 chroma DC block of 4:2:0 (nC = -1) into 16-bit coefficients c0 to c3, which are raster positions.
 *  The frequent codes "1" (one coefficient, a trailing one) and "01" (none) of the standard are decoded without
 *  reading the tables; the three table arguments must be given nevertheless.
 *
 *  @param[in,out] ppBitStream  the word cursor; moves past the block on success
 *  @param[in,out] pBitOffset   the word cursor's bit, 31 down to 0
 *  @param[out] pTotalCoeff     receives TotalCoeff, 0 to 4
 *  @param[in,out] ppCoeffs     where the 4 coefficients go; moves on by 4 unless TotalCoeff is 0, when nothing is
 *  written
 *  @param[in] pCoeffTokenTable the table of column nC = -1
 *  @param[in] ppTotalZerosTables  4 tables by TotalCoeff (Table 9-9 a); element 0 is not read
 *  @param[in] ppRunBeforeTables   tables by zerosLeft, of which 1 to 3 are read
 *  @return vekStsOk; vekStsErrNullPtr if one of the seven pointers, `*ppBitStream` or `*ppCoeffs` is null; while
 *          decoding vekStsErrVlcData and vekStsErrNullPtr as in vekiDecodeCAVLCCoeffs_H264_1u16s(), with 4 in place
 *          of maxNumCoeff
 */
VEKVC_API VekStatus vekiDecodeCAVLCChromaDcCoeffs_H264_1u16s(Vek32u** ppBitStream, Vek32s* pBitOffset,
                                                             Vek16s* pTotalCoeff, Vek16s** ppCoeffs,
                                                             const Vek32s* pCoeffTokenTable,
                                                             const Vek32s** ppTotalZerosTables,
                                                             const Vek32s** ppRunBeforeTables);

/** Decodes the 2x2 chroma DC block of 4:2:0 into 32-bit coefficients, always through the tables.
 *  @param[in,out] ppBitStream  the word cursor
 *  @param[in,out] pBitOffset   the word cursor's bit
 *  @param[out] pTotalCoeff     receives TotalCoeff, 0 to 4
 *  @param[in,out] ppCoeffs     where the 4 coefficients go; moves on by 4 unless TotalCoeff is 0
 *  @param[in] pCoeffTokenTable the table of column nC = -1
 *  @param[in] ppTotalZerosTables  4 tables by TotalCoeff
 *  @param[in] ppRunBeforeTables   tables by zerosLeft, of which 1 to 3 are read
 *  @return as in the 16-bit form
 */
VEKVC_API VekStatus vekiDecodeCAVLCChromaDcCoeffs_H264_1u32s(Vek32u** ppBitStream, Vek32s* pBitOffset,
                                                             Vek16s* pTotalCoeff, Vek32s** ppCoeffs,
                                                             const Vek32s* pCoeffTokenTable,
                                                             const Vek32s** ppTotalZerosTables,
                                                             const Vek32s** ppRunBeforeTables);

/** Decodes the 2x4 chroma DC block of 4:2:2 (nC = -2) into 16-bit coefficients: raster order, two wide, four high.
 *  Parsing index 0 to 7 goes to raster position 0, 2, 1, 4, 6, 3, 5, 7 (H.264 8.5.11.1, ChromaArrayType 2).
 *
 *  @param[in,out] ppBitStream  the word cursor; moves past the block on success
 *  @param[in,out] pBitOffset   the word cursor's bit, 31 down to 0
 *  @param[out] pTotalCoeff     receives TotalCoeff, 0 to 8
 *  @param[in,out] ppCoeffs     where the 8 coefficients go; moves on by 8 unless TotalCoeff is 0, when nothing is
 *  written
 *  @param[in] pCoeffTokenTable the table of column nC = -2
 *  @param[in] ppTotalZerosTables  8 tables by TotalCoeff (Table 9-9 b); element 0 is not read
 *  @param[in] ppRunBeforeTables   tables by zerosLeft, of which 1 to 6 are read
 *  @return as vekiDecodeCAVLCChromaDcCoeffs_H264_1u16s(), with 8 in place of maxNumCoeff
 */
VEKVC_API VekStatus vekiDecodeCAVLCChroma422DcCoeffs_H264_1u16s(Vek32u** ppBitStream, Vek32s* pBitOffset,
                                                                Vek16s* pTotalCoeff, Vek16s** ppCoeffs,
                                                                const Vek32s* pCoeffTokenTable,
                                                                const Vek32s** ppTotalZerosTables,
                                                                const Vek32s** ppRunBeforeTables);

/** Decodes the 2x4 chroma DC block of 4:2:2 into 32-bit coefficients.
 *  @param[in,out] ppBitStream  the word cursor
 *  @param[in,out] pBitOffset   the word cursor's bit
 *  @param[out] pTotalCoeff     receives TotalCoeff, 0 to 8
 *  @param[in,out] ppCoeffs     where the 8 coefficients go; moves on by 8 unless TotalCoeff is 0
 *  @param[in] pCoeffTokenTable the table of column nC = -2
 *  @param[in] ppTotalZerosTables  8 tables by TotalCoeff
 *  @param[in] ppRunBeforeTables   tables by zerosLeft, of which 1 to 6 are read
 *  @return as in the 16-bit form
 */
VEKVC_API VekStatus vekiDecodeCAVLCChroma422DcCoeffs_H264_1u32s(Vek32u** ppBitStream, Vek32s* pBitOffset,
                                                                Vek16s* pTotalCoeff, Vek32s** ppCoeffs,
                                                                const Vek32s* pCoeffTokenTable,
                                                                const Vek32s** ppTotalZerosTables,
                                                                const Vek32s** ppRunBeforeTables);

/** Decodes one Exp-Golomb code, ue(v) or se(v) (H.264 9.1, 9.1.1), into a 16-bit value (its low 16 bits).
 *  codeNum + 1 is formed in 32 bits: with 32 leading zeros it is the 32 bits that follow the 1.
 *
 *  @param[in,out] ppBitStream  the word cursor; moves past the code on success
 *  @param[in,out] pBitOffset   the word cursor's bit
 *  @param[out] pDst            receives the value
 *  @param isSigned             0: ue(v); anything else: se(v)
 *  @return vekStsOk; vekStsErrNullPtr if a pointer or `*ppBitStream` is null; vekStsErrBadArg if `*pBitOffset` is
 *          outside 0..31; vekStsErrVlcData after more than 32 leading zeros, with nothing written
 */
VEKVC_API VekStatus vekiDecodeExpGolombOne_H264_1u16s(Vek32u** ppBitStream, Vek32s* pBitOffset, Vek16s* pDst,
                                                      Vek8u isSigned);

/** Decodes one Exp-Golomb code, ue(v) or se(v), into a 32-bit value; a ue(v) above 2^31 - 1 keeps its bit pattern.
 *  @param[in,out] ppBitStream  the word cursor; moves past the code on success
 *  @param[in,out] pBitOffset   the word cursor's bit
 *  @param[out] pDst            receives the value
 *  @param isSigned             0: ue(v); anything else: se(v)
 *  @return as vekiDecodeExpGolombOne_H264_1u16s()
 */
VEKVC_API VekStatus vekiDecodeExpGolombOne_H264_1u32s(Vek32u** ppBitStream, Vek32s* pBitOffset, Vek32s* pDst,
                                                      Vek8u isSigned);

/** Finds the syntax elements of residual_block_cavlc() (H.264 7.3.5.3.2) for a 4x4 block of 16-bit levels; writes no
 *  bits. The levels at scan indices @p lastIdx down to @p startIdx are looked at; zeros above the last coefficient do
 *  not count.
 *
 *  @param[in] pSrc             16 levels, raster order
 *  @param startIdx             the block's first scan index: 0, or 1 for AC blocks
 *  @param[in] pScan            16 raster positions (0 to 15) by scan index; those outside the walk are not used
 *  @param lastIdx              the scan index to start from, normally that of the last coefficient; at most 15
 *  @param[out] pTrailingOnes   receives TrailingOnes, 0 to 3
 *  @param[out] pTrailingOneSigns  receives their signs in the order of the stream, the first in the most significant of
 *                              the TrailingOnes bits, 1 for -1
 *  @param[out] pTotalCoeff     receives TotalCoeff
 *  @param[out] pTotalZeros     receives total_zeros; for a block of zeros their number, @p lastIdx - @p startIdx + 1
 *  @param[out] pLevels         receives the TotalCoeff - TrailingOnes other levels, highest frequency first
 *  @param[out] pRuns           receives run_before of the first TotalCoeff - 1 coefficients, highest frequency first
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrOutOfRange if @p lastIdx is above 15 or below @p startIdx
 */
VEKVC_API VekStatus vekiEncodeCoeffsCAVLC_H264_16s(const Vek16s* pSrc, Vek8u startIdx, const Vek32s* pScan,
                                                   Vek8u lastIdx, Vek8u* pTrailingOnes, Vek8u* pTrailingOneSigns,
                                                   Vek8u* pTotalCoeff, Vek8u* pTotalZeros, Vek16s* pLevels,
                                                   Vek8u* pRuns);

/** Finds the syntax elements for a 4x4 block of 32-bit levels; see vekiEncodeCoeffsCAVLC_H264_16s().
 *  @param[in] pSrc             16 levels, raster order
 *  @param startIdx             the block's first scan index
 *  @param[in] pScan            16 raster positions by scan index
 *  @param lastIdx              the scan index to start from
 *  @param[out] pTrailingOnes   receives TrailingOnes
 *  @param[out] pTrailingOneSigns  receives their signs
 *  @param[out] pTotalCoeff     receives TotalCoeff
 *  @param[out] pTotalZeros     receives total_zeros
 *  @param[out] pLevels         receives the TotalCoeff - TrailingOnes other levels
 *  @param[out] pRuns           receives TotalCoeff - 1 values of run_before
 *  @return as in the 16-bit form
 */
VEKVC_API VekStatus vekiEncodeCoeffsCAVLC_H264_32s(const Vek32s* pSrc, Vek8u startIdx, const Vek32s* pScan,
                                                   Vek8u lastIdx, Vek8u* pTrailingOnes, Vek8u* pTrailingOneSigns,
                                                   Vek8u* pTotalCoeff, Vek8u* pTotalZeros, Vek32s* pLevels,
                                                   Vek8u* pRuns);

/** Finds the syntax elements for the 2x2 chroma DC block of 4:2:0, walked from c3 to c0; 16-bit levels.
 *  @param[in] pSrc             4 levels c0 to c3
 *  @param[out] pTrailingOnes   receives TrailingOnes, 0 to 3
 *  @param[out] pTrailingOneSigns  receives their signs as in vekiEncodeCoeffsCAVLC_H264_16s()
 *  @param[out] pTotalCoeff     receives TotalCoeff, 0 to 4
 *  @param[out] pTotalZeros     receives total_zeros; 4 for a block of zeros
 *  @param[out] pLevels         receives the TotalCoeff - TrailingOnes other levels
 *  @param[out] pRuns           receives TotalCoeff - 1 values of run_before
 *  @return vekStsOk; vekStsErrNullPtr
 */
VEKVC_API VekStatus vekiEncodeChromaDcCoeffsCAVLC_H264_16s(const Vek16s* pSrc, Vek8u* pTrailingOnes,
                                                           Vek8u* pTrailingOneSigns, Vek8u* pTotalCoeff,
                                                           Vek8u* pTotalZeros, Vek16s* pLevels, Vek8u* pRuns);

/** Finds the syntax elements for the 2x2 chroma DC block of 4:2:0; 32-bit levels.
 *  @param[in] pSrc             4 levels c0 to c3
 *  @param[out] pTrailingOnes   receives TrailingOnes
 *  @param[out] pTrailingOneSigns  receives their signs
 *  @param[out] pTotalCoeff     receives TotalCoeff
 *  @param[out] pTotalZeros     receives total_zeros
 *  @param[out] pLevels         receives the TotalCoeff - TrailingOnes other levels
 *  @param[out] pRuns           receives TotalCoeff - 1 values of run_before
 *  @return vekStsOk; vekStsErrNullPtr
 */
VEKVC_API VekStatus vekiEncodeCoeffsCAVLCChromaDC2x2_H264_32s(const Vek32s* pSrc, Vek8u* pTrailingOnes,
                                                              Vek8u* pTrailingOneSigns, Vek8u* pTotalCoeff,
                                                              Vek8u* pTotalZeros, Vek32s* pLevels, Vek8u* pRuns);

/** Finds the syntax elements for the 2x4 chroma DC block of 4:2:2; 16-bit levels in raster order (two wide, four high),
 *  walked from raster position 7 over 5, 3, 6, 4, 1, 2 to 0 (the reverse of the parsing order).
 *  @param[in] pSrc             8 levels
 *  @param[out] pTrailingOnes   receives TrailingOnes, 0 to 3
 *  @param[out] pTrailingOneSigns  receives their signs as in vekiEncodeCoeffsCAVLC_H264_16s()
 *  @param[out] pTotalCoeff     receives TotalCoeff, 0 to 8
 *  @param[out] pTotalZeros     receives total_zeros; 8 for a block of zeros
 *  @param[out] pLevels         receives the TotalCoeff - TrailingOnes other levels
 *  @param[out] pRuns           receives TotalCoeff - 1 values of run_before
 *  @return vekStsOk; vekStsErrNullPtr
 */
VEKVC_API VekStatus vekiEncodeCoeffsCAVLCChromaDC2x4_H264_16s(const Vek16s* pSrc, Vek8u* pTrailingOnes,
                                                              Vek8u* pTrailingOneSigns, Vek8u* pTotalCoeff,
                                                              Vek8u* pTotalZeros, Vek16s* pLevels, Vek8u* pRuns);

/** Finds the syntax elements for the 2x4 chroma DC block of 4:2:2; 32-bit levels.
 *  @param[in] pSrc             8 levels, raster order
 *  @param[out] pTrailingOnes   receives TrailingOnes
 *  @param[out] pTrailingOneSigns  receives their signs
 *  @param[out] pTotalCoeff     receives TotalCoeff
 *  @param[out] pTotalZeros     receives total_zeros
 *  @param[out] pLevels         receives the TotalCoeff - TrailingOnes other levels
 *  @param[out] pRuns           receives TotalCoeff - 1 values of run_before
 *  @return vekStsOk; vekStsErrNullPtr
 */
VEKVC_API VekStatus vekiEncodeCoeffsCAVLCChromaDC2x4_H264_32s(const Vek32s* pSrc, Vek8u* pTrailingOnes,
                                                              Vek8u* pTrailingOneSigns, Vek8u* pTotalCoeff,
                                                              Vek8u* pTotalZeros, Vek32s* pLevels, Vek8u* pRuns);

#ifdef __cplusplus
}
#endif

#endif
