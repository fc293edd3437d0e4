// Exports: conversions between sample layouts of luma and chroma. Here stands which rows belong together.
#include <cstring>

#include "core/check.h"
#include "core/kernel.h"
#include "processing/convert_layout_plain.h"
#include "vekvc/processing_convert.h"
#if VEKVC_SIMD
#include "processing/convert_layout_simd.h"
#endif

using namespace vekvc;
using namespace vekvc::processing;

namespace {

using From = Planes<const Vek8u>;
using To = Planes<Vek8u>;

// Rows a and b, or a alone, to luma and row j of 4:2:0 chroma.
void separatePair(Plane<const Vek8u> from, std::ptrdiff_t a, std::ptrdiff_t b, int quarters, std::ptrdiff_t j,
                  const To& to, Area area) {
    if (b >= area.height) b = a;
    kernel::separateRows({from.row(a), from.row(b)}, {to.y.row(a), to.y.row(b)}, to.cb.row(j), to.cr.row(j), quarters,
                         area.width);
}

void frameTo420(Plane<const Vek8u> from, const To& to, Area area) {
    for (std::ptrdiff_t j = 0; j < halved(area.height); ++j) separatePair(from, 2 * j, 2 * j + 1, 2, j, to, area);
}

// The chroma lines of a field lie a quarter of their distance below (top) or above (bottom) its first line.
void fieldsTo420(Plane<const Vek8u> from, const To& to, Area area) {
    for (std::ptrdiff_t j = 0; j < halved(area.height); ++j) {
        const std::ptrdiff_t parity = j & 1, a = 4 * (j >> 1) + parity;
        separatePair(from, a, a + 2, parity == 0 ? 3 : 1, j, to, area);
    }
    // Of two rows left over, the second one begins a pair of the bottom field for which there is no chroma row.
    const std::ptrdiff_t last = area.height - 1;
    if (area.height % 4 == 2) kernel::separateLuma(from.row(last), to.y.row(last), area.width);
}

// The rows a and b of 4:2:0 chroma from which row y is made, and how many eighths a counts: the sample positions of
// MPEG-2 (ISO/IEC 13818-2 6.1.1.8), where frame chroma lies midway between two luma lines.
struct ChromaLines {
    std::ptrdiff_t a, b;
    int eighths;
};
ChromaLines frameLines(std::ptrdiff_t y, std::ptrdiff_t lines) {
    const std::ptrdiff_t a = y >> 1, b = (y & 1) == 0 ? a - 1 : a + 1;
    return {a, b < 0 || b >= lines ? a : b, 6};
}
ChromaLines fieldLines(std::ptrdiff_t y, std::ptrdiff_t lines) {
    const std::ptrdiff_t parity = y & 1, n = y >> 1;
    std::ptrdiff_t a = 2 * (n >> 1) + parity, b = (n & 1) == 0 ? a - 2 : a + 2;
    if (a >= lines) a = std::max<std::ptrdiff_t>(a - 2, 0);
    return {a, b < 0 || b >= lines ? a : b, (n & 1) == parity ? 7 : 5};
}

template <class Lines>
void from420(const From& from, Plane<Vek8u> to, Area area, Lines lines) {
    const auto row = [&](std::ptrdiff_t j) { return plain::ChromaRow{from.cb.row(j), from.cr.row(j)}; };
    for (std::ptrdiff_t y = 0; y < area.height; ++y) {
        const ChromaLines l = lines(y, halved(area.height));
        kernel::interleaveRow(from.y.row(y), plain::MixedChromaRows{row(l.a), row(l.b), l.eighths}, to.row(y), 0,
                              area.width);
    }
}

void copyLuma(Plane<const Vek8u> from, Plane<Vek8u> to, Area area) {
    for (std::ptrdiff_t y = 0; y < area.height; ++y)
        std::memcpy(to.row(y), from.row(y), static_cast<std::size_t>(area.width));
}

}  // namespace

VekStatus vekiCbYCr422ToYCbCr420_8u_C2P3R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDstY, Vek32s dstYStep,
                                          Vek8u* pDstCb, Vek8u* pDstCr, Vek32s dstCStep, VekiSize roiSize,
                                          Vek32s interlaced) {
    if (anyNull(pSrc, pDstY, pDstCb, pDstCr)) return vekStsErrNullPtr;
    if (anyBelow(1, roiSize.width, roiSize.height)) return vekStsErrSize;
    if (outside(interlaced, 0, 1)) return vekStsErrBadArg;
    (interlaced == 0 ? frameTo420 : fieldsTo420)({pSrc, srcStep}, {pDstY, dstYStep, pDstCb, pDstCr, dstCStep}, roiSize);
    return vekStsOk;
}

VekStatus vekiCbYCr422ToYCbCr420_16x16_8u_C2P3R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDstY, Vek32s dstYStep,
                                                Vek8u* pDstCb, Vek8u* pDstCr, Vek32s dstCStep) {
    if (anyNull(pSrc, pDstY, pDstCb, pDstCr)) return vekStsErrNullPtr;
    frameTo420({pSrc, srcStep}, {pDstY, dstYStep, pDstCb, pDstCr, dstCStep}, {16, 16});
    return vekStsOk;
}

VekStatus vekiCbYCr422ToYCbCr422_8u_C2P3R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDstY, Vek32s dstYStep,
                                          Vek8u* pDstCb, Vek8u* pDstCr, Vek32s dstCStep, VekiSize roiSize) {
    if (anyNull(pSrc, pDstY, pDstCb, pDstCr)) return vekStsErrNullPtr;
    if (anyBelow(1, roiSize.width, roiSize.height)) return vekStsErrSize;
    const Plane<const Vek8u> from = {pSrc, srcStep};
    const To to = {pDstY, dstYStep, pDstCb, pDstCr, dstCStep};
    for (std::ptrdiff_t y = 0; y < roiSize.height; ++y)
        kernel::separateRow(from.row(y), to.y.row(y), to.cb.row(y), to.cr.row(y), roiSize.width);
    return vekStsOk;
}

VekStatus vekiYCbCr422ToCbYCr422_8u_P3C2R(const Vek8u* pSrcY, Vek32s srcYStep, const Vek8u* pSrcCb, const Vek8u* pSrcCr,
                                          Vek32s srcCStep, Vek8u* pDst, Vek32s dstStep, VekiSize roiSize) {
    if (anyNull(pSrcY, pSrcCb, pSrcCr, pDst)) return vekStsErrNullPtr;
    if (anyBelow(1, roiSize.width, roiSize.height)) return vekStsErrSize;
    const From from = {pSrcY, srcYStep, pSrcCb, pSrcCr, srcCStep};
    const Plane<Vek8u> to = {pDst, dstStep};
    for (std::ptrdiff_t y = 0; y < roiSize.height; ++y)
        kernel::interleaveRow(from.y.row(y), plain::ChromaRow{from.cb.row(y), from.cr.row(y)}, to.row(y), 0,
                              roiSize.width);
    return vekStsOk;
}

VekStatus vekiYCbCr420ToCbYCr422_8u_P3C2R(const Vek8u* pSrcY, Vek32s srcYStep, const Vek8u* pSrcCb, const Vek8u* pSrcCr,
                                          Vek32s srcCStep, Vek8u* pDst, Vek32s dstStep, VekiSize roiSize,
                                          Vek32s interlaced) {
    if (anyNull(pSrcY, pSrcCb, pSrcCr, pDst)) return vekStsErrNullPtr;
    if (anyBelow(1, roiSize.width, roiSize.height)) return vekStsErrSize;
    if (outside(interlaced, 0, 1)) return vekStsErrBadArg;
    from420({pSrcY, srcYStep, pSrcCb, pSrcCr, srcCStep}, {pDst, dstStep}, roiSize,
            interlaced == 0 ? frameLines : fieldLines);
    return vekStsOk;
}

VekStatus vekiYCbCr420ToCbYCr422_16x16_8u_P3C2R(const Vek8u* pSrcY, Vek32s srcYStep, const Vek8u* pSrcCb,
                                                const Vek8u* pSrcCr, Vek32s srcCStep, Vek8u* pDst, Vek32s dstStep) {
    if (anyNull(pSrcY, pSrcCb, pSrcCr, pDst)) return vekStsErrNullPtr;
    const From from = {pSrcY, srcYStep, pSrcCb, pSrcCr, srcCStep};
    const Plane<Vek8u> to = {pDst, dstStep};
    for (std::ptrdiff_t y = 0; y < 16; ++y)
        kernel::interleaveRow(from.y.row(y), plain::ChromaRow{from.cb.row(y >> 1), from.cr.row(y >> 1)}, to.row(y), 0,
                              16);
    return vekStsOk;
}

VekStatus vekiYCbCr420ToYCbCr420_8u_P3P2R(const Vek8u* pSrcY, Vek32s srcYStep, const Vek8u* pSrcCb, const Vek8u* pSrcCr,
                                          Vek32s srcCStep, Vek8u* pDstY, Vek32s dstYStep, Vek8u* pDstCbCr,
                                          Vek32s dstCbCrStep, VekiSize roiSize) {
    if (anyNull(pSrcY, pSrcCb, pSrcCr, pDstY, pDstCbCr)) return vekStsErrNullPtr;
    if (anyBelow(1, roiSize.width, roiSize.height)) return vekStsErrSize;
    const From from = {pSrcY, srcYStep, pSrcCb, pSrcCr, srcCStep};
    const Plane<Vek8u> to = {pDstCbCr, dstCbCrStep};
    const Area area = roiSize, chroma = area.halvedBoth();
    copyLuma(from.y, {pDstY, dstYStep}, area);
    for (std::ptrdiff_t j = 0; j < chroma.height; ++j)
        kernel::interleaveChroma(from.cb.row(j), from.cr.row(j), to.row(j), chroma.width);
    return vekStsOk;
}

VekStatus vekiYCbCr420ToYCbCr420_8u_P2P3R(const Vek8u* pSrcY, Vek32s srcYStep, const Vek8u* pSrcCbCr,
                                          Vek32s srcCbCrStep, Vek8u* pDstY, Vek32s dstYStep, Vek8u* pDstCb,
                                          Vek8u* pDstCr, Vek32s dstCStep, VekiSize roiSize) {
    if (anyNull(pSrcY, pSrcCbCr, pDstY, pDstCb, pDstCr)) return vekStsErrNullPtr;
    if (anyBelow(1, roiSize.width, roiSize.height)) return vekStsErrSize;
    const Plane<const Vek8u> from = {pSrcCbCr, srcCbCrStep};
    const To to = {pDstY, dstYStep, pDstCb, pDstCr, dstCStep};
    const Area area = roiSize, chroma = area.halvedBoth();
    copyLuma({pSrcY, srcYStep}, to.y, area);
    for (std::ptrdiff_t j = 0; j < chroma.height; ++j)
        kernel::separateChroma(from.row(j), to.cb.row(j), to.cr.row(j), chroma.width);
    return vekStsOk;
}
