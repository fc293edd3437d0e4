#ifndef VEKVC_VC1_LOOP_FILTER_SIMD_H
#define VEKVC_VC1_LOOP_FILTER_SIMD_H

#include "vc1/loop_filter_plain.h"

namespace vekvc::simd {

using plain::filterEdge;
using plain::filterEdgeInterleaved;

}  // namespace vekvc::simd

#endif
