// The rows of the recursive denoiser: the difference to the estimate, the new estimate and gain, the filter in space.
#ifndef VEKVC_PROCESSING_DENOISE_ADAPTIVE_PLAIN_H
#define VEKVC_PROCESSING_DENOISE_ADAPTIVE_PLAIN_H

#include <algorithm>
#include <cstdlib>

#include "core/arith.h"
#include "processing/denoise_adaptive.h"

namespace vekvc::plain {

inline void adaptiveDifferences(const VekDenoiseAdaptiveState& state, const Vek8u* pSrc, Vek32s y) {
    const Vek16u* estimate = state.estimate(y);
    Vek16s* e = state.differences(y);
    const Vek32s w = state.size.width;
    for (Vek32s x = 0; x < w; ++x) e[x] = static_cast<Vek16s>(16 * load<Vek8u>(pSrc + x) - estimate[x]);
    e[-1] = e[0];
    e[w] = e[w - 1];
}

// Motion M from the differences around, by which the gain k is raised; noise alone stays below lo.
inline void adaptiveEstimate(const VekDenoiseAdaptiveState& state, Vek32s y) {
    const Vek16s* rows[] = {state.differences(y > 0 ? y - 1 : y), state.differences(y),
                            state.differences(y < state.size.height - 1 ? y + 1 : y)};
    Vek16u* estimate = state.estimate(y);
    Vek8u *gain = state.gain(y), *thresholds = state.thresholds(y), *samples = state.samples(y);
    const Vek32s w = state.size.width, lo = 4 * state.noise;
    for (Vek32s x = 0; x < w; ++x) {
        int sum = 0, sumOfMagnitudes = 0;
        for (Vek32s j = 0; j < 3; ++j)
            for (Vek32s i = 0; i < 3; ++i) {
                const int weight = (2 - std::abs(i - 1)) * (2 - std::abs(j - 1)), e = rows[j][x + i - 1];
                sum += weight * e;
                sumOfMagnitudes += weight * std::abs(e);
            }
        const int motion = std::max((11 * std::abs(sum)) >> 7, sumOfMagnitudes >> 4);
        const int k = std::max(gain[x] + 1, 256 * clip3(0, lo, motion - lo) / lo);

        estimate[x] = static_cast<Vek16u>(estimate[x] + ((k * rows[1][x] + 128) >> 8));
        gain[x] = state.gains[k].next;
        thresholds[x] = state.gains[k].threshold;
        samples[x] = static_cast<Vek8u>((estimate[x] + 8) >> 4);
    }
    samples[-2] = samples[-1] = samples[0];
    samples[w] = samples[w + 1] = samples[w - 1];
}

// The mean over the 5x5 samples b around; weights fall with the distance in grey and are 0 from T[k] on.
inline void adaptiveSmooth(const VekDenoiseAdaptiveState& state, Vek8u* pDst, Vek32s y) {
    const Vek8u* rows[5];
    for (Vek32s j = 0; j < 5; ++j) rows[j] = state.samples(clip3(0, state.size.height - 1, y + j - 2));
    for (Vek32s x = 0; x < state.size.width; ++x) {
        int num = 0, den = 0;
        for (Vek32s j = 0; j < 5; ++j)
            for (Vek32s i = 0; i < 5; ++i) {
                const int d = rows[j][x + i - 2] - rows[2][x];
                const int weight = std::max(0, state.thresholds(y)[x] - std::abs(d));
                num += weight * d;
                den += weight;
            }
        const int n = 32 * num + den, quotient = n / (2 * den) - (n % (2 * den) < 0 ? 1 : 0);  // floor
        store(pDst + x, clip255((state.estimate(y)[x] + quotient + 8) >> 4));
    }
}

}  // namespace vekvc::plain

#endif
