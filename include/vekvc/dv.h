/** @file dv.h
 *  DV (IEC 61834-2, SMPTE 314M) and DV100 (SMPTE 370M): entropy decoding of video segments, inverse quantization with
 *  weighting, the 2-4-8 DCT, and the conversion of decoded macroblocks to interleaved 4:2:2 pictures, whole or reduced.
 *
 *  A video segment is 400 bytes: five DIF blocks of 80 bytes, one macroblock each. Of a DIF block, bytes 0 to 2 (its
 *  ID) play no part; byte 3 holds STA and QNO; bytes 4 to 79 are 608 bits, most significant first, divided into one
 *  area per block of the macroblock, in block order:
 *
 *  | kind | blocks of a macroblock | area sizes in bits |
 *  |---|---|---|
 *  | DV, 25 Mb/s | Y0 Y1 Y2 Y3 Cr Cb | 112 112 112 112 80 80 |
 *  | DV, 50 Mb/s | Y0 Y1 Cr Cb, coded as Y0 X0 Y1 X1 Cr Cb | 112 112 112 112 80 80 |
 *  | DV100 | Y0 Y1 Y2 Y3 Cr0 Cr1 Cb0 Cb1 | 80 80 80 80 80 80 64 64 |
 *
 *  An area begins with the DC (9 bits), the DCT mode (1 bit) and the class (2 bits); its other bits, and those that
 *  other blocks leave, hold run/amplitude codes. X0 and X1 are filler blocks: parsed like any block and dropped.
 *
 *  Blocks are 64 coefficients in raster order, one block after the other in block order, macroblock after macroblock.
 *  In 2-4-8 blocks rows 0 to 3 hold the vertical frequencies 0 to 3 of the sums of line pairs, rows 4 to 7 those of the
 *  differences. Samples are zero-centred; the conversions add 128. The inverse DCT of 8-8 blocks is
 *  vekiDCT8x8Inv_16s_C1I() (dct.h).
 *
 *  Selectors are masked to the bits that they use, never rejected; steps are not checked.
 */
#ifndef VEKVC_DV_H
#define VEKVC_DV_H

#include "vekvc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** What is known of one block besides its coefficients. */
typedef struct VekDVBlockInfo {
    Vek8u dctMode;     /**< 0: 8-8, 1: 2-4-8. DV100: 0 frame, 1 field; only a macroblock's first record counts */
    Vek8u classNo;     /**< 0 to 3 */
    Vek8u qNo;         /**< QNO of the macroblock, 0 to 15 */
    Vek8u sta;         /**< STA of the macroblock, 0 to 15; 0 where the recorder saw no error */
    Vek8u last;        /**< scan index of the last non-zero AC coefficient; 0: none */
    Vek8u end;         /**< the pass (1, 2, 3) that met the end of the block; 0: the segment ran out before it; 4: a run
                            passed index 63 */
    Vek8u reserved[2]; /**< 0 */
} VekDVBlockInfo;

typedef Vek32s VekDVHuffmanTable_32s; /**< an entry of the opaque decoding table, which is passed by its first entry */

/** Builds the decoding table of all kinds. It depends on nothing; one serves any number of threads.
 *  @param[out] ppTable  receives the table, one block from vekMalloc(); release it with vekiHuffmanTableFree_DV_32s()
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrMemAlloc, with a null pointer written, if there is no memory
 */
VEKVC_API VekStatus vekiHuffmanTableInitAlloc_DV_32s(VekDVHuffmanTable_32s** ppTable);

/** Releases the table.
 *  @param[in] pTable  the table
 *  @return vekStsOk; vekStsErrNullPtr
 */
VEKVC_API VekStatus vekiHuffmanTableFree_DV_32s(VekDVHuffmanTable_32s* pTable);

/** @name Video segments
 *  @{ */

/** Decodes one video segment in three passes (IEC 61834-2, SMPTE 314M, arrangement of a compressed macroblock and of a
 *  video segment): each block reads its own area; then the unfinished blocks of a macroblock read what its others left;
 *  then those of the segment what its macroblocks left. A block that no pass ends keeps the coefficients it has.
 *  Coefficients are quantized levels, -255 to 255; element 0 is the DC, -256 to 255. A run past index 63 ends its
 *  block. Damage is no error: any 400 bytes decode.
 *  @param[in] pSrc    400 bytes; the results depend on bytes 3 to 79 of each DIF block
 *  @param[out] pDst   receives all blocks: 30 (DV), 20 (DV 4:2:2: Y0 Y1 Cr Cb) or 40 (DV100)
 *  @param[out] pInfo  receives as many records
 *  @param[in] pTable  the table of vekiHuffmanTableInitAlloc_DV_32s()
 *  @return vekStsOk; vekStsErrNullPtr
 */
VEKVC_API VekStatus vekiDecodeCoeffsSegment_DV_1u16s(const Vek8u* pSrc, Vek16s* pDst, VekDVBlockInfo* pInfo,
                                                     const VekDVHuffmanTable_32s* pTable);
VEKVC_API VekStatus vekiDecodeCoeffsSegment422_DV_1u16s(const Vek8u* pSrc, Vek16s* pDst, VekDVBlockInfo* pInfo,
                                                        const VekDVHuffmanTable_32s* pTable);
VEKVC_API VekStatus vekiDecodeCoeffsSegment_DV100_1u16s(const Vek8u* pSrc, Vek16s* pDst, VekDVBlockInfo* pInfo,
                                                        const VekDVHuffmanTable_32s* pTable);
/** @} */

/** Inverse-quantizes and weights blocks of DV in place, each by its own record: with s the quantization shift of the
 *  coefficient's area (IEC 61834-2), plus 1 for class 3, and iw the inverse weight of its place in the block's DCT mode
 *  in units of 2^-14, (((level << (s + 2)) * iw) + 16384) >> 15, the left shift wrapping at 16 bits. The DC becomes 4
 *  times itself, wrapping. The result is the coefficient of the orthonormal DCT.
 *  @param[in,out] pSrcDst  @p count blocks
 *  @param[in] pInfo        @p count records; dctMode, classNo and qNo are read, masked to 1, 2 and 4 bits
 *  @param count            number of blocks
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrSize if @p count is below 1
 */
VEKVC_API VekStatus vekiQuantInv8x8xN_DV_16s_C1I(Vek16s* pSrcDst, const VekDVBlockInfo* pInfo, Vek32s count);

/** Inverse-quantizes and weights blocks of DV100 in place (SMPTE 370M): ((level << classNo) * step * W + 16) >> 5,
 *  saturated to 16 bits, with the step of the record's qNo and the weight W of the coefficient's place. The DC becomes
 *  4 times itself, wrapping. Levels outside -255 to 255 give unspecified coefficients.
 *  @param[in,out] pSrcDst  @p count blocks
 *  @param[in] pInfo        @p count records; classNo and qNo are read, masked
 *  @param count            number of blocks
 *  @param weightSet        0: 1080 lines, luma; 1: 1080, chroma; 2: 720, luma; 3: 720, chroma; other bits are ignored
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrSize if @p count is below 1
 */
VEKVC_API VekStatus vekiQuantInv8x8xN_DV100_16s_C1I(Vek16s* pSrcDst, const VekDVBlockInfo* pInfo, Vek32s count,
                                                    Vek32s weightSet);

/** @name 2-4-8 DCT
 *  @{ */

/** The orthonormal 2-4-8 DCT (SMPTE 314M), inverse and forward, in place: an 8-point DCT along the rows, 4-point DCTs
 *  along the columns of the sums and of the differences of line pairs. Each result is the ideal value rounded to the
 *  nearest integer, ties upward (and what lies less than 2^-30 below a tie like the tie), and saturated to 16 bits.
 *  Samples of lines 2z and 2z + 1 of a block come from rows z (sums) and 4 + z (differences).
 *  @param[in,out] pSrcDst  64 coefficients, replaced by samples, or the other way round
 *  @return vekStsOk; vekStsErrNullPtr
 */
VEKVC_API VekStatus vekiDCT8x8Inv248_DV_16s_C1I(Vek16s* pSrcDst);
VEKVC_API VekStatus vekiDCT8x8Fwd248_DV_16s_C1I(Vek16s* pSrcDst);
/** @} */

/** @name Conversion to interleaved 4:2:2
 *  @{ */

/** Stores the samples of a macroblock's blocks, plus 128 and clipped to 0..255, as bytes Cb Y Cr Y for every two luma
 *  samples. Chroma of 4:1:1 is repeated; each line of 4:2:0 chroma serves two luma lines of its own field. Written are
 *  - 4:1:1: 64 bytes in 8 rows, or, where bit 0 of `edge` is set, the macroblock of 16x16 samples at the right edge of
 *    the picture: 32 bytes in 16 rows;
 *  - 4:2:0: 32 bytes in 16 rows;
 *  - 4:2:2: 32 bytes in 8 rows;
 *  - DV100, by bits 0 and 1 of `layout`: 0 frame order, 1 field order (Y0 Y1 Cr0 Cb0 are the even rows), 32 bytes in 16
 *    rows; 2 and 3 the macroblock of 32x8 samples in the bottom row of 1080 lines, 64 bytes in 8 rows.
 *  @param[in] pSrc   the macroblock's blocks of samples: 6 (4:2:0) or 4 (4:2:2)
 *  @param[out] pDst  the Cb byte of the macroblock's first luma sample
 *  @param dstStep    bytes between rows that follow one another in the picture, for fields too
 *  @return vekStsOk; vekStsErrNullPtr
 */
VEKVC_API VekStatus vekiYCrCb420ToCbYCr422_DV_16s8u_C2R(const Vek16s* pSrc, Vek8u* pDst, Vek32s dstStep);
VEKVC_API VekStatus vekiYCrCb422ToCbYCr422_DV_16s8u_C2R(const Vek16s* pSrc, Vek8u* pDst, Vek32s dstStep);
/** @} */

/** vekiYCrCb420ToCbYCr422_DV_16s8u_C2R() for 4:1:1.
 *  @param[in] pSrc   the macroblock's 6 blocks of samples
 *  @param[out] pDst  the Cb byte of the macroblock's first luma sample
 *  @param dstStep    bytes between rows that follow one another in the picture, for fields too
 *  @param edge       bit 0: the macroblock lies at the right edge of the picture and has 16x16 samples
 *  @return vekStsOk; vekStsErrNullPtr
 */
VEKVC_API VekStatus vekiYCrCb411ToCbYCr422_DV_16s8u_C2R(const Vek16s* pSrc, Vek8u* pDst, Vek32s dstStep, Vek32s edge);

/** vekiYCrCb420ToCbYCr422_DV_16s8u_C2R() for DV100.
 *  @param[in] pSrc   the macroblock's 8 blocks of samples
 *  @param[out] pDst  the Cb byte of the macroblock's first luma sample
 *  @param dstStep    bytes between rows that follow one another in the picture, for fields too
 *  @param layout     bits 0 and 1: 0 frame order, 1 field order, 2 and 3 the macroblock of 32x8 samples
 *  @return vekStsOk; vekStsErrNullPtr
 */
VEKVC_API VekStatus vekiYCrCb422ToCbYCr422_DV100_16s8u_C2R(const Vek16s* pSrc, Vek8u* pDst, Vek32s dstStep,
                                                           Vek32s layout);

/** @name Conversion to reduced interleaved 4:2:2
 *  @{ */

/** The like conversion reduced by n = 2^zoom in both directions: each byte is the mean of the n x n bytes of its
 *  component that the conversion at full size would store, (sum + n * n / 2) >> (2 * zoom). `edge` and `layout` are
 *  those of the conversions at full size.
 *  @param[in] pSrc   the macroblock's blocks of samples
 *  @param[out] pDst  the Cb byte of the reduced macroblock; written are n-ths of the bytes and rows of the full size
 *  @param dstStep    bytes between rows of the reduced picture
 *  @param zoom       bits 0 and 1: 0 full size, 1 half, 2 a quarter, 3 an eighth
 *  @return vekStsOk; vekStsErrNullPtr
 */
VEKVC_API VekStatus vekiYCrCb420ToCbYCr422ZoomOut_DV_16s8u_C2R(const Vek16s* pSrc, Vek8u* pDst, Vek32s dstStep,
                                                               Vek32s zoom);
VEKVC_API VekStatus vekiYCrCb422ToCbYCr422ZoomOut_DV_16s8u_C2R(const Vek16s* pSrc, Vek8u* pDst, Vek32s dstStep,
                                                               Vek32s zoom);
/** @} */

/** vekiYCrCb420ToCbYCr422ZoomOut_DV_16s8u_C2R() for 4:1:1.
 *  @param[in] pSrc   the macroblock's 6 blocks of samples
 *  @param[out] pDst  the Cb byte of the reduced macroblock
 *  @param dstStep    bytes between rows of the reduced picture
 *  @param edge       as in vekiYCrCb411ToCbYCr422_DV_16s8u_C2R()
 *  @param zoom       bits 0 and 1: 0 full size, 1 half, 2 a quarter, 3 an eighth
 *  @return vekStsOk; vekStsErrNullPtr
 */
VEKVC_API VekStatus vekiYCrCb411ToCbYCr422ZoomOut_DV_16s8u_C2R(const Vek16s* pSrc, Vek8u* pDst, Vek32s dstStep,
                                                               Vek32s edge, Vek32s zoom);

/** vekiYCrCb420ToCbYCr422ZoomOut_DV_16s8u_C2R() for DV100.
 *  @param[in] pSrc   the macroblock's 8 blocks of samples
 *  @param[out] pDst  the Cb byte of the reduced macroblock
 *  @param dstStep    bytes between rows of the reduced picture
 *  @param layout     as in vekiYCrCb422ToCbYCr422_DV100_16s8u_C2R()
 *  @param zoom       bits 0 and 1: 0 full size, 1 half, 2 a quarter, 3 an eighth
 *  @return vekStsOk; vekStsErrNullPtr
 */
VEKVC_API VekStatus vekiYCrCb422ToCbYCr422ZoomOut_DV100_16s8u_C2R(const Vek16s* pSrc, Vek8u* pDst, Vek32s dstStep,
                                                                  Vek32s layout, Vek32s zoom);

#ifdef __cplusplus
}
#endif

#endif
