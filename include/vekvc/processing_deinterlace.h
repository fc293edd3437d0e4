/** @file processing_deinterlace.h
 *  Pre- and post-processing: deinterlacing of one plane of 8-bit samples (luma, or one chroma plane with its own
 *  size).
 *
 *  Rows of one field are kept and the others rebuilt. `field` 0 keeps the even rows (0, 2, ...; the top field), 1 the
 *  odd ones. For a row y, A is the row above and B the row below it; A3 and B3 are the rows y - 3 and y + 3. At the
 *  border the row on the other side stands for a missing one: A for B, B for A, A for A3, B for B3; the only row of a
 *  picture is its own neighbour. limit(v, low, high) is low if v < low, high if v > high, else v; >> of a negative
 *  number rounds down.
 *
 *  Common to all: exactly the samples of the region are read (of each source) and written. Steps are not checked; a
 *  negative one walks a picture bottom-up. Numbers such as thresholds are limited to their range, never rejected. An
 *  error writes nothing.
 */
#ifndef VEKVC_PROCESSING_DEINTERLACE_H
#define VEKVC_PROCESSING_DEINTERLACE_H

#include "vekvc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @name Blend where rows comb
 *  @{ */

typedef struct VekDeinterlaceBlendState VekDeinterlaceBlendState; /**< the weights; opaque */

/** Makes the weights of vekiDeinterlaceBlend_8u_C1R(): weight[c] is 0 up to low, 256 from high on, and
 *  floor(256 (c - low) / (high - low)) between.
 *  @param low, high     limited to 0..254 and to low + 1..255; 4 and 12 are good values
 *  @param[out] ppState  receives the state; release it with vekiDeinterlaceBlendFree_8u_C1() also after
 *                       vekStsErrMemAlloc, if it is not null
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrMemAlloc: nothing is stored if there is no memory for the state
 *          itself, a state that the operation refuses if there is none for its table
 */
VEKVC_API VekStatus vekiDeinterlaceBlendInitAlloc_8u_C1(Vek32s low, Vek32s high, VekDeinterlaceBlendState** ppState);

/** Releases the state.
 *  @param pState  not used again
 *  @return vekStsOk; vekStsErrNullPtr
 */
VEKVC_API VekStatus vekiDeinterlaceBlendFree_8u_C1(VekDeinterlaceBlendState* pState);

/** Blends both fields where they comb and leaves other samples as they are:
 *  1. The peak of a sample s is the smaller difference to A and to B where both have one sign, with that sign, else
 *     0; it is 0 in rows outside the picture.
 *  2. A sample's comb is the smaller of its peak's magnitude and the greatest magnitude of a peak of the other sign
 *     among the three nearest samples in each of the rows above and below; 0 if there is none. Thin lines have none.
 *  3. c is the greatest comb of the 3x3 samples around, rows outside the picture left out.
 *  4. With l = (A + 2 s + B + 2) >> 2, the result is s + ((weight[c] (l - s) + 128) >> 8).
 *  Columns outside the picture are those of its border.
 *  @param[in] pSrc, srcStep   the frame
 *  @param[out] pDst, dstStep  the result; must not overlap the source
 *  @param roiSize             width and height at least 1
 *  @param[in] pState          the weights; threads may share them
 *  @return vekStsOk; vekStsErrNullPtr, also for a state without table; vekStsErrSize
 */
VEKVC_API VekStatus vekiDeinterlaceBlend_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep,
                                                VekiSize roiSize, const VekDeinterlaceBlendState* pState);
/** @} */

/** @name Interpolation of one field
 *  @{ */

/** Keeps one field and interpolates the other rows along the edges in it. With replicated columns outside the picture,
 *  1. v = limit((9 (A(x) + B(x)) - (A3(x) + B3(x)) + 8) >> 4, 0, 255);
 *  2. cost(k) is the sum of |A(x + k + j) - B(x - k + j)| over j = -2..2;
 *  3. best = 2 cost(0), no direction. For the sign -1, then +1, for m = 1, 2, 3: this sign ends if x - m or x + m lies
 *     outside the picture or cost(sign m) is not below the cost one step before; if 3 cost(sign m) + 2 threshold m is
 *     below best, it becomes best and sign m the direction;
 *  4. without direction the result is v, with direction k (A(x + k) + B(x - k) + 1) >> 1 limited to the range of A(x),
 *     B(x) and v.
 *  @param[in] pSrc, srcStep   the frame
 *  @param[out] pDst, dstStep  the result; may be the source itself with the same step, must not overlap it otherwise
 *  @param roiSize             width and height at least 1
 *  @param field               0 or 1, the field that is kept
 *  @param threshold           limited to 0..255: what a direction must gain for each step; 8 is a good value, 255
 *                             practically forbids directions
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrSize; vekStsErrBadArg for another `field`
 */
VEKVC_API VekStatus vekiDeinterlaceEdgeDetect_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep,
                                                     VekiSize roiSize, Vek32s field, Vek32s threshold);

/** Keeps one field and replaces those samples of the other that stand out. With m the median of A, the sample v and B,
 *  e = |v - m| and T the threshold: k = e up to T, max(0, 2 T - e) beyond; the result is m - k for v < m, else m + k.
 *  @param[in] pSrc, srcStep   the frame
 *  @param[out] pDst, dstStep  the result; may be the source itself with the same step, must not overlap it otherwise
 *  @param roiSize             width and height at least 1
 *  @param field               0 or 1, the field that is kept
 *  @param threshold           limited to 0..255; 0 is the median, 255 a copy
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrSize; vekStsErrBadArg for another `field`
 */
VEKVC_API VekStatus vekiDeinterlaceMedianThreshold_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst,
                                                          Vek32s dstStep, VekiSize roiSize, Vek32s field,
                                                          Vek32s threshold);

/** Filters down the columns with a triangle: (A + B + 1) >> 1 for the rows that are not kept, or, with `field` 2,
 *  (A + 2 s + B + 2) >> 2 for all rows, which removes every alternation of rows.
 *  @param[in] pSrc, srcStep   the frame
 *  @param[out] pDst, dstStep  the result; must not overlap the source, but may, with `field` 0 or 1, be the source
 *                             itself with the same step
 *  @param roiSize             width and height at least 1
 *  @param field               0 or 1, the field that is kept; 2: both fields are mixed
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrSize; vekStsErrBadArg for another `field`
 */
VEKVC_API VekStatus vekiDeinterlaceTriangle_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep,
                                                   VekiSize roiSize, Vek32s field);
/** @} */

/** Keeps one field of a frame; where the picture is still, the other rows come from the fields before and after it,
 *  where it moves they are interpolated. Each frame gives two pictures, one per `field`.
 *
 *  The fields of the other parity before and after the kept one belong, if `field` = `firstField`, to pPrev (P below)
 *  and pCur (N), else to pCur (P) and pNext (N). K0, K1, K2 are the kept rows of pPrev, pCur, pNext. For a row y,
 *  with the rows y - 2 and y + 2 replaced by y where there are none, columns replicated:
 *  1. q(x) is the greatest of |P - N| >> 1, (|K0(A) - K1(A)| + |K0(B) - K1(B)|) >> 1 and the same of K2 and K1;
 *     M = max(q(x), (q(x - 1) + q(x + 1)) >> 1).
 *  2. With D = (P + N) >> 1, a = K1(A), b = K1(B), comb = max(0, D - max(a, b), min(a, b) - D):
 *     M = max(M, min(comb, |P - N|)), then M = M + max(0, M - 8).
 *  3. f0 = 2 P - P(y - 2) - P(y + 2), f1 likewise of N; f is the one of smaller magnitude if both are positive or both
 *     negative, else 0. e = limit(E + f / 8, 0, 255), the division toward zero, E what
 *     vekiDeinterlaceEdgeDetect_8u_C1R() gives for pCur with threshold 8.
 *  4. The result is limit(e, max(0, D - M), min(255, D + M)).
 *  @param[in] pPrev, pCur, pNext, srcStep  three frames that follow one another; at the ends of a sequence the current
 *                                          frame stands for the missing one
 *  @param[out] pDst, dstStep               the result; must not overlap a source
 *  @param roiSize                          width and height at least 1
 *  @param field                            0 or 1, the field that is kept
 *  @param firstField                       0 or 1, the field that is earlier in time: top or bottom
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrSize; vekStsErrBadArg for another `field` or `firstField`
 */
VEKVC_API VekStatus vekiDeinterlaceMotionAdaptive_8u_C1R(const Vek8u* pPrev, const Vek8u* pCur, const Vek8u* pNext,
                                                         Vek32s srcStep, Vek8u* pDst, Vek32s dstStep, VekiSize roiSize,
                                                         Vek32s field, Vek32s firstField);

#ifdef __cplusplus
}
#endif

#endif
