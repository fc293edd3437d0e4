// The exports of motion compensation with residual, and of residual addition.
#include "common/predict_plain.h"
#include "core/check.h"
#include "core/kernel.h"
#include "vekvc/common.h"
#if VEKVC_SIMD
#include "common/predict_simd.h"
#endif

using namespace vekvc;

namespace {

using plain::Residual;
using plain::ResidualPlanes;

constexpr int kSameComponent = 2;  // distance to the horizontal neighbour in interleaved chroma

template <int W, int H, int next = 1>
VekStatus mc(const Reference& ref, const Vek16s* pSrcYData, Vek32s srcYDataStep, Vek8u* pDst, Vek32s dstStep,
             Vek32s roundControl) {
    if (anyNull(ref.pixels, pSrcYData, pDst)) return vekStsErrNullPtr;
    return finish([&] {
        return kernel::predictAndAdd<W, H, next>(ref, roundingOf(roundControl), Residual{pSrcYData, srcYDataStep}, pDst,
                                                 dstStep);
    });
}

template <int W, int H, int next = 1>
VekStatus mcBoth(const Reference& f, const Reference& b, const Vek16s* pSrcYData, Vek32s srcYDataStep, Vek8u* pDst,
                 Vek32s dstStep, Vek32s roundControl) {
    if (anyNull(f.pixels, b.pixels, pSrcYData, pDst)) return vekStsErrNullPtr;
    kernel::predictAndAdd<W, H, next>(f, b, roundingOf(roundControl), Residual{pSrcYData, srcYDataStep}, pDst, dstStep);
    return vekStsOk;
}

template <int H>
VekStatus mcPlanes(const Reference& ref, const ResidualPlanes& residual, Vek8u* pDst, Vek32s dstStep,
                   Vek32s roundControl) {
    if (anyNull(ref.pixels, residual.u, residual.v, pDst)) return vekStsErrNullPtr;
    return finish([&] {
        return kernel::predictAndAdd<16, H, kSameComponent>(ref, roundingOf(roundControl), residual, pDst, dstStep);
    });
}

template <int H>
VekStatus mcPlanesBoth(const Reference& f, const Reference& b, const ResidualPlanes& residual, Vek8u* pDst,
                       Vek32s dstStep, Vek32s roundControl) {
    if (anyNull(f.pixels, b.pixels, residual.u, residual.v, pDst)) return vekStsErrNullPtr;
    kernel::predictAndAdd<16, H, kSameComponent>(f, b, roundingOf(roundControl), residual, pDst, dstStep);
    return vekStsOk;
}

}  // namespace

VekStatus vekiMC16x16_8u_C1(const Vek8u* pSrcRef, Vek32s srcStep, const Vek16s* pSrcYData, Vek32s srcYDataStep,
                            Vek8u* pDst, Vek32s dstStep, Vek32s mcType, Vek32s roundControl) {
    return mc<16, 16>({pSrcRef, srcStep, halfOfMcType(mcType)}, pSrcYData, srcYDataStep, pDst, dstStep, roundControl);
}

VekStatus vekiMC16x8_8u_C1(const Vek8u* pSrcRef, Vek32s srcStep, const Vek16s* pSrcYData, Vek32s srcYDataStep,
                           Vek8u* pDst, Vek32s dstStep, Vek32s mcType, Vek32s roundControl) {
    return mc<16, 8>({pSrcRef, srcStep, halfOfMcType(mcType)}, pSrcYData, srcYDataStep, pDst, dstStep, roundControl);
}

VekStatus vekiMC16x4_8u_C1(const Vek8u* pSrcRef, Vek32s srcStep, const Vek16s* pSrcYData, Vek32s srcYDataStep,
                           Vek8u* pDst, Vek32s dstStep, Vek32s mcType, Vek32s roundControl) {
    return mc<16, 4>({pSrcRef, srcStep, halfOfMcType(mcType)}, pSrcYData, srcYDataStep, pDst, dstStep, roundControl);
}

VekStatus vekiMC8x16_8u_C1(const Vek8u* pSrcRef, Vek32s srcStep, const Vek16s* pSrcYData, Vek32s srcYDataStep,
                           Vek8u* pDst, Vek32s dstStep, Vek32s mcType, Vek32s roundControl) {
    return mc<8, 16>({pSrcRef, srcStep, halfOfMcType(mcType)}, pSrcYData, srcYDataStep, pDst, dstStep, roundControl);
}

VekStatus vekiMC8x8_8u_C1(const Vek8u* pSrcRef, Vek32s srcStep, const Vek16s* pSrcYData, Vek32s srcYDataStep,
                          Vek8u* pDst, Vek32s dstStep, Vek32s mcType, Vek32s roundControl) {
    return mc<8, 8>({pSrcRef, srcStep, halfOfMcType(mcType)}, pSrcYData, srcYDataStep, pDst, dstStep, roundControl);
}

VekStatus vekiMC8x4_8u_C1(const Vek8u* pSrcRef, Vek32s srcStep, const Vek16s* pSrcYData, Vek32s srcYDataStep,
                          Vek8u* pDst, Vek32s dstStep, Vek32s mcType, Vek32s roundControl) {
    return mc<8, 4>({pSrcRef, srcStep, halfOfMcType(mcType)}, pSrcYData, srcYDataStep, pDst, dstStep, roundControl);
}

VekStatus vekiMC4x8_8u_C1(const Vek8u* pSrcRef, Vek32s srcStep, const Vek16s* pSrcYData, Vek32s srcYDataStep,
                          Vek8u* pDst, Vek32s dstStep, Vek32s mcType, Vek32s roundControl) {
    return mc<4, 8>({pSrcRef, srcStep, halfOfMcType(mcType)}, pSrcYData, srcYDataStep, pDst, dstStep, roundControl);
}

VekStatus vekiMC4x4_8u_C1(const Vek8u* pSrcRef, Vek32s srcStep, const Vek16s* pSrcYData, Vek32s srcYDataStep,
                          Vek8u* pDst, Vek32s dstStep, Vek32s mcType, Vek32s roundControl) {
    return mc<4, 4>({pSrcRef, srcStep, halfOfMcType(mcType)}, pSrcYData, srcYDataStep, pDst, dstStep, roundControl);
}

VekStatus vekiMC4x2_8u_C1(const Vek8u* pSrcRef, Vek32s srcStep, const Vek16s* pSrcYData, Vek32s srcYDataStep,
                          Vek8u* pDst, Vek32s dstStep, Vek32s mcType, Vek32s roundControl) {
    return mc<4, 2>({pSrcRef, srcStep, halfOfMcType(mcType)}, pSrcYData, srcYDataStep, pDst, dstStep, roundControl);
}

VekStatus vekiMC2x4_8u_C1(const Vek8u* pSrcRef, Vek32s srcStep, const Vek16s* pSrcYData, Vek32s srcYDataStep,
                          Vek8u* pDst, Vek32s dstStep, Vek32s mcType, Vek32s roundControl) {
    return mc<2, 4>({pSrcRef, srcStep, halfOfMcType(mcType)}, pSrcYData, srcYDataStep, pDst, dstStep, roundControl);
}

VekStatus vekiMC2x2_8u_C1(const Vek8u* pSrcRef, Vek32s srcStep, const Vek16s* pSrcYData, Vek32s srcYDataStep,
                          Vek8u* pDst, Vek32s dstStep, Vek32s mcType, Vek32s roundControl) {
    return mc<2, 2>({pSrcRef, srcStep, halfOfMcType(mcType)}, pSrcYData, srcYDataStep, pDst, dstStep, roundControl);
}

VekStatus vekiMC16x8UV_8u_C1(const Vek8u* pSrcRef, Vek32s srcStep, const Vek16s* pSrcYData, Vek32s srcYDataStep,
                             Vek8u* pDst, Vek32s dstStep, Vek32s mcType, Vek32s roundControl) {
    return mc<16, 8, kSameComponent>({pSrcRef, srcStep, halfOfMcType(mcType)}, pSrcYData, srcYDataStep, pDst, dstStep,
                                     roundControl);
}

VekStatus vekiMC16x16B_8u_C1(const Vek8u* pSrcRefF, Vek32s srcStepF, Vek32s mcTypeF, const Vek8u* pSrcRefB,
                             Vek32s srcStepB, Vek32s mcTypeB, const Vek16s* pSrcYData, Vek32s srcYDataStep, Vek8u* pDst,
                             Vek32s dstStep, Vek32s roundControl) {
    return mcBoth<16, 16>({pSrcRefF, srcStepF, halfOfMcType(mcTypeF)}, {pSrcRefB, srcStepB, halfOfMcType(mcTypeB)},
                          pSrcYData, srcYDataStep, pDst, dstStep, roundControl);
}

VekStatus vekiMC16x8B_8u_C1(const Vek8u* pSrcRefF, Vek32s srcStepF, Vek32s mcTypeF, const Vek8u* pSrcRefB,
                            Vek32s srcStepB, Vek32s mcTypeB, const Vek16s* pSrcYData, Vek32s srcYDataStep, Vek8u* pDst,
                            Vek32s dstStep, Vek32s roundControl) {
    return mcBoth<16, 8>({pSrcRefF, srcStepF, halfOfMcType(mcTypeF)}, {pSrcRefB, srcStepB, halfOfMcType(mcTypeB)},
                         pSrcYData, srcYDataStep, pDst, dstStep, roundControl);
}

VekStatus vekiMC16x4B_8u_C1(const Vek8u* pSrcRefF, Vek32s srcStepF, Vek32s mcTypeF, const Vek8u* pSrcRefB,
                            Vek32s srcStepB, Vek32s mcTypeB, const Vek16s* pSrcYData, Vek32s srcYDataStep, Vek8u* pDst,
                            Vek32s dstStep, Vek32s roundControl) {
    return mcBoth<16, 4>({pSrcRefF, srcStepF, halfOfMcType(mcTypeF)}, {pSrcRefB, srcStepB, halfOfMcType(mcTypeB)},
                         pSrcYData, srcYDataStep, pDst, dstStep, roundControl);
}

VekStatus vekiMC8x16B_8u_C1(const Vek8u* pSrcRefF, Vek32s srcStepF, Vek32s mcTypeF, const Vek8u* pSrcRefB,
                            Vek32s srcStepB, Vek32s mcTypeB, const Vek16s* pSrcYData, Vek32s srcYDataStep, Vek8u* pDst,
                            Vek32s dstStep, Vek32s roundControl) {
    return mcBoth<8, 16>({pSrcRefF, srcStepF, halfOfMcType(mcTypeF)}, {pSrcRefB, srcStepB, halfOfMcType(mcTypeB)},
                         pSrcYData, srcYDataStep, pDst, dstStep, roundControl);
}

VekStatus vekiMC8x8B_8u_C1(const Vek8u* pSrcRefF, Vek32s srcStepF, Vek32s mcTypeF, const Vek8u* pSrcRefB,
                           Vek32s srcStepB, Vek32s mcTypeB, const Vek16s* pSrcYData, Vek32s srcYDataStep, Vek8u* pDst,
                           Vek32s dstStep, Vek32s roundControl) {
    return mcBoth<8, 8>({pSrcRefF, srcStepF, halfOfMcType(mcTypeF)}, {pSrcRefB, srcStepB, halfOfMcType(mcTypeB)},
                        pSrcYData, srcYDataStep, pDst, dstStep, roundControl);
}

VekStatus vekiMC8x4B_8u_C1(const Vek8u* pSrcRefF, Vek32s srcStepF, Vek32s mcTypeF, const Vek8u* pSrcRefB,
                           Vek32s srcStepB, Vek32s mcTypeB, const Vek16s* pSrcYData, Vek32s srcYDataStep, Vek8u* pDst,
                           Vek32s dstStep, Vek32s roundControl) {
    return mcBoth<8, 4>({pSrcRefF, srcStepF, halfOfMcType(mcTypeF)}, {pSrcRefB, srcStepB, halfOfMcType(mcTypeB)},
                        pSrcYData, srcYDataStep, pDst, dstStep, roundControl);
}

VekStatus vekiMC4x8B_8u_C1(const Vek8u* pSrcRefF, Vek32s srcStepF, Vek32s mcTypeF, const Vek8u* pSrcRefB,
                           Vek32s srcStepB, Vek32s mcTypeB, const Vek16s* pSrcYData, Vek32s srcYDataStep, Vek8u* pDst,
                           Vek32s dstStep, Vek32s roundControl) {
    return mcBoth<4, 8>({pSrcRefF, srcStepF, halfOfMcType(mcTypeF)}, {pSrcRefB, srcStepB, halfOfMcType(mcTypeB)},
                        pSrcYData, srcYDataStep, pDst, dstStep, roundControl);
}

VekStatus vekiMC4x4B_8u_C1(const Vek8u* pSrcRefF, Vek32s srcStepF, Vek32s mcTypeF, const Vek8u* pSrcRefB,
                           Vek32s srcStepB, Vek32s mcTypeB, const Vek16s* pSrcYData, Vek32s srcYDataStep, Vek8u* pDst,
                           Vek32s dstStep, Vek32s roundControl) {
    return mcBoth<4, 4>({pSrcRefF, srcStepF, halfOfMcType(mcTypeF)}, {pSrcRefB, srcStepB, halfOfMcType(mcTypeB)},
                        pSrcYData, srcYDataStep, pDst, dstStep, roundControl);
}

VekStatus vekiMC4x2B_8u_C1(const Vek8u* pSrcRefF, Vek32s srcStepF, Vek32s mcTypeF, const Vek8u* pSrcRefB,
                           Vek32s srcStepB, Vek32s mcTypeB, const Vek16s* pSrcYData, Vek32s srcYDataStep, Vek8u* pDst,
                           Vek32s dstStep, Vek32s roundControl) {
    return mcBoth<4, 2>({pSrcRefF, srcStepF, halfOfMcType(mcTypeF)}, {pSrcRefB, srcStepB, halfOfMcType(mcTypeB)},
                        pSrcYData, srcYDataStep, pDst, dstStep, roundControl);
}

VekStatus vekiMC2x4B_8u_C1(const Vek8u* pSrcRefF, Vek32s srcStepF, Vek32s mcTypeF, const Vek8u* pSrcRefB,
                           Vek32s srcStepB, Vek32s mcTypeB, const Vek16s* pSrcYData, Vek32s srcYDataStep, Vek8u* pDst,
                           Vek32s dstStep, Vek32s roundControl) {
    return mcBoth<2, 4>({pSrcRefF, srcStepF, halfOfMcType(mcTypeF)}, {pSrcRefB, srcStepB, halfOfMcType(mcTypeB)},
                        pSrcYData, srcYDataStep, pDst, dstStep, roundControl);
}

VekStatus vekiMC2x2B_8u_C1(const Vek8u* pSrcRefF, Vek32s srcStepF, Vek32s mcTypeF, const Vek8u* pSrcRefB,
                           Vek32s srcStepB, Vek32s mcTypeB, const Vek16s* pSrcYData, Vek32s srcYDataStep, Vek8u* pDst,
                           Vek32s dstStep, Vek32s roundControl) {
    return mcBoth<2, 2>({pSrcRefF, srcStepF, halfOfMcType(mcTypeF)}, {pSrcRefB, srcStepB, halfOfMcType(mcTypeB)},
                        pSrcYData, srcYDataStep, pDst, dstStep, roundControl);
}

VekStatus vekiMC16x8BUV_8u_C1(const Vek8u* pSrcRefF, Vek32s srcStepF, Vek32s mcTypeF, const Vek8u* pSrcRefB,
                              Vek32s srcStepB, Vek32s mcTypeB, const Vek16s* pSrcYData, Vek32s srcYDataStep,
                              Vek8u* pDst, Vek32s dstStep, Vek32s roundControl) {
    return mcBoth<16, 8, kSameComponent>({pSrcRefF, srcStepF, halfOfMcType(mcTypeF)},
                                         {pSrcRefB, srcStepB, halfOfMcType(mcTypeB)}, pSrcYData, srcYDataStep, pDst,
                                         dstStep, roundControl);
}

VekStatus vekiMC8x8_16s8u_P2C2R(const Vek8u* pSrcRef, Vek32s srcStep, const Vek16s* pSrcU, const Vek16s* pSrcV,
                                Vek32s srcUVStep, Vek8u* pDst, Vek32s dstStep, Vek32s mcType, Vek32s roundControl) {
    return mcPlanes<8>({pSrcRef, srcStep, halfOfMcType(mcType)}, {pSrcU, pSrcV, srcUVStep}, pDst, dstStep,
                       roundControl);
}

VekStatus vekiMC8x4_16s8u_P2C2R(const Vek8u* pSrcRef, Vek32s srcStep, const Vek16s* pSrcU, const Vek16s* pSrcV,
                                Vek32s srcUVStep, Vek8u* pDst, Vek32s dstStep, Vek32s mcType, Vek32s roundControl) {
    return mcPlanes<4>({pSrcRef, srcStep, halfOfMcType(mcType)}, {pSrcU, pSrcV, srcUVStep}, pDst, dstStep,
                       roundControl);
}

VekStatus vekiMC8x8B_16s8u_P2C2R(const Vek8u* pSrcRefF, Vek32s srcStepF, Vek32s mcTypeF, const Vek8u* pSrcRefB,
                                 Vek32s srcStepB, Vek32s mcTypeB, const Vek16s* pSrcU, const Vek16s* pSrcV,
                                 Vek32s srcUVStep, Vek8u* pDst, Vek32s dstStep, Vek32s roundControl) {
    return mcPlanesBoth<8>({pSrcRefF, srcStepF, halfOfMcType(mcTypeF)}, {pSrcRefB, srcStepB, halfOfMcType(mcTypeB)},
                           {pSrcU, pSrcV, srcUVStep}, pDst, dstStep, roundControl);
}

VekStatus vekiMC8x4B_16s8u_P2C2R(const Vek8u* pSrcRefF, Vek32s srcStepF, Vek32s mcTypeF, const Vek8u* pSrcRefB,
                                 Vek32s srcStepB, Vek32s mcTypeB, const Vek16s* pSrcU, const Vek16s* pSrcV,
                                 Vek32s srcUVStep, Vek8u* pDst, Vek32s dstStep, Vek32s roundControl) {
    return mcPlanesBoth<4>({pSrcRefF, srcStepF, halfOfMcType(mcTypeF)}, {pSrcRefB, srcStepB, halfOfMcType(mcTypeB)},
                           {pSrcU, pSrcV, srcUVStep}, pDst, dstStep, roundControl);
}

VekStatus vekiAdd8x8_16s8u_C1IRS(const Vek16s* pSrc, Vek32s srcStep, Vek8u* pSrcDst, Vek32s srcDstStep) {
    if (anyNull(pSrc, pSrcDst)) return vekStsErrNullPtr;
    return finish([&] { return kernel::addResidual8x8(Residual{pSrc, srcStep}, pSrcDst, srcDstStep); });
}

VekStatus vekiAdd8x8HP_16s8u_C1RS(const Vek16s* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep, Vek8u* pDst,
                                  Vek32s dstStep, Vek32s acc, Vek32s rounding) {
    return mc<8, 8>({pRef, refStep, halfOfAcc(acc)}, pSrc, srcStep, pDst, dstStep, rounding);
}

VekStatus vekiAddC8x8_16s8u_C1IR(Vek16s value, Vek8u* pSrcDst, Vek32s srcDstStep) {
    if (anyNull(pSrcDst)) return vekStsErrNullPtr;
    kernel::addConstant8x8(value, pSrcDst, srcDstStep);
    return vekStsOk;
}
