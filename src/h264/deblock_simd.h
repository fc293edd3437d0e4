// The fast forms of deblocking.
#ifndef VEKVC_H264_DEBLOCK_SIMD_H
#define VEKVC_H264_DEBLOCK_SIMD_H

#include "h264/deblock_chroma16_simd.h"
#include "h264/deblock_chroma_simd.h"
#include "h264/deblock_luma16_simd.h"
#include "h264/deblock_luma_simd.h"

#endif
