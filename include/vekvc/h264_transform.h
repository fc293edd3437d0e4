/** @file h264_transform.h
 *  H.264/AVC residual arithmetic, one block per call: forward and inverse transforms, quantization and scaling
 *  (clauses 8.5.6 to 8.5.13 and 8.6), for encoders and decoders.
 *
 *  Blocks are arrays in raster order without gaps: 16 values for 4x4, 64 for 8x8, 4 for 2x2 chroma DC, 8 for 2x4
 *  chroma DC (two wide, four high). A 4x4 block of samples is addressed by a pointer and a step in bytes; only its 4
 *  rows of 4 samples (8 of 8) are touched. Unless a parameter is said to be optional its pointer must not be null.
 *
 *  QP: the 16s forms take 0..51 (luma) or 0..39 (chroma, QPc). The 32s forms serve all bit depths and take QP'Y up to
 *  87 or QP'c up to 75: the standard's QP with QpBdOffset included.
 *
 *  Scales. normAdjust4x4 and normAdjust8x8 are those of equations 8-315 and 8-318; vekiGenScaleLevel4x4_H264_8u16s_C1
 *  and vekiGenScaleLevel8x8_H264_8u16s_D2 make both directions' scales from a scaling list.
 *  - Inverse: LevelScale = weight * normAdjust(QP%6); null stands for the flat weight 16.
 *  - Forward, 4x4: multiplier / weight, where the multipliers are (13107, 5243, 8066) for QP%6 = 0 and so on (row and
 *    column even / odd / mixed). Null stands for the undivided multipliers, with a shift that is 4 larger.
 *
 *  All scales are 0..32767 (which they always are for weights 1..255), scan indices are not negative, samples of a
 *  prediction are below 2^bitDepth; results for other values are not defined.
 *
 *  Forward quantization: level = sign(c) * ((|c| * multiplier + f) >> qbits), the sum formed in 32 bits with
 *  wrap-around and shifted arithmetically; f = floor(2^qbits / 3) for intra blocks and floor(2^qbits / 6) for inter
 *  blocks.
 *
 *  Range of intermediates. The 16s forms keep transformed and scaled values in 16 bits (wrapping where nothing else
 *  is said); in their inverse core transforms, 4x4 and 8x8, every addition and subtraction saturates at 16 bits, the
 *  rounding +32 included, sums of several terms being taken from left to right as clause 8.5.13.2 writes them (-in3 +
 *  in5 first). The 32s forms wrap at 32 bits. Streams that follow the standard never reach either limit.
 */
#ifndef VEKVC_H264_TRANSFORM_H
#define VEKVC_H264_TRANSFORM_H

#include "vekvc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- 4x4 residual blocks, forward ---- */

/** Forward core transform of a 4x4 residual without scaling, results wrapped to 16 bits.
 *  @param pSrc residual, 16 values  @param pDst receives 16 values; may be pSrc
 *  @return vekStsErrNullPtr if a pointer is null
 */
VEKVC_API VekStatus vekiTransformResidual4x4Fwd_H264_16s_C1(const Vek16s* pSrc, Vek16s* pDst);
/** As vekiTransformResidual4x4Fwd_H264_16s_C1, in 32 bits.
 *  @param pSrc residual, 16 values
 *  @param pDst receives 16 values; may be pSrc
 *  @return as vekiTransformResidual4x4Fwd_H264_16s_C1
 */
VEKVC_API VekStatus vekiTransformResidual4x4Fwd_H264_32s_C1(const Vek32s* pSrc, Vek32s* pDst);

/** Forward core transform (kept in 16 bits) and quantization of a 4x4 residual.
 *  @param pSrc residual, 16 values
 *  @param pDst receives 16 levels; may be pSrc
 *  @param QP 0..51
 *  @param pNumLevels receives the count of non-zero levels, negated if the level at position 0 is one of them
 *  @param isIntra non-zero: intra rounding, zero: inter rounding
 *  @param pScanPos scan index (0..15) of each raster position, 16 values
 *  @param pLastPos receives the largest scan index of a non-zero level, 0 if there is none
 *  @param pScale forward scale, 16 values, with qbits = 11 + QP/6; null: default multipliers, qbits = 15 + QP/6
 *  @return vekStsErrNullPtr (pSrc, pDst, pNumLevels, pScanPos, pLastPos), vekStsErrOutOfRange (QP)
 */
VEKVC_API VekStatus vekiTransformQuantFwd4x4_H264_16s_C1(const Vek16s* pSrc, Vek16s* pDst, Vek32s QP,
                                                         Vek32s* pNumLevels, Vek32u isIntra, const Vek16s* pScanPos,
                                                         Vek32s* pLastPos, const Vek16s* pScale);
/** As vekiTransformQuantFwd4x4_H264_16s_C1 for higher bit depths: transform and levels in 32 bits, QP 0..87.
 *  @param pSrc       residual, 16 values
 *  @param pDst       receives 16 levels; may be pSrc
 *  @param QP         0..87
 *  @param pNumLevels receives the count of non-zero levels, negated if the level at position 0 is one of them
 *  @param isIntra    non-zero: intra rounding, zero: inter rounding
 *  @param pScanPos   scan index (0..15) of each raster position, 16 values
 *  @param pLastPos   receives the largest scan index of a non-zero level, 0 if there is none
 *  @param pScale     forward scale, 16 values, with qbits = 11 + QP/6; null: default multipliers, qbits = 15 + QP/6
 *  @return as vekiTransformQuantFwd4x4_H264_16s_C1
 */
VEKVC_API VekStatus vekiTransformQuantFwd4x4_H264_16s32s_C1(const Vek16s* pSrc, Vek32s* pDst, Vek32s QP,
                                                            Vek32s* pNumLevels, Vek32u isIntra, const Vek16s* pScanPos,
                                                            Vek32s* pLastPos, const Vek16s* pScale);
/** vekiTransformQuantFwd4x4_H264_16s_C1 in place with the default multipliers.
 *  @param pSrcDst residual, replaced by its levels, 16 values
 *  @param QP 0..51
 *  @param isIntra non-zero: intra rounding
 *  @param pNumLevels receives the count of non-zero levels, negated if the level at position 0 is one of them
 *  @param pScanPos scan index of each raster position; optional, null: the zig-zag scan
 *  @param pLastPos receives the largest scan index of a non-zero level, 0 if there is none
 *  @return vekStsErrNullPtr (pSrcDst, pNumLevels, pLastPos), vekStsErrOutOfRange (QP)
 */
VEKVC_API VekStatus vekiTransformQuantResidual_H264_16s_C1I(Vek16s* pSrcDst, Vek32s QP, Vek32u isIntra,
                                                            Vek32s* pNumLevels, const Vek16s* pScanPos,
                                                            Vek32s* pLastPos);

/** Quantization of transformed 4x4 coefficients, qbits = 11 + QP/6.
 *  @param pSrc transformed coefficients, 16 values
 *  @param pDst receives 16 levels (wrapped to 16 bits); may be pSrc
 *  @param pNumLevels receives the count of non-zero levels (never negated)
 *  @param pLastPos receives the largest scan index of a non-zero level, 0 if there is none
 *  @param pScale forward scale, 16 values
 *  @param pScanPos scan index of each raster position, 16 values
 *  @param QP 0..51
 *  @param isIntra non-zero: intra rounding
 *  @return vekStsErrNullPtr (all six pointers), vekStsErrOutOfRange (QP)
 */
VEKVC_API VekStatus vekiQuantizeResidual4x4Fwd_H264_16s32s_C1(const Vek16s* pSrc, Vek16s* pDst, Vek32u* pNumLevels,
                                                              Vek32u* pLastPos, const Vek32u* pScale,
                                                              const Vek16s* pScanPos, Vek32s QP, Vek32u isIntra);
/** As vekiQuantizeResidual4x4Fwd_H264_16s32s_C1 with a scale of 16-bit values (taken as signed); pScale null: default
 *  multipliers, qbits = 15 + QP/6. QP is unsigned, 0..51.
 *  @param pSrc       transformed coefficients, 16 values
 *  @param pDst       receives 16 levels (wrapped to 16 bits); may be pSrc
 *  @param pNumLevels receives the count of non-zero levels (never negated)
 *  @param pLastPos   receives the largest scan index of a non-zero level, 0 if there is none
 *  @param pScale     forward scale, 16 values; null: default multipliers
 *  @param pScanPos   scan index of each raster position, 16 values
 *  @param QP         0..51
 *  @param isIntra    non-zero: intra rounding
 *  @return as vekiQuantizeResidual4x4Fwd_H264_16s32s_C1
 */
VEKVC_API VekStatus vekiQuantizeResidual4x4Fwd_H264_16s_C1(const Vek16s* pSrc, Vek16s* pDst, Vek32u* pNumLevels,
                                                           Vek32u* pLastPos, const Vek16s* pScale,
                                                           const Vek16s* pScanPos, Vek32u QP, Vek32u isIntra);
/** As vekiQuantizeResidual4x4Fwd_H264_16s32s_C1 with 32-bit data; pScale null: default multipliers, qbits = 15 + QP/6.
 *  QP is unsigned, 0..87.
 *  @param pSrc       transformed coefficients, 16 values
 *  @param pDst       receives 16 levels; may be pSrc
 *  @param pNumLevels receives the count of non-zero levels (never negated)
 *  @param pLastPos   receives the largest scan index of a non-zero level, 0 if there is none
 *  @param pScale     forward scale, 16 values; null: default multipliers
 *  @param pScanPos   scan index of each raster position, 16 values
 *  @param QP         0..87
 *  @param isIntra    non-zero: intra rounding
 *  @return as vekiQuantizeResidual4x4Fwd_H264_16s32s_C1
 */
VEKVC_API VekStatus vekiQuantizeResidual4x4Fwd_H264_32s_C1(const Vek32s* pSrc, Vek32s* pDst, Vek32u* pNumLevels,
                                                           Vek32u* pLastPos, const Vek32u* pScale,
                                                           const Vek16s* pScanPos, Vek32u QP, Vek32u isIntra);

/* ---- 4x4 residual blocks, inverse (8.5.12) ---- */

/** Inverse core transform with (x + 32) >> 6 (8.5.12.2), saturating at 16 bits.
 *  @param pSrc scaled coefficients, 16 values  @param pDst receives the residual, 16 values; may be pSrc
 *  @return vekStsErrNullPtr if a pointer is null
 */
VEKVC_API VekStatus vekiTransformResidual4x4Inv_H264_16s_C1(const Vek16s* pSrc, Vek16s* pDst);
/** As vekiTransformResidual4x4Inv_H264_16s_C1, in 32 bits with wrap-around.
 *  @param pSrc scaled coefficients, 16 values
 *  @param pDst receives the residual, 16 values; may be pSrc
 *  @return as vekiTransformResidual4x4Inv_H264_16s_C1
 */
VEKVC_API VekStatus vekiTransformResidual4x4Inv_H264_32s_C1(const Vek32s* pSrc, Vek32s* pDst);

/** Scaling (8.5.12.1), inverse transform (8.5.12.2) and addition to the prediction with clipping to 0..255. Scaling:
 *  QP below 24: d = (c * LevelScale + 2^(3 - QP/6)) >> (4 - QP/6), else d = (c * LevelScale) << (QP/6 - 4), kept in
 *  16 bits.
 *  @param pPred prediction, 4x4 samples  @param predStep its step in bytes
 *  @param pSrcDst levels, 16 values; left as they are. With hasAC zero only position 0 is read, and none if pDC is
 *                 given
 *  @param pDC optional: one scaled DC that replaces d at position 0 as it stands
 *  @param pDst receives 4x4 samples; may be pPred  @param dstStep its step in bytes
 *  @param QP 0..51
 *  @param hasAC non-zero: transform the whole block; zero: add (d + 32) >> 6 of the DC to all samples
 *  @param pScale LevelScale4x4 for QP%6, 16 values; null: flat
 *  @return vekStsErrNullPtr (pPred, pSrcDst, pDst), vekStsErrOutOfRange (QP)
 */
VEKVC_API VekStatus vekiTransformQuantInvAddPred4x4_H264_16s_C1IR(const Vek8u* pPred, Vek32s predStep, Vek16s* pSrcDst,
                                                                  const Vek16s* pDC, Vek8u* pDst, Vek32s dstStep,
                                                                  Vek32s QP, Vek32u hasAC, const Vek16s* pScale);
/** As vekiTransformQuantInvAddPred4x4_H264_16s_C1IR for higher bit depths: 32-bit arithmetic, 16-bit samples.
 *  @param pPred    prediction, 4x4 samples
 *  @param predStep its step in bytes
 *  @param pSrcDst  levels, 16 values; left as they are. With hasAC zero only position 0 is read, and none if pDC is
 *                  given
 *  @param pDC      optional: one scaled DC that replaces d at position 0 as it stands
 *  @param pDst     receives 4x4 samples; may be pPred
 *  @param dstStep  its step in bytes
 *  @param QP       QP'Y, 0..87
 *  @param hasAC    non-zero: transform the whole block; zero: add (d + 32) >> 6 of the DC to all samples
 *  @param pScale   LevelScale4x4 for QP%6, 16 values; null: flat
 *  @param bitDepth 9..14; results are clipped to 0..2^bitDepth - 1
 *  @return vekStsErrNullPtr (pPred, pSrcDst, pDst), vekStsErrOutOfRange (QP, bitDepth)
 */
VEKVC_API VekStatus vekiTransformQuantInvAddPred4x4_H264_32s_C1IR(const Vek16u* pPred, Vek32s predStep, Vek32s* pSrcDst,
                                                                  const Vek32s* pDC, Vek16u* pDst, Vek32s dstStep,
                                                                  Vek32s QP, Vek32u hasAC, const Vek16s* pScale,
                                                                  Vek32s bitDepth);
/** vekiTransformQuantInvAddPred4x4_H264_16s_C1IR with flat scaling, where the levels may be left out.
 *  @param pPred    prediction, 4x4 samples
 *  @param predStep its step in bytes
 *  @param pSrcDst  levels; may be null if pDC is given: then only the DC is added, whatever hasAC says
 *  @param pDC      optional: one scaled DC that replaces d at position 0 as it stands
 *  @param pDst     receives 4x4 samples; may be pPred
 *  @param dstStep  its step in bytes
 *  @param QP       0..51
 *  @param hasAC    non-zero: transform the whole block; zero: add (d + 32) >> 6 of the DC to all samples
 *  @return vekStsErrNullPtr (pPred, pDst, and pSrcDst if pDC is null too), vekStsErrOutOfRange (QP)
 */
VEKVC_API VekStatus vekiDequantTransformResidualAndAdd_H264_16s_C1I(const Vek8u* pPred, Vek32s predStep,
                                                                    Vek16s* pSrcDst, const Vek16s* pDC, Vek8u* pDst,
                                                                    Vek32s dstStep, Vek32s QP, Vek32u hasAC);
/** Scaling with the flat matrix and inverse transform in place; the block lies in a plane of 16-bit values.
 *  @param pSrcDst 4x4 levels, replaced by the residual
 *  @param srcDstStep its step in bytes, at least 8
 *  @param pDC optional: one scaled DC that replaces the one at position 0
 *  @param QP 0..51
 *  @param hasAC zero: only the DC is used, all 16 values become (d + 32) >> 6
 *  @return vekStsErrNullPtr (pSrcDst), vekStsErrStep, vekStsErrOutOfRange (QP)
 */
VEKVC_API VekStatus vekiDequantTransformResidual_H264_16s_C1I(Vek16s* pSrcDst, Vek32s srcDstStep, const Vek16s* pDC,
                                                              Vek32s QP, Vek32u hasAC);

/* ---- luma DC of Intra16x16 macroblocks (8.5.10) ---- */

/** 4x4 Hadamard transform and quantization of the 16 luma DC values of an Intra16x16 macroblock. Each transformed
 *  value is halved by an arithmetic shift, kept in 16 bits; sums before that are exact. Quantization always with
 *  intra rounding. Without pScaleDC: multiplier of QP%6 at position 0, qbits = 16 + QP/6, f = floor(2^qbits / 3).
 *  With it: qbits = 12 + QP/6 and f = 1364 * 2^(QP/6), deliberately not floor(2^qbits / 3).
 *  @param pDst receives 16 levels; may be pSrc
 *  @param pSrc the 16 DC values; replaced by the transformed values if needTransform is non-zero
 *  @param QP 0..51
 *  @param pNumLevels receives the count of non-zero levels, negated if the first transformed value is non-zero
 *  @param needTransform zero: pSrc holds transformed values already
 *  @param pScanPos scan index of each raster position, 16 values
 *  @param pLastPos receives the largest scan index of a non-zero level, 0 if there is none
 *  @param pScaleDC optional: one forward scale value, that of position 0
 *  @return vekStsErrNullPtr (all but pScaleDC), vekStsErrOutOfRange (QP)
 */
VEKVC_API VekStatus vekiTransformQuantFwdLumaDC4x4_H264_16s_C1I(Vek16s* pDst, Vek16s* pSrc, Vek32s QP,
                                                                Vek32s* pNumLevels, Vek32u needTransform,
                                                                const Vek16s* pScanPos, Vek32s* pLastPos,
                                                                const Vek16s* pScaleDC);
/** As vekiTransformQuantFwdLumaDC4x4_H264_16s_C1I, in 32 bits; QP 0..87.
 *  @param pDst          receives 16 levels; may be pSrc
 *  @param pSrc          the 16 DC values; replaced by the transformed values if needTransform is non-zero
 *  @param QP            0..87
 *  @param pNumLevels    receives the count of non-zero levels, negated if the first transformed value is non-zero
 *  @param needTransform zero: pSrc holds transformed values already
 *  @param pScanPos      scan index of each raster position, 16 values
 *  @param pLastPos      receives the largest scan index of a non-zero level, 0 if there is none
 *  @param pScaleDC      optional: one forward scale value, that of position 0
 *  @return as vekiTransformQuantFwdLumaDC4x4_H264_16s_C1I
 */
VEKVC_API VekStatus vekiTransformQuantFwdLumaDC4x4_H264_32s_C1I(Vek32s* pDst, Vek32s* pSrc, Vek32s QP,
                                                                Vek32s* pNumLevels, Vek32u needTransform,
                                                                const Vek16s* pScanPos, Vek32s* pLastPos,
                                                                const Vek16s* pScaleDC);
/** vekiTransformQuantFwdLumaDC4x4_H264_16s_C1I with the default multiplier.
 *  @param pDst          receives 16 levels; may be pSrc
 *  @param pSrc          the 16 DC values; replaced by the transformed values if needTransform is non-zero
 *  @param QP            0..51
 *  @param pNumLevels    receives the count of non-zero levels, negated if the first transformed value is non-zero
 *  @param needTransform zero: pSrc holds transformed values already
 *  @param pScanPos      scan index of each raster position, 16 values
 *  @param pLastPos      receives the largest scan index of a non-zero level, 0 if there is none
 *  @return as vekiTransformQuantFwdLumaDC4x4_H264_16s_C1I
 */
VEKVC_API VekStatus vekiTransformQuantLumaDC_H264_16s_C1I(Vek16s* pDst, Vek16s* pSrc, Vek32s QP, Vek32s* pNumLevels,
                                                          Vek32u needTransform, const Vek16s* pScanPos,
                                                          Vek32s* pLastPos);

/** Inverse 4x4 Hadamard transform (results kept in 16 bits) and scaling of luma DC levels with a flat matrix.
 *  @param pSrcDst 16 levels in raster order, replaced by the scaled DC values of the 16 blocks  @param QP 0..51
 *  @return vekStsErrNullPtr, vekStsErrOutOfRange (QP)
 */
VEKVC_API VekStatus vekiTransformDequantLumaDC_H264_16s_C1I(Vek16s* pSrcDst, Vek32s QP);
/** Inverse 4x4 Hadamard transform and scaling of luma DC levels: QP below 36: (f * LevelScale(0,0) + 2^(5 - QP/6)) >>
 *  (6 - QP/6), else (f * LevelScale(0,0)) << (QP/6 - 6).
 *  @param pSrcDst 16 levels in raster order, replaced by the scaled DC values of the 16 blocks
 *  @param QP 0..51
 *  @param pScaleDC optional: one value, LevelScale4x4(QP%6, 0, 0); null: flat
 *  @return vekStsErrNullPtr (pSrcDst), vekStsErrOutOfRange (QP)
 */
VEKVC_API VekStatus vekiTransformQuantInvLumaDC4x4_H264_16s_C1I(Vek16s* pSrcDst, Vek32s QP, const Vek16s* pScaleDC);
/** As vekiTransformQuantInvLumaDC4x4_H264_16s_C1I, in 32 bits; QP 0..87.
 *  @param pSrcDst  16 levels in raster order, replaced by the scaled DC values of the 16 blocks
 *  @param QP       0..87
 *  @param pScaleDC optional: one value, LevelScale4x4(QP%6, 0, 0); null: flat
 *  @return as vekiTransformQuantInvLumaDC4x4_H264_16s_C1I
 */
VEKVC_API VekStatus vekiTransformQuantInvLumaDC4x4_H264_32s_C1I(Vek32s* pSrcDst, Vek32s QP, const Vek16s* pScaleDC);

/* ---- chroma DC (8.5.11) ---- */

/** 2x2 Hadamard transform and quantization of the four chroma DC values of a 4:2:0 macroblock. Without pScaleDC:
 *  multiplier of QP%6 at position 0, qbits = 16 + QP/6; with it qbits = 12 + QP/6. f is floor(2^qbits / 3) or
 *  floor(2^qbits / 6).
 *  @param pDst receives 4 levels in raster order, which is their scan order; may be pSrc
 *  @param pSrc the 4 DC values; replaced by the transformed values (16 bits) if needTransform is non-zero
 *  @param QP QPc, 0..39
 *  @param pNumLevels receives the count of non-zero levels (never negated)
 *  @param isIntra non-zero: intra rounding
 *  @param needTransform zero: pSrc holds transformed values already
 *  @param pScaleDC optional: one forward scale value, that of position 0
 *  @return vekStsErrNullPtr (pDst, pSrc, pNumLevels), vekStsErrOutOfRange (QP)
 */
VEKVC_API VekStatus vekiTransformQuantFwdChromaDC2x2_H264_16s_C1I(Vek16s* pDst, Vek16s* pSrc, Vek32s QP,
                                                                  Vek32s* pNumLevels, Vek32u isIntra,
                                                                  Vek32u needTransform, const Vek16s* pScaleDC);
/** As vekiTransformQuantFwdChromaDC2x2_H264_16s_C1I, in 32 bits; QP is QP'c, 0..75.
 *  @param pDst          receives 4 levels in raster order, which is their scan order; may be pSrc
 *  @param pSrc          the 4 DC values; replaced by the transformed values if needTransform is non-zero
 *  @param QP            QP'c, 0..75
 *  @param pNumLevels    receives the count of non-zero levels (never negated)
 *  @param isIntra       non-zero: intra rounding
 *  @param needTransform zero: pSrc holds transformed values already
 *  @param pScaleDC      optional: one forward scale value, that of position 0
 *  @return as vekiTransformQuantFwdChromaDC2x2_H264_16s_C1I
 */
VEKVC_API VekStatus vekiTransformQuantFwdChromaDC2x2_H264_32s_C1I(Vek32s* pDst, Vek32s* pSrc, Vek32s QP,
                                                                  Vek32s* pNumLevels, Vek32u isIntra,
                                                                  Vek32u needTransform, const Vek16s* pScaleDC);
/** vekiTransformQuantFwdChromaDC2x2_H264_16s_C1I with the default multiplier.
 *  @param pDst          receives 4 levels in raster order, which is their scan order; may be pSrc
 *  @param pSrc          the 4 DC values; replaced by the transformed values (16 bits) if needTransform is non-zero
 *  @param QP            QPc, 0..39
 *  @param pNumLevels    receives the count of non-zero levels (never negated)
 *  @param isIntra       non-zero: intra rounding
 *  @param needTransform zero: pSrc holds transformed values already
 *  @return as vekiTransformQuantFwdChromaDC2x2_H264_16s_C1I
 */
VEKVC_API VekStatus vekiTransformQuantChromaDC_H264_16s_C1I(Vek16s* pDst, Vek16s* pSrc, Vek32s QP, Vek32s* pNumLevels,
                                                            Vek32u isIntra, Vek32u needTransform);
/** As vekiTransformQuantFwdChromaDC2x2_H264_16s_C1I for 4:2:2: 8 values, two wide and four high; quantized with QPdc =
 *  QP + 3, which the function adds itself (QP 0..39). pScaleDC is the forward scale of QPdc%6 at position 0.
 *  @param pDst          receives 8 levels in raster order; may be pSrc
 *  @param pSrc          the 8 DC values; replaced by the transformed values (16 bits) if needTransform is non-zero
 *  @param QP            QPc, 0..39
 *  @param pNumLevels    receives the count of non-zero levels (never negated)
 *  @param isIntra       non-zero: intra rounding
 *  @param needTransform zero: pSrc holds transformed values already
 *  @param pScaleDC      optional: one forward scale value, that of position 0
 *  @return as vekiTransformQuantFwdChromaDC2x2_H264_16s_C1I
 */
VEKVC_API VekStatus vekiTransformQuantFwdChromaDC2x4_H264_16s_C1I(Vek16s* pDst, Vek16s* pSrc, Vek32s QP,
                                                                  Vek32s* pNumLevels, Vek32u isIntra,
                                                                  Vek32u needTransform, const Vek16s* pScaleDC);
/** As vekiTransformQuantFwdChromaDC2x4_H264_16s_C1I, in 32 bits; QP is QP'c, 0..75.
 *  @param pDst          receives 8 levels in raster order; may be pSrc
 *  @param pSrc          the 8 DC values; replaced by the transformed values if needTransform is non-zero
 *  @param QP            QP'c, 0..75
 *  @param pNumLevels    receives the count of non-zero levels (never negated)
 *  @param isIntra       non-zero: intra rounding
 *  @param needTransform zero: pSrc holds transformed values already
 *  @param pScaleDC      optional: one forward scale value, that of position 0
 *  @return as vekiTransformQuantFwdChromaDC2x4_H264_16s_C1I
 */
VEKVC_API VekStatus vekiTransformQuantFwdChromaDC2x4_H264_32s_C1I(Vek32s* pDst, Vek32s* pSrc, Vek32s QP,
                                                                  Vek32s* pNumLevels, Vek32u isIntra,
                                                                  Vek32u needTransform, const Vek16s* pScaleDC);

/** Inverse 2x2 Hadamard transform and scaling of chroma DC levels with a flat matrix.
 *  @param pSrcDst 4 levels in raster order, replaced by the scaled DC values  @param QP QPc, 0..51
 *  @return vekStsErrNullPtr, vekStsErrOutOfRange (QP)
 */
VEKVC_API VekStatus vekiTransformDequantChromaDC_H264_16s_C1I(Vek16s* pSrcDst, Vek32s QP);
/** Inverse 2x2 Hadamard transform and scaling ((f * LevelScale(0,0)) << (QP/6)) >> 5 of chroma DC levels (4:2:0).
 *  @param pSrcDst 4 levels in raster order, replaced by the scaled DC values
 *  @param QP QPc, 0..39
 *  @param pScaleDC optional: one value, LevelScale4x4(QP%6, 0, 0); null: flat
 *  @return vekStsErrNullPtr (pSrcDst), vekStsErrOutOfRange (QP)
 */
VEKVC_API VekStatus vekiTransformQuantInvChromaDC2x2_H264_16s_C1I(Vek16s* pSrcDst, Vek32s QP, const Vek16s* pScaleDC);
/** As vekiTransformQuantInvChromaDC2x2_H264_16s_C1I, in 32 bits; QP is QP'c, 0..75.
 *  @param pSrcDst  4 levels in raster order, replaced by the scaled DC values
 *  @param QP       QP'c, 0..75
 *  @param pScaleDC optional: one value, LevelScale4x4(QP%6, 0, 0); null: flat
 *  @return as vekiTransformQuantInvChromaDC2x2_H264_16s_C1I
 */
VEKVC_API VekStatus vekiTransformQuantInvChromaDC2x2_H264_32s_C1I(Vek32s* pSrcDst, Vek32s QP, const Vek16s* pScaleDC);
/** Inverse 2x4 transform and scaling of chroma DC levels (4:2:2) with QPdc = QP + 3, which the function adds itself:
 *  QPdc below 36: (f * LevelScale(0,0) + 2^(5 - QPdc/6)) >> (6 - QPdc/6), else (f * LevelScale(0,0)) << (QPdc/6 - 6).
 *  @param pSrcDst 8 levels in raster order (two wide, four high), replaced by the scaled DC values
 *  @param QP QPc, 0..39
 *  @param pScaleDC optional: one value, LevelScale4x4((QP + 3)%6, 0, 0); null: flat
 *  @return vekStsErrNullPtr (pSrcDst), vekStsErrOutOfRange (QP)
 */
VEKVC_API VekStatus vekiTransformQuantInvChromaDC2x4_H264_16s_C1I(Vek16s* pSrcDst, Vek32s QP, const Vek16s* pScaleDC);
/** As vekiTransformQuantInvChromaDC2x4_H264_16s_C1I, in 32 bits; QP is QP'c, 0..75.
 *  @param pSrcDst  8 levels in raster order (two wide, four high), replaced by the scaled DC values
 *  @param QP       QP'c, 0..75
 *  @param pScaleDC optional: one value, LevelScale4x4((QP + 3)%6, 0, 0); null: flat
 *  @return as vekiTransformQuantInvChromaDC2x4_H264_16s_C1I
 */
VEKVC_API VekStatus vekiTransformQuantInvChromaDC2x4_H264_32s_C1I(Vek32s* pSrcDst, Vek32s QP, const Vek16s* pScaleDC);

/* ---- SP and SI slices (8.6) ---- */

/** Forward core transform of a prediction block, as the SP decoding process needs it.
 *  @param pSrc 4x4 samples  @param srcStep its step in bytes  @param pDst receives 16 coefficients
 *  @return vekStsErrNullPtr if a pointer is null
 */
VEKVC_API VekStatus vekiTransformPrediction_H264_8u16s_C1(const Vek8u* pSrc, Vek32s srcStep, Vek16s* pDst);
/** Requantization in the transform domain, scaling with QS and inverse transform of one 4x4 block of an SP or SI
 *  slice: 8.6.1 for primary SP pictures, 8.6.2 for switching SP pictures and SI.
 *  @param pSrcDst levels, replaced by r = (x + 32) >> 6; the decoded sample is Clip1(r), nothing is added to it
 *  @param pPred transformed prediction (vekiTransformPrediction_H264_8u16s_C1), 16 values
 *  @param pDC optional: one scaled DC (chroma blocks, from vekiTransformDequantChromaDC_SISP_H264_16s_C1I) that
 *             replaces the value at position 0
 *  @param QP QPY or QPc, 0..51; not checked (a value outside counts as the nearest inside)
 *  @param QS QSY or QSc, likewise
 *  @param isSwitching non-zero: 8.6.2, QP is not used
 *  @return vekStsErrNullPtr (pSrcDst, pPred)
 */
VEKVC_API VekStatus vekiDequantTransformResidual_SISP_H264_16s_C1I(Vek16s* pSrcDst, const Vek16s* pPred,
                                                                   const Vek16s* pDC, Vek32s QP, Vek32s QS,
                                                                   Vek32u isSwitching);
/** The chroma DC part of 8.6.1 and 8.6.2: requantization, inverse 2x2 transform and scaling with QS.
 *  @param pSrcDst 4 levels, replaced by the scaled DC values of the four blocks
 *  @param pPred the coefficients at position 0 of the four transformed prediction blocks, raster order
 *  @param QP QPc, 0..51; not checked (a value outside counts as the nearest inside)  @param QS QSc, likewise
 *  @param isSwitching non-zero: 8.6.2, QP is not used
 *  @return vekStsErrNullPtr (pSrcDst, pPred)
 */
VEKVC_API VekStatus vekiTransformDequantChromaDC_SISP_H264_16s_C1I(Vek16s* pSrcDst, const Vek16s* pPred, Vek32s QP,
                                                                   Vek32s QS, Vek32u isSwitching);

/* ---- scales from scaling lists (8.5.9) ---- */

/** Both scales of one QP%6 from a 4x4 scaling list. A weight of 0, which no stream can have, gives scales of 0.
 *  @param pSrc weights in raster order, 16 values
 *  @param pDstInv receives LevelScale4x4 = weight * normAdjust4x4, 16 values
 *  @param pDstFwd receives the forward multipliers divided by the weights, rounded to nearest, 16 values
 *  @param QPmod6 0..5
 *  @return vekStsErrNullPtr (all three), vekStsErrOutOfRange (QPmod6)
 */
VEKVC_API VekStatus vekiGenScaleLevel4x4_H264_8u16s_C1(const Vek8u* pSrc, Vek16s* pDstInv, Vek16s* pDstFwd,
                                                       Vek32s QPmod6);
/** As vekiGenScaleLevel4x4_H264_8u16s_C1 for 8x8: 64 values each; the forward multiplier of a position is 2^24 /
 *  (normAdjust8x8 * N) rounded, N = squared norm of its basis picture (13107, 11428, 20972, 12222, 16777, 15481 for
 *  QP%6 = 0). A QPmod6 out of range is vekStsErrQPRange.
 *  @param pSrc    weights in raster order, 64 values
 *  @param pDstInv receives LevelScale8x8 = weight * normAdjust8x8, 64 values
 *  @param pDstFwd receives the forward multipliers divided by the weights, 64 values
 *  @param QPmod6  0..5
 *  @return as vekiGenScaleLevel4x4_H264_8u16s_C1
 */
VEKVC_API VekStatus vekiGenScaleLevel8x8_H264_8u16s_D2(const Vek8u* pSrc, Vek16s* pDstInv, Vek16s* pDstFwd,
                                                       Vek32s QPmod6);

/* ---- 8x8 blocks (8.5.13) ---- */

/** Forward 8x8 transform without scaling, results and intermediates wrapped to 16 bits.
 *  @param pSrc residual, 64 values  @param pDst receives 64 values; may be pSrc
 *  @return vekStsErrNullPtr if a pointer is null
 */
VEKVC_API VekStatus vekiTransformFwdLuma8x8_H264_16s_C1(const Vek16s* pSrc, Vek16s* pDst);
/** As vekiTransformFwdLuma8x8_H264_16s_C1 in 32 bits, which hold every result.
 *  @param pSrc residual, 64 values
 *  @param pDst receives 64 values; may be pSrc
 *  @return as vekiTransformFwdLuma8x8_H264_16s_C1
 */
VEKVC_API VekStatus vekiTransformFwdLuma8x8_H264_16s32s_C1(const Vek16s* pSrc, Vek32s* pDst);
/** vekiTransformFwdLuma8x8_H264_16s_C1 in place.
 *  @param pSrcDst 64 differences, replaced by the coefficients
 *  @return as vekiTransformFwdLuma8x8_H264_16s_C1
 */
VEKVC_API VekStatus vekiTransformLuma8x8Fwd_H264_16s_C1I(Vek16s* pSrcDst);

/** Quantization of 64 transformed coefficients, qbits = 12 + QPdiv6.
 *  @param pSrc transformed coefficients, 64 values
 *  @param pDst receives 64 levels (wrapped to 16 bits); may be pSrc
 *  @param QPdiv6 QP/6, 0..8
 *  @param isIntra non-zero: intra rounding
 *  @param pNumLevels receives the count of non-zero levels (never negated)
 *  @param pScanPos scan index (0..63) of each raster position, 64 values
 *  @param pLastPos receives the largest scan index of a non-zero level, 0 if there is none
 *  @param pScale forward scale for QP%6 (vekiGenScaleLevel8x8_H264_8u16s_D2), 64 values
 *  @return vekStsErrNullPtr (all six pointers), vekStsErrQPRange
 */
VEKVC_API VekStatus vekiQuantLuma8x8_H264_16s_C1(const Vek16s* pSrc, Vek16s* pDst, Vek32s QPdiv6, Vek32u isIntra,
                                                 Vek32s* pNumLevels, const Vek16s* pScanPos, Vek32s* pLastPos,
                                                 const Vek16s* pScale);
/** As vekiQuantLuma8x8_H264_16s_C1 with 32-bit data; QPdiv6 0..14.
 *  @param pSrc       transformed coefficients, 64 values
 *  @param pDst       receives 64 levels; may be pSrc
 *  @param QPdiv6     0..14
 *  @param isIntra    non-zero: intra rounding
 *  @param pNumLevels receives the count of non-zero levels (never negated)
 *  @param pScanPos   scan index (0..63) of each raster position, 64 values
 *  @param pLastPos   receives the largest scan index of a non-zero level, 0 if there is none
 *  @param pScale     forward scale for QP%6 (vekiGenScaleLevel8x8_H264_8u16s_D2), 64 values
 *  @return as vekiQuantLuma8x8_H264_16s_C1
 */
VEKVC_API VekStatus vekiQuantLuma8x8_H264_32s_C1(const Vek32s* pSrc, Vek32s* pDst, Vek32s QPdiv6, Vek32u isIntra,
                                                 Vek32s* pNumLevels, const Vek16s* pScanPos, Vek32s* pLastPos,
                                                 const Vek16s* pScale);

/** Scaling of 64 levels in place (8.5.13.1): QPdiv6 below 6: d = (c * LevelScale + 2^(5 - QPdiv6)) >> (6 - QPdiv6),
 *  else d = (c * LevelScale) << (QPdiv6 - 6); kept in 16 bits.
 *  @param pSrcDst 64 levels, replaced by scaled coefficients
 *  @param QPdiv6 QP/6, 0..8
 *  @param pScale LevelScale8x8 for QP%6, 64 values
 *  @return vekStsErrNullPtr (both), vekStsErrQPRange
 */
VEKVC_API VekStatus vekiQuantLuma8x8Inv_H264_16s_C1I(Vek16s* pSrcDst, Vek32s QPdiv6, const Vek16s* pScale);
/** As vekiQuantLuma8x8Inv_H264_16s_C1I with 32-bit data; QPdiv6 0..14.
 *  @param pSrcDst 64 levels, replaced by scaled coefficients
 *  @param QPdiv6  0..14
 *  @param pScale  LevelScale8x8 for QP%6, 64 values
 *  @return as vekiQuantLuma8x8Inv_H264_16s_C1I
 */
VEKVC_API VekStatus vekiQuantInvLuma8x8_H264_32s_C1I(Vek32s* pSrcDst, Vek32s QPdiv6, const Vek16s* pScale);

/** Inverse 8x8 transform (8.5.13.2) with (x + 32) >> 6, every sum saturating at 16 bits, and addition to the
 *  prediction with clipping to 0..255.
 *  @param pPred prediction, 8x8 samples  @param predStep its step in bytes
 *  @param pSrc scaled coefficients, 64 values
 *  @param pDst receives 8x8 samples; may be pPred  @param dstStep its step in bytes
 *  @return vekStsErrNullPtr (pPred, pSrc, pDst)
 */
VEKVC_API VekStatus vekiTransformLuma8x8InvAddPred_H264_16s8u_C1R(const Vek8u* pPred, Vek32s predStep,
                                                                  const Vek16s* pSrc, Vek8u* pDst, Vek32s dstStep);
/** As vekiTransformLuma8x8InvAddPred_H264_16s8u_C1R for higher bit depths: 32-bit arithmetic, 16-bit samples.
 *  @param pPred    prediction, 8x8 samples of 16 bits
 *  @param predStep its step in bytes
 *  @param pSrc     scaled coefficients, 64 values
 *  @param pDst     receives 8x8 samples of 16 bits; may be pPred
 *  @param dstStep  its step in bytes
 *  @param bitDepth 8..14, results are clipped to 0..2^bitDepth - 1; not checked (a value outside counts as the nearest
 *                  inside)
 *  @return as vekiTransformLuma8x8InvAddPred_H264_16s8u_C1R
 */
VEKVC_API VekStatus vekiTransformInvAddPredLuma8x8_H264_32s16u_C1R(const Vek16u* pPred, Vek32s predStep,
                                                                   const Vek32s* pSrc, Vek16u* pDst, Vek32s dstStep,
                                                                   Vek32s bitDepth);

#ifdef __cplusplus
}
#endif

#endif
