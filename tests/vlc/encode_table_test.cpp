// The run/level encode table word by word.
#include <gtest/gtest.h>

#include <vector>

#include "vekcore.h"
#include "vekvc.h"

namespace {

TEST(RunLevelEncodeTable, Words) {
    // Runs 0 (levels 1, 2), 2 (level 1), none with run 1; escape 000001, end of block 10.
    const Vek32s list[] = {6, 1, 6,   0,            //
                           1, 2, 254, 0,            // 10
                           2, 6, 0,   1, 7, 0, -1,  // 110, 111
                           2, 4, 0,   2, 5, 0, -2,  // 0100, 0101
                           2, 6, 2,   1, 7, 2, -1,  // 00110, 00111
                           1, 1, 255, 0, -1};
    VekRLEncodeTable* table = nullptr;
    ASSERT_EQ(vekiCreateRLEncodeTable(list, &table), vekStsOk);
    const std::vector<Vek32s> expected = {
        (1 << 4 | 6) | (2 << 4 | 2) << 10 | 2 << 20,
        4 * 6,
        4 * 9,
        4 * 11,
        5 << 16 | 4,
        7 << 16 | 3,
        2,
        6 << 16 | 3,
        4 << 16 | 4,
        -1,
        7 << 16 | 5,
        1,
        6 << 16 | 5,
    };
    EXPECT_EQ(std::vector<Vek32s>(table, table + expected.size()), expected);
    vekFree(table);
    EXPECT_EQ(vekiCreateRLEncodeTable(nullptr, &table), vekStsErrNullPtr);
    EXPECT_EQ(vekiCreateRLEncodeTable(list, nullptr), vekStsErrNullPtr);
    // Records without a place: a negative run, a run of 13 bits. Unpaired levels go where they fall; centres stand.
    const Vek32s strange[] = {0, 1, 3, 5, 1, -1, 1, 1, 5000, 1, 0, 1, 0, 1, 1, 2, 0, 0, 1, -1, -1};
    ASSERT_EQ(vekiCreateRLEncodeTable(strange, &table), vekStsOk);
    EXPECT_EQ(std::vector<Vek32s>(table, table + 8),
              (std::vector<Vek32s>{1 << 20, 4 * 3, 4 * 5, 1, 1, 2, 0, 1 << 16 | 1}));
    vekFree(table);
}

}  // namespace
