// Exports: intra prediction of single blocks, 8-bit samples.
#include "core/check.h"
#include "core/kernel.h"
#include "h264/intra_plain.h"
#include "vekvc/h264_reconstruct.h"
#if VEKVC_SIMD
#include "h264/intra_simd.h"
#endif

using namespace vekvc;

namespace {

// Steps that leave no gap between the rows: a row's left sample is the last one of the row above it. Such steps and
// those that are refused are one test of an export.
[[gnu::noinline, gnu::cold]] VekStatus predictWithoutGap4x4(Vek8u* pSrcDst, Vek32s srcDstStep, Vek32s predMode,
                                                            Vek32s availability) {
    if (anyBelow(4, srcDstStep)) return vekStsErrStep;
    if (outside(predMode, 0, 8)) return vekStsErrOutOfRange;
    return plain::predictIntra4x4(pSrcDst, srcDstStep, predMode, static_cast<Vek32u>(availability));
}
[[gnu::noinline, gnu::cold]] VekStatus predictWithoutGapChroma8x8(Vek8u* pSrcDst, Vek32s srcDstStep, Vek32s predMode,
                                                                  Vek32s availability) {
    if (anyBelow(8, srcDstStep)) return vekStsErrStep;
    if (outside(predMode, 0, 3)) return vekStsErrOutOfRange;
    return plain::predictIntraChroma8x8(pSrcDst, srcDstStep, predMode, static_cast<Vek32u>(availability));
}

}  // namespace

VekStatus vekiPredictIntra_4x4_H264_8u_C1IR(Vek8u* pSrcDst, Vek32s srcDstStep, Vek32s predMode, Vek32s availability) {
    if (anyNull(pSrcDst)) [[unlikely]]
        return vekStsErrNullPtr;
    if (anyBelow(5, srcDstStep)) [[unlikely]]
        return predictWithoutGap4x4(pSrcDst, srcDstStep, predMode, availability);
    if (outside(predMode, 0, 8)) [[unlikely]]
        return vekStsErrOutOfRange;
    return kernel::predictIntra4x4(pSrcDst, srcDstStep, predMode, static_cast<Vek32u>(availability));
}

VekStatus vekiPredictIntra_16x16_H264_8u_C1IR(Vek8u* pSrcDst, Vek32s srcDstStep, Vek32s predMode, Vek32s availability) {
    if (anyNull(pSrcDst)) [[unlikely]]
        return vekStsErrNullPtr;
    if (outside(predMode, 0, 3)) [[unlikely]]
        return vekStsErrOutOfRange;
    return kernel::predictIntra16x16(pSrcDst, srcDstStep, predMode, static_cast<Vek32u>(availability));
}

VekStatus vekiPredictIntraChroma8x8_H264_8u_C1IR(Vek8u* pSrcDst, Vek32s srcDstStep, Vek32s predMode,
                                                 Vek32s availability) {
    if (anyNull(pSrcDst)) [[unlikely]]
        return vekStsErrNullPtr;
    if (anyBelow(9, srcDstStep)) [[unlikely]]
        return predictWithoutGapChroma8x8(pSrcDst, srcDstStep, predMode, availability);
    if (outside(predMode, 0, 3)) [[unlikely]]
        return vekStsErrOutOfRange;
    return kernel::predictIntraChroma8x8(pSrcDst, srcDstStep, predMode, static_cast<Vek32u>(availability));
}
