#ifndef VEKVC_VC1_SMOOTHING_SIMD_H
#define VEKVC_VC1_SMOOTHING_SIMD_H

#include "vc1/smoothing_plain.h"

namespace vekvc::simd {

using plain::smoothHorizontalEdge;
using plain::smoothVerticalEdge;

}  // namespace vekvc::simd

#endif
