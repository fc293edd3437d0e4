// DV video segments: what an encoder writes is read, in which pass, and what happens at the edges of areas.
#include <gtest/gtest.h>

#include <algorithm>

#include "support/dv.h"

namespace {

using namespace vekvc_test;

// Raster positions by scan index, from the rules of the two scans: 8-8 the zigzag, 2-4-8 pairs of a sum and a
// difference in the order of the standard's figure.
constexpr int kScan88[] = {0, 1, 8, 16, 9, 2, 3, 10, 17, 24, 32, 25, 18, 11, 4, 5};
constexpr int kScan248[] = {0, 32, 1, 33, 8, 40, 2, 34, 9, 41, 16, 48, 24, 56, 17, 49};

struct Decoded {
    std::vector<Vek16s> coeffs;
    std::vector<VekDVBlockInfo> info;
};
Decoded decode(const DvKind& kind, const std::vector<Vek8u>& bytes) {
    Decoded d;
    const std::size_t blocks =
        5 * static_cast<std::size_t>(std::count(kind.dropped.begin(), kind.dropped.end(), false));
    d.coeffs.assign(64 * blocks, 99);
    d.info.resize(blocks);
    const auto call = &kind == &kDv      ? vekiDecodeCoeffsSegment_DV_1u16s
                      : &kind == &kDv422 ? vekiDecodeCoeffsSegment422_DV_1u16s
                                         : vekiDecodeCoeffsSegment_DV100_1u16s;
    EXPECT_EQ(call(bytes.data(), d.coeffs.data(), d.info.data(), dvTable()), vekStsOk);
    return d;
}

std::string head(int dc, int mode, int classNo) {
    std::string text;
    for (int i = 8; i >= 0; --i) text += static_cast<char>('0' + (dc >> i & 1));
    return text + static_cast<char>('0' + mode) + static_cast<char>('0' + classNo / 2) +
           static_cast<char>('0' + classNo % 2);
}

// A DV segment of 30 blocks that end at once, but for block `which`.
DvSegment segmentWith(std::size_t which, const std::string& codes, const std::string& others, char filler,
                      int mode = 0) {
    std::vector<std::string> heads(30, head(0, mode, 0)), all(30, others);
    all[which] = codes;
    return writeSegment(kDv, heads, all, {0, 0, 0, 0, 0}, [=] { return filler; });
}

TEST(DvSegment, WhatIsWrittenIsRead) {
    std::mt19937_64 random(5);
    long passes[4] = {};
    for (const DvKind* kind : {&kDv, &kDv422, &kDv100})
        for (int round = 0; round < 400; ++round) {
            std::vector<std::vector<int>> wanted;
            const DvSegment segment = randomSegment(*kind, random, &wanted);
            const Decoded d = decode(*kind, segment.bytes);
            std::size_t block = 0;
            for (std::size_t i = 0; i < wanted.size(); ++i) {
                if (kind->dropped[i % static_cast<std::size_t>(kind->blocks)]) continue;
                ++passes[segment.passes[i]];
                const VekDVBlockInfo& info = d.info[block];
                // A block without room has no end, but it keeps what it has; all others are whole.
                EXPECT_EQ(info.end, segment.passes[i]);
                std::vector<int> found, expected = wanted[i];
                for (int k = 1; k < 64; ++k) found.push_back(d.coeffs[64 * block + static_cast<std::size_t>(k)]);
                expected.erase(expected.begin());
                if (segment.passes[i] != 0) {
                    std::sort(found.begin(), found.end());
                    std::sort(expected.begin(), expected.end());
                    EXPECT_EQ(found, expected);
                }
                ++block;
            }
        }
    for (const long count : passes) EXPECT_GT(count, 50);  // every pass, and blocks without an end
}

TEST(DvSegment, FieldsOfABlock) {
    std::vector<std::string> heads, codes(30, "0110");
    const auto dc = [](int i) { return i < 29 ? i * 17 - 256 : 255; };
    for (int i = 0; i < 30; ++i) heads.push_back(head(dc(i), i % 2, i % 4));
    const DvSegment segment = writeSegment(kDv, heads, codes, {0x0f, 0xf0, 0x5a, 0xa5, 0x00}, [] { return '1'; });
    const Decoded d = decode(kDv, segment.bytes);
    constexpr int kQno[5] = {15, 0, 10, 5, 0}, kSta[5] = {0, 15, 5, 10, 0};
    for (int i = 0; i < 30; ++i) {
        const VekDVBlockInfo& info = d.info[static_cast<std::size_t>(i)];
        EXPECT_EQ(d.coeffs[64 * static_cast<std::size_t>(i)], dc(i));
        EXPECT_EQ(info.dctMode, i % 2);
        EXPECT_EQ(info.classNo, i % 4);
        EXPECT_EQ(info.qNo, kQno[i / 6]);
        EXPECT_EQ(info.sta, kSta[i / 6]);
        EXPECT_EQ(info.last, 0);
        EXPECT_EQ(info.end, 1);
    }
}

TEST(DvSegment, ScansOfBothModes) {
    for (const int mode : {0, 1}) {
        std::string codes;
        for (int i = 1; i < 16; ++i) codes += dvCode(0, i);
        const Decoded d = decode(kDv, segmentWith(7, codes + "0110", "0110", '0', mode).bytes);
        for (int i = 1; i < 16; ++i)
            EXPECT_EQ(d.coeffs[64 * 7 + static_cast<std::size_t>((mode == 0 ? kScan88 : kScan248)[i])], i);
        EXPECT_EQ(d.info[7].last, 15);
    }
}

TEST(DvSegment, ConstantBytes) {
    // Zeros: code after code of run 0, level 1, three bits each, and never an end.
    Decoded d = decode(kDv, std::vector<Vek8u>(400, 0));
    for (std::size_t i = 0; i < 30; ++i) {
        EXPECT_EQ(std::count(d.coeffs.begin() + 64 * static_cast<std::ptrdiff_t>(i),
                             d.coeffs.begin() + 64 * static_cast<std::ptrdiff_t>(i + 1), 1),
                  i % 6 < 4 ? 33 : 22);
        EXPECT_EQ(d.info[i].end, 0);
    }
    d = decode(kDv100, std::vector<Vek8u>(400, 0));
    EXPECT_EQ(d.info[7].last, 17);
    // Ones: amplitudes of 255, negative, 16 bits each.
    d = decode(kDv, std::vector<Vek8u>(400, 0xff));
    for (std::size_t i = 0; i < 30; ++i) {
        EXPECT_EQ(d.coeffs[64 * i], -1);
        EXPECT_EQ(d.info[i].dctMode, 1);
        EXPECT_EQ(d.info[i].classNo, 3);
        EXPECT_EQ(d.info[i].last, i % 6 < 4 ? 6 : 4);
    }
}

TEST(DvSegment, RunsPastTheEnd) {
    // 64 coefficients: the last one ends the block as damaged; what follows serves the next block.
    std::string codes;
    for (int i = 0; i < 64; ++i) codes += dvCode(0, 1);
    Decoded d = decode(kDv, segmentWith(0, codes, "0110", '1').bytes);
    EXPECT_EQ(d.info[0].end, 4);
    EXPECT_EQ(d.info[0].last, 63);
    EXPECT_EQ(std::count(d.coeffs.begin(), d.coeffs.begin() + 64, 1), 63);
    // Runs of 63 and 62 zeros, and an amplitude of zero.
    d = decode(kDv, segmentWith(0, "1111110111111", "0110", '0').bytes);
    EXPECT_EQ(d.info[0].end, 4);
    d = decode(kDv, segmentWith(0, std::string("1111110111110") + "0110", "0110", '0').bytes);
    EXPECT_EQ(d.info[0].end, 1);
    EXPECT_EQ(d.info[0].last, 0);
    d = decode(kDv, segmentWith(0, std::string("1111111") + "000000000" + dvCode(0, -5) + "0110", "0110", '0').bytes);
    EXPECT_EQ(d.info[0].last, 2);
    EXPECT_EQ(d.coeffs[8], -5);
}

TEST(DvSegment, CodesCutByTheAreasEnd) {
    // A code of 16 bits of which 1 to 15 stand in the block's own area, the others behind another block's end, of the
    // same macroblock or of another one.
    for (int inside = 1; inside < 16; ++inside) {
        // 3-bit codes and one of 4 or 5 bits to fill up.
        const int fill = 100 - inside;
        std::string codes;
        const int rest = fill % 3;
        codes += rest == 1 ? dvCode(0, 2) : rest == 2 ? dvCode(1, 1) : "";
        while (static_cast<int>(codes.size()) < fill) codes += dvCode(0, 1);
        ASSERT_EQ(static_cast<int>(codes.size()), fill);
        codes += dvCode(0, -200) + "0110";
        const Decoded own = decode(kDv, segmentWith(2, codes, "0110", '0').bytes);
        EXPECT_EQ(own.info[2].end, 2) << inside;
        EXPECT_EQ(std::count(own.coeffs.begin() + 128, own.coeffs.begin() + 192, -200), 1) << inside;
        // The other blocks of the macroblock fill their areas to the last bit.
        std::vector<std::string> heads(30, head(0, 0, 0)), all(30, "0110");
        const auto full = [](int bits) {
            std::string text = bits % 3 == 1 ? "" : bits % 3 == 2 ? dvCode(0, 2) : dvCode(1, 1);
            while (static_cast<int>(text.size()) < bits - 4) text += dvCode(0, 1);
            return text + "0110";
        };
        for (std::size_t b = 0; b < 6; ++b) all[b] = b == 2 ? codes : full(b < 4 ? 100 : 68);
        const DvSegment segment = writeSegment(kDv, heads, all, {0, 0, 0, 0, 0}, [] { return '0'; });
        ASSERT_EQ(segment.passes[2], 3);
        const Decoded other = decode(kDv, segment.bytes);
        EXPECT_EQ(other.info[2].end, 3) << inside;
        EXPECT_EQ(std::count(other.coeffs.begin() + 128, other.coeffs.begin() + 192, -200), 1) << inside;
    }
}

TEST(DvSegment, ChecksAndTable) {
    VekDVHuffmanTable_32s* table = nullptr;
    EXPECT_EQ(vekiHuffmanTableInitAlloc_DV_32s(nullptr), vekStsErrNullPtr);
    ASSERT_EQ(vekiHuffmanTableInitAlloc_DV_32s(&table), vekStsOk);
    EXPECT_EQ(vekiHuffmanTableFree_DV_32s(table), vekStsOk);
    EXPECT_EQ(vekiHuffmanTableFree_DV_32s(nullptr), vekStsErrNullPtr);
}

}  // namespace
