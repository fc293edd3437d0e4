#ifndef VEKVC_VC1_RANGE_MAPPING_SIMD_H
#define VEKVC_VC1_RANGE_MAPPING_SIMD_H

#include "vc1/range_mapping_plain.h"

namespace vekvc::simd {

using plain::mapRange;

}  // namespace vekvc::simd

#endif
