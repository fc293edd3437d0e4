// Exports: writing of DC values and coefficient blocks.
#include "core/check.h"
#include "core/kernel.h"
#include "mpeg4/cursor.h"
#include "mpeg4/encode_plain.h"
#include "vekvc/mpeg4.h"
#if VEKVC_SIMD
#include "mpeg4/encode_simd.h"
#endif

using namespace vekvc;
using namespace vekvc::mpeg4;

namespace {

template <Syntax syntax, const CodeTable& table>
VekStatus encode(Vek8u** ppBitStream, Vek32s* pBitOffset, const Vek16s* pSrcBlock, BlockLayout layout) {
    if (anyNull(ppBitStream, pBitOffset, pSrcBlock)) return vekStsErrNullPtr;
    if (const VekStatus status = checkCursor(ppBitStream, pBitOffset); status != vekStsOk) return status;
    kernel::encodeBlock<syntax, table>(ppBitStream, pBitOffset, pSrcBlock, layout);
    return vekStsOk;
}

VekStatus checkDc(Vek8u** ppBitStream, const Vek32s* pBitOffset, Vek16s dc, Vek32s low, Vek32s high) {
    if (anyNull(ppBitStream, pBitOffset)) return vekStsErrNullPtr;
    if (const VekStatus status = checkCursor(ppBitStream, pBitOffset); status != vekStsOk) return status;
    return outside(dc, low, high) ? vekStsErrOutOfRange : vekStsOk;
}

}  // namespace

VekStatus vekiEncodeDCIntra_MPEG4_16s1u(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek16s dc, Vek32s videoComp) {
    if (const VekStatus status = checkDc(ppBitStream, pBitOffset, dc, -4095, 4095); status != vekStsOk) return status;
    kernel::encodeDcMpeg4(ppBitStream, pBitOffset, dc, videoComp != 0);
    return vekStsOk;
}

VekStatus vekiEncodeCoeffsIntra_MPEG4_16s1u(Vek8u** ppBitStream, Vek32s* pBitOffset, const Vek16s* pSrcBlock,
                                            Vek32s noDCFlag, Vek32s scan) {
    return encode<Syntax::mpeg4, kIntra>(ppBitStream, pBitOffset, pSrcBlock, intraLayout(noDCFlag, scan));
}

VekStatus vekiEncodeCoeffsInter_MPEG4_16s1u(Vek8u** ppBitStream, Vek32s* pBitOffset, const Vek16s* pSrcBlock,
                                            Vek32s scan) {
    return encode<Syntax::mpeg4, kInter>(ppBitStream, pBitOffset, pSrcBlock, interLayout(scan));
}

VekStatus vekiEncodeCoeffsIntraRVLC_MPEG4_16s1u(Vek8u** ppBitStream, Vek32s* pBitOffset, const Vek16s* pSrcBlock,
                                                Vek32s noDCFlag, Vek32s scan) {
    return encode<Syntax::reversible, kReversibleIntra>(ppBitStream, pBitOffset, pSrcBlock,
                                                        intraLayout(noDCFlag, scan));
}

VekStatus vekiEncodeCoeffsInterRVLC_MPEG4_16s1u(Vek8u** ppBitStream, Vek32s* pBitOffset, const Vek16s* pSrcBlock,
                                                Vek32s scan) {
    return encode<Syntax::reversible, kReversibleInter>(ppBitStream, pBitOffset, pSrcBlock, interLayout(scan));
}

VekStatus vekiEncodeDCIntra_H263_16s1u(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek16s dc) {
    if (const VekStatus status = checkDc(ppBitStream, pBitOffset, dc, 1, 254); status != vekStsOk) return status;
    kernel::encodeDcH263(ppBitStream, pBitOffset, dc);
    return vekStsOk;
}

VekStatus vekiEncodeCoeffsIntra_H263_16s1u(Vek8u** ppBitStream, Vek32s* pBitOffset, const Vek16s* pSrcBlock,
                                           Vek32s advIntraFlag, Vek32s modQuantFlag, Vek32s scan) {
    const bool extended = modQuantFlag != 0;
    if (advIntraFlag == 0)
        return encode<Syntax::h263, kInter>(ppBitStream, pBitOffset, pSrcBlock, zigzagLayout(1, extended));
    return encode<Syntax::h263, kAdvancedIntra>(ppBitStream, pBitOffset, pSrcBlock, {scanTable(scan), 0, extended});
}

VekStatus vekiEncodeCoeffsInter_H263_16s1u(Vek8u** ppBitStream, Vek32s* pBitOffset, const Vek16s* pSrcBlock,
                                           Vek32s modQuantFlag) {
    return encode<Syntax::h263, kInter>(ppBitStream, pBitOffset, pSrcBlock, zigzagLayout(0, modQuantFlag != 0));
}

VekStatus vekiEncodeCoeffsIntra_H261_16s1u(Vek8u** ppBitStream, Vek32s* pBitOffset, const Vek16s* pSrcBlock) {
    return encode<Syntax::h261Intra, kH261>(ppBitStream, pBitOffset, pSrcBlock, zigzagLayout(1));
}

VekStatus vekiEncodeCoeffsInter_H261_16s1u(Vek8u** ppBitStream, Vek32s* pBitOffset, const Vek16s* pSrcBlock) {
    return encode<Syntax::h261Inter, kH261>(ppBitStream, pBitOffset, pSrcBlock, zigzagLayout(0));
}
