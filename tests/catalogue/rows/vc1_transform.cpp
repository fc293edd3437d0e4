// Rows of the VC-1 transforms.
#include "catalogue.h"

namespace catalogue {
namespace {

Argument hint() {
    return size("sizeNZ", {{1, 1},
                           {0, 0},
                           {-4, 1},
                           {2, 1},
                           {1, 2},
                           {2, 2},
                           {2, 3},
                           {3, 2},
                           {4, 4},
                           {4, 1},
                           {1, 5},
                           {5, 4},
                           {4, 5},
                           {5, 5},
                           {8, 4},
                           {4, 8},
                           {8, 8},
                           {8, 8},
                           {100, 100}});
}
// The coefficients that a hint lets the inverse transform read.
Extent coded(int width, int height) {
    return [=](const Call& c) {
        const VekiSize s = c.size("sizeNZ");
        if (s.width < 2 && s.height < 2) return Rect{0, 0, 1, 1};
        if (width == height && s.width <= 2 && s.height <= 2) return Rect{0, 0, 2, 2};
        if (s.width <= 4 && s.height <= 4) return Rect{0, 0, 4, 4};
        return Rect{0, 0, width, height};
    };
}

std::vector<Argument> inverse(int width, int height) {
    return {in<Vek16s>("pSrc", coded(width, height)), step("pSrc"), out<Vek16s>("pDst", block(width, height)),
            step("pDst"), hint()};
}
std::vector<Argument> inverseInPlace(int width, int height) {
    return {inOut<Vek16s>("pSrcDst", block(width, height)), step("pSrcDst"), hint()};
}
std::vector<Argument> forward(int width, int height) {
    return {in<Vek16s>("pSrc", block(width, height)), step("pSrc"), out<Vek16s>("pDst", block(width, height)),
            step("pDst")};
}
std::vector<Argument> forwardInPlace(int width, int height) {
    return {inOut<Vek16s>("pSrcDst", block(width, height)), step("pSrcDst")};
}

[[maybe_unused]] const bool kRows[] = {
    row("vekiTransform8x8Inv_VC1_16s_C1R", &vekiTransform8x8Inv_VC1_16s_C1R, inverse(8, 8)),
    row("vekiTransform8x4Inv_VC1_16s_C1R", &vekiTransform8x4Inv_VC1_16s_C1R, inverse(8, 4)),
    row("vekiTransform4x8Inv_VC1_16s_C1R", &vekiTransform4x8Inv_VC1_16s_C1R, inverse(4, 8)),
    row("vekiTransform4x4Inv_VC1_16s_C1R", &vekiTransform4x4Inv_VC1_16s_C1R, inverse(4, 4)),
    row("vekiTransform8x8Inv_VC1_16s_C1IR", &vekiTransform8x8Inv_VC1_16s_C1IR, inverseInPlace(8, 8)),
    row("vekiTransform8x4Inv_VC1_16s_C1IR", &vekiTransform8x4Inv_VC1_16s_C1IR, inverseInPlace(8, 4)),
    row("vekiTransform4x8Inv_VC1_16s_C1IR", &vekiTransform4x8Inv_VC1_16s_C1IR, inverseInPlace(4, 8)),
    row("vekiTransform4x4Inv_VC1_16s_C1IR", &vekiTransform4x4Inv_VC1_16s_C1IR, inverseInPlace(4, 4)),
    row("vekiTransform8x8Fwd_VC1_16s_C1R", &vekiTransform8x8Fwd_VC1_16s_C1R, forward(8, 8)),
    row("vekiTransform8x4Fwd_VC1_16s_C1R", &vekiTransform8x4Fwd_VC1_16s_C1R, forward(8, 4)),
    row("vekiTransform4x8Fwd_VC1_16s_C1R", &vekiTransform4x8Fwd_VC1_16s_C1R, forward(4, 8)),
    row("vekiTransform4x4Fwd_VC1_16s_C1R", &vekiTransform4x4Fwd_VC1_16s_C1R, forward(4, 4)),
    row("vekiTransform8x8Fwd_VC1_16s_C1IR", &vekiTransform8x8Fwd_VC1_16s_C1IR, forwardInPlace(8, 8)),
    row("vekiTransform8x4Fwd_VC1_16s_C1IR", &vekiTransform8x4Fwd_VC1_16s_C1IR, forwardInPlace(8, 4)),
    row("vekiTransform4x8Fwd_VC1_16s_C1IR", &vekiTransform4x8Fwd_VC1_16s_C1IR, forwardInPlace(4, 8)),
    row("vekiTransform4x4Fwd_VC1_16s_C1IR", &vekiTransform4x4Fwd_VC1_16s_C1IR, forwardInPlace(4, 4)),
};

}  // namespace
}  // namespace catalogue
