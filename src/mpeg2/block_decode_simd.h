// Block decoding on a 64-bit window of the stream: one table step for a common code, inverse quantization without a
// branch. Escapes, which are rare, are read bit field by bit field.
#ifndef VEKVC_MPEG2_BLOCK_DECODE_SIMD_H
#define VEKVC_MPEG2_BLOCK_DECODE_SIMD_H

#include "mpeg2/block_decode_plain.h"

namespace vekvc::simd {

// The definition's coefficient without a branch.
template <Standard standard, bool intra>
[[gnu::always_inline]] inline Vek16s dequantize(Vek32s level, Vek32s QP, Vek32s weight) {
    const Vek32s sign = (level > 0) - (level < 0);
    const Vek32s product = wrapMul(2 * level + (intra ? 0 : sign), wrapMul(weight, QP));
    if constexpr (standard == Standard::mpeg2) return wrap16(product / 32);
    const Vek32s negative = product >> 31;
    const Vek32u size = magnitude(product) >> 4;
    const Vek32u any = size != 0 ? 1 : 0;
    const auto odd = static_cast<Vek32s>((size - any) | any);  // an even size loses 1
    const Vek32s limit = 2047 - negative;
    return static_cast<Vek16s>(((odd < limit ? odd : limit) ^ negative) - negative);
}

template <Standard standard>
[[gnu::noinline]] WordReader readEscape(WordReader reader, plain::RunLevel& pair) {
    pair = plain::readEscape<standard>(reader);
    return reader;
}

template <Standard standard, bool intra>
[[gnu::always_inline]] inline VekStatus decodeCoefficients(WordWindow window, Vek32u** ppBitStream, Vek32s* pBitOffset,
                                                           const Vek32s* pFirstCoefTable, const Vek32s* pACTable,
                                                           BlockTarget target) {
    int i = intra ? 0 : -1;
    Vek32u sum = intra ? static_cast<Vek32u>(load<Vek16s>(target.pDstBlock)) : 0;
    const auto put = [&](Vek32s level) {
        const Vek32s position = load<Vek32s>(target.pScanMatrix + i);
        const Vek16s c = dequantize<standard, intra>(level, target.QP, load<Vek16s>(target.pQuantMatrix + position));
        store<Vek16s>(target.pDstBlock + position, c);
        sum += static_cast<Vek32u>(c);
    };
    const Vek32s* table = intra ? pACTable : pFirstCoefTable;
    if constexpr (!intra) {
        window.need(1);
        if (window.top(1) != 0) {
            window.need(2);
            const Vek32s level = 1 - 2 * static_cast<Vek32s>(window.top(2) & 1);
            window.drop(2);
            i = 0;
            put(level);
            table = pACTable;
        }
    }
    while (true) {
        const VlcLook code = look(window, table);
        const int length = code.lengthHere();
        const int run = code.run();
        i += run + 1;
        if (i > 63) [[unlikely]] {  // so too for the reserved runs
            if (run < kRunEndOfBlock) {
                window.commit(ppBitStream, pBitOffset, -length);
                return vekStsErrVlcData;
            }
            i -= run + 1;
            if (run == kRunEndOfBlock) {
                window.commit(ppBitStream, pBitOffset, -length);
                break;
            }
            window.drop(length);
            plain::RunLevel pair;
            window = WordWindow(readEscape<standard>(window.reader(), pair));
            i += pair.run + 1;
            if (i > 63) {
                window.commit(ppBitStream, pBitOffset);
                return vekStsErrVlcData;
            }
            put(pair.level);
        } else {
            window.drop(length);
            put(code.byteLevel());
        }
        table = pACTable;
    }
    store<Vek32s>(target.pDstSize, i < 0 ? 0 : i);
    if constexpr (standard == Standard::mpeg2) controlMismatch(sum, target.pDstBlock);
    return vekStsOk;
}

// The definition's difference without a branch: of s bits those numbers are negative whose double is below 2^s - 1.
inline Vek32s dcDifference(Vek32u bits, int s) {
    const std::uint64_t ones = (std::uint64_t{1} << s) - 1;
    const std::uint64_t negative = std::uint64_t{2} * bits < ones ? 1 : 0;
    return wrap32(bits - (ones & (0 - negative)));
}

template <Standard standard>
VekStatus reconstructBlock(Vek32u** ppBitStream, Vek32s* pBitOffset, const Vek32s* pFirstCoefTable,
                           const Vek32s* pACTable, const BlockTarget& target) {
    std::memset(target.pDstBlock, 0, 128);
    return decodeCoefficients<standard, false>(WordWindow(ppBitStream, pBitOffset), ppBitStream, pBitOffset,
                                               pFirstCoefTable, pACTable, target);
}

template <Standard standard>
VekStatus reconstructBlockIntra(Vek32u** ppBitStream, Vek32s* pBitOffset, const BlockDc& dc, const Vek32s* pACTable,
                                const BlockTarget& target) {
    std::memset(target.pDstBlock, 0, 128);
    WordWindow window(ppBitStream, pBitOffset);
    const VlcLook code = look(window, dc.pDCSizeTable);
    const int size = code.byteValue();
    if (size < 0 || size > kMaxDcSize) [[unlikely]] {
        window.commit(ppBitStream, pBitOffset, -code.lengthHere());
        return vekStsErrVlcData;
    }
    window.drop(code.lengthHere());
    storeDc<standard>(dc, dcDifference(window.read(size), size), target.pDstBlock);
    return decodeCoefficients<standard, true>(window, ppBitStream, pBitOffset, nullptr, pACTable, target);
}

}  // namespace vekvc::simd

#endif
