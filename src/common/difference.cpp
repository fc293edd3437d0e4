// The exports of difference blocks.
#include "common/difference_plain.h"
#include "core/check.h"
#include "core/kernel.h"
#include "vekvc/common.h"
#if VEKVC_SIMD
#include "common/difference_simd.h"
#endif

namespace vekvc {
namespace {

using plain::Difference;
using plain::DifferencePlanes;

constexpr int kSameComponent = 2;  // distance to the horizontal neighbour in interleaved chroma

template <int W, int H>
VekStatus difference(Block<Vek8u> src, const Reference& ref, const Difference& dst, Vek32s roundControl) {
    if (anyNull(src.base, ref.pixels, dst.values)) return vekStsErrNullPtr;
    kernel::subtractPrediction<W, H, 1>(src, ref, roundingOf(roundControl), dst);
    return vekStsOk;
}

template <int W, int H>
VekStatus differenceBoth(Block<Vek8u> src, const Reference& f, const Reference& b, const Difference& dst,
                         Vek32s roundControl) {
    if (anyNull(src.base, f.pixels, b.pixels, dst.values)) return vekStsErrNullPtr;
    kernel::subtractPrediction<W, H, 1>(src, f, b, roundingOf(roundControl), dst);
    return vekStsOk;
}

template <int W, int H, class T>
VekStatus differenceFull(Block<T> src, Block<T> ref, const Difference& dst) {
    if (anyNull(src.base, ref.base, dst.values)) return vekStsErrNullPtr;
    kernel::subtractBlock<W, H>(src, ref, dst);
    return vekStsOk;
}

}  // namespace
}  // namespace vekvc

using namespace vekvc;

VekStatus vekiDiff16x16_8u16s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep, Vek16s* pDst,
                                  Vek32s dstStep, Vek32s mcType, Vek32s roundControl) {
    return difference<16, 16>({pSrc, srcStep}, {pRef, refStep, halfOfMcType(mcType)}, {pDst, dstStep}, roundControl);
}

VekStatus vekiDiff16x8_8u16s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep, Vek16s* pDst,
                                 Vek32s dstStep, Vek32s mcType, Vek32s roundControl) {
    return difference<16, 8>({pSrc, srcStep}, {pRef, refStep, halfOfMcType(mcType)}, {pDst, dstStep}, roundControl);
}

VekStatus vekiDiff8x8_8u16s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep, Vek16s* pDst,
                                Vek32s dstStep, Vek32s mcType, Vek32s roundControl) {
    return difference<8, 8>({pSrc, srcStep}, {pRef, refStep, halfOfMcType(mcType)}, {pDst, dstStep}, roundControl);
}

VekStatus vekiDiff8x4_8u16s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep, Vek16s* pDst,
                                Vek32s dstStep, Vek32s mcType, Vek32s roundControl) {
    return difference<8, 4>({pSrc, srcStep}, {pRef, refStep, halfOfMcType(mcType)}, {pDst, dstStep}, roundControl);
}

VekStatus vekiDiff4x4_8u16s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep, Vek16s* pDst,
                                Vek32s dstStep) {
    return differenceFull<4, 4, Vek8u>({pSrc, srcStep}, {pRef, refStep}, {pDst, dstStep});
}

VekStatus vekiDiff4x4_16u16s_C1R(const Vek16u* pSrc, Vek32s srcStep, const Vek16u* pRef, Vek32s refStep, Vek16s* pDst,
                                 Vek32s dstStep) {
    return differenceFull<4, 4, Vek16u>({pSrc, srcStep}, {pRef, refStep}, {pDst, dstStep});
}

VekStatus vekiDiff8x8_16u16s_C1R(const Vek16u* pSrc, Vek32s srcStep, const Vek16u* pRef, Vek32s refStep, Vek16s* pDst,
                                 Vek32s dstStep) {
    return differenceFull<8, 8, Vek16u>({pSrc, srcStep}, {pRef, refStep}, {pDst, dstStep});
}

VekStatus vekiDiff16x16B_8u16s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRefF, Vek32s refStepF,
                                   Vek32s mcTypeF, const Vek8u* pRefB, Vek32s refStepB, Vek32s mcTypeB, Vek16s* pDst,
                                   Vek32s dstStep, Vek32s roundControl) {
    return differenceBoth<16, 16>({pSrc, srcStep}, {pRefF, refStepF, halfOfMcType(mcTypeF)},
                                  {pRefB, refStepB, halfOfMcType(mcTypeB)}, {pDst, dstStep}, roundControl);
}

VekStatus vekiDiff16x8B_8u16s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRefF, Vek32s refStepF,
                                  Vek32s mcTypeF, const Vek8u* pRefB, Vek32s refStepB, Vek32s mcTypeB, Vek16s* pDst,
                                  Vek32s dstStep, Vek32s roundControl) {
    return differenceBoth<16, 8>({pSrc, srcStep}, {pRefF, refStepF, halfOfMcType(mcTypeF)},
                                 {pRefB, refStepB, halfOfMcType(mcTypeB)}, {pDst, dstStep}, roundControl);
}

VekStatus vekiDiff8x8B_8u16s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRefF, Vek32s refStepF, Vek32s mcTypeF,
                                 const Vek8u* pRefB, Vek32s refStepB, Vek32s mcTypeB, Vek16s* pDst, Vek32s dstStep,
                                 Vek32s roundControl) {
    return differenceBoth<8, 8>({pSrc, srcStep}, {pRefF, refStepF, halfOfMcType(mcTypeF)},
                                {pRefB, refStepB, halfOfMcType(mcTypeB)}, {pDst, dstStep}, roundControl);
}

VekStatus vekiDiff8x4B_8u16s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRefF, Vek32s refStepF, Vek32s mcTypeF,
                                 const Vek8u* pRefB, Vek32s refStepB, Vek32s mcTypeB, Vek16s* pDst, Vek32s dstStep,
                                 Vek32s roundControl) {
    return differenceBoth<8, 4>({pSrc, srcStep}, {pRefF, refStepF, halfOfMcType(mcTypeF)},
                                {pRefB, refStepB, halfOfMcType(mcTypeB)}, {pDst, dstStep}, roundControl);
}

VekStatus vekiDiff8x8_8u16s_C2P2R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep, Vek16s* pDstU,
                                  Vek16s* pDstV, Vek32s dstStep, Vek32s mcType, Vek32s roundControl) {
    if (anyNull(pSrc, pRef, pDstU, pDstV)) return vekStsErrNullPtr;
    kernel::subtractPrediction<16, 8, kSameComponent>(Block<Vek8u>(pSrc, srcStep),
                                                      {pRef, refStep, halfOfMcType(mcType)}, roundingOf(roundControl),
                                                      DifferencePlanes{pDstU, pDstV, dstStep});
    return vekStsOk;
}

VekStatus vekiDiff8x8B_8u16s_C2P2R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRefF, Vek32s refStepF,
                                   Vek32s mcTypeF, const Vek8u* pRefB, Vek32s refStepB, Vek32s mcTypeB, Vek16s* pDstU,
                                   Vek16s* pDstV, Vek32s dstStep, Vek32s roundControl) {
    if (anyNull(pSrc, pRefF, pRefB, pDstU, pDstV)) return vekStsErrNullPtr;
    kernel::subtractPrediction<16, 8, kSameComponent>(
        Block<Vek8u>(pSrc, srcStep), {pRefF, refStepF, halfOfMcType(mcTypeF)}, {pRefB, refStepB, halfOfMcType(mcTypeB)},
        roundingOf(roundControl), DifferencePlanes{pDstU, pDstV, dstStep});
    return vekStsOk;
}
