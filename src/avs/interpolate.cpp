// Exports: interpolation of blocks inside the reference, and of records, whose reference is clamped at its edges.
#include "avs/interpolate_plain.h"
#include "core/check.h"
#include "core/kernel.h"
#include "vekvc/avs.h"
#if VEKVC_SIMD
#include "avs/interpolate_simd.h"
#endif

using namespace vekvc;

namespace {

[[gnu::always_inline]] inline VekStatus luma(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep, Vek32s dx,
                                             Vek32s dy, VekiSize size) {
    if (anyNull(pSrc, pDst)) return vekStsErrNullPtr;
    if (outside(dx, 0, 3) || outside(dy, 0, 3)) [[unlikely]]
        return vekStsErrBadArg;
    return finish([&] { return kernel::interpolateAvsLuma(pSrc, srcStep, pDst, dstStep, dx, dy, size); });
}

[[gnu::always_inline]] inline VekStatus chroma(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep,
                                               Vek32s dx, Vek32s dy, VekiSize size) {
    if (anyNull(pSrc, pDst)) return vekStsErrNullPtr;
    if (outside(dx, 0, 7) || outside(dy, 0, 7)) [[unlikely]]
        return vekStsErrBadArg;
    return finish([&] { return kernel::interpolateAvsChroma(pSrc, srcStep, pDst, dstStep, dx, dy, size); });
}

constexpr bool isOneOf(Vek32s value, Vek32s a, Vek32s b) { return value == a || value == b; }
constexpr bool isPlane(VekiSize size) { return size.width >= 1 && size.height >= 1; }

// The samples `first` to `first` + `count` - 1 of a line of `length`, its ends repeated: how many are copies of the
// first sample, how many lie in the line, and where those begin.
struct Clamped {
    std::size_t before, inside, behind;
    std::ptrdiff_t from;
};
Clamped clamped(std::int64_t first, int count, int length) {
    const std::int64_t begin = clip3(std::int64_t{0}, std::int64_t{count}, -first);
    const std::int64_t end = clip3(begin, std::int64_t{count}, length - first);
    return {static_cast<std::size_t>(begin), static_cast<std::size_t>(end - begin),
            static_cast<std::size_t>(count - end), static_cast<std::ptrdiff_t>(first + begin)};
}

// Where a block's reference lies in the plane, and how far the filters reach beyond it.
struct Reference {
    std::int64_t x, y;
    avs::Reach across, down;
};

// Calls interpolate(src, srcStep) with the block's reference: in the plane, or in a copy with the plane's edges
// repeated.
template <class Interpolate>
void onClamped(const Vek8u* pPlane, Vek32s planeStep, VekiSize planeSize, VekiSize blockSize, const Reference& r,
               Interpolate interpolate) {
    constexpr int kMost = 16 + 5;
    const Block<Vek8u> plane(pPlane, planeStep);
    const int columns = r.across.before + blockSize.width + r.across.behind;
    const int rows = r.down.before + blockSize.height + r.down.behind;
    const std::int64_t left = r.x - r.across.before, top = r.y - r.down.before;
    if (left >= 0 && top >= 0 && left + columns <= planeSize.width && top + rows <= planeSize.height) {
        interpolate(plane.at(static_cast<std::ptrdiff_t>(r.x), static_cast<std::ptrdiff_t>(r.y)), planeStep);
        return;
    }
    Vek8u copy[kMost * kMost];
    const Clamped line = clamped(left, columns, planeSize.width);
    Vek8u* to = copy;
    for (int y = 0; y < rows; ++y, to += columns) {
        const std::int64_t row = clip3(std::int64_t{0}, std::int64_t{planeSize.height} - 1, top + y);
        const Vek8u* const from = plane.at(0, static_cast<std::ptrdiff_t>(row));
        if (line.before > 0) std::memset(to, from[0], line.before);
        if (line.inside > 0) std::memcpy(to + line.before, from + line.from, line.inside);
        if (line.behind > 0) std::memset(to + line.before + line.inside, from[planeSize.width - 1], line.behind);
    }
    interpolate(copy + r.down.before * columns + r.across.before, columns);
}

}  // namespace

VekStatus vekiInterpolateLuma16x16_AVS_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep, Vek32s dx,
                                              Vek32s dy) {
    return luma(pSrc, srcStep, pDst, dstStep, dx, dy, {16, 16});
}
VekStatus vekiInterpolateLuma16x8_AVS_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep, Vek32s dx,
                                             Vek32s dy) {
    return luma(pSrc, srcStep, pDst, dstStep, dx, dy, {16, 8});
}
VekStatus vekiInterpolateLuma8x16_AVS_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep, Vek32s dx,
                                             Vek32s dy) {
    return luma(pSrc, srcStep, pDst, dstStep, dx, dy, {8, 16});
}
VekStatus vekiInterpolateLuma8x8_AVS_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep, Vek32s dx,
                                            Vek32s dy) {
    return luma(pSrc, srcStep, pDst, dstStep, dx, dy, {8, 8});
}

VekStatus vekiInterpolateChroma8x8_AVS_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep, Vek32s dx,
                                              Vek32s dy) {
    return chroma(pSrc, srcStep, pDst, dstStep, dx, dy, {8, 8});
}
VekStatus vekiInterpolateChroma8x4_AVS_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep, Vek32s dx,
                                              Vek32s dy) {
    return chroma(pSrc, srcStep, pDst, dstStep, dx, dy, {8, 4});
}
VekStatus vekiInterpolateChroma4x8_AVS_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep, Vek32s dx,
                                              Vek32s dy) {
    return chroma(pSrc, srcStep, pDst, dstStep, dx, dy, {4, 8});
}
VekStatus vekiInterpolateChroma4x4_AVS_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep, Vek32s dx,
                                              Vek32s dy) {
    return chroma(pSrc, srcStep, pDst, dstStep, dx, dy, {4, 4});
}

VekStatus vekiInterpolateLumaBlock_AVS_8u_P1R(const VekAVSInterpolationParams8u* pParams) {
    if (anyNull(pParams) || anyNull(pParams->pSrcPlane[0], pParams->pDstBlock[0])) return vekStsErrNullPtr;
    const VekAVSInterpolationParams8u& p = *pParams;
    if (!isPlane(p.planeSize)) return vekStsErrSize;
    if (!isOneOf(p.blockSize.width, 8, 16) || !isOneOf(p.blockSize.height, 8, 16)) return vekStsErrSize;
    const int dx = p.mvX & 3, dy = p.mvY & 3;
    const bool bothOdd = dx % 2 != 0 && dy % 2 != 0;
    const Reference reference = {std::int64_t{p.blockX} + (p.mvX >> 2), std::int64_t{p.blockY} + (p.mvY >> 2),
                                 avs::lumaReach(dx, bothOdd), avs::lumaReach(dy, bothOdd)};
    onClamped(p.pSrcPlane[0], p.srcPlaneStep, p.planeSize, p.blockSize, reference,
              [&](const Vek8u* src, Vek32s srcStep) {
                  kernel::interpolateAvsLuma(src, srcStep, p.pDstBlock[0], p.dstBlockStep, dx, dy, p.blockSize);
              });
    return vekStsOk;
}

VekStatus vekiInterpolateChromaBlock_AVS_8u_P2R(const VekAVSInterpolationParams8u* pParams) {
    if (anyNull(pParams) ||
        anyNull(pParams->pSrcPlane[0], pParams->pSrcPlane[1], pParams->pDstBlock[0], pParams->pDstBlock[1]))
        return vekStsErrNullPtr;
    const VekAVSInterpolationParams8u& p = *pParams;
    if (!isPlane(p.planeSize)) return vekStsErrSize;
    if (!isOneOf(p.blockSize.width, 4, 8) || !isOneOf(p.blockSize.height, 4, 8)) return vekStsErrSize;
    const int dx = p.mvX & 7, dy = p.mvY & 7;
    const Reference reference = {std::int64_t{p.blockX} + (p.mvX >> 3), std::int64_t{p.blockY} + (p.mvY >> 3),
                                 avs::chromaReach(dx), avs::chromaReach(dy)};
    for (int c = 0; c < 2; ++c)
        onClamped(p.pSrcPlane[c], p.srcPlaneStep, p.planeSize, p.blockSize, reference,
                  [&](const Vek8u* src, Vek32s srcStep) {
                      kernel::interpolateAvsChroma(src, srcStep, p.pDstBlock[c], p.dstBlockStep, dx, dy, p.blockSize);
                  });
    return vekStsOk;
}
