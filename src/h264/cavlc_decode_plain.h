// CAVLC block decoding as H.264 9.2 describes it, one syntax element after the other.
#ifndef VEKVC_H264_CAVLC_DECODE_PLAIN_H
#define VEKVC_H264_CAVLC_DECODE_PLAIN_H

#include "core/arith.h"
#include "h264/cavlc_decode.h"
#include "vlc/look_up.h"

namespace vekvc::plain {

// level_prefix and level_suffix of one level (9.2.2.1), as a magnitude and a sign. `first` adds one to the magnitude: a
// first level after fewer than three trailing ones cannot be +1 or -1. False where level_prefix exceeds 35.
struct CavlcLevel {
    Vek32s magnitude;
    bool negative;

    Vek32s value() const { return negative ? -magnitude : magnitude; }
};

inline bool readLevel(WordReader& reader, int suffixLength, bool first, CavlcLevel& level) {
    int levelPrefix = 0;
    while (reader.read(1) == 0) {
        if (++levelPrefix > kMaxLevelPrefix) return false;
    }
    if (levelPrefix < 16) {
        int suffixSize = suffixLength;
        if (levelPrefix == 14 && suffixLength == 0) suffixSize = 4;
        if (levelPrefix == 15) suffixSize = 12;
        const Vek32s suffix = suffixSize > 0 ? static_cast<Vek32s>(reader.read(suffixSize)) : levelPrefix;
        Vek32s base = 1;
        if (suffixLength > 0) base = (levelPrefix << (suffixLength - 1)) + 1;
        if (suffixLength == 0 && levelPrefix == 14) base = 8;
        if (suffixLength == 0 && levelPrefix == 15) base = 16;
        level = {(suffix >> 1) + base + (first ? 1 : 0), (suffix & 1) != 0};
        return true;
    }
    const std::int64_t suffix = reader.read(levelPrefix - 3);
    const std::int64_t escape = (15 << suffixLength) + suffix + (suffixLength == 0 ? 15 : 0) +
                                (std::int64_t{1} << (levelPrefix - 3)) - 4096 + (first ? 2 : 0);
    const Vek32s levelCode = static_cast<Vek16u>(escape);  // kept to 16 bits on purpose
    level = {levelCode % 2 == 0 ? (levelCode + 2) >> 1 : (levelCode + 1) >> 1, levelCode % 2 != 0};
    return true;
}

// Where the parts of a block lie: how many coefficients it has, how many it may have, and their raster positions.
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
    Vek32s previous = 0;
    for (int i = 0; i < total - ones; ++i) {
        constexpr Vek32s kThresholds[6] = {0, 3, 6, 12, 24, 48};
        if (i == 1 && previous >= 4) {
            suffixLength = 2;
        } else if (suffixLength < 6 && previous > kThresholds[suffixLength]) {
            ++suffixLength;
        }
        CavlcLevel level;
        if (!readLevel(reader, suffixLength, i == 0 && ones < 3, level)) return fail();
        levels[ones + i] = level.value();
        previous = level.magnitude;
    }

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

// coeff_token of a chroma DC block, then the block.
template <class T, class Layout>
VekStatus decodeCavlcChromaDc(Vek32u** ppBitStream, Vek32s* pBitOffset, const CavlcTarget<T>& target,
                              const Vek32s* pCoeffTokenTable, const CavlcTables& tables, const Layout& layout) {
    WordReader reader(ppBitStream, pBitOffset);
    const WordReader entry = reader;
    const VlcSlot code = lookUp(reader, pCoeffTokenTable);
    if (code.noCode()) return vekStsErrVlcData;
    reader.giveBack(code.giveBack());
    const VekStatus status = decodeBlock(reader, entry, cavlcToken(code), target, tables, layout);
    reader.commit(ppBitStream, pBitOffset);
    return status;
}

}  // namespace vekvc::plain

#endif
