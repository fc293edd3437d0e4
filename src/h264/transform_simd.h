// Fast forms of the H.264 transforms.
#ifndef VEKVC_H264_TRANSFORM_SIMD_H
#define VEKVC_H264_TRANSFORM_SIMD_H

#include "h264/transform_plain.h"

namespace vekvc::simd {

using plain::dequantTransformResidual;
using plain::inverseChromaDC2x2;
using plain::inverseChromaDC2x4;
using plain::inverseLumaDC;
using plain::scaleBlock8x8;
using plain::transformFwd8x8;
using plain::transformInvAddPred8x8;
using plain::transformPrediction;
using plain::transformQuantInvAddPred4x4;
using plain::transformResidual4x4Fwd;
using plain::transformResidual4x4Inv;

}  // namespace vekvc::simd

#endif
