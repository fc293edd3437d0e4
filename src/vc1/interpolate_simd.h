#ifndef VEKVC_VC1_INTERPOLATE_SIMD_H
#define VEKVC_VC1_INTERPOLATE_SIMD_H

#include "vc1/interpolate_plain.h"

namespace vekvc::simd {

using plain::interpolateBicubic;
using plain::interpolateBilinear;

}  // namespace vekvc::simd

#endif
