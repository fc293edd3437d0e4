// CAVLC block decoding on a 64-bit window of the stream that stays in registers. A level's bits are read as one number,
// (level_prefix << suffixLength) + level_suffix, which is levelCode itself; the rare escapes go through the definition.
#ifndef VEKVC_H264_CAVLC_DECODE_SIMD_H
#define VEKVC_H264_CAVLC_DECODE_SIMD_H

#include <bit>

#include "h264/cavlc_decode_plain.h"
#include "h264/scaling_tables.h"

namespace vekvc::simd {

// A level and the reader behind it; magnitude -1: level_prefix is too long. A reader travels in registers, a window
// would not, and would be kept in memory by all that share a function with the call.
struct CavlcEscape {
    WordReader reader;
    Vek32s magnitude;
    Vek32s value;
};

[[gnu::noinline, maybe_unused]] static CavlcEscape readEscape(WordReader reader, int suffixLength, bool first) {
    Vek32s level = 0;
    if (!plain::readLevel(reader, suffixLength, first, level)) return {reader, -1, 0};
    return {reader, std::abs(level), level};
}

// Reads one level into value and returns its magnitude, or -1. `first` (0 or 1) raises the magnitude by one.
[[gnu::always_inline]] inline Vek32s readLevel(WordWindow& window, int suffixLength, Vek32u first, Vek32s& value) {
    const int longest = 15 + suffixLength - (suffixLength == 0 ? 1 : 0);  // of the codes that are no escapes
    int levelPrefix = std::countl_zero(window.bits() | 1);
    int length = levelPrefix + 1 + suffixLength;
    if (length > (longest < window.valid() ? longest : window.valid())) [[unlikely]] {
        window.need(21);  // level_prefix up to 14, its end, six bits of suffix
        levelPrefix = std::countl_zero(window.bits() | 1);
        length = levelPrefix + 1 + suffixLength;
        if (length > longest) {
            const CavlcEscape escape = readEscape(window.reader(), suffixLength, first != 0);
            window = WordWindow(escape.reader);
            value = escape.value;
            return escape.magnitude;
        }
    }
    // The end of level_prefix, a one, stands above the suffix.
    const auto suffix = static_cast<Vek32u>(window.bits() << levelPrefix >> (63 - suffixLength));
    window.drop(length);
    // levelCode 2n is the level n + 1, 2n + 1 is -(n + 1).
    const Vek32u levelCode = (static_cast<Vek32u>(levelPrefix - 1) << suffixLength) + suffix + 2 * first;
    const Vek32s magnitude = static_cast<Vek32s>(levelCode >> 1) + 1;
    const Vek32s sign = -static_cast<Vek32s>(levelCode & 1);
    value = (magnitude ^ sign) - sign;
    return magnitude;
}

// The levels behind the trailing ones (9.2.2.1). False where a level_prefix is too long.
[[gnu::always_inline]] inline bool readLevels(WordWindow& window, CavlcToken token, Vek32s* levels) {
    int left = token.totalCoeff - token.trailingOnes;
    if (left <= 0) return true;
    Vek32s* next = levels + token.trailingOnes;
    // TrailingOnes < 3, and TotalCoeff > 10 as well: shifts of the sign, since no branch would foresee them.
    const auto first = static_cast<Vek32u>((token.trailingOnes - 3) >> 31 & 1);
    const int startLength = (10 - token.totalCoeff) >> 31 & static_cast<int>(first);
    Vek32s magnitude = readLevel(window, startLength, first, *next);
    if (magnitude < 0) return false;
    // The first level always raises suffixLength, to 2 if it is above 3: 1 + (magnitude > 3) for both start values.
    int suffixLength = magnitude > 3 ? 2 : 1;
    while (--left > 0) {
        static constexpr Vek32s kThresholds[7] = {0, 3, 6, 12, 24, 48, INT32_MAX};
        const Vek32s threshold = kThresholds[suffixLength];
        magnitude = readLevel(window, suffixLength, 0, *++next);
        if (magnitude < 0) return false;
        suffixLength += magnitude > threshold ? 1 : 0;
    }
    return true;
}

// run_before as Table 9-10 has it, by zerosLeft and the next three bits: the code's length + 256 * the zerosLeft behind
// it. The caller's tables decide; but what they say comes out of three loads in a row, each run waiting for the run
// before. So the decoder goes on with the standard's answer and only compares it with the caller's.
// Codes of more than three bits have length 0 here, which agrees with no code.
struct RunBefore {
    Vek16u step[8];
};
inline constexpr h264::Values<16, RunBefore> kRunBefore = [] {
    constexpr const char* codes[7][7] = {{"1", "0"},
                                         {"1", "01", "00"},
                                         {"11", "10", "01", "00"},
                                         {"11", "10", "01", "001", "000"},
                                         {"11", "10", "011", "010", "001", "000"},
                                         {"11", "000", "001", "011", "010", "101", "100"},
                                         {"111", "110", "101", "100", "011", "010", "001"}};
    h264::Values<16, RunBefore> table{};
    for (int zerosLeft = 1; zerosLeft < 16; ++zerosLeft) {
        RunBefore& row = table[zerosLeft];
        for (Vek16u& step : row.step) step = static_cast<Vek16u>(zerosLeft << 8);
        for (int run = 0; run < 7 && run <= zerosLeft; ++run) {
            const char* code = codes[(zerosLeft < 7 ? zerosLeft : 7) - 1][run];
            int length = 0, first = 0;
            for (; code[length] != 0; ++length) first += (code[length] == '1' ? 4 : 0) >> length;
            for (int k = first; k < first + (8 >> length); ++k)
                row.step[k] = static_cast<Vek16u>(length + ((zerosLeft - run) << 8));
        }
    }
    return table;
}();

// Everything behind coeff_token. Commits the cursor on success and where a table is missing.
template <class T, class Layout>
[[gnu::always_inline]] inline VekStatus decodeBlock(WordWindow window, CavlcToken token, Vek32u** ppBitStream,
                                                    Vek32s* pBitOffset, const CavlcTarget<T>& target,
                                                    const CavlcTables& tables, const Layout& layout) {
    const int total = token.totalCoeff;
    const int ones = token.trailingOnes;
    store<Vek16s>(target.pTotalCoeff, static_cast<Vek16s>(total));
    if (total == 0) {
        if (ones > 3) return vekStsErrVlcData;
        if (ones > 0) window.read(ones);
        window.commit(ppBitStream, pBitOffset);
        return vekStsOk;
    }
    if (total > layout.maxNumCoeff || ones > 3) [[unlikely]]
        return vekStsErrVlcData;

    Vek32s levels[16 + 3];
    window.need(3);
    const Vek32s signs = static_cast<Vek32s>(window.top(3));
    levels[0] = 1 - (signs >> 1 & 2);
    levels[1] = 1 - (signs & 2);
    levels[2] = 1 - (signs << 1 & 2);
    window.drop(ones);

    T* const block = load<T*>(target.ppCoeffs);
    std::memset(block, 0, Layout::kSize * sizeof(T));
    if (!readLevels(window, token, levels)) [[unlikely]]
        return vekStsErrVlcData;

    int zerosLeft = 0;
    if (total < layout.maxNumCoeff) {
        const Vek32s* const table = load<const Vek32s*>(tables.ppTotalZeros + total);
        if (table == nullptr) [[unlikely]] {
            window.commit(ppBitStream, pBitOffset);
            return vekStsErrNullPtr;
        }
        const VlcLook code = look(window, table);
        if (code.noCode() || cavlcNumber(code) > layout.maxNumCoeff - total) [[unlikely]]
            return vekStsErrVlcData;
        window.drop(code.lengthHere());
        zerosLeft = cavlcNumber(code);
    }
    const int last = total - 1;
    int index = last + zerosLeft;
    int i = 0;
    for (; zerosLeft > 0 && i < last; ++i) {
        const Vek32s* const table = load<const Vek32s*>(tables.ppRunBefore + zerosLeft);
        if (table == nullptr) [[unlikely]] {
            window.commit(ppBitStream, pBitOffset);
            return vekStsErrNullPtr;
        }
        const int width = load<Vek32s>(table);
        window.need(width);
        const Vek32s slot = load<Vek32s>(table + 1 + window.top(width));
        const int step = kRunBefore[zerosLeft].step[window.bits() >> 61];
        // The slot of this code: 256 * run_before + the bits looked up that are not the code's.
        if (slot == width + (zerosLeft << 8) - step && (slot & 0x80) == 0) [[likely]] {
            store<T>(block + layout.position(index), static_cast<T>(levels[i]));
            window.drop(step & 63);
            index -= zerosLeft - (step >> 8) + 1;
            zerosLeft = step >> 8;
            continue;
        }
        const VlcLook code = look(window, table);
        if (code.noCode()) [[unlikely]]
            return vekStsErrVlcData;
        window.drop(code.lengthHere());
        store<T>(block + layout.position(index), static_cast<T>(levels[i]));
        const int runBefore = cavlcNumber(code) < zerosLeft ? cavlcNumber(code) : zerosLeft;
        zerosLeft -= runBefore;
        index -= runBefore + 1;
    }
    for (; i < total; ++i) store<T>(block + layout.position(index--), static_cast<T>(levels[i]));
    store(target.ppCoeffs, block + Layout::kSize);
    window.commit(ppBitStream, pBitOffset);
    return vekStsOk;
}

template <class T>
[[gnu::always_inline]] inline VekStatus decodeCavlc4x4(Vek32u** ppBitStream, Vek32s* pBitOffset,
                                                       const CavlcTarget<T>& target, Vek32s nC,
                                                       const Vek32s* const* ppCoeffTokenTables,
                                                       const CavlcTables& tables, const CavlcLayout4x4& layout) {
    WordWindow window(ppBitStream, pBitOffset);
    CavlcToken token;
    if (nC < 8) {
        static constexpr Vek8u kTable[8] = {0, 0, 1, 1, 2, 2, 2, 2};
        const Vek32s* const table = load<const Vek32s*>(ppCoeffTokenTables + kTable[nC]);
        if (table == nullptr) [[unlikely]]
            return vekStsErrNullPtr;
        const VlcLook code = look(window, table);
        if (code.noCode()) [[unlikely]]
            return vekStsErrVlcData;
        window.drop(code.lengthHere());
        token = cavlcToken(code);
    } else {
        const int bits = static_cast<int>(window.top(6));
        window.drop(6);
        token = bits == 3 ? CavlcToken{0, 0} : CavlcToken{bits & 3, (bits >> 2) + 1};
    }
    return decodeBlock(window, token, ppBitStream, pBitOffset, target, tables, layout);
}

// The codes "1" and "01" of the 2x2 block (Table 9-5, nC = -1) with the rest of their blocks. False for any other code.
inline bool shortChromaDc(Vek32u** ppBitStream, Vek32s* pBitOffset, const CavlcTarget<Vek16s>& target) {
    Vek32u* const word = load<Vek32u*>(ppBitStream);
    const Vek32s used = 31 - load<Vek32s>(pBitOffset);
    const auto bits = static_cast<unsigned>(loadTwoWords(word) << used >> 59);
    if ((bits & 0x10) != 0) {  // TotalCoeff 1: 1, sign, total_zeros (Table 9-9 a: 1, 01, 001, 000)
        static constexpr Vek8u kTotalZeros[8] = {3, 2, 1, 1, 0, 0, 0, 0};
        const int totalZeros = kTotalZeros[bits & 7];
        Vek16s* const block = load<Vek16s*>(target.ppCoeffs);
        std::memset(block, 0, 4 * sizeof *block);
        store<Vek16s>(block + totalZeros, (bits & 8) != 0 ? -1 : 1);
        store(target.ppCoeffs, block + 4);
        store<Vek16s>(target.pTotalCoeff, 1);
        storeCursor(ppBitStream, pBitOffset, word, used + (totalZeros < 2 ? 3 + totalZeros : 5));
        return true;
    }
    if ((bits & 0x08) != 0) {  // TotalCoeff 0
        store<Vek16s>(target.pTotalCoeff, 0);
        storeCursor(ppBitStream, pBitOffset, word, used + 2);
        return true;
    }
    return false;
}

template <class T, class Layout>
VekStatus decodeCavlcChromaDc(Vek32u** ppBitStream, Vek32s* pBitOffset, const CavlcTarget<T>& target,
                              const Vek32s* pCoeffTokenTable, const CavlcTables& tables, const Layout& layout) {
    if constexpr (cavlcKnowsShortCodes<T, Layout>)
        if (shortChromaDc(ppBitStream, pBitOffset, target)) return vekStsOk;
    WordWindow window(ppBitStream, pBitOffset);
    const VlcLook code = look(window, pCoeffTokenTable);
    if (code.noCode()) [[unlikely]]
        return vekStsErrVlcData;
    window.drop(code.lengthHere());
    return decodeBlock(window, cavlcToken(code), ppBitStream, pBitOffset, target, tables, layout);
}

}  // namespace vekvc::simd

#endif
