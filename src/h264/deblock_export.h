// What the exports of deblocking have in common.
#ifndef VEKVC_H264_DEBLOCK_EXPORT_H
#define VEKVC_H264_DEBLOCK_EXPORT_H

#include "core/check.h"
#include "core/kernel.h"
#include "h264/deblock_plain.h"
#include "vekvc/h264_deblock.h"

namespace vekvc {

// Where rows lie so close that the samples around one run into the next, the order of lines and edges shows: the
// definition keeps it. No picture has such rows.
constexpr int kWidestRow = 24;  // samples around the edges of a macroblock: at most 4 before and 16 behind
template <class T>
inline bool rowsMeet(std::ptrdiff_t step) {
    constexpr std::ptrdiff_t kBytes = kWidestRow * sizeof(T);
    return step < kBytes && step > -kBytes;
}

// The fast forms count in 8 bits, which thresholds of 64 and more could leave (the standard's largest is 25): these go
// to the definition.
template <int edges>
inline bool largeThresholds(const Vek8u* thresholds) {
    constexpr std::uint64_t kHighBits = 0xC0C0C0C0C0C0C0C0;
    std::uint64_t bits = load<std::uint64_t>(thresholds);
    if constexpr (edges == 4) bits |= load<std::uint64_t>(thresholds + 8);
    return (bits & kHighBits) != 0;
}

using Filter8u = void (*)(const DeblockOperands<Vek8u>&);

// Kept apart, so that the usual road needs no saved registers.
template <Filter8u definition>
[[gnu::noinline, gnu::cold]] VekStatus define(Vek8u* pSrcDst, Vek32s srcDstStep, const Vek8u* pAlpha,
                                              const Vek8u* pBeta, const Vek8u* pThresholds, const Vek8u* pBs) {
    definition({pSrcDst, srcDstStep, pAlpha, pBeta, pThresholds, pBs, 255});
    return vekStsOk;
}

template <int edges, Filter8u filter, Filter8u definition>
[[gnu::always_inline]] inline VekStatus deblock(Vek8u* pSrcDst, Vek32s srcDstStep, const Vek8u* pAlpha,
                                                const Vek8u* pBeta, const Vek8u* pThresholds, const Vek8u* pBs) {
    if (anyNull(pSrcDst, pAlpha, pBeta, pThresholds, pBs)) return vekStsErrNullPtr;
    if (rowsMeet<Vek8u>(srcDstStep) || largeThresholds<edges>(pThresholds)) [[unlikely]]
        return define<definition>(pSrcDst, srcDstStep, pAlpha, pBeta, pThresholds, pBs);
    filter({pSrcDst, srcDstStep, pAlpha, pBeta, pThresholds, pBs, 255});
    return vekStsOk;
}

template <int edges, Filter8u filter, Filter8u definition>
[[gnu::always_inline]] inline VekStatus deblock(const VekDeblockingParams8u* p) {
    if (anyNull(p)) return vekStsErrNullPtr;
    return deblock<edges, filter, definition>(p->pSrcDstPlane, p->srcDstStep, p->pAlpha, p->pBeta, p->pThresholds,
                                              p->pBs);
}

// An edge that nothing can cross: no difference is below 0, or no strength is set.
inline bool isOff(std::int64_t alpha, const Vek8u* pBs) { return alpha == 0 || load<Vek32u>(pBs) == 0; }

}  // namespace vekvc

#endif
