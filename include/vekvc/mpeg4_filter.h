/** @file mpeg4_filter.h
 *  MPEG-4 Part 2, H.263 and H.261: deblocking, deringing, the loop filter, upsampling and resampling.
 *
 *  Steps are signed counts of bytes. Where none is checked they are used as they are.
 */
#ifndef VEKVC_MPEG4_FILTER_H
#define VEKVC_MPEG4_FILTER_H

#include "vekvc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @name Deblocking
 *  HorEdge filters across a horizontal edge, VerEdge across a vertical one; each edge is 8 samples long.
 *  @{ */

/** The filter of H.263 Annex J inside the coding loop: of the samples A B | C D across the edge, B and C are moved
 *  towards each other by d1, which is d = (A - 4 B + 4 C - D) / 8 up to the strength S that belongs to @p QP (Table
 *  J.2), and from there on falls to 0 at 2 S: sign(d) max(0, |d| - max(0, 2 (|d| - S))). A and D move by (A - D) / 4,
 *  limited to half of |d1|. Two samples on each side are read and written.
 *  @param[in,out] pSrcDst  the first sample below the edge, or to the right of it
 *  @param srcDstStep       bytes between rows
 *  @param QP               QUANT, 1 to 31
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrQPRange
 */
VEKVC_API VekStatus vekiFilterDeblocking8x8_HorEdge_H263_8u_C1IR(Vek8u* pSrcDst, Vek32s srcDstStep, Vek32s QP);
VEKVC_API VekStatus vekiFilterDeblocking8x8_VerEdge_H263_8u_C1IR(Vek8u* pSrcDst, Vek32s srcDstStep, Vek32s QP);

/** The post-filter of ISO/IEC 14496-2 Annex F.3.1, for each line v0..v4 | v5..v9 across the edge by itself. If at least
 *  6 of the 9 neighbouring pairs differ by at most 2, the line is flat: v1 to v8 are smoothed by the filter
 *  (1 1 2 2 4 2 2 1 1) / 16, unless they differ by 2 QP or more. Else only v4 and v5 are moved towards each other, by
 *  what the frequencies e = (2 a - 5 b + 5 c - 2 d) // 8 at the edge and beside it say, unless the one at the edge is
 *  QP or more. Five samples on each side are read, four are written.
 *
 *  The standard only describes this filter. Its free choices here: // rounds halves away from zero; the samples that
 *  the smoothing needs outside v1..v8 are v0 if |v1 - v0| < QP, else v1, and v9 if |v8 - v9| < QP, else v8; e0' is
 *  the least of the magnitudes of e at the edge and beside it, with the sign of e0; the correction
 *  t = 5 (e0' - e0) // 8 is limited to the way from 0 to (v4 - v5) / 2.
 *  @param[in,out] pSrcDst  the first sample below the edge, or to the right of it
 *  @param srcDstStep       bytes between rows
 *  @param QP               the quantiser of the macroblock, 1 to 31
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrQPRange
 */
VEKVC_API VekStatus vekiFilterDeblocking8x8_HorEdge_MPEG4_8u_C1IR(Vek8u* pSrcDst, Vek32s srcDstStep, Vek32s QP);
VEKVC_API VekStatus vekiFilterDeblocking8x8_VerEdge_MPEG4_8u_C1IR(Vek8u* pSrcDst, Vek32s srcDstStep, Vek32s QP);
/** @} */

/** @name Deringing
 *  @{ */

/** The post-filter of ISO/IEC 14496-2 Annex F.3.2. An 8x8 block has the threshold (most + least + 1) >> 1 and the
 *  range most - least of its samples. Where a sample and its eight neighbours all lie on one side (below, or not below)
 *  of the block's threshold, it becomes (1 2 1, 2 4 2, 1 2 1) / 16 of them, rounded, but moves by at most QP / 2.
 *
 *  Luma is filtered by macroblocks: where the largest of the four ranges is 64 or more, blocks with a range below 32
 *  take over the threshold of the first block with the largest; where it is below 16 all is copied. A chroma block with
 *  a range below 16 is copied.
 *  @param[in] pSrc   16x16 samples of luma, 8x8 of chroma; one sample around them on all sides may be read
 *  @param srcStep    bytes between its rows
 *  @param[out] pDst  the result; must not overlap what is read
 *  @param dstStep    bytes between its rows
 *  @param QP         the quantiser of the macroblock, 1 to 31
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrQPRange
 */
VEKVC_API VekStatus vekiFilterDeringingLuma_MPEG4_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep,
                                                         Vek32s QP);
VEKVC_API VekStatus vekiFilterDeringingChroma_MPEG4_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst,
                                                           Vek32s dstStep, Vek32s QP);
/** @} */

/** @name Loop filter
 *  @{ */

/** The loop filter of H.261 (3.2.3) on an 8x8 block of the prediction: (1 2 1) / 4 along columns, then along rows,
 *  rounded once at the end; the first and last row are not filtered along columns, the first and last column not along
 *  rows. Only the block is read.
 *  @param[in] pSrc   the prediction
 *  @param srcStep    bytes between its rows
 *  @param[out] pDst  the result; may be the prediction, with the same step
 *  @param dstStep    bytes between its rows
 *  @return vekStsOk; vekStsErrNullPtr
 */
VEKVC_API VekStatus vekiFilterLoop8x8_H261_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep);
/** @} */

/** @name Resampling
 *  @{ */

/** Doubles a picture horizontally, vertically or both ways (H.263 Annex O, spatial scalability). Along a direction the
 *  result lies between the nearest sample A and the next-nearest B: (3 A + B + 2) >> 2, or A at the picture's sides;
 *  both ways (9 A + 3 B + 3 C + D + 8) >> 4, at a side the one-dimensional rule along it, A in the corners.
 *  @param[in] pSrc   the picture
 *  @param srcStep    bytes between its rows
 *  @param srcSize    its size
 *  @param[out] pDst  the result; must not overlap the picture
 *  @param dstStep    bytes between its rows
 *  @param direction  1 horizontal, 2 vertical, 3 both
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrStep for a source step below the width or a destination step below the
 *      width written (2 W for directions 1 and 3, else W); vekStsErrSize; vekStsErrOutOfRange for @p direction
 */
VEKVC_API VekStatus vekiUpsample2x_H263_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, VekiSize srcSize, Vek8u* pDst,
                                               Vek32s dstStep, Vek32s direction);

/** Reference picture resampling (H.263 Annex P). Sample (x, y) of the result lies at X = (pMapX[0] + pMapX[1] x +
 *  pMapX[2] y + pMapX[3] x y) >> shift, Y likewise, in 1/16 samples of the source, computed in 64 bits: between four
 *  samples A B, C D with ((16 - v) ((16 - u) A + u B) + v ((16 - u) C + u D) + 127 + roundControl) >> 8, u and v being
 *  the low 4 bits of X and Y. The caller turns the warping parameters into the maps, with the rounding of the shift in
 *  element 0.
 *  @param[in] pSrc      the source picture; nothing else is read of it
 *  @param srcStep       bytes between its rows
 *  @param srcSize       its size
 *  @param[out] pDst     the result; must not overlap the source
 *  @param dstStep       bytes between its rows
 *  @param dstSize       its size
 *  @param[in] pMapX     four numbers
 *  @param[in] pMapY     four numbers
 *  @param shift         0 to 31
 *  @param roundControl  in bit 0; other bits are ignored
 *  @param fillValue     the value of samples outside the source, 0 to 255; below 0: the nearest sample of the source
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrStep for a step below the width; vekStsErrSize; vekStsErrOutOfRange for
 *      @p shift, @p fillValue
 */
VEKVC_API VekStatus vekiResample_H263_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, VekiSize srcSize, Vek8u* pDst,
                                             Vek32s dstStep, VekiSize dstSize, const Vek32s* pMapX, const Vek32s* pMapY,
                                             Vek32s shift, Vek32s roundControl, Vek32s fillValue);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
