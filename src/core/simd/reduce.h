// Sums and searches over a vector, and bits of general registers.
#ifndef VEKVC_CORE_SIMD_REDUCE_H
#define VEKVC_CORE_SIMD_REDUCE_H

#include "core/simd/arithmetic.h"
#include "core/simd/move.h"

namespace vekvc {

// ---- sums and searches

// Sums of |a - b| over each 8 bytes, in the low 16 bits of each 64.
template <int N>
VEKVC_SIMD_INLINE Vec<std::uint64_t, N / 8> sumAbsDiff(Vec<std::uint8_t, N> a, Vec<std::uint8_t, N> b) {
    VEKVC_BOTH(a, b, sad_epu8)
}
// Eight sums of |difference| of 4 bytes: the 4 bytes that begin 4 * sourceQuad bytes into `source`, against the
// reference at 4 * referenceQuad, 4 * referenceQuad + 1 ... + 7 bytes. The 256-bit form chooses for each half.
template <int referenceQuad, int sourceQuad>
VEKVC_SIMD_INLINE u16x8 eightSums(u8x16 reference, u8x16 source) {
    static_assert(referenceQuad < 2 && sourceQuad < 4);
    return {_mm_mpsadbw_epu8(reference.raw, source.raw, referenceQuad << 2 | sourceQuad)};
}
#if VEKVC_VECTOR256
template <int lowReferenceQuad, int lowSourceQuad, int highReferenceQuad, int highSourceQuad>
VEKVC_SIMD_INLINE u16x16 eightSums(u8x32 reference, u8x32 source) {
    constexpr int low = lowReferenceQuad << 2 | lowSourceQuad, high = highReferenceQuad << 2 | highSourceQuad;
    return {_mm256_mpsadbw_epu8(reference.raw, source.raw, low | high << 3)};
}
#endif
// The sum of all lanes (32-bit lanes with wrap-around; 64-bit lanes: their low 32 bits).
VEKVC_SIMD_INLINE std::int32_t sumLanes(i32x4 a) {
    const __m128i pairs = _mm_add_epi32(a.raw, _mm_unpackhi_epi64(a.raw, a.raw));
    return _mm_cvtsi128_si32(_mm_add_epi32(pairs, _mm_shuffle_epi32(pairs, 0xE1)));
}
VEKVC_SIMD_INLINE std::int32_t sumLanes(u64x2 a) {
    return _mm_cvtsi128_si32(_mm_add_epi32(a.raw, _mm_unpackhi_epi64(a.raw, a.raw)));
}
#if VEKVC_VECTOR256
VEKVC_SIMD_INLINE std::int32_t sumLanes(i32x8 a) { return sumLanes(lowHalf(a) + highHalf(a)); }
VEKVC_SIMD_INLINE std::int32_t sumLanes(u64x4 a) { return sumLanes(lowHalf(a) + highHalf(a)); }
#endif
// The sum of signed 16-bit lanes.
template <int N>
VEKVC_SIMD_INLINE std::int32_t sumLanes(Vec<std::int16_t, N> a) {
    return sumLanes(mulAddPairs(a, constant<Vec<std::int16_t, N>, 1>()));
}
// The sum of unsigned 16-bit lanes: less 32768 each they are signed.
VEKVC_SIMD_FN std::int32_t sumLanes(Vec<T, N> a) requires std::is_same_v<T, std::uint16_t> {
    using S = Vec<std::int16_t, N>;
    return sumLanes(as<S>(a) ^ constant<S, -32768>()) + 32768 * N;
}
// The least of eight unsigned lanes and the lowest index at which it stands.
struct Minimum {
    std::uint16_t value;
    std::uint16_t index;
};
VEKVC_SIMD_INLINE Minimum minimum(u16x8 a) {
    const auto found = static_cast<std::uint32_t>(_mm_cvtsi128_si32(_mm_minpos_epu16(a.raw)));
    return {static_cast<std::uint16_t>(found), static_cast<std::uint16_t>(found >> 16)};
}
// The greatest of eight unsigned lanes.
VEKVC_SIMD_INLINE std::int32_t maximum(u16x8 a) {
    const __m128i ones = _mm_cmpeq_epi16(a.raw, a.raw), found = _mm_minpos_epu16(_mm_xor_si128(a.raw, ones));
    return _mm_cvtsi128_si32(_mm_andnot_si128(found, _mm_setr_epi32(0xFFFF, 0, 0, 0)));
}

// ---- bits of general registers

#if defined(__BMI2__)
#define VEKVC_BIT_GATHER 1
// The bits of x that stand under ones of the mask, moved together at the low end; and the reverse.
VEKVC_SIMD_INLINE std::uint64_t gatherBits(std::uint64_t x, std::uint64_t mask) { return _pext_u64(x, mask); }
VEKVC_SIMD_INLINE std::uint64_t scatterBits(std::uint64_t x, std::uint64_t mask) { return _pdep_u64(x, mask); }
#else
#define VEKVC_BIT_GATHER 0
#endif
// `bits` without its n lowest ones (n up to 63).
VEKVC_SIMD_INLINE std::uint64_t withoutLowestBits(std::uint64_t bits, int n) {
#if defined(__BMI2__)
    return bits & ~_pdep_u64((std::uint64_t{1} << n) - 1, bits);
#else
    for (; n > 0 && bits != 0; --n) bits &= bits - 1;
    return bits;
#endif
}

// Sums of neighbouring lanes: a's four, then b's; they wrap.
VEKVC_SIMD_INLINE i16x8 addNeighbours(i16x8 a, i16x8 b) { return {_mm_hadd_epi16(a.raw, b.raw)}; }

}  // namespace vekvc

#endif
