// The passes of the 3x3 binomial filter. The fast form of filter_frame_plain.h: 8-bit samples by vectors, the 16-bit
// configuration, which no export uses, by the definition.
#ifndef VEKVC_CORE_FILTER_FRAME_SIMD_H
#define VEKVC_CORE_FILTER_FRAME_SIMD_H

#include "core/filter_frame_plain.h"
#include "core/simd.h"

namespace vekvc::simd {

template <class T>
void filterHorizontally(const T* pSrc, FilterSum<T>* pSum, Vek32s width) {
    Vek32s x = 1;
    if constexpr (sizeof(T) == 1) {
        if (width < 10) return plain::filterHorizontally(pSrc, pSum, width);
        const auto at = [&](Vek32s column) { return widenLow(loadBytes<u8x16, 8>(pSrc + column)); };
        for (; x + 9 <= width; x += 8) store(pSum + x, at(x - 1) + (at(x) << 1) + at(x + 1));
        pSum[0] = static_cast<Vek16u>(3 * pSrc[0] + pSrc[1]);
        for (; x < width - 1; ++x) pSum[x] = static_cast<Vek16u>(pSrc[x - 1] + 2 * pSrc[x] + pSrc[x + 1]);
        pSum[x] = static_cast<Vek16u>(pSrc[x - 1] + 3 * pSrc[x]);
    } else {
        plain::filterHorizontally(pSrc, pSum, width);
    }
}

template <class T>
void filterVertically(const FilterSum<T>* above, const FilterSum<T>* here, const FilterSum<T>* below, T* pDst,
                      Vek32s width) {
    Vek32s x = 0;
    if constexpr (sizeof(T) == 1) {
        // 16 * 255 + 8 fits 16 bits.
        const auto sum = [&](Vek32s c) {
            const u16x8 v = load<u16x8>(above + c) + (load<u16x8>(here + c) << 1) + load<u16x8>(below + c);
            return as<i16x8>((v + splat<u16x8>(8)) >> 4);
        };
        for (; x + 16 <= width; x += 16) store(pDst + x, narrowU8(sum(x), sum(x + 8)));
    }
    plain::filterVertically(above + x, here + x, below + x, pDst + x, width - x);
}

}  // namespace vekvc::simd

#endif
