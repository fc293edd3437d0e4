// Lanes moved, widened, narrowed and transposed.
#ifndef VEKVC_CORE_SIMD_MOVE_H
#define VEKVC_CORE_SIMD_MOVE_H

#include "core/simd/arithmetic.h"

namespace vekvc {

// ---- moving lanes

// The lanes of the low (high) halves of a and b in turn: a0 b0 a1 b1 ...
VEKVC_SIMD_FN Vec<T, N> interleaveLow(Vec<T, N> a, Vec<T, N> b) {
    VEKVC_SIZE(1) { VEKVC_BOTH(a, b, unpacklo_epi8) }
    else VEKVC_SIZE(2) {
        VEKVC_BOTH(a, b, unpacklo_epi16)
    }
    else VEKVC_SIZE(4) {
        VEKVC_BOTH(a, b, unpacklo_epi32)
    }
    else {
        VEKVC_BOTH(a, b, unpacklo_epi64)
    }
}
VEKVC_SIMD_FN Vec<T, N> interleaveHigh(Vec<T, N> a, Vec<T, N> b) {
    VEKVC_SIZE(1) { VEKVC_BOTH(a, b, unpackhi_epi8) }
    else VEKVC_SIZE(2) {
        VEKVC_BOTH(a, b, unpackhi_epi16)
    }
    else VEKVC_SIZE(4) {
        VEKVC_BOTH(a, b, unpackhi_epi32)
    }
    else {
        VEKVC_BOTH(a, b, unpackhi_epi64)
    }
}
// Lane i becomes the byte of a that index i names (0 to 15), or 0 where the index's top bit is set.
template <class T, int N, class I>
VEKVC_SIMD_INLINE Vec<T, N> shuffleBytes(Vec<T, N> a, I index) {
    static_assert(I::kBytes == Vec<T, N>::kBytes);
    VEKVC_BOTH(a, index, shuffle_epi8)
}
// The vector that begins `bytes` bytes into the pair low:high.
template <int bytes, class T, int N>
VEKVC_SIMD_INLINE Vec<T, N> alignRight(Vec<T, N> high, Vec<T, N> low) {
    if constexpr (is128<Vec<T, N>>) return {_mm_alignr_epi8(high.raw, low.raw, bytes)};
#if VEKVC_VECTOR256
    else
        return {_mm256_alignr_epi8(high.raw, low.raw, bytes)};
#endif
}
// 32-bit lanes in the order i0 i1 i2 i3 (of each half).
template <int i0, int i1, int i2, int i3, class T, int N>
VEKVC_SIMD_INLINE Vec<T, N> shuffle32(Vec<T, N> a) {
    if constexpr (is128<Vec<T, N>>) return {_mm_shuffle_epi32(a.raw, i0 | i1 << 2 | i2 << 4 | i3 << 6)};
#if VEKVC_VECTOR256
    else
        return {_mm256_shuffle_epi32(a.raw, i0 | i1 << 2 | i2 << 4 | i3 << 6)};
#endif
}
// The 64-bit halves (of each half) in the other order.
VEKVC_SIMD_FN Vec<T, N> swapHalves(Vec<T, N> a) { return shuffle32<2, 3, 0, 1>(a); }
// The low (high) 64 bits of a, then of b (of each half).
VEKVC_SIMD_FN Vec<T, N> joinLow(Vec<T, N> a, Vec<T, N> b) {
    using Q = Vec<std::uint64_t, Vec<T, N>::kBytes / 8>;
    return as<Vec<T, N>>(interleaveLow(as<Q>(a), as<Q>(b)));
}
VEKVC_SIMD_FN Vec<T, N> joinHigh(Vec<T, N> a, Vec<T, N> b) {
    using Q = Vec<std::uint64_t, Vec<T, N>::kBytes / 8>;
    return as<Vec<T, N>>(interleaveHigh(as<Q>(a), as<Q>(b)));
}
#if VEKVC_VECTOR256
// The quarters 0 2 1 3: turns halves that belong to two columns into rows, and back.
VEKVC_SIMD_FN Vec<T, N> swapMiddleQuarters(Vec<T, N> a) { return {_mm256_permute4x64_epi64(a.raw, 0xD8)}; }
// The 32-bit lanes of all eight in the order i0 ... i7.
template <int i0, int i1, int i2, int i3, int i4, int i5, int i6, int i7, class T, int N>
VEKVC_SIMD_INLINE Vec<T, N> shuffle32(Vec<T, N> a) {
    static_assert(Vec<T, N>::kBytes == 32);
    return {_mm256_permutevar8x32_epi32(a.raw, lanes<i32x8>(i0, i1, i2, i3, i4, i5, i6, i7).raw)};
}
#endif
// 16-bit lanes of b where bit i of mask is set for lane i (of each half), of a elsewhere.
template <int mask, class T, int N>
VEKVC_SIMD_INLINE Vec<T, N> blend16(Vec<T, N> a, Vec<T, N> b) {
    if constexpr (is128<Vec<T, N>>) return {_mm_blend_epi16(a.raw, b.raw, mask)};
#if VEKVC_VECTOR256
    else
        return {_mm256_blend_epi16(a.raw, b.raw, mask)};
#endif
}
// The same with 32-bit lanes, of vectors of 128 bits.
template <int mask, class T, int N>
VEKVC_SIMD_INLINE Vec<T, N> blend32(Vec<T, N> a, Vec<T, N> b) {
    static_assert(is128<Vec<T, N>>);
#if VEKVC_VECTOR256
    return {_mm_blend_epi32(a.raw, b.raw, mask)};
#else
    return blend16<(mask & 1) * 3 | (mask & 2) * 6 | (mask & 4) * 12 | (mask & 8) * 24>(a, b);
#endif
}
// The even (odd) 32-bit lanes of a, then of b (of each half).
VEKVC_SIMD_FN Vec<T, N> evenLanes32(Vec<T, N> a, Vec<T, N> b) {
    if constexpr (is128<Vec<T, N>>)
        return {_mm_castps_si128(_mm_shuffle_ps(_mm_castsi128_ps(a.raw), _mm_castsi128_ps(b.raw), 0x88))};
#if VEKVC_VECTOR256
    else
        return {_mm256_castps_si256(_mm256_shuffle_ps(_mm256_castsi256_ps(a.raw), _mm256_castsi256_ps(b.raw), 0x88))};
#endif
}
VEKVC_SIMD_FN Vec<T, N> oddLanes32(Vec<T, N> a, Vec<T, N> b) {
    if constexpr (is128<Vec<T, N>>)
        return {_mm_castps_si128(_mm_shuffle_ps(_mm_castsi128_ps(a.raw), _mm_castsi128_ps(b.raw), 0xDD))};
#if VEKVC_VECTOR256
    else
        return {_mm256_castps_si256(_mm256_shuffle_ps(_mm256_castsi256_ps(a.raw), _mm256_castsi256_ps(b.raw), 0xDD))};
#endif
}
// The 16-bit lanes of each pair in the other order.
VEKVC_SIMD_FN Vec<T, N> swapNeighbours16(Vec<T, N> a) {
    static_assert(sizeof(T) == 2);
    if constexpr (is128<Vec<T, N>>)
        return shuffleBytes(a, lanes<u8x16>(2, 3, 0, 1, 6, 7, 4, 5, 10, 11, 8, 9, 14, 15, 12, 13));
#if VEKVC_VECTOR256
    else
        return shuffleBytes(a, lanes<u8x32>(2, 3, 0, 1, 6, 7, 4, 5, 10, 11, 8, 9, 14, 15, 12, 13,  //
                                            2, 3, 0, 1, 6, 7, 4, 5, 10, 11, 8, 9, 14, 15, 12, 13));
#endif
}
// Four runs of 4 bytes, from at(0) to at(3).
template <class V, class At>
VEKVC_SIMD_INLINE V loadLanes32(At at) {
#if VEKVC_VECTOR256
    using D = u32x4;
    const D low = blend32<2>(splatFrom<D>(at(0)), splatFrom<D>(at(1)));
    const D high = blend32<8>(splatFrom<D>(at(2)), splatFrom<D>(at(3)));
    return as<V>(blend32<12>(low, high));
#else
    const u64x2 low = loadPair4<u64x2>(at(0), at(1)), high = loadPair4<u64x2>(at(2), at(3));
    return as<V>(interleaveLow(low, high));
#endif
}
template <int i, class T, int N>
VEKVC_SIMD_INLINE T lane(Vec<T, N> a) {
    static_assert(is128<Vec<T, N>>);
    VEKVC_SIZE(1) return static_cast<T>(_mm_extract_epi8(a.raw, i));
    else VEKVC_SIZE(2) return static_cast<T>(_mm_extract_epi16(a.raw, i));
    else VEKVC_SIZE(4) return static_cast<T>(_mm_extract_epi32(a.raw, i));
    else return static_cast<T>(_mm_extract_epi64(a.raw, i));
}

// Every lane the lowest one of v.
template <class V>
VEKVC_SIMD_INLINE V splatLowest(i16x8 v) {
    static_assert(laneBytes<V> == 2);
#if VEKVC_VECTOR256
    if constexpr (is128<V>)
        return {_mm_broadcastw_epi16(v.raw)};
    else
        return {_mm256_broadcastw_epi16(v.raw)};
#else
    return {_mm_shuffle_epi32(_mm_shufflelo_epi16(v.raw, 0), 0)};
#endif
}

// ---- widening and narrowing

// The low half's lanes at twice the width (zero- or sign-extended by the lane type); all lanes into 256 bits: widen.
template <class T, int N>
using Wider = Vec<
    std::conditional_t<sizeof(T) == 1, std::int16_t, std::conditional_t<sizeof(T) == 2, std::int32_t, std::int64_t>>,
    N>;
VEKVC_SIMD_FN Wider<T, N / 2> widenLow(Vec<T, N> a) {
    static_assert(is128<Vec<T, N>>);
    VEKVC_CASE(uint8_t) return {_mm_cvtepu8_epi16(a.raw)};
    else VEKVC_CASE(int8_t) return {_mm_cvtepi8_epi16(a.raw)};
    else VEKVC_CASE(uint16_t) return {_mm_cvtepu16_epi32(a.raw)};
    else {
        static_assert(std::is_same_v<T, std::int16_t>);
        return {_mm_cvtepi16_epi32(a.raw)};
    }
}
VEKVC_SIMD_FN Wider<T, N / 2> widenHigh(Vec<T, N> a) {
    if constexpr (std::is_unsigned_v<T>)
        return {interleaveHigh(a, zero<Vec<T, N>>()).raw};
    else
        return widenLow(bytesRight<8>(a));
}
#if VEKVC_VECTOR256
VEKVC_SIMD_FN Wider<T, N> widen(Vec<T, N> a) {
    static_assert(is128<Vec<T, N>>);
    VEKVC_CASE(uint8_t) return {_mm256_cvtepu8_epi16(a.raw)};
    else VEKVC_CASE(int8_t) return {_mm256_cvtepi8_epi16(a.raw)};
    else VEKVC_CASE(uint16_t) return {_mm256_cvtepu16_epi32(a.raw)};
    else {
        static_assert(std::is_same_v<T, std::int16_t>);
        return {_mm256_cvtepi16_epi32(a.raw)};
    }
}
#endif
// a's lanes, then b's (half by half in 256 bits), limited to the narrower range.
template <int N>
VEKVC_SIMD_INLINE Vec<std::uint8_t, 2 * N> narrowU8(Vec<std::int16_t, N> a, Vec<std::int16_t, N> b) {
    VEKVC_BOTH(a, b, packus_epi16)
}
template <int N>
VEKVC_SIMD_INLINE Vec<std::int8_t, 2 * N> narrowI8(Vec<std::int16_t, N> a, Vec<std::int16_t, N> b) {
    VEKVC_BOTH(a, b, packs_epi16)
}
template <int N>
VEKVC_SIMD_INLINE Vec<std::int16_t, 2 * N> narrowI16(Vec<std::int32_t, N> a, Vec<std::int32_t, N> b) {
    VEKVC_BOTH(a, b, packs_epi32)
}
template <int N>
VEKVC_SIMD_INLINE Vec<std::uint16_t, 2 * N> narrowU16(Vec<std::int32_t, N> a, Vec<std::int32_t, N> b) {
    VEKVC_BOTH(a, b, packus_epi32)
}
// The same with wrap-around: the low 16 bits of each lane.
template <int N>
VEKVC_SIMD_INLINE Vec<std::int16_t, 2 * N> narrowWrap(Vec<std::int32_t, N> a, Vec<std::int32_t, N> b) {
    const Vec<std::int32_t, N> low = constant<Vec<std::int32_t, N>, 0xFFFF>();
    return as<Vec<std::int16_t, 2 * N>>(narrowU16(a & low, b & low));
}

// ---- transposition, in place

// Four rows of four 32-bit lanes (of each half).
VEKVC_SIMD_FN void transpose4x4(Vec<T, N>& a, Vec<T, N>& b, Vec<T, N>& c, Vec<T, N>& d) requires(sizeof(T) == 4) {
    using Q = Vec<std::uint64_t, N / 2>;
    const Q ab0 = as<Q>(interleaveLow(a, b)), ab1 = as<Q>(interleaveHigh(a, b));
    const Q cd0 = as<Q>(interleaveLow(c, d)), cd1 = as<Q>(interleaveHigh(c, d));
    a = as<Vec<T, N>>(interleaveLow(ab0, cd0));
    b = as<Vec<T, N>>(interleaveHigh(ab0, cd0));
    c = as<Vec<T, N>>(interleaveLow(ab1, cd1));
    d = as<Vec<T, N>>(interleaveHigh(ab1, cd1));
}
// Eight rows of eight 16-bit lanes (of each half).
template <int N>
VEKVC_SIMD_INLINE void transpose8x8(Vec<std::int16_t, N> (&r)[8]) {
    using D = Vec<std::int32_t, N / 2>;
    using Q = Vec<std::uint64_t, N / 4>;
    D pairs[8];  // pairs[i] and pairs[i + 4]: rows 2i and 2i + 1, columns 0 to 3 and 4 to 7
    for (int i = 0; i < 4; ++i) {
        pairs[i] = as<D>(interleaveLow(r[2 * i], r[2 * i + 1]));
        pairs[i + 4] = as<D>(interleaveHigh(r[2 * i], r[2 * i + 1]));
    }
    for (int half = 0; half < 2; ++half) {
        const D* p = pairs + 4 * half;
        const Q top0 = as<Q>(interleaveLow(p[0], p[1])), top1 = as<Q>(interleaveHigh(p[0], p[1]));
        const Q low0 = as<Q>(interleaveLow(p[2], p[3])), low1 = as<Q>(interleaveHigh(p[2], p[3]));
        r[4 * half + 0] = as<Vec<std::int16_t, N>>(interleaveLow(top0, low0));
        r[4 * half + 1] = as<Vec<std::int16_t, N>>(interleaveHigh(top0, low0));
        r[4 * half + 2] = as<Vec<std::int16_t, N>>(interleaveLow(top1, low1));
        r[4 * half + 3] = as<Vec<std::int16_t, N>>(interleaveHigh(top1, low1));
    }
}
// Eight rows of eight 32-bit lanes, in one vector each or in two (columns 0 to 3 and 4 to 7).
VEKVC_SIMD_INLINE void transpose8x8(i32x4 (&left)[8], i32x4 (&right)[8]) {
    for (int i = 0; i < 8; i += 4) {
        transpose4x4(left[i], left[i + 1], left[i + 2], left[i + 3]);
        transpose4x4(right[i], right[i + 1], right[i + 2], right[i + 3]);
    }
    for (int i = 0; i < 4; ++i) {
        const i32x4 t = left[i + 4];
        left[i + 4] = right[i];
        right[i] = t;
    }
}
#if VEKVC_VECTOR256
VEKVC_SIMD_INLINE void transpose8x8(i32x8 (&r)[8]) {
    transpose4x4(r[0], r[1], r[2], r[3]);
    transpose4x4(r[4], r[5], r[6], r[7]);
    for (int i = 0; i < 4; ++i) {
        const i32x8 top = r[i], low = r[i + 4];
        r[i] = joinLowHalves(top, low);
        r[i + 4] = joinHighHalves(top, low);
    }
}
#endif

// One step of a perfect shuffle of n vectors, byte by byte: the address of each byte (its vector, then its place in the
// vector) is rotated left by one bit. n = 2^k rows of 2^c bytes are transposed by k steps, and transposed back by c.
template <class T, int N, std::size_t n>
VEKVC_SIMD_INLINE void interleaveBytes(Vec<T, N> (&x)[n]) {
    Vec<T, N> y[n];
    for (std::size_t i = 0; i < n / 2; ++i) {
        y[2 * i] = interleaveLow(x[i], x[i + n / 2]);
        y[2 * i + 1] = interleaveHigh(x[i], x[i + n / 2]);
    }
    for (std::size_t i = 0; i < n; ++i) x[i] = y[i];
}

}  // namespace vekvc

#endif
