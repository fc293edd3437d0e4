// H.264 weighted prediction and the averages of two predictions.
#include <initializer_list>

#include "core/check.h"
#include "core/kernel.h"
#include "h264/weight_plain.h"
#include "vekvc/h264_interpolate.h"
#include "vekvc/h264_weight.h"
#if VEKVC_SIMD
#include "h264/weight_simd.h"
#endif

using namespace vekvc;

namespace {

constexpr bool isSizeTo16(VekiSize size) { return !outside(size.width, 2, 16) && !outside(size.height, 2, 16); }

[[gnu::always_inline]] inline VekStatus checkedOne(MutableBlock<Vek8u> block, VekiSize roiSize,
                                                   const Weighting& weighting) {
    const std::uint64_t size = packedSize(roiSize);
    if (anyNull(block.base)) [[unlikely]]
        return vekStsErrNullPtr;
    if (block.step < static_cast<Vek32s>(size)) [[unlikely]]
        return vekStsErrStep;
    if (!isBlockSize(size)) [[unlikely]]
        return vekStsErrSize;
    return finish([&] { return kernel::weightInPlace(block, size, weighting); });
}

template <bool hasOffset>
[[gnu::always_inline]] inline VekStatus checkedTwo(Block<Vek8u> src1, Block<Vek8u> src2, MutableBlock<Vek8u> dst,
                                                   VekiSize roiSize, const Weighting& weighting) {
    const std::uint64_t size = packedSize(roiSize);
    const auto width = static_cast<Vek32s>(size);
    if (anyNull(src1.base, src2.base, dst.base)) [[unlikely]]
        return vekStsErrNullPtr;
    for (const std::ptrdiff_t step : {src1.step, src2.step, dst.step})
        if (static_cast<Vek32s>(step) < width) [[unlikely]]
            return vekStsErrStep;
    if (!isBlockSize(size)) [[unlikely]]
        return vekStsErrSize;
    return finish([&] { return kernel::weightTwo<hasOffset>(src1, src2, dst, size, weighting); });
}

// Apart from the export, which would save registers for it; the weights come as they are, to stay in registers too.
[[gnu::noinline, gnu::cold]] VekStatus weightRowByRow(Block<Vek8u> src1, Block<Vek8u> src2, MutableBlock<Vek8u> dst,
                                                      VekiSize size, Vek32s weight1, Vek32s weight2) {
    plain::weightTwo(src1, src2, dst, size, implicitTwo(weight1, weight2), 255);
    return vekStsOk;
}

}  // namespace

VekStatus vekiUniDirWeightBlock_H264_8u_C1R(Vek8u* pSrcDst, Vek32s srcDstStep, Vek32u logWD, Vek32s weight,
                                            Vek32s offset, VekiSize roiSize) {
    return checkedOne({pSrcDst, srcDstStep}, roiSize, explicitOne(logWD, weight, offset));
}

VekStatus vekiUniDirWeightBlock_H264_8u_C1IR(Vek8u* pSrcDst, Vek32s srcDstStep, Vek32u logWD, Vek32s weight,
                                             Vek32s offset, VekiSize roiSize) {
    return checkedOne({pSrcDst, srcDstStep}, roiSize, explicitOne(logWD, weight, offset));
}

VekStatus vekiBiDirWeightBlock_H264_8u_P2P1R(const Vek8u* pSrc1, const Vek8u* pSrc2, Vek8u* pDst, Vek32s srcStep,
                                             Vek32s dstStep, Vek32u logWD, Vek32s weight1, Vek32s offset1,
                                             Vek32s weight2, Vek32s offset2, VekiSize roiSize) {
    return checkedTwo<true>({pSrc1, srcStep}, {pSrc2, srcStep}, {pDst, dstStep}, roiSize,
                            explicitTwo(logWD, weight1, offset1, weight2, offset2));
}

VekStatus vekiBiDirWeightBlock_H264_8u_P3P1R(const Vek8u* pSrc1, const Vek8u* pSrc2, Vek8u* pDst, Vek32s src1Step,
                                             Vek32s src2Step, Vek32s dstStep, Vek32u logWD, Vek32s weight1,
                                             Vek32s offset1, Vek32s weight2, Vek32s offset2, VekiSize roiSize) {
    return checkedTwo<true>({pSrc1, src1Step}, {pSrc2, src2Step}, {pDst, dstStep}, roiSize,
                            explicitTwo(logWD, weight1, offset1, weight2, offset2));
}

VekStatus vekiBiDirWeightBlockImplicit_H264_8u_P2P1R(const Vek8u* pSrc1, const Vek8u* pSrc2, Vek8u* pDst,
                                                     Vek32s srcStep, Vek32s dstStep, Vek32s weight1, Vek32s weight2,
                                                     VekiSize roiSize) {
    return checkedTwo<false>({pSrc1, srcStep}, {pSrc2, srcStep}, {pDst, dstStep}, roiSize,
                             implicitTwo(weight1, weight2));
}

// Unlike its siblings: only the pointers are checked, and any size is done.
VekStatus vekiBiDirWeightBlockImplicit_H264_8u_P3P1R(const Vek8u* pSrc1, const Vek8u* pSrc2, Vek8u* pDst,
                                                     Vek32s src1Step, Vek32s src2Step, Vek32s dstStep, Vek32s weight1,
                                                     Vek32s weight2, VekiSize roiSize) {
    if (anyNull(pSrc1, pSrc2, pDst)) return vekStsErrNullPtr;
    const Block<Vek8u> src1(pSrc1, src1Step), src2(pSrc2, src2Step);
    const MutableBlock<Vek8u> dst(pDst, dstStep);
    const Weighting weighting = implicitTwo(weight1, weight2);
    // Rows of the result that overlap are written one after the other.
    const bool rowsOverlap = dstStep < roiSize.width && dstStep > -std::int64_t{roiSize.width};
    if (rowsOverlap) [[unlikely]]
        return weightRowByRow(src1, src2, dst, roiSize, weight1, weight2);
    return finish([&] { return kernel::weightTwo<false>(src1, src2, dst, packedSize(roiSize), weighting); });
}

VekStatus vekiWeightedAverage_H264_8u_C1IR(const Vek8u* pSrc1, Vek8u* pSrcDst, Vek32s srcDstStep, Vek32s weight1,
                                           Vek32s weight2, Vek32u logWD, Vek32s offset, VekiSize roiSize) {
    return checkedTwo<true>({pSrc1, srcDstStep}, {pSrcDst, srcDstStep}, {pSrcDst, srcDstStep}, roiSize,
                            averageTwo(weight1, weight2, logWD, offset));
}

// ---- averages

VekStatus vekiInterpolateBlock_H264_8u_P2P1R(const Vek8u* pSrc1, const Vek8u* pSrc2, Vek8u* pDst, Vek32s width,
                                             Vek32s height, Vek32s step) {
    if (anyNull(pSrc1, pSrc2, pDst)) return vekStsErrNullPtr;
    if (!isSizeTo16({width, height})) [[unlikely]]
        return vekStsErrSize;
    return finish([&] {
        return kernel::averageBlocks<Vek8u>({pSrc1, step}, {pSrc2, step}, {pDst, step}, {width, height});
    });
}

VekStatus vekiInterpolateBlock_H264_8u_P3P1R(const Vek8u* pSrc1, const Vek8u* pSrc2, Vek8u* pDst, Vek32s width,
                                             Vek32s height, Vek32s src1Step, Vek32s src2Step, Vek32s dstStep) {
    if (anyNull(pSrc1, pSrc2, pDst)) return vekStsErrNullPtr;
    if (!isSizeTo16({width, height})) [[unlikely]]
        return vekStsErrSize;
    return finish([&] {
        return kernel::averageBlocks<Vek8u>({pSrc1, src1Step}, {pSrc2, src2Step}, {pDst, dstStep}, {width, height});
    });
}

// ---- 16-bit records

namespace {

VekiSize sizeOf(const VekWeightParams16u& p) { return {p.blockWidth, p.blockHeight}; }

VekStatus check(const VekWeightParams16u* pParams) {
    if (anyNull(pParams) || anyNull(pParams->pSrc1, pParams->pSrc2, pParams->pDst)) return vekStsErrNullPtr;
    return isSizeTo16(sizeOf(*pParams)) ? vekStsOk : vekStsErrSize;
}
VekStatus checkWithDepth(const VekWeightParams16u* pParams) {
    if (const VekStatus status = check(pParams)) return status;
    return outside(pParams->bitDepth, 8, 14) ? vekStsErrOutOfRange : vekStsOk;
}

void weightTwo(const VekWeightParams16u& p, const Weighting& weighting) {
    kernel::weightTwo<Vek16u>({p.pSrc1, p.src1Step}, {p.pSrc2, p.src2Step}, {p.pDst, p.dstStep}, sizeOf(p), weighting,
                              (1 << p.bitDepth) - 1);
}

}  // namespace

VekStatus vekiBidir_H264_16u_P2P1R(const VekWeightParams16u* pParams) {
    if (const VekStatus status = check(pParams)) return status;
    kernel::averageBlocks<Vek16u>({pParams->pSrc1, pParams->src1Step}, {pParams->pSrc2, pParams->src2Step},
                                  {pParams->pDst, pParams->dstStep}, sizeOf(*pParams));
    return vekStsOk;
}

VekStatus vekiBidirWeight_H264_16u_P2P1R(const VekWeightParams16u* pParams) {
    if (const VekStatus status = checkWithDepth(pParams)) return status;
    weightTwo(*pParams,
              explicitTwo(pParams->logWD, pParams->weight1, pParams->offset1, pParams->weight2, pParams->offset2));
    return vekStsOk;
}

VekStatus vekiBidirWeightImplicit_H264_16u_P2P1R(const VekWeightParams16u* pParams) {
    if (const VekStatus status = checkWithDepth(pParams)) return status;
    weightTwo(*pParams, implicitTwo(pParams->weight1, pParams->weight2));
    return vekStsOk;
}

VekStatus vekiUnidirWeight_H264_16u_IP2P1R(const VekWeightParams16u* pParams) {
    if (const VekStatus status = checkWithDepth(pParams)) return status;
    kernel::weightOne<Vek16u>({pParams->pSrc1, pParams->src1Step}, {pParams->pDst, pParams->dstStep}, sizeOf(*pParams),
                              explicitOne(pParams->logWD, pParams->weight1, pParams->offset1),
                              (1 << pParams->bitDepth) - 1);
    return vekStsOk;
}
