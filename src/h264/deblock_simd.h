// The fast forms of deblocking.
#ifndef VEKVC_H264_DEBLOCK_SIMD_H
#define VEKVC_H264_DEBLOCK_SIMD_H

#include "h264/deblock_chroma16_simd.h"
#include "h264/deblock_chroma_simd.h"
#include "h264/deblock_luma16_simd.h"
#include "h264/deblock_luma_simd.h"

namespace vekvc::simd {

// Four lines of eight bits, and the rare mixed edges of deep luma: not worth a vector.
template <class T>
void deblockChromaLeftMbaff(T* pixels, std::ptrdiff_t step, const EdgeLimits& limits, const T* thresholds,
                            const Vek8u* bS) requires(sizeof(T) == 1) {
    plain::deblockChromaLeftMbaff(pixels, step, limits, thresholds, bS);
}
template <class T>
void deblockLumaLeftMbaff(T* pixels, std::ptrdiff_t step, const EdgeLimits& limits, const T* thresholds,
                          const Vek8u* bS) requires(sizeof(T) == 2) {
    plain::deblockLumaLeftMbaff(pixels, step, limits, thresholds, bS);
}

}  // namespace vekvc::simd

#endif
