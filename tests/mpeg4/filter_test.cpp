// Deblocking, deringing, the loop filter and resampling: lines worked by hand, and the clauses' own terms.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <random>
#include <vector>

#include "vekvc.h"

namespace {

using Deblock = VekStatus (*)(Vek8u*, Vek32s, Vek32s);
struct Edges {
    Deblock horizontal, vertical;
};
const Edges kH263 = {&vekiFilterDeblocking8x8_HorEdge_H263_8u_C1IR, &vekiFilterDeblocking8x8_VerEdge_H263_8u_C1IR};
const Edges kMpeg4 = {&vekiFilterDeblocking8x8_HorEdge_MPEG4_8u_C1IR, &vekiFilterDeblocking8x8_VerEdge_MPEG4_8u_C1IR};

// The line as both filters leave it at place `place` of an edge, other lines being flat; samples beside the line stay.
std::vector<int> filtered(const Edges& edges, const std::vector<int>& line, int QP, int place) {
    const int n = static_cast<int>(line.size());
    std::vector<int> results[2];
    for (const bool vertical : {false, true}) {
        Vek8u plane[16 * 16];
        std::fill_n(plane, 256, Vek8u{77});
        const auto at = [&](int i) -> Vek8u& {
            return vertical ? plane[16 * (4 + place) + 3 + i] : plane[16 * (3 + i) + 4 + place];
        };
        for (int i = 0; i < n; ++i) at(i) = static_cast<Vek8u>(line[static_cast<std::size_t>(i)]);
        Vek8u* edge = vertical ? plane + 16 * 4 + 3 + n / 2 : plane + 16 * (3 + n / 2) + 4;
        EXPECT_EQ((vertical ? edges.vertical : edges.horizontal)(edge, 16, QP), vekStsOk);
        for (int i = 0; i < n; ++i) {
            results[vertical].push_back(at(i));
            at(i) = 77;
        }
        for (const Vek8u v : plane) EXPECT_EQ(v, 77);
    }
    EXPECT_EQ(results[0], results[1]);
    return results[0];
}

TEST(DeblockH263, EveryStrength) {
    constexpr int kStrengths[31] = {1, 1, 2, 2, 3, 3, 4,  4,  4,  5,  5,  6,  6,  7,  7, 7,
                                    8, 8, 8, 9, 9, 9, 10, 10, 10, 11, 11, 11, 12, 12, 12};
    for (int QP = 1; QP <= 31; ++QP) {
        const int S = kStrengths[QP - 1];
        const struct {
            int d, change;
        } kRamp[] = {{0, 0}, {S - 1, S - 1}, {S, S}, {S + 1, S - 1}, {2 * S - 1, 1}, {2 * S, 0}, {2 * S + 1, 0}};
        for (const auto& r : kRamp)
            for (const int sign : {-1, 1}) {
                // With A = D, d is half of C - B; it is cut towards zero.
                const int B = 100, C = 100 + sign * (2 * r.d + (r.d > 0 ? 1 : 0)), change = sign * r.change;
                EXPECT_EQ(filtered(kH263, {120, B, C, 120}, QP, QP % 8),
                          (std::vector<int>{120, B + change, C - change, 120}))
                    << QP << ' ' << r.d;
            }
    }
}

TEST(DeblockH263, ByHand) {
    // d = (100 - 360 + 336 - 60) / 8 = 2 of strength 5; (A - D) / 4 = 10 is limited to 1.
    EXPECT_EQ(filtered(kH263, {100, 90, 84, 60}, 10, 0), (std::vector<int>{99, 92, 82, 61}));
    // d = (60 - 336 + 360 - 100) / 8 = -2.
    EXPECT_EQ(filtered(kH263, {60, 84, 90, 100}, 10, 7), (std::vector<int>{61, 82, 92, 99}));
    // d = (9 - 400 + 480 - 3) / 8 = 10 of strength 12; (9 - 3) / 4 = 1 is within 5.
    EXPECT_EQ(filtered(kH263, {9, 100, 120, 3}, 31, 3), (std::vector<int>{8, 110, 110, 4}));
    // (3 - 8) / 4 is cut towards zero; d = (3 - 400 + 480 - 8) / 8 = 9.
    EXPECT_EQ(filtered(kH263, {3, 100, 120, 8}, 31, 5), (std::vector<int>{4, 109, 111, 7}));
    // Both clips: d = (0 - 1016 + 1020 - 100) / 8 = -12; d = (255 - 12 + 0 - 150) / 8 = 11.
    EXPECT_EQ(filtered(kH263, {0, 254, 255, 100}, 31, 4), (std::vector<int>{6, 242, 255, 94}));
    EXPECT_EQ(filtered(kH263, {255, 3, 0, 150}, 31, 4), (std::vector<int>{250, 14, 0, 155}));
}

TEST(DeblockMpeg4, FlatLines) {
    const std::vector<int> step = {10, 10, 10, 10, 10, 14, 14, 14, 14, 14};
    // Sums of the weights behind the edge, v1 to v8: 1 2 4 6 10 12 14 15 of 16.
    EXPECT_EQ(filtered(kMpeg4, step, 3, 0), (std::vector<int>{10, 10, 11, 11, 12, 13, 13, 14, 14, 14}));
    EXPECT_EQ(filtered(kMpeg4, step, 2, 1), step);  // the range, 4, is not below 2 QP
    // Beyond the ends the line goes on with v0 (v9) where it is less than QP from v1 (v8).
    auto ends = step;
    ends[0] = 12, ends[9] = 12;
    EXPECT_EQ(filtered(kMpeg4, ends, 3, 2), (std::vector<int>{12, 11, 11, 11, 12, 12, 13, 13, 13, 12}));
    ends[0] = 13, ends[9] = 11;
    EXPECT_EQ(filtered(kMpeg4, ends, 3, 3), (std::vector<int>{13, 10, 11, 11, 12, 13, 13, 14, 14, 11}));
    // Six flat pairs are enough (differences 2 2 2 3 3 3 2 2 2; the range is 17), five are not.
    const std::vector<int> six = {10, 12, 14, 16, 19, 22, 25, 27, 29, 31};
    EXPECT_NE(filtered(kMpeg4, six, 9, 4)[1], 12);
    EXPECT_EQ(filtered(kMpeg4, six, 8, 5), six);
    auto five = six;
    for (std::size_t i = 8; i < 10; ++i) ++five[i];
    EXPECT_NE(filtered(kMpeg4, six, 10, 6)[1], 12);
    EXPECT_EQ(filtered(kMpeg4, five, 10, 6)[1], 12);
}

TEST(DeblockMpeg4, OtherLines) {
    // e0 = 160 // 8 = 20, e1 = e2 = 70 // 8 = 9: t = -55 // 8 = -7, within -20..0.
    const std::vector<int> line = {0, 10, 0, 10, 0, 40, 30, 40, 30, 40};
    auto law = line;
    law[4] = 7, law[5] = 33;
    EXPECT_EQ(filtered(kMpeg4, line, 21, 0), law);
    EXPECT_EQ(filtered(kMpeg4, line, 20, 7), line);  // |e0| is not below QP
    std::vector<int> mirrored(line.rbegin(), line.rend());
    EXPECT_EQ(filtered(kMpeg4, mirrored, 21, 3), std::vector<int>(law.rbegin(), law.rend()));
    // With e1 = 20 // 8 = 3 (2.5) the least is on the left, turned round on the right: t = -85 // 8 = -11.
    const std::vector<int> calm = {0, 10, 10, 10, 0, 40, 30, 40, 30, 40};
    law = calm;
    law[4] = 11, law[5] = 29;
    EXPECT_EQ(filtered(kMpeg4, calm, 21, 1), law);
    mirrored.assign(calm.rbegin(), calm.rend());
    EXPECT_EQ(filtered(kMpeg4, mirrored, 21, 6), std::vector<int>(law.rbegin(), law.rend()));
    // e0 = 95 // 8 = 12 while v4 is above v5: t and h differ in sign.
    const std::vector<int> away = {50, 60, 50, 60, 30, 25, 0, 10, 0, 10};
    EXPECT_EQ(filtered(kMpeg4, away, 31, 2), away);
    // e0 = -100 // 8 = -13 (-12.5), e1 = e2 = 0: t = 65 // 8 = 8, limited to (54 - 50) / 2 = 2.
    const std::vector<int> limited = {0, 54, 20, 20, 54, 50, 60, 60, 50, 0};
    law = limited;
    law[4] = 52, law[5] = 52;
    EXPECT_EQ(filtered(kMpeg4, limited, 14, 5), law);
    EXPECT_EQ(filtered(kMpeg4, limited, 13, 5), limited);
}

// e0 = 45 // 8 = 6, e1 = 0: t = -30 // 8 = -4, but half of 100 - 101 is 0, not -1.
TEST(DeblockMpeg4, HalfAStepOfOneIsNone) {
    const std::vector<int> line = {50, 100, 120, 120, 100, 101, 100, 130, 100, 140};
    EXPECT_EQ(filtered(kMpeg4, line, 31, 0), line);
}

TEST(Deblock, Arguments) {
    Vek8u plane[256];
    for (const Edges& e : {kH263, kMpeg4})
        for (const Deblock f : {e.horizontal, e.vertical}) {
            EXPECT_EQ(f(nullptr, 16, 0), vekStsErrNullPtr);
            EXPECT_EQ(f(plane, 16, 0), vekStsErrQPRange);
            EXPECT_EQ(f(plane, 16, 32), vekStsErrQPRange);
        }
}

// A block at (8, 8) of a plane of 48 x 48.
struct Plane {
    Vek8u samples[48 * 48] = {};
    Vek8u& at(int x, int y) { return samples[48 * (8 + y) + 8 + x]; }
    void fill(int x, int y, int width, int height, int value) {
        for (int i = 0; i < width * height; ++i) at(x + i % width, y + i / width) = static_cast<Vek8u>(value);
    }
};

// What luma (n = 16) or chroma (n = 8) becomes with the given threshold of each block.
void expectDeringed(Plane& p, int n, int QP, const std::vector<int>& thresholds) {
    Vek8u out[256];
    const auto function = n == 16 ? &vekiFilterDeringingLuma_MPEG4_8u_C1R : &vekiFilterDeringingChroma_MPEG4_8u_C1R;
    ASSERT_EQ(function(&p.at(0, 0), 48, out, n, QP), vekStsOk);
    for (int i = 0; i < n * n; ++i) {
        const int x = i % n, y = i / n, threshold = thresholds[static_cast<std::size_t>(x / 8 + y / 8 * 2)];
        int least = 255, most = 0;
        double sum = 0;
        for (int k = 0; k < 9; ++k) {
            const int v = p.at(x + k % 3 - 1, y + k / 3 - 1), distance = std::abs(k % 3 - 1) + std::abs(k / 3 - 1);
            least = std::min(least, v), most = std::max(most, v);
            sum += v * std::ldexp(0.25, -distance);
        }
        const int v = p.at(x, y);
        const bool oneSide = threshold > most || threshold <= least;
        const int law =
            oneSide && threshold >= 0 ? std::clamp(static_cast<int>(std::floor(sum + 0.5)), v - QP / 2, v + QP / 2) : v;
        ASSERT_EQ(out[i], law) << x << ' ' << y;
    }
}

TEST(Dering, Thresholds) {
    std::mt19937 random(4);
    const auto noisy = [&](Plane& p, int x, int y, int low, int high) {
        for (int i = 0; i < 64; ++i)
            p.at(x + i % 8, y + i / 8) =
                static_cast<Vek8u>(low + static_cast<int>(random() % static_cast<unsigned>(high - low + 1)));
        p.at(x + 3, y + 5) = static_cast<Vek8u>(low), p.at(x + 6, y + 1) = static_cast<Vek8u>(high);
    };
    for (int round = 0; round < 200; ++round) {
        const int QP = round % 31 + 1;
        Plane p;
        for (auto& v : p.samples) v = static_cast<Vek8u>(random() % 40);
        // Ranges 31 and 32 beside 64 (the first of two): only the flatter one takes over its threshold, 68 // 2 + 1.
        noisy(p, 0, 0, 20, 51), noisy(p, 8, 0, 3, 67), noisy(p, 0, 8, 40, 104), noisy(p, 8, 8, 30, 62);
        expectDeringed(p, 16, QP, {35, 35, 72, 46});
        noisy(p, 8, 0, 3, 66), noisy(p, 0, 8, 40, 103);  // 63 is not enough
        expectDeringed(p, 16, QP, {36, 35, 72, 46});
        noisy(p, 0, 0, 20, 36), noisy(p, 8, 0, 30, 38), noisy(p, 0, 8, 40, 41), noisy(p, 8, 8, 30, 30);
        expectDeringed(p, 16, QP, {28, 34, 41, 30});
        noisy(p, 0, 0, 20, 35);  // a range of 15 everywhere: copied
        expectDeringed(p, 16, QP, {-1, -1, -1, -1});
        expectDeringed(p, 8, QP, {-1});
        noisy(p, 0, 0, 20, 36);
        expectDeringed(p, 8, QP, {28});
        noisy(p, 0, 0, 0, 255);
        expectDeringed(p, 8, QP, {128});
    }
    // A step of 100: the filter gives 3/4 and 1/4 of it, QP / 2 is all that a sample may move.
    Plane p;
    p.fill(-1, -1, 10, 10, 100), p.fill(4, -1, 5, 10, 140);
    p.at(0, 0) = 0;
    Vek8u out[64];
    ASSERT_EQ(vekiFilterDeringingChroma_MPEG4_8u_C1R(&p.at(0, 0), 48, out, 8, 9), vekStsOk);
    EXPECT_EQ(out[8 * 4 + 3], 104);
    EXPECT_EQ(out[8 * 4 + 4], 136);
    EXPECT_EQ(out[8 * 4 + 2], 100);
    EXPECT_EQ(out[8 * 1 + 1], 100);  // the bins differ
    EXPECT_EQ(vekiFilterDeringingLuma_MPEG4_8u_C1R(&p.at(0, 0), 48, out, 8, 32), vekStsErrQPRange);
    EXPECT_EQ(vekiFilterDeringingChroma_MPEG4_8u_C1R(nullptr, 48, out, 8, 32), vekStsErrNullPtr);
}

TEST(LoopFilterH261, ByHand) {
    Vek8u block[64] = {}, out[64];
    const auto filter = [&](bool inPlace) {
        if (inPlace) std::copy_n(block, 64, out);
        EXPECT_EQ(vekiFilterLoop8x8_H261_8u_C1R(inPlace ? out : block, 8, out, 8), vekStsOk);
    };
    for (const bool inPlace : {false, true}) {
        std::fill_n(block, 64, Vek8u{0});
        block[8 * 3 + 3] = 160;  // spreads to its neighbours as (1 2 1)^2 / 16
        filter(inPlace);
        for (int i = 0; i < 64; ++i) {
            const int dx = std::abs(i % 8 - 3), dy = std::abs(i / 8 - 3);
            EXPECT_EQ(out[i], dx > 1 || dy > 1 ? 0 : 40 >> (dx + dy));
        }
        // A corner keeps its own value and gives a quarter of it along the sides; a side's sample is filtered along it.
        std::fill_n(block, 64, Vek8u{0});
        block[0] = 160, block[8 * 7 + 4] = 162;
        filter(inPlace);
        EXPECT_EQ(out[0], 160);
        EXPECT_EQ(out[1], 40);
        EXPECT_EQ(out[8], 40);
        EXPECT_EQ(out[9], 10);
        EXPECT_EQ(out[8 * 7 + 4], 81);
        EXPECT_EQ(out[8 * 7 + 3], 41);  // 40.5
        EXPECT_EQ(out[8 * 6 + 4], 20);  // 20.25
        EXPECT_EQ(out[8 * 6 + 5], 10);  // 10.125
    }
}

// The sample nearest to (x, y) of a plane, or `outside` if that is not negative.
int sampleOf(const std::vector<Vek8u>& plane, VekiSize size, std::int64_t x, std::int64_t y, int outside = -1) {
    const auto i = std::clamp<std::int64_t>(x, 0, size.width - 1), j = std::clamp<std::int64_t>(y, 0, size.height - 1);
    return outside >= 0 && (i != x || j != y) ? outside : plane[static_cast<std::size_t>(j * size.width + i)];
}

// Bilinear interpolation between samples that repeat at the sides gives all of Annex O's rules.
TEST(Upsample, QuartersOfTheWay) {
    std::mt19937 random(6);
    for (int round = 0; round < 200; ++round) {
        const VekiSize size = {static_cast<int>(random() % 40) + 1, static_cast<int>(random() % 5) + 1};
        std::vector<Vek8u> plane(static_cast<std::size_t>(size.width * size.height));
        for (auto& v : plane) v = static_cast<Vek8u>(round % 2 == 0 ? random() : random() % 2 * 255);
        for (int direction = 1; direction <= 3; ++direction) {
            const int sx = direction == 2 ? 1 : 2, sy = direction == 1 ? 1 : 2;
            const int width = sx * size.width, height = sy * size.height;
            std::vector<Vek8u> out(static_cast<std::size_t>(width * height));
            ASSERT_EQ(vekiUpsample2x_H263_8u_C1R(plane.data(), size.width, size, out.data(), width, direction),
                      vekStsOk);
            for (int y = 0; y < height; ++y)
                for (int x = 0; x < width; ++x) {
                    const double px = (x + 0.5) / sx - 0.5, py = (y + 0.5) / sy - 0.5;
                    const double fx = px - std::floor(px), fy = py - std::floor(py);
                    double sum = 0;
                    for (int k = 0; k < 4; ++k)
                        sum += (k % 2 != 0 ? fx : 1 - fx) * (k / 2 != 0 ? fy : 1 - fy) *
                               sampleOf(plane, size, static_cast<int>(std::floor(px)) + k % 2,
                                        static_cast<int>(std::floor(py)) + k / 2);
                    ASSERT_EQ(out[static_cast<std::size_t>(y * width + x)], static_cast<int>(std::floor(sum + 0.5)));
                }
        }
    }
    const VekiSize size = {2, 1};
    const Vek8u in[2] = {0, 100};
    Vek8u out[8];
    vekiUpsample2x_H263_8u_C1R(in, 2, size, out, 4, 3);
    EXPECT_EQ(std::vector<int>(out, out + 8), (std::vector<int>{0, 25, 75, 100, 0, 25, 75, 100}));
    EXPECT_EQ(vekiUpsample2x_H263_8u_C1R(in, 1, size, out, 4, 4), vekStsErrStep);
    EXPECT_EQ(vekiUpsample2x_H263_8u_C1R(in, 2, size, out, 3, 1), vekStsErrStep);
    EXPECT_EQ(vekiUpsample2x_H263_8u_C1R(in, 2, {0, 1}, out, 4, 4), vekStsErrSize);
    EXPECT_EQ(vekiUpsample2x_H263_8u_C1R(in, 2, {2, 0}, out, 4, 4), vekStsErrSize);
    EXPECT_EQ(vekiUpsample2x_H263_8u_C1R(in, 2, size, out, 4, 0), vekStsErrOutOfRange);
    EXPECT_EQ(vekiUpsample2x_H263_8u_C1R(in, 2, size, out, 4, 4), vekStsErrOutOfRange);
    EXPECT_EQ(vekiUpsample2x_H263_8u_C1R(in, 2, size, out, 2, 2), vekStsOk);
}

TEST(Resample, AnyMap) {
    std::mt19937 random(7);
    const auto draw = [&](int low, int high) {
        return low + static_cast<int>(random() % static_cast<unsigned>(high - low + 1));
    };
    for (int round = 0; round < 1500; ++round) {
        const VekiSize from = {draw(1, 50), draw(1, 50)}, to = {draw(1, 40), draw(1, 12)};
        std::vector<Vek8u> plane(static_cast<std::size_t>(from.width * from.height)),
            out(static_cast<std::size_t>(to.width * to.height));
        for (auto& v : plane) v = static_cast<Vek8u>(random());
        const int shift = draw(0, 24), one = shift < 20 ? 1 << shift : 1 << 19;
        const int turn = round % 3 == 0 ? 40 : 3;
        Vek32s map[2][4];
        for (int k = 0; k < 2; ++k) {
            map[k][0] = draw(-300, 900) * one;
            for (int i = 1; i < 3; ++i)
                map[k][i] = (i == k + 1 ? draw(4, 40) * one : draw(-turn, turn) * one) + draw(0, one);
            map[k][3] = draw(-one, one) / 8;
        }
        const int roundControl = draw(0, 3), fill = round % 2 == 0 ? -draw(1, 1000) : draw(0, 255);
        ASSERT_EQ(vekiResample_H263_8u_C1R(plane.data(), from.width, from, out.data(), to.width, to, map[0], map[1],
                                           shift, roundControl, fill),
                  vekStsOk);
        for (int y = 0; y < to.height; ++y)
            for (int x = 0; x < to.width; ++x) {
                std::int64_t whole[2];
                double part[2];
                for (int k = 0; k < 2; ++k) {  // all of it exact in double precision
                    const double position = std::floor((map[k][0] + double(map[k][1]) * x + double(map[k][2]) * y +
                                                        double(map[k][3]) * x * y) /
                                                       std::exp2(shift)) /
                                            16;
                    whole[k] = static_cast<std::int64_t>(std::floor(position));
                    part[k] = position - std::floor(position);
                }
                double sum = 0;
                for (int k = 0; k < 4; ++k)
                    sum += (k % 2 != 0 ? part[0] : 1 - part[0]) * (k / 2 != 0 ? part[1] : 1 - part[1]) *
                           sampleOf(plane, from, whole[0] + k % 2, whole[1] + k / 2, fill);
                const int law = static_cast<int>(std::floor(sum + (127 + roundControl % 2) / 256.0));
                ASSERT_EQ(out[static_cast<std::size_t>(y * to.width + x)], law) << round << ' ' << x << ' ' << y;
            }
    }
}

TEST(Resample, Arguments) {
    const Vek8u in[4] = {1, 2, 3, 4};
    const Vek32s map[4] = {};
    Vek8u out[4];
    const auto call = [&](int step, VekiSize from, int dstStep, VekiSize to, int shift, int fill) {
        return vekiResample_H263_8u_C1R(in, step, from, out, dstStep, to, map, map, shift, 0, fill);
    };
    const VekiSize good = {2, 2};
    EXPECT_EQ(vekiResample_H263_8u_C1R(in, 0, good, out, 2, good, map, nullptr, 0, 0, 0), vekStsErrNullPtr);
    EXPECT_EQ(call(1, good, 2, {0, 0}, -1, 256), vekStsErrStep);
    EXPECT_EQ(call(2, good, 1, good, -1, 256), vekStsErrStep);
    for (const VekiSize bad : {VekiSize{0, 2}, VekiSize{2, 0}, VekiSize{-1, -1}}) {
        EXPECT_EQ(call(2, bad, 2, good, -1, 256), vekStsErrSize);
        EXPECT_EQ(call(2, good, 2, bad, -1, 256), vekStsErrSize);
    }
    EXPECT_EQ(call(2, good, 2, good, -1, 0), vekStsErrOutOfRange);
    EXPECT_EQ(call(2, good, 2, good, 32, 0), vekStsErrOutOfRange);
    EXPECT_EQ(call(2, good, 2, good, 31, 256), vekStsErrOutOfRange);
    EXPECT_EQ(call(2, good, 2, good, 31, INT32_MIN), vekStsOk);
}

}  // namespace
