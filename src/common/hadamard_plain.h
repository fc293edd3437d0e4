// The Hadamard transform of a block of N x N values. The definition.
#ifndef VEKVC_COMMON_HADAMARD_PLAIN_H
#define VEKVC_COMMON_HADAMARD_PLAIN_H

#include <bit>

#include "vekvc/types.h"

namespace vekvc::plain {

// The matrix of order 2, 4 or 8: -1 where row and column have an odd number of ones in common.
constexpr int hadamard(unsigned row, unsigned column) { return std::popcount(row & column) % 2 == 0 ? 1 : -1; }

// C = H D H^T, in place. |C| is at most N * N times the largest |D|, which fits 32 bits for all 17-bit values.
template <unsigned N>
void transformHadamard(Vek32s (&d)[N][N]) {
    Vek32s columns[N][N] = {};  // H D
    for (unsigned v = 0; v < N; ++v)
        for (unsigned x = 0; x < N; ++x)
            for (unsigned y = 0; y < N; ++y) columns[v][x] += hadamard(v, y) * d[y][x];
    for (unsigned v = 0; v < N; ++v)
        for (unsigned u = 0; u < N; ++u) {
            d[v][u] = 0;
            for (unsigned x = 0; x < N; ++x) d[v][u] += columns[v][x] * hadamard(x, u);
        }
}

}  // namespace vekvc::plain

#endif
