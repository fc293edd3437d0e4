// Dequantization and the 8x8 transform of AVS1-P2 (GB/T 20090.2 clause 9).
#ifndef VEKVC_AVS_TRANSFORM_TABLES_H
#define VEKVC_AVS_TRANSFORM_TABLES_H

#include "vekvc/types.h"

namespace vekvc::avs {

inline constexpr int kMaxQP = 63, kMaxChromaQP = 51;

// A level becomes (level * multiplier + half of 2^shift) >> shift.
// clang-format off
inline constexpr Vek16u kMultiplier[64] = {
    32768, 36061, 38968, 42495, 46341, 50535, 55437, 60424, 32932, 35734, 38968, 42495, 46177, 50535, 55109, 59933,
    65535, 35734, 38968, 42577, 46341, 50617, 55027, 60097, 32809, 35734, 38968, 42454, 46382, 50576, 55109, 60056,
    65535, 35734, 38968, 42495, 46320, 50515, 55109, 60076, 65535, 35744, 38968, 42495, 46341, 50535, 55099, 60087,
    65535, 35734, 38973, 42500, 46341, 50535, 55109, 60097, 32771, 35734, 38965, 42497, 46341, 50535, 55109, 60099};
inline constexpr Vek8u kShift[64] = {
    14, 14, 14, 14, 14, 14, 14, 14, 13, 13, 13, 13, 13, 13, 13, 13, 13, 12, 12, 12, 12, 12, 12, 12, 11, 11, 11, 11, 11,
    11, 11, 11, 11, 10, 10, 10, 10, 10, 10, 10, 10,  9,  9,  9,  9,  9,  9,  9,  9,  8,  8,  8,  8,  8,  8,  8,  7,  7,
     7,  7,  7,  7,  7,  7};
// Row k: the basis function of coefficient k at the samples 0 to 7. Even rows are symmetric, odd ones antisymmetric.
inline constexpr Vek16s kBasis[8][8] = {
    { 8,   8,   8,   8,   8,   8,   8,   8},
    {10,   9,   6,   2,  -2,  -6,  -9, -10},
    {10,   4,  -4, -10, -10,  -4,   4,  10},
    { 9,  -2, -10,  -6,   6,  10,   2,  -9},
    { 8,  -8,  -8,   8,   8,  -8,  -8,   8},
    { 6, -10,   2,   9,  -9,  -2,  10,  -6},
    { 4, -10,  10,  -4,  -4,  10, -10,   4},
    { 2,  -6,   9, -10,  10,  -9,   6,  -2}};
// clang-format on

}  // namespace vekvc::avs

#endif
