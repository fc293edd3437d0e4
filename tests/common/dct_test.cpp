// The 8x8 DCTs against the ideal transform, against IEEE 1180-1990 and in floating-point environments of any kind.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "vekvc.h"
#if defined(__x86_64__)
#include <xmmintrin.h>
#endif

namespace {

using Values = std::array<Vek16s, 64>;

// ---- the definitions, made here anew

const long double kPi = std::acos(-1.0L);

// 1/2 g(u) cos((2x + 1) u pi / 16), g(0) = 1 / sqrt(2).
long double ideal1D(int u, int x) {
    return (u == 0 ? std::sqrt(0.5L) : 1.0L) * std::cos(static_cast<long double>((2 * x + 1) * u) * kPi / 16) / 2;
}
struct Ideal {
    long double at[8][8];
    Ideal() {
        for (int u = 0; u < 8; ++u)
            for (int x = 0; x < 8; ++x) at[u][x] = ideal1D(u, x);
    }
};
const Ideal kIdeal;

// The ideal transform, row by row, then column by column.
std::array<long double, 64> ideal(const Values& from, bool inverse) {
    const auto basis = [=](int in, int out) { return inverse ? kIdeal.at[in][out] : kIdeal.at[out][in]; };
    long double rows[8][8];
    for (int y = 0; y < 8; ++y)
        for (int k = 0; k < 8; ++k) {
            rows[y][k] = 0;
            for (int i = 0; i < 8; ++i) rows[y][k] += from[static_cast<std::size_t>(8 * y + i)] * basis(i, k);
        }
    std::array<long double, 64> result;
    for (int k = 0; k < 8; ++k)
        for (int x = 0; x < 8; ++x) {
            long double sum = 0;
            for (int i = 0; i < 8; ++i) sum += rows[i][x] * basis(i, k);
            result[static_cast<std::size_t>(8 * k + x)] = sum;
        }
    return result;
}
Vek16s rounded(long double x) { return static_cast<Vek16s>(std::clamp(std::floor(x + 0.5L), -32768.0L, 32767.0L)); }

// The exact sum: 2^42 (cos(a) + cos(b)) with each cosine rounded, for the sum and the difference of the two angles.
struct Law {
    std::int64_t basis[64][64];  // of frequency 8 v + u and sample 8 y + x
    Law() {
        const auto c = [](int m) { return std::llround(std::cos(m * kPi / 16) * 4398046511104.0L); };
        const auto t = [](int u, int x) { return u == 0 ? 4 : (2 * x + 1) * u; };
        for (int f = 0; f < 64; ++f)
            for (int s = 0; s < 64; ++s) {
                const int a = t(f % 8, s % 8), b = t(f / 8, s / 8);
                basis[f][s] = c(a + b) + c(a - b);
            }
    }
};
const Law kLaw;

Values law(const Values& from, bool inverse) {
    std::array<std::int64_t, 64> sums;
    sums.fill(std::int64_t{1} << 44);
    for (std::size_t i = 0; i < 64; ++i) {
        if (from[i] == 0) continue;
        for (std::size_t k = 0; k < 64; ++k) sums[k] += from[i] * (inverse ? kLaw.basis[i][k] : kLaw.basis[k][i]);
    }
    Values result;
    for (std::size_t k = 0; k < 64; ++k)
        result[k] = static_cast<Vek16s>(std::clamp<std::int64_t>(sums[k] >> 45, -32768, 32767));
    return result;
}

Values inverse(Values block) {
    EXPECT_EQ(vekiDCT8x8Inv_16s_C1I(block.data()), vekStsOk);
    return block;
}
Values forward(Values block) {
    EXPECT_EQ(vekiDCT8x8Fwd_16s_C1I(block.data()), vekStsOk);
    return block;
}
Values inverseFast(const Values& block) {
    Values transposed, result;
    for (std::size_t i = 0; i < 64; ++i) transposed[8 * (i % 8) + i / 8] = block[i];
    EXPECT_EQ(vekiDCT8x8Inv_AANTransposed_16s_C1R(transposed.data(), result.data(), 16), vekStsOk);
    return result;
}

int sum(const Values& b) {
    int s = 0;
    for (const int v : b) s += v;
    return s;
}
int weighted(const Values& b) {
    int s = 0;
    for (std::size_t i = 0; i < 64; ++i) s += static_cast<int>(i + 1) * b[i];
    return s;
}
std::vector<int> row(const Values& b, std::size_t y) { return {b.data() + 8 * y, b.data() + 8 * y + 8}; }
using Row = std::vector<int>;

// ---- known answers

TEST(Dct, KnownBlocks) {
    Values b;
    for (int i = 0; i < 64; ++i) b[static_cast<std::size_t>(i)] = static_cast<Vek16s>((29 * i + 7) % 61 - 30);
    b[0] = static_cast<Vek16s>(b[0] + 200);
    const Values inv = inverse(b), fwd = forward(b);
    EXPECT_EQ(row(inv, 0), (Row{21, 20, 30, 23, 18, 53, 20, 41}));
    EXPECT_EQ(row(inv, 1), (Row{24, 27, 24, 27, 25, 22, 21, 38}));
    EXPECT_EQ(sum(inv), 1417);
    EXPECT_EQ(weighted(inv), 42184);
    EXPECT_EQ(row(fwd, 0), (Row{20, 35, 37, 39, 17, 52, 4, 25}));
    EXPECT_EQ(row(fwd, 1), (Row{33, 37, 47, 39, 32, 31, 16, -2}));
    EXPECT_EQ(sum(fwd), 1144);
    EXPECT_EQ(weighted(fwd), 25223);
    Values fast;
    EXPECT_EQ(vekiDCT8x8Inv_AANTransposed_16s_C1R(b.data(), fast.data(), 16), vekStsOk);
    EXPECT_EQ(row(fast, 0), (Row{21, 24, 27, 18, 22, 32, -15, 12}));
    EXPECT_EQ(row(fast, 1), (Row{20, 27, 39, 9, 18, -3, 10, 42}));
    EXPECT_EQ(sum(fast), 1417);
    EXPECT_EQ(weighted(fast), 44683);

    Vek8u samples[64];
    for (int i = 0; i < 64; ++i) samples[i] = static_cast<Vek8u>(37 * i);
    Values coefficients;
    EXPECT_EQ(vekiDCT8x8Fwd_8u16s_C1R(samples, 8, coefficients.data()), vekStsOk);
    EXPECT_EQ(row(coefficients, 0), (Row{972, -47, -42, 28, -32, 22, -17, 8}));
    EXPECT_EQ(sum(coefficients), 453);
    EXPECT_EQ(weighted(coefficients), -721);
}

TEST(Dct, Extremes) {
    Values high;
    high.fill(32767);
    const Values inv = inverse(high);
    EXPECT_EQ(row(inv, 0), (Row{32767, -32768, 32767, -17406, 26725, -2603, 15529, 6833}));
    EXPECT_EQ(sum(inv), 92059);
    EXPECT_EQ(weighted(inv), 2170195);
    for (const Vek16s value : {Vek16s{32767}, Vek16s{-32768}}) {
        Values flat;
        flat.fill(value);
        Values expected = {};
        expected[0] = value;
        EXPECT_EQ(forward(flat), expected);
    }
}

TEST(Dct, FirstCoefficientAloneRoundsUpward) {
    const int cases[][2] = {{0, 0},  {4, 1},    {3, 0},    {-4, 0},       {-5, -1},       {11, 1},
                            {12, 2}, {-12, -1}, {-13, -2}, {32767, 4096}, {-32768, -4096}};
    for (const auto& [dc, value] : cases) {
        Values b = {}, expected;
        b[0] = static_cast<Vek16s>(dc);
        expected.fill(static_cast<Vek16s>(value));
        EXPECT_EQ(inverse(b), expected) << dc;
    }
}

// Ties by cancellation of irrational parts, on a diagonal and around it: two passes in double precision fall below
// some.
TEST(Dct, IrrationalTies) {
    Values b = {};
    b[0] = -4;
    b[6] = -5;
    b[11] = -5;
    b[13] = 5;
    const Values r = inverse(b);
    for (const auto& [x, y] : {std::pair{7, 0}, {1, 1}, {2, 2}, {4, 3}, {3, 4}, {5, 5}, {6, 6}, {0, 7}})
        EXPECT_EQ(r[static_cast<std::size_t>(8 * y + x)], 0) << x << " " << y;
    EXPECT_EQ(row(r, 0), (Row{-1, -1, 0, 2, -2, -3, 1, 0}));
    EXPECT_EQ(row(r, 7), (Row{0, 1, -3, -2, 2, 0, -1, -1}));
}

// ---- against the exact sum

int rounds(int normally) {
    const char* text = std::getenv("VEKVC_ROUNDS");
    return text == nullptr ? normally : std::atoi(text);
}

void expectLaw(const Values& b, const std::string& what) {
    ASSERT_EQ(inverse(b), law(b, true)) << "inverse, " << what;
    ASSERT_EQ(forward(b), law(b, false)) << "forward, " << what;
}

TEST(Dct, OneAndTwoValues) {
    const Vek16s grid[] = {-32768, -2047, -5, 1, 12, 1000};
    const std::size_t every = rounds(20000) < 1000 ? 7 : 1;
    for (std::size_t i = 0; i < 64; ++i)
        for (std::size_t k = i; k < 64; k += every)
            for (const Vek16s first : grid)
                for (const Vek16s second : grid) {
                    if (i == k && first != second) continue;
                    Values b = {};
                    b[i] = first;
                    b[k] = second;
                    expectLaw(b, std::to_string(i) + ": " + std::to_string(first) + ", " + std::to_string(k) + ": " +
                                     std::to_string(second));
                    if (HasFatalFailure()) return;
                }
}

// Blocks of all kinds: a few values, many small ones, residuals, picture samples, extremes.
Values drawBlock(std::mt19937_64& random) {
    const auto within = [&](int most) {
        return static_cast<Vek16s>(static_cast<int>(random() % static_cast<unsigned>(2 * most + 1)) - most);
    };
    Values b = {};
    const auto kind = random() % 8;
    if (kind < 3) {
        for (auto n = random() % 10; n > 0; --n) {
            const auto u = random() % 4 * (random() % 3 / 2 + 1), v = random() % 4 * (random() % 3 / 2 + 1);
            b[8 * v + u] = within(kind == 0 ? 12 : 300);
        }
    } else {
        const int most = kind == 3 ? 5 : kind == 4 ? 255 : kind == 5 ? 40 : kind == 6 ? 2047 : 32767;
        const int from = kind == 5 ? static_cast<int>(random() % 460) : 0;
        for (Vek16s& v : b) v = static_cast<Vek16s>(from + within(most));
    }
    return b;
}

TEST(Dct, RandomBlocks) {
    std::mt19937_64 random(8);
    for (int i = 0; i < rounds(20000); ++i) {
        expectLaw(drawBlock(random), std::to_string(i));
        if (HasFatalFailure()) return;
    }
}

// The exact sum is itself the ideal transform rounded, where that is not within 2^-40 of a tie.
TEST(Dct, LawIsTheIdealTransform) {
    std::mt19937_64 random(9);
    for (int i = 0; i < rounds(2000); ++i) {
        const Values b = drawBlock(random);
        for (const bool inv : {true, false}) {
            const auto x = ideal(b, inv);
            const Values r = inv ? inverse(b) : forward(b);
            for (std::size_t k = 0; k < 64; ++k)
                if (std::abs(x[k] - std::floor(x[k]) - 0.5L) > 0x1p-24L) {
                    ASSERT_EQ(r[k], rounded(x[k])) << i << ", " << k;
                }
        }
    }
}

// Blocks of three values with a result as near to a tie as 200 x 200 pairs of the first two allow: a distance of some
// 2^-16, far below what single precision tells apart; and those with a tie: 0 and 4 alone in both directions.
std::vector<Values> blocksNearTies(bool inv) {
    std::mt19937_64 random(10);
    std::vector<Values> found;
    while (found.size() < 120) {
        const auto sample = random() % 64, i = random() % 63 + 1, k = random() % 63 + 1, l = random() % 64;
        const auto scaled = [&](std::size_t place) {
            return static_cast<double>(inv ? kLaw.basis[place][sample] : kLaw.basis[sample][place]) * 0x1p-45;
        };
        const double bi = scaled(i), bk = scaled(k), third = scaled(l) * 77;
        double least = 1;
        Values best = {};
        for (int a = -100; a < 100; ++a)
            for (int c = -100; c < 100; ++c) {
                const double x = a * bi + c * bk + third, distance = std::abs(x - std::floor(x) - 0.5);
                if (distance >= least || distance < 1e-12) continue;
                least = distance;
                best = {};
                best[l] = 77;
                best[i] = static_cast<Vek16s>(best[i] + a);
                best[k] = static_cast<Vek16s>(best[k] + c);
            }
        found.push_back(best);
        for (const std::size_t m : {0u, 4u, 32u, 36u}) best[m] = static_cast<Vek16s>(best[m] + 8);
        found.push_back(best);
    }
    for (int n = 0; n < 200; ++n) {
        Values b = {};
        for (const std::size_t m : {0u, 4u, 32u, 36u}) b[m] = static_cast<Vek16s>(static_cast<int>(random() % 41) - 20);
        found.push_back(b);
    }
    return found;
}

TEST(Dct, NextToTies) {
    for (const bool inv : {true, false})
        for (const Values& b : blocksNearTies(inv)) {
            Values negative;
            std::transform(b.begin(), b.end(), negative.begin(), [](Vek16s v) { return static_cast<Vek16s>(-v); });
            expectLaw(b, "near a tie");
            expectLaw(negative, "near a tie, negated");
            if (HasFatalFailure()) return;
        }
}

#if defined(__x86_64__)
// Rounding modes, subnormal numbers flushed to zero, traps: the results stay, and the state of the caller too.
TEST(Dct, AnyFloatingPointState) {
    std::mt19937_64 random(11);
    std::vector<Values> blocks;
    for (const bool inv : {true, false}) {
        const auto near = blocksNearTies(inv);
        blocks.insert(blocks.end(), near.begin(), near.end());
    }
    for (int i = 0; i < rounds(3000); ++i) blocks.push_back(drawBlock(random));
    const unsigned usual = _mm_getcsr();
    for (const Values& b : blocks) {
        const Values inv = law(b, true), fwd = law(b, false);
        for (unsigned mode = 0; mode < 4; ++mode)
            for (const unsigned flush : {0u, 0x8040u}) {
                const unsigned state =
                    (usual & ~0xEFFFu) | mode << 13 | flush;  // all traps set but that of inexactness
                _mm_setcsr(state);
                Values r = b, f = b;
                vekiDCT8x8Inv_16s_C1I(r.data());
                vekiDCT8x8Fwd_16s_C1I(f.data());
                const unsigned after = _mm_getcsr();
                _mm_setcsr(usual);
                ASSERT_EQ(after & ~0x3Fu, state & ~0x3Fu);
                ASSERT_EQ(r, inv) << "mode " << mode;
                ASSERT_EQ(f, fwd) << "mode " << mode;
            }
    }
}
#endif

// ---- IEEE 1180-1990

// The standard's generator of numbers in -low..high.
class Generator {
  public:
    int operator()(int low, int high) {
        state_ = state_ * 1103515245 + 12345;
        const auto i = static_cast<double>(state_ & 0x7ffffffe);
        return static_cast<int>(i / 0x7fffffff * (low + high + 1)) - low;
    }

  private:
    std::uint32_t state_ = 1;
};

struct Errors {
    int peak = 0;
    double worstMeanSquare = 0, meanSquare = 0, worstMean = 0, mean = 0;
};

// One run: blocks of samples in -low..high, each perhaps negated, ideally transformed, rounded and limited to 12 bits;
// from these coefficients, the inverse under test against the ideal one, both limited to 9 bits.
Errors measure(const std::function<Values(const Values&)>& transform, int low, int high, int sign) {
    constexpr int count = 10000;
    Generator generator;
    long sums[64] = {}, squares[64] = {};
    Errors e;
    for (int n = 0; n < count; ++n) {
        Values b;
        for (Vek16s& v : b) v = static_cast<Vek16s>(sign * generator(low, high));
        const auto spectrum = ideal(b, false);
        Values coefficients;
        for (std::size_t i = 0; i < 64; ++i) coefficients[i] = std::clamp<Vek16s>(rounded(spectrum[i]), -2048, 2047);
        const auto expected = ideal(coefficients, true);
        const Values result = transform(coefficients);
        for (std::size_t i = 0; i < 64; ++i) {
            const int difference =
                std::clamp<int>(result[i], -256, 255) - std::clamp<int>(rounded(expected[i]), -256, 255);
            e.peak = std::max(e.peak, std::abs(difference));
            sums[i] += difference;
            squares[i] += difference * difference;
        }
    }
    for (std::size_t i = 0; i < 64; ++i) {
        e.worstMeanSquare = std::max(e.worstMeanSquare, static_cast<double>(squares[i]) / count);
        e.worstMean = std::max(e.worstMean, std::abs(static_cast<double>(sums[i])) / count);
        e.meanSquare += static_cast<double>(squares[i]) / count / 64;
        e.mean += static_cast<double>(sums[i]) / count / 64;
    }
    return e;
}

TEST(Dct, Ieee1180) {
    const int ranges[][2] = {{256, 255}, {5, 5}, {300, 300}};
    for (const auto& [low, high] : ranges)
        for (const int sign : {1, -1}) {
            const Errors exact = measure(inverse, low, high, sign);
            EXPECT_EQ(exact.peak, 0) << low << " " << sign;
            const Errors fast = measure(inverseFast, low, high, sign);
            EXPECT_LE(fast.peak, 1);
            EXPECT_LE(fast.worstMeanSquare, 0.06 / 3);
            EXPECT_LE(fast.meanSquare, 0.02 / 3);
            EXPECT_LE(fast.worstMean, 0.015 / 3);
            EXPECT_LE(std::abs(fast.mean), 0.0015 / 3);
        }
    EXPECT_EQ(inverse(Values{}), Values{});
    EXPECT_EQ(inverseFast(Values{}), Values{});
}

// The fast inverse's own definition, in matrices: its basis is sqrt(2) times the ideal one's double, rounded.
TEST(Dct, FastInverseFollowsItsDefinition) {
    const auto k = [](int u, int x) {
        return u == 0 ? 16384 : static_cast<int>(std::lround(16384 * std::sqrt(2.0L) * 2 * kIdeal.at[u][x]));
    };
    const auto limited = [](std::uint32_t s, int shift) {
        return std::clamp(static_cast<std::int32_t>(s) >> shift, -32768, 32767);
    };
    std::mt19937_64 random(12);
    for (int n = 0; n < 300; ++n) {
        const Values b = drawBlock(random);
        const Values r = inverseFast(b);
        int g[8][8];
        for (int v = 0; v < 8; ++v)
            for (int x = 0; x < 8; ++x) {
                std::uint32_t s = 1024;
                for (int u = 0; u < 8; ++u)
                    s += static_cast<std::uint32_t>(b[static_cast<std::size_t>(8 * v + u)] * k(u, x));
                g[v][x] = limited(s, 11);
            }
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 8; ++x) {
                std::uint32_t s = 524288;
                for (int v = 0; v < 8; ++v) s += static_cast<std::uint32_t>(g[v][x] * k(v, y));
                ASSERT_EQ(r[static_cast<std::size_t>(8 * y + x)], limited(s, 20)) << n;
            }
    }
}

// Ties of both passes go up: (-1024 * 22725 + 2048 * 19266) / 2^11 = 7903.5, and 7904 * 16384 / 2^20 = 123.5.
TEST(Dct, FastInverseRoundsTiesUp) {
    Values b{};
    b[1] = -1024, b[3] = 2048;
    EXPECT_EQ(inverseFast(b)[0], 124);
}

// ---- the forms among themselves

TEST(Dct, AllFormsAgree) {
    std::mt19937_64 random(13);
    const auto clip = [](int v) { return static_cast<Vek8u>(std::clamp(v, 0, 255)); };
    for (int n = 0; n < 300; ++n) {
        Values b = drawBlock(random);
        const Values whole = law(b, true), coefficients = law(b, false), fast = inverseFast(b);
        Values r = b, flipped, transposed;
        EXPECT_EQ(vekiDCT8x8Inv_16s_C1(b.data(), r.data()), vekStsOk);
        EXPECT_EQ(r, whole);
        r = b;
        EXPECT_EQ(vekiDCT8x8Inv_16s_C1(r.data(), r.data()), vekStsOk);  // the source may be the destination
        EXPECT_EQ(r, whole);
        r = b;
        EXPECT_EQ(vekiDCT8x8Inv_16s_C1R(r.data(), r.data(), 16), vekStsOk);
        EXPECT_EQ(r, whole);
        r = b;
        EXPECT_EQ(vekiDCT8x8Fwd_16s_C1(r.data(), r.data()), vekStsOk);
        EXPECT_EQ(r, coefficients);
        r = b;
        EXPECT_EQ(vekiDCT8x8Fwd_16s_C1R(r.data(), 16, r.data()), vekStsOk);
        EXPECT_EQ(r, coefficients);
        EXPECT_EQ(vekiDCT8x8Inv_16s_C1R(b.data(), flipped.data() + 56, -16), vekStsOk);  // upside down
        for (std::size_t y = 0; y < 8; ++y) EXPECT_EQ(row(flipped, 7 - y), row(whole, y));

        std::array<Vek8u, 64> picture, prediction, sums, picturesFast[2];
        for (Vek8u& p : prediction) p = static_cast<Vek8u>(random());
        sums = prediction;
        EXPECT_EQ(vekiDCT8x8Inv_16s8u_C1R(b.data(), picture.data(), 8), vekStsOk);
        EXPECT_EQ(vekiDCT8x8InvAdd_16s8u_C1IR(b.data(), sums.data(), 8), vekStsOk);
        for (std::size_t i = 0; i < 64; ++i) {
            ASSERT_EQ(picture[i], clip(whole[i]));
            ASSERT_EQ(sums[i], clip(prediction[i] + whole[i]));
            transposed[8 * (i % 8) + i / 8] = b[i];
        }
        Values other;
        for (std::size_t i = 0; i < 64; ++i) other[i] = static_cast<Vek16s>(transposed[i] / 2);
        std::array<Vek8u, 128> pairs;
        EXPECT_EQ(vekiDCT8x8Inv_AANTransposed_16s8u_C1R(transposed.data(), picturesFast[0].data(), 8), vekStsOk);
        EXPECT_EQ(vekiDCT8x8Inv_AANTransposed_16s8u_C1R(other.data(), picturesFast[1].data(), 8), vekStsOk);
        EXPECT_EQ(vekiDCT8x8Inv_AANTransposed_16s8u_P2C2R(transposed.data(), other.data(), pairs.data(), 16), vekStsOk);
        for (std::size_t i = 0; i < 64; ++i) {
            ASSERT_EQ(picturesFast[0][i], clip(fast[i]));
            ASSERT_EQ(pairs[2 * i], picturesFast[0][i]);
            ASSERT_EQ(pairs[2 * i + 1], picturesFast[1][i]);
        }
    }
}

TEST(Dct, CornersIgnoreTheRest) {
    std::mt19937_64 random(14);
    for (int n = 0; n < 300; ++n)
        for (const std::size_t size : {std::size_t{2}, std::size_t{4}}) {
            const Values b = drawBlock(random);
            Values alone = {};
            for (std::size_t i = 0; i < 64; ++i)
                if (i % 8 < size && i / 8 < size) alone[i] = b[i];
            Values r = b;
            const auto inPlace = size == 2 ? vekiDCT8x8InvNZ2x2_16s_C1I : vekiDCT8x8InvNZ4x4_16s_C1I;
            EXPECT_EQ(inPlace(r.data()), vekStsOk);
            ASSERT_EQ(r, law(alone, true)) << size;
            std::array<Vek8u, 64> picture, added;
            const auto toPicture = size == 2 ? vekiDCT8x8InvNZ2x2_16s8u_C1R : vekiDCT8x8InvNZ4x4_16s8u_C1R;
            const auto add = size == 2 ? vekiDCT8x8InvAddNZ2x2_16s8u_C1IR : vekiDCT8x8InvAddNZ4x4_16s8u_C1IR;
            added.fill(100);
            EXPECT_EQ(toPicture(b.data(), picture.data(), 8), vekStsOk);
            EXPECT_EQ(add(b.data(), added.data(), 8), vekStsOk);
            for (std::size_t i = 0; i < 64; ++i) {
                ASSERT_EQ(picture[i], std::clamp<int>(r[i], 0, 255));
                ASSERT_EQ(added[i], std::clamp(r[i] + 100, 0, 255));
            }
        }
}

}  // namespace
