// The fast forms of deblocking.
#ifndef VEKVC_H264_DEBLOCK_SIMD_H
#define VEKVC_H264_DEBLOCK_SIMD_H

#include "h264/deblock_chroma_simd.h"
#include "h264/deblock_luma16_simd.h"
#include "h264/deblock_luma_simd.h"

namespace vekvc::simd {

using plain::deblockChromaLeftMbaff;
using plain::deblockLumaLeftMbaff;

template <class T>
void deblockChromaVertical(const DeblockOperands<T>& o) requires(sizeof(T) == 2) {
    plain::deblockChromaVertical(o);
}
template <class T>
void deblockChromaHorizontal(const DeblockOperands<T>& o) requires(sizeof(T) == 2) {
    plain::deblockChromaHorizontal(o);
}
template <class T>
void deblockChroma422Vertical(const DeblockOperands<T>& o) requires(sizeof(T) == 2) {
    plain::deblockChroma422Vertical(o);
}
template <class T>
void deblockChroma422Horizontal(const DeblockOperands<T>& o) requires(sizeof(T) == 2) {
    plain::deblockChroma422Horizontal(o);
}

}  // namespace vekvc::simd

#endif
