/** @file h264_reconstruct.h
 *  H.264/AVC macroblock reconstruction: intra prediction (clause 8.3) and the residual (clause 8.5) of one macroblock
 *  per call, from the packed coefficient stream that the CAVLC decoders of h264_cavlc.h write.
 *
 *  Packed coefficient stream. *ppCoeffs points at the macroblock's coded blocks, each complete and in raster order
 *  (16 values for 4x4, 64 for 8x8, 4 for 2x2 and 8 for 2x4 chroma DC), without gaps, in the order of the syntax: luma
 *  DC, luma blocks by luma4x4BlkIdx or luma8x8BlkIdx, Cb DC, Cr DC, Cb AC, Cr AC. A call moves *ppCoeffs past the
 *  blocks that it consumes, so that the calls for luma and chroma follow on from one another; the stream itself is
 *  not written to. A block whose bit is clear consumes nothing.
 *
 *  Coded-block bits (cbp): bit 0 luma DC (Intra16x16), 1..16 luma 4x4 blocks 0..15, 17 Cb DC, 18 Cr DC, 19..22 Cb AC
 *  blocks 0..3, 23..26 Cr AC blocks 0..3. A function ignores the bits of other components. 4:2:2 has a layout of its
 *  own, below.
 *
 *  Edge flags (edgeFlags): a set bit marks a neighbour of the macroblock that is NOT available for intra prediction
 *  (outside the slice or picture, or not intra under constrained_intra_pred_flag):
 *    bit 0 (1) left edge; in the Half forms its upper half
 *    bit 1 (2) lower half of the left edge; read by the Half forms only
 *    bit 2 (4) above edge
 *    bit 4 (16) above-left sample
 *    bit 5 (32) above-right macroblock; with the bit clear it counts as available if the above edge is
 *  The Half, Halfs and Halves forms exist for MBAFF pictures with constrained intra prediction: a field macroblock
 *  whose left pair is a frame pair has its rows' upper half beside one macroblock and the lower half beside the
 *  other, and only one of them may be intra. Intra16x16 has no such form: all its modes take the left edge whole (set
 *  bit 0 if either half is missing). Neighbouring samples are read from the picture around pSrcDst, at the same step;
 *  only those of edges that the flags do not rule out and that the mode uses (the filtering of Intra8x8 also uses the
 *  above-left sample and the above-right row).
 *
 *  Scaling is that of clause 8.5.12.1 (4x4), 8.5.13.1 (8x8), 8.5.10 and 8.5.11 (DC blocks). pLevelScale is
 *  LevelScale4x4 (or 8x8) for QP%6 and the macroblock's prediction kind, weights included (flat weight 16), 0..32767,
 *  in raster order, as vekiGenScaleLevel4x4_H264_8u16s_C1 makes it; forms without it scale with the flat matrix. In
 *  the 16s8u forms scaled values are kept in 16 bits (wrapping) and every sum of the inverse core transforms
 *  saturates at 16 bits, the rounding +32 included; the 32s16u forms wrap at 32 bits.
 *
 *  Lossless macroblocks (bypass, TransformBypassModeFlag): the residual is the coefficients as they stand. Luma forms
 *  take this road if bypass is non-zero and QP is 0; chroma forms whenever bypass is non-zero, since the standard's
 *  condition is on QP'Y. The accumulation of 8.5.15 for horizontal and vertical prediction is the caller's, on the
 *  coefficients before the call.
 *
 *  Inter forms return at once, successfully, if no bit of theirs is set in cbp. Argument checks come first.
 */
#ifndef VEKVC_H264_RECONSTRUCT_H
#define VEKVC_H264_RECONSTRUCT_H

#include "vekvc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- intra predictors ---- */

/** Intra 4x4 prediction (8.3.1.2). A sample that the mode needs and that is marked unavailable counts as 128; the
 *  above-right row is replaced by its left neighbour (the last sample of the above row) instead, without a warning.
 *  DC never needs a missing sample.
 *  @param pSrcDst receives 4x4 samples
 *  @param srcDstStep step in bytes, at least 4
 *  @param predMode 0 vertical, 1 horizontal, 2 DC, 3 diagonal down-left, 4 diagonal down-right, 5 vertical-right, 6
 *                  horizontal-down, 7 vertical-left, 8 horizontal-up
 *  @param availability bit 0 (1): above row, bit 1 (2): left column, bit 5 (32): above-left sample, bit 6 (64):
 *                      above-right row; other bits are ignored
 *  @return vekStsWrnUnavailableNeighbour (done; 128 stood in for a sample), vekStsErrNullPtr, vekStsErrStep,
 *          vekStsErrOutOfRange (predMode)
 */
VEKVC_API VekStatus vekiPredictIntra_4x4_H264_8u_C1IR(Vek8u* pSrcDst, Vek32s srcDstStep, Vek32s predMode,
                                                      Vek32s availability);
/** Intra 16x16 prediction (8.3.3).
 *  @param pSrcDst receives 16x16 samples
 *  @param srcDstStep step in bytes; not checked
 *  @param predMode 0 vertical, 1 horizontal, 2 DC, 3 plane
 *  @param availability bits 0, 1 and 5 as for 4x4
 *  @return vekStsErrNullPtr, vekStsErrOutOfRange (predMode), vekStsErrUnavailableNeighbour (vertical needs bit 0,
 *          horizontal bit 1, plane all three; nothing is written)
 */
VEKVC_API VekStatus vekiPredictIntra_16x16_H264_8u_C1IR(Vek8u* pSrcDst, Vek32s srcDstStep, Vek32s predMode,
                                                        Vek32s availability);
/** Intra chroma prediction of an 8x8 block (8.3.4, 4:2:0).
 *  @param pSrcDst receives 8x8 samples
 *  @param srcDstStep step in bytes, at least 8
 *  @param predMode 0 DC, 1 horizontal, 2 vertical, 3 plane
 *  @param availability bits 0, 1 and 5 as for 4x4
 *  @return vekStsErrNullPtr, vekStsErrStep, vekStsErrOutOfRange (predMode), vekStsErrUnavailableNeighbour (as 16x16)
 */
VEKVC_API VekStatus vekiPredictIntraChroma8x8_H264_8u_C1IR(Vek8u* pSrcDst, Vek32s srcDstStep, Vek32s predMode,
                                                           Vek32s availability);

/* ---- luma macroblocks, 8-bit samples ---- */

/** Adds the residual of an inter macroblock with 4x4 transforms, flat scaling.
 *  @param ppCoeffs packed coefficient stream
 *  @param pSrcDst 16x16 samples: the prediction, replaced by the picture
 *  @param srcDstStep step in bytes
 *  @param cbp coded-block bits 1..16
 *  @param QP QPY, 0..51
 *  @return vekStsErrNullPtr (ppCoeffs, pSrcDst, *ppCoeffs), vekStsErrOutOfRange (QP)
 */
VEKVC_API VekStatus vekiReconstructLumaInterMB_H264_16s8u_C1R(Vek16s** ppCoeffs, Vek8u* pSrcDst, Vek32s srcDstStep,
                                                              Vek32u cbp, Vek32s QP);
/** vekiReconstructLumaInterMB_H264_16s8u_C1R with a level scale and the lossless mode.
 *  @param ppCoeffs    packed coefficient stream
 *  @param pSrcDst     16x16 samples: the prediction, replaced by the picture
 *  @param srcDstStep  step in bytes
 *  @param cbp         coded-block bits 1..16
 *  @param QP          QPY, 0..51
 *  @param pLevelScale LevelScale4x4 for QP%6, 16 values in raster order
 *  @param bypass      non-zero: if QP is 0, the coefficients are the residual
 *  @return vekStsErrNullPtr (ppCoeffs, pSrcDst, pLevelScale, *ppCoeffs), vekStsErrOutOfRange (QP)
 */
VEKVC_API VekStatus vekiReconstructLumaInter4x4MB_H264_16s8u_C1R(Vek16s** ppCoeffs, Vek8u* pSrcDst, Vek32s srcDstStep,
                                                                 Vek32u cbp, Vek32s QP, const Vek16s* pLevelScale,
                                                                 Vek8u bypass);
/** Adds the residual of an inter macroblock with 8x8 transforms (8.5.13).
 *  @param ppCoeffs    packed coefficient stream
 *  @param pSrcDst     16x16 samples: the prediction, replaced by the picture
 *  @param srcDstStep  step in bytes
 *  @param cbp         an 8x8 block k is coded if any of its bits 4k + 1 .. 4k + 4 is set
 *  @param QP          QPY, 0..51
 *  @param pLevelScale LevelScale8x8 for QP%6, 64 values in raster order
 *  @param bypass      non-zero: if QP is 0, the coefficients are the residual
 *  @return as vekiReconstructLumaInter4x4MB_H264_16s8u_C1R
 */
VEKVC_API VekStatus vekiReconstructLumaInter8x8MB_H264_16s8u_C1R(Vek16s** ppCoeffs, Vek8u* pSrcDst, Vek32s srcDstStep,
                                                                 Vek32u cbp, Vek32s QP, const Vek16s* pLevelScale,
                                                                 Vek8u bypass);
/** Predicts and reconstructs an Intra4x4 macroblock, block by block, flat scaling.
 *  @param ppCoeffs packed coefficient stream
 *  @param pSrcDst receives 16x16 samples
 *  @param srcDstStep step in bytes
 *  @param pPredModes 16 prediction modes (0..8, as for vekiPredictIntra_4x4_H264_8u_C1IR) in block-index order
 *  @param cbp coded-block bits 1..16
 *  @param QP QPY, 0..51
 *  @param edgeFlags neighbours that are not available
 *  @return vekStsWrnUnavailableNeighbour (done; 128 stood in for a neighbour), vekStsErrNullPtr (ppCoeffs, pSrcDst,
 *          pPredModes, *ppCoeffs), vekStsErrOutOfRange (a mode, QP)
 */
VEKVC_API VekStatus vekiReconstructLumaIntraMB_H264_16s8u_C1R(Vek16s** ppCoeffs, Vek8u* pSrcDst, Vek32s srcDstStep,
                                                              const Vek32u* pPredModes, Vek32u cbp, Vek32s QP,
                                                              Vek8u edgeFlags);
/** vekiReconstructLumaIntraMB_H264_16s8u_C1R with a level scale and the lossless mode.
 *  @param ppCoeffs    packed coefficient stream
 *  @param pSrcDst     receives 16x16 samples
 *  @param srcDstStep  step in bytes
 *  @param pPredModes  16 prediction modes (0..8, as for vekiPredictIntra_4x4_H264_8u_C1IR) in block-index order
 *  @param cbp         coded-block bits 1..16
 *  @param QP          QPY, 0..51
 *  @param edgeFlags   neighbours that are not available
 *  @param pLevelScale LevelScale4x4 for QP%6, 16 values in raster order (not null)
 *  @param bypass      non-zero: if QP is 0, the coefficients are the residual
 *  @return as vekiReconstructLumaIntraMB_H264_16s8u_C1R
 */
VEKVC_API VekStatus vekiReconstructLumaIntra4x4MB_H264_16s8u_C1R(Vek16s** ppCoeffs, Vek8u* pSrcDst, Vek32s srcDstStep,
                                                                 const Vek32u* pPredModes, Vek32u cbp, Vek32s QP,
                                                                 Vek8u edgeFlags, const Vek16s* pLevelScale,
                                                                 Vek8u bypass);
/** Predicts and reconstructs an Intra8x8 macroblock: prediction with filtered reference samples (8.3.2.2), 8x8
 *  transforms. A neighbour that a mode needs and that is marked unavailable counts as 128 after the filtering.
 *  @param ppCoeffs    packed coefficient stream
 *  @param pSrcDst     receives 16x16 samples
 *  @param srcDstStep  step in bytes
 *  @param pPredModes  4 prediction modes (0..8, numbered as for 4x4)
 *  @param cbp         an 8x8 block k is coded if any of its bits 4k + 1 .. 4k + 4 is set
 *  @param QP          QPY, 0..51
 *  @param edgeFlags   neighbours that are not available
 *  @param pLevelScale LevelScale8x8 for QP%6, 64 values in raster order
 *  @param bypass      non-zero: if QP is 0, the coefficients are the residual
 *  @return as vekiReconstructLumaIntra4x4MB_H264_16s8u_C1R
 */
VEKVC_API VekStatus vekiReconstructLumaIntra8x8MB_H264_16s8u_C1R(Vek16s** ppCoeffs, Vek8u* pSrcDst, Vek32s srcDstStep,
                                                                 const Vek32u* pPredModes, Vek32u cbp, Vek32s QP,
                                                                 Vek8u edgeFlags, const Vek16s* pLevelScale,
                                                                 Vek8u bypass);
/** Predicts and reconstructs an Intra16x16 macroblock, flat scaling: DC block (bit 0 of cbp, 8.5.10) and AC blocks
 *  (bits 1..16, position 0 of each ignored in favour of the DC).
 *  @param ppCoeffs   packed coefficient stream
 *  @param pSrcDst    receives 16x16 samples
 *  @param srcDstStep step in bytes
 *  @param predMode   0 vertical, 1 horizontal, 2 DC, 3 plane
 *  @param cbp        bit 0: the DC block; bits 1..16: the AC blocks
 *  @param QP         QPY, 0..51
 *  @param edgeFlags  neighbours that are not available
 *  @return vekStsErrNullPtr (ppCoeffs, pSrcDst, *ppCoeffs), vekStsErrOutOfRange (predMode, QP),
 *          vekStsErrUnavailableNeighbour (as vekiPredictIntra_16x16_H264_8u_C1IR; nothing is written or consumed)
 */
VEKVC_API VekStatus vekiReconstructLumaIntra_16x16MB_H264_16s8u_C1R(Vek16s** ppCoeffs, Vek8u* pSrcDst,
                                                                    Vek32s srcDstStep, Vek32s predMode, Vek32u cbp,
                                                                    Vek32s QP, Vek8u edgeFlags);
/** vekiReconstructLumaIntra_16x16MB_H264_16s8u_C1R with a level scale and the lossless mode.
 *  @param ppCoeffs    packed coefficient stream
 *  @param pSrcDst     receives 16x16 samples
 *  @param srcDstStep  step in bytes
 *  @param predMode    0 vertical, 1 horizontal, 2 DC, 3 plane
 *  @param cbp         bit 0: the DC block; bits 1..16: the AC blocks
 *  @param QP          QPY, 0..51
 *  @param edgeFlags   neighbours that are not available
 *  @param pLevelScale LevelScale4x4 for QP%6, 16 values in raster order (not null); its first value scales the DC
 *                     block
 *  @param bypass      non-zero: if QP is 0, the coefficients (DC values at position 0 of their blocks) are the
 *                     residual
 *  @return as vekiReconstructLumaIntra_16x16MB_H264_16s8u_C1R
 */
VEKVC_API VekStatus vekiReconstructLumaIntra16x16MB_H264_16s8u_C1R(Vek16s** ppCoeffs, Vek8u* pSrcDst, Vek32s srcDstStep,
                                                                   Vek32s predMode, Vek32u cbp, Vek32s QP,
                                                                   Vek8u edgeFlags, const Vek16s* pLevelScale,
                                                                   Vek8u bypass);
/** vekiReconstructLumaIntraMB_H264_16s8u_C1R with the left edge in two halves: bit 0 of edgeFlags for rows 0..7, bit 1
 *  for rows 8..15.
 *  @param ppCoeffs   packed coefficient stream
 *  @param pSrcDst    receives 16x16 samples
 *  @param srcDstStep step in bytes
 *  @param pPredModes 16 prediction modes (0..8, as for vekiPredictIntra_4x4_H264_8u_C1IR) in block-index order
 *  @param cbp        coded-block bits 1..16
 *  @param QP         QPY, 0..51
 *  @param edgeFlags  neighbours that are not available, the left edge in two halves: bit 0 upper, bit 1 lower
 *  @return as vekiReconstructLumaIntraMB_H264_16s8u_C1R
 */
VEKVC_API VekStatus vekiReconstructLumaIntraHalfMB_H264_16s8u_C1R(Vek16s** ppCoeffs, Vek8u* pSrcDst, Vek32s srcDstStep,
                                                                  const Vek32u* pPredModes, Vek32u cbp, Vek32s QP,
                                                                  Vek8u edgeFlags);
/** vekiReconstructLumaIntra4x4MB_H264_16s8u_C1R with the left edge in two halves (edgeFlags bits 0 and 1).
 *  @param ppCoeffs    packed coefficient stream
 *  @param pSrcDst     receives 16x16 samples
 *  @param srcDstStep  step in bytes
 *  @param pPredModes  16 prediction modes (0..8, as for vekiPredictIntra_4x4_H264_8u_C1IR) in block-index order
 *  @param cbp         coded-block bits 1..16
 *  @param QP          QPY, 0..51
 *  @param edgeFlags   neighbours that are not available, the left edge in two halves: bit 0 upper, bit 1 lower
 *  @param pLevelScale LevelScale4x4 for QP%6, 16 values in raster order (not null)
 *  @param bypass      non-zero: if QP is 0, the coefficients are the residual
 *  @return as vekiReconstructLumaIntra4x4MB_H264_16s8u_C1R
 */
VEKVC_API VekStatus vekiReconstructLumaIntraHalf4x4MB_H264_16s8u_C1R(Vek16s** ppCoeffs, Vek8u* pSrcDst,
                                                                     Vek32s srcDstStep, const Vek32u* pPredModes,
                                                                     Vek32u cbp, Vek32s QP, Vek8u edgeFlags,
                                                                     const Vek16s* pLevelScale, Vek8u bypass);
/** vekiReconstructLumaIntra8x8MB_H264_16s8u_C1R with the left edge in two halves (edgeFlags bits 0 and 1).
 *  @param ppCoeffs    packed coefficient stream
 *  @param pSrcDst     receives 16x16 samples
 *  @param srcDstStep  step in bytes
 *  @param pPredModes  4 prediction modes (0..8, numbered as for 4x4)
 *  @param cbp         an 8x8 block k is coded if any of its bits 4k + 1 .. 4k + 4 is set
 *  @param QP          QPY, 0..51
 *  @param edgeFlags   neighbours that are not available, the left edge in two halves: bit 0 upper, bit 1 lower
 *  @param pLevelScale LevelScale8x8 for QP%6, 64 values in raster order
 *  @param bypass      non-zero: if QP is 0, the coefficients are the residual
 *  @return as vekiReconstructLumaIntra8x8MB_H264_16s8u_C1R
 */
VEKVC_API VekStatus vekiReconstructLumaIntraHalf8x8MB_H264_16s8u_C1R(Vek16s** ppCoeffs, Vek8u* pSrcDst,
                                                                     Vek32s srcDstStep, const Vek32u* pPredModes,
                                                                     Vek32u cbp, Vek32s QP, Vek8u edgeFlags,
                                                                     const Vek16s* pLevelScale, Vek8u bypass);

/* ---- 4:2:0 chroma macroblocks, 8-bit samples ---- */

/** Adds the residual of both chroma planes of an inter macroblock: DC blocks (8.5.11), AC blocks; flat scaling, one
 *  QP.
 *  @param ppCoeffs packed coefficient stream
 *  @param pSrcDstU 8x8 Cb samples: the prediction, replaced by the picture  @param pSrcDstV the same for Cr
 *  @param srcDstStep step in bytes of both planes
 *  @param cbp coded-block bits 17..26
 *  @param chromaQP QPc, 0..39
 *  @return vekStsErrNullPtr (ppCoeffs, pSrcDstU, pSrcDstV, *ppCoeffs), vekStsErrOutOfRange (chromaQP)
 */
VEKVC_API VekStatus vekiReconstructChromaInterMB_H264_16s8u_P2R(Vek16s** ppCoeffs, Vek8u* pSrcDstU, Vek8u* pSrcDstV,
                                                                Vek32s srcDstStep, Vek32u cbp, Vek32s chromaQP);
/** vekiReconstructChromaInterMB_H264_16s8u_P2R with a QP and scales per plane, and the lossless mode.
 *  @param ppCoeffs      packed coefficient stream
 *  @param pSrcDstU      8x8 Cb samples: the prediction, replaced by the picture
 *  @param pSrcDstV      the same for Cr
 *  @param srcDstStep    step in bytes of both planes
 *  @param cbp           coded-block bits 17..26
 *  @param chromaQPU     QPc of Cb, 0..39
 *  @param chromaQPV     QPc of Cr, 0..39
 *  @param pLevelScaleU  LevelScale4x4 for QPc%6 of Cb, 16 values
 *  @param pLevelScaleV  the same for Cr
 *  @param levelScaleDCU scale of the Cb DC block, 0..32767: LevelScale4x4(QPc%6, 0, 0), the first value of
 *                       pLevelScaleU
 *  @param levelScaleDCV the same for Cr
 *  @param bypass        non-zero: the coefficients (DC values at position 0 of their blocks) are the residual
 *  @return vekStsErrNullPtr (ppCoeffs, pSrcDstU, pSrcDstV, pLevelScaleU, pLevelScaleV, *ppCoeffs), vekStsErrOutOfRange
 *          (chromaQPU, chromaQPV)
 */
VEKVC_API VekStatus vekiReconstructChromaInter4x4MB_H264_16s8u_P2R(Vek16s** ppCoeffs, Vek8u* pSrcDstU, Vek8u* pSrcDstV,
                                                                   Vek32s srcDstStep, Vek32u cbp, Vek32s chromaQPU,
                                                                   Vek32s chromaQPV, const Vek16s* pLevelScaleU,
                                                                   const Vek16s* pLevelScaleV, Vek32s levelScaleDCU,
                                                                   Vek32s levelScaleDCV, Vek8u bypass);
/** Predicts (8.3.4) and reconstructs both chroma planes of an intra macroblock; residual as in
 *  vekiReconstructChromaInterMB_H264_16s8u_P2R.
 *  @param ppCoeffs   packed coefficient stream
 *  @param pSrcDstU   receives 8x8 Cb samples
 *  @param pSrcDstV   receives 8x8 Cr samples
 *  @param srcDstStep step in bytes of both planes
 *  @param predMode   0 DC, 1 horizontal, 2 vertical, 3 plane
 *  @param cbp        coded-block bits 17..26
 *  @param chromaQP   QPc, 0..39
 *  @param edgeFlags  neighbours that are not available
 *  @return vekStsErrNullPtr (as inter), vekStsErrOutOfRange (predMode, chromaQP), vekStsErrUnavailableNeighbour (as
 *          vekiPredictIntraChroma8x8_H264_8u_C1IR; nothing is written or consumed)
 */
VEKVC_API VekStatus vekiReconstructChromaIntraMB_H264_16s8u_P2R(Vek16s** ppCoeffs, Vek8u* pSrcDstU, Vek8u* pSrcDstV,
                                                                Vek32s srcDstStep, Vek32s predMode, Vek32u cbp,
                                                                Vek32s chromaQP, Vek8u edgeFlags);
/** vekiReconstructChromaIntraMB_H264_16s8u_P2R with the residual of vekiReconstructChromaInter4x4MB_H264_16s8u_P2R.
 *  @param ppCoeffs      packed coefficient stream
 *  @param pSrcDstU      receives 8x8 Cb samples
 *  @param pSrcDstV      the same for Cr
 *  @param srcDstStep    step in bytes of both planes
 *  @param predMode      0 DC, 1 horizontal, 2 vertical, 3 plane
 *  @param cbp           coded-block bits 17..26
 *  @param chromaQPU     QPc of Cb, 0..39
 *  @param chromaQPV     QPc of Cr, 0..39
 *  @param edgeFlags     neighbours that are not available
 *  @param pLevelScaleU  LevelScale4x4 for QPc%6 of Cb, 16 values
 *  @param pLevelScaleV  the same for Cr
 *  @param levelScaleDCU scale of the Cb DC block, 0..32767: LevelScale4x4(QPc%6, 0, 0), the first value of
 *                       pLevelScaleU
 *  @param levelScaleDCV the same for Cr
 *  @param bypass        non-zero: the coefficients (DC values at position 0 of their blocks) are the residual
 *  @return as vekiReconstructChromaInter4x4MB_H264_16s8u_P2R
 */
VEKVC_API VekStatus vekiReconstructChromaIntra4x4MB_H264_16s8u_P2R(Vek16s** ppCoeffs, Vek8u* pSrcDstU, Vek8u* pSrcDstV,
                                                                   Vek32s srcDstStep, Vek32s predMode, Vek32u cbp,
                                                                   Vek32s chromaQPU, Vek32s chromaQPV, Vek8u edgeFlags,
                                                                   const Vek16s* pLevelScaleU,
                                                                   const Vek16s* pLevelScaleV, Vek32s levelScaleDCU,
                                                                   Vek32s levelScaleDCV, Vek8u bypass);
/** vekiReconstructChromaIntraMB_H264_16s8u_P2R with the left edge in two halves: bit 0 of edgeFlags for rows 0..3, bit
 *  1 for rows 4..7. DC prediction takes each half by itself; horizontal and plane need both.
 *  @param ppCoeffs   packed coefficient stream
 *  @param pSrcDstU   receives 8x8 Cb samples
 *  @param pSrcDstV   the same for Cr
 *  @param srcDstStep step in bytes of both planes
 *  @param predMode   0 DC, 1 horizontal, 2 vertical, 3 plane
 *  @param cbp        coded-block bits 17..26
 *  @param chromaQP   QPc, 0..39
 *  @param edgeFlags  neighbours that are not available, the left edge in two halves: bit 0 upper, bit 1 lower
 *  @return as vekiReconstructChromaIntraMB_H264_16s8u_P2R
 */
VEKVC_API VekStatus vekiReconstructChromaIntraHalfsMB_H264_16s8u_P2R(Vek16s** ppCoeffs, Vek8u* pSrcDstU,
                                                                     Vek8u* pSrcDstV, Vek32s srcDstStep,
                                                                     Vek32s predMode, Vek32u cbp, Vek32s chromaQP,
                                                                     Vek8u edgeFlags);
/** vekiReconstructChromaIntra4x4MB_H264_16s8u_P2R with the left edge in two halves (edgeFlags bits 0 and 1).
 *  @param ppCoeffs      packed coefficient stream
 *  @param pSrcDstU      receives 8x8 Cb samples
 *  @param pSrcDstV      the same for Cr
 *  @param srcDstStep    step in bytes of both planes
 *  @param predMode      0 DC, 1 horizontal, 2 vertical, 3 plane
 *  @param cbp           coded-block bits 17..26
 *  @param chromaQPU     QPc of Cb, 0..39
 *  @param chromaQPV     QPc of Cr, 0..39
 *  @param edgeFlags     neighbours that are not available, the left edge in two halves: bit 0 upper, bit 1 lower
 *  @param pLevelScaleU  LevelScale4x4 for QPc%6 of Cb, 16 values
 *  @param pLevelScaleV  the same for Cr
 *  @param levelScaleDCU scale of the Cb DC block, 0..32767: LevelScale4x4(QPc%6, 0, 0), the first value of
 *                       pLevelScaleU
 *  @param levelScaleDCV the same for Cr
 *  @param bypass        non-zero: the coefficients (DC values at position 0 of their blocks) are the residual
 *  @return as vekiReconstructChromaIntra4x4MB_H264_16s8u_P2R
 */
VEKVC_API VekStatus vekiReconstructChromaIntraHalfs4x4MB_H264_16s8u_P2R(
    Vek16s** ppCoeffs, Vek8u* pSrcDstU, Vek8u* pSrcDstV, Vek32s srcDstStep, Vek32s predMode, Vek32u cbp,
    Vek32s chromaQPU, Vek32s chromaQPV, Vek8u edgeFlags, const Vek16s* pLevelScaleU, const Vek16s* pLevelScaleV,
    Vek32s levelScaleDCU, Vek32s levelScaleDCV, Vek8u bypass);
/** vekiReconstructChromaIntraHalfsMB_H264_16s8u_P2R for callers that keep the flags of each half apart.
 *  @param ppCoeffs       packed coefficient stream
 *  @param pSrcDstU       receives 8x8 Cb samples
 *  @param pSrcDstV       the same for Cr
 *  @param srcDstStep     step in bytes of both planes
 *  @param predMode       0 DC, 1 horizontal, 2 vertical, 3 plane
 *  @param cbp            coded-block bits 17..26
 *  @param chromaQP       QPc, 0..39
 *  @param edgeFlagsUpper bits 0 (left edge, rows 0..3), 2 and 4
 *  @param edgeFlagsLower bit 0 (left edge, rows 4..7); other bits are ignored
 *  @return as vekiReconstructChromaIntraHalfsMB_H264_16s8u_P2R
 */
VEKVC_API VekStatus vekiReconstructChromaIntraHalvesMB_H264_16s8u_P2R(Vek16s** ppCoeffs, Vek8u* pSrcDstU,
                                                                      Vek8u* pSrcDstV, Vek32s srcDstStep,
                                                                      Vek32s predMode, Vek32u cbp, Vek32s chromaQP,
                                                                      Vek8u edgeFlagsUpper, Vek8u edgeFlagsLower);
/** vekiReconstructChromaIntraHalfs4x4MB_H264_16s8u_P2R with the flags of
 *  vekiReconstructChromaIntraHalvesMB_H264_16s8u_P2R.
 *  @param ppCoeffs       packed coefficient stream
 *  @param pSrcDstU       receives 8x8 Cb samples
 *  @param pSrcDstV       the same for Cr
 *  @param srcDstStep     step in bytes of both planes
 *  @param predMode       0 DC, 1 horizontal, 2 vertical, 3 plane
 *  @param cbp            coded-block bits 17..26
 *  @param chromaQPU      QPc of Cb, 0..39
 *  @param chromaQPV      QPc of Cr, 0..39
 *  @param edgeFlagsUpper bits 0 (left edge, rows 0..3), 2 and 4
 *  @param edgeFlagsLower bit 0 (left edge, rows 4..7); other bits are ignored
 *  @param pLevelScaleU   LevelScale4x4 for QPc%6 of Cb, 16 values
 *  @param pLevelScaleV   the same for Cr
 *  @param levelScaleDCU  scale of the Cb DC block, 0..32767: LevelScale4x4(QPc%6, 0, 0), the first value of
 *                        pLevelScaleU
 *  @param levelScaleDCV  the same for Cr
 *  @param bypass         non-zero: the coefficients (DC values at position 0 of their blocks) are the residual
 *  @return as vekiReconstructChromaIntraHalfs4x4MB_H264_16s8u_P2R
 */
VEKVC_API VekStatus vekiReconstructChromaIntraHalves4x4MB_H264_16s8u_P2R(
    Vek16s** ppCoeffs, Vek8u* pSrcDstU, Vek8u* pSrcDstV, Vek32s srcDstStep, Vek32s predMode, Vek32u cbp,
    Vek32s chromaQPU, Vek32s chromaQPV, Vek8u edgeFlagsUpper, Vek8u edgeFlagsLower, const Vek16s* pLevelScaleU,
    const Vek16s* pLevelScaleV, Vek32s levelScaleDCU, Vek32s levelScaleDCV, Vek8u bypass);

/* ---- luma macroblocks, 8 to 14 bits ----
 *  As the 8-bit forms of the same name: 32-bit coefficients and arithmetic (wrapping), 16-bit samples, steps in bytes.
 *  QP is QP'Y = QPY + QpBdOffsetY, 0..51 + 6 * (bitDepth - 8); bitDepth is 8..14, results are clipped to
 *  0..2^bitDepth - 1, and 2^(bitDepth - 1) takes the place of 128. Samples read must be below 2^bitDepth.
 *  vekStsErrOutOfRange also for bitDepth. */

/** vekiReconstructLumaInter4x4MB_H264_16s8u_C1R for 8 to 14 bits.
 *  @param ppCoeffs    packed coefficient stream
 *  @param pSrcDst     16x16 samples of 16 bits: the prediction, replaced by the picture
 *  @param srcDstStep  step in bytes
 *  @param cbp         coded-block bits 1..16
 *  @param QP          QP'Y = QPY + QpBdOffsetY, 0..51 + 6 * (bitDepth - 8)
 *  @param pLevelScale LevelScale4x4 for QP%6, 16 values in raster order
 *  @param bypass      non-zero: if QP is 0, the coefficients are the residual
 *  @param bitDepth    8 to 14
 *  @return as vekiReconstructLumaInter4x4MB_H264_16s8u_C1R; vekStsErrOutOfRange also for bitDepth
 */
VEKVC_API VekStatus vekiReconstructLumaInter4x4_H264High_32s16u_IP1R(Vek32s** ppCoeffs, Vek16u* pSrcDst,
                                                                     Vek32s srcDstStep, Vek32u cbp, Vek32s QP,
                                                                     const Vek16s* pLevelScale, Vek8u bypass,
                                                                     Vek32s bitDepth);
/** vekiReconstructLumaInter8x8MB_H264_16s8u_C1R for 8 to 14 bits.
 *  @param ppCoeffs    packed coefficient stream
 *  @param pSrcDst     16x16 samples of 16 bits: the prediction, replaced by the picture
 *  @param srcDstStep  step in bytes
 *  @param cbp         an 8x8 block k is coded if any of its bits 4k + 1 .. 4k + 4 is set
 *  @param QP          QP'Y = QPY + QpBdOffsetY, 0..51 + 6 * (bitDepth - 8)
 *  @param pLevelScale LevelScale8x8 for QP%6, 64 values in raster order
 *  @param bypass      non-zero: if QP is 0, the coefficients are the residual
 *  @param bitDepth    8 to 14
 *  @return as vekiReconstructLumaInter8x8MB_H264_16s8u_C1R; vekStsErrOutOfRange also for bitDepth
 */
VEKVC_API VekStatus vekiReconstructLumaInter8x8_H264High_32s16u_IP1R(Vek32s** ppCoeffs, Vek16u* pSrcDst,
                                                                     Vek32s srcDstStep, Vek32u cbp, Vek32s QP,
                                                                     const Vek16s* pLevelScale, Vek8u bypass,
                                                                     Vek32s bitDepth);
/** vekiReconstructLumaIntra4x4MB_H264_16s8u_C1R for 8 to 14 bits.
 *  @param ppCoeffs    packed coefficient stream
 *  @param pSrcDst     receives 16x16 samples of 16 bits
 *  @param srcDstStep  step in bytes
 *  @param pPredModes  16 prediction modes (0..8, as for vekiPredictIntra_4x4_H264_8u_C1IR) in block-index order
 *  @param cbp         coded-block bits 1..16
 *  @param QP          QP'Y = QPY + QpBdOffsetY, 0..51 + 6 * (bitDepth - 8)
 *  @param edgeFlags   neighbours that are not available
 *  @param pLevelScale LevelScale4x4 for QP%6, 16 values in raster order (not null)
 *  @param bypass      non-zero: if QP is 0, the coefficients are the residual
 *  @param bitDepth    8 to 14
 *  @return as vekiReconstructLumaIntra4x4MB_H264_16s8u_C1R; vekStsErrOutOfRange also for bitDepth
 */
VEKVC_API VekStatus vekiReconstructLumaIntra4x4_H264High_32s16u_IP1R(Vek32s** ppCoeffs, Vek16u* pSrcDst,
                                                                     Vek32s srcDstStep, const Vek32u* pPredModes,
                                                                     Vek32u cbp, Vek32s QP, Vek8u edgeFlags,
                                                                     const Vek16s* pLevelScale, Vek8u bypass,
                                                                     Vek32s bitDepth);
/** vekiReconstructLumaIntra8x8MB_H264_16s8u_C1R for 8 to 14 bits.
 *  @param ppCoeffs    packed coefficient stream
 *  @param pSrcDst     receives 16x16 samples of 16 bits
 *  @param srcDstStep  step in bytes
 *  @param pPredModes  4 prediction modes (0..8, numbered as for 4x4)
 *  @param cbp         an 8x8 block k is coded if any of its bits 4k + 1 .. 4k + 4 is set
 *  @param QP          QP'Y = QPY + QpBdOffsetY, 0..51 + 6 * (bitDepth - 8)
 *  @param edgeFlags   neighbours that are not available
 *  @param pLevelScale LevelScale8x8 for QP%6, 64 values in raster order
 *  @param bypass      non-zero: if QP is 0, the coefficients are the residual
 *  @param bitDepth    8 to 14
 *  @return as vekiReconstructLumaIntra8x8MB_H264_16s8u_C1R; vekStsErrOutOfRange also for bitDepth
 */
VEKVC_API VekStatus vekiReconstructLumaIntra8x8_H264High_32s16u_IP1R(Vek32s** ppCoeffs, Vek16u* pSrcDst,
                                                                     Vek32s srcDstStep, const Vek32u* pPredModes,
                                                                     Vek32u cbp, Vek32s QP, Vek8u edgeFlags,
                                                                     const Vek16s* pLevelScale, Vek8u bypass,
                                                                     Vek32s bitDepth);
/** vekiReconstructLumaIntra16x16MB_H264_16s8u_C1R for 8 to 14 bits.
 *  @param ppCoeffs    packed coefficient stream
 *  @param pSrcDst     receives 16x16 samples of 16 bits
 *  @param srcDstStep  step in bytes
 *  @param predMode    0 vertical, 1 horizontal, 2 DC, 3 plane
 *  @param cbp         bit 0: the DC block; bits 1..16: the AC blocks
 *  @param QP          QP'Y = QPY + QpBdOffsetY, 0..51 + 6 * (bitDepth - 8)
 *  @param edgeFlags   neighbours that are not available
 *  @param pLevelScale LevelScale4x4 for QP%6, 16 values in raster order (not null); its first value scales the DC
 *                     block
 *  @param bypass      non-zero: if QP is 0, the coefficients (DC values at position 0 of their blocks) are the
 *                     residual
 *  @param bitDepth    8 to 14
 *  @return as vekiReconstructLumaIntra16x16MB_H264_16s8u_C1R; vekStsErrOutOfRange also for bitDepth
 */
VEKVC_API VekStatus vekiReconstructLumaIntra16x16_H264High_32s16u_IP1R(Vek32s** ppCoeffs, Vek16u* pSrcDst,
                                                                       Vek32s srcDstStep, Vek32s predMode, Vek32u cbp,
                                                                       Vek32s QP, Vek8u edgeFlags,
                                                                       const Vek16s* pLevelScale, Vek8u bypass,
                                                                       Vek32s bitDepth);
/** vekiReconstructLumaIntraHalf4x4MB_H264_16s8u_C1R for 8 to 14 bits.
 *  @param ppCoeffs    packed coefficient stream
 *  @param pSrcDst     receives 16x16 samples of 16 bits
 *  @param srcDstStep  step in bytes
 *  @param pPredModes  16 prediction modes (0..8, as for vekiPredictIntra_4x4_H264_8u_C1IR) in block-index order
 *  @param cbp         coded-block bits 1..16
 *  @param QP          QP'Y = QPY + QpBdOffsetY, 0..51 + 6 * (bitDepth - 8)
 *  @param edgeFlags   neighbours that are not available, the left edge in two halves: bit 0 upper, bit 1 lower
 *  @param pLevelScale LevelScale4x4 for QP%6, 16 values in raster order (not null)
 *  @param bypass      non-zero: if QP is 0, the coefficients are the residual
 *  @param bitDepth    8 to 14
 *  @return as vekiReconstructLumaIntraHalf4x4MB_H264_16s8u_C1R; vekStsErrOutOfRange also for bitDepth
 */
VEKVC_API VekStatus vekiReconstructLumaIntraHalf4x4_H264High_32s16u_IP1R(Vek32s** ppCoeffs, Vek16u* pSrcDst,
                                                                         Vek32s srcDstStep, const Vek32u* pPredModes,
                                                                         Vek32u cbp, Vek32s QP, Vek8u edgeFlags,
                                                                         const Vek16s* pLevelScale, Vek8u bypass,
                                                                         Vek32s bitDepth);
/** vekiReconstructLumaIntraHalf8x8MB_H264_16s8u_C1R for 8 to 14 bits.
 *  @param ppCoeffs    packed coefficient stream
 *  @param pSrcDst     receives 16x16 samples of 16 bits
 *  @param srcDstStep  step in bytes
 *  @param pPredModes  4 prediction modes (0..8, numbered as for 4x4)
 *  @param cbp         an 8x8 block k is coded if any of its bits 4k + 1 .. 4k + 4 is set
 *  @param QP          QP'Y = QPY + QpBdOffsetY, 0..51 + 6 * (bitDepth - 8)
 *  @param edgeFlags   neighbours that are not available, the left edge in two halves: bit 0 upper, bit 1 lower
 *  @param pLevelScale LevelScale8x8 for QP%6, 64 values in raster order
 *  @param bypass      non-zero: if QP is 0, the coefficients are the residual
 *  @param bitDepth    8 to 14
 *  @return as vekiReconstructLumaIntraHalf8x8MB_H264_16s8u_C1R; vekStsErrOutOfRange also for bitDepth
 */
VEKVC_API VekStatus vekiReconstructLumaIntraHalf8x8_H264High_32s16u_IP1R(Vek32s** ppCoeffs, Vek16u* pSrcDst,
                                                                         Vek32s srcDstStep, const Vek32u* pPredModes,
                                                                         Vek32u cbp, Vek32s QP, Vek8u edgeFlags,
                                                                         const Vek16s* pLevelScale, Vek8u bypass,
                                                                         Vek32s bitDepth);

/* ---- 4:2:0 chroma macroblocks, 8 to 14 bits ----
 *  chromaQPU and chromaQPV are QP'c = QPc + QpBdOffsetC, 0..39 + 6 * (bitDepth - 8). */

/** vekiReconstructChromaInter4x4MB_H264_16s8u_P2R for 8 to 14 bits.
 *  @param ppCoeffs      packed coefficient stream
 *  @param pSrcDstU      8x8 Cb samples of 16 bits: the prediction, replaced by the picture
 *  @param pSrcDstV      the same for Cr
 *  @param srcDstStep    step in bytes
 *  @param cbp           coded-block bits 17..26
 *  @param chromaQPU     QP'c of Cb = QPc + QpBdOffsetC, 0..39 + 6 * (bitDepth - 8)
 *  @param chromaQPV     the same for Cr
 *  @param pLevelScaleU  LevelScale4x4 for QPc%6 of Cb, 16 values
 *  @param pLevelScaleV  the same for Cr
 *  @param levelScaleDCU scale of the Cb DC block, 0..32767: LevelScale4x4(QPc%6, 0, 0), the first value of
 *                       pLevelScaleU
 *  @param levelScaleDCV the same for Cr
 *  @param bypass        non-zero: the coefficients (DC values at position 0 of their blocks) are the residual
 *  @param bitDepth      8 to 14
 *  @return as vekiReconstructChromaInter4x4MB_H264_16s8u_P2R; vekStsErrOutOfRange also for bitDepth
 */
VEKVC_API VekStatus vekiReconstructChromaInter4x4_H264High_32s16u_IP2R(
    Vek32s** ppCoeffs, Vek16u* pSrcDstU, Vek16u* pSrcDstV, Vek32s srcDstStep, Vek32u cbp, Vek32s chromaQPU,
    Vek32s chromaQPV, const Vek16s* pLevelScaleU, const Vek16s* pLevelScaleV, Vek32s levelScaleDCU,
    Vek32s levelScaleDCV, Vek8u bypass, Vek32s bitDepth);
/** vekiReconstructChromaIntra4x4MB_H264_16s8u_P2R for 8 to 14 bits.
 *  @param ppCoeffs      packed coefficient stream
 *  @param pSrcDstU      receives 8x8 Cb samples of 16 bits
 *  @param pSrcDstV      the same for Cr
 *  @param srcDstStep    step in bytes
 *  @param predMode      0 DC, 1 horizontal, 2 vertical, 3 plane
 *  @param cbp           coded-block bits 17..26
 *  @param chromaQPU     QP'c of Cb = QPc + QpBdOffsetC, 0..39 + 6 * (bitDepth - 8)
 *  @param chromaQPV     the same for Cr
 *  @param edgeFlags     neighbours that are not available
 *  @param pLevelScaleU  LevelScale4x4 for QPc%6 of Cb, 16 values
 *  @param pLevelScaleV  the same for Cr
 *  @param levelScaleDCU scale of the Cb DC block, 0..32767: LevelScale4x4(QPc%6, 0, 0), the first value of
 *                       pLevelScaleU
 *  @param levelScaleDCV the same for Cr
 *  @param bypass        non-zero: the coefficients (DC values at position 0 of their blocks) are the residual
 *  @param bitDepth      8 to 14
 *  @return as vekiReconstructChromaIntra4x4MB_H264_16s8u_P2R; vekStsErrOutOfRange also for bitDepth
 */
VEKVC_API VekStatus vekiReconstructChromaIntra4x4_H264High_32s16u_IP2R(
    Vek32s** ppCoeffs, Vek16u* pSrcDstU, Vek16u* pSrcDstV, Vek32s srcDstStep, Vek32s predMode, Vek32u cbp,
    Vek32s chromaQPU, Vek32s chromaQPV, Vek8u edgeFlags, const Vek16s* pLevelScaleU, const Vek16s* pLevelScaleV,
    Vek32s levelScaleDCU, Vek32s levelScaleDCV, Vek8u bypass, Vek32s bitDepth);
/** vekiReconstructChromaIntraHalfs4x4MB_H264_16s8u_P2R for 8 to 14 bits.
 *  @param ppCoeffs      packed coefficient stream
 *  @param pSrcDstU      receives 8x8 Cb samples of 16 bits
 *  @param pSrcDstV      the same for Cr
 *  @param srcDstStep    step in bytes
 *  @param predMode      0 DC, 1 horizontal, 2 vertical, 3 plane
 *  @param cbp           coded-block bits 17..26
 *  @param chromaQPU     QP'c of Cb = QPc + QpBdOffsetC, 0..39 + 6 * (bitDepth - 8)
 *  @param chromaQPV     the same for Cr
 *  @param edgeFlags     neighbours that are not available, the left edge in two halves: bit 0 upper, bit 1 lower
 *  @param pLevelScaleU  LevelScale4x4 for QPc%6 of Cb, 16 values
 *  @param pLevelScaleV  the same for Cr
 *  @param levelScaleDCU scale of the Cb DC block, 0..32767: LevelScale4x4(QPc%6, 0, 0), the first value of
 *                       pLevelScaleU
 *  @param levelScaleDCV the same for Cr
 *  @param bypass        non-zero: the coefficients (DC values at position 0 of their blocks) are the residual
 *  @param bitDepth      8 to 14
 *  @return as vekiReconstructChromaIntraHalfs4x4MB_H264_16s8u_P2R; vekStsErrOutOfRange also for bitDepth
 */
VEKVC_API VekStatus vekiReconstructChromaIntraHalf4x4_H264High_32s16u_IP2R(
    Vek32s** ppCoeffs, Vek16u* pSrcDstU, Vek16u* pSrcDstV, Vek32s srcDstStep, Vek32s predMode, Vek32u cbp,
    Vek32s chromaQPU, Vek32s chromaQPV, Vek8u edgeFlags, const Vek16s* pLevelScaleU, const Vek16s* pLevelScaleV,
    Vek32s levelScaleDCU, Vek32s levelScaleDCV, Vek8u bypass, Vek32s bitDepth);

/* ---- 4:2:2 chroma macroblocks ----
 *  Two planes of 8x16 samples. Each plane has a DC block of 8 values (two wide, four high, 8.5.11) and eight AC blocks
 *  in raster order, (0,0), (4,0), (0,4), (4,4) .. (4,12). These need more bits than one word has room for behind the
 *  luma bits, so these forms have a word of their own, cbpChroma: bit 0 Cb DC, bit 1 Cr DC, bits 2..9 Cb AC blocks
 *  0..7,
 *  bits 10..17 Cr AC blocks 0..7. chromaQPU and chromaQPV stay QP'c; the DC blocks are scaled with QP'c,dc = QP'c + 3,
 *  which the functions add themselves. levelScaleDCU and levelScaleDCV are LevelScale4x4((QP'c + 3)%6, 0, 0). */

/** vekiReconstructChromaInter4x4MB_H264_16s8u_P2R for 4:2:2.
 *  @param ppCoeffs      packed coefficient stream
 *  @param pSrcDstU      8x16 Cb samples: the prediction, replaced by the picture
 *  @param pSrcDstV      the same for Cr
 *  @param srcDstStep    step in bytes of both planes
 *  @param cbpChroma     coded-block bits 0..17 as above
 *  @param chromaQPU     QPc of Cb, 0..39
 *  @param chromaQPV     QPc of Cr, 0..39
 *  @param pLevelScaleU  LevelScale4x4 for QPc%6 of Cb, 16 values
 *  @param pLevelScaleV  the same for Cr
 *  @param levelScaleDCU scale of the Cb DC block, 0..32767: LevelScale4x4((QP'c + 3)%6, 0, 0)
 *  @param levelScaleDCV the same for Cr
 *  @param bypass        non-zero: the coefficients (DC values at position 0 of their blocks) are the residual
 *  @return as vekiReconstructChromaInter4x4MB_H264_16s8u_P2R
 */
VEKVC_API VekStatus vekiReconstructChroma422Inter4x4_H264High_16s8u_IP2R(
    Vek16s** ppCoeffs, Vek8u* pSrcDstU, Vek8u* pSrcDstV, Vek32s srcDstStep, Vek32u cbpChroma, Vek32s chromaQPU,
    Vek32s chromaQPV, const Vek16s* pLevelScaleU, const Vek16s* pLevelScaleV, Vek32s levelScaleDCU,
    Vek32s levelScaleDCV, Vek8u bypass);
/** vekiReconstructChroma422Inter4x4_H264High_16s8u_IP2R for 8 to 14 bits.
 *  @param ppCoeffs      packed coefficient stream
 *  @param pSrcDstU      8x16 Cb samples: the prediction, replaced by the picture
 *  @param pSrcDstV      the same for Cr
 *  @param srcDstStep    step in bytes
 *  @param cbpChroma     coded-block bits 0..17 as above
 *  @param chromaQPU     QP'c of Cb = QPc + QpBdOffsetC, 0..39 + 6 * (bitDepth - 8)
 *  @param chromaQPV     the same for Cr
 *  @param pLevelScaleU  LevelScale4x4 for QPc%6 of Cb, 16 values
 *  @param pLevelScaleV  the same for Cr
 *  @param levelScaleDCU scale of the Cb DC block, 0..32767: LevelScale4x4((QP'c + 3)%6, 0, 0)
 *  @param levelScaleDCV the same for Cr
 *  @param bypass        non-zero: the coefficients (DC values at position 0 of their blocks) are the residual
 *  @param bitDepth      8 to 14
 *  @return as vekiReconstructChroma422Inter4x4_H264High_16s8u_IP2R; vekStsErrOutOfRange also for bitDepth
 */
VEKVC_API VekStatus vekiReconstructChroma422Inter4x4_H264High_32s16u_IP2R(
    Vek32s** ppCoeffs, Vek16u* pSrcDstU, Vek16u* pSrcDstV, Vek32s srcDstStep, Vek32u cbpChroma, Vek32s chromaQPU,
    Vek32s chromaQPV, const Vek16s* pLevelScaleU, const Vek16s* pLevelScaleV, Vek32s levelScaleDCU,
    Vek32s levelScaleDCV, Vek8u bypass, Vek32s bitDepth);
/** vekiReconstructChromaIntra4x4MB_H264_16s8u_P2R for 4:2:2.
 *  @param ppCoeffs      packed coefficient stream
 *  @param pSrcDstU      receives 8x16 Cb samples
 *  @param pSrcDstV      the same for Cr
 *  @param srcDstStep    step in bytes of both planes
 *  @param predMode      0 DC, 1 horizontal, 2 vertical, 3 plane
 *  @param cbpChroma     coded-block bits 0..17 as above
 *  @param chromaQPU     QPc of Cb, 0..39
 *  @param chromaQPV     QPc of Cr, 0..39
 *  @param edgeFlags     neighbours that are not available
 *  @param pLevelScaleU  LevelScale4x4 for QPc%6 of Cb, 16 values
 *  @param pLevelScaleV  the same for Cr
 *  @param levelScaleDCU scale of the Cb DC block, 0..32767: LevelScale4x4((QP'c + 3)%6, 0, 0)
 *  @param levelScaleDCV the same for Cr
 *  @param bypass        non-zero: the coefficients (DC values at position 0 of their blocks) are the residual
 *  @return as vekiReconstructChromaIntra4x4MB_H264_16s8u_P2R
 */
VEKVC_API VekStatus vekiReconstructChroma422Intra4x4_H264High_16s8u_IP2R(
    Vek16s** ppCoeffs, Vek8u* pSrcDstU, Vek8u* pSrcDstV, Vek32s srcDstStep, Vek32s predMode, Vek32u cbpChroma,
    Vek32s chromaQPU, Vek32s chromaQPV, Vek8u edgeFlags, const Vek16s* pLevelScaleU, const Vek16s* pLevelScaleV,
    Vek32s levelScaleDCU, Vek32s levelScaleDCV, Vek8u bypass);
/** vekiReconstructChroma422Intra4x4_H264High_16s8u_IP2R for 8 to 14 bits.
 *  @param ppCoeffs      packed coefficient stream
 *  @param pSrcDstU      receives 8x16 Cb samples
 *  @param pSrcDstV      the same for Cr
 *  @param srcDstStep    step in bytes
 *  @param predMode      0 DC, 1 horizontal, 2 vertical, 3 plane
 *  @param cbpChroma     coded-block bits 0..17 as above
 *  @param chromaQPU     QP'c of Cb = QPc + QpBdOffsetC, 0..39 + 6 * (bitDepth - 8)
 *  @param chromaQPV     the same for Cr
 *  @param edgeFlags     neighbours that are not available
 *  @param pLevelScaleU  LevelScale4x4 for QPc%6 of Cb, 16 values
 *  @param pLevelScaleV  the same for Cr
 *  @param levelScaleDCU scale of the Cb DC block, 0..32767: LevelScale4x4((QP'c + 3)%6, 0, 0)
 *  @param levelScaleDCV the same for Cr
 *  @param bypass        non-zero: the coefficients (DC values at position 0 of their blocks) are the residual
 *  @param bitDepth      8 to 14
 *  @return as vekiReconstructChroma422Intra4x4_H264High_16s8u_IP2R; vekStsErrOutOfRange also for bitDepth
 */
VEKVC_API VekStatus vekiReconstructChroma422Intra4x4_H264High_32s16u_IP2R(
    Vek32s** ppCoeffs, Vek16u* pSrcDstU, Vek16u* pSrcDstV, Vek32s srcDstStep, Vek32s predMode, Vek32u cbpChroma,
    Vek32s chromaQPU, Vek32s chromaQPV, Vek8u edgeFlags, const Vek16s* pLevelScaleU, const Vek16s* pLevelScaleV,
    Vek32s levelScaleDCU, Vek32s levelScaleDCV, Vek8u bypass, Vek32s bitDepth);
/** vekiReconstructChroma422Intra4x4_H264High_16s8u_IP2R with the left edge in two halves: bit 0 of edgeFlags for rows
 *  0..7, bit 1 for rows 8..15.
 *  @param ppCoeffs      packed coefficient stream
 *  @param pSrcDstU      receives 8x16 Cb samples
 *  @param pSrcDstV      the same for Cr
 *  @param srcDstStep    step in bytes of both planes
 *  @param predMode      0 DC, 1 horizontal, 2 vertical, 3 plane
 *  @param cbpChroma     coded-block bits 0..17 as above
 *  @param chromaQPU     QPc of Cb, 0..39
 *  @param chromaQPV     QPc of Cr, 0..39
 *  @param edgeFlags     neighbours that are not available, the left edge in two halves: bit 0 upper, bit 1 lower
 *  @param pLevelScaleU  LevelScale4x4 for QPc%6 of Cb, 16 values
 *  @param pLevelScaleV  the same for Cr
 *  @param levelScaleDCU scale of the Cb DC block, 0..32767: LevelScale4x4((QP'c + 3)%6, 0, 0)
 *  @param levelScaleDCV the same for Cr
 *  @param bypass        non-zero: the coefficients (DC values at position 0 of their blocks) are the residual
 *  @return as vekiReconstructChroma422Intra4x4_H264High_16s8u_IP2R
 */
VEKVC_API VekStatus vekiReconstructChroma422IntraHalf4x4_H264High_16s8u_IP2R(
    Vek16s** ppCoeffs, Vek8u* pSrcDstU, Vek8u* pSrcDstV, Vek32s srcDstStep, Vek32s predMode, Vek32u cbpChroma,
    Vek32s chromaQPU, Vek32s chromaQPV, Vek8u edgeFlags, const Vek16s* pLevelScaleU, const Vek16s* pLevelScaleV,
    Vek32s levelScaleDCU, Vek32s levelScaleDCV, Vek8u bypass);
/** vekiReconstructChroma422IntraHalf4x4_H264High_16s8u_IP2R for 8 to 14 bits.
 *  @param ppCoeffs      packed coefficient stream
 *  @param pSrcDstU      receives 8x16 Cb samples
 *  @param pSrcDstV      the same for Cr
 *  @param srcDstStep    step in bytes
 *  @param predMode      0 DC, 1 horizontal, 2 vertical, 3 plane
 *  @param cbpChroma     coded-block bits 0..17 as above
 *  @param chromaQPU     QP'c of Cb = QPc + QpBdOffsetC, 0..39 + 6 * (bitDepth - 8)
 *  @param chromaQPV     the same for Cr
 *  @param edgeFlags     neighbours that are not available, the left edge in two halves: bit 0 upper, bit 1 lower
 *  @param pLevelScaleU  LevelScale4x4 for QPc%6 of Cb, 16 values
 *  @param pLevelScaleV  the same for Cr
 *  @param levelScaleDCU scale of the Cb DC block, 0..32767: LevelScale4x4((QP'c + 3)%6, 0, 0)
 *  @param levelScaleDCV the same for Cr
 *  @param bypass        non-zero: the coefficients (DC values at position 0 of their blocks) are the residual
 *  @param bitDepth      8 to 14
 *  @return as vekiReconstructChroma422IntraHalf4x4_H264High_16s8u_IP2R; vekStsErrOutOfRange also for bitDepth
 */
VEKVC_API VekStatus vekiReconstructChroma422IntraHalf4x4_H264High_32s16u_IP2R(
    Vek32s** ppCoeffs, Vek16u* pSrcDstU, Vek16u* pSrcDstV, Vek32s srcDstStep, Vek32s predMode, Vek32u cbpChroma,
    Vek32s chromaQPU, Vek32s chromaQPV, Vek8u edgeFlags, const Vek16s* pLevelScaleU, const Vek16s* pLevelScaleV,
    Vek32s levelScaleDCU, Vek32s levelScaleDCV, Vek8u bypass, Vek32s bitDepth);

#ifdef __cplusplus
}
#endif

#endif
