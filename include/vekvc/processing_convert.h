/** @file processing_convert.h
 *  Pre- and post-processing: conversion of sample layouts, with resizing and rotation.
 *
 *  A picture is `roiSize` pixels (`width` w, `height` h, both at least 1; odd ones too). Its layouts:
 *
 *  | in names | bytes |
 *  |---|---|
 *  | CbYCr422 (C2) | groups Cb Y0 Cr Y1 for pixels 2i and 2i + 1 |
 *  | YCbCr422 (P3) | a plane of w x h luma samples, two of chroma of (w + 1) >> 1 columns and h rows, with one step |
 *  | YCbCr420 (P3) | the same with (h + 1) >> 1 rows of chroma |
 *  | YCbCr420 (P2) | luma, and one plane of Cb Cr pairs: (w + 1) >> 1 pairs in (h + 1) >> 1 rows |
 *  | BGR (C3, C4) | B G R; B G R A, with A written as 255 and ignored when it is read |
 *  | BGR565 (C1) | native 16 bits: B in bits 0 to 4, G in bits 5 to 10, R in bits 11 to 15 |
 *
 *  A row of Cb Y Cr Y of odd width ends with a whole group: its fourth byte is not read (2w + 1 bytes are) and is
 *  written as a copy of the last pixel's Y (2w + 2 bytes are).
 *
 *  Steps are bytes from one row to the next and are not checked: a negative one walks a picture from the bottom up, as
 *  bottom-up bitmaps lie. No pointer needs alignment. Exactly the samples of the picture are read and written. A source
 *  must not overlap a destination; sources may overlap one another.
 *
 *  Null pointers are found first, in the order of the arguments, then what else is wrong, in that order too. Nothing is
 *  written on an error. `>>` rounds towards minus infinity.
 *
 *  `matrix` says how Y, Cb, Cr and R, G, B depend on each other: 0 and 1 by the luma weights of ITU-R BT.601 and BT.709
 *  (MatrixCoefficients 6 and 1 of ITU-T H.273), with luma in 16..235 and chroma in 16..240; 2 and 3 likewise in full
 *  range. The factors are rounded once:
 *
 *  | `matrix` | o | cy, crv, cgu, cgv, cbu | Y of R, G, B | Cb of R, G, B | Cr of R, G, B |
 *  |---|---|---|---|---|---|
 *  | 0 | 16 | 9539, 13075, 3209, 6660, 16525 | 4207, 8260, 1604 | -2428, -4768, 7196 | 7196, -6026, -1170 |
 *  | 1 | 16 | 9539, 14686, 1747, 4366, 17305 | 2991, 10064, 1016 | -1649, -5547, 7196 | 7196, -6536, -660 |
 *  | 2 | 0 | 8192, 11485, 2819, 5850, 14516 | 4899, 9617, 1868 | -2765, -5427, 8192 | 8192, -6860, -1332 |
 *  | 3 | 0 | 8192, 12901, 1535, 3835, 15201 | 3483, 11718, 1183 | -1877, -6315, 8192 | 8192, -7441, -751 |
 *
 *  To B, G, R: with t = cy (Y - o) + 4096, u = Cb - 128 and v = Cr - 128, B = (t + cbu u) >> 13,
 *  G = (t - cgu u - cgv v) >> 13, R = (t + crv v) >> 13, each limited to 0..255.
 */
#ifndef VEKVC_PROCESSING_CONVERT_H
#define VEKVC_PROCESSING_CONVERT_H

#include "vekvc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @name Separating and interleaving
 *  @{ */

/** Takes Cb Y Cr Y apart into planes of 4:2:2. No sample changes.
 *  @param[in] pSrc                    the picture, Cb Y Cr Y
 *  @param srcStep                     its step
 *  @param[out] pDstY, pDstCb, pDstCr  receive the planes
 *  @param dstYStep, dstCStep          their steps
 *  @param roiSize                     the picture's size
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrSize if a side of @p roiSize is below 1
 */
VEKVC_API VekStatus vekiCbYCr422ToYCbCr422_8u_C2P3R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDstY, Vek32s dstYStep,
                                                    Vek8u* pDstCb, Vek8u* pDstCr, Vek32s dstCStep, VekiSize roiSize);

/** Makes Cb Y Cr Y of planes of 4:2:2. No sample changes.
 *  @param[in] pSrcY, pSrcCb, pSrcCr  the planes
 *  @param srcYStep, srcCStep         their steps
 *  @param[out] pDst                  receives the picture, Cb Y Cr Y
 *  @param dstStep                    its step
 *  @param roiSize                    the picture's size
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrSize if a side of @p roiSize is below 1
 */
VEKVC_API VekStatus vekiYCbCr422ToCbYCr422_8u_P3C2R(const Vek8u* pSrcY, Vek32s srcYStep, const Vek8u* pSrcCb,
                                                    const Vek8u* pSrcCr, Vek32s srcCStep, Vek8u* pDst, Vek32s dstStep,
                                                    VekiSize roiSize);

/** Copies luma and interleaves the two chroma planes of 4:2:0. No sample changes.
 *  @param[in] pSrcY, pSrcCb, pSrcCr  the planes
 *  @param srcYStep, srcCStep         their steps
 *  @param[out] pDstY, pDstCbCr       receive the planes
 *  @param dstYStep, dstCbCrStep      their steps
 *  @param roiSize                    the picture's size
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrSize if a side of @p roiSize is below 1
 */
VEKVC_API VekStatus vekiYCbCr420ToYCbCr420_8u_P3P2R(const Vek8u* pSrcY, Vek32s srcYStep, const Vek8u* pSrcCb,
                                                    const Vek8u* pSrcCr, Vek32s srcCStep, Vek8u* pDstY, Vek32s dstYStep,
                                                    Vek8u* pDstCbCr, Vek32s dstCbCrStep, VekiSize roiSize);

/** Copies luma and takes interleaved chroma of 4:2:0 apart into two planes. No sample changes.
 *  @param[in] pSrcY, pSrcCbCr         the planes
 *  @param srcYStep, srcCbCrStep       their steps
 *  @param[out] pDstY, pDstCb, pDstCr  receive the planes
 *  @param dstYStep, dstCStep          their steps
 *  @param roiSize                     the picture's size
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrSize if a side of @p roiSize is below 1
 */
VEKVC_API VekStatus vekiYCbCr420ToYCbCr420_8u_P2P3R(const Vek8u* pSrcY, Vek32s srcYStep, const Vek8u* pSrcCbCr,
                                                    Vek32s srcCbCrStep, Vek8u* pDstY, Vek32s dstYStep, Vek8u* pDstCb,
                                                    Vek8u* pDstCr, Vek32s dstCStep, VekiSize roiSize);
/** @} */

/** @name 4:2:2 and 4:2:0
 *  @{ */

/** Cb Y Cr Y to 4:2:0. Luma does not change. Of a frame (@p interlaced 0), chroma row v is the mean of the rows 2v and
 *  2v + 1, (a + b + 1) >> 1, or row 2v alone if it is the last. Of two fields (1), chroma row j belongs to the field
 *  f = j & 1 and comes from two rows of it, a = 4 (j >> 1) + f and b = a + 2 (a again if b is below the picture):
 *  (3a + b + 2) >> 2 in the top field, (a + 3b + 2) >> 2 in the bottom field. These are the sample positions of
 *  ISO/IEC 13818-2 6.1.1.8.
 *  @param[in] pSrc                    the picture, Cb Y Cr Y
 *  @param srcStep                     its step
 *  @param[out] pDstY, pDstCb, pDstCr  receive the planes
 *  @param dstYStep, dstCStep          their steps
 *  @param roiSize                     the picture's size
 *  @param interlaced                  0 or 1
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrSize if a side of @p roiSize is below 1; vekStsErrBadArg
 */
VEKVC_API VekStatus vekiCbYCr422ToYCbCr420_8u_C2P3R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDstY, Vek32s dstYStep,
                                                    Vek8u* pDstCb, Vek8u* pDstCr, Vek32s dstCStep, VekiSize roiSize,
                                                    Vek32s interlaced);

/** 4:2:0 to Cb Y Cr Y. Luma does not change. Chroma of row y is (m a + (8 - m) b + 4) >> 3 of two chroma rows a and b:
 *  - of a frame (@p interlaced 0), a = y >> 1, b is the row before it (even y) or behind it (odd y), m = 6;
 *  - of two fields (1), with f = y & 1 and n = y >> 1, a = 2 (n >> 1) + f, b = a - 2 (even n) or a + 2 (odd n), m = 7
 *    if n & 1 is f, else 5. If there is no row a, a - 2 takes its place, or row 0.
 *
 *  A row b outside the picture is a.
 *  @param[in] pSrcY, pSrcCb, pSrcCr  the planes
 *  @param srcYStep, srcCStep         their steps
 *  @param[out] pDst                  receives the picture, Cb Y Cr Y
 *  @param dstStep                    its step
 *  @param roiSize                    the picture's size
 *  @param interlaced                 0 or 1
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrSize if a side of @p roiSize is below 1; vekStsErrBadArg
 */
VEKVC_API VekStatus vekiYCbCr420ToCbYCr422_8u_P3C2R(const Vek8u* pSrcY, Vek32s srcYStep, const Vek8u* pSrcCb,
                                                    const Vek8u* pSrcCr, Vek32s srcCStep, Vek8u* pDst, Vek32s dstStep,
                                                    VekiSize roiSize, Vek32s interlaced);

/** Cb Y Cr Y to 4:2:0, rotated clockwise. The picture is first reduced as a frame by
 *  vekiCbYCr422ToYCbCr420_8u_C2P3R(); then every plane is rotated by itself. With 90 and 270 degrees the destination is
 *  h wide and w high.
 *  @param[in] pSrc                    the picture, Cb Y Cr Y
 *  @param srcStep                     its step
 *  @param[out] pDstY, pDstCb, pDstCr  receive the planes
 *  @param dstYStep, dstCStep          their steps
 *  @param roiSize                     the source's size
 *  @param rotation                    0, 90, 180 or 270
 *  @return vekStsOk; vekStsWrnOddSize if all is done and w or h is odd: the chroma of a rotated picture then lies off
 *          its luma grid; vekStsErrNullPtr; vekStsErrSize if a side of @p roiSize is below 1; vekStsErrBadArg
 */
VEKVC_API VekStatus vekiCbYCr422ToYCbCr420_Rotate_8u_C2P3R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDstY,
                                                           Vek32s dstYStep, Vek8u* pDstCb, Vek8u* pDstCr,
                                                           Vek32s dstCStep, VekiSize roiSize, Vek32s rotation);

/** The same from planes of 4:2:2: see vekiCbYCr422ToYCbCr420_Rotate_8u_C2P3R().
 *  @param[in] pSrcY, pSrcCb, pSrcCr   the planes of 4:2:2
 *  @param srcYStep, srcCStep          their steps
 *  @param[out] pDstY, pDstCb, pDstCr  receive the planes
 *  @param dstYStep, dstCStep          their steps
 *  @param roiSize                     the source's size
 *  @param rotation                    0, 90, 180 or 270
 *  @return vekStsOk; vekStsWrnOddSize if all is done and w or h is odd: the chroma of a rotated picture then lies off
 *          its luma grid; vekStsErrNullPtr; vekStsErrSize if a side of @p roiSize is below 1; vekStsErrBadArg
 */
VEKVC_API VekStatus vekiCbYCr422ToYCbCr420_Rotate_8u_P3R(const Vek8u* pSrcY, Vek32s srcYStep, const Vek8u* pSrcCb,
                                                         const Vek8u* pSrcCr, Vek32s srcCStep, Vek8u* pDstY,
                                                         Vek32s dstYStep, Vek8u* pDstCb, Vek8u* pDstCr, Vek32s dstCStep,
                                                         VekiSize roiSize, Vek32s rotation);
/** @} */

/** @name 4:2:0 to B, G, R
 *  @{ */

/** 4:2:0 to B, G, R. Chroma at (x, y) comes from the chroma rows a and b that vekiYCbCr420ToCbYCr422_8u_P3C2R() takes
 *  for row y of a frame: with i = x >> 1, (3 C(i, a) + C(i, b) + 2) >> 2 in even columns; in odd ones, with the next
 *  column n = i + 1 (or i if it is the last), (3 (C(i, a) + C(n, a)) + C(i, b) + C(n, b) + 4) >> 3.
 *  @param[in] pSrcY, pSrcCb, pSrcCr  the planes
 *  @param srcYStep, srcCStep         their steps
 *  @param[out] pDst                  receives the picture
 *  @param dstStep                    its step
 *  @param roiSize                    the picture's size
 *  @param matrix                     0 to 3
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrSize if a side of @p roiSize is below 1; vekStsErrBadArg
 */
VEKVC_API VekStatus vekiYCbCr420ToBGR_8u_P3C3R(const Vek8u* pSrcY, Vek32s srcYStep, const Vek8u* pSrcCb,
                                               const Vek8u* pSrcCr, Vek32s srcCStep, Vek8u* pDst, Vek32s dstStep,
                                               VekiSize roiSize, Vek32s matrix);
VEKVC_API VekStatus vekiYCbCr420ToBGR_8u_P3C4R(const Vek8u* pSrcY, Vek32s srcYStep, const Vek8u* pSrcCb,
                                               const Vek8u* pSrcCr, Vek32s srcCStep, Vek8u* pDst, Vek32s dstStep,
                                               VekiSize roiSize, Vek32s matrix);

/** 4:2:0 to 565 as by vekiYCbCr420ToBGR_8u_P3C4R(), of which the high bits of each colour are kept. With @p dither 1,
 *  t >> 1 is first added to B and R and t >> 2 to G, limited to 255, where t is the entry of column x & 3 in row y & 3
 *  of (0 8 2 10), (12 4 14 6), (3 11 1 9), (15 7 13 5).
 *  @param[in] pSrcY, pSrcCb, pSrcCr  the planes
 *  @param srcYStep, srcCStep         their steps
 *  @param[out] pDst                  receives the picture
 *  @param dstStep                    its step in bytes
 *  @param roiSize                    the picture's size
 *  @param matrix                     0 to 3
 *  @param dither                     0 or 1
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrSize if a side of @p roiSize is below 1; vekStsErrBadArg for
 *          @p matrix and @p dither
 */
VEKVC_API VekStatus vekiYCbCr420ToBGR565_8u16u_P3C1R(const Vek8u* pSrcY, Vek32s srcYStep, const Vek8u* pSrcCb,
                                                     const Vek8u* pSrcCr, Vek32s srcCStep, Vek16u* pDst, Vek32s dstStep,
                                                     VekiSize roiSize, Vek32s matrix, Vek32s dither);
/** @} */

/** @name 4:2:2 and B, G, R
 *  @{ */

/** Cb Y Cr Y to B, G, R. Even pixels take the chroma of their group, odd ones the mean (a + b + 1) >> 1 of their
 *  group's and the next one's; the last group is its own next.
 *  @param[in] pSrc   the picture, Cb Y Cr Y
 *  @param srcStep    its step
 *  @param[out] pDst  receives the picture
 *  @param dstStep    its step
 *  @param roiSize    the picture's size
 *  @param matrix     0 to 3
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrSize if a side of @p roiSize is below 1; vekStsErrBadArg
 */
VEKVC_API VekStatus vekiCbYCr422ToBGR_8u_C2C3R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep,
                                               VekiSize roiSize, Vek32s matrix);
VEKVC_API VekStatus vekiCbYCr422ToBGR_8u_C2C4R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep,
                                               VekiSize roiSize, Vek32s matrix);

/** B, G, R to Cb Y Cr Y. Luma is ((weights . (R, G, B) + 8192) >> 14) plus the code of black. Chroma of the group at
 *  column x comes from each colour's sum c(x - 1) + 2 c(x) + c(x + 1), columns limited to the picture:
 *  ((weights . sums + 32768) >> 16) + 128. Both are limited to 0..255.
 *  @param[in] pSrc   the picture, B G R A
 *  @param srcStep    its step
 *  @param[out] pDst  receives the picture, Cb Y Cr Y
 *  @param dstStep    its step
 *  @param roiSize    the picture's size
 *  @param matrix     0 to 3
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrSize if a side of @p roiSize is below 1; vekStsErrBadArg
 */
VEKVC_API VekStatus vekiBGRToCbYCr422_8u_C4C2R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep,
                                               VekiSize roiSize, Vek32s matrix);
/** @} */

/** @name Macroblocks
 *  @{ */

/** A macroblock of Cb Y Cr Y to 4:2:0, like vekiCbYCr422ToYCbCr420_8u_C2P3R() on a frame.
 *  @param[in] pSrc                    16 rows of 32 bytes
 *  @param srcStep                     its step
 *  @param[out] pDstY, pDstCb, pDstCr  receive 16x16 luma samples and twice 8x8 of chroma
 *  @param dstYStep, dstCStep          their steps
 *  @return vekStsOk; vekStsErrNullPtr
 */
VEKVC_API VekStatus vekiCbYCr422ToYCbCr420_16x16_8u_C2P3R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDstY,
                                                          Vek32s dstYStep, Vek8u* pDstCb, Vek8u* pDstCr,
                                                          Vek32s dstCStep);

/** A macroblock of 4:2:0 to Cb Y Cr Y. Each chroma row serves two rows.
 *  @param[in] pSrcY, pSrcCb, pSrcCr  16x16 luma samples, twice 8x8 of chroma
 *  @param srcYStep, srcCStep         their steps
 *  @param[out] pDst                  receives 16 rows of 32 bytes
 *  @param dstStep                    its step
 *  @return vekStsOk; vekStsErrNullPtr
 */
VEKVC_API VekStatus vekiYCbCr420ToCbYCr422_16x16_8u_P3C2R(const Vek8u* pSrcY, Vek32s srcYStep, const Vek8u* pSrcCb,
                                                          const Vek8u* pSrcCr, Vek32s srcCStep, Vek8u* pDst,
                                                          Vek32s dstStep);

/** A macroblock of 4:2:0 to B G R A. Each chroma sample serves two columns of two rows.
 *  @param[in] pSrcY, pSrcCb, pSrcCr  16x16 luma samples, twice 8x8 of chroma
 *  @param srcYStep, srcCStep         their steps
 *  @param[out] pDst                  receives 16 rows of 64 bytes
 *  @param dstStep                    its step
 *  @param matrix                     bits 0 and 1: the matrix; other bits are ignored
 *  @return vekStsOk; vekStsErrNullPtr
 */
VEKVC_API VekStatus vekiYCbCr420ToBGR_16x16_8u_P3C4R(const Vek8u* pSrcY, Vek32s srcYStep, const Vek8u* pSrcCb,
                                                     const Vek8u* pSrcCr, Vek32s srcCStep, Vek8u* pDst, Vek32s dstStep,
                                                     Vek32s matrix);
/** @} */

/** Resizes, rotates and converts a picture of Cb Y Cr Y, as if in these steps:
 *  1. Each pixel gets the Cb and Cr of its group; the three components are then treated alike. Columns and rows outside
 *     the picture are those of its border.
 *  2. They are reduced by f = @p factor 1, 2, 4, 8 to w / f and h / f, rounded up, or enlarged by e = -@p factor 2, 4.
 *     Sample (u, v) of the resized picture is, by @p interpolation,
 *     - reduced: 0 the sample (f u + f/2, f v + f/2); 1 the mean of the four samples around the middle of the f x f
 *       samples from (f u, f v); 2 the mean of all of them; means of n samples are (sum + n/2) >> log2 n. Factor 1
 *       copies;
 *     - enlarged: 0 the sample (u / e, v / e), rounded down; 1 bilinear, in eighths, (sum + 32) >> 6; 2 cubic
 *       convolution (Keys, a = -1/2) in units of 1/1024: of four rows (sum + 32) >> 6, then of these
 *       (sum + 8192) >> 14, limited to 0..255. Sample u lies at (2u + 1 - e) / 2e of the source.
 *  3. The picture is rotated clockwise; with 90 and 270 degrees width and height change places.
 *  4. By @p conversion it becomes 0: Cb Y Cr Y, the chroma of a group being the mean (a + b + 1) >> 1 of its two pixels
 *     (a lone last pixel is its own partner); 1, 2: 565 by `matrix` 0, 1, without dither.
 *
 *  @param[in] pSrc       the picture, Cb Y Cr Y
 *  @param srcStep        its step
 *  @param roiSize        its size
 *  @param[out] pDst      receives the picture of the new size; 565 as native 16-bit values, which need no alignment
 *  @param dstStep        its step in bytes
 *  @param factor         1, 2, 4, 8, -2 or -4
 *  @param interpolation  0 nearest, 1 linear, 2 smooth
 *  @param conversion     0, 1 or 2
 *  @param rotation       0, 90, 180 or 270
 *  @return vekStsOk; vekStsWrnOddSize if all is done and w or h is odd; vekStsErrNullPtr; vekStsErrSize if a side of
 *          @p roiSize is below 1; vekStsErrResizeFactor; vekStsErrInterpolation; vekStsErrBadArg for @p conversion and
 *          @p rotation
 */
VEKVC_API VekStatus vekiResizeCCRotate_8u_C2R(const Vek8u* pSrc, Vek32s srcStep, VekiSize roiSize, Vek8u* pDst,
                                              Vek32s dstStep, Vek32s factor, Vek32s interpolation, Vek32s conversion,
                                              Vek32s rotation);

#ifdef __cplusplus
}
#endif

#endif
