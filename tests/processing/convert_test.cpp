// Conversions: the constants from the standards' luma weights, and properties that hold whatever the samples.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "vekvc.h"

namespace {

using Bytes = std::vector<Vek8u>;

Bytes noise(int n, unsigned seed) {
    std::mt19937 random(seed);
    Bytes bytes(static_cast<std::size_t>(n));
    for (auto& b : bytes) b = static_cast<Vek8u>(random());
    return bytes;
}
Bytes blank(int n) { return Bytes(static_cast<std::size_t>(n), 0xa5); }
int clip(int x) { return std::clamp(x, 0, 255); }
int floorShift(long x, int n) { return static_cast<int>(std::floor(std::ldexp(static_cast<double>(x), -n))); }

// Three planes without padding.
struct Planes {
    int width, height, chromaWidth, chromaHeight;
    Bytes y, cb, cr;

    Planes(int w, int h, int chromaRows)
        : width(w),
          height(h),
          chromaWidth((w + 1) / 2),
          chromaHeight(chromaRows),
          y(blank(w * h)),
          cb(blank(chromaWidth * chromaRows)),
          cr(cb) {}
    static Planes of420(int w, int h) { return {w, h, (h + 1) / 2}; }
    Planes filled(unsigned seed) && {
        y = noise(width * height, seed);
        cb = noise(chromaWidth * chromaHeight, seed + 1);
        cr = noise(chromaWidth * chromaHeight, seed + 2);
        return std::move(*this);
    }
    VekiSize size() const { return {width, height}; }
    bool operator==(const Planes& o) const { return y == o.y && cb == o.cb && cr == o.cr; }
};

// ---- matrices

struct Weights {
    double r, b;
    bool full;
    double g() const { return 1 - r - b; }
    double lumaRange() const { return full ? 1 : 219.0 / 255; }
    double chromaRange() const { return full ? 1 : 224.0 / 255; }
    int black() const { return full ? 0 : 16; }
};
constexpr Weights kWeights[] = {
    {0.299, 0.114, false}, {0.2126, 0.0722, false}, {0.299, 0.114, true}, {0.2126, 0.0722, true}};

TEST(ProcessingMatrices, ToBgrFollowsTheLumaWeights) {
    for (int matrix = 0; matrix < 4; ++matrix) {
        const Weights& k = kWeights[matrix];
        const auto rounded = [](double x) { return std::lround(8192 * x); };
        const double c = 2 / k.chromaRange();
        const long cy = rounded(1 / k.lumaRange()), rv = rounded(c * (1 - k.r)), bu = rounded(c * (1 - k.b)),
                   gu = rounded(c * k.b * (1 - k.b) / k.g()), gv = rounded(c * k.r * (1 - k.r) / k.g());
        Bytes groups(512), bgra(1024);
        for (int cb = 0; cb < 256; cb += 3)
            for (int cr = 0; cr < 256; cr += 5) {
                for (std::size_t y = 0; y < 256; ++y) {
                    groups[2 * y] = static_cast<Vek8u>(y % 2 == 0 ? cb : cr);
                    groups[2 * y + 1] = static_cast<Vek8u>(y);
                }
                ASSERT_EQ(vekiCbYCr422ToBGR_8u_C2C4R(groups.data(), 512, bgra.data(), 1024, {256, 1}, matrix), 0);
                for (int y = 0; y < 256; ++y) {
                    const long t = cy * (y - k.black()) + 4096, u = cb - 128, v = cr - 128;
                    const Vek8u* p = bgra.data() + 4 * y;
                    ASSERT_EQ(p[0], clip(floorShift(t + bu * u, 13))) << matrix << ' ' << y << ' ' << cb;
                    ASSERT_EQ(p[1], clip(floorShift(t - gu * u - gv * v, 13))) << matrix << ' ' << y << ' ' << cb;
                    ASSERT_EQ(p[2], clip(floorShift(t + rv * v, 13))) << matrix << ' ' << y << ' ' << cr;
                    ASSERT_EQ(p[3], 255);
                }
            }
    }
}

TEST(ProcessingMatrices, FromBgrFollowsTheLumaWeights) {
    for (int matrix = 0; matrix < 4; ++matrix) {
        const Weights& k = kWeights[matrix];
        const auto rounded = [](double x) { return std::lround(16384 * x); };
        const double cy = k.lumaRange(), cb = k.chromaRange() / 2 / (1 - k.b), cr = k.chromaRange() / 2 / (1 - k.r);
        const Bytes bgra = noise(4 * 4096, 7);
        for (std::size_t i = 0; i < bgra.size(); i += 4) {
            const Vek8u *p = bgra.data() + i, flat[] = {p[0], p[1], p[2], p[3], p[0], p[1], p[2], p[3]};
            const auto sum = [&](double r, double g, double b) {
                return rounded(r) * p[2] + rounded(g) * p[1] + rounded(b) * p[0];
            };
            Vek8u group[4];
            ASSERT_EQ(vekiBGRToCbYCr422_8u_C4C2R(flat, 8, group, 4, {2, 1}, matrix), 0);
            const int y = floorShift(sum(cy * k.r, cy * k.g(), cy * k.b) + 8192, 14) + k.black();
            ASSERT_EQ(group[1], y);
            ASSERT_EQ(group[3], y);
            ASSERT_EQ(group[0], clip(floorShift(sum(-cb * k.r, -cb * k.g(), cb * (1 - k.b)) + 8192, 14) + 128));
            ASSERT_EQ(group[2], clip(floorShift(sum(cr * (1 - k.r), -cr * k.g(), -cr * k.b) + 8192, 14) + 128));
        }
    }
}

TEST(ProcessingMatrices, GreyHasNoChromaAndBlackAndWhiteAreWhole) {
    for (int matrix = 0; matrix < 4; ++matrix) {
        Bytes grey(4 * 256), groups(2 * 256), back(4 * 256);
        for (std::size_t i = 0; i < grey.size(); ++i) grey[i] = static_cast<Vek8u>(i / 4);
        ASSERT_EQ(vekiBGRToCbYCr422_8u_C4C2R(grey.data(), 4, groups.data(), 4, {1, 128}, matrix), 0);
        for (std::size_t i = 0; i < 512; i += 2) EXPECT_EQ(groups[i], 128);
        const bool full = matrix >= 2;
        Vek8u ends[] = {128, static_cast<Vek8u>(full ? 0 : 16), 128, static_cast<Vek8u>(full ? 255 : 235)};
        ASSERT_EQ(vekiCbYCr422ToBGR_8u_C2C3R(ends, 4, back.data(), 6, {2, 1}, matrix), 0);
        for (std::size_t i = 0; i < 6; ++i) EXPECT_EQ(back[i], i < 3 ? 0 : 255);
    }
}

// The sum of floor((v + i) / n) over i = 0..n-1 is v: over 4x4 pixels the cut colours add up to the whole one if every
// threshold is used once.
TEST(ProcessingDither, KeepsTheMeanOfFourByFourPixels) {
    Planes grey = Planes::of420(20, 8);
    std::fill(grey.cb.begin(), grey.cb.end(), 128);
    grey.cr = grey.cb;
    std::vector<Vek16u> to(20 * 8);
    for (int v = 0; v <= 248; ++v) {
        std::fill(grey.y.begin(), grey.y.end(), static_cast<Vek8u>(v));
        ASSERT_EQ(vekiYCbCr420ToBGR565_8u16u_P3C1R(grey.y.data(), 20, grey.cb.data(), grey.cr.data(), 10, to.data(), 40,
                                                   grey.size(), 2, 1),
                  0);
        for (int left = 0; left <= 16; ++left) {
            int b = 0, g = 0, r = 0;
            for (int i = 0; i < 16; ++i) {
                const int pixel = to[static_cast<std::size_t>(20 * (2 + i / 4) + left + i % 4)];
                b += pixel & 31, g += pixel >> 5 & 63, r += pixel >> 11;
            }
            ASSERT_EQ(b, 2 * v);
            ASSERT_EQ(r, 2 * v);
            ASSERT_EQ(g, 4 * v);
        }
    }
}

// ---- layouts

TEST(ProcessingLayouts, SeparatedAndInterleavedReturns) {
    for (const int width : {1, 2, 31, 33, 70}) {
        const int groupBytes = 4 * ((width + 1) / 2), height = 5;
        Bytes from = noise(groupBytes * height, 3), to = blank(groupBytes * height);
        Planes planes(width, height, height);
        ASSERT_EQ(vekiCbYCr422ToYCbCr422_8u_C2P3R(from.data(), groupBytes, planes.y.data(), width, planes.cb.data(),
                                                  planes.cr.data(), planes.chromaWidth, planes.size()),
                  0);
        ASSERT_EQ(vekiYCbCr422ToCbYCr422_8u_P3C2R(planes.y.data(), width, planes.cb.data(), planes.cr.data(),
                                                  planes.chromaWidth, to.data(), groupBytes, planes.size()),
                  0);
        if (width % 2 != 0)
            for (std::size_t end = static_cast<std::size_t>(groupBytes); end <= from.size();
                 end += static_cast<std::size_t>(groupBytes))
                from[end - 1] = from[end - 3];
        EXPECT_EQ(to, from) << width;

        const Planes first = Planes::of420(width, height).filled(5);
        Planes second = Planes::of420(width, height);
        const int pairs = 2 * first.chromaWidth;
        Bytes luma = blank(width * height), chroma = blank(pairs * first.chromaHeight);
        ASSERT_EQ(
            vekiYCbCr420ToYCbCr420_8u_P3P2R(first.y.data(), width, first.cb.data(), first.cr.data(), first.chromaWidth,
                                            luma.data(), width, chroma.data(), pairs, first.size()),
            0);
        EXPECT_EQ(chroma[0], first.cb[0]);
        ASSERT_EQ(vekiYCbCr420ToYCbCr420_8u_P2P3R(luma.data(), width, chroma.data(), pairs, second.y.data(), width,
                                                  second.cb.data(), second.cr.data(), first.chromaWidth, first.size()),
                  0);
        EXPECT_TRUE(second == first) << width;
    }
}

// Chroma that changes evenly down the picture comes back in every row but those at its ends, if the sample positions of
// the two directions agree with each other.
TEST(ProcessingLayouts, ChromaPositionsOfFramesAndFieldsAgree) {
    constexpr int kHeight = 28;
    Bytes from(4 * kHeight), to(4 * kHeight);
    for (std::size_t i = 0; i < from.size(); ++i)
        from[i] = static_cast<Vek8u>(i % 4 == 2 ? 250 - 8 * (i / 4) : 8 * (i / 4));
    for (const int interlaced : {0, 1}) {
        Planes planes = Planes::of420(2, kHeight);
        ASSERT_EQ(vekiCbYCr422ToYCbCr420_8u_C2P3R(from.data(), 4, planes.y.data(), 2, planes.cb.data(),
                                                  planes.cr.data(), 1, planes.size(), interlaced),
                  0);
        ASSERT_EQ(vekiYCbCr420ToCbYCr422_8u_P3C2R(planes.y.data(), 2, planes.cb.data(), planes.cr.data(), 1, to.data(),
                                                  4, planes.size(), interlaced),
                  0);
        for (std::size_t i = 4 * 4; i < from.size() - 4 * 4; ++i) EXPECT_EQ(to[i], from[i]) << interlaced << ' ' << i;
    }
}

TEST(ProcessingMacroblocks, AreSmallPicturesWhereChromaIsNotInterpolated) {
    const Bytes groups = noise(32 * 16, 9);
    Planes block = Planes::of420(16, 16), picture = block;
    ASSERT_EQ(vekiCbYCr422ToYCbCr420_16x16_8u_C2P3R(groups.data(), 32, block.y.data(), 16, block.cb.data(),
                                                    block.cr.data(), 8),
              0);
    ASSERT_EQ(vekiCbYCr422ToYCbCr420_8u_C2P3R(groups.data(), 32, picture.y.data(), 16, picture.cb.data(),
                                              picture.cr.data(), 8, {16, 16}, 0),
              0);
    EXPECT_TRUE(block == picture);

    Planes doubled(16, 16, 16);  // 4:2:2 with every row of chroma twice
    doubled.y = block.y;
    for (std::size_t i = 0; i < 128; ++i) {
        doubled.cb[i] = block.cb[i / 16 * 8 + i % 8];
        doubled.cr[i] = block.cr[i / 16 * 8 + i % 8];
    }
    Bytes a = blank(512), b = blank(512);
    ASSERT_EQ(
        vekiYCbCr420ToCbYCr422_16x16_8u_P3C2R(block.y.data(), 16, block.cb.data(), block.cr.data(), 8, a.data(), 32),
        0);
    ASSERT_EQ(vekiYCbCr422ToCbYCr422_8u_P3C2R(doubled.y.data(), 16, doubled.cb.data(), doubled.cr.data(), 8, b.data(),
                                              32, {16, 16}),
              0);
    EXPECT_EQ(a, b);

    std::fill(block.cb.begin(), block.cb.end(), 90);
    std::fill(block.cr.begin(), block.cr.end(), 201);
    for (int matrix = 0; matrix < 4; ++matrix) {
        Bytes c = blank(1024), d = blank(1024);
        ASSERT_EQ(vekiYCbCr420ToBGR_16x16_8u_P3C4R(block.y.data(), 16, block.cb.data(), block.cr.data(), 8, c.data(),
                                                   64, matrix | 0x40),
                  0);
        ASSERT_EQ(vekiYCbCr420ToBGR_8u_P3C4R(block.y.data(), 16, block.cb.data(), block.cr.data(), 8, d.data(), 64,
                                             {16, 16}, matrix),
                  0);
        EXPECT_EQ(c, d);
    }
}
}  // namespace
