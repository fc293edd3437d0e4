// Rows of the coefficient scans, the zero count, variance, deviation, edges and smoothing.
#include "catalogue.h"
#include "extents.h"

namespace catalogue {
namespace {

// Mostly zeros, as in quantized blocks.
std::int64_t sparse(Random& random, const Call&) { return random() % 4 == 0 ? draw(random, -32768, 32767) : 0; }

template <class T>
std::vector<Argument> varMean() {
    return {in<T>("pSrc", block(8, 8)), step("pSrc"), out<Vek32s>("pVar", count(1)), out<Vek32s>("pMean", count(1))};
}
std::vector<Argument> varMeanDiff(int height) {
    return {in<Vek8u>("pSrc", block(16, height)),
            step("pSrc"),
            in<Vek8u>("pRef", atMcType(16, height, "mcType")),
            step("pRef"),
            out<Vek32s>("pVar", count(1)),
            out<Vek32s>("pMean", count(1)),
            anyInt("mcType")};
}
std::vector<Argument> meanAbsDev(int size) {
    return {in<Vek8u>("pSrc", block(size, size)), step("pSrc"), out<Vek32s>("pDev", count(1))};
}
// Around the level of the content's own differences, and around the number of pairs that exceed it.
Argument edgeLevel() {
    return integer("edgeLevel", [](Random& random, const Call&) {
        return random() % 8 == 0 ? draw(random, INT32_MIN, INT32_MAX) : draw(random, -1, random() % 2 == 0 ? 8 : 256);
    });
}
Argument edgeCount() {
    return integer("edgeCount", [](Random& random, const Call&) {
        return random() % 8 == 0 ? draw(random, INT32_MIN, INT32_MAX) : draw(random, 0, 481);
    });
}

[[maybe_unused]] const bool kRows[] = {
    row("vekiScanFwd_16s_C1", &vekiScanFwd_16s_C1,
        {in<Vek16s>("pSrc", count(64)).of(sparse), out<Vek16s>("pDst", count(64)),
         range("countNonZero", 1, 64).bad({0, -1, 65, INT32_MIN, INT32_MAX}, vekStsErrOutOfRange),
         range("scan", -1, 4)}),
    row("vekiScanInv_16s_C1", &vekiScanInv_16s_C1,
        {in<Vek16s>("pSrc",
                    [](const Call& c) {
                        return Rect{0, 0, static_cast<int>(c["indxLastNonZero"]) + 1, 1};
                    }),
         out<Vek16s>("pDst", count(64)),
         range("indxLastNonZero", 0, 63).bad({-1, 64, INT32_MIN, INT32_MAX}, vekStsErrOutOfRange),
         range("scan", -1, 4)}),
    row("vekiCountZeros8x8_16s_C1", &vekiCountZeros8x8_16s_C1,
        {in<Vek16s>("pSrc", count(64)).of(sparse), out<Vek32u>("pCount", count(1))}),
    row("vekiVarMean8x8_8u32s_C1R", &vekiVarMean8x8_8u32s_C1R, varMean<Vek8u>()),
    row("vekiVarSum8x8_8u32s_C1R", &vekiVarSum8x8_8u32s_C1R, varMean<Vek8u>()),
    row("vekiVarMean8x8_16s32s_C1R", &vekiVarMean8x8_16s32s_C1R, varMean<Vek16s>()),
    row("vekiVarSum8x8_16s32s_C1R", &vekiVarSum8x8_16s32s_C1R, varMean<Vek16s>()),
    row("vekiVariance16x16_8u32s", &vekiVariance16x16_8u32s,
        {in<Vek8u>("pSrc", block(16, 16)), step("pSrc"), out<Vek32s>("pVar", count(1))}),
    row("vekiVarMeanDiff16x16_8u32s_C1R", &vekiVarMeanDiff16x16_8u32s_C1R, varMeanDiff(16)),
    row("vekiVarMeanDiff16x8_8u32s_C1R", &vekiVarMeanDiff16x8_8u32s_C1R, varMeanDiff(8)),
    row("vekiMeanAbsDev8x8_8u32s_C1R", &vekiMeanAbsDev8x8_8u32s_C1R, meanAbsDev(8)),
    row("vekiMeanAbsDev16x16_8u32s_C1R", &vekiMeanAbsDev16x16_8u32s_C1R, meanAbsDev(16)),
    row("vekiEdgeDetect16x16_8u32s_C1R", &vekiEdgeDetect16x16_8u32s_C1R,
        {in<Vek8u>("pSrc", block(16, 16)), step("pSrc"), edgeLevel(), edgeCount(), out<Vek32s>("pIsEdge", count(1))}),
    row("vekiFilterDenoiseSmooth_8u_C1R", &vekiFilterDenoiseSmooth_8u_C1R,
        {in<Vek8u>("pSrc", region("roiSize")), step("pSrc"), out<Vek8u>("pDst", region("roiSize")), step("pDst"),
         size("roiSize", {{1, 3}, {2, 4}, {9, 3}, {10, 5}, {17, 7}, {31, 20}, {40, 40}, {64, 16}, {75, 9}})
             .badSize({{0, 4}, {-5, 4}, {16, 0}, {16, -4}}, vekStsErrSize)
             .badSize({{1, 2}, {1, 1}}, vekStsErrUnsupported)}),
};

}  // namespace
}  // namespace catalogue
