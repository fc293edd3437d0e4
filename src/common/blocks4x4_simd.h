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

#if VEKVC_VECTOR256

// The four rows of blocks, as sum(row) adds up the rows of samples row and row + 8: of the first and third row of
// blocks, then of the second and fourth.
template <class PairSums>
[[gnu::always_inline]] inline void sumMacroblock(void* pSums, PairSums pairs) {
    const auto fourRows = [&](int y) { return (pairs(y) + pairs(y + 1)) + (pairs(y + 2) + pairs(y + 3)); };
    store(pSums, sumsOfPairs(fourRows(0), fourRows(4)));
}
inline void sadBlocks4x4(Block<Vek8u> s, Block<Vek8u> ref, Vek16u* pSad) {
    sumMacroblock(pSad, [&](int y) {
        const auto rows = [&](Block<Vek8u> b) { return loadPair16<u8x32>(b.at(0, y), b.at(0, y + 8)); };
        return pairSums(absDiff(rows(s), rows(ref)));
    });
}

#else

// The four rows of blocks, one after the other.
template <class PairSums>
[[gnu::always_inline]] inline void sumMacroblock(void* pSums, PairSums pairs) {
    const auto fourRows = [&](int y) { return (pairs(y) + pairs(y + 1)) + (pairs(y + 2) + pairs(y + 3)); };
    for (int y = 0; y < 16; y += 8) store(static_cast<Vek16s*>(pSums) + y, sumsOfPairs(fourRows(y), fourRows(y + 4)));
}
inline void sadBlocks4x4(Block<Vek8u> s, Block<Vek8u> ref, Vek16u* pSad) {
    sumMacroblock(pSad, [&](int y) { return pairSums(absDiff(load<u8x16>(s.at(0, y)), load<u8x16>(ref.at(0, y)))); });
}

#endif

template <int W, int H>
void sumsDiffBlocks4x4(Block<Vek8u> s, Block<Vek8u> ref, Vek16s* pSums) {
    if constexpr (W == 16) {
        sumMacroblock(pSums, [&](int y) {
#if VEKVC_VECTOR256
            const auto rows = [&](Block<Vek8u> b) { return loadPair16<u8x32>(b.at(0, y), b.at(0, y + 8)); };
#else
            const auto rows = [&](Block<Vek8u> b) { return load<u8x16>(b.at(0, y)); };
#endif
            return pairSums(rows(s)) - pairSums(rows(ref));
        });
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
