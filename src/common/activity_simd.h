#ifndef VEKVC_COMMON_ACTIVITY_SIMD_H
#define VEKVC_COMMON_ACTIVITY_SIMD_H
#include "common/activity_plain.h"
namespace vekvc::simd {
using plain::activityFrameField;
using plain::countEdges;
}  // namespace vekvc::simd
#endif
