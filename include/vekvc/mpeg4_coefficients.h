/** @file mpeg4_coefficients.h
 *  MPEG-4 Part 2 (ISO/IEC 14496-2), H.263 and H.261: decoding and writing of coefficient blocks and DC values, and
 *  decoding with inverse quantization. The code tables are built in.
 *
 *  Blocks are 64 values, contiguous, in raster order (8 * row + column): quantized levels, and coefficients behind the
 *  inverse quantization.
 *
 *  The cursor: `*ppBitStream` addresses the byte that holds the next bit, `*pBitOffset` (0 to 7) bits of it, counted
 *  from the most significant one, are consumed. Bits come most significant first.
 *
 *  - Forward readers touch at most the 7 bytes behind the byte that holds the last bit that they consume. A stream that
 *    breaks off inside a block may be read beyond its end: with 16 zero bytes behind it any stream is safe, since a few
 *    zeros in a row are no code.
 *  - Writers keep the first `*pBitOffset` bits of the first byte, set those that follow the last written bit in its
 *    byte to 0, and touch no further byte; none at all where they write no bit.
 *
 *  | Argument | Meaning |
 *  |---|---|
 *  | `scan` | 1 alternate vertical, 2 alternate horizontal, any other value zigzag |
 *  | `videoComp` | 0 luminance, any other value chrominance |
 *  | `...Flag` | 0 off, any other value on |
 *  | `pIndxLastNonZero` | receives the scan index, 0 to 63, of the last coefficient |
 *  | `noDCFlag` | on: the DC is coded by itself; the codes begin at scan index 1 |
 *  | `modQuantFlag` | H.263 annex T: levels beyond 127 |
 *
 *  Decoders clear the block first: all of it, or positions 1 to 63 where the codes begin at index 1; element 0 is then
 *  neither read nor written. vekStsErrCoeffDecode stands for bits that hold no code, a wrong fixed bit, a level that
 *  is not allowed, and a coefficient behind index 63. The cursor, `*pDC` and `*pIndxLastNonZero` are then as they
 *  were; the block may be cleared and partly filled.
 *
 *  Writers limit the levels first: MPEG-4 to -2047..2047; H.263 to -127..127, with `modQuantFlag` to -1023..1023;
 *  H.261 to -127..127. What the table does not hold takes the escape; of MPEG-4's (without the reversible codes) the
 *  shorter one of types 1 and 2, type 1 of equal ones, else type 3. Blocks without a level other than 0, from the
 *  first index on, write nothing (H.261 intra: the end of block alone).
 */
#ifndef VEKVC_MPEG4_COEFFICIENTS_H
#define VEKVC_MPEG4_COEFFICIENTS_H

#include "vekvc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Decodes the differential DC of an intra block of MPEG-4 (ISO 14496-2 6.2.7, 6.3.7, tables B.13 and B.14): a size
 *  of 0 to 12, as many bits, and a marker where the size is above 8.
 *  @param[in,out] ppBitStream  current byte; moved on
 *  @param[in,out] pBitOffset   0 to 7
 *  @param[out] pDC             -4095 to 4095
 *  @param videoComp            selects table B.13 or B.14
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrBitOffset; vekStsErrCoeffDecode for a code of no size, a marker of 0
 */
VEKVC_API VekStatus vekiDecodeDCIntra_MPEG4_1u16s(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek16s* pDC,
                                                  Vek32s videoComp);

/** Decodes the levels of an intra block of MPEG-4 by table B.16, with three kinds of escape (ISO 14496-2 7.4.1.3).
 *  Refused are a second escape code behind the escapes of type 1 and 2, markers of 0, and the levels 0 and -2048
 *  behind that of type 3.
 *  @param[in,out] ppBitStream    current byte; moved behind the block
 *  @param[in,out] pBitOffset     0 to 7
 *  @param[out] pDstBlock         64 levels
 *  @param[out] pIndxLastNonZero  the last coefficient's scan index
 *  @param noDCFlag               on: from index 1
 *  @param scan                   the block's scan
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrBitOffset; vekStsErrCoeffDecode
 */
VEKVC_API VekStatus vekiDecodeCoeffsIntra_MPEG4_1u16s(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek16s* pDstBlock,
                                                      Vek32s* pIndxLastNonZero, Vek32s noDCFlag, Vek32s scan);

/** The same of an inter block, by table B.17.
 *  @param[in,out] ppBitStream    current byte; moved behind the block
 *  @param[in,out] pBitOffset     0 to 7
 *  @param[out] pDstBlock         64 levels
 *  @param[out] pIndxLastNonZero  the last coefficient's scan index
 *  @param scan                   the block's scan
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrBitOffset; vekStsErrCoeffDecode
 */
VEKVC_API VekStatus vekiDecodeCoeffsInter_MPEG4_1u16s(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek16s* pDstBlock,
                                                      Vek32s* pIndxLastNonZero, Vek32s scan);

/** Decodes the levels of an intra block of MPEG-4 by the reversible codes of table B.23, whose escape holds last, run,
 *  |level| and sign between fixed bits (7.4.1.3). A wrong fixed bit and |level| 0 are refused.
 *  @param[in,out] ppBitStream    current byte; moved behind the block
 *  @param[in,out] pBitOffset     0 to 7
 *  @param[out] pDstBlock         64 levels
 *  @param[out] pIndxLastNonZero  the last coefficient's scan index
 *  @param noDCFlag               on: from index 1
 *  @param scan                   the block's scan
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrBitOffset; vekStsErrCoeffDecode
 */
VEKVC_API VekStatus vekiDecodeCoeffsIntraRVLC_MPEG4_1u16s(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek16s* pDstBlock,
                                                          Vek32s* pIndxLastNonZero, Vek32s noDCFlag, Vek32s scan);

/** The same of an inter block.
 *  @param[in,out] ppBitStream    current byte; moved behind the block
 *  @param[in,out] pBitOffset     0 to 7
 *  @param[out] pDstBlock         64 levels
 *  @param[out] pIndxLastNonZero  the last coefficient's scan index
 *  @param scan                   the block's scan
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrBitOffset; vekStsErrCoeffDecode
 */
VEKVC_API VekStatus vekiDecodeCoeffsInterRVLC_MPEG4_1u16s(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek16s* pDstBlock,
                                                          Vek32s* pIndxLastNonZero, Vek32s scan);

/** The block of vekiDecodeCoeffsIntraRVLC_MPEG4_1u16s(), read from its end: the cursor stands behind its last bit,
 *  and the bits before the cursor are read backward. The first symbol must be a block's last coefficient; those
 *  before it belong to the block up to the next such symbol, which stays, or to the end of the bits. Bits that are
 *  left but hold no whole symbol are a fault.
 *
 *  Touches only bytes that hold bits of the @p numBits before the cursor. On a fault nothing is written.
 *  @param[in,out] ppBitStream    the byte that holds the first bit behind the block; moved back to the block's first
 *      bit
 *  @param[in,out] pBitOffset     0 to 7
 *  @param numBits                how many bits before the cursor may be read: those of the texture partition
 *  @param[out] pDstBlock         64 levels
 *  @param[out] pIndxLastNonZero  the last coefficient's scan index
 *  @param noDCFlag               on: from index 1
 *  @param scan                   the block's scan
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrBitOffset; vekStsErrSize for @p numBits below 1; vekStsErrCoeffDecode
 */
VEKVC_API VekStatus vekiDecodeCoeffsIntraRVLCBackward_MPEG4_1u16s(Vek8u** ppBitStream, Vek32s* pBitOffset,
                                                                  Vek32s numBits, Vek16s* pDstBlock,
                                                                  Vek32s* pIndxLastNonZero, Vek32s noDCFlag,
                                                                  Vek32s scan);

/** The same of an inter block.
 *  @param[in,out] ppBitStream    the byte that holds the first bit behind the block; moved back to the block's first
 *      bit
 *  @param[in,out] pBitOffset     0 to 7
 *  @param numBits                how many bits before the cursor may be read: those of the texture partition
 *  @param[out] pDstBlock         64 levels
 *  @param[out] pIndxLastNonZero  the last coefficient's scan index
 *  @param scan                   the block's scan
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrBitOffset; vekStsErrSize for @p numBits below 1; vekStsErrCoeffDecode
 */
VEKVC_API VekStatus vekiDecodeCoeffsInterRVLCBackward_MPEG4_1u16s(Vek8u** ppBitStream, Vek32s* pBitOffset,
                                                                  Vek32s numBits, Vek16s* pDstBlock,
                                                                  Vek32s* pIndxLastNonZero, Vek32s scan);

/** Decodes the DC of an intra block of H.263 (INTRADC, 5.4.1) or H.261 (4.2.4.1): 8 bits, of which 255 stands for 128;
 *  0 and 128 are not used.
 *  @param[in,out] ppBitStream  current byte; moved on
 *  @param[in,out] pBitOffset   0 to 7
 *  @param[out] pDC             the level, 1 to 254
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrBitOffset; vekStsErrCoeffDecode for the codes 0 and 128
 */
VEKVC_API VekStatus vekiDecodeDCIntra_H263_1u16s(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek16s* pDC);

/** Decodes the levels of an intra block of H.263 (TCOEF, 5.4.2). Without @p advIntraFlag by table 16 from index 1, in
 *  zigzag order whatever @p scan says; with it (annex I) by table I.2 from index 0 in the order of @p scan: zigzag for
 *  INTRA_MODE 0, alternate horizontal for 1, alternate vertical for 2.
 *
 *  Behind the escape level 0 is refused, and -128 without @p modQuantFlag; with it, -128 announces EXTENDED-LEVEL
 *  (annex T), 11 bits whose five low ones come first, of which 0 is refused.
 *  @param[in,out] ppBitStream    current byte; moved behind the block
 *  @param[in,out] pBitOffset     0 to 7
 *  @param[out] pDstBlock         64 levels
 *  @param[out] pIndxLastNonZero  the last coefficient's scan index
 *  @param advIntraFlag           annex I
 *  @param modQuantFlag           annex T
 *  @param scan                   the block's scan, with @p advIntraFlag
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrBitOffset; vekStsErrCoeffDecode
 */
VEKVC_API VekStatus vekiDecodeCoeffsIntra_H263_1u16s(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek16s* pDstBlock,
                                                     Vek32s* pIndxLastNonZero, Vek32s advIntraFlag, Vek32s modQuantFlag,
                                                     Vek32s scan);

/** Decodes the levels of an inter block of H.263, in zigzag order from index 0, by table 16. With @p altVLCFlag
 *  (annex S) a block that leads behind index 63 is decoded again, from its first bit, by table I.2.
 *  @param[in,out] ppBitStream    current byte; moved behind the block
 *  @param[in,out] pBitOffset     0 to 7
 *  @param[out] pDstBlock         64 levels
 *  @param[out] pIndxLastNonZero  the last coefficient's scan index
 *  @param altVLCFlag             annex S
 *  @param modQuantFlag           annex T
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrBitOffset; vekStsErrCoeffDecode
 */
VEKVC_API VekStatus vekiDecodeCoeffsInter_H263_1u16s(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek16s* pDstBlock,
                                                     Vek32s* pIndxLastNonZero, Vek32s altVLCFlag, Vek32s modQuantFlag);

/** @name Decoding: H.261
 *  @{ */

/** Decodes the levels of a block of H.261 (TCOEFF, 4.2.4.1, table 5) up to its end of block, in zigzag order: intra
 *  from index 1, where a block may end at once (index 0); inter from index 0, where a first bit of 1 is run 0, level
 *  1. The levels 0 and -128 behind the escape are refused.
 *  @param[in,out] ppBitStream    current byte; moved behind the block
 *  @param[in,out] pBitOffset     0 to 7
 *  @param[out] pDstBlock         64 levels
 *  @param[out] pIndxLastNonZero  the last coefficient's scan index
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrBitOffset; vekStsErrCoeffDecode
 */
VEKVC_API VekStatus vekiDecodeCoeffsIntra_H261_1u16s(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek16s* pDstBlock,
                                                     Vek32s* pIndxLastNonZero);
VEKVC_API VekStatus vekiDecodeCoeffsInter_H261_1u16s(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek16s* pDstBlock,
                                                     Vek32s* pIndxLastNonZero);
/** @} */

/** vekiDecodeCoeffsInter_MPEG4_1u16s(), then vekiQuantInvInter_MPEG4_16s_C1I().
 *  @param[in,out] ppBitStream    current byte; moved behind the block
 *  @param[in,out] pBitOffset     0 to 7
 *  @param[out] pDstBlock         64 coefficients
 *  @param[out] pIndxLastNonZero  the last coded coefficient's scan index
 *  @param[in] pSpec              initialised by vekiQuantInvInterInit_MPEG4()
 *  @param QP                     1 to 2^(bitsPerPixel - 3) - 1
 *  @param scan                   the block's scan
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrContextMatch for @p pSpec; vekStsErrBitOffset; vekStsErrQPRange;
 *      vekStsErrCoeffDecode
 */
VEKVC_API VekStatus vekiReconstructDCTBlockInter_MPEG4_1u16s(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek16s* pDstBlock,
                                                             Vek32s* pIndxLastNonZero, const Vek8u* pSpec, Vek32s QP,
                                                             Vek32s scan);

/** An intra block of H.263 without annex I: vekiDecodeDCIntra_H263_1u16s(), the other levels as
 *  vekiDecodeCoeffsIntra_H263_1u16s() if @p codedFlag is on (else they are 0, and so is the index), then
 *  vekiQuantInvIntra_H263_16s_C1I().
 *  @param[in,out] ppBitStream    current byte; moved behind the block
 *  @param[in,out] pBitOffset     0 to 7
 *  @param[out] pDstBlock         64 coefficients
 *  @param[out] pIndxLastNonZero  the last coded coefficient's scan index
 *  @param codedFlag              does the block have more than its DC?
 *  @param modQuantFlag           annex T
 *  @param QP                     1 to 31
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrBitOffset; vekStsErrQPRange; vekStsErrCoeffDecode
 */
VEKVC_API VekStatus vekiReconstructDCTBlockIntra_H263_1u16s(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek16s* pDstBlock,
                                                            Vek32s* pIndxLastNonZero, Vek32s codedFlag,
                                                            Vek32s modQuantFlag, Vek32s QP);

/** vekiDecodeCoeffsInter_H263_1u16s(), then vekiQuantInvInter_H263_16s_C1I().
 *  @param[in,out] ppBitStream    current byte; moved behind the block
 *  @param[in,out] pBitOffset     0 to 7
 *  @param[out] pDstBlock         64 coefficients
 *  @param[out] pIndxLastNonZero  the last coded coefficient's scan index
 *  @param altVLCFlag             annex S
 *  @param modQuantFlag           annex T
 *  @param QP                     1 to 31
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrBitOffset; vekStsErrQPRange; vekStsErrCoeffDecode
 */
VEKVC_API VekStatus vekiReconstructDCTBlockInter_H263_1u16s(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek16s* pDstBlock,
                                                            Vek32s* pIndxLastNonZero, Vek32s altVLCFlag,
                                                            Vek32s modQuantFlag, Vek32s QP);

/** @name Decoding with inverse quantization: H.261
 *  @{ */

/** A block of H.261: intra the DC and the other levels (vekiDecodeDCIntra_H263_1u16s(),
 *  vekiDecodeCoeffsIntra_H261_1u16s()), inter vekiDecodeCoeffsInter_H261_1u16s(); then the inverse quantization of
 *  H.263, which is that of H.261 too.
 *  @param[in,out] ppBitStream    current byte; moved behind the block
 *  @param[in,out] pBitOffset     0 to 7
 *  @param[out] pDstBlock         64 coefficients
 *  @param[out] pIndxLastNonZero  the last coded coefficient's scan index
 *  @param QP                     1 to 31
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrBitOffset; vekStsErrQPRange; vekStsErrCoeffDecode
 */
VEKVC_API VekStatus vekiReconstructDCTBlockIntra_H261_1u16s(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek16s* pDstBlock,
                                                            Vek32s* pIndxLastNonZero, Vek32s QP);
VEKVC_API VekStatus vekiReconstructDCTBlockInter_H261_1u16s(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek16s* pDstBlock,
                                                            Vek32s* pIndxLastNonZero, Vek32s QP);
/** @} */

/** Writes the differential DC of an intra block of MPEG-4 (tables B.13 and B.14).
 *  @param[in,out] ppBitStream  current byte; moved on
 *  @param[in,out] pBitOffset   0 to 7
 *  @param dc                   -4095 to 4095
 *  @param videoComp            selects the table
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrBitOffset; vekStsErrOutOfRange for @p dc
 */
VEKVC_API VekStatus vekiEncodeDCIntra_MPEG4_16s1u(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek16s dc, Vek32s videoComp);

/** @name Writing: MPEG-4, intra
 *  @{ */

/** Writes the levels of an intra block of MPEG-4 by table B.16, and by the reversible codes of table B.23.
 *  @param[in,out] ppBitStream  current byte; moved behind the block
 *  @param[in,out] pBitOffset   0 to 7
 *  @param[in] pSrcBlock        64 levels, all of which may be read
 *  @param noDCFlag             on: from index 1
 *  @param scan                 the block's scan
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrBitOffset
 */
VEKVC_API VekStatus vekiEncodeCoeffsIntra_MPEG4_16s1u(Vek8u** ppBitStream, Vek32s* pBitOffset, const Vek16s* pSrcBlock,
                                                      Vek32s noDCFlag, Vek32s scan);
VEKVC_API VekStatus vekiEncodeCoeffsIntraRVLC_MPEG4_16s1u(Vek8u** ppBitStream, Vek32s* pBitOffset,
                                                          const Vek16s* pSrcBlock, Vek32s noDCFlag, Vek32s scan);
/** @} */

/** @name Writing: MPEG-4, inter
 *  @{ */

/** Writes the levels of an inter block of MPEG-4 by table B.17, and by the reversible codes of table B.23.
 *  @param[in,out] ppBitStream  current byte; moved behind the block
 *  @param[in,out] pBitOffset   0 to 7
 *  @param[in] pSrcBlock        64 levels
 *  @param scan                 the block's scan
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrBitOffset
 */
VEKVC_API VekStatus vekiEncodeCoeffsInter_MPEG4_16s1u(Vek8u** ppBitStream, Vek32s* pBitOffset, const Vek16s* pSrcBlock,
                                                      Vek32s scan);
VEKVC_API VekStatus vekiEncodeCoeffsInterRVLC_MPEG4_16s1u(Vek8u** ppBitStream, Vek32s* pBitOffset,
                                                          const Vek16s* pSrcBlock, Vek32s scan);
/** @} */

/** Writes the DC of an intra block of H.263 or H.261 in 8 bits: 128 as 255, any other value as itself.
 *  @param[in,out] ppBitStream  current byte; moved on by 8 bits
 *  @param[in,out] pBitOffset   0 to 7
 *  @param dc                   1 to 254
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrBitOffset; vekStsErrOutOfRange for @p dc
 */
VEKVC_API VekStatus vekiEncodeDCIntra_H263_16s1u(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek16s dc);

/** Writes the levels of an intra block of H.263 as vekiDecodeCoeffsIntra_H263_1u16s() reads them.
 *  @param[in,out] ppBitStream  current byte; moved behind the block
 *  @param[in,out] pBitOffset   0 to 7
 *  @param[in] pSrcBlock        64 levels
 *  @param advIntraFlag         annex I
 *  @param modQuantFlag         annex T
 *  @param scan                 the block's scan, with @p advIntraFlag
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrBitOffset
 */
VEKVC_API VekStatus vekiEncodeCoeffsIntra_H263_16s1u(Vek8u** ppBitStream, Vek32s* pBitOffset, const Vek16s* pSrcBlock,
                                                     Vek32s advIntraFlag, Vek32s modQuantFlag, Vek32s scan);

/** Writes the levels of an inter block of H.263, by table 16.
 *  @param[in,out] ppBitStream  current byte; moved behind the block
 *  @param[in,out] pBitOffset   0 to 7
 *  @param[in] pSrcBlock        64 levels
 *  @param modQuantFlag         annex T
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrBitOffset
 */
VEKVC_API VekStatus vekiEncodeCoeffsInter_H263_16s1u(Vek8u** ppBitStream, Vek32s* pBitOffset, const Vek16s* pSrcBlock,
                                                     Vek32s modQuantFlag);

/** @name Writing: H.261
 *  @{ */

/** Writes the levels of a block of H.261 and its end of block: intra from index 1, inter from index 0.
 *  @param[in,out] ppBitStream  current byte; moved behind the block
 *  @param[in,out] pBitOffset   0 to 7
 *  @param[in] pSrcBlock        64 levels
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrBitOffset
 */
VEKVC_API VekStatus vekiEncodeCoeffsIntra_H261_16s1u(Vek8u** ppBitStream, Vek32s* pBitOffset, const Vek16s* pSrcBlock);
VEKVC_API VekStatus vekiEncodeCoeffsInter_H261_16s1u(Vek8u** ppBitStream, Vek32s* pBitOffset, const Vek16s* pSrcBlock);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
