/** @file dct.h
 *  The 8x8 DCT of MPEG-1, MPEG-2, MPEG-4 Part 2, H.261 and H.263 (ISO 13818-2 annex A), in two kinds.
 *
 *  The plain names are correctly rounded: every result is the ideal transform, rounded to the nearest integer, ties
 *  upward, and limited to 16 bits. So there is no error at all by the measures of IEEE 1180-1990, and decoders that
 *  use them agree with any other that rounds exactly. Exactly: C(m) is 2^42 * cos(m * pi / 16) rounded to an integer,
 *  D(a, b) = C(a + b) + C(a - b), t(0, x) = 4, t(u, x) = (2 * x + 1) * u for u of 1 to 7. Then
 *
 *  - inverse: f(x, y) = (A + 2^44) >> 45, A the sum over all v and u of F(v, u) * D(t(u, x), t(v, y));
 *  - forward: F(v, u) = (A + 2^44) >> 45, A the sum over all y and x of f(x, y) * D(t(u, x), t(v, y));
 *
 *  in 64 bits, which hold every A. The ideal transform differs from A / 2^45 by at most 2^-45 times the sum of the
 *  magnitudes; where it is a tie, A is the same tie. All 16-bit values may be given. The results do not depend on the
 *  caller's rounding mode, nor on subnormal numbers being flushed to zero.
 *
 *  The AANTransposed functions are the fast kind: a fixed-point transform of its own exact definition, within the
 *  limits of IEEE 1180-1990 but without another decoder's bits.
 *
 *  A block of coefficients is 64 contiguous values in rows: F(v, u), v the vertical frequency, stands at 8 * v + u (for
 *  AANTransposed at 8 * u + v). Steps are signed counts of bytes between rows, also for 16-bit elements.
 */
#ifndef VEKVC_DCT_H
#define VEKVC_DCT_H

#include "vekvc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @name Forward, correctly rounded
 *  @{ */

/** Forward DCT of 64 contiguous values.
 *  @param pSrc the 8 rows of 8 values
 *  @param pDst receives the 64 coefficients; may be pSrc
 *  @return vekStsOk; vekStsErrNullPtr if a pointer is null
 */
VEKVC_API VekStatus vekiDCT8x8Fwd_16s_C1(const Vek16s* pSrc, Vek16s* pDst);

/** Forward DCT in place.
 *  @param pSrcDst the 8 rows of 8 values, replaced by the coefficients
 *  @return vekStsOk; vekStsErrNullPtr if the pointer is null
 */
VEKVC_API VekStatus vekiDCT8x8Fwd_16s_C1I(Vek16s* pSrcDst);

/** Forward DCT of a block within a larger residual; twice the residual's step takes the rows of one field.
 *  @param pSrc, srcStep the values
 *  @param pDst receives the 64 coefficients; may be pSrc if srcStep is 16
 *  @return vekStsOk; vekStsErrNullPtr if a pointer is null
 */
VEKVC_API VekStatus vekiDCT8x8Fwd_16s_C1R(const Vek16s* pSrc, Vek32s srcStep, Vek16s* pDst);

/** Forward DCT of picture samples, without level shift: the DC coefficient is 8 times the mean.
 *  @param pSrc, srcStep the samples
 *  @param pDst receives the 64 coefficients
 *  @return vekStsOk; vekStsErrNullPtr if a pointer is null
 */
VEKVC_API VekStatus vekiDCT8x8Fwd_8u16s_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek16s* pDst);
/** @} */

/** @name Inverse, correctly rounded
 *  @{ */

/** Inverse DCT to 64 contiguous values.
 *  @param pSrc the 64 coefficients
 *  @param pDst receives the 8 rows of 8 values; may be pSrc
 *  @return vekStsOk; vekStsErrNullPtr if a pointer is null
 */
VEKVC_API VekStatus vekiDCT8x8Inv_16s_C1(const Vek16s* pSrc, Vek16s* pDst);

/** Inverse DCT in place.
 *  @param pSrcDst the 64 coefficients, replaced by the 8 rows of 8 values
 *  @return vekStsOk; vekStsErrNullPtr if the pointer is null
 */
VEKVC_API VekStatus vekiDCT8x8Inv_16s_C1I(Vek16s* pSrcDst);

/** Inverse DCT to a residual with a step of its own, as the vekiMC functions take it.
 *  @param pSrc the 64 coefficients
 *  @param pDst, dstStep the residual; may be pSrc if dstStep is 16
 *  @return vekStsOk; vekStsErrNullPtr if a pointer is null
 */
VEKVC_API VekStatus vekiDCT8x8Inv_16s_C1R(const Vek16s* pSrc, Vek16s* pDst, Vek32s dstStep);

/** Inverse DCT to picture samples: each result limited to 0..255, an intra block.
 *  @param pSrc the 64 coefficients
 *  @param pDst, dstStep the samples
 *  @return vekStsOk; vekStsErrNullPtr if a pointer is null
 */
VEKVC_API VekStatus vekiDCT8x8Inv_16s8u_C1R(const Vek16s* pSrc, Vek8u* pDst, Vek32s dstStep);

/** Inverse DCT added to the prediction: each sum limited to 0..255, an inter block. Where only the DC coefficient is
 *  not 0, vekiAddC8x8_16s8u_C1IR with (F(0, 0) + 4) >> 3 does the same.
 *  @param pSrc the 64 coefficients
 *  @param pSrcDst, srcDstStep the prediction, replaced by the samples
 *  @return vekStsOk; vekStsErrNullPtr if a pointer is null
 */
VEKVC_API VekStatus vekiDCT8x8InvAdd_16s8u_C1IR(const Vek16s* pSrc, Vek8u* pSrcDst, Vek32s srcDstStep);
/** @} */

/** @name Inverse of a corner, correctly rounded, in place
 *  @{ */

/** Inverse DCT, in place, of a block of which only the 4x4 or 2x2 coefficients of lowest frequency may differ from 0.
 *  The others are taken as 0 and not read. Beware of MPEG-2: mismatch control may have set F(7, 7).
 *  @param pSrcDst the block of coefficients, of which the corner alone is read; all 64 values are written
 *  @return vekStsOk; vekStsErrNullPtr if the pointer is null
 */
VEKVC_API VekStatus vekiDCT8x8InvNZ4x4_16s_C1I(Vek16s* pSrcDst);
VEKVC_API VekStatus vekiDCT8x8InvNZ2x2_16s_C1I(Vek16s* pSrcDst);
/** @} */

/** @name Inverse of a corner, correctly rounded, to picture samples
 *  @{ */

/** The same to picture samples, each result limited to 0..255.
 *  @param pSrc the block of coefficients, of which the 4x4 or 2x2 corner alone is read
 *  @param pDst, dstStep the samples
 *  @return vekStsOk; vekStsErrNullPtr if a pointer is null
 */
VEKVC_API VekStatus vekiDCT8x8InvNZ4x4_16s8u_C1R(const Vek16s* pSrc, Vek8u* pDst, Vek32s dstStep);
VEKVC_API VekStatus vekiDCT8x8InvNZ2x2_16s8u_C1R(const Vek16s* pSrc, Vek8u* pDst, Vek32s dstStep);
/** @} */

/** @name Inverse of a corner, correctly rounded, added to the prediction
 *  @{ */

/** The same added to the prediction, each sum limited to 0..255.
 *  @param pSrc the block of coefficients, of which the 4x4 or 2x2 corner alone is read
 *  @param pSrcDst, srcDstStep the prediction, replaced by the samples
 *  @return vekStsOk; vekStsErrNullPtr if a pointer is null
 */
VEKVC_API VekStatus vekiDCT8x8InvAddNZ4x4_16s8u_C1IR(const Vek16s* pSrc, Vek8u* pSrcDst, Vek32s srcDstStep);
VEKVC_API VekStatus vekiDCT8x8InvAddNZ2x2_16s8u_C1IR(const Vek16s* pSrc, Vek8u* pSrcDst, Vek32s srcDstStep);
/** @} */

/** @name Inverse, fast, of a transposed block
 *  K(u, x) is 16384 for u = 0, else 2^14 * sqrt(2) * cos((2 * x + 1) * u * pi / 16) rounded to an integer. The
 *  horizontal pass gives G(v, x) = (sum over u of F(v, u) * K(u, x) + 1024) >> 11, the vertical pass R(x, y) = (sum
 *  over v of G(v, x) * K(v, y) + 524288) >> 20. Sums wrap in 32 bits, which they reach only beyond magnitudes of 17541
 *  (F) and 17536 (G); G and R are limited to 16 bits.
 *  @{ */

/** Fast inverse DCT to a residual.
 *  @param pSrc the 64 coefficients, transposed: F(v, u) at 8 * u + v
 *  @param pDst, dstStep the residual; the step at least 16
 *  @return vekStsOk; vekStsErrNullPtr if a pointer is null; vekStsErrStep if dstStep is less than 16
 */
VEKVC_API VekStatus vekiDCT8x8Inv_AANTransposed_16s_C1R(const Vek16s* pSrc, Vek16s* pDst, Vek32s dstStep);

/** Fast inverse DCT to picture samples, each limited to 0..255.
 *  @param pSrc the 64 coefficients, transposed: F(v, u) at 8 * u + v
 *  @param pDst, dstStep the samples; the step at least 8
 *  @return vekStsOk; vekStsErrNullPtr if a pointer is null; vekStsErrStep if dstStep is less than 8
 */
VEKVC_API VekStatus vekiDCT8x8Inv_AANTransposed_16s8u_C1R(const Vek16s* pSrc, Vek8u* pDst, Vek32s dstStep);

/** Fast inverse DCT of both chroma blocks to interleaved samples, each limited to 0..255.
 *  @param pSrcU the 64 coefficients of the even bytes, transposed: F(v, u) at 8 * u + v
 *  @param pSrcV the same of the odd bytes
 *  @param pDst, dstStep 8 rows of 8 pairs of samples; the step at least 16
 *  @return vekStsOk; vekStsErrNullPtr if a pointer is null; vekStsErrStep if dstStep is less than 16
 */
VEKVC_API VekStatus vekiDCT8x8Inv_AANTransposed_16s8u_P2C2R(const Vek16s* pSrcU, const Vek16s* pSrcV, Vek8u* pDst,
                                                            Vek32s dstStep);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
