// Single precision: every operation rounds by itself, in the caller's rounding mode.
#ifndef VEKVC_CORE_SIMD_FLOAT_H
#define VEKVC_CORE_SIMD_FLOAT_H

#include "core/simd/arithmetic.h"

namespace vekvc {

using f32x4 = Vec<float, 4>;

// Is the caller's rounding mode the usual one, to the nearest?
VEKVC_SIMD_INLINE bool roundsToNearest() { return (_mm_getcsr() & _MM_ROUND_MASK) == _MM_ROUND_NEAREST; }

template <class V = f32x4>
VEKVC_SIMD_INLINE V splatFloat(float x) {
    if constexpr (is128<V>) return {_mm_castps_si128(_mm_set1_ps(x))};
#if VEKVC_VECTOR256
    else
        return {_mm256_castps_si256(_mm256_set1_ps(x))};
#endif
}
VEKVC_SIMD_INLINE f32x4 toFloat(i32x4 a) { return {_mm_castps_si128(_mm_cvtepi32_ps(a.raw))}; }
// Toward zero; what does not fit becomes -2^31.
VEKVC_SIMD_INLINE i32x4 truncate(f32x4 a) { return {_mm_cvttps_epi32(_mm_castsi128_ps(a.raw))}; }
VEKVC_SIMD_INLINE f32x4 operator+(f32x4 a, f32x4 b) {
    return {_mm_castps_si128(_mm_add_ps(_mm_castsi128_ps(a.raw), _mm_castsi128_ps(b.raw)))};
}
VEKVC_SIMD_INLINE f32x4 operator-(f32x4 a, f32x4 b) {
    return {_mm_castps_si128(_mm_sub_ps(_mm_castsi128_ps(a.raw), _mm_castsi128_ps(b.raw)))};
}
VEKVC_SIMD_INLINE f32x4 operator*(f32x4 a, f32x4 b) {
    return {_mm_castps_si128(_mm_mul_ps(_mm_castsi128_ps(a.raw), _mm_castsi128_ps(b.raw)))};
}
VEKVC_SIMD_INLINE f32x4 operator/(f32x4 a, f32x4 b) {
    return {_mm_castps_si128(_mm_div_ps(_mm_castsi128_ps(a.raw), _mm_castsi128_ps(b.raw)))};
}
// b where one of the two is not a number.
VEKVC_SIMD_INLINE f32x4 min(f32x4 a, f32x4 b) {
    return {_mm_castps_si128(_mm_min_ps(_mm_castsi128_ps(a.raw), _mm_castsi128_ps(b.raw)))};
}
VEKVC_SIMD_INLINE f32x4 max(f32x4 a, f32x4 b) {
    return {_mm_castps_si128(_mm_max_ps(_mm_castsi128_ps(a.raw), _mm_castsi128_ps(b.raw)))};
}
#if defined(__FMA__)
inline constexpr bool kFused = true;
#else
inline constexpr bool kFused = false;
#endif
// a * b + c and c - a * b, rounded once or, where the processor level has no such instruction, twice: for kernels whose
// results do not depend on it.
VEKVC_SIMD_INLINE f32x4 mulAdd(f32x4 a, f32x4 b, f32x4 c) {
#if defined(__FMA__)
    return {_mm_castps_si128(_mm_fmadd_ps(_mm_castsi128_ps(a.raw), _mm_castsi128_ps(b.raw), _mm_castsi128_ps(c.raw)))};
#else
    return a * b + c;
#endif
}
VEKVC_SIMD_INLINE f32x4 mulSub(f32x4 a, f32x4 b, f32x4 c) {
#if defined(__FMA__)
    return {_mm_castps_si128(_mm_fnmadd_ps(_mm_castsi128_ps(a.raw), _mm_castsi128_ps(b.raw), _mm_castsi128_ps(c.raw)))};
#else
    return c - a * b;
#endif
}

#if VEKVC_VECTOR256
using f32x8 = Vec<float, 8>;

VEKVC_SIMD_INLINE f32x8 toFloat(i32x8 a) { return {_mm256_castps_si256(_mm256_cvtepi32_ps(a.raw))}; }
VEKVC_SIMD_INLINE i32x8 truncate(f32x8 a) { return {_mm256_cvttps_epi32(_mm256_castsi256_ps(a.raw))}; }
VEKVC_SIMD_INLINE f32x8 operator+(f32x8 a, f32x8 b) {
    return {_mm256_castps_si256(_mm256_add_ps(_mm256_castsi256_ps(a.raw), _mm256_castsi256_ps(b.raw)))};
}
VEKVC_SIMD_INLINE f32x8 operator-(f32x8 a, f32x8 b) {
    return {_mm256_castps_si256(_mm256_sub_ps(_mm256_castsi256_ps(a.raw), _mm256_castsi256_ps(b.raw)))};
}
VEKVC_SIMD_INLINE f32x8 operator*(f32x8 a, f32x8 b) {
    return {_mm256_castps_si256(_mm256_mul_ps(_mm256_castsi256_ps(a.raw), _mm256_castsi256_ps(b.raw)))};
}
VEKVC_SIMD_INLINE f32x8 operator/(f32x8 a, f32x8 b) {
    return {_mm256_castps_si256(_mm256_div_ps(_mm256_castsi256_ps(a.raw), _mm256_castsi256_ps(b.raw)))};
}
VEKVC_SIMD_INLINE f32x8 mulAdd(f32x8 a, f32x8 b, f32x8 c) {
    return {_mm256_castps_si256(
        _mm256_fmadd_ps(_mm256_castsi256_ps(a.raw), _mm256_castsi256_ps(b.raw), _mm256_castsi256_ps(c.raw)))};
}
VEKVC_SIMD_INLINE f32x8 mulSub(f32x8 a, f32x8 b, f32x8 c) {
    return {_mm256_castps_si256(
        _mm256_fnmadd_ps(_mm256_castsi256_ps(a.raw), _mm256_castsi256_ps(b.raw), _mm256_castsi256_ps(c.raw)))};
}
#endif

}  // namespace vekvc

#endif
