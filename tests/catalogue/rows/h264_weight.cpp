// Rows of H.264 weighted prediction. The sizes that the 8-bit forms refuse are in tests/h264/weight_test.cpp: whether a
// step is too short depends on the refused width.
#include "catalogue.h"

namespace catalogue {
namespace {

Argument blockSize() {
    std::vector<VekiSize> all;
    for (const int width : {2, 4, 8, 16})
        for (const int height : {2, 4, 8, 16}) all.push_back({width, height});
    return size("roiSize", all);
}
// The standard's values, and now and then any.
Argument mostly(const char* name, int low, int high) {
    return integer(name, [=](Random& random, const Call&) {
        return random() % 16 == 0 ? draw(random, INT32_MIN, INT32_MAX) : draw(random, low, high);
    });
}
Argument logWD() {
    return integer("logWD", [](Random& random, const Call&) {
        return random() % 16 == 0 ? draw(random, 0, UINT32_MAX) : draw(random, 0, 7);
    });
}
// Some are on either side of what the sums of 32 bits hold.
Argument weight(const char* name) {
    const Choice usual = mostly(name, -128, 128).value;
    return integer(name, [=](Random& random, const Call& call) {
        return random() % 16 == 0 ? draw(random, -10000, 10000) : usual(random, call);
    });
}
Argument offset(const char* name) { return mostly(name, -128, 127); }
Argument source(const char* name) { return in<Vek8u>(name, region("roiSize")); }

std::vector<Argument> join(std::vector<Argument> a, const std::vector<Argument>& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}
const std::vector<Argument> kExplicitTwo = {logWD(),           weight("weight1"), offset("offset1"),
                                            weight("weight2"), offset("offset2"), blockSize()};
const std::vector<Argument> kImplicitTwo = {weight("weight1"), weight("weight2"), blockSize()};
const std::vector<Argument> kUniDir = {inOut<Vek8u>("pSrcDst", region("roiSize")),
                                       step("pSrcDst").atLeastWidth(),
                                       logWD(),
                                       weight("weight"),
                                       offset("offset"),
                                       blockSize()};
const std::vector<Argument> kThreePlanes = {source("pSrc1"), source("pSrc2"), out<Vek8u>("pDst", region("roiSize"))};
const std::vector<Argument> kTwoSteps = {step({"pSrc1", "pSrc2"}).atLeastWidth(), step("pDst").atLeastWidth()};
const std::vector<Argument> kThreeSteps = {step("pSrc1").atLeastWidth(), step("pSrc2").atLeastWidth(),
                                           step("pDst").atLeastWidth()};

// ---- 16-bit records: the record, then its fields

Extent blockOfRecord() {
    return [](const Call& c) {
        return Rect{0, 0, static_cast<int>(c["blockWidth"]), static_cast<int>(c["blockHeight"])};
    };
}
Argument samples(const char* name) {
    return in<Vek16u>(name, blockOfRecord()).of([](Random& random, const Call& c) {
        return draw(random, 0, random() % 16 == 0 ? 65535 : (1 << c["bitDepth"]) - 1);
    });
}
Argument side(const char* name) { return range(name, 2, 16).bad({-2, 0, 1, 17}, vekStsErrSize); }
std::vector<Argument> weightRecord(bool two, bool checksDepth) {
    const Argument depth = range("bitDepth", 8, 14);
    return {record("pParams"),
            samples("pSrc1"),
            two ? samples("pSrc2") : in<Vek16u>("pSrc2", rect(0, 0, 0, 0)),
            out<Vek16u>("pDst", blockOfRecord()),
            step("pSrc1").apart(),
            step("pSrc2").apart(),
            step("pDst"),
            side("blockWidth"),
            side("blockHeight"),
            checksDepth ? depth.bad({0, 7, 15, -1}, vekStsErrOutOfRange) : depth,
            logWD(),
            weight("weight1"),
            mostly("offset1", -8192, 8191),
            weight("weight2"),
            mostly("offset2", -8192, 8191)};
}
VekStatus callWithRecord(void* function, const Slot* s) {
    const auto n = [&](int i) { return static_cast<Vek32s>(s[i].integer); };
    const VekWeightParams16u params = {static_cast<const Vek16u*>(s[1].pointer),
                                       static_cast<const Vek16u*>(s[2].pointer),
                                       static_cast<Vek16u*>(s[3].pointer),
                                       n(4),
                                       n(5),
                                       n(6),
                                       n(7),
                                       n(8),
                                       n(9),
                                       static_cast<Vek32u>(s[10].integer),
                                       n(11),
                                       n(12),
                                       n(13),
                                       n(14)};
    return reinterpret_cast<VekStatus (*)(const VekWeightParams16u*)>(function)(s[0].integer != 0 ? &params : nullptr);
}

[[maybe_unused]] const bool kRows[] = {
    row("vekiUniDirWeightBlock_H264_8u_C1R", &vekiUniDirWeightBlock_H264_8u_C1R, kUniDir),
    row("vekiUniDirWeightBlock_H264_8u_C1IR", &vekiUniDirWeightBlock_H264_8u_C1IR, kUniDir),
    row("vekiBiDirWeightBlock_H264_8u_P2P1R", &vekiBiDirWeightBlock_H264_8u_P2P1R,
        join(join(kThreePlanes, kTwoSteps), kExplicitTwo)),
    row("vekiBiDirWeightBlock_H264_8u_P3P1R", &vekiBiDirWeightBlock_H264_8u_P3P1R,
        join(join(kThreePlanes, kThreeSteps), kExplicitTwo)),
    row("vekiBiDirWeightBlockImplicit_H264_8u_P2P1R", &vekiBiDirWeightBlockImplicit_H264_8u_P2P1R,
        join(join(kThreePlanes, kTwoSteps), kImplicitTwo)),
    row("vekiBiDirWeightBlockImplicit_H264_8u_P3P1R", &vekiBiDirWeightBlockImplicit_H264_8u_P3P1R,
        join(join(kThreePlanes, {step("pSrc1"), step("pSrc2"), step("pDst")}),
             {weight("weight1"), weight("weight2"),
              size("roiSize", {{16, 16}, {8, 8}, {4, 4}, {2, 2}, {1, 1}, {3, 5}, {13, 2}, {23, 7}, {40, 24}})})),
    row("vekiWeightedAverage_H264_8u_C1IR", &vekiWeightedAverage_H264_8u_C1IR,
        {source("pSrc1"), inOut<Vek8u>("pSrcDst", region("roiSize")), step({"pSrc1", "pSrcDst"}).atLeastWidth(),
         weight("weight1"), weight("weight2"), logWD(), offset("offset"), blockSize()}),
    recordRow("vekiBidir_H264_16u_P2P1R", weightRecord(true, false), callWithRecord),
    recordRow("vekiBidirWeight_H264_16u_P2P1R", weightRecord(true, true), callWithRecord),
    recordRow("vekiBidirWeightImplicit_H264_16u_P2P1R", weightRecord(true, true), callWithRecord),
    recordRow("vekiUnidirWeight_H264_16u_IP2P1R", weightRecord(false, true), callWithRecord),
};

}  // namespace
}  // namespace catalogue
