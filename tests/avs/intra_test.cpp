// AVS intra prediction and macroblocks: what the modes make of simple neighbours, and the order of the blocks.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "vekvc.h"

namespace {

constexpr Vek32u kAbove = 1, kLeft = 2, kAboveLeft = 32, kAboveRight = 64, kBelowLeft = 128;
constexpr Vek32u kAll = kAbove | kLeft | kAboveLeft | kAboveRight | kBelowLeft;
constexpr int kStep = 32;

// A block at (8, 8) amid 32 x 32 samples.
struct Area {
    std::vector<Vek8u> samples = std::vector<Vek8u>(kStep * kStep, 77);

    Vek8u& at(int x, int y) { return samples[static_cast<std::size_t>((y + 8) * kStep + x + 8)]; }
    Vek8u* block() { return &at(0, 0); }
    explicit Area(unsigned seed) {
        std::mt19937 random(seed);
        for (auto& s : samples) s = static_cast<Vek8u>(random());
    }
    std::vector<int> row(int y) {
        std::vector<int> r;
        for (int x = 0; x < 8; ++x) r.push_back(at(x, y));
        return r;
    }
};

// The neighbour i of the edge above (or left), 0 the corner, as it is or as a copy of the last one that is there.
int neighbour(Area& a, bool above, int i, Vek32u available) {
    const bool corner = (available & 35) == 35, arm = (available & (above ? kAboveRight : kBelowLeft)) != 0;
    if (i == 0 && !corner) i = 1;
    if (i > 8 && !arm) i = 8;
    if (i > 16) i = 16;
    return above ? a.at(i - 1, -1) : a.at(-1, i - 1);
}
int smooth(Area& a, bool above, int i, Vek32u available) {
    return (neighbour(a, above, i - 1, available) + 2 * neighbour(a, above, i, available) +
            neighbour(a, above, i + 1, available) + 2) /
           4;
}

TEST(AvsIntra, EverySampleOfEveryMode) {
    for (unsigned seed = 0; seed < 50; ++seed)
        for (const Vek32u available : {0u, 1u, 2u, 3u, 35u, 1u | 64, 2u | 128, 3u | 64, 3u | 128, 35u | 64, kAll, 224u})
            for (int mode = 0; mode < 5; ++mode)
                for (const bool chroma : {false, true}) {
                    Area area(seed), before(seed);
                    const VekStatus status =
                        chroma ? vekiPredictIntraChroma8x8_AVS_8u_C1IR(area.block(), kStep, mode, available)
                               : vekiPredictIntraLuma8x8_AVS_8u_C1IR(area.block(), kStep, mode, available);
                    if (chroma && mode == 4) {
                        EXPECT_EQ(status, vekStsErrOutOfRange);
                        continue;
                    }
                    enum { vertical, horizontal, dc, downLeft, downRight, plane };
                    constexpr int kChromaKinds[] = {dc, horizontal, vertical, plane};
                    const int kind = chroma ? kChromaKinds[mode] : mode;
                    constexpr Vek32u kNeeds[] = {1, 2, 0, 3, 35, 35};
                    if ((available & kNeeds[kind]) != kNeeds[kind]) {
                        EXPECT_EQ(status, vekStsErrBadArg);
                        EXPECT_EQ(area.samples, before.samples);
                        continue;
                    }
                    ASSERT_EQ(status, vekStsOk);
                    const Vek32u has = chroma ? available & ~kBelowLeft : available;
                    int h = 0, v = 0;
                    for (int i = 1; i <= 4; ++i) {
                        h += i * (before.at(3 + i, -1) - before.at(3 - i, -1));
                        v += i * (before.at(-1, 3 + i) - before.at(-1, 3 - i));
                    }
                    for (int i = 0; i < 64; ++i) {
                        const int x = i % 8, y = i / 8;
                        const auto t = [&](int k) { return smooth(before, true, k, has); };
                        const auto l = [&](int k) { return smooth(before, false, k, has); };
                        int expected = 128;
                        switch (kind) {
                            case vertical:
                                expected = before.at(x, -1);
                                break;
                            case horizontal:
                                expected = before.at(-1, y);
                                break;
                            case dc:
                                if ((has & 3) == 3) expected = (t(x + 1) + l(y + 1)) / 2;
                                if ((has & 3) == 1) expected = t(x + 1);
                                if ((has & 3) == 2) expected = l(y + 1);
                                break;
                            case downLeft:
                                expected = (t(x + y + 2) + l(x + y + 2)) / 2;
                                break;
                            case downRight:
                                expected = x > y ? t(x - y)
                                           : x < y
                                               ? l(y - x)
                                               : (before.at(-1, 0) + 2 * before.at(-1, -1) + before.at(0, -1) + 2) / 4;
                                break;
                            default: {
                                const int sum = 16 * (before.at(7, -1) + before.at(-1, 7)) +
                                                (x - 3) * ((17 * h + 16) >> 5) + (y - 3) * ((17 * v + 16) >> 5) + 16;
                                expected = sum < 0 ? 0 : sum >> 5 > 255 ? 255 : sum >> 5;
                            }
                        }
                        ASSERT_EQ(area.at(x, y), expected) << mode << chroma << ' ' << available << ' ' << i;
                    }
                }
}

TEST(AvsIntra, BlocksWorkedByHand) {
    // A ramp above and 100 on the left, with a corner of 20: DC smooths (20 + 2 * 0 + 10 + 2) / 4 = 8 with (20 + 3 *
    // 100 + 2) / 4 = 80, then 10 with 100.
    Area area(1);
    for (int i = 0; i < 16; ++i) {
        area.at(i, -1) = static_cast<Vek8u>(10 * i);
        area.at(-1, i) = 100;
    }
    area.at(-1, -1) = 20;
    EXPECT_EQ(vekiPredictIntraLuma8x8_AVS_8u_C1IR(area.block(), kStep, 2, kAll), vekStsOk);
    EXPECT_EQ(area.row(0), (std::vector<int>{44, 45, 50, 55, 60, 65, 70, 75}));
    EXPECT_EQ(area.row(1), (std::vector<int>{54, 55, 60, 65, 70, 75, 80, 85}));
    // Steps of 10 to the right with the corner in line, and none downwards: slope (17 * 600 + 16) >> 5 = 319 in 32nds.
    area.at(-1, -1) = 100;
    for (int i = 0; i < 8; ++i) area.at(i, -1) = static_cast<Vek8u>(110 + 10 * i);
    EXPECT_EQ(vekiPredictIntraChroma8x8_AVS_8u_C1IR(area.block(), kStep, 3, 35), vekStsOk);
    EXPECT_EQ(area.row(0), (std::vector<int>{110, 120, 130, 140, 150, 160, 170, 180}));
    EXPECT_EQ(area.row(7), area.row(0));
}

// A macroblock is its blocks one after the other, with the neighbours that each has by then.
TEST(AvsMacroblocks, AreTheirBlocks) {
    std::mt19937 random(4);
    for (int round = 0; round < 400; ++round) {
        Area mb(static_cast<unsigned>(round)), single(static_cast<unsigned>(round));
        std::vector<Vek16s> levels(6 * 64);
        for (auto& level : levels)
            level = static_cast<Vek16s>(random() % 8 == 0 ? static_cast<int>(random() % 9) - 4 : 0);
        const Vek32u cbp = static_cast<Vek32u>(random() % 64), available = round % 2 == 0 ? 35 | 64 : 35;
        Vek32u modes[4];
        for (auto& mode : modes) mode = static_cast<Vek32u>(random() % 5);
        const int qp = static_cast<int>(random() % 52);
        Vek16s* next = levels.data();
        ASSERT_EQ(vekiReconstructLumaIntraMB_AVS_16s8u_C1R(&next, mb.block(), kStep, modes, cbp, qp, available),
                  vekStsOk);
        const Vek16s* taken = levels.data();
        const Vek32u neighbours[4] = {kAll, 35 | (available & 64), 35 | 64, 35};
        for (int k = 0; k < 4; ++k) {
            Vek8u* block = &single.at(8 * (k % 2), 8 * (k / 2));
            vekiPredictIntraLuma8x8_AVS_8u_C1IR(block, kStep, static_cast<int>(modes[k]), neighbours[k]);
            if ((cbp >> k & 1) == 0) continue;
            vekiReconstruct8x8_AVS_16s8u_C1IR(taken, block, kStep, qp);
            taken += 64;
        }
        ASSERT_EQ(next, taken);
        ASSERT_EQ(mb.samples, single.samples);

        ASSERT_EQ(vekiReconstructLumaInterMB_AVS_16s8u_C1R(&(next = levels.data()), mb.block(), kStep, cbp, qp),
                  vekStsOk);
        ASSERT_EQ(next, taken);
        taken = levels.data();
        for (int k = 0; k < 4; ++k)
            if ((cbp >> k & 1) != 0) {
                vekiReconstruct8x8_AVS_16s8u_C1IR(taken, &single.at(8 * (k % 2), 8 * (k / 2)), kStep, qp);
                taken += 64;
            }
        ASSERT_EQ(mb.samples, single.samples);

        Vek8u *u = mb.block(), *v = &mb.at(13, 12), *singleU = single.block(), *singleV = &single.at(13, 12);
        const int mode = static_cast<int>(random() % 4);
        for (const bool intra : {true, false}) {
            next = levels.data(), taken = levels.data();
            ASSERT_EQ(intra ? vekiReconstructChromaIntraMB_AVS_16s8u_P2R(&next, u, v, kStep, mode, cbp, qp, available)
                            : vekiReconstructChromaInterMB_AVS_16s8u_P2R(&next, u, v, kStep, cbp, qp),
                      vekStsOk);
            for (Vek8u* block : {singleU, singleV}) {
                if (intra) vekiPredictIntraChroma8x8_AVS_8u_C1IR(block, kStep, mode, available);
                if ((cbp & (block == singleU ? 16 : 32)) == 0) continue;
                vekiReconstruct8x8_AVS_16s8u_C1IR(taken, block, kStep, qp);
                taken += 64;
            }
            ASSERT_EQ(next, taken);
            ASSERT_EQ(mb.samples, single.samples);
        }
    }
}

TEST(AvsMacroblocks, ModesAreCheckedBlockByBlock) {
    Area area(1), before(1);
    Vek16s levels[64] = {}, *next = levels;
    const auto status = [&](std::initializer_list<Vek32u> modes, Vek32u available, Vek32s qp = 0) {
        return vekiReconstructLumaIntraMB_AVS_16s8u_C1R(&next, area.block(), kStep, modes.begin(), 0, qp, available);
    };
    EXPECT_EQ(status({2, 2, 2, 5}, 0), vekStsErrOutOfRange);
    EXPECT_EQ(status({0, 2, 2, 5}, kLeft), vekStsErrBadArg);  // block 0 comes first
    EXPECT_EQ(status({5, 0, 2, 2}, kLeft), vekStsErrOutOfRange);
    EXPECT_EQ(status({2, 3, 2, 2}, kLeft), vekStsErrBadArg);
    EXPECT_EQ(status({2, 2, 4, 2}, kAbove), vekStsErrBadArg);
    EXPECT_EQ(status({4, 2, 2, 2}, kAbove | kLeft), vekStsErrBadArg);
    EXPECT_EQ(status({2, 0, 2, 2}, kLeft | kAboveLeft, 64), vekStsErrBadArg);
    EXPECT_EQ(status({2, 1, 0, 4}, 0, 64), vekStsErrOutOfRange);
    EXPECT_EQ(area.samples, before.samples);
    EXPECT_EQ(status({2, 1, 0, 4}, 0), vekStsOk);
    EXPECT_EQ(status({3, 4, 3, 3}, kAbove | kLeft), vekStsOk);
}

}  // namespace
