#ifndef VEKVC_COMMON_DIFFERENCE_SIMD_H
#define VEKVC_COMMON_DIFFERENCE_SIMD_H
#include "common/difference_plain.h"
namespace vekvc::simd {
using plain::subtractBlock;
using plain::subtractPrediction;
}  // namespace vekvc::simd
#endif
