// What the H.264 interpolation exports share: their kernels and argument checks.
#ifndef VEKVC_H264_INTERPOLATE_EXPORT_H
#define VEKVC_H264_INTERPOLATE_EXPORT_H

#include "core/check.h"
#include "core/kernel.h"
#include "h264/interpolate_plain.h"
#if VEKVC_SIMD
#include "h264/interpolate_chroma_simd.h"
#include "h264/interpolate_luma_simd.h"
#endif

namespace vekvc {

// Sizes have no bits but those of the block widths, whole groups of rows, and at least one sample.
inline constexpr std::uint64_t kLumaSizes = packedSize(4 | 8 | 16, 0x7FFFFFFC);
inline constexpr std::uint64_t kChromaSizes = packedSize(2 | 4 | 8, 0x7FFFFFFE);
constexpr bool validSize(std::uint64_t size, std::uint64_t allowed) {
    return (size & ~allowed) == 0 && static_cast<Vek32u>(size) / 2 != 0 && size >> 32 != 0;
}
inline bool validLumaSize(VekiSize size) { return validSize(packedSize(size), kLumaSizes); }
inline bool validChromaSize(VekiSize size) { return validSize(packedSize(size), kChromaSizes); }

constexpr bool validDepth(Vek32s bitDepth) { return !outside(bitDepth, 8, 14); }
constexpr int maxOfDepth(Vek32s bitDepth) { return (1 << bitDepth) - 1; }

// The fractions lie in 0..largest, which is one less than a power of two.
constexpr bool validFractions(Vek32s dx, Vek32s dy, Vek32u largest) { return static_cast<Vek32u>(dx | dy) <= largest; }

template <class T>
inline VekStatus checkLuma(const T* pSrc, const T* pDst, Vek32s dx, Vek32s dy, std::uint64_t size,
                           Vek32s bitDepth = 8) {
    if (anyNull(pSrc, pDst)) [[unlikely]]
        return vekStsErrNullPtr;
    if (!validFractions(dx, dy, 3)) [[unlikely]]
        return vekStsErrBadArg;
    if (!validSize(size, kLumaSizes)) [[unlikely]]
        return vekStsErrSize;
    if (!validDepth(bitDepth)) [[unlikely]]
        return vekStsErrOutOfRange;
    return vekStsOk;
}

template <class T>
inline VekStatus checkChroma(const T* pSrc, const T* pDst, Vek32s dx, Vek32s dy, std::uint64_t size,
                             Vek32s bitDepth = 8) {
    if (anyNull(pSrc, pDst)) [[unlikely]]
        return vekStsErrNullPtr;
    if (!validFractions(dx, dy, 7)) [[unlikely]]
        return vekStsErrBadArg;
    if (!validSize(size, kChromaSizes)) [[unlikely]]
        return vekStsErrSize;
    if (!validDepth(bitDepth)) [[unlikely]]
        return vekStsErrOutOfRange;
    return vekStsOk;
}

}  // namespace vekvc

#endif
