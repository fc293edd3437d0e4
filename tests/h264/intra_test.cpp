// Intra prediction: known answers and the standard's corner cases.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <vector>

#include "h264/macroblock_picture.h"
#include "vekvc.h"

namespace {

constexpr int kAbove[16] = {37, 90, 12, 200, 255, 3, 148, 66, 71, 19, 230, 144, 8, 99, 160, 55};
constexpr int kLeft[8] = {81, 170, 9, 222, 40, 131, 77, 250};

Picture<Vek8u> knownNeighbours() {
    Picture<Vek8u> picture(1);
    for (int k = 0; k < 16; ++k) *picture.at(k, -1) = static_cast<Vek8u>(kAbove[k]);
    for (int k = 0; k < 8; ++k) *picture.at(-1, k) = static_cast<Vek8u>(kLeft[k]);
    *picture.at(-1, -1) = 130;
    return picture;
}

TEST(H264Intra, KnownAnswers4x4) {
    constexpr Vek8u known[9][16] = {
        {37, 90, 12, 200, 37, 90, 12, 200, 37, 90, 12, 200, 37, 90, 12, 200},
        {81, 81, 81, 81, 170, 170, 170, 170, 9, 9, 9, 9, 222, 222, 222, 222},
        {103, 103, 103, 103, 103, 103, 103, 103, 103, 103, 103, 103, 103, 103, 103, 103},
        {57, 79, 167, 178, 79, 167, 178, 102, 167, 178, 102, 91, 178, 102, 91, 87},
        {95, 74, 57, 79, 116, 95, 74, 57, 108, 116, 95, 74, 103, 108, 116, 95},
        {84, 64, 51, 106, 95, 74, 57, 79, 116, 84, 64, 51, 108, 95, 74, 57},
        {106, 95, 74, 57, 126, 116, 106, 95, 90, 108, 126, 116, 116, 103, 90, 108},
        {64, 51, 106, 228, 57, 79, 167, 178, 51, 106, 228, 129, 79, 167, 178, 102},
        {126, 108, 90, 103, 90, 103, 116, 169, 116, 169, 222, 222, 222, 222, 222, 222},
    };
    for (int mode = 0; mode < 9; ++mode) {
        auto picture = knownNeighbours();
        ASSERT_EQ(vekiPredictIntra_4x4_H264_8u_C1IR(picture.at(0, 0), kStep, mode, 99), vekStsOk);
        for (int k = 0; k < 16; ++k) EXPECT_EQ(*picture.at(k % 4, k / 4), known[mode][k]) << mode << " at " << k;
    }
}

// Rows 1 and 6 of each mode.
TEST(H264Intra, KnownAnswers8x8) {
    constexpr Vek8u known[9][16] = {
        {74, 57, 79, 167, 178, 102, 91, 88, 74, 57, 79, 167, 178, 102, 91, 88},
        {108, 108, 108, 108, 108, 108, 108, 108, 134, 134, 134, 134, 134, 134, 134, 134},
        {114, 114, 114, 114, 114, 114, 114, 114, 114, 114, 114, 114, 114, 114, 114, 114},
        {96, 148, 156, 118, 93, 81, 72, 96, 81, 72, 96, 132, 121, 89, 92, 103},
        {109, 95, 75, 67, 96, 148, 156, 118, 108, 109, 114, 109, 109, 109, 95, 75},
        {95, 75, 67, 96, 148, 156, 118, 93, 109, 109, 109, 85, 66, 68, 123, 173},
        {112, 109, 106, 95, 75, 67, 96, 148, 115, 108, 102, 109, 116, 114, 113, 109},
        {67, 96, 148, 156, 118, 93, 81, 72, 173, 140, 97, 90, 73, 71, 121, 144},
        {106, 109, 113, 114, 116, 109, 102, 108, 171, 189, 207, 207, 207, 207, 207, 207},
    };
    Scales scales(0);
    std::vector<Vek16s> none(1);
    for (Vek32u mode = 0; mode < 9; ++mode) {
        auto picture = knownNeighbours();
        const Vek32u modes[4] = {mode, 2, 2, 2};
        Vek16s* coeffs = none.data();
        ASSERT_EQ(vekiReconstructLumaIntra8x8MB_H264_16s8u_C1R(&coeffs, picture.at(0, 0), kStep, modes, 0, 0, 0,
                                                               scales.s8, 0),
                  vekStsOk);
        for (int k = 0; k < 16; ++k)
            EXPECT_EQ(*picture.at(k % 8, k < 8 ? 1 : 6), known[mode][k]) << mode << " at " << k;
    }
}

// 8.3.2.2.1: beside one edge alone the corner counts three times. It is (3 * 101 + 3 + 2) >> 2 = 77, the first sample
// above (101 + 3 * 3 + 2) >> 2 = 28, and a left column that is missing 128: (128 + 2 * 77 + 28 + 2) >> 2 = 78.
TEST(H264Intra, CornerBesideOneEdge) {
    const Scales scales(0);
    for (const Vek8u flags : {Vek8u{1}, Vek8u{4}}) {
        Picture<Vek8u> picture(1);
        for (int k = 0; k < 16; ++k) *picture.at(k, -1) = *picture.at(-1, k) = 3;
        *picture.at(-1, -1) = 101;
        std::vector<Vek16s> none(1);
        Vek16s* coeffs = none.data();
        const Vek32u modes[4] = {4, 2, 2, 2};
        EXPECT_EQ(vekiReconstructLumaIntra8x8MB_H264_16s8u_C1R(&coeffs, picture.at(0, 0), kStep, modes, 0, 0, flags,
                                                               scales.s8, 0),
                  vekStsWrnUnavailableNeighbour);
        EXPECT_EQ(*picture.at(0, 0), 78);
    }
}

TEST(H264Intra, MissingNeighbours) {
    constexpr struct {
        int mode, availability;
        VekStatus status;
        int value;  // of the block's first sample; -1: not looked at
    } cases[] = {
        {0, 0, vekStsWrnUnavailableNeighbour, 128},
        {1, 0, vekStsWrnUnavailableNeighbour, 128},
        {2, 0, vekStsOk, 128},
        {2, 1, vekStsOk, (37 + 90 + 12 + 200 + 2) >> 2},
        {2, 2, vekStsOk, (81 + 170 + 9 + 222 + 2) >> 2},
        {3, 1, vekStsOk, 57},
        {3, 2 | 32, vekStsWrnUnavailableNeighbour, 128},
        {4, 1 | 2, vekStsWrnUnavailableNeighbour, (37 + 256 + 81 + 2) >> 2},
        {5, 1 | 32, vekStsWrnUnavailableNeighbour, (130 + 37 + 1) >> 1},
        {7, 64, vekStsWrnUnavailableNeighbour, 128},
        {8, 1 | 32 | 64, vekStsWrnUnavailableNeighbour, 128},
        {8, 2, vekStsOk, 126},
        {9, 99, vekStsErrOutOfRange, -1},
        {-1, 99, vekStsErrOutOfRange, -1},
    };
    for (const auto& c : cases) {
        auto picture = knownNeighbours();
        EXPECT_EQ(vekiPredictIntra_4x4_H264_8u_C1IR(picture.at(0, 0), kStep, c.mode, c.availability), c.status);
        if (c.value >= 0) {
            EXPECT_EQ(*picture.at(0, 0), c.value) << "mode " << c.mode << ", " << c.availability;
        }
    }
    // Without the above-right row its samples are the last of the above row: the corner of mode 3 is flat.
    auto picture = knownNeighbours();
    EXPECT_EQ(vekiPredictIntra_4x4_H264_8u_C1IR(picture.at(0, 0), kStep, 3, 1), vekStsOk);
    EXPECT_EQ(*picture.at(3, 3), 200);
}

TEST(H264Intra, LargeBlocksNeedTheirNeighbours) {
    constexpr int needed16[4] = {1, 2, 0, 35}, neededChroma[4] = {0, 2, 1, 35};
    for (int mode = 0; mode < 4; ++mode)
        for (const int availability : {0, 1, 2, 3, 32, 33, 34, 35}) {
            auto picture = knownNeighbours();
            const auto before = picture.samples;
            const auto expected = [&](int needed) {
                return (needed & ~availability) ? vekStsErrUnavailableNeighbour : vekStsOk;
            };
            EXPECT_EQ(vekiPredictIntra_16x16_H264_8u_C1IR(picture.at(0, 0), kStep, mode, availability),
                      expected(needed16[mode]));
            if (expected(needed16[mode]) != vekStsOk) {
                EXPECT_EQ(picture.samples, before);
            }
            picture.samples = before;
            EXPECT_EQ(vekiPredictIntraChroma8x8_H264_8u_C1IR(picture.at(0, 0), kStep, mode, availability),
                      expected(neededChroma[mode]));
            if (expected(neededChroma[mode]) != vekStsOk) {
                EXPECT_EQ(picture.samples, before);
            }
        }
}

TEST(H264Intra, PlaneContinuesAGradientAndClips) {
    for (const int slope : {1, 9}) {
        Picture<Vek8u> picture(2);
        const auto gradient = [&](int x, int y) { return std::clamp(100 + slope * x + y, 0, 255); };
        for (int k = -1; k < 16; ++k) {
            *picture.at(k, -1) = static_cast<Vek8u>(gradient(k, -1));
            *picture.at(-1, k) = static_cast<Vek8u>(gradient(-1, k));
        }
        auto chroma = picture;
        ASSERT_EQ(vekiPredictIntra_16x16_H264_8u_C1IR(picture.at(0, 0), kStep, 3, 35), vekStsOk);
        ASSERT_EQ(vekiPredictIntraChroma8x8_H264_8u_C1IR(chroma.at(0, 0), kStep, 3, 35), vekStsOk);
        for (int y = 0; y < 16; ++y)
            for (int x = 0; x < 16; ++x) {
                EXPECT_EQ(*picture.at(x, y), gradient(x, y));
                if (x < 8 && y < 8) {
                    EXPECT_EQ(*chroma.at(x, y), gradient(x, y));
                }
            }
    }
}

TEST(H264Intra, ChromaDCChoosesItsEdges) {
    // Means of the edges, four samples each: above 10, 20; left 30, 40.
    constexpr struct {
        int availability, dc[4];
    } cases[] = {{3, {20, 20, 40, 30}}, {1, {10, 20, 10, 20}}, {2, {30, 30, 40, 40}}, {0, {128, 128, 128, 128}}};
    for (const auto& c : cases) {
        Picture<Vek8u> picture(3);
        for (int k = 0; k < 8; ++k) {
            *picture.at(k, -1) = k < 4 ? 10 : 20;
            *picture.at(-1, k) = k < 4 ? 30 : 40;
        }
        ASSERT_EQ(vekiPredictIntraChroma8x8_H264_8u_C1IR(picture.at(0, 0), kStep, 0, c.availability), vekStsOk);
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 8; ++x) EXPECT_EQ(*picture.at(x, y), c.dc[y / 4 * 2 + x / 4]) << c.availability;
    }
}

TEST(H264Intra, ChromaHalvesAreTakenApart) {
    // Only the lower half of the left edge: 422 blocks of rows 8 to 15 use it, those above do not.
    constexpr int expected[8] = {10, 20, 10, 20, 50, 35, 60, 40};
    Picture<Vek8u> u(4), v(5);
    std::vector<Vek16s> none(1);
    Vek16s* coeffs = none.data();
    const Scales s(0);
    for (auto* p : {&u, &v})
        for (int k = 0; k < 16; ++k) {
            if (k < 8) *p->at(k, -1) = k < 4 ? 10 : 20;
            *p->at(-1, k) = k < 8 ? 99 : k < 12 ? 50 : 60;
        }
    ASSERT_EQ(vekiReconstructChroma422IntraHalf4x4_H264High_16s8u_IP2R(&coeffs, u.at(0, 0), v.at(0, 0), kStep, 0, 0, 0,
                                                                       0, 1, s.s4, s.s4, s.s4[0], s.s4[0], 0),
              vekStsOk);
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 8; ++x) EXPECT_EQ(*u.at(x, y), expected[y / 4 * 2 + x / 4]) << x << ' ' << y;
    EXPECT_EQ(*v.at(0, 8), 50);
    for (const Vek8u flags : std::vector<Vek8u>{1, 2, 3})  // horizontal needs both halves
        EXPECT_EQ(
            vekiReconstructChromaIntraHalfsMB_H264_16s8u_P2R(&coeffs, u.at(0, 0), v.at(0, 0), kStep, 1, 0, 20, flags),
            vekStsErrUnavailableNeighbour);
    Picture<Vek8u> a(6), b(7), c(6), d(7);
    ASSERT_EQ(
        vekiReconstructChromaIntraHalfsMB_H264_16s8u_P2R(&coeffs, a.at(0, 0), b.at(0, 0), kStep, 0, 0, 20, 2 | 16),
        vekStsOk);
    ASSERT_EQ(
        vekiReconstructChromaIntraHalvesMB_H264_16s8u_P2R(&coeffs, c.at(0, 0), d.at(0, 0), kStep, 0, 0, 20, 16, 1),
        vekStsOk);
    EXPECT_EQ(a.samples, c.samples);
    EXPECT_EQ(b.samples, d.samples);
}

// With the least step a row's left sample is the last one of the row above it: predicted when the block begins.
TEST(H264Intra, RowsWithoutAGap) {
    Vek8u samples[96];
    const auto fill = [&] {
        for (int i = 0; i < 96; ++i) samples[i] = static_cast<Vek8u>(i * 37);
    };
    fill();
    ASSERT_EQ(vekiPredictIntraChroma8x8_H264_8u_C1IR(samples + 16, 8, 0, 3), vekStsOk);
    EXPECT_EQ(samples[16 + 32], 113);
    EXPECT_EQ(samples[16 + 36], 114);
    fill();
    ASSERT_EQ(vekiPredictIntra_4x4_H264_8u_C1IR(samples + 16, 4, 1, 3), vekStsOk);
    for (int y = 0; y < 4; ++y) EXPECT_EQ(samples[16 + 4 * y], static_cast<Vek8u>((15 + 4 * y) * 37));
}

}  // namespace
