// CAVLC: encoder's analysis, the test's writer and the decoders against one another, known answers, and the corners of
// the decoding rules.
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>

#include "support/cavlc.h"

namespace {

using namespace vekvc_test;

template <class T>
VekStatus decode(CavlcBlock kind, Vek32u** word, Vek32s* offset, Vek16s* total, T** coeffs, Vek32s nC,
                 Vek16s maxNumCoeff, const Vek32s* scan = kZigzag4x4) {
    CavlcDecodeTables& t = cavlcTables();
    constexpr bool is16 = sizeof(T) == 2;
    if constexpr (is16) {
        if (kind == CavlcBlock::k2x2)
            return vekiDecodeCAVLCChromaDcCoeffs_H264_1u16s(word, offset, total, coeffs, t.coeffToken[3],
                                                            t.totalZeros2x2, t.runBefore);
        if (kind == CavlcBlock::k2x4)
            return vekiDecodeCAVLCChroma422DcCoeffs_H264_1u16s(word, offset, total, coeffs, t.coeffToken[4],
                                                               t.totalZeros2x4, t.runBefore);
        return vekiDecodeCAVLCCoeffs_H264_1u16s(word, offset, total, coeffs, nC, maxNumCoeff, t.coeffToken,
                                                t.totalZeros4x4, t.runBefore, scan);
    } else {
        if (kind == CavlcBlock::k2x2)
            return vekiDecodeCAVLCChromaDcCoeffs_H264_1u32s(word, offset, total, coeffs, t.coeffToken[3],
                                                            t.totalZeros2x2, t.runBefore);
        if (kind == CavlcBlock::k2x4)
            return vekiDecodeCAVLCChroma422DcCoeffs_H264_1u32s(word, offset, total, coeffs, t.coeffToken[4],
                                                               t.totalZeros2x4, t.runBefore);
        return vekiDecodeCAVLCCoeffs_H264_1u32s(word, offset, total, coeffs, nC, maxNumCoeff, t.coeffToken,
                                                t.totalZeros4x4, t.runBefore, scan);
    }
}

template <class T>
CavlcSyntax analyze(CavlcBlock kind, const T* src, Vek8u startIdx = 0, Vek8u lastIdx = 15) {
    CavlcSyntax s;
    T levels[16];
    VekStatus status;
    if constexpr (sizeof(T) == 2) {
        status = kind == CavlcBlock::k2x2
                     ? vekiEncodeChromaDcCoeffsCAVLC_H264_16s(src, &s.trailingOnes, &s.signs, &s.totalCoeff,
                                                              &s.totalZeros, levels, s.runs)
                 : kind == CavlcBlock::k2x4
                     ? vekiEncodeCoeffsCAVLCChromaDC2x4_H264_16s(src, &s.trailingOnes, &s.signs, &s.totalCoeff,
                                                                 &s.totalZeros, levels, s.runs)
                     : vekiEncodeCoeffsCAVLC_H264_16s(src, startIdx, kZigzag4x4, lastIdx, &s.trailingOnes, &s.signs,
                                                      &s.totalCoeff, &s.totalZeros, levels, s.runs);
    } else {
        status = kind == CavlcBlock::k2x2
                     ? vekiEncodeCoeffsCAVLCChromaDC2x2_H264_32s(src, &s.trailingOnes, &s.signs, &s.totalCoeff,
                                                                 &s.totalZeros, levels, s.runs)
                 : kind == CavlcBlock::k2x4
                     ? vekiEncodeCoeffsCAVLCChromaDC2x4_H264_32s(src, &s.trailingOnes, &s.signs, &s.totalCoeff,
                                                                 &s.totalZeros, levels, s.runs)
                     : vekiEncodeCoeffsCAVLC_H264_32s(src, startIdx, kZigzag4x4, lastIdx, &s.trailingOnes, &s.signs,
                                                      &s.totalCoeff, &s.totalZeros, levels, s.runs);
    }
    EXPECT_EQ(status, vekStsOk);
    std::copy_n(levels, s.totalCoeff - s.trailingOnes, s.levels);
    return s;
}

// One call of a decoder on a stream that starts at bit `offset`.
template <class T>
struct Decoded {
    std::vector<T> coeffs = std::vector<T>(20, T{77});
    Vek16s total = -1;
    VekStatus status;
    std::ptrdiff_t bits;      // consumed
    std::ptrdiff_t advanced;  // coefficients

    Decoded(const BitWriter& stream, Vek32s offset, CavlcBlock kind, Vek32s nC = 0, Vek16s maxNumCoeff = 16,
            char fill = '0', const Vek32s* scan = kZigzag4x4) {
        auto words = stream.words(offset, fill);
        Vek32u* word = words.data();
        Vek32s bit = offset;
        T* next = coeffs.data();
        status = decode<T>(kind, &word, &bit, &total, &next, nC, maxNumCoeff, scan);
        bits = bitsBetween(words.data(), offset, word, bit);
        advanced = next - coeffs.data();
    }
};

template <class T>
class Cavlc : public testing::Test {};
using Elements = testing::Types<Vek16s, Vek32s>;
TYPED_TEST_SUITE(Cavlc, Elements);

// Blocks of every fill and level size, at every start bit, through analysis, writer and decoder.
TYPED_TEST(Cavlc, RoundTrip) {
    using T = TypeParam;
    std::mt19937 random(7);
    const auto uniform = [&](int low, int high) { return low + static_cast<int>(random() % (high - low + 1u)); };
    struct Case {
        CavlcBlock kind;
        int size, nC;
        Vek16s maxNumCoeff;
    };
    std::vector<Case> cases = {{CavlcBlock::k2x2, 4, -1, 4}, {CavlcBlock::k2x4, 8, -2, 8}};
    for (const int nC : {0, 1, 2, 3, 4, 7, 8, 16}) {
        cases.push_back({CavlcBlock::k4x4, 16, nC, 16});
        cases.push_back({CavlcBlock::k4x4, 16, nC, 15});
    }
    for (const Case& c : cases) {
        for (int round = 0; round < 1500; ++round) {
            const Vek32s offset = round % 32;
            const int density = uniform(0, 10), magnitude = std::vector{1, 2, 8, 80, 2000, 32767}[random() % 6];
            const int first = c.kind == CavlcBlock::k4x4 ? 16 - c.maxNumCoeff : 0;
            std::vector<T> block(16, 0);
            for (int i = first; i < c.size; ++i) {
                if (uniform(1, 10) > density) continue;
                const int level = std::max(1, uniform(1, magnitude) >> uniform(0, 12));
                block[c.size == 16 ? static_cast<std::size_t>(kZigzag4x4[i]) : static_cast<std::size_t>(i)] =
                    static_cast<T>(random() % 2 ? level : -level);
            }
            const CavlcSyntax syntax = analyze(c.kind, block.data(), static_cast<Vek8u>(first));
            BitWriter stream;
            putCavlcBlock(stream, syntax, c.kind, c.nC, c.maxNumCoeff);
            const Decoded<T> d(stream, offset, c.kind, c.nC, c.maxNumCoeff, round % 2 ? '1' : '0');
            ASSERT_EQ(d.status, vekStsOk) << "nC " << c.nC << " " << stream.bits;
            ASSERT_EQ(d.bits, static_cast<std::ptrdiff_t>(stream.bits.size())) << stream.bits;
            ASSERT_EQ(d.total, syntax.totalCoeff);
            ASSERT_EQ(d.advanced, d.total == 0 ? 0 : c.size);
            auto expected = std::vector<T>(20, T{77});
            if (d.total != 0) std::copy_n(block.begin(), c.size, expected.begin());
            ASSERT_EQ(d.coeffs, expected) << stream.bits;
        }
    }
}

// A block that textbooks on the standard work through bit by bit.
TYPED_TEST(Cavlc, KnownBlock) {
    using T = TypeParam;
    const T block[16] = {0, 3, -1, 0, 0, -1, 1, 0, 1, 0, 0, 0, 0, 0, 0, 0};
    const CavlcSyntax s = analyze(CavlcBlock::k4x4, block);
    EXPECT_EQ(s.totalCoeff, 5);
    EXPECT_EQ(s.trailingOnes, 3);
    EXPECT_EQ(s.signs, 0b011);
    EXPECT_EQ(s.totalZeros, 3);
    EXPECT_EQ(std::vector<int>(s.levels, s.levels + 2), (std::vector{1, 3}));
    EXPECT_EQ(std::vector<int>(s.runs, s.runs + 4), (std::vector{1, 0, 0, 1}));
    BitWriter stream;
    stream.put(
        "0000100"
        "011"
        "1"
        "0010"
        "111"
        "10"
        "1"
        "1"
        "01");
    const Decoded<T> d(stream, 31, CavlcBlock::k4x4);
    EXPECT_EQ(d.status, vekStsOk);
    EXPECT_EQ(d.bits, 24);
    EXPECT_TRUE(std::equal(block, block + 16, d.coeffs.begin()));
}

TYPED_TEST(Cavlc, AnalysisCorners) {
    using T = TypeParam;
    const auto syntax = [](std::initializer_list<int> c, Vek8u first = 0, Vek8u last = 15) {
        T block[16] = {};
        std::size_t i = 0;
        for (const int level : c) block[kZigzag4x4[i++]] = static_cast<T>(level);
        return analyze(CavlcBlock::k4x4, block, first, last);
    };
    CavlcSyntax s = syntax({}, 3, 9);
    EXPECT_EQ(s.totalCoeff, 0);
    EXPECT_EQ(s.trailingOnes, 0);
    EXPECT_EQ(s.totalZeros, 7);  // lastIdx - startIdx + 1
    s = syntax({1, 1, 1, 1});
    EXPECT_EQ(s.trailingOnes, 3);
    EXPECT_EQ(s.levels[0], 1);
    s = syntax({-1, 0, 5, 0, 0, -1});  // the -1 below the 5 is a level
    EXPECT_EQ(s.trailingOnes, 1);
    EXPECT_EQ(s.signs, 1);
    EXPECT_EQ(std::vector<int>(s.levels, s.levels + 2), (std::vector{5, -1}));
    EXPECT_EQ(std::vector<int>(s.runs, s.runs + 2), (std::vector{2, 1}));
    EXPECT_EQ(s.totalZeros, 3);
    s = syntax({9, 0, -1, 7, 2}, 1, 2);  // levels outside the walk are not seen
    EXPECT_EQ(s.totalCoeff, 1);
    EXPECT_EQ(s.signs, 1);
    EXPECT_EQ(s.totalZeros, 1);
    T least[16] = {};
    least[0] = std::numeric_limits<T>::min();
    EXPECT_EQ(analyze(CavlcBlock::k4x4, least).levels[0], std::numeric_limits<T>::min());
    for (const auto& [first, last] : {std::pair{0, 16}, {5, 4}, {16, 16}, {0, 255}}) {
        Vek8u out[4];
        T levels[16];
        Vek8u runs[16];
        const auto status = [&](auto function) {
            return function(least, static_cast<Vek8u>(first), kZigzag4x4, static_cast<Vek8u>(last), out, out + 1,
                            out + 2, out + 3, levels, runs);
        };
        if constexpr (sizeof(T) == 2)
            EXPECT_EQ(status(vekiEncodeCoeffsCAVLC_H264_16s), vekStsErrOutOfRange);
        else
            EXPECT_EQ(status(vekiEncodeCoeffsCAVLC_H264_32s), vekStsErrOutOfRange);
    }
}

// One coefficient after no trailing one, its level_prefix and suffix given: 9.2.2.1 with levelCode modulo 65536.
TYPED_TEST(Cavlc, EscapeLevels) {
    using T = TypeParam;
    const auto level = [](int prefix, std::uint64_t suffix, int suffixBits) {
        BitWriter stream;
        stream.put("000101");  // nC 0: TotalCoeff 1, no trailing one
        stream.put(1, prefix + 1);
        stream.put(suffix, suffixBits);
        stream.put("1");  // total_zeros 0
        const Decoded<T> d(stream, 13, CavlcBlock::k4x4);
        EXPECT_EQ(d.status, vekStsOk);
        EXPECT_EQ(d.bits, static_cast<std::ptrdiff_t>(stream.bits.size()));
        return static_cast<Vek32s>(d.coeffs[0]);
    };
    EXPECT_EQ(level(13, 0, 0), -8);    // levelCode 13 + 2
    EXPECT_EQ(level(14, 0, 4), 9);     // 14 + 2
    EXPECT_EQ(level(14, 15, 4), -16);  // 29 + 2
    EXPECT_EQ(level(15, 0, 12), 17);   // 30 + 2
    EXPECT_EQ(level(15, 4095, 12), -2064);
    EXPECT_EQ(level(16, 0, 13), 2065);  // 30 + 4096 + 2
    EXPECT_EQ(level(16, 8191, 13), -6160);
    // levelCode = 30 + suffix + 2^16 - 4096 + 2 (prefix 19): 65535, 65534 and, wrapped, 0.
    EXPECT_EQ(level(19, 4063, 16), -32768);
    EXPECT_EQ(level(19, 4062, 16), sizeof(T) == 2 ? -32768 : 32768);
    EXPECT_EQ(level(19, 4064, 16), 1);
    // 2^32 vanishes modulo 2^16, and so does all of the suffix but its low 16 bits.
    EXPECT_EQ(level(35, 0xABCD0000u + 4064, 32), 1);
}

// After an escape of magnitude 32768 suffixLength has risen like after any large level.
TYPED_TEST(Cavlc, LargestLevelRaisesSuffixLength) {
    using T = TypeParam;
    BitWriter stream;
    stream.put("00000111");  // nC 0: TotalCoeff 2
    stream.put(1, 20);
    stream.put(4062, 16);  // levelCode 65534: 32768
    stream.put(
        "1"
        "11");          // suffixLength 2: levelCode 3
    stream.put("111");  // total_zeros 0
    const Decoded<T> d(stream, 31, CavlcBlock::k4x4);
    EXPECT_EQ(d.status, vekStsOk);
    EXPECT_EQ(d.coeffs[0], T{-2});
    EXPECT_EQ(d.coeffs[1], static_cast<T>(32768));
    EXPECT_EQ(d.bits, static_cast<std::ptrdiff_t>(stream.bits.size()));
}

TYPED_TEST(Cavlc, BrokenStreamsPutTheCursorBack) {
    using T = TypeParam;
    for (const Vek32s offset : {31, 16, 0}) {
        BitWriter longPrefix;
        longPrefix.put("000101");
        longPrefix.put(0, 36);
        longPrefix.put("1");
        longPrefix.put(0, 40);
        const Decoded<T> tooLong(longPrefix, offset, CavlcBlock::k4x4);
        EXPECT_EQ(tooLong.status, vekStsErrVlcData);
        EXPECT_EQ(tooLong.bits, 0);
        EXPECT_EQ(tooLong.advanced, 0);
        EXPECT_EQ(tooLong.total, 1);

        BitWriter noToken;
        noToken.put(0, 64);
        const Decoded<T> noCode(noToken, offset, CavlcBlock::k4x4);
        EXPECT_EQ(noCode.status, vekStsErrVlcData);
        EXPECT_EQ(noCode.bits, 0);
        EXPECT_EQ(noCode.total, -1);  // coeff_token itself failed
        EXPECT_EQ(noCode.coeffs[0], T{77});
        BitWriter tooMany;  // 16 coefficients in an AC block
        tooMany.put(63, 6);
        tooMany.put(0xFFFFFFFF, 32);
        const Decoded<T> full(tooMany, offset, CavlcBlock::k4x4, 8, 15);
        EXPECT_EQ(full.status, vekStsErrVlcData);
        EXPECT_EQ(full.bits, 0);
        EXPECT_EQ(full.advanced, 0);
    }
}

// AC blocks: every index is one higher, scan index 0 is not used.
TYPED_TEST(Cavlc, AcBlockStartsAtScanIndexOne) {
    using T = TypeParam;
    Vek32s scan[16];
    std::copy_n(kZigzag4x4, 16, scan);
    scan[0] = 1 << 20;
    BitWriter stream;
    stream.put(
        "01"
        "0"
        "1");  // one trailing one, total_zeros 0
    const Decoded<T> d(stream, 31, CavlcBlock::k4x4, 0, 15, '0', scan);
    EXPECT_EQ(d.status, vekStsOk);
    EXPECT_EQ(d.coeffs[0], 0);
    EXPECT_EQ(d.coeffs[1], 1);
}

// zerosLeft 7 with run_before 8 (the column serves up to 14): taken as 7.
TYPED_TEST(Cavlc, RunBeforeIsLimitedToZerosLeft) {
    using T = TypeParam;
    BitWriter stream;
    stream.put(
        "001"
        "00");            // two trailing ones
    stream.put("0011");   // TotalCoeff 2: total_zeros 7
    stream.put("00001");  // run_before 8
    const Decoded<T> d(stream, 31, CavlcBlock::k4x4);
    EXPECT_EQ(d.status, vekStsOk);
    EXPECT_EQ(d.bits, 14);
    std::vector<int> at;
    for (int i = 0; i < 16; ++i)
        if (d.coeffs[static_cast<std::size_t>(kZigzag4x4[i])] == 1) at.push_back(i);
    EXPECT_EQ(at, (std::vector{0, 8}));
}

// The 6-bit codes are taken literally: 000010 is one coefficient with two signs.
TYPED_TEST(Cavlc, SixBitCodeWithMoreOnesThanCoefficients) {
    using T = TypeParam;
    BitWriter stream;
    stream.put(
        "000010"
        "10"
        "1");
    const Decoded<T> d(stream, 31, CavlcBlock::k4x4, 8);
    EXPECT_EQ(d.status, vekStsOk);
    EXPECT_EQ(d.bits, 9);
    EXPECT_EQ(d.total, 1);
    EXPECT_EQ(d.coeffs[0], T{-1});
}

// Tables of the test's own: one code per table, so that strange values can be decoded.
struct StrangeTables {
    Vek32s* token;
    Vek32s* number;
    explicit StrangeTables(Vek32s tokenValue, Vek32s numberValue) {
        const Vek32s tokenList[] = {1, 1, 1, 1, 1, tokenValue, -1};  // code 1
        const Vek32s numberList[] = {1, 1, 1, 1, 1, numberValue, -1};
        EXPECT_EQ(vekiHuffmanTableInitAlloc_32s(tokenList, &token), vekStsOk);
        EXPECT_EQ(vekiHuffmanTableInitAlloc_32s(numberList, &number), vekStsOk);
    }
    ~StrangeTables() {
        vekiHuffmanTableFree_32s(token);
        vekiHuffmanTableFree_32s(number);
    }
};

TEST(CavlcTables, StrangeValuesAndMissingTables) {
    const auto run = [](const Vek32s* token, const Vek32s* zeros, const Vek32s* runs, Vek32u first, Vek32s* bit,
                        Vek32s nC = 0) {
        Vek32u words[4] = {first, 0, 0, 0};
        Vek32u* word = words;
        Vek16s total, coeffs[16] = {};
        Vek16s* next = coeffs;
        *bit = 31;
        const Vek32s* tokens[3] = {token, nullptr, nullptr};
        const Vek32s* allZeros[16];
        const Vek32s* allRuns[15];
        std::fill_n(allZeros, 16, zeros);
        std::fill_n(allRuns, 15, runs);
        const VekStatus status =
            vekiDecodeCAVLCCoeffs_H264_1u16s(&word, bit, &total, &next, nC, 16, tokens, allZeros, allRuns, kZigzag4x4);
        EXPECT_EQ(next - coeffs, status == vekStsOk && total > 0 ? 16 : 0);
        return status;
    };
    constexpr Vek32s kTwoOnes = 2 + 256 * 2;
    const StrangeTables good(kTwoOnes, 14), far(kTwoOnes, 15), negative(kTwoOnes, -1), many(3 + 256 * 17, 0),
        ones(4 + 256 * 4, 0);
    Vek32s bit;
    EXPECT_EQ(run(good.token, good.number, good.number, 0xFFFFFFFF, &bit), vekStsOk);
    EXPECT_EQ(bit, 31 - 5);  // token, two signs, total_zeros, run_before
    EXPECT_EQ(run(far.token, far.number, far.number, 0xFFFFFFFF, &bit), vekStsErrVlcData);
    EXPECT_EQ(bit, 31);
    EXPECT_EQ(run(negative.token, negative.number, negative.number, 0xFFFFFFFF, &bit), vekStsErrVlcData);
    EXPECT_EQ(run(good.token, good.number, negative.number, 0xFFFFFFFF, &bit), vekStsOk);  // limited to zerosLeft
    EXPECT_EQ(run(many.token, many.number, many.number, 0xFFFFFFFF, &bit), vekStsErrVlcData);
    EXPECT_EQ(run(ones.token, ones.number, ones.number, 0xFFFFFFFF, &bit), vekStsErrVlcData);
    EXPECT_EQ(run(good.token, good.number, good.number, 0xE0000000, &bit), vekStsErrVlcData);  // no total_zeros code
    EXPECT_EQ(bit, 31);
    EXPECT_EQ(run(good.token, good.number, good.number, 0xF0000000, &bit), vekStsErrVlcData);  // no run_before code
    EXPECT_EQ(bit, 31);

    EXPECT_EQ(run(nullptr, good.number, good.number, 0xFFFFFFFF, &bit), vekStsErrNullPtr);
    EXPECT_EQ(bit, 31);
    EXPECT_EQ(run(good.token, nullptr, good.number, 0xFFFFFFFF, &bit), vekStsErrNullPtr);
    EXPECT_EQ(bit, 28);  // stopped behind the signs
    EXPECT_EQ(run(good.token, good.number, nullptr, 0xFFFFFFFF, &bit), vekStsErrNullPtr);
    EXPECT_EQ(bit, 27);
    EXPECT_EQ(run(nullptr, good.number, good.number, 0x0FFFFFFF, &bit, 9), vekStsOk);  // 000011: no table is needed
    EXPECT_EQ(bit, 25);
}

// The codes "1" and "01" of the 2x2 block are read without the tables' contents.
TEST(CavlcTables, ShortChromaDcNeedsNoTables) {
    const Vek32s poison = 0x00F0F101;
    const Vek32s* tables[4] = {&poison, &poison, &poison, &poison};
    struct Case {
        const char* bits;
        int total, position, level;
    };
    for (const Case& c : {Case{"101", 1, 0, 1},
                          {"111", 1, 0, -1},
                          {"1001", 1, 1, 1},
                          {"11001", 1, 2, -1},
                          {"10000", 1, 3, 1},
                          {"01", 0, 0, 0}}) {
        for (Vek32s offset = 0; offset < 32; ++offset) {
            BitWriter stream;
            stream.put(c.bits);
            auto words = stream.words(offset, '1');
            Vek32u* word = words.data();
            Vek32s bit = offset;
            Vek16s total = -1, coeffs[5] = {77, 77, 77, 77, 77};
            Vek16s* next = coeffs;
            ASSERT_EQ(vekiDecodeCAVLCChromaDcCoeffs_H264_1u16s(&word, &bit, &total, &next, &poison, tables, tables),
                      vekStsOk);
            EXPECT_EQ(total, c.total);
            EXPECT_EQ(next - coeffs, c.total == 0 ? 0 : 4);
            EXPECT_EQ(bitsUpTo(words, offset, word, bit), c.bits);
            for (int i = 0; i < 4; ++i) EXPECT_EQ(coeffs[i], c.total == 0 ? 77 : i == c.position ? c.level : 0);
            EXPECT_EQ(coeffs[4], 77);
        }
    }
}

// No code is a prefix of another, and together they fill the code space as far as the standard's do.
TEST(CavlcTables, CodesArePrefixFree) {
    const auto missing = [](const auto& rows) {  // of the code space, in units of 2^-16
        std::vector<std::string_view> codes;
        for (const auto& field : rows)
            if (field != nullptr) codes.emplace_back(field);
        int space = 1 << 16;
        for (const auto code : codes) {
            space -= 1 << (16 - code.size());
            for (const auto other : codes) EXPECT_TRUE(code.data() == other.data() || !other.starts_with(code)) << code;
        }
        return space;
    };
    using namespace vekvc_tables;
    const int expected[5] = {2, 8, 64, 0, 56};  // Table 9-5 leaves a few patterns unused
    for (int column = 0; column < 5; ++column) {
        std::vector<const char*> codes;
        for (const auto& row : kCoeffTokenCodes[column]) codes.insert(codes.end(), row, row + 4);
        EXPECT_EQ(missing(codes), expected[column]) << column;
    }
    for (int i = 0; i < 15; ++i) EXPECT_EQ(missing(kTotalZerosCodes4x4[i]), i == 0 ? 1 << 7 : 0) << i;
    for (const auto& row : kTotalZerosCodes2x2) EXPECT_EQ(missing(row), 0);
    for (const auto& row : kTotalZerosCodes2x4) EXPECT_EQ(missing(row), 0);
    for (int i = 0; i < 7; ++i) EXPECT_EQ(missing(kRunBeforeCodes[i]), i == 6 ? 1 << 5 : 0) << i;
}

}  // namespace
