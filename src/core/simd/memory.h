// Vectors from and to memory: load and store touch exactly the vector's bytes, the ...Bytes forms exactly n of them.
#ifndef VEKVC_CORE_SIMD_MEMORY_H
#define VEKVC_CORE_SIMD_MEMORY_H

#include "core/opaque.h"
#include "core/simd/vector.h"

namespace vekvc {

template <class V>
VEKVC_SIMD_INLINE V load(const void* p) requires(V::kBytes > 0) {
    if constexpr (is128<V>) return {_mm_loadu_si128(static_cast<const __m128i*>(p))};
#if VEKVC_VECTOR512
    else if constexpr (V::kBytes == 64)
        return {_mm512_loadu_si512(p)};
#endif
#if VEKVC_VECTOR256
    else
        return {_mm256_loadu_si256(static_cast<const __m256i*>(p))};
#endif
}
VEKVC_SIMD_FN void store(void* p, Vec<T, N> v) {
    if constexpr (is128<Vec<T, N>>) _mm_storeu_si128(static_cast<__m128i*>(p), v.raw);
#if VEKVC_VECTOR512
    else if constexpr (Vec<T, N>::kBytes == 64)
        _mm512_storeu_si512(p, v.raw);
#endif
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

#if !VEKVC_VECTOR256
// 32-bit lane i of p if bit i of `chosen` is set, else 0 or nowhere: from or to a spare place, for which a conditional
// move does. Were the place known, g++ would branch.
VEKVC_SIMD_INLINE int loadChosen(const void* p, int i, int chosen) {
    static constexpr int kZero = 0;
    const void *lane = static_cast<const char*>(p) + 4 * i, *spare = &kZero;
    asm("" : "+r"(spare));
    int value;
    std::memcpy(&value, (chosen >> i & 1) != 0 ? lane : spare, 4);
    return value;
}
VEKVC_SIMD_INLINE void storeChosen(void* p, int i, int chosen, int value) {
    int none;
    void *lane = static_cast<char*>(p) + 4 * i, *spare = &none;
    asm("" : "+r"(spare));
    std::memcpy((chosen >> i & 1) != 0 ? lane : spare, &value, 4);
}
#endif
// The 32-bit lanes whose mask is all ones, zero in the others; only the bytes of these lanes are touched.
template <class V>
VEKVC_SIMD_INLINE V loadMasked(const void* p, i32x4 mask) {
#if VEKVC_VECTOR256
    return {_mm_maskload_epi32(static_cast<const int*>(p), mask.raw)};
#else
    const int chosen = _mm_movemask_ps(_mm_castsi128_ps(mask.raw));
    return {_mm_setr_epi32(loadChosen(p, 0, chosen), loadChosen(p, 1, chosen), loadChosen(p, 2, chosen),
                           loadChosen(p, 3, chosen))};
#endif
}
VEKVC_SIMD_FN void storeMasked(void* p, i32x4 mask, Vec<T, N> v) {
#if VEKVC_VECTOR256
    _mm_maskstore_epi32(static_cast<int*>(p), mask.raw, v.raw);
#else
    const int chosen = _mm_movemask_ps(_mm_castsi128_ps(mask.raw));
    storeChosen(p, 0, chosen, _mm_cvtsi128_si32(v.raw));
    storeChosen(p, 1, chosen, _mm_extract_epi32(v.raw, 1));
    storeChosen(p, 2, chosen, _mm_extract_epi32(v.raw, 2));
    storeChosen(p, 3, chosen, _mm_extract_epi32(v.raw, 3));
#endif
}
#if VEKVC_VECTOR256
template <class V>
VEKVC_SIMD_INLINE V loadMasked(const void* p, i32x8 mask) {
    return {_mm256_maskload_epi32(static_cast<const int*>(p), mask.raw)};
}
VEKVC_SIMD_FN void storeMasked(void* p, i32x8 mask, Vec<T, N> v) {
    _mm256_maskstore_epi32(static_cast<int*>(p), mask.raw, v.raw);
}
#endif
// The same for two rows of 8 bytes, in the low and high half of one vector: lanes 0 and 1 of the mask (the others must
// be 0) choose in both.
template <class V>
VEKVC_SIMD_INLINE V loadPairMasked8(const void* low, const void* high, i32x4 mask) {
#if VEKVC_VECTOR256
    return {_mm_unpacklo_epi64(_mm_maskload_epi32(static_cast<const int*>(low), mask.raw),
                               _mm_maskload_epi32(static_cast<const int*>(high), mask.raw))};
#else
    const int chosen = _mm_movemask_ps(_mm_castsi128_ps(mask.raw));
    return {_mm_setr_epi32(loadChosen(low, 0, chosen), loadChosen(low, 1, chosen), loadChosen(high, 0, chosen),
                           loadChosen(high, 1, chosen))};
#endif
}
VEKVC_SIMD_FN void storePairMasked8(void* low, void* high, i32x4 mask, Vec<T, N> v) {
#if VEKVC_VECTOR256
    // The half that is masked off lies before the rows: to the processor the instruction touches all 16 bytes, and a
    // load of what lies behind the rows, the usual next one, would have to wait.
    const auto before = [](void* row) { return reinterpret_cast<int*>(static_cast<char*>(row) - 8); };
    const __m128i behind = _mm_slli_si128(mask.raw, 8);
    _mm_maskstore_epi32(before(low), behind, _mm_slli_si128(v.raw, 8));
    _mm_maskstore_epi32(before(high), behind, v.raw);
#else
    const int chosen = _mm_movemask_ps(_mm_castsi128_ps(mask.raw));
    storeChosen(low, 0, chosen, _mm_cvtsi128_si32(v.raw));
    storeChosen(low, 1, chosen, _mm_extract_epi32(v.raw, 1));
    storeChosen(high, 0, chosen, _mm_extract_epi32(v.raw, 2));
    storeChosen(high, 1, chosen, _mm_extract_epi32(v.raw, 3));
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
    return {_mm_castpd_si128(_mm_loadh_pd(first, static_cast<const double*>(high)))};
}
VEKVC_SIMD_FN void storePair8(void* low, void* high, Vec<T, N> v) {
    _mm_storel_epi64(static_cast<__m128i*>(low), v.raw);
    *static_cast<UnalignedDouble*>(high) = _mm_castsi128_pd(v.raw)[1];
}
// A run of 8 bytes in both halves.
template <class V>
VEKVC_SIMD_INLINE V loadTwice8(const void* p) {
    static_assert(is128<V>);
    const __m128i low = _mm_loadl_epi64(static_cast<const __m128i*>(p));
    return {_mm_castpd_si128(_mm_movedup_pd(_mm_castsi128_pd(low)))};
}
template <class V>
VEKVC_SIMD_INLINE V loadPair4(const void* low, const void* high) {
    int bits;
    std::memcpy(&bits, high, 4);
    return {_mm_insert_epi32((loadBytes<V, 4>(low).raw), bits, 1)};
}

// The rows one, two and four below p, as values of their own: the compilers would keep multiples of the step in more
// registers than there are, and short kernels would have to save some.
template <class T>
VEKVC_SIMD_INLINE T* oneRowOn(T* p, std::ptrdiff_t step) {
    T* row;
    asm("lea (%1,%2), %0" : "=r"(row) : "r"(p), "r"(step));
    return row;
}
template <class T>
VEKVC_SIMD_INLINE T* twoRowsOn(T* p, std::ptrdiff_t step) {
    T* row;
    asm("lea (%1,%2,2), %0" : "=r"(row) : "r"(p), "r"(step));
    return row;
}

template <class T>
VEKVC_SIMD_INLINE T* fourRowsOn(T* p, std::ptrdiff_t step) {
    T* row;
    asm("lea (%1,%2,4), %0" : "=r"(row) : "r"(p), "r"(step));
    return row;
}
// The addresses of four rows from a pointer and two steps, and of eight from one pointer more: with two blocks
// and a result these are all the registers that a function need not save.
template <class T>
class FourRowAddresses {
  public:
    VEKVC_SIMD_INLINE FourRowAddresses(T* p, std::ptrdiff_t step)
        : top_(p), step_(step), threeSteps_(opaque(3 * step)) {}
    VEKVC_SIMD_INLINE T* operator()(int y) const { return from(top_, y); }

  protected:
    VEKVC_SIMD_INLINE T* from(T* p, int y) const {
        const std::ptrdiff_t bytes = y == 3 ? threeSteps_ : y * step_;
        return reinterpret_cast<T*>(reinterpret_cast<std::uintptr_t>(p) + static_cast<std::uintptr_t>(bytes));
    }
    T* top_;
    std::ptrdiff_t step_, threeSteps_;
};
template <class T>
class EightRowAddresses : FourRowAddresses<T> {
  public:
    VEKVC_SIMD_INLINE EightRowAddresses(T* p, std::ptrdiff_t step)
        : FourRowAddresses<T>(p, step), bottom_(fourRowsOn(p, step)) {}
    VEKVC_SIMD_INLINE T* operator()(int y) const {
        return y < 4 ? this->from(this->top_, y) : this->from(bottom_, y - 4);
    }

  private:
    T* bottom_;
};

// v with the n bytes (1, 2 or 4) at p in its i-th place of n bytes.
template <int i, int n, class V>
VEKVC_SIMD_INLINE V insertBytes(V v, const void* p) {
    static_assert(is128<V> && (n == 1 || n == 2 || n == 4));
    if constexpr (n == 1) {
        return {_mm_insert_epi8(v.raw, static_cast<const std::uint8_t*>(p)[0], i)};
    } else if constexpr (n == 4) {
        int bits;
        std::memcpy(&bits, p, 4);
        return {_mm_insert_epi32(v.raw, bits, i)};
    } else {
        short bits;
        std::memcpy(&bits, p, 2);
        return {_mm_insert_epi16(v.raw, bits, i)};
    }
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
// The low half of a and the high half of b: these stay where they are.
VEKVC_SIMD_FN Vec<T, N> lowThenHigh(Vec<T, N> a, Vec<T, N> b) { return {_mm256_blend_epi32(a.raw, b.raw, 0xF0)}; }
// The low (high) halves of a and b as one vector.
VEKVC_SIMD_FN Vec<T, N> joinLowHalves(Vec<T, N> a, Vec<T, N> b) {
    return {_mm256_permute2x128_si256(a.raw, b.raw, 0x20)};
}
VEKVC_SIMD_FN Vec<T, N> joinHighHalves(Vec<T, N> a, Vec<T, N> b) {
    return {_mm256_permute2x128_si256(a.raw, b.raw, 0x31)};
}
// 64-bit quarters in the order i0 i1 i2 i3.
template <int i0, int i1, int i2, int i3, class T, int N>
VEKVC_SIMD_INLINE Vec<T, N> shuffle64(Vec<T, N> a) {
    return {_mm256_permute4x64_epi64(a.raw, i0 | i1 << 2 | i2 << 4 | i3 << 6)};
}
// Four runs of 8 bytes into the quarters of one vector.
template <class V>
VEKVC_SIMD_INLINE V loadFour8(const void* a, const void* b, const void* c, const void* d) {
    return join(loadPair8<Vec<typename V::Lane, 16 / laneBytes<V>>>(a, b),
                loadPair8<Vec<typename V::Lane, 16 / laneBytes<V>>>(c, d));
}
// 16 bytes of memory in both halves.
template <class V>
VEKVC_SIMD_INLINE V loadTwice16(const void* p) {
    return {_mm256_broadcastsi128_si256(_mm_loadu_si128(static_cast<const __m128i*>(p)))};
}
// Two runs of 8 bytes, each in both quarters of its half.
template <class V>
VEKVC_SIMD_INLINE V loadPairTwice8(const void* low, const void* high) {
    const auto twice = [](const void* p) {
        std::int64_t bits;
        std::memcpy(&bits, p, sizeof bits);
        return _mm256_set1_epi64x(bits);
    };
    return {_mm256_blend_epi32(twice(low), twice(high), 0xF0)};
}
// Two runs of 8 bytes as the quarters of both halves.
template <class V>
VEKVC_SIMD_INLINE V loadPairInBoth8(const void* low, const void* high) {
    const auto everywhere = [](const void* p) {
        std::int64_t bits;
        std::memcpy(&bits, p, sizeof bits);
        return _mm256_set1_epi64x(bits);
    };
    return {_mm256_blend_epi32(everywhere(low), everywhere(high), 0xCC)};
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

}  // namespace vekvc

#endif
