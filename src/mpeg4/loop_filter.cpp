// Export: the loop filter.
#include "core/check.h"
#include "core/kernel.h"
#include "mpeg4/loop_filter_plain.h"
#include "vekvc/mpeg4_filter.h"
#if VEKVC_SIMD
#include "mpeg4/loop_filter_simd.h"
#endif

using namespace vekvc;

VekStatus vekiFilterLoop8x8_H261_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep) {
    if (anyNull(pSrc, pDst)) return vekStsErrNullPtr;
    return finish([&] { return kernel::filterLoop8x8(pSrc, srcStep, pDst, dstStep); });
}
