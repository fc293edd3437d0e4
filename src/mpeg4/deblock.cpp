// Exports: deblocking.
#include "core/check.h"
#include "core/kernel.h"
#include "mpeg4/deblock_plain.h"
#include "vekvc/mpeg4_filter.h"
#if VEKVC_SIMD
#include "mpeg4/deblock_simd.h"
#endif

using namespace vekvc;
using mpeg4::Edge;

VekStatus vekiFilterDeblocking8x8_HorEdge_H263_8u_C1IR(Vek8u* pSrcDst, Vek32s srcDstStep, Vek32s QP) {
    if (anyNull(pSrcDst)) return vekStsErrNullPtr;
    if (outside(QP, 1, 31)) return vekStsErrQPRange;
    return finish([&] { return kernel::deblockH263<Edge::horizontal>(pSrcDst, srcDstStep, QP); });
}

VekStatus vekiFilterDeblocking8x8_VerEdge_H263_8u_C1IR(Vek8u* pSrcDst, Vek32s srcDstStep, Vek32s QP) {
    if (anyNull(pSrcDst)) return vekStsErrNullPtr;
    if (outside(QP, 1, 31)) return vekStsErrQPRange;
    return finish([&] { return kernel::deblockH263<Edge::vertical>(pSrcDst, srcDstStep, QP); });
}

VekStatus vekiFilterDeblocking8x8_HorEdge_MPEG4_8u_C1IR(Vek8u* pSrcDst, Vek32s srcDstStep, Vek32s QP) {
    if (anyNull(pSrcDst)) return vekStsErrNullPtr;
    if (outside(QP, 1, 31)) return vekStsErrQPRange;
    return finish([&] { return kernel::deblockMpeg4<Edge::horizontal>(pSrcDst, srcDstStep, QP); });
}

VekStatus vekiFilterDeblocking8x8_VerEdge_MPEG4_8u_C1IR(Vek8u* pSrcDst, Vek32s srcDstStep, Vek32s QP) {
    if (anyNull(pSrcDst)) return vekStsErrNullPtr;
    if (outside(QP, 1, 31)) return vekStsErrQPRange;
    return finish([&] { return kernel::deblockMpeg4<Edge::vertical>(pSrcDst, srcDstStep, QP); });
}
