// Quarter-sample prediction and overlapped motion compensation: values worked by hand, and the clauses' own steps.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "vekvc.h"

namespace {

using Predict = VekStatus (*)(const Vek8u*, Vek32s, Vek8u*, Vek32s, Vek32s, Vek32s);
struct Shape {
    Predict copy, average;
    int width, height;
};
const Shape kShapes[] = {{&vekiCopy16x16QP_MPEG4_8u_C1R, &vekiInterpolateAverage16x16QP_MPEG4_8u_C1IR, 16, 16},
                         {&vekiCopy16x8QP_MPEG4_8u_C1R, &vekiInterpolateAverage16x8QP_MPEG4_8u_C1IR, 16, 8},
                         {&vekiCopy8x8QP_MPEG4_8u_C1R, &vekiInterpolateAverage8x8QP_MPEG4_8u_C1IR, 8, 8}};

// A line of n + 1 samples moved by `fraction` quarters: the line is extended to both sides, interpolated to half
// samples by the eight taps, and to quarters by means.
std::vector<int> moved(std::vector<int> line, int fraction, int rounding) {
    const std::size_t n = line.size() - 1;
    std::vector<int> extended(line.rend() - 3, line.rend());
    extended.insert(extended.end(), line.begin(), line.end());
    extended.insert(extended.end(), line.rbegin(), line.rbegin() + 3);
    constexpr int kTaps[8] = {-1, 3, -6, 20, 20, -6, 3, -1};
    std::vector<int> out(n);
    for (std::size_t i = 0; i < n; ++i) {
        int sum = 16 - rounding;
        for (std::size_t k = 0; k < 8; ++k) sum += kTaps[k] * extended[i + k];
        const int half = std::clamp(sum >> 5, 0, 255), near = line[fraction == 3 ? i + 1 : i];
        out[i] = fraction == 0 ? near : fraction == 2 ? half : (near + half + 1 - rounding) / 2;
    }
    return out;
}

std::vector<int> predicted(const Vek8u* src, int step, int width, int height, int dx, int dy, int rounding) {
    std::vector<std::vector<int>> rows;
    for (int y = 0; y < height + 1; ++y) {
        std::vector<int> line(src + y * step, src + y * step + width + 1);
        rows.push_back(moved(line, dx, rounding));
    }
    std::vector<int> block(static_cast<std::size_t>(width * height));
    for (int x = 0; x < width; ++x) {
        std::vector<int> column;
        for (const auto& row : rows) column.push_back(row[static_cast<std::size_t>(x)]);
        column = moved(column, dy, rounding);
        for (int y = 0; y < height; ++y)
            block[static_cast<std::size_t>(y * width + x)] = column[static_cast<std::size_t>(y)];
    }
    return block;
}

TEST(QuarterSample, EveryPositionOfEveryContent) {
    std::mt19937 random(5);
    for (int content = 0; content < 6; ++content) {
        Vek8u picture[32 * 32];
        for (int i = 0; i < 32 * 32; ++i) {
            const int x = i % 32, y = i / 32;
            const int stripes[] = {x, y, x + y, x / 2 + y / 3};  // both clips of the first pass are hit
            const unsigned noise = static_cast<unsigned>(random());
            picture[i] = static_cast<Vek8u>(content < 4    ? stripes[content] % 2 * 255
                                            : content == 4 ? static_cast<int>(noise % 2 * 255)
                                                           : static_cast<int>(noise % 256));
        }
        for (const Shape& s : kShapes)
            for (int acc = 0; acc < 16; ++acc)
                for (int rounding = 0; rounding < 2; ++rounding) {
                    const auto law = predicted(picture + 70, 32, s.width, s.height, acc % 4, acc / 4, rounding);
                    Vek8u copied[256] = {}, averaged[256];
                    for (auto& v : averaged) v = static_cast<Vek8u>(random());
                    std::vector<Vek8u> before(averaged, averaged + 256);
                    // Higher bits of both numbers are ignored.
                    EXPECT_EQ(s.copy(picture + 70, 32, copied, s.width, acc | 0x50, rounding | 6), vekStsOk);
                    EXPECT_EQ(s.average(picture + 70, 32, averaged, s.width, acc - 16, rounding - 2), vekStsOk);
                    for (std::size_t i = 0; i < law.size(); ++i) {
                        ASSERT_EQ(copied[i], law[i]) << acc << ' ' << rounding << ' ' << i;
                        ASSERT_EQ(averaged[i], (before[i] + law[i] + 1) / 2) << acc << ' ' << rounding << ' ' << i;
                    }
                }
    }
}

// On 10 20 ... 90 the half-sample values are 14.875 (476 / 32: 600 - 240 + 180 - 80 + 16), at the middle 45.5 (1456 /
// 32) and 86.125 (2756 / 32), short of rounding; quarters are their means with 10 and 20, 40 and 50, 80 and 90.
TEST(QuarterSample, ByHand) {
    Vek8u rows[9][9], columns[9][9];
    for (int y = 0; y < 9; ++y)
        for (int x = 0; x < 9; ++x) {
            rows[y][x] = static_cast<Vek8u>(10 + 10 * x);
            columns[y][x] = static_cast<Vek8u>(10 + 10 * y);
        }
    constexpr int kLaw[2][4][3] = {{{10, 40, 80}, {12, 43, 83}, {14, 45, 86}, {17, 48, 88}},
                                   {{10, 40, 80}, {12, 42, 83}, {14, 45, 86}, {17, 47, 88}}};
    for (int rounding = 0; rounding < 2; ++rounding)
        for (int fraction = 0; fraction < 4; ++fraction)
            for (int k = 0; k < 3; ++k) {
                const int at[3] = {0, 3, 7};
                Vek8u out[64];
                vekiCopy8x8QP_MPEG4_8u_C1R(rows[0], 9, out, 8, fraction, rounding);
                EXPECT_EQ(out[8 * 5 + at[k]], kLaw[rounding][fraction][k]) << fraction << rounding;
                vekiCopy8x8QP_MPEG4_8u_C1R(columns[0], 9, out, 8, 4 * fraction, rounding);
                EXPECT_EQ(out[8 * at[k] + 5], kLaw[rounding][fraction][k]) << fraction << rounding;
            }
}

TEST(Obmc, Weights) {
    // H.263 figures F.2 to F.4.
    const char* const kCurrent = "4555555455555555556666555566665555666655556666555555555545555554";
    const char* const kAboveBelow = "2222222211222211111111111111111111111111111111111122221122222222";
    const char* const kLeftRight = "2111111222111122221111222211112222111122221111222211112221111112";
    Vek8u full[64], none[64] = {};
    for (auto& v : full) v = 80;
    for (int k = 0; k < 5; ++k) {
        const Vek8u* src[5] = {none, none, none, none, none};
        src[k] = full;
        const Vek32s mcType[5] = {};
        Vek8u out[64];
        ASSERT_EQ(vekiOBMC8x8HP_H263_8u_C1R(src, 8, mcType, out, 8, 0), vekStsOk);
        for (int i = 0; i < 64; ++i) {
            const int x = i % 8, y = i / 8;
            const bool here =
                k == 0 || (k == 1 && y < 4) || (k == 2 && y > 3) || (k == 3 && x < 4) || (k == 4 && x > 3);
            const char* weights = k == 0 ? kCurrent : k < 3 ? kAboveBelow : kLeftRight;
            EXPECT_EQ(out[i], here ? 10 * (weights[i] - '0') : 0) << k << ' ' << i;
            EXPECT_EQ(kCurrent[i] + kAboveBelow[i] + kLeftRight[i], 3 * '0' + 8);
        }
    }
}

// Against predictions made by the half-sample copy, which numbers the cases in another order.
TEST(Obmc, HalfSamples) {
    constexpr Vek32s kAccOfMcType[4] = {0, 2, 1, 3};
    std::mt19937 random(2);
    Vek8u picture[40 * 40];
    for (auto& v : picture) v = static_cast<Vek8u>(random());
    for (int round = 0; round < 400; ++round) {
        const bool same = round % 4 == 0;
        const Vek8u* src[5];
        Vek32s mcType[5];
        Vek8u p[5][64], out[64];
        for (int k = 0; k < 5; ++k) {
            src[k] = same && k > 0 ? src[0] : picture + random() % 30 * 40 + random() % 30;
            mcType[k] = same && k > 0 ? mcType[0] : static_cast<Vek32s>(random() % 16 * 4 + random() % 4);
            vekiCopy8x8HP_8u_C1R(src[k], 40, p[k], 8, kAccOfMcType[mcType[k] / 4 % 4], round % 2);
        }
        ASSERT_EQ(vekiOBMC8x8HP_H263_8u_C1R(src, 40, mcType, out, 8, round % 2), vekStsOk);
        for (int i = 0; i < 64; ++i) {
            const int x = std::min(i % 8, 7 - i % 8), y = std::min(i / 8, 7 - i / 8);
            const int h1 = y == 0 || (y == 1 && x > 1) ? 2 : 1, h2 = x == 0 || (x == 1 && y > 0) ? 2 : 1;
            const int value =
                (p[0][i] * (8 - h1 - h2) + p[i / 8 < 4 ? 1 : 2][i] * h1 + p[i % 8 < 4 ? 3 : 4][i] * h2 + 4) / 8;
            ASSERT_EQ(out[i], value) << i;
            if (same) {
                ASSERT_EQ(out[i], p[0][i]);
            }
        }
    }
    const Vek8u* src[5] = {picture, picture, picture, nullptr, picture};
    const Vek32s mcType[5] = {};
    Vek8u out[64];
    EXPECT_EQ(vekiOBMC8x8HP_H263_8u_C1R(src, 40, mcType, out, 8, 0), vekStsErrNullPtr);
}

}  // namespace
