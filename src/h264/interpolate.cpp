// H.264 sub-pixel interpolation: luma and chroma blocks, and the forms that take a block record.
#include "h264/interpolate_export.h"
#include "vekvc/h264_interpolate.h"

using namespace vekvc;

VekStatus vekiInterpolateLuma_H264_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep, Vek32s dx,
                                          Vek32s dy, VekiSize roiSize) {
    const std::uint64_t size = packedSize(roiSize);
    if (const VekStatus status = checkLuma(pSrc, pDst, dx, dy, size)) return status;
    return finish(
        [&] { return kernel::interpolateLuma(pSrc, srcStep, pDst, dstStep, dx, dy, unpackedSize(size), 255); });
}

VekStatus vekiInterpolateLuma_H264_16u_C1R(const Vek16u* pSrc, Vek32s srcStep, Vek16u* pDst, Vek32s dstStep, Vek32s dx,
                                           Vek32s dy, VekiSize roiSize, Vek32s bitDepth) {
    const std::uint64_t size = packedSize(roiSize);
    if (const VekStatus status = checkLuma(pSrc, pDst, dx, dy, size, bitDepth)) return status;
    return finish([&] {
        return kernel::interpolateLuma(pSrc, srcStep, pDst, dstStep, dx, dy, unpackedSize(size), maxOfDepth(bitDepth));
    });
}

VekStatus vekiInterpolateChroma_H264_8u_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep, Vek32s dx,
                                            Vek32s dy, VekiSize roiSize) {
    const std::uint64_t size = packedSize(roiSize);
    if (const VekStatus status = checkChroma(pSrc, pDst, dx, dy, size)) return status;
    return finish([&] { return kernel::interpolateChroma(pSrc, srcStep, pDst, dstStep, dx, dy, unpackedSize(size)); });
}

VekStatus vekiInterpolateChroma_H264_16u_C1R(const Vek16u* pSrc, Vek32s srcStep, Vek16u* pDst, Vek32s dstStep,
                                             Vek32s dx, Vek32s dy, VekiSize roiSize, Vek32s bitDepth) {
    const std::uint64_t size = packedSize(roiSize);
    if (const VekStatus status = checkChroma(pSrc, pDst, dx, dy, size, bitDepth)) return status;
    return finish([&] { return kernel::interpolateChroma(pSrc, srcStep, pDst, dstStep, dx, dy, unpackedSize(size)); });
}

VekStatus vekiInterpolateChroma_H264_8u_C2P2R(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDstCb, Vek8u* pDstCr,
                                              Vek32s dstStep, Vek32s dx, Vek32s dy, VekiSize roiSize) {
    if (anyNull(pSrc, pDstCb, pDstCr)) return vekStsErrNullPtr;
    const std::uint64_t size = packedSize(roiSize);
    if (const VekStatus status = checkChroma(pSrc, pDstCb, dx, dy, size)) return status;
    return finish([&] {
        return kernel::interpolateChromaPairs(pSrc, srcStep, pDstCb, pDstCr, dstStep, dx, dy, unpackedSize(size));
    });
}

// ---- block records

namespace {

// The reference sample where a record's block starts: its position moved by the whole samples of the vector, of which
// `fractionBits` low bits are the fraction.
template <class T, class Record>
const T* movedSource(const T* pSrcPlane, const Record& block, int fractionBits, int channels) {
    const std::ptrdiff_t x = std::ptrdiff_t{block.blockX} + (block.mvX >> fractionBits);
    const std::ptrdiff_t y = std::ptrdiff_t{block.blockY} + (block.mvY >> fractionBits);
    return Block<T>(pSrcPlane, block.srcPlaneStep).at(x * channels, y);
}

template <class Record>
VekiSize sizeOf(const Record& block) {
    return {block.blockWidth, block.blockHeight};
}

template <class Record>
void lumaBlock(const Record& block, int maxSample) {
    kernel::interpolateLuma(movedSource(block.pSrcPlane, block, 2, 1), block.srcPlaneStep, block.pDstBlock,
                            block.dstBlockStep, block.mvX & 3, block.mvY & 3, sizeOf(block), maxSample);
}

template <class Record>
void chromaBlocks(const Record& block) {
    const int dx = block.mvX & 7, dy = block.mvY & 7;
    kernel::interpolateChroma(movedSource(block.pSrcPlane, block, 3, 1), block.srcPlaneStep, block.pDstBlock,
                              block.dstBlockStep, dx, dy, sizeOf(block));
    kernel::interpolateChroma(movedSource(block.pSrcPlane2, block, 3, 1), block.srcPlaneStep, block.pDstBlock2,
                              block.dstBlockStep, dx, dy, sizeOf(block));
}

}  // namespace

VekStatus vekiInterpolateLumaBlock_H264_8u_P1R(const VekInterpolationBlock* pBlock) {
    if (anyNull(pBlock) || anyNull(pBlock->pSrcPlane, pBlock->pDstBlock)) return vekStsErrNullPtr;
    if (!validLumaSize(sizeOf(*pBlock))) return vekStsErrSize;
    lumaBlock(*pBlock, 255);
    return vekStsOk;
}

VekStatus vekiInterpolateLumaBlock_H264_16u_P1R(const VekInterpolationBlock16u* pBlock) {
    if (anyNull(pBlock) || anyNull(pBlock->pSrcPlane, pBlock->pDstBlock)) return vekStsErrNullPtr;
    if (!validLumaSize(sizeOf(*pBlock))) return vekStsErrSize;
    if (!validDepth(pBlock->bitDepth)) return vekStsErrOutOfRange;
    lumaBlock(*pBlock, maxOfDepth(pBlock->bitDepth));
    return vekStsOk;
}

VekStatus vekiInterpolateChromaBlock_H264_8u_P2R(const VekInterpolationBlock* pBlock) {
    if (anyNull(pBlock) || anyNull(pBlock->pSrcPlane, pBlock->pDstBlock, pBlock->pSrcPlane2, pBlock->pDstBlock2))
        return vekStsErrNullPtr;
    if (!validChromaSize(sizeOf(*pBlock))) return vekStsErrSize;
    chromaBlocks(*pBlock);
    return vekStsOk;
}

VekStatus vekiInterpolateChromaBlock_H264_8u_C2P2R(const VekInterpolationBlock* pBlock) {
    if (anyNull(pBlock) || anyNull(pBlock->pSrcPlane, pBlock->pDstBlock, pBlock->pDstBlock2)) return vekStsErrNullPtr;
    if (!validChromaSize(sizeOf(*pBlock))) return vekStsErrSize;
    return finish([&] {
        return kernel::interpolateChromaPairs(movedSource(pBlock->pSrcPlane, *pBlock, 3, 2), pBlock->srcPlaneStep,
                                              pBlock->pDstBlock, pBlock->pDstBlock2, pBlock->dstBlockStep,
                                              pBlock->mvX & 7, pBlock->mvY & 7, sizeOf(*pBlock));
    });
}

VekStatus vekiInterpolateChromaBlock_H264_16u_P2R(const VekInterpolationBlock16u* pBlock) {
    if (anyNull(pBlock) || anyNull(pBlock->pSrcPlane, pBlock->pDstBlock, pBlock->pSrcPlane2, pBlock->pDstBlock2))
        return vekStsErrNullPtr;
    if (!validChromaSize(sizeOf(*pBlock))) return vekStsErrSize;
    if (!validDepth(pBlock->bitDepth)) return vekStsErrOutOfRange;
    chromaBlocks(*pBlock);
    return vekStsOk;
}
