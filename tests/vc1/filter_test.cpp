// VC-1 loop filter, overlap smoothing and range mapping: known answers, every mask and flag, limits.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <tuple>
#include <utility>
#include <vector>

#include "vekvc/vc1.h"

namespace {

// ---- loop filter

using Filter = VekStatus (*)(Vek8u*, Vek32s, Vek32s, Vek32s);
using FilterPairs = VekStatus (*)(Vek8u*, Vek32s, Vek32s, Vek32s, Vek32s);

// An edge of up to 16 places in a picture: place i has the eight pixels P1 to P8 across the edge.
struct EdgePicture {
    static constexpr int kStep = 32;
    bool horizontal;
    int channels;
    std::vector<Vek8u> samples = std::vector<Vek8u>(kStep * kStep, 0);

    Vek8u& at(int place, int P, int channel = 0) {
        const int row = horizontal ? 4 + P : 8 + place, column = horizontal ? 8 / channels + place : 4 + P;
        return samples[static_cast<std::size_t>(row * kStep + column * channels + channel)];
    }
    Vek8u* edge() { return &at(0, 5); }
    void set(int place, std::array<int, 8> P, int channel = 0) {
        for (int i = 0; i < 8; ++i) at(place, i + 1, channel) = static_cast<Vek8u>(P[static_cast<std::size_t>(i)]);
    }
};
constexpr std::array<int, 8> kStepEdge = {100, 100, 100, 100, 110, 110, 110, 110};
constexpr std::array<int, 8> kFlat = {100, 100, 100, 100, 100, 100, 100, 100};

struct Kind {
    bool horizontal;
    int places, firstBit;
    Filter filter;
};
constexpr Kind kKinds[] = {{true, 16, 0, vekiFilterDeblockingLuma_HorEdge_VC1_8u_C1IR},
                           {false, 16, 0, vekiFilterDeblockingLuma_VerEdge_VC1_8u_C1IR},
                           {true, 8, 1, vekiFilterDeblockingChroma_HorEdge_VC1_8u_C1IR},
                           {false, 8, 1, vekiFilterDeblockingChroma_VerEdge_VC1_8u_C1IR}};

TEST(VC1LoopFilter, OnePair) {
    struct Case {
        std::array<int, 8> P;
        int pQuant, P4, P5;
    };
    // The first two: clip = -5, a0 = (-20 + 50 + 4) >> 3 = 4, a1 = a2 = 0, d = -20 / 8 = -2.
    for (const Case& c :
         {Case{kStepEdge, 4, 100, 110}, Case{kStepEdge, 5, 102, 108}, Case{kStepEdge, 8, 102, 108},
          Case{kStepEdge, 0, 100, 110}, Case{kStepEdge, -8, 100, 110}, Case{kStepEdge, 0x7fffffff, 102, 108},
          Case{kStepEdge, 0x10008, 102, 108},
          Case{{110, 110, 110, 110, 100, 100, 100, 100}, 8, 108, 102},  // a0 = -26 >> 3 = -4, d = 2
          Case{{100, 100, 100, 100, 101, 101, 101, 101}, 8, 100, 101},  // clip = 0
          Case{{100, 100, 100, 100, 102, 102, 102, 102}, 8, 100, 102},  // a0 = 1, d = -5 / 8 = 0
          // clip = -1, a0 = (-2 * 0 + 5 * 2 + 4) >> 3 = 1 with P3 = P6; P3 - P6 = -20 gives -4: away
          Case{{80, 80, 80, 100, 102, 100, 100, 100}, 31, 100, 102},
          // the full swing: a0 = (-510 + 1275 + 4) >> 3 = 96, d = -60, clip = -127
          Case{{0, 0, 0, 0, 255, 255, 255, 255}, 97, 60, 195}, Case{{0, 0, 0, 0, 255, 255, 255, 255}, 96, 0, 255},
          // a0 = (400 + 10 + 4) >> 3 = 51, a3 = 25, d = -130 / 8 = -16 is limited to clip = -1
          Case{{200, 200, 200, 100, 102, 0, 0, 0}, 99, 101, 101},
          // a0 = 52, but a3 = min(63, 64)
          Case{{100, 100, 200, 100, 103, 0, 103, 103}, 99, 100, 103}})
        for (const Kind& kind : kKinds) {
            EdgePicture picture{kind.horizontal, 1};
            for (int i = 0; i < kind.places; ++i) picture.set(i, c.P);
            EdgePicture expected = picture;
            for (int i = 0; i < kind.places; ++i) {
                expected.at(i, 4) = static_cast<Vek8u>(c.P4);
                expected.at(i, 5) = static_cast<Vek8u>(c.P5);
            }
            ASSERT_EQ(kind.filter(picture.edge(), c.pQuant, EdgePicture::kStep, 0), vekStsOk);
            EXPECT_EQ(picture.samples, expected.samples) << "pQuant " << c.pQuant << " P4 " << c.P[3] << " " << c.P4;
        }
}

TEST(VC1LoopFilter, DisabledSegmentsStay) {
    for (const Kind& kind : kKinds)
        for (int flag = 0; flag < 32; ++flag) {
            EdgePicture picture{kind.horizontal, 1};
            for (int i = 0; i < kind.places; ++i) picture.set(i, kStepEdge);
            ASSERT_EQ(kind.filter(picture.edge(), 8, EdgePicture::kStep, flag | ~31), vekStsOk);
            for (int i = 0; i < kind.places; ++i) {
                const bool disabled = flag >> (kind.firstBit + i / 4) & 1;
                EXPECT_EQ(picture.at(i, 4), disabled ? 100 : 102) << "flag " << flag << " place " << i;
                EXPECT_EQ(picture.at(i, 5), disabled ? 110 : 108) << "flag " << flag << " place " << i;
            }
        }
}

TEST(VC1LoopFilter, ThirdPairDecides) {
    for (const Kind& kind : kKinds)
        for (int odd = 0; odd < 4; ++odd)             // the pair that differs from the others
            for (const bool edges : {false, true}) {  // the others are steps
                EdgePicture picture{kind.horizontal, 1};
                for (int i = 0; i < kind.places; ++i) picture.set(i, (i % 4 == odd) != edges ? kStepEdge : kFlat);
                ASSERT_EQ(kind.filter(picture.edge(), 8, EdgePicture::kStep, 0), vekStsOk);
                const bool filtered = (odd == 2) != edges;
                for (int i = 0; i < kind.places; ++i)
                    EXPECT_EQ(picture.at(i, 5), (i % 4 == odd) == edges ? 100 : filtered ? 108 : 110) << i;
            }
}

TEST(VC1LoopFilter, ComponentsOfInterleavedChroma) {
    constexpr std::pair<bool, FilterPairs> kPairs[] = {{true, vekiFilterDeblockingChroma_HorEdge_VC1_8u_C2IR},
                                                       {false, vekiFilterDeblockingChroma_VerEdge_VC1_8u_C2IR}};
    for (const auto& [horizontal, filter] : kPairs)
        for (int flagU = 0; flagU < 8; ++flagU)
            for (int flagV = 0; flagV < 8; ++flagV) {
                EdgePicture picture{horizontal, 2};
                for (int i = 0; i < 8; ++i) {
                    picture.set(i, kStepEdge, 0);
                    picture.set(i, {210, 210, 210, 210, 200, 200, 200, 200}, 1);
                }
                ASSERT_EQ(filter(picture.edge(), 8, EdgePicture::kStep, flagU, flagV | 0x40), vekStsOk);
                for (int i = 0; i < 8; ++i) {
                    EXPECT_EQ(picture.at(i, 4, 0), flagU >> (1 + i / 4) & 1 ? 100 : 102) << flagU << " " << flagV;
                    EXPECT_EQ(picture.at(i, 5, 0), flagU >> (1 + i / 4) & 1 ? 110 : 108);
                    EXPECT_EQ(picture.at(i, 4, 1), flagV >> (1 + i / 4) & 1 ? 210 : 208);
                    EXPECT_EQ(picture.at(i, 5, 1), flagV >> (1 + i / 4) & 1 ? 200 : 202);
                }
            }
}

// ---- overlap smoothing

struct Values4 {
    int x0, x1, x2, x3;
};
struct Pixels4 {
    int y[4];
};
// With r0 = 4 and with r0 = 3.
struct SmoothingCase {
    Values4 x;
    Pixels4 even, odd;
};
constexpr SmoothingCase kSmoothing[] = {
    {{100, 100, 100, 100}, {{100, 100, 100, 100}}, {{100, 100, 100, 100}}},
    // 7 * 10 + 50 + 4 = 124; -10 + 140 + 30 + 50 + 3 = 213; 10 + 20 + 210 - 50 + 4 = 194; 10 + 350 + 3 = 363
    {{10, 20, 30, 50}, {{15, 26, 24, 45}}, {{15, 26, 24, 45}}},
    // 7 * 0 + 4 + 4 = 8 and 7; 0 + 0 + 1 + 4 + 3 = 8 and 9; 0 + 0 + 7 - 4 + 4 = 7 and 6; 0 + 28 + 3 = 31 and 32
    {{0, 0, 1, 4}, {{1, 1, 0, 3}}, {{0, 1, 0, 4}}},
    {{-100, -100, 300, 300}, {{0, 0, 200, 250}}, {{0, 0, 200, 250}}},
    // 7 * 5000 is limited to 32767, - 32768 leaves -1: (-1 + 4) >> 3; -5000 + 32767 - 5000 - 32768
    {{5000, 5000, -5000, -32768}, {{0, 0, 255, 0}}, {{0, 0, 255, 0}}},
    // 7 * 32767 stays 32767, less 32700 leaves 67: 71 >> 3 = 8, 70 >> 3 = 8; unlimited it would be 255
    {{32767, 0, 0, -32700}, {{8, 0, 255, 0}}, {{8, 0, 255, 0}}},
    // 32767 + 32767 is limited to 32767, + 7 * -4681 leaves 0; y1 = -32767 + 32767 - 4681
    {{32767, 32767, -4681, 0}, {{255, 0, 0, 255}}, {{255, 0, 0, 255}}},
    // -(-32768) is 32767, + 7 * -4681 = -32767: 0; + 40, + 0, + 3: 43 >> 3 = 5, 44 >> 3 = 5
    {{-32768, -4681, 40, 0}, {{0, 5, 0, 0}}, {{0, 5, 0, 0}}}};

TEST(VC1Smoothing, HorizontalEdges) {
    for (const SmoothingCase& c : kSmoothing)
        for (int flag = 0; flag < 32; ++flag) {
            Vek16s upper[2][16], bottom[2][16];
            for (int x = 0; x < 16; ++x) {
                upper[0][x] = static_cast<Vek16s>(c.x.x0);
                upper[1][x] = static_cast<Vek16s>(c.x.x1);
                bottom[0][x] = static_cast<Vek16s>(c.x.x2);
                bottom[1][x] = static_cast<Vek16s>(c.x.x3);
            }
            Vek8u luma[4][16], chroma[4][16], pairs[4][16];
            for (auto* p : {&luma, &chroma, &pairs}) std::fill_n(&(*p)[0][0], 64, Vek8u{77});
            ASSERT_EQ(vekiSmoothingLuma_HorEdge_VC1_16s8u_C1R(upper[0], 32, bottom[0], 32, luma[2], 16, flag),
                      vekStsOk);
            ASSERT_EQ(vekiSmoothingChroma_HorEdge_VC1_16s8u_C1R(upper[0], 32, bottom[0], 32, chroma[2], 16), vekStsOk);
            ASSERT_EQ(vekiSmoothingChroma_HorEdge_VC1_16s8u_P2C2R(upper[0], 32, bottom[0], 32, bottom[1], -32, upper[1],
                                                                  -32, pairs[2], 16),
                      vekStsOk);
            for (int i = 0; i < 4; ++i)
                for (int x = 0; x < 16; ++x) {
                    const int y = (x % 2 == 0 ? c.even : c.odd).y[i];
                    EXPECT_EQ(luma[i][x], flag >> (x / 8 * 2) & 3 ? y : 77) << "row " << i << " column " << x;
                    EXPECT_EQ(chroma[i][x], x < 8 ? y : 77) << "row " << i << " column " << x;
                    if (x < 8) {
                        EXPECT_EQ(pairs[i][2 * x], y);
                    }
                }
        }
}

// Row k of a block has values of its own, so that every row of the picture tells which rows made it.
TEST(VC1Smoothing, VerticalEdgesOfFramesAndFields) {
    Vek16s left[16][2], right[16][2];
    for (int k = 0; k < 16; ++k) {
        left[k][0] = left[k][1] = static_cast<Vek16s>(8 * k);
        right[k][0] = right[k][1] = static_cast<Vek16s>(8 * k + 4);
    }
    for (int fields = 0; fields < 6; ++fields)
        for (int flag = 0; flag < 32; ++flag) {
            Vek8u picture[16][8];
            std::fill_n(&picture[0][0], 128, Vek8u{255});
            ASSERT_EQ(vekiSmoothingLuma_VerEdge_VC1_16s8u_C1R(left[0], 4, right[0], 4, &picture[0][4], 8, fields, flag),
                      vekStsOk);
            for (int y = 0; y < 16; ++y) {
                const int fieldRow = y / 2 + y % 2 * 8;
                const int l = 8 * (fields & 2 ? fieldRow : y), r = 8 * (fields & 1 ? fieldRow : y) + 4;
                const int r0 = y % 2 == 0 ? 4 : 3, r1 = 7 - r0;
                const bool written = fields == 0 ? (flag >> (y / 8 * 2) & 3) != 0 : fields <= 3 && flag != 0;
                const int expected[8] = {255,
                                         255,
                                         (7 * l + r + r0) >> 3,
                                         (6 * l + 2 * r + r1) >> 3,
                                         (2 * l + 6 * r + r0) >> 3,
                                         (l + 7 * r + r1) >> 3,
                                         255,
                                         255};
                for (int x = 0; x < 8; ++x)
                    EXPECT_EQ(picture[y][x], written ? expected[x] : 255)
                        << "fields " << fields << " flag " << flag << " row " << y << " column " << x;
            }
        }
}

TEST(VC1Smoothing, VerticalEdgesOfChroma) {
    for (const SmoothingCase& c : kSmoothing)
        for (const SmoothingCase& d : kSmoothing) {
            Vek16s u[8][4], v[8][4];
            for (int y = 0; y < 8; ++y) {
                std::copy_n(&c.x.x0, 1, &u[y][0]);
                for (const auto& [to, from] : {std::pair{u[y], c.x}, std::pair{v[y], d.x}}) {
                    to[0] = static_cast<Vek16s>(from.x0);
                    to[1] = static_cast<Vek16s>(from.x1);
                    to[2] = static_cast<Vek16s>(from.x2);
                    to[3] = static_cast<Vek16s>(from.x3);
                }
            }
            Vek8u plane[8][4], pairs[8][8];
            ASSERT_EQ(vekiSmoothingChroma_VerEdge_VC1_16s8u_C1R(u[0], 8, u[0] + 2, 8, plane[0] + 2, 4), vekStsOk);
            ASSERT_EQ(vekiSmoothingChroma_VerEdge_VC1_16s8u_P2C2R(u[0], 8, u[0] + 2, 8, v[0], 8, v[0] + 2, 8,
                                                                  pairs[0] + 4, 8),
                      vekStsOk);
            for (int y = 0; y < 8; ++y)
                for (int i = 0; i < 4; ++i) {
                    EXPECT_EQ(plane[y][i], (y % 2 == 0 ? c.even : c.odd).y[i]);
                    EXPECT_EQ(pairs[y][2 * i], (y % 2 == 0 ? c.even : c.odd).y[i]);
                    EXPECT_EQ(pairs[y][2 * i + 1], (y % 2 == 0 ? d.even : d.odd).y[i]);
                }
        }
}

TEST(VC1Smoothing, NullsCountBeforeTheFlag) {
    Vek16s values[64] = {};
    Vek8u pixels[16];
    EXPECT_EQ(vekiSmoothingLuma_VerEdge_VC1_16s8u_C1R(values, 4, values, 4, nullptr, 4, 0, 0), vekStsErrNullPtr);
    EXPECT_EQ(vekiSmoothingLuma_HorEdge_VC1_16s8u_C1R(values, 4, nullptr, 4, pixels, 4, 0), vekStsErrNullPtr);
}

// ---- range mapping

TEST(VC1RangeMapping, EveryValue) {
    for (int map = 0; map < 8; ++map) {
        Vek8u from[256], to[256];
        for (int i = 0; i < 256; ++i) from[i] = static_cast<Vek8u>(i);
        ASSERT_EQ(vekiRangeMapping_VC1_8u_C1R(from, 256, to, 256, {256, 1}, map), vekStsOk);
        for (int i = 0; i < 256; ++i) {
            const int y = (((i - 128) * (map + 9) + 4) >> 3) + 128;
            EXPECT_EQ(to[i], y < 0 ? 0 : y > 255 ? 255 : y) << i << " " << map;
        }
    }
}

TEST(VC1RangeMapping, KnownAnswersSizesAndChecks) {
    Vek8u plane[3][40], result[3][40];
    for (int width = 0; width <= 37; ++width) {
        std::fill_n(&plane[0][0], 120, Vek8u{132});
        std::fill_n(&result[0][0], 120, Vek8u{1});
        ASSERT_EQ(vekiRangeMapping_VC1_8u_C1R(plane[0], 40, result[0], 40, {width, 3}, 7), vekStsOk);
        for (int y = 0; y < 3; ++y)
            for (int x = 0; x < 40; ++x) EXPECT_EQ(result[y][x], x < width ? 136 : 1);  // (4 * 16 + 4) >> 3 = 8
    }
    for (const auto& [size, map, status] :
         {std::tuple{VekiSize{-1, 3}, 7, vekStsOk}, std::tuple{VekiSize{4, 0}, 0, vekStsOk},
          std::tuple{VekiSize{INT32_MIN, 3}, 7, vekStsOk}, std::tuple{VekiSize{4, INT32_MIN}, 0, vekStsOk},
          std::tuple{VekiSize{4, 3}, 8, vekStsErrOutOfRange}, std::tuple{VekiSize{0, 0}, -1, vekStsErrOutOfRange}}) {
        std::fill_n(&result[0][0], 120, Vek8u{1});
        EXPECT_EQ(vekiRangeMapping_VC1_8u_C1R(plane[0], 40, result[0], 40, size, map), status);
        EXPECT_EQ(std::count(&result[0][0], &result[0][0] + 120, 1), 120);
    }
    EXPECT_EQ(vekiRangeMapping_VC1_8u_C1R(plane[0], 40, nullptr, 40, {4, 3}, 8), vekStsErrNullPtr);
    // In place: 0 -> -128 and 255 -> 382 are clipped.
    Vek8u ends[2] = {0, 255};
    ASSERT_EQ(vekiRangeMapping_VC1_8u_C1R(ends, 2, ends, 2, {2, 1}, 7), vekStsOk);
    EXPECT_EQ(ends[0], 0);
    EXPECT_EQ(ends[1], 255);
}

}  // namespace
