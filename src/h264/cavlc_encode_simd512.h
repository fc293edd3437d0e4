// The CAVLC analysis of all levels at once, in lanes of 32 bits: coefficients are packed in the order of the walk, and
// stored under masks.
#ifndef VEKVC_H264_CAVLC_ENCODE_SIMD512_H
#define VEKVC_H264_CAVLC_ENCODE_SIMD512_H

#include "h264/cavlc_encode_simd.h"

namespace vekvc::simd512 {

[[gnu::always_inline]] inline i32x16 wideLevels(const Vek16s* p) { return widen(load<i16x16>(p)); }
[[gnu::always_inline]] inline i32x16 wideLevels(const Vek32s* p) { return load<i32x16>(p); }

template <class T>
[[gnu::always_inline]] inline void analyzeCavlc4x4(const T* pSrc, int first, int last, const Vek32s* pScan,
                                                   const CavlcElements<T>& out) {
    // Levels from scan index 15 down; the walk is lanes 15 - last to 15 - first.
    const i32x16 down = lanes<i32x16>(15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0);
    const i32x16 level = permute(wideLevels(pSrc), permute(load<i32x16>(pScan), down));
    const Vek32u inWalk = (0xFFFFu >> first) & (0xFFFFu << (15 - last));
    const Vek32u coefficients = nonZeroLanes(level) & inWalk;
    const simd::CavlcCounts n(first, inWalk, coefficients, equalLanes(abs(level), splat<i32x16>(1)),
                              negativeLanes(level));
    *out.pTrailingOnes = static_cast<Vek8u>(n.ones);
    *out.pTrailingOneSigns = static_cast<Vek8u>(n.signs);
    *out.pTotalCoeff = static_cast<Vek8u>(n.total);
    *out.pTotalZeros = static_cast<Vek8u>(n.zeros);

    // Places in the walk, from lane to lane of the coefficients.
    const auto chosen = static_cast<Vek16u>(coefficients);
    const i32x16 place = lanes<i32x16>(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
    const auto storeRuns = [&](i32x16 places) {
        const i32x16 runs = nextLanes(places) - places + splat<i32x16>(-1);
        storeLanes(out.pRuns, lowBytes(runs), static_cast<Vek16u>(lowestBits(static_cast<int>(n.total)) >> 1));
    };
    // The trailing ones are left out: they lie in front of the levels' place.
    T* levels = offsetBytes(out.pLevels, -static_cast<std::ptrdiff_t>(n.ones * sizeof(T)));
    const auto stored = static_cast<Vek16u>(lowestBits(static_cast<int>(n.total)) & (~std::uint64_t{0} << n.ones));
    if constexpr (sizeof(T) == 2) {  // both in one lane: the place in its low half
        const i32x16 packed = packLanes(level << 16 | place, chosen);
        storeRuns(packed);
        storeLanes(levels, lowWords(packed >> 16), stored);
    } else {
        storeRuns(packLanes(place, chosen));
        storeLanes(levels, packLanes(level, chosen), stored);
    }
}

}  // namespace vekvc::simd512

#endif
