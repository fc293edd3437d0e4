#ifndef VEKVC_VC1_TRANSFORM_SIMD_H
#define VEKVC_VC1_TRANSFORM_SIMD_H

#include "vc1/transform_plain.h"

namespace vekvc::simd {

using plain::transformForward;
using plain::transformInverse;

}  // namespace vekvc::simd

#endif
