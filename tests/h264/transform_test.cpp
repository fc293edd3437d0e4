// Transforms and quantization: known answers, the mathematics of the transforms, and loops forward and back at every
// QP.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <random>
#include <vector>

#include "vekvc.h"

namespace {

template <class T>
std::vector<T> noise(int n, int low, int high, unsigned seed) {
    std::mt19937 random(seed);
    std::vector<T> values(static_cast<std::size_t>(n));
    for (auto& v : values) v = static_cast<T>(std::uniform_int_distribution<int>(low, high)(random));
    return values;
}

const Vek16s* zigzag() {
    static const Vek16s positions[16] = {0, 1, 5, 6, 2, 4, 7, 12, 3, 8, 11, 13, 9, 10, 14, 15};
    return positions;
}
const Vek16s* rasterScan() {
    static const auto positions = [] {
        std::array<Vek16s, 64> p;
        for (std::size_t k = 0; k < 64; ++k) p[k] = static_cast<Vek16s>(k);
        return p;
    }();
    return positions.data();
}

// The width of the quantizer's steps in units of samples.
double stepOf(int qp) {
    constexpr double first[6] = {0.625, 0.6875, 0.8125, 0.875, 1.0, 1.125};
    return first[qp % 6] * std::pow(2.0, qp / 6);
}

// Quantization errs by at most two thirds of a step (intra rounding) in each coefficient of an orthonormal transform,
// so the samples' root mean square error has the same bound, plus the final rounding.
template <class T>
void expectNear(const std::vector<T>& a, const std::vector<T>& b, double step, double rounding, int qp) {
    double sum = 0;
    for (std::size_t k = 0; k < a.size(); ++k)
        sum += std::pow(static_cast<double>(a[k]) - static_cast<double>(b[k]), 2);
    EXPECT_LE(std::sqrt(sum / static_cast<double>(a.size())), 0.68 * step + rounding) << "QP " << qp;
}

// ---- the transforms are the matrices of the standard

// m * x * m^T.
template <std::size_t n>
std::vector<int> product(const int (&m)[n][n], const std::vector<Vek16s>& x, bool transposed) {
    std::vector<int> y(n * n);
    for (std::size_t i = 0; i < n; ++i)
        for (std::size_t j = 0; j < n; ++j)
            for (std::size_t k = 0; k < n; ++k)
                for (std::size_t l = 0; l < n; ++l)
                    y[n * i + j] += (transposed ? m[k][i] * m[l][j] : m[i][k] * m[j][l]) * x[n * k + l];
    return y;
}

constexpr int kForward4[4][4] = {{1, 1, 1, 1}, {2, 1, -1, -2}, {1, -1, -1, 1}, {1, -2, 2, -1}};
constexpr int kInverse4Doubled[4][4] = {{2, 2, 2, 2}, {2, 1, -1, -2}, {2, -2, -2, 2}, {1, -2, 2, -1}};
constexpr int kBasis8Eightfold[8][8] = {{8, 8, 8, 8, 8, 8, 8, 8},     {12, 10, 6, 3, -3, -6, -10, -12},
                                        {8, 4, -4, -8, -8, -4, 4, 8}, {10, -3, -12, -6, 6, 12, 3, -10},
                                        {8, -8, -8, 8, 8, -8, -8, 8}, {6, -12, 3, 10, -10, -3, 12, -6},
                                        {4, -8, 8, -4, -4, 8, -8, 4}, {3, -6, 10, -12, 12, -10, 6, -3}};

TEST(H264Transform, Forward4x4IsTheMatrixProduct) {
    const auto x = noise<Vek16s>(16, -255, 255, 1);
    const auto expected = product(kForward4, x, false);
    Vek16s y16[16];
    Vek32s y32[16];
    const std::vector<Vek32s> x32(x.begin(), x.end());
    ASSERT_EQ(vekiTransformResidual4x4Fwd_H264_16s_C1(x.data(), y16), vekStsOk);
    ASSERT_EQ(vekiTransformResidual4x4Fwd_H264_32s_C1(x32.data(), y32), vekStsOk);
    for (std::size_t k = 0; k < 16; ++k) {
        EXPECT_EQ(y16[k], expected[k]);
        EXPECT_EQ(y32[k], expected[k]);
    }
}

TEST(H264Transform, Inverse4x4IsTheMatrixProduct) {
    auto w = noise<Vek16s>(16, -100, 100, 2);
    for (auto& v : w) v = static_cast<Vek16s>(4 * v);  // no bit is lost in the halvings
    const auto fourfold = product(kInverse4Doubled, w, true);
    Vek16s r[16];
    Vek32s r32[16];
    const std::vector<Vek32s> w32(w.begin(), w.end());
    ASSERT_EQ(vekiTransformResidual4x4Inv_H264_16s_C1(w.data(), r), vekStsOk);
    ASSERT_EQ(vekiTransformResidual4x4Inv_H264_32s_C1(w32.data(), r32), vekStsOk);
    for (std::size_t k = 0; k < 16; ++k) {
        EXPECT_EQ(r[k], (fourfold[k] / 4 + 32) >> 6);
        EXPECT_EQ(r32[k], (fourfold[k] / 4 + 32) >> 6);
    }
}

TEST(H264Transform, Transforms8x8AreTheMatrixProduct) {
    auto w = noise<Vek16s>(64, -4, 4, 3);
    for (auto& v : w) v = static_cast<Vek16s>(64 * v);  // no bit is lost in the shifts
    const std::vector<Vek8u> pred(64, 128);
    std::vector<Vek8u> dst(64);
    const auto inverse = product(kBasis8Eightfold, w, true);
    ASSERT_EQ(vekiTransformLuma8x8InvAddPred_H264_16s8u_C1R(pred.data(), 8, w.data(), dst.data(), 8), vekStsOk);
    for (std::size_t k = 0; k < 64; ++k) EXPECT_EQ(dst[k], std::clamp(128 + ((inverse[k] / 64 + 32) >> 6), 0, 255));

    const auto forward = product(kBasis8Eightfold, w, false);
    Vek16s y[64];
    Vek32s y32[64];
    ASSERT_EQ(vekiTransformFwdLuma8x8_H264_16s_C1(w.data(), y), vekStsOk);
    ASSERT_EQ(vekiTransformFwdLuma8x8_H264_16s32s_C1(w.data(), y32), vekStsOk);
    ASSERT_EQ(vekiTransformLuma8x8Fwd_H264_16s_C1I(w.data()), vekStsOk);
    for (std::size_t k = 0; k < 64; ++k) {
        EXPECT_EQ(y32[k], forward[k] / 64);
        EXPECT_EQ(y[k], forward[k] / 64);
        EXPECT_EQ(w[k], y[k]);
    }
}

TEST(H264Transform, InverseSaturatesIn16Bits) {
    // Row 0: 32767 and 32767 give the sums 32767 (limited) and 0; + 32 is limited too.
    const Vek16s w[16] = {32767, 0, 32767};
    Vek16s r[16];
    ASSERT_EQ(vekiTransformResidual4x4Inv_H264_16s_C1(w, r), vekStsOk);
    const Vek32s w32[16] = {32767, 0, 32767};
    Vek32s r32[16];
    ASSERT_EQ(vekiTransformResidual4x4Inv_H264_32s_C1(w32, r32), vekStsOk);
    for (int k = 0; k < 16; ++k) {
        const bool outer = k % 4 == 0 || k % 4 == 3;
        EXPECT_EQ(r[k], outer ? 511 : 0);
        EXPECT_EQ(r32[k], outer ? 1024 : 0);
    }
    // -32768 and 32767: the sum -1 and the difference -65535, limited to -32768.
    const Vek16s low[16] = {-32768, 0, 32767};
    const Vek32s low32[16] = {-32768, 0, 32767};
    ASSERT_EQ(vekiTransformResidual4x4Inv_H264_16s_C1(low, r), vekStsOk);
    ASSERT_EQ(vekiTransformResidual4x4Inv_H264_32s_C1(low32, r32), vekStsOk);
    for (int k = 0; k < 16; ++k) {
        const bool outer = k % 4 == 0 || k % 4 == 3;
        EXPECT_EQ(r[k], outer ? 0 : -512);
        EXPECT_EQ(r32[k], outer ? 0 : -1024);
    }
}

// ---- DC blocks

TEST(H264Transform, LumaDCHasThreeRoundings) {
    constexpr struct {
        int qp, dc;
    } known[] = {{0, 3}, {5, 5}, {6, 5}, {11, 9}, {12, 10}, {18, 20}};  // (norm + 2) >> 2, (norm + 1) >> 1, norm << n
    for (const auto& k : known) {
        Vek16s block[16] = {1}, same[16] = {1};
        Vek32s wide[16] = {1};
        ASSERT_EQ(vekiTransformDequantLumaDC_H264_16s_C1I(block, k.qp), vekStsOk);
        ASSERT_EQ(vekiTransformQuantInvLumaDC4x4_H264_16s_C1I(same, k.qp, nullptr), vekStsOk);
        ASSERT_EQ(vekiTransformQuantInvLumaDC4x4_H264_32s_C1I(wide, k.qp, nullptr), vekStsOk);
        for (int i = 0; i < 16; ++i) {
            EXPECT_EQ(block[i], k.dc) << "QP " << k.qp;
            EXPECT_EQ(same[i], k.dc);
            EXPECT_EQ(wide[i], k.dc);
        }
    }
}

TEST(H264Transform, ChromaDCKnownAnswers) {
    Vek16s a[4] = {1, 2, 3, 4};  // sums 10, -2, -4, 0; QP 7: 11 * 2 / 2
    ASSERT_EQ(vekiTransformDequantChromaDC_H264_16s_C1I(a, 7), vekStsOk);
    EXPECT_EQ((std::vector<int>{a, a + 4}), (std::vector<int>{110, -22, -44, 0}));

    // 4:2:2, QP 3: QPdc = 6, LevelScale 160: (f * 160 + 16) >> 5 = 5 f. A single 1 at row 1, column 1 shows the signs.
    Vek16s b[8] = {0, 0, 0, 1};
    ASSERT_EQ(vekiTransformQuantInvChromaDC2x4_H264_16s_C1I(b, 3, nullptr), vekStsOk);
    EXPECT_EQ((std::vector<int>{b, b + 8}), (std::vector<int>{5, -5, 5, -5, -5, 5, -5, 5}));
}

// Forward and back: the scaled DC values are four times the originals.
template <class C, class Forward, class Inverse>
void loopDC(int n, int maxQP, int range, Forward forward, Inverse inverse) {
    for (int qp = 0; qp <= maxQP; ++qp) {
        auto dc = noise<C>(n, -range, range, static_cast<unsigned>(qp));
        const auto original = dc;
        std::vector<C> levels(dc.size());
        ASSERT_EQ(forward(levels.data(), dc.data(), qp), vekStsOk);
        ASSERT_EQ(inverse(levels.data(), qp), vekStsOk);
        for (auto& v : levels) v = static_cast<C>(std::lround(v / 4.0));
        expectNear(levels, original, 4 * stepOf(qp), 1.5, qp);
    }
}

TEST(H264Transform, DCLoopsStayWithinTheStep) {
    Vek32s count, last;
    const auto luma16 = [&](Vek16s* d, Vek16s* s, int qp) {
        return vekiTransformQuantFwdLumaDC4x4_H264_16s_C1I(d, s, qp, &count, 1, zigzag(), &last, nullptr);
    };
    const auto lumaFlat = [&](Vek16s* d, Vek16s* s, int qp) {
        return vekiTransformQuantLumaDC_H264_16s_C1I(d, s, qp, &count, 1, zigzag(), &last);
    };
    const auto luma32 = [&](Vek32s* d, Vek32s* s, int qp) {
        return vekiTransformQuantFwdLumaDC4x4_H264_32s_C1I(d, s, qp, &count, 1, zigzag(), &last, nullptr);
    };
    loopDC<Vek16s>(16, 51, 4000, luma16, vekiTransformDequantLumaDC_H264_16s_C1I);
    loopDC<Vek16s>(16, 51, 4000, lumaFlat, vekiTransformDequantLumaDC_H264_16s_C1I);
    const auto lumaBack = [](Vek32s* d, int qp) { return vekiTransformQuantInvLumaDC4x4_H264_32s_C1I(d, qp, nullptr); };
    loopDC<Vek32s>(16, 87, 10000, luma32, lumaBack);

    const auto chroma = [&](auto function) {
        return [&count, function](auto* d, auto* s, int qp) { return function(d, s, qp, &count, 1u, 1u, nullptr); };
    };
    const auto back = [](auto function) { return [function](auto* d, int qp) { return function(d, qp, nullptr); }; };
    loopDC<Vek16s>(4, 39, 4000, chroma(vekiTransformQuantFwdChromaDC2x2_H264_16s_C1I),
                   back(vekiTransformQuantInvChromaDC2x2_H264_16s_C1I));
    loopDC<Vek32s>(4, 75, 20000, chroma(vekiTransformQuantFwdChromaDC2x2_H264_32s_C1I),
                   back(vekiTransformQuantInvChromaDC2x2_H264_32s_C1I));
    loopDC<Vek16s>(8, 39, 4000, chroma(vekiTransformQuantFwdChromaDC2x4_H264_16s_C1I),
                   back(vekiTransformQuantInvChromaDC2x4_H264_16s_C1I));
    loopDC<Vek32s>(8, 75, 10000, chroma(vekiTransformQuantFwdChromaDC2x4_H264_32s_C1I),
                   back(vekiTransformQuantInvChromaDC2x4_H264_32s_C1I));
}

TEST(H264Transform, FlatScalesEqualTheDefaults) {
    for (int qp = 0; qp <= 39; ++qp) {
        const std::vector<Vek8u> flat(16, 16);
        Vek16s inverse[16], forward[16];
        ASSERT_EQ(vekiGenScaleLevel4x4_H264_8u16s_C1(flat.data(), inverse, forward, (qp + 3) % 6), vekStsOk);
        const auto levels = noise<Vek16s>(8, -300, 300, static_cast<unsigned>(qp));
        auto a = levels, b = levels;
        ASSERT_EQ(vekiTransformQuantInvChromaDC2x4_H264_16s_C1I(a.data(), qp, nullptr), vekStsOk);
        ASSERT_EQ(vekiTransformQuantInvChromaDC2x4_H264_16s_C1I(b.data(), qp, inverse), vekStsOk);
        EXPECT_EQ(a, b);
    }
}

// ---- counting

TEST(H264Transform, CountsAndPositions) {
    Vek32s count, last;
    Vek16s residual[16], levels[16];
    std::fill_n(residual, 16, Vek16s{20});
    ASSERT_EQ(vekiTransformQuantFwd4x4_H264_16s_C1(residual, levels, 20, &count, 1, zigzag(), &last, nullptr),
              vekStsOk);
    EXPECT_EQ(count, -1);  // nothing but the DC
    EXPECT_EQ(last, 0);
    for (int k = 0; k < 16; ++k) residual[k] = static_cast<Vek16s>(k % 2 ? -20 : 20);  // columns alternate: no DC
    ASSERT_EQ(vekiTransformQuantResidual_H264_16s_C1I(residual, 20, 1, &count, nullptr, &last), vekStsOk);
    EXPECT_EQ(count, 2);  // frequencies 1 and 3 of the first row
    EXPECT_EQ(last, 6);
    EXPECT_NE(residual[1], 0);
    EXPECT_NE(residual[3], 0);

    const Vek16s transformed[16] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 5000, -5000};
    Vek32u n, position;
    const std::vector<Vek32u> scale(16, 819);
    ASSERT_EQ(
        vekiQuantizeResidual4x4Fwd_H264_16s32s_C1(transformed, levels, &n, &position, scale.data(), zigzag(), 0, 0),
        vekStsOk);
    EXPECT_EQ(n, 2u);
    EXPECT_EQ(position, 15u);
    EXPECT_EQ(levels[14], (5000 * 819 + 341) >> 11);
    EXPECT_EQ(levels[15], -levels[14]);
}

TEST(H264Transform, LumaDCCountIsNegatedByTheTransformedValue) {
    Vek32s count, last;
    Vek16s dc[16], levels[16];
    std::fill_n(dc, 16, Vek16s{1});  // one transformed value, 8, too small for a level at QP 51
    ASSERT_EQ(vekiTransformQuantFwdLumaDC4x4_H264_16s_C1I(levels, dc, 51, &count, 1, zigzag(), &last, nullptr),
              vekStsOk);
    EXPECT_EQ(dc[0], 8);
    EXPECT_EQ(count, 0);
    std::fill_n(dc, 16, Vek16s{1});
    ASSERT_EQ(vekiTransformQuantFwdLumaDC4x4_H264_16s_C1I(levels, dc, 0, &count, 1, zigzag(), &last, nullptr),
              vekStsOk);
    EXPECT_EQ(levels[0], 1);
    EXPECT_EQ(count, -1);
}

TEST(H264Transform, LumaDCScaleRoundsBelowTheThird) {
    Vek32s count, last;
    Vek16s dc[16] = {1}, levels[16];
    const Vek16s scale = 4096 - 1365;  // 1364 misses the next level by one, a third of 4096 would reach it
    ASSERT_EQ(vekiTransformQuantFwdLumaDC4x4_H264_16s_C1I(levels, dc, 0, &count, 0, zigzag(), &last, &scale), vekStsOk);
    EXPECT_EQ(levels[0], 0);
    const Vek16s enough = 4096 - 1364;  // at QP 6 2728 are added and 13 bits cut off
    ASSERT_EQ(vekiTransformQuantFwdLumaDC4x4_H264_16s_C1I(levels, dc, 0, &count, 0, zigzag(), &last, &enough),
              vekStsOk);
    EXPECT_EQ(levels[0], 1);
    for (const Vek16s value : {Vek16s{1}, Vek16s{2}}) {
        dc[0] = value;
        ASSERT_EQ(vekiTransformQuantFwdLumaDC4x4_H264_16s_C1I(levels, dc, 6, &count, 0, zigzag(), &last, &enough),
                  vekStsOk);
        EXPECT_EQ(levels[0], value - 1);
    }
}

// A third of a level is added in intra, a sixth in inter blocks (2^11 / 3 = 682, 2^11 / 6 = 341), the fraction dropped:
// with a scale of 1 these are the least coefficients of levels 1 and 2.
TEST(H264Transform, QuantizersDecideAtTwoThirdsAndFiveSixths) {
    const std::vector<Vek32u> ones(16, 1);
    const auto level = [&](int c, int qp, Vek32u isIntra) {
        const Vek16s coefficients[16] = {static_cast<Vek16s>(c)};
        Vek16s levels[16];
        Vek32u n, last;
        EXPECT_EQ(vekiQuantizeResidual4x4Fwd_H264_16s32s_C1(coefficients, levels, &n, &last, ones.data(), rasterScan(),
                                                            qp, isIntra),
                  vekStsOk);
        EXPECT_EQ(n, levels[0] != 0 ? 1u : 0u);
        return levels[0];
    };
    struct Case {
        int qp;
        Vek32u isIntra;
        int first, second;
    };
    for (const Case& c : {Case{0, 1, 2048 - 682, 4096 - 682},
                          {0, 0, 2048 - 341, 4096 - 341},
                          {6, 1, 4096 - 1365, 8192 - 1365},
                          {6, 0, 4096 - 682, 8192 - 682}}) {
        EXPECT_EQ(level(c.first - 1, c.qp, c.isIntra), 0);
        EXPECT_EQ(level(c.first, c.qp, c.isIntra), 1);
        EXPECT_EQ(level(-c.first, c.qp, c.isIntra), -1);
        EXPECT_EQ(level(c.second - 1, c.qp, c.isIntra), 1);
        EXPECT_EQ(level(c.second, c.qp, c.isIntra), 2);
    }
    // Chroma DC with a scale: 2^12 / 3 = 1365 at QP 0; 4:2:2 has 3 more, so that QP 3 is the next octave.
    const auto chroma = [](auto function, int qp, int value, Vek16s scale) {
        Vek16s dc[8] = {static_cast<Vek16s>(value)}, levels[8];
        Vek32s count;
        EXPECT_EQ(function(levels, dc, qp, &count, 1, 0, &scale), vekStsOk);
        return levels[0];
    };
    EXPECT_EQ(chroma(vekiTransformQuantFwdChromaDC2x2_H264_16s_C1I, 0, 1, 4096 - 1366), 0);
    EXPECT_EQ(chroma(vekiTransformQuantFwdChromaDC2x2_H264_16s_C1I, 0, 1, 4096 - 1365), 1);
    EXPECT_EQ(chroma(vekiTransformQuantFwdChromaDC2x4_H264_16s_C1I, 3, 2, 4096 - 1366), 0);
    EXPECT_EQ(chroma(vekiTransformQuantFwdChromaDC2x4_H264_16s_C1I, 3, 2, 4096 - 1365), 1);
    // Halves of luma DC round down: one -1 is -1 / 2 everywhere.
    Vek16s dc[16] = {-1}, levels[16];
    Vek32s count, last;
    ASSERT_EQ(vekiTransformQuantFwdLumaDC4x4_H264_16s_C1I(levels, dc, 51, &count, 1, zigzag(), &last, nullptr),
              vekStsOk);
    EXPECT_EQ((std::vector<int>{dc, dc + 16}), std::vector<int>(16, -1));
}

// Without a scan the zig-zag one counts: one picture of the basis has one coefficient.
TEST(H264Transform, DefaultScanIsZigzag) {
    for (int k = 0; k < 16; ++k) {
        Vek16s residual[16];
        for (int i = 0; i < 16; ++i)
            residual[i] = static_cast<Vek16s>(20 * kForward4[k / 4][i / 4] * kForward4[k % 4][i % 4]);
        Vek32s count, last;
        ASSERT_EQ(vekiTransformQuantResidual_H264_16s_C1I(residual, 20, 1, &count, nullptr, &last), vekStsOk);
        EXPECT_EQ(std::abs(count), 1);
        EXPECT_EQ(last, zigzag()[k]);
    }
}

// ---- blocks, forward and back

TEST(H264Transform, Loop4x4StaysWithinTheStep) {
    for (int qp = 0; qp <= 51; ++qp) {
        const auto original = noise<Vek8u>(16, 0, 255, static_cast<unsigned>(qp));
        const auto pred = noise<Vek8u>(16, 64, 192, static_cast<unsigned>(qp + 100));
        std::vector<Vek8u> dst(16), other(16), weighted(16);
        Vek16s residual[16], levels[16];
        for (std::size_t k = 0; k < 16; ++k) residual[k] = static_cast<Vek16s>(original[k] - pred[k]);
        Vek32s count, last;
        ASSERT_EQ(vekiTransformQuantFwd4x4_H264_16s_C1(residual, levels, qp, &count, 1, zigzag(), &last, nullptr),
                  vekStsOk);
        ASSERT_EQ(vekiTransformQuantInvAddPred4x4_H264_16s_C1IR(pred.data(), 4, levels, nullptr, dst.data(), 4, qp, 1,
                                                                nullptr),
                  vekStsOk);
        expectNear(dst, original, stepOf(qp), 1, qp);
        ASSERT_EQ(
            vekiDequantTransformResidualAndAdd_H264_16s_C1I(pred.data(), 4, levels, nullptr, other.data(), 4, qp, 1),
            vekStsOk);
        EXPECT_EQ(other, dst);
        // With a scaling list the step grows with the weights, here by half at most.
        const auto weights = noise<Vek8u>(16, 8, 24, static_cast<unsigned>(qp + 200));
        Vek16s inverse[16], forward[16];
        ASSERT_EQ(vekiGenScaleLevel4x4_H264_8u16s_C1(weights.data(), inverse, forward, qp % 6), vekStsOk);
        ASSERT_EQ(vekiTransformQuantFwd4x4_H264_16s_C1(residual, levels, qp, &count, 1, zigzag(), &last, forward),
                  vekStsOk);
        ASSERT_EQ(vekiTransformQuantInvAddPred4x4_H264_16s_C1IR(pred.data(), 4, levels, nullptr, weighted.data(), 4, qp,
                                                                1, inverse),
                  vekStsOk);
        expectNear(weighted, original, 1.55 * stepOf(qp), 1.5, qp);
    }
}

TEST(H264Transform, Loop4x4HighBitDepth) {
    for (const int depth : {9, 10, 12, 14})
        for (int qp = 0; qp <= 51 + 6 * (depth - 8); ++qp) {
            const int top = (1 << std::min(depth, 12)) - 1;  // the forward products stay within 32 bits
            const auto original = noise<Vek16u>(16, 0, top, static_cast<unsigned>(qp));
            const auto pred = noise<Vek16u>(16, top / 4, top / 4 * 3, static_cast<unsigned>(qp + 100));
            std::vector<Vek16u> dst(16);
            Vek16s residual[16];
            for (std::size_t k = 0; k < 16; ++k) residual[k] = static_cast<Vek16s>(original[k] - pred[k]);
            Vek32s levels[16], count, last;
            ASSERT_EQ(
                vekiTransformQuantFwd4x4_H264_16s32s_C1(residual, levels, qp, &count, 1, zigzag(), &last, nullptr),
                vekStsOk);
            ASSERT_EQ(vekiTransformQuantInvAddPred4x4_H264_32s_C1IR(pred.data(), 8, levels, nullptr, dst.data(), 8, qp,
                                                                    1, nullptr, depth),
                      vekStsOk);
            expectNear(dst, original, stepOf(qp), 1, qp);
        }
}

TEST(H264Transform, Loop8x8StaysWithinTheStep) {
    const std::vector<Vek8u> flat(64, 16);
    Vek16s inverse[64], forward[64];
    Vek32s count, last;
    for (int qp = 0; qp <= 87; ++qp) {
        const int depth = qp <= 51 ? 8 : 14, top = qp <= 51 ? 255 : 4095;
        const auto original = noise<Vek16u>(64, 0, top, static_cast<unsigned>(qp));
        const auto pred = noise<Vek16u>(64, top / 4, top / 4 * 3, static_cast<unsigned>(qp + 100));
        Vek16s residual[64];
        for (std::size_t k = 0; k < 64; ++k) residual[k] = static_cast<Vek16s>(original[k] - pred[k]);
        ASSERT_EQ(vekiGenScaleLevel8x8_H264_8u16s_D2(flat.data(), inverse, forward, qp % 6), vekStsOk);
        std::vector<Vek16u> dst(64);
        Vek32s wide[64];
        ASSERT_EQ(vekiTransformFwdLuma8x8_H264_16s32s_C1(residual, wide), vekStsOk);
        ASSERT_EQ(vekiQuantLuma8x8_H264_32s_C1(wide, wide, qp / 6, 1, &count, rasterScan(), &last, forward), vekStsOk);
        ASSERT_EQ(vekiQuantInvLuma8x8_H264_32s_C1I(wide, qp / 6, inverse), vekStsOk);
        ASSERT_EQ(vekiTransformInvAddPredLuma8x8_H264_32s16u_C1R(pred.data(), 16, wide, dst.data(), 16, depth),
                  vekStsOk);
        expectNear(dst, original, stepOf(qp), 1, qp);
        if (qp > 51) continue;
        const std::vector<Vek8u> pred8(pred.begin(), pred.end());
        std::vector<Vek8u> dst8(64);
        Vek16s narrow[64];
        ASSERT_EQ(vekiTransformFwdLuma8x8_H264_16s_C1(residual, narrow), vekStsOk);
        ASSERT_EQ(vekiQuantLuma8x8_H264_16s_C1(narrow, narrow, qp / 6, 1, &count, rasterScan(), &last, forward),
                  vekStsOk);
        ASSERT_EQ(vekiQuantLuma8x8Inv_H264_16s_C1I(narrow, qp / 6, inverse), vekStsOk);
        ASSERT_EQ(vekiTransformLuma8x8InvAddPred_H264_16s8u_C1R(pred8.data(), 8, narrow, dst8.data(), 8), vekStsOk);
        EXPECT_EQ((std::vector<Vek16u>(dst8.begin(), dst8.end())), dst) << "QP " << qp;
    }
}

TEST(H264Transform, DCAloneIsAddedEverywhere) {
    Vek16s levels[16];
    std::fill_n(levels, 16, Vek16s{77});  // AC levels that must not count
    levels[0] = 3;
    const std::vector<Vek8u> pred(16, 100);
    std::vector<Vek8u> dst(16), given(16);
    // QP 23: (3 * 288 + 1 * 2^0) >> 1 = 432, QP 24: 3 * 160 = 480.
    ASSERT_EQ(
        vekiTransformQuantInvAddPred4x4_H264_16s_C1IR(pred.data(), 4, levels, nullptr, dst.data(), 4, 23, 0, nullptr),
        vekStsOk);
    EXPECT_EQ(dst, std::vector<Vek8u>(16, 100 + ((432 + 32) >> 6)));
    ASSERT_EQ(
        vekiTransformQuantInvAddPred4x4_H264_16s_C1IR(pred.data(), 4, levels, nullptr, dst.data(), 4, 24, 0, nullptr),
        vekStsOk);
    EXPECT_EQ(dst, std::vector<Vek8u>(16, 100 + ((480 + 32) >> 6)));
    const Vek16s dc = -32768;
    ASSERT_EQ(vekiDequantTransformResidualAndAdd_H264_16s_C1I(pred.data(), 4, nullptr, &dc, given.data(), 4, 24, 1),
              vekStsOk);
    EXPECT_EQ(given, std::vector<Vek8u>(16, 0));
}

TEST(H264Transform, ResidualInAPlane) {
    auto plane = noise<Vek16s>(4 * 10, -6, 6, 5);
    Vek16s block[16];
    for (std::size_t k = 0; k < 16; ++k) block[k] = plane[k / 4 * 10 + k % 4];
    const auto before = plane;
    ASSERT_EQ(vekiDequantTransformResidual_H264_16s_C1I(plane.data(), 20, nullptr, 30, 1), vekStsOk);
    const std::vector<Vek8u> pred(16, 128);
    std::vector<Vek8u> dst(16);
    ASSERT_EQ(
        vekiTransformQuantInvAddPred4x4_H264_16s_C1IR(pred.data(), 4, block, nullptr, dst.data(), 4, 30, 1, nullptr),
        vekStsOk);
    for (std::size_t k = 0; k < 40; ++k) {
        if (k % 10 >= 4)
            EXPECT_EQ(plane[k], before[k]);
        else
            EXPECT_EQ(std::clamp(128 + plane[k], 0, 255), dst[k / 10 * 4 + k % 10]);
    }
}

// ---- scales

TEST(H264Transform, ForwardAndInverseScalesCancel) {
    for (int m = 0; m < 6; ++m) {
        const std::vector<Vek8u> ones(64, 1), weights = noise<Vek8u>(64, 1, 255, static_cast<unsigned>(m));
        Vek16s inverse[64], forward[64], weighted[64], divided[64];
        ASSERT_EQ(vekiGenScaleLevel8x8_H264_8u16s_D2(ones.data(), inverse, forward, m), vekStsOk);
        if (m == 0) {
            EXPECT_EQ(forward[0], 13107);
            EXPECT_EQ(forward[9], 11428);
            EXPECT_EQ(forward[18], 20972);
            EXPECT_EQ(forward[1], 12222);
            EXPECT_EQ(forward[2], 16777);
            EXPECT_EQ(forward[10], 15481);
        }
        ASSERT_EQ(vekiGenScaleLevel8x8_H264_8u16s_D2(weights.data(), weighted, divided, m), vekStsOk);
        for (std::size_t k = 0; k < 64; ++k) {
            EXPECT_EQ(weighted[k], inverse[k] * weights[k]);
            EXPECT_NEAR(divided[k], 1.0 * forward[k] / weights[k], 0.5);
        }
        ASSERT_EQ(vekiGenScaleLevel4x4_H264_8u16s_C1(ones.data(), inverse, forward, m), vekStsOk);
        for (int k = 0; k < 16; ++k) {  // 2^21 / squared norms 16, 20 and 25 of the basis pictures
            const int odd = k % 2 + k / 4 % 2;
            EXPECT_EQ(forward[k], std::lround((1 << 21) / (odd == 0 ? 16.0 : odd == 1 ? 20.0 : 25.0) / inverse[k]));
        }
    }
}

// H.264 (8-315) and (8-318): the places of the values repeat every two or four rows and columns.
TEST(H264Transform, NormAdjust) {
    constexpr int k4[6][3] = {{10, 13, 16}, {11, 14, 18}, {13, 16, 20}, {14, 18, 23}, {16, 20, 25}, {18, 23, 29}};
    constexpr int k8[6][6] = {{20, 19, 25, 18, 24, 32}, {22, 21, 28, 19, 26, 35}, {26, 24, 33, 23, 31, 42},
                              {28, 26, 35, 25, 33, 45}, {32, 30, 40, 28, 38, 51}, {36, 34, 46, 32, 43, 58}};
    constexpr int place8[4][4] = {{0, 1, 2, 1}, {1, 3, 4, 3}, {2, 4, 5, 4}, {1, 3, 4, 3}};
    for (int m = 0; m < 6; ++m) {
        const std::vector<Vek8u> ones(64, 1);
        Vek16s four[16], eight[64], forward[64];
        ASSERT_EQ(vekiGenScaleLevel4x4_H264_8u16s_C1(ones.data(), four, forward, m), vekStsOk);
        ASSERT_EQ(vekiGenScaleLevel8x8_H264_8u16s_D2(ones.data(), eight, forward, m), vekStsOk);
        for (int k = 0; k < 16; ++k) EXPECT_EQ(four[k], k4[m][k / 4 % 2 + k % 2]);
        for (int k = 0; k < 64; ++k) EXPECT_EQ(eight[k], k8[m][place8[k / 8 % 4][k % 4]]) << m << " at " << k;
    }
}

// ---- SP slices: a primary picture and its switching picture decode to the same samples

TEST(H264Transform, SwitchingPicturesMatchPrimaryOnes) {
    constexpr int a[3] = {16, 25, 20},
                  norm[6][3] = {{10, 16, 13}, {11, 18, 14}, {13, 20, 16}, {14, 23, 18}, {16, 25, 20}, {18, 29, 23}};
    constexpr int multiplier[6][3] = {{13107, 5243, 8066}, {11916, 4660, 7490}, {10082, 4194, 6554},
                                      {9362, 3647, 5825},  {8192, 3355, 5243},  {7282, 2893, 4559}};
    for (int qp = 0; qp <= 51; qp += 3)
        for (int qs = 0; qs <= 51; qs += 7) {
            const auto samples = noise<Vek8u>(16, 0, 255, static_cast<unsigned>(qp * 52 + qs));
            Vek16s pred[16];
            ASSERT_EQ(vekiTransformPrediction_H264_8u16s_C1(samples.data(), 4, pred), vekStsOk);
            auto primary = noise<Vek16s>(16, -3, 3, static_cast<unsigned>(qp + qs));
            std::vector<Vek16s> switching(16);
            const auto requantize = [&](int c, int k) {
                const std::int64_t level =
                    (std::int64_t{std::abs(c)} * multiplier[qs % 6][k] + (1 << (14 + qs / 6))) >> (15 + qs / 6);
                return static_cast<int>(c < 0 ? -level : level);
            };
            for (std::size_t k = 0; k < 16; ++k) {
                const int odd = static_cast<int>(k % 2 + k / 4 % 2), cls = odd == 0 ? 0 : odd == 2 ? 1 : 2;
                const int sum = pred[k] + ((primary[k] * norm[qp % 6][cls] * a[cls] * (1 << qp / 6)) >> 6);
                switching[k] = static_cast<Vek16s>(requantize(sum, cls) - requantize(pred[k], cls));
            }
            ASSERT_EQ(vekiDequantTransformResidual_SISP_H264_16s_C1I(primary.data(), pred, nullptr, qp, qs, 0),
                      vekStsOk);
            ASSERT_EQ(vekiDequantTransformResidual_SISP_H264_16s_C1I(switching.data(), pred, nullptr, qp, qs, 1),
                      vekStsOk);
            EXPECT_EQ(primary, switching) << "QP " << qp << " QS " << qs;
        }
}

// A chroma DC level of 3 at QP 0 weighs (3 * 10 * 16) >> 5 = 15, that is 3 levels of 5 at QS 0, and 15 in every place.
TEST(H264Transform, SPChromaDCKnownAnswer) {
    Vek16s dc[4] = {3};
    const Vek16s none[4] = {};
    ASSERT_EQ(vekiTransformDequantChromaDC_SISP_H264_16s_C1I(dc, none, 0, 0, 0), vekStsOk);
    EXPECT_EQ((std::vector<int>{dc, dc + 4}), std::vector<int>(4, 15));
}

TEST(H264Transform, SPWithoutLevelsKeepsThePrediction) {
    const auto samples = noise<Vek8u>(64, 0, 255, 9);
    Vek16s pred[4][16], dc[4] = {}, predDC[4];
    for (std::size_t b = 0; b < 4; ++b) {
        ASSERT_EQ(vekiTransformPrediction_H264_8u16s_C1(samples.data() + b % 2 * 4 + b / 2 * 32, 8, pred[b]), vekStsOk);
        predDC[b] = pred[b][0];
    }
    ASSERT_EQ(vekiTransformDequantChromaDC_SISP_H264_16s_C1I(dc, predDC, 10, 0, 0), vekStsOk);
    for (std::size_t b = 0; b < 4; ++b) {
        Vek16s r[16] = {};
        ASSERT_EQ(vekiDequantTransformResidual_SISP_H264_16s_C1I(r, pred[b], dc + b, 10, 0, 0), vekStsOk);
        for (std::size_t k = 0; k < 16; ++k)  // QS 0 errs by less than a sample
            EXPECT_NEAR(r[k], samples[b % 2 * 4 + b / 2 * 32 + k / 4 * 8 + k % 4], 1);
    }
}

}  // namespace
