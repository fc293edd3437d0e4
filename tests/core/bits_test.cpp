// The bit-stream cursors, against a stream held as a string of bits.
#include "core/bits.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace vekvc {
namespace {

std::vector<Vek32u> randomWords(std::mt19937& random, std::size_t n) {
    std::vector<Vek32u> words(n);
    for (auto& word : words) word = static_cast<Vek32u>(random());
    return words;
}

// The words' bits, most significant first.
std::string bitsOf(const std::vector<Vek32u>& words) {
    std::string bits;
    for (const Vek32u word : words)
        for (int i = 31; i >= 0; --i) bits += word >> i & 1 ? '1' : '0';
    return bits;
}

Vek32u valueOf(const std::string& bits) {
    Vek32u value = 0;
    for (const char bit : bits) value = value << 1 | static_cast<Vek32u>(bit - '0');
    return value;
}

TEST(WordReader, ReadsAndGivesBackAtEveryPosition) {
    std::mt19937 random(1);
    auto words = randomWords(random, 64);
    const std::string bits = bitsOf(words);
    for (Vek32s start = 31; start >= 0; --start) {
        Vek32u* cursor = words.data();
        Vek32s offset = start;
        WordReader reader(&cursor, &offset);
        std::size_t position = static_cast<std::size_t>(31 - start);
        while (position < bits.size() - 64) {
            const int n = static_cast<int>(random() % 33);
            ASSERT_EQ(reader.peek(n), valueOf(bits.substr(position, static_cast<std::size_t>(n))));
            ASSERT_EQ(reader.read(n), valueOf(bits.substr(position, static_cast<std::size_t>(n))));
            position += static_cast<std::size_t>(n);
            const std::size_t back = random() % (position + 1) % 9;
            reader.giveBack(static_cast<int>(back));
            position -= back;
            reader.commit(&cursor, &offset);
            ASSERT_EQ(static_cast<std::size_t>(cursor - words.data()), position / 32);
            ASSERT_EQ(offset, 31 - static_cast<Vek32s>(position % 32));
        }
    }
}

TEST(WordReader, ReachingTheEndOfAWordReadsNoFurther) {
    std::vector<Vek32u> words = {1};  // the sanitizers see any other word
    Vek32u* cursor = words.data();
    Vek32s offset = 0;
    WordReader reader(&cursor, &offset);
    EXPECT_EQ(reader.read(1), 1u);
    reader.commit(&cursor, &offset);
    EXPECT_EQ(cursor, words.data() + 1);
    EXPECT_EQ(offset, 31);
}

// The window reads what the reader reads, and no word that the contract does not allow: the sanitizers see any other.
TEST(WordWindow, ReadsLikeTheReader) {
    std::mt19937 random(4);
    const auto source = randomWords(random, 64);
    for (Vek32s start = 31; start >= 0; --start) {
        Vek32s offset = start;
        int left = 200 + static_cast<int>(random() % 64);  // bits to read
        auto words = std::vector<Vek32u>(source.begin(), source.begin() + (31 - start + left - 1) / 32 + 2);
        Vek32u* cursor = words.data();
        WordReader reader(&cursor, &offset);
        WordWindow window(&cursor, &offset);
        while (left > 0) {
            const int n = std::min(left, 1 + static_cast<int>(random() % 32));
            left -= n;
            ASSERT_EQ(window.read(n), reader.read(n));
            Vek32u* expected;
            Vek32s expectedOffset;
            reader.commit(&expected, &expectedOffset);
            window.commit(&cursor, &offset);
            ASSERT_EQ(cursor, expected);
            ASSERT_EQ(offset, expectedOffset);
            if (random() % 4 == 0) window = WordWindow(window.reader());
            const int back = static_cast<int>(random() % 8);
            window.commit(&cursor, &offset, back);
            WordReader earlier = reader;
            earlier.giveBack(back);
            earlier.commit(&expected, &expectedOffset);
            ASSERT_EQ(cursor, expected);
            ASSERT_EQ(offset, expectedOffset);
        }
    }
}

TEST(WordWriter, WritesAtEveryPositionAndKeepsAllOtherBits) {
    std::mt19937 random(2);
    for (Vek32s start = 31; start >= 0; --start) {
        auto words = randomWords(random, 40);
        std::string bits = bitsOf(words);
        Vek32u* cursor = words.data();
        Vek32s offset = start;
        WordWriter writer(&cursor, &offset);
        std::size_t position = static_cast<std::size_t>(31 - start);
        while (position < bits.size() - 64) {
            const auto n = random() % 33;
            const auto value = static_cast<Vek32u>(random());
            writer.put(value, static_cast<int>(n));
            for (std::size_t i = 0; i < n; ++i) bits[position + i] = value >> (n - 1 - i) & 1 ? '1' : '0';
            position += n;
        }
        writer.commit(&cursor, &offset);
        EXPECT_EQ(static_cast<std::size_t>(cursor - words.data()), position / 32);
        EXPECT_EQ(offset, 31 - static_cast<Vek32s>(position % 32));
        EXPECT_EQ(bitsOf(words), bits);
    }
}

TEST(ByteReader, ReadsAtEveryPosition) {
    std::mt19937 random(3);
    std::vector<Vek8u> bytes(200);
    std::string bits;
    for (auto& byte : bytes) {
        byte = static_cast<Vek8u>(random());
        for (int i = 7; i >= 0; --i) bits += byte >> i & 1 ? '1' : '0';
    }
    Vek8u* cursor = bytes.data();
    Vek32s offset = 0;
    ByteReader reader(&cursor, &offset);
    std::size_t position = 0;
    while (position < bits.size()) {
        const std::size_t n = std::min<std::size_t>(random() % 33, bits.size() - position);
        ASSERT_EQ(reader.read(static_cast<int>(n)), valueOf(bits.substr(position, n)));
        position += n;
        reader.commit(&cursor, &offset);
        ASSERT_EQ(static_cast<std::size_t>(cursor - bytes.data()), position / 8);
        ASSERT_EQ(offset, static_cast<Vek32s>(position % 8));
    }
    EXPECT_TRUE(ByteReader::validOffset(0) && ByteReader::validOffset(7));
    EXPECT_FALSE(ByteReader::validOffset(8) || ByteReader::validOffset(-1));
}

}  // namespace
}  // namespace vekvc
