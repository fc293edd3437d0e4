// Exports: conversions to and from B, G, R.
#include "core/check.h"
#include "core/kernel.h"
#include "processing/convert_bgr_plain.h"
#include "vekvc/processing_convert.h"
#if VEKVC_SIMD
#include "processing/convert_bgr_simd.h"
#endif

using namespace vekvc;
using namespace vekvc::processing;

namespace {

using From = Planes<const Vek8u>;

// pixels(y): how the pixels of row y are written.
template <class PixelsOf>
void from420(const From& from, Plane<Vek8u> to, Area area, Vek32s matrix, PixelsOf pixels) {
    for (std::ptrdiff_t y = 0; y < area.height; ++y) {
        const std::ptrdiff_t a = y >> 1, other = (y & 1) == 0 ? a - 1 : a + 1;
        const std::ptrdiff_t b = other < 0 || other >= halved(area.height) ? a : other;
        const plain::Row420 row = {from.y.row(y), from.cb.row(a), from.cb.row(b), from.cr.row(a), from.cr.row(b)};
        kernel::toBgrRow(row, pixels(y), to.row(y), 0, area.width, kToBgr[matrix]);
    }
}

template <class Pixels>
VekStatus convert420(const From& from, Vek8u* pDst, Vek32s dstStep, VekiSize roiSize, Vek32s matrix) {
    if (anyNull(from.y.base, from.cb.base, from.cr.base, pDst)) return vekStsErrNullPtr;
    if (anyBelow(1, roiSize.width, roiSize.height)) return vekStsErrSize;
    if (!isMatrix(matrix)) return vekStsErrBadArg;
    from420(from, {pDst, dstStep}, roiSize, matrix, [](std::ptrdiff_t) { return Pixels(); });
    return vekStsOk;
}

template <class Pixels>
VekStatus convertCbYCr(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep, VekiSize roiSize,
                       Vek32s matrix) {
    if (anyNull(pSrc, pDst)) return vekStsErrNullPtr;
    if (anyBelow(1, roiSize.width, roiSize.height)) return vekStsErrSize;
    if (!isMatrix(matrix)) return vekStsErrBadArg;
    const Plane<const Vek8u> from = {pSrc, srcStep};
    const Plane<Vek8u> to = {pDst, dstStep};
    for (std::ptrdiff_t y = 0; y < roiSize.height; ++y)
        kernel::toBgrRow(plain::RowCbYCr{from.row(y)}, Pixels(), to.row(y), 0, roiSize.width, kToBgr[matrix]);
    return vekStsOk;
}

// The ordered pattern of 4x4 thresholds, row after row (Bayer).
constexpr plain::Bgr565 kOrdered[4] = {{{0, 8, 2, 10}}, {{12, 4, 14, 6}}, {{3, 11, 1, 9}}, {{15, 7, 13, 5}}};
constexpr plain::Bgr565 kTruncated = {{0, 0, 0, 0}};

}  // namespace

VekStatus vekiYCbCr420ToBGR_8u_P3C3R(const Vek8u* pSrcY, Vek32s srcYStep, const Vek8u* pSrcCb, const Vek8u* pSrcCr,
                                     Vek32s srcCStep, Vek8u* pDst, Vek32s dstStep, VekiSize roiSize, Vek32s matrix) {
    return convert420<plain::Bgr24>({pSrcY, srcYStep, pSrcCb, pSrcCr, srcCStep}, pDst, dstStep, roiSize, matrix);
}

VekStatus vekiYCbCr420ToBGR_8u_P3C4R(const Vek8u* pSrcY, Vek32s srcYStep, const Vek8u* pSrcCb, const Vek8u* pSrcCr,
                                     Vek32s srcCStep, Vek8u* pDst, Vek32s dstStep, VekiSize roiSize, Vek32s matrix) {
    return convert420<plain::Bgr32>({pSrcY, srcYStep, pSrcCb, pSrcCr, srcCStep}, pDst, dstStep, roiSize, matrix);
}

VekStatus vekiYCbCr420ToBGR565_8u16u_P3C1R(const Vek8u* pSrcY, Vek32s srcYStep, const Vek8u* pSrcCb,
                                           const Vek8u* pSrcCr, Vek32s srcCStep, Vek16u* pDst, Vek32s dstStep,
                                           VekiSize roiSize, Vek32s matrix, Vek32s dither) {
    if (anyNull(pSrcY, pSrcCb, pSrcCr) || anyNull(pDst)) return vekStsErrNullPtr;
    if (anyBelow(1, roiSize.width, roiSize.height)) return vekStsErrSize;
    if (!isMatrix(matrix)) return vekStsErrBadArg;
    if (outside(dither, 0, 1)) return vekStsErrBadArg;
    from420({pSrcY, srcYStep, pSrcCb, pSrcCr, srcCStep}, {reinterpret_cast<Vek8u*>(pDst), dstStep}, roiSize, matrix,
            [=](std::ptrdiff_t y) { return dither == 0 ? kTruncated : kOrdered[y & 3]; });
    return vekStsOk;
}

VekStatus vekiCbYCr422ToBGR_8u_C2C3R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep, VekiSize roiSize,
                                     Vek32s matrix) {
    return convertCbYCr<plain::Bgr24>(pSrc, srcStep, pDst, dstStep, roiSize, matrix);
}

VekStatus vekiCbYCr422ToBGR_8u_C2C4R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep, VekiSize roiSize,
                                     Vek32s matrix) {
    return convertCbYCr<plain::Bgr32>(pSrc, srcStep, pDst, dstStep, roiSize, matrix);
}

VekStatus vekiBGRToCbYCr422_8u_C4C2R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep, VekiSize roiSize,
                                     Vek32s matrix) {
    if (anyNull(pSrc, pDst)) return vekStsErrNullPtr;
    if (anyBelow(1, roiSize.width, roiSize.height)) return vekStsErrSize;
    if (!isMatrix(matrix)) return vekStsErrBadArg;
    const Plane<const Vek8u> from = {pSrc, srcStep};
    const Plane<Vek8u> to = {pDst, dstStep};
    for (std::ptrdiff_t y = 0; y < roiSize.height; ++y)
        kernel::fromBgrRow(from.row(y), to.row(y), 0, roiSize.width, kFromBgr[matrix]);
    return vekStsOk;
}

VekStatus vekiYCbCr420ToBGR_16x16_8u_P3C4R(const Vek8u* pSrcY, Vek32s srcYStep, const Vek8u* pSrcCb,
                                           const Vek8u* pSrcCr, Vek32s srcCStep, Vek8u* pDst, Vek32s dstStep,
                                           Vek32s matrix) {
    if (anyNull(pSrcY, pSrcCb, pSrcCr, pDst)) return vekStsErrNullPtr;
    const From from = {pSrcY, srcYStep, pSrcCb, pSrcCr, srcCStep};
    const Plane<Vek8u> to = {pDst, dstStep};
    for (std::ptrdiff_t y = 0; y < 16; ++y) {
        const plain::RowRepeated row = {from.y.row(y), from.cb.row(y >> 1), from.cr.row(y >> 1)};
        kernel::toBgrRow(row, plain::Bgr32(), to.row(y), 0, 16, kToBgr[matrix & 3]);
    }
    return vekStsOk;
}
