/** @file vc1.h
 *  VC-1 (SMPTE 421M): block transforms, sub-pixel interpolation, loop filter, overlap smoothing, range mapping,
 *  quantization, Hadamard sums.
 *
 *  Steps are signed counts of bytes, also for 16-bit elements, and are used as they are. Nothing is checked but what a
 *  function lists. Interleaved chroma has the first component (Cb) in the even bytes and the second (Cr) in the odd
 *  ones.
 */
#ifndef VEKVC_VC1_H
#define VEKVC_VC1_H

#include "vekvc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @name Inverse transform, in place
 *  @{ */

/** Inverse transform of a W x H block of coefficients (SMPTE 421M annex A): the row pass gives (sum + 4) >> 3, the
 *  column pass (sum + 64) >> 7, in blocks of 8 rows (sum + 65) >> 7 for rows 4 to 7; every result is limited to 16
 *  bits. sizeNZ shortens the work. Below 2 both ways, only the first coefficient d is read and all values become one:
 *  (c * ((r * d + 4) >> 3) + 64) >> 7 with r = 12 for W = 8, 17 for W = 4, c = 12 for H = 8, 17 for H = 4. The
 *  intermediate value is not limited and the result keeps its low 16 bits: for large |d| this differs from the full
 *  transform, deliberately. Else, at most 2 both ways in 8x8 and 4x4, 2 x 2 coefficients are read; else, at most 4
 *  both ways, 4 x 4; else all.
 *  @param pSrcDst, srcDstStep the coefficients, replaced by the residual
 *  @param sizeNZ the leading columns (width) and rows (height) outside which all coefficients are 0; any value is
 *         accepted
 *  @return vekStsOk; vekStsErrNullPtr if a pointer is null
 */
VEKVC_API VekStatus vekiTransform8x8Inv_VC1_16s_C1IR(Vek16s* pSrcDst, Vek32s srcDstStep, VekiSize sizeNZ);
VEKVC_API VekStatus vekiTransform8x4Inv_VC1_16s_C1IR(Vek16s* pSrcDst, Vek32s srcDstStep, VekiSize sizeNZ);
VEKVC_API VekStatus vekiTransform4x8Inv_VC1_16s_C1IR(Vek16s* pSrcDst, Vek32s srcDstStep, VekiSize sizeNZ);
VEKVC_API VekStatus vekiTransform4x4Inv_VC1_16s_C1IR(Vek16s* pSrcDst, Vek32s srcDstStep, VekiSize sizeNZ);
/** @} */

/** @name Inverse transform
 *  @{ */

/** Inverse transform of a W x H block of coefficients (SMPTE 421M annex A): the row pass gives (sum + 4) >> 3, the
 *  column pass (sum + 64) >> 7, in blocks of 8 rows (sum + 65) >> 7 for rows 4 to 7; every result is limited to 16
 *  bits. sizeNZ shortens the work. Below 2 both ways, only the first coefficient d is read and all values become one:
 *  (c * ((r * d + 4) >> 3) + 64) >> 7 with r = 12 for W = 8, 17 for W = 4, c = 12 for H = 8, 17 for H = 4. The
 *  intermediate value is not limited and the result keeps its low 16 bits: for large |d| this differs from the full
 *  transform, deliberately. Else, at most 2 both ways in 8x8 and 4x4, 2 x 2 coefficients are read; else, at most 4
 *  both ways, 4 x 4; else all.
 *  @param pSrc, srcStep the coefficients
 *  @param pDst, dstStep the residual; may be the source, with the same step
 *  @param sizeNZ the leading columns (width) and rows (height) outside which all coefficients are 0; any value is
 *         accepted
 *  @return vekStsOk; vekStsErrNullPtr if a pointer is null
 */
VEKVC_API VekStatus vekiTransform8x8Inv_VC1_16s_C1R(const Vek16s* pSrc, Vek32s srcStep, Vek16s* pDst, Vek32s dstStep,
                                                    VekiSize sizeNZ);
VEKVC_API VekStatus vekiTransform8x4Inv_VC1_16s_C1R(const Vek16s* pSrc, Vek32s srcStep, Vek16s* pDst, Vek32s dstStep,
                                                    VekiSize sizeNZ);
VEKVC_API VekStatus vekiTransform4x8Inv_VC1_16s_C1R(const Vek16s* pSrc, Vek32s srcStep, Vek16s* pDst, Vek32s dstStep,
                                                    VekiSize sizeNZ);
VEKVC_API VekStatus vekiTransform4x4Inv_VC1_16s_C1R(const Vek16s* pSrc, Vek32s srcStep, Vek16s* pDst, Vek32s dstStep,
                                                    VekiSize sizeNZ);
/** @} */

/** @name Forward transform, in place
 *  @{ */

/** Forward transform of a W x H block, with bases of the library's own: the inverse's rows scaled by 2^21 (length 8) or
 *  2^20 (length 4) over their squared norm. With N the length, F the basis and x the samples, a pass gives y[k] = sum
 *  of F[k][n] * x[n], in 32 bits with wrap-around (offset included), shifted down and limited to 16 bits: rows
 *  (y + 2048) >> 12 for W = 8, (y + 1024) >> 11 for W = 4; then columns (y + 524288) >> 20 for H = 8, (y + 262144) >>
 *  19 for H = 4. The basis for 8: k0 and k4 21845; k1, k3, k5, k7 29026, 27212, 16327, 7257; k2, k6 28728, 10773; for
 *  4: k0 and k2 15420; k1, k3 19751, 8978; signs and order are the inverse's.
 *  @param pSrcDst, srcDstStep the samples, replaced by the coefficients
 *  @return vekStsOk; vekStsErrNullPtr if a pointer is null
 */
VEKVC_API VekStatus vekiTransform8x8Fwd_VC1_16s_C1IR(Vek16s* pSrcDst, Vek32s srcDstStep);
VEKVC_API VekStatus vekiTransform8x4Fwd_VC1_16s_C1IR(Vek16s* pSrcDst, Vek32s srcDstStep);
VEKVC_API VekStatus vekiTransform4x8Fwd_VC1_16s_C1IR(Vek16s* pSrcDst, Vek32s srcDstStep);
VEKVC_API VekStatus vekiTransform4x4Fwd_VC1_16s_C1IR(Vek16s* pSrcDst, Vek32s srcDstStep);
/** @} */

/** @name Forward transform
 *  @{ */

/** Forward transform of a W x H block, with bases of the library's own: the inverse's rows scaled by 2^21 (length 8) or
 *  2^20 (length 4) over their squared norm. With N the length, F the basis and x the samples, a pass gives y[k] = sum
 *  of F[k][n] * x[n], in 32 bits with wrap-around (offset included), shifted down and limited to 16 bits: rows
 *  (y + 2048) >> 12 for W = 8, (y + 1024) >> 11 for W = 4; then columns (y + 524288) >> 20 for H = 8, (y + 262144) >>
 *  19 for H = 4. The basis for 8: k0 and k4 21845; k1, k3, k5, k7 29026, 27212, 16327, 7257; k2, k6 28728, 10773; for
 *  4: k0 and k2 15420; k1, k3 19751, 8978; signs and order are the inverse's.
 *  @param pSrc, srcStep the samples
 *  @param pDst, dstStep the coefficients; may be the source, with the same step
 *  @return vekStsOk; vekStsErrNullPtr if a pointer is null
 */
VEKVC_API VekStatus vekiTransform8x8Fwd_VC1_16s_C1R(const Vek16s* pSrc, Vek32s srcStep, Vek16s* pDst, Vek32s dstStep);
VEKVC_API VekStatus vekiTransform8x4Fwd_VC1_16s_C1R(const Vek16s* pSrc, Vek32s srcStep, Vek16s* pDst, Vek32s dstStep);
VEKVC_API VekStatus vekiTransform4x8Fwd_VC1_16s_C1R(const Vek16s* pSrc, Vek32s srcStep, Vek16s* pDst, Vek32s dstStep);
VEKVC_API VekStatus vekiTransform4x4Fwd_VC1_16s_C1R(const Vek16s* pSrc, Vek32s srcStep, Vek16s* pDst, Vek32s dstStep);
/** @} */

/** What the interpolation functions work on. */
typedef struct {
    const Vek8u* pSrc;   /**< the reference sample at the block's whole-sample position */
    Vek32s srcStep;      /**< its step in bytes */
    Vek8u* pDst;         /**< receives the block */
    Vek32s dstStep;      /**< its step in bytes */
    Vek32s dx;           /**< horizontal fraction in quarter samples, 0 to 3; higher bits are ignored */
    Vek32s dy;           /**< vertical fraction, likewise */
    VekiSize roiSize;    /**< the block's size; interleaved chroma: its width in pairs of samples */
    Vek32s roundControl; /**< RND, in bit 0 */
} VekVC1InterpolationParams;

/** What the interpolation functions with padding and intensity compensation work on. Positions and sizes count samples;
 *  interleaved chroma: horizontally pairs of samples. */
typedef struct {
    const Vek8u* pSrc;        /**< the reference frame's first sample; in a field picture the reference field's */
    Vek32s srcStep;           /**< the frame's step in bytes, in a field picture too: rows then lie two steps apart */
    Vek8u* pDst;              /**< receives the block */
    Vek32s dstStep;           /**< its step in bytes */
    const Vek8u* pLUTTop;     /**< 256 bytes through which reference rows of even index are mapped; null: they stay */
    const Vek8u* pLUTBottom;  /**< the same for rows of odd index. Pass one table in both where rows are of one kind:
                                    progressive references, field pictures. */
    VekiSize sizeFrame;       /**< the reference frame's size; in a field picture the height counts both fields */
    VekiSize sizeBlock;       /**< the block's size */
    Vek32s x;                 /**< the block's whole-sample column in the reference; may lie outside */
    Vek32s y;                 /**< its row, in a field picture counted in rows of the field; may lie outside */
    Vek32s dx;                /**< horizontal fraction in quarter samples, 0 to 3; higher bits are ignored */
    Vek32s dy;                /**< vertical fraction, likewise */
    Vek32s roundControl;      /**< RND, in bit 0 */
    Vek32s isReferInterlaced; /**< non-zero: rows outside the frame take the nearest row of their own parity */
    Vek32s isFieldPicture;    /**< non-zero: the reference is one field; isReferInterlaced then has no effect */
} VekVC1InterpolationBlockParams;

/** @name Bicubic interpolation
 *  @{ */

/** Bicubic interpolation (SMPTE 421M 8.3.6.5.2): taps (-4 53 18 -3), (-1 9 9 -1), (-3 18 53 -4) for the fractions 1 to
 *  3, shifts S of 6, 4, 6. Vertical: (s + 2^(S-1) - 1 + RND) >> S; horizontal: (s + 2^(S-1) - RND) >> S; both:
 *  vertical first, with the shift S(dx) + S(dy) - 7 and its rounding, then horizontal (t + 64 - RND) >> 7. The result
 *  is clipped to 0..255. The kernel is 8x8 for (width >> 4) + (height >> 4) of 0, 16x8 for 1, 16x16 for more; what of
 *  it lies inside roiSize is written.
 *  One row (column) before the block and two behind it are read, only in directions with a non-zero fraction.
 *  @param pParam the record
 *  @return vekStsOk; vekStsErrNullPtr if pParam, its pSrc or its pDst is null
 */
VEKVC_API VekStatus vekiInterpolateQPBicubic_VC1_8u_C1R(const VekVC1InterpolationParams* pParam);
/** @} */

/** @name Bilinear interpolation
 *  @{ */

/** Bilinear interpolation (SMPTE 421M 8.3.6.5.1): with A the sample, B its right neighbour, C the one below, D below
 *  right, ((4 - dx)(4 - dy)A + dx(4 - dy)B + (4 - dx)dy C + dx dy D + 8 - RND) >> 4.
 *  The kernel is 16x16 for a width of 16, 8x8 for 8x8, 8x4 for a width of 8 and any other height, else 4x4; what of it
 *  lies inside roiSize is written. One row (column) behind the block is read, only in directions with a non-zero
 *  fraction.
 *  @param pParam the record
 *  @return vekStsOk; vekStsErrNullPtr if pParam, its pSrc or its pDst is null
 */
VEKVC_API VekStatus vekiInterpolateQPBilinear_VC1_8u_C1R(const VekVC1InterpolationParams* pParam);
/** @} */

/** @name Bilinear interpolation, interleaved chroma
 *  @{ */

/** Bilinear interpolation (SMPTE 421M 8.3.6.5.1): with A the sample, B its right neighbour, C the one below, D below
 *  right, ((4 - dx)(4 - dy)A + dx(4 - dy)B + (4 - dx)dy C + dx dy D + 8 - RND) >> 4.
 *  Each component is filtered by itself: its next sample is two bytes on. Width and height count pairs: the kernel is
 *  8x8 pairs for 8x8, 8x4 for a width of 8 and any other height, else 4x4; what of it lies inside roiSize is written.
 *  One row (pair) behind the block is read, only in directions with a non-zero fraction.
 *  @param pParam the record
 *  @return vekStsOk; vekStsErrNullPtr if pParam, its pSrc or its pDst is null
 */
VEKVC_API VekStatus vekiInterpolateQPBilinear_VC1_8u_C2R(const VekVC1InterpolationParams* pParam);
/** @} */

/** @name Interpolation with padding and intensity compensation
 *  @{ */

/** As the function of the same filter, from a reference that is extended by its nearest samples beyond its edges and
 *  whose samples are mapped by pLUTTop and pLUTBottom first. Rows outside the frame (field) take its first or last
 *  row, with isReferInterlaced the nearest one of their own parity; columns take the nearest column. Only samples of
 *  the frame are read; with an empty frame nothing is done. Block sizes as for the function without padding.
 *  @param pParam the record
 *  @return vekStsOk; vekStsErrNullPtr if pParam, its pSrc or its pDst is null
 */
VEKVC_API VekStatus vekiInterpolateICBicubicBlock_VC1_8u_C1R(const VekVC1InterpolationBlockParams* pParam);
VEKVC_API VekStatus vekiInterpolateICBilinearBlock_VC1_8u_C1R(const VekVC1InterpolationBlockParams* pParam);
VEKVC_API VekStatus vekiInterpolateICBilinearBlock_VC1_8u_C2R(const VekVC1InterpolationBlockParams* pParam);
/** @} */

/** @name Loop filter, luma
 *  @{ */

/** The loop filter (SMPTE 421M 8.6.4) across one edge of 16 pixels. Of the pixels across the edge, P1 to P4 lie before
 *  pSrcDst and P5 to P8 from it on; P4 and P5 are changed. The third of each four places along the edge decides whether
 *  its segment is filtered.
 *  @param pSrcDst the first pixel below (HorEdge) or right of (VerEdge) the edge
 *  @param pQuant PQUANT; compared as it is
 *  @param srcDstStep the step
 *  @param edgeDisableFlag bit k set: pixels 4k to 4k + 3 along the edge are neither read nor written, k = 0 to 3
 *  @return vekStsOk; vekStsErrNullPtr if the pointer is null
 */
VEKVC_API VekStatus vekiFilterDeblockingLuma_HorEdge_VC1_8u_C1IR(Vek8u* pSrcDst, Vek32s pQuant, Vek32s srcDstStep,
                                                                 Vek32s edgeDisableFlag);
VEKVC_API VekStatus vekiFilterDeblockingLuma_VerEdge_VC1_8u_C1IR(Vek8u* pSrcDst, Vek32s pQuant, Vek32s srcDstStep,
                                                                 Vek32s edgeDisableFlag);
/** @} */

/** @name Loop filter, chroma
 *  @{ */

/** The loop filter (SMPTE 421M 8.6.4) across one edge of 8 pixels. Of the pixels across the edge, P1 to P4 lie before
 *  pSrcDst and P5 to P8 from it on; P4 and P5 are changed. The third of each four places along the edge decides whether
 *  its segment is filtered.
 *  @param pSrcDst the first pixel below (HorEdge) or right of (VerEdge) the edge
 *  @param pQuant PQUANT; compared as it is
 *  @param srcDstStep the step
 *  @param edgeDisableFlag bit 1 set: pixels 0 to 3 along the edge are neither read nor written; bit 2: pixels 4 to 7.
 *         Bit 0 is ignored, unlike luma's.
 *  @return vekStsOk; vekStsErrNullPtr if the pointer is null
 */
VEKVC_API VekStatus vekiFilterDeblockingChroma_HorEdge_VC1_8u_C1IR(Vek8u* pSrcDst, Vek32s pQuant, Vek32s srcDstStep,
                                                                   Vek32s edgeDisableFlag);
VEKVC_API VekStatus vekiFilterDeblockingChroma_VerEdge_VC1_8u_C1IR(Vek8u* pSrcDst, Vek32s pQuant, Vek32s srcDstStep,
                                                                   Vek32s edgeDisableFlag);
/** @} */

/** @name Loop filter, interleaved chroma
 *  @{ */

/** The loop filter (SMPTE 421M 8.6.4) across one edge of 8 pairs, each component by itself. Of the pixels across the
 *  edge, P1 to P4 lie before pSrcDst and P5 to P8 from it on; P4 and P5 are changed. The third of each four places
 *  decides whether its segment is filtered.
 *  @param pSrcDst the first pair below (HorEdge) or right of (VerEdge) the edge
 *  @param pQuant PQUANT; compared as it is
 *  @param srcDstStep the step
 *  @param edgeDisableFlagU bit 1 set: pairs 0 to 3 of the even bytes keep their values; bit 2: pairs 4 to 7
 *  @param edgeDisableFlagV the same for the odd bytes; what is disabled in both is neither read nor written
 *  @return vekStsOk; vekStsErrNullPtr if the pointer is null
 */
VEKVC_API VekStatus vekiFilterDeblockingChroma_HorEdge_VC1_8u_C2IR(Vek8u* pSrcDst, Vek32s pQuant, Vek32s srcDstStep,
                                                                   Vek32s edgeDisableFlagU, Vek32s edgeDisableFlagV);
VEKVC_API VekStatus vekiFilterDeblockingChroma_VerEdge_VC1_8u_C2IR(Vek8u* pSrcDst, Vek32s pQuant, Vek32s srcDstStep,
                                                                   Vek32s edgeDisableFlagU, Vek32s edgeDisableFlagV);
/** @} */

/** @name Overlap smoothing, luma
 *  @{ */

/** Overlap smoothing (SMPTE 421M 8.5) across a horizontal edge of 16 pixels: x0 x1 before the edge and x2 x3 behind it
 *  give (7 x0 + x3 + r0) >> 3, (-x0 + 7 x1 + x2 + x3 + r1) >> 3, (x0 + x1 + 7 x2 - x3 + r0) >> 3, (x0 + 7 x3 + r1) >>
 *  3, clipped to 0..255 and written to the two pixels before pDst and the two from it on. Every product (-x0 too) and
 *  every addition, from left to right, is limited to 16 bits. r0 is 4 in even columns and 3 in odd ones, counted from
 *  the first; r1 is 7 - r0.
 *  @param pSrcUpper, srcUpperStep the upper block's second-last row (x0); x1 is the row below it
 *  @param pSrcBottom, srcBottomStep the lower block's first row (x2); x3 is the row below it
 *  @param pDst, dstStep the lower block's first row in the picture
 *  @param edgeSmoothFlag bit 0 or 1: columns 0 to 7 are smoothed; bit 2 or 3: columns 8 to 15. What is not smoothed is
 *         neither read nor written.
 *  @return vekStsOk; vekStsErrNullPtr if a pointer is null
 */
VEKVC_API VekStatus vekiSmoothingLuma_HorEdge_VC1_16s8u_C1R(const Vek16s* pSrcUpper, Vek32s srcUpperStep,
                                                            const Vek16s* pSrcBottom, Vek32s srcBottomStep, Vek8u* pDst,
                                                            Vek32s dstStep, Vek32s edgeSmoothFlag);
/** @} */

/** @name Overlap smoothing, luma, vertical edge
 *  @{ */

/** Overlap smoothing (SMPTE 421M 8.5) across a vertical edge of 16 pixels: x0 x1 before the edge and x2 x3 behind it
 *  give (7 x0 + x3 + r0) >> 3, (-x0 + 7 x1 + x2 + x3 + r1) >> 3, (x0 + x1 + 7 x2 - x3 + r0) >> 3, (x0 + 7 x3 + r1) >>
 *  3, clipped to 0..255 and written to the two pixels before pDst and the two from it on. Every product (-x0 too) and
 *  every addition, from left to right, is limited to 16 bits. r0 is 4 in even rows and 3 in odd ones, counted from the
 *  first; r1 is 7 - r0.
 *  @param pSrcLeft, srcLeftStep the left block's second-last column (x0); x1 is the column right of it
 *  @param pSrcRight, srcRightStep the right block's first column (x2); x3 is the column right of it
 *  @param pDst, dstStep the right block's first column in the picture
 *  @param fieldNeighbourFlag 0: both blocks hold frame rows. 1: the right block holds fields, the even rows in its
 *         rows 0 to 7, the odd ones in 8 to 15. 2: the left block does. 3: both do. With 1 to 3 all 16 rows are
 *         smoothed, even picture rows with r0 = 4, odd ones with r0 = 3. With other values nothing is done.
 *  @param edgeSmoothFlag 0: nothing is done. With fieldNeighbourFlag 0: bit 0 or 1: rows 0 to 7 are smoothed; bit 2 or
 *         3: rows 8 to 15. What is not smoothed is neither read nor written.
 *  @return vekStsOk; vekStsErrNullPtr if a pointer is null
 */
VEKVC_API VekStatus vekiSmoothingLuma_VerEdge_VC1_16s8u_C1R(const Vek16s* pSrcLeft, Vek32s srcLeftStep,
                                                            const Vek16s* pSrcRight, Vek32s srcRightStep, Vek8u* pDst,
                                                            Vek32s dstStep, Vek32s fieldNeighbourFlag,
                                                            Vek32s edgeSmoothFlag);
/** @} */

/** Overlap smoothing across a horizontal edge of 8 chroma pixels by columns: as luma, always done.
 *  @param pSrcUpper, srcUpperStep the upper block's second-last row
 *  @param pSrcBottom, srcBottomStep the lower block's first row
 *  @param pDst, dstStep the first row behind the edge in the picture
 *  @return vekStsOk; vekStsErrNullPtr if a pointer is null
 */
VEKVC_API VekStatus vekiSmoothingChroma_HorEdge_VC1_16s8u_C1R(const Vek16s* pSrcUpper, Vek32s srcUpperStep,
                                                              const Vek16s* pSrcBottom, Vek32s srcBottomStep,
                                                              Vek8u* pDst, Vek32s dstStep);

/** Overlap smoothing across a vertical edge of 8 chroma pixels by rows: as luma, always done.
 *  @param pSrcLeft, srcLeftStep the left block's second-last column
 *  @param pSrcRight, srcRightStep the right block's first column
 *  @param pDst, dstStep the first column behind the edge in the picture
 *  @return vekStsOk; vekStsErrNullPtr if a pointer is null
 */
VEKVC_API VekStatus vekiSmoothingChroma_VerEdge_VC1_16s8u_C1R(const Vek16s* pSrcLeft, Vek32s srcLeftStep,
                                                              const Vek16s* pSrcRight, Vek32s srcRightStep, Vek8u* pDst,
                                                              Vek32s dstStep);

/** vekiSmoothingChroma_HorEdge_VC1_16s8u_C1R() for two planes of values whose results are interleaved: U in the even
 *  bytes, V in the odd ones.
 *  @param pSrcUpperU, srcUpperUStep the upper U block's second-last row
 *  @param pSrcBottomU, srcBottomUStep the lower U block's first row
 *  @param pSrcUpperV, srcUpperVStep the same of V
 *  @param pSrcBottomV, srcBottomVStep the same of V
 *  @param pDst, dstStep the first row behind the edge in the picture
 *  @return vekStsOk; vekStsErrNullPtr if a pointer is null
 */
VEKVC_API VekStatus vekiSmoothingChroma_HorEdge_VC1_16s8u_P2C2R(const Vek16s* pSrcUpperU, Vek32s srcUpperUStep,
                                                                const Vek16s* pSrcBottomU, Vek32s srcBottomUStep,
                                                                const Vek16s* pSrcUpperV, Vek32s srcUpperVStep,
                                                                const Vek16s* pSrcBottomV, Vek32s srcBottomVStep,
                                                                Vek8u* pDst, Vek32s dstStep);

/** vekiSmoothingChroma_VerEdge_VC1_16s8u_C1R() for two planes of values whose results are interleaved.
 *  @param pSrcLeftU, srcLeftUStep the left U block's second-last column
 *  @param pSrcRightU, srcRightUStep the right U block's first column
 *  @param pSrcLeftV, srcLeftVStep the same of V
 *  @param pSrcRightV, srcRightVStep the same of V
 *  @param pDst, dstStep the first pair behind the edge in the picture
 *  @return vekStsOk; vekStsErrNullPtr if a pointer is null
 */
VEKVC_API VekStatus vekiSmoothingChroma_VerEdge_VC1_16s8u_P2C2R(const Vek16s* pSrcLeftU, Vek32s srcLeftUStep,
                                                                const Vek16s* pSrcRightU, Vek32s srcRightUStep,
                                                                const Vek16s* pSrcLeftV, Vek32s srcLeftVStep,
                                                                const Vek16s* pSrcRightV, Vek32s srcRightVStep,
                                                                Vek8u* pDst, Vek32s dstStep);

/** @name Range mapping
 *  @{ */

/** Expands the coded sample range (SMPTE 421M 8.1.1.4): clip255((((x - 128) * (rangeMapValue + 9) + 4) >> 3) + 128).
 *  @param pSrc, srcStep the plane
 *  @param pDst, dstStep the result; may be the source
 *  @param roiSize the region; nothing is done if its width or height is below 1
 *  @param rangeMapValue RANGE_MAPY or RANGE_MAPUV, 0 to 7
 *  @return vekStsOk; vekStsErrNullPtr if a pointer is null; vekStsErrOutOfRange if rangeMapValue is outside 0..7
 */
VEKVC_API VekStatus vekiRangeMapping_VC1_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep,
                                                VekiSize roiSize, Vek32s rangeMapValue);
/** @} */

/** @name Inverse quantization
 *  @{ */

/** Levels to coefficients, in place (SMPTE 421M 8.1.3). With the step d = 2 * quant + (halfStep & 1), a level l becomes
 *  l * d (uniform quantizer) or l * d + sign(l) * quant (non-uniform; 0 stays 0). In the Intra forms the value at
 *  pSrcDst is the DC level and becomes l * dc, with dc = 2 * quant for quant 1 and 2, 8 for 3 and 4, quant / 2 + 6 from
 *  5 on. Results keep their low 16 bits.
 *  @param pSrcDst, srcDstStep the levels, replaced by the coefficients
 *  @param roiSize the columns (4 or 8) and rows (1 to 8) to work on; values outside are neither read nor written, so
 *  that a caller passes the corner that holds all levels other than 0
 *  @param quant the macroblock's quantizer scale (MQUANT), 1 to 31
 *  @param halfStep the half step (HALFQP), in bit 0; other bits are ignored
 *  @return vekStsOk; vekStsErrNullPtr if a pointer is null; vekStsErrSize if the width is not 4 or 8, or the height
 *          is outside 1..8; vekStsErrOutOfRange if quant is outside 1..31
 */
VEKVC_API VekStatus vekiQuantInvIntraUniform_VC1_16s_C1IR(Vek16s* pSrcDst, Vek32s srcDstStep, VekiSize roiSize,
                                                          Vek32s quant, Vek32s halfStep);
VEKVC_API VekStatus vekiQuantInvIntraNonuniform_VC1_16s_C1IR(Vek16s* pSrcDst, Vek32s srcDstStep, VekiSize roiSize,
                                                             Vek32s quant, Vek32s halfStep);
VEKVC_API VekStatus vekiQuantInvInterUniform_VC1_16s_C1IR(Vek16s* pSrcDst, Vek32s srcDstStep, VekiSize roiSize,
                                                          Vek32s quant, Vek32s halfStep);
VEKVC_API VekStatus vekiQuantInvInterNonuniform_VC1_16s_C1IR(Vek16s* pSrcDst, Vek32s srcDstStep, VekiSize roiSize,
                                                             Vek32s quant, Vek32s halfStep);
/** @} */

/** @name Forward quantization
 *  @{ */

/** Coefficients to levels, in place: the counterpart of the inverse form of the same name. With the step d = 2 * quant
 *  + (halfStep & 1), the magnitude of the level of c is (|c| + offset) / d (uniform) or (|c| + offset - quant) / d, 0
 *  below 0 (non-uniform), the fraction dropped; its sign is that of c. In the Intra forms the value at pSrcDst is the
 *  DC coefficient and gives the nearest level, (|c| + dc / 2) / dc with dc as in the inverse form, whatever the offset.
 *  The inverse form followed by this one gives back every level whose coefficient did not wrap.
 *  @param pSrcDst, srcDstStep the coefficients, replaced by the levels
 *  @param roiSize the columns (4 or 8) and rows (1 to 8) to work on; values outside are neither read nor written
 *  @param quant the macroblock's quantizer scale (MQUANT), 1 to 31
 *  @param halfStep the half step (HALFQP), in bit 0; other bits are ignored
 *  @param offset what is added before the division, 0 to d - 1: d / 2 rounds to the nearest value, less widens the dead
 *  zone (often d / 3 for intra blocks, d / 6 for inter blocks)
 *  @param[out] pCount the number of levels other than 0, in the Intra forms without the DC
 *  @return vekStsOk; vekStsErrNullPtr if a pointer is null; vekStsErrSize if the width is not 4 or 8, or the height
 *          is outside 1..8; vekStsErrOutOfRange if quant is outside 1..31, or offset outside 0..d - 1
 */
VEKVC_API VekStatus vekiQuantIntraUniform_VC1_16s_C1IR(Vek16s* pSrcDst, Vek32s srcDstStep, VekiSize roiSize,
                                                       Vek32s quant, Vek32s halfStep, Vek32s offset, Vek32s* pCount);
VEKVC_API VekStatus vekiQuantIntraNonuniform_VC1_16s_C1IR(Vek16s* pSrcDst, Vek32s srcDstStep, VekiSize roiSize,
                                                          Vek32s quant, Vek32s halfStep, Vek32s offset, Vek32s* pCount);
VEKVC_API VekStatus vekiQuantInterUniform_VC1_16s_C1IR(Vek16s* pSrcDst, Vek32s srcDstStep, VekiSize roiSize,
                                                       Vek32s quant, Vek32s halfStep, Vek32s offset, Vek32s* pCount);
VEKVC_API VekStatus vekiQuantInterNonuniform_VC1_16s_C1IR(Vek16s* pSrcDst, Vek32s srcDstStep, VekiSize roiSize,
                                                          Vek32s quant, Vek32s halfStep, Vek32s offset, Vek32s* pCount);
/** @} */

/** @name Hadamard sum of a source block
 *  @{ */

/** The activity of an 8x8 block without its DC: with H the Hadamard matrix of +1 and -1 and R the sum of the 63 |H P
 *  H^T| other than the first, (R + 2) >> 2. The scale is that of vekiSATD8x8T8_8u32s_C1R.
 *  @param pSrc, srcStep the block
 *  @param[out] pSum the sum, at most 16192
 *  @return vekStsOk; vekStsErrNullPtr if a pointer is null
 */
VEKVC_API VekStatus vekiHadamard8x8Sum_VC1_8u16s(const Vek8u* pSrc, Vek32s srcStep, Vek16s* pSum);
/** @} */

/** @name Hadamard sum of a residual block
 *  @{ */

/** The cost of an 8x8 residual, its DC included: with R the sum of all 64 |H P H^T|, (R + 2) >> 2, at most 32767. The
 *  elements of H P H^T are formed in 16 bits with wrap-around and read as signed; nothing wraps while |P| is at most
 *  511.
 *  @param pSrc, srcStep the block; the step counts bytes
 *  @param[out] pSum the sum
 *  @return vekStsOk; vekStsErrNullPtr if a pointer is null
 */
VEKVC_API VekStatus vekiHadamard8x8Sum_VC1_16s(const Vek16s* pSrc, Vek32s srcStep, Vek16s* pSum);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
