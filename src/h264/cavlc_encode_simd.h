// The CAVLC analysis on a bit mask of the coefficients: runs are distances between set bits.
#ifndef VEKVC_H264_CAVLC_ENCODE_SIMD_H
#define VEKVC_H264_CAVLC_ENCODE_SIMD_H

#include "h264/cavlc_encode_plain.h"

namespace vekvc::simd {

using plain::analyzeCavlc4x4;
using plain::analyzeCavlcChromaDc;

}  // namespace vekvc::simd

#endif
