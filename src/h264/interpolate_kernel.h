// The interpolation kernels of this variant, for the files that call them.
#ifndef VEKVC_H264_INTERPOLATE_KERNEL_H
#define VEKVC_H264_INTERPOLATE_KERNEL_H

#include "core/kernel.h"
#include "h264/interpolate_plain.h"

#if VEKVC_SIMD
#include "h264/interpolate_chroma_simd.h"
#include "h264/interpolate_luma_simd.h"
#endif

#endif
