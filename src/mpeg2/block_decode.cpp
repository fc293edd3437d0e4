#include "core/check.h"
#include "core/kernel.h"
#include "mpeg2/block_decode_plain.h"
#if VEKVC_SIMD
#include "mpeg2/block_decode_simd.h"
#endif
#include "vekvc/mpeg2.h"

using namespace vekvc;

namespace {

bool anyNullTarget(const BlockTarget& target) {
    return anyNull(target.pScanMatrix, target.pQuantMatrix, target.pDstBlock, target.pDstSize);
}

template <Standard standard>
VekStatus decodeNonIntra(Vek32u** ppBitStream, Vek32s* pBitOffset, const VekVlcTable_32s* pFirstCoefTable,
                         const VekVlcTable_32s* pACTable, const BlockTarget& target) {
    if (anyNull(ppBitStream, pBitOffset, pFirstCoefTable)) return vekStsErrNullPtr;
    if (anyNull(load<Vek32u*>(ppBitStream), pACTable) || anyNullTarget(target)) return vekStsErrNullPtr;
    return kernel::reconstructBlock<standard>(ppBitStream, pBitOffset, pFirstCoefTable, pACTable, target);
}

template <Standard standard>
VekStatus decodeIntra(Vek32u** ppBitStream, Vek32s* pBitOffset, const BlockDc& dc, const VekVlcTable_32s* pACTable,
                      const BlockTarget& target) {
    if (anyNull(ppBitStream, pBitOffset, dc.pDCSizeTable)) return vekStsErrNullPtr;
    if (anyNull(load<Vek32u*>(ppBitStream), pACTable, dc.pDCPred) || anyNullTarget(target)) return vekStsErrNullPtr;
    return kernel::reconstructBlockIntra<standard>(ppBitStream, pBitOffset, dc, pACTable, target);
}

}  // namespace

VekStatus vekiReconstructDCTBlock_MPEG1_32s(Vek32u** ppBitStream, Vek32s* pBitOffset,
                                            const VekVlcTable_32s* pFirstCoefTable, const VekVlcTable_32s* pACTable,
                                            const Vek32s* pScanMatrix, Vek32s QP, const Vek16s* pQuantMatrix,
                                            Vek16s* pDstBlock, Vek32s* pDstSize) {
    return decodeNonIntra<Standard::mpeg1>(ppBitStream, pBitOffset, pFirstCoefTable, pACTable,
                                           {pScanMatrix, QP, pQuantMatrix, pDstBlock, pDstSize});
}

VekStatus vekiReconstructDCTBlock_MPEG2_32s(Vek32u** ppBitStream, Vek32s* pBitOffset,
                                            const VekVlcTable_32s* pFirstCoefTable, const VekVlcTable_32s* pACTable,
                                            const Vek32s* pScanMatrix, Vek32s QP, const Vek16s* pQuantMatrix,
                                            Vek16s* pDstBlock, Vek32s* pDstSize) {
    return decodeNonIntra<Standard::mpeg2>(ppBitStream, pBitOffset, pFirstCoefTable, pACTable,
                                           {pScanMatrix, QP, pQuantMatrix, pDstBlock, pDstSize});
}

VekStatus vekiReconstructDCTBlockIntra_MPEG1_32s(Vek32u** ppBitStream, Vek32s* pBitOffset,
                                                 const VekVlcTable_32s* pDCSizeTable, const VekVlcTable_32s* pACTable,
                                                 const Vek32s* pScanMatrix, Vek32s QP, const Vek16s* pQuantMatrix,
                                                 Vek16s* pDCPred, Vek16s* pDstBlock, Vek32s* pDstSize) {
    return decodeIntra<Standard::mpeg1>(ppBitStream, pBitOffset, {pDCSizeTable, pDCPred, 0}, pACTable,
                                        {pScanMatrix, QP, pQuantMatrix, pDstBlock, pDstSize});
}

VekStatus vekiReconstructDCTBlockIntra_MPEG2_32s(Vek32u** ppBitStream, Vek32s* pBitOffset,
                                                 const VekVlcTable_32s* pDCSizeTable, const VekVlcTable_32s* pACTable,
                                                 const Vek32s* pScanMatrix, Vek32s QP, const Vek16s* pQuantMatrix,
                                                 Vek16s* pDCPred, Vek32s shiftDCVal, Vek16s* pDstBlock,
                                                 Vek32s* pDstSize) {
    return decodeIntra<Standard::mpeg2>(ppBitStream, pBitOffset, {pDCSizeTable, pDCPred, shiftDCVal}, pACTable,
                                        {pScanMatrix, QP, pQuantMatrix, pDstBlock, pDstSize});
}
