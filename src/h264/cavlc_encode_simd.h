// The CAVLC analysis of all levels at once: bit j of a mask stands for the j-th level of the walk, so that TotalCoeff
// is a count of bits, trailing ones are the bits below the first other level, and runs are distances between bits. It
// needs the gathering of bits that comes with AVX2 processors; without it the definition's walk is the fastest.
#ifndef VEKVC_H264_CAVLC_ENCODE_SIMD_H
#define VEKVC_H264_CAVLC_ENCODE_SIMD_H

#include <array>
#include <bit>

#include "core/simd.h"
#include "h264/cavlc_encode_plain.h"

namespace vekvc::simd {

#if VEKVC_BIT_GATHER

// 16 levels limited to 8 bits: what is 0, +1, -1 or negative stays so.
[[gnu::always_inline]] inline i8x16 limitedLevels(const Vek16s* p) {
    return narrowI8(load<i16x8>(p), load<i16x8>(p + 8));
}
[[gnu::always_inline]] inline i8x16 limitedLevels(const Vek32s* p) {
    return narrowI8(narrowI16(load<i32x4>(p), load<i32x4>(p + 4)), narrowI16(load<i32x4>(p + 8), load<i32x4>(p + 12)));
}

// Do the levels lie within 8 bits? In 128 bits, so that the exports need no aligned stack.
[[gnu::always_inline]] inline bool areLimited(const Vek16s* p, i8x16 levels) {
    return allZero((widenLow(levels) ^ load<i16x8>(p)) | (widenHigh(levels) ^ load<i16x8>(p + 8)));
}
[[gnu::always_inline]] inline bool areLimited(const Vek32s* p, i8x16 levels) {
    const i16x16 words = widen(levels);
    return allZero((widen(lowHalf(words)) ^ load<i32x8>(p)) | (widen(highHalf(words)) ^ load<i32x8>(p + 8)));
}

// One of two values, without the branch that g++ would make of it.
template <class T>
[[gnu::always_inline]] inline T chosen(bool condition, T yes, T no) {
    const T a = opaque(yes), b = opaque(no);
    return condition ? a : b;
}
// Stores the first n (0 to 7) of the entries of `size` bytes held in `low`, then `high`: each power of two that n holds
// is one store, and those that it does not hold go to a spare place.
template <int size>
[[gnu::always_inline]] inline void storeUpTo7(void* p, u64x2 low, u64x2 high, std::size_t n) {
    std::byte spare[16];
    auto* to = static_cast<std::byte*>(p);
    const auto place = [&](std::size_t count) {
        std::byte* const at = chosen<std::byte*>((n & count) != 0, to, spare);
        to += (n & count) * size;
        return at;
    };
    if constexpr (size == 4) {
        storeBytes<16>(place(4), low);
        low = (n & 4) != 0 ? high : low;
        storeBytes<8>(place(2), low);
        storeBytes<4>(place(1), (n & 2) != 0 ? bytesRight<8>(low) : low);
    } else if constexpr (size == 2) {
        storeBytes<8>(place(4), low);
        const auto rest = chosen<std::uint64_t>((n & 4) != 0, lane<1>(low), lane<0>(low));
        store<Vek32u>(place(2), static_cast<Vek32u>(rest));
        store<Vek16u>(place(1), static_cast<Vek16u>(rest >> (n & 2) * 16));
    } else {
        storeBytes<4>(place(4), low);
        const std::uint64_t rest = lane<0>(low) >> (n & 4) * 8;
        store<Vek16u>(place(2), static_cast<Vek16u>(rest));
        store<Vek8u>(place(1), static_cast<Vek8u>(rest >> (n & 2) * 8));
    }
}

// Stores the first n levels, n up to 7.
[[gnu::always_inline]] inline void storeFew(Vek16s* p, i8x16 levels, std::size_t n) {
    const auto words = as<u64x2>(widenLow(levels));
    storeUpTo7<2>(p, words, words, n);
}
[[gnu::always_inline]] inline void storeFew(Vek32s* p, i8x16 levels, std::size_t n) {
    const i16x8 words = widenLow(levels);
    storeUpTo7<4>(p, as<u64x2>(widenLow(words)), as<u64x2>(widenHigh(words)), n);
}

// The same for any number of levels and runs; apart from the exports, like the definition's walk: they would save
// registers for it.
template <class T>
[[gnu::noinline]] void storeMany(T* pLevels, Vek8u* pRuns, u8x16 runs, std::size_t nRuns, i8x16 levels,
                                 std::size_t nLevels) {
    const u8x16 paddedRuns[2] = {runs, zero<u8x16>()};
    copyShort<15, 1>(pRuns, paddedRuns, nRuns);
    const i16x8 low = widenLow(levels), high = widenHigh(levels);
    if constexpr (sizeof(T) == 2) {
        const i16x8 padded[3] = {low, high, zero<i16x8>()};
        copyShort<32, 2>(pLevels, padded, 2 * nLevels);
    } else {
        const i32x4 padded[5] = {widenLow(low), widenHigh(low), widenLow(high), widenHigh(high), zero<i32x4>()};
        copyShort<64, 4>(pLevels, padded, 4 * nLevels);
    }
}
template <class T>
[[gnu::noinline, gnu::cold]] void walkCavlc4x4(const T* pSrc, int first, int last, const Vek32s* pScan,
                                               Vek8u* pTrailingOnes, Vek8u* pTrailingOneSigns, Vek8u* pTotalCoeff,
                                               Vek8u* pTotalZeros, T* pLevels, Vek8u* pRuns) {
    plain::analyzeCavlc4x4<T>(pSrc, first, last, pScan,
                              {pTrailingOnes, pTrailingOneSigns, pTotalCoeff, pTotalZeros, pLevels, pRuns});
}

// TrailingOnes bits from as many signs, of which the lowest bit, that of the first coefficient, becomes the highest.
inline constexpr auto kTrailingOneSigns = [] {
    std::array<std::array<Vek8u, 8>, 4> table = {};
    for (Vek32u ones = 0; ones <= 3; ++ones)
        for (Vek32u signs = 0; signs < 8; ++signs) {
            Vek32u reversed = 0;
            for (Vek32u i = 0; i < ones; ++i) reversed = reversed << 1 | (signs >> i & 1);
            table[ones][signs] = static_cast<Vek8u>(reversed);
        }
    return table;
}();

// The counts of a walk, from masks whose bit j stands for its j-th level: is it in the walk at all, a coefficient, one
// that is +-1, a negative one?
struct CavlcCounts {
    Vek32u total, ones, signs, zeros;

    [[gnu::always_inline]] CavlcCounts(int first, Vek32u inWalk, Vek32u coefficients, Vek32u areOnes, Vek32u negative)
        : total(static_cast<Vek32u>(std::popcount(coefficients))) {
        // The first coefficients that are +-1, at most three.
        ones = static_cast<Vek32u>(std::countr_zero(~gatherBits(areOnes, coefficients) | 8));
        signs = kTrailingOneSigns[ones][gatherBits(negative, coefficients) & 7];
        // Zeros in front of the first coefficient do not count; without a coefficient all do.
        const Vek32u top = chosen(coefficients != 0, coefficients, inWalk);
        zeros = 16 - static_cast<Vek32u>(first) - static_cast<Vek32u>(std::countr_zero(top)) - total;
    }
};

inline constexpr Vek8u kByteNumbers[19] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};

template <class T>
[[gnu::always_inline]] inline void analyzeCavlc4x4(const T* pSrc, int first, int last, const Vek32s* pScan,
                                                   const CavlcElements<T>& out) {
    const i8x16 raster = limitedLevels(pSrc);
    if (!areLimited(pSrc, raster)) [[unlikely]]
        return walkCavlc4x4(pSrc, first, last, pScan, out.pTrailingOnes, out.pTrailingOneSigns, out.pTotalCoeff,
                            out.pTotalZeros, out.pLevels, out.pRuns);

    // Raster positions and levels from scan index 15 down; the walk is entries 15 - last to 15 - first.
    const i16x8 low = narrowI16(load<i32x4>(pScan), load<i32x4>(pScan + 4));
    const i16x8 high = narrowI16(load<i32x4>(pScan + 8), load<i32x4>(pScan + 12));
    const u8x16 walk =
        shuffleBytes(narrowU8(low, high), lanes<u8x16>(15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0));
    const i8x16 level = shuffleBytes(raster, walk);
    const Vek32u inWalk = (0xFFFFu >> first) & (0xFFFFu << (15 - last));
    const Vek32u coefficients = ~byteMask(level == zero<i8x16>()) & inWalk;
    const CavlcCounts n(first, inWalk, coefficients, byteMask(abs(level) == constant<i8x16, 1>()), byteMask(level));
    *out.pTrailingOnes = static_cast<Vek8u>(n.ones);
    *out.pTrailingOneSigns = static_cast<Vek8u>(n.signs);
    *out.pTotalCoeff = static_cast<Vek8u>(n.total);
    *out.pTotalZeros = static_cast<Vek8u>(n.zeros);

    // Where the coefficients stand in the walk: four-bit numbers moved together, then spread to bytes.
    const std::uint64_t nibbles = scatterBits(coefficients, 0x1111111111111111) * 15;
    const std::uint64_t places = gatherBits(0xFEDCBA9876543210, nibbles);
    const auto pairs = loadBytes<u16x8, 8>(&places);
    const auto mask = constant<u8x16, 0x0F>();
    const u8x16 place = interleaveLow(as<u8x16>(pairs) & mask, as<u8x16>(pairs >> 4) & mask);
    const u8x16 runs = bytesRight<1>(place) - place - constant<u8x16, 1>();
    // The trailing ones are left out.
    const i8x16 levels = shuffleBytes(shuffleBytes(level, place), load<u8x16>(&kByteNumbers[n.ones]));
    const std::size_t nRuns = n.total - (n.total != 0 ? 1 : 0), nLevels = n.total - n.ones;
    if (n.total < 8) [[likely]] {
        storeUpTo7<1>(out.pRuns, as<u64x2>(runs), as<u64x2>(runs), nRuns);
        storeFew(out.pLevels, levels, nLevels);
    } else {
        storeMany<T>(out.pLevels, out.pRuns, runs, nRuns, levels, nLevels);
    }
}

#else
// Without the gathering of bits the walk over the levels stays.
using plain::analyzeCavlc4x4;
#endif

// The few levels of a chroma DC block: the definition's walk.
using plain::analyzeCavlcChromaDc;

}  // namespace vekvc::simd

#endif
