// The other half of a CAVLC coder: the standard's tables as decode tables, and a writer of residual_block_cavlc().
#ifndef VEKVC_TESTS_CAVLC_H
#define VEKVC_TESTS_CAVLC_H

#include <bit>
#include <cstdlib>

#include "bit_writer.h"
#include "h264_vlc_tables.h"
#include "vekvc.h"

namespace vekvc_test {

// Decode tables of a set of code lists, as arrays of pointers for the decoders. They live as long as the program.
struct CavlcDecodeTables {
    const Vek32s* coeffToken[5];
    const Vek32s* totalZeros4x4[16] = {};
    const Vek32s* totalZeros2x2[4] = {};
    const Vek32s* totalZeros2x4[8] = {};
    const Vek32s* runBefore[15] = {};

    CavlcDecodeTables() {
        using namespace vekvc_tables;
        for (std::size_t i = 0; i < 5; ++i) coeffToken[i] = build(kCoeffTokenLists[i]);
        for (std::size_t i = 1; i < 16; ++i) totalZeros4x4[i] = build(kTotalZerosLists4x4[i - 1]);
        for (std::size_t i = 1; i < 4; ++i) totalZeros2x2[i] = build(kTotalZerosLists2x2[i - 1]);
        for (std::size_t i = 1; i < 8; ++i) totalZeros2x4[i] = build(kTotalZerosLists2x4[i - 1]);
        for (std::size_t i = 1; i < 15; ++i) runBefore[i] = build(kRunBeforeLists[(i < 7 ? i : 7) - 1]);
    }

    static const Vek32s* build(const vekvc_tables::CavlcList& list) {
        VekVlcTable_32s* table = nullptr;
        if (vekiHuffmanTableInitAlloc_32s(list.data(), &table) != vekStsOk) std::abort();
        return table;
    }
};

inline CavlcDecodeTables& cavlcTables() {
    static CavlcDecodeTables tables;
    return tables;
}

inline constexpr Vek32s kZigzag4x4[16] = {0, 1, 4, 8, 5, 2, 3, 6, 9, 12, 13, 10, 7, 11, 14, 15};

enum class CavlcBlock { k4x4, k2x2, k2x4 };

// The syntax elements of one block.
struct CavlcSyntax {
    Vek8u trailingOnes = 0, signs = 0, totalCoeff = 0, totalZeros = 0;
    Vek32s levels[16] = {};
    Vek8u runs[16] = {};
};

// level_prefix and level_suffix for a levelCode (9.2.2.1), escapes of any length included.
inline void putLevelCode(BitWriter& out, Vek32u levelCode, int suffixLength) {
    const Vek32u escape = suffixLength == 0 ? 30 : 15u << suffixLength;
    if (suffixLength == 0 && levelCode < 14) {
        out.put(1, static_cast<int>(levelCode) + 1);
    } else if (suffixLength == 0 && levelCode < 30) {
        out.put(1, 15);
        out.put(levelCode - 14, 4);
    } else if (levelCode < escape) {
        out.put(1, static_cast<int>(levelCode >> suffixLength) + 1);
        out.put(levelCode & ((1u << suffixLength) - 1), suffixLength);
    } else {
        const Vek32u rest = levelCode - escape + 4096;
        const int suffixSize = static_cast<int>(std::bit_width(rest)) - 1;
        out.put(1, suffixSize + 4);
        out.put(rest & ((1u << suffixSize) - 1), suffixSize);
    }
}

// suffixLength for the level that follows one of this size (9.2.2.1).
inline int suffixLengthBehind(int suffixLength, Vek32s size) {
    if (suffixLength == 0) suffixLength = 1;
    return size > 3 << (suffixLength - 1) && suffixLength < 6 ? suffixLength + 1 : suffixLength;
}

// Writes a block of at most maxNumCoeff coefficients; nC selects the column of coeff_token for 4x4 blocks.
inline void putCavlcBlock(BitWriter& out, const CavlcSyntax& s, CavlcBlock kind, int nC, int maxNumCoeff) {
    using namespace vekvc_tables;
    const int total = s.totalCoeff, ones = s.trailingOnes;
    if (kind == CavlcBlock::k4x4 && nC >= 8) {
        out.put(total == 0 ? 3u : static_cast<unsigned>((total - 1) << 2 | ones), 6);
    } else {
        const int column = kind == CavlcBlock::k2x2 ? 3 : kind == CavlcBlock::k2x4 ? 4 : nC < 2 ? 0 : nC < 4 ? 1 : 2;
        out.put(kCoeffTokenCodes[column][total][ones]);
    }
    out.put(s.signs, ones);
    int suffixLength = total > 10 && ones < 3 ? 1 : 0;
    for (int i = 0; i < total - ones; ++i) {
        const Vek32s level = s.levels[i];
        const auto size = static_cast<Vek32u>(std::abs(level));
        putLevelCode(out, 2 * size - (level > 0 ? 2 : 1) - (i == 0 && ones < 3 ? 2 : 0), suffixLength);
        suffixLength = suffixLengthBehind(suffixLength, static_cast<Vek32s>(size));
    }
    if (total > 0 && total < maxNumCoeff) {
        out.put(kind == CavlcBlock::k2x2   ? kTotalZerosCodes2x2[total - 1][s.totalZeros]
                : kind == CavlcBlock::k2x4 ? kTotalZerosCodes2x4[total - 1][s.totalZeros]
                                           : kTotalZerosCodes4x4[total - 1][s.totalZeros]);
    }
    int zerosLeft = s.totalZeros;
    for (int i = 0; i < total - 1 && zerosLeft > 0; ++i) {
        out.put(kRunBeforeCodes[zerosLeft < 7 ? zerosLeft - 1 : 6][s.runs[i]]);
        zerosLeft -= s.runs[i];
    }
}

}  // namespace vekvc_test

#endif
