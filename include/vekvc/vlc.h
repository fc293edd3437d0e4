/** @file vlc.h
 *  Variable-length codes: decode and encode tables made from a caller's code list, and readers of single codes.
 *
 *  Bit streams are sequences of native 32-bit words, each read or written from its most significant bit down;
 *  `**ppBitStream` is the current word, `*pBitOffset` (31 down to 0, 31 the most significant; not checked) its next
 *  bit. A reader touches at most the word that follows the one holding the last bit that it consumes.
 *
 *  Code lists. A code table of a standard is handed to the builders as an array of Vek32s:
 *  - word 0 is not read (by convention the longest code length);
 *  - word 1 is N, the number of lookup levels; words 2 to N + 1 give the bits that each level looks up. Codes longer
 *    than their sum are left out;
 *  - then, for code lengths 1, 2, 3 ... in turn, a count of codes and as many records; a negative count ends the list.
 *    A record is `code, value` for vekiHuffmanTableInitAlloc_32s(), and `code, run, level` for
 *    vekiHuffmanRunLevelTableInitAlloc_32s() and vekiCreateRLEncodeTable(); `code` is right-aligned. There `run` 255
 *    marks the escape code and `run` 254 the end-of-block code, whose levels are ignored.
 *
 *  Lists are not validated: the caller ends them and makes them prefix-free.
 *
 *  Decode tables (VekVlcTable_32s) are arrays of 32-bit entries. A (sub-)table at entry `off` holds the number b of
 *  bits to look up at `off` and its 2^b slots at `off` + 1 onwards; the first one starts at entry 0, the others follow
 *  in the order in which the list first needs them. A slot is one of
 *  - `(off << 8) | 0x80`: look up the next bits in the sub-table at `off`;
 *  - `(value << 8) | g`, or `(level << 16) | ((run & 0xFF) << 8) | g`: a code that ends g bits before the last bit
 *  looked up; a value keeps its low 24 bits, a level its low 16; the level of escape and end of block is stored as 0;
 *  - `0x00F0F101`: no code.
 *
 *  Encode tables (VekRLEncodeTable) are arrays of 32-bit words. Word 0 holds the escape code in bits 0-9 and the
 *  end-of-block code in bits 10-19, each as `(code << 4) | length`, and the largest run in bits 20-31. Word 1 + r holds
 *  the byte offset, from the table's start, of the centre word of run r. The centre holds the largest magnitude of a
 *  level with that run (-1 if there is none); the word `level` words from the centre holds `(code << 16) | length`.
 *
 *  Tables do not change once built; any number of threads may share them.
 */
#ifndef VEKVC_VLC_H
#define VEKVC_VLC_H

#include "vekvc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef Vek32s VekVlcTable_32s;  /**< an entry of a decode table; a table is passed by its first entry */
typedef Vek32s VekRLEncodeTable; /**< a word of a run/level encode table; a table is passed by its first word */

/** Builds a decode table of single values.
 *  @param[in] pSrcTable   the code list, records `code, value`
 *  @param[out] ppDstSpec  receives the table, one block from vekMalloc(); release it with vekiHuffmanTableFree_32s()
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrMemAlloc, with nothing written, if there is no memory for the table or
 *          its layout cannot address it (a sub-table beyond entry 2^23)
 */
VEKVC_API VekStatus vekiHuffmanTableInitAlloc_32s(const Vek32s* pSrcTable, VekVlcTable_32s** ppDstSpec);

/** Builds a decode table of run/level pairs.
 *  @param[in] pSrcTable   the code list, records `code, run, level`
 *  @param[out] ppDstSpec  receives the table, one block from vekMalloc(); release it with vekiHuffmanTableFree_32s()
 *  @return as vekiHuffmanTableInitAlloc_32s()
 */
VEKVC_API VekStatus vekiHuffmanRunLevelTableInitAlloc_32s(const Vek32s* pSrcTable, VekVlcTable_32s** ppDstSpec);

/** Releases a table of vekiHuffmanTableInitAlloc_32s() or vekiHuffmanRunLevelTableInitAlloc_32s().
 *  @param[in] pDecodeTable  the table
 *  @return vekStsOk; vekStsErrNullPtr
 */
VEKVC_API VekStatus vekiHuffmanTableFree_32s(VekVlcTable_32s* pDecodeTable);

/** Builds a run/level encode table.
 *  @param[in] pSrcTable   the code list, records `code, run, level` with both signs of each level
 *  @param[out] ppDstSpec  receives the table, one block from vekMalloc(); release it with vekFree()
 *  @return vekStsOk; vekStsErrNullPtr; vekStsErrMemAlloc, with nothing written, if there is no memory for the table.
 *          Records with a negative run, a run above 4095 or a place outside the table are not entered. Where a run's
 *          levels do not come in pairs of both signs, codes may take the place of other runs' codes.
 */
VEKVC_API VekStatus vekiCreateRLEncodeTable(const Vek32s* pSrcTable, VekRLEncodeTable** ppDstSpec);

/** Decodes one value.
 *  @param[in,out] ppBitStream  the word cursor; moves past the code. Where no code matches it moves past all bits
 *  looked up (unlike vekiDecodeHuffmanPair_1u16s())
 *  @param[in,out] pBitOffset   the word cursor's bit
 *  @param[out] pDst            receives the value, -2^23 to 2^23 - 1; where no code matches 61681
 *  @param[in] pDecodeTable     a table of vekiHuffmanTableInitAlloc_32s()
 *  @return vekStsOk; vekStsErrNullPtr for a null pointer or `*ppBitStream`; vekStsErrVlcData if no code matches. The
 *          value 61681 is the mark of no code and cannot be a code's value.
 */
VEKVC_API VekStatus vekiDecodeHuffmanOne_1u32s(Vek32u** ppBitStream, Vek32s* pBitOffset, Vek32s* pDst,
                                               const VekVlcTable_32s* pDecodeTable);

/** Decodes one run/level pair. Escape and end of block come back as run 255 and 254.
 *  @param[in,out] ppBitStream  the word cursor; moves past the code; stays where no code matches
 *  @param[in,out] pBitOffset   the word cursor's bit
 *  @param[in] pDecodeTable     a table of vekiHuffmanRunLevelTableInitAlloc_32s()
 *  @param[out] pFirst          receives the run
 *  @param[out] pSecond         receives the level
 *  @return vekStsOk; vekStsErrNullPtr for a null pointer or `*ppBitStream`; vekStsErrVlcData, with nothing written, if
 *          no code matches (which is also what the pair run 241, level 240 reads as)
 */
VEKVC_API VekStatus vekiDecodeHuffmanPair_1u16s(Vek32u** ppBitStream, Vek32s* pBitOffset,
                                                const VekVlcTable_32s* pDecodeTable, Vek8u* pFirst, Vek16s* pSecond);

#ifdef __cplusplus
}
#endif

#endif
