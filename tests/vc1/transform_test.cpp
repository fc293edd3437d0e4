// VC-1 transforms: known answers, sparse blocks under all hints, extremes, and forward and inverse as a pair.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <random>
#include <vector>

#include "vekvc/vc1.h"

namespace {

using Inverse = VekStatus (*)(const Vek16s*, Vek32s, Vek16s*, Vek32s, VekiSize);
using InverseInPlace = VekStatus (*)(Vek16s*, Vek32s, VekiSize);
using Forward = VekStatus (*)(const Vek16s*, Vek32s, Vek16s*, Vek32s);
using ForwardInPlace = VekStatus (*)(Vek16s*, Vek32s);
struct Shape {
    int width, height;
    Inverse inverse;
    InverseInPlace inverseInPlace;
    Forward forward;
    ForwardInPlace forwardInPlace;
};
constexpr Shape kShapes[] = {{8, 8, vekiTransform8x8Inv_VC1_16s_C1R, vekiTransform8x8Inv_VC1_16s_C1IR,
                              vekiTransform8x8Fwd_VC1_16s_C1R, vekiTransform8x8Fwd_VC1_16s_C1IR},
                             {8, 4, vekiTransform8x4Inv_VC1_16s_C1R, vekiTransform8x4Inv_VC1_16s_C1IR,
                              vekiTransform8x4Fwd_VC1_16s_C1R, vekiTransform8x4Fwd_VC1_16s_C1IR},
                             {4, 8, vekiTransform4x8Inv_VC1_16s_C1R, vekiTransform4x8Inv_VC1_16s_C1IR,
                              vekiTransform4x8Fwd_VC1_16s_C1R, vekiTransform4x8Fwd_VC1_16s_C1IR},
                             {4, 4, vekiTransform4x4Inv_VC1_16s_C1R, vekiTransform4x4Inv_VC1_16s_C1IR,
                              vekiTransform4x4Fwd_VC1_16s_C1R, vekiTransform4x4Fwd_VC1_16s_C1IR}};
constexpr int kStep = 16;  // bytes

// Rows of 8, of which the block uses the first ones.
struct Values : std::vector<Vek16s> {
    using vector::vector;
    Vek16s& operator[](int i) { return vector::operator[](static_cast<std::size_t>(i)); }
    Vek16s operator[](int i) const { return vector::operator[](static_cast<std::size_t>(i)); }
};

Values inverse(const Shape& shape, const Values& coefficients, VekiSize sizeNZ) {
    Values result(64), inPlace = coefficients;
    EXPECT_EQ(shape.inverse(coefficients.data(), kStep, result.data(), kStep, sizeNZ), vekStsOk);
    EXPECT_EQ(shape.inverseInPlace(inPlace.data(), kStep, sizeNZ), vekStsOk);
    for (int y = 0; y < shape.height; ++y)
        for (int x = 0; x < shape.width; ++x) EXPECT_EQ(inPlace[8 * y + x], result[8 * y + x]);
    return result;
}
Values forward(const Shape& shape, const Values& samples) {
    Values result(64), inPlace = samples;
    EXPECT_EQ(shape.forward(samples.data(), kStep, result.data(), kStep), vekStsOk);
    EXPECT_EQ(shape.forwardInPlace(inPlace.data(), kStep), vekStsOk);
    for (int y = 0; y < shape.height; ++y)
        for (int x = 0; x < shape.width; ++x) EXPECT_EQ(inPlace[8 * y + x], result[8 * y + x]);
    return result;
}
Values only(Vek16s first) {
    Values v(64);
    v[0] = first;
    return v;
}
void expectFlat(const Shape& shape, const Values& values, int value) {
    for (int y = 0; y < shape.height; ++y)
        for (int x = 0; x < shape.width; ++x)
            ASSERT_EQ(values[8 * y + x], value) << shape.width << "x" << shape.height << " at " << x << ", " << y;
}

TEST(VC1Transform, FirstCoefficientAlone) {
    // (12 * 64 + 4) >> 3 = 96 and (17 * 64 + 4) >> 3 = 136, then (12 * r + 64) >> 7 or (17 * r + 64) >> 7.
    constexpr int kOf64[] = {9, 13, 13, 18}, kOfMinus64[] = {-9, -13, -13, -18};
    for (int i = 0; i < 4; ++i) {
        for (const VekiSize hint : {VekiSize{1, 1}, VekiSize{0, 0}, VekiSize{-3, 1}, VekiSize{8, 8}, VekiSize{99, 2}})
            expectFlat(kShapes[i], inverse(kShapes[i], only(64), hint), kOf64[i]);
        Values rest(64, 1000);  // not read under this hint
        rest[0] = -64;
        expectFlat(kShapes[i], inverse(kShapes[i], rest, {1, 1}), kOfMinus64[i]);
    }
}

TEST(VC1Transform, FirstCoefficientAloneIsNotLimited) {
    // 8x8, 30000: 45000, (12 * 45000 + 64) >> 7 = 4219; with the limit (12 * 32767 + 64) >> 7 = 3072.
    expectFlat(kShapes[0], inverse(kShapes[0], only(30000), {1, 1}), 4219);
    expectFlat(kShapes[0], inverse(kShapes[0], only(30000), {8, 8}), 3072);
    expectFlat(kShapes[0], inverse(kShapes[0], only(-32768), {1, 1}), -4608);
    expectFlat(kShapes[0], inverse(kShapes[0], only(-32768), {2, 2}), -3072);
    // 4x4, 32767: (17 * 32767 + 4) >> 3 = 69630, (17 * 69630 + 64) >> 7 = 9248.
    expectFlat(kShapes[3], inverse(kShapes[3], only(32767), {1, 1}), 9248);
    expectFlat(kShapes[3], inverse(kShapes[3], only(32767), {2, 2}), 4352);
}

TEST(VC1Transform, LowerRowsOfEightRoundUp) {
    // Coefficients in the first column alone: the row pass makes every row flat, and the first and last rows of the
    // column pass are sums over T8's first column and, with alternating signs, its last.
    constexpr int kRow0[] = {12, 16, 16, 15, 12, 9, 6, 4}, kSign[] = {1, -1, 1, -1, 1, -1, 1, -1};
    std::mt19937 random(1);
    int differed = 0;
    for (int round = 0; round < 500; ++round) {
        Values c(64);
        int top = 0, bottom = 0;
        for (int k = 0; k < 8; ++k) {
            const int value = static_cast<int>(random() % 801) - 400;
            c[8 * k] = static_cast<Vek16s>(value);
            const int r = (12 * value + 4) >> 3;
            top += kRow0[k] * r;
            bottom += kSign[k] * kRow0[k] * r;
        }
        const Values result = inverse(kShapes[0], c, {8, 8});
        EXPECT_EQ(result[0], (top + 64) >> 7);
        EXPECT_EQ(result[8 * 7], (bottom + 65) >> 7);
        differed += (bottom + 65) >> 7 != (bottom + 64) >> 7;
    }
    EXPECT_GT(differed, 0);
}

TEST(VC1Transform, AnyTrueHintGivesTheFullResult) {
    std::mt19937 random(2);
    for (const Shape& shape : kShapes)
        for (int width = 1; width <= shape.width; ++width)
            for (int height = 1; height <= shape.height; ++height)
                for (int round = 0; round < 4; ++round) {
                    Values c(64);
                    for (int y = 0; y < height; ++y)
                        for (int x = 0; x < width; ++x)
                            c[8 * y + x] = static_cast<Vek16s>(random() % 2   ? static_cast<int>(random() % 4001) - 2000
                                                               : random() % 2 ? 32767
                                                                              : -32768);
                    if (width < 2 && height < 2) c[0] = static_cast<Vek16s>(c[0] / 4);  // where the rules agree
                    const Values full = inverse(shape, c, {8, 8});
                    for (int w = width; w <= 9; ++w)
                        for (int h = height; h <= 9; ++h)
                            ASSERT_EQ(inverse(shape, c, {w, h}), full)
                                << shape.width << "x" << shape.height << " hint " << w << ", " << h;
                }
}

TEST(VC1Transform, ExtremesAreLimited) {
    // The row pass is limited in the first place of every row, where the weights add up to 90 or 66; the columns' first
    // place then is (90 * 32767 + 64) >> 7 or (66 * 32767 + 64) >> 7.
    for (const Shape& shape : kShapes) {
        EXPECT_EQ(inverse(shape, Values(64, 32767), {8, 8})[0], shape.height == 8 ? 23039 : 16895) << shape.height;
        EXPECT_EQ(inverse(shape, Values(64, -32768), {8, 8})[0], shape.height == 8 ? -23040 : -16896);
    }
}

TEST(VC1Transform, ForwardOfFlatBlocks) {
    // 4x4 of ones: (4 * 15420 + 1024) >> 11 = 30, (4 * 15420 * 30 + 262144) >> 19 = 4. 8 points: (8 * 21845 + 2048)
    // >> 12 = 43 and (8 * 21845 * 43 + 524288) >> 20 = 7; mixed: 43 -> 5 and 30 -> 5.
    constexpr int kOf1[] = {7, 5, 5, 4};
    for (int i = 0; i < 4; ++i) {
        const Values result = forward(kShapes[i], Values(64, 1));
        EXPECT_EQ(result[0], kOf1[i]);
        EXPECT_EQ(std::count(result.begin(), result.end(), 0), 63);
    }
}

// Entry x of the standard's basis k: a cosine's value by its angle, in units of pi / 16 (8 points) or pi / 8 (4).
int basis(int n, int k, int x) {
    static constexpr int kEight[] = {12, 16, 16, 15, 12, 9, 6, 4}, kFour[] = {17, 22, 17, 10};
    int angle = (2 * x + 1) * k % (4 * n);
    angle = angle > 2 * n ? 4 * n - angle : angle;
    const int at = angle < n ? angle : 2 * n - angle;
    return (angle < n ? 1 : -1) * (n == 8 ? kEight : kFour)[at];
}

// One dimension: the products with the bases over their squared norms. The bases are rounded to 21 bits (4 points: 20),
// of which the shift leaves so many that both passes together scale by 8 less than an inverse transform.
void forwardPass(int n, Vek16s* v, int stride, bool columns) {
    Vek16s result[8];
    for (int k = 0; k < n; ++k) {
        double norm = 0, sum = 0;
        for (int x = 0; x < n; ++x) norm += basis(n, k, x) * basis(n, k, x);
        for (int x = 0; x < n; ++x)
            sum += v[x * stride] * std::nearbyint(std::ldexp(basis(n, k, x), n == 8 ? 21 : 20) / norm);
        const double value = std::floor(std::ldexp(sum, -((n == 8 ? 12 : 11) + (columns ? 8 : 0))) + 0.5);
        result[k] = static_cast<Vek16s>(std::clamp(value, -32768.0, 32767.0));
    }
    for (int k = 0; k < n; ++k) v[k * stride] = result[k];
}

TEST(VC1Transform, ForwardIsTheScaledTransposeOfTheInverse) {
    // Sums of the second pass that lie half way between two results, which only chance would bring.
    constexpr int kTies[4][8] = {{23, -247, 33, 123, 26, 221, -69, -217},
                                 {-222, 251, -161, 125},
                                 {110, 179, -154, 165, -45, 127, 190, 233},
                                 {-177, -197, 16, 151}};
    std::mt19937 random(5);
    for (int i = 0; i < 4; ++i)
        for (int round = 0; round < 4000; ++round) {
            const Shape& shape = kShapes[i];
            Values samples(64);
            for (int y = 0; y < shape.height; ++y)
                for (int x = 0; x < shape.width; ++x)
                    samples[8 * y + x] = static_cast<Vek16s>(round > 0 ? static_cast<int>(random() % 511) - 255
                                                             : x == 0  ? kTies[i][y]
                                                                       : 0);
            Values expected = samples;
            for (int y = 0; y < shape.height; ++y) forwardPass(shape.width, &expected[8 * y], 1, false);
            for (int x = 0; x < shape.width; ++x) forwardPass(shape.height, &expected[x], 8, true);
            const Values result = forward(shape, samples);
            for (int y = 0; y < shape.height; ++y)
                for (int x = 0; x < shape.width; ++x)
                    ASSERT_EQ(result[8 * y + x], expected[8 * y + x])
                        << shape.width << "x" << shape.height << " at " << x << ", " << y << " round " << round;
        }
}

TEST(VC1Transform, ForwardSumsWrap) {
    // 8 * 21845 * -20000 + 2048 = -3495197952 = 799769344 - 2^32: the row pass is limited to 32767, the sign is lost.
    // The columns give 8 * 21845 * 32767 + 524288 = 5726885208 = 2^32 + 1431917912, >> 20 = 1365.
    EXPECT_EQ(forward(kShapes[0], Values(64, -20000))[0], 1365);
    // One sample stays below the limit of 32 bits: 29026 * 32767 >> 12 is limited, 21845 * 32767 + 524288 >> 20 = 683.
    EXPECT_EQ(forward(kShapes[0], only(32767))[0], 683);
}

TEST(VC1Transform, ForwardAndInverseReproduceAResidual) {
    std::mt19937 random(3);
    for (const Shape& shape : kShapes)
        for (int round = 0; round < 200; ++round) {
            Values residual(64);
            const int amplitude = round % 4 == 0 ? 255 : 1 + static_cast<int>(random() % 255);
            for (Vek16s& v : residual)
                v = static_cast<Vek16s>(static_cast<int>(random() % static_cast<unsigned>(2 * amplitude + 1)) -
                                        amplitude);
            const Values result = inverse(shape, forward(shape, residual), {8, 8});
            for (int y = 0; y < shape.height; ++y)
                for (int x = 0; x < shape.width; ++x)
                    ASSERT_LE(std::abs(result[8 * y + x] - residual[8 * y + x]), 2)
                        << shape.width << "x" << shape.height << " at " << x << ", " << y;
        }
}

TEST(VC1Transform, NullPointers) {
    Values v(64, 77);
    for (const Shape& shape : kShapes) {
        EXPECT_EQ(shape.inverse(nullptr, kStep, v.data(), kStep, {1, 1}), vekStsErrNullPtr);
        EXPECT_EQ(shape.inverse(v.data(), kStep, nullptr, kStep, {1, 1}), vekStsErrNullPtr);
        EXPECT_EQ(shape.inverseInPlace(nullptr, kStep, {1, 1}), vekStsErrNullPtr);
        EXPECT_EQ(shape.forward(nullptr, kStep, v.data(), kStep), vekStsErrNullPtr);
        EXPECT_EQ(shape.forward(v.data(), kStep, nullptr, kStep), vekStsErrNullPtr);
        EXPECT_EQ(shape.forwardInPlace(nullptr, kStep), vekStsErrNullPtr);
    }
    EXPECT_EQ(v, Values(64, 77));
}

}  // namespace
