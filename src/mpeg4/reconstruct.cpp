// Exports: decoding of a block and its inverse quantization in one call.
#include "core/check.h"
#include "core/kernel.h"
#include "mpeg4/coefficients_plain.h"
#include "mpeg4/cursor.h"
#include "mpeg4/quantize_plain.h"
#include "vekvc/mpeg4.h"
#if VEKVC_SIMD
#include "mpeg4/coefficients_simd.h"
#include "mpeg4/quantize_simd.h"
#endif

using namespace vekvc;
using namespace vekvc::mpeg4;

namespace {

VekStatus check(Vek8u** ppBitStream, const Vek32s* pBitOffset, const Vek16s* pDstBlock, const Vek32s* pIndxLastNonZero,
                Vek32s QP) {
    if (anyNull(ppBitStream, pBitOffset, pDstBlock, pIndxLastNonZero)) return vekStsErrNullPtr;
    if (const VekStatus status = checkCursor(ppBitStream, pBitOffset); status != vekStsOk) return status;
    return outside(QP, 1, 31) ? vekStsErrQPRange : vekStsOk;
}

// An intra block: its DC, and `decodeAc` at the cursor behind it.
template <class Decode>
VekStatus reconstructIntra(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek16s* pDstBlock, Vek32s QP, Decode&& decodeAc) {
    Vek8u* stream = load<Vek8u*>(ppBitStream);
    Vek32s offset = load<Vek32s>(pBitOffset);
    if (const VekStatus status = kernel::decodeDcH263(&stream, &offset, pDstBlock); status != vekStsOk) return status;
    if (const VekStatus status = decodeAc(&stream, &offset); status != vekStsOk) return status;
    store(ppBitStream, stream);
    store(pBitOffset, offset);
    kernel::quantInvH263<true>(pDstBlock, QP);
    return vekStsOk;
}

}  // namespace

VekStatus vekiReconstructDCTBlockInter_MPEG4_1u16s(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek16s* pDstBlock,
                                                   Vek32s* pIndxLastNonZero, const Vek8u* pSpec, Vek32s QP,
                                                   Vek32s scan) {
    if (anyNull(ppBitStream, pBitOffset, pDstBlock, pIndxLastNonZero, pSpec)) return vekStsErrNullPtr;
    if (anyNull(load<Vek8u*>(ppBitStream))) return vekStsErrNullPtr;
    if (!isSpecification(pSpec, Kind::quantInvInter)) return vekStsErrContextMatch;
    if (const VekStatus status = checkCursor(ppBitStream, pBitOffset); status != vekStsOk) return status;
    const InverseQuantizer& q = *stateIn<InverseQuantizer>(pSpec);
    if (outside(QP, 1, q.largestQp())) return vekStsErrQPRange;
    const VekStatus status = kernel::decodeBlock<Syntax::mpeg4, kInter>(ppBitStream, pBitOffset, pDstBlock,
                                                                        pIndxLastNonZero, interLayout(scan));
    if (status == vekStsOk) kernel::quantInvMpeg4<false>(pDstBlock, q, QP, 0);
    return status;
}

VekStatus vekiReconstructDCTBlockIntra_H263_1u16s(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek16s* pDstBlock,
                                                  Vek32s* pIndxLastNonZero, Vek32s codedFlag, Vek32s modQuantFlag,
                                                  Vek32s QP) {
    if (const VekStatus status = check(ppBitStream, pBitOffset, pDstBlock, pIndxLastNonZero, QP); status != vekStsOk)
        return status;
    return reconstructIntra(ppBitStream, pBitOffset, pDstBlock, QP, [&](Vek8u** stream, Vek32s* offset) {
        if (codedFlag != 0)
            return kernel::decodeBlock<Syntax::h263, kInter>(stream, offset, pDstBlock, pIndxLastNonZero,
                                                             zigzagLayout(1, modQuantFlag != 0));
        clearBlock(pDstBlock, 1);
        store<Vek32s>(pIndxLastNonZero, 0);
        return VekStatus{vekStsOk};
    });
}

VekStatus vekiReconstructDCTBlockInter_H263_1u16s(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek16s* pDstBlock,
                                                  Vek32s* pIndxLastNonZero, Vek32s altVLCFlag, Vek32s modQuantFlag,
                                                  Vek32s QP) {
    if (const VekStatus status = check(ppBitStream, pBitOffset, pDstBlock, pIndxLastNonZero, QP); status != vekStsOk)
        return status;
    const BlockLayout layout = zigzagLayout(0, modQuantFlag != 0);
    const VekStatus status =
        altVLCFlag != 0
            ? kernel::decodeBlockAlternative(ppBitStream, pBitOffset, pDstBlock, pIndxLastNonZero, layout)
            : kernel::decodeBlock<Syntax::h263, kInter>(ppBitStream, pBitOffset, pDstBlock, pIndxLastNonZero, layout);
    if (status == vekStsOk) kernel::quantInvH263<false>(pDstBlock, QP);
    return status;
}

VekStatus vekiReconstructDCTBlockIntra_H261_1u16s(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek16s* pDstBlock,
                                                  Vek32s* pIndxLastNonZero, Vek32s QP) {
    if (const VekStatus status = check(ppBitStream, pBitOffset, pDstBlock, pIndxLastNonZero, QP); status != vekStsOk)
        return status;
    return reconstructIntra(ppBitStream, pBitOffset, pDstBlock, QP, [&](Vek8u** stream, Vek32s* offset) {
        return kernel::decodeBlock<Syntax::h261Intra, kH261>(stream, offset, pDstBlock, pIndxLastNonZero,
                                                             zigzagLayout(1));
    });
}

VekStatus vekiReconstructDCTBlockInter_H261_1u16s(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek16s* pDstBlock,
                                                  Vek32s* pIndxLastNonZero, Vek32s QP) {
    if (const VekStatus status = check(ppBitStream, pBitOffset, pDstBlock, pIndxLastNonZero, QP); status != vekStsOk)
        return status;
    const VekStatus status = kernel::decodeBlock<Syntax::h261Inter, kH261>(ppBitStream, pBitOffset, pDstBlock,
                                                                           pIndxLastNonZero, zigzagLayout(0));
    if (status == vekStsOk) kernel::quantInvH263<false>(pDstBlock, QP);
    return status;
}
