// Fast forms of H.264 intra prediction.
#ifndef VEKVC_H264_INTRA_SIMD_H
#define VEKVC_H264_INTRA_SIMD_H

#include "h264/intra_plain.h"

namespace vekvc::simd {

using plain::predictIntra16x16;
using plain::predictIntra4x4;
using plain::predictIntra8x8;
using plain::predictIntraChroma;

}  // namespace vekvc::simd

#endif
