// AVS coefficient decoding: blocks worked by hand, every code of every table, and what no block may hold.
#include <gtest/gtest.h>

#include <algorithm>

#include "support/avs.h"
#include "vekvc.h"

namespace {

using namespace vekvc_test;

using Decode = VekStatus (*)(Vek32u**, Vek32s*, Vek16s**, Vek32s);
struct Kind {
    Decode decode;
    const AvsGroup* group;
};
constexpr Kind kIntra = {&vekiDecodeCoeffsLumaIntra_AVS_1u16s, &kAvsLumaIntra},
               kInter = {&vekiDecodeCoeffsLumaInter_AVS_1u16s, &kAvsLumaInter},
               kChroma = {&vekiDecodeCoeffsChroma_AVS_1u16s, &kAvsChroma};

// Raster positions of the scans, drawn as pictures of the scan positions.
constexpr int kOrder[2][64] = {{0,  1,  5,  6,  14, 15, 27, 28, 2,  4,  7,  13, 16, 26, 29, 42, 3,  8,  12, 17, 25, 30,
                                41, 43, 9,  11, 18, 24, 31, 40, 44, 53, 10, 19, 23, 32, 39, 45, 52, 54, 20, 22, 33, 38,
                                46, 51, 55, 60, 21, 34, 37, 47, 50, 56, 59, 61, 35, 36, 48, 49, 57, 58, 62, 63},
                               {0,  3,  11, 16, 22, 32, 38, 55, 1,  6,  12, 20, 25, 33, 42, 57, 2,  7,  15, 21, 28, 37,
                                43, 58, 4,  10, 19, 27, 31, 39, 47, 59, 5,  14, 24, 30, 36, 44, 50, 60, 8,  17, 26, 35,
                                41, 48, 52, 61, 9,  18, 29, 40, 46, 51, 54, 62, 13, 23, 34, 45, 49, 53, 56, 63}};

struct Result {
    VekStatus status;
    std::vector<Vek16s> block;  // in raster order
    std::ptrdiff_t bits, advanced;
};
Result decode(Decode function, const std::string& code, Vek32s offset = 31, Vek32s scanMode = 0) {
    BitWriter bits;
    bits.put(code);
    auto words = bits.words(offset, '1');
    words.insert(words.end(), 2, 0);
    Vek32u* cursor = words.data();
    const Vek32s start = offset;
    std::vector<Vek16s> block(64, 0x55);
    Vek16s* next = block.data();
    const VekStatus status = function(&cursor, &offset, &next, scanMode);
    return {status, block, bitsBetween(words.data(), start, cursor, offset), next - block.data()};
}
// Of pairs in coding order: the last one lies lowest.
std::vector<Vek16s> blockOf(const std::vector<AvsPair>& pairs, int scanMode) {
    std::vector<Vek16s> block(64);
    int position = -1;
    for (auto pair = pairs.rbegin(); pair != pairs.rend(); ++pair) {
        position += pair->run + 1;
        block[static_cast<std::size_t>(std::find(kOrder[scanMode], kOrder[scanMode] + 64, position) -
                                       kOrder[scanMode])] = static_cast<Vek16s>(pair->level);
    }
    return block;
}
std::string codeOf(const AvsGroup& group, const std::vector<AvsPair>& pairs) {
    BitWriter bits;
    AvsBlockWriter writer(group, bits);
    for (const AvsPair pair : pairs) writer.put(pair);
    writer.end();
    return bits.bits;
}
void expectBlock(const Kind& kind, const std::vector<AvsPair>& pairs, Vek32s offset = 31) {
    const std::string code = codeOf(*kind.group, pairs);
    for (const int scanMode : {0, 1}) {
        const Result result = decode(kind.decode, code, offset, scanMode);
        EXPECT_EQ(result.status, vekStsOk);
        EXPECT_EQ(result.bits, static_cast<std::ptrdiff_t>(code.size()));
        EXPECT_EQ(result.advanced, 64);
        EXPECT_EQ(result.block, blockOf(pairs, scanMode));
    }
}
void expectFault(Decode function, const std::string& code) {
    const Result result = decode(function, code, 20);
    EXPECT_EQ(result.status, vekStsErrOutOfRange) << code;
    EXPECT_EQ(result.bits, 0);
    EXPECT_EQ(result.advanced, 0);
    EXPECT_EQ(result.block, std::vector<Vek16s>(64, 0x55));
}

TEST(AvsCoefficients, BlocksWorkedByHand) {
    std::vector<Vek16s> dc(64);
    dc[0] = 1;
    // Code 0 in order 2, then code 8 of the second table: 8 + 4 = 1100, so one zero before it.
    EXPECT_EQ(decode(kIntra.decode, "10001100").block, dc);
    // Code 0 in order 3, then code 2: 2 + 4 = 110.
    EXPECT_EQ(decode(kInter.decode, "1000110").block, dc);
    // Code 0 in order 2, then code 0 in order 0.
    EXPECT_EQ(decode(kChroma.decode, "1001").block, dc);
    // The escape of run 30: codes 119 and 120, 123 and 124 in order 2, then 0 in order 1; +-1.
    for (const int level : {-1, 1}) {
        const std::string escape = level < 0 ? "00001111011" : "00001111100";
        const Result result = decode(kIntra.decode, escape + "10" + "01100");
        std::vector<Vek16s> far(64);
        far[static_cast<std::size_t>(std::find(kOrder[0], kOrder[0] + 64, 30) - kOrder[0])] =
            static_cast<Vek16s>(level);
        EXPECT_EQ(result.block, far);
        EXPECT_EQ(result.bits, 18);
    }
    // A level that climbs at once. Intra: 11 = 8 + 3 levels of run 0: code 60, number 7; the seventh table ends with
    // code 0, and a level of 1 has code 1 there.
    const Result climbed = decode(kIntra.decode,
                                  "00001000000"
                                  "001001"
                                  "101"
                                  "100");
    EXPECT_EQ(climbed.status, vekStsOk);
    EXPECT_EQ(climbed.block[0], 1);
    EXPECT_EQ(climbed.block[1], 11);
}

// Each code of each table, reached by one level and followed by the end that its own level leads to.
TEST(AvsCoefficients, EveryCode) {
    for (const Kind& kind : {kIntra, kInter, kChroma}) {
        const AvsGroup& group = *kind.group;
        for (int t = 0; t < group.count; ++t) {
            const std::string pairs = group.tables[t].pairs;
            ASSERT_EQ(pairs.size(), 58u);
            for (std::size_t i = 0; i < pairs.size(); i += 2)
                for (const int sign : {1, -1}) {
                    const AvsPair pair = {pairs[i] - 'A', sign * (pairs[i + 1] - 'A' + 1)};
                    std::vector<AvsPair> all;
                    if (t > 0) all.push_back({0, group.climbs[t - 1] + 1});
                    all.push_back(pair);
                    expectBlock(kind, all, static_cast<Vek32s>(i % 32));
                    all.push_back({pair.run, pair.level + sign * 30});  // an escape of a run that the table may know
                    expectBlock(kind, all, static_cast<Vek32s>((i + 7) % 32));
                }
        }
    }
}

TEST(AvsCoefficients, LongestBlocks) {
    for (const Kind& kind : {kIntra, kInter, kChroma}) {
        expectBlock(kind, std::vector<AvsPair>(64, {0, -1}));
        expectBlock(kind, {{63, 32767}});
        expectBlock(kind, {{31, -32767}, {31, 3}});
        std::mt19937 random(5);
        for (int i = 0; i < 300; ++i) expectBlock(kind, randomAvsPairs(random), i % 32);
    }
}

TEST(AvsCoefficients, Faults) {
    for (const Kind& kind : {kIntra, kInter, kChroma}) {
        const AvsGroup& group = *kind.group;
        expectFault(kind.decode, std::string(40, '0'));
        expectFault(kind.decode, codeOf(group, {{0, 1}, {31, 1}, {31, 1}}));        // position 64
        expectFault(kind.decode, codeOf(group, std::vector<AvsPair>(65, {0, 1})));  // a 65th pair
        expectFault(kind.decode, codeOf(group, {{63, 32768}}));
        BitWriter unused;
        AvsBlockWriter writer(group, unused);
        writer.number(58, group.tables[0].order);
        expectFault(kind.decode, unused.bits + "111111111111");
        // Fifteen zeros before an escape's number are read, sixteen are not.
        BitWriter number;
        AvsBlockWriter escape(group, number);
        escape.number(59 + 2 * 40, group.tables[0].order);
        expectFault(kind.decode, number.bits + std::string(16, '0') + std::string(20, '1'));
    }
    Vek32u word[3] = {};
    Vek32u* cursor = word;
    Vek16s block[64], *next = block;
    for (Vek32s offset : {-1, 32})
        EXPECT_EQ(vekiDecodeCoeffsChroma_AVS_1u16s(&cursor, &offset, &next, 5), vekStsErrBadArg);
}

}  // namespace
