// Rows of block prediction: copies, averages, motion compensation with residual.
#include "catalogue.h"
#include "extents.h"

namespace catalogue {
namespace {

std::vector<Argument> copyFrom(Extent source, int width, int height) {
    return {in<Vek8u>("pSrc", source), step("pSrc"), out<Vek8u>("pDst", block(width, height)), step("pDst")};
}
std::vector<Argument> averageInto(Extent source, int width, int height) {
    return {in<Vek8u>("pSrc", source), step("pSrc"), inOut<Vek8u>("pSrcDst", block(width, height)), step("pSrcDst")};
}
std::vector<Argument> withAcc(std::vector<Argument> arguments) {
    arguments.push_back(anyInt("acc"));
    arguments.push_back(anyInt("rounding"));
    return arguments;
}
std::vector<Argument> averageOf(int width, int height) {
    return {in<Vek8u>("pSrc1", block(width, height)), step("pSrc1"),
            in<Vek8u>("pSrc2", block(width, height)), step("pSrc2"),
            out<Vek8u>("pDst", block(width, height)), step("pDst")};
}
std::vector<Argument> mc(int width, int height, int next = 1) {
    return {in<Vek8u>("pSrcRef", atMcType(width, height, "mcType", next)),
            step("pSrcRef"),
            in<Vek16s>("pSrcYData", block(width, height)),
            step("pSrcYData"),
            out<Vek8u>("pDst", block(width, height)),
            step("pDst"),
            anyInt("mcType"),
            anyInt("roundControl")};
}
std::vector<Argument> mcBoth(int width, int height, int next = 1) {
    return {in<Vek8u>("pSrcRefF", atMcType(width, height, "mcTypeF", next)),
            step("pSrcRefF"),
            anyInt("mcTypeF"),
            in<Vek8u>("pSrcRefB", atMcType(width, height, "mcTypeB", next)),
            step("pSrcRefB"),
            anyInt("mcTypeB"),
            in<Vek16s>("pSrcYData", block(width, height)),
            step("pSrcYData"),
            out<Vek8u>("pDst", block(width, height)),
            step("pDst"),
            anyInt("roundControl")};
}
std::vector<Argument> mcPlanes(int height) {
    return {in<Vek8u>("pSrcRef", atMcType(16, height, "mcType", 2)),
            step("pSrcRef"),
            in<Vek16s>("pSrcU", block(8, height)),
            in<Vek16s>("pSrcV", block(8, height)),
            step({"pSrcU", "pSrcV"}),
            out<Vek8u>("pDst", block(16, height)),
            step("pDst"),
            anyInt("mcType"),
            anyInt("roundControl")};
}
std::vector<Argument> mcPlanesBoth(int height) {
    return {in<Vek8u>("pSrcRefF", atMcType(16, height, "mcTypeF", 2)),
            step("pSrcRefF"),
            anyInt("mcTypeF"),
            in<Vek8u>("pSrcRefB", atMcType(16, height, "mcTypeB", 2)),
            step("pSrcRefB"),
            anyInt("mcTypeB"),
            in<Vek16s>("pSrcU", block(8, height)),
            in<Vek16s>("pSrcV", block(8, height)),
            step({"pSrcU", "pSrcV"}),
            out<Vek8u>("pDst", block(16, height)),
            step("pDst"),
            anyInt("roundControl")};
}

[[maybe_unused]] const bool kRows[] = {
    row("vekiCopy8x8_8u_C1R", &vekiCopy8x8_8u_C1R, copyFrom(block(8, 8), 8, 8)),
    row("vekiCopy16x16_8u_C1R", &vekiCopy16x16_8u_C1R, copyFrom(block(16, 16), 16, 16)),
    row("vekiCopy16x16HP_8u_C1R", &vekiCopy16x16HP_8u_C1R, withAcc(copyFrom(atAcc(16, 16), 16, 16))),
    row("vekiCopy16x8HP_8u_C1R", &vekiCopy16x8HP_8u_C1R, withAcc(copyFrom(atAcc(16, 8), 16, 8))),
    row("vekiCopy8x8HP_8u_C1R", &vekiCopy8x8HP_8u_C1R, withAcc(copyFrom(atAcc(8, 8), 8, 8))),
    row("vekiCopy8x4HP_8u_C1R", &vekiCopy8x4HP_8u_C1R, withAcc(copyFrom(atAcc(8, 4), 8, 4))),
    row("vekiAverage8x8_8u_C1R", &vekiAverage8x8_8u_C1R, averageOf(8, 8)),
    row("vekiAverage16x16_8u_C1R", &vekiAverage16x16_8u_C1R, averageOf(16, 16)),
    row("vekiAverage8x8_8u_C1IR", &vekiAverage8x8_8u_C1IR, averageInto(block(8, 8), 8, 8)),
    row("vekiAverage16x16_8u_C1IR", &vekiAverage16x16_8u_C1IR, averageInto(block(16, 16), 16, 16)),
    row("vekiInterpolateAverage16x16_8u_C1IR", &vekiInterpolateAverage16x16_8u_C1IR,
        withAcc(averageInto(atAcc(16, 16), 16, 16))),
    row("vekiInterpolateAverage16x8_8u_C1IR", &vekiInterpolateAverage16x8_8u_C1IR,
        withAcc(averageInto(atAcc(16, 8), 16, 8))),
    row("vekiInterpolateAverage8x8_8u_C1IR", &vekiInterpolateAverage8x8_8u_C1IR,
        withAcc(averageInto(atAcc(8, 8), 8, 8))),
    row("vekiInterpolateAverage8x4_8u_C1IR", &vekiInterpolateAverage8x4_8u_C1IR,
        withAcc(averageInto(atAcc(8, 4), 8, 4))),
    row("vekiMC16x16_8u_C1", &vekiMC16x16_8u_C1, mc(16, 16)),
    row("vekiMC16x8_8u_C1", &vekiMC16x8_8u_C1, mc(16, 8)),
    row("vekiMC16x4_8u_C1", &vekiMC16x4_8u_C1, mc(16, 4)),
    row("vekiMC8x16_8u_C1", &vekiMC8x16_8u_C1, mc(8, 16)),
    row("vekiMC8x8_8u_C1", &vekiMC8x8_8u_C1, mc(8, 8)),
    row("vekiMC8x4_8u_C1", &vekiMC8x4_8u_C1, mc(8, 4)),
    row("vekiMC4x8_8u_C1", &vekiMC4x8_8u_C1, mc(4, 8)),
    row("vekiMC4x4_8u_C1", &vekiMC4x4_8u_C1, mc(4, 4)),
    row("vekiMC4x2_8u_C1", &vekiMC4x2_8u_C1, mc(4, 2)),
    row("vekiMC2x4_8u_C1", &vekiMC2x4_8u_C1, mc(2, 4)),
    row("vekiMC2x2_8u_C1", &vekiMC2x2_8u_C1, mc(2, 2)),
    row("vekiMC16x8UV_8u_C1", &vekiMC16x8UV_8u_C1, mc(16, 8, 2)),
    row("vekiMC16x16B_8u_C1", &vekiMC16x16B_8u_C1, mcBoth(16, 16)),
    row("vekiMC16x8B_8u_C1", &vekiMC16x8B_8u_C1, mcBoth(16, 8)),
    row("vekiMC16x4B_8u_C1", &vekiMC16x4B_8u_C1, mcBoth(16, 4)),
    row("vekiMC8x16B_8u_C1", &vekiMC8x16B_8u_C1, mcBoth(8, 16)),
    row("vekiMC8x8B_8u_C1", &vekiMC8x8B_8u_C1, mcBoth(8, 8)),
    row("vekiMC8x4B_8u_C1", &vekiMC8x4B_8u_C1, mcBoth(8, 4)),
    row("vekiMC4x8B_8u_C1", &vekiMC4x8B_8u_C1, mcBoth(4, 8)),
    row("vekiMC4x4B_8u_C1", &vekiMC4x4B_8u_C1, mcBoth(4, 4)),
    row("vekiMC4x2B_8u_C1", &vekiMC4x2B_8u_C1, mcBoth(4, 2)),
    row("vekiMC2x4B_8u_C1", &vekiMC2x4B_8u_C1, mcBoth(2, 4)),
    row("vekiMC2x2B_8u_C1", &vekiMC2x2B_8u_C1, mcBoth(2, 2)),
    row("vekiMC16x8BUV_8u_C1", &vekiMC16x8BUV_8u_C1, mcBoth(16, 8, 2)),
    row("vekiMC8x8_16s8u_P2C2R", &vekiMC8x8_16s8u_P2C2R, mcPlanes(8)),
    row("vekiMC8x4_16s8u_P2C2R", &vekiMC8x4_16s8u_P2C2R, mcPlanes(4)),
    row("vekiMC8x8B_16s8u_P2C2R", &vekiMC8x8B_16s8u_P2C2R, mcPlanesBoth(8)),
    row("vekiMC8x4B_16s8u_P2C2R", &vekiMC8x4B_16s8u_P2C2R, mcPlanesBoth(4)),
    row("vekiAdd8x8_16s8u_C1IRS", &vekiAdd8x8_16s8u_C1IRS,
        {in<Vek16s>("pSrc", block(8, 8)), step("pSrc"), inOut<Vek8u>("pSrcDst", block(8, 8)), step("pSrcDst")}),
    row("vekiAdd8x8HP_16s8u_C1RS", &vekiAdd8x8HP_16s8u_C1RS,
        withAcc({in<Vek16s>("pSrc", block(8, 8)), step("pSrc"), in<Vek8u>("pRef", atAcc(8, 8)), step("pRef"),
                 out<Vek8u>("pDst", block(8, 8)), step("pDst")})),
    row("vekiAddC8x8_16s8u_C1IR", &vekiAddC8x8_16s8u_C1IR,
        {range("value", -32768, 32767), inOut<Vek8u>("pSrcDst", block(8, 8)), step("pSrcDst")}),
};

}  // namespace
}  // namespace catalogue
