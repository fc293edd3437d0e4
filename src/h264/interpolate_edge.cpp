// H.264 sub-pixel interpolation of blocks whose reference leaves the picture at its top or bottom: the reference area
// is copied with the edge row repeated, and the copy is interpolated.
#include "h264/interpolate_export.h"
#include "vekvc/h264_interpolate.h"

using namespace vekvc;

namespace {

// Where the picture's rows begin and end, counted from the block's first row.
struct RowRange {
    std::ptrdiff_t first;
    std::ptrdiff_t last;
};

RowRange fromTop(Vek32s outPixels) { return {outPixels, PTRDIFF_MAX}; }
RowRange upToBottom(Vek32s outPixels, VekiSize size) {
    return {PTRDIFF_MIN, std::ptrdiff_t{size.height} - 1 - outPixels};
}

// How far a filter reads beyond its block in a direction with a fraction.
struct Margins {
    int before;
    int behind;
};
constexpr Margins kLuma{2, 3};
constexpr Margins kChroma{0, 1};

// Cuts the block into strips of at most kRows rows and calls interpolate(pSrc, srcStep, y, rows) for each, on a copy of
// its reference area in which rows outside the picture repeat the edge row.
template <class T, class Interpolate>
void interpolateRepeated(const T* pSrc, Vek32s srcStep, int dx, int dy, VekiSize size, RowRange picture,
                         Margins margins, Interpolate interpolate) {
    constexpr int kRows = 16, kColumns = 28, kMargins = 5;
    T copy[(kRows + kMargins) * (kColumns + kMargins)];
    const int left = dx != 0 ? margins.before : 0, right = dx != 0 ? margins.behind : 0;
    const int above = dy != 0 ? margins.before : 0, below = dy != 0 ? margins.behind : 0;
    const int columns = left + size.width + right;
    const Block<T> in(pSrc, srcStep);
    for (int y = 0; y < size.height; y += kRows) {
        const int rows = size.height - y < kRows ? size.height - y : kRows;
        T* row = copy;
        for (int r = -above; r < rows + below; ++r, row += columns) {
            const std::ptrdiff_t from = clip3(picture.first, picture.last, std::ptrdiff_t{y} + r);
            std::memcpy(row, in.at(-left, from), static_cast<std::size_t>(columns) * sizeof(T));
        }
        interpolate(copy + above * columns + left, columns * static_cast<Vek32s>(sizeof(T)), y, rows);
    }
}

template <class T>
void lumaRepeated(const T* pSrc, Vek32s srcStep, T* pDst, Vek32s dstStep, int dx, int dy, VekiSize size,
                  RowRange picture, int maxSample) {
    const MutableBlock<T> out(pDst, dstStep);
    interpolateRepeated(
        pSrc, srcStep, dx, dy, size, picture, kLuma, [=](const T* copy, Vek32s copyStep, int y, int rows) {
            kernel::interpolateLuma(copy, copyStep, out.at(0, y), dstStep, dx, dy, {size.width, rows}, maxSample);
        });
}

template <class T>
void chromaRepeated(const T* pSrc, Vek32s srcStep, T* pDst, Vek32s dstStep, int dx, int dy, VekiSize size,
                    RowRange picture) {
    const MutableBlock<T> out(pDst, dstStep);
    interpolateRepeated(
        pSrc, srcStep, dx, dy, size, picture, kChroma, [=](const T* copy, Vek32s copyStep, int y, int rows) {
            kernel::interpolateChroma(copy, copyStep, out.at(0, y), dstStep, dx, dy, {size.width, rows});
        });
}

}  // namespace

VekStatus vekiInterpolateLumaTop_H264_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep, Vek32s dx,
                                             Vek32s dy, Vek32s outPixels, VekiSize roiSize) {
    if (const VekStatus status = checkLuma(pSrc, pDst, dx, dy, packedSize(roiSize))) return status;
    lumaRepeated(pSrc, srcStep, pDst, dstStep, dx, dy, roiSize, fromTop(outPixels), 255);
    return vekStsOk;
}

VekStatus vekiInterpolateLumaBottom_H264_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep,
                                                Vek32s dx, Vek32s dy, Vek32s outPixels, VekiSize roiSize) {
    if (const VekStatus status = checkLuma(pSrc, pDst, dx, dy, packedSize(roiSize))) return status;
    lumaRepeated(pSrc, srcStep, pDst, dstStep, dx, dy, roiSize, upToBottom(outPixels, roiSize), 255);
    return vekStsOk;
}

VekStatus vekiInterpolateLumaTop_H264_16u_C1R(const Vek16u* pSrc, Vek32s srcStep, Vek16u* pDst, Vek32s dstStep,
                                              Vek32s dx, Vek32s dy, Vek32s outPixels, VekiSize roiSize,
                                              Vek32s bitDepth) {
    if (const VekStatus status = checkLuma(pSrc, pDst, dx, dy, packedSize(roiSize), bitDepth)) return status;
    lumaRepeated(pSrc, srcStep, pDst, dstStep, dx, dy, roiSize, fromTop(outPixels), maxOfDepth(bitDepth));
    return vekStsOk;
}

VekStatus vekiInterpolateLumaBottom_H264_16u_C1R(const Vek16u* pSrc, Vek32s srcStep, Vek16u* pDst, Vek32s dstStep,
                                                 Vek32s dx, Vek32s dy, Vek32s outPixels, VekiSize roiSize,
                                                 Vek32s bitDepth) {
    if (const VekStatus status = checkLuma(pSrc, pDst, dx, dy, packedSize(roiSize), bitDepth)) return status;
    lumaRepeated(pSrc, srcStep, pDst, dstStep, dx, dy, roiSize, upToBottom(outPixels, roiSize), maxOfDepth(bitDepth));
    return vekStsOk;
}

VekStatus vekiInterpolateChromaTop_H264_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep,
                                               Vek32s dx, Vek32s dy, Vek32s outPixels, VekiSize roiSize) {
    if (const VekStatus status = checkChroma(pSrc, pDst, dx, dy, packedSize(roiSize))) return status;
    chromaRepeated(pSrc, srcStep, pDst, dstStep, dx, dy, roiSize, fromTop(outPixels));
    return vekStsOk;
}

VekStatus vekiInterpolateChromaBottom_H264_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep,
                                                  Vek32s dx, Vek32s dy, Vek32s outPixels, VekiSize roiSize) {
    if (const VekStatus status = checkChroma(pSrc, pDst, dx, dy, packedSize(roiSize))) return status;
    chromaRepeated(pSrc, srcStep, pDst, dstStep, dx, dy, roiSize, upToBottom(outPixels, roiSize));
    return vekStsOk;
}

VekStatus vekiInterpolateChromaTop_H264_16u_C1R(const Vek16u* pSrc, Vek32s srcStep, Vek16u* pDst, Vek32s dstStep,
                                                Vek32s dx, Vek32s dy, Vek32s outPixels, VekiSize roiSize,
                                                Vek32s bitDepth) {
    if (const VekStatus status = checkChroma(pSrc, pDst, dx, dy, packedSize(roiSize), bitDepth)) return status;
    chromaRepeated(pSrc, srcStep, pDst, dstStep, dx, dy, roiSize, fromTop(outPixels));
    return vekStsOk;
}

VekStatus vekiInterpolateChromaBottom_H264_16u_C1R(const Vek16u* pSrc, Vek32s srcStep, Vek16u* pDst, Vek32s dstStep,
                                                   Vek32s dx, Vek32s dy, Vek32s outPixels, VekiSize roiSize,
                                                   Vek32s bitDepth) {
    if (const VekStatus status = checkChroma(pSrc, pDst, dx, dy, packedSize(roiSize), bitDepth)) return status;
    chromaRepeated(pSrc, srcStep, pDst, dstStep, dx, dy, roiSize, upToBottom(outPixels, roiSize));
    return vekStsOk;
}

VekStatus vekiExpandPlane_H264_8u_C1R(Vek8u* pSrcDst, Vek32s srcDstStep, VekiSize roiSize, Vek32s borderWidth,
                                      Vek32s borderHeight) {
    if (anyNull(pSrcDst)) return vekStsErrNullPtr;
    if (anyBelow(1, roiSize.width, roiSize.height) || anyBelow(0, borderWidth, borderHeight)) return vekStsErrSize;
    const MutableBlock<Vek8u> plane(pSrcDst, srcDstStep);
    const auto width = static_cast<std::size_t>(roiSize.width), side = static_cast<std::size_t>(borderWidth);
    for (std::ptrdiff_t y = 0; y < roiSize.height; ++y) {
        std::memset(plane.at(-std::ptrdiff_t{borderWidth}, y), plane(0, y), side);
        std::memset(plane.at(roiSize.width, y), plane(roiSize.width - 1, y), side);
    }
    const std::ptrdiff_t left = -std::ptrdiff_t{borderWidth}, last = std::ptrdiff_t{roiSize.height} - 1;
    for (std::ptrdiff_t y = 1; y <= borderHeight; ++y) {
        std::memcpy(plane.at(left, -y), plane.at(left, 0), width + 2 * side);
        std::memcpy(plane.at(left, last + y), plane.at(left, last), width + 2 * side);
    }
    return vekStsOk;
}
