// The vector types, and the short forms in which the operations on them are written (see core/simd.h).
#ifndef VEKVC_CORE_SIMD_VECTOR_H
#define VEKVC_CORE_SIMD_VECTOR_H

#include <immintrin.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "core/simd/level.h"

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
#if VEKVC_VECTOR512
template <>
struct Register<64> {
    __m512i raw;
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
#if VEKVC_VECTOR512
using u8x64 = Vec<std::uint8_t, 64>;
using i8x64 = Vec<std::int8_t, 64>;
using i16x32 = Vec<std::int16_t, 32>;
using u16x32 = Vec<std::uint16_t, 32>;
using i32x16 = Vec<std::int32_t, 16>;
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

// NAME(a, b) for the intrinsics of 8, 16 and 32 bits: one text for all lane types and widths. A combination without an
// intrinsic does not compile. core/simd.h takes these names away again.
#if VEKVC_VECTOR512
#define VEKVC_BOTH(a, b, fn)                      \
    if constexpr (decltype(a)::kBytes == 16)      \
        return {_mm_##fn(a.raw, b.raw)};          \
    else if constexpr (decltype(a)::kBytes == 32) \
        return {_mm256_##fn(a.raw, b.raw)};       \
    else                                          \
        return {_mm512_##fn(a.raw, b.raw)};
#define VEKVC_BITS(a, b, fn)                        \
    if constexpr (decltype(a)::kBytes == 16)        \
        return {_mm_##fn##_si128(a.raw, b.raw)};    \
    else if constexpr (decltype(a)::kBytes == 32)   \
        return {_mm256_##fn##_si256(a.raw, b.raw)}; \
    else                                            \
        return {_mm512_##fn##_si512(a.raw, b.raw)};
#define VEKVC_ONE(a, fn)                          \
    if constexpr (decltype(a)::kBytes == 16)      \
        return {_mm_##fn(a.raw)};                 \
    else if constexpr (decltype(a)::kBytes == 32) \
        return {_mm256_##fn(a.raw)};              \
    else                                          \
        return {_mm512_##fn(a.raw)};
#define VEKVC_SHIFT(a, n, fn)                     \
    if constexpr (decltype(a)::kBytes == 16)      \
        return {_mm_##fn(a.raw, n)};              \
    else if constexpr (decltype(a)::kBytes == 32) \
        return {_mm256_##fn(a.raw, n)};           \
    else                                          \
        return {_mm512_##fn(a.raw, static_cast<unsigned>(n))};
#elif VEKVC_VECTOR256
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

}  // namespace vekvc

#endif
