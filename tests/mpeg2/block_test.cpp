// MPEG-1/MPEG-2 blocks: writers against readers, known streams, and the corners of inverse quantization.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "support/mpeg2.h"

namespace {

using namespace vekvc_test;

using Block = std::vector<Vek16s>;

struct Weights {
    Vek16s w[64];
    explicit Weights(Vek16s all) { std::fill_n(w, 64, all); }
};

// One call of a block decoder on a stream that starts at bit `offset`.
struct Decoded {
    Block block = Block(64, 99);
    Vek32s size = -1;
    Vek16s pred;
    VekStatus status;
    std::string consumed;

    Decoded(const BitWriter& stream, Vek32s offset, bool intra, bool mpeg2, Vek32s QP, const Vek16s* weights,
            int table = 0, Vek16s pred_ = 0, Vek32s shift = 0, char fill = '0')
        : pred(pred_) {
        auto words = stream.words(offset, fill);
        Vek32u* word = words.data();
        Vek32s bit = offset;
        const Mpeg2Tables& t = mpeg2Tables();
        const Vek32s* ac = t.coefficients[table];
        const Vek32s* scan = zigzag8x8();
        if (intra && mpeg2)
            status = vekiReconstructDCTBlockIntra_MPEG2_32s(&word, &bit, t.dcSize, ac, scan, QP, weights, &pred, shift,
                                                            block.data(), &size);
        else if (intra)
            status = vekiReconstructDCTBlockIntra_MPEG1_32s(&word, &bit, t.dcSize, ac, scan, QP, weights, &pred,
                                                            block.data(), &size);
        else
            status = (mpeg2 ? vekiReconstructDCTBlock_MPEG2_32s : vekiReconstructDCTBlock_MPEG1_32s)(
                &word, &bit, ac, ac, scan, QP, weights, block.data(), &size);
        consumed = bitsUpTo(words, offset, word, bit);
    }
};

BitWriter bits(std::string_view text) {
    BitWriter writer;
    for (const char c : text)
        if (c != ' ') writer.bits += c;
    return writer;
}

// Random blocks through the writers and back, at every start bit, with both tables. The words around what is written
// keep their values.
TEST(Mpeg2Block, WritersAndReaders) {
    std::mt19937 random(11);
    const Mpeg2Tables& t = mpeg2Tables();
    const Vek32s* scan = zigzag8x8();
    const Weights sixteen(16);
    for (int round = 0; round < 6000; ++round) {
        const Vek32s offset = round % 32;
        const bool intra = random() % 2 == 0;
        const int table = intra ? static_cast<int>(random() % 2) : 0;  // Table B.15 is for intra blocks alone
        const auto density = random() % 9;
        const unsigned largest = std::vector<unsigned>{1, 3, 40, 127, 2047}[random() % 5];
        Block levels(64, 0);
        Vek32s count = 0;
        for (std::size_t i = intra ? 1 : 0; i < 64; ++i) {
            if (random() % 64 >= density * density) continue;
            const int level = static_cast<int>(random() % largest) + 1;
            levels[i] = static_cast<Vek16s>(random() % 2 ? level : -level);
            ++count;
        }
        if (!intra && count == 0) continue;  // not a block: its end would read as the short code of a coefficient
        if (intra) levels[0] = static_cast<Vek16s>(random() % 256);
        const Vek16s predBefore = static_cast<Vek16s>(random() % 256);
        Vek32s pred = predBefore;

        std::vector<Vek32u> words(60);
        for (auto& word : words) word = static_cast<Vek32u>(random());
        const auto before = words;
        Vek32u* word = words.data();
        Vek32s bit = offset;
        const std::string_view end = vekvc_tables::kDctEndOfBlock[table];
        const auto endLength = static_cast<Vek32s>(end.size());
        const Vek32s endCode = vekvc_tables::codeBits(end);
        ASSERT_EQ(
            intra ? vekiPutIntraBlock(&word, &bit, levels.data(), &pred, t.dcSizeCodes, t.encode[table], scan,
                                      endLength, endCode, count)
                  : vekiPutNonIntraBlock(&word, &bit, levels.data(), t.encode[table], scan, endLength, endCode, count),
            vekStsOk);
        const std::string written = bitsUpTo(words, offset, word, bit);
        const auto first = 31 - static_cast<std::size_t>(offset);
        for (std::size_t i = 0; i < 32 * words.size(); ++i) {
            const auto at = [&](const auto& w) { return w[i / 32] >> (31 - i % 32) & 1; };
            if (i < first || i >= first + written.size()) {
                ASSERT_EQ(at(words), at(before)) << i;
            }
        }
        ASSERT_EQ(pred, intra ? levels[0] : predBefore);

        BitWriter stream;
        stream.put(written);
        // QP 8 and weights 16 make 2 * level * QP * W / 32 = 8 * level, and 4 more for non-intra.
        const Decoded d(stream, offset, intra, true, 8, sixteen.w, table, predBefore, 0, round % 2 ? '1' : '0');
        ASSERT_EQ(d.status, vekStsOk) << written;
        ASSERT_EQ(d.consumed, written);
        int last = 0;
        Vek32s sum = 0;
        Block expected(64);
        for (int i = 0; i < 64; ++i) {
            const auto p = static_cast<std::size_t>(scan[i]);
            const Vek16s level = levels[p];
            const int sign = level > 0 ? 1 : level < 0 ? -1 : 0;
            expected[p] = static_cast<Vek16s>(intra ? (i == 0 ? level : 8 * level) : 8 * level + 4 * sign);
            if (level != 0) last = i;
            sum += expected[p];
        }
        if (sum % 2 == 0) expected[63] = static_cast<Vek16s>(expected[63] ^ 1);
        ASSERT_EQ(d.block, expected) << written;
        ASSERT_EQ(d.size, last);
        ASSERT_EQ(d.pred, intra ? levels[0] : predBefore);
    }
}

TEST(Mpeg2Block, KnownStreams) {
    const Weights w(16);
    // Table B.14, first coefficient short code -1, then run 1 level 2 (000110 0), end of block.
    Decoded d(bits("11 0001100 10"), 31, false, true, 2, w.w);
    EXPECT_EQ(d.status, vekStsOk);
    EXPECT_EQ(d.size, 2);
    EXPECT_EQ(d.block[0], -3);                                        // -3 * 16 * 2 / 32
    EXPECT_EQ(d.block[static_cast<std::size_t>(zigzag8x8()[2])], 5);  // 5 * 16 * 2 / 32
    EXPECT_EQ(d.block[63], 1);                                        // the sum is even
    // A first coefficient that lands at scan index 0.
    d = Decoded(bits("01001 10"), 5, false, true, 1, w.w);  // run 0, level -2: -5 * 16 / 32 = -2.5
    EXPECT_EQ(d.size, 0);
    EXPECT_EQ(d.block[0], -2);
    // No coefficient at all cannot be told from the short code 10; Table B.15 has another end of block.
    d = Decoded(bits("0110"), 0, false, true, 1, w.w, 1);
    EXPECT_EQ(d.status, vekStsOk);
    EXPECT_EQ(d.size, 0);
    EXPECT_EQ(d.block[63], 1);
    // An intra block of the DC alone: size 3 (101), difference 101 = 5; an even shifted DC flips block[63].
    d = Decoded(bits("101 101 10"), 31, true, true, 9, w.w, 0, 100, 3);
    EXPECT_EQ(d.pred, 105);
    EXPECT_EQ(d.block[0], 840);
    EXPECT_EQ(d.block[63], 1);
    EXPECT_EQ(d.size, 0);
    d = Decoded(bits("101 010 10"), 31, true, true, 9, w.w, 0, 100, 0);  // 010: -5
    EXPECT_EQ(d.block[0], 95);
    EXPECT_EQ(d.block[63], 0);
    d = Decoded(bits("101 010 10"), 31, true, true, 9, w.w, 0, 4, 4);  // a negative DC shifts as its pattern does
    EXPECT_EQ(d.block[0], -16);
    d = Decoded(bits("101 101 10"), 31, true, false, 9, w.w, 0, 32767);  // MPEG-1: 8 * 5, at 16 bits
    EXPECT_EQ(d.block[0], static_cast<Vek16s>(32767 + 40));
    EXPECT_EQ(d.pred, d.block[0]);
    EXPECT_EQ(d.block[63], 0);  // no mismatch control
}

// The table's codes are used up to its largest run and levels (Table B.14).
TEST(Mpeg2Block, WritersUseTheWholeTable) {
    const auto written = [](int scanIndex, int level) {
        Block levels(64, 0);
        levels[static_cast<std::size_t>(zigzag8x8()[scanIndex])] = static_cast<Vek16s>(level);
        std::vector<Vek32u> words(4);
        Vek32u* word = words.data();
        Vek32s bit = 31;
        EXPECT_EQ(vekiPutNonIntraBlock(&word, &bit, levels.data(), mpeg2Tables().encode[0], zigzag8x8(), 2, 2, 1),
                  vekStsOk);
        return bitsUpTo(words, 31, word, bit);
    };
    EXPECT_EQ(written(31, -1),
              "0000000000011011"
              "1"
              "10");  // run 31
    EXPECT_EQ(written(32, 1),
              "000001"
              "100000"
              "000000000001"
              "10");
    EXPECT_EQ(written(0, 40),
              "000000000010000"
              "0"
              "10");
    EXPECT_EQ(written(0, -40),
              "000000000010000"
              "1"
              "10");
    EXPECT_EQ(written(0, 41),
              "000001"
              "000000"
              "000000101001"
              "10");
}

// Escapes: MPEG-1 levels of 8 or 16 bits, MPEG-2 levels of 12.
TEST(Mpeg2Block, Escapes) {
    const Weights w(16);
    const auto level = [&](bool mpeg2, std::string_view text) {
        const Decoded d(bits(std::string("000001 000000 ") + std::string(text) + " 10"), 17, false, mpeg2, 8, w.w);
        EXPECT_EQ(d.status, vekStsOk);
        return d.block[0];
    };
    // MPEG-2: 8 * level + 4 * sign. MPEG-1: 16 * level + 8 * sign, made odd toward zero.
    EXPECT_EQ(level(true, "000001100100"), 804);
    EXPECT_EQ(level(true, "111110011100"), -804);
    EXPECT_EQ(level(true, "100000000000"), -16388);
    EXPECT_EQ(level(false, "01100100"), 1607);
    EXPECT_EQ(level(false, "10011100"), -1607);
    EXPECT_EQ(level(false, "10000001"), -2039);           // -127
    EXPECT_EQ(level(false, "00000000 10000000"), 2047);   // 128: limited
    EXPECT_EQ(level(false, "10000000 10000000"), -2048);  // -128
    EXPECT_EQ(level(false, "10000000 00000001"), -2048);  // -255
    EXPECT_EQ(level(false, "00000000 00000001"), 23);     // 1 written long
    EXPECT_EQ(level(false, "00000000 00000000"), 0);
}

// Wrapping, oddification and limits, all through one coefficient of level 1 (first, non-intra) or AC level (intra).
TEST(Mpeg2Block, InverseQuantizationCorners) {
    const auto first = [](bool mpeg2, Vek32s QP, Vek16s weight, std::string_view code = "10") {
        const Weights w(weight);
        return Decoded(bits(std::string(code) + "10"), 31, false, mpeg2, QP, w.w).block[0];
    };
    EXPECT_EQ(first(true, 1, 10), 0);  // 30 / 32
    EXPECT_EQ(first(true, 1, 11), 1);  // 33 / 32
    EXPECT_EQ(first(true, 1, 11, "11"), -1);
    EXPECT_EQ(first(true, 32768, 11), 3 * 11 * 1024 - 65536 * 1);                 // 33792: wraps at 16 bits
    EXPECT_EQ(first(true, 1 << 30, 2), static_cast<Vek16s>(-2147483648LL / 32));  // the product wraps at 32 bits
    EXPECT_EQ(first(false, 1, 5), 0);                                             // 15 / 16
    EXPECT_EQ(first(false, 2, 8), 3);                                             // 48 / 16
    EXPECT_EQ(first(false, 2, 11), 3);                                            // 66 / 16 = 4, made odd
    EXPECT_EQ(first(false, 2, 11, "11"), -3);
    EXPECT_EQ(first(false, 1000, 16), 2047);
    EXPECT_EQ(first(false, 1000, 16, "11"), -2048);
}

TEST(Mpeg2Block, BrokenStreams) {
    const Weights w(16);
    for (const Vek32s offset : {31, 8, 0}) {
        // No code: the lookup reads as run 241 and hands one bit back.
        Decoded d(bits("10 0000000000000000 1"), offset, false, true, 4, w.w);
        EXPECT_EQ(d.status, vekStsErrVlcData);
        EXPECT_EQ(d.consumed,
                  "10"
                  "0000000000000000");  // 17 bits looked up, one back
        EXPECT_EQ(d.size, -1);
        EXPECT_EQ(d.block[0], 6);
        EXPECT_EQ(d.block[63], 0);  // no mismatch control
        // An escape beyond index 63: the cursor stands behind its level.
        d = Decoded(bits("10 000001 111111 000000000001"), offset, false, true, 4, w.w);
        EXPECT_EQ(d.status, vekStsErrVlcData);
        EXPECT_EQ(d.consumed.size(), 26u);
        d = Decoded(bits("000001 111111 000000000001 10"), offset, false, true, 4, w.w);  // index 63 itself is fine
        EXPECT_EQ(d.status, vekStsOk);
        EXPECT_EQ(d.size, 63);
        EXPECT_EQ(d.block[63], 7);
        d = Decoded(bits("11111111 1 0"), offset, true, true, 4, w.w, 0, 9);  // dct_dc_size 11 without its bits is fine
        EXPECT_EQ(d.status, vekStsErrVlcData);                                // but then only zeros follow
    }
    // A DC size that no table of the standard has.
    for (const Vek32s size : {-1, 33, 127}) {
        const Vek32s list[] = {1, 1, 1, 1, 1, size, -1};
        VekVlcTable_32s* table = nullptr;
        ASSERT_EQ(vekiHuffmanTableInitAlloc_32s(list, &table), vekStsOk);
        for (const Vek32u stream : {0x80000000u, 0u}) {  // the code, and none
            Vek32u words[2] = {stream, 0};
            Vek32u* word = words;
            Vek32s bit = 31, dstSize = -1;
            Vek16s pred = 5, block[64] = {1};
            EXPECT_EQ(vekiReconstructDCTBlockIntra_MPEG2_32s(&word, &bit, table, mpeg2Tables().coefficients[0],
                                                             zigzag8x8(), 1, w.w, &pred, 0, block, &dstSize),
                      vekStsErrVlcData);
            EXPECT_EQ(bit, stream != 0 ? 30 : 31);  // no code hands one bit back
            EXPECT_EQ(pred, 5);
            EXPECT_EQ(block[0], 0);
            EXPECT_EQ(dstSize, -1);
        }
        vekiHuffmanTableFree_32s(table);
    }
}

TEST(Mpeg2Block, SingleCodes) {
    const Mpeg2Tables& t = mpeg2Tables();
    for (Vek32s offset = 0; offset < 32; ++offset) {
        auto words = bits("111111110 000001").words(offset, '1');
        Vek32u* word = words.data();
        Vek32s bit = offset, value = 0;
        EXPECT_EQ(vekiDecodeHuffmanOne_1u32s(&word, &bit, &value, t.dcSize), vekStsOk);
        EXPECT_EQ(value, 10);
        Vek8u run = 0;
        Vek16s level = 1;
        EXPECT_EQ(vekiDecodeHuffmanPair_1u16s(&word, &bit, t.coefficients[0], &run, &level), vekStsOk);
        EXPECT_EQ(run, 255);
        EXPECT_EQ(level, 0);
        EXPECT_EQ(bitsUpTo(words, offset, word, bit), "111111110000001");
        // No code: the pair reader puts the cursor back, the value reader leaves it behind all bits looked up.
        words = bits("00000000000000000").words(offset, '1');
        word = words.data();
        bit = offset;
        EXPECT_EQ(vekiDecodeHuffmanPair_1u16s(&word, &bit, t.coefficients[0], &run, &level), vekStsErrVlcData);
        EXPECT_EQ(bitsBetween(words.data(), offset, word, bit), 0);
        EXPECT_EQ(run, 255);
        EXPECT_EQ(vekiDecodeHuffmanOne_1u32s(&word, &bit, &value, t.coefficients[0]), vekStsErrVlcData);
        EXPECT_EQ(value, 61681);
        EXPECT_EQ(bitsBetween(words.data(), offset, word, bit), 17);
    }
}

// No code of Tables B.12 to B.15 is a prefix of another one, and every run/level pair comes once.
TEST(Mpeg2Tables, CodesArePrefixFree) {
    using namespace vekvc_tables;
    const auto check = [](const auto& list, std::size_t words, int space) {
        struct Entry {
            int length;
            Vek32s code, first, second;
        };
        std::vector<Entry> entries;
        std::size_t at = 2 + static_cast<std::size_t>(list[1]);
        for (int length = 1; list[at] >= 0; ++length) {
            const Vek32s n = list[at++];
            for (Vek32s i = 0; i < n; ++i, at += words)
                entries.push_back({length, list[at], list[at + 1], words == 3 ? list[at + 2] : 0});
        }
        for (const Entry& a : entries) {
            space -= 1 << (17 - a.length);
            for (const Entry& b : entries) {
                if (&a == &b) continue;
                EXPECT_FALSE(a.length <= b.length && b.code >> (b.length - a.length) == a.code) << a.first;
                EXPECT_FALSE(a.first == b.first && a.second == b.second) << a.first << ' ' << a.second;
            }
        }
        EXPECT_EQ(space, 0);
        return entries.size();
    };
    EXPECT_EQ(check(kDcSizeLuminanceList, 2, 1 << 17), 12u);
    EXPECT_EQ(check(kDcSizeChrominanceList, 2, 1 << 17), 12u);
    EXPECT_EQ(check(kDctCoefficientsZeroList, 3, (1 << 17) - 32), 224u);  // a few patterns stay unused
    EXPECT_EQ(check(kDctCoefficientsOneList, 3, (1 << 17) - 288), 224u);
}

}  // namespace
