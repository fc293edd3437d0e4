// Constants, and arithmetic lane by lane.
#ifndef VEKVC_CORE_SIMD_ARITHMETIC_H
#define VEKVC_CORE_SIMD_ARITHMETIC_H

#include "core/opaque.h"
#include "core/simd/memory.h"

namespace vekvc {

// ---- making vectors

template <class V>
VEKVC_SIMD_INLINE V zero() {
    if constexpr (is128<V>) return {_mm_setzero_si128()};
#if VEKVC_VECTOR512
    else if constexpr (V::kBytes == 64)
        return {_mm512_setzero_si512()};
#endif
#if VEKVC_VECTOR256
    else
        return {_mm256_setzero_si256()};
#endif
}
template <class V>
VEKVC_SIMD_INLINE V splat(std::int64_t x) {
#define VEKVC_SPLAT(prefix)                                  \
    if constexpr (laneBytes<V> == 1)                         \
        return {prefix##_set1_epi8(static_cast<char>(x))};   \
    else if constexpr (laneBytes<V> == 2)                    \
        return {prefix##_set1_epi16(static_cast<short>(x))}; \
    else if constexpr (laneBytes<V> == 4)                    \
        return {prefix##_set1_epi32(static_cast<int>(x))};   \
    else                                                     \
        return {prefix##_set1_epi64x(x)};
    if constexpr (is128<V>) {
        VEKVC_SPLAT(_mm)
    }
#if VEKVC_VECTOR512
    else if constexpr (V::kBytes == 64) {
        static_assert(laneBytes<V> == 2 || laneBytes<V> == 4);
        if constexpr (laneBytes<V> == 2)
            return {_mm512_set1_epi16(static_cast<short>(x))};
        else
            return {_mm512_set1_epi32(static_cast<int>(x))};
    }
#endif
#if VEKVC_VECTOR256
    else {
        VEKVC_SPLAT(_mm256)
    }
#endif
#undef VEKVC_SPLAT
}
// The same for a value that is known when the code is compiled, loaded from memory: GCC 12 builds such splats in three
// instructions through a general register, which short kernels feel. It does not see what the pointer points at.
template <class T>
struct alignas(32) Filled {
    T lane[32 / sizeof(T)];

    constexpr explicit Filled(T x) : lane() {
        for (T& l : lane) l = x;
    }
};
template <class T, T x>
inline constexpr Filled<T> kFilled{x};
template <class V, std::int64_t x>
VEKVC_SIMD_INLINE V constant() {
    using T = typename V::Lane;
    return load<V>(opaque(&kFilled<T, static_cast<T>(x)>.lane[0]));
}
// The bytes 1, -1 in turn: for the differences of interleaved bytes.
VEKVC_SIMD_INLINE i8x16 plusMinusOne() { return as<i8x16>(constant<i16x8, -255>()); }
// Every lane the value at p. 32-bit lanes are broadcast by the load itself: GCC 12 does so for floats only.
template <class V>
VEKVC_SIMD_INLINE V splatFrom(const void* p) {
#if VEKVC_VECTOR256
    if constexpr (laneBytes<V> == 4) {
        float bits;
        std::memcpy(&bits, p, sizeof bits);
        if constexpr (is128<V>) return {_mm_castps_si128(_mm_set1_ps(bits))};
#if VEKVC_VECTOR512
        else if constexpr (V::kBytes == 64)
            return {_mm512_castps_si512(_mm512_set1_ps(bits))};
#endif
        else
            return {_mm256_castps_si256(_mm256_set1_ps(bits))};
    }
#endif
    typename V::Lane value;
    std::memcpy(&value, p, sizeof value);
    return splat<V>(static_cast<std::int64_t>(value));
}
// The given lanes, first at the lowest address.
template <class V, class... X>
VEKVC_SIMD_INLINE V lanes(X... x) {
    static_assert(sizeof...(X) * sizeof(typename V::Lane) == V::kBytes);
    const typename V::Lane values[] = {static_cast<typename V::Lane>(x)...};
    return load<V>(values);
}

// ---- sums, products, shifts

VEKVC_SIMD_FN Vec<T, N> operator&(Vec<T, N> a, Vec<T, N> b){VEKVC_BITS(a, b, and)} VEKVC_SIMD_FN Vec<T, N>
operator|(Vec<T, N> a, Vec<T, N> b){VEKVC_BITS(a, b, or)} VEKVC_SIMD_FN Vec<T, N> operator^(Vec<T, N> a, Vec<T, N> b){
    VEKVC_BITS(a, b, xor)}  // b without the bits of a.
VEKVC_SIMD_FN Vec<T, N> andNot(Vec<T, N> a, Vec<T, N> b){VEKVC_BITS(a, b, andnot)}

// Sums and differences with wrap-around.
VEKVC_SIMD_FN Vec<T, N>
operator+(Vec<T, N> a, Vec<T, N> b) {
    VEKVC_SIZE(1) { VEKVC_BOTH(a, b, add_epi8) }
    else VEKVC_SIZE(2) {
        VEKVC_BOTH(a, b, add_epi16)
    }
    else VEKVC_SIZE(4) {
        VEKVC_BOTH(a, b, add_epi32)
    }
    else {
        VEKVC_BOTH(a, b, add_epi64)
    }
}
VEKVC_SIMD_FN Vec<T, N> operator-(Vec<T, N> a, Vec<T, N> b) {
    VEKVC_SIZE(1) { VEKVC_BOTH(a, b, sub_epi8) }
    else VEKVC_SIZE(2) {
        VEKVC_BOTH(a, b, sub_epi16)
    }
    else VEKVC_SIZE(4) {
        VEKVC_BOTH(a, b, sub_epi32)
    }
    else {
        VEKVC_BOTH(a, b, sub_epi64)
    }
}
VEKVC_SIMD_FN Vec<T, N>& operator+=(Vec<T, N>& a, Vec<T, N> b) { return a = a + b; }
VEKVC_SIMD_FN Vec<T, N>& operator-=(Vec<T, N>& a, Vec<T, N> b) { return a = a - b; }

// Sums and differences limited to the lane's range.
VEKVC_SIMD_FN Vec<T, N> addSat(Vec<T, N> a, Vec<T, N> b) {
    VEKVC_CASE(uint8_t) { VEKVC_BOTH(a, b, adds_epu8) }
    else VEKVC_CASE(int8_t) {
        VEKVC_BOTH(a, b, adds_epi8)
    }
    else VEKVC_CASE(uint16_t) {
        VEKVC_BOTH(a, b, adds_epu16)
    }
    else {
        static_assert(sizeof(T) == 2);
        VEKVC_BOTH(a, b, adds_epi16)
    }
}
VEKVC_SIMD_FN Vec<T, N> subSat(Vec<T, N> a, Vec<T, N> b) {
    VEKVC_CASE(uint8_t) { VEKVC_BOTH(a, b, subs_epu8) }
    else VEKVC_CASE(int8_t) {
        VEKVC_BOTH(a, b, subs_epi8)
    }
    else VEKVC_CASE(uint16_t) {
        VEKVC_BOTH(a, b, subs_epu16)
    }
    else {
        static_assert(sizeof(T) == 2);
        VEKVC_BOTH(a, b, subs_epi16)
    }
}

// The low bits of each product.
VEKVC_SIMD_FN Vec<T, N> operator*(Vec<T, N> a, Vec<T, N> b) {
    VEKVC_SIZE(2) { VEKVC_BOTH(a, b, mullo_epi16) }
    else {
        static_assert(sizeof(T) == 4);
        VEKVC_BOTH(a, b, mullo_epi32)
    }
}
// The high 16 bits of each product; (a * b + 0x4000) >> 15 in the rounding form.
VEKVC_SIMD_FN Vec<T, N> mulHigh(Vec<T, N> a, Vec<T, N> b) {
    VEKVC_CASE(uint16_t) { VEKVC_BOTH(a, b, mulhi_epu16) }
    else {
        static_assert(std::is_same_v<T, std::int16_t>);
        VEKVC_BOTH(a, b, mulhi_epi16)
    }
}
VEKVC_SIMD_FN Vec<T, N> mulHighRound(Vec<T, N> a, Vec<T, N> b) {
    static_assert(std::is_same_v<T, std::int16_t>);
    VEKVC_BOTH(a, b, mulhrs_epi16)
}
// Products of neighbouring 16-bit lanes added in pairs, exact in 32 bits (but for twice -32768 * -32768, which wraps).
template <int N>
VEKVC_SIMD_INLINE Vec<std::int32_t, N / 2> mulAddPairs(Vec<std::int16_t, N> a, Vec<std::int16_t, N> b) {
    VEKVC_BOTH(a, b, madd_epi16)
}
// Products of unsigned and signed 8-bit lanes added in pairs, limited to 16 bits.
template <int N>
VEKVC_SIMD_INLINE Vec<std::int16_t, N / 2> mulAddPairs(Vec<std::uint8_t, N> a,
                                                       Vec<std::int8_t, N> b){VEKVC_BOTH(a, b, maddubs_epi16)}

// (a + b + 1) >> 1, exact.
VEKVC_SIMD_FN Vec<T, N> average(Vec<T, N> a, Vec<T, N> b) {
    VEKVC_CASE(uint8_t) { VEKVC_BOTH(a, b, avg_epu8) }
    else {
        static_assert(std::is_same_v<T, std::uint16_t>);
        VEKVC_BOTH(a, b, avg_epu16)
    }
}
// (a + b) >> 1 of unsigned bytes.
VEKVC_SIMD_FN Vec<T, N> averageDown(Vec<T, N> a, Vec<T, N> b) {
    static_assert(std::is_same_v<T, std::uint8_t>);
    const Vec<T, N> ones = splat<Vec<T, N>>(255);
    return average(a ^ ones, b ^ ones) ^ ones;
}
VEKVC_SIMD_FN Vec<T, N> min(Vec<T, N> a, Vec<T, N> b) {
    VEKVC_CASE(uint8_t) { VEKVC_BOTH(a, b, min_epu8) }
    else VEKVC_CASE(int8_t) {
        VEKVC_BOTH(a, b, min_epi8)
    }
    else VEKVC_CASE(uint16_t) {
        VEKVC_BOTH(a, b, min_epu16)
    }
    else VEKVC_CASE(int16_t) {
        VEKVC_BOTH(a, b, min_epi16)
    }
    else VEKVC_CASE(uint32_t) {
        VEKVC_BOTH(a, b, min_epu32)
    }
    else {
        VEKVC_BOTH(a, b, min_epi32)
    }
}
VEKVC_SIMD_FN Vec<T, N> max(Vec<T, N> a, Vec<T, N> b) {
    VEKVC_CASE(uint8_t) { VEKVC_BOTH(a, b, max_epu8) }
    else VEKVC_CASE(int8_t) {
        VEKVC_BOTH(a, b, max_epi8)
    }
    else VEKVC_CASE(uint16_t) {
        VEKVC_BOTH(a, b, max_epu16)
    }
    else VEKVC_CASE(int16_t) {
        VEKVC_BOTH(a, b, max_epi16)
    }
    else VEKVC_CASE(uint32_t) {
        VEKVC_BOTH(a, b, max_epu32)
    }
    else {
        VEKVC_BOTH(a, b, max_epi32)
    }
}
// |a|, with the most negative value left as it is (its bits are the unsigned magnitude).
VEKVC_SIMD_FN Vec<T, N> abs(Vec<T, N> a) {
    VEKVC_SIZE(1) { VEKVC_ONE(a, abs_epi8) }
    else VEKVC_SIZE(2) {
        VEKVC_ONE(a, abs_epi16)
    }
    else {
        VEKVC_ONE(a, abs_epi32)
    }
}
// |a - b| of unsigned lanes.
VEKVC_SIMD_FN Vec<T, N> absDiff(Vec<T, N> a, Vec<T, N> b) {
    static_assert(std::is_unsigned_v<T>);
    return subSat(a, b) | subSat(b, a);
}
// a, negated where b is negative, 0 where b is 0.
VEKVC_SIMD_FN Vec<T, N> withSign(Vec<T, N> a, Vec<T, N> b) {
    VEKVC_SIZE(1) { VEKVC_BOTH(a, b, sign_epi8) }
    else VEKVC_SIZE(2) {
        VEKVC_BOTH(a, b, sign_epi16)
    }
    else {
        VEKVC_BOTH(a, b, sign_epi32)
    }
}

// Shifts of every lane by the same count; >> keeps the sign of signed lanes.
VEKVC_SIMD_FN Vec<T, N> operator<<(Vec<T, N> a, int n) {
    VEKVC_SIZE(2) { VEKVC_SHIFT(a, n, slli_epi16) }
    else VEKVC_SIZE(4) {
        VEKVC_SHIFT(a, n, slli_epi32)
    }
    else {
        static_assert(sizeof(T) == 8);
        VEKVC_SHIFT(a, n, slli_epi64)
    }
}
VEKVC_SIMD_FN Vec<T, N> operator>>(Vec<T, N> a, int n) {
    VEKVC_CASE(int16_t) { VEKVC_SHIFT(a, n, srai_epi16) }
    else VEKVC_CASE(uint16_t) {
        VEKVC_SHIFT(a, n, srli_epi16)
    }
    else VEKVC_CASE(int32_t) {
        VEKVC_SHIFT(a, n, srai_epi32)
    }
    else VEKVC_CASE(uint32_t) {
        VEKVC_SHIFT(a, n, srli_epi32)
    }
    else {
        static_assert(std::is_same_v<T, std::uint64_t>);
        VEKVC_SHIFT(a, n, srli_epi64)
    }
}
#if VEKVC_VECTOR256
// Each lane shifted by its own count, keeping its sign.
template <int N>
VEKVC_SIMD_INLINE Vec<std::int32_t, N> operator>>(Vec<std::int32_t, N> a, Vec<std::int32_t, N> counts) {
    VEKVC_BOTH(a, counts, srav_epi32)
}
#endif
// By how many bits to shift all lanes, from memory: with AVX2 a count per lane, since one for all lanes comes through a
// general register.
#if VEKVC_VECTOR256
template <class D>
using ShiftCount = D;
#else
template <class D>
using ShiftCount = int;
#endif
template <class D>
VEKVC_SIMD_INLINE ShiftCount<D> loadShiftCount(const std::int32_t* p) {
#if VEKVC_VECTOR256
    return splatFrom<D>(p);
#else
    return *p;
#endif
}
// Bytes moved within each 128 bits; zeros come in. Right means towards lower addresses.
template <int bytes, class T, int N>
VEKVC_SIMD_INLINE Vec<T, N> bytesRight(Vec<T, N> a) {
    if constexpr (is128<Vec<T, N>>) return {_mm_srli_si128(a.raw, bytes)};
#if VEKVC_VECTOR256
    else
        return {_mm256_srli_si256(a.raw, bytes)};
#endif
}
template <int bytes, class T, int N>
VEKVC_SIMD_INLINE Vec<T, N> bytesLeft(Vec<T, N> a) {
    if constexpr (is128<Vec<T, N>>) return {_mm_slli_si128(a.raw, bytes)};
#if VEKVC_VECTOR256
    else
        return {_mm256_slli_si256(a.raw, bytes)};
#endif
}

// ---- masks: all ones where the comparison holds

VEKVC_SIMD_FN Vec<T, N> operator==(Vec<T, N> a, Vec<T, N> b) {
    VEKVC_SIZE(1) { VEKVC_BOTH(a, b, cmpeq_epi8) }
    else VEKVC_SIZE(2) {
        VEKVC_BOTH(a, b, cmpeq_epi16)
    }
    else {
        VEKVC_BOTH(a, b, cmpeq_epi32)
    }
}
VEKVC_SIMD_FN Vec<T, N> operator>(Vec<T, N> a, Vec<T, N> b) {
    static_assert(std::is_signed_v<T>);
    VEKVC_SIZE(1) { VEKVC_BOTH(a, b, cmpgt_epi8) }
    else VEKVC_SIZE(2) {
        VEKVC_BOTH(a, b, cmpgt_epi16)
    }
    else {
        VEKVC_BOTH(a, b, cmpgt_epi32)
    }
}
VEKVC_SIMD_FN Vec<T, N> operator<(Vec<T, N> a, Vec<T, N> b) { return b > a; }
// yes where the mask is set, no elsewhere (by bytes).
VEKVC_SIMD_FN Vec<T, N> select(Vec<T, N> mask, Vec<T, N> yes, Vec<T, N> no) {
    if constexpr (is128<Vec<T, N>>) return {_mm_blendv_epi8(no.raw, yes.raw, mask.raw)};
#if VEKVC_VECTOR256
    else
        return {_mm256_blendv_epi8(no.raw, yes.raw, mask.raw)};
#endif
}
// One bit per byte: its sign bit, byte 0 lowest.
VEKVC_SIMD_FN std::uint32_t byteMask(Vec<T, N> a) {
    if constexpr (is128<Vec<T, N>>) return static_cast<std::uint32_t>(_mm_movemask_epi8(a.raw));
#if VEKVC_VECTOR256
    else
        return static_cast<std::uint32_t>(_mm256_movemask_epi8(a.raw));
#endif
}
VEKVC_SIMD_FN bool allZero(Vec<T, N> a) {
    if constexpr (is128<Vec<T, N>>) return _mm_testz_si128(a.raw, a.raw) != 0;
#if VEKVC_VECTOR256
    else
        return _mm256_testz_si256(a.raw, a.raw) != 0;
#endif
}

}  // namespace vekvc

#endif
