// Fast forms of the writers: a mask that has a bit for each level other than 0, in scan order, leads from one to the
// next.
#ifndef VEKVC_MPEG4_ENCODE_SIMD_H
#define VEKVC_MPEG4_ENCODE_SIMD_H

#include <bit>

#include "core/simd.h"
#include "mpeg4/encode_plain.h"

namespace vekvc::simd {

// The codes of each last and run stand together, in order of the level.
template <const mpeg4::CodeTable& table>
struct IndexedCodes {
    struct Index {
        mpeg4::Code codes[169] = {};
        Vek8u start[2][64] = {};

        constexpr Index() {
            int n = 0;
            for (int last = 0; last < 2; ++last)
                for (int run = 0; run < 64; ++run) {
                    start[last][run] = static_cast<Vek8u>(n);
                    n += table.largestLevel[last][run];
                }
            for (const mpeg4::RunLevelCode& entry : table)
                codes[start[entry.last][entry.run] + entry.level - 1] = entry.code;
        }
    };
    static constexpr Index kIndex{};

    static mpeg4::Code of(int last, int run, int level) { return kIndex.codes[kIndex.start[last][run] + level - 1]; }
};

// A permutation of 64 bytes as shuffles of four vectors of 16: output o is the OR of all inputs shuffled by select[o].
struct BytePermutation {
    alignas(16) Vek8u select[4][4][16] = {};

    // output[k] = input[source[k]]
    constexpr explicit BytePermutation(const Vek8u (&source)[64]) {
        for (int k = 0; k < 64; ++k)
            for (int input = 0; input < 4; ++input)
                select[k / 16][input][k % 16] = source[k] / 16 == input ? source[k] % 16 : 0x80;
    }
};
template <const Vek8u (&scan)[64]>
inline constexpr BytePermutation kScanBytes{scan};

// A bit for each level other than 0, in scan order. Levels limited to 8 bits are 0 where the levels are.
inline std::uint64_t levelMask(const Vek16s* pSrcBlock, const Vek8u* scan) {
    const BytePermutation& scanned = scan == kZigzagScan              ? kScanBytes<kZigzagScan>
                                     : scan == kAlternateVerticalScan ? kScanBytes<kAlternateVerticalScan>
                                                                      : kScanBytes<kAlternateHorizontalScan>;
    i8x16 in[4];
    for (int i = 0; i < 4; ++i) in[i] = narrowI8(load<i16x8>(pSrcBlock + 16 * i), load<i16x8>(pSrcBlock + 16 * i + 8));
    std::uint64_t zeros = 0;
    for (int o = 0; o < 4; ++o) {
        i8x16 out = zero<i8x16>();
        for (int i = 0; i < 4; ++i) out = out | shuffleBytes(in[i], load<u8x16>(scanned.select[o][i]));
        zeros |= std::uint64_t{byteMask(out == zero<i8x16>())} << 16 * o;
    }
    return ~zeros;
}

template <mpeg4::Syntax syntax, const mpeg4::CodeTable& table>
[[gnu::noinline]] ByteWriter putEscape(ByteWriter writer, int last, int run, Vek32s level) {
    plain::putEscape<syntax, table, IndexedCodes<table>>(writer, last, run, level);
    return writer;
}

template <mpeg4::Syntax syntax, const mpeg4::CodeTable& table>
void encodeBlock(Vek8u** ppBitStream, Vek32s* pBitOffset, const Vek16s* pSrcBlock, mpeg4::BlockLayout layout) {
    using namespace mpeg4;
    const Vek32s largest = plain::largestLevel(syntax, layout.extended);
    const auto levelAt = [&](int i) {
        return clip3(-largest, largest, Vek32s{load<Vek16s>(pSrcBlock + layout.scan[i])});
    };
    std::uint64_t left = levelMask(pSrcBlock, layout.scan) >> layout.start << layout.start;
    if (left == 0 && syntax != Syntax::h261Intra) return;
    ByteWriter writer(ppBitStream, pBitOffset);
    int next = layout.start;  // scan index behind the last level written
    if (const Vek32s first = levelAt(0); syntax == Syntax::h261Inter && magnitude(first) == 1) {
        writer.put(first < 0 ? 0b11 : 0b10, 2);
        next = 1;
        left &= left - 1;
    }
    while (left != 0) {
        const int i = std::countr_zero(left), run = i - next;
        left &= left - 1;
        next = i + 1;
        const int last = !isH261(syntax) && left == 0 ? 1 : 0;
        const Vek32s level = levelAt(i);
        const auto size = static_cast<int>(magnitude(level));
        if (size <= table.largestLevel[last][run]) [[likely]] {
            const Code code = IndexedCodes<table>::of(last, run, size);
            writer.put(Vek32u{code.bits} << 1 | static_cast<Vek32u>(level) >> 31, code.length + 1);
        } else {
            writer = putEscape<syntax, table>(writer, last, run, level);
        }
    }
    if (isH261(syntax)) writer.put(kH261EndOfBlock, kH261EndOfBlockLength);
    writer.finish(ppBitStream, pBitOffset);
}

using plain::encodeDcH263;
using plain::encodeDcMpeg4;

}  // namespace vekvc::simd

#endif
