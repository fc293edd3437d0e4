// Sums of absolute transformed differences. The definition.
#ifndef VEKVC_COMMON_SATD_PLAIN_H
#define VEKVC_COMMON_SATD_PLAIN_H

#include "common/hadamard_plain.h"
#include "common/predict_plain.h"

namespace vekvc::plain {

// The sum of |C| over all N x N blocks, C = H D H^T, D = s - p, p being the reference at its position with rounding 0.
// At most 16 * 16 * 16 * 65535 (N = 4), which fits 32 bits.
template <int W, int H, int N, class T>
Vek32s sumOfTransformedDifferences(Block<T> s, Block<T> ref, Half half) {
    Vek32s sum = 0;
    for (int top = 0; top < H; top += N)
        for (int left = 0; left < W; left += N) {
            Vek32s d[N][N];
            for (int y = 0; y < N; ++y)
                for (int x = 0; x < N; ++x)
                    d[y][x] = s(left + x, top + y) - samplePosition(ref, half, 0, 1, left + x, top + y);
            transformHadamard(d);
            for (const auto& row : d)
                for (const Vek32s c : row) sum += c < 0 ? -c : c;
        }
    return sum;
}

// With 4x4 transforms, half the sum: all |C| of a block have the parity of the sum of its D, so that theirs is even.
template <int W, int H, class T>
Vek32s satd4x4(Block<T> s, Block<T> ref) {
    return sumOfTransformedDifferences<W, H, 4>(s, ref, Half::none) / 2;
}

// With 8x8 transforms, a quarter of it, rounded once.
template <int W, int H>
void putSatd8x8(Block<Vek8u> s, Block<Vek8u> ref, Half half, Vek32s* pResult) {
    store(pResult, (sumOfTransformedDifferences<W, H, 8>(s, ref, half) + 2) >> 2);
}

}  // namespace vekvc::plain

#endif
