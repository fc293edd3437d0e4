// The kinds of coefficient blocks of MPEG-4, H.263 and H.261, and their reading and writing as strings of bits.
#ifndef VEKVC_TESTS_MPEG4_COEFFICIENT_KINDS_H
#define VEKVC_TESTS_MPEG4_COEFFICIENT_KINDS_H

#include <gtest/gtest.h>

#include <array>

#include "support/mpeg4.h"
#include "vekvc.h"

namespace vekvc_test {

using Levels = std::array<Vek16s, 64>;  // in scan order
using Syntax = Mpeg4Coding;

struct Kind {
    const char* name;
    Mpeg4Coding coding;
    int start;
    VekStatus (*decode)(Vek8u**, Vek32s*, Vek16s*, Vek32s*);
    VekStatus (*encode)(Vek8u**, Vek32s*, const Vek16s*);
};

#define DECODE(call) [](Vek8u** s, Vek32s* o, Vek16s* b, Vek32s* i) { return call; }
#define ENCODE(call) [](Vek8u** s, Vek32s* o, const Vek16s* b) { return call; }
// clang-format off
inline const Kind kKinds[] = {
    {"intra", {Syntax::mpeg4, Mpeg4Table::intra}, 0,
     DECODE(vekiDecodeCoeffsIntra_MPEG4_1u16s(s, o, b, i, 0, 0)),
     ENCODE(vekiEncodeCoeffsIntra_MPEG4_16s1u(s, o, b, 0, 0))},
    {"intra AC", {Syntax::mpeg4, Mpeg4Table::intra}, 1,
     DECODE(vekiDecodeCoeffsIntra_MPEG4_1u16s(s, o, b, i, -1, 3)),
     ENCODE(vekiEncodeCoeffsIntra_MPEG4_16s1u(s, o, b, 2, -1))},
    {"inter", {Syntax::mpeg4, Mpeg4Table::inter}, 0,
     DECODE(vekiDecodeCoeffsInter_MPEG4_1u16s(s, o, b, i, 0)),
     ENCODE(vekiEncodeCoeffsInter_MPEG4_16s1u(s, o, b, 0))},
    {"intra RVLC", {Syntax::reversible, Mpeg4Table::reversibleIntra}, 0,
     DECODE(vekiDecodeCoeffsIntraRVLC_MPEG4_1u16s(s, o, b, i, 0, 0)),
     ENCODE(vekiEncodeCoeffsIntraRVLC_MPEG4_16s1u(s, o, b, 0, 0))},
    {"intra RVLC AC", {Syntax::reversible, Mpeg4Table::reversibleIntra}, 1,
     DECODE(vekiDecodeCoeffsIntraRVLC_MPEG4_1u16s(s, o, b, i, 1, 0)),
     ENCODE(vekiEncodeCoeffsIntraRVLC_MPEG4_16s1u(s, o, b, 1, 0))},
    {"inter RVLC", {Syntax::reversible, Mpeg4Table::reversibleInter}, 0,
     DECODE(vekiDecodeCoeffsInterRVLC_MPEG4_1u16s(s, o, b, i, 0)),
     ENCODE(vekiEncodeCoeffsInterRVLC_MPEG4_16s1u(s, o, b, 0))},
    {"H.263 intra", {Syntax::h263, Mpeg4Table::inter}, 1,
     DECODE(vekiDecodeCoeffsIntra_H263_1u16s(s, o, b, i, 0, 0, 1)),
     ENCODE(vekiEncodeCoeffsIntra_H263_16s1u(s, o, b, 0, 0, 2))},
    {"H.263 advanced intra", {Syntax::h263, Mpeg4Table::advancedIntra, true}, 0,
     DECODE(vekiDecodeCoeffsIntra_H263_1u16s(s, o, b, i, 1, 1, 0)),
     ENCODE(vekiEncodeCoeffsIntra_H263_16s1u(s, o, b, 1, 1, 0))},
    {"H.263 inter", {Syntax::h263, Mpeg4Table::inter}, 0,
     DECODE(vekiDecodeCoeffsInter_H263_1u16s(s, o, b, i, 0, 0)),
     ENCODE(vekiEncodeCoeffsInter_H263_16s1u(s, o, b, 0))},
    {"H.263 inter, modified quantization", {Syntax::h263, Mpeg4Table::inter, true}, 0,
     DECODE(vekiDecodeCoeffsInter_H263_1u16s(s, o, b, i, 1, 1)),
     ENCODE(vekiEncodeCoeffsInter_H263_16s1u(s, o, b, 1))},
    {"H.261 intra", {Syntax::h261Intra, Mpeg4Table::h261}, 1,
     DECODE(vekiDecodeCoeffsIntra_H261_1u16s(s, o, b, i)),
     ENCODE(vekiEncodeCoeffsIntra_H261_16s1u(s, o, b))},
    {"H.261 inter", {Syntax::h261Inter, Mpeg4Table::h261}, 0,
     DECODE(vekiDecodeCoeffsInter_H261_1u16s(s, o, b, i)),
     ENCODE(vekiEncodeCoeffsInter_H261_16s1u(s, o, b))},
};
// clang-format on
enum KindNumber {
    kIntra,
    kIntraAc,
    kInter,
    kIntraRvlc,
    kIntraAcRvlc,
    kInterRvlc,
    kIntraH263,
    kAdvancedH263,
    kInterH263,
    kModifiedH263,
    kIntraH261,
    kInterH261
};

inline std::array<Vek16s, 64> raster(const Levels& levels, Vek32s scan = 0) {
    std::array<Vek16s, 64> block;
    vekiScanInv_16s_C1(levels.data(), block.data(), 63, scan);
    return block;
}

inline Levels levelsOf(const std::vector<Mpeg4Pair>& pairs, int start) {
    Levels levels = {};
    int i = start - 1;
    for (const auto [run, level] : pairs) levels[static_cast<std::size_t>(i += run + 1)] = static_cast<Vek16s>(level);
    return levels;
}

struct Decoded {
    VekStatus status;
    std::array<Vek16s, 64> block;
    Vek32s last;
    std::ptrdiff_t moved;  // bits
};

// Spaces part the fields of bits that are spelled out.
inline std::string joined(std::string bits) {
    std::erase(bits, ' ');
    return bits;
}

// Decodes a stream that begins `offset` bits into its first byte.
template <class Decode>
Decoded decode(Decode&& call, const std::string& bits, Vek32s offset = 3) {
    auto bytes = packBytes(std::string(static_cast<std::size_t>(offset), '1') + joined(bits), '1');
    bytes.resize(bytes.size() + 7, 0xA5);
    Vek8u* stream = bytes.data();
    const Vek32s from = offset;
    Decoded d = {};
    d.block.fill(99), d.last = -7;
    d.status = call(&stream, &offset, d.block.data(), &d.last);
    d.moved = 8 * (stream - bytes.data()) + offset - from;
    return d;
}

inline void expectFault(const Decoded& d, const std::string& what) {
    EXPECT_EQ(d.status, vekStsErrCoeffDecode) << what;
    EXPECT_EQ(d.last, -7) << what;
    EXPECT_EQ(d.moved, 0) << what;
}

inline void expectBlock(const Kind& kind, const std::string& bits, const Levels& levels, const std::string& what) {
    const Decoded d = decode(kind.decode, bits);
    auto expected = raster(levels);
    if (kind.start == 1) expected[0] = 99;
    int last = 63;
    while (last > 0 && levels[static_cast<std::size_t>(last)] == 0) --last;
    EXPECT_EQ(d.status, vekStsOk) << kind.name << what;
    EXPECT_EQ(d.block, expected) << kind.name << what;
    EXPECT_EQ(d.last, last) << kind.name << what;
    EXPECT_EQ(d.moved, static_cast<std::ptrdiff_t>(bits.size())) << kind.name << what;
}

// What an encoder wrote behind the first `offset` bits; checks that these and all bytes behind the last one stayed.
template <class Encode>
std::string encode(Encode&& call, Vek32s offset = 3) {
    std::vector<Vek8u> bytes(400, 0xB6);
    Vek8u* stream = bytes.data();
    const Vek32s from = offset;
    EXPECT_EQ(call(&stream, &offset), vekStsOk);
    std::string bits;
    const std::ptrdiff_t end = 8 * (stream - bytes.data()) + offset;
    const auto bit = [&](std::ptrdiff_t i) { return bytes[static_cast<std::size_t>(i / 8)] >> (7 - i % 8) & 1; };
    for (std::ptrdiff_t i = from; i < end; ++i) bits += bit(i) ? '1' : '0';
    for (std::ptrdiff_t i = 0; i < 3200; ++i) {
        const bool untouched = i < from || i >= (end == from ? from : (end + 7) / 8 * 8);
        const int expected = untouched ? 0xB6 >> (7 - i % 8) & 1 : i >= end ? 0 : bit(i);
        EXPECT_EQ(bit(i), expected) << i;
    }
    return bits;
}
inline std::string encodeBlock(const Kind& kind, const Levels& levels, Vek32s offset = 3) {
    const auto block = raster(levels);
    return encode([&](Vek8u** s, Vek32s* o) { return kind.encode(s, o, block.data()); }, offset);
}

}  // namespace vekvc_test

#endif
