// DV blocks: inverse quantization, the 2-4-8 DCT and the conversions against formulas of the standards' own.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "vekvc.h"

namespace {

std::vector<Vek16s> quantized(int mode, int classNo, int qNo, int position, int level) {
    std::vector<Vek16s> block(64);
    block[static_cast<std::size_t>(position)] = static_cast<Vek16s>(level);
    const VekDVBlockInfo info = {
        static_cast<Vek8u>(mode), static_cast<Vek8u>(classNo), static_cast<Vek8u>(qNo), 0, 0, 0, {0, 0}};
    EXPECT_EQ(vekiQuantInv8x8xN_DV_16s_C1I(block.data(), &info, 1), vekStsOk);
    return block;
}

// The weights w(0) to w(7) of IEC 61834-2.
double weight(int i) {
    const auto cs = [](int m) { return std::cos(m * std::acos(-1.0) / 16); };
    const double w[] = {1,
                        cs(4) / (4 * cs(7) * cs(2)),
                        cs(4) / (2 * cs(6)),
                        1 / (2 * cs(5)),
                        7.0 / 8,
                        cs(4) / cs(3),
                        cs(4) / cs(2),
                        cs(4) / cs(1)};
    return w[i];
}

TEST(DvQuantInv, UndoesTheWeights) {
    for (const int mode : {0, 1})
        for (int p = 1; p < 64; ++p) {
            // qNo 15, class 0: step 1. A level of 255 stands for 255 * 2 / (w w).
            const int v = p / 8, h = p % 8;
            const double ideal = 255 * 2 / (weight(mode == 0 ? v : 2 * (v & 3)) * weight(h));
            EXPECT_NEAR(quantized(mode, 0, 15, p, 255)[static_cast<std::size_t>(p)], ideal, 0.52) << mode << ' ' << p;
        }
}

TEST(DvQuantInv, StepsByAreaAndClass) {
    // Scan indices 5 | 6, 20 | 21, 42 | 43 divide the areas; raster positions in 8-8 and 2-4-8.
    struct Border {
        int mode, last, next;
    };
    constexpr Border kBorders[3][2] = {{{0, 2, 3}, {1, 40, 2}}, {{0, 40, 48}, {1, 4, 36}}, {{0, 15, 23}, {1, 27, 59}}};
    constexpr int kSteps[][4] = {{8, 8, 16, 16}, {8, 8, 16, 16}, {4, 8, 8, 16}, {4, 8, 8, 16}, {4, 4, 8, 8},
                                 {4, 4, 8, 8},   {2, 4, 4, 8},   {2, 4, 4, 8},  {2, 2, 4, 4},  {2, 2, 4, 4},
                                 {1, 2, 2, 4},   {1, 2, 2, 4},   {1, 1, 2, 2},  {1, 1, 2, 2},  {1, 1, 1, 2}};
    constexpr int kOffset[4] = {6, 3, 0, 1};
    for (int classNo = 0; classNo < 4; ++classNo)
        for (int qNo = 0; qNo < 16; ++qNo) {
            const int k = qNo + kOffset[classNo];
            for (int area = 0; area < 3; ++area)
                for (const Border& b : kBorders[area])
                    for (const bool next : {false, true}) {
                        const int p = next ? b.next : b.last;
                        const int step = (k < 15 ? kSteps[k][area + next] : 1) * (classNo == 3 ? 2 : 1);
                        const double w = weight(b.mode == 0 ? p / 8 : 2 * (p / 8 & 3)) * weight(p % 8);
                        const double ideal = 100 * step * 2 / w;  // the weight is rounded to 14 bits
                        EXPECT_NEAR(quantized(b.mode, classNo, qNo, p, 100)[static_cast<std::size_t>(p)], ideal,
                                    0.51 + ideal / 32768)
                            << k << ' ' << p;
                    }
        }
    EXPECT_EQ(quantized(0, 3, 0, 63, 255)[63], 31398);
    // 4 * 16 * 128 * 18562 / 2^15 = 4640.5, the weight of row 1, column 3 being 2^14 / 0.8827
    EXPECT_EQ(quantized(0, 3, 0, 11, 128)[11], 4641);
    EXPECT_EQ(quantized(0, 3, 0, 11, -128)[11], -4640);
    EXPECT_EQ(quantized(0, 0, 15, 1, 1)[1], 2);
    EXPECT_EQ(quantized(0, 0, 15, 1, -1)[1], -2);
    EXPECT_EQ(quantized(0, 0, 0, 0, -256)[0], -1024);
}

TEST(Dv100QuantInv, StepsWeightsAndLimits) {
    const auto value = [](int set, int classNo, int qNo, int p, int level) {
        std::vector<Vek16s> block(64);
        block[static_cast<std::size_t>(p)] = static_cast<Vek16s>(level);
        const VekDVBlockInfo info = {0, static_cast<Vek8u>(classNo), static_cast<Vek8u>(qNo), 0, 0, 0, {0, 0}};
        EXPECT_EQ(vekiQuantInv8x8xN_DV100_16s_C1I(block.data(), &info, 1, set), vekStsOk);
        return block[static_cast<std::size_t>(p)];
    };
    // Weights of 16 to 19 at (0, 1) to (0, 4) of the first set; levels of 32 make the division exact.
    constexpr int kFirst[] = {0, 16, 17, 18, 18};
    for (int h = 1; h < 5; ++h) EXPECT_EQ(value(0, 0, 0, h, 32), kFirst[h]);
    constexpr int kSteps[] = {1, 1, 2, 3, 4, 5, 6, 7, 8, 16, 18, 20, 22, 24, 28, 52};
    for (int qNo = 0; qNo < 16; ++qNo) EXPECT_EQ(value(1, 0, qNo, 8, 32), 16 * kSteps[qNo]);
    for (int classNo = 0; classNo < 4; ++classNo) EXPECT_EQ(value(2, classNo, 0, 2, -32), -(17 << classNo));
    EXPECT_EQ(value(3, 0, 0, 8 * 4 + 5, 32), 192);  // not symmetric
    EXPECT_EQ(value(3, 0, 0, 8 * 5 + 4, 32), 172);
    // SMPTE 370M: the last rows of the four sets.
    constexpr int kLast[4][8] = {{44, 45, 48, 49, 101, 104, 116, 123},
                                 {44, 91, 96, 197, 203, 209, 232, 246},
                                 {44, 68, 96, 98, 202, 208, 232, 246},
                                 {88, 182, 192, 394, 406, 418, 464, 492}};
    for (int set = 0; set < 4; ++set)
        for (int h = 0; h < 8; ++h) EXPECT_EQ(value(set, 0, 0, 56 + h, 32), kLast[set][h]) << set << ' ' << h;
    EXPECT_EQ(value(3, 3, 15, 63, 255), 32767);
    EXPECT_EQ(value(3, 3, 15, 63, -255), -32768);
    EXPECT_EQ(value(0, 0, 0, 1, 1), 1);  // (16 + 16) >> 5
    EXPECT_EQ(value(0, 0, 0, 1, -1), 0);
    EXPECT_EQ(value(0, 3, 15, 0, 100), 400);
}

// ---- the 2-4-8 DCT from its definition, in long double

long double ideal(const Vek16s* half, int z, int x) {
    const long double pi = std::acos(-1.0L);
    long double sum = 0;
    for (int h = 0; h < 8; ++h)
        for (int k = 0; k < 4; ++k)
            sum += half[8 * k + h] * (h == 0 ? std::sqrt(0.5L) : 1) * (k == 0 ? std::sqrt(0.5L) : 1) *
                   std::cos((2 * x + 1) * h * pi / 16) * std::cos((2 * z + 1) * k * pi / 8);
    return sum / 4;
}
long double idealCoefficient(const Vek16s* samples, int row, int h) {
    const long double pi = std::acos(-1.0L);
    const int k = row % 4;
    long double sum = 0;
    for (int z = 0; z < 4; ++z)
        for (int x = 0; x < 8; ++x) {
            const int even = samples[16 * z + x], odd = samples[16 * z + 8 + x];
            sum += (row < 4 ? even + odd : even - odd) * std::cos((2 * x + 1) * h * pi / 16) *
                   std::cos((2 * z + 1) * k * pi / 8);
        }
    return sum / 4 * (h == 0 ? std::sqrt(0.5L) : 1) * (k == 0 ? std::sqrt(0.5L) : 1);
}
int rounded(long double v) { return static_cast<int>(std::floor(v + 0.5L + 0x1p-30L)); }

TEST(Dct248, IsTheIdealTransformRounded) {
    std::mt19937 random(3);
    for (int round = 0; round < 300; ++round) {
        Vek16s block[64], result[64];
        for (Vek16s& c : block)
            c = static_cast<Vek16s>(random() % 4 == 0 ? static_cast<int>(random() % 1200) - 600 : 0);
        std::copy_n(block, 64, result);
        ASSERT_EQ(vekiDCT8x8Inv248_DV_16s_C1I(result), vekStsOk);
        for (int z = 0; z < 4; ++z)
            for (int x = 0; x < 8; ++x) {
                const long double s = ideal(block, z, x), d = ideal(block + 32, z, x);
                ASSERT_EQ(result[16 * z + x], rounded(s + d));
                ASSERT_EQ(result[16 * z + 8 + x], rounded(s - d));
            }
        Vek16s samples[64];
        std::copy_n(result, 64, samples);
        ASSERT_EQ(vekiDCT8x8Fwd248_DV_16s_C1I(result), vekStsOk);
        for (int i = 0; i < 64; ++i) {
            ASSERT_EQ(result[i], rounded(idealCoefficient(samples, i / 8, i % 8)));
            ASSERT_NEAR(result[i], block[i], 4);
        }
    }
}

// A sample less than 63.5 - 2^-30 by 2^-43: made by a search, so that sums in another order reach the boundary.
TEST(Dct248, AllFormsRoundAlikeNextToTheBoundary) {
    constexpr Vek16s kBlock[64] = {
        -1438, 523,   -645,  -1252, 876,   1807,  1539, -75,   1012, -1719, -68,   881,  -301,  1117,  1441,  -538,
        -772,  1534,  1491,  -387,  -1205, -348,  589,  122,   1489, -731,  1332,  1095, -1470, 777,   -1023, 1093,
        1627,  260,   -1696, 839,   -1856, 633,   858,  -1543, 1519, 1271,  -93,   86,   -769,  997,   -1416, 462,
        1381,  -1672, -1373, 865,   -1642, -1458, 254,  -424,  -780, -477,  -1369, 281,  514,   -1602, 1310,  -761};
    Vek16s result[64];
    std::copy_n(kBlock, 64, result);
    ASSERT_EQ(vekiDCT8x8Inv248_DV_16s_C1I(result), vekStsOk);
    EXPECT_NEAR(static_cast<double>(ideal(kBlock, 0, 1) + ideal(kBlock + 32, 0, 1)), 63.5 - 0x1p-30, 0x1p-40);
    EXPECT_EQ(result[1], 63);
}

TEST(Dct248, TiesGoUp) {
    const auto inverse = [](int position, int value) {
        std::vector<Vek16s> block(64);
        block[static_cast<std::size_t>(position)] = static_cast<Vek16s>(value);
        EXPECT_EQ(vekiDCT8x8Inv248_DV_16s_C1I(block.data()), vekStsOk);
        return block;
    };
    for (int y = 0; y < 8; ++y) {
        EXPECT_EQ(inverse(32, 4)[static_cast<std::size_t>(8 * y)], y % 2 == 0 ? 1 : 0);
        EXPECT_EQ(inverse(32, 8)[static_cast<std::size_t>(8 * y)], y % 2 == 0 ? 1 : -1);
        EXPECT_EQ(inverse(0, -4)[static_cast<std::size_t>(8 * y)], 0);
        EXPECT_EQ(inverse(0, 804)[static_cast<std::size_t>(8 * y)], 101);
    }
    std::vector<Vek16s> lines(64);
    for (std::size_t i = 0; i < 64; ++i) lines[i] = i / 8 % 2 == 0 ? 100 : -100;
    EXPECT_EQ(vekiDCT8x8Fwd248_DV_16s_C1I(lines.data()), vekStsOk);
    for (std::size_t i = 0; i < 64; ++i) EXPECT_EQ(lines[i], i == 32 ? 800 : 0);
}

// ---- conversions

TEST(DvConvert, ChromaOf420BelongsToFields) {
    std::vector<Vek16s> blocks(6 * 64);
    for (int row = 0; row < 8; ++row)
        blocks[5 * 64 + 8 * static_cast<std::size_t>(row)] = static_cast<Vek16s>(row - 128);
    std::vector<Vek8u> picture(32 * 16);
    ASSERT_EQ(vekiYCrCb420ToCbYCr422_DV_16s8u_C2R(blocks.data(), picture.data(), 32), vekStsOk);
    constexpr int kRows[16] = {0, 1, 0, 1, 2, 3, 2, 3, 4, 5, 4, 5, 6, 7, 6, 7};
    for (std::size_t y = 0; y < 16; ++y) {
        EXPECT_EQ(picture[32 * y], kRows[y]);  // Cb
        EXPECT_EQ(picture[32 * y + 2], 128);   // Cr
    }
}

TEST(DvConvert, EdgeOf411FoldsItsChroma) {
    std::vector<Vek16s> blocks(6 * 64);
    blocks[5 * 64 + 7 * 8 + 3] = -100;  // Cb (3, 7): the right end of the upper half's last row
    blocks[5 * 64 + 4] = 100;           // Cb (4, 0): the left end of the lower half's first one
    std::vector<Vek8u> picture(32 * 16);
    ASSERT_EQ(vekiYCrCb411ToCbYCr422_DV_16s8u_C2R(blocks.data(), picture.data(), 32, 1), vekStsOk);
    EXPECT_EQ(picture[32 * 7 + 24], 28);
    EXPECT_EQ(picture[32 * 7 + 28], 28);
    EXPECT_EQ(picture[32 * 8], 228);
    EXPECT_EQ(picture[32 * 8 + 4], 228);
}

TEST(DvConvert, FieldsOfDv100AndLimits) {
    std::vector<Vek16s> blocks(8 * 64, -32768);
    for (std::size_t i = 2 * 64; i < 4 * 64; ++i) blocks[i] = 32767;  // Y2 Y3: the odd rows
    std::vector<Vek8u> picture(32 * 16);
    ASSERT_EQ(vekiYCrCb422ToCbYCr422_DV100_16s8u_C2R(blocks.data(), picture.data(), 32, 1), vekStsOk);
    for (std::size_t y = 0; y < 16; ++y) {
        EXPECT_EQ(picture[32 * y + 1], y % 2 == 0 ? 0 : 255);
        EXPECT_EQ(picture[32 * y], 0);
    }
    // Clipping comes before the mean.
    std::vector<Vek8u> small(16 * 8);
    ASSERT_EQ(vekiYCrCb422ToCbYCr422ZoomOut_DV100_16s8u_C2R(blocks.data(), small.data(), 16, 1, 1), vekStsOk);
    EXPECT_EQ(small[1], 128);
}

}  // namespace
