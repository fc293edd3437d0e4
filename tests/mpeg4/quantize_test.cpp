// Quantization, inverse quantization and prediction of coefficients: the formulas in other words, and blocks by hand.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <random>

#include "vekvc.h"

namespace {

using Block = std::array<Vek16s, 64>;

struct Quantizer {
    VekStatus (*getSize)(Vek32u*);
    VekStatus (*init)(Vek8u*, const Vek8u*, Vek32s);
    Vek32u kind, size;
};
const Quantizer kIntra = {vekiQuantIntraGetSize_MPEG4, vekiQuantIntraInit_MPEG4, 1, 412},
                kInter = {vekiQuantInterGetSize_MPEG4, vekiQuantInterInit_MPEG4, 2, 412},
                kInvIntra = {vekiQuantInvIntraGetSize_MPEG4, vekiQuantInvIntraInit_MPEG4, 3, 156},
                kInvInter = {vekiQuantInvInterGetSize_MPEG4, vekiQuantInvInterInit_MPEG4, 4, 156};

// A specification that begins at an odd address.
class Specification {
  public:
    explicit Specification(const Quantizer& quantizer, const Vek8u* matrix = nullptr, Vek32s bits = 8) {
        EXPECT_EQ(quantizer.init(memory_ + 1, matrix, bits), vekStsOk);
    }
    const Vek8u* get() const { return memory_ + 1; }

  private:
    alignas(16) Vek8u memory_[413] = {};
};

using Matrix = std::array<Vek8u, 64>;
Matrix flat(int weight) {
    Matrix m;
    m.fill(static_cast<Vek8u>(weight));
    return m;
}
Matrix noise(std::mt19937_64& random) {
    Matrix m;
    for (Vek8u& weight : m) weight = static_cast<Vek8u>(1 + random() % 255);
    return m;
}
Vek16s limited(double x, double low, double high) { return static_cast<Vek16s>(std::min(std::max(x, low), high)); }
int sumOf(const Block& block) {
    int sum = 0;
    for (const Vek16s c : block) sum += c;
    return sum;
}

TEST(Mpeg4Quantize, SpecificationsSayWhatTheyAreAndStayWithinTheirSize) {
    const Matrix matrix = flat(16);
    for (const Quantizer& q : {kIntra, kInter, kInvIntra, kInvInter}) {
        Vek32u size = 0;
        EXPECT_EQ(q.getSize(&size), vekStsOk);
        EXPECT_EQ(size, q.size);
        for (int shift = 0; shift < 16; ++shift) {
            alignas(16) Vek8u memory[480];
            std::memset(memory, 0xEE, sizeof memory);
            ASSERT_EQ(q.init(memory + 16 + shift, matrix.data(), 8), vekStsOk);
            const int at = shift == 0 ? 16 : 32;
            const Vek8u begin[8] = {0x52, 0x41, 0x4D, 0x43, static_cast<Vek8u>(q.kind), 0, 0, 0};
            EXPECT_EQ(std::memcmp(memory + at, begin, 8), 0);
            for (int i = 0; i < 480; ++i)
                EXPECT_TRUE(memory[i] == 0xEE || (i >= at && i < 16 + shift + static_cast<int>(size))) << i;
        }
        Matrix withZero = matrix;
        withZero[63] = 0;
        Vek8u memory[412];
        EXPECT_EQ(q.init(memory, withZero.data(), 3), vekStsErrQPRange);  // the matrix comes first
    }
}

TEST(Mpeg4Quantize, OperationsTakeNoOtherSpecification) {
    Block block = {};
    Vek32s count = 7;
    const Specification intra(kIntra, nullptr, 4), inter(kInter, nullptr, 5), invIntra(kInvIntra, nullptr, 11),
        invInter(kInvInter, nullptr, 12);
    const struct {
        const Vek8u* spec;
        int largestQp;
    } specs[] = {{intra.get(), 1}, {inter.get(), 3}, {invIntra.get(), 255}, {invInter.get(), 511}};
    for (int given = 0; given < 4; ++given)
        for (int called = 0; called < 4; ++called)
            for (const Vek32s QP : {0, 1, specs[given].largestQp, specs[given].largestQp + 1}) {
                const Vek8u* spec = specs[given].spec;
                const VekStatus status = called == 0   ? vekiQuantIntra_MPEG4_16s_C1I(block.data(), spec, QP, 0, &count)
                                         : called == 1 ? vekiQuantInter_MPEG4_16s_C1I(block.data(), spec, QP, &count)
                                         : called == 2 ? vekiQuantInvIntra_MPEG4_16s_C1I(block.data(), spec, QP, 0)
                                                       : vekiQuantInvInter_MPEG4_16s_C1I(block.data(), spec, QP);
                const bool inRange = QP >= 1 && QP <= specs[given].largestQp;
                EXPECT_EQ(status, given != called ? vekStsErrContextMatch : inRange ? vekStsOk : vekStsErrQPRange);
            }
    const Vek8u nothing[412] = {};
    EXPECT_EQ(vekiQuantInvInter_MPEG4_16s_C1I(block.data(), nothing, 0), vekStsErrContextMatch);
}

// The reconstruction points of H.263 lie an odd number of steps from 0, the step being QP, or QP with 1 subtracted.
TEST(Mpeg4Quantize, InverseByTheMethodOfH263) {
    for (int QP = 1; QP <= 31; ++QP)
        for (int first = -2080; first <= 2080; first += 64) {
            Block block, h263, advanced;
            for (int i = 0; i < 64; ++i) block[static_cast<std::size_t>(i)] = static_cast<Vek16s>(first + i);
            block[5] = static_cast<Vek16s>(first * 15);
            h263 = advanced = block;
            Block mpeg4 = block, wide = block;
            EXPECT_EQ(vekiQuantInvInter_H263_16s_C1I(h263.data(), QP), vekStsOk);
            EXPECT_EQ(vekiQuantInvIntra_H263_16s_C1I(advanced.data(), QP, 1), vekStsOk);
            EXPECT_EQ(vekiQuantInvInter_MPEG4_16s_C1I(mpeg4.data(), Specification(kInvInter).get(), QP), vekStsOk);
            EXPECT_EQ(vekiQuantInvInter_MPEG4_16s_C1I(wide.data(), Specification(kInvInter, nullptr, 12).get(), QP),
                      vekStsOk);
            for (std::size_t i = 0; i < 64; ++i) {
                const int level = block[i];
                const double c = level == 0  ? 0
                                 : level > 0 ? 2.0 * QP * level + (QP - 1 + QP % 2)
                                             : 2.0 * QP * level - (QP - 1 + QP % 2);
                EXPECT_EQ(h263[i], limited(c, -2048, 2047)) << QP << " " << level;
                EXPECT_EQ(mpeg4[i], h263[i]);
                EXPECT_EQ(wide[i], limited(c, -32768, 32767)) << QP << " " << level;
                EXPECT_EQ(advanced[i], limited(2.0 * QP * level, -32768, 32767));
            }
            Block intra = block;
            EXPECT_EQ(vekiQuantInvIntra_H263_16s_C1I(intra.data(), QP, 0), vekStsOk);
            EXPECT_EQ(intra[0], limited(8.0 * first, -2048, 2047));
            h263[0] = intra[0];
            EXPECT_EQ(intra, h263);
        }
}

TEST(Mpeg4Quantize, InverseByTheMpegMethod) {
    std::mt19937_64 random(9);
    for (int n = 0; n < 4000; ++n) {
        const int bits = n % 4 == 0 ? 12 : 8;
        const auto QP = static_cast<int>(1 + random() % (bits == 12 ? 511 : 31));
        const Matrix matrix = noise(random);
        Block block = {};
        for (Vek16s& level : block)
            if (random() % 3 == 0) level = static_cast<Vek16s>(static_cast<int>(random() % 4095) - 2047);
        const double high = (1 << (bits + 3)) - 1;
        for (const bool intra : {false, true}) {
            Block expected;
            for (std::size_t i = 0; i < 64; ++i) {
                const double sign = block[i] > 0 ? 1 : block[i] < 0 ? -1 : 0;
                const double c = std::trunc((2.0 * block[i] + (intra ? 0 : sign)) * matrix[i] * QP / 16);
                expected[i] = limited(c, -high - 1, high);
            }
            Block result = block;
            if (intra) {
                const Specification spec(kInvIntra, matrix.data(), bits);
                EXPECT_EQ(vekiQuantInvIntra_MPEG4_16s_C1I(result.data(), spec.get(), QP, 0), vekStsOk);
                expected[0] = result[0];  // another test's
            } else {
                const Specification spec(kInvInter, matrix.data(), bits);
                EXPECT_EQ(vekiQuantInvInter_MPEG4_16s_C1I(result.data(), spec.get(), QP), vekStsOk);
            }
            EXPECT_NE(sumOf(result) % 2, 0);
            if (sumOf(expected) % 2 == 0)
                expected[63] = static_cast<Vek16s>(expected[63] + (expected[63] % 2 == 0 ? 1 : -1));
            EXPECT_EQ(result, expected) << QP;
        }
    }
}

TEST(Mpeg4Quantize, MismatchControlOfEmptyBlocks) {
    const Matrix matrix = flat(16);
    Block block = {}, expected = {};
    expected[63] = 1;
    EXPECT_EQ(vekiQuantInvInter_MPEG4_16s_C1I(block.data(), Specification(kInvInter, matrix.data()).get(), 5),
              vekStsOk);
    EXPECT_EQ(block, expected);
    // The DC, 3 * 8, is even; 3 * 17 is not. The method of H.263 changes nothing.
    for (const auto& [QP, with, last] : {std::array<int, 3>{4, 1, 1}, {9, 1, 0}, {4, 0, 0}}) {
        block = {3};
        const Specification spec(kInvIntra, with ? matrix.data() : nullptr);
        EXPECT_EQ(vekiQuantInvIntra_MPEG4_16s_C1I(block.data(), spec.get(), QP, 0), vekStsOk);
        EXPECT_EQ(block[63], last) << QP;
    }
    // Behind the limits it is not limited again: -2048 * 16 + 2047 * 48 with an odd last one.
    block.fill(2047);
    block[62] = 0;
    EXPECT_EQ(vekiQuantInvInter_MPEG4_16s_C1I(block.data(), Specification(kInvInter, matrix.data()).get(), 5),
              vekStsOk);
    EXPECT_EQ(block[63], 2047);  // 63 of them: odd
    block.fill(2047);
    EXPECT_EQ(vekiQuantInvInter_MPEG4_16s_C1I(block.data(), Specification(kInvInter, matrix.data()).get(), 5),
              vekStsOk);
    EXPECT_EQ(block[63], 2046);
}

// ISO 14496-2 table 7-1, for QP 1 to 31.
constexpr int kLuma[31] = {8,  8,  8,  8,  10, 12, 14, 16, 17, 18, 19, 20, 21, 22, 23, 24,
                           25, 26, 27, 28, 29, 30, 31, 32, 34, 36, 38, 40, 42, 44, 46};
constexpr int kChroma[31] = {8,  8,  8,  8,  9,  9,  10, 10, 11, 11, 12, 12, 13, 13, 14, 14,
                             15, 15, 16, 16, 17, 17, 18, 18, 19, 20, 21, 22, 23, 24, 25};

TEST(Mpeg4Quantize, TheScaleOfTheDc) {
    for (int QP = 1; QP <= 31; ++QP)
        for (const Vek32s videoComp : {0, 1, -1}) {
            const int scale = (videoComp == 0 ? kLuma : kChroma)[QP - 1];
            for (const int level : {1, -3, 50, 400, -400}) {
                Block block = {static_cast<Vek16s>(level)};
                EXPECT_EQ(vekiQuantInvIntra_MPEG4_16s_C1I(block.data(), Specification(kInvIntra).get(), QP, videoComp),
                          vekStsOk);
                EXPECT_EQ(block[0], limited(level * scale, -2048, 2047));
            }
            const Specification forward(kIntra);
            for (int f = -2048; f <= 2047; f += 5) {
                Block block = {static_cast<Vek16s>(f)};
                Vek32s count = -1;
                EXPECT_EQ(vekiQuantIntra_MPEG4_16s_C1I(block.data(), forward.get(), QP, videoComp, &count), vekStsOk);
                EXPECT_EQ(block[0],
                          static_cast<int>(std::round(static_cast<double>(f) / scale)));  // halves away from 0
                EXPECT_EQ(count, 0);
                Block predicted = {}, pred = {static_cast<Vek16s>(f)};
                EXPECT_EQ(vekiPredictIntra_MPEG4_16s_C1I(predicted.data(), pred.data(), 1, QP, videoComp, 0, 0),
                          vekStsOk);
                EXPECT_EQ(predicted[0], block[0]);
            }
        }
    // More bits than 8: QP + 8 and 2 QP - 16 go on.
    Block block = {1};
    const Specification wide(kInvIntra, nullptr, 12);
    EXPECT_EQ(vekiQuantInvIntra_MPEG4_16s_C1I(block.data(), wide.get(), 511, 0), vekStsOk);
    EXPECT_EQ(block[0], 2 * 511 - 16);
}

// The largest |F| of each level decides the rest: a level y is right for a where y * divisor is the last multiple not
// above the number that is divided.
TEST(Mpeg4Quantize, ForwardByBothMethods) {
    std::mt19937_64 random(12);
    for (int n = 0; n < 6000; ++n) {
        const int bits = n % 5 == 0 ? 12 : 8;
        const auto QP = static_cast<int>(1 + random() % (bits == 12 ? 511 : 31));
        const Matrix matrix = n % 7 == 0 ? flat(1 + n % 3) : noise(random);
        Block block;
        for (Vek16s& f : block) f = static_cast<Vek16s>(random() >> (n % 3 == 0 ? 0 : random() % 16) & 0xffff);
        block[7] = -32768;
        const auto check = [&](const Block& levels, Vek32s count, int first, double most, bool intra, bool mpeg) {
            Vek32s nonZero = 0;
            for (std::size_t i = 0; i < 64; ++i) {
                if (static_cast<int>(i) < first) continue;
                const double a = std::fabs(block[i]);
                const Vek32s halfWeight = matrix[i] / 2, halfQp = QP / 2, intraBias = (3 * QP + 2) / 4;
                const double t = mpeg    ? std::floor((16 * a + halfWeight) / matrix[i])
                                 : intra ? a
                                         : std::max(a - halfQp, 0.0);
                const double more = mpeg && intra ? intraBias : 0;
                const double y = std::min(std::floor((t + more) / (2 * QP)), most);
                EXPECT_EQ(levels[i], block[i] < 0 ? -y : y) << QP << " " << block[i] << " " << int{matrix[i]};
                nonZero += levels[i] != 0;
            }
            EXPECT_EQ(count, nonZero);
        };
        for (const bool mpeg : {false, true}) {
            const Vek8u* given = mpeg ? matrix.data() : nullptr;
            const double most = (1 << (bits + 3)) - 1;
            Block levels = block;
            Vek32s count = -1;
            EXPECT_EQ(
                vekiQuantIntra_MPEG4_16s_C1I(levels.data(), Specification(kIntra, given, bits).get(), QP, 0, &count),
                vekStsOk);
            check(levels, count, 1, most, true, mpeg);
            levels = block;
            EXPECT_EQ(vekiQuantInter_MPEG4_16s_C1I(levels.data(), Specification(kInter, given, bits).get(), QP, &count),
                      vekStsOk);
            check(levels, count, 0, most, false, mpeg);
        }
        if (bits == 12) continue;
        const bool modified = n % 2 == 0;
        const double most = modified ? 1023 : 127;
        Block levels = block;
        Vek32s count = -1;
        EXPECT_EQ(vekiQuantInter_H263_16s_C1I(levels.data(), QP, modified, &count), vekStsOk);
        check(levels, count, 0, most, false, false);
        levels = block;
        EXPECT_EQ(vekiQuantIntra_H263_16s_C1I(levels.data(), QP, 0, modified, &count), vekStsOk);
        check(levels, count, 1, most, true, false);
        EXPECT_EQ(levels[0], limited(std::round(block[0] / 8.0), 1, 254));
        levels = block;
        EXPECT_EQ(vekiQuantIntra_H263_16s_C1I(levels.data(), QP, 1, modified, &count), vekStsOk);
        check(levels, count - (levels[0] != 0), 1, most, true, false);
        EXPECT_EQ(levels[0], static_cast<int>(std::round(block[0] / (2.0 * QP))));  // halves away from 0
    }
}

// ---- prediction

TEST(Mpeg4Predict, AddsTheScaledNeighbour) {
    const Block levels = [] {
        Block b;
        for (int i = 0; i < 64; ++i) b[static_cast<std::size_t>(i)] = static_cast<Vek16s>(i - 20);
        return b;
    }();
    const Vek16s pred[8] = {-4, 1, -1, 3, -3, 5, 2048, -2048};  // -4 // 8 = -1
    // 4 / 8 of each, to the nearest, halves away from 0.
    const int half[8] = {0, 1, -1, 2, -2, 3, 1024, -1024};
    for (const Vek32s predDir : {0, 1, -2})
        for (const Vek32s acPredFlag : {0, 1, 2}) {
            Block expected = levels, result = levels;
            // The step of the DC is 16 for QP 8: -4 // 16 = 0.
            for (std::size_t i = 1; i < 8 && acPredFlag != 0; ++i) {
                Vek16s& c = expected[predDir != 0 ? i : 8 * i];
                c = limited(c + half[i], -2048, 2047);
            }
            EXPECT_EQ(vekiPredictIntra_MPEG4_16s_C1I(result.data(), pred, 4, 8, 0, predDir, acPredFlag), vekStsOk);
            EXPECT_EQ(result, expected);
        }
    Block block = {2047}, low = {-2048};
    const Vek16s up[8] = {8}, down[8] = {-4};
    EXPECT_EQ(vekiPredictIntra_MPEG4_16s_C1I(block.data(), up, 1, 1, 1, 0, 1), vekStsOk);
    EXPECT_EQ(block[0], 2047);
    EXPECT_EQ(vekiPredictIntra_MPEG4_16s_C1I(low.data(), down, 1, 1, 1, 0, 1), vekStsOk);
    EXPECT_EQ(low[0], -2048);
    low[0] = 0;
    EXPECT_EQ(vekiPredictIntra_MPEG4_16s_C1I(low.data(), down, 1, 1, 1, 0, 1), vekStsOk);
    EXPECT_EQ(low[0], -1);
}

TEST(Mpeg4Predict, ScalesByEveryPairOfQuantizers) {
    std::mt19937_64 random(3);
    for (int QP = 1; QP <= 511; ++QP)
        for (const int predQP :
             {1, QP, 511, static_cast<int>(1 + random() % 31), static_cast<int>(1 + random() % 511)}) {
            Block block = {}, pred = {};
            for (std::size_t i = 0; i < 8; ++i) {
                block[i] = static_cast<Vek16s>(random());
                pred[i] = static_cast<Vek16s>(random() >> random() % 16 & 0xffff);
            }
            pred[1] = 32767, pred[2] = -32768;
            const Block before = block;
            ASSERT_EQ(vekiPredictIntra_MPEG4_16s_C1I(block.data(), pred.data(), predQP, QP, 0, 1, 1), vekStsOk);
            for (std::size_t i = 1; i < 8; ++i)
                EXPECT_EQ(block[i],
                          limited(before[i] + std::round(static_cast<double>(pred[i]) * predQP / QP), -2048, 2047))
                    << pred[i] << " * " << predQP << " // " << QP;
        }
}

TEST(Mpeg4Predict, AnnexI) {
    Vek16s left[8] = {101, 10, 20, 30, 40, 50, 60, 2000}, above[8] = {-204, -1, -2, -3, -4, -5, -6, -2000};
    const auto predict = [](const Block& from, const Vek16s* l, const Vek16s* a, Vek32s mode) {
        Block block = from;
        EXPECT_EQ(vekiPredictIntraAIC_H263_16s_C1I(block.data(), l, a, mode), vekStsOk);
        return block;
    };
    const Block zero = {};
    // (101 - 204) / 2 = -51 toward zero; odd and below 0.
    EXPECT_EQ(predict({100}, left, above, 0)[0], 49);
    EXPECT_EQ(predict({101}, left, above, 0)[0], 51);
    EXPECT_EQ(predict({50}, left, above, 0)[0], 0);
    EXPECT_EQ(predict({3}, left, nullptr, 0)[0], 105);      // 104 is even
    EXPECT_EQ(predict({1000}, nullptr, above, 0)[0], 797);  // 796
    EXPECT_EQ(predict(zero, nullptr, nullptr, 0)[0], 1025);
    EXPECT_EQ(predict(zero, left, nullptr, 1)[0], 1025);
    EXPECT_EQ(predict(zero, nullptr, above, 2)[0], 1025);
    EXPECT_EQ(predict({2000}, left, nullptr, 2)[0], 2047);
    EXPECT_EQ(predict({-32768}, nullptr, nullptr, 0)[0], 0);
    Block levels;
    for (int i = 0; i < 64; ++i) levels[static_cast<std::size_t>(i)] = static_cast<Vek16s>(100 * i - 3200);
    for (const Vek32s mode : {0, 1, 2}) {
        const Block block = predict(levels, left, above, mode);
        for (std::size_t i = 1; i < 64; ++i) {
            int c = levels[i];
            if (mode == 1 && i < 8) c += above[i];
            if (mode == 2 && i % 8 == 0) c += left[i / 8];
            EXPECT_EQ(block[i], limited(c, -2048, 2047)) << mode << " " << i;
        }
        // Without the neighbour nothing but the limits.
        EXPECT_EQ(predict(levels, mode == 1 ? left : nullptr, mode == 2 ? above : nullptr, mode)[8],
                  limited(levels[8], -2048, 2047));
    }
}

}  // namespace
