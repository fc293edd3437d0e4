// Rows of MPEG-4 and H.263 prediction: quarter samples, overlapped motion compensation, global motion.
#include "catalogue.h"
#include "extents.h"

namespace catalogue {
namespace {

// ---- quarter samples

Extent quarterSample(int width, int height) {
    return [=](const Call& c) {
        const auto acc = c["acc"];
        return Rect{0, 0, width + (acc & 3 ? 1 : 0), height + (acc & 12 ? 1 : 0)};
    };
}
std::vector<Argument> quarterSampleCopy(int width, int height) {
    return {in<Vek8u>("pSrc", quarterSample(width, height)),
            step("pSrc"),
            out<Vek8u>("pDst", block(width, height)),
            step("pDst"),
            anyInt("acc"),
            anyInt("rounding")};
}
std::vector<Argument> quarterSampleAverage(int width, int height) {
    return {in<Vek8u>("pSrc", quarterSample(width, height)),
            step("pSrc"),
            inOut<Vek8u>("pSrcDst", block(width, height)),
            step("pSrcDst"),
            anyInt("acc"),
            anyInt("rounding")};
}

// ---- overlapped motion compensation: the five references and positions as arguments of their own

constexpr const char* kReferences[5] = {"pSrc[0]", "pSrc[1]", "pSrc[2]", "pSrc[3]", "pSrc[4]"};
constexpr const char* kPositions[5] = {"mcType[0]", "mcType[1]", "mcType[2]", "mcType[3]", "mcType[4]"};

std::vector<Argument> overlapped() {
    constexpr Rect kRead[5] = {{0, 0, 8, 8}, {0, 0, 8, 4}, {0, 4, 8, 8}, {0, 0, 4, 8}, {4, 0, 8, 8}};
    std::vector<Argument> a;
    for (int k = 0; k < 5; ++k)
        a.push_back(in<Vek8u>(kReferences[k], [=](const Call& c) {
            const auto mcType = c[kPositions[k]];
            const Rect r = kRead[k];
            return Rect{r.left, r.top, r.right + (mcType & 8 ? 1 : 0), r.bottom + (mcType & 4 ? 1 : 0)};
        }));
    a.push_back(step({kReferences[0], kReferences[1], kReferences[2], kReferences[3], kReferences[4]}));
    for (const char* position : kPositions) a.push_back(anyInt(position));
    a.push_back(out<Vek8u>("pDst", block(8, 8)));
    a.push_back(step("pDst"));
    a.push_back(anyInt("roundControl"));
    return a;
}
VekStatus callOverlapped(void* function, const Slot* s) {
    const Vek8u* src[5];
    Vek32s mcType[5];
    for (int k = 0; k < 5; ++k) {
        src[k] = static_cast<const Vek8u*>(s[k].pointer);
        mcType[k] = static_cast<Vek32s>(s[6 + k].integer);
    }
    return reinterpret_cast<decltype(&vekiOBMC8x8HP_H263_8u_C1R)>(function)(
        src, static_cast<Vek32s>(s[5].integer), mcType, static_cast<Vek8u*>(s[11].pointer),
        static_cast<Vek32s>(s[12].integer), static_cast<Vek32s>(s[13].integer));
}

// ---- global motion: warps follow a seed

VekiSize reference(const Call& c) {
    Random random(static_cast<std::uint64_t>(c["warp"]));
    const auto side = [&] {
        return static_cast<Vek32s>(random() % 4 == 0 ? draw(random, 1, 15) : draw(random, 16, 80));
    };
    const Vek32s width = side();
    return {width, side()};
}
void makeWarp(Random&, const Call& c, void* spec, int) {
    Random random(static_cast<std::uint64_t>(c["warp"]) + 1);
    const int reach = static_cast<int>(random() % 16 == 0 ? 1 << random() % 31 : 1 << random() % 7);
    Vek32s d[6];
    for (auto& v : d) v = static_cast<Vek32s>(draw(random, -reach, reach));
    const auto upTo = [&](int most) { return static_cast<Vek32s>(draw(random, 0, most)); };
    const VekiSize vop = {1 + upTo(120), 1 + upTo(120)};
    vekiWarpInit_MPEG4(static_cast<Vek8u*>(spec), d, d + 3, upTo(3), upTo(3), vop, reference(c), upTo(1), upTo(1));
}
Argument warp() { return in<Vek8u>("pSpec", count(384)).seeded("warp").filled(makeWarp); }
Extent plane(bool chroma) {
    return [=](const Call& c) {
        const VekiSize r = reference(c);
        return chroma ? Rect{0, 0, (r.width + 1) / 2, (r.height + 1) / 2} : Rect{0, 0, r.width, r.height};
    };
}
Argument checkedStep(const char* of) { return step(of).atLeastWidthOf(region("roiSize")); }
Argument source(const char* name, bool chroma) { return in<Vek8u>(name, plane(chroma)); }
Argument result(const char* name) { return out<Vek8u>(name, region("roiSize")); }
Argument position(const char* name) {
    return integer(name, [](Random& random, const Call&) {
        return random() % 16 == 0 ? draw(random, INT32_MIN, INT32_MAX) : draw(random, -20, 80);
    });
}
// Bad ones are tested by hand: a row's failures do not know of each other, and here a step's limit is the width.
Argument roiSize() { return size("roiSize", {{16, 16}, {16, 16}, {8, 8}, {16, 8}, {1, 1}, {7, 3}, {9, 2}, {33, 5}}); }
Argument vopSide(const char* name) {
    return size(name, {{1, 1}, {16, 16}, {176, 144}, {75, 33}, {8192, 8192}, {8192, 1}})
        .badSize({{0, 1}, {1, 0}, {8193, 1}, {1, 8193}, {-1, -1}, {INT32_MIN, 1}}, vekStsErrSize);
}
Argument differentials(const char* name) {
    return in<Vek32s>(name, [](const Call& c) { return Rect{0, 0, static_cast<int>(c["numWarpingPoints"]), 1}; });
}

[[maybe_unused]] const bool kRows[] = {
    row("vekiCopy16x16QP_MPEG4_8u_C1R", &vekiCopy16x16QP_MPEG4_8u_C1R, quarterSampleCopy(16, 16)),
    row("vekiCopy16x8QP_MPEG4_8u_C1R", &vekiCopy16x8QP_MPEG4_8u_C1R, quarterSampleCopy(16, 8)),
    row("vekiCopy8x8QP_MPEG4_8u_C1R", &vekiCopy8x8QP_MPEG4_8u_C1R, quarterSampleCopy(8, 8)),
    row("vekiInterpolateAverage16x16QP_MPEG4_8u_C1IR", &vekiInterpolateAverage16x16QP_MPEG4_8u_C1IR,
        quarterSampleAverage(16, 16)),
    row("vekiInterpolateAverage16x8QP_MPEG4_8u_C1IR", &vekiInterpolateAverage16x8QP_MPEG4_8u_C1IR,
        quarterSampleAverage(16, 8)),
    row("vekiInterpolateAverage8x8QP_MPEG4_8u_C1IR", &vekiInterpolateAverage8x8QP_MPEG4_8u_C1IR,
        quarterSampleAverage(8, 8)),
    recordRow("vekiOBMC8x8HP_H263_8u_C1R", overlapped(), callOverlapped),
    row("vekiWarpGetSize_MPEG4", &vekiWarpGetSize_MPEG4, {out<Vek32u>("pSpecSize", count(1))}),
    row("vekiWarpInit_MPEG4", &vekiWarpInit_MPEG4,
        {inOut<Vek8u>("pSpec", count(384)), differentials("pDU"), differentials("pDV"),
         range("numWarpingPoints", 1, 3).bad({-1, 4, INT32_MIN, INT32_MAX}, vekStsErrOutOfRange),
         range("warpingAccuracy", 0, 3).bad({-1, 4, INT32_MIN, INT32_MAX}, vekStsErrOutOfRange), vopSide("vopSize"),
         vopSide("refSize"), anyInt("roundControl"), anyInt("quarterSampleFlag")}),
    row("vekiWarpLuma_MPEG4_8u_C1R", &vekiWarpLuma_MPEG4_8u_C1R,
        {source("pSrc", false), checkedStep("pSrc"), result("pDst"), checkedStep("pDst"), position("dstX"),
         position("dstY"), roiSize(), warp()}),
    row("vekiWarpChroma_MPEG4_8u_P2R", &vekiWarpChroma_MPEG4_8u_P2R,
        {source("pSrcCb", true), checkedStep("pSrcCb"), source("pSrcCr", true), checkedStep("pSrcCr"), result("pDstCb"),
         checkedStep("pDstCb"), result("pDstCr"), checkedStep("pDstCr"), position("dstX"), position("dstY"), roiSize(),
         warp()}),
    row("vekiWarpAverageMV_MPEG4_16s", &vekiWarpAverageMV_MPEG4_16s,
        {position("mbX"), position("mbY"), range("fcode", 1, 7).bad({0, 8, INT32_MIN, INT32_MAX}, vekStsErrOutOfRange),
         out<Vek16s>("pMV", count(2)), warp()}),
};

}  // namespace
}  // namespace catalogue
