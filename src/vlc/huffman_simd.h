// Reading one code on a 64-bit window of the stream.
#ifndef VEKVC_VLC_HUFFMAN_SIMD_H
#define VEKVC_VLC_HUFFMAN_SIMD_H

#include "vlc/look_up.h"

namespace vekvc::simd {

inline VekStatus decodeHuffmanOne(Vek32u** ppBitStream, Vek32s* pBitOffset, Vek32s* pDst, const Vek32s* table) {
    WordWindow window(ppBitStream, pBitOffset);
    const VlcLook code = look(window, table);
    store<Vek32s>(pDst, code.value());
    if (code.noCode()) [[unlikely]] {
        window.commit(ppBitStream, pBitOffset, -code.width);
        return vekStsErrVlcData;
    }
    window.commit(ppBitStream, pBitOffset, -code.lengthHere());
    return vekStsOk;
}

inline VekStatus decodeHuffmanPair(Vek32u** ppBitStream, Vek32s* pBitOffset, const Vek32s* table, Vek8u* pFirst,
                                   Vek16s* pSecond) {
    WordWindow window(ppBitStream, pBitOffset);
    const VlcLook code = look(window, table);
    if (code.noCode()) [[unlikely]]
        return vekStsErrVlcData;
    window.commit(ppBitStream, pBitOffset, -code.lengthHere());
    *pFirst = static_cast<Vek8u>(code.run());
    store<Vek16s>(pSecond, static_cast<Vek16s>(code.level()));
    return vekStsOk;
}

}  // namespace vekvc::simd

#endif
