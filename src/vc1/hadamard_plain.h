// Hadamard sums of 8x8 blocks. The definition.
#ifndef VEKVC_VC1_HADAMARD_PLAIN_H
#define VEKVC_VC1_HADAMARD_PLAIN_H

#include "common/hadamard_plain.h"
#include "core/arith.h"
#include "core/memory.h"

namespace vekvc::plain {

// A quarter of the sum of |C| but for the first one, C = H P H^T: below 64770 / 4.
inline Vek16s hadamardSum(Block<Vek8u> p) {
    Vek32s c[8][8];
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) c[y][x] = p(x, y);
    transformHadamard(c);
    Vek32u sum = 0;
    for (const auto& row : c)
        for (const Vek32s value : row) sum += magnitude(value);
    sum -= magnitude(c[0][0]);
    return static_cast<Vek16s>((sum + 2) >> 2);
}

// A quarter of the sum of |C|, every C read from its low 16 bits; limited to 32767.
inline Vek16s hadamardSum(Block<Vek16s> p) {
    Vek32s c[8][8];
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) c[y][x] = p(x, y);
    transformHadamard(c);
    Vek32u sum = 0;
    for (const auto& row : c)
        for (const Vek32s value : row) sum += magnitude(wrap16(value));
    return saturate16(static_cast<Vek32s>((sum + 2) >> 2));
}

}  // namespace vekvc::plain

#endif
