// Block matching: sums of absolute and squared differences, and searches along a row. The definition.
#ifndef VEKVC_COMMON_METRICS_PLAIN_H
#define VEKVC_COMMON_METRICS_PLAIN_H

#include "common/predict_plain.h"

namespace vekvc::plain {

// The sum of |s - p|, p being the reference at its position with rounding 0. 16 x 16 x 65535 fits 32 bits.
template <int W, int H, class T>
Vek32s sumOfAbsoluteDifferences(Block<T> s, Block<T> ref, Half half) {
    Vek32s sum = 0;
    for (int y = 0; y < H; ++y)
        for (int x = 0; x < W; ++x) {
            const int difference = s(x, y) - samplePosition(ref, half, 0, 1, x, y);
            sum += difference < 0 ? -difference : difference;
        }
    return sum;
}

template <int W, int H, class T>
void putSumOfAbsoluteDifferences(Block<T> s, Block<T> ref, Half half, Vek32s* pResult) {
    store(pResult, sumOfAbsoluteDifferences<W, H>(s, ref, half));
}

template <int W, int H>
Vek32s sumOfSquaredDifferences(Block<Vek8u> s, Block<Vek8u> ref, Half half) {
    Vek32s sum = 0;
    for (int y = 0; y < H; ++y)
        for (int x = 0; x < W; ++x) {
            const int difference = s(x, y) - samplePosition(ref, half, 0, 1, x, y);
            sum += difference * difference;
        }
    return sum;
}

// 8x8 samples of each of two interleaved components: the sums of the even and of the odd bytes.
struct InterleavedSums {
    Vek32s u, v;
};
inline InterleavedSums sumsOfAbsoluteDifferences8x8(Block<Vek8u> s, Block<Vek8u> ref, Half half) {
    Vek32s sums[2] = {0, 0};
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 16; ++x) {
            const int difference = s(x, y) - samplePosition(ref, half, 0, 2, x, y);
            sums[x % 2] += difference < 0 ? -difference : difference;
        }
    return {sums[0], sums[1]};
}

// pSad[i] = the sum against the reference i columns on; 16 x 16 x 255 fits 16 bits. The lowest index of the smallest
// sum is the result, if it is wanted.
template <int W, int H, bool wantIndex>
Vek32u searchRow(Block<Vek8u> s, Block<Vek8u> ref, Vek16u* pSad, Vek32s count) {
    Vek32s best = 0, bestIndex = 0;
    for (Vek32s i = 0; i < count; ++i) {
        Block<Vek8u> at = ref;
        at.base += i;
        const Vek32s sum = sumOfAbsoluteDifferences<W, H>(s, at, Half::none);
        store(pSad + i, static_cast<Vek16u>(sum));
        if (i == 0 || sum < best) {
            best = sum;
            bestIndex = i;
        }
    }
    return static_cast<Vek32u>(bestIndex);
}

}  // namespace vekvc::plain

#endif
