// Decoding of one coefficient block as GB/T 20090.2 clause 8 describes it, one bit after the other.
#ifndef VEKVC_AVS_COEFFICIENTS_PLAIN_H
#define VEKVC_AVS_COEFFICIENTS_PLAIN_H

#include "avs/coefficient_tables.h"
#include "core/bits.h"

namespace vekvc::plain {

// A number of the k-th order Exp-Golomb code; -1 after too many zero bits.
inline Vek32s readExpGolombAvs(WordReader& reader, int k) {
    int zeros = 0;
    while (reader.read(1) == 0)
        if (++zeros > avs::kMostLeadingZeros) return -1;
    return (1 << (zeros + k)) - (1 << k) + static_cast<Vek32s>(reader.read(zeros + k));
}

// The block, and the cursor behind it; nothing but a status for data that no block has.
template <const avs::CodeGroup& group>
VekStatus decodeAvsBlock(Vek32u** ppBitStream, Vek32s* pBitOffset, Vek16s** ppDstCoeffs, int scanMode) {
    struct Pair {
        int run;
        Vek32s level;
    } pairs[64];
    WordReader reader(ppBitStream, pBitOffset);
    int n = 0, positions = 0, t = 0;
    for (;;) {
        const avs::CodeTable& table = group.tables[t];
        const Vek32s code = readExpGolombAvs(reader, table.order);
        if (code < 0) return vekStsErrOutOfRange;
        if (t > 0 && code == table.endOfBlock) break;
        avs::RunLevel pair = {};
        if (code >= avs::kFirstEscape) {
            pair.run = (code - avs::kFirstEscape) >> 1;
        } else {
            pair = avs::runLevelOf(table, code);
            if (pair.level == 0) return vekStsErrOutOfRange;
        }
        // Whatever the order of the runs, they end beyond the block.
        positions += pair.run + 1;
        if (positions > 64) return vekStsErrOutOfRange;
        if (code >= avs::kFirstEscape) {
            const Vek32s number = readExpGolombAvs(reader, group.escapeOrder);
            const Vek32s magnitude = number + 1 + avs::levelsOf(table, pair.run);
            if (number < 0 || magnitude > 32767) return vekStsErrOutOfRange;
            pair.level = code % 2 != 0 ? -magnitude : magnitude;
        }
        pairs[n++] = {pair.run, pair.level};
        const int magnitude = pair.level < 0 ? -pair.level : pair.level;
        while (t < group.count - 1 && magnitude > group.tables[t].largestLevel) ++t;
    }
    Vek16s* const block = load<Vek16s*>(ppDstCoeffs);
    for (int i = 0; i < 64; ++i) store<Vek16s>(block + i, 0);
    for (int p = -1; n > 0;) {
        --n;
        p += pairs[n].run + 1;
        store<Vek16s>(block + avs::kScan[scanMode][p], static_cast<Vek16s>(pairs[n].level));
    }
    store(ppDstCoeffs, block + 64);
    reader.commit(ppBitStream, pBitOffset);
    return vekStsOk;
}

}  // namespace vekvc::plain

#endif
