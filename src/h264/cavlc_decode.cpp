#include "core/check.h"
#include "core/kernel.h"
#include "h264/cavlc_decode_plain.h"
#if VEKVC_SIMD
#include "h264/cavlc_decode_simd.h"
#endif
#include "vekvc/h264_cavlc.h"

using namespace vekvc;

namespace {

template <class T>
VekStatus decode4x4(Vek32u** ppBitStream, Vek32s* pBitOffset, Vek16s* pTotalCoeff, T** ppCoeffs, Vek32s nC,
                    Vek16s maxNumCoeff, const Vek32s** ppCoeffTokenTables, const Vek32s** ppTotalZerosTables,
                    const Vek32s** ppRunBeforeTables, const Vek32s* pScan) {
    if (anyNull(ppBitStream, pBitOffset, ppCoeffs, pTotalCoeff, ppCoeffTokenTables, ppTotalZerosTables,
                ppRunBeforeTables, pScan)) {
        return vekStsErrNullPtr;
    }
    if (anyNull(load<Vek32u*>(ppBitStream), load<T*>(ppCoeffs))) return vekStsErrNullPtr;
    if (outside(maxNumCoeff, 15, 16)) return vekStsErrOutOfRange;
    if (nC < 0) return vekStsErrOutOfRange;
    return kernel::decodeCavlc4x4<T>(ppBitStream, pBitOffset, {pTotalCoeff, ppCoeffs}, nC, ppCoeffTokenTables,
                                     {ppTotalZerosTables, ppRunBeforeTables}, {maxNumCoeff, pScan});
}

template <class T, class Layout>
VekStatus decodeChromaDc(Vek32u** ppBitStream, Vek32s* pBitOffset, Vek16s* pTotalCoeff, T** ppCoeffs,
                         const Vek32s* pCoeffTokenTable, const Vek32s** ppTotalZerosTables,
                         const Vek32s** ppRunBeforeTables, Layout layout) {
    if (anyNull(ppBitStream, pBitOffset, pTotalCoeff, ppCoeffs, pCoeffTokenTable, ppTotalZerosTables,
                ppRunBeforeTables)) {
        return vekStsErrNullPtr;
    }
    if (anyNull(load<Vek32u*>(ppBitStream), load<T*>(ppCoeffs))) return vekStsErrNullPtr;
    return kernel::decodeCavlcChromaDc<T>(ppBitStream, pBitOffset, {pTotalCoeff, ppCoeffs}, pCoeffTokenTable,
                                          {ppTotalZerosTables, ppRunBeforeTables}, layout);
}

}  // namespace

VekStatus vekiDecodeCAVLCCoeffs_H264_1u16s(Vek32u** ppBitStream, Vek32s* pBitOffset, Vek16s* pTotalCoeff,
                                           Vek16s** ppCoeffs, Vek32s nC, Vek16s maxNumCoeff,
                                           const Vek32s** ppCoeffTokenTables, const Vek32s** ppTotalZerosTables,
                                           const Vek32s** ppRunBeforeTables, const Vek32s* pScan) {
    return decode4x4(ppBitStream, pBitOffset, pTotalCoeff, ppCoeffs, nC, maxNumCoeff, ppCoeffTokenTables,
                     ppTotalZerosTables, ppRunBeforeTables, pScan);
}

VekStatus vekiDecodeCAVLCCoeffs_H264_1u32s(Vek32u** ppBitStream, Vek32s* pBitOffset, Vek16s* pTotalCoeff,
                                           Vek32s** ppCoeffs, Vek32s nC, Vek16s maxNumCoeff,
                                           const Vek32s** ppCoeffTokenTables, const Vek32s** ppTotalZerosTables,
                                           const Vek32s** ppRunBeforeTables, const Vek32s* pScan) {
    return decode4x4(ppBitStream, pBitOffset, pTotalCoeff, ppCoeffs, nC, maxNumCoeff, ppCoeffTokenTables,
                     ppTotalZerosTables, ppRunBeforeTables, pScan);
}

VekStatus vekiDecodeCAVLCChromaDcCoeffs_H264_1u16s(Vek32u** ppBitStream, Vek32s* pBitOffset, Vek16s* pTotalCoeff,
                                                   Vek16s** ppCoeffs, const Vek32s* pCoeffTokenTable,
                                                   const Vek32s** ppTotalZerosTables,
                                                   const Vek32s** ppRunBeforeTables) {
    return decodeChromaDc(ppBitStream, pBitOffset, pTotalCoeff, ppCoeffs, pCoeffTokenTable, ppTotalZerosTables,
                          ppRunBeforeTables, CavlcLayout2x2{});
}

VekStatus vekiDecodeCAVLCChromaDcCoeffs_H264_1u32s(Vek32u** ppBitStream, Vek32s* pBitOffset, Vek16s* pTotalCoeff,
                                                   Vek32s** ppCoeffs, const Vek32s* pCoeffTokenTable,
                                                   const Vek32s** ppTotalZerosTables,
                                                   const Vek32s** ppRunBeforeTables) {
    return decodeChromaDc(ppBitStream, pBitOffset, pTotalCoeff, ppCoeffs, pCoeffTokenTable, ppTotalZerosTables,
                          ppRunBeforeTables, CavlcLayout2x2{});
}

VekStatus vekiDecodeCAVLCChroma422DcCoeffs_H264_1u16s(Vek32u** ppBitStream, Vek32s* pBitOffset, Vek16s* pTotalCoeff,
                                                      Vek16s** ppCoeffs, const Vek32s* pCoeffTokenTable,
                                                      const Vek32s** ppTotalZerosTables,
                                                      const Vek32s** ppRunBeforeTables) {
    return decodeChromaDc(ppBitStream, pBitOffset, pTotalCoeff, ppCoeffs, pCoeffTokenTable, ppTotalZerosTables,
                          ppRunBeforeTables, CavlcLayout2x4{});
}

VekStatus vekiDecodeCAVLCChroma422DcCoeffs_H264_1u32s(Vek32u** ppBitStream, Vek32s* pBitOffset, Vek16s* pTotalCoeff,
                                                      Vek32s** ppCoeffs, const Vek32s* pCoeffTokenTable,
                                                      const Vek32s** ppTotalZerosTables,
                                                      const Vek32s** ppRunBeforeTables) {
    return decodeChromaDc(ppBitStream, pBitOffset, pTotalCoeff, ppCoeffs, pCoeffTokenTable, ppTotalZerosTables,
                          ppRunBeforeTables, CavlcLayout2x4{});
}
