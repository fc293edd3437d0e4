// Fast forms of H.264 quantization.
#ifndef VEKVC_H264_QUANTIZE_SIMD_H
#define VEKVC_H264_QUANTIZE_SIMD_H

#include "h264/quantize_plain.h"

namespace vekvc::simd {

using plain::dequantChromaDCSISP;
using plain::dequantTransformResidualSISP;
using plain::forwardDC;
using plain::genScaleLevel;
using plain::quantize;
using plain::quantizeDC;
using plain::transformQuantFwd4x4;

}  // namespace vekvc::simd

#endif
