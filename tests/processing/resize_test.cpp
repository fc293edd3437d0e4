// Rotation and resizing of pictures larger than what is worked on at once.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "vekvc.h"

namespace {

using Bytes = std::vector<Vek8u>;

// Cb Y Cr Y.
struct Picture {
    int width, height;
    Bytes bytes;

    Picture(int w, int h) : width(w), height(h), bytes(static_cast<std::size_t>(step() * h), 0xa5) {}
    static Picture noise(int w, int h) {
        Picture p(w, h);
        std::mt19937 random(static_cast<unsigned>(w));
        for (auto& b : p.bytes) b = static_cast<Vek8u>(random() % 3 == 0 ? random() % 2 * 255 : random());
        return p;
    }
    int step() const { return 4 * ((width + 1) / 2); }
    int luma(int x, int y) const {
        x = std::clamp(x, 0, width - 1), y = std::clamp(y, 0, height - 1);
        return bytes[static_cast<std::size_t>(y * step() + 2 * x + 1)];
    }
    int chroma(int x, int y, int which) const {
        x = std::clamp(x, 0, width - 1), y = std::clamp(y, 0, height - 1);
        return bytes[static_cast<std::size_t>(y * step() + 4 * (x / 2) + 2 * which)];
    }
};

Picture resized(const Picture& from, int factor, int interpolation, int rotation) {
    const auto scaled = [&](int n) { return factor < 0 ? n * -factor : (n + factor - 1) / factor; };
    Picture to(scaled(from.width), scaled(from.height));
    if (rotation % 180 != 0) to = Picture(to.height, to.width);
    EXPECT_EQ(vekiResizeCCRotate_8u_C2R(from.bytes.data(), from.step(), {from.width, from.height}, to.bytes.data(),
                                        to.step(), factor, interpolation, 0, rotation),
              ((from.width | from.height) & 1) != 0 ? vekStsWrnOddSize : vekStsOk);
    return to;
}

TEST(ProcessingRotation, FourQuarterTurnsReturn) {
    const Picture from = Picture::noise(190, 86);
    Picture turned = from;
    for (int i = 0; i < 4; ++i) {
        turned = resized(turned, 1, 0, 90);
        if (i > 0) continue;
        EXPECT_EQ(turned.luma(85, 0), from.luma(0, 0));  // clockwise
        EXPECT_EQ(turned.luma(85, 189), from.luma(189, 0));
    }
    for (int y = 0; y < from.height; ++y)
        for (int x = 0; x < from.width; ++x) ASSERT_EQ(turned.luma(x, y), from.luma(x, y)) << x << ' ' << y;
    EXPECT_EQ(resized(resized(from, 1, 0, 180), 1, 0, 180).bytes, from.bytes);
    const Picture back = resized(resized(from, 1, 0, 90), 1, 0, 270);
    for (int i = 0; i < 190; ++i) EXPECT_EQ(back.luma(i, i % 86), from.luma(i, i % 86));
}

TEST(ProcessingRotation, PlanesOf420TurnBack) {
    constexpr int kWidth = 300, kHeight = 140, kLuma = kWidth * kHeight, kChroma = kLuma / 4;
    const Picture from = Picture::noise(kWidth, kHeight);
    const auto turned = [](const Bytes& p, int w, int h, int rotation) {  // a 4:2:0 picture as 4:2:2, rotated
        Bytes chroma, to(static_cast<std::size_t>(kLuma + 2 * kChroma));
        for (int y = 0; y < 2 * h; ++y) {  // both planes, every row twice
            const auto row = p.begin() + kLuma + y / 2 * (w / 2);
            chroma.insert(chroma.end(), row, row + w / 2);
        }
        const int step = rotation % 180 == 0 ? w : h;
        EXPECT_EQ(vekiCbYCr422ToYCbCr420_Rotate_8u_P3R(p.data(), w, chroma.data(), chroma.data() + 2 * kChroma, w / 2,
                                                       to.data(), step, to.data() + kLuma, to.data() + kLuma + kChroma,
                                                       step / 2, {w, h}, rotation),
                  0);
        return to;
    };
    for (const int rotation : {0, 90, 180, 270}) {
        Bytes upright(static_cast<std::size_t>(kLuma + 2 * kChroma)), to = upright;
        const auto reduce = [&](Bytes& p, int step, int by) {
            EXPECT_EQ(
                vekiCbYCr422ToYCbCr420_Rotate_8u_C2P3R(from.bytes.data(), from.step(), p.data(), step, p.data() + kLuma,
                                                       p.data() + kLuma + kChroma, step / 2, {kWidth, kHeight}, by),
                0);
        };
        const bool swaps = rotation % 180 != 0;
        reduce(upright, kWidth, 0);
        reduce(to, swaps ? kHeight : kWidth, rotation);
        EXPECT_EQ(turned(upright, kWidth, kHeight, rotation), to) << rotation;
        EXPECT_EQ(turned(to, swaps ? kHeight : kWidth, swaps ? kWidth : kHeight, (360 - rotation) % 360), upright);
    }
}

// ---- resizing against the geometry: sample u of the result covers [u, u + 1) / scale of the source

// Keys' cubic kernel, a = -1/2.
double cubic(double x) {
    x = std::fabs(x);
    return x < 1 ? 1.5 * x * x * x - 2.5 * x * x + 1 : x < 2 ? -0.5 * x * x * x + 2.5 * x * x - 4 * x + 2 : 0;
}

template <class Sample>
int enlarged(Sample s, int e, int interpolation, int u, int v) {
    const double x = (u + 0.5) / e - 0.5, y = (v + 0.5) / e - 0.5;
    const int i = static_cast<int>(std::floor(x)), j = static_cast<int>(std::floor(y));
    if (interpolation == 0) return s(u / e, v / e);
    if (interpolation == 1) {  // all products are exact
        const double f = x - i, g = y - j;
        const double sum =
            (1 - g) * ((1 - f) * s(i, j) + f * s(i + 1, j)) + g * ((1 - f) * s(i, j + 1) + f * s(i + 1, j + 1));
        return static_cast<int>(std::floor(sum + 0.5));
    }
    double sum = 0;
    for (int b = j - 1; b <= j + 2; ++b) {
        double row = 0;
        for (int a = i - 1; a <= i + 2; ++a) row += cubic(x - a) * s(a, b);
        sum += cubic(y - b) * std::floor(16 * row + 0.5);
    }
    return std::clamp(static_cast<int>(std::floor(sum / 16 + 0.5)), 0, 255);
}
template <class Sample>
int reduced(Sample s, int f, int interpolation, int u, int v) {
    if (f == 1) return s(u, v);
    const int n = interpolation == 0 ? 1 : interpolation == 1 ? 2 : f;  // the middle n x n of f x f
    const int first = interpolation == 0 ? f / 2 : (f - n) / 2;
    double sum = 0;
    for (int y = 0; y < n; ++y)
        for (int x = 0; x < n; ++x) sum += s(f * u + first + x, f * v + first + y);
    return static_cast<int>(std::floor(sum / (n * n) + 0.5));
}

TEST(ProcessingResize, FollowsTheGeometry) {
    for (const int factor : {1, 2, 4, 8, -2, -4})
        for (int interpolation = 0; interpolation < 3; ++interpolation)
            for (const auto& [width, height] : {std::pair{602, 291}, {147, 40}}) {
                if (factor < 0 && width > 200) continue;
                const Picture from = Picture::noise(width, height), to = resized(from, factor, interpolation, 0);
                const auto expected = [&](auto sample, int u, int v) {
                    return factor < 0 ? enlarged(sample, -factor, interpolation, u, v)
                                      : reduced(sample, factor, interpolation, u, v);
                };
                for (int v = 0; v < to.height; ++v)
                    for (int u = 0; u < to.width; ++u) {
                        const auto luma = [&](int x, int y) { return from.luma(x, y); };
                        ASSERT_EQ(to.luma(u, v), expected(luma, u, v))
                            << factor << interpolation << ' ' << u << ' ' << v;
                        for (int c = 0; c < 2 && u % 2 == 0; ++c) {
                            const auto chroma = [&](int x, int y) { return from.chroma(x, y, c); };
                            const int partner = std::min(u + 1, to.width - 1);
                            ASSERT_EQ(to.chroma(u, v, c),
                                      (expected(chroma, u, v) + expected(chroma, partner, v) + 1) / 2)
                                << factor << interpolation << ' ' << u << ' ' << v;
                        }
                    }
            }
}

// Weights that do not add up to one would show in some value, in the middle or at a border.
TEST(ProcessingResize, FlatPicturesStayFlat) {
    for (const int factor : {2, 4, 8, -2, -4})
        for (int interpolation = 0; interpolation < 3; ++interpolation)
            for (int value = 0; value < 256; value += 17) {
                Picture from(19, 7);
                std::fill(from.bytes.begin(), from.bytes.end(), static_cast<Vek8u>(value));
                for (const Vek8u b : resized(from, factor, interpolation, 90).bytes) ASSERT_EQ(b, value) << factor;
            }
}

}  // namespace
