#include "h263/codes.h"

#include "bits/code_table.h"

namespace vekdec::h263 {
namespace {

using vekvc_tables::Code;

constexpr int kStuffing = 24;
constexpr Vek32s mcbpc(MbType type, int chroma) { return 4 * static_cast<Vek32s>(type) + chroma; }

// clang-format off
constexpr Code kIntraCodes[] = {  // H.263 Table 7
    {"1", mcbpc(MbType::Intra, 0)}, {"001", mcbpc(MbType::Intra, 1)},
    {"010", mcbpc(MbType::Intra, 2)}, {"011", mcbpc(MbType::Intra, 3)},
    {"0001", mcbpc(MbType::IntraQ, 0)}, {"000001", mcbpc(MbType::IntraQ, 1)},
    {"000010", mcbpc(MbType::IntraQ, 2)}, {"000011", mcbpc(MbType::IntraQ, 3)},
    {"000000001", kStuffing},
};
constexpr Code kInterCodes[] = {  // H.263 Table 8
    {"1", mcbpc(MbType::Inter, 0)}, {"0011", mcbpc(MbType::Inter, 1)},
    {"0010", mcbpc(MbType::Inter, 2)}, {"000101", mcbpc(MbType::Inter, 3)},
    {"011", mcbpc(MbType::InterQ, 0)}, {"0000111", mcbpc(MbType::InterQ, 1)},
    {"0000110", mcbpc(MbType::InterQ, 2)}, {"000000101", mcbpc(MbType::InterQ, 3)},
    {"010", mcbpc(MbType::Inter4V, 0)}, {"0000101", mcbpc(MbType::Inter4V, 1)},
    {"0000100", mcbpc(MbType::Inter4V, 2)}, {"00000101", mcbpc(MbType::Inter4V, 3)},
    {"00011", mcbpc(MbType::Intra, 0)}, {"00000100", mcbpc(MbType::Intra, 1)},
    {"00000011", mcbpc(MbType::Intra, 2)}, {"0000011", mcbpc(MbType::Intra, 3)},
    {"000100", mcbpc(MbType::IntraQ, 0)}, {"000000100", mcbpc(MbType::IntraQ, 1)},
    {"000000011", mcbpc(MbType::IntraQ, 2)}, {"000000010", mcbpc(MbType::IntraQ, 3)},
    {"00000000010", mcbpc(MbType::Inter4VQ, 0)}, {"0000000001100", mcbpc(MbType::Inter4VQ, 1)},
    {"0000000001110", mcbpc(MbType::Inter4VQ, 2)}, {"0000000001111", mcbpc(MbType::Inter4VQ, 3)},
    {"000000001", kStuffing},
};
constexpr std::string_view kCbpyCodes[16] = {  // H.263 Table 13
    "0011", "00101", "00100", "1001", "00011", "0111", "000010", "1011",
    "00010", "000011", "0101", "1010", "0100", "1000", "0110", "11"};
constexpr std::string_view kVectorCodes[33] = {  // H.263 Table 14, ISO 14496-2 Table B.12; by magnitude
    "1", "01", "001", "0001", "000011", "0000101", "0000100", "0000011", "000001011", "000001010", "000001001",
    "0000010001", "0000010000", "0000001111", "0000001110", "0000001101", "0000001100", "0000001011", "0000001010",
    "0000001001", "0000001000", "0000000111", "0000000110", "0000000101", "0000000100", "00000000111", "00000000110",
    "00000000101", "00000000100", "00000000011", "00000000010", "000000000011", "000000000010"};
// clang-format on

constexpr CodeTable<9> kMcbpcIntra(kIntraCodes);
constexpr CodeTable<13> kMcbpcInter(kInterCodes);
constexpr CodeTable<6> kCbpy(numbered(kCbpyCodes));
constexpr CodeTable<12> kVector(numbered(kVectorCodes));

std::optional<Mcbpc> meaning(int value) {
    if (value == kStuffing) return std::nullopt;
    return Mcbpc{static_cast<MbType>(value / 4), static_cast<unsigned>(value % 4)};
}

}  // namespace

std::optional<Mcbpc> readMcbpcIntra(ByteReader& bits) { return meaning(kMcbpcIntra.read(bits, "mcbpc")); }
std::optional<Mcbpc> readMcbpcInter(ByteReader& bits) { return meaning(kMcbpcInter.read(bits, "mcbpc")); }
unsigned readCbpy(ByteReader& bits) { return static_cast<unsigned>(kCbpy.read(bits, "cbpy")); }

int readVectorDifference(ByteReader& bits, int fCode) {
    const int code = kVector.read(bits, "vector difference");
    if (code == 0) return 0;
    const bool negative = bits.flag();
    const int size = fCode - 1;
    const int magnitude = ((code - 1) << size) + static_cast<int>(bits.u(size)) + 1;
    return negative ? -magnitude : magnitude;
}

}  // namespace vekdec::h263
