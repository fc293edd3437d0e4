// Rows of AVS interpolation, weighting and the loop filter.
#include <cstring>

#include "catalogue.h"

namespace catalogue {
namespace {

// ---- interpolation of blocks

// What a fraction of luma reads before and behind a block.
struct Reach {
    int before, behind;
};
Reach reach(std::int64_t d, std::int64_t other) {
    constexpr Reach kReach[4] = {{0, 0}, {2, 2}, {1, 2}, {1, 3}};
    return kReach[d % 2 != 0 && other % 2 != 0 ? 2 : d];
}
Extent lumaReference(int width, int height) {
    return [=](const Call& c) {
        const Reach x = reach(c["dx"], c["dy"]), y = reach(c["dy"], c["dx"]);
        return Rect{-x.before, -y.before, width + x.behind, height + y.behind};
    };
}
Extent chromaReference(int width, int height) {
    return [=](const Call& c) { return Rect{0, 0, width + (c["dx"] != 0), height + (c["dy"] != 0)}; };
}
Argument fraction(const char* name, int most) {
    return range(name, 0, most).bad({-1, most + 1, INT32_MIN, INT32_MAX}, vekStsErrBadArg);
}
std::vector<Argument> interpolation(Extent reference, int width, int height, int most) {
    return {in<Vek8u>("pSrc", std::move(reference)),
            step("pSrc"),
            out<Vek8u>("pDst", block(width, height)),
            step("pDst"),
            fraction("dx", most),
            fraction("dy", most)};
}
std::vector<Argument> luma(int width, int height) {
    return interpolation(lumaReference(width, height), width, height, 3);
}
std::vector<Argument> chroma(int width, int height) {
    return interpolation(chromaReference(width, height), width, height, 7);
}

// ---- records: the planes, their step, the blocks, their step, sizes, position, vector

Argument planeSize() {
    return size("planeSize", {{1, 1}, {3, 2}, {8, 9}, {16, 16}, {30, 41}, {48, 40}})
        .badSize({{0, 8}, {8, 0}, {-1, 8}, {8, INT32_MIN}}, vekStsErrSize);
}
std::vector<Argument> blockRecord(int planes, int side) {
    std::vector<Argument> a = {record("pParams")};
    const auto both = [=](const char* first, const char* second) {
        return planes == 2 ? step({first, second}) : step(first);
    };
    a.push_back(in<Vek8u>("pSrcPlane0", region("planeSize")));
    a.push_back(planes == 2 ? in<Vek8u>("pSrcPlane1", region("planeSize"))
                            : in<Vek8u>("pSrcPlane1", rect(0, 0, 0, 0)).nullable());
    a.push_back(both("pSrcPlane0", "pSrcPlane1"));
    a.push_back(out<Vek8u>("pDstBlock0", region("blockSize")));
    a.push_back(planes == 2 ? out<Vek8u>("pDstBlock1", region("blockSize"))
                            : out<Vek8u>("pDstBlock1", rect(0, 0, 0, 0)).nullable());
    a.push_back(both("pDstBlock0", "pDstBlock1"));
    a.push_back(planeSize());
    a.push_back(size("blockSize", {{side, side}, {side, 2 * side}, {2 * side, side}, {2 * side, 2 * side}})
                    .badSize({{side / 2, side}, {side, 4 * side}, {side + 4, side + 1}, {0, side}, {side, -side}},
                             vekStsErrSize));
    for (const char* name : {"blockX", "blockY"}) a.push_back(range(name, -30, 60));
    for (const char* name : {"mvX", "mvY"})
        a.push_back(integer(name, [](Random& random, const Call&) {
            return random() % 8 == 0 ? draw(random, INT32_MIN, INT32_MAX) : draw(random, -60, 60);
        }));
    return a;
}
VekStatus callWithRecord(void* function, const Slot* s) {
    const auto n = [&](int i) { return static_cast<Vek32s>(s[i].integer); };
    VekAVSInterpolationParams8u p = {};
    for (int i = 0; i < 2; ++i) {
        p.pSrcPlane[i] = static_cast<const Vek8u*>(s[1 + i].pointer);
        p.pDstBlock[i] = static_cast<Vek8u*>(s[4 + i].pointer);
    }
    p.srcPlaneStep = n(3), p.dstBlockStep = n(6);
    p.planeSize = s[7].size, p.blockSize = s[8].size;
    p.blockX = n(9), p.blockY = n(10), p.mvX = n(11), p.mvY = n(12);
    return reinterpret_cast<VekStatus (*)(const VekAVSInterpolationParams8u*)>(function)(s[0].integer != 0 ? &p
                                                                                                           : nullptr);
}

// ---- weights

Argument roiSize() {
    return size("roiSize",
                {{16, 16}, {16, 8}, {8, 16}, {8, 8}, {4, 4}, {2, 2}, {16, 15}, {15, 16}, {8, 6}, {7, 3}, {13, 2}})
        .badSize({{1, 8}, {17, 8}, {0, 8}, {8, 1}, {8, 17}, {-8, 8}, {8, INT32_MIN}}, vekStsErrSize);
}
Argument scale(const char* name) {
    return range(name, 0, 255).bad({-1, 256, INT32_MIN, INT32_MAX}, vekStsErrOutOfRange);
}
Argument shift(const char* name) {
    return range(name, -128, 127).bad({-129, 128, INT32_MIN, INT32_MAX}, vekStsErrOutOfRange);
}
Argument source(const char* name) { return in<Vek8u>(name, region("roiSize")); }
Argument result() { return out<Vek8u>("pDst", region("roiSize")); }

// ---- loop filter: strengths follow a seed

struct Strengths {
    Vek8u bS[4];
};
Strengths strengths(const Call& c) {
    Random random(static_cast<std::uint64_t>(c["strengths"]));
    Strengths s;
    for (auto& bS : s.bS) bS = static_cast<Vek8u>(random() % 16 == 0 ? random() : random() % 3);
    return s;
}
// The lines and columns of the halves with a strength, `far` samples before an edge to `far` behind.
Extent edges(bool vertical, bool luma, int reach) {
    return [=](const Call& c) {
        const Strengths s = strengths(c);
        const bool edge0 = (s.bS[0] | s.bS[1]) != 0, edge1 = luma && (s.bS[2] | s.bS[3]) != 0;
        const bool half0 = s.bS[0] != 0 || (luma && s.bS[2] != 0), half1 = s.bS[1] != 0 || (luma && s.bS[3] != 0);
        if (!edge0 && !edge1) return Rect{0, 0, 0, 0};
        const int half = luma ? 8 : 4;
        const int from = edge0 ? -reach : 8 - reach, to = (edge1 ? 8 : 0) + reach;
        const int first = half0 ? 0 : half, last = half1 ? 2 * half : half;
        return vertical ? Rect{from, first, to, last} : Rect{first, from, last, to};
    };
}
Argument limits(const char* name, int edges, int most) {
    return in<Vek8u>(name, count(edges)).of([=](Random& random, const Call&) {
        return random() % 16 == 0 ? draw(random, 0, 255) : draw(random, 0, most);
    });
}
std::vector<Argument> deblock(bool vertical, bool luma) {
    const int n = luma ? 2 : 1;
    return {inOut<Vek8u>("pSrcDst", edges(vertical, luma, 3))
                .writes(edges(vertical, luma, luma ? 2 : 1))
                .of([](Random& random, const Call&) {
                    return random() % 16 == 0 ? draw(random, 0, 255) : draw(random, 100, 112);
                }),
            step("pSrcDst"),
            limits("pAlpha", n, 64),
            limits("pBeta", n, 27),
            limits("pThresholds", n, 9),
            in<Vek8u>("pBs", count(2 * n)).seeded("strengths").filled([=](Random&, const Call& c, void* samples, int) {
                std::memcpy(samples, strengths(c).bS, static_cast<std::size_t>(2 * n));
            })};
}

[[maybe_unused]] const bool kRows[] = {
    row("vekiInterpolateLuma16x16_AVS_8u_C1R", &vekiInterpolateLuma16x16_AVS_8u_C1R, luma(16, 16)),
    row("vekiInterpolateLuma16x8_AVS_8u_C1R", &vekiInterpolateLuma16x8_AVS_8u_C1R, luma(16, 8)),
    row("vekiInterpolateLuma8x16_AVS_8u_C1R", &vekiInterpolateLuma8x16_AVS_8u_C1R, luma(8, 16)),
    row("vekiInterpolateLuma8x8_AVS_8u_C1R", &vekiInterpolateLuma8x8_AVS_8u_C1R, luma(8, 8)),
    row("vekiInterpolateChroma8x8_AVS_8u_C1R", &vekiInterpolateChroma8x8_AVS_8u_C1R, chroma(8, 8)),
    row("vekiInterpolateChroma8x4_AVS_8u_C1R", &vekiInterpolateChroma8x4_AVS_8u_C1R, chroma(8, 4)),
    row("vekiInterpolateChroma4x8_AVS_8u_C1R", &vekiInterpolateChroma4x8_AVS_8u_C1R, chroma(4, 8)),
    row("vekiInterpolateChroma4x4_AVS_8u_C1R", &vekiInterpolateChroma4x4_AVS_8u_C1R, chroma(4, 4)),
    recordRow("vekiInterpolateLumaBlock_AVS_8u_P1R", blockRecord(1, 8), callWithRecord),
    recordRow("vekiInterpolateChromaBlock_AVS_8u_P2R", blockRecord(2, 4), callWithRecord),
    row("vekiInterpolateBlock_AVS_8u_P3P1R", &vekiInterpolateBlock_AVS_8u_P3P1R,
        {source("pSrc1"), step("pSrc1"), source("pSrc2"), step("pSrc2"), result(), step("pDst"), roiSize()}),
    row("vekiUniDirWeightBlock_AVS_8u_C1IR", &vekiUniDirWeightBlock_AVS_8u_C1IR,
        {inOut<Vek8u>("pSrcDst", region("roiSize")), step("pSrcDst"), scale("scale"), shift("shift"), roiSize()}),
    row("vekiUniDirWeightBlock_AVS_8u_C1R", &vekiUniDirWeightBlock_AVS_8u_C1R,
        {source("pSrc"), step("pSrc"), result(), step("pDst"), scale("scale"), shift("shift"), roiSize()}),
    row("vekiBiDirWeightBlock_AVS_8u_P3P1R", &vekiBiDirWeightBlock_AVS_8u_P3P1R,
        {source("pSrc1"), step("pSrc1"), source("pSrc2"), step("pSrc2"), result(), step("pDst"), scale("scale1"),
         shift("shift1"), scale("scale2"), shift("shift2"), roiSize()}),
    row("vekiFilterDeblockingLuma_VerEdge_AVS_8u_C1IR", &vekiFilterDeblockingLuma_VerEdge_AVS_8u_C1IR,
        deblock(true, true)),
    row("vekiFilterDeblockingLuma_HorEdge_AVS_8u_C1IR", &vekiFilterDeblockingLuma_HorEdge_AVS_8u_C1IR,
        deblock(false, true)),
    row("vekiFilterDeblockingChroma_VerEdge_AVS_8u_C1IR", &vekiFilterDeblockingChroma_VerEdge_AVS_8u_C1IR,
        deblock(true, false)),
    row("vekiFilterDeblockingChroma_HorEdge_AVS_8u_C1IR", &vekiFilterDeblockingChroma_HorEdge_AVS_8u_C1IR,
        deblock(false, false)),
};

}  // namespace
}  // namespace catalogue
