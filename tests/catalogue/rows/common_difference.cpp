// Rows of difference blocks.
#include "catalogue.h"
#include "extents.h"

namespace catalogue {
namespace {

std::vector<Argument> difference(int width, int height) {
    return {in<Vek8u>("pSrc", block(width, height)),
            step("pSrc"),
            in<Vek8u>("pRef", atMcType(width, height, "mcType")),
            step("pRef"),
            out<Vek16s>("pDst", block(width, height)),
            step("pDst"),
            anyInt("mcType"),
            anyInt("roundControl")};
}
template <class T>
std::vector<Argument> differenceFull(int size) {
    return {in<T>("pSrc", block(size, size)),       step("pSrc"), in<T>("pRef", block(size, size)), step("pRef"),
            out<Vek16s>("pDst", block(size, size)), step("pDst")};
}
std::vector<Argument> differenceBoth(int width, int height) {
    return {in<Vek8u>("pSrc", block(width, height)),
            step("pSrc"),
            in<Vek8u>("pRefF", atMcType(width, height, "mcTypeF")),
            step("pRefF"),
            anyInt("mcTypeF"),
            in<Vek8u>("pRefB", atMcType(width, height, "mcTypeB")),
            step("pRefB"),
            anyInt("mcTypeB"),
            out<Vek16s>("pDst", block(width, height)),
            step("pDst"),
            anyInt("roundControl")};
}

[[maybe_unused]] const bool kRows[] = {
    row("vekiDiff16x16_8u16s_C1R", &vekiDiff16x16_8u16s_C1R, difference(16, 16)),
    row("vekiDiff16x8_8u16s_C1R", &vekiDiff16x8_8u16s_C1R, difference(16, 8)),
    row("vekiDiff8x8_8u16s_C1R", &vekiDiff8x8_8u16s_C1R, difference(8, 8)),
    row("vekiDiff8x4_8u16s_C1R", &vekiDiff8x4_8u16s_C1R, difference(8, 4)),
    row("vekiDiff4x4_8u16s_C1R", &vekiDiff4x4_8u16s_C1R, differenceFull<Vek8u>(4)),
    row("vekiDiff4x4_16u16s_C1R", &vekiDiff4x4_16u16s_C1R, differenceFull<Vek16u>(4)),
    row("vekiDiff8x8_16u16s_C1R", &vekiDiff8x8_16u16s_C1R, differenceFull<Vek16u>(8)),
    row("vekiDiff16x16B_8u16s_C1R", &vekiDiff16x16B_8u16s_C1R, differenceBoth(16, 16)),
    row("vekiDiff16x8B_8u16s_C1R", &vekiDiff16x8B_8u16s_C1R, differenceBoth(16, 8)),
    row("vekiDiff8x8B_8u16s_C1R", &vekiDiff8x8B_8u16s_C1R, differenceBoth(8, 8)),
    row("vekiDiff8x4B_8u16s_C1R", &vekiDiff8x4B_8u16s_C1R, differenceBoth(8, 4)),
    row("vekiDiff8x8_8u16s_C2P2R", &vekiDiff8x8_8u16s_C2P2R,
        {in<Vek8u>("pSrc", block(16, 8)), step("pSrc"), in<Vek8u>("pRef", atMcType(16, 8, "mcType", 2)), step("pRef"),
         out<Vek16s>("pDstU", block(8, 8)), out<Vek16s>("pDstV", block(8, 8)), step({"pDstU", "pDstV"}),
         anyInt("mcType"), anyInt("roundControl")}),
    row("vekiDiff8x8B_8u16s_C2P2R", &vekiDiff8x8B_8u16s_C2P2R,
        {in<Vek8u>("pSrc", block(16, 8)), step("pSrc"), in<Vek8u>("pRefF", atMcType(16, 8, "mcTypeF", 2)),
         step("pRefF"), anyInt("mcTypeF"), in<Vek8u>("pRefB", atMcType(16, 8, "mcTypeB", 2)), step("pRefB"),
         anyInt("mcTypeB"), out<Vek16s>("pDstU", block(8, 8)), out<Vek16s>("pDstV", block(8, 8)),
         step({"pDstU", "pDstV"}), anyInt("roundControl")}),
};

}  // namespace
}  // namespace catalogue
