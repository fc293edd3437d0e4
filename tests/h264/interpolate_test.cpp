// H.264 sub-pixel interpolation: known answers and what the forms have to do with each other.
#include "vekvc/h264_interpolate.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <random>
#include <vector>

static_assert(sizeof(VekInterpolationBlock) == 72 && offsetof(VekInterpolationBlock, srcPlaneStep) == 8 &&
              offsetof(VekInterpolationBlock, pDstBlock) == 16 && offsetof(VekInterpolationBlock, dstBlockStep) == 24 &&
              offsetof(VekInterpolationBlock, blockWidth) == 28 && offsetof(VekInterpolationBlock, blockHeight) == 32 &&
              offsetof(VekInterpolationBlock, blockX) == 36 && offsetof(VekInterpolationBlock, blockY) == 40 &&
              offsetof(VekInterpolationBlock, mvX) == 44 && offsetof(VekInterpolationBlock, mvY) == 48 &&
              offsetof(VekInterpolationBlock, pSrcPlane2) == 56 && offsetof(VekInterpolationBlock, pDstBlock2) == 64);
static_assert(sizeof(VekInterpolationBlock16u) == 72 && offsetof(VekInterpolationBlock16u, mvY) == 48 &&
              offsetof(VekInterpolationBlock16u, bitDepth) == 52 &&
              offsetof(VekInterpolationBlock16u, pSrcPlane2) == 56 &&
              offsetof(VekInterpolationBlock16u, pDstBlock2) == 64);

namespace {

// A picture of 48 x 48 samples with room for margins around a block in its middle.
template <class T>
struct Picture {
    static constexpr int kSide = 48;
    static constexpr Vek32s kStep = kSide * sizeof(T);
    std::vector<T> samples = std::vector<T>(kSide * kSide);

    T& at(int x, int y) { return samples[static_cast<std::size_t>(y * kSide + x)]; }
    T* block() { return &at(16, 16); }
    template <class F>
    Picture& fill(F value) {
        for (int y = 0; y < kSide; ++y)
            for (int x = 0; x < kSide; ++x) at(x, y) = static_cast<T>(value(x, y));
        return *this;
    }
    Picture& fillRandom(unsigned seed, unsigned mask) {
        std::mt19937 random(seed);
        return fill([&](int, int) { return random() & mask; });
    }
    bool operator==(const Picture&) const = default;
};

const VekiSize k16x16{16, 16};

VekStatus luma(Picture<Vek8u>& in, Picture<Vek8u>& out, int dx, int dy, VekiSize size, int) {
    return vekiInterpolateLuma_H264_8u_C1R(in.block(), in.kStep, out.block(), out.kStep, dx, dy, size);
}
VekStatus luma(Picture<Vek16u>& in, Picture<Vek16u>& out, int dx, int dy, VekiSize size, int depth) {
    return vekiInterpolateLuma_H264_16u_C1R(in.block(), in.kStep, out.block(), out.kStep, dx, dy, size, depth);
}
VekStatus chroma(Picture<Vek8u>& in, Picture<Vek8u>& out, int dx, int dy, VekiSize size, int) {
    return vekiInterpolateChroma_H264_8u_C1R(in.block(), in.kStep, out.block(), out.kStep, dx, dy, size);
}
VekStatus chroma(Picture<Vek16u>& in, Picture<Vek16u>& out, int dx, int dy, VekiSize size, int depth) {
    return vekiInterpolateChroma_H264_16u_C1R(in.block(), in.kStep, out.block(), out.kStep, dx, dy, size, depth);
}

// On a plane that rises by 4 a column and by 8 a row every half sample is exact (b 2, h 4, j 6), and the quarter
// samples are the averages of Table 8-12.
template <class T>
void expectRamp() {
    static constexpr int kRise[4][4] = {{0, 1, 2, 3}, {2, 3, 4, 5}, {4, 5, 6, 7}, {6, 7, 8, 9}};
    Picture<T> in, out;
    in.fill([](int x, int y) { return 4 * (x - 12) + 8 * (y - 12); });
    for (int dy = 0; dy < 4; ++dy)
        for (int dx = 0; dx < 4; ++dx) {
            ASSERT_EQ(luma(in, out, dx, dy, {8, 8}, 10), vekStsOk);
            for (int y = 16; y < 24; ++y)
                for (int x = 16; x < 24; ++x)
                    ASSERT_EQ(out.at(x, y), in.at(x, y) + kRise[dy][dx]) << dx << ',' << dy << " at " << x << ',' << y;
        }
}
TEST(H264InterpolateLuma, RampGivesEveryPosition) {
    expectRamp<Vek8u>();
    expectRamp<Vek16u>();
}

// One bright sample shows the taps: 255 * (1, -5, 20) in one direction, their products in two.
TEST(H264InterpolateLuma, ImpulseShowsTheTaps) {
    static constexpr int kOne[6] = {8, 0, 159, 159, 0, 8};
    static constexpr int kCentre[6][6] = {{0, 0, 5, 5, 0, 0},     {0, 6, 0, 0, 6, 0}, {5, 0, 100, 100, 0, 5},
                                          {5, 0, 100, 100, 0, 5}, {0, 6, 0, 0, 6, 0}, {0, 0, 5, 5, 0, 0}};
    Picture<Vek8u> in, b, h, j;
    in.at(24, 24) = 255;
    luma(in, b, 2, 0, k16x16, 8);
    luma(in, h, 0, 2, k16x16, 8);
    luma(in, j, 2, 2, k16x16, 8);
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(b.at(21 + i, 24), kOne[i]) << i;
        EXPECT_EQ(h.at(24, 21 + i), kOne[i]) << i;
        for (int k = 0; k < 6; ++k) EXPECT_EQ(j.at(21 + i, 21 + k), kCentre[k][i]) << i << ',' << k;
    }
}

TEST(H264InterpolateLuma, ClipsToTheBitDepth) {
    for (int depth : {8, 10, 14}) {
        const int top = (1 << depth) - 1;
        Picture<Vek16u> in, out;
        in.fill([&](int x, int) { return x % 6 < 2 ? top : x % 6 == 2 || x % 6 == 5 ? 0 : top; });
        luma(in, out, 2, 0, k16x16, depth);  // between two bright columns with dark ones beside them: 42 of 32 parts
        EXPECT_EQ(out.at(18, 16), top) << depth;
        EXPECT_EQ(out.at(20, 16), (11 * top + 16) >> 5) << depth;
    }
}

TEST(H264Interpolate, SixteenBitAtDepth8IsEightBit) {
    Picture<Vek8u> in, out;
    Picture<Vek16u> wideIn, wideOut;
    in.fillRandom(1, 255);
    wideIn.fill([&](int x, int y) { return in.at(x, y); });
    for (int dy = 0; dy < 8; ++dy)
        for (int dx = 0; dx < 8; ++dx) {
            const bool isLuma = dx < 4 && dy < 4;
            if (isLuma) {
                luma(in, out, dx, dy, k16x16, 8);
                luma(wideIn, wideOut, dx, dy, k16x16, 8);
            } else {
                chroma(in, out, dx, dy, {8, 16}, 8);
                chroma(wideIn, wideOut, dx, dy, {8, 16}, 8);
            }
            for (std::size_t i = 0; i < out.samples.size(); ++i)
                ASSERT_EQ(out.samples[i], wideOut.samples[i]) << dx << ',' << dy << " at " << i;
        }
}

TEST(H264InterpolateChroma, KnownAnswers) {
    struct Case {
        int dx, dy, result;
    };
    // A 0, B 64, C 128, D 255
    for (const Case& c : {Case{0, 0, 0}, Case{4, 0, 32}, Case{0, 4, 64}, Case{4, 4, 112}, Case{3, 5, 119},
                          Case{7, 7, 216}, Case{1, 0, 8}, Case{0, 7, 112}}) {
        Picture<Vek8u> in, out;
        Picture<Vek16u> in16, out16;
        static constexpr int kCorners[2][2] = {{0, 64}, {128, 255}};
        in.fill([](int x, int y) { return kCorners[y & 1][x & 1]; });
        in16.fill([](int x, int y) { return 16 * kCorners[y & 1][x & 1]; });
        chroma(in, out, c.dx, c.dy, {2, 2}, 8);
        EXPECT_EQ(out.at(16, 16), c.result) << c.dx << ',' << c.dy;
        chroma(in16, out16, c.dx, c.dy, {2, 2}, 12);
        EXPECT_NEAR(out16.at(16, 16), 16 * c.result, 8) << c.dx << ',' << c.dy;
    }
}

TEST(H264InterpolateChroma, PairsAreTwoPlanes) {
    Picture<Vek8u> pairs, cb, cr, outCb, outCr, pairCb, pairCr;
    pairs.fillRandom(2, 255);
    cb.fill([&](int x, int y) { return pairs.at(2 * x % 48, y); });
    cr.fill([&](int x, int y) { return pairs.at((2 * x + 1) % 48, y); });
    const VekiSize size{8, 8};
    for (int dy : {0, 1, 5})
        for (int dx : {0, 3, 7}) {
            vekiInterpolateChroma_H264_8u_C1R(&cb.at(8, 16), 48, outCb.block(), 48, dx, dy, size);
            vekiInterpolateChroma_H264_8u_C1R(&cr.at(8, 16), 48, outCr.block(), 48, dx, dy, size);
            ASSERT_EQ(vekiInterpolateChroma_H264_8u_C2P2R(pairs.block(), 48, pairCb.block(), pairCr.block(), 48, dx, dy,
                                                          size),
                      vekStsOk);
            EXPECT_EQ(outCb, pairCb);
            EXPECT_EQ(outCr, pairCr);
            const VekInterpolationBlock block{&pairs.at(0, 0), 48,      pairCr.block(), 48, 8, 8, 9, 15, -8 + dx,
                                              8 + dy,          nullptr, pairCb.block()};
            ASSERT_EQ(vekiInterpolateChromaBlock_H264_8u_C2P2R(&block), vekStsOk);
            EXPECT_EQ(outCb, pairCr);
            EXPECT_EQ(outCr, pairCb);
        }
}

// Rows of the picture 14..33 (Top: 14 is the first; Bottom: 33 is the last). The rows beyond hold other values in the
// call and repetitions of the edge row in what it is compared with.
template <class T, class Repeated, class Direct>
void expectRepetition(bool top, int edgeRow, Repeated repeated, Direct direct) {
    for (int shift = -24; shift <= 24; ++shift)
        for (int dy = 0; dy < 4; ++dy)
            for (int dx = 0; dx < 4; dx += 3) {
                Picture<T> in, padded, out, expected;
                in.fillRandom(3, 255);
                padded.fill([&](int x, int y) {
                    return in.at(x, std::clamp(y + shift, top ? edgeRow : 0, top ? 47 : edgeRow));
                });
                const int outPixels = top ? edgeRow - (16 + shift) : 16 + shift + 15 - edgeRow;
                // Only blocks whose reference stays inside on the other side.
                if (top ? 16 + shift + 19 > 48 : 16 + shift - 2 < 0) continue;
                ASSERT_EQ(repeated(in.block() + shift * in.kSide, in.kStep, out.block(), dx, dy, outPixels), vekStsOk);
                direct(padded.block(), out.kStep, expected.block(), dx, dy);
                ASSERT_EQ(out, expected) << "outPixels " << outPixels << " at " << dx << ',' << dy;
            }
}
TEST(H264InterpolateEdge, RepeatsTheEdgeRow) {
    constexpr Vek32s s = Picture<Vek8u>::kStep, s16 = Picture<Vek16u>::kStep;
    const VekiSize c8x16{8, 16};
    const auto direct = [&](const Vek8u* p, Vek32s, Vek8u* d, int dx, int dy) {
        vekiInterpolateLuma_H264_8u_C1R(p, s, d, s, dx, dy, k16x16);
    };
    const auto direct16 = [&](const Vek16u* p, Vek32s, Vek16u* d, int dx, int dy) {
        vekiInterpolateLuma_H264_16u_C1R(p, s16, d, s16, dx, dy, k16x16, 9);
    };
    const auto chromaDirect = [&](const Vek8u* p, Vek32s, Vek8u* d, int dx, int dy) {
        vekiInterpolateChroma_H264_8u_C1R(p, s, d, s, dx, dy, c8x16);
    };
    const auto chromaDirect16 = [&](const Vek16u* p, Vek32s, Vek16u* d, int dx, int dy) {
        vekiInterpolateChroma_H264_16u_C1R(p, s16, d, s16, dx, dy, c8x16, 9);
    };
    expectRepetition<Vek8u>(
        true, 14,
        [&](auto* p, Vek32s step, auto* d, int dx, int dy, int out) {
            return vekiInterpolateLumaTop_H264_8u_C1R(p, step, d, s, dx, dy, out, k16x16);
        },
        direct);
    expectRepetition<Vek8u>(
        false, 33,
        [&](auto* p, Vek32s step, auto* d, int dx, int dy, int out) {
            return vekiInterpolateLumaBottom_H264_8u_C1R(p, step, d, s, dx, dy, out, k16x16);
        },
        direct);
    expectRepetition<Vek16u>(
        true, 14,
        [&](auto* p, Vek32s step, auto* d, int dx, int dy, int out) {
            return vekiInterpolateLumaTop_H264_16u_C1R(p, step, d, s16, dx, dy, out, k16x16, 9);
        },
        direct16);
    expectRepetition<Vek16u>(
        false, 33,
        [&](auto* p, Vek32s step, auto* d, int dx, int dy, int out) {
            return vekiInterpolateLumaBottom_H264_16u_C1R(p, step, d, s16, dx, dy, out, k16x16, 9);
        },
        direct16);
    expectRepetition<Vek8u>(
        true, 14,
        [&](auto* p, Vek32s step, auto* d, int dx, int dy, int out) {
            return vekiInterpolateChromaTop_H264_8u_C1R(p, step, d, s, dx, dy, out, c8x16);
        },
        chromaDirect);
    expectRepetition<Vek8u>(
        false, 33,
        [&](auto* p, Vek32s step, auto* d, int dx, int dy, int out) {
            return vekiInterpolateChromaBottom_H264_8u_C1R(p, step, d, s, dx, dy, out, c8x16);
        },
        chromaDirect);
    expectRepetition<Vek16u>(
        true, 14,
        [&](auto* p, Vek32s step, auto* d, int dx, int dy, int out) {
            return vekiInterpolateChromaTop_H264_16u_C1R(p, step, d, s16, dx, dy, out, c8x16, 9);
        },
        chromaDirect16);
    expectRepetition<Vek16u>(
        false, 33,
        [&](auto* p, Vek32s step, auto* d, int dx, int dy, int out) {
            return vekiInterpolateChromaBottom_H264_16u_C1R(p, step, d, s16, dx, dy, out, c8x16, 9);
        },
        chromaDirect16);
}

// The whole samples of a vector round down: -5 is 2 quarters before and a fraction of 3, or 1 before and 3 eighths.
TEST(H264InterpolateBlock, RecordsMoveTheSource) {
    Picture<Vek8u> in, out, second, expected, expected2;
    Picture<Vek16u> in16, out16, expected16;
    in.fillRandom(4, 255);
    in16.fillRandom(5, 1023);
    VekInterpolationBlock block{&in.at(0, 0), 48, out.block(), 48, 8, 8, 16, 16, -5, 6, nullptr, nullptr};
    ASSERT_EQ(vekiInterpolateLumaBlock_H264_8u_P1R(&block), vekStsOk);
    vekiInterpolateLuma_H264_8u_C1R(&in.at(14, 17), 48, expected.block(), 48, 3, 2, {8, 8});
    EXPECT_EQ(out, expected);

    block.pSrcPlane2 = &in.at(1, 0);
    block.pDstBlock2 = second.block();
    ASSERT_EQ(vekiInterpolateChromaBlock_H264_8u_P2R(&block), vekStsOk);
    vekiInterpolateChroma_H264_8u_C1R(&in.at(15, 16), 48, expected.block(), 48, 3, 6, {8, 8});
    vekiInterpolateChroma_H264_8u_C1R(&in.at(16, 16), 48, expected2.block(), 48, 3, 6, {8, 8});
    EXPECT_EQ(out, expected);
    EXPECT_EQ(second, expected2);

    VekInterpolationBlock16u wide{&in16.at(0, 0), 96, out16.block(), 96, 16, 4, 16, 16, 0, 0, 10, nullptr, nullptr};
    ASSERT_EQ(vekiInterpolateLumaBlock_H264_16u_P1R(&wide), vekStsOk);
    for (int x = 0; x < 16; ++x) EXPECT_EQ(out16.at(16 + x, 19), in16.at(16 + x, 19));
    wide = {&in16.at(0, 0), 96, out16.block(), 96, 4, 2, 16, 16, 13, -9, 10, &in16.at(2, 2), &out16.at(32, 16)};
    out16.fill([](int, int) { return 0; });
    ASSERT_EQ(vekiInterpolateChromaBlock_H264_16u_P2R(&wide), vekStsOk);
    vekiInterpolateChroma_H264_16u_C1R(&in16.at(17, 14), 96, expected16.block(), 96, 5, 7, {4, 2}, 10);
    vekiInterpolateChroma_H264_16u_C1R(&in16.at(19, 16), 96, &expected16.at(32, 16), 96, 5, 7, {4, 2}, 10);
    EXPECT_EQ(out16, expected16);
}

TEST(H264Interpolate, ChecksInOrder) {
    Vek8u s[64 * 64] = {}, d[64 * 64] = {};
    Vek16u s16[64 * 64] = {}, d16[64 * 64] = {};
    struct Case {
        int dx, dy, width, height, depth;
        VekStatus lumaStatus, chromaStatus;
    };
    constexpr VekStatus ok = vekStsOk, arg = vekStsErrBadArg, size = vekStsErrSize, range = vekStsErrOutOfRange;
    for (const Case& c :
         {Case{4, 0, 4, 4, 8, arg, ok}, Case{0, -1, 4, 4, 8, arg, arg}, Case{8, 0, 1, 1, 1, arg, arg},
          Case{0, 0, 2, 4, 8, size, ok}, Case{3, 3, 4, 2, 8, size, ok}, Case{0, 0, 32, 4, 8, size, size},
          Case{0, 0, 16, 4, 8, ok, size}, Case{0, 0, -4, 4, 8, size, size}, Case{0, 0, 4, 3, 7, size, size},
          Case{0, 0, 4, 4, 7, range, range}, Case{0, 0, 4, 4, 15, range, range}, Case{0, 0, 0, 4, 8, size, size},
          Case{0, 0, 4, 0, 8, size, size}, Case{1, 1, 4, -4, 8, size, size}}) {
        const VekiSize roi{c.width, c.height};
        const Vek8u* p = s + 20 * 64 + 20;
        const Vek16u* p16 = s16 + 20 * 64 + 20;
        SCOPED_TRACE(testing::Message() << c.dx << ',' << c.dy << ' ' << c.width << 'x' << c.height << ' ' << c.depth);
        EXPECT_EQ(vekiInterpolateLuma_H264_16u_C1R(p16, 128, d16, 128, c.dx, c.dy, roi, c.depth), c.lumaStatus);
        EXPECT_EQ(vekiInterpolateLumaTop_H264_16u_C1R(p16, 128, d16, 128, c.dx, c.dy, 1, roi, c.depth), c.lumaStatus);
        EXPECT_EQ(vekiInterpolateChroma_H264_16u_C1R(p16, 128, d16, 128, c.dx, c.dy, roi, c.depth), c.chromaStatus);
        EXPECT_EQ(vekiInterpolateChromaBottom_H264_16u_C1R(p16, 128, d16, 128, c.dx, c.dy, 1, roi, c.depth),
                  c.chromaStatus);
        if (c.depth < 8 || c.depth > 14) continue;
        EXPECT_EQ(vekiInterpolateLuma_H264_8u_C1R(p, 64, d, 64, c.dx, c.dy, roi), c.lumaStatus);
        EXPECT_EQ(vekiInterpolateLumaBottom_H264_8u_C1R(p, 64, d, 64, c.dx, c.dy, 1, roi), c.lumaStatus);
        EXPECT_EQ(vekiInterpolateChroma_H264_8u_C1R(p, 64, d, 64, c.dx, c.dy, roi), c.chromaStatus);
        EXPECT_EQ(vekiInterpolateChromaTop_H264_8u_C1R(p, 64, d, 64, c.dx, c.dy, 1, roi), c.chromaStatus);
        EXPECT_EQ(vekiInterpolateChroma_H264_8u_C2P2R(p, 64, d, d + 32, 64, c.dx, c.dy, roi), c.chromaStatus);
    }
    EXPECT_EQ(vekiInterpolateLuma_H264_8u_C1R(nullptr, 64, d, 64, 9, 0, {1, 1}), vekStsErrNullPtr);
    EXPECT_EQ(vekiInterpolateChroma_H264_8u_C2P2R(s, 64, d, nullptr, 64, 9, 0, {1, 1}), vekStsErrNullPtr);
    EXPECT_EQ(vekiInterpolateLumaBlock_H264_8u_P1R(nullptr), vekStsErrNullPtr);
    VekInterpolationBlock block{s, 64, d, 64, 4, 4, 8, 8, 0, 0, nullptr, d};
    EXPECT_EQ(vekiInterpolateChromaBlock_H264_8u_P2R(&block), vekStsErrNullPtr);
    EXPECT_EQ(vekiInterpolateChromaBlock_H264_8u_C2P2R(&block), vekStsOk);
    block.blockHeight = 2;
    EXPECT_EQ(vekiInterpolateLumaBlock_H264_8u_P1R(&block), vekStsErrSize);
    VekInterpolationBlock16u wide{s16, 128, d16, 128, 4, 4, 8, 8, 0, 0, 15, s16, d16};
    EXPECT_EQ(vekiInterpolateLumaBlock_H264_16u_P1R(&wide), vekStsErrOutOfRange);
    EXPECT_EQ(vekiInterpolateChromaBlock_H264_16u_P2R(&wide), vekStsErrOutOfRange);
}

TEST(H264Interpolate, BlockAverageRoundsUp) {
    for (int width = 1; width <= 17; ++width)
        for (int height : {1, 2, 7, 16, 17}) {
            Picture<Vek8u> a, b, out, expected;
            a.fillRandom(6, 255);
            b.fillRandom(7, 255);
            const bool valid = width >= 2 && width <= 16 && height >= 2 && height <= 16;
            const VekStatus status = valid ? vekStsOk : vekStsErrSize;
            for (int y = 16; valid && y < 16 + height; ++y)
                for (int x = 16; x < 16 + width; ++x)
                    expected.at(x, y) = static_cast<Vek8u>((a.at(x, y) + b.at(x, y + 1) + 1) >> 1);
            EXPECT_EQ(
                vekiInterpolateBlock_H264_8u_P3P1R(a.block(), &b.at(16, 17), out.block(), width, height, 48, 48, 48),
                status);
            EXPECT_EQ(out, expected) << width << 'x' << height;
            out = {};
            EXPECT_EQ(vekiInterpolateBlock_H264_8u_P2P1R(a.block(), &b.at(16, 17), out.block(), width, height, 48),
                      status);
            EXPECT_EQ(out, expected) << width << 'x' << height;
        }
}

TEST(H264ExpandPlane, RepeatsBordersAndCorners) {
    Picture<Vek8u> plane, expected;
    plane.fillRandom(8, 255);
    expected.fill([&](int x, int y) {
        const bool inside = x >= 16 - 5 && x < 26 + 5 && y >= 16 - 3 && y < 23 + 3;
        return inside ? plane.at(std::clamp(x, 16, 25), std::clamp(y, 16, 22)) : plane.at(x, y);
    });
    ASSERT_EQ(vekiExpandPlane_H264_8u_C1R(plane.block(), 48, {10, 7}, 5, 3), vekStsOk);
    EXPECT_EQ(plane, expected);
    EXPECT_EQ(vekiExpandPlane_H264_8u_C1R(nullptr, 48, {0, 7}, 5, 3), vekStsErrNullPtr);
    EXPECT_EQ(vekiExpandPlane_H264_8u_C1R(plane.block(), 48, {0, 7}, 5, 3), vekStsErrSize);
    EXPECT_EQ(vekiExpandPlane_H264_8u_C1R(plane.block(), 48, {10, 7}, 5, -1), vekStsErrSize);
    EXPECT_EQ(vekiExpandPlane_H264_8u_C1R(plane.block(), 48, {10, 7}, 0, 0), vekStsOk);
    EXPECT_EQ(plane, expected);
}

}  // namespace
