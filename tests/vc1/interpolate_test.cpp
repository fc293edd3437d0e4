// VC-1 interpolation: known answers, both roundings, block sizes, frame edges, interlaced references, look-up tables.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <random>
#include <tuple>
#include <vector>

#include "vekvc/vc1.h"

static_assert(sizeof(VekVC1InterpolationParams) == 48 && offsetof(VekVC1InterpolationParams, srcStep) == 8 &&
              offsetof(VekVC1InterpolationParams, pDst) == 16 && offsetof(VekVC1InterpolationParams, dstStep) == 24 &&
              offsetof(VekVC1InterpolationParams, dx) == 28 && offsetof(VekVC1InterpolationParams, dy) == 32 &&
              offsetof(VekVC1InterpolationParams, roiSize) == 36 &&
              offsetof(VekVC1InterpolationParams, roundControl) == 44);

static_assert(sizeof(VekVC1InterpolationBlockParams) == 96);
static_assert(offsetof(VekVC1InterpolationBlockParams, srcStep) == 8 &&
              offsetof(VekVC1InterpolationBlockParams, pDst) == 16);
static_assert(offsetof(VekVC1InterpolationBlockParams, dstStep) == 24 &&
              offsetof(VekVC1InterpolationBlockParams, pLUTTop) == 32);
static_assert(offsetof(VekVC1InterpolationBlockParams, pLUTBottom) == 40 &&
              offsetof(VekVC1InterpolationBlockParams, sizeFrame) == 48);
static_assert(offsetof(VekVC1InterpolationBlockParams, sizeBlock) == 56 &&
              offsetof(VekVC1InterpolationBlockParams, x) == 64);
static_assert(offsetof(VekVC1InterpolationBlockParams, y) == 68 && offsetof(VekVC1InterpolationBlockParams, dx) == 72);
static_assert(offsetof(VekVC1InterpolationBlockParams, dy) == 76 &&
              offsetof(VekVC1InterpolationBlockParams, roundControl) == 80);
static_assert(offsetof(VekVC1InterpolationBlockParams, isReferInterlaced) == 84);
static_assert(offsetof(VekVC1InterpolationBlockParams, isFieldPicture) == 88);

namespace {

using Function = VekStatus (*)(const VekVC1InterpolationParams*);

// A reference around a block, and the block among pixels that must stay.
struct Picture {
    static constexpr int kStep = 64, kOrigin = 20 * kStep + 20;
    std::vector<Vek8u> reference = std::vector<Vek8u>(kStep * kStep), block = std::vector<Vek8u>(kStep * kStep, 99);

    template <class F>
    void fill(F value) {
        for (int i = 0; i < kStep * kStep; ++i)
            reference[static_cast<std::size_t>(i)] = static_cast<Vek8u>(value(i % kStep - 20, i / kStep - 20));
    }
    VekStatus run(Function function, int dx, int dy, VekiSize size, int RND) {
        std::fill(block.begin(), block.end(), Vek8u{99});
        const VekVC1InterpolationParams p{
            reference.data() + kOrigin, kStep, block.data() + kOrigin, kStep, dx, dy, size, RND};
        return function(&p);
    }
    int at(int x, int y) const { return block[static_cast<std::size_t>(kOrigin + y * kStep + x)]; }
    // The rectangle that was written.
    VekiSize written() const {
        VekiSize size{0, 0};
        for (int i = 0; i < kStep * kStep; ++i)
            if (block[static_cast<std::size_t>(i)] != 99) {
                EXPECT_TRUE(i % kStep >= 20 && i / kStep >= 20);
                size = {std::max(size.width, i % kStep - 19), std::max(size.height, i / kStep - 19)};
            }
        return size;
    }
};
bool same(VekiSize a, VekiSize b) { return a.width == b.width && a.height == b.height; }

TEST(VC1Bicubic, KnownAnswers) {
    struct Case {
        int dx, dy, RND, result;
    };
    // Columns 10, 20, 40, 80 at -1 to 2, the same in all rows (for dy: the rows hold them, the same in all columns).
    // Fraction 1: -40 + 1060 + 720 - 240 = 1500; (1500 + 32) >> 6 = 23. Fraction 2: -10 + 180 + 360 - 80 = 450;
    // 458 >> 4 = 28. Fraction 3: -30 + 360 + 2120 - 320 = 2130; 2162 >> 6 = 33.
    for (const Case& c :
         {Case{1, 0, 0, 23}, {2, 0, 0, 28}, {3, 0, 0, 33}, {1, 0, 1, 23}, {2, 0, 1, 28}, {3, 0, 1, 33}}) {
        Picture p;
        constexpr int kValues[] = {10, 20, 40, 80};
        p.fill([&](int x, int) { return kValues[std::clamp(x + 1, 0, 3)]; });
        ASSERT_EQ(p.run(vekiInterpolateQPBicubic_VC1_8u_C1R, c.dx, 0, {8, 8}, c.RND), vekStsOk);
        EXPECT_EQ(p.at(0, 0), c.result) << c.dx;
        EXPECT_EQ(p.at(0, 7), c.result) << c.dx;
        p.fill([&](int, int y) { return kValues[std::clamp(y + 1, 0, 3)]; });
        ASSERT_EQ(p.run(vekiInterpolateQPBicubic_VC1_8u_C1R, 0, c.dx, {8, 8}, c.RND), vekStsOk);
        EXPECT_EQ(p.at(0, 0), c.result) << c.dx;
        EXPECT_EQ(p.at(7, 0), c.result) << c.dx;
    }
}

TEST(VC1Bicubic, RoundingsOfTheTwoDirectionsDiffer) {
    // A ramp of slope 1 at the half position lies on x + 1/2: 16 x + 8. Across: + 8 - RND, down: + 7 + RND.
    for (int RND = 0; RND < 2; ++RND) {
        Picture p;
        p.fill([](int x, int) { return 100 + x; });
        p.run(vekiInterpolateQPBicubic_VC1_8u_C1R, 2, 0, {16, 16}, RND);
        EXPECT_EQ(p.at(5, 9), 105 + 1 - RND);
        p.fill([](int, int y) { return 100 + y; });
        p.run(vekiInterpolateQPBicubic_VC1_8u_C1R, 0, 2, {16, 16}, RND);
        EXPECT_EQ(p.at(5, 9), 109 + RND);
    }
}

TEST(VC1Bicubic, BothDirections) {
    // Flat blocks keep their value: (2, 2) 16 v >> 1 = 8 v, 16 * 8 v >> 7 = v; (1, 1) 64 v >> 5 = 2 v, 64 * 2 v >> 7.
    for (int dx = 1; dx < 4; ++dx)
        for (int dy = 1; dy < 4; ++dy)
            for (const int v : {0, 1, 128, 255}) {
                Picture p;
                p.fill([=](int, int) { return v; });
                p.run(vekiInterpolateQPBicubic_VC1_8u_C1R, dx, dy, {16, 16}, dx & 1);
                EXPECT_EQ(p.at(0, 0), v);
                EXPECT_EQ(p.at(15, 15), v);
            }
    // Columns of extremes at (2, 2): inside, 9 * 2040 * 2 = 36720 passes 16 bits and is clipped to 255.
    Picture p;
    p.fill([](int x, int) { return x == 3 || x == 4 ? 255 : 0; });
    p.run(vekiInterpolateQPBicubic_VC1_8u_C1R, 2, 2, {8, 8}, 0);
    EXPECT_EQ(p.at(3, 0), 255);
    EXPECT_EQ(p.at(2, 0), (9 * 2040 - 2040 + 64) >> 7);
    EXPECT_EQ(p.at(1, 0), 0);
    // A single row of 1 at (2, 2): the first stage gives (9 + 0) >> 1 = 4 or (9 + 1) >> 1 = 5 by RND.
    for (int RND = 0; RND < 2; ++RND) {
        p.fill([](int, int y) { return y == 3 ? 20 : 0; });
        p.run(vekiInterpolateQPBicubic_VC1_8u_C1R, 2, 2, {8, 8}, RND);
        EXPECT_EQ(p.at(0, 3), (16 * ((180 + RND) >> 1) + 64 - RND) >> 7);
        EXPECT_EQ(p.at(0, 2), (16 * ((180 + RND) >> 1) + 64 - RND) >> 7);
        EXPECT_EQ(p.at(0, 4), 0);
    }
}

TEST(VC1Bilinear, EveryFractionFollowsTheFormula) {
    std::mt19937 random(4);
    Picture p;
    p.fill([&](int, int) { return random() % 3 == 0 ? 255 : random() % 256; });
    const auto reference = [&](int x, int y) {
        return int{p.reference[static_cast<std::size_t>(Picture::kOrigin + y * Picture::kStep + x)]};
    };
    for (int channels = 1; channels <= 2; ++channels)
        for (const VekiSize size : {VekiSize{16, 16}, VekiSize{8, 8}, VekiSize{8, 4}, VekiSize{4, 4}}) {
            if (channels == 2 && size.width == 16) continue;
            for (int i = 0; i < 32; ++i) {
                const int dx = i & 3, dy = i >> 2 & 3, RND = i >> 4;
                p.run(channels == 1 ? vekiInterpolateQPBilinear_VC1_8u_C1R : vekiInterpolateQPBilinear_VC1_8u_C2R, dx,
                      dy, size, RND | 2);
                for (int y = 0; y < size.height; ++y)
                    for (int x = 0; x < size.width * channels; ++x) {
                        const int expected =
                            ((4 - dx) * ((4 - dy) * reference(x, y) + dy * reference(x, y + 1)) +
                             dx * ((4 - dy) * reference(x + channels, y) + dy * reference(x + channels, y + 1)) + 8 -
                             RND) >>
                            4;
                        ASSERT_EQ(p.at(x, y), expected) << dx << ", " << dy << " at " << x << ", " << y;
                    }
            }
        }
}

TEST(VC1Interpolation, KernelsStayInsideTheBlock) {
    struct Case {
        Function function;
        VekiSize size, written;
    };
    for (const Case& c : {Case{vekiInterpolateQPBicubic_VC1_8u_C1R, {8, 8}, {8, 8}},
                          {vekiInterpolateQPBicubic_VC1_8u_C1R, {16, 8}, {16, 8}},
                          {vekiInterpolateQPBicubic_VC1_8u_C1R, {8, 16}, {8, 8}},
                          {vekiInterpolateQPBicubic_VC1_8u_C1R, {16, 16}, {16, 16}},
                          {vekiInterpolateQPBicubic_VC1_8u_C1R, {24, 30}, {16, 16}},
                          {vekiInterpolateQPBicubic_VC1_8u_C1R, {15, 15}, {8, 8}},
                          {vekiInterpolateQPBicubic_VC1_8u_C1R, {5, 3}, {5, 3}},
                          {vekiInterpolateQPBicubic_VC1_8u_C1R, {-5, 300}, {0, 0}},
                          {vekiInterpolateQPBilinear_VC1_8u_C1R, {16, 16}, {16, 16}},
                          {vekiInterpolateQPBilinear_VC1_8u_C1R, {16, 5}, {16, 5}},
                          {vekiInterpolateQPBilinear_VC1_8u_C1R, {8, 16}, {8, 4}},
                          {vekiInterpolateQPBilinear_VC1_8u_C1R, {12, 8}, {4, 4}},
                          {vekiInterpolateQPBilinear_VC1_8u_C1R, {3, 9}, {3, 4}},
                          {vekiInterpolateQPBilinear_VC1_8u_C2R, {8, 8}, {16, 8}},
                          {vekiInterpolateQPBilinear_VC1_8u_C2R, {8, 4}, {16, 4}},
                          {vekiInterpolateQPBilinear_VC1_8u_C2R, {4, 4}, {8, 4}},
                          {vekiInterpolateQPBilinear_VC1_8u_C2R, {2, 8}, {4, 4}},
                          {vekiInterpolateQPBilinear_VC1_8u_C2R, {0, 8}, {0, 0}}})
        for (int fractions = 0; fractions < 16; ++fractions) {
            Picture p;
            p.fill([](int, int) { return 50; });
            ASSERT_EQ(p.run(c.function, fractions & 3, fractions >> 2, c.size, 0), vekStsOk);
            EXPECT_TRUE(same(p.written(), c.written))
                << c.size.width << "x" << c.size.height << ": " << p.written().width << "x" << p.written().height;
        }
}

TEST(VC1Interpolation, Nulls) {
    Picture p;
    Vek8u* const pixels = p.block.data();
    for (const Function f : {vekiInterpolateQPBicubic_VC1_8u_C1R, vekiInterpolateQPBilinear_VC1_8u_C1R,
                             vekiInterpolateQPBilinear_VC1_8u_C2R}) {
        const VekVC1InterpolationParams noSource{nullptr, 64, pixels, 64, 0, 0, {8, 8}, 0},
            noDestination{pixels, 64, nullptr, 64, 0, 0, {8, 8}, 0};
        EXPECT_EQ(f(nullptr), vekStsErrNullPtr);
        EXPECT_EQ(f(&noSource), vekStsErrNullPtr);
        EXPECT_EQ(f(&noDestination), vekStsErrNullPtr);
    }
}

// ---- block forms: the same as the plain function on an extended and mapped copy of the frame

using BlockFunction = VekStatus (*)(const VekVC1InterpolationBlockParams*);
struct BlockForm {
    BlockFunction block;
    Function direct;
    int channels;
};
constexpr BlockForm kForms[] = {{vekiInterpolateICBicubicBlock_VC1_8u_C1R, vekiInterpolateQPBicubic_VC1_8u_C1R, 1},
                                {vekiInterpolateICBilinearBlock_VC1_8u_C1R, vekiInterpolateQPBilinear_VC1_8u_C1R, 1},
                                {vekiInterpolateICBilinearBlock_VC1_8u_C2R, vekiInterpolateQPBilinear_VC1_8u_C2R, 2}};

TEST(VC1InterpolationBlock, EqualsTheDirectFormOnAnExtendedFrame) {
    std::mt19937 random(5);
    const auto number = [&](int low, int high) {
        return low + static_cast<int>(random() % static_cast<unsigned>(high - low + 1));
    };
    Vek8u tables[2][256];
    for (auto& table : tables)
        for (Vek8u& t : table) t = static_cast<Vek8u>(random());
    for (int round = 0; round < 6000; ++round) {
        const BlockForm& form = kForms[round % 3];
        const int width = number(1, 40), height = number(2, 40), x = number(-60, 60), y = number(-60, 60);
        const bool field = round / 3 % 4 == 0, interlaced = round / 3 % 2 == 0;
        const int rows = field ? height / 2 : height;
        const Vek8u* top = number(0, 2) == 0 ? nullptr : tables[0];
        const Vek8u* bottom = number(0, 2) == 0 ? nullptr : tables[1];
        if (number(0, 2) == 0) top = bottom = nullptr;
        constexpr VekiSize kSizes[] = {{8, 8}, {16, 8}, {16, 16}, {8, 4}, {4, 4}, {5, 7}, {10, 16}, {1, 32}};
        const VekiSize size = kSizes[number(0, 7)];

        std::vector<Vek8u> frame(static_cast<std::size_t>(width * height * form.channels));
        for (Vek8u& s : frame) s = static_cast<Vek8u>(random());
        const int step = width * form.channels;
        Picture p, direct;
        VekVC1InterpolationBlockParams b = {};
        b.pSrc = frame.data();
        b.srcStep = step;
        b.pDst = p.block.data() + Picture::kOrigin;
        b.dstStep = Picture::kStep;
        b.pLUTTop = top;
        b.pLUTBottom = bottom;
        b.sizeFrame = {width, height};
        b.sizeBlock = size;
        b.x = x;
        b.y = y;
        b.dx = number(0, 3);
        b.dy = number(0, 3);
        b.roundControl = number(0, 1);
        b.isReferInterlaced = interlaced;
        b.isFieldPicture = field;
        direct.fill([&](int across, int down) {
            const int channel = across & (form.channels - 1);
            const int column = std::clamp(x + (across - channel) / form.channels, 0, width - 1);
            int row = y + down;
            if (interlaced && !field) {
                while (row < 0) row += 2;
                while (row >= rows) row -= 2;
            } else {
                row = std::clamp(row, 0, rows - 1);
            }
            const int sample =
                frame[static_cast<std::size_t>((field ? 2 * row : row) * step + column * form.channels + channel)];
            const Vek8u* table = row % 2 == 0 ? top : bottom;
            return table ? table[sample] : sample;
        });
        ASSERT_EQ(form.block(&b), vekStsOk);
        direct.run(form.direct, b.dx, b.dy, size, b.roundControl);
        ASSERT_EQ(p.block, direct.block) << "frame " << width << "x" << height << " block " << size.width << "x"
                                         << size.height << " at " << x << ", " << y << " form " << round % 3;
    }
}

TEST(VC1InterpolationBlock, FarPositionsAndEmptyFrames) {
    const Vek8u frame[4] = {10, 20, 30, 40};  // two rows of two
    for (const BlockForm& form : kForms) {
        if (form.channels == 2) continue;
        VekVC1InterpolationBlockParams b = {};
        Vek8u block[64];
        b.pSrc = frame;
        b.srcStep = 2;
        b.pDst = block;
        b.dstStep = 8;
        b.sizeFrame = {2, 2};
        b.sizeBlock = {8, 8};
        b.dx = b.dy = 1;
        for (const auto& [x, y, value] :
             {std::tuple{-2147483647 - 1, -2147483647 - 1, 10}, std::tuple{2147483647, 0, 20},
              std::tuple{-9, 2147483647, 30}, std::tuple{100000, 100000, 40}}) {
            b.x = x;
            b.y = y;
            ASSERT_EQ(form.block(&b), vekStsOk);
            EXPECT_EQ(block[63], y == 0 ? 40 : value);
            EXPECT_EQ(block[7 * 8 * (y != 0)], y == 0 ? block[0] : value);
        }
        for (const VekiSize size : {VekiSize{0, 2}, VekiSize{2, 0}, VekiSize{-1, -1}}) {
            std::fill_n(block, 64, Vek8u{1});
            b.sizeFrame = size;
            EXPECT_EQ(form.block(&b), vekStsOk);
            EXPECT_EQ(std::count(block, block + 64, 1), 64);
        }
        b.pDst = nullptr;
        EXPECT_EQ(form.block(&b), vekStsErrNullPtr);
        b.pDst = block;
        b.pSrc = nullptr;
        EXPECT_EQ(form.block(&b), vekStsErrNullPtr);
        EXPECT_EQ(form.block(nullptr), vekStsErrNullPtr);
    }
}

TEST(VC1InterpolationBlock, InterlacedRowsKeepTheirParity) {
    // Four rows of 10, 20, 30, 40: above the frame rows alternate 10, 20; below it 30, 40.
    Vek8u frame[4][8], block[8][8];
    for (int y = 0; y < 4; ++y) std::fill_n(frame[y], 8, static_cast<Vek8u>(10 * (y + 1)));
    VekVC1InterpolationBlockParams b = {};
    b.pSrc = frame[0];
    b.srcStep = 8;
    b.pDst = block[0];
    b.dstStep = 8;
    b.sizeFrame = {8, 4};
    b.sizeBlock = {8, 8};
    b.y = -2;
    b.isReferInterlaced = 1;
    ASSERT_EQ(vekiInterpolateICBicubicBlock_VC1_8u_C1R(&b), vekStsOk);
    constexpr int kRows[] = {10, 20, 10, 20, 30, 40, 30, 40};
    for (int y = 0; y < 8; ++y) EXPECT_EQ(block[y][3], kRows[y]) << y;
}

}  // namespace
