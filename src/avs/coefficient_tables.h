// The adaptive two-dimensional variable-length codes of AVS1-P2 (GB/T 20090.2 clause 8 and its annex of code tables).
#ifndef VEKVC_AVS_COEFFICIENT_TABLES_H
#define VEKVC_AVS_COEFFICIENT_TABLES_H

#include <cstdint>

#include "vekvc/types.h"

namespace vekvc::avs {

inline constexpr int kPairs = 29;        // run/level pairs of a table, each with two codes
inline constexpr int kFirstEscape = 59;  // codes from here on carry a run; the level follows
inline constexpr int kUnusedCode = 58;   // of tables without an end of block
inline constexpr int kMostLeadingZeros = 15;
inline constexpr int kNone = -1, kNever = 32767;

// The order of the Exp-Golomb codes, the code that ends a block, the level that must be exceeded to go on to the next
// table, how many levels the runs 0, 1 ... have where that is more than one, and the codes of all positive levels, run
// after run, level after level. The negative level has the next code.
struct CodeTable {
    std::int8_t order, endOfBlock;
    Vek16s largestLevel;
    Vek8u levels[8];
    Vek8u codes[kPairs];
};

// clang-format off
inline constexpr CodeTable kLumaIntraTables[] = {
    {2, kNone, 0, {3, 2, 2, 2, 2}, {0, 22, 38, 2, 32, 4, 44, 6, 50, 8, 54, 10, 12, 14, 16, 18, 20, 24, 26, 28, 30, 34, 36, 40, 42, 46, 48, 52, 56}},
    {2, 8, 1, {6, 3, 3, 2, 2, 2, 2, 2}, {0, 4, 15, 27, 41, 55, 2, 17, 35, 6, 25, 53, 9, 33, 11, 39, 13, 45, 19, 49, 21, 51, 23, 29, 31, 37, 43, 47, 57}},
    {2, 8, 2, {9, 5, 3, 3, 2, 2, 2}, {0, 2, 6, 13, 17, 27, 35, 45, 55, 4, 11, 21, 33, 49, 9, 23, 37, 15, 29, 51, 19, 39, 25, 43, 31, 53, 41, 47, 57}},
    {2, 8, 4, {12, 6, 4, 3, 2}, {0, 2, 4, 9, 11, 17, 21, 25, 33, 39, 45, 55, 6, 13, 19, 29, 35, 47, 15, 27, 41, 57, 23, 37, 53, 31, 51, 43, 49}},
    {2, 6, 7, {17, 7, 3}, {0, 2, 4, 7, 9, 11, 15, 17, 21, 23, 29, 33, 35, 43, 47, 49, 57, 13, 19, 27, 31, 37, 45, 55, 25, 41, 51, 39, 53}},
    {2, 0, 10, {21, 6, 2}, {1, 3, 5, 7, 9, 11, 13, 15, 17, 19, 23, 25, 27, 31, 33, 37, 41, 45, 49, 51, 55, 21, 29, 35, 43, 47, 53, 39, 57}},
    {2, 0, kNever, {26, 3}, {1, 3, 5, 7, 9, 11, 13, 15, 17, 19, 21, 23, 25, 27, 29, 31, 35, 37, 39, 41, 43, 47, 49, 51, 53, 57, 33, 45, 55}},
};
inline constexpr CodeTable kLumaInterTables[] = {
    {3, kNone, 0, {3, 2}, {0, 26, 40, 2, 46, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 28, 30, 32, 34, 36, 38, 42, 44, 48, 50, 52, 54, 56}},
    {2, 2, 1, {4, 3, 2, 2, 2, 2, 2}, {0, 13, 29, 47, 3, 23, 57, 5, 35, 7, 39, 9, 43, 11, 49, 15, 55, 17, 19, 21, 25, 27, 31, 33, 37, 41, 45, 51, 53}},
    {2, 2, 2, {6, 4, 3, 3, 2, 2, 2}, {0, 5, 11, 23, 35, 47, 3, 13, 27, 49, 7, 21, 45, 9, 29, 55, 15, 37, 17, 41, 19, 53, 25, 31, 33, 39, 43, 51, 57}},
    {2, 2, 3, {9, 5, 4, 3, 2, 2}, {0, 3, 7, 13, 17, 27, 35, 43, 55, 5, 11, 21, 33, 51, 9, 23, 37, 57, 15, 29, 47, 19, 41, 25, 49, 31, 39, 45, 53}},
    {2, 2, 6, {12, 6, 4, 3, 2}, {0, 3, 5, 9, 11, 17, 21, 25, 33, 41, 45, 55, 7, 13, 19, 29, 35, 49, 15, 27, 43, 57, 23, 37, 51, 31, 53, 39, 47}},
    {2, 0, 9, {16, 7, 3, 2}, {1, 3, 5, 7, 9, 13, 15, 17, 21, 25, 29, 33, 39, 43, 49, 53, 11, 19, 27, 31, 41, 45, 57, 23, 37, 51, 35, 55, 47}},
    {2, 0, kNever, {21, 5, 2}, {1, 3, 5, 7, 9, 11, 13, 17, 19, 21, 23, 25, 29, 33, 35, 39, 41, 43, 47, 49, 57, 15, 27, 37, 45, 55, 31, 51, 53}},
};
inline constexpr CodeTable kChromaTables[] = {
    {2, kNone, 0, {4, 2}, {0, 14, 32, 56, 2, 48, 4, 6, 8, 10, 12, 16, 18, 20, 22, 24, 26, 28, 30, 34, 36, 38, 40, 42, 44, 46, 50, 52, 54}},
    {0, 0, 1, {5, 3, 2, 2, 2}, {1, 5, 15, 29, 43, 3, 21, 45, 7, 37, 9, 41, 11, 53, 13, 17, 19, 23, 25, 27, 31, 33, 35, 39, 47, 49, 51, 55, 57}},
    {1, 2, 2, {9, 5, 3, 3, 2, 2}, {0, 3, 7, 11, 17, 27, 33, 47, 53, 5, 13, 21, 37, 55, 9, 23, 41, 15, 31, 57, 19, 43, 25, 45, 29, 35, 39, 49, 51}},
    {1, 0, 4, {13, 6, 3, 2, 2}, {1, 3, 5, 7, 11, 15, 19, 23, 29, 35, 43, 47, 53, 9, 13, 21, 31, 39, 51, 17, 27, 37, 25, 41, 33, 55, 45, 49, 57}},
    {0, 0, kNever, {19, 6, 2}, {1, 3, 5, 7, 9, 11, 13, 15, 19, 21, 23, 27, 29, 33, 37, 41, 43, 51, 55, 17, 25, 31, 39, 45, 53, 35, 49, 47, 57}},
};
// clang-format on

// What a kind of block reads: its tables, and the order of the number that follows an escape.
struct CodeGroup {
    const CodeTable* tables;
    int count;
    int escapeOrder;
};
inline constexpr CodeGroup kLumaIntra = {kLumaIntraTables, 7, 1}, kLumaInter = {kLumaInterTables, 7, 0},
                           kChroma = {kChromaTables, 5, 0};

// How many levels a table has for a run.
constexpr int levelsOf(const CodeTable& table, int run) {
    int rest = kPairs, n = 0;
    for (int r = 0; r <= run; ++r) {
        n = r < 8 && table.levels[r] != 0 ? table.levels[r] : 1;
        if (n > rest) n = rest;
        rest -= n;
    }
    return n;
}

struct RunLevel {
    int run, level;
};
// What a code below the escapes stands for; level 0: nothing.
constexpr RunLevel runLevelOf(const CodeTable& table, int code) {
    int i = 0;
    for (int run = 0; i < kPairs; ++run)
        for (int level = 1; level <= levelsOf(table, run); ++level, ++i) {
            if (table.codes[i] == code) return {run, level};
            if (table.codes[i] + 1 == code) return {run, -level};
        }
    return {0, 0};
}

// Raster position of each scan position: zigzag, field scan.
// clang-format off
inline constexpr Vek8u kScan[2][64] = {
    { 0,  1,  8, 16,  9,  2,  3, 10, 17, 24, 32, 25, 18, 11,  4,  5,
     12, 19, 26, 33, 40, 48, 41, 34, 27, 20, 13,  6,  7, 14, 21, 28,
     35, 42, 49, 56, 57, 50, 43, 36, 29, 22, 15, 23, 30, 37, 44, 51,
     58, 59, 52, 45, 38, 31, 39, 46, 53, 60, 61, 54, 47, 55, 62, 63},
    { 0,  8, 16,  1, 24, 32,  9, 17, 40, 48, 25,  2, 10, 56, 33, 18,
      3, 41, 49, 26, 11, 19,  4, 57, 34, 12, 42, 27, 20, 50, 35, 28,
      5, 13, 58, 43, 36, 21,  6, 29, 51, 44, 14, 22, 37, 59, 52, 30,
     45, 60, 38, 53, 46, 61, 54,  7, 62, 15, 23, 31, 39, 47, 55, 63}};
// clang-format on

}  // namespace vekvc::avs

#endif
