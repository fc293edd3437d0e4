// Exports: single codes.
#include "core/check.h"
#include "core/kernel.h"
#include "vekvc/vlc.h"
#include "vlc/huffman_plain.h"
#if VEKVC_SIMD
#include "vlc/huffman_simd.h"
#endif

using namespace vekvc;

VekStatus vekiDecodeHuffmanOne_1u32s(Vek32u** ppBitStream, Vek32s* pBitOffset, Vek32s* pDst,
                                     const VekVlcTable_32s* pDecodeTable) {
    if (anyNull(ppBitStream, pBitOffset, pDecodeTable)) return vekStsErrNullPtr;
    if (anyNull(load<Vek32u*>(ppBitStream), pDst)) return vekStsErrNullPtr;
    return kernel::decodeHuffmanOne(ppBitStream, pBitOffset, pDst, pDecodeTable);
}

VekStatus vekiDecodeHuffmanPair_1u16s(Vek32u** ppBitStream, Vek32s* pBitOffset, const VekVlcTable_32s* pDecodeTable,
                                      Vek8u* pFirst, Vek16s* pSecond) {
    if (anyNull(ppBitStream, pBitOffset, pDecodeTable, pFirst, pSecond)) return vekStsErrNullPtr;
    if (anyNull(load<Vek32u*>(ppBitStream))) return vekStsErrNullPtr;
    return kernel::decodeHuffmanPair(ppBitStream, pBitOffset, pDecodeTable, pFirst, pSecond);
}
