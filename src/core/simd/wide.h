// What comes with AVX-512, at 512 bits and less: masks of one bit per lane (lane 0 lowest), memory read and written
// under them, lanes taken from anywhere in a vector, and lanes packed.
#ifndef VEKVC_CORE_SIMD_WIDE_H
#define VEKVC_CORE_SIMD_WIDE_H

#include "core/simd/arithmetic.h"

namespace vekvc {

// ---- masks

// Which lanes are not 0, are negative, are equal?
VEKVC_SIMD_INLINE std::uint16_t nonZeroLanes(u8x16 a) { return _mm_test_epi8_mask(a.raw, a.raw); }
VEKVC_SIMD_INLINE std::uint16_t nonZeroLanes(i16x16 a) { return _mm256_test_epi16_mask(a.raw, a.raw); }
VEKVC_SIMD_INLINE std::uint32_t nonZeroLanes(i16x32 a) { return _mm512_test_epi16_mask(a.raw, a.raw); }
VEKVC_SIMD_INLINE std::uint16_t nonZeroLanes(i32x16 a) { return _mm512_test_epi32_mask(a.raw, a.raw); }
VEKVC_SIMD_INLINE std::uint16_t negativeLanes(i32x16 a) { return _mm512_movepi32_mask(a.raw); }
VEKVC_SIMD_INLINE std::uint16_t equalLanes(i32x16 a, i32x16 b) { return _mm512_cmpeq_epi32_mask(a.raw, b.raw); }
// The n lowest bits, n from 0 to 64.
VEKVC_SIMD_INLINE std::uint64_t lowestBits(int n) { return _bzhi_u64(~std::uint64_t{0}, static_cast<unsigned>(n)); }

// The lanes under ones of the mask, 0 in the others.
VEKVC_SIMD_INLINE i16x32 keepLanes(i16x32 a, std::uint32_t mask) { return {_mm512_maskz_mov_epi16(mask, a.raw)}; }
// The lanes under ones of the mask negated.
VEKVC_SIMD_INLINE i32x16 negateLanes(i32x16 a, std::uint16_t mask) {
    return {_mm512_mask_sub_epi32(a.raw, mask, _mm512_setzero_si512(), a.raw)};
}

// The lanes under ones of the mask, 0 in the others; only the bytes of these lanes are touched.
template <class V>
VEKVC_SIMD_INLINE V loadLanes(const void* p, std::uint32_t mask) {
    if constexpr (std::is_same_v<V, u8x16>) {
        return {_mm_maskz_loadu_epi8(static_cast<std::uint16_t>(mask), p)};
    } else if constexpr (std::is_same_v<V, i16x16>) {
        return {_mm256_maskz_loadu_epi16(static_cast<std::uint16_t>(mask), p)};
    } else {
        static_assert(std::is_same_v<V, i16x32>);
        return {_mm512_maskz_loadu_epi16(mask, p)};
    }
}
VEKVC_SIMD_INLINE void storeLanes(void* p, u8x16 a, std::uint16_t mask) { _mm_mask_storeu_epi8(p, mask, a.raw); }
VEKVC_SIMD_INLINE void storeLanes(void* p, i16x16 a, std::uint16_t mask) { _mm256_mask_storeu_epi16(p, mask, a.raw); }
VEKVC_SIMD_INLINE void storeLanes(void* p, i32x16 a, std::uint16_t mask) { _mm512_mask_storeu_epi32(p, mask, a.raw); }

// ---- moving lanes

// Two runs of 16 bytes, each twice in its half.
VEKVC_SIMD_INLINE u8x64 loadPairTwice16(const void* low, const void* high) {
    const __m128i a = _mm_loadu_si128(static_cast<const __m128i*>(low));
    const __m128i b = _mm_loadu_si128(static_cast<const __m128i*>(high));
    return {_mm512_mask_broadcast_i64x2(_mm512_broadcast_i64x2(a), 0xF0, b)};
}
// Lane i becomes lane index[i] of a, or of the pair that a and b make; higher bits of the index do not count.
VEKVC_SIMD_INLINE i32x16 permute(i32x16 a, i32x16 index) { return {_mm512_permutexvar_epi32(index.raw, a.raw)}; }
VEKVC_SIMD_INLINE i16x32 permutePair(i16x32 a, i16x32 b, u16x32 index) {
    return {_mm512_permutex2var_epi16(a.raw, index.raw, b.raw)};
}
// The lanes under ones of the mask moved together at the low end, 0 behind them.
VEKVC_SIMD_INLINE i32x16 packLanes(i32x16 a, std::uint16_t mask) { return {_mm512_maskz_compress_epi32(mask, a.raw)}; }
// Each lane becomes the next one, the last lane the first.
VEKVC_SIMD_INLINE i32x16 nextLanes(i32x16 a) { return {_mm512_alignr_epi32(a.raw, a.raw, 1)}; }
// The even lanes of a and the odd ones of b.
VEKVC_SIMD_INLINE i16x32 evenThenOdd(i16x32 a, i16x32 b) { return {_mm512_mask_blend_epi16(0xAAAAAAAA, a.raw, b.raw)}; }
// The lanes of each pair in the other order.
VEKVC_SIMD_INLINE i16x32 swapNeighbours(i16x32 a) { return {_mm512_rol_epi32(a.raw, 16)}; }

// ---- halves, widening and narrowing

VEKVC_SIMD_INLINE i16x16 lowHalf(i16x32 a) { return {_mm512_castsi512_si256(a.raw)}; }
VEKVC_SIMD_INLINE i16x16 highHalf(i16x32 a) { return {_mm512_extracti64x4_epi64(a.raw, 1)}; }
VEKVC_SIMD_INLINE i32x8 lowHalf(i32x16 a) { return {_mm512_castsi512_si256(a.raw)}; }
VEKVC_SIMD_INLINE i32x8 highHalf(i32x16 a) { return {_mm512_extracti64x4_epi64(a.raw, 1)}; }
VEKVC_SIMD_INLINE i16x32 widen(u8x32 a) { return {_mm512_cvtepu8_epi16(a.raw)}; }
VEKVC_SIMD_INLINE i32x16 widen(i16x16 a) { return {_mm512_cvtepi16_epi32(a.raw)}; }
VEKVC_SIMD_INLINE i32x16 widen(u16x16 a) { return {_mm512_cvtepu16_epi32(a.raw)}; }
// The low 16 (8) bits of each lane.
VEKVC_SIMD_INLINE i16x16 lowWords(i32x16 a) { return {_mm512_cvtepi32_epi16(a.raw)}; }
VEKVC_SIMD_INLINE u8x16 lowBytes(i32x16 a) { return {_mm512_cvtepi32_epi8(a.raw)}; }

}  // namespace vekvc

#endif
