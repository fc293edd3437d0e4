// Fast forms of H.264 macroblock reconstruction.
#ifndef VEKVC_H264_RECONSTRUCT_SIMD_H
#define VEKVC_H264_RECONSTRUCT_SIMD_H

#include "h264/intra_simd.h"
#include "h264/reconstruct_plain.h"
#include "h264/transform_simd.h"

namespace vekvc::simd {

using plain::reconstructChroma;
using plain::reconstructInter4x4;
using plain::reconstructInter8x8;
using plain::reconstructIntra16x16;
using plain::reconstructIntra4x4;
using plain::reconstructIntra8x8;

}  // namespace vekvc::simd

#endif
