// The fast forms of deblocking.
#ifndef VEKVC_H264_DEBLOCK_SIMD_H
#define VEKVC_H264_DEBLOCK_SIMD_H

#include "h264/deblock_luma_simd.h"

namespace vekvc::simd {

using plain::deblockChroma422Horizontal;
using plain::deblockChroma422Vertical;
using plain::deblockChromaHorizontal;
using plain::deblockChromaLeftMbaff;
using plain::deblockChromaPairsHorizontal;
using plain::deblockChromaPairsVertical;
using plain::deblockChromaVertical;
using plain::deblockLumaLeftMbaff;
template <class T>
void deblockLumaVertical(const DeblockOperands<T>& o) requires(sizeof(T) == 2) {
    plain::deblockLumaVertical(o);
}
template <class T>
void deblockLumaHorizontal(const DeblockOperands<T>& o) requires(sizeof(T) == 2) {
    plain::deblockLumaHorizontal(o);
}

}  // namespace vekvc::simd

#endif
