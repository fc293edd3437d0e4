// Block decoding as ISO 13818-2 7.2 and 7.4 (ISO 11172-2 2.4.4) describe it, one code after the other.
#ifndef VEKVC_MPEG2_BLOCK_DECODE_PLAIN_H
#define VEKVC_MPEG2_BLOCK_DECODE_PLAIN_H

#include "mpeg2/block_decode.h"

namespace vekvc::plain {

// One coefficient; products keep 32 bits, division truncates toward zero.
template <Standard standard, bool intra>
Vek16s dequantize(Vek32s level, Vek32s QP, Vek32s weight) {
    const Vek32s sign = level > 0 ? 1 : level < 0 ? -1 : 0;
    const Vek32s product = wrapMul(wrapMul(2 * level + (intra ? 0 : sign), weight), QP);
    if (standard == Standard::mpeg2) return wrap16(product / 32);  // not limited, on purpose
    Vek32s c = product / 16;
    if (c % 2 == 0) c -= c > 0 ? 1 : c < 0 ? -1 : 0;
    return static_cast<Vek16s>(clip3(-2048, 2047, c));
}

struct RunLevel {
    int run;
    Vek32s level;
};

// The run and level behind an escape code.
template <Standard standard>
RunLevel readEscape(WordReader& reader) {
    const int run = static_cast<int>(reader.read(6));
    if (standard == Standard::mpeg2) {
        const auto level = static_cast<Vek32s>(reader.read(12));
        return {run, level >= 2048 ? level - 4096 : level};
    }
    const auto level = static_cast<Vek32s>(reader.read(8));
    if ((level & 0x7F) == 0) {  // 0 and -128 announce eight more bits
        const auto more = static_cast<Vek32s>(reader.read(8));
        return {run, level == 0 ? more : more - 256};
    }
    return {run, level >= 128 ? level - 256 : level};
}

// The coefficients of a block. With `intra` the DC stands in the block already; without it the first coefficient comes
// from pFirstCoefTable or from its short code.
template <Standard standard, bool intra>
VekStatus decodeCoefficients(WordReader& reader, const Vek32s* pFirstCoefTable, const Vek32s* pACTable,
                             const BlockTarget& target) {
    const Vek32s* table = intra ? pACTable : pFirstCoefTable;
    int i = intra ? 0 : -1;  // scan index of the last coefficient
    Vek32u sum = intra ? static_cast<Vek32u>(load<Vek16s>(target.pDstBlock)) : 0;
    bool shortCode = !intra && reader.peek(1) == 1;
    while (true) {
        RunLevel pair;
        if (shortCode) {
            pair = {0, reader.read(2) == 2 ? 1 : -1};
        } else {
            const VlcSlot code = lookUp(reader, table);
            reader.giveBack(code.giveBack());
            if (code.run() == kRunEndOfBlock) break;
            pair = {code.run(), code.byteLevel()};
            if (code.run() == kRunEscape) pair = readEscape<standard>(reader);
        }
        shortCode = false;
        table = pACTable;
        i += pair.run + 1;
        if (i > 63) return vekStsErrVlcData;
        const Vek32s position = load<Vek32s>(target.pScanMatrix + i);
        const Vek16s c =
            dequantize<standard, intra>(pair.level, target.QP, load<Vek16s>(target.pQuantMatrix + position));
        store<Vek16s>(target.pDstBlock + position, c);
        sum += static_cast<Vek32u>(c);
    }
    store<Vek32s>(target.pDstSize, i < 0 ? 0 : i);
    if (standard == Standard::mpeg2) controlMismatch(sum, target.pDstBlock);
    return vekStsOk;
}

// dct_dc_differential of s bits (ISO 13818-2 7.2.1): a first bit of 0 makes it negative.
constexpr Vek32s dcDifference(Vek32u bits, int s) {
    if (s == 0 || bits >> (s - 1) != 0) return static_cast<Vek32s>(bits);
    return static_cast<Vek32s>(bits - (~Vek32u{0} >> (32 - s)));
}

template <Standard standard>
VekStatus reconstructBlock(Vek32u** ppBitStream, Vek32s* pBitOffset, const Vek32s* pFirstCoefTable,
                           const Vek32s* pACTable, const BlockTarget& target) {
    for (int k = 0; k < 64; ++k) store<Vek16s>(target.pDstBlock + k, 0);
    WordReader reader(ppBitStream, pBitOffset);
    const VekStatus status = decodeCoefficients<standard, false>(reader, pFirstCoefTable, pACTable, target);
    reader.commit(ppBitStream, pBitOffset);
    return status;
}

template <Standard standard>
VekStatus reconstructBlockIntra(Vek32u** ppBitStream, Vek32s* pBitOffset, const BlockDc& dc, const Vek32s* pACTable,
                                const BlockTarget& target) {
    for (int k = 0; k < 64; ++k) store<Vek16s>(target.pDstBlock + k, 0);
    WordReader reader(ppBitStream, pBitOffset);
    const VlcSlot code = lookUp(reader, dc.pDCSizeTable);
    reader.giveBack(code.giveBack());
    const int size = code.byteValue();
    VekStatus status = vekStsErrVlcData;
    if (size >= 0 && size <= kMaxDcSize) {
        storeDc<standard>(dc, dcDifference(reader.read(size), size), target.pDstBlock);
        status = decodeCoefficients<standard, true>(reader, nullptr, pACTable, target);
    }
    reader.commit(ppBitStream, pBitOffset);
    return status;
}

}  // namespace vekvc::plain

#endif
