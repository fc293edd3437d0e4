// Rows of block matching.
#include "catalogue.h"
#include "extents.h"

namespace catalogue {
namespace {

Extent wholeGroups(int extra) {
    return [=](const Call& c) { return Rect{0, 0, static_cast<int>(c["count"] & ~7) + extra, 1}; };
}

template <class T>
std::vector<Argument> sad(int width, int height) {
    return {in<T>("pSrc", block(width, height)),
            step("pSrc"),
            in<T>("pRef", atMcType(width, height, "mcType")),
            step("pRef"),
            out<Vek32s>("pResult", count(1)),
            anyInt("mcType")};
}
std::vector<Argument> sadFull(int width, int height) {
    return {in<Vek8u>("pSrc", block(width, height)), step("pSrc"), in<Vek8u>("pRef", block(width, height)),
            step("pRef"), out<Vek32s>("pResult", count(1))};
}
std::vector<Argument> search(int width, int height) {
    const Extent reference = [=](const Call& c) {
        return Rect{0, 0, static_cast<int>(c["count"] & ~7) + width - 1, height};
    };
    return {in<Vek8u>("pSrc", block(width, height)),
            step("pSrc"),
            in<Vek8u>("pRef", reference),
            step("pRef"),
            out<Vek16u>("pDstSAD", wholeGroups(0)),
            range("count", 8, 70).bad({7, 1, 0, -1, -8, INT32_MIN}, vekStsErrSize)};
}
std::vector<Argument> searchMinimum(int width, int height) {
    auto arguments = search(width, height);
    arguments.push_back(out<Vek32u>("pMinIndex", count(1)));
    return arguments;
}

[[maybe_unused]] const bool kRows[] = {
    row("vekiSAD16x16_8u32s", &vekiSAD16x16_8u32s, sad<Vek8u>(16, 16)),
    row("vekiSAD16x8_8u32s_C1R", &vekiSAD16x8_8u32s_C1R, sad<Vek8u>(16, 8)),
    row("vekiSAD8x8_8u32s_C1R", &vekiSAD8x8_8u32s_C1R, sad<Vek8u>(8, 8)),
    row("vekiSAD16x16_16u32s_C1R", &vekiSAD16x16_16u32s_C1R, sad<Vek16u>(16, 16)),
    row("vekiSAD8x8_16u32s_C1R", &vekiSAD8x8_16u32s_C1R, sad<Vek16u>(8, 8)),
    row("vekiSAD4x4_16u32s_C1R", &vekiSAD4x4_16u32s_C1R, sad<Vek16u>(4, 4)),
    row("vekiSAD4x4_8u32s", &vekiSAD4x4_8u32s, sadFull(4, 4)),
    row("vekiSAD4x8_8u32s_C1R", &vekiSAD4x8_8u32s_C1R, sadFull(4, 8)),
    row("vekiSAD8x4_8u32s_C1R", &vekiSAD8x4_8u32s_C1R, sadFull(8, 4)),
    row("vekiSAD8x16_8u32s_C1R", &vekiSAD8x16_8u32s_C1R, sadFull(8, 16)),
    row("vekiSSD8x8_8u32s_C1R", &vekiSSD8x8_8u32s_C1R, sad<Vek8u>(8, 8)),
    row("vekiSSD4x4_8u32s_C1R", &vekiSSD4x4_8u32s_C1R, sad<Vek8u>(4, 4)),
    row("vekiSAD4x4xN_8u16u_C1R", &vekiSAD4x4xN_8u16u_C1R, search(4, 4)),
    row("vekiSAD4x4xNI_8u16u_C1R", &vekiSAD4x4xNI_8u16u_C1R, searchMinimum(4, 4)),
    row("vekiSAD8x8xN_8u16u_C1R", &vekiSAD8x8xN_8u16u_C1R, search(8, 8)),
    row("vekiSAD8x8xNI_8u16u_C1R", &vekiSAD8x8xNI_8u16u_C1R, searchMinimum(8, 8)),
    row("vekiSAD16x16xN_8u16u_C1R", &vekiSAD16x16xN_8u16u_C1R, search(16, 16)),
    row("vekiSAD16x16xNI_8u16u_C1R", &vekiSAD16x16xNI_8u16u_C1R, searchMinimum(16, 16)),
    row("vekiSAD8x8_8u32s_C2R", &vekiSAD8x8_8u32s_C2R,
        {in<Vek8u>("pSrc", block(16, 8)), step("pSrc").atLeast(1), in<Vek8u>("pRef", atMcType(16, 8, "mcType", 2)),
         step("pRef").atLeast(1), out<Vek32s>("pResultU", count(1)), out<Vek32s>("pResultV", count(1)),
         anyInt("mcType")}),
};

}  // namespace
}  // namespace catalogue
