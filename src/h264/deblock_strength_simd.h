// What the fast forms of deblocking ask of boundary strengths, byte by byte.
#ifndef VEKVC_H264_DEBLOCK_STRENGTH_SIMD_H
#define VEKVC_H264_DEBLOCK_STRENGTH_SIMD_H

#include "core/simd.h"

namespace vekvc::simd {

// The widest vector of bytes.
#if VEKVC_VECTOR256
using WideBytes = u8x32;
#else
using WideBytes = u8x16;
#endif

// All ones where the strength is not 0 ...
template <class U>
[[gnu::always_inline]] inline U hasStrength(U bS) {
    return max(bS, constant<U, 1>()) == bS;
}
// ... and where it is 4 (or more, which counts as 4).
template <class U>
[[gnu::always_inline]] inline U isStrong(U bS) {
    return max(bS, constant<U, 4>()) == bS;
}

}  // namespace vekvc::simd

#endif
