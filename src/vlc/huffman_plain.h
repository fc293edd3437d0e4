// Reading one code by a decode table, level by level.
#ifndef VEKVC_VLC_HUFFMAN_PLAIN_H
#define VEKVC_VLC_HUFFMAN_PLAIN_H

#include "vlc/look_up.h"

namespace vekvc::plain {

inline VekStatus decodeHuffmanOne(Vek32u** ppBitStream, Vek32s* pBitOffset, Vek32s* pDst, const Vek32s* table) {
    WordReader reader(ppBitStream, pBitOffset);
    const VlcSlot code = lookUp(reader, table);
    store<Vek32s>(pDst, code.value());
    if (!code.noCode()) reader.giveBack(code.giveBack());
    reader.commit(ppBitStream, pBitOffset);
    return code.noCode() ? vekStsErrVlcData : vekStsOk;
}

inline VekStatus decodeHuffmanPair(Vek32u** ppBitStream, Vek32s* pBitOffset, const Vek32s* table, Vek8u* pFirst,
                                   Vek16s* pSecond) {
    WordReader reader(ppBitStream, pBitOffset);
    const VlcSlot code = lookUp(reader, table);
    if (code.noCode()) return vekStsErrVlcData;
    reader.giveBack(code.giveBack());
    reader.commit(ppBitStream, pBitOffset);
    *pFirst = static_cast<Vek8u>(code.run());
    store<Vek16s>(pSecond, static_cast<Vek16s>(code.level()));
    return vekStsOk;
}

}  // namespace vekvc::plain

#endif
