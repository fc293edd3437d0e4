// What the fast forms of the conversions share: walking along a row by vectors, and bytes of pairs apart and together.
#ifndef VEKVC_PROCESSING_CONVERT_ROWS_SIMD_H
#define VEKVC_PROCESSING_CONVERT_ROWS_SIMD_H

#include "core/simd.h"
#include "processing/picture.h"

namespace vekvc::simd {

#if VEKVC_VECTOR256
using WidestBytes = u8x32;
#else
using WidestBytes = u8x16;
#endif

// The 16-bit and 32-bit lanes of a vector of bytes.
template <class V>
using Words = Vec<std::int16_t, V::kBytes / 2>;
template <class V>
using UnsignedWords = Vec<std::uint16_t, V::kBytes / 2>;
template <class V>
using DoubleWords = Vec<std::int32_t, V::kBytes / 4>;

// Calls use(V(), x) for vectors of n pixels each that together cover pixels first to last - 1; the last one ends at the
// end and may overlap the one before. False if there are too few for one.
template <class V, class Use>
[[gnu::always_inline]] inline bool coverBy(std::ptrdiff_t n, std::ptrdiff_t first, std::ptrdiff_t last, Use& use) {
    if (last - first < n) return false;
    std::ptrdiff_t x = first;
    for (; x + n <= last; x += n) use(V(), x);
    if (x < last) use(V(), last - n);
    return true;
}
// The same with a pixel for each byte of the widest vectors that fit. Returns how far it came: `last` or `first`.
template <class Use>
[[gnu::always_inline]] inline std::ptrdiff_t forVectors(std::ptrdiff_t first, std::ptrdiff_t last, Use use) {
#if VEKVC_VECTOR256
    if (coverBy<u8x32>(32, first, last, use)) return last;
#endif
    return coverBy<u8x16>(16, first, last, use) ? last : first;
}

// Halves of a vector from and to two places.
template <class V>
[[gnu::always_inline]] inline V loadHalves(const void* low, const void* high) {
    if constexpr (is128<V>) return loadPair8<V>(low, high);
#if VEKVC_VECTOR256
    else
        return loadPair16<V>(low, high);
#endif
}
template <class V>
[[gnu::always_inline]] inline void storeHalves(void* low, void* high, V v) {
    if constexpr (is128<V>) storePair8(low, high, v);
#if VEKVC_VECTOR256
    else
        storePair16(low, high, v);
#endif
}
// What operations on each 128 bits leave as quarters 0 2 1 3, in order; and the other way round.
template <class V>
[[gnu::always_inline]] inline V inOrder(V v) {
    if constexpr (is128<V>) return v;
#if VEKVC_VECTOR256
    else
        return swapMiddleQuarters(v);
#endif
}
// Two vectors of which each 128 bits belong together: low 0, high 0, low 1, high 1, in order to memory.
template <class V>
[[gnu::always_inline]] inline void storeInOrder(Vek8u* to, V low, V high) {
    if constexpr (is128<V>) {
        store(to, low);
        store(to + 16, high);
    }
#if VEKVC_VECTOR256
    else {
        storePair16(to, to + 32, low);
        storePair16(to + 16, to + 48, high);
    }
#endif
}

// The even, and the odd bytes of two vectors.
template <class V>
[[gnu::always_inline]] inline V evenBytes(V a, V b) {
    using W = Words<V>;
    const W low = constant<W, 255>();
    return inOrder(narrowU8(as<W>(a) & low, as<W>(b) & low));
}
template <class V>
[[gnu::always_inline]] inline V oddBytes(V a, V b) {
    using U = UnsignedWords<V>;
    return inOrder(narrowU8(as<Words<V>>(as<U>(a) >> 8), as<Words<V>>(as<U>(b) >> 8)));
}

// The even bytes in the low half, the odd ones in the high half; and back.
template <class V>
[[gnu::always_inline]] inline V shuffleEach16(V v, u8x16 order) {
    if constexpr (is128<V>) return shuffleBytes(v, order);
#if VEKVC_VECTOR256
    else
        return shuffleBytes(v, join(order, order));
#endif
}
template <class V>
[[gnu::always_inline]] inline V separatePairs(V v) {
    return inOrder(shuffleEach16(v, lanes<u8x16>(0, 2, 4, 6, 8, 10, 12, 14, 1, 3, 5, 7, 9, 11, 13, 15)));
}
template <class V>
[[gnu::always_inline]] inline V interleaveHalves(V v) {
    return shuffleEach16(inOrder(v), lanes<u8x16>(0, 8, 1, 9, 2, 10, 3, 11, 4, 12, 5, 13, 6, 14, 7, 15));
}

// Two vectors of CbYCrY apart: luma, and chroma as fours of Cb and of Cr in turn, which inHalves() puts in order. By
// whole bytes this takes fewer instructions than by masks and shifts.
template <class V>
struct LumaAndChroma {
    V luma, chroma;
};
template <class V>
[[gnu::always_inline]] inline LumaAndChroma<V> lumaAndChroma(V a, V b) {
    const u8x16 order = lanes<u8x16>(1, 3, 5, 7, 9, 11, 13, 15, 0, 4, 8, 12, 2, 6, 10, 14);
    const V x = shuffleEach16(a, order), y = shuffleEach16(b, order);
    return {inOrder(joinLow(x, y)), joinHigh(x, y)};
}
template <class V>
[[gnu::always_inline]] inline V inHalves(V chroma) {
    if constexpr (is128<V>) return shuffle32<0, 2, 1, 3>(chroma);
#if VEKVC_VECTOR256
    else
        return shuffle32<0, 4, 2, 6, 1, 5, 3, 7>(chroma);
#endif
}

// Two 16-bit values in turn.
template <class W>
[[gnu::always_inline]] inline W splatPair(int even, int odd) {
    const auto bits = (static_cast<std::uint32_t>(odd) << 16) | (static_cast<std::uint32_t>(even) & 0xffff);
    return as<W>(splat<Vec<std::uint32_t, W::kBytes / 4>>(bits));
}

// (w a + (2^shift - w) b + 2^(shift - 1)) >> shift of bytes; shift is at most 6.
template <int shift, class V>
[[gnu::always_inline]] inline V mixed(V a, V b, int w) {
    const auto weights = as<Vec<std::int8_t, V::kBytes>>(splat<Words<V>>(w | ((1 << shift) - w) << 8));
    const Words<V> half = splat<Words<V>>(1 << (shift - 1));
    const auto of = [&](V pairs) { return (mulAddPairs(pairs, weights) + half) >> shift; };
    return narrowU8(of(interleaveLow(a, b)), of(interleaveHigh(a, b)));
}

}  // namespace vekvc::simd

#endif
