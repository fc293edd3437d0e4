/** @file processing_denoise.h
 *  Pre- and post-processing: denoising of one plane of 8-bit samples (luma, or one chroma plane with its own size).
 *
 *  Common to all: exactly the samples of the region are read (of each source) and written; samples beyond the border
 *  are those of the border unless the filter says otherwise. Steps are not checked; a negative one walks a picture
 *  bottom-up. Numbers such as `noise` are limited to their range, never rejected. An error writes nothing. limit(v,
 *  low, high) is low if v < low, high if v > high, else v; >> of a negative number rounds down.
 *
 *  `noise` is the standard deviation of the noise in quarters of a grey level, limited to 6..255.
 *
 *  A state is used by one call at a time. Its ...InitAlloc function stores the state as soon as there is memory for
 *  it: after vekStsErrMemAlloc it is null as before, or a state that the operation refuses and ...Free releases.
 *
 *  The binomial smoothing of common_smooth.h belongs to these filters too.
 */
#ifndef VEKVC_PROCESSING_DENOISE_H
#define VEKVC_PROCESSING_DENOISE_H

#include "vekvc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @name Recursive, in time and space
 *  @{ */

typedef struct VekDenoiseAdaptiveState VekDenoiseAdaptiveState; /**< the history of one plane of one sequence; opaque */

/** Makes the state for the frames of one plane of a sequence: the estimates H are 0 and the gains G 255, which means
 *  that there is no history. For another size, sequence or noise make another state; a cut within a sequence needs
 *  nothing.
 *  @param size          width and height of the plane, at least 1
 *  @param noise         6..255; the thresholds T[k] are limit(isqrt((25 noise^2 k) >> 12), 1, 255),
 *                       isqrt rounding down
 *  @param frames        limited to 1..64: over how many frames is averaged where nothing moves; 10 is a good value, 1
 *                       denoises in space only. The least gain is floor(256 / frames)
 *  @param[out] ppState  receives the state; release it with vekiFilterDenoiseAdaptiveFree_8u_C1()
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrSize; vekStsErrMemAlloc, also if the state would pass what
 *          vekMalloc() can be asked for
 */
VEKVC_API VekStatus vekiFilterDenoiseAdaptiveInitAlloc_8u_C1(VekiSize size, Vek32s noise, Vek32s frames,
                                                             VekDenoiseAdaptiveState** ppState);

/** Releases the state.
 *  @param pState  not used again
 *  @return vekStsOk; vekStsErrNullPtr
 */
VEKVC_API VekStatus vekiFilterDenoiseAdaptiveFree_8u_C1(VekDenoiseAdaptiveState* pState);

/** Denoises the next frame. With lo = 4 noise, for every pixel:
 *  1. e = 16 s - H; se and sa are the sums of e and of |e| over the 3x3 pixels around with the weights 1 2 1 by 1 2 1;
 *     M = max((11 |se|) >> 7, sa >> 4).
 *  2. k = max(G + 1, floor(256 limit(M - lo, 0, lo) / lo)).
 *  3. The new H is H + ((k e + 128) >> 8), the new G max(least gain, floor(256 k / (256 + k))) - 1.
 *  4. With b = (H + 8) >> 4 of the new H, over the 5x5 pixels around, with the weights max(0, T[k] - |difference of
 *     b|): num is the weighted sum of the differences of b to the pixel's own, den the sum of the weights. The result
 *     is limit((H + floor((32 num + den) / (2 den)) + 8) >> 4, 0, 255).
 *  @param[in] pSrc, srcStep   the frame, of the state's size
 *  @param[out] pDst, dstStep  the result; may be the source itself with the same step, must not overlap it otherwise
 *  @param[in,out] pState      the history
 *  @return vekStsOk; vekStsErrNullPtr, also for a state without table
 */
VEKVC_API VekStatus vekiFilterDenoiseAdaptive_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep,
                                                     VekDenoiseAdaptiveState* pState);
/** @} */

/** Replaces each sample by a weighted mean of the 5x5 positions around it in pCur and the 3x3 positions in pPrev and
 *  pNext, the weights falling with the distance of the 5x5 patches around both. With Th = (25 noise + 1) >> 1 and
 *  R = floor(2^22 / Th), for each frame F and displacement (dx, dy) but (0, 0) in pCur:
 *  1. d(x, y) = |Cur(x, y) - F(x + dx, y + dy)|; SAD is the sum of d over the 5x5 pixels around, those outside the
 *     picture being the d of the border.
 *  2. The weight is ((Th - SAD) R) >> 16 if SAD < Th, else 0. num is the sum of weight (F(x + dx, y + dy) - Cur(x,
 *     y)), den is 32 and the sum of the weights.
 *  The result is Cur(x, y) + floor((2 num + den) / (2 den)).
 *  @param[in] pPrev, pCur, pNext, srcStep  three frames that follow one another; at the ends of a sequence the current
 *                                          frame stands for the missing one
 *  @param[out] pDst, dstStep               the result; must not overlap a source
 *  @param roiSize                          width and height at least 1
 *  @param noise                            6..255
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrSize
 */
VEKVC_API VekStatus vekiFilterDenoiseCAST_8u_C1R(const Vek8u* pPrev, const Vek8u* pCur, const Vek8u* pNext,
                                                 Vek32s srcStep, Vek8u* pDst, Vek32s dstStep, VekiSize roiSize,
                                                 Vek32s noise);

/** @name Mosquito noise of block codecs
 *  @{ */

typedef struct VekDenoiseMosquitoState VekDenoiseMosquitoState; /**< scratch for planes of one size; opaque */

/** Makes the scratch memory for planes of one size: the contrasts of their 8x8 blocks, with a margin of one block that
 *  stays 0.
 *  @param size          width and height of the planes, at least 1
 *  @param[out] ppState  receives the state; release it with vekiFilterDenoiseMosquitoFree_8u_C1()
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrSize; vekStsErrMemAlloc
 */
VEKVC_API VekStatus vekiFilterDenoiseMosquitoInitAlloc_8u_C1(VekiSize size, VekDenoiseMosquitoState** ppState);

/** Releases the state.
 *  @param pState  not used again
 *  @return vekStsOk; vekStsErrNullPtr
 */
VEKVC_API VekStatus vekiFilterDenoiseMosquitoFree_8u_C1(VekDenoiseMosquitoState* pState);

/** Smooths the ringing of a block codec around edges, along the direction of each 8x8 block; the blocks' grid begins
 *  at the plane's corner, the last column and row of blocks may be smaller. With s the strength, for each block:
 *  1. C is the greatest contrast (greatest less least sample) of the 3x3 blocks around; f = min(16, floor(4 C / s)),
 *     p = (floor((3 s + 2) / 4) f + 8) >> 4, q = (floor((s + 2) / 4) f + 8) >> 4.
 *  2. The direction is the lowest-numbered one of greatest score: the sum over its lines of (sum of sample - 128)^2
 *     times 840 / (number of samples), on the 8x8 samples from column min(8 bx, width - 8) and row
 *     min(8 by, height - 8). The sample in column j and row i belongs to line
 *     0: i + j; 1: i + (j >> 1); 2: i; 3: 3 + i - (j >> 1); 4: 7 + i - j; 5: 3 - (i >> 1) + j; 6: j; 7: (i >> 1) + j.
 *  3. First and second step along the directions, columns and rows: 0: (1,-1) (2,-2); 1: (1,0) (2,-1); 2: (1,0) (2,0);
 *     3: (1,0) (2,1); 4: (1,1) (2,2); 5: (0,1) (1,2); 6: (0,1) (0,2); 7: (0,1) (-1,2).
 *  4. A pixel c has taps at both steps of both signs: along the direction with weight 3 and S = p; along the
 *     directions 2 and 6 further, modulo 8, with weight 2 at the first step and 1 at the second and S = q. A tap
 *     outside the plane is left out. With d = tap - c and r = max(0, 5 - floor(log2(max(1, S)))) it adds
 *     weight sign(d) min(|d|, max(0, S - (|d| >> r))) to sum.
 *  5. The result is c + ((8 + sum - (1 if sum < 0, else 0)) >> 4), limited to the range of c and all its taps.
 *  @param[in] pSrc, srcStep   the plane, of the state's size
 *  @param[out] pDst, dstStep  the result; must not overlap the source
 *  @param strength            limited to 0..63: the quantiser scale of MPEG-1, -2, -4 or H.263; 0 copies
 *  @param[in,out] pState      the scratch memory
 *  @return vekStsOk; vekStsErrNullPtr, also for a state without table; vekStsErrUnsupported if the state's width or
 *          height is below 8
 */
VEKVC_API VekStatus vekiFilterDenoiseMosquito_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep,
                                                     Vek32s strength, VekDenoiseMosquitoState* pState);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
