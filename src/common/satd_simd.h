#ifndef VEKVC_COMMON_SATD_SIMD_H
#define VEKVC_COMMON_SATD_SIMD_H
#include "common/satd_plain.h"
namespace vekvc::simd {
using plain::satd4x4;
using plain::satd8x8;
}
#endif
