// The exports that give one sum per 4x4 block.
#include "common/blocks4x4_plain.h"
#include "core/check.h"
#include "core/kernel.h"
#include "vekvc/common.h"
#if VEKVC_SIMD
#include "common/blocks4x4_simd.h"
#endif

namespace vekvc {
namespace {

template <int W, int H>
VekStatus sumsDiff(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep, Vek16s* pSums) {
    if (anyNull(pSrc, pRef, pSums)) return vekStsErrNullPtr;
    kernel::sumsDiffBlocks4x4<W, H>(Block<Vek8u>(pSrc, srcStep), Block<Vek8u>(pRef, refStep), pSums);
    return vekStsOk;
}

}  // namespace
}  // namespace vekvc

using namespace vekvc;

VekStatus vekiSAD16x16Blocks4x4_8u16u_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep,
                                          Vek16u* pSAD) {
    if (anyNull(pSrc, pRef, pSAD)) return vekStsErrNullPtr;
    kernel::sadBlocks4x4(Block<Vek8u>(pSrc, srcStep), Block<Vek8u>(pRef, refStep), pSAD);
    return vekStsOk;
}

VekStatus vekiSumsDiff8x8Blocks4x4_8u16s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep,
                                             Vek16s* pSums) {
    return sumsDiff<8, 8>(pSrc, srcStep, pRef, refStep, pSums);
}

VekStatus vekiSumsDiff16x16Blocks4x4_8u16s_C1R(const Vek8u* pSrc, Vek32s srcStep, const Vek8u* pRef, Vek32s refStep,
                                               Vek16s* pSums) {
    return sumsDiff<16, 16>(pSrc, srcStep, pRef, refStep, pSums);
}
