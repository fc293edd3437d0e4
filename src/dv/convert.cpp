// Exports: conversion of decoded macroblocks to interleaved 4:2:2.
#include "core/check.h"
#include "core/kernel.h"
#include "dv/convert_plain.h"
#include "vekvc/dv.h"
#if VEKVC_SIMD
#include "dv/convert_simd.h"
#endif

using namespace vekvc;

namespace {

template <class Macroblock>
VekStatus convertTo422(const Vek16s* pSrc, Vek8u* pDst, Vek32s dstStep, Vek32s zoom) {
    if (anyNull(pSrc, pDst)) return vekStsErrNullPtr;
    kernel::convert<Macroblock>(pSrc, pDst, dstStep, zoom & 3);
    return vekStsOk;
}

VekStatus convert411(const Vek16s* pSrc, Vek8u* pDst, Vek32s dstStep, Vek32s edge, Vek32s zoom) {
    return ((edge & 1) != 0 ? convertTo422<dv::Macroblock411Edge> : convertTo422<dv::Macroblock411>)(pSrc, pDst,
                                                                                                     dstStep, zoom);
}

VekStatus convert100(const Vek16s* pSrc, Vek8u* pDst, Vek32s dstStep, Vek32s layout, Vek32s zoom) {
    if ((layout & 2) != 0) return convertTo422<dv::Macroblock100Bottom>(pSrc, pDst, dstStep, zoom);
    return ((layout & 1) != 0 ? convertTo422<dv::Macroblock100Field>
                              : convertTo422<dv::Macroblock100Frame>)(pSrc, pDst, dstStep, zoom);
}

}  // namespace

VekStatus vekiYCrCb411ToCbYCr422_DV_16s8u_C2R(const Vek16s* pSrc, Vek8u* pDst, Vek32s dstStep, Vek32s edge) {
    return convert411(pSrc, pDst, dstStep, edge, 0);
}
VekStatus vekiYCrCb420ToCbYCr422_DV_16s8u_C2R(const Vek16s* pSrc, Vek8u* pDst, Vek32s dstStep) {
    return convertTo422<dv::Macroblock420>(pSrc, pDst, dstStep, 0);
}
VekStatus vekiYCrCb422ToCbYCr422_DV_16s8u_C2R(const Vek16s* pSrc, Vek8u* pDst, Vek32s dstStep) {
    return convertTo422<dv::Macroblock422>(pSrc, pDst, dstStep, 0);
}
VekStatus vekiYCrCb422ToCbYCr422_DV100_16s8u_C2R(const Vek16s* pSrc, Vek8u* pDst, Vek32s dstStep, Vek32s layout) {
    return convert100(pSrc, pDst, dstStep, layout, 0);
}

VekStatus vekiYCrCb411ToCbYCr422ZoomOut_DV_16s8u_C2R(const Vek16s* pSrc, Vek8u* pDst, Vek32s dstStep, Vek32s edge,
                                                     Vek32s zoom) {
    return convert411(pSrc, pDst, dstStep, edge, zoom);
}
VekStatus vekiYCrCb420ToCbYCr422ZoomOut_DV_16s8u_C2R(const Vek16s* pSrc, Vek8u* pDst, Vek32s dstStep, Vek32s zoom) {
    return convertTo422<dv::Macroblock420>(pSrc, pDst, dstStep, zoom);
}
VekStatus vekiYCrCb422ToCbYCr422ZoomOut_DV_16s8u_C2R(const Vek16s* pSrc, Vek8u* pDst, Vek32s dstStep, Vek32s zoom) {
    return convertTo422<dv::Macroblock422>(pSrc, pDst, dstStep, zoom);
}
VekStatus vekiYCrCb422ToCbYCr422ZoomOut_DV100_16s8u_C2R(const Vek16s* pSrc, Vek8u* pDst, Vek32s dstStep, Vek32s layout,
                                                        Vek32s zoom) {
    return convert100(pSrc, pDst, dstStep, layout, zoom);
}
