// DC values of MPEG-4, H.263 and H.261, decoding with inverse quantization, and the arguments of all that reads or
// writes bits.
#include "coefficient_kinds.h"

namespace {

using namespace vekvc_test;

Decoded decodeDc(const std::string& bits, Vek32s videoComp) {
    return decode(
        [&](Vek8u** s, Vek32s* o, Vek16s* b, Vek32s*) { return vekiDecodeDCIntra_MPEG4_1u16s(s, o, b, videoComp); },
        bits);
}

TEST(Mpeg4Dc, AsSpelledOut) {
    const struct {
        Vek32s videoComp;
        const char* bits;
        Vek16s dc;
    } cases[] = {
        {0, "011", 0},
        {0, "11 1", 1},
        {0, "11 0", -1},
        {0, "10 10", 2},
        {0, "010 101", 5},
        {0, "010 010", -5},
        {0, "001 1000", 8},
        {0, "0001 11111", 31},
        {0, "00001 000000", -63},
        {0, "000001 1000000", 64},
        {0, "0000001 00000000", -255},
        {0, "00000001 100000000 1", 256},
        {0, "000000001 1000000000 1", 512},
        {0, "0000000001 10000000000 1", 1024},
        {0, "00000000001 000000000000 1", -4095},
        {1, "11", 0},
        {1, "10 0", -1},
        {2, "01 11", 3},
        {-1, "001 100", 4},
        {1, "0001 0111", -8},
        {1, "00001 10000", 16},
        {1, "000001 100000", 32},
        {1, "0000001 1000000", 64},
        {1, "00000001 10000000", 128},
        {1, "000000001 011111111 1", -256},
        {1, "0000000001 1000000000 1", 512},
        {1, "00000000001 10000000000 1", 1024},
        {1, "000000000001 100000000000 1", 2048},
    };
    for (const auto& c : cases) {
        const Decoded d = decodeDc(c.bits, c.videoComp);
        EXPECT_EQ(d.status, vekStsOk) << c.bits;
        EXPECT_EQ(d.block[0], c.dc) << c.bits;
        EXPECT_EQ(d.moved, static_cast<std::ptrdiff_t>(joined(c.bits).size())) << c.bits;
        EXPECT_EQ(encode([&](Vek8u** s, Vek32s* o) { return vekiEncodeDCIntra_MPEG4_16s1u(s, o, c.dc, c.videoComp); }),
                  joined(c.bits));
    }
    for (const char* fault : {"00000001 100000000 0", "000000000001"}) {
        expectFault(decodeDc(fault, 0), fault);
        EXPECT_EQ(decodeDc(fault, 0).block[0], 99);
    }
    expectFault(decodeDc("0000000000001", 1), "chrominance");
}

TEST(Mpeg4Dc, RoundTripsEveryValue) {
    for (const Vek32s videoComp : {0, 1})
        for (int dc = -4095; dc <= 4095; ++dc) {
            const auto value = static_cast<Vek16s>(dc);
            const std::string bits = encode(
                [&](Vek8u** s, Vek32s* o) { return vekiEncodeDCIntra_MPEG4_16s1u(s, o, value, videoComp); }, dc & 7);
            ASSERT_EQ(decodeDc(bits, videoComp).block[0], dc);
        }
    const auto decodeH263 = DECODE(((void)i, vekiDecodeDCIntra_H263_1u16s(s, o, b)));
    for (int dc = 1; dc <= 254; ++dc) {
        BitWriter bits;
        bits.put(dc == 128 ? 255u : static_cast<unsigned>(dc), 8);
        EXPECT_EQ(
            encode([&](Vek8u** s, Vek32s* o) { return vekiEncodeDCIntra_H263_16s1u(s, o, static_cast<Vek16s>(dc)); }),
            bits.bits);
        EXPECT_EQ(decode(decodeH263, bits.bits).block[0], dc);
    }
    expectFault(decode(decodeH263, "00000000"), "0");
    expectFault(decode(decodeH263, "10000000"), "128");
}

// ---- arguments

TEST(Mpeg4Coefficients, CheckTheCursor) {
    Vek8u bytes[64] = {0x80};
    Vek16s block[64] = {1};
    Vek32s last = 5;
    for (const Vek32s bad : {-1, 8, INT32_MAX, INT32_MIN}) {
        Vek8u* stream = bytes;
        Vek32s offset = bad;
        for (const Kind& kind : kKinds) {
            EXPECT_EQ(kind.decode(&stream, &offset, block, &last), vekStsErrBitOffset) << kind.name;
            EXPECT_EQ(kind.encode(&stream, &offset, block), vekStsErrBitOffset) << kind.name;
        }
        EXPECT_EQ(vekiDecodeCoeffsIntraRVLCBackward_MPEG4_1u16s(&stream, &offset, 0, block, &last, 0, 0),
                  vekStsErrBitOffset);
        EXPECT_EQ(vekiDecodeCoeffsInterRVLCBackward_MPEG4_1u16s(&stream, &offset, 0, block, &last, 0),
                  vekStsErrBitOffset);
        EXPECT_EQ(vekiDecodeDCIntra_MPEG4_1u16s(&stream, &offset, block, 0), vekStsErrBitOffset);
        EXPECT_EQ(vekiDecodeDCIntra_H263_1u16s(&stream, &offset, block), vekStsErrBitOffset);
        EXPECT_EQ(vekiEncodeDCIntra_MPEG4_16s1u(&stream, &offset, 5000, 0), vekStsErrBitOffset);
        EXPECT_EQ(vekiEncodeDCIntra_H263_16s1u(&stream, &offset, 0), vekStsErrBitOffset);
        EXPECT_EQ(vekiReconstructDCTBlockInter_H263_1u16s(&stream, &offset, block, &last, 0, 0, 0), vekStsErrBitOffset);
        EXPECT_EQ(vekiReconstructDCTBlockIntra_H263_1u16s(&stream, &offset, block, &last, 1, 0, 0), vekStsErrBitOffset);
        EXPECT_EQ(vekiReconstructDCTBlockInter_H261_1u16s(&stream, &offset, block, &last, 0), vekStsErrBitOffset);
        EXPECT_EQ(vekiReconstructDCTBlockIntra_H261_1u16s(&stream, &offset, block, &last, 0), vekStsErrBitOffset);
        // A specification is looked at before the offset, and the quantizer behind it.
        alignas(16) Vek8u spec[156] = {};
        EXPECT_EQ(vekiReconstructDCTBlockInter_MPEG4_1u16s(&stream, &offset, block, &last, spec, 0, 0),
                  vekStsErrContextMatch);
        ASSERT_EQ(vekiQuantInvInterInit_MPEG4(spec, nullptr, 5), vekStsOk);
        EXPECT_EQ(vekiReconstructDCTBlockInter_MPEG4_1u16s(&stream, &offset, block, &last, spec, 0, 0),
                  vekStsErrBitOffset);
        offset = 0;
        for (const Vek32s QP : {0, 4})
            EXPECT_EQ(vekiReconstructDCTBlockInter_MPEG4_1u16s(&stream, &offset, block, &last, spec, QP, 0),
                      vekStsErrQPRange);
        ASSERT_EQ(vekiQuantInvIntraInit_MPEG4(spec, nullptr, 5), vekStsOk);
        EXPECT_EQ(vekiReconstructDCTBlockInter_MPEG4_1u16s(&stream, &offset, block, &last, spec, 1, 0),
                  vekStsErrContextMatch);
        EXPECT_EQ(stream, bytes);
        EXPECT_EQ(last, 5);
    }
}

// ---- decoding with inverse quantization

TEST(Mpeg4Reconstruct, IsDecodingAndInverseQuantization) {
    std::mt19937_64 random(7);
    Vek8u matrix[64];
    for (Vek8u& weight : matrix) weight = static_cast<Vek8u>(1 + random() % 255);
    Vek8u spec[2][156];
    vekiQuantInvInterInit_MPEG4(spec[0], nullptr, 8);
    vekiQuantInvInterInit_MPEG4(spec[1], matrix, 8);
    for (int n = 0; n < 600; ++n) {
        const auto QP = static_cast<Vek32s>(1 + random() % 31);
        const auto check = [&](const Decoded& both, const Decoded& levels, auto&& dequantize) {
            Decoded expected = levels;
            EXPECT_EQ(dequantize(expected.block.data()), vekStsOk);
            EXPECT_EQ(both.status, vekStsOk);
            EXPECT_EQ(both.block, expected.block);
            EXPECT_EQ(both.last, expected.last);
            EXPECT_EQ(both.moved, expected.moved);
        };
        const auto bitsOf = [&](const Kind& kind) {
            return mpeg4Block(kind.coding, randomMpeg4Pairs(random, kind.start, kind.coding.largestLevel()));
        };
        std::string bits = bitsOf(kKinds[kInter]);
        check(
            decode([&](Vek8u** s, Vek32s* o, Vek16s* b,
                       Vek32s* i) { return vekiReconstructDCTBlockInter_MPEG4_1u16s(s, o, b, i, spec[n & 1], QP, 0); },
                   bits),
            decode(kKinds[kInter].decode, bits),
            [&](Vek16s* b) { return vekiQuantInvInter_MPEG4_16s_C1I(b, spec[n & 1], QP); });
        bits = bitsOf(kKinds[kModifiedH263]);
        check(decode([&](Vek8u** s, Vek32s* o, Vek16s* b,
                         Vek32s* i) { return vekiReconstructDCTBlockInter_H263_1u16s(s, o, b, i, 0, 1, QP); },
                     bits),
              decode(kKinds[kModifiedH263].decode, bits),
              [&](Vek16s* b) { return vekiQuantInvInter_H263_16s_C1I(b, QP); });
        bits = bitsOf(kKinds[kInterH261]);
        check(decode([&](Vek8u** s, Vek32s* o, Vek16s* b,
                         Vek32s* i) { return vekiReconstructDCTBlockInter_H261_1u16s(s, o, b, i, QP); },
                     bits),
              decode(kKinds[kInterH261].decode, bits),
              [&](Vek16s* b) { return vekiQuantInvInter_H263_16s_C1I(b, QP); });
        // Intra: 8 bits of DC in front, here 128; 8 * 128 = 1024.
        const bool h261 = n % 2 == 0, coded = h261 || n % 4 == 1;
        const Kind& kind = h261 ? kKinds[kIntraH261] : kKinds[kIntraH263];
        bits = coded ? bitsOf(kind) : "";
        Decoded levels = coded ? decode(kind.decode, bits) : Decoded{vekStsOk, {}, 0, 0};
        levels.block[0] = 128, levels.moved += 8;
        const auto intra = [&](Vek8u** s, Vek32s* o, Vek16s* b, Vek32s* i) {
            return h261 ? vekiReconstructDCTBlockIntra_H261_1u16s(s, o, b, i, QP)
                        : vekiReconstructDCTBlockIntra_H263_1u16s(s, o, b, i, coded, 0, QP);
        };
        const Decoded d = decode(intra, "11111111" + bits);
        EXPECT_EQ(d.block[0], 1024);
        check(d, levels, [&](Vek16s* b) { return vekiQuantInvIntra_H263_16s_C1I(b, QP, 0); });
        expectFault(decode(intra, "10000000" + bits), "DC");
        if (coded) expectFault(decode(intra, "11111111 0000000000000000"), "AC");
    }
}

}  // namespace
