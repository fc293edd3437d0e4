#include "mpeg12/tables.h"

#include <new>
#include <string>

#include "bits/code_table.h"
#include "tables/mpeg2_vlc_tables.h"

namespace vekdec::mpeg12 {

namespace {

using vekvc_tables::Code;

// clang-format off
constexpr Code kAddressIncrement[] = {
    {"1", 1}, {"011", 2}, {"010", 3}, {"0011", 4}, {"0010", 5}, {"00011", 6}, {"00010", 7}, {"0000111", 8},
    {"0000110", 9}, {"00001011", 10}, {"00001010", 11}, {"00001001", 12}, {"00001000", 13}, {"00000111", 14},
    {"00000110", 15}, {"0000010111", 16}, {"0000010110", 17}, {"0000010101", 18}, {"0000010100", 19},
    {"0000010011", 20}, {"0000010010", 21}, {"00000100011", 22}, {"00000100010", 23}, {"00000100001", 24},
    {"00000100000", 25}, {"00000011111", 26}, {"00000011110", 27}, {"00000011101", 28}, {"00000011100", 29},
    {"00000011011", 30}, {"00000011010", 31}, {"00000011001", 32}, {"00000011000", 33},
    {"00000001000", kAddressEscape}, {"00000001111", kAddressStuffing},
};
constexpr Code kTypeI[] = {{"1", kIntra}, {"01", kIntra | kQuant}};
constexpr Code kTypeP[] = {
    {"1", kForward | kPattern}, {"01", kPattern}, {"001", kForward}, {"00011", kIntra},
    {"00010", kForward | kPattern | kQuant}, {"00001", kPattern | kQuant}, {"000001", kIntra | kQuant},
};
constexpr Code kTypeB[] = {
    {"10", kForward | kBackward}, {"11", kForward | kBackward | kPattern}, {"010", kBackward},
    {"011", kBackward | kPattern}, {"0010", kForward}, {"0011", kForward | kPattern}, {"00011", kIntra},
    {"00010", kForward | kBackward | kPattern | kQuant}, {"000011", kForward | kPattern | kQuant},
    {"000010", kBackward | kPattern | kQuant}, {"000001", kIntra | kQuant},
};
constexpr Code kTypeD[] = {{"1", kIntra}};
constexpr std::string_view kCodedBlockPattern[64] = {
    "000000001", "01011", "01001", "001101", "1101", "0010111", "0010011", "00011111",
    "1100", "0010110", "0010010", "00011110", "10011", "00011011", "00010111", "00010011",
    "1011", "0010101", "0010001", "00011101", "10001", "00011001", "00010101", "00010001",
    "001111", "00001111", "00001101", "000000011", "01111", "00001011", "00000111", "000000111",
    "1010", "0010100", "0010000", "00011100", "001110", "00001110", "00001100", "000000010",
    "10000", "00011000", "00010100", "00010000", "01110", "00001010", "00000110", "000000110",
    "10010", "00011010", "00010110", "00010010", "01101", "00001001", "00000101", "000000101",
    "01100", "00001000", "00000100", "000000100", "111", "01010", "01000", "001100"};
constexpr std::string_view kMotionCode[17] = {
    "1", "01", "001", "0001", "000011", "0000101", "0000100", "0000011", "000001011", "000001010", "000001001",
    "0000010001", "0000010000", "0000001111", "0000001110", "0000001101", "0000001100"};
constexpr Code kDmvector[] = {{"0", 0}, {"10", 1}, {"11", -1}};
// clang-format on

template <std::size_t capacity>
constexpr auto list(const auto& codes, std::initializer_list<int> widths) {
    return vekvc_tables::makeList<capacity>(codes, widths, false);
}
constexpr auto kAddressIncrementList = list<96>(kAddressIncrement, {11});
constexpr auto kTypeIList = list<16>(kTypeI, {2});
constexpr auto kTypePList = list<32>(kTypeP, {6});
constexpr auto kTypeBList = list<40>(kTypeB, {6});
constexpr auto kTypeDList = list<8>(kTypeD, {1});
constexpr auto kCodedBlockPatternList = list<144>(numbered(kCodedBlockPattern), {9});
constexpr auto kMotionCodeList = list<56>(numbered(kMotionCode), {10});
constexpr auto kDmvectorList = list<16>(kDmvector, {2});

}  // namespace

const Vek32s* Tables::keep(Vek32s* table, VekStatus status) {
    if (status != vekStsOk) throw std::bad_alloc();
    return tables_.emplace_back(table).get();
}

Tables::Tables() {
    const auto values = [&](const auto& codes) {
        Vek32s* table = nullptr;
        const VekStatus status = vekiHuffmanTableInitAlloc_32s(codes.data(), &table);
        return keep(table, status);
    };
    const auto pairs = [&](const auto& codes) {
        Vek32s* table = nullptr;
        const VekStatus status = vekiHuffmanRunLevelTableInitAlloc_32s(codes.data(), &table);
        return keep(table, status);
    };
    addressIncrement = values(kAddressIncrementList);
    macroblockType[0] = nullptr;
    macroblockType[1] = values(kTypeIList);
    macroblockType[2] = values(kTypePList);
    macroblockType[3] = values(kTypeBList);
    macroblockType[4] = values(kTypeDList);
    codedBlockPattern = values(kCodedBlockPatternList);
    motionCode = values(kMotionCodeList);
    dmvector = values(kDmvectorList);
    dcSize[0] = values(vekvc_tables::kDcSizeLuminanceList);
    dcSize[1] = values(vekvc_tables::kDcSizeChrominanceList);
    coefficients[0] = pairs(vekvc_tables::kDctCoefficientsZeroList);
    coefficients[1] = pairs(vekvc_tables::kDctCoefficientsOneList);
}

int decode(WordReader& bits, const Vek32s* table, const char* element) {
    Vek32s value = 0;
    if (vekiDecodeHuffmanOne_1u32s(bits.word(), bits.offset(), &value, table) != vekStsOk)
        throw BadSyntax(std::string("no valid ") + element);
    return value;
}

// clang-format off
const Vek32s kAlternateScan[64] = {
     0,  8, 16, 24,  1,  9,  2, 10, 17, 25, 32, 40, 48, 56, 57, 49,
    41, 33, 26, 18,  3, 11,  4, 12, 19, 27, 34, 42, 50, 58, 35, 43,
    51, 59, 20, 28,  5, 13,  6, 14, 21, 29, 36, 44, 52, 60, 37, 45,
    53, 61, 22, 30,  7, 15, 23, 31, 38, 46, 54, 62, 39, 47, 55, 63};
const Vek16s kDefaultIntraMatrix[64] = {
     8, 16, 19, 22, 26, 27, 29, 34, 16, 16, 22, 24, 27, 29, 34, 37,
    19, 22, 26, 27, 29, 34, 34, 38, 22, 22, 26, 27, 29, 34, 37, 40,
    22, 26, 27, 29, 32, 35, 40, 48, 26, 27, 29, 32, 35, 40, 48, 58,
    26, 27, 29, 34, 38, 46, 56, 69, 27, 29, 35, 38, 46, 56, 69, 83};
const std::uint8_t kNonLinearScale[32] = {
     0,  1,  2,  3,  4,  5,  6,  7,  8, 10, 12, 14, 16, 18, 20, 22,
    24, 28, 32, 36, 40, 44, 48, 52, 56, 64, 72, 80, 88, 96, 104, 112};
// clang-format on

}  // namespace vekdec::mpeg12
