// H.264 deblocking: lines worked out by hand, which strength and threshold belongs to which line, 8 and 16 bits alike.
#include "vekvc/h264_deblock.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <random>
#include <string>
#include <vector>

static_assert(sizeof(VekDeblockingParams8u) == 48 && offsetof(VekDeblockingParams8u, srcDstStep) == 8 &&
              offsetof(VekDeblockingParams8u, pAlpha) == 16 && offsetof(VekDeblockingParams8u, pBeta) == 24 &&
              offsetof(VekDeblockingParams8u, pThresholds) == 32 && offsetof(VekDeblockingParams8u, pBs) == 40);
static_assert(sizeof(VekDeblockingParams16u) == 56 && offsetof(VekDeblockingParams16u, srcDstStep) == 8 &&
              offsetof(VekDeblockingParams16u, pAlpha) == 16 && offsetof(VekDeblockingParams16u, pBeta) == 24 &&
              offsetof(VekDeblockingParams16u, pThresholds) == 32 && offsetof(VekDeblockingParams16u, pBs) == 40 &&
              offsetof(VekDeblockingParams16u, bitDepth) == 48);

namespace {

constexpr int kSide = 40, kOrigin = 12;  // a picture, and where its macroblock starts

template <class T>
struct Operands {
    T alpha[2] = {40, 40}, beta[2] = {10, 10};
    T thresholds[16] = {};
    Vek8u bS[16] = {};
    int depth = 8;
};
template <class T>
struct Picture {
    std::vector<T> samples = std::vector<T>(kSide * kSide);
    // The sample `across` the edges (0: right of or below the outer one) in line `along` of the block.
    T& at(int across, int along, bool vertical) {
        const int x = kOrigin + (vertical ? across : along), y = kOrigin + (vertical ? along : across);
        return samples[static_cast<std::size_t>(y * kSide + x)];
    }
    T* block() { return &at(0, 0, true); }
    bool operator==(const Picture&) const = default;
};

// What a form filters: which strength, threshold and line counts belong to each of its edges.
struct Edge {
    int position, strengths, thresholds;
};
struct Shape {
    std::string name;
    bool luma, vertical;
    int channels, linesPerStrength;
    std::vector<Edge> edges;
};
template <class T>
struct Form {
    Shape shape;
    std::function<VekStatus(T*, const Operands<T>&)> run;
};

using Six = VekStatus (*)(Vek8u*, Vek32s, const Vek8u*, const Vek8u*, const Vek8u*, const Vek8u*);
using Left = VekStatus (*)(Vek8u*, Vek32s, Vek32u, Vek32u, const Vek8u*, const Vek8u*);
using Record8 = VekStatus (*)(const VekDeblockingParams8u*);
using Record16 = VekStatus (*)(const VekDeblockingParams16u*);

Form<Vek8u> form(Shape shape, Six six) {
    return {shape,
            [six](Vek8u* p, const Operands<Vek8u>& o) { return six(p, kSide, o.alpha, o.beta, o.thresholds, o.bS); }};
}
Form<Vek8u> form(Shape shape, Left left) {
    return {shape, [left](Vek8u* p, const Operands<Vek8u>& o) {
                return left(p, kSide, o.alpha[0], o.beta[0], o.thresholds, o.bS);
            }};
}
Form<Vek8u> form(Shape shape, Record8 record) {
    return {shape, [record](Vek8u* p, const Operands<Vek8u>& o) {
                const VekDeblockingParams8u params{p, kSide, o.alpha, o.beta, o.thresholds, o.bS};
                return record(&params);
            }};
}
Form<Vek16u> form(Shape shape, Record16 record) {
    return {shape, [record](Vek16u* p, const Operands<Vek16u>& o) {
                const VekDeblockingParams16u params{p, kSide, o.alpha, o.beta, o.thresholds, o.bS, o.depth};
                return record(&params);
            }};
}

const std::vector<Edge> kFour = {{0, 0, 0}, {4, 4, 4}, {8, 8, 8}, {12, 12, 12}}, kTwo = {{0, 0, 0}, {4, 8, 4}},
                        kOne = {{0, 0, 0}};

const std::vector<Form<Vek8u>>& forms8() {
    static const std::vector<Form<Vek8u>> all = {
        form({"luma ver", true, true, 1, 4, kFour}, vekiFilterDeblockingLuma_VerEdge_H264_8u_C1IR),
        form({"luma hor", true, false, 1, 4, kFour}, vekiFilterDeblockingLuma_HorEdge_H264_8u_C1IR),
        form({"luma mbaff", true, true, 1, 2, kOne}, vekiFilterDeblockingLuma_VerEdge_MBAFF_H264_8u_C1IR),
        form({"chroma ver", false, true, 1, 2, kTwo}, vekiFilterDeblockingChroma_VerEdge_H264_8u_C1IR),
        form({"chroma hor", false, false, 1, 2, kTwo}, vekiFilterDeblockingChroma_HorEdge_H264_8u_C1IR),
        form({"chroma mbaff", false, true, 1, 1, kOne}, vekiFilterDeblockingChroma_VerEdge_MBAFF_H264_8u_C1IR),
        form({"chroma 422 ver", false, true, 1, 4, kTwo}, vekiFilterDeblockingChroma422VerEdge_H264_8u_C1IR),
        form({"chroma 422 hor", false, false, 1, 2, kFour}, vekiFilterDeblockingChroma422HorEdge_H264_8u_C1IR),
        form({"pairs ver", false, true, 2, 2, kTwo}, vekiFilterDeblockingChroma_VerEdge_H264_8u_C2IR),
        form({"pairs hor", false, false, 2, 2, kTwo}, vekiFilterDeblockingChroma_HorEdge_H264_8u_C2IR),
    };
    return all;
}
const std::vector<Form<Vek16u>>& forms16() {  // in the order of the first eight above
    static const std::vector<Form<Vek16u>> all = {
        form({"luma ver 16", true, true, 1, 4, kFour}, vekiFilterDeblockingLumaVerEdge_H264_16u_C1IR),
        form({"luma hor 16", true, false, 1, 4, kFour}, vekiFilterDeblockingLumaHorEdge_H264_16u_C1IR),
        form({"luma mbaff 16", true, true, 1, 2, kOne}, vekiFilterDeblockingLumaVerEdgeMBAFF_H264_16u_C1IR),
        form({"chroma ver 16", false, true, 1, 2, kTwo}, vekiFilterDeblockingChromaVerEdge_H264_16u_C1IR),
        form({"chroma hor 16", false, false, 1, 2, kTwo}, vekiFilterDeblockingChromaHorEdge_H264_16u_C1IR),
        form({"chroma mbaff 16", false, true, 1, 1, kOne}, vekiFilterDeblockingChromaVerEdgeMBAFF_H264_16u_C1IR),
        form({"chroma 422 ver 16", false, true, 1, 4, kTwo}, vekiFilterDeblockingChroma422VerEdge_H264_16u_C1IR),
        form({"chroma 422 hor 16", false, false, 1, 2, kFour}, vekiFilterDeblockingChroma422HorEdge_H264_16u_C1IR),
    };
    return all;
}

// The samples that form a line of the edge, p first, and the picture index of each.
template <class T>
T& sampleOf(Picture<T>& picture, const Shape& s, const Edge& e, int line, int k) {
    const int channel = line % s.channels, along = line / s.channels;
    if (s.vertical) return picture.at((e.position + k) * s.channels + channel, along, true);
    return picture.at(e.position + k, along * s.channels + channel, false);
}
int linesOf(const Shape& s) { return 4 * s.linesPerStrength * s.channels; }
int strengthOf(const Shape& s, int line) { return line / s.channels / s.linesPerStrength; }

// One strength alone is 3, on a step from 100 to 106 at its edge: with tc0 0 and 1 a luma line becomes
// 100 100 102 | 104 106 and 100 101 102 | 104 105, a chroma line 101 | 105 and 102 | 104. Only this strength's lines
// change.
template <class T>
void expectMapping(const Form<T>& form) {
    static constexpr int kLuma[2][6] = {{100, 100, 102, 104, 106, 106}, {100, 101, 102, 104, 105, 106}};
    static constexpr int kChroma[2][6] = {{100, 100, 101, 105, 106, 106}, {100, 100, 102, 104, 106, 106}};
    const Shape& s = form.shape;
    for (const Edge& e : s.edges)
        for (int k = 0; k < 4; ++k)
            for (int tC0 = 0; tC0 < 2; ++tC0) {
                Picture<T> before;
                for (int a = -12; a < kSide - kOrigin; ++a)
                    for (int l = -12; l < kSide - kOrigin; ++l)
                        before.at(a, l, s.vertical) = a < e.position * (s.vertical ? s.channels : 1) ? 100 : 106;
                Operands<T> o;
                o.bS[e.strengths + k] = 3;
                for (int i = 0; i < 16; ++i) o.thresholds[i] = static_cast<T>(i == e.thresholds + k ? tC0 : 1 - tC0);
                o.alpha[e.position == 0] = 0;  // the other edges' values
                Picture<T> expected = before, actual = before;
                for (int line = 0; line < linesOf(s); ++line)
                    for (int i = -3; i < 3 && strengthOf(s, line) == k; ++i)
                        sampleOf(expected, s, e, line, i) = static_cast<T>((s.luma ? kLuma : kChroma)[tC0][i + 3]);
                ASSERT_EQ(form.run(actual.block(), o), vekStsOk);
                ASSERT_EQ(actual, expected) << s.name << " edge " << e.position << " strength " << k << " tc0 " << tC0;
                o.alpha[e.position != 0] = 0;
                actual = before;
                form.run(actual.block(), o);
                ASSERT_EQ(actual, before) << s.name << ": alpha 0";
            }
}
TEST(H264Deblock, StrengthsAndThresholdsBelongToTheirLines) {
    for (const auto& f : forms8()) expectMapping(f);
    for (const auto& f : forms16()) expectMapping(f);
}

// Lines p3..q3 and what they become.
struct LineCase {
    const char* what;
    int bS, tC0, alpha, beta, depth;
    int before[8], luma[8], chromaP0, chromaQ0;
};
const LineCase kLines[] = {
    {"strong", 4, 0, 40, 10, 8, {60, 62, 64, 66, 70, 72, 74, 76}, {60, 63, 66, 67, 69, 71, 73, 76}, 67, 70},
    {"difference (alpha >> 2) + 2: weak",
     4,
     0,
     8,
     10,
     8,
     {60, 62, 64, 66, 70, 72, 74, 76},
     {60, 62, 64, 67, 70, 72, 74, 76},
     67,
     70},
    {"strong on one side", 4, 0, 40, 10, 8, {60, 80, 64, 66, 70, 72, 74, 76}, {60, 80, 64, 67, 69, 71, 73, 76}, 67, 70},
    {"difference alpha: none",
     4,
     9,
     4,
     10,
     8,
     {60, 62, 64, 66, 70, 72, 74, 76},
     {60, 62, 64, 66, 70, 72, 74, 76},
     66,
     70},
    {"p1 differs by beta: none",
     2,
     9,
     40,
     10,
     8,
     {60, 62, 56, 66, 70, 72, 74, 76},
     {60, 62, 56, 66, 70, 72, 74, 76},
     66,
     70},
    {"q1 differs by beta: none",
     2,
     9,
     40,
     10,
     8,
     {60, 62, 64, 66, 70, 80, 74, 76},
     {60, 62, 64, 66, 70, 80, 74, 76},
     66,
     70},
    {"normal, both sides", 2, 5, 40, 10, 8, {60, 60, 60, 60, 70, 70, 70, 70}, {60, 60, 62, 64, 66, 67, 70, 70}, 64, 66},
    {"normal, p1 falls", 1, 1, 40, 10, 8, {60, 50, 58, 55, 60, 61, 62, 63}, {60, 50, 57, 57, 58, 60, 62, 63}, 57, 58},
    {"normal, clipped to 255",
     3,
     25,
     255,
     18,
     8,
     {255, 255, 255, 254, 255, 238, 255, 255},
     {255, 255, 255, 255, 252, 255, 255, 255},
     255,
     252},
    // delta = (4 * 254 - 254 + 4) >> 3 = 95; p1 changes by 127 >> 1, q1 by -127 >> 1
    {"thresholds beyond the standard's, alike with 8 and 16 bits",
     3,
     100,
     255,
     10,
     8,
     {0, 0, 0, 0, 254, 254, 254, 254},
     {0, 0, 63, 95, 159, 190, 254, 254},
     95,
     159},
    {"normal at depth 10, above 255",
     3,
     4,
     160,
     40,
     10,
     {800, 800, 800, 800, 900, 900, 900, 900},
     {800, 800, 804, 806, 894, 896, 900, 900},
     805,
     895},
    {"strong at depth 14",
     4,
     0,
     16320,
     1152,
     14,
     {16000, 16000, 16000, 16000, 16383, 16383, 16383, 16383},
     {16000, 16048, 16096, 16144, 16239, 16287, 16335, 16383},
     16096,
     16287},
    {"normal at depth 14, full swing",
     3,
     1600,
     16383,
     16383,
     14,
     {0, 0, 0, 0, 16382, 16382, 16382, 16382},
     {0, 0, 1600, 1602, 14780, 14782, 16382, 16382},
     1601,
     14781},
};
template <class T>
void expectLine(const Form<T>& form, const LineCase& c) {
    const Shape& s = form.shape;
    for (const Edge& e : s.edges) {
        Picture<T> before;
        Operands<T> o;
        for (int k = 0; k < 4; ++k)
            o.bS[e.strengths + k] = static_cast<Vek8u>(c.bS), o.thresholds[e.thresholds + k] = static_cast<T>(c.tC0);
        o.alpha[0] = o.alpha[1] = static_cast<T>(c.alpha);
        o.beta[0] = o.beta[1] = static_cast<T>(c.beta);
        o.depth = c.depth;
        for (int line = 0; line < linesOf(s); ++line)
            for (int i = -4; i < 4; ++i) sampleOf(before, s, e, line, i) = static_cast<T>(c.before[i + 4]);
        Picture<T> expected = before, actual = before;
        for (int line = 0; line < linesOf(s); ++line) {
            for (int i = -4; i < 4 && s.luma; ++i) sampleOf(expected, s, e, line, i) = static_cast<T>(c.luma[i + 4]);
            if (s.luma) continue;
            sampleOf(expected, s, e, line, -1) = static_cast<T>(c.chromaP0);
            sampleOf(expected, s, e, line, 0) = static_cast<T>(c.chromaQ0);
        }
        ASSERT_EQ(form.run(actual.block(), o), vekStsOk);
        EXPECT_EQ(actual, expected) << s.name << " edge " << e.position << ": " << c.what;
    }
}
TEST(H264Deblock, KnownLines) {
    for (const LineCase& c : kLines) {
        for (const auto& f : forms16()) expectLine(f, c);
        if (c.depth == 8)
            for (const auto& f : forms8()) expectLine(f, c);
    }
}

// Random pictures with soft and hard edges, random strengths mixed within an edge: 16-bit forms at depth 8 agree with
// the 8-bit ones, the transposed picture is filtered alike by the other direction, pairs are two planes.
TEST(H264Deblock, FormsAgree) {
    std::mt19937 random(1);
    for (int round = 0; round < 400; ++round) {
        Picture<Vek8u> source;
        const int noise = 1 + round % 5 * 3;
        for (Vek8u& s : source.samples)
            s = static_cast<Vek8u>(120 + static_cast<int>(random() % static_cast<unsigned>(noise)) +
                                   static_cast<int>(random() % 9 == 0) * 14);
        Operands<Vek8u> o;
        Operands<Vek16u> wide;
        for (int i = 0; i < 16; ++i) {
            o.bS[i] = static_cast<Vek8u>(random() % 5);
            wide.bS[i] = o.bS[i];
            wide.thresholds[i] = o.thresholds[i] = static_cast<Vek8u>(random() % 6);
        }
        for (int i = 0; i < 2; ++i) {
            wide.alpha[i] = o.alpha[i] = static_cast<Vek8u>(random() % 60);
            wide.beta[i] = o.beta[i] = static_cast<Vek8u>(random() % 18);
        }
        std::vector<Picture<Vek8u>> results;
        for (const auto& f : forms8()) {
            Picture<Vek8u> turned = source;
            if (!f.shape.vertical && f.shape.channels == 1)
                for (int y = 0; y < kSide; ++y)
                    for (int x = 0; x < kSide; ++x)
                        turned.at(x - kOrigin, y - kOrigin, false) = source.at(x - kOrigin, y - kOrigin, true);
            f.run(turned.block(), o);
            if (!f.shape.vertical && f.shape.channels == 1) {
                Picture<Vek8u> back;
                for (int y = 0; y < kSide; ++y)
                    for (int x = 0; x < kSide; ++x)
                        back.at(x - kOrigin, y - kOrigin, true) = turned.at(x - kOrigin, y - kOrigin, false);
                turned = back;
            }
            results.push_back(turned);
        }
        EXPECT_EQ(results[0], results[1]);
        EXPECT_EQ(results[3], results[4]);
        for (std::size_t i = 0; i < forms16().size(); ++i) {
            const bool vertical = forms16()[i].shape.vertical;
            Picture<Vek16u> in, turned;
            for (int y = -kOrigin; y < kSide - kOrigin; ++y)
                for (int x = -kOrigin; x < kSide - kOrigin; ++x) in.at(x, y, vertical) = source.at(x, y, true);
            forms16()[i].run(in.block(), wide);
            for (int y = -kOrigin; y < kSide - kOrigin; ++y)
                for (int x = -kOrigin; x < kSide - kOrigin; ++x)
                    ASSERT_EQ(in.at(x, y, vertical), results[i].at(x, y, true))
                        << forms16()[i].shape.name << ' ' << x << ',' << y;
        }
        for (std::size_t i : {std::size_t{8}, std::size_t{9}}) {
            const bool vertical = forms8()[i].shape.vertical;
            for (int c = 0; c < 2; ++c) {
                Picture<Vek8u> plane;
                for (int y = -2; y < 10; ++y)
                    for (int x = -2; x < 10; ++x) plane.at(x, y, true) = source.at(2 * x + c, y, true);
                forms8()[vertical ? 3 : 4].run(plane.block(), o);
                for (int y = -2; y < 8; ++y)
                    for (int x = -2; x < 8; ++x)
                        ASSERT_EQ(plane.at(x, y, true), results[i].at(2 * x + c, y, true)) << x << ',' << y;
            }
        }
    }
}

// Alpha and beta of the left-edge forms are 32 bits wide: any difference is below 2^31.
TEST(H264Deblock, MbaffTakesWideLimits) {
    Vek8u rows[8][16], bS[4] = {4, 4, 4, 4}, thresholds[4] = {};
    for (auto& row : rows)
        for (int x = 0; x < 16; ++x) row[x] = x < 8 ? 0 : 255;
    ASSERT_EQ(vekiFilterDeblockingLuma_VerEdge_MBAFF_H264_8u_C1IR(&rows[0][8], 16, 0x80000000u, 300, thresholds, bS),
              vekStsOk);
    for (auto& row : rows) {
        EXPECT_EQ(row[7], 96);  // (3 * 255 + 4) >> 3
        EXPECT_EQ(row[8], 159);
        EXPECT_EQ(row[5], 32);
    }
    rows[0][7] = 7;
    ASSERT_EQ(vekiFilterDeblockingLuma_VerEdge_MBAFF_H264_8u_C1IR(&rows[0][8], 16, 0, 300, thresholds, bS), vekStsOk);
    EXPECT_EQ(rows[0][7], 7);
}

TEST(H264Deblock, ChecksPointers) {
    EXPECT_EQ(vekiFilterDeblockingChroma422VerEdgeMBAFF_H264_8u_C1IR(nullptr), vekStsErrUnsupported);
    EXPECT_EQ(vekiFilterDeblockingChroma422VerEdgeMBAFF_H264_16u_C1IR(nullptr), vekStsErrUnsupported);
    const Vek8u b[16] = {};
    const Vek16u w[16] = {};
    for (Six six : {vekiFilterDeblockingLuma_VerEdge_H264_8u_C1IR, vekiFilterDeblockingLuma_HorEdge_H264_8u_C1IR,
                    vekiFilterDeblockingChroma_VerEdge_H264_8u_C1IR, vekiFilterDeblockingChroma_HorEdge_H264_8u_C1IR,
                    vekiFilterDeblockingChroma_VerEdge_H264_8u_C2IR, vekiFilterDeblockingChroma_HorEdge_H264_8u_C2IR}) {
        Vek8u pixel = 9;
        EXPECT_EQ(six(nullptr, 16, b, b, b, b), vekStsErrNullPtr);
        EXPECT_EQ(six(&pixel, 16, nullptr, b, b, b), vekStsErrNullPtr);
        EXPECT_EQ(six(&pixel, 16, b, nullptr, b, b), vekStsErrNullPtr);
        EXPECT_EQ(six(&pixel, 16, b, b, nullptr, b), vekStsErrNullPtr);
        EXPECT_EQ(six(&pixel, 16, b, b, b, nullptr), vekStsErrNullPtr);
        EXPECT_EQ(six(&pixel, 16, b, b, b, b), vekStsOk);  // all strengths 0: not even the macroblock is touched
    }
    for (Left left :
         {vekiFilterDeblockingLuma_VerEdge_MBAFF_H264_8u_C1IR, vekiFilterDeblockingChroma_VerEdge_MBAFF_H264_8u_C1IR}) {
        Vek8u pixel = 9;
        EXPECT_EQ(left(nullptr, 16, 0, 0, b, b), vekStsErrNullPtr);
        EXPECT_EQ(left(&pixel, 16, 0, 0, nullptr, b), vekStsErrNullPtr);
        EXPECT_EQ(left(&pixel, 16, 0, 0, b, nullptr), vekStsErrNullPtr);
        EXPECT_EQ(left(&pixel, 16, 9, 9, b, b), vekStsOk);
    }
    for (Record8 record :
         {vekiFilterDeblockingChroma422VerEdge_H264_8u_C1IR, vekiFilterDeblockingChroma422HorEdge_H264_8u_C1IR}) {
        Vek8u pixel = 9;
        EXPECT_EQ(record(nullptr), vekStsErrNullPtr);
        for (VekDeblockingParams8u p : {VekDeblockingParams8u{nullptr, 9, b, b, b, b},
                                        {&pixel, 9, nullptr, b, b, b},
                                        {&pixel, 9, b, nullptr, b, b},
                                        {&pixel, 9, b, b, nullptr, b},
                                        {&pixel, 9, b, b, b, nullptr}})
            EXPECT_EQ(record(&p), vekStsErrNullPtr);
    }
    for (Record16 record :
         {vekiFilterDeblockingLumaVerEdge_H264_16u_C1IR, vekiFilterDeblockingLumaHorEdge_H264_16u_C1IR,
          vekiFilterDeblockingLumaVerEdgeMBAFF_H264_16u_C1IR, vekiFilterDeblockingChromaVerEdge_H264_16u_C1IR,
          vekiFilterDeblockingChromaHorEdge_H264_16u_C1IR, vekiFilterDeblockingChromaVerEdgeMBAFF_H264_16u_C1IR,
          vekiFilterDeblockingChroma422VerEdge_H264_16u_C1IR, vekiFilterDeblockingChroma422HorEdge_H264_16u_C1IR}) {
        Vek16u pixel = 9;
        EXPECT_EQ(record(nullptr), vekStsErrNullPtr);
        for (VekDeblockingParams16u p : {VekDeblockingParams16u{nullptr, 9, w, w, w, b, 10},
                                         {&pixel, 9, nullptr, w, w, b, 10},
                                         {&pixel, 9, w, nullptr, w, b, 10},
                                         {&pixel, 9, w, w, nullptr, b, 10},
                                         {&pixel, 9, w, w, w, nullptr, 10}})
            EXPECT_EQ(record(&p), vekStsErrNullPtr);
        const VekDeblockingParams16u off{&pixel, 9, w, w, w, b, 10};
        EXPECT_EQ(record(&off), vekStsOk);
    }
}

}  // namespace
