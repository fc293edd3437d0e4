// The argument checks that the H.264 interpolation exports share.
#ifndef VEKVC_H264_INTERPOLATE_CHECK_H
#define VEKVC_H264_INTERPOLATE_CHECK_H

#include "core/check.h"

namespace vekvc {

// At least one sample, no bits in a width but those of the block widths, whole groups of rows.
constexpr bool validSize(VekiSize size, Vek32s widths, Vek32s rows) {
    return !anyBelow(1, size.width, size.height) && (size.width & ~widths) == 0 && size.height % rows == 0;
}
constexpr bool validLumaSize(VekiSize size) { return validSize(size, 4 | 8 | 16, 4); }
constexpr bool validChromaSize(VekiSize size) { return validSize(size, 2 | 4 | 8, 2); }

constexpr bool validDepth(Vek32s bitDepth) { return !outside(bitDepth, 8, 14); }
constexpr int maxOfDepth(Vek32s bitDepth) { return (1 << bitDepth) - 1; }

template <class T>
constexpr VekStatus checkLuma(const T* pSrc, const T* pDst, Vek32s dx, Vek32s dy, VekiSize size, Vek32s bitDepth = 8) {
    if (anyNull(pSrc, pDst)) return vekStsErrNullPtr;
    if (outside(dx, 0, 3) || outside(dy, 0, 3)) return vekStsErrBadArg;
    if (!validLumaSize(size)) return vekStsErrSize;
    if (!validDepth(bitDepth)) return vekStsErrOutOfRange;
    return vekStsOk;
}

template <class T>
constexpr VekStatus checkChroma(const T* pSrc, const T* pDst, Vek32s dx, Vek32s dy, VekiSize size,
                                Vek32s bitDepth = 8) {
    if (anyNull(pSrc, pDst)) return vekStsErrNullPtr;
    if (outside(dx, 0, 7) || outside(dy, 0, 7)) return vekStsErrBadArg;
    if (!validChromaSize(size)) return vekStsErrSize;
    if (!validDepth(bitDepth)) return vekStsErrOutOfRange;
    return vekStsOk;
}

}  // namespace vekvc

#endif
