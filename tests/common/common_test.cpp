// Known answers and properties of the block primitives: what the comparison of the variants cannot say.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

#include "vekvc.h"

namespace {

template <class T>
std::vector<T> filled(std::size_t n, int value) {
    return std::vector<T>(n, static_cast<T>(value));
}

// ---- prediction

// A reference whose four neighbours at (0, 0) are 10, 21, 31, 44: every case and rounding gives another value.
struct FourSamples {
    std::vector<Vek8u> plane = filled<Vek8u>(17 * 17, 0);
    FourSamples() {
        plane[0] = 10;
        plane[1] = 21;
        plane[17] = 31;
        plane[18] = 44;
    }
};

TEST(HalfSample, CopyTakesItsCasesByAcc) {
    const FourSamples r;
    const int expected[4][2] = {
        {10, 10}, {16, 15}, {21, 20}, {27, 26}};  // 10 + 21 + 31 + 44 = 106: 108 >> 2 and 107 >> 2
    for (int acc = 0; acc < 4; ++acc)
        for (int rounding = 0; rounding < 2; ++rounding)
            for (const int noise : {0, 4, -8}) {
                auto dst = filled<Vek8u>(16 * 16, 0);
                ASSERT_EQ(vekiCopy16x16HP_8u_C1R(r.plane.data(), 17, dst.data(), 16, acc + noise, rounding + 2),
                          vekStsOk);
                EXPECT_EQ(dst[0], expected[acc][rounding]) << acc << " " << rounding;
            }
}

TEST(HalfSample, McTypeOrdersTheCasesTheOtherWay) {
    const FourSamples r;
    const auto residual = filled<Vek16s>(8 * 8, 0);
    const int expected[16] = {10, 10, 10, 10, 21, 21, 21, 21, 16, 16, 16, 16, 27, 27, 27, 27};
    for (int mcType = 0; mcType < 16; ++mcType)
        for (const int high : {0, 16, -16}) {
            auto dst = filled<Vek8u>(8 * 8, 0);
            ASSERT_EQ(vekiMC8x8_8u_C1(r.plane.data(), 17, residual.data(), 16, dst.data(), 8, mcType + high, 2),
                      vekStsOk);
            EXPECT_EQ(dst[0], expected[mcType]) << mcType;
        }
}

TEST(HalfSample, DiagonalRoundsOnceByTheControl) {
    // 1 + 0 + 0 + 1: (2 + 2) >> 2 is 1, (2 + 1) >> 2 is 0; two roundings up one after the other would give 1 for both.
    auto plane = filled<Vek8u>(17 * 17, 0);
    plane[0] = plane[18] = 1;
    Vek8u dst[64];
    for (int rounding = 0; rounding < 2; ++rounding) {
        ASSERT_EQ(vekiCopy8x8HP_8u_C1R(plane.data(), 17, dst, 8, 3, rounding), vekStsOk);
        EXPECT_EQ(dst[0], 1 - rounding);
    }
}

TEST(Residual, SaturatesWhereTheConstantWraps) {
    const auto pixels = filled<Vek8u>(64, 100);
    struct Case {
        int residual, added, constant;
    };
    const Case cases[] = {{300, 255, 255}, {-32768, 0, 0}, {32700, 255, 0}, {32767, 255, 0},
                          {-100, 0, 0},    {-99, 1, 1},    {155, 255, 255}, {154, 254, 254}};
    for (const auto& c : cases) {
        const auto residual = filled<Vek16s>(64, c.residual);
        auto block = pixels;
        ASSERT_EQ(vekiAdd8x8_16s8u_C1IRS(residual.data(), 16, block.data(), 8), vekStsOk);
        EXPECT_EQ(block, filled<Vek8u>(64, c.added)) << c.residual;
        block = pixels;
        ASSERT_EQ(vekiAddC8x8_16s8u_C1IR(static_cast<Vek16s>(c.residual), block.data(), 8), vekStsOk);
        EXPECT_EQ(block, filled<Vek8u>(64, c.constant)) << c.residual;
    }
}

TEST(TwoReferences, AverageRoundsUpUnderEitherRounding) {
    const auto f = filled<Vek8u>(5 * 5, 7), b = filled<Vek8u>(5 * 5, 8);
    const auto residual = filled<Vek16s>(16, 1);
    for (int mcType = 0; mcType < 16; mcType += 4)
        for (int rounding = 0; rounding < 2; ++rounding) {
            Vek8u dst[16];
            ASSERT_EQ(
                vekiMC4x4B_8u_C1(f.data(), 5, mcType, b.data(), 5, 12 - mcType, residual.data(), 8, dst, 4, rounding),
                vekStsOk);
            EXPECT_EQ(dst[15], 9);
        }
}

TEST(InterleavedChroma, NeighbourIsOfTheSameComponent) {
    std::vector<Vek8u> ref(18 * 9);
    for (std::size_t i = 0; i < ref.size(); ++i) ref[i] = i % 2 == 0 ? 10 : 200;  // Cb 10, Cr 200
    const auto zero = filled<Vek16s>(16 * 8, 0), one = filled<Vek16s>(8 * 8, 1);
    for (int mcType = 0; mcType < 16; mcType += 4) {
        Vek8u dst[128];
        ASSERT_EQ(vekiMC16x8UV_8u_C1(ref.data(), 18, zero.data(), 32, dst, 16, mcType, 0), vekStsOk);
        EXPECT_EQ(dst[0], 10);
        EXPECT_EQ(dst[127], 200);
        ASSERT_EQ(vekiMC8x8_16s8u_P2C2R(ref.data(), 18, zero.data(), one.data(), 16, dst, 16, mcType, 0), vekStsOk);
        EXPECT_EQ(dst[126], 10);   // U's residual 0
        EXPECT_EQ(dst[127], 201);  // V's residual 1
    }
}

// ---- block matching

TEST(Matching, HalfSampleRoundsUpAndDiagonalOnce) {
    std::vector<Vek8u> stripes(17 * 17);
    for (std::size_t i = 0; i < stripes.size(); ++i) stripes[i] = i / 17 % 2 == 0 ? 0 : 255;
    const auto at128 = filled<Vek8u>(256, 128);
    Vek32s sum = -1;
    ASSERT_EQ(vekiSAD16x16_8u32s(at128.data(), 16, stripes.data(), 17, &sum, 4), vekStsOk);
    EXPECT_EQ(sum, 0);
    ASSERT_EQ(vekiSAD16x16_8u32s(stripes.data(), 17, stripes.data(), 17, &sum, 0), vekStsOk);
    EXPECT_EQ(sum, 0);
    ASSERT_EQ(vekiSAD16x16_8u32s(at128.data(), 16, stripes.data(), 17, &sum, 0), vekStsOk);
    EXPECT_EQ(sum, 128 * 128 + 128 * 127);

    // 0 1 / 1 0 with the diagonal (2 + 2) >> 2 = 1; of 0 0 / 0 1 the diagonal is (1 + 2) >> 2 = 0, of two averages 1.
    std::vector<Vek8u> dot(25, 0);
    dot[6] = 1;
    const auto zeros = filled<Vek8u>(16, 0);
    ASSERT_EQ(vekiSSD4x4_8u32s_C1R(zeros.data(), 4, dot.data(), 5, &sum, 12), vekStsOk);
    EXPECT_EQ(sum, 0);
}

TEST(Matching, LargestSumsAreExact) {
    const auto low8 = filled<Vek8u>(256, 0), high8 = filled<Vek8u>(17 * 17, 255);
    const auto low16 = filled<Vek16u>(256, 0);
    Vek32s sum = 0;
    for (int mcType = 0; mcType < 16; mcType += 4) {
        vekiSAD16x16_8u32s(low8.data(), 16, high8.data(), 17, &sum, mcType);
        EXPECT_EQ(sum, 255 * 256);
        // Sums of 2, 4, 8, 16 or 32 such differences go up to 2^15 and 2^16, or just not.
        for (const int high : {1023, 1024, 2047, 2048, 4095, 4096, 8191, 8192, 16383, 16384, 32767, 32768, 65535}) {
            const auto high16 = filled<Vek16u>(17 * 17, static_cast<Vek16u>(high));
            vekiSAD16x16_16u32s_C1R(low16.data(), 32, high16.data(), 34, &sum, mcType);
            EXPECT_EQ(sum, high * 256);
            vekiSAD8x8_16u32s_C1R(low16.data(), 32, high16.data(), 34, &sum, mcType);
            EXPECT_EQ(sum, high * 64);
            vekiSAD4x4_16u32s_C1R(high16.data(), 34, low16.data(), 32, &sum, 0);
            EXPECT_EQ(sum, high * 16);
        }
        vekiSSD8x8_8u32s_C1R(low8.data(), 16, high8.data(), 17, &sum, mcType);
        EXPECT_EQ(sum, 255 * 255 * 64);
    }
}

TEST(Matching, InterleavedSumsGoByComponent) {
    std::vector<Vek8u> src(16 * 8, 0), ref(18 * 9);
    for (std::size_t i = 0; i < ref.size(); ++i) ref[i] = i % 2 == 0 ? 3 : 50;
    for (int mcType = 0; mcType < 16; mcType += 4) {
        Vek32s u = 0, v = 0;
        ASSERT_EQ(vekiSAD8x8_8u32s_C2R(src.data(), 16, ref.data(), 18, &u, &v, mcType), vekStsOk);
        EXPECT_EQ(u, 3 * 64);
        EXPECT_EQ(v, 50 * 64);
    }
}

TEST(Search, RoundsTheCountAndFindsTheFirstUnsignedMinimum) {
    const auto source = filled<Vek8u>(256, 0);
    std::vector<Vek8u> row(64, 255);
    const Vek32s flat = 0;  // all rows of the reference are one
    std::vector<Vek16u> sads(24, 7);
    Vek32u index = 99;
    EXPECT_EQ(vekiSAD16x16xNI_8u16u_C1R(source.data(), 16, row.data(), flat, sads.data(), 7, &index), vekStsErrSize);
    EXPECT_EQ(index, 99u);
    row[20] = 254;  // seen by positions 5 to 20
    ASSERT_EQ(vekiSAD16x16xNI_8u16u_C1R(source.data(), 16, row.data(), flat, sads.data(), 23, &index), vekStsOk);
    EXPECT_EQ(index, 5u);
    EXPECT_EQ(sads[0], 255 * 256);
    EXPECT_EQ(sads[5], 255 * 256 - 16);
    EXPECT_EQ(sads[16], 7);  // 23 acts as 16
    ASSERT_EQ(vekiSAD4x4xN_8u16u_C1R(source.data(), 16, row.data(), flat, sads.data(), 15), vekStsOk);
    EXPECT_EQ(sads[0], 255 * 16);
    EXPECT_EQ(sads[8], 255 * 256 - 16);  // as the search before left it: 15 acts as 8

    std::vector<Vek8u> twoMinima(32, 100);
    for (const std::size_t at : {3u, 4u, 5u, 6u, 11u, 12u, 13u, 14u}) twoMinima[at] = 0;
    ASSERT_EQ(vekiSAD4x4xNI_8u16u_C1R(source.data(), 16, twoMinima.data(), flat, sads.data(), 16, &index), vekStsOk);
    EXPECT_EQ(index, 3u);
}

// ---- scans

// ISO 13818-2 figures 7-2 and 7-3, ISO 14496-2 figure 7-2 (b), as they are drawn: the index of each place in the scan.
TEST(Scan, FollowsTheFigures) {
    constexpr int kFigures[3][64] = {
        {0,  1,  5,  6,  14, 15, 27, 28, 2,  4,  7,  13, 16, 26, 29, 42, 3,  8,  12, 17, 25, 30,
         41, 43, 9,  11, 18, 24, 31, 40, 44, 53, 10, 19, 23, 32, 39, 45, 52, 54, 20, 22, 33, 38,
         46, 51, 55, 60, 21, 34, 37, 47, 50, 56, 59, 61, 35, 36, 48, 49, 57, 58, 62, 63},
        {0,  4,  6,  20, 22, 36, 38, 52, 1,  5,  7,  21, 23, 37, 39, 53, 2,  8,  19, 24, 34, 40,
         50, 54, 3,  9,  18, 25, 35, 41, 51, 55, 10, 17, 26, 30, 42, 46, 56, 60, 11, 16, 27, 31,
         43, 47, 57, 61, 12, 15, 28, 32, 44, 48, 58, 62, 13, 14, 29, 33, 45, 49, 59, 63},
        {0,  1,  2,  3,  10, 11, 12, 13, 4,  5,  8,  9,  17, 16, 15, 14, 6,  7,  19, 18, 26, 27,
         28, 29, 20, 21, 24, 25, 30, 31, 32, 33, 22, 23, 34, 35, 42, 43, 44, 45, 36, 37, 40, 41,
         46, 47, 48, 49, 38, 39, 50, 51, 56, 57, 58, 59, 52, 53, 54, 55, 60, 61, 62, 63}};
    Vek16s indices[64], scanned[64], raster[64];
    for (Vek16s i = 0; i < 64; ++i) indices[i] = static_cast<Vek16s>(i + 1);
    for (int scan = 0; scan < 3; ++scan) {
        ASSERT_EQ(vekiScanInv_16s_C1(indices, raster, 63, scan), vekStsOk);
        for (int i = 0; i < 64; ++i) EXPECT_EQ(raster[i] - 1, kFigures[scan][i]) << scan << " at " << i;
        ASSERT_EQ(vekiScanFwd_16s_C1(raster, scanned, 64, scan), vekStsOk);
        EXPECT_TRUE(std::equal(indices, indices + 64, scanned));
    }
    Vek16s unknown[64];
    vekiScanFwd_16s_C1(raster, scanned, 64, 0);
    vekiScanFwd_16s_C1(raster, unknown, 64, 7);
    EXPECT_TRUE(std::equal(scanned, scanned + 64, unknown));
}

TEST(Scan, ForwardTrustsTheCountBelow20) {
    Vek16s block[64] = {}, dst[64];
    block[2] = 5;    // zigzag position 5
    block[24] = -9;  // zigzag position 9
    struct Case {
        int count, at5, at9;
    };
    for (const Case c : {Case{1, 5, 0}, Case{2, 5, -9}, Case{19, 5, -9}, Case{20, 5, -9}}) {
        ASSERT_EQ(vekiScanFwd_16s_C1(block, dst, c.count, 0), vekStsOk);
        EXPECT_EQ(dst[5], c.at5);
        EXPECT_EQ(dst[9], c.at9);
        EXPECT_EQ(std::count(dst, dst + 64, 0), 62 + (c.count == 1));
    }
    std::fill(block, block + 64, Vek16s{1});  // from 20 on the count no longer matters
    vekiScanFwd_16s_C1(block, dst, 20, 0);
    EXPECT_EQ(std::count(dst, dst + 64, 1), 64);
    vekiScanFwd_16s_C1(block, dst, 19, 0);
    EXPECT_EQ(std::count(dst, dst + 64, 1), 19);
}

TEST(Scan, ZeroCount) {
    Vek16s block[64] = {};
    Vek32u zeros = 0;
    vekiCountZeros8x8_16s_C1(block, &zeros);
    EXPECT_EQ(zeros, 64u);
    block[0] = 256;  // only the high byte is set
    block[63] = -1;
    vekiCountZeros8x8_16s_C1(block, &zeros);
    EXPECT_EQ(zeros, 62u);
}

// ---- variance

TEST(Variance, KnownBlocks) {
    Vek32s var = -1, mean = -1;
    const auto flat10 = filled<Vek8u>(64, 10);
    vekiVarMean8x8_8u32s_C1R(flat10.data(), 8, &var, &mean);
    EXPECT_EQ(mean, 640);
    EXPECT_EQ(var, 0);
    std::vector<Vek8u> chess(64);
    for (std::size_t i = 0; i < 64; ++i) chess[i] = i % 2 == 0 ? 0 : 2;
    vekiVarSum8x8_8u32s_C1R(chess.data(), 8, &var, &mean);
    EXPECT_EQ(mean, 64);
    EXPECT_EQ(var, 1);
    vekiVariance16x16_8u32s(filled<Vek8u>(256, 200).data(), 16, &var);  // 51200 squared wraps
    EXPECT_EQ(var, 16777216);
    vekiVariance16x16_8u32s(filled<Vek8u>(256, 100).data(), 16, &var);
    EXPECT_EQ(var, 0);
}

TEST(Variance, SixteenBitSumsSaturateByColumnInRowOrder) {
    Vek32s var = 0, mean = 0;
    std::vector<Vek16s> block(64, 0);
    for (std::size_t y = 0; y < 8; ++y) block[8 * y] = y < 2 ? 30000 : -10000;
    // Column 0: 30000, 32767 (limited), then six times -10000: -27233.
    vekiVarMean8x8_16s32s_C1R(block.data(), 16, &var, &mean);
    EXPECT_EQ(mean, -27233);
    block.assign(64, -32768);  // squares: 64 * 2^30 wraps to 0; each column sum stays at -32768
    vekiVarSum8x8_16s32s_C1R(block.data(), 16, &var, &mean);
    EXPECT_EQ(mean, -8 * 32768);
    EXPECT_EQ(var, -4096 * 4096);
}

TEST(Variance, EveryStepRoundsToSinglePrecision) {
    std::mt19937 random(4);
    for (int i = 0; i < 2000; ++i) {
        std::vector<Vek16s> block(64);
        for (auto& s : block) s = static_cast<Vek16s>(static_cast<int>(random() % 4001) - 2000);
        std::int64_t sum = 0, squares = 0;
        for (const int s : block) {
            sum += s;
            squares += s * s;
        }
        volatile float m = static_cast<float>(sum) / 64.0f, q = static_cast<float>(squares) / 64.0f, mm = m * m;
        volatile float v = q - mm;
        Vek32s var = 0, mean = 0;
        vekiVarMean8x8_16s32s_C1R(block.data(), 16, &var, &mean);
        ASSERT_EQ(mean, sum);
        ASSERT_EQ(var, static_cast<Vek32s>(v));
    }
}

// ---- smoothing

TEST(Smooth, WeightsAndBorders) {
    const Vek32s w = 21, h = 9;
    std::vector<Vek8u> src(static_cast<std::size_t>(w * h), 0), dst(src.size());
    src[static_cast<std::size_t>(4 * w + 10)] = 160;
    src[0] = 160;  // a corner: its replicas add up to 9 of the 16
    ASSERT_EQ(vekiFilterDenoiseSmooth_8u_C1R(src.data(), w, dst.data(), w, {w, h}), vekStsOk);
    const auto at = [&](int x, int y) { return dst[static_cast<std::size_t>(y * w + x)]; };
    EXPECT_EQ(at(10, 4), 40);
    EXPECT_EQ(at(9, 4), 20);
    EXPECT_EQ(at(11, 5), 10);
    EXPECT_EQ(at(0, 0), 90);
    EXPECT_EQ(at(1, 0), 30);
    EXPECT_EQ(at(1, 1), 10);
    EXPECT_EQ(at(2, 0), 0);
}

// Regions whose intermediate rows no memory can hold: where 3 rows, or their bytes, pass 32 bits.
TEST(Smooth, WidthsWithoutMemory) {
    Vek8u src = 0, dst = 77;
    for (const Vek32s w : {0x15555556, 0x2AAAAAAA, 0x2AAAAAAB, 0x55555556, INT32_MAX})
        EXPECT_EQ(vekiFilterDenoiseSmooth_8u_C1R(&src, w, &dst, w, {w, 3}), vekStsErrMemAlloc) << w;
    EXPECT_EQ(dst, 77);
}

}  // namespace
