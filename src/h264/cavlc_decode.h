// What the two forms of CAVLC block decoding share: operands, block layouts, the reading of table values.
#ifndef VEKVC_H264_CAVLC_DECODE_H
#define VEKVC_H264_CAVLC_DECODE_H

#include <type_traits>

#include "vlc/look_up.h"

namespace vekvc {

// The longest level_prefix whose suffix (level_prefix - 3 bits) a 32-bit read can take.
inline constexpr int kMaxLevelPrefix = 35;

template <class T>
struct CavlcTarget {
    Vek16s* pTotalCoeff;
    T** ppCoeffs;
};

struct CavlcTables {
    const Vek32s* const* ppTotalZeros;  // by TotalCoeff
    const Vek32s* const* ppRunBefore;   // by zerosLeft
};

struct CavlcToken {
    int trailingOnes;
    int totalCoeff;
};

// A coeff_token's value is TrailingOnes + 256 * TotalCoeff.
inline CavlcToken cavlcToken(VlcSlot code) { return {code.value() & 0xFF, code.value() >> 8 & 0xFF}; }

// total_zeros or run_before; unsigned, so that a negative value of a strange table is too large instead.
inline Vek32s cavlcNumber(VlcSlot code) { return static_cast<Vek32s>(static_cast<Vek32u>(code.slot) >> 8); }

// The coeff_token table for nC 0 to 7: 0 and 1, 2 and 3, 4 to 7.
inline int cavlcTokenTable(Vek32s nC) { return nC < 2 ? 0 : nC < 4 ? 1 : 2; }

// Block layouts: the number of elements, the largest TotalCoeff, and the raster position of a parsing index.
// total_zeros is at most maxNumCoeff - TotalCoeff, so an index is at most maxNumCoeff - 1.
struct CavlcLayout4x4 {
    static constexpr int kSize = 16;
    int maxNumCoeff;  // 15: AC block, its indices start at scan index 1
    const Vek32s* pScan;

    Vek32s position(int index) const { return load<Vek32s>(pScan + index + kSize - maxNumCoeff); }
};

struct CavlcLayout2x2 {
    static constexpr int kSize = 4;
    static constexpr int maxNumCoeff = 4;

    Vek32s position(int index) const { return index; }
};

// The 2x2 form of 16 bits takes the codes 1 and 01 of coeff_token (Table 9-5, nC = -1), and total_zeros behind the
// former (Table 9-9 a), as the standard has them, whatever the caller's tables say.
template <class T, class Layout>
inline constexpr bool cavlcKnowsShortCodes = std::is_same_v<T, Vek16s>&& std::is_same_v<Layout, CavlcLayout2x2>;

struct CavlcLayout2x4 {
    static constexpr int kSize = 8;
    static constexpr int maxNumCoeff = 8;

    Vek32s position(int index) const { return kChromaDc422Position[index]; }

    // H.264 8.5.11.1: raster position, two wide and four high, of c0 to c7 for ChromaArrayType 2.
    static constexpr Vek8u kChromaDc422Position[8] = {0, 2, 1, 4, 6, 3, 5, 7};
};

}  // namespace vekvc

#endif
