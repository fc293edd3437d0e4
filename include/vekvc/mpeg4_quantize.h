/** @file mpeg4_quantize.h
 *  MPEG-4 Part 2 (ISO/IEC 14496-2), H.263 and H.261: quantization, inverse quantization and the prediction of intra
 *  coefficients. All work in place on one block of 64 values, contiguous, in raster order (8 * row + column).
 *
 *  `/` truncates toward zero, `//` rounds to the nearest integer, halves away from zero. `videoComp` is 0 for
 *  luminance, any other value for chrominance; arguments named `...Flag` are 0 for off, any other value for on.
 *
 *  dcScaler, the DC's step (table 7-1):
 *
 *  | QP | 1-4 | 5-8 | 9-24 | 25 and more |
 *  |---|---|---|---|---|
 *  | luminance | 8 | 2 QP | QP + 8 | 2 QP - 16 |
 *  | chrominance | 8 | (QP + 13) / 2 | (QP + 13) / 2 | QP - 6 |
 *
 *  The quantizers of MPEG-4 read a specification buffer in the caller's memory. `...GetSize` tells its size; `...Init`
 *  fills it and may do so again; it holds no pointers, and threads may share it. A buffer that was moved is to be
 *  initialised again, since its content is aligned within it.
 */
#ifndef VEKVC_MPEG4_QUANTIZE_H
#define VEKVC_MPEG4_QUANTIZE_H

#include "vekvc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @name The sizes of specification buffers
 *  @{ */

/** The size of a specification buffer in bytes: 412 for the quantizers, 156 for the inverse ones.
 *  @param[out] pSpecSize  the size
 *  @return vekStsOk; vekStsErrNullPtr
 */
VEKVC_API VekStatus vekiQuantIntraGetSize_MPEG4(Vek32u* pSpecSize);
VEKVC_API VekStatus vekiQuantInterGetSize_MPEG4(Vek32u* pSpecSize);
VEKVC_API VekStatus vekiQuantInvIntraGetSize_MPEG4(Vek32u* pSpecSize);
VEKVC_API VekStatus vekiQuantInvInterGetSize_MPEG4(Vek32u* pSpecSize);

/** @} */

/** @name Initialisation of specification buffers
 *  @{ */

/** Fills a specification buffer for its operation alone.
 *  @param[out] pSpec         the buffer, at any address
 *  @param[in] pQuantMatrix   64 weights in raster order, none of them 0: the MPEG method (quant_type 1); null: the
 *      method of H.263 (quant_type 0)
 *  @param bitsPerPixel       4 to 12
 *  @return vekStsOk; vekStsErrNullPtr for @p pSpec; vekStsErrQPRange for a weight of 0; vekStsErrOutOfRange for
 *      @p bitsPerPixel
 */
VEKVC_API VekStatus vekiQuantIntraInit_MPEG4(Vek8u* pSpec, const Vek8u* pQuantMatrix, Vek32s bitsPerPixel);
VEKVC_API VekStatus vekiQuantInterInit_MPEG4(Vek8u* pSpec, const Vek8u* pQuantMatrix, Vek32s bitsPerPixel);
VEKVC_API VekStatus vekiQuantInvIntraInit_MPEG4(Vek8u* pSpec, const Vek8u* pQuantMatrix, Vek32s bitsPerPixel);
VEKVC_API VekStatus vekiQuantInvInterInit_MPEG4(Vek8u* pSpec, const Vek8u* pQuantMatrix, Vek32s bitsPerPixel);
/** @} */

/** Inverse quantization of an intra block of MPEG-4 (ISO 14496-2 7.4.4), limited to -2^(b + 3)..2^(b + 3) - 1 for b
 *  bits per sample:
 *
 *  - method of H.263: level 0 gives 0, else |c| = QP * (2 |level| + 1), less 1 if QP is even;
 *  - MPEG method: c = (2 * level * W * QP) / 16; then, if the sum of all 64 coefficients is even, the lowest bit of
 *    element 63 is flipped;
 *  - element 0: dcScaler * level, by both methods.
 *  @param[in,out] pSrcDst  levels, replaced by coefficients. With a matrix, levels beyond -8191..8191 give unspecified
 *      coefficients
 *  @param[in] pSpec        initialised by vekiQuantInvIntraInit_MPEG4()
 *  @param QP               1 to 2^(b - 3) - 1
 *  @param videoComp        selects the DC's step
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrContextMatch for @p pSpec; vekStsErrQPRange
 */
VEKVC_API VekStatus vekiQuantInvIntra_MPEG4_16s_C1I(Vek16s* pSrcDst, const Vek8u* pSpec, Vek32s QP, Vek32s videoComp);

/** Inverse quantization of an inter block of MPEG-4: all elements by the method of H.263 above, or by the MPEG method
 *  with c = ((2 * level + sign(level)) * W * QP) / 16 and the same control of the sum.
 *  @param[in,out] pSrcDst  levels, replaced by coefficients, as above
 *  @param[in] pSpec        initialised by vekiQuantInvInterInit_MPEG4()
 *  @param QP               1 to 2^(b - 3) - 1
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrContextMatch for @p pSpec; vekStsErrQPRange
 */
VEKVC_API VekStatus vekiQuantInvInter_MPEG4_16s_C1I(Vek16s* pSrcDst, const Vek8u* pSpec, Vek32s QP);

/** Inverse quantization of an intra block of H.263 (6.2.1) or H.261 (4.2.4): element 0 is 8 * level, the others are as
 *  by the method of H.263 above; all are limited to -2048..2047. With @p advIntraFlag (annex I) all are 2 * QP *
 *  level, saturated to 16 bits: vekiPredictIntraAIC_H263_16s_C1I() limits them.
 *  @param[in,out] pSrcDst  levels, replaced by coefficients
 *  @param QP               1 to 31
 *  @param advIntraFlag     annex I
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrQPRange
 */
VEKVC_API VekStatus vekiQuantInvIntra_H263_16s_C1I(Vek16s* pSrcDst, Vek32s QP, Vek32s advIntraFlag);

/** Inverse quantization of an inter block of H.263 or H.261: all elements as by the method of H.263 above, limited to
 *  -2048..2047.
 *  @param[in,out] pSrcDst  levels, replaced by coefficients
 *  @param QP               1 to 31
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrQPRange
 */
VEKVC_API VekStatus vekiQuantInvInter_H263_16s_C1I(Vek16s* pSrcDst, Vek32s QP);
/** Quantizes an intra block of MPEG-4. The standard leaves this free; here, with a the coefficient's magnitude, whose
 *  sign the level takes, and m = 2^(b + 3) - 1 for b bits per sample:
 *
 *  - method of H.263: min(a / (2 QP), m);
 *  - MPEG method: min((t + (3 QP + 2) / 4) / (2 QP), m) with t = (16 a + W / 2) / W;
 *  - element 0: coefficient // dcScaler, limited to -m - 1..m, by both methods.
 *  @param[in,out] pSrcDst  coefficients, replaced by levels
 *  @param[in] pSpec        initialised by vekiQuantIntraInit_MPEG4()
 *  @param QP               1 to 2^(b - 3) - 1
 *  @param videoComp        selects the DC's step
 *  @param[out] pCount      the number of levels other than 0, without the DC
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrContextMatch for @p pSpec; vekStsErrQPRange
 */
VEKVC_API VekStatus vekiQuantIntra_MPEG4_16s_C1I(Vek16s* pSrcDst, const Vek8u* pSpec, Vek32s QP, Vek32s videoComp,
                                                 Vek32s* pCount);

/** Quantizes an inter block of MPEG-4: by the method of H.263 min(max(a - QP / 2, 0) / (2 QP), m), by the MPEG method
 *  min(t / (2 QP), m), a, t and m as above.
 *  @param[in,out] pSrcDst  coefficients, replaced by levels
 *  @param[in] pSpec        initialised by vekiQuantInterInit_MPEG4()
 *  @param QP               1 to 2^(b - 3) - 1
 *  @param[out] pCount      the number of levels other than 0
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrContextMatch for @p pSpec; vekStsErrQPRange
 */
VEKVC_API VekStatus vekiQuantInter_MPEG4_16s_C1I(Vek16s* pSrcDst, const Vek8u* pSpec, Vek32s QP, Vek32s* pCount);

/** Quantizes an intra block of H.263 or H.261: element 0 is coefficient // 8 limited to 1..254, the others are
 *  min(a / (2 QP), m), m being 127, with @p modQuantFlag (annex T) 1023. With @p advIntraFlag (annex I) the block is
 *  what its prediction leaves, and element 0 is (a + QP) / (2 QP); it is not limited to m.
 *  @param[in,out] pSrcDst  coefficients, replaced by levels
 *  @param QP               1 to 31
 *  @param advIntraFlag     annex I
 *  @param modQuantFlag     annex T
 *  @param[out] pCount      the number of levels other than 0; without @p advIntraFlag the DC does not count
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrQPRange
 */
VEKVC_API VekStatus vekiQuantIntra_H263_16s_C1I(Vek16s* pSrcDst, Vek32s QP, Vek32s advIntraFlag, Vek32s modQuantFlag,
                                                Vek32s* pCount);

/** Quantizes an inter block of H.263 or H.261: min(max(a - QP / 2, 0) / (2 QP), m), m being 127, with @p modQuantFlag
 *  (annex T) 1023.
 *  @param[in,out] pSrcDst  coefficients, replaced by levels
 *  @param QP               1 to 31
 *  @param modQuantFlag     annex T
 *  @param[out] pCount      the number of levels other than 0
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrQPRange
 */
VEKVC_API VekStatus vekiQuantInter_H263_16s_C1I(Vek16s* pSrcDst, Vek32s QP, Vek32s modQuantFlag, Vek32s* pCount);
/** Adds the prediction of an intra block of MPEG-4 to its levels (ISO 14496-2 7.4.3): to element 0
 *  pPred[0] // dcScaler; with @p acPredFlag also (pPred[i] * predQP) // QP, i = 1..7, to element 8 i (from the left)
 *  or i (from above). Changed elements are limited to -2048..2047.
 *  @param[in,out] pSrcDst  levels
 *  @param[in] pPred        8 values of the predicting block: its reconstructed DC (dcScaler * level), 1024 where there
 *      is none (2^(b + 2) for b bits per sample), and the levels 1 to 7, after its own prediction, of its first column
 *      or first row, 0 where there are none
 *  @param predQP           of the predicting block, 1 to 511
 *  @param QP               of this block, 1 to 511
 *  @param videoComp        selects the DC's step
 *  @param predDir          0: from the left; any other value: from above
 *  @param acPredFlag       are the other elements predicted?
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrQPRange for @p predQP, @p QP
 */
VEKVC_API VekStatus vekiPredictIntra_MPEG4_16s_C1I(Vek16s* pSrcDst, const Vek16s* pPred, Vek32s predQP, Vek32s QP,
                                                   Vek32s videoComp, Vek32s predDir, Vek32s acPredFlag);

/** Adds the prediction of annex I of H.263 to the coefficients of an intra block (I.3). The DC is predicted by p, and
 *  becomes x = DC + p, plus 1 if x is even, limited to 0..2047:
 *
 *  | `intraMode` | p | also |
 *  |---|---|---|
 *  | 0 | (left + above) / 2 of the neighbours' DCs, or the one that is there, or 1024 | |
 *  | 1, from above | the DC above, or 1024 | above[i] is added to element i, i = 1..7 |
 *  | 2, from the left | the DC on the left, or 1024 | left[i] is added to element 8 i |
 *
 *  All other elements, predicted or not, are limited to -2048..2047.
 *  @param[in,out] pSrcDst  coefficients
 *  @param[in] pLeft        the reconstructed first column of the block on the left, 8 values; null where that is
 *      outside the picture, GOB or slice, or not intra
 *  @param[in] pAbove       the reconstructed first row of the block above, 8 values, or null likewise
 *  @param intraMode        INTRA_MODE, 0 to 2
 *  @return vekStsOk; vekStsErrNullPtr for @p pSrcDst; vekStsErrOutOfRange for @p intraMode
 */
VEKVC_API VekStatus vekiPredictIntraAIC_H263_16s_C1I(Vek16s* pSrcDst, const Vek16s* pLeft, const Vek16s* pAbove,
                                                     Vek32s intraMode);

#ifdef __cplusplus
}
#endif

#endif
