// Exports: sub-pixel interpolation.
#include "core/check.h"
#include "core/kernel.h"
#include "core/opaque.h"
#include "vc1/interpolate_block.h"
#include "vc1/interpolate_plain.h"
#include "vekvc/vc1.h"
#if VEKVC_SIMD
#include "vc1/interpolate_simd.h"
#endif

using namespace vekvc;

namespace {

// Fields of a record are loaded one by one into general registers. Callers write records just before the call, and a
// vector load of several fields, as the compilers like it, waits for the stores of all of them.
Vek32s lowBits(Vek32s x, Vek32s mask) { return opaque(opaque(x) & mask); }

vc1::Interpolation interpolation(const VekVC1InterpolationParams& p) {
    return {p.pSrc,
            p.srcStep,
            p.pDst,
            p.dstStep,
            lowBits(p.dx, 3),
            lowBits(p.dy, 3),
            lowBits(p.roundControl, 1),
            {opaque(p.roiSize.width), opaque(p.roiSize.height)}};
}

template <class Record>
bool anyNullIn(const Record* pParam) {
    return anyNull(pParam) || anyNull(pParam->pSrc, pParam->pDst);
}

}  // namespace

VekStatus vekiInterpolateQPBicubic_VC1_8u_C1R(const VekVC1InterpolationParams* pParam) {
    if (anyNullIn(pParam)) return vekStsErrNullPtr;
    return finish([&] { return kernel::interpolateBicubic(interpolation(*pParam)); });
}

VekStatus vekiInterpolateQPBilinear_VC1_8u_C1R(const VekVC1InterpolationParams* pParam) {
    if (anyNullIn(pParam)) return vekStsErrNullPtr;
    return finish([&] { return kernel::interpolateBilinear<1>(interpolation(*pParam)); });
}

VekStatus vekiInterpolateQPBilinear_VC1_8u_C2R(const VekVC1InterpolationParams* pParam) {
    if (anyNullIn(pParam)) return vekStsErrNullPtr;
    return finish([&] { return kernel::interpolateBilinear<2>(interpolation(*pParam)); });
}

VekStatus vekiInterpolateICBicubicBlock_VC1_8u_C1R(const VekVC1InterpolationBlockParams* pParam) {
    if (anyNullIn(pParam)) return vekStsErrNullPtr;
    vc1::withReference<1>(*pParam, vc1::bicubicSize(pParam->sizeBlock), vc1::kBicubicReach,
                          [](const vc1::Interpolation& p) { kernel::interpolateBicubic(p); });
    return vekStsOk;
}

VekStatus vekiInterpolateICBilinearBlock_VC1_8u_C1R(const VekVC1InterpolationBlockParams* pParam) {
    if (anyNullIn(pParam)) return vekStsErrNullPtr;
    vc1::withReference<1>(*pParam, vc1::bilinearSize(pParam->sizeBlock), vc1::kBilinearReach,
                          [](const vc1::Interpolation& p) { kernel::interpolateBilinear<1>(p); });
    return vekStsOk;
}

VekStatus vekiInterpolateICBilinearBlock_VC1_8u_C2R(const VekVC1InterpolationBlockParams* pParam) {
    if (anyNullIn(pParam)) return vekStsErrNullPtr;
    vc1::withReference<2>(*pParam, vc1::bilinearPairsSize(pParam->sizeBlock), vc1::kBilinearReach,
                          [](const vc1::Interpolation& p) { kernel::interpolateBilinear<2>(p); });
    return vekStsOk;
}
