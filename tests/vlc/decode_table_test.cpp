// The decode tables word by word.
#include <gtest/gtest.h>

#include <vector>

#include "vekvc.h"

namespace {

constexpr Vek32s kEmpty = 0x00F0F101;

using Words = std::vector<Vek32s>;
using Builder = VekStatus (*)(const Vek32s*, VekVlcTable_32s**);

// Builds a table and returns its first words. Lists are copied to the heap, so that a sanitizer sees a read past them.
Words build(Builder builder, const Words& list, std::size_t words) {
    VekVlcTable_32s* table = nullptr;
    EXPECT_EQ(builder(list.data(), &table), vekStsOk);
    if (table == nullptr) return {};
    Words result(table, table + words);
    EXPECT_EQ(vekiHuffmanTableFree_32s(table), vekStsOk);
    return result;
}
Words values(const Words& list, std::size_t words) { return build(vekiHuffmanTableInitAlloc_32s, list, words); }
Words pairs(const Words& list, std::size_t words) { return build(vekiHuffmanRunLevelTableInitAlloc_32s, list, words); }

constexpr Vek32s leaf(Vek32s value, int giveBack) {
    return static_cast<Vek32s>(static_cast<Vek32u>(value) << 8) | giveBack;
}
constexpr Vek32s pointer(Vek32s offset) { return offset << 8 | 0x80; }

TEST(VlcTable, OneLevel) {
    EXPECT_EQ(
        values({3, 1, 3, 1, 1, 7, 1, 1, -9, 1, 1, 1 << 23, -1}, 9),
        (Words{3, kEmpty, leaf(1 << 23, 0), leaf(-9, 1), leaf(-9, 1), leaf(7, 2), leaf(7, 2), leaf(7, 2), leaf(7, 2)}));
}

// Lookups of 1, 2 and 1 bits; sub-tables follow in the order of need, a code at a level's end gives nothing back.
TEST(VlcTable, ThreeLevels) {
    EXPECT_EQ(values({4, 3, 1,   2, 1,    //
                      1, 1, 100,          // 1
                      1, 1, 200,          // 01
                      1, 0, 300,          // 000
                      2, 2, 400, 3, 500,  // 0010, 0011
                      -1},
                     11),
              (Words{1, pointer(3), leaf(100, 0),                              //
                     2, leaf(300, 0), pointer(8), leaf(200, 1), leaf(200, 1),  //
                     1, leaf(400, 0), leaf(500, 0)}));
}

TEST(VlcTable, TwoSubTablesOfOneLevel) {
    EXPECT_EQ(values({3, 2, 2, 1, 0, 0, 3, 7, 1, 0, 2, 1, 3, -1}, 11),
              (Words{2, pointer(8), kEmpty, kEmpty, pointer(5), 1, kEmpty, leaf(1, 0), 1, leaf(2, 0), leaf(3, 0)}));
}

TEST(VlcTable, RunLevelPairs) {
    constexpr auto slot = [](Vek32u run, Vek32u level, Vek32u giveBack) {
        return static_cast<Vek32s>(level << 16 | run << 8 | giveBack);
    };
    // Escape and end of block keep no level; a run keeps 8 bits, a level 16.
    EXPECT_EQ(pairs({3, 1, 3, 1, 1, 254, 99, 1, 1, 255, -5, 2, 0, 3, -2, 1, 300, 0x12345, -1}, 9),
              (Words{3, slot(3, 0xFFFE, 0), slot(44, 0x2345, 0), slot(255, 0, 1), slot(255, 0, 1), slot(254, 0, 2),
                     slot(254, 0, 2), slot(254, 0, 2), slot(254, 0, 2)}));
}

// Lists that make no sense still build a table of the size that they ask for.
TEST(VlcTable, StrangeListsStayInsideTheTable) {
    // A code longer than all levels is left out, and its prefix needs no sub-table.
    EXPECT_EQ(values({0, 2, 1, 1, 1, 1, 5, 0, 1, 0, 6, -1}, 3), (Words{1, kEmpty, leaf(5, 0)}));
    // Code bits beyond the length do not count.
    EXPECT_EQ(values({0, 1, 1, 1, -1, 5, -1}, 3), (Words{1, kEmpty, leaf(5, 0)}));
    // A code that runs through another one's slot takes it over; the same code twice: the later one.
    EXPECT_EQ(values({0, 2, 1, 1, 1, 1, 5, 3, 3, 6, 3, 7, 2, 8, -1}, 6),
              (Words{1, kEmpty, pointer(3), 1, leaf(8, 0), leaf(7, 0)}));
    // No levels, or levels of no bits: every lookup fails.
    EXPECT_EQ(values({0, 0, 1, 1, 5, -1}, 2), (Words{0, kEmpty}));
    EXPECT_EQ(values({0, -3, 1, 1, 5, -1}, 2), (Words{0, kEmpty}));
    EXPECT_EQ(values({0, 2, 0, 1, 1, 1, 5, -1}, 5), (Words{0, pointer(2), 1, kEmpty, leaf(5, 0)}));
    // A code of more than 32 bits: its upper bits are zero.
    Words longCode = {0, 3, 1, 31, 1};
    longCode.resize(5 + 32, 0);  // counts of lengths 1 to 32
    longCode.insert(longCode.end(), {1, 1, 9, -1});
    VekVlcTable_32s* table = nullptr;
    EXPECT_EQ(vekiHuffmanTableInitAlloc_32s(longCode.data(), &table), vekStsErrMemAlloc);  // 2^31 entries
    EXPECT_EQ(table, nullptr);
    longCode[3] = 1;  // now the code is longer than the levels
    EXPECT_EQ(values(longCode, 3), (Words{1, kEmpty, kEmpty}));
}

TEST(VlcTable, SizesBeyondTheLayoutFail) {
    Words deep = {0, 2, 23, 1};  // the sub-table would begin behind entry 2^23
    deep.resize(4 + 23, 0);
    deep.insert(deep.end(), {1, 0, 0, -1});
    for (const Words& list : {Words{0, 1, 32, -1}, Words{0, 1, INT32_MAX, -1}, deep}) {
        VekVlcTable_32s* table = nullptr;
        EXPECT_EQ(vekiHuffmanTableInitAlloc_32s(list.data(), &table), vekStsErrMemAlloc);
        EXPECT_EQ(table, nullptr);
    }
}

TEST(VlcTable, NullPointers) {
    const Vek32s list[] = {0, 1, 1, -1};
    VekVlcTable_32s* table = nullptr;
    for (const Builder builder : {vekiHuffmanTableInitAlloc_32s, vekiHuffmanRunLevelTableInitAlloc_32s}) {
        EXPECT_EQ(builder(nullptr, &table), vekStsErrNullPtr);
        EXPECT_EQ(builder(list, nullptr), vekStsErrNullPtr);
    }
    EXPECT_EQ(vekiHuffmanTableFree_32s(nullptr), vekStsErrNullPtr);
}

}  // namespace
