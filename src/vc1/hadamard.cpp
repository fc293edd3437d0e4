// The exports of the Hadamard sums.
#include "core/check.h"
#include "core/kernel.h"
#include "vc1/hadamard_plain.h"
#include "vekvc/vc1.h"
#if VEKVC_SIMD
#include "vc1/hadamard_simd.h"
#endif

using namespace vekvc;

VekStatus vekiHadamard8x8Sum_VC1_8u16s(const Vek8u* pSrc, Vek32s srcStep, Vek16s* pSum) {
    if (anyNull(pSrc, pSum)) return vekStsErrNullPtr;
    store(pSum, kernel::hadamardSum(Block<Vek8u>(pSrc, srcStep)));
    return vekStsOk;
}

VekStatus vekiHadamard8x8Sum_VC1_16s(const Vek16s* pSrc, Vek32s srcStep, Vek16s* pSum) {
    if (anyNull(pSrc, pSum)) return vekStsErrNullPtr;
    store(pSum, kernel::hadamardSum(Block<Vek16s>(pSrc, srcStep)));
    return vekStsOk;
}
