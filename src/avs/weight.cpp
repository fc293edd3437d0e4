// Exports: weighted prediction and the average of two predictions.
#include "avs/weight_plain.h"
#include "core/check.h"
#include "core/kernel.h"
#include "vekvc/avs.h"
#if VEKVC_SIMD
#include "avs/weight_simd.h"
#endif

using namespace vekvc;

namespace {

// Of the packed size, which spares taking a VekiSize apart in a vector.
constexpr bool isBlock(std::uint64_t packed) {
    const VekiSize size = unpackedSize(packed);
    if (outside(size.width, 2, 16)) [[unlikely]]
        return false;
    if (outside(size.height, 2, 16)) [[unlikely]]
        return false;
    return true;
}
constexpr bool isWeight(Vek32s scale, Vek32s shift) { return !outside(scale, 0, 255) && !outside(shift, -128, 127); }

}  // namespace

VekStatus vekiInterpolateBlock_AVS_8u_P3P1R(const Vek8u* pSrc1, Vek32s src1Step, const Vek8u* pSrc2, Vek32s src2Step,
                                            Vek8u* pDst, Vek32s dstStep, VekiSize roiSize) {
    if (anyNull(pSrc1, pSrc2, pDst)) return vekStsErrNullPtr;
    const std::uint64_t size = packedSize(roiSize);
    if (!isBlock(size)) [[unlikely]]
        return vekStsErrSize;
    return finish([&] {
        return kernel::averageAvs({pSrc1, src1Step}, {pSrc2, src2Step}, {pDst, dstStep}, unpackedSize(size));
    });
}

VekStatus vekiUniDirWeightBlock_AVS_8u_C1IR(Vek8u* pSrcDst, Vek32s srcDstStep, Vek32s scale, Vek32s shift,
                                            VekiSize roiSize) {
    if (anyNull(pSrcDst)) return vekStsErrNullPtr;
    const std::uint64_t size = packedSize(roiSize);
    if (!isBlockSize(size) || !avs::isSmall({scale, shift})) [[unlikely]] {
        if (!isWeight(scale, shift)) return vekStsErrOutOfRange;
        if (!isBlock(size)) return vekStsErrSize;
    }
    return finish([&] { return kernel::weightAvsInPlace({pSrcDst, srcDstStep}, size, {scale, shift}); });
}

VekStatus vekiUniDirWeightBlock_AVS_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep, Vek32s scale,
                                           Vek32s shift, VekiSize roiSize) {
    if (anyNull(pSrc, pDst)) return vekStsErrNullPtr;
    if (!isWeight(scale, shift)) [[unlikely]]
        return vekStsErrOutOfRange;
    const std::uint64_t size = packedSize(roiSize);
    if (!isBlock(size)) [[unlikely]]
        return vekStsErrSize;
    return finish([&] {
        return kernel::weightAvsOne({pSrc, srcStep}, {pDst, dstStep}, unpackedSize(size), {scale, shift});
    });
}

VekStatus vekiBiDirWeightBlock_AVS_8u_P3P1R(const Vek8u* pSrc1, Vek32s src1Step, const Vek8u* pSrc2, Vek32s src2Step,
                                            Vek8u* pDst, Vek32s dstStep, Vek32s scale1, Vek32s shift1, Vek32s scale2,
                                            Vek32s shift2, VekiSize roiSize) {
    if (anyNull(pSrc1, pSrc2, pDst)) return vekStsErrNullPtr;
    if (!isWeight(scale1, shift1) || !isWeight(scale2, shift2)) return vekStsErrOutOfRange;
    const std::uint64_t size = packedSize(roiSize);
    if (!isBlock(size)) [[unlikely]]
        return vekStsErrSize;
    return finish([&] {
        return kernel::weightAvsTwo({pSrc1, src1Step}, {pSrc2, src2Step}, {pDst, dstStep}, unpackedSize(size),
                                    {scale1, shift1}, {scale2, shift2});
    });
}
