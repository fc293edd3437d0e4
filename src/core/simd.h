// The vector vocabulary: typed vectors and named operations on them. Fast kernels are written in it, so that they read
// like formulas; intrinsics stay in this file.
//
// u8x16 means 16 lanes of unsigned 8 bits in one register; lanes are counted from the lowest address. An operation has
// one name for all lane types and for both widths (128 bits everywhere, 256 bits where VEKVC_VECTOR256 is 1). Of the
// 256-bit forms, those that move data across lanes (interleave, narrow, shuffle, alignRight) work on each 128-bit half.
#ifndef VEKVC_CORE_SIMD_H
#define VEKVC_CORE_SIMD_H

#include <immintrin.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#if defined(__AVX2__)
#define VEKVC_VECTOR256 1
#else
#define VEKVC_VECTOR256 0
#endif

namespace vekvc {

template <int bytes>
struct Register;
template <>
struct Register<16> {
    __m128i raw;
};
#if VEKVC_VECTOR256
template <>
struct Register<32> {
    __m256i raw;
};
#endif

template <class T, int N>
struct Vec : Register<N* static_cast<int>(sizeof(T))> {
    static constexpr int kBytes = N * static_cast<int>(sizeof(T));
    using Lane = T;
};

using u8x16 = Vec<std::uint8_t, 16>;
using i8x16 = Vec<std::int8_t, 16>;
using u16x8 = Vec<std::uint16_t, 8>;
using i16x8 = Vec<std::int16_t, 8>;
using u32x4 = Vec<std::uint32_t, 4>;
using i32x4 = Vec<std::int32_t, 4>;
using u64x2 = Vec<std::uint64_t, 2>;
#if VEKVC_VECTOR256
using u8x32 = Vec<std::uint8_t, 32>;
using i8x32 = Vec<std::int8_t, 32>;
using u16x16 = Vec<std::uint16_t, 16>;
using i16x16 = Vec<std::int16_t, 16>;
using u32x8 = Vec<std::uint32_t, 8>;
using i32x8 = Vec<std::int32_t, 8>;
using u64x4 = Vec<std::uint64_t, 4>;
#endif

// What a lane operation needs to know of its vector type.
template <class V>
inline constexpr bool is128 = V::kBytes == 16;
template <class V>
inline constexpr int laneBytes = static_cast<int>(sizeof(typename V::Lane));
template <class V>
inline constexpr bool isSigned = std::is_signed_v<typename V::Lane>;

#define VEKVC_SIMD_FN         \
    template <class T, int N> \
    [[gnu::always_inline]] inline
#define VEKVC_SIMD_INLINE [[gnu::always_inline]] inline

// The same bits under another lane type: as<i16x8>(v).
template <class To, class From>
VEKVC_SIMD_INLINE To as(From v) {
    static_assert(To::kBytes == From::kBytes);
    return {v.raw};
}

// ---- memory: load and store touch exactly the vector's bytes, the ...Bytes forms exactly n of them

template <class V>
VEKVC_SIMD_INLINE V load(const void* p) requires(V::kBytes > 0) {
    if constexpr (is128<V>) return {_mm_loadu_si128(static_cast<const __m128i*>(p))};
#if VEKVC_VECTOR256
    else
        return {_mm256_loadu_si256(static_cast<const __m256i*>(p))};
#endif
}
VEKVC_SIMD_FN void store(void* p, Vec<T, N> v) {
    if constexpr (is128<Vec<T, N>>) _mm_storeu_si128(static_cast<__m128i*>(p), v.raw);
#if VEKVC_VECTOR256
    else
        _mm256_storeu_si256(static_cast<__m256i*>(p), v.raw);
#endif
}

// Past the caches, to an address that is a multiple of 16; other threads see it after finishStreaming().
VEKVC_SIMD_INLINE void storeStreaming(void* p, u8x16 v) { _mm_stream_si128(static_cast<__m128i*>(p), v.raw); }
VEKVC_SIMD_INLINE void finishStreaming() { _mm_sfence(); }

// n bytes (2, 4, 8, 12 or 16) into the low lanes; the other lanes become 0.
template <class V, int n>
VEKVC_SIMD_INLINE V loadBytes(const void* p) {
    static_assert(is128<V> && (n == 2 || n == 4 || n == 8 || n == 12 || n == 16));
    if constexpr (n == 16) {
        return {_mm_loadu_si128(static_cast<const __m128i*>(p))};
    } else if constexpr (n == 8) {
        return {_mm_loadl_epi64(static_cast<const __m128i*>(p))};
    } else if constexpr (n == 12) {
        int high;
        std::memcpy(&high, static_cast<const char*>(p) + 8, 4);
        return {_mm_insert_epi32(_mm_loadl_epi64(static_cast<const __m128i*>(p)), high, 2)};
    } else if constexpr (n == 4) {
        int bits;
        std::memcpy(&bits, p, 4);
        return {_mm_cvtsi32_si128(bits)};
    } else {
        std::uint16_t bits;
        std::memcpy(&bits, p, 2);
        return {_mm_cvtsi32_si128(bits)};
    }
}

// The low n bytes (2, 4, 8, 12 or 16) to memory.
template <int n, class T, int N>
VEKVC_SIMD_INLINE void storeBytes(void* p, Vec<T, N> v) {
    static_assert(is128<Vec<T, N>> && (n == 2 || n == 4 || n == 8 || n == 12 || n == 16));
    if constexpr (n == 16) {
        _mm_storeu_si128(static_cast<__m128i*>(p), v.raw);
    } else if constexpr (n >= 8) {
        _mm_storel_epi64(static_cast<__m128i*>(p), v.raw);
        if constexpr (n == 12) {
            const int high = _mm_extract_epi32(v.raw, 2);
            std::memcpy(static_cast<char*>(p) + 8, &high, 4);
        }
    } else {
        const int bits = _mm_cvtsi128_si32(v.raw);
        std::memcpy(p, &bits, n);
    }
}

// The 32-bit lanes whose mask is all ones, zero in the others; only the bytes of these lanes are touched.
template <class V>
VEKVC_SIMD_INLINE V loadMasked(const void* p, i32x4 mask) {
#if VEKVC_VECTOR256
    return {_mm_maskload_epi32(static_cast<const int*>(p), mask.raw)};
#else
    alignas(16) int values[4] = {};
    const int chosen = _mm_movemask_ps(_mm_castsi128_ps(mask.raw));
    for (int i = 0; i < 4; ++i)
        if (chosen >> i & 1) std::memcpy(values + i, static_cast<const char*>(p) + 4 * i, 4);
    return {_mm_load_si128(reinterpret_cast<const __m128i*>(values))};
#endif
}
VEKVC_SIMD_FN void storeMasked(void* p, i32x4 mask, Vec<T, N> v) {
#if VEKVC_VECTOR256
    _mm_maskstore_epi32(static_cast<int*>(p), mask.raw, v.raw);
#else
    alignas(16) int values[4];
    _mm_store_si128(reinterpret_cast<__m128i*>(values), v.raw);
    const int chosen = _mm_movemask_ps(_mm_castsi128_ps(mask.raw));
    for (int i = 0; i < 4; ++i)
        if (chosen >> i & 1) std::memcpy(static_cast<char*>(p) + 4 * i, values + i, 4);
#endif
}

// The eight 16-bit lanes from (to) eight places: at(0) to at(7).
template <class At>
VEKVC_SIMD_INLINE u16x8 loadLanes16(At at) {
    const auto lane = [&](int i) {
        short value;
        std::memcpy(&value, at(i), 2);
        return value;
    };
    return {_mm_setr_epi16(lane(0), lane(1), lane(2), lane(3), lane(4), lane(5), lane(6), lane(7))};
}
template <class At>
VEKVC_SIMD_INLINE void storeLanes16(At at, u16x8 v) {
    const auto put = [&](int i, int value) { std::memcpy(at(i), &value, 2); };
    put(0, _mm_extract_epi16(v.raw, 0));
    put(1, _mm_extract_epi16(v.raw, 1));
    put(2, _mm_extract_epi16(v.raw, 2));
    put(3, _mm_extract_epi16(v.raw, 3));
    put(4, _mm_extract_epi16(v.raw, 4));
    put(5, _mm_extract_epi16(v.raw, 5));
    put(6, _mm_extract_epi16(v.raw, 6));
    put(7, _mm_extract_epi16(v.raw, 7));
}
// A double at any address, for the instructions that move the high half of a vector.
using UnalignedDouble [[gnu::aligned(1), gnu::may_alias]] = double;

// The four 32-bit lanes to four places: at(0) to at(3).
template <class At>
VEKVC_SIMD_INLINE void storeLanes32(At at, u32x4 v) {
    const auto put = [&](int i, int value) { std::memcpy(at(i), &value, 4); };
    put(0, _mm_cvtsi128_si32(v.raw));
    put(1, _mm_extract_epi32(v.raw, 1));
    put(2, _mm_extract_epi32(v.raw, 2));
    put(3, _mm_extract_epi32(v.raw, 3));
}

// Two runs of 8 (or 4) bytes into the low and high half (or the two lowest quarters) of one vector: two short rows.
template <class V>
VEKVC_SIMD_INLINE V loadPair8(const void* low, const void* high) {
    const __m128d first = _mm_castsi128_pd(_mm_loadl_epi64(static_cast<const __m128i*>(low)));
    return {_mm_castpd_si128(__m128d{first[0], *static_cast<const UnalignedDouble*>(high)})};
}
VEKVC_SIMD_FN void storePair8(void* low, void* high, Vec<T, N> v) {
    _mm_storel_epi64(static_cast<__m128i*>(low), v.raw);
    *static_cast<UnalignedDouble*>(high) = _mm_castsi128_pd(v.raw)[1];
}
template <class V>
VEKVC_SIMD_INLINE V loadPair4(const void* low, const void* high) {
    int bits;
    std::memcpy(&bits, high, 4);
    return {_mm_insert_epi32((loadBytes<V, 4>(low).raw), bits, 1)};
}

#if VEKVC_VECTOR256
// Two vectors as the halves of one of 256 bits, and back.
VEKVC_SIMD_FN auto join(Vec<T, N> low, Vec<T, N> high) -> Vec<T, 2 * N> {
    return {_mm256_inserti128_si256(_mm256_castsi128_si256(low.raw), high.raw, 1)};
}
VEKVC_SIMD_FN auto lowHalf(Vec<T, N> v) -> Vec<T, N / 2> { return {_mm256_castsi256_si128(v.raw)}; }
VEKVC_SIMD_FN auto highHalf(Vec<T, N> v) -> Vec<T, N / 2> { return {_mm256_extracti128_si256(v.raw, 1)}; }
// The high half of a and the low half of b as one vector.
VEKVC_SIMD_FN Vec<T, N> highThenLow(Vec<T, N> a, Vec<T, N> b) {
    return {_mm256_permute2x128_si256(a.raw, b.raw, 0x21)};
}
// 64-bit quarters in the order i0 i1 i2 i3.
template <int i0, int i1, int i2, int i3, class T, int N>
VEKVC_SIMD_INLINE Vec<T, N> shuffle64(Vec<T, N> a) {
    return {_mm256_permute4x64_epi64(a.raw, i0 | i1 << 2 | i2 << 4 | i3 << 6)};
}
// Two runs of 16 bytes into the halves of one vector: two rows of 16 samples.
template <class V>
VEKVC_SIMD_INLINE V loadPair16(const void* low, const void* high) {
    return {_mm256_inserti128_si256(_mm256_castsi128_si256(_mm_loadu_si128(static_cast<const __m128i*>(low))),
                                    _mm_loadu_si128(static_cast<const __m128i*>(high)), 1)};
}
VEKVC_SIMD_FN void storePair16(void* low, void* high, Vec<T, N> v) {
    _mm_storeu_si128(static_cast<__m128i*>(low), _mm256_castsi256_si128(v.raw));
    _mm_storeu_si128(static_cast<__m128i*>(high), _mm256_extracti128_si256(v.raw, 1));
}
#endif

// ---- making vectors

template <class V>
VEKVC_SIMD_INLINE V zero() {
    if constexpr (is128<V>) return {_mm_setzero_si128()};
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
    const T* p = kFilled<T, static_cast<T>(x)>.lane;
    asm("" : "+r"(p));
    return load<V>(p);
}
// Every lane the value at p. 32-bit lanes are broadcast by the load itself: GCC 12 does so for floats only.
template <class V>
VEKVC_SIMD_INLINE V splatFrom(const void* p) {
#if VEKVC_VECTOR256
    if constexpr (laneBytes<V> == 4) {
        float bits;
        std::memcpy(&bits, p, sizeof bits);
        if constexpr (is128<V>)
            return {_mm_castps_si128(_mm_set1_ps(bits))};
        else
            return {_mm256_castps_si256(_mm256_set1_ps(bits))};
    }
#endif
    typename V::Lane value;
    std::memcpy(&value, p, sizeof value);
    return splat<V>(value);
}
// The given lanes, first at the lowest address.
template <class V, class... X>
VEKVC_SIMD_INLINE V lanes(X... x) {
    static_assert(sizeof...(X) * sizeof(typename V::Lane) == V::kBytes);
    alignas(32) const typename V::Lane values[] = {static_cast<typename V::Lane>(x)...};
    return load<V>(values);
}

// ---- one lane type, both widths: NAME(a, b) for the intrinsics of 8, 16 and 32 bits
// A combination without an intrinsic does not compile.

#if VEKVC_VECTOR256
#define VEKVC_BOTH(a, b, fn)                 \
    if constexpr (decltype(a)::kBytes == 16) \
        return {_mm_##fn(a.raw, b.raw)};     \
    else                                     \
        return {_mm256_##fn(a.raw, b.raw)};
#define VEKVC_BITS(a, b, fn)                     \
    if constexpr (decltype(a)::kBytes == 16)     \
        return {_mm_##fn##_si128(a.raw, b.raw)}; \
    else                                         \
        return {_mm256_##fn##_si256(a.raw, b.raw)};
#define VEKVC_ONE(a, fn)                     \
    if constexpr (decltype(a)::kBytes == 16) \
        return {_mm_##fn(a.raw)};            \
    else                                     \
        return {_mm256_##fn(a.raw)};
#define VEKVC_SHIFT(a, n, fn)                \
    if constexpr (decltype(a)::kBytes == 16) \
        return {_mm_##fn(a.raw, n)};         \
    else                                     \
        return {_mm256_##fn(a.raw, n)};
#else
#define VEKVC_BOTH(a, b, fn) return {_mm_##fn(a.raw, b.raw)};
#define VEKVC_BITS(a, b, fn) return {_mm_##fn##_si128(a.raw, b.raw)};
#define VEKVC_ONE(a, fn) return {_mm_##fn(a.raw)};
#define VEKVC_SHIFT(a, n, fn) return {_mm_##fn(a.raw, n)};
#endif
#define VEKVC_CASE(type) if constexpr (std::is_same_v<T, std::type>)
#define VEKVC_SIZE(bytes) if constexpr (sizeof(T) == bytes)

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
// 16 bytes of memory in both halves.
template <class V>
VEKVC_SIMD_INLINE V loadTwice16(const void* p) {
    return {_mm256_broadcastsi128_si256(_mm_loadu_si128(static_cast<const __m128i*>(p)))};
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
// The sum of unsigned 16-bit lanes.
VEKVC_SIMD_FN std::int32_t sumLanes(Vec<T, N> a) requires std::is_same_v<T, std::uint16_t> {
    using D = Vec<std::int32_t, N / 2>;
    using U = Vec<std::uint32_t, N / 2>;
    return sumLanes(as<D>((as<U>(a) >> 16) + (as<U>(a) & splat<U>(0xffff))));
}
// The least of eight unsigned lanes and the lowest index at which it stands.
struct Minimum {
    std::uint16_t value;
    std::uint16_t index;
};
VEKVC_SIMD_INLINE Minimum minimum(u16x8 a) {
    const __m128i found = _mm_minpos_epu16(a.raw);
    return {static_cast<std::uint16_t>(_mm_extract_epi16(found, 0)),
            static_cast<std::uint16_t>(_mm_extract_epi16(found, 1))};
}

// ---- single precision: every operation rounds by itself

using f32x4 = Vec<float, 4>;

VEKVC_SIMD_INLINE f32x4 splatFloat(float x) { return {_mm_castps_si128(_mm_set1_ps(x))}; }
VEKVC_SIMD_INLINE f32x4 toFloat(i32x4 a) { return {_mm_castps_si128(_mm_cvtepi32_ps(a.raw))}; }
// Toward zero; what does not fit becomes -2^31.
VEKVC_SIMD_INLINE i32x4 truncate(f32x4 a) { return {_mm_cvttps_epi32(_mm_castsi128_ps(a.raw))}; }
VEKVC_SIMD_INLINE f32x4 operator*(f32x4 a, f32x4 b) {
    return {_mm_castps_si128(_mm_mul_ps(_mm_castsi128_ps(a.raw), _mm_castsi128_ps(b.raw)))};
}
// b where one of the two is not a number.
VEKVC_SIMD_INLINE f32x4 min(f32x4 a, f32x4 b) {
    return {_mm_castps_si128(_mm_min_ps(_mm_castsi128_ps(a.raw), _mm_castsi128_ps(b.raw)))};
}
VEKVC_SIMD_INLINE f32x4 max(f32x4 a, f32x4 b) {
    return {_mm_castps_si128(_mm_max_ps(_mm_castsi128_ps(a.raw), _mm_castsi128_ps(b.raw)))};
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
        r[i] = {_mm256_permute2x128_si256(top.raw, low.raw, 0x20)};
        r[i + 4] = {_mm256_permute2x128_si256(top.raw, low.raw, 0x31)};
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

#undef VEKVC_BOTH
#undef VEKVC_BITS
#undef VEKVC_ONE
#undef VEKVC_SHIFT
#undef VEKVC_CASE
#undef VEKVC_SIZE
#undef VEKVC_SIMD_FN

}  // namespace vekvc

#endif
