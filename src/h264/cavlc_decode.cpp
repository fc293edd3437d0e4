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

// The codes "1" and "01" of the 2x2 block (Table 9-5, nC = -1) with the rest of their blocks. False for any other code.
bool shortChromaDc(Vek32u** ppBitStream, Vek32s* pBitOffset, Vek16s* pTotalCoeff, Vek16s** ppCoeffs) {
    Vek32u* const word = load<Vek32u*>(ppBitStream);
    const Vek32s used = 31 - load<Vek32s>(pBitOffset);
    const auto bits = static_cast<unsigned>(loadTwoWords(word) << used >> 59);
    if ((bits & 0x10) != 0) {  // TotalCoeff 1: 1, sign, total_zeros (Table 9-9 a: 1, 01, 001, 000)
        static constexpr Vek8u kTotalZeros[8] = {3, 2, 1, 1, 0, 0, 0, 0};
        const int totalZeros = kTotalZeros[bits & 7];
        Vek16s* const block = load<Vek16s*>(ppCoeffs);
        std::memset(block, 0, 4 * sizeof *block);
        store<Vek16s>(block + totalZeros, (bits & 8) != 0 ? -1 : 1);
        store(ppCoeffs, block + 4);
        store<Vek16s>(pTotalCoeff, 1);
        storeCursor(ppBitStream, pBitOffset, word, used + (totalZeros < 2 ? 3 + totalZeros : 5));
        return true;
    }
    if ((bits & 0x08) != 0) {  // TotalCoeff 0
        store<Vek16s>(pTotalCoeff, 0);
        storeCursor(ppBitStream, pBitOffset, word, used + 2);
        return true;
    }
    return false;
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
    if constexpr (std::is_same_v<T, Vek16s> && Layout::kSize == 4) {
        if (shortChromaDc(ppBitStream, pBitOffset, pTotalCoeff, ppCoeffs)) return vekStsOk;
    }
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
