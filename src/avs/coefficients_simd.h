// Fast form of the coefficient decoders: short codes are looked up, with all that follows from them, by their first
// bits.
#ifndef VEKVC_AVS_COEFFICIENTS_SIMD_H
#define VEKVC_AVS_COEFFICIENTS_SIMD_H

#include <bit>

#include "avs/coefficients_plain.h"

namespace vekvc::simd {

inline constexpr int kAvsLookBits = 8;

// One code: the positions it takes (run + 1; 0: no pair), its length where it was looked up (0: longer than that), the
// table behind it.
struct AvsCode {
    std::int8_t level = 0;
    Vek8u positions = 0, length = 0, next = 0;
};
struct AvsTable {
    AvsCode byBits[1 << kAvsLookBits] = {};
    AvsCode byCode[avs::kFirstEscape] = {};
    Vek8u levels[64] = {};  // by run, for escapes
};

template <const avs::CodeGroup& group>
constexpr int nextTable(int t, int magnitude) {
    while (t < group.count - 1 && magnitude > group.tables[t].largestLevel) ++t;
    return t;
}

template <const avs::CodeGroup& group>
struct AvsTables {
    AvsTable table[7] = {};

    constexpr AvsTables() {
        for (int t = 0; t < group.count; ++t) {
            const avs::CodeTable& from = group.tables[t];
            AvsTable& to = table[t];
            int run = 0, level = 0;
            for (int i = 0; i < avs::kPairs; ++i) {
                if (++level > avs::levelsOf(from, run)) ++run, level = 1;
                const auto positions = static_cast<Vek8u>(run + 1);
                const auto next = static_cast<Vek8u>(nextTable<group>(t, level));
                to.byCode[from.codes[i]] = {static_cast<std::int8_t>(level), positions, 0, next};
                to.byCode[from.codes[i] + 1] = {static_cast<std::int8_t>(-level), positions, 0, next};
                to.levels[run] = static_cast<Vek8u>(level);
            }
            for (int code = 0; code < avs::kFirstEscape; ++code) {
                const auto bits = static_cast<int>(std::bit_width(static_cast<unsigned>(code + (1 << from.order))));
                const int length = 2 * bits - 1 - from.order;
                if (length > kAvsLookBits) continue;
                const int first = (code + (1 << from.order)) << (kAvsLookBits - length);
                for (int k = first; k < first + (1 << (kAvsLookBits - length)); ++k) {
                    to.byBits[k] = to.byCode[code];
                    to.byBits[k].length = static_cast<Vek8u>(length);
                }
            }
        }
    }
};
template <const avs::CodeGroup& group>
inline constexpr AvsTables<group> kAvsTables;

template <const avs::CodeGroup& group>
VekStatus decodeAvsBlock(Vek32u** ppBitStream, Vek32s* pBitOffset, Vek16s** ppDstCoeffs, int scanMode) {
    const AvsTable* const tables = kAvsTables<group>.table;
    struct Pair {
        Vek16s level;
        Vek8u positions;  // taken by the pairs before this one
    } pairs[65];
    WordWindow window(ppBitStream, pBitOffset);
    unsigned positions = 0;
    int n = 0;
    unsigned t = 0;
    for (;;) {
        window.need(18);
        const AvsTable& table = tables[t];
        AvsCode code = table.byBits[window.bits() >> (64 - kAvsLookBits)];
        int level = code.level;
        if (code.length != 0) [[likely]] {
            window.drop(code.length);
        } else {
            // A code with 8 leading zeros is at least 255: an escape whose run, 98 or more, leaves the block. Shorter
            // ones have at most 2 * 7 + 1 + 3 bits.
            const int order = group.tables[t].order;
            const int zeros = std::countl_zero(window.bits() | 1);
            if (zeros > 7) [[unlikely]]
                return vekStsErrOutOfRange;
            const int length = 2 * zeros + 1 + order;
            const int number = static_cast<int>(window.top(length)) - (1 << order);
            window.drop(length);
            if (number < avs::kFirstEscape) {
                code = table.byCode[number];
                level = code.level;
            } else {
                const unsigned run = static_cast<unsigned>(number - avs::kFirstEscape) >> 1;
                if (positions + run + 1 > 64) [[unlikely]]
                    return vekStsErrOutOfRange;
                window.need(32);
                const int more = std::countl_zero(window.bits() | 1);
                if (more > avs::kMostLeadingZeros) [[unlikely]]
                    return vekStsErrOutOfRange;
                const int bits = 2 * more + 1 + group.escapeOrder;
                const auto value = static_cast<Vek32s>(window.top(bits));
                window.drop(bits);
                const Vek32s magnitude = value - (1 << group.escapeOrder) + 1 + table.levels[run];
                if (magnitude > 32767) [[unlikely]]
                    return vekStsErrOutOfRange;
                level = number % 2 != 0 ? -magnitude : magnitude;
                code.positions = static_cast<Vek8u>(run + 1);
                code.next = static_cast<Vek8u>(nextTable<group>(static_cast<int>(t), magnitude));
            }
        }
        if (level == 0) {
            if (t == 0) [[unlikely]]
                return vekStsErrOutOfRange;
            break;
        }
        pairs[n] = {static_cast<Vek16s>(level), static_cast<Vek8u>(positions)};
        ++n;
        positions += code.positions;
        if (positions > 64) [[unlikely]]
            return vekStsErrOutOfRange;
        t = code.next;
    }
    Vek16s* const block = load<Vek16s*>(ppDstCoeffs);
    std::memset(block, 0, 64 * sizeof *block);
    const Vek8u* const scan = avs::kScan[scanMode] + positions - 1;
    for (int i = 0; i < n; ++i) store<Vek16s>(block + *(scan - pairs[i].positions), pairs[i].level);
    store(ppDstCoeffs, block + 64);
    window.commit(ppBitStream, pBitOffset);
    return vekStsOk;
}

}  // namespace vekvc::simd

#endif
