// Exports: decoding of coefficient blocks.
#include "avs/coefficients_plain.h"
#include "core/check.h"
#include "core/kernel.h"
#include "vekvc/avs.h"
#if VEKVC_SIMD
#include "avs/coefficients_simd.h"
#endif

using namespace vekvc;

namespace {

template <const avs::CodeGroup& group>
VekStatus decode(Vek32u** ppBitStream, Vek32s* pBitOffset, Vek16s** ppDstCoeffs, Vek32s scanMode) {
    if (anyNull(ppBitStream, pBitOffset, ppDstCoeffs)) return vekStsErrNullPtr;
    if (anyNull(load<Vek32u*>(ppBitStream), load<Vek16s*>(ppDstCoeffs))) return vekStsErrNullPtr;
    if (outside(load<Vek32s>(pBitOffset), 0, 31)) return vekStsErrBadArg;
    if (outside(scanMode, 0, 1)) return vekStsErrBadArg;
    return kernel::decodeAvsBlock<group>(ppBitStream, pBitOffset, ppDstCoeffs, scanMode);
}

}  // namespace

VekStatus vekiDecodeCoeffsLumaIntra_AVS_1u16s(Vek32u** ppBitStream, Vek32s* pBitOffset, Vek16s** ppDstCoeffs,
                                              Vek32s scanMode) {
    return decode<avs::kLumaIntra>(ppBitStream, pBitOffset, ppDstCoeffs, scanMode);
}

VekStatus vekiDecodeCoeffsLumaInter_AVS_1u16s(Vek32u** ppBitStream, Vek32s* pBitOffset, Vek16s** ppDstCoeffs,
                                              Vek32s scanMode) {
    return decode<avs::kLumaInter>(ppBitStream, pBitOffset, ppDstCoeffs, scanMode);
}

VekStatus vekiDecodeCoeffsChroma_AVS_1u16s(Vek32u** ppBitStream, Vek32s* pBitOffset, Vek16s** ppDstCoeffs,
                                           Vek32s scanMode) {
    return decode<avs::kChroma>(ppBitStream, pBitOffset, ppDstCoeffs, scanMode);
}
