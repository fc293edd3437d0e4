/** @file common_scan.h
 *  Coefficient scans and the zero count, on 8x8 blocks of Vek16s.
 */
#ifndef VEKVC_COMMON_SCAN_H
#define VEKVC_COMMON_SCAN_H

#include "vekvc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @name Forward scan
 *  @{ */

/** Puts the coefficients of an 8x8 block into scan order: pDst[i] = pSrc[scan position i].
 *  With countNonZero of 20 or more the whole block is permuted. Below 20, countNonZero is trusted: the walk through the
 *  scan stops when so many non-zero coefficients were found, and all later ones become 0.
 *  @param pSrc 64 coefficients in raster order; all may be read
 *  @param[out] pDst 64 coefficients in scan order
 *  @param countNonZero the number of non-zero coefficients, 1 to 64
 *  @param scan the scan: 1 the alternate scan (ISO 13818-2 figure 7-3), 2 the alternate horizontal scan (ISO 14496-2),
 *  any other value the zigzag scan (ISO 13818-2 figure 7-2)
 *  @retval vekStsErrNullPtr a pointer is null
 *  @retval vekStsErrOutOfRange countNonZero is outside 1..64
 */
VEKVC_API VekStatus vekiScanFwd_16s_C1(const Vek16s* pSrc, Vek16s* pDst, Vek32s countNonZero, Vek32s scan);
/** @} */

/** @name Inverse scan
 *  @{ */

/** Puts coefficients in scan order back into an 8x8 block: pDst[scan position i] = pSrc[i] for i up to indxLastNonZero;
 *  all other coefficients become 0.
 *  @param pSrc coefficients in scan order; those behind indxLastNonZero are not read
 *  @param[out] pDst 64 coefficients in raster order
 *  @param indxLastNonZero the scan position of the last coefficient, 0 to 63
 *  @param scan the scan: 1 the alternate scan (ISO 13818-2 figure 7-3), 2 the alternate horizontal scan (ISO 14496-2),
 *  any other value the zigzag scan (ISO 13818-2 figure 7-2)
 *  @retval vekStsErrNullPtr a pointer is null
 *  @retval vekStsErrOutOfRange indxLastNonZero is outside 0..63
 */
VEKVC_API VekStatus vekiScanInv_16s_C1(const Vek16s* pSrc, Vek16s* pDst, Vek32s indxLastNonZero, Vek32s scan);
/** @} */

/** @name Zero count
 *  @{ */

/** Counts the zeros of an 8x8 block.
 *  @param pSrc 64 coefficients
 *  @param[out] pCount the number of coefficients that are 0
 *  @retval vekStsErrNullPtr a pointer is null
 */
VEKVC_API VekStatus vekiCountZeros8x8_16s_C1(const Vek16s* pSrc, Vek32u* pCount);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
