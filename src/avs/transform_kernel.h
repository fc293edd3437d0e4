// The transform kernels of this variant, for the files that call them.
#ifndef VEKVC_AVS_TRANSFORM_KERNEL_H
#define VEKVC_AVS_TRANSFORM_KERNEL_H

#include "avs/transform_plain.h"
#include "core/kernel.h"
#if VEKVC_SIMD
#include "avs/transform_simd.h"
#endif

#endif
