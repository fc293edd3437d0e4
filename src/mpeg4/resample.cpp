// Exports: upsampling and resampling.
#include <algorithm>

#include "core/check.h"
#include "core/kernel.h"
#include "mpeg4/resample_plain.h"
#include "vekvc/mpeg4_filter.h"
#if VEKVC_SIMD
#include "mpeg4/resample_simd.h"
#endif

using namespace vekvc;

namespace {

mpeg4::ResampleMap mapFrom(const Vek32s* p) {
    return {load<Vek32s>(p), load<Vek32s>(p + 1), load<Vek32s>(p + 2), load<Vek32s>(p + 3)};
}

}  // namespace

VekStatus vekiUpsample2x_H263_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, VekiSize srcSize, Vek8u* pDst, Vek32s dstStep,
                                     Vek32s direction) {
    using mpeg4::Doubled;
    if (anyNull(pSrc, pDst)) return vekStsErrNullPtr;
    const std::int64_t width = std::max(srcSize.width, 1);
    const bool wider = direction == 1 || direction == 3;
    if (srcStep < width || dstStep < (wider ? 2 * width : width)) return vekStsErrStep;
    if (anyBelow(1, srcSize.width, srcSize.height)) return vekStsErrSize;
    if (outside(direction, 1, 3)) return vekStsErrOutOfRange;
    kernel::upsample2x(pSrc, srcStep, srcSize, pDst, dstStep, static_cast<Doubled>(direction));
    return vekStsOk;
}

VekStatus vekiResample_H263_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, VekiSize srcSize, Vek8u* pDst, Vek32s dstStep,
                                   VekiSize dstSize, const Vek32s* pMapX, const Vek32s* pMapY, Vek32s shift,
                                   Vek32s roundControl, Vek32s fillValue) {
    if (anyNull(pSrc, pDst) || anyNull(pMapX, pMapY)) return vekStsErrNullPtr;
    if (srcStep < std::max(srcSize.width, 1) || dstStep < std::max(dstSize.width, 1)) return vekStsErrStep;
    if (anyBelow(1, srcSize.width, srcSize.height, dstSize.width, dstSize.height)) return vekStsErrSize;
    if (outside(shift, 0, 31) || fillValue > 255) return vekStsErrOutOfRange;
    kernel::resample({pSrc, srcStep, srcSize, pDst, dstStep, dstSize, mapFrom(pMapX), mapFrom(pMapY), shift,
                      roundControl & 1, fillValue});
    return vekStsOk;
}
