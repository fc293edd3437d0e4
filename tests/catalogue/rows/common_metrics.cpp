// Rows of block matching and of the other block metrics.
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

// 16-bit samples of a picture of 8 to 16 bits, noise or extremes: the same for both blocks of a call.
Argument ofSomeDepth(Argument samples) {
    return samples.of([](Random& random, const Call& c) {
        const auto depth = 8 + c["depth"] / 2 % 9;
        const std::int64_t high = (std::int64_t{1} << depth) - 1;
        return c["depth"] % 2 == 0 ? draw(random, 0, high) : random() % 2 == 0 ? high : 0;
    });
}
std::vector<Argument> satd16(int size) {
    return {ofSomeDepth(in<Vek16u>("pSrc", block(size, size)).seeded("depth")), step("pSrc"),
            ofSomeDepth(in<Vek16u>("pRef", block(size, size))), step("pRef"), out<Vek32s>("pResult", count(1))};
}
template <class T>
std::vector<Argument> sums4x4(int size, const char* name) {
    return {in<Vek8u>("pSrc", block(size, size)), step("pSrc"), in<Vek8u>("pRef", block(size, size)), step("pRef"),
            out<T>(name, count(size * size / 16))};
}
std::vector<Argument> frameField(Argument samples) {
    return {samples, step("pSrc"), out<Vek32s>("pFrame", count(1)), out<Vek32s>("pField", count(1))};
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
    row("vekiSATD4x4_8u32s_C1R", &vekiSATD4x4_8u32s_C1R, sadFull(4, 4)),
    row("vekiSATD8x8_8u32s_C1R", &vekiSATD8x8_8u32s_C1R, sadFull(8, 8)),
    row("vekiSATD16x16_8u32s_C1R", &vekiSATD16x16_8u32s_C1R, sadFull(16, 16)),
    row("vekiSATD4x4_16u32s_C1R", &vekiSATD4x4_16u32s_C1R, satd16(4)),
    row("vekiSATD8x8_16u32s_C1R", &vekiSATD8x8_16u32s_C1R, satd16(8)),
    row("vekiSATD16x16_16u32s_C1R", &vekiSATD16x16_16u32s_C1R, satd16(16)),
    row("vekiSATD8x8T8_8u32s_C1R", &vekiSATD8x8T8_8u32s_C1R, sad<Vek8u>(8, 8)),
    row("vekiSATD16x8T8_8u32s_C1R", &vekiSATD16x8T8_8u32s_C1R, sad<Vek8u>(16, 8)),
    row("vekiSATD16x16T8_8u32s_C1R", &vekiSATD16x16T8_8u32s_C1R, sad<Vek8u>(16, 16)),
    row("vekiSAD16x16Blocks4x4_8u16u_C1R", &vekiSAD16x16Blocks4x4_8u16u_C1R, sums4x4<Vek16u>(16, "pSAD")),
    row("vekiSumsDiff8x8Blocks4x4_8u16s_C1R", &vekiSumsDiff8x8Blocks4x4_8u16s_C1R, sums4x4<Vek16s>(8, "pSums")),
    row("vekiSumsDiff16x16Blocks4x4_8u16s_C1R", &vekiSumsDiff16x16Blocks4x4_8u16s_C1R, sums4x4<Vek16s>(16, "pSums")),
    row("vekiSADFrameField16x16_8u32s_C1R", &vekiSADFrameField16x16_8u32s_C1R,
        frameField(in<Vek8u>("pSrc", block(16, 16)))),
    row("vekiSADFrameField16x16_16s32s_C1R", &vekiSADFrameField16x16_16s32s_C1R,
        frameField(in<Vek16s>("pSrc", block(16, 16)).seeded("amplitude").of([](Random& random, const Call& c) {
            const std::int64_t amplitude = std::int64_t{255} << c["amplitude"] % 8;  // 255 to 32640
            return c["amplitude"] % 16 == 15 ? (random() % 2 == 0 ? -32768 : 32767)
                                             : draw(random, -amplitude, amplitude);
        }))),
};

}  // namespace
}  // namespace catalogue
