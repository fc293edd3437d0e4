#include <gtest/gtest.h>

#include <random>

#include "support/bit_writer.h"
#include "vekvc.h"

namespace {

using namespace vekvc_test;

// Codes of every length at every start bit; with 32 leading zeros codeNum + 1 is the 32 bits behind the 1.
TEST(ExpGolomb, EveryLengthAtEveryOffset) {
    std::mt19937 random(3);
    for (int zeros = 0; zeros <= 32; ++zeros) {
        for (Vek32s offset = 0; offset < 32; ++offset) {
            const auto info = static_cast<Vek32u>(offset == 5   ? 0
                                                  : offset == 6 ? ~0u
                                                                : random()) &
                              static_cast<Vek32u>((std::uint64_t{1} << zeros) - 1);
            const auto k = static_cast<Vek32u>((std::uint64_t{1} << zeros) + info);
            BitWriter stream;
            stream.put(1, zeros + 1);
            stream.put(info, zeros);
            auto words = stream.words(offset, offset % 2 ? '1' : '0');
            const Vek32u codeNum = k - 1;
            // Table 9-3, in 32 bits: codeNum 1, 2, 3, 4 is 1, -1, 2, -2.
            const Vek32u mapped = k % 2 == 0 ? k / 2 : ~(k / 2) + 1;
            for (const Vek8u isSigned : std::initializer_list<Vek8u>{0, 1, 2, 255}) {
                Vek32u* word = words.data();
                Vek32s bit = offset, value = 0;
                ASSERT_EQ(vekiDecodeExpGolombOne_H264_1u32s(&word, &bit, &value, isSigned), vekStsOk);
                EXPECT_EQ(value, static_cast<Vek32s>(isSigned ? mapped : codeNum)) << stream.bits;
                EXPECT_EQ(bitsUpTo(words, offset, word, bit), stream.bits);
                word = words.data();
                bit = offset;
                Vek16s narrow = 0;
                ASSERT_EQ(vekiDecodeExpGolombOne_H264_1u16s(&word, &bit, &narrow, isSigned), vekStsOk);
                EXPECT_EQ(narrow, static_cast<Vek16s>(value));
                EXPECT_EQ(bitsUpTo(words, offset, word, bit), stream.bits);
            }
        }
    }
}

TEST(ExpGolomb, TooManyZerosAndBadOffsetsWriteNothing) {
    Vek32u words[4] = {0, 0, 0, 0x80000000};
    for (Vek32s offset = 0; offset < 32; ++offset) {
        Vek32u* word = words;
        Vek32s bit = offset, value = 99;
        EXPECT_EQ(vekiDecodeExpGolombOne_H264_1u32s(&word, &bit, &value, 0), vekStsErrVlcData);
        EXPECT_EQ(word, words);
        EXPECT_EQ(bit, offset);
        EXPECT_EQ(value, 99);
    }
    for (const Vek32s offset : {32, 1000, -1}) {
        Vek32u* word = words + 3;
        Vek32s bit = offset;
        Vek16s value = 99;
        EXPECT_EQ(vekiDecodeExpGolombOne_H264_1u16s(&word, &bit, &value, 1), vekStsErrBadArg);
        EXPECT_EQ(bit, offset);
        EXPECT_EQ(value, 99);
    }
}

}  // namespace
