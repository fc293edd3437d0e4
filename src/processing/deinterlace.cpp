// The exports of the deinterlacers.
#include "processing/deinterlace_rows.h"

#include "core/check.h"
#include "core/kernel.h"
#include "processing/deinterlace_plain.h"
#if VEKVC_SIMD
#include "processing/deinterlace_blend_simd.h"
#include "processing/deinterlace_motion_simd.h"
#endif

using namespace vekvc;

VekStatus vekiDeinterlaceBlendInitAlloc_8u_C1(Vek32s low, Vek32s high, VekDeinterlaceBlendState** ppState) {
    if (anyNull(ppState)) return vekStsErrNullPtr;
    const VekStatus status = allocateState(ppState, 256 * sizeof(Vek16u));
    if (status != vekStsOk) return status;
    auto* const state = load<VekDeinterlaceBlendState*>(ppState);
    state->low = clip3(0, 254, low);
    state->high = clip3(state->low + 1, 255, high);
    auto* const weights = static_cast<Vek16u*>(state->table);
    for (Vek32s c = 0; c < 256; ++c) {
        const Vek32s range = state->high - state->low;
        weights[c] = static_cast<Vek16u>(256 * clip3(0, range, c - state->low) / range);
    }
    return vekStsOk;
}

VekStatus vekiDeinterlaceBlendFree_8u_C1(VekDeinterlaceBlendState* pState) { return freeState(pState); }

VekStatus vekiDeinterlaceBlend_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep, VekiSize roiSize,
                                      const VekDeinterlaceBlendState* pState) {
    if (anyNull(pSrc, pDst, pState) || pState->table == nullptr) return vekStsErrNullPtr;
    if (anyBelow(1, roiSize.width, roiSize.height)) return vekStsErrSize;
    kernel::deinterlaceBlend({pSrc, srcStep}, {pDst, dstStep}, roiSize, *pState);
    return vekStsOk;
}

VekStatus vekiDeinterlaceEdgeDetect_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep,
                                           VekiSize roiSize, Vek32s field, Vek32s threshold) {
    if (anyNull(pSrc, pDst)) return vekStsErrNullPtr;
    if (anyBelow(1, roiSize.width, roiSize.height)) return vekStsErrSize;
    if (outside(field, 0, 1)) return vekStsErrBadArg;
    kernel::deinterlaceEdgeDetect({pSrc, srcStep}, {pDst, dstStep}, roiSize, field, clip3(0, 255, threshold));
    return vekStsOk;
}

VekStatus vekiDeinterlaceMedianThreshold_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep,
                                                VekiSize roiSize, Vek32s field, Vek32s threshold) {
    if (anyNull(pSrc, pDst)) return vekStsErrNullPtr;
    if (anyBelow(1, roiSize.width, roiSize.height)) return vekStsErrSize;
    if (outside(field, 0, 1)) return vekStsErrBadArg;
    kernel::deinterlaceMedianThreshold({pSrc, srcStep}, {pDst, dstStep}, roiSize, field, clip3(0, 255, threshold));
    return vekStsOk;
}

VekStatus vekiDeinterlaceMotionAdaptive_8u_C1R(const Vek8u* pPrev, const Vek8u* pCur, const Vek8u* pNext,
                                               Vek32s srcStep, Vek8u* pDst, Vek32s dstStep, VekiSize roiSize,
                                               Vek32s field, Vek32s firstField) {
    if (anyNull(pPrev, pCur, pNext, pDst)) return vekStsErrNullPtr;
    if (anyBelow(1, roiSize.width, roiSize.height)) return vekStsErrSize;
    if (outside(field, 0, 1) || outside(firstField, 0, 1)) return vekStsErrBadArg;
    const MotionFrames frames = {{pPrev, srcStep}, {pCur, srcStep}, {pNext, srcStep}, field == firstField};
    kernel::deinterlaceMotionAdaptive(frames, {pDst, dstStep}, roiSize, field);
    return vekStsOk;
}

VekStatus vekiDeinterlaceTriangle_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep,
                                         VekiSize roiSize, Vek32s field) {
    if (anyNull(pSrc, pDst)) return vekStsErrNullPtr;
    if (anyBelow(1, roiSize.width, roiSize.height)) return vekStsErrSize;
    if (outside(field, 0, 2)) return vekStsErrBadArg;
    if (field == 2)
        kernel::mixFields({pSrc, srcStep}, {pDst, dstStep}, roiSize);
    else
        kernel::deinterlaceTriangle({pSrc, srcStep}, {pDst, dstStep}, roiSize, field);
    return vekStsOk;
}
