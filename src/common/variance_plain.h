// Variance, sum and deviations of a block. The definition.
#ifndef VEKVC_COMMON_VARIANCE_PLAIN_H
#define VEKVC_COMMON_VARIANCE_PLAIN_H

#include "common/predict_plain.h"

namespace vekvc::plain {

// The sum of a block's samples and that of their squares.
struct Moments {
    Vek32s sum, squares;
};

template <int W, int H>
Moments moments(Block<Vek8u> s) {
    Moments m = {0, 0};
    for (int y = 0; y < H; ++y)
        for (int x = 0; x < W; ++x) {
            m.sum += s(x, y);
            m.squares += s(x, y) * s(x, y);
        }
    return m;
}

// 16-bit samples: the column sums are limited to 16 bits after every row, the squares wrap at 32 bits.
inline Moments moments8x8(Block<Vek16s> s) {
    Vek16s columns[8] = {};
    Moments m = {0, 0};
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) {
            columns[x] = saturate16(columns[x] + s(x, y));
            m.squares = wrapAdd(m.squares, s(x, y) * s(x, y));
        }
    for (const Vek16s column : columns) m.sum += column;
    return m;
}

// The variance of 64 values, and their sum. Each operation rounds to single precision; the library is compiled without
// contraction to multiply-add.
struct VarianceAndSum {
    Vek32s variance, sum;
};
inline VarianceAndSum varianceAndSumOf64(const Moments& m) {
    const float mean = static_cast<float>(m.sum) / 64.0f;
    const float meanOfSquares = static_cast<float>(m.squares) / 64.0f;
    const float squareOfMean = mean * mean;
    return {static_cast<Vek32s>(meanOfSquares - squareOfMean), m.sum};
}

inline VarianceAndSum varianceAndSum8x8(Block<Vek8u> s) { return varianceAndSumOf64(moments<8, 8>(s)); }
inline VarianceAndSum varianceAndSum8x8(Block<Vek16s> s) { return varianceAndSumOf64(moments8x8(s)); }

// The moments of s - p, p being the reference at its position with rounding 0: 256 * 255 * 255 fits 32 bits.
template <int W, int H>
Moments momentsOfDifference(Block<Vek8u> s, Block<Vek8u> ref, Half half) {
    Moments m = {0, 0};
    for (int y = 0; y < H; ++y)
        for (int x = 0; x < W; ++x) {
            const int difference = s(x, y) - samplePosition(ref, half, 0, 1, x, y);
            m.sum += difference;
            m.squares += difference * difference;
        }
    return m;
}

// The square of the sum takes all 32 bits without sign: 256 * 255 squared is 4261478400.
template <int W, int H>
VarianceAndSum varianceAndSumOfDifference(const Moments& m) {
    const Vek32u squareOfSum = magnitude(m.sum) * magnitude(m.sum);
    return {m.squares - static_cast<Vek32s>(squareOfSum / (W * H)), m.sum};
}

template <int W, int H>
void putVarianceOfDifference(Block<Vek8u> s, Block<Vek8u> ref, Half half, Vek32s* pVar, Vek32s* pMean) {
    const VarianceAndSum result = varianceAndSumOfDifference<W, H>(momentsOfDifference<W, H>(s, ref, half));
    store(pVar, result.variance);
    store(pMean, result.sum);
}

// The sum of |s - m|, m being the mean with the fraction dropped.
template <int W, int H>
Vek32s sumOfDeviations(Block<Vek8u> s) {
    const int mean = moments<W, H>(s).sum / (W * H);
    Vek32s sum = 0;
    for (int y = 0; y < H; ++y)
        for (int x = 0; x < W; ++x) sum += s(x, y) < mean ? mean - s(x, y) : s(x, y) - mean;
    return sum;
}

}  // namespace vekvc::plain

#endif
