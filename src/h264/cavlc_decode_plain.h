// CAVLC block decoding as H.264 9.2 describes it, one syntax element after the other.
#ifndef VEKVC_H264_CAVLC_DECODE_PLAIN_H
#define VEKVC_H264_CAVLC_DECODE_PLAIN_H

#include <algorithm>
#include <cstdlib>

#include "core/arith.h"
#include "h264/cavlc_decode.h"
#include "vlc/look_up.h"

namespace vekvc::plain {

// levelVal of one level that is no trailing one, and the suffixLength of the next (9.2.2.1). `first`: it follows fewer
// than three trailing ones and cannot be +1 or -1. False where level_prefix exceeds 35.
inline bool readLevel(WordReader& reader, int& suffixLength, bool first, Vek32s& levelVal) {
    int levelPrefix = 0;
    while (reader.read(1) == 0) {
        if (++levelPrefix > kMaxLevelPrefix) return false;
    }
    const int levelSuffixSize = levelPrefix == 14 && suffixLength == 0 ? 4
                                : levelPrefix >= 15                    ? levelPrefix - 3
                                                                       : suffixLength;
    const std::int64_t levelSuffix = levelSuffixSize > 0 ? reader.read(levelSuffixSize) : 0;
    std::int64_t levelCode = (std::min(15, levelPrefix) << suffixLength) + levelSuffix;
    if (levelPrefix >= 15 && suffixLength == 0) levelCode += 15;
    if (levelPrefix >= 16) levelCode += (std::int64_t{1} << (levelPrefix - 3)) - 4096;
    if (first) levelCode += 2;
    levelCode = static_cast<Vek16u>(levelCode);  // kept to 16 bits, which no level of the standard leaves
    levelVal = static_cast<Vek32s>(levelCode % 2 == 0 ? (levelCode + 2) >> 1 : (-levelCode - 1) >> 1);
    if (suffixLength == 0) suffixLength = 1;
    if (std::abs(levelVal) > 3 << (suffixLength - 1) && suffixLength < 6) ++suffixLength;
    return true;
}

// The block behind its coeff_token: levels (9.2.2), total_zeros, and the runs (9.2.3) by which they get their places.
template <class T, class Layout>
VekStatus decodeBlock(WordReader& reader, const WordReader& entry, CavlcToken token, const CavlcTarget<T>& target,
                      const CavlcTables& tables, const Layout& layout) {
    const auto fail = [&] {
        reader = entry;
        return vekStsErrVlcData;
    };
    const int total = token.totalCoeff;
    const int ones = token.trailingOnes;
    store<Vek16s>(target.pTotalCoeff, static_cast<Vek16s>(total));
    if (total > layout.maxNumCoeff || ones > 3) return fail();

    Vek32s levels[16 + 3] = {};  // trailing ones may exceed TotalCoeff in the 6-bit codes
    for (int i = 0; i < ones; ++i) levels[i] = reader.read(1) != 0 ? -1 : 1;
    if (total == 0) return vekStsOk;
    T* const block = load<T*>(target.ppCoeffs);
    for (int i = 0; i < Layout::kSize; ++i) store<T>(block + i, 0);

    int suffixLength = total > 10 && ones < 3 ? 1 : 0;
    for (int i = ones; i < total; ++i)
        if (!readLevel(reader, suffixLength, i == ones && ones < 3, levels[i])) return fail();

    int zerosLeft = 0;
    if (total < layout.maxNumCoeff) {
        const Vek32s* const table = load<const Vek32s*>(tables.ppTotalZeros + total);
        if (table == nullptr) return vekStsErrNullPtr;
        const VlcSlot code = lookUp(reader, table);
        if (code.noCode()) return fail();
        reader.giveBack(code.giveBack());
        if (cavlcNumber(code) > layout.maxNumCoeff - total) return fail();
        zerosLeft = static_cast<int>(cavlcNumber(code));
    }
    for (int i = 0; i < total; ++i) {
        const int remaining = total - i;
        int runBefore = zerosLeft;
        if (remaining >= 2 && zerosLeft >= 1) {
            const Vek32s* const table = load<const Vek32s*>(tables.ppRunBefore + zerosLeft);
            if (table == nullptr) return vekStsErrNullPtr;
            const VlcSlot code = lookUp(reader, table);
            if (code.noCode()) return fail();
            reader.giveBack(code.giveBack());
            runBefore = static_cast<int>(cavlcNumber(code));
        }
        store<T>(block + layout.position(remaining - 1 + zerosLeft), static_cast<T>(levels[i]));
        zerosLeft -= runBefore < zerosLeft ? runBefore : zerosLeft;
    }
    store(target.ppCoeffs, block + Layout::kSize);
    return vekStsOk;
}

// coeff_token of a 4x4 block, then the block.
template <class T>
VekStatus decodeCavlc4x4(Vek32u** ppBitStream, Vek32s* pBitOffset, const CavlcTarget<T>& target, Vek32s nC,
                         const Vek32s* const* ppCoeffTokenTables, const CavlcTables& tables,
                         const CavlcLayout4x4& layout) {
    WordReader reader(ppBitStream, pBitOffset);
    const WordReader entry = reader;
    CavlcToken token;
    if (nC < 8) {
        const Vek32s* const table = load<const Vek32s*>(ppCoeffTokenTables + cavlcTokenTable(nC));
        if (table == nullptr) return vekStsErrNullPtr;
        const VlcSlot code = lookUp(reader, table);
        if (code.noCode()) return vekStsErrVlcData;
        reader.giveBack(code.giveBack());
        token = cavlcToken(code);
    } else {
        const int bits = static_cast<int>(reader.read(6));
        token = bits == 3 ? CavlcToken{0, 0} : CavlcToken{bits & 3, (bits >> 2) + 1};
    }
    const VekStatus status = decodeBlock(reader, entry, token, target, tables, layout);
    reader.commit(ppBitStream, pBitOffset);
    return status;
}

// The blocks of chroma DC whose coeff_token is 1 (one coefficient, a trailing one) or 01 (none). False for the others.
inline bool decodeShortChromaDc(WordReader& reader, const CavlcTarget<Vek16s>& target) {
    const WordReader entry = reader;
    if (reader.read(1) == 1) {
        const bool trailingOnesSign = reader.read(1) != 0;
        int totalZeros = 0;  // Table 9-9 a, tzVlcIndex 1: 1, 01, 001, 000
        while (totalZeros < 3 && reader.read(1) == 0) ++totalZeros;
        Vek16s* const block = load<Vek16s*>(target.ppCoeffs);
        for (int i = 0; i < 4; ++i) store<Vek16s>(block + i, 0);
        store<Vek16s>(block + totalZeros, trailingOnesSign ? -1 : 1);
        store(target.ppCoeffs, block + 4);
        store<Vek16s>(target.pTotalCoeff, 1);
        return true;
    }
    if (reader.read(1) == 1) {
        store<Vek16s>(target.pTotalCoeff, 0);
        return true;
    }
    reader = entry;
    return false;
}

// coeff_token of a chroma DC block, then the block.
template <class T, class Layout>
VekStatus decodeCavlcChromaDc(Vek32u** ppBitStream, Vek32s* pBitOffset, const CavlcTarget<T>& target,
                              const Vek32s* pCoeffTokenTable, const CavlcTables& tables, const Layout& layout) {
    WordReader reader(ppBitStream, pBitOffset);
    const WordReader entry = reader;
    if constexpr (cavlcKnowsShortCodes<T, Layout>)
        if (decodeShortChromaDc(reader, target)) {
            reader.commit(ppBitStream, pBitOffset);
            return vekStsOk;
        }
    const VlcSlot code = lookUp(reader, pCoeffTokenTable);
    if (code.noCode()) return vekStsErrVlcData;
    reader.giveBack(code.giveBack());
    const VekStatus status = decodeBlock(reader, entry, cavlcToken(code), target, tables, layout);
    reader.commit(ppBitStream, pBitOffset);
    return status;
}

}  // namespace vekvc::plain

#endif
