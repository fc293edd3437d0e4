// Coefficient blocks of MPEG-4, H.263 and H.261, read and written. The expected bits come from tables that stand in the
// other direction (support/mpeg4.h) or are spelled out.
#include "coefficient_kinds.h"

namespace {

using namespace vekvc_test;

TEST(Mpeg4Tables, NoWordBeginsAnother) {
    for (const auto table : {Mpeg4Table::inter, Mpeg4Table::intra, Mpeg4Table::advancedIntra, Mpeg4Table::h261,
                             Mpeg4Table::reversibleInter, Mpeg4Table::reversibleIntra}) {
        const bool reversible = table >= Mpeg4Table::reversibleInter && table <= Mpeg4Table::reversibleIntra;
        std::vector<std::string> words;
        for (const Mpeg4Code& code : mpeg4Codes(table)) words.push_back(code.word);
        words.push_back(reversible ? "00001" : table == Mpeg4Table::h261 ? "000001" : "0000011");
        if (table == Mpeg4Table::h261) words.push_back("10");
        for (int direction = 0; direction < (reversible ? 2 : 1); ++direction) {
            std::sort(words.begin(), words.end());
            for (std::size_t i = 1; i < words.size(); ++i) EXPECT_NE(words[i].rfind(words[i - 1], 0), 0u) << words[i];
            for (auto& word : words) {
                if (word == "00001") word = "10000";  // what an escape ends with
                std::reverse(word.begin(), word.end());
            }
        }
    }
}

TEST(Mpeg4Coefficients, ReadsAndWritesEveryCode) {
    for (const Kind& kind : kKinds)
        for (const Mpeg4Code& code : mpeg4Codes(kind.coding.table))
            for (const int sign : {1, -1}) {
                std::vector<Mpeg4Pair> pairs = {{code.run, sign * code.level}};
                if (!code.last && !kind.coding.isH261()) pairs.push_back({0, -1});
                const std::string bits = mpeg4Block(kind.coding, pairs);
                const Levels levels = levelsOf(pairs, kind.start);
                expectBlock(kind, bits, levels, " " + bits);
                EXPECT_EQ(encodeBlock(kind, levels), bits) << kind.name;
            }
}

// Every run with every level up to 80 and some beyond: the escapes at LMAX + 1, RMAX + 1 and all others.
TEST(Mpeg4Coefficients, ReadsAndWritesEveryEscape) {
    for (const Kind& kind : kKinds)
        for (int run = 0; run < 64 - kind.start; ++run)
            for (int size = 1; size <= kind.coding.largestLevel(); size += size < 80 ? 1 : 1 + size / 7) {
                const std::vector<Mpeg4Pair> pairs = {{run, size % 2 == 0 ? size : -size}};
                const std::string bits = mpeg4Block(kind.coding, pairs);
                const Levels levels = levelsOf(pairs, kind.start);
                ASSERT_EQ(encodeBlock(kind, levels, size % 8), bits) << kind.name << " " << run << " " << size;
                for (const auto way : {Mpeg4Way::type1, Mpeg4Way::type2, Mpeg4Way::type3}) {
                    const std::string other = mpeg4Symbol(kind.coding, way, !kind.coding.isH261(), run, pairs[0].level);
                    if (!other.empty())
                        expectBlock(kind, other + (kind.coding.isH261() ? "10" : ""), levels, " " + other);
                }
            }
}

TEST(Mpeg4Coefficients, EscapesAsSpelledOut) {
    const auto inter = [](const std::string& bits) { return decode(kKinds[kInter].decode, bits); };
    // Type 1: (last 1, run 1) has levels up to 2. Type 2: (last 0, |level| 12) has run 0 alone, then 0111 ends the
    // block.
    EXPECT_EQ(inter("0000011 0 001111 1").block[1], -3);
    EXPECT_EQ(inter("0000011 10 00000100000 0 0111 0").block[1], 12);
    EXPECT_EQ(inter("0000011 11 1 111111 1 100000000001 1").block[63], -2047);
    // It could be type 1 as well: LMAX is 6, and level 6 has one bit more. Of two equal lengths type 1 is written.
    EXPECT_EQ(encodeBlock(kKinds[kInter], levelsOf({{1, 12}, {0, 1}}, 0)), joined("0000011 0 000001010000 0 01110"));
    const auto reversible = [](const std::string& bits) { return decode(kKinds[kInterRvlc].decode, bits); };
    EXPECT_EQ(reversible("00001 1 111111 1 11111111111 10000 1").block[63], -2047);
    const auto modified = [](const std::string& bits) { return decode(kKinds[kModifiedH263].decode, bits); };
    // -1000 is 110000 11000 in 11 bits; the low five come first.
    EXPECT_EQ(modified("0000011 1 000000 10000000 11000 100000").block[0], -1000);
    const auto h261 = [](const std::string& bits) { return decode(kKinds[kInterH261].decode, bits); };
    EXPECT_EQ(h261("000001 111111 10000001 10").block[63], -127);
    EXPECT_EQ(h261("11 110 10").block[0],
              -1);  // 1s, then 11s
    EXPECT_EQ(h261("11 110 10").block[1], 1);
}

TEST(Mpeg4Coefficients, RefusesWhatIsNoBlock) {
    const struct {
        KindNumber kind;
        const char* bits;
    } faults[] = {
        {kInter, "000000000"},                             // no code
        {kInter, "0000011 0 0000011 0"},                   // an escape within type 1
        {kInter, "0000011 10 0000011 0"},                  // and within type 2
        {kInter, "0000011 11 1 000000 0 000000000001 1"},  // markers
        {kInter, "0000011 11 1 000000 1 000000000001 0"},
        {kInter, "0000011 11 1 000000 1 000000000000 1"},  // level 0
        {kInter, "0000011 11 1 000000 1 100000000000 1"},  // level -2048
        {kInterRvlc, "0000 0"},
        {kInterRvlc, "011111110111100 0"},                     // a word of the right form, but not in the table
        {kInterRvlc, "00001 1 000000 0 00000000001 10000 0"},  // the marker, each bit of 10000, level 0
        {kInterRvlc, "00001 1 000000 1 00000000001 00000 0"},
        {kInterRvlc, "00001 1 000000 1 00000000001 10001 0"},
        {kInterRvlc, "00001 1 000000 1 00000000001 11000 0"},
        {kInterRvlc, "00001 1 000000 1 00000000000 10000 0"},
        {kInterH263, "0000011 1 000000 00000000"},
        {kInterH263, "0000011 1 000000 10000000"},  // -128 without modified quantization
        {kModifiedH263, "0000011 1 000000 10000000 00000 000000"},
        {kIntraH261, "000001 000000 00000000"},
        {kIntraH261, "000001 000000 10000000"},
        {kInterH261, "0000000000"},
    };
    for (const auto& fault : faults)
        expectFault(decode(kKinds[fault.kind].decode, fault.bits), std::string(kKinds[fault.kind].name) + fault.bits);
}

TEST(Mpeg4Coefficients, FillsTheWholeBlockAndNoMore) {
    for (const Kind& kind : kKinds) {
        std::vector<Mpeg4Pair> pairs(static_cast<std::size_t>(64 - kind.start), {0, 1});
        const Levels levels = levelsOf(pairs, kind.start);
        const std::string bits = mpeg4Block(kind.coding, pairs);
        expectBlock(kind, bits, levels, " full");
        EXPECT_EQ(encodeBlock(kind, levels), bits);
        pairs.push_back({0, 1});
        expectFault(decode(kind.decode, mpeg4Block(kind.coding, pairs)), std::string(kind.name) + " one too many");
        expectFault(decode(kind.decode, mpeg4Block(kind.coding, {{1, 1}, {63 - kind.start, 1}})),
                    std::string(kind.name) + " a run too long");
    }
}

TEST(Mpeg4Coefficients, RoundTripsRandomBlocksInAllScans) {
    std::mt19937_64 random(4);
    for (int n = 0; n < 3000; ++n) {
        const Kind& kind = kKinds[static_cast<std::size_t>(n) % std::size(kKinds)];
        const auto pairs = randomMpeg4Pairs(random, kind.start, kind.coding.largestLevel());
        const Levels levels = levelsOf(pairs, kind.start);
        EXPECT_EQ(encodeBlock(kind, levels, n % 8), mpeg4Block(kind.coding, pairs)) << kind.name;
        expectBlock(kind, mpeg4BlockAnyWay(kind.coding, pairs, random), levels, "");
        for (const Vek32s scan : {1, 2}) {
            const auto block = raster(levels, scan);
            if (kind.start == 0 && kind.coding.table == Mpeg4Table::inter && kind.coding.syntax == Syntax::mpeg4) {
                const std::string bits = encode(
                    [&](Vek8u** s, Vek32s* o) { return vekiEncodeCoeffsInter_MPEG4_16s1u(s, o, block.data(), scan); });
                EXPECT_EQ(bits, mpeg4Block(kind.coding, pairs));
                EXPECT_EQ(decode([&](Vek8u** s, Vek32s* o, Vek16s* b,
                                     Vek32s* i) { return vekiDecodeCoeffsInter_MPEG4_1u16s(s, o, b, i, scan); },
                                 bits)
                              .block,
                          block);
            }
        }
    }
}

TEST(Mpeg4Coefficients, LimitsLevelsThatNoCodeHolds) {
    for (const Kind& kind : kKinds) {
        const auto most = static_cast<Vek16s>(kind.coding.largestLevel());
        EXPECT_EQ(encodeBlock(kind, levelsOf({{1, 32767}, {0, -32768}}, kind.start)),
                  mpeg4Block(kind.coding, {{1, most}, {0, -most}}))
            << kind.name;
    }
}

TEST(Mpeg4Coefficients, WritesNothingForAnEmptyBlock) {
    for (const Kind& kind : kKinds) {
        const std::string end = kind.coding.syntax == Syntax::h261Intra ? "10" : "";
        Levels levels = {};
        levels[0] = kind.start == 1 ? 77 : 0;
        EXPECT_EQ(encodeBlock(kind, levels, 5), end) << kind.name;
        if (!end.empty()) expectBlock(kind, end, {}, " empty");
    }
    // 11s, EOB: five bits from offset 3 end with the byte.
    Levels one = {};
    one[1] = 1;
    EXPECT_EQ(encodeBlock(kKinds[kIntraH261], one, 3), "11010");
}

// ---- annex S

TEST(Mpeg4Coefficients, TakesTheOtherTableOnlyWhereTheFirstOneLeadsTooFar) {
    const auto alternative = DECODE(vekiDecodeCoeffsInter_H263_1u16s(s, o, b, i, 1, 0));
    const Mpeg4Coding first{Syntax::h263, Mpeg4Table::inter}, other{Syntax::h263, Mpeg4Table::advancedIntra};
    // 000001010111 is level 21 in table I.2, run 26 in table 16: three of them are too many for the latter.
    const std::vector<Mpeg4Pair> pairs = {{0, 21}, {0, -21}, {0, 21}, {0, 1}};
    const std::string bits = mpeg4Block(other, pairs);
    expectFault(decode(kKinds[kInterH263].decode, bits), "table 16");
    Decoded d = decode(alternative, bits);
    EXPECT_EQ(d.status, vekStsOk);
    EXPECT_EQ(d.block, raster(levelsOf(pairs, 0)));
    EXPECT_EQ(d.last, 3);
    EXPECT_EQ(d.moved, static_cast<std::ptrdiff_t>(bits.size()));
    const std::vector<Mpeg4Pair> both = {{0, 2}, {3, -1}};
    EXPECT_EQ(decode(alternative, mpeg4Block(first, both)).block, raster(levelsOf(both, 0)));
    expectFault(decode(alternative, mpeg4Block(first, {{63, 1}, {63, 1}})), "too long by both tables");
    expectFault(decode(alternative, "00000110000000 00000000"), "no second try for another fault");
}

// ---- backward

struct Reversible {
    Mpeg4Coding coding;
    int start;
    VekStatus (*forward)(Vek8u**, Vek32s*, Vek16s*, Vek32s*);
    VekStatus (*backward)(Vek8u**, Vek32s*, Vek32s, Vek16s*, Vek32s*);
};
const Reversible kReversibles[] = {
    {kKinds[kIntraRvlc].coding, 0, kKinds[kIntraRvlc].decode,
     [](Vek8u** s, Vek32s* o, Vek32s n, Vek16s* b, Vek32s* i) {
         return vekiDecodeCoeffsIntraRVLCBackward_MPEG4_1u16s(s, o, n, b, i, 0, 0);
     }},
    {kKinds[kIntraAcRvlc].coding, 1, kKinds[kIntraAcRvlc].decode,
     [](Vek8u** s, Vek32s* o, Vek32s n, Vek16s* b, Vek32s* i) {
         return vekiDecodeCoeffsIntraRVLCBackward_MPEG4_1u16s(s, o, n, b, i, 1, 0);
     }},
    {kKinds[kInterRvlc].coding, 0, kKinds[kInterRvlc].decode,
     [](Vek8u** s, Vek32s* o, Vek32s n, Vek16s* b, Vek32s* i) {
         return vekiDecodeCoeffsInterRVLCBackward_MPEG4_1u16s(s, o, n, b, i, 0);
     }},
};

// Reads the last block of the bits, `numBits` of which may be looked at.
Decoded decodeBackward(const Reversible& kind, const std::string& bits, std::size_t numBits, std::size_t pad) {
    auto bytes = packBytes(std::string(pad, '0') + bits, '0');
    bytes.push_back(0xff);
    const auto end = static_cast<std::ptrdiff_t>(pad + bits.size());
    Vek8u* stream = bytes.data() + end / 8;
    auto offset = static_cast<Vek32s>(end % 8);
    Decoded d = {};
    d.block.fill(99), d.last = -7;
    d.status = kind.backward(&stream, &offset, static_cast<Vek32s>(numBits), d.block.data(), &d.last);
    d.moved = 8 * (stream - bytes.data()) + offset - end;
    return d;
}

TEST(Mpeg4Coefficients, ReadsReversibleBlocksFromTheirEnd) {
    std::mt19937_64 random(6);
    for (int n = 0; n < 3000; ++n) {
        const Reversible& kind = kReversibles[n % 3];
        const std::string before = mpeg4BlockAnyWay(kind.coding, randomMpeg4Pairs(random, kind.start, 2047), random);
        const std::string bits = mpeg4BlockAnyWay(kind.coding, randomMpeg4Pairs(random, kind.start, 2047), random);
        const Decoded forward = decode(kind.forward, bits);
        ASSERT_EQ(forward.status, vekStsOk);
        const std::size_t whole = before.size() + bits.size();
        for (const std::size_t numBits : {bits.size(), whole}) {
            const Decoded d = decodeBackward(kind, before + bits, numBits, random() % 8);
            ASSERT_EQ(d.status, vekStsOk) << bits;
            EXPECT_EQ(d.block, forward.block);
            EXPECT_EQ(d.last, forward.last);
            EXPECT_EQ(d.moved, -forward.moved);
        }
        // A symbol that is cut off, of this block or the one before it.
        expectFault(decodeBackward(kind, before + bits, bits.size() - 1, 0), "cut: " + bits);
        expectFault(decodeBackward(kind, before + bits, bits.size() + 1, 0), "cut before: " + bits);
    }
}

TEST(Mpeg4Coefficients, ReadsEveryReversibleCodeFromItsEnd) {
    for (const Reversible& kind : kReversibles)
        for (const Mpeg4Code& code : mpeg4Codes(kind.coding.table)) {
            std::vector<Mpeg4Pair> pairs = {{code.run, -code.level}};
            if (!code.last) pairs.push_back({0, 1});
            const std::string bits = mpeg4Block(kind.coding, pairs);
            EXPECT_EQ(decodeBackward(kind, bits, bits.size(), 5).block, decode(kind.forward, bits).block) << bits;
        }
    const Reversible& inter = kReversibles[2];
    const Mpeg4Coding& coding = inter.coding;
    expectFault(decodeBackward(inter, mpeg4Symbol(coding, false, 0, 1), 4, 0), "not last");
    const std::string escape = mpeg4Symbol(coding, Mpeg4Way::type3, true, 63, 5);
    EXPECT_EQ(decodeBackward(inter, escape, escape.size(), 1).last, 63);
    expectFault(decodeBackward(inter, mpeg4Symbol(coding, Mpeg4Way::type3, false, 0, 5) + escape, 60, 0), "too long");
    for (const int fixed : {0, 1, 2, 3, 4, 12, 24, 25, 26, 27, 28}) {
        std::string damaged = escape;
        damaged[static_cast<std::size_t>(fixed)] ^= 1;
        EXPECT_NE(decodeBackward(inter, damaged, damaged.size(), 1).last, 63) << fixed;
    }
}

}  // namespace
