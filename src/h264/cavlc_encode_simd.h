// The CAVLC analysis of all levels at once: bit j of a mask stands for the j-th level of the walk, so that TotalCoeff
// is a count of bits, trailing ones are the bits below the first other level, and runs are distances between bits. It
// needs the gathering of bits that comes with AVX2 processors; without it the definition's walk is the fastest.
#ifndef VEKVC_H264_CAVLC_ENCODE_SIMD_H
#define VEKVC_H264_CAVLC_ENCODE_SIMD_H

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

// Do the levels lie within 8 bits?
[[gnu::always_inline]] inline bool areLimited(const Vek16s* p, i8x16 levels) {
    return allZero(widen(levels) ^ load<i16x16>(p));
}
[[gnu::always_inline]] inline bool areLimited(const Vek32s* p, i8x16 levels) {
    const i16x16 words = widen(levels);
    return allZero((widen(lowHalf(words)) ^ load<i32x8>(p)) | (widen(highHalf(words)) ^ load<i32x8>(p + 8)));
}

// Stores the first n (0 to 7) of the entries of `size` bytes held in `low`, then `high`: each power of two that n holds
// is one store, and those that it does not hold go to a spare place.
template <int size>
[[gnu::always_inline]] inline void storeUpTo7(void* p, u64x2 low, u64x2 high, int n) {
    alignas(16) std::byte spare[16];
    auto* to = static_cast<std::byte*>(p);
    const auto place = [&](int count) {
        std::byte* const at = (n & count) != 0 ? to : spare;
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
        const std::uint64_t rest = (n & 4) != 0 ? lane<1>(low) : lane<0>(low);
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
[[gnu::always_inline]] inline void storeFew(Vek16s* p, i8x16 levels, int n) {
    const auto words = as<u64x2>(widenLow(levels));
    storeUpTo7<2>(p, words, words, n);
}
[[gnu::always_inline]] inline void storeFew(Vek32s* p, i8x16 levels, int n) {
    const i16x8 words = widenLow(levels);
    storeUpTo7<4>(p, as<u64x2>(widenLow(words)), as<u64x2>(widenHigh(words)), n);
}

// The same for any number of levels and runs.
template <class T>
[[gnu::always_inline]] inline void storeMany(T* pLevels, Vek8u* pRuns, u8x16 runs, int nRuns, i8x16 levels,
                                             int nLevels) {
    const u8x16 paddedRuns[2] = {runs, zero<u8x16>()};
    copyShort<15, 1>(pRuns, paddedRuns, static_cast<std::size_t>(nRuns));
    const i16x8 low = widenLow(levels), high = widenHigh(levels);
    if constexpr (sizeof(T) == 2) {
        const i16x8 padded[3] = {low, high, zero<i16x8>()};
        copyShort<32, 2>(pLevels, padded, 2 * static_cast<std::size_t>(nLevels));
    } else {
        const i32x4 padded[5] = {widenLow(low), widenHigh(low), widenLow(high), widenHigh(high), zero<i32x4>()};
        copyShort<64, 4>(pLevels, padded, 4 * static_cast<std::size_t>(nLevels));
    }
}

// The counts of a walk, from masks whose bit j stands for its j-th level: is it in the walk at all, a coefficient, one
// that is not +-1, a negative one?
struct CavlcCounts {
    int total, ones, signs, zeros;

    [[gnu::always_inline]] CavlcCounts(int first, int last, Vek32u inWalk, Vek32u coefficients, Vek32u others,
                                       Vek32u negative)
        : total(std::popcount(coefficients)) {
        const int onesInFront = std::popcount(coefficients & (others - 1) & ~others);
        ones = onesInFront < 3 ? onesInFront : 3;
        // The sign of the first coefficient is the most significant of the TrailingOnes bits: three bits reversed, the
        // lower ones dropped.
        constexpr Vek32u kReversed = 0b111'011'101'001'110'010'100'000;
        const auto firstSigns = static_cast<int>(gatherBits(negative, coefficients)) & 7;
        signs = static_cast<int>((kReversed >> (3 * firstSigns) & 7) >> (3 - ones));
        // Zeros in front of the first coefficient do not count; without a coefficient all do.
        const int above = std::popcount((coefficients - 1) & ~coefficients & inWalk) & (-total >> 31);
        zeros = last - first + 1 - above - total;
    }
};

template <class T>
[[gnu::always_inline]] inline void analyzeCavlc4x4(const T* pSrc, int first, int last, const Vek32s* pScan,
                                                   const CavlcElements<T>& out) {
    const i8x16 raster = limitedLevels(pSrc);
    if (!areLimited(pSrc, raster)) [[unlikely]]
        return plain::analyzeCavlc4x4(pSrc, first, last, pScan, out);

    // Raster positions and levels from scan index 15 down; the walk is entries 15 - last to 15 - first.
    const i16x8 low = narrowI16(load<i32x4>(pScan), load<i32x4>(pScan + 4));
    const i16x8 high = narrowI16(load<i32x4>(pScan + 8), load<i32x4>(pScan + 12));
    const u8x16 walk =
        shuffleBytes(narrowU8(low, high), lanes<u8x16>(15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0));
    const i8x16 level = shuffleBytes(raster, walk);
    const Vek32u inWalk = (0xFFFFu >> first) & (0xFFFFu << (15 - last));
    const Vek32u coefficients = ~byteMask(level == zero<i8x16>()) & inWalk;
    const Vek32u others = coefficients & ~byteMask(abs(level) == constant<i8x16, 1>());
    const CavlcCounts n(first, last, inWalk, coefficients, others, byteMask(level));
    const int total = n.total, ones = n.ones;
    *out.pTrailingOnes = static_cast<Vek8u>(ones);
    *out.pTrailingOneSigns = static_cast<Vek8u>(n.signs);
    *out.pTotalCoeff = static_cast<Vek8u>(total);
    *out.pTotalZeros = static_cast<Vek8u>(n.zeros);

    // Where the coefficients stand in the walk: four-bit numbers moved together, then spread to bytes.
    const std::uint64_t nibbles = scatterBits(coefficients, 0x1111111111111111) * 15;
    const std::uint64_t places = gatherBits(0xFEDCBA9876543210, nibbles);
    const auto bytes = [](std::uint64_t x) {
        const auto v = loadBytes<u16x8, 8>(&x);
        const auto mask = constant<u8x16, 0x0F>();
        return interleaveLow(as<u8x16>(v) & mask, as<u8x16>(v >> 4) & mask);
    };
    const u8x16 place = bytes(places);
    const u8x16 runs = bytesRight<1>(place) - place - constant<u8x16, 1>();
    const i8x16 levels = shuffleBytes(level, bytes(places >> (4 * ones)));
    const int nRuns = total + (-total >> 31);
    if (total < 8) [[likely]] {
        storeUpTo7<1>(out.pRuns, as<u64x2>(runs), as<u64x2>(runs), nRuns);
        storeFew(out.pLevels, levels, total - ones);
    } else {
        storeMany<T>(out.pLevels, out.pRuns, runs, nRuns, levels, total - ones);
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
