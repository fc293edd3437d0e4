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

// `availability` as the caller gives it: the left edge is one piece.
Vek32u neighbours(Vek32s availability) {
    const Vek32u bits =
        static_cast<Vek32u>(availability) & (h264::above | h264::left | h264::aboveLeft | h264::aboveRight);
    return bits & h264::left ? bits | h264::leftLower : bits;
}

}  // namespace

VekStatus vekiPredictIntra_4x4_H264_8u_C1IR(Vek8u* pSrcDst, Vek32s srcDstStep, Vek32s predMode, Vek32s availability) {
    if (anyNull(pSrcDst)) return vekStsErrNullPtr;
    if (anyBelow(4, srcDstStep)) return vekStsErrStep;
    if (outside(predMode, 0, 8)) return vekStsErrOutOfRange;
    const bool lacking =
        kernel::predictIntra4x4(MutableBlock(pSrcDst, srcDstStep), predMode, static_cast<Vek32u>(availability), 8);
    return lacking ? vekStsWrnUnavailableNeighbour : vekStsOk;
}

VekStatus vekiPredictIntra_16x16_H264_8u_C1IR(Vek8u* pSrcDst, Vek32s srcDstStep, Vek32s predMode, Vek32s availability) {
    if (anyNull(pSrcDst)) return vekStsErrNullPtr;
    if (outside(predMode, 0, 3)) return vekStsErrOutOfRange;
    const auto mode = static_cast<h264::Intra16x16Mode>(predMode);
    if (lacksNeighbour(mode, neighbours(availability))) return vekStsErrUnavailableNeighbour;
    kernel::predictIntra16x16(MutableBlock(pSrcDst, srcDstStep), mode, neighbours(availability), 8);
    return vekStsOk;
}

VekStatus vekiPredictIntraChroma8x8_H264_8u_C1IR(Vek8u* pSrcDst, Vek32s srcDstStep, Vek32s predMode,
                                                 Vek32s availability) {
    if (anyNull(pSrcDst)) return vekStsErrNullPtr;
    if (anyBelow(8, srcDstStep)) return vekStsErrStep;
    if (outside(predMode, 0, 3)) return vekStsErrOutOfRange;
    const auto mode = static_cast<h264::ChromaMode>(predMode);
    if (lacksNeighbour(mode, neighbours(availability))) return vekStsErrUnavailableNeighbour;
    kernel::predictIntraChroma<8>(MutableBlock(pSrcDst, srcDstStep), mode, neighbours(availability), 8);
    return vekStsOk;
}
