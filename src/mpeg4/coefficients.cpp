// Exports: decoding of DC values and coefficient blocks.
#include "core/check.h"
#include "core/kernel.h"
#include "mpeg4/coefficients_plain.h"
#include "mpeg4/cursor.h"
#include "vekvc/mpeg4.h"
#if VEKVC_SIMD
#include "mpeg4/coefficients_simd.h"
#endif

using namespace vekvc;
using namespace vekvc::mpeg4;

namespace {

template <Syntax syntax, const CodeTable& table>
VekStatus decode(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek16s* pDstBlock, Vek32s* pIndxLastNonZero,
                 BlockLayout layout) {
    if (anyNull(ppBitStream, pBitOffset, pDstBlock, pIndxLastNonZero)) return vekStsErrNullPtr;
    if (const VekStatus status = checkCursor(ppBitStream, pBitOffset); status != vekStsOk) return status;
    return kernel::decodeBlock<syntax, table>(ppBitStream, pBitOffset, pDstBlock, pIndxLastNonZero, layout);
}

template <const CodeTable& table>
VekStatus decodeBackward(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek32s numBits, Vek16s* pDstBlock,
                         Vek32s* pIndxLastNonZero, BlockLayout layout) {
    if (anyNull(ppBitStream, pBitOffset, pDstBlock, pIndxLastNonZero)) return vekStsErrNullPtr;
    if (const VekStatus status = checkCursor(ppBitStream, pBitOffset); status != vekStsOk) return status;
    if (anyBelow(1, numBits)) return vekStsErrSize;
    return kernel::decodeBlockBackward<table>(ppBitStream, pBitOffset, numBits, pDstBlock, pIndxLastNonZero, layout);
}

}  // namespace

VekStatus vekiDecodeDCIntra_MPEG4_1u16s(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek16s* pDC, Vek32s videoComp) {
    if (anyNull(ppBitStream, pBitOffset, pDC)) return vekStsErrNullPtr;
    if (const VekStatus status = checkCursor(ppBitStream, pBitOffset); status != vekStsOk) return status;
    return kernel::decodeDcMpeg4(ppBitStream, pBitOffset, pDC, videoComp != 0);
}

VekStatus vekiDecodeCoeffsIntra_MPEG4_1u16s(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek16s* pDstBlock,
                                            Vek32s* pIndxLastNonZero, Vek32s noDCFlag, Vek32s scan) {
    return decode<Syntax::mpeg4, kIntra>(ppBitStream, pBitOffset, pDstBlock, pIndxLastNonZero,
                                         intraLayout(noDCFlag, scan));
}

VekStatus vekiDecodeCoeffsInter_MPEG4_1u16s(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek16s* pDstBlock,
                                            Vek32s* pIndxLastNonZero, Vek32s scan) {
    return decode<Syntax::mpeg4, kInter>(ppBitStream, pBitOffset, pDstBlock, pIndxLastNonZero, interLayout(scan));
}

VekStatus vekiDecodeCoeffsIntraRVLC_MPEG4_1u16s(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek16s* pDstBlock,
                                                Vek32s* pIndxLastNonZero, Vek32s noDCFlag, Vek32s scan) {
    return decode<Syntax::reversible, kReversibleIntra>(ppBitStream, pBitOffset, pDstBlock, pIndxLastNonZero,
                                                        intraLayout(noDCFlag, scan));
}

VekStatus vekiDecodeCoeffsInterRVLC_MPEG4_1u16s(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek16s* pDstBlock,
                                                Vek32s* pIndxLastNonZero, Vek32s scan) {
    return decode<Syntax::reversible, kReversibleInter>(ppBitStream, pBitOffset, pDstBlock, pIndxLastNonZero,
                                                        interLayout(scan));
}

VekStatus vekiDecodeCoeffsIntraRVLCBackward_MPEG4_1u16s(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek32s numBits,
                                                        Vek16s* pDstBlock, Vek32s* pIndxLastNonZero, Vek32s noDCFlag,
                                                        Vek32s scan) {
    return decodeBackward<kReversibleIntra>(ppBitStream, pBitOffset, numBits, pDstBlock, pIndxLastNonZero,
                                            intraLayout(noDCFlag, scan));
}

VekStatus vekiDecodeCoeffsInterRVLCBackward_MPEG4_1u16s(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek32s numBits,
                                                        Vek16s* pDstBlock, Vek32s* pIndxLastNonZero, Vek32s scan) {
    return decodeBackward<kReversibleInter>(ppBitStream, pBitOffset, numBits, pDstBlock, pIndxLastNonZero,
                                            interLayout(scan));
}

VekStatus vekiDecodeDCIntra_H263_1u16s(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek16s* pDC) {
    if (anyNull(ppBitStream, pBitOffset, pDC)) return vekStsErrNullPtr;
    if (const VekStatus status = checkCursor(ppBitStream, pBitOffset); status != vekStsOk) return status;
    return kernel::decodeDcH263(ppBitStream, pBitOffset, pDC);
}

VekStatus vekiDecodeCoeffsIntra_H263_1u16s(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek16s* pDstBlock,
                                           Vek32s* pIndxLastNonZero, Vek32s advIntraFlag, Vek32s modQuantFlag,
                                           Vek32s scan) {
    const bool extended = modQuantFlag != 0;
    if (advIntraFlag == 0)
        return decode<Syntax::h263, kInter>(ppBitStream, pBitOffset, pDstBlock, pIndxLastNonZero,
                                            zigzagLayout(1, extended));
    return decode<Syntax::h263, kAdvancedIntra>(ppBitStream, pBitOffset, pDstBlock, pIndxLastNonZero,
                                                {scanTable(scan), 0, extended});
}

VekStatus vekiDecodeCoeffsInter_H263_1u16s(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek16s* pDstBlock,
                                           Vek32s* pIndxLastNonZero, Vek32s altVLCFlag, Vek32s modQuantFlag) {
    const BlockLayout layout = zigzagLayout(0, modQuantFlag != 0);
    if (altVLCFlag == 0)
        return decode<Syntax::h263, kInter>(ppBitStream, pBitOffset, pDstBlock, pIndxLastNonZero, layout);
    if (anyNull(ppBitStream, pBitOffset, pDstBlock, pIndxLastNonZero)) return vekStsErrNullPtr;
    if (const VekStatus status = checkCursor(ppBitStream, pBitOffset); status != vekStsOk) return status;
    return kernel::decodeBlockAlternative(ppBitStream, pBitOffset, pDstBlock, pIndxLastNonZero, layout);
}

VekStatus vekiDecodeCoeffsIntra_H261_1u16s(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek16s* pDstBlock,
                                           Vek32s* pIndxLastNonZero) {
    return decode<Syntax::h261Intra, kH261>(ppBitStream, pBitOffset, pDstBlock, pIndxLastNonZero, zigzagLayout(1));
}

VekStatus vekiDecodeCoeffsInter_H261_1u16s(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek16s* pDstBlock,
                                           Vek32s* pIndxLastNonZero) {
    return decode<Syntax::h261Inter, kH261>(ppBitStream, pBitOffset, pDstBlock, pIndxLastNonZero, zigzagLayout(0));
}
