// The block writers (ISO 13818-2 7.2 from the encoder's side). One form: their work is the bit writer's.
#include <algorithm>
#include <bit>

#include "core/arith.h"
#include "core/bits.h"
#include "core/check.h"
#include "vekvc/mpeg2.h"

using namespace vekvc;

namespace {

struct RunLevelWriter {
    WordWriter writer;
    const VekRLEncodeTable* table;
    Vek32s maxRun;

    RunLevelWriter(Vek32u** ppBitStream, Vek32s* pBitOffset, const VekRLEncodeTable* pACTable)
        : writer(ppBitStream, pBitOffset), table(pACTable), maxRun(static_cast<Vek32s>(load<Vek32u>(pACTable) >> 20)) {}

    void put(int run, Vek32s level) {
        if (run <= maxRun) {
            const Vek32s* const centre = offsetBytes(table, load<Vek32s>(table + 1 + run));
            if (static_cast<Vek32s>(magnitude(level)) <= load<Vek32s>(centre)) {
                const auto code = load<Vek32u>(centre + level);
                // A place that no code was entered at may hold any word.
                writer.put(code >> 16, static_cast<int>(std::min(code & 0xFFFF, 32u)));
                return;
            }
        }
        // The escape of ISO 13818-2 7.2.2.3: 000001, six bits of run, twelve of level.
        writer.put(1u << 18 | static_cast<Vek32u>(run) << 12 | (static_cast<Vek32u>(level) & 0xFFF), 24);
    }

    // The coefficients behind the first, until `count` of them are written; `run` zeros precede them.
    void putCoefficients(const Vek16s* pSrcBlock, const Vek32s* pScanMatrix, int run, Vek32s count) {
        for (int i = 1; i < 64 && count > 0; ++i) {
            const Vek32s level = load<Vek16s>(pSrcBlock + load<Vek32s>(pScanMatrix + i));
            if (level == 0) {
                ++run;
                continue;
            }
            put(run, level);
            run = 0;
            --count;
        }
    }
};

}  // namespace

VekStatus vekiPutIntraBlock(Vek32u** ppBitStream, Vek32s* pBitOffset, const Vek16s* pSrcBlock, Vek32s* pDCPred,
                            const Vek32s* pDCSizeCodes, const VekRLEncodeTable* pACTable, const Vek32s* pScanMatrix,
                            Vek32s EOBLen, Vek32s EOBCode, Vek32s count) {
    if (anyNull(ppBitStream, pBitOffset, pSrcBlock, pDCPred, pDCSizeCodes, pACTable, pScanMatrix))
        return vekStsErrNullPtr;
    if (anyNull(load<Vek32u*>(ppBitStream))) return vekStsErrNullPtr;
    RunLevelWriter out(ppBitStream, pBitOffset, pACTable);
    const Vek32s dc = load<Vek16s>(pSrcBlock);
    const Vek32s difference = wrapSub(dc, load<Vek32s>(pDCPred));
    store<Vek32s>(pDCPred, dc);
    const int size = static_cast<int>(std::bit_width(magnitude(difference)));
    out.writer.put(load<Vek32u>(pDCSizeCodes + 2 * size), load<Vek32s>(pDCSizeCodes + 2 * size + 1));
    // A negative difference is written as difference + 2^size - 1: its low bits less one.
    out.writer.put(static_cast<Vek32u>(difference) - (difference < 0 ? 1 : 0), size);
    out.putCoefficients(pSrcBlock, pScanMatrix, 0, count);
    out.writer.put(static_cast<Vek32u>(EOBCode), EOBLen);
    out.writer.commit(ppBitStream, pBitOffset);
    return vekStsOk;
}

VekStatus vekiPutNonIntraBlock(Vek32u** ppBitStream, Vek32s* pBitOffset, const Vek16s* pSrcBlock,
                               const VekRLEncodeTable* pACTable, const Vek32s* pScanMatrix, Vek32s EOBLen,
                               Vek32s EOBCode, Vek32s count) {
    if (anyNull(ppBitStream, pBitOffset, pSrcBlock, pACTable, pScanMatrix)) return vekStsErrNullPtr;
    if (anyNull(load<Vek32u*>(ppBitStream))) return vekStsErrNullPtr;
    RunLevelWriter out(ppBitStream, pBitOffset, pACTable);
    const Vek32s first = load<Vek16s>(pSrcBlock);
    if (first == 1 || first == -1) {
        out.writer.put(first > 0 ? 2 : 3, 2);  // the short code of a first coefficient (7.2.2.2)
    } else if (first != 0) {
        out.put(0, first);
    }
    const Vek32s left = first != 0 && count > 0 ? count - 1 : count;
    out.putCoefficients(pSrcBlock, pScanMatrix, first == 0 ? 1 : 0, left);
    out.writer.put(static_cast<Vek32u>(EOBCode), EOBLen);
    out.writer.commit(ppBitStream, pBitOffset);
    return vekStsOk;
}
