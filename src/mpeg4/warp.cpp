// Exports: global motion.
#include "mpeg4/warp.h"
#include <algorithm>

#include "core/check.h"
#include "core/kernel.h"
#include "mpeg4/warp_plain.h"
#include "vekvc/mpeg4_predict.h"
#if VEKVC_SIMD
#include "mpeg4/warp_simd.h"
#endif

using namespace vekvc;
using mpeg4::Warp;

namespace {

bool outsideSizes(VekiSize size) { return outside(size.width, 1, 8192) || outside(size.height, 1, 8192); }

// 7.8.7, for one component: the mean of 256 distances in 1/s samples, as a number of half or quarter samples.
Vek16s meanVector(std::int64_t sum, const Warp& w, Vek32s fcode) {
    // 256 s divided by what makes samples half or quarter ones: no product can leave 64 bits.
    const std::int64_t unit = (std::int64_t{256} << w.luma.accuracyBits) / (w.quarterSample != 0 ? 4 : 2);
    const std::int64_t limit = std::int64_t{1} << (fcode + 4);
    return static_cast<Vek16s>(clip3(-limit, limit - 1, mpeg4::divideRound(sum, unit)));
}

}  // namespace

VekStatus vekiWarpGetSize_MPEG4(Vek32u* pSpecSize) { return mpeg4::reportSize(pSpecSize, mpeg4::kWarpSize); }

VekStatus vekiWarpInit_MPEG4(Vek8u* pSpec, const Vek32s* pDU, const Vek32s* pDV, Vek32s numWarpingPoints,
                             Vek32s warpingAccuracy, VekiSize vopSize, VekiSize refSize, Vek32s roundControl,
                             Vek32s quarterSampleFlag) {
    if (anyNull(pSpec) || (numWarpingPoints != 0 && anyNull(pDU, pDV))) return vekStsErrNullPtr;
    if (outside(numWarpingPoints, 0, 3) || outside(warpingAccuracy, 0, 3)) return vekStsErrOutOfRange;
    if (outsideSizes(vopSize) || outsideSizes(refSize)) return vekStsErrSize;
    Vek32s du[3] = {}, dv[3] = {};
    for (int k = 0; k < numWarpingPoints; ++k) {
        du[k] = load<Vek32s>(pDU + k);
        dv[k] = load<Vek32s>(pDV + k);
    }
    new (stateIn<Warp>(pSpec)) Warp(mpeg4::makeWarp(du, dv, numWarpingPoints, warpingAccuracy, vopSize, refSize,
                                                    roundControl & 1, quarterSampleFlag != 0));
    return vekStsOk;
}

VekStatus vekiWarpLuma_MPEG4_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep, Vek32s dstX,
                                    Vek32s dstY, VekiSize roiSize, const Vek8u* pSpec) {
    if (anyNull(pSrc, pDst, pSpec)) return vekStsErrNullPtr;
    if (!mpeg4::isSpecification(pSpec, mpeg4::Kind::warp)) return vekStsErrContextMatch;
    if (anyBelow(std::max(roiSize.width, 1), srcStep, dstStep)) return vekStsErrStep;
    if (anyBelow(1, roiSize.width, roiSize.height)) return vekStsErrSize;
    const Warp& w = *stateIn<Warp>(pSpec);
    kernel::warpBlock<1>(w.luma, w.roundControl, {{{pSrc, srcStep, pDst, dstStep}}, dstX, dstY, roiSize});
    return vekStsOk;
}

VekStatus vekiWarpChroma_MPEG4_8u_P2R(const Vek8u* pSrcCb, Vek32s srcCbStep, const Vek8u* pSrcCr, Vek32s srcCrStep,
                                      Vek8u* pDstCb, Vek32s dstCbStep, Vek8u* pDstCr, Vek32s dstCrStep, Vek32s dstX,
                                      Vek32s dstY, VekiSize roiSize, const Vek8u* pSpec) {
    if (anyNull(pSrcCb, pSrcCr, pDstCb, pDstCr, pSpec)) return vekStsErrNullPtr;
    if (!mpeg4::isSpecification(pSpec, mpeg4::Kind::warp)) return vekStsErrContextMatch;
    if (anyBelow(std::max(roiSize.width, 1), srcCbStep, srcCrStep, dstCbStep, dstCrStep)) return vekStsErrStep;
    if (anyBelow(1, roiSize.width, roiSize.height)) return vekStsErrSize;
    const Warp& w = *stateIn<Warp>(pSpec);
    kernel::warpBlock<2>(
        w.chroma, w.roundControl,
        {{{pSrcCb, srcCbStep, pDstCb, dstCbStep}, {pSrcCr, srcCrStep, pDstCr, dstCrStep}}, dstX, dstY, roiSize});
    return vekStsOk;
}

VekStatus vekiWarpAverageMV_MPEG4_16s(Vek32s mbX, Vek32s mbY, Vek32s fcode, Vek16s* pMV, const Vek8u* pSpec) {
    if (anyNull(pMV) || anyNull(pSpec)) return vekStsErrNullPtr;
    if (!mpeg4::isSpecification(pSpec, mpeg4::Kind::warp)) return vekStsErrContextMatch;
    if (outside(fcode, 1, 7)) return vekStsErrOutOfRange;
    const Warp& w = *stateIn<Warp>(pSpec);
    const auto sums = kernel::sumDistances(w.luma, mbX, mbY);
    store(pMV, meanVector(sums.f, w, fcode));
    store(pMV + 1, meanVector(sums.g, w, fcode));
    return vekStsOk;
}
