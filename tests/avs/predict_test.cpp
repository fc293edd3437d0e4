// AVS interpolation, weighting and intra prediction: the standard's own steps, and blocks worked by hand.
#include <gtest/gtest.h>

#include <cstddef>
#include <random>
#include <vector>

#include "vekvc.h"

static_assert(sizeof(VekAVSInterpolationParams8u) == 80 && offsetof(VekAVSInterpolationParams8u, pDstBlock) == 24 &&
              offsetof(VekAVSInterpolationParams8u, planeSize) == 44 &&
              offsetof(VekAVSInterpolationParams8u, blockX) == 60 && offsetof(VekAVSInterpolationParams8u, mvY) == 72);

namespace {

int clip(int x) { return x < 0 ? 0 : x > 255 ? 255 : x; }

// A picture that repeats its edges for ever.
struct Picture {
    int width, height;
    std::vector<Vek8u> samples;

    Picture(int w, int h, unsigned seed) : width(w), height(h), samples(static_cast<std::size_t>(w * h)) {
        std::mt19937 random(seed);
        for (auto& s : samples) s = static_cast<Vek8u>(seed % 2 == 0 ? random() : random() % 2 * 255);
    }
    Vek8u* at(int x, int y) { return samples.data() + y * width + x; }
    int operator()(int x, int y) const {
        x = x < 0 ? 0 : x >= width ? width - 1 : x, y = y < 0 ? 0 : y >= height ? height - 1 : y;
        return samples[static_cast<std::size_t>(y * width + x)];
    }
};

// Luma as the standard builds it, in quarters of a sample: half-samples by (-1, 5, 5, -1), kept unrounded, then the
// quarters between by (1, 7, 7, 1) or, between the diagonals, the mean.
struct Luma {
    const Picture& p;

    static int floorShift(int x, int n) { return x >> n; }
    // Eight times the value at a half (or whole) position along the row, at half-samples X; likewise down.
    int row8(int X, int y) const {
        const int x = X >> 1;
        return X % 2 == 0 ? 8 * p(x, y) : -p(x - 1, y) + 5 * p(x, y) + 5 * p(x + 1, y) - p(x + 2, y);
    }
    int column8(int x, int Y) const {
        const int y = Y >> 1;
        return Y % 2 == 0 ? 8 * p(x, y) : -p(x, y - 1) + 5 * p(x, y) + 5 * p(x, y + 1) - p(x, y + 2);
    }
    // 64 times the value at half-samples (X, Y).
    int both64(int X, int Y) const {
        const int y = Y >> 1;
        if (Y % 2 == 0) return 8 * row8(X, y);
        return -row8(X, y - 1) + 5 * row8(X, y) + 5 * row8(X, y + 1) - row8(X, y + 2);
    }
    int operator()(int x, int y, int dx, int dy) const {
        const int X = 2 * x, Y = 2 * y;
        if (dx % 2 != 0 && dy % 2 != 0) return clip((both64(X + 1, Y + 1) + 64 * p(x + dx / 3, y + dy / 3) + 64) >> 7);
        if (dx % 2 != 0) {  // between half-sample columns left and right of it: 1, 7, 7, 1
            const int near = X + dx / 2;
            const int sum = both64(near - 1, Y + dy / 2) + 7 * both64(near, Y + dy / 2) +
                            7 * both64(near + 1, Y + dy / 2) + both64(near + 2, Y + dy / 2);
            return clip((sum + 512) >> 10);
        }
        if (dy % 2 != 0) {
            const int near = Y + dy / 2;
            const int sum = both64(X + dx / 2, near - 1) + 7 * both64(X + dx / 2, near) +
                            7 * both64(X + dx / 2, near + 1) + both64(X + dx / 2, near + 2);
            return clip((sum + 512) >> 10);
        }
        return clip((both64(X + dx / 2, Y + dy / 2) + 32) >> 6);
    }
};

using LumaExport = VekStatus (*)(const Vek8u*, Vek32s, Vek8u*, Vek32s, Vek32s, Vek32s);

TEST(AvsLuma, EveryPosition) {
    struct {
        LumaExport function;
        int width, height;
    } const kExports[] = {{&vekiInterpolateLuma16x16_AVS_8u_C1R, 16, 16},
                          {&vekiInterpolateLuma16x8_AVS_8u_C1R, 16, 8},
                          {&vekiInterpolateLuma8x16_AVS_8u_C1R, 8, 16},
                          {&vekiInterpolateLuma8x8_AVS_8u_C1R, 8, 8}};
    for (unsigned seed = 0; seed < 8; ++seed) {
        Picture picture(32, 32, seed);
        const Luma law{picture};
        for (const auto& e : kExports)
            for (int d = 0; d < 16; ++d) {
                Vek8u out[256] = {};
                EXPECT_EQ(e.function(picture.at(6, 5), 32, out, 16, d % 4, d / 4), vekStsOk);
                for (int i = 0; i < e.width * e.height; ++i) {
                    const int x = i % e.width, y = i / e.width;
                    ASSERT_EQ(out[16 * y + x], law(6 + x, 5 + y, d % 4, d / 4)) << d << ' ' << x << ' ' << y;
                }
            }
    }
}

TEST(AvsChroma, EveryPosition) {
    Picture picture(16, 16, 2);
    for (int d = 0; d < 64; ++d) {
        const int dx = d % 8, dy = d / 8;
        Vek8u out[4][64] = {};
        vekiInterpolateChroma8x8_AVS_8u_C1R(picture.at(3, 2), 16, out[0], 8, dx, dy);
        vekiInterpolateChroma8x4_AVS_8u_C1R(picture.at(3, 2), 16, out[1], 8, dx, dy);
        vekiInterpolateChroma4x8_AVS_8u_C1R(picture.at(3, 2), 16, out[2], 8, dx, dy);
        vekiInterpolateChroma4x4_AVS_8u_C1R(picture.at(3, 2), 16, out[3], 8, dx, dy);
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 8; ++x) {
                // By area: the four samples' shares of a square of 8 x 8.
                int sum = 32;
                for (int i = 0; i < 64; ++i) sum += picture(3 + x + (i % 8 < dx), 2 + y + (i / 8 < dy));
                for (int k = 0; k < 4; ++k)
                    EXPECT_EQ(out[k][8 * y + x], (x < 4 || k < 2) && (y < 4 || k % 2 == 0) ? sum >> 6 : 0) << k;
            }
    }
}

TEST(AvsRecords, VectorsMayPointAnywhere) {
    Picture picture(20, 12, 6);
    const Luma law{picture};
    std::mt19937 random(1);
    for (int i = 0; i < 3000; ++i) {
        Vek8u out[2][256];
        VekAVSInterpolationParams8u p = {};
        p.pSrcPlane[0] = p.pSrcPlane[1] = picture.at(0, 0);
        p.srcPlaneStep = 20;
        p.pDstBlock[0] = out[0], p.pDstBlock[1] = out[1];
        p.dstBlockStep = 16;
        p.planeSize = {20, 12};
        p.blockSize = {random() % 2 == 0 ? 8 : 16, random() % 2 == 0 ? 8 : 16};
        p.blockX = static_cast<int>(random() % 40) - 10, p.blockY = static_cast<int>(random() % 40) - 10;
        p.mvX = static_cast<int>(random() % 200) - 100, p.mvY = static_cast<int>(random() % 200) - 100;
        ASSERT_EQ(vekiInterpolateLumaBlock_AVS_8u_P1R(&p), vekStsOk);
        for (int y = 0; y < p.blockSize.height; ++y)
            for (int x = 0; x < p.blockSize.width; ++x)
                ASSERT_EQ(out[0][16 * y + x],
                          law(p.blockX + (p.mvX >> 2) + x, p.blockY + (p.mvY >> 2) + y, p.mvX & 3, p.mvY & 3));
        p.blockSize = {p.blockSize.width / 2, p.blockSize.height / 2};
        ASSERT_EQ(vekiInterpolateChromaBlock_AVS_8u_P2R(&p), vekStsOk);
        for (int y = 0; y < p.blockSize.height; ++y)
            for (int x = 0; x < p.blockSize.width; ++x) {
                int sum = 32;
                for (int k = 0; k < 64; ++k)
                    sum += picture(p.blockX + (p.mvX >> 3) + x + (k % 8 < (p.mvX & 7)),
                                   p.blockY + (p.mvY >> 3) + y + (k / 8 < (p.mvY & 7)));
                ASSERT_EQ(out[0][16 * y + x], sum >> 6);
                ASSERT_EQ(out[1][16 * y + x], sum >> 6);
            }
    }
    // Sums of position and vector do not wrap: far beyond the bottom right corner is its sample.
    Vek8u out[64];
    VekAVSInterpolationParams8u far = {{picture.at(0, 0), nullptr},
                                       20,
                                       {out, nullptr},
                                       8,
                                       {20, 12},
                                       {8, 8},
                                       INT32_MAX,
                                       INT32_MAX,
                                       INT32_MAX,
                                       INT32_MAX};
    EXPECT_EQ(vekiInterpolateLumaBlock_AVS_8u_P1R(&far), vekStsOk);
    for (const Vek8u s : out) EXPECT_EQ(s, picture(19, 11));
}

TEST(AvsWeights, RoundingAndLimits) {
    Vek8u all[16 * 16], out[16 * 16], both[16 * 16];
    for (int i = 0; i < 256; ++i) all[i] = static_cast<Vek8u>(i);
    const auto law = [](int a, int scale, int shift) { return clip(((a * scale + 16) / 32) + shift); };
    for (int scale = 0; scale < 256; ++scale)
        for (const int shift : {-128, -1, 0, 1, 127}) {
            EXPECT_EQ(vekiUniDirWeightBlock_AVS_8u_C1R(all, 16, out, 16, scale, shift, {16, 16}), vekStsOk);
            EXPECT_EQ(
                vekiBiDirWeightBlock_AVS_8u_P3P1R(all, 16, all, 16, both, 16, scale, shift, 255 - scale, -1, {15, 16}),
                vekStsOk);
            for (int i = 0; i < 256; ++i) {
                ASSERT_EQ(out[i], law(i, scale, shift)) << scale << ' ' << shift << ' ' << i;
                if (i % 16 < 15) {
                    ASSERT_EQ(both[i], (law(i, scale, shift) + law(i, 255 - scale, -1) + 1) / 2);
                }
            }
        }
    Vek8u same[64];
    std::copy(all + 100, all + 164, same);
    EXPECT_EQ(vekiUniDirWeightBlock_AVS_8u_C1IR(same, 8, 32, 0, {8, 8}), vekStsOk);
    EXPECT_TRUE(std::equal(same, same + 64, all + 100));
    EXPECT_EQ(vekiUniDirWeightBlock_AVS_8u_C1IR(same, 8, 0, -1, {8, 8}), vekStsOk);
    EXPECT_EQ(std::vector<Vek8u>(same, same + 64), std::vector<Vek8u>(64));
    EXPECT_EQ(vekiInterpolateBlock_AVS_8u_P3P1R(all, 16, out, 16, both, 16, {16, 16}), vekStsOk);
    for (int i = 0; i < 256; ++i) EXPECT_EQ(both[i], (all[i] + out[i] + 1) / 2);
}

}  // namespace
