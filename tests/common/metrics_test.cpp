// Known answers of the metrics and statistics of a block: transformed differences, sums per 4x4 block, activity,
// deviation, edges.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <random>
#include <vector>

#include "vekvc.h"

namespace {

template <class T>
struct Plane {
    static constexpr int kWidth = 17;
    static constexpr Vek32s step = kWidth * static_cast<Vek32s>(sizeof(T));
    std::vector<T> samples;
    explicit Plane(int value) : samples(kWidth * kWidth, static_cast<T>(value)) {}
    T& operator()(int x, int y) { return samples[static_cast<std::size_t>(y * kWidth + x)]; }
    const T* data() const { return samples.data(); }
};

template <class T>
using Satd = VekStatus (*)(const T*, Vek32s, const T*, Vek32s, Vek32s*);
template <class T>
Vek32s run(Satd<T> satd, const Plane<T>& s, const Plane<T>& r) {
    Vek32s result = -1;
    EXPECT_EQ(satd(s.data(), s.step, r.data(), r.step, &result), vekStsOk);
    return result;
}
using SatdT8 = VekStatus (*)(const Vek8u*, Vek32s, const Vek8u*, Vek32s, Vek32s*, Vek32s);
Vek32s run(SatdT8 satd, const Plane<Vek8u>& s, const Plane<Vek8u>& r, Vek32s mcType = 0) {
    Vek32s result = -1;
    EXPECT_EQ(satd(s.data(), s.step, r.data(), r.step, &result, mcType), vekStsOk);
    return result;
}

constexpr Satd<Vek8u> kSatd8[] = {vekiSATD4x4_8u32s_C1R, vekiSATD8x8_8u32s_C1R, vekiSATD16x16_8u32s_C1R};
constexpr Satd<Vek16u> kSatd16[] = {vekiSATD4x4_16u32s_C1R, vekiSATD8x8_16u32s_C1R, vekiSATD16x16_16u32s_C1R};
constexpr SatdT8 kSatdT8[] = {vekiSATD8x8T8_8u32s_C1R, vekiSATD16x8T8_8u32s_C1R, vekiSATD16x16T8_8u32s_C1R};

// ---- transformed differences

TEST(Satd, FlatAndSingleDifferences) {
    const Plane<Vek8u> at10(10), at11(11);
    const Plane<Vek16u> deep10(1010), deep11(1011);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(run(kSatd8[i], at11, at10), 8 << 2 * i);  // a C of 16 per block, halved
        EXPECT_EQ(run(kSatd16[i], deep10, deep11), 8 << 2 * i);
        EXPECT_EQ(run(kSatdT8[i], at10, at11), 16 << i);  // a C of 64 per block, a quarter
    }
    // A single sample puts its magnitude into all C of its block, wherever it lies.
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x) {
            Plane<Vek8u> s(0);
            s(x, y) = 255;
            Plane<Vek16u> deep(0);
            deep(x, y) = 65535;
            EXPECT_EQ(run(kSatd8[2], s, Plane<Vek8u>(0)), 8 * 255);
            EXPECT_EQ(run(kSatd16[2], Plane<Vek16u>(0), deep), 8 * 65535);
            EXPECT_EQ(run(kSatdT8[2], s, Plane<Vek8u>(0)), 16 * 255);
            EXPECT_EQ(run(kSatdT8[0], Plane<Vek8u>(0), s), x < 8 && y < 8 ? 16 * 255 : 0);
            EXPECT_EQ(run(kSatdT8[1], s, Plane<Vek8u>(0)), y < 8 ? 16 * 255 : 0);
        }
}

TEST(Satd, LargestSumsAreExact) {
    // Differences with the signs of the matrix itself reach the bound: |C| = N times the difference everywhere.
    Plane<Vek8u> s4(0), r4(0), s8(0), r8(0);
    Plane<Vek16u> deepS(0), deepR(0);
    for (unsigned y = 0; y < 16; ++y)
        for (unsigned x = 0; x < 16; ++x) {
            const int px = static_cast<int>(x), py = static_cast<int>(y);
            const bool plus4 = std::popcount(x & y & 3) % 2 == 0, plus8 = std::popcount(x & y & 7) % 2 == 0;
            (plus4 ? s4 : r4)(px, py) = 255;
            (plus8 ? s8 : r8)(px, py) = 255;
            (plus4 ? deepS : deepR)(px, py) = 65535;
        }
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(run(kSatd8[i], s4, r4), 255 * 4 * 16 / 2 << 2 * i);
        EXPECT_EQ(run(kSatd16[i], deepS, deepR), 65535 * 4 * 16 / 2 << 2 * i);
        EXPECT_EQ(run(kSatdT8[i], s8, r8), 255 * 8 * 64 / 4 << i);
    }
}

// Sums of magnitudes of the transform in butterflies: rows, then columns.
template <int N>
Vek32s sumOfTransform(std::vector<Vek32s> d) {
    const auto at = [&](int i) -> Vek32s& { return d[static_cast<std::size_t>(i)]; };
    for (int bit = 1; bit < N * N; bit *= 2)
        for (int i = 0; i < N * N; ++i)
            if ((i & bit) == 0) {
                const Vek32s a = at(i), b = at(i + bit);
                at(i) = a + b;
                at(i + bit) = a - b;
            }
    Vek32s sum = 0;
    for (const Vek32s c : d) sum += std::abs(c);
    return sum;
}
template <int N, class T>
Vek32s sumOfBlocks(Plane<T>& s, Plane<T>& r, int width, int height) {
    Vek32s sum = 0;
    for (int top = 0; top < height; top += N)
        for (int left = 0; left < width; left += N) {
            std::vector<Vek32s> d;
            for (int y = top; y < top + N; ++y)
                for (int x = left; x < left + N; ++x) d.push_back(s(x, y) - r(x, y));
            sum += sumOfTransform<N>(d);
        }
    return sum;
}

TEST(Satd, EqualsTheButterflies) {
    std::mt19937 random(5);
    for (int round = 0; round < 600; ++round) {
        Plane<Vek8u> s(0), r(0);
        Plane<Vek16u> deepS(0), deepR(0);
        const auto spread = 1 + random() % 256, depth = 8 + random() % 9;
        for (auto* p : {&s, &r})
            for (auto& v : p->samples) v = static_cast<Vek8u>(random() % spread);
        for (auto* p : {&deepS, &deepR})
            for (auto& v : p->samples) v = static_cast<Vek16u>(random() % (1u << depth));
        for (int i = 0; i < 3; ++i) {
            const int size = 4 << i;
            ASSERT_EQ(run(kSatd8[i], s, r), sumOfBlocks<4>(s, r, size, size) / 2);
            ASSERT_EQ(run(kSatd16[i], deepS, deepR), sumOfBlocks<4>(deepS, deepR, size, size) / 2) << depth;
            const int width = i == 0 ? 8 : 16, height = i == 2 ? 16 : 8;
            ASSERT_EQ(run(kSatdT8[i], s, r), (sumOfBlocks<8>(s, r, width, height) + 2) / 4);
        }
    }
}

TEST(Satd, HalfSamplesRoundUp) {
    Plane<Vek8u> stripes(0), columns(0), dot(0);
    for (int y = 0; y < 17; ++y)
        for (int x = 0; x < 17; ++x) {
            stripes(x, y) = y % 2 == 0 ? 0 : 255;
            columns(x, y) = x % 2 == 0 ? 0 : 255;
        }
    dot(1, 1) = 1;
    for (const SatdT8 satd : kSatdT8) {
        EXPECT_EQ(run(satd, Plane<Vek8u>(128), stripes, 4), 0);
        EXPECT_EQ(run(satd, Plane<Vek8u>(128), columns, 8 + 16 + 3), 0);
        EXPECT_EQ(run(satd, Plane<Vek8u>(128), stripes, 12), 0);
        EXPECT_EQ(run(satd, Plane<Vek8u>(0), dot, 12),
                  0);  // (1 + 2) >> 2; two averages one after the other would give 1
    }
}

// ---- sums per 4x4 block

TEST(Blocks4x4, OneSumPerBlockInRasterOrder) {
    Plane<Vek8u> s(100), r(100);
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x) {
            const int block = y / 4 * 4 + x / 4, difference = block % 3 == 0 ? -block - 1 : 5 * block;
            s(x, y) = static_cast<Vek8u>(s(x, y) + difference);
        }
    s(7, 3) = 90;  // the last sample of block 1 is 10 below, not 5 above
    Vek16u sad[16];
    Vek16s sums[16], sums8[4];
    ASSERT_EQ(vekiSAD16x16Blocks4x4_8u16u_C1R(s.data(), s.step, r.data(), r.step, sad), vekStsOk);
    ASSERT_EQ(vekiSumsDiff16x16Blocks4x4_8u16s_C1R(s.data(), s.step, r.data(), r.step, sums), vekStsOk);
    ASSERT_EQ(vekiSumsDiff8x8Blocks4x4_8u16s_C1R(s.data(), s.step, r.data(), r.step, sums8), vekStsOk);
    for (int i = 0; i < 16; ++i) {
        const int difference = i % 3 == 0 ? -i - 1 : 5 * i;
        EXPECT_EQ(sad[i], 16 * std::abs(difference) + (i == 1 ? 5 : 0));
        EXPECT_EQ(sums[i], 16 * difference - (i == 1 ? 15 : 0));
    }
    for (int i = 0; i < 4; ++i) EXPECT_EQ(sums8[i], sums[i / 2 * 4 + i % 2]);
    const Plane<Vek8u> black(0), white(255);
    vekiSAD16x16Blocks4x4_8u16u_C1R(black.data(), black.step, white.data(), white.step, sad);
    vekiSumsDiff16x16Blocks4x4_8u16s_C1R(black.data(), black.step, white.data(), white.step, sums);
    for (int i = 0; i < 16; ++i) {
        EXPECT_EQ(sad[i], 4080);
        EXPECT_EQ(sums[i], -4080);
    }
}

// ---- activity

template <class T>
using FrameField = VekStatus (*)(const T*, Vek32s, Vek32s*, Vek32s*);
template <class T>
void checkFrameField(FrameField<T> sums, int low, int high) {
    const Vek32s difference = std::abs(high - low);
    Vek32s frame = -1, field = -1;
    for (int row = 0; row < 16; ++row) {
        Plane<T> p(low);
        for (int x = 0; x < 16; ++x) p(x, row) = static_cast<T>(high);
        ASSERT_EQ(sums(p.data(), p.step, &frame, &field), vekStsOk);
        EXPECT_EQ(frame, (row % 8 == 0 || row % 8 == 7 ? 1 : 2) * 16 * difference) << row;
        EXPECT_EQ(field, (row < 2 || row > 13 ? 1 : 2) * 16 * difference) << row;
    }
    Plane<T> interlaced(low), halves(low);
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x) {
            if (y % 2 != 0) interlaced(x, y) = static_cast<T>(high);
            if (y > 7) halves(x, y) = static_cast<T>(high);
        }
    sums(interlaced.data(), interlaced.step, &frame, &field);
    EXPECT_EQ(frame, 14 * 16 * difference);
    EXPECT_EQ(field, 0);
    sums(halves.data(), halves.step, &frame, &field);
    EXPECT_EQ(frame, 0);  // rows 7 and 8 belong to different blocks
    EXPECT_EQ(field, 2 * 16 * difference);
}

TEST(FrameFieldActivity, CountsThePairsInsideTheBlocks) {
    checkFrameField<Vek8u>(vekiSADFrameField16x16_8u32s_C1R, 0, 255);
    checkFrameField<Vek8u>(vekiSADFrameField16x16_8u32s_C1R, 200, 100);  // the magnitude counts
    checkFrameField<Vek16s>(vekiSADFrameField16x16_16s32s_C1R, -255, 255);
    checkFrameField<Vek16s>(vekiSADFrameField16x16_16s32s_C1R, -32768, 32767);
    checkFrameField<Vek16s>(vekiSADFrameField16x16_16s32s_C1R, 0, 32767);
    checkFrameField<Vek16s>(vekiSADFrameField16x16_16s32s_C1R, -1000, 1341);  // 14 such pairs pass 32767
}

// ---- edges

Vek32s edges(const Plane<Vek8u>& p, Vek32s level) {  // the count that the verdict turns at
    Vek32s low = 0, high = 481;                      // an edge at low, none at high
    while (high - low > 1) {
        Vek32s isEdge = -1;
        const Vek32s middle = (low + high) / 2;
        EXPECT_EQ(vekiEdgeDetect16x16_8u32s_C1R(p.data(), p.step, level, middle, &isEdge), vekStsOk);
        EXPECT_TRUE(isEdge == 0 || isEdge == 1);
        (isEdge != 0 ? low : high) = middle;
    }
    return low;
}

TEST(Edges, CountsNeighboursInsideTheBlock) {
    for (int y = 0; y < 17; ++y)
        for (int x = 0; x < 17; ++x) {
            Plane<Vek8u> p(20);
            p(x, y) = 120;
            const int neighbours = (x > 0) + (x < 15) + (y > 0) + (y < 15);
            EXPECT_EQ(edges(p, 99), x < 16 && y < 16 ? neighbours : 0);
            EXPECT_EQ(edges(p, 100), 0);  // larger, not as large
        }
    Plane<Vek8u> chess(0);
    for (int y = 0; y < 17; ++y)
        for (int x = 0; x < 17; ++x) chess(x, y) = (x + y) % 2 == 0 ? 0 : 255;
    EXPECT_EQ(edges(chess, 254), 480);
    EXPECT_EQ(edges(chess, 255), 0);
    EXPECT_EQ(edges(chess, INT32_MAX), 0);
    EXPECT_EQ(edges(Plane<Vek8u>(7), 0), 0);
    EXPECT_EQ(edges(Plane<Vek8u>(7), -1), 480);
    EXPECT_EQ(edges(Plane<Vek8u>(7), INT32_MIN), 480);
    Vek32s isEdge = -1;
    vekiEdgeDetect16x16_8u32s_C1R(chess.data(), chess.step, 255, 0, &isEdge);
    EXPECT_EQ(isEdge, 1);
    vekiEdgeDetect16x16_8u32s_C1R(chess.data(), chess.step, 255, INT32_MIN, &isEdge);
    EXPECT_EQ(isEdge, 1);
    vekiEdgeDetect16x16_8u32s_C1R(chess.data(), chess.step, -1, 481, &isEdge);
    EXPECT_EQ(isEdge, 0);
}

// ---- deviation and variance

TEST(Deviation, MeanDropsItsFraction) {
    struct Case {
        int ones, of64, of256;  // so many samples are 1 (of 64; four times as many of 256)
    };
    for (const Case c : {Case{0, 0, 0}, Case{1, 1, 4}, Case{63, 63, 252}, Case{64, 0, 0}}) {
        std::vector<Vek8u> block(256, 0);
        Vek32s dev = -1;
        std::fill_n(block.begin(), c.ones, Vek8u{1});
        ASSERT_EQ(vekiMeanAbsDev8x8_8u32s_C1R(block.data(), 8, &dev), vekStsOk);
        EXPECT_EQ(dev, c.of64);
        std::fill_n(block.begin(), 4 * c.ones, Vek8u{1});
        ASSERT_EQ(vekiMeanAbsDev16x16_8u32s_C1R(block.data(), 16, &dev), vekStsOk);
        EXPECT_EQ(dev, c.of256);
    }
    std::vector<Vek8u> block(256, 0);
    std::fill_n(block.begin(), 32, Vek8u{255});  // mean 127.5
    Vek32s dev = -1;
    vekiMeanAbsDev8x8_8u32s_C1R(block.data(), 8, &dev);
    EXPECT_EQ(dev, 32 * 127 + 32 * 128);
    std::fill_n(block.begin(), 192, Vek8u{255});  // mean 191.25
    vekiMeanAbsDev16x16_8u32s_C1R(block.data(), 16, &dev);
    EXPECT_EQ(dev, 192 * 64 + 64 * 191);
}

TEST(VarianceOfDifference, IsExactInAllCases) {
    Vek32s var = -1, mean = -1;
    const Plane<Vek8u> black(0), white(255);
    vekiVarMeanDiff16x16_8u32s_C1R(white.data(), white.step, black.data(), black.step, &var, &mean, 0);
    EXPECT_EQ(mean, 65280);  // its square exceeds 2^31
    EXPECT_EQ(var, 0);
    vekiVarMeanDiff16x8_8u32s_C1R(black.data(), black.step, white.data(), white.step, &var, &mean, 12);
    EXPECT_EQ(mean, -32640);
    EXPECT_EQ(var, 0);
    Plane<Vek8u> half(0);  // the lower half of the 16x16 block is white, of the 16x8 block four rows
    for (int y = 0; y < 17; ++y)
        for (int x = 0; x < 17; ++x) half(x, y) = (y & 4) != 0 ? 255 : 0;
    vekiVarMeanDiff16x16_8u32s_C1R(half.data(), half.step, black.data(), black.step, &var, &mean, 0);
    EXPECT_EQ(mean, 128 * 255);
    EXPECT_EQ(var, 64 * 255 * 255);  // 256 (255 / 2)^2
    vekiVarMeanDiff16x8_8u32s_C1R(half.data(), half.step, black.data(), black.step, &var, &mean, 0);
    EXPECT_EQ(var, 32 * 255 * 255);
    // 21 samples of 1 among 256 are 21 - 441 / 256 = 19.3, of -1 too: 441 / 256 is cut to 1.
    Plane<Vek8u> few(0);
    std::fill_n(few.samples.begin(), 16, Vek8u{1});
    std::fill_n(few.samples.begin() + 17, 5, Vek8u{1});
    vekiVarMeanDiff16x16_8u32s_C1R(black.data(), black.step, few.data(), few.step, &var, &mean, 0);
    EXPECT_EQ(mean, -21);
    EXPECT_EQ(var, 20);
    // 441 / 128 is cut to 3.
    vekiVarMeanDiff16x8_8u32s_C1R(few.data(), few.step, black.data(), black.step, &var, &mean, 16);
    EXPECT_EQ(mean, 21);
    EXPECT_EQ(var, 18);
    // Half samples between 0 and 255 are 128.
    Plane<Vek8u> stripes(0);
    for (int y = 1; y < 17; y += 2)
        for (int x = 0; x < 17; ++x) stripes(x, y) = 255;
    for (const int mcType : {4, 12}) {
        vekiVarMeanDiff16x16_8u32s_C1R(Plane<Vek8u>(129).data(), Plane<Vek8u>::step, stripes.data(), stripes.step, &var,
                                       &mean, mcType);
        EXPECT_EQ(mean, 256);
        EXPECT_EQ(var, 0);
    }
}

}  // namespace
