// Export: overlapped block motion compensation.
#include "core/check.h"
#include "core/kernel.h"
#include "mpeg4/obmc_plain.h"
#include "vekvc/mpeg4_predict.h"
#if VEKVC_SIMD
#include "mpeg4/obmc_simd.h"
#endif

using namespace vekvc;

VekStatus vekiOBMC8x8HP_H263_8u_C1R(const Vek8u* const* ppSrc, Vek32s srcStep, const Vek32s* pMcType, Vek8u* pDst,
                                    Vek32s dstStep, Vek32s roundControl) {
    if (anyNull(ppSrc) || anyNull(pMcType) || anyNull(pDst)) return vekStsErrNullPtr;
    const auto reference = [&](int k) {
        return Reference{load<const Vek8u*>(ppSrc + k), srcStep, halfOfMcType(load<Vek32s>(pMcType + k))};
    };
    const mpeg4::Overlapped o = {reference(0), reference(1), reference(2),
                                 reference(3), reference(4), roundingOf(roundControl)};
    if (anyNull(o.current.pixels, o.above.pixels, o.below.pixels, o.left.pixels, o.right.pixels))
        return vekStsErrNullPtr;
    kernel::overlap8x8(o, pDst, dstStep);
    return vekStsOk;
}
