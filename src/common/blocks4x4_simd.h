// One sum per 4x4 block: absolute differences and differences. The fast form of blocks4x4_plain.h.
#ifndef VEKVC_COMMON_BLOCKS4X4_SIMD_H
#define VEKVC_COMMON_BLOCKS4X4_SIMD_H

#include "common/blocks4x4_plain.h"
#include "core/simd.h"

namespace vekvc::simd {

// Neighbouring samples added in pairs.
template <class V>
[[gnu::always_inline]] inline auto pairSums(V samples) {
    return mulAddPairs(samples, constant<Vec<std::int8_t, V::kBytes>, 1>());
}

// Pair sums of four (of each half: two) blocks in a row, of two such rows: the sums of the blocks.
template <class V>
[[gnu::always_inline]] inline V sumsOfPairs(V a, V b) {
    const V ones = constant<V, 1>();
    return narrowI16(mulAddPairs(a, ones), mulAddPairs(b, ones));
}

// A row of a macroblock; with 256 bits, the row 8 below it in the high half.
#if VEKVC_VECTOR256
inline u8x32 macroblockRow(Block<Vek8u> b, int y) { return loadPair16<u8x32>(b.at(0, y), b.at(0, y + 8)); }
#else
inline u8x16 macroblockRow(Block<Vek8u> b, int y) { return load<u8x16>(b.at(0, y)); }
#endif

// The 16 sums of a macroblock; pairs(y) are the pair sums of its row y.
template <class Pairs>
[[gnu::always_inline]] inline void sumMacroblock(void* pSums, Pairs pairs) {
    constexpr int kRows = VEKVC_VECTOR256 ? 16 : 8;  // that are done at once
    const auto fourRows = [&](int y) { return (pairs(y) + pairs(y + 1)) + (pairs(y + 2) + pairs(y + 3)); };
    for (int y = 0; y < 16; y += kRows)
        store(static_cast<Vek16s*>(pSums) + y, sumsOfPairs(fourRows(y), fourRows(y + 4)));
}

inline void sadBlocks4x4(Block<Vek8u> s, Block<Vek8u> ref, Vek16u* pSad) {
    sumMacroblock(pSad, [&](int y) { return pairSums(absDiff(macroblockRow(s, y), macroblockRow(ref, y))); });
}

template <int W, int H>
void sumsDiffBlocks4x4(Block<Vek8u> s, Block<Vek8u> ref, Vek16s* pSums) {
    if constexpr (W == 16) {
        sumMacroblock(pSums, [&](int y) { return pairSums(macroblockRow(s, y)) - pairSums(macroblockRow(ref, y)); });
    } else {
        static_assert(W == 8 && H == 8);
        // Rows y and y + 4 in one vector: the blocks in raster order.
        const auto pairs = [&](int y) {
            const auto rows = [&](Block<Vek8u> b) { return loadPair8<u8x16>(b.at(0, y), b.at(0, y + 4)); };
            return pairSums(rows(s)) - pairSums(rows(ref));
        };
        const i16x8 sums = (pairs(0) + pairs(1)) + (pairs(2) + pairs(3));
        storeBytes<8>(pSums, sumsOfPairs(sums, sums));
    }
}

}  // namespace vekvc::simd

#endif
