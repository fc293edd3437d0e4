// MPEG-2 quantization: corners and the loop through quantizer and inverse quantizer.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "support/mpeg2.h"
#include "vekvc.h"

namespace {

using Block = std::vector<Vek16s>;

Block at(std::size_t position, Vek16s value) {
    Block block(64, 0);
    block[position] = value;
    return block;
}

TEST(Mpeg2Quant, WithoutAMatrix) {
    struct Case {
        Vek32s QP;
        Vek16s x, y;
    };
    for (const Case& c : {Case{1, 30000, 30000},
                          {-7, -32768, -32768},  // below 2: unchanged, not limited
                          {2, 7, 3},
                          {2, -7, -3},
                          {2, 4094, 2047},
                          {2, -32768, -2047},
                          {6, 6, 1},  // 65536 / 6 is rounded, or this would be 0
                          {31, 31, 0},
                          {31, 32, 1},
                          {31, -62, -1},
                          {20, -32768, -1638},  // as -32767: 32767 * 3277 >> 16
                          {65536, 32767, 0},
                          {std::numeric_limits<Vek32s>::max(), 32767, 0}}) {
        Block block = at(5, c.x);
        Vek32s count = -1;
        EXPECT_EQ(vekiQuant_MPEG2_16s_C1I(block.data(), c.QP, nullptr, &count), vekStsOk);
        EXPECT_EQ(block, at(5, c.y)) << c.QP << ' ' << c.x;
        EXPECT_EQ(count, c.y != 0 ? 1 : 0);
    }
}

TEST(Mpeg2Quant, WithAMatrix) {
    std::vector<Vek32f> matrix(64, 1.0f / 16);
    struct Case {
        Vek32s QP;
        Vek32f weight;
        Vek16s x, y;
    };
    constexpr Vek32f kInfinity = std::numeric_limits<Vek32f>::infinity();
    for (const Case& c : {Case{1, 1.0f / 16, 2046, 2046},
                          {1, 1.0f / 16, 32767, 2047},
                          {1, 1.0f / 16, -32768, -2047},
                          {3, 1.0f / 16, 8, 2},
                          {3, 1.0f / 16, -8, -2},
                          {-3, 1.0f / 16, 8, -2},
                          {1, 1e30f, 1, 2047},
                          {1, -1e30f, 1, -2047},
                          {1, kInfinity, -1, -2047},
                          {7, 1.0f / 83, 32767, 902}}) {  // 32767 * (16 / 7) / 83
        matrix[5] = c.weight;
        Block block = at(5, c.x);
        Vek32s count = -1;
        EXPECT_EQ(vekiQuant_MPEG2_16s_C1I(block.data(), c.QP, matrix.data(), &count), vekStsOk);
        EXPECT_EQ(block, at(5, c.y)) << c.QP << ' ' << c.x;
        EXPECT_EQ(count, c.y != 0 ? 1 : 0);
        block = at(5, c.x);
        block[0] = -3000;
        EXPECT_EQ(vekiQuantIntra_MPEG2_16s_C1I(block.data(), c.QP, matrix.data(), &count), vekStsOk);
        EXPECT_EQ(block[0], -3000);  // the DC neither changes nor counts
        EXPECT_EQ(block[5], c.y);
        EXPECT_EQ(count, c.y != 0 ? 1 : 0);
    }
}

// Where single-precision rounding decides: the two products round one after the other.
TEST(Mpeg2Quant, RoundsEachProduct) {
    for (Vek32s QP = 1; QP <= 112; ++QP) {
        for (const int weight : {7, 23, 83}) {
            for (int x = -2048; x < 2048; x += 5) {
                const std::vector<Vek32f> matrix(64, 1.0f / static_cast<Vek32f>(weight));
                Block block = at(63, static_cast<Vek16s>(x));
                Vek32s count;
                vekiQuant_MPEG2_16s_C1I(block.data(), QP, matrix.data(), &count);
                // Double holds every product of two floats exactly; each is then rounded to a float.
                const auto scale = static_cast<Vek32f>(16.0 / QP);
                const auto scaled = static_cast<Vek32f>(double{static_cast<Vek32f>(x)} * double{scale});
                const double y = std::trunc(static_cast<Vek32f>(double{scaled} * double{matrix[0]}));
                ASSERT_EQ(block[63], std::clamp(y, -2047.0, 2047.0)) << QP << ' ' << weight << ' ' << x;
            }
        }
    }
}

TEST(Mpeg2Quant, DefaultIntraMatrix) {
    // ISO 13818-2 6.3.11, in the order of the zigzag scan, in which a bit stream would have it.
    constexpr int kWeights[64] = {8,  16, 16, 19, 16, 19, 22, 22, 22, 22, 22, 22, 26, 24, 26, 27,  //
                                  27, 27, 26, 26, 26, 26, 27, 27, 27, 29, 29, 29, 34, 34, 34, 29,  //
                                  29, 29, 27, 27, 29, 29, 32, 32, 34, 34, 37, 38, 37, 35, 35, 34,  //
                                  35, 38, 38, 40, 40, 40, 48, 48, 46, 46, 56, 56, 58, 69, 69, 83};
    for (const int more : {-1, 1}) {  // around twice the weight
        Block block(64);
        for (int i = 0; i < 64; ++i)
            block[static_cast<std::size_t>(vekvc_test::zigzag8x8()[i])] = static_cast<Vek16s>(2 * kWeights[i] + more);
        Vek32s count = -1;
        EXPECT_EQ(vekiQuantIntra_MPEG2_16s_C1I(block.data(), 16, nullptr, &count), vekStsOk);
        EXPECT_EQ(count, 63);
        EXPECT_EQ(block[0], 16 + more);
        for (std::size_t i = 1; i < 64; ++i) EXPECT_EQ(block[i], more < 0 ? 1 : 2) << i;
    }
}

TEST(Mpeg2Quant, NullPointersAndZeroScale) {
    Block block(64, 3);
    Vek32s count = 7;
    for (const auto quant : {vekiQuantIntra_MPEG2_16s_C1I, vekiQuant_MPEG2_16s_C1I}) {
        EXPECT_EQ(quant(nullptr, 0, nullptr, &count), vekStsErrNullPtr);
        EXPECT_EQ(quant(block.data(), 0, nullptr, nullptr), vekStsErrNullPtr);
        EXPECT_EQ(quant(block.data(), 0, nullptr, &count), vekStsErrDivByZero);
    }
    EXPECT_EQ(count, 7);
    EXPECT_EQ(block, Block(64, 3));
}

TEST(Mpeg2QuantInv, Corners) {
    const auto intra = [](Vek16s x, Vek32s QP, Vek16s w) {
        Block block = at(9, x), weights(64, w);
        EXPECT_EQ(vekiQuantInvIntra_MPEG2_16s_C1I(block.data(), QP, weights.data()), vekStsOk);
        return block[9];
    };
    EXPECT_EQ(intra(3, 5, 16), 15);
    EXPECT_EQ(intra(-3, 1, 5), 0);   // -15 / 16 toward zero
    EXPECT_EQ(intra(-3, 1, 6), -1);  // -18 / 16
    EXPECT_EQ(intra(1, 1, 32767), 2047);
    EXPECT_EQ(intra(-1, 32767, 1), -2047);
    EXPECT_EQ(intra(2, 1, 16384), -2048);  // 32768 wraps
    EXPECT_EQ(intra(-2, 1, 16385), 2047);  // -32770 wraps to 32766, rounding after x saturates
    EXPECT_EQ(intra(7, 0, 99), 0);
    const auto inter = [](Vek16s x, Vek32s QP, Vek16s w) {
        Block block = at(9, x), weights(64, w);
        EXPECT_EQ(vekiQuantInv_MPEG2_16s_C1I(block.data(), QP, weights.data()), vekStsOk);
        return block[9];
    };
    EXPECT_EQ(inter(3, 5, 16), 17);  // 7 * 80 / 32
    EXPECT_EQ(inter(-3, 5, 16), -17);
    EXPECT_EQ(inter(1, 1, 11), 1);  // the half weight is 5: 16 / 16
    EXPECT_EQ(inter(-1, 1, 11), -1);
    EXPECT_EQ(inter(1, 1, 10), 0);  // 30 / 32 and -30 / 32 toward zero
    EXPECT_EQ(inter(-1, 1, 10), 0);
    EXPECT_EQ(inter(1, 1, 32767), 2047);       // 32767 + 16383 saturates
    EXPECT_EQ(inter(1, 2, 16384), -2048 - 0);  // m and p wrap to -32768; the half weight 16384 goes away from 0
    EXPECT_EQ(inter(-1, 1, -1), 2047);         // p = 1, half of 65535 = 32767
    const auto flat = [](Vek16s x, Vek32s QP) {
        Block block = at(9, x);
        EXPECT_EQ(vekiQuantInv_MPEG2_16s_C1I(block.data(), QP, nullptr), vekStsOk);
        return block[9];
    };
    EXPECT_EQ(flat(3, 5), 17);
    EXPECT_EQ(flat(-3, 5), -17);
    EXPECT_EQ(flat(20000, 1), 16383);    // 2x + 1 saturates
    EXPECT_EQ(flat(-20000, 1), -16384);  // (-32768 + 1) >> 1
    EXPECT_EQ(flat(-1, 32767 * 21845), flat(-1, 32767 * 21845 & 0xFFFF));
    EXPECT_EQ(flat(-1, 10923), 16384);  // p = 32767 is odd, x negative: exact
}

// An even sum flips the last bit of the last coefficient; lanes saturate, their sum does not.
TEST(Mpeg2QuantInv, MismatchControl) {
    const Block weights(64, 16);
    const auto last = [&](Block block, bool intra = false) {
        EXPECT_EQ(intra ? vekiQuantInvIntra_MPEG2_16s_C1I(block.data(), 1, weights.data())
                        : vekiQuantInv_MPEG2_16s_C1I(block.data(), 1, weights.data()),
                  vekStsOk);
        return block[63];
    };
    EXPECT_EQ(last(Block(64, 0)), 1);
    EXPECT_EQ(last(Block(64, 0), true), 1);
    EXPECT_EQ(last(at(0, 7), true), 0);
    EXPECT_EQ(last(at(0, 8), true), 1);
    EXPECT_EQ(last(at(63, -3), true), -3);
    Block two = at(63, -3);
    two[1] = 1;
    EXPECT_EQ(last(two, true), -4);
    // Weight 16 and QP 1 keep intra values up to 2047; the unscaled DC row: 32767 twice in lane 0 saturates to 32767.
    Block large = at(0, 32767);
    large[8] = 2;
    EXPECT_EQ(last(large, true), 0);  // 32767, odd; the true sum 32769 is odd too
    large[8] = 1;
    EXPECT_EQ(last(large, true), 0);  // saturated 32767 is odd, the true sum 32768 even
    large[1] = 32767 / 16;            // another lane: the joined sum passes 16 bits
    EXPECT_EQ(last(large, true), 1);
}

// Quantizing what the inverse quantizer reconstructs gives the level back (ISO 13818-2 7.4.2 with QP * W >= 32).
TEST(Mpeg2Quant, LevelsSurviveTheLoop) {
    for (const Vek32s QP : {2, 5, 16, 62}) {
        Block weights(64, 16);
        std::vector<Vek32f> reciprocals(64, 1.0f / 16);
        for (int level = -120; level <= 120; ++level) {
            Block intra = at(20, static_cast<Vek16s>(level)), inter = intra;
            if (std::abs(level) * QP > 2047 / 2) continue;
            vekiQuantInvIntra_MPEG2_16s_C1I(intra.data(), QP, weights.data());
            vekiQuantInv_MPEG2_16s_C1I(inter.data(), QP, weights.data());
            Vek32s count;
            vekiQuant_MPEG2_16s_C1I(inter.data(), QP, reciprocals.data(), &count);
            EXPECT_EQ(inter[20], level);
            // Truncation may lose what single precision rounds down: add half a step first, as encoders do.
            intra[20] = static_cast<Vek16s>(intra[20] + (level > 0 ? QP / 2 : -QP / 2));
            vekiQuantIntra_MPEG2_16s_C1I(intra.data(), QP, reciprocals.data(), &count);
            EXPECT_EQ(intra[20], level);
        }
    }
}

}  // namespace
