// The exports of the recursive denoiser.
#include "processing/denoise_adaptive.h"

#include "core/check.h"
#include "core/fill.h"
#include "core/kernel.h"
#include "processing/denoise_adaptive_plain.h"
#if VEKVC_SIMD
#include "processing/denoise_adaptive_simd.h"
#endif

using namespace vekvc;

namespace {

constexpr Vek32s squareRoot(Vek32s v) {
    Vek32s root = 0;
    while ((root + 1) * (root + 1) <= v) ++root;
    return root;
}

void setGains(VekDenoiseAdaptiveState& state, Vek32s frames) {
    const Vek32s least = 256 / frames;
    for (Vek32s k = 0; k <= 256; ++k) {
        const Vek32s gain = 256 * k / (256 + k);
        // 25 * 255^2 * 256 fits 31 bits.
        const Vek32s threshold = clip3(1, 255, squareRoot((25 * state.noise * state.noise * k) >> 12));
        state.gains[k] = {static_cast<Vek8u>((gain > least ? gain : least) - 1), static_cast<Vek8u>(threshold)};
    }
}

}  // namespace

VekStatus vekiFilterDenoiseAdaptiveInitAlloc_8u_C1(VekiSize size, Vek32s noise, Vek32s frames,
                                                   VekDenoiseAdaptiveState** ppState) {
    if (anyNull(ppState)) return vekStsErrNullPtr;
    if (anyBelow(1, size.width, size.height)) return vekStsErrSize;
    VekDenoiseAdaptiveState shape;
    shape.size = size;
    const VekStatus status = allocateState(ppState, shape.tableBytes());
    if (status != vekStsOk) return status;
    auto* const state = load<VekDenoiseAdaptiveState*>(ppState);
    state->size = size;
    state->noise = clip3(6, 255, noise);
    setGains(*state, clip3(1, 64, frames));
    // No history: H is 0 and G the greatest. Two bytes for each H; all bytes of the table fit an int, so these do.
    const auto pitch = static_cast<Vek32s>(state->pitch());
    fillPlane(0, reinterpret_cast<Vek8u*>(state->estimate(0)), 2 * pitch, {2 * pitch, size.height});
    fillPlane(255, state->gain(0), pitch, {pitch, size.height});
    const auto scratch = static_cast<Vek32s>(state->scratchBytes());
    fillPlane(0, state->scratch(), scratch, {scratch, 1});  // vectors read beyond what the first rows have written
    return vekStsOk;
}

VekStatus vekiFilterDenoiseAdaptiveFree_8u_C1(VekDenoiseAdaptiveState* pState) { return freeState(pState); }

VekStatus vekiFilterDenoiseAdaptive_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep,
                                           VekDenoiseAdaptiveState* pState) {
    if (anyNull(pSrc, pDst, pState) || pState->table == nullptr) return vekStsErrNullPtr;
    const Block<Vek8u> src(pSrc, srcStep);
    const MutableBlock<Vek8u> dst(pDst, dstStep);
    const Vek32s h = pState->size.height;
    // The differences run one row ahead of the estimates, and these two rows ahead of the filter in space: what is
    // written in place has been read.
    kernel::adaptiveDifferences(*pState, src.at(0, 0), 0);
    for (Vek32s y = 0; y < h; ++y) {
        if (y + 1 < h) kernel::adaptiveDifferences(*pState, src.at(0, y + 1), y + 1);
        kernel::adaptiveEstimate(*pState, y);
        if (y >= 2) kernel::adaptiveSmooth(*pState, dst.at(0, y - 2), y - 2);
    }
    for (Vek32s y = h > 2 ? h - 2 : 0; y < h; ++y) kernel::adaptiveSmooth(*pState, dst.at(0, y), y);
    return vekStsOk;
}
