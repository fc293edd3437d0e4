// The zigzag scan in which matrices are sent: raster position by index (ISO 13818-2 7.3.1).
#pragma once

#include "vekvc/types.h"

namespace vekdec {

// clang-format off
inline constexpr Vek32s kZigzagScan[64] = {
     0,  1,  8, 16,  9,  2,  3, 10, 17, 24, 32, 25, 18, 11,  4,  5,
    12, 19, 26, 33, 40, 48, 41, 34, 27, 20, 13,  6,  7, 14, 21, 28,
    35, 42, 49, 56, 57, 50, 43, 36, 29, 22, 15, 23, 30, 37, 44, 51,
    58, 59, 52, 45, 38, 31, 39, 46, 53, 60, 61, 54, 47, 55, 62, 63};
// clang-format on

}  // namespace vekdec
