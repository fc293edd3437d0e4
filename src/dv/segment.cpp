// Exports: video segments.
#include "core/check.h"
#include "core/kernel.h"
#include "dv/segment_plain.h"
#if VEKVC_SIMD
#include "dv/segment_simd.h"
#endif

using namespace vekvc;

VekStatus vekiDecodeCoeffsSegment_DV_1u16s(const Vek8u* pSrc, Vek16s* pDst, VekDVBlockInfo* pInfo,
                                           const VekDVHuffmanTable_32s* pTable) {
    if (anyNull(pSrc, pDst, pInfo, pTable)) return vekStsErrNullPtr;
    kernel::decodeSegment<dv::Kind::dv>(pSrc, pDst, pInfo, pTable);
    return vekStsOk;
}

VekStatus vekiDecodeCoeffsSegment422_DV_1u16s(const Vek8u* pSrc, Vek16s* pDst, VekDVBlockInfo* pInfo,
                                              const VekDVHuffmanTable_32s* pTable) {
    if (anyNull(pSrc, pDst, pInfo, pTable)) return vekStsErrNullPtr;
    kernel::decodeSegment<dv::Kind::dv422>(pSrc, pDst, pInfo, pTable);
    return vekStsOk;
}

VekStatus vekiDecodeCoeffsSegment_DV100_1u16s(const Vek8u* pSrc, Vek16s* pDst, VekDVBlockInfo* pInfo,
                                              const VekDVHuffmanTable_32s* pTable) {
    if (anyNull(pSrc, pDst, pInfo, pTable)) return vekStsErrNullPtr;
    kernel::decodeSegment<dv::Kind::dv100>(pSrc, pDst, pInfo, pTable);
    return vekStsOk;
}
