// The code tables of MPEG-1/MPEG-2 DCT coefficients (ISO 13818-2 Tables B.12 to B.15) and the code lists made of them.
#ifndef VEKVC_APPS_COMMON_MPEG2_VLC_TABLES_H
#define VEKVC_APPS_COMMON_MPEG2_VLC_TABLES_H

#include "code_list.h"

namespace vekvc_tables {

// clang-format off

// Tables B.12 and B.13: dct_dc_size by size.
inline constexpr std::string_view kDcSizeLuminanceCodes[12] = {
    "100", "00", "01", "101", "110", "1110", "11110", "111110", "1111110", "11111110", "111111110", "111111111"};
inline constexpr std::string_view kDcSizeChrominanceCodes[12] = {
    "00", "01", "10", "110", "1110", "11110", "111110", "1111110", "11111110", "111111110", "1111111110", "1111111111"};

// Tables B.14 and B.15: run and level of a code, which a sign bit follows. First the codes in which the two differ;
// B.14 without the short code of a first coefficient (run 0, level 1).
inline constexpr Code kDctCoefficientsZero[] = {
    {"11", 0, 1}, {"011", 1, 1}, {"0100", 0, 2}, {"0101", 2, 1}, {"00101", 0, 3}, {"00111", 3, 1}, {"00110", 4, 1},
    {"000110", 1, 2}, {"000111", 5, 1}, {"000101", 6, 1}, {"000100", 7, 1}, {"0000110", 0, 4}, {"0000100", 2, 2},
    {"0000111", 8, 1}, {"0000101", 9, 1}, {"00100110", 0, 5}, {"00100001", 0, 6}, {"00100101", 1, 3},
    {"00100100", 3, 2}, {"00100111", 10, 1}, {"00100011", 11, 1}, {"00100010", 12, 1}, {"00100000", 13, 1},
    {"0000001010", 0, 7}, {"0000001100", 1, 4}, {"0000001011", 2, 3}, {"0000001111", 4, 2}, {"0000001001", 5, 2},
    {"0000001110", 14, 1}, {"0000001101", 15, 1}, {"0000001000", 16, 1}, {"000000011101", 0, 8},
    {"000000011000", 0, 9}, {"000000010011", 0, 10}, {"000000010000", 0, 11}, {"000000011011", 1, 5},
    {"000000010100", 2, 4}, {"0000000011010", 0, 12}, {"0000000011001", 0, 13}, {"0000000011000", 0, 14},
    {"0000000010111", 0, 15},
};
inline constexpr Code kDctCoefficientsOne[] = {
    {"10", 0, 1}, {"010", 1, 1}, {"110", 0, 2}, {"00101", 2, 1}, {"0111", 0, 3}, {"00111", 3, 1}, {"000110", 4, 1},
    {"00110", 1, 2}, {"000111", 5, 1}, {"0000110", 6, 1}, {"0000100", 7, 1}, {"11100", 0, 4}, {"0000111", 2, 2},
    {"0000101", 8, 1}, {"1111000", 9, 1}, {"11101", 0, 5}, {"000101", 0, 6}, {"1111001", 1, 3}, {"00100110", 3, 2},
    {"1111010", 10, 1}, {"00100001", 11, 1}, {"00100101", 12, 1}, {"00100100", 13, 1}, {"000100", 0, 7},
    {"00100111", 1, 4}, {"11111100", 2, 3}, {"11111101", 4, 2}, {"000000100", 5, 2}, {"000000101", 14, 1},
    {"000000111", 15, 1}, {"0000001101", 16, 1}, {"1111011", 0, 8}, {"1111100", 0, 9}, {"00100011", 0, 10},
    {"00100010", 0, 11}, {"00100000", 1, 5}, {"0000001100", 2, 4}, {"11111010", 0, 12}, {"11111011", 0, 13},
    {"11111110", 0, 14}, {"11111111", 0, 15},
};
// Then those that they share.
inline constexpr Code kDctCoefficientsBoth[] = {
    {"000000011100", 3, 3}, {"000000010010", 4, 3}, {"000000011110", 6, 2}, {"000000010101", 7, 2},
    {"000000010001", 8, 2}, {"000000011111", 17, 1}, {"000000011010", 18, 1}, {"000000011001", 19, 1},
    {"000000010111", 20, 1}, {"000000010110", 21, 1}, {"0000000010110", 1, 6}, {"0000000010101", 1, 7},
    {"0000000010100", 2, 5}, {"0000000010011", 3, 4}, {"0000000010010", 5, 3}, {"0000000010001", 9, 2},
    {"0000000010000", 10, 2}, {"0000000011111", 22, 1}, {"0000000011110", 23, 1}, {"0000000011101", 24, 1},
    {"0000000011100", 25, 1}, {"0000000011011", 26, 1}, {"00000000011111", 0, 16}, {"00000000011110", 0, 17},
    {"00000000011101", 0, 18}, {"00000000011100", 0, 19}, {"00000000011011", 0, 20}, {"00000000011010", 0, 21},
    {"00000000011001", 0, 22}, {"00000000011000", 0, 23}, {"00000000010111", 0, 24}, {"00000000010110", 0, 25},
    {"00000000010101", 0, 26}, {"00000000010100", 0, 27}, {"00000000010011", 0, 28}, {"00000000010010", 0, 29},
    {"00000000010001", 0, 30}, {"00000000010000", 0, 31}, {"000000000011000", 0, 32}, {"000000000010111", 0, 33},
    {"000000000010110", 0, 34}, {"000000000010101", 0, 35}, {"000000000010100", 0, 36}, {"000000000010011", 0, 37},
    {"000000000010010", 0, 38}, {"000000000010001", 0, 39}, {"000000000010000", 0, 40}, {"000000000011111", 1, 8},
    {"000000000011110", 1, 9}, {"000000000011101", 1, 10}, {"000000000011100", 1, 11}, {"000000000011011", 1, 12},
    {"000000000011010", 1, 13}, {"000000000011001", 1, 14}, {"0000000000010011", 1, 15}, {"0000000000010010", 1, 16},
    {"0000000000010001", 1, 17}, {"0000000000010000", 1, 18}, {"0000000000010100", 6, 3},
    {"0000000000011010", 11, 2}, {"0000000000011001", 12, 2}, {"0000000000011000", 13, 2},
    {"0000000000010111", 14, 2}, {"0000000000010110", 15, 2}, {"0000000000010101", 16, 2},
    {"0000000000011111", 27, 1}, {"0000000000011110", 28, 1}, {"0000000000011101", 29, 1},
    {"0000000000011100", 30, 1}, {"0000000000011011", 31, 1},
};
inline constexpr std::string_view kDctEndOfBlock[2] = {"10", "0110"};  // Tables B.14 and B.15
inline constexpr std::string_view kDctEscape = "000001";

// clang-format on

using DcSizeList = std::array<Vek32s, 48>;
using RunLevelList = std::array<Vek32s, 700>;

// Lists of dct_dc_size, looked up at once.
constexpr DcSizeList dcSizeList(const std::string_view (&table)[12]) {
    std::array<Code, 12> codes;
    int longest = 0;
    for (std::size_t i = 0; i < 12; ++i) {
        codes[i] = {table[i], static_cast<Vek32s>(i)};
        longest = static_cast<int>(table[i].size());
    }
    return makeList<48>(codes, {longest}, false);
}

// A list of run/level codes with both signs, escape (run 255) and end of block (run 254). The longest code is 17 bits
// with its sign.
constexpr RunLevelList runLevelList(const auto& differing, std::string_view endOfBlock) {
    std::array<std::array<char, 17>, 224> bits{};
    std::array<Code, 224> codes;
    std::size_t used = 0;
    const auto add = [&](const Code& code, char sign) {
        for (std::size_t i = 0; i < code.bits.size(); ++i) bits[used][i] = code.bits[i];
        bits[used][code.bits.size()] = sign;
        codes[used] = {{bits[used].data(), code.bits.size() + 1}, code.value, sign == '1' ? -code.level : code.level};
        ++used;
    };
    const auto addAll = [&](const auto& table) {
        for (const Code& code : table) {
            add(code, '0');
            add(code, '1');
        }
    };
    addAll(differing);
    addAll(kDctCoefficientsBoth);
    codes[used++] = {kDctEscape, 255, 0};
    codes[used++] = {endOfBlock, 254, 0};
    return makeList<700>(codes, {9, 8}, true);
}

inline constexpr DcSizeList kDcSizeLuminanceList = dcSizeList(kDcSizeLuminanceCodes);
inline constexpr DcSizeList kDcSizeChrominanceList = dcSizeList(kDcSizeChrominanceCodes);
inline constexpr RunLevelList kDctCoefficientsZeroList = runLevelList(kDctCoefficientsZero, kDctEndOfBlock[0]);
inline constexpr RunLevelList kDctCoefficientsOneList = runLevelList(kDctCoefficientsOne, kDctEndOfBlock[1]);

}  // namespace vekvc_tables

#endif
