// The exports of the filter against mosquito noise.
#include "processing/denoise_mosquito.h"

#include "core/check.h"
#include "core/fill.h"
#include "core/kernel.h"
#include "processing/denoise_mosquito_plain.h"
#if VEKVC_SIMD
#include "processing/denoise_mosquito_simd.h"
#endif

using namespace vekvc;

VekStatus vekiFilterDenoiseMosquitoInitAlloc_8u_C1(VekiSize size, VekDenoiseMosquitoState** ppState) {
    if (anyNull(ppState)) return vekStsErrNullPtr;
    if (anyBelow(1, size.width, size.height)) return vekStsErrSize;
    VekDenoiseMosquitoState shape;
    shape.size = size;
    const VekStatus status = allocateState(ppState, shape.tableBytes());
    if (status != vekStsOk) return status;
    auto* const state = load<VekDenoiseMosquitoState*>(ppState);
    state->size = size;
    const auto pitch = static_cast<Vek32s>(state->pitch());
    return fillPlane(0, static_cast<Vek8u*>(state->table), pitch, {pitch, state->blocksDown() + 2});
}

VekStatus vekiFilterDenoiseMosquitoFree_8u_C1(VekDenoiseMosquitoState* pState) { return freeState(pState); }

VekStatus vekiFilterDenoiseMosquito_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep,
                                           Vek32s strength, VekDenoiseMosquitoState* pState) {
    if (anyNull(pSrc, pDst, pState) || pState->table == nullptr) return vekStsErrNullPtr;
    if (anyBelow(8, pState->size.width, pState->size.height)) return vekStsErrUnsupported;
    kernel::denoiseMosquito(*pState, {pSrc, srcStep}, {pDst, dstStep}, clip3(0, 63, strength));
    return vekStsOk;
}
