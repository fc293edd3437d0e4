// AVS dequantization, transform and block reconstruction against formulas of their own.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "vekvc.h"

namespace {

using Coeffs = std::vector<Vek16s>;

int floorShift(std::int64_t x, int n) {
    return static_cast<int>(std::floor(static_cast<double>(x) / static_cast<double>(1 << n)));
}
Vek16s limited(int x) { return static_cast<Vek16s>(x < -32768 ? -32768 : x > 32767 ? 32767 : x); }

// The multipliers are 2^15 * 2^(QP % 8 / 8), rounded, but for the older ones among them.
int multiplier(int qp) {
    struct Exception {
        int qp, value;
    };
    constexpr Exception kExceptions[] = {{1, 36061},  {6, 55437},  {7, 60424},  {8, 32932},  {12, 46177}, {15, 59933},
                                         {16, 65535}, {19, 42577}, {21, 50617}, {22, 55027}, {24, 32809}, {27, 42454},
                                         {28, 46382}, {29, 50576}, {31, 60056}, {32, 65535}, {36, 46320}, {37, 50515},
                                         {39, 60076}, {40, 65535}, {41, 35744}, {46, 55099}, {47, 60087}, {48, 65535},
                                         {50, 38973}, {51, 42500}, {56, 32771}, {58, 38965}, {59, 42497}, {63, 60099}};
    for (const Exception& e : kExceptions)
        if (e.qp == qp) return e.value;
    return static_cast<int>(std::lround(32768 * std::exp2(qp % 8 / 8.0)));
}
// The power of two that makes the step 2^(QP / 8 + 1).
int shift(int qp) { return static_cast<int>(std::lround(std::log2(multiplier(qp)) - qp / 8.0 - 1)); }

TEST(AvsQuantInv, EveryStep) {
    std::mt19937 random(1);
    for (int qp = 0; qp < 64; ++qp) {
        Coeffs block(64), expected(64);
        for (std::size_t i = 0; i < 64; ++i) {
            block[i] = i < 2 ? static_cast<Vek16s>(i == 0 ? -32768 : 32767) : static_cast<Vek16s>(random());
            if (i > 40) block[i] = static_cast<Vek16s>(static_cast<int>(i) - 52);
            // The largest levels that stay in range: they show a multiplier that is off by one.
            const int largest = (32767 << shift(qp)) / multiplier(qp);
            if (i > 20 && i <= 40) block[i] = static_cast<Vek16s>(largest + 21 - static_cast<int>(i));
            const std::int64_t product = std::int64_t{block[i]} * multiplier(qp) + (1 << (shift(qp) - 1));
            expected[i] = limited(floorShift(product, shift(qp)));
        }
        EXPECT_EQ(vekiQuantInv8x8_AVS_16s_C1I(block.data(), qp), vekStsOk);
        EXPECT_EQ(block, expected) << qp;
    }
}

// The basis has the cosine's symmetries: its value depends on (2x + 1) k, in sixteenths of pi.
int basis(int k, int x) {
    constexpr int kValues[] = {8, 10, 10, 9, 8, 6, 4, 2, 0};
    const int angle = (2 * x + 1) * k % 32;
    const int folded = angle > 16 ? 32 - angle : angle;
    return folded <= 8 ? kValues[folded] : -kValues[16 - folded];
}
Coeffs residual(const Coeffs& c) {
    Coeffs h(64), r(64);
    const auto at = [](int row, int column) { return static_cast<std::size_t>(8 * row + column); };
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) {
            int sum = 4;
            for (int k = 0; k < 8; ++k) sum += c[at(y, k)] * basis(k, x);
            h[at(y, x)] = limited(floorShift(sum, 3));
        }
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) {
            int sum = 64;
            for (int k = 0; k < 8; ++k) sum += h[at(k, x)] * basis(k, y);
            r[at(y, x)] = limited(floorShift(sum, 7));
        }
    return r;
}
Coeffs transformed(Coeffs block) {
    EXPECT_EQ(vekiTransform8x8Inv_AVS_16s_C1I(block.data()), vekStsOk);
    return block;
}

TEST(AvsTransform, BasisFunctionsAndExtremes) {
    for (std::size_t p = 0; p < 64; ++p)
        for (const int value : {1, -37, 500, 32767, -32768}) {
            Coeffs block(64);
            block[p] = static_cast<Vek16s>(value);
            EXPECT_EQ(transformed(block), residual(block)) << p << ' ' << value;
        }
    Coeffs dc(64);
    dc[0] = 32767;
    EXPECT_EQ(transformed(dc), Coeffs(64, 2048));
    std::mt19937 random(2);
    for (int i = 0; i < 2000; ++i) {
        Coeffs block(64);
        const unsigned range = 1u << (1 + random() % 16);
        for (auto& c : block) c = static_cast<Vek16s>(random() % range - range / 2);
        if (i % 8 == 0)
            for (auto& c : block) c = random() % 2 == 0 ? -32768 : 32767;
        EXPECT_EQ(transformed(block), residual(block));
    }
}

TEST(AvsReconstruct, LevelsToSamples) {
    // One level of 1 at QP 32 is a coefficient of 32 and a residual of 2.
    Coeffs levels(64);
    levels[0] = 1;
    std::vector<Vek8u> samples(64, 254);
    samples[9] = 17;
    EXPECT_EQ(vekiReconstruct8x8_AVS_16s8u_C1IR(levels.data(), samples.data(), 8, 32), vekStsOk);
    EXPECT_EQ(samples[9], 19);
    EXPECT_EQ(samples[63], 255);
    std::mt19937 random(3);
    for (int i = 0; i < 500; ++i) {
        const int qp = static_cast<int>(random() % 64);
        Coeffs coeffs(64);
        std::vector<Vek8u> picture(64), expected(64);
        for (std::size_t k = 0; k < 64; ++k) {
            levels[k] = static_cast<Vek16s>(random() % 4 == 0 ? static_cast<int>(random() % 41) - 20 : 0);
            if (i % 16 == 0) levels[k] = static_cast<Vek16s>(random());
            coeffs[k] =
                limited(floorShift(std::int64_t{levels[k]} * multiplier(qp) + (1 << (shift(qp) - 1)), shift(qp)));
            picture[k] = static_cast<Vek8u>(random());
        }
        const Coeffs r = residual(coeffs), before = levels;
        for (std::size_t k = 0; k < 64; ++k) {
            const int sum = picture[k] + r[k];
            expected[k] = static_cast<Vek8u>(sum < 0 ? 0 : sum > 255 ? 255 : sum);
        }
        EXPECT_EQ(vekiReconstruct8x8_AVS_16s8u_C1IR(levels.data(), picture.data(), 8, qp), vekStsOk);
        EXPECT_EQ(picture, expected);
        EXPECT_EQ(levels, before);
    }
}

}  // namespace
