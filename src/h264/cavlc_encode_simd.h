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

// 16 levels, split into their low and their high bytes; raster order.
struct LevelBytes {
    u8x16 low, high;
};

inline LevelBytes splitLevels(const Vek16s* p) {
    const i16x8 level0 = load<i16x8>(p), level1 = load<i16x8>(p + 8);
    const auto mask = splat<i16x8>(0xFF);
    return {narrowU8(level0 & mask, level1 & mask), as<u8x16>(narrowI8(level0 >> 8, level1 >> 8))};
}

// A walk of `length` levels that begins at entry `first` of walk, which names raster positions from the highest
// frequency down.
inline void analyzeWalk(const Vek16s* pSrc, u8x16 walk, int first, int length, const CavlcElements<Vek16s>& out) {
    const LevelBytes levels = splitLevels(pSrc);
    const u8x16 any = levels.low | levels.high;
    // +1 is 00 01, -1 is FF FF: the high byte is the sign, the low byte the sign with its last bit set.
    const u8x16 sign = as<u8x16>(as<i8x16>(levels.high) < zero<i8x16>());
    const u8x16 one = (levels.high == sign) & (levels.low == (sign | splat<u8x16>(1)));

    const Vek32u inWalk = ((1u << length) - 1) << first;
    const Vek32u coefficients = ~byteMask(shuffleBytes(any, walk) == zero<u8x16>()) & inWalk;
    const Vek32u others = coefficients & ~byteMask(shuffleBytes(one, walk));
    const Vek32u negative = byteMask(shuffleBytes(sign, walk));
    const int total = std::popcount(coefficients);
    const int onesInFront = std::popcount(coefficients & (others - 1) & ~others);
    const int ones = onesInFront < 3 ? onesInFront : 3;
    // The sign of the first coefficient is the most significant of the TrailingOnes bits: three bits reversed, the
    // lower ones dropped.
    constexpr Vek32u kReversed = 0b111'011'101'001'110'010'100'000;
    const auto signs = static_cast<int>(gatherBits(negative, coefficients)) & 7;
    const int above = std::countr_zero(coefficients | 1u << (first + length)) - first;
    *out.pTrailingOnes = static_cast<Vek8u>(ones);
    *out.pTrailingOneSigns = static_cast<Vek8u>((kReversed >> (3 * signs) & 7) >> (3 - ones));
    *out.pTotalCoeff = static_cast<Vek8u>(total);
    *out.pTotalZeros = static_cast<Vek8u>(total == 0 ? length : length - above - total);

    // Where the coefficients stand in the walk: four-bit numbers moved together, then spread to bytes.
    const std::uint64_t nibbles = scatterBits(coefficients, 0x1111111111111111) * 15;
    const std::uint64_t places = gatherBits(0xFEDCBA9876543210, nibbles);
    const auto bytes = [](std::uint64_t x) {
        const auto v = loadBytes<u16x8, 8>(&x);
        const auto mask = splat<u8x16>(0x0F);
        return interleaveLow(as<u8x16>(v) & mask, as<u8x16>(v >> 4) & mask);
    };
    const u8x16 place = bytes(places);
    u8x16 runs[2] = {bytesRight<1>(place) - place - splat<u8x16>(1), zero<u8x16>()};
    copyShort<15, 1>(out.pRuns, runs, static_cast<std::size_t>(total - (total > 0 ? 1 : 0)));
    const u8x16 position = shuffleBytes(walk, bytes(places >> (4 * ones)));  // of the levels behind the trailing ones
    const u8x16 low = shuffleBytes(levels.low, position), high = shuffleBytes(levels.high, position);
    u8x16 words[3] = {interleaveLow(low, high), interleaveHigh(low, high), zero<u8x16>()};
    copyShort<32, 2>(out.pLevels, words, 2 * static_cast<std::size_t>(total - ones));
}

inline void analyzeCavlc4x4(const Vek16s* pSrc, int first, int last, const Vek32s* pScan,
                            const CavlcElements<Vek16s>& out) {
    const i16x8 low = narrowI16(load<i32x4>(pScan), load<i32x4>(pScan + 4));
    const i16x8 high = narrowI16(load<i32x4>(pScan + 8), load<i32x4>(pScan + 12));
    const u8x16 walk =
        shuffleBytes(narrowU8(low, high), lanes<u8x16>(15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0));
    analyzeWalk(pSrc, walk, 15 - last, last - first + 1, out);
}

#endif

// 32-bit levels and the few of a chroma DC block: the definition's walk.
using plain::analyzeCavlc4x4;
using plain::analyzeCavlcChromaDc;

}  // namespace vekvc::simd

#endif
