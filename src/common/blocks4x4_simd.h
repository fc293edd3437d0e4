#ifndef VEKVC_COMMON_BLOCKS4X4_SIMD_H
#define VEKVC_COMMON_BLOCKS4X4_SIMD_H
#include "common/blocks4x4_plain.h"
namespace vekvc::simd {
using plain::sadBlocks4x4;
using plain::sumsDiffBlocks4x4;
}  // namespace vekvc::simd
#endif
