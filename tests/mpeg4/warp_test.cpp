// Global motion: against the clause's formulas sample by sample, in 128 bits.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <vector>

#include "vekvc.h"

namespace {

__extension__ typedef __int128 Wide;

struct Motion {
    Vek32s du[3], dv[3];
    int points, accuracy;
    VekiSize vop, ref;
    int roundControl, quarterSample;
};

struct Point {
    Wide x, y;
};

Wide floorDivide(Wide a, Wide b) { return a / b - (a % b < 0 ? 1 : 0); }
// Halves up, and halves away from zero.
Wide roundUp(Wide a, Wide b) { return floorDivide(2 * a + b, 2 * b); }
Wide roundAway(Wide a, Wide b) { return a < 0 ? -roundUp(-a, b) : roundUp(a, b); }
Wide powerFrom(Wide n) {
    Wide p = 1;
    while (p < n) p *= 2;
    return p;
}

// ISO/IEC 14496-2 7.8.4 and 7.8.5: (F, G) or (Fc, Gc), in 1/s samples.
Point position(const Motion& m, bool chroma, Wide I, Wide J) {
    const Wide s = 2 << m.accuracy, r = 16 / s, W = m.vop.width, H = m.vop.height;
    const Wide i0 = s / 2 * m.du[0], j0 = s / 2 * m.dv[0];
    const Wide i1 = s / 2 * (2 * W + m.du[0] + m.du[1]), j1 = s / 2 * (Wide{m.dv[0]} + m.dv[1]);
    const Wide i2 = s / 2 * (Wide{m.du[0]} + m.du[2]), j2 = s / 2 * (2 * H + m.dv[0] + m.dv[2]);
    const auto chromaOffset = [](Wide x) {
        return floorDivide(x, 2) + (x % 2 != 0 && floorDivide(x, 2) % 2 == 0 ? 1 : 0);
    };
    if (m.points == 0) return {s * I, s * J};
    if (m.points == 1)
        return chroma ? Point{s * I + chromaOffset(i0), s * J + chromaOffset(j0)} : Point{s * I + i0, s * J + j0};
    const Wide W1 = powerFrom(W), H1 = powerFrom(H);
    const Wide vi1 = 16 * W1 + roundAway((W - W1) * r * i0 + W1 * (r * i1 - 16 * W), W);
    const Wide vj1 = roundAway((W - W1) * r * j0 + W1 * r * j1, W);
    const Wide vi2 = roundAway((H - H1) * r * i0 + H1 * r * i2, H);
    const Wide vj2 = 16 * H1 + roundAway((H - H1) * r * j0 + H1 * (r * j2 - 16 * H), H);
    const bool two = m.points == 2;
    const Wide ax = vi1 - r * i0, ay = vj1 - r * j0, bx = two ? -ay : vi2 - r * i0, by = two ? ax : vj2 - r * j0;
    const Wide height = two ? W1 : H1;  // of the virtual square or rectangle
    // i0 + ((ax I / W1) + (bx J / height)) / r as one fraction.
    if (!chroma)
        return {i0 + roundUp(ax * height * I + bx * W1 * J, W1 * height * r),
                j0 + roundUp(ay * height * I + by * W1 * J, W1 * height * r)};
    const Wide scale = 4 * W1 * height * r;
    const auto at = [&](Wide a, Wide b, Wide origin) {
        return roundUp(
            a * height * (4 * I + 1) + b * W1 * (4 * J + 1) + 2 * W1 * height * r * origin - 16 * W1 * height, scale);
    };
    return {at(ax, bx, i0), at(ay, by, j0)};
}

struct Reference {
    std::vector<Vek8u> samples;
    int width, height;
    Vek8u at(Wide x, Wide y) const {
        x = x < 0 ? 0 : x >= width ? width - 1 : x, y = y < 0 ? 0 : y >= height ? height - 1 : y;
        return samples[static_cast<std::size_t>(y * width + x)];
    }
};
Reference noise(int width, int height, std::mt19937& random) {
    Reference r{std::vector<Vek8u>(static_cast<std::size_t>(width * height)), width, height};
    for (auto& v : r.samples) v = static_cast<Vek8u>(random());
    return r;
}

int sample(const Motion& m, const Reference& ref, const Point& p) {
    const int bits = m.accuracy + 1, s = 1 << bits;
    const Wide x = floorDivide(p.x, s), y = floorDivide(p.y, s);
    const int u = static_cast<int>(p.x - x * s), v = static_cast<int>(p.y - y * s);
    const int weights[4] = {(s - u) * (s - v), u * (s - v), (s - u) * v, u * v};
    int sum = s * s / 2 - m.roundControl;
    for (int k = 0; k < 4; ++k) sum += weights[k] * ref.at(x + k % 2, y + k / 2);
    return sum >> (2 * bits);
}

struct Buffer {
    Vek8u bytes[384 + 15];
    Vek8u* spec;
    explicit Buffer(const Motion& m, int offset = 3) : bytes(), spec(bytes + offset) {
        EXPECT_EQ(
            vekiWarpInit_MPEG4(spec, m.du, m.dv, m.points, m.accuracy, m.vop, m.ref, m.roundControl, m.quarterSample),
            vekStsOk);
    }
};

void compare(const Motion& m, int x0, int y0, VekiSize roi, std::mt19937& random) {
    const Buffer buffer(m);
    const Reference luma = noise(m.ref.width, m.ref.height, random);
    const Reference cb = noise((m.ref.width + 1) / 2, (m.ref.height + 1) / 2, random);
    const Reference cr = noise(cb.width, cb.height, random);
    const int step = std::max(roi.width, 64);
    std::vector<Vek8u> out[3];
    for (auto& o : out) o.resize(static_cast<std::size_t>(step * roi.height));
    // A wider step than the reference's width may be asked for by a wide block: copies with a step of their own.
    const auto spaced = [&](const Reference& r) {
        const int width = std::max(r.width, roi.width);
        std::vector<Vek8u> s(static_cast<std::size_t>(width * r.height));
        for (int y = 0; y < r.height; ++y)
            std::memcpy(s.data() + y * width, r.samples.data() + y * r.width, static_cast<std::size_t>(r.width));
        return s;
    };
    const auto y = spaced(luma), u = spaced(cb), v = spaced(cr);
    const int yStep = std::max(luma.width, roi.width), cStep = std::max(cb.width, roi.width);
    ASSERT_EQ(vekiWarpLuma_MPEG4_8u_C1R(y.data(), yStep, out[0].data(), step, x0, y0, roi, buffer.spec), vekStsOk);
    ASSERT_EQ(vekiWarpChroma_MPEG4_8u_P2R(u.data(), cStep, v.data(), cStep, out[1].data(), step, out[2].data(), step,
                                          x0, y0, roi, buffer.spec),
              vekStsOk);
    for (int j = 0; j < roi.height; ++j)
        for (int i = 0; i < roi.width; ++i) {
            const auto k = static_cast<std::size_t>(j * step + i);
            const Point p = position(m, false, x0 + i, y0 + j), c = position(m, true, x0 + i, y0 + j);
            ASSERT_EQ(out[0][k], sample(m, luma, p)) << m.points << ' ' << i << ' ' << j;
            ASSERT_EQ(out[1][k], sample(m, cb, c)) << m.points << ' ' << i << ' ' << j;
            ASSERT_EQ(out[2][k], sample(m, cr, c)) << m.points << ' ' << i << ' ' << j;
        }
}

Motion drawMotion(std::mt19937& random) {
    const auto draw = [&](int reach) {
        return static_cast<int>(random() % (2u * static_cast<unsigned>(reach) + 1) - static_cast<unsigned>(reach));
    };
    constexpr int kReach[5] = {3, 20, 200, 16383, 2000000000};
    const int reach = kReach[random() % 40 == 0 ? 4 : random() % 4];
    Motion m = {};
    for (int k = 0; k < 3; ++k) m.du[k] = draw(reach), m.dv[k] = draw(reach);
    m.points = static_cast<int>(random() % 4), m.accuracy = static_cast<int>(random() % 4);
    m.vop = {static_cast<int>(random() % 80) + 1, static_cast<int>(random() % 80) + 1};
    if (random() % 4 == 0) m.vop = {1 << random() % 14, 1 << random() % 14};
    m.ref = {static_cast<int>(random() % 80) + 1, static_cast<int>(random() % 80) + 1};
    m.roundControl = static_cast<int>(random() % 2), m.quarterSample = static_cast<int>(random() % 2);
    return m;
}

TEST(Warp, EveryKindOfMotion) {
    std::mt19937 random(11);
    for (int round = 0; round < 3000; ++round) {
        const VekiSize roi = {static_cast<int>(random() % 40) + 1, static_cast<int>(random() % 20) + 1};
        compare(drawMotion(random), static_cast<int>(random() % 160) - 60, static_cast<int>(random() % 160) - 60, roi,
                random);
    }
}

// The corners of the VOP go where the reference points are; exactly so for sides that are powers of two.
TEST(Warp, MovesTheCornersToTheReferencePoints) {
    for (int accuracy = 0; accuracy < 4; ++accuracy) {
        const Motion m = {{7, -9, 4}, {-3, 2, 30}, 3, accuracy, {64, 32}, {64, 32}, 0, 0};
        const int half = 1 << accuracy;
        const Point a = position(m, false, 0, 0), b = position(m, false, 64, 0), c = position(m, false, 0, 32);
        EXPECT_TRUE(a.x == 7 * half && a.y == -3 * half);
        EXPECT_TRUE(b.x == 2 * half * 64 - 2 * half && b.y == -half);
        EXPECT_TRUE(c.x == 11 * half && c.y == 2 * half * 32 + 27 * half);
    }
    // Two points: a turn and a zoom about the first one.
    const Motion m = {{6, 10, 0}, {2, 8, 0}, 2, 3, {64, 48}, {64, 48}, 0, 0};
    const Point b = position(m, false, 64, 0), c = position(m, false, 0, 64);
    EXPECT_TRUE(b.x == 16 * (64 + 8) && b.y == 16 * 5);
    EXPECT_TRUE(c.x == 16 * 3 - 16 * 4 && c.y == 16 + 16 * (64 + 5));
}

TEST(Warp, OneWholePointCopies) {
    std::mt19937 random(3);
    const Motion m = {{-6, 0, 0}, {4, 0, 0}, 1, 2, {48, 48}, {48, 48}, 1, 0};
    const Buffer buffer(m);
    const Reference ref = noise(48, 48, random);
    Vek8u out[256];
    ASSERT_EQ(vekiWarpLuma_MPEG4_8u_C1R(ref.samples.data(), 48, out, 16, 16, 32, {16, 16}, buffer.spec), vekStsOk);
    for (int i = 0; i < 256; ++i) EXPECT_EQ(out[i], ref.at(16 + i % 16 - 3, 32 + i / 16 + 2));
}

TEST(Warp, AverageVectors) {
    std::mt19937 random(8);
    int limited = 0;
    for (int round = 0; round < 2000; ++round) {
        const Motion m = drawMotion(random);
        const int s = 2 << m.accuracy, fcode = static_cast<int>(random() % 7) + 1;
        const int x = static_cast<int>(random() % 200) - 50, y = static_cast<int>(random() % 200) - 50;
        Wide sum[2] = {};
        for (int i = 0; i < 256; ++i) {
            const Point p = position(m, false, x + i % 16, y + i / 16);
            sum[0] += p.x - s * (x + i % 16), sum[1] += p.y - s * (y + i / 16);
        }
        Vek16s mv[2];
        ASSERT_EQ(vekiWarpAverageMV_MPEG4_16s(x, y, fcode, mv, Buffer(m, round % 16).spec), vekStsOk);
        for (int k = 0; k < 2; ++k) {
            const Wide mean = roundAway(sum[k] * (m.quarterSample != 0 ? 4 : 2), 256 * s), limit = 1 << (fcode + 4);
            limited += mean < -limit || mean > limit - 1;
            ASSERT_EQ(mv[k], static_cast<int>(std::clamp(mean, -limit, limit - 1))) << m.points;
        }
    }
    EXPECT_GT(limited, 100);
}

TEST(Warp, Buffers) {
    Vek32u size = 0;
    EXPECT_EQ(vekiWarpGetSize_MPEG4(&size), vekStsOk);
    EXPECT_EQ(size, 384u);
    EXPECT_EQ(vekiWarpGetSize_MPEG4(nullptr), vekStsErrNullPtr);

    const Vek32s d[3] = {1, 2, 3};
    const VekiSize good = {16, 16};
    alignas(16) Vek8u bytes[384 + 32];
    std::memset(bytes, 0x5A, sizeof bytes);
    Vek8u out[256], ref[256] = {};
    EXPECT_EQ(vekiWarpLuma_MPEG4_8u_C1R(ref, 16, out, 16, 0, 0, good, bytes), vekStsErrContextMatch);
    ASSERT_EQ(vekiWarpInit_MPEG4(bytes + 1, d, d, 3, 0, good, good, 0, 0), vekStsOk);
    EXPECT_EQ(std::memcmp(bytes + 16, "RAMC\5\0\0\0", 8), 0);
    for (int i = 0; i < 16; ++i) EXPECT_EQ(bytes[i], 0x5A);
    for (std::size_t i = 385; i < sizeof bytes; ++i) EXPECT_EQ(bytes[i], 0x5A);
    Vek16s mv[2];
    for (const int wrong : {16, 20}) {  // the tag, the kind
        ASSERT_EQ(vekiWarpInit_MPEG4(bytes, d, d, 3, 0, good, good, 0, 0), vekStsOk);
        EXPECT_EQ(vekiWarpAverageMV_MPEG4_16s(0, 0, 1, mv, bytes), vekStsOk);
        bytes[wrong - 16] ^= 1;
        EXPECT_EQ(vekiWarpAverageMV_MPEG4_16s(0, 0, 8, mv, bytes), vekStsErrContextMatch);
        EXPECT_EQ(vekiWarpLuma_MPEG4_8u_C1R(ref, 0, out, 16, 0, 0, {0, 0}, bytes), vekStsErrContextMatch);
        EXPECT_EQ(vekiWarpChroma_MPEG4_8u_P2R(ref, 0, ref, 0, out, 0, out, 0, 0, 0, {0, 0}, bytes),
                  vekStsErrContextMatch);
    }

    const auto init = [&](const Vek32s* du, const Vek32s* dv, int points, int accuracy, VekiSize vop, VekiSize other) {
        return vekiWarpInit_MPEG4(bytes, du, dv, points, accuracy, vop, other, 0, 0);
    };
    EXPECT_EQ(init(nullptr, nullptr, 0, 0, good, good), vekStsOk);
    EXPECT_EQ(init(nullptr, d, 1, 9, good, good), vekStsErrNullPtr);
    EXPECT_EQ(init(d, nullptr, 1, 9, good, good), vekStsErrNullPtr);
    EXPECT_EQ(init(d, d, 4, 0, {0, 0}, good), vekStsErrOutOfRange);
    EXPECT_EQ(init(d, d, 3, 4, {0, 0}, good), vekStsErrOutOfRange);
    for (const VekiSize bad : {VekiSize{0, 16}, VekiSize{16, 0}, VekiSize{8193, 16}, VekiSize{16, 8193}}) {
        EXPECT_EQ(init(d, d, 3, 3, bad, good), vekStsErrSize);
        EXPECT_EQ(init(d, d, 3, 3, good, bad), vekStsErrSize);
    }
    EXPECT_EQ(init(d, d, 3, 3, {8192, 8192}, {8192, 1}), vekStsOk);
    for (const VekiSize bad : {VekiSize{0, 1}, VekiSize{1, 0}, VekiSize{-3, -3}})
        EXPECT_EQ(vekiWarpLuma_MPEG4_8u_C1R(ref, 16, out, 16, 0, 0, bad, bytes), vekStsErrSize);
}

}  // namespace
