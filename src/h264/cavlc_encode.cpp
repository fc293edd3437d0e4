#include "core/check.h"
#include "core/kernel.h"
#include "h264/cavlc_encode_plain.h"
#if VEKVC_SIMD
#include "h264/cavlc_encode_simd.h"
#endif
#if VEKVC_VECTOR512
#include "h264/cavlc_encode_simd512.h"
#endif
#include "vekvc/h264_cavlc.h"

using namespace vekvc;

namespace {

template <class T>
bool anyNullElement(const CavlcElements<T>& out) {
    return anyNull(out.pTrailingOnes, out.pTrailingOneSigns, out.pTotalCoeff, out.pTotalZeros, out.pLevels, out.pRuns);
}

template <class T>
VekStatus encode4x4(const T* pSrc, Vek8u startIdx, const Vek32s* pScan, Vek8u lastIdx, const CavlcElements<T>& out) {
    if (anyNull(pSrc, pScan) || anyNullElement(out)) return vekStsErrNullPtr;
    if (outside(lastIdx, startIdx, 15)) return vekStsErrOutOfRange;
    kernel::analyzeCavlc4x4(pSrc, startIdx, lastIdx, pScan, out);
    return vekStsOk;
}

template <class T, class Layout>
VekStatus encodeChromaDc(const T* pSrc, Layout layout, const CavlcElements<T>& out) {
    if (anyNull(pSrc) || anyNullElement(out)) return vekStsErrNullPtr;
    kernel::analyzeCavlcChromaDc(pSrc, layout, out);
    return vekStsOk;
}

}  // namespace

VekStatus vekiEncodeCoeffsCAVLC_H264_16s(const Vek16s* pSrc, Vek8u startIdx, const Vek32s* pScan, Vek8u lastIdx,
                                         Vek8u* pTrailingOnes, Vek8u* pTrailingOneSigns, Vek8u* pTotalCoeff,
                                         Vek8u* pTotalZeros, Vek16s* pLevels, Vek8u* pRuns) {
    return encode4x4<Vek16s>(pSrc, startIdx, pScan, lastIdx,
                             {pTrailingOnes, pTrailingOneSigns, pTotalCoeff, pTotalZeros, pLevels, pRuns});
}

VekStatus vekiEncodeCoeffsCAVLC_H264_32s(const Vek32s* pSrc, Vek8u startIdx, const Vek32s* pScan, Vek8u lastIdx,
                                         Vek8u* pTrailingOnes, Vek8u* pTrailingOneSigns, Vek8u* pTotalCoeff,
                                         Vek8u* pTotalZeros, Vek32s* pLevels, Vek8u* pRuns) {
    return encode4x4<Vek32s>(pSrc, startIdx, pScan, lastIdx,
                             {pTrailingOnes, pTrailingOneSigns, pTotalCoeff, pTotalZeros, pLevels, pRuns});
}

VekStatus vekiEncodeChromaDcCoeffsCAVLC_H264_16s(const Vek16s* pSrc, Vek8u* pTrailingOnes, Vek8u* pTrailingOneSigns,
                                                 Vek8u* pTotalCoeff, Vek8u* pTotalZeros, Vek16s* pLevels,
                                                 Vek8u* pRuns) {
    return encodeChromaDc<Vek16s>(pSrc, CavlcLayout2x2{},
                                  {pTrailingOnes, pTrailingOneSigns, pTotalCoeff, pTotalZeros, pLevels, pRuns});
}

VekStatus vekiEncodeCoeffsCAVLCChromaDC2x2_H264_32s(const Vek32s* pSrc, Vek8u* pTrailingOnes, Vek8u* pTrailingOneSigns,
                                                    Vek8u* pTotalCoeff, Vek8u* pTotalZeros, Vek32s* pLevels,
                                                    Vek8u* pRuns) {
    return encodeChromaDc<Vek32s>(pSrc, CavlcLayout2x2{},
                                  {pTrailingOnes, pTrailingOneSigns, pTotalCoeff, pTotalZeros, pLevels, pRuns});
}

VekStatus vekiEncodeCoeffsCAVLCChromaDC2x4_H264_16s(const Vek16s* pSrc, Vek8u* pTrailingOnes, Vek8u* pTrailingOneSigns,
                                                    Vek8u* pTotalCoeff, Vek8u* pTotalZeros, Vek16s* pLevels,
                                                    Vek8u* pRuns) {
    return encodeChromaDc<Vek16s>(pSrc, CavlcLayout2x4{},
                                  {pTrailingOnes, pTrailingOneSigns, pTotalCoeff, pTotalZeros, pLevels, pRuns});
}

VekStatus vekiEncodeCoeffsCAVLCChromaDC2x4_H264_32s(const Vek32s* pSrc, Vek8u* pTrailingOnes, Vek8u* pTrailingOneSigns,
                                                    Vek8u* pTotalCoeff, Vek8u* pTotalZeros, Vek32s* pLevels,
                                                    Vek8u* pRuns) {
    return encodeChromaDc<Vek32s>(pSrc, CavlcLayout2x4{},
                                  {pTrailingOnes, pTrailingOneSigns, pTotalCoeff, pTotalZeros, pLevels, pRuns});
}
