// The vector vocabulary: typed vectors and named operations on them. Fast kernels are written in it, so that they read
// like formulas; intrinsics stay in the headers of core/simd/.
//
// u8x16 means 16 lanes of unsigned 8 bits in one register; lanes are counted from the lowest address. An operation has
// one name for all lane types and widths (128 bits everywhere, 256 bits where VEKVC_VECTOR256 is 1, 512 bits where
// VEKVC_VECTOR512 is 1, there with masks: core/simd/wide.h). Of the wider forms, those that move data across lanes
// (interleave, narrow, shuffle, alignRight) work on each 128 bits.
#ifndef VEKVC_CORE_SIMD_H
#define VEKVC_CORE_SIMD_H

#include "core/simd/arithmetic.h"
#include "core/simd/double.h"
#include "core/simd/float.h"
#include "core/simd/memory.h"
#include "core/simd/move.h"
#include "core/simd/reduce.h"
#include "core/simd/vector.h"
#if VEKVC_VECTOR512
#include "core/simd/wide.h"
#endif

#undef VEKVC_BOTH
#undef VEKVC_BITS
#undef VEKVC_ONE
#undef VEKVC_SHIFT
#undef VEKVC_CASE
#undef VEKVC_SIZE
#undef VEKVC_SIMD_FN

#endif
