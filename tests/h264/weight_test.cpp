// H.264 weighted prediction: known answers, clipping, and arguments far outside the standard's.
#include "vekvc/h264_weight.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <limits>

static_assert(sizeof(VekWeightParams16u) == 72 && offsetof(VekWeightParams16u, pSrc2) == 8 &&
              offsetof(VekWeightParams16u, pDst) == 16 && offsetof(VekWeightParams16u, src1Step) == 24 &&
              offsetof(VekWeightParams16u, src2Step) == 28 && offsetof(VekWeightParams16u, dstStep) == 32 &&
              offsetof(VekWeightParams16u, blockWidth) == 36 && offsetof(VekWeightParams16u, blockHeight) == 40 &&
              offsetof(VekWeightParams16u, bitDepth) == 44 && offsetof(VekWeightParams16u, logWD) == 48 &&
              offsetof(VekWeightParams16u, weight1) == 52 && offsetof(VekWeightParams16u, offset1) == 56 &&
              offsetof(VekWeightParams16u, weight2) == 60 && offsetof(VekWeightParams16u, offset2) == 64);

namespace {

constexpr Vek32s kHuge = std::numeric_limits<Vek32s>::max();

// Blocks of one value, 16x16; the sizes that the 8-bit forms take.
template <class T>
struct Flat {
    T samples[16 * 16];
    explicit Flat(int value) { std::fill(std::begin(samples), std::end(samples), static_cast<T>(value)); }
    // The block's value if the block of this size has it all over and the rest is still `rest`, else -1.
    int value(VekiSize size, int rest) const {
        for (int i = 0; i < 256; ++i)
            if (samples[i] != (i % 16 < size.width && i / 16 < size.height ? samples[0] : rest)) return -1;
        return samples[0];
    }
};
constexpr Vek32s kSides[] = {2, 4, 8, 16};

struct One {
    int p;
    Vek32u logWD;
    Vek32s weight, offset;
    int result;
};
TEST(H264Weight, OnePrediction) {
    for (const One& c :
         {One{100, 0, 2, 5, 205}, One{100, 0, 1, -3, 97}, One{100, 1, 1, 0, 50}, One{101, 1, 1, 0, 51},
          One{100, 5, 37, -6, 110}, One{255, 7, 128, 127, 255}, One{255, 7, -128, 127, 0}, One{255, 6, -128, 127, 0},
          One{3, 2, -1, 1, 0}, One{3, 2, -1, 2, 1}, One{255, 0, 128, -128, 255}, One{1, 0, 128, -128, 0},
          One{255, 7, kHuge, 0, 255}, One{255, 40, kHuge, 7, 7}, One{1, 31, kHuge, 0, 1}, One{1, 0, 40000, -39999, 1},
          One{200, ~0u, kHuge, 3, 3}})
        for (Vek32s width : kSides)
            for (Vek32s height : kSides) {
                Flat<Vek8u> first(c.p), second(c.p);
                SCOPED_TRACE(testing::Message() << c.p << " * " << c.weight << " >> " << c.logWD << " + " << c.offset);
                ASSERT_EQ(
                    vekiUniDirWeightBlock_H264_8u_C1R(first.samples, 16, c.logWD, c.weight, c.offset, {width, height}),
                    vekStsOk);
                ASSERT_EQ(vekiUniDirWeightBlock_H264_8u_C1IR(second.samples, 16, c.logWD, c.weight, c.offset,
                                                             {width, height}),
                          vekStsOk);
                EXPECT_EQ(first.value({width, height}, c.p), c.result);
                EXPECT_EQ(second.value({width, height}, c.p), c.result);
            }
}

struct Two {
    int p1, p2;
    Vek32u logWD;
    Vek32s weight1, offset1, weight2, offset2;
    int explicitResult, averageResult;  // the average takes offset1
};
TEST(H264Weight, TwoPredictions) {
    for (const Two& c :
         {Two{10, 21, 0, 1, 0, 1, 0, 16, 31}, Two{10, 20, 5, 32, 0, 32, 0, 15, 30},
          Two{100, 50, 5, 21, 3, 40, -8, 62, 131}, Two{255, 255, 7, 128, 127, 128, 127, 255, 255},
          Two{255, 0, 7, 127, 0, 127, 0, 127, 253}, Two{255, 255, 7, -128, 0, -128, 127, 0, 0},
          Two{7, 7, 2, 1, 1, 1, 2, 4, 5}, Two{0, 0, 3, 9, -4, 9, 3, 0, 0}, Two{0, 0, 3, 9, 5, 9, 4, 5, 5},
          Two{255, 255, 5, 128, 0, -64, 0, 255, 255}, Two{0, 255, 5, 128, 0, -64, 0, 0, 0},
          Two{255, 255, 6, kHuge, 0, kHuge, 0, 255, 255}, Two{9, 9, 3, kHuge, 0, -kHuge, 6, 3, 0},
          Two{1, 1, 5, 100000, 0, -99936, 0, 1, 2}, Two{1, 2, 90, kHuge, 9, kHuge, 10, 10, 9}})
        for (Vek32s width : kSides)
            for (Vek32s height : kSides) {
                SCOPED_TRACE(testing::Message() << c.p1 << " * " << c.weight1 << ", " << c.p2 << " * " << c.weight2);
                const Flat<Vek8u> a(c.p1), b(c.p2);
                Flat<Vek8u> same(99), each(99), average(c.p2);
                const VekiSize size{width, height};
                ASSERT_EQ(vekiBiDirWeightBlock_H264_8u_P2P1R(a.samples, b.samples, same.samples, 16, 16, c.logWD,
                                                             c.weight1, c.offset1, c.weight2, c.offset2, size),
                          vekStsOk);
                ASSERT_EQ(vekiBiDirWeightBlock_H264_8u_P3P1R(a.samples, b.samples, each.samples, 16, 16, 16, c.logWD,
                                                             c.weight1, c.offset1, c.weight2, c.offset2, size),
                          vekStsOk);
                ASSERT_EQ(vekiWeightedAverage_H264_8u_C1IR(a.samples, average.samples, 16, c.weight1, c.weight2,
                                                           c.logWD, c.offset1, size),
                          vekStsOk);
                EXPECT_EQ(same.value(size, 99), c.explicitResult);
                EXPECT_EQ(each.value(size, 99), c.explicitResult);
                EXPECT_EQ(average.value(size, c.p2), c.averageResult);
            }
}

TEST(H264Weight, ImplicitKnownAnswers) {
    struct Case {
        int p1, p2;
        Vek32s weight1, weight2;
        int result;
    };
    for (const Case& c : {Case{10, 21, 32, 32, 16}, Case{255, 0, 128, -64, 255}, Case{0, 255, 128, -64, 0},
                          Case{255, 255, 128, -64, 255}, Case{200, 100, 48, 16, 175}, Case{1, 255, -64, 128, 255},
                          Case{1, 1, kHuge, -kHuge, 0}}) {
        const Flat<Vek8u> a(c.p1), b(c.p2);
        Flat<Vek8u> same(99), each(99);
        ASSERT_EQ(vekiBiDirWeightBlockImplicit_H264_8u_P2P1R(a.samples, b.samples, same.samples, 16, 16, c.weight1,
                                                             c.weight2, {16, 8}),
                  vekStsOk);
        EXPECT_EQ(same.value({16, 8}, 99), c.result) << c.weight1;
        for (const VekiSize size : {VekiSize{16, 16}, VekiSize{13, 3}, VekiSize{1, 1}, VekiSize{0, 4}, VekiSize{-3, 4},
                                    VekiSize{4, 0}, VekiSize{4, -9}}) {
            each = Flat<Vek8u>(99);
            ASSERT_EQ(vekiBiDirWeightBlockImplicit_H264_8u_P3P1R(a.samples, b.samples, each.samples, 16, 16, 16,
                                                                 c.weight1, c.weight2, size),
                      vekStsOk);
            EXPECT_EQ(each.value(size, 99), size.width > 0 && size.height > 0 ? c.result : 99) << size.width;
        }
    }
}

TEST(H264Weight, SixteenBitForms) {
    struct Case {
        int p1, p2, depth;
        Vek32u logWD;
        Vek32s weight1, offset1, weight2, offset2;
        int average, two, implicit, one;
    };
    for (const Case& c : {Case{1000, 501, 10, 5, 32, 0, 32, 0, 751, 751, 751, 1000},
                          Case{1023, 1023, 10, 7, 128, 508, 128, 508, 1023, 1023, 1023, 1023},
                          Case{16383, 16383, 14, 7, 127, 8128, 127, 8128, 16383, 16383, 16383, 16383},
                          Case{16383, 0, 14, 7, -128, 0, 128, 0, 8192, 0, 0, 0},
                          Case{16383, 16382, 14, 0, 1, -16383, -1, 1, 16383, 0, 0, 0},
                          Case{255, 255, 8, 5, 37, -6, 0, 0, 255, 144, 147, 255},
                          // Samples over the bit depth, up to all 16 bits, count with their value.
                          Case{40000, 65535, 14, 7, 3, 0, -1, 0, 52768, 213, 851, 938},
                          Case{65535, 65535, 14, 7, 8192, 0, -8191, 0, 65535, 256, 1024, 16383},
                          Case{65535, 65535, 10, 7, 8193, -100, -8192, 0, 65535, 206, 1023, 1023},
                          Case{32768, 32767, 14, 6, -8192, 1, 8193, 0, 32768, 193, 384, 0},
                          Case{4095, 1, 12, 6, kHuge, 1, -kHuge, 2, 2048, 4095, 4095, 4095}})
        for (Vek32s width = 2; width <= 16; width += 7)
            for (Vek32s height = 2; height <= 16; height += 7) {
                const Flat<Vek16u> a(c.p1), b(c.p2);
                const VekiSize size{width, height};
                const auto run = [&](VekStatus (*form)(const VekWeightParams16u*)) {
                    Flat<Vek16u> out(77);
                    const VekWeightParams16u params{a.samples, b.samples, out.samples, 32,       32,
                                                    32,        width,     height,      c.depth,  c.logWD,
                                                    c.weight1, c.offset1, c.weight2,   c.offset2};
                    EXPECT_EQ(form(&params), vekStsOk);
                    return out.value(size, 77);
                };
                SCOPED_TRACE(testing::Message()
                             << c.p1 << ' ' << c.p2 << ' ' << c.depth << ' ' << width << 'x' << height);
                EXPECT_EQ(run(vekiBidir_H264_16u_P2P1R), c.average);
                EXPECT_EQ(run(vekiBidirWeight_H264_16u_P2P1R), c.two);
                EXPECT_EQ(run(vekiBidirWeightImplicit_H264_16u_P2P1R), c.implicit);
                EXPECT_EQ(run(vekiUnidirWeight_H264_16u_IP2P1R), c.one);
            }
}

TEST(H264Weight, ChecksInOrder) {
    Vek8u a[256] = {}, b[256] = {};
    Vek16u w[256] = {};
    EXPECT_EQ(vekiUniDirWeightBlock_H264_8u_C1R(nullptr, 0, 0, 1, 0, {3, 3}), vekStsErrNullPtr);
    EXPECT_EQ(vekiUniDirWeightBlock_H264_8u_C1R(a, 11, 0, 1, 0, {12, 4}), vekStsErrStep);
    EXPECT_EQ(vekiUniDirWeightBlock_H264_8u_C1R(a, 12, 0, 1, 0, {12, 4}), vekStsErrSize);
    EXPECT_EQ(vekiUniDirWeightBlock_H264_8u_C1IR(a, 16, 0, 1, 0, {16, 0}), vekStsErrSize);
    EXPECT_EQ(vekiUniDirWeightBlock_H264_8u_C1IR(a, -16, 0, 1, 0, {16, 2}), vekStsErrStep);
    EXPECT_EQ(vekiBiDirWeightBlock_H264_8u_P2P1R(a, b, a, 7, 16, 0, 1, 0, 1, 0, {8, 8}), vekStsErrStep);
    EXPECT_EQ(vekiBiDirWeightBlock_H264_8u_P3P1R(a, b, a, 16, 7, 16, 0, 1, 0, 1, 0, {8, 8}), vekStsErrStep);
    EXPECT_EQ(vekiBiDirWeightBlock_H264_8u_P3P1R(a, b, a, 16, 16, 7, 0, 1, 0, 1, 0, {8, 8}), vekStsErrStep);
    EXPECT_EQ(vekiBiDirWeightBlockImplicit_H264_8u_P2P1R(a, nullptr, a, 7, 7, 32, 32, {8, 8}), vekStsErrNullPtr);
    EXPECT_EQ(vekiBiDirWeightBlockImplicit_H264_8u_P2P1R(a, b, a, 16, 16, 32, 32, {8, 6}), vekStsErrSize);
    EXPECT_EQ(vekiBiDirWeightBlockImplicit_H264_8u_P3P1R(a, b, nullptr, 0, 0, 0, 32, 32, {0, 0}), vekStsErrNullPtr);
    EXPECT_EQ(vekiWeightedAverage_H264_8u_C1IR(a, b, 15, 1, 1, 1, 0, {16, 16}), vekStsErrStep);
    VekWeightParams16u p{w, w, w, 32, 32, 32, 16, 17, 7, 5, 32, 0, 32, 0};
    EXPECT_EQ(vekiUnidirWeight_H264_16u_IP2P1R(nullptr), vekStsErrNullPtr);
    EXPECT_EQ(vekiBidirWeight_H264_16u_P2P1R(&p), vekStsErrSize);
    p.blockHeight = 16;
    EXPECT_EQ(vekiBidirWeight_H264_16u_P2P1R(&p), vekStsErrOutOfRange);
    EXPECT_EQ(vekiBidir_H264_16u_P2P1R(&p), vekStsOk);
    p.blockWidth = 1;
    EXPECT_EQ(vekiBidirWeightImplicit_H264_16u_P2P1R(&p), vekStsErrSize);
    p.pSrc2 = nullptr;
    EXPECT_EQ(vekiUnidirWeight_H264_16u_IP2P1R(&p), vekStsErrNullPtr);
}

}  // namespace
