// Exports: inverse quantization and weighting.
#include "core/check.h"
#include "core/kernel.h"
#include "dv/quantize_plain.h"
#if VEKVC_SIMD
#include "dv/quantize_simd.h"
#endif

using namespace vekvc;

VekStatus vekiQuantInv8x8xN_DV_16s_C1I(Vek16s* pSrcDst, const VekDVBlockInfo* pInfo, Vek32s count) {
    if (anyNull(pSrcDst, pInfo)) return vekStsErrNullPtr;
    if (anyBelow(1, count)) return vekStsErrSize;
    for (std::ptrdiff_t i = 0; i < count; ++i) kernel::quantInv(pSrcDst + 64 * i, pInfo[i]);
    return vekStsOk;
}

VekStatus vekiQuantInv8x8xN_DV100_16s_C1I(Vek16s* pSrcDst, const VekDVBlockInfo* pInfo, Vek32s count,
                                          Vek32s weightSet) {
    if (anyNull(pSrcDst, pInfo)) return vekStsErrNullPtr;
    if (anyBelow(1, count)) return vekStsErrSize;
    for (std::ptrdiff_t i = 0; i < count; ++i) kernel::quantInv100(pSrcDst + 64 * i, pInfo[i], weightSet & 3);
    return vekStsOk;
}
