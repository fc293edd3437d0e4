// Difference blocks: cases and roundings by known answers, the limits of 16 bits, and reconstruction by the motion
// compensation of the same arguments.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "vekvc.h"

namespace {

// A reference whose four neighbours at (0, 0) are 10, 21, 30, 45: 15.5, 20 and 26.5 between them. `next` is the
// distance to the horizontal neighbour.
std::vector<Vek8u> fourSamples(std::size_t next) {
    std::vector<Vek8u> plane(20 * 17, 0);
    plane[0] = 10;
    plane[next] = 21;
    plane[20] = 30;
    plane[20 + next] = 45;
    return plane;
}
constexpr int kAt[2][4] = {{10, 20, 16, 27}, {10, 20, 15, 26}};  // by rounding and mcType / 4: 106 + 2 and + 1 over 4

using Single = VekStatus (*)(const Vek8u*, Vek32s, const Vek8u*, Vek32s, Vek16s*, Vek32s, Vek32s, Vek32s);
using Both = VekStatus (*)(const Vek8u*, Vek32s, const Vek8u*, Vek32s, Vek32s, const Vek8u*, Vek32s, Vek32s, Vek16s*,
                           Vek32s, Vek32s);
using McSingle = VekStatus (*)(const Vek8u*, Vek32s, const Vek16s*, Vek32s, Vek8u*, Vek32s, Vek32s, Vek32s);
using McBoth = VekStatus (*)(const Vek8u*, Vek32s, Vek32s, const Vek8u*, Vek32s, Vek32s, const Vek16s*, Vek32s, Vek8u*,
                             Vek32s, Vek32s);
struct Shape {
    int width, height;
    Single single;
    Both both;
    McSingle mc;
    McBoth mcBoth;
};
constexpr Shape kShapes[] = {
    {16, 16, vekiDiff16x16_8u16s_C1R, vekiDiff16x16B_8u16s_C1R, vekiMC16x16_8u_C1, vekiMC16x16B_8u_C1},
    {16, 8, vekiDiff16x8_8u16s_C1R, vekiDiff16x8B_8u16s_C1R, vekiMC16x8_8u_C1, vekiMC16x8B_8u_C1},
    {8, 8, vekiDiff8x8_8u16s_C1R, vekiDiff8x8B_8u16s_C1R, vekiMC8x8_8u_C1, vekiMC8x8B_8u_C1},
    {8, 4, vekiDiff8x4_8u16s_C1R, vekiDiff8x4B_8u16s_C1R, vekiMC8x4_8u_C1, vekiMC8x4B_8u_C1}};

TEST(Difference, CasesAndRoundings) {
    const auto plane = fourSamples(1), chroma = fourSamples(2);
    const std::vector<Vek8u> src(256, 5);
    for (int mcF = 0; mcF < 4; ++mcF)
        for (int rounding = 0; rounding < 2; ++rounding) {
            Vek16s dst[256], dstV[64];
            for (const Shape& shape : kShapes) {  // bits beside the named ones do not matter
                ASSERT_EQ(shape.single(src.data(), 16, plane.data(), 20, dst, 32, 4 * mcF + 19, rounding + 2),
                          vekStsOk);
                EXPECT_EQ(dst[0], 5 - kAt[rounding][mcF]);
            }
            ASSERT_EQ(
                vekiDiff8x8_8u16s_C2P2R(src.data(), 16, chroma.data(), 20, dst, dstV, 16, 4 * mcF + 19, rounding + 2),
                vekStsOk);
            EXPECT_EQ(dst[0], 5 - kAt[rounding][mcF]);
            for (int mcB = 0; mcB < 4; ++mcB) {
                const int p = (kAt[rounding][mcF] + kAt[rounding][mcB] + 1) / 2;  // upward under either rounding
                for (const Shape& shape : kShapes) {
                    ASSERT_EQ(shape.both(src.data(), 16, plane.data(), 20, 4 * mcF + 19, plane.data(), 20, 4 * mcB + 16,
                                         dst, 32, rounding + 2),
                              vekStsOk);
                    EXPECT_EQ(dst[0], 5 - p) << mcF << " " << mcB << " " << rounding;
                }
                ASSERT_EQ(vekiDiff8x8B_8u16s_C2P2R(src.data(), 16, chroma.data(), 20, 4 * mcF + 3, chroma.data(), 20,
                                                   4 * mcB + 16, dst, dstV, 16, rounding + 2),
                          vekStsOk);
                EXPECT_EQ(dst[0], 5 - p) << mcF << " " << mcB << " " << rounding;
            }
        }
}

TEST(Difference, CompensationGivesBackTheSource) {
    std::mt19937 random(6);
    const auto noise = [&](std::size_t n) {
        std::vector<Vek8u> v(n);
        for (auto& s : v) s = static_cast<Vek8u>(random() % 4 == 0 ? random() % 2 * 255 : random());
        return v;
    };
    for (int cases = 0; cases < 32; ++cases) {
        const Vek32s mcF = cases % 4 * 4, mcB = cases / 4 % 4 * 4, rounding = cases / 16;
        const auto src = noise(16 * 16), f = noise(18 * 17), b = noise(18 * 17);
        for (const Shape& shape : kShapes) {
            Vek16s difference[256];
            std::vector<Vek8u> back(256, 1), expected(256, 1);
            for (int y = 0; y < shape.height; ++y)
                std::copy_n(src.begin() + 16 * y, shape.width, expected.begin() + 16 * y);
            shape.single(src.data(), 16, f.data(), 18, difference, 32, mcF, rounding);
            shape.mc(f.data(), 18, difference, 32, back.data(), 16, mcF, rounding);
            EXPECT_EQ(back, expected);
            shape.both(src.data(), 16, f.data(), 18, mcF, b.data(), 18, mcB, difference, 32, rounding);
            shape.mcBoth(f.data(), 18, mcF, b.data(), 18, mcB, difference, 32, back.data(), 16, rounding);
            EXPECT_EQ(back, expected);
        }
        Vek16s u[64], v[64];
        std::vector<Vek8u> back(128), expected(src.begin(), src.begin() + 128);
        vekiDiff8x8_8u16s_C2P2R(src.data(), 16, f.data(), 18, u, v, 16, mcF, rounding);
        vekiMC8x8_16s8u_P2C2R(f.data(), 18, u, v, 16, back.data(), 16, mcF, rounding);
        EXPECT_EQ(back, expected);
        vekiDiff8x8B_8u16s_C2P2R(src.data(), 16, f.data(), 18, mcF, b.data(), 18, mcB, u, v, 16, rounding);
        vekiMC8x8B_16s8u_P2C2R(f.data(), 18, mcF, b.data(), 18, mcB, u, v, 16, back.data(), 16, rounding);
        EXPECT_EQ(back, expected);
    }
}

TEST(Difference, FullSamplesAreLimitedTo16Bits) {
    struct Case {
        int src, ref, difference;
    };
    const Case cases[] = {{65535, 0, 32767},     {0, 65535, -32768},     {32767, 0, 32767}, {32768, 0, 32767},
                          {0, 32768, -32768},    {0, 32769, -32768},     {1000, 1023, -23}, {65535, 65535, 0},
                          {40000, 20000, 20000}, {20000, 40000, -20000}, {255, 0, 255},     {0, 255, -255}};
    for (const Case& c : cases) {
        const std::vector<Vek16u> s(64, static_cast<Vek16u>(c.src)), r(64, static_cast<Vek16u>(c.ref));
        std::vector<Vek16s> dst(64);
        ASSERT_EQ(vekiDiff8x8_16u16s_C1R(s.data(), 16, r.data(), 16, dst.data(), 16), vekStsOk);
        EXPECT_EQ(dst, std::vector<Vek16s>(64, static_cast<Vek16s>(c.difference)));
        dst.assign(64, 0);
        ASSERT_EQ(vekiDiff4x4_16u16s_C1R(s.data(), 8, r.data(), 8, dst.data(), 8), vekStsOk);
        EXPECT_EQ(std::vector<Vek16s>(dst.begin(), dst.begin() + 16),
                  std::vector<Vek16s>(16, static_cast<Vek16s>(c.difference)));
        if (c.src > 255 || c.ref > 255) continue;
        const std::vector<Vek8u> s8(16, static_cast<Vek8u>(c.src)), r8(16, static_cast<Vek8u>(c.ref));
        dst.assign(16, 0);
        ASSERT_EQ(vekiDiff4x4_8u16s_C1R(s8.data(), 4, r8.data(), 4, dst.data(), 8), vekStsOk);
        EXPECT_EQ(dst, std::vector<Vek16s>(16, static_cast<Vek16s>(c.difference)));
    }
}

}  // namespace
