// Exports: the 2-4-8 DCT.
#include "core/check.h"
#include "core/kernel.h"
#include "dv/transform248_plain.h"
#include "vekvc/dv.h"
#if VEKVC_SIMD
#include "dv/transform248_simd.h"
#endif

using namespace vekvc;

VekStatus vekiDCT8x8Inv248_DV_16s_C1I(Vek16s* pSrcDst) {
    if (anyNull(pSrcDst)) return vekStsErrNullPtr;
    kernel::inverse248(pSrcDst);
    return vekStsOk;
}

VekStatus vekiDCT8x8Fwd248_DV_16s_C1I(Vek16s* pSrcDst) {
    if (anyNull(pSrcDst)) return vekStsErrNullPtr;
    kernel::forward248(pSrcDst);
    return vekStsOk;
}
