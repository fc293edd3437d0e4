// VC-1 quantization: the standard's steps, decision levels and wrap-around by known answers, all coefficients against
// the intervals of their levels, and forward and inverse as a pair. Hadamard sums.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <random>
#include <vector>

#include "vekvc/vc1.h"

namespace {

using Inverse = VekStatus (*)(Vek16s*, Vek32s, VekiSize, Vek32s, Vek32s);
using Forward = VekStatus (*)(Vek16s*, Vek32s, VekiSize, Vek32s, Vek32s, Vek32s, Vek32s*);
struct Form {
    bool intra, uniform;
    Inverse inverse;
    Forward forward;
};
constexpr Form kForms[] = {
    {true, true, vekiQuantInvIntraUniform_VC1_16s_C1IR, vekiQuantIntraUniform_VC1_16s_C1IR},
    {true, false, vekiQuantInvIntraNonuniform_VC1_16s_C1IR, vekiQuantIntraNonuniform_VC1_16s_C1IR},
    {false, true, vekiQuantInvInterUniform_VC1_16s_C1IR, vekiQuantInterUniform_VC1_16s_C1IR},
    {false, false, vekiQuantInvInterNonuniform_VC1_16s_C1IR, vekiQuantInterNonuniform_VC1_16s_C1IR}};
using Block = std::vector<Vek16s>;

Block filled(int value) { return Block(64, static_cast<Vek16s>(value)); }
// What a block of one value becomes: at the DC's place, and elsewhere.
struct Pair {
    int dc, ac;
};
Pair dequantized(const Form& form, int level, int quant, int halfStep) {
    Block b = filled(level);
    EXPECT_EQ(form.inverse(b.data(), 16, {8, 8}, quant, halfStep), vekStsOk);
    for (std::size_t i = 2; i < 64; ++i) EXPECT_EQ(b[i], b[1]);
    return {b[0], b[1]};
}
Pair quantized(const Form& form, int coefficient, int quant, int halfStep, int offset) {
    Block b = filled(coefficient);
    Vek32s count = -1;
    EXPECT_EQ(form.forward(b.data(), 16, {8, 8}, quant, halfStep, offset, &count), vekStsOk);
    for (std::size_t i = 2; i < 64; ++i) EXPECT_EQ(b[i], b[1]);
    EXPECT_EQ(count, (b[1] != 0) * 63 + (!form.intra && b[0] != 0));
    return {b[0], b[1]};
}

// SMPTE 421M: the DC step by the quantizer scale, 1 to 31.
constexpr int kDcStep[] = {2,  4,  8,  8,  8,  9,  9,  10, 10, 11, 11, 12, 12, 13, 13, 14,
                           14, 15, 15, 16, 16, 17, 17, 18, 18, 19, 19, 20, 20, 21, 21};

TEST(VC1Quantize, InverseSteps) {
    for (const Form& form : kForms) {
        for (int quant = 1; quant <= 31; ++quant)
            for (int halfStep = 0; halfStep < 4; ++halfStep)
                for (const int level : {-300, -5, -1, 0, 1, 7, 300}) {
                    const int sign = (level > 0) - (level < 0);
                    const int ac = level * (2 * quant + halfStep % 2) + (form.uniform ? 0 : sign * quant);
                    const Pair c = dequantized(form, level, quant, halfStep);
                    EXPECT_EQ(c.ac, ac);
                    EXPECT_EQ(c.dc, form.intra ? level * kDcStep[quant - 1] : ac);
                }
        EXPECT_EQ(dequantized(form, -5, 3, 1).ac, form.uniform ? -35 : -38);
        EXPECT_EQ(dequantized(form, 2000, 31, 1).ac, form.uniform ? -5072 : -5041);  // 126000 and 126031 wrap
        EXPECT_EQ(dequantized(form, -32768, 31, 0).ac, form.uniform ? 0 : -31);
    }
    EXPECT_EQ(dequantized(kForms[0], 32767, 31, 0).dc, 32747);  // 688107 = 10 * 65536 + 32747
}

TEST(VC1Quantize, ForwardDecisionLevels) {
    struct Case {
        bool uniform;
        int offset, c, level;
    };
    const Case cases[] = {{false, 4, 7, 0},  {false, 4, 8, 1},  {false, 4, 15, 1}, {false, 4, 16, 2}, {false, 0, 11, 0},
                          {false, 0, 12, 1}, {false, 0, 19, 1}, {false, 0, 20, 2}, {true, 4, 3, 0},   {true, 4, 4, 1},
                          {true, 4, 12, 2},  {true, 0, 7, 0},   {true, 7, 1, 1},   {false, 0, 3, 0}};
    for (const Form& form : kForms) {
        for (const Case& c : cases) {
            if (c.uniform != form.uniform) continue;
            EXPECT_EQ(quantized(form, c.c, 4, 0, c.offset).ac, c.level) << c.c;
            EXPECT_EQ(quantized(form, -c.c, 4, 2, c.offset).ac, -c.level) << c.c;
        }
        const Pair lowest = quantized(form, -32768, 1, 0, 1);  // 32769 / 2, the DC likewise
        EXPECT_EQ(lowest.ac, -16384);
        EXPECT_EQ(lowest.dc, -16384);
    }
    EXPECT_EQ(quantized(kForms[0], -9, 1, 0, 0).dc, -5);  // (9 + 1) / 2
    EXPECT_EQ(quantized(kForms[1], -9, 1, 0, 0).dc, -5);
}

TEST(VC1Quantize, EveryCoefficientLiesInTheIntervalOfItsLevel) {
    for (const Form& form : kForms)
        for (int quant = 1; quant <= 31; ++quant)
            for (int halfStep = 0; halfStep < 2; ++halfStep) {
                const int step = 2 * quant + halfStep, dead = form.uniform ? 0 : quant;
                const int dcStep = form.intra ? kDcStep[quant - 1] : 0;
                const int offset = (quant * 7 + halfStep) % 3 * (step - 1) / 2;
                for (int first = -32768; first < 32768; first += 64) {
                    Block b(64);
                    for (int i = 0; i < 64; ++i) b[static_cast<std::size_t>(i)] = static_cast<Vek16s>(first + i);
                    Vek32s count = -1, expected = 0;
                    form.forward(b.data(), 16, {8, 8}, quant, halfStep, offset, &count);
                    for (int i = 0; i < 64; ++i) {
                        const int c = first + i, magnitude = std::abs(c), level = b[static_cast<std::size_t>(i)];
                        const int l = std::abs(level);
                        ASSERT_TRUE(level == 0 || (level < 0) == (c < 0)) << c;
                        if (form.intra && i == 0) {
                            ASSERT_LE(l * dcStep, magnitude + dcStep / 2) << c;
                            ASSERT_GT((l + 1) * dcStep, magnitude + dcStep / 2) << c;
                            continue;
                        }
                        ASSERT_LE(l == 0 ? 0 : l * step + dead, magnitude + offset) << c;
                        ASSERT_GT((l + 1) * step + dead, magnitude + offset) << c;
                        expected += level != 0;
                    }
                    ASSERT_EQ(count, expected);
                }
            }
}

TEST(VC1Quantize, ForwardGivesBackEveryLevel) {
    for (const Form& form : kForms)
        for (int quant = 1; quant <= 31; ++quant)
            for (int halfStep = 0; halfStep < 2; ++halfStep) {
                const int step = 2 * quant + halfStep, most = (32767 - 31) / 63;
                for (const int offset : {0, step / 2, step - 1})
                    for (int level = -most; level <= most; level += 13) {
                        const Pair c = dequantized(form, level, quant, halfStep);
                        EXPECT_EQ(quantized(form, c.ac, quant, halfStep, offset).ac, level);
                        EXPECT_EQ(quantized(form, c.dc, quant, halfStep, offset).dc, level);
                    }
            }
}

TEST(VC1Quantize, WhatLiesOutsideTheRegionStays) {
    for (const Form& form : kForms)
        for (const int width : {4, 8})
            for (int height = 1; height <= 8; ++height) {
                Block inverse = filled(3), forward = filled(3);
                Vek32s count = -1;
                ASSERT_EQ(form.inverse(inverse.data(), 16, {width, height}, 1, 0), vekStsOk);
                ASSERT_EQ(form.forward(forward.data(), 16, {width, height}, 1, 0, 0, &count), vekStsOk);
                EXPECT_EQ(count, width * height - form.intra);
                for (int i = 0; i < 64; ++i) {
                    const bool inside = i % 8 < width && i / 8 < height;
                    EXPECT_EQ(inverse[static_cast<std::size_t>(i)] != 3, inside);
                    EXPECT_EQ(forward[static_cast<std::size_t>(i)] != 3, inside);
                }
            }
}

TEST(VC1Quantize, OffsetIsLimitedByTheStep) {
    Block b = filled(9);
    Vek32s count = -1;
    for (const Form& form : kForms) {
        EXPECT_EQ(form.forward(b.data(), 16, {8, 8}, 4, 0, 8, &count), vekStsErrOutOfRange);
        EXPECT_EQ(form.forward(b.data(), 16, {8, 8}, 4, 1, 9, &count), vekStsErrOutOfRange);
        EXPECT_EQ(form.forward(b.data(), 16, {8, 8}, 4, 2, 8, &count), vekStsErrOutOfRange);
        EXPECT_EQ(form.forward(b.data(), 16, {8, 9}, 0, 0, -1, &count), vekStsErrSize);
        EXPECT_EQ(b, filled(9));
        EXPECT_EQ(count, -1);
        Block other = filled(9);
        EXPECT_EQ(form.forward(other.data(), 16, {8, 8}, 4, 1, 8, &count), vekStsOk);
        count = -1;
    }
}

// ---- Hadamard sums

TEST(VC1Hadamard, KnownSums) {
    Vek16s sum = -1;
    std::vector<Vek8u> flat(64, 200), dot(64, 0);
    ASSERT_EQ(vekiHadamard8x8Sum_VC1_8u16s(flat.data(), 8, &sum), vekStsOk);
    EXPECT_EQ(sum, 0);
    for (std::size_t i = 0; i < 64; ++i) {  // 63 times 255, wherever the sample lies
        dot.assign(64, 0);
        dot[i] = 255;
        vekiHadamard8x8Sum_VC1_8u16s(dot.data(), 8, &sum);
        EXPECT_EQ(sum, 4016);
        Block residual = filled(0);
        residual[i] = 255;
        vekiHadamard8x8Sum_VC1_16s(residual.data(), 16, &sum);
        EXPECT_EQ(sum, 4080);
    }
    struct Case {
        int value, sum;
    };
    // 64 times 512 is 32768; from 1024 on it wraps; -32768 has nothing left in 16 bits.
    for (const Case c : {Case{255, 4080}, Case{-255, 4080}, Case{511, 8176}, Case{512, 8192}, Case{-512, 8192},
                         Case{1024, 0}, Case{513, (65536 - 64 * 513 + 2) / 4}, Case{-32768, 0}}) {
        const Block block = filled(c.value);
        ASSERT_EQ(vekiHadamard8x8Sum_VC1_16s(block.data(), 16, &sum), vekStsOk);
        EXPECT_EQ(sum, c.sum) << c.value;
    }
    // The signs of the matrix itself: |C| = 8 * 255 everywhere, and with 4 * 255 and more the result is limited.
    Block signs(64);
    for (std::size_t i = 0; i < 64; ++i) signs[i] = std::popcount(i / 8 & i) % 2 != 0 ? -1 : 1;
    Block scaled(64);
    for (const Case c : {Case{255, 32640}, Case{256, 32767}, Case{4095, 32767}}) {
        for (std::size_t i = 0; i < 64; ++i) scaled[i] = static_cast<Vek16s>(signs[i] * c.value);
        vekiHadamard8x8Sum_VC1_16s(scaled.data(), 16, &sum);
        EXPECT_EQ(sum, c.sum);
    }
}

TEST(VC1Hadamard, EqualsTheButterflies) {
    std::mt19937 random(7);
    for (int round = 0; round < 4000; ++round) {
        Block residual(64);
        std::vector<Vek8u> samples(64);
        const int amplitude = 1 << random() % 16;
        for (auto& v : residual)
            v = static_cast<Vek16s>(static_cast<int>(random() % static_cast<unsigned>(2 * amplitude)) - amplitude);
        for (auto& v : samples) v = static_cast<Vek8u>(random() % (round % 2 == 0 ? 256 : 8));
        std::vector<Vek32s> ofResidual(residual.begin(), residual.end()), ofSamples(samples.begin(), samples.end());
        for (auto* d : {&ofResidual, &ofSamples})
            for (std::size_t bit = 1; bit < 64; bit *= 2)
                for (std::size_t i = 0; i < 64; ++i)
                    if ((i & bit) == 0) {
                        const Vek32s a = (*d)[i], b = (*d)[i + bit];
                        (*d)[i] = a + b;
                        (*d)[i + bit] = a - b;
                    }
        Vek32s sumOfResidual = 0, sumOfSamples = 0;
        for (const Vek32s c : ofResidual) sumOfResidual += std::abs(static_cast<Vek16s>(c));
        for (std::size_t i = 1; i < 64; ++i) sumOfSamples += std::abs(ofSamples[i]);
        Vek16s sum = -1;
        vekiHadamard8x8Sum_VC1_16s(residual.data(), 16, &sum);
        ASSERT_EQ(sum, std::min(32767, (sumOfResidual + 2) / 4)) << amplitude;
        vekiHadamard8x8Sum_VC1_8u16s(samples.data(), 8, &sum);
        ASSERT_EQ(sum, (sumOfSamples + 2) / 4);
    }
}

}  // namespace
