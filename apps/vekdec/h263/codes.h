// The codes of the macroblock layer that H.263 and MPEG-4 Part 2 share (H.263 5.3, ISO 14496-2 Annex B).
#pragma once

#include <optional>

#include "bits/byte_reader.h"

namespace vekdec::h263 {

// MB types (H.263 Table 9).
enum class MbType { Inter, InterQ, Inter4V, Intra, IntraQ, Inter4VQ };

constexpr bool isIntra(MbType type) { return type == MbType::Intra || type == MbType::IntraQ; }
constexpr bool hasQuantizer(MbType type) {
    return type == MbType::InterQ || type == MbType::IntraQ || type == MbType::Inter4VQ;
}
constexpr bool hasFourVectors(MbType type) { return type == MbType::Inter4V || type == MbType::Inter4VQ; }

struct Mcbpc {
    MbType type = MbType::Inter;
    unsigned chroma = 0;  // bit 1 Cb, bit 0 Cr
};
// None: stuffing.
std::optional<Mcbpc> readMcbpcIntra(ByteReader& bits);  // of I pictures
std::optional<Mcbpc> readMcbpcInter(ByteReader& bits);  // of the others

// Coded luma blocks, the first one bit 3, as intra macroblocks mean it.
unsigned readCbpy(ByteReader& bits);

// What DQUANT adds to the quantizer.
inline int readDquant(ByteReader& bits) {
    constexpr int kChange[] = {-1, -2, 1, 2};
    return kChange[bits.u(2)];
}

// A vector difference (ISO 14496-2 7.6.3; H.263 Table 14 is f_code 1).
int readVectorDifference(ByteReader& bits, int fCode);

}  // namespace vekdec::h263
