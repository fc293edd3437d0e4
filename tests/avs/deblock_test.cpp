// The AVS loop filter: lines worked by hand, and which lines a strength reaches.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "vekvc.h"

namespace {

using Line = std::vector<Vek8u>;  // p2 p1 p0 q0 q1 q2

struct Limits {
    Vek8u alpha, beta, c;
};
using Filter = VekStatus (*)(Vek8u*, Vek32s, const Vek8u*, const Vek8u*, const Vek8u*, const Vek8u*);

// One line of an edge through each of the exports: luma or chroma, down or across, at edge 0 or 1, in either half.
Line filtered(const Line& line, bool luma, int bS, Limits limits) {
    Line result;
    for (const bool vertical : {true, false})
        for (int edge = 0; edge < (luma ? 2 : 1); ++edge)
            for (int half = 0; half < 2; ++half) {
                constexpr int kStep = 32;
                std::vector<Vek8u> area(kStep * kStep, 9), expected = area;
                const int across = vertical ? 1 : kStep, along = vertical ? kStep : 1;
                const int lines = luma ? 8 : 4, q = 8 * kStep + 8;
                const Filter filter = luma       ? vertical ? &vekiFilterDeblockingLuma_VerEdge_AVS_8u_C1IR
                                                            : &vekiFilterDeblockingLuma_HorEdge_AVS_8u_C1IR
                                      : vertical ? &vekiFilterDeblockingChroma_VerEdge_AVS_8u_C1IR
                                                 : &vekiFilterDeblockingChroma_HorEdge_AVS_8u_C1IR;
                const auto place = [&](int i, int k) {
                    return static_cast<std::size_t>(q + (8 * edge + k - 3) * across + (half * lines + i) * along);
                };
                for (int i = 0; i < 2 * lines; ++i)  // the other half too: it has no strength
                    for (int k = 0; k < 6; ++k) area[place(i - half * lines, k)] = line[static_cast<std::size_t>(k)];
                expected = area;
                Vek8u alpha[2] = {}, beta[2] = {}, c[2] = {}, bSs[4] = {};
                alpha[edge] = limits.alpha, beta[edge] = limits.beta, c[edge] = limits.c;
                bSs[2 * edge + half] = static_cast<Vek8u>(bS);
                EXPECT_EQ(filter(&area[static_cast<std::size_t>(q)], kStep, alpha, beta, c, bSs), vekStsOk);
                Line now;
                for (int k = 0; k < 6; ++k) now.push_back(area[place(0, k)]);
                for (int i = 0; i < lines; ++i)
                    for (int k = 0; k < 6; ++k) expected[place(i, k)] = now[static_cast<std::size_t>(k)];
                EXPECT_EQ(area, expected) << "lines of a half differ, or others were touched";
                if (result.empty()) result = now;
                EXPECT_EQ(now, result) << "exports differ";
            }
    return result;
}

TEST(AvsDeblock, StrengthOne) {
    const Limits limits = {20, 8, 3};
    // (3 * 8 + (100 - 108) + 4) >> 3 = 2; then p1 moves by (3 * 2 + (100 - 106) + 4) >> 3 = 0.
    EXPECT_EQ(filtered({100, 100, 100, 108, 108, 108}, true, 1, limits), (Line{100, 100, 102, 106, 108, 108}));
    // 4 is limited to 3: (36 - 12 + 4) >> 3 = 3; p1: (9 + (100 - 109) + 4) >> 3 = 0.
    EXPECT_EQ(filtered({100, 100, 100, 112, 112, 112}, true, 1, {20, 8, 3}), (Line{100, 100, 103, 109, 112, 112}));
    EXPECT_EQ(filtered({100, 100, 100, 112, 112, 112}, true, 1, {20, 8, 2}), (Line{100, 100, 102, 110, 112, 112}));
    // p1 follows: delta = (3 * 10 + (97 - 110) + 4) >> 3 = 2; (3 * (102 - 97) + (98 - 108) + 4) >> 3 = 1; q1 by
    // (3 * (110 - 108) + (102 - 111) + 4) >> 3 = 0. Chroma leaves it.
    EXPECT_EQ(filtered({98, 97, 100, 110, 110, 111}, true, 1, limits), (Line{98, 98, 102, 108, 110, 111}));
    EXPECT_EQ(filtered({98, 97, 100, 110, 110, 111}, false, 1, limits), (Line{98, 97, 102, 108, 110, 111}));
    // q1 is lowered by (3 * (113 - 108) + (102 - 112) + 4) >> 3 = 1; delta = (30 + (100 - 113) + 4) >> 3 = 2.
    EXPECT_EQ(filtered({100, 100, 100, 110, 113, 112}, true, 1, limits), (Line{100, 100, 102, 108, 112, 112}));
    // p2 and q2 beyond beta: only the inner samples.
    EXPECT_EQ(filtered({92, 97, 100, 110, 113, 118}, true, 1, limits), (Line{92, 97, 102, 108, 113, 118}));
    // Samples are clipped: delta = (-19 + 4) >> 3 = -2 leaves p0 at 0, then q1 is lowered by (3 * (19 - 2) + (0 - 19) +
    // 4) >> 3 = 4; delta = (19 + 4) >> 3 = 2 leaves p0 at 255, and q1 rises by 4.
    EXPECT_EQ(filtered({0, 0, 0, 0, 19, 19}, true, 1, {20, 20, 9}), (Line{0, 0, 0, 2, 15, 19}));
    EXPECT_EQ(filtered({255, 255, 255, 255, 236, 236}, true, 1, {20, 20, 9}), (Line{255, 255, 255, 253, 240, 236}));
}

TEST(AvsDeblock, StrengthTwoAndAbove) {
    const Limits limits = {32, 8, 0};  // C does not count
    for (const int bS : {2, 3, 255}) {
        // s = 210: p0 = (100 + 100 + 210) / 4, p1 = (200 + 210) / 4; q0 = (216 + 210) / 4 = q1. |p0 - q0| = 8 < 10.
        EXPECT_EQ(filtered({100, 100, 100, 108, 108, 108}, true, bS, limits), (Line{100, 102, 102, 106, 106, 108}));
        EXPECT_EQ(filtered({100, 100, 100, 108, 108, 108}, false, bS, limits), (Line{100, 100, 102, 106, 108, 108}));
        // |p0 - q0| = 9 is the last that is close; at 10 = (alpha >> 2) + 2 only (2 p1 + s) >> 2 is left.
        EXPECT_EQ(filtered({100, 96, 100, 109, 112, 109}, true, bS, limits), (Line{100, 100, 101, 108, 108, 109}));
        EXPECT_EQ(filtered({100, 96, 100, 110, 112, 110}, true, bS, limits), (Line{100, 96, 101, 109, 112, 110}));
        // One side flat, the other not.
        EXPECT_EQ(filtered({92, 96, 100, 106, 108, 106}, true, bS, limits), (Line{92, 96, 100, 105, 106, 106}));
    }
}

TEST(AvsDeblock, Thresholds) {
    const Line line = {100, 96, 100, 110, 114, 110};
    for (const int bS : {1, 2}) {
        EXPECT_EQ(filtered(line, true, bS, {10, 5, 3}), line);
        EXPECT_EQ(filtered(line, true, bS, {11, 4, 3}), line);
        EXPECT_NE(filtered(line, true, bS, {11, 5, 3}), line);
        EXPECT_EQ(filtered({100, 100, 100, 110, 114, 110}, true, bS, {11, 4, 3}), (Line{100, 100, 100, 110, 114, 110}));
        EXPECT_EQ(filtered({0, 0, 0, 0, 0, 0}, true, bS, {0, 0, 0}), (Line(6)));
    }
    EXPECT_EQ(filtered(line, true, 1, {20, 20, 0}), line);
}

}  // namespace
