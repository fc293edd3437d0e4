// Double precision: every operation rounds by itself, in the caller's rounding mode.
#ifndef VEKVC_CORE_SIMD_DOUBLE_H
#define VEKVC_CORE_SIMD_DOUBLE_H

#include "core/simd/move.h"

namespace vekvc {

#if VEKVC_VECTOR256
struct f64v {
    static constexpr int kLanes = 4;
    __m256d raw;
};
VEKVC_SIMD_INLINE f64v operator+(f64v a, f64v b) { return {_mm256_add_pd(a.raw, b.raw)}; }
VEKVC_SIMD_INLINE f64v operator-(f64v a, f64v b) { return {_mm256_sub_pd(a.raw, b.raw)}; }
VEKVC_SIMD_INLINE f64v operator*(f64v a, double b) { return {_mm256_mul_pd(a.raw, _mm256_set1_pd(b))}; }
VEKVC_SIMD_INLINE f64v operator+(f64v a, double b) { return {_mm256_add_pd(a.raw, _mm256_set1_pd(b))}; }
VEKVC_SIMD_INLINE f64v floor(f64v a) { return {_mm256_floor_pd(a.raw)}; }
VEKVC_SIMD_INLINE f64v min(f64v a, f64v b) { return {_mm256_min_pd(a.raw, b.raw)}; }
VEKVC_SIMD_INLINE bool anyLess(f64v a, double b) {
    return _mm256_movemask_pd(_mm256_cmp_pd(a.raw, _mm256_set1_pd(b), _CMP_LT_OQ)) != 0;
}
// Four integers to 4 / kLanes vectors, and back; what is no integer is cut toward zero.
VEKVC_SIMD_INLINE void toDoubles(i32x4 a, f64v* v) { v[0] = {_mm256_cvtepi32_pd(a.raw)}; }
VEKVC_SIMD_INLINE i32x4 toInts(const f64v* v) { return {_mm256_cvttpd_epi32(v[0].raw)}; }
VEKVC_SIMD_INLINE void transposeSquare(f64v (&r)[4]) {
    const __m256d a = _mm256_unpacklo_pd(r[0].raw, r[1].raw), b = _mm256_unpackhi_pd(r[0].raw, r[1].raw);
    const __m256d c = _mm256_unpacklo_pd(r[2].raw, r[3].raw), d = _mm256_unpackhi_pd(r[2].raw, r[3].raw);
    r[0].raw = _mm256_permute2f128_pd(a, c, 0x20);
    r[1].raw = _mm256_permute2f128_pd(b, d, 0x20);
    r[2].raw = _mm256_permute2f128_pd(a, c, 0x31);
    r[3].raw = _mm256_permute2f128_pd(b, d, 0x31);
}
#else
struct f64v {
    static constexpr int kLanes = 2;
    __m128d raw;
};
VEKVC_SIMD_INLINE f64v operator+(f64v a, f64v b) { return {_mm_add_pd(a.raw, b.raw)}; }
VEKVC_SIMD_INLINE f64v operator-(f64v a, f64v b) { return {_mm_sub_pd(a.raw, b.raw)}; }
VEKVC_SIMD_INLINE f64v operator*(f64v a, double b) { return {_mm_mul_pd(a.raw, _mm_set1_pd(b))}; }
VEKVC_SIMD_INLINE f64v operator+(f64v a, double b) { return {_mm_add_pd(a.raw, _mm_set1_pd(b))}; }
VEKVC_SIMD_INLINE f64v floor(f64v a) { return {_mm_floor_pd(a.raw)}; }
VEKVC_SIMD_INLINE f64v min(f64v a, f64v b) { return {_mm_min_pd(a.raw, b.raw)}; }
VEKVC_SIMD_INLINE bool anyLess(f64v a, double b) { return _mm_movemask_pd(_mm_cmplt_pd(a.raw, _mm_set1_pd(b))) != 0; }
// Four integers to 4 / kLanes vectors, and back; what is no integer is cut toward zero.
VEKVC_SIMD_INLINE void toDoubles(i32x4 a, f64v* v) {
    v[0] = {_mm_cvtepi32_pd(a.raw)};
    v[1] = {_mm_cvtepi32_pd(swapHalves(a).raw)};
}
VEKVC_SIMD_INLINE i32x4 toInts(const f64v* v) {
    return {_mm_unpacklo_epi64(_mm_cvttpd_epi32(v[0].raw), _mm_cvttpd_epi32(v[1].raw))};
}
VEKVC_SIMD_INLINE void transposeSquare(f64v (&r)[2]) {
    const __m128d a = r[0].raw, b = r[1].raw;
    r[0].raw = _mm_unpacklo_pd(a, b);
    r[1].raw = _mm_unpackhi_pd(a, b);
}
#endif

}  // namespace vekvc

#endif
