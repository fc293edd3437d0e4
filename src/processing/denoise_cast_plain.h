// The content-adaptive spatio-temporal mean over three frames.
#ifndef VEKVC_PROCESSING_DENOISE_CAST_PLAIN_H
#define VEKVC_PROCESSING_DENOISE_CAST_PLAIN_H

#include <cstdlib>

#include "core/arith.h"
#include "core/memory.h"

namespace vekvc {

struct CastFrames {
    Block<Vek8u> previous, current, next;
};

// Weights fall with the sum of absolute differences of two 5x5 patches, to 0 at the threshold Th:
// ((Th - SAD) R) >> 16, 64 at the most.
struct CastWeights {
    Vek32s threshold, reciprocal;

    constexpr explicit CastWeights(Vek32s noise)  // 6..255
        : threshold((25 * noise + 1) >> 1), reciprocal((1 << 22) / threshold) {}
};

namespace plain {

inline void denoiseCast(const CastFrames& frames, MutableBlock<Vek8u> dst, VekiSize roiSize, CastWeights weights) {
    const auto column = [&](Vek32s x) { return clip3(0, roiSize.width - 1, x); };
    const auto row = [&](Vek32s y) { return clip3(0, roiSize.height - 1, y); };
    const auto at = [&](const Block<Vek8u>& frame, Vek32s x, Vek32s y) { return int{frame(column(x), row(y))}; };
    const Block<Vek8u>& current = frames.current;

    for (Vek32s y = 0; y < roiSize.height; ++y)
        for (Vek32s x = 0; x < roiSize.width; ++x) {
            int num = 0, den = 32;
            const auto addPosition = [&](const Block<Vek8u>& frame, Vek32s dx, Vek32s dy) {
                int sad = 0;
                for (Vek32s j = -2; j <= 2; ++j)
                    for (Vek32s i = -2; i <= 2; ++i) {
                        const Vek32s px = column(x + i), py = row(y + j);
                        sad += std::abs(at(current, px, py) - at(frame, px + dx, py + dy));
                    }
                if (sad >= weights.threshold) return;
                const int weight = ((weights.threshold - sad) * weights.reciprocal) >> 16;
                num += weight * (at(frame, x + dx, y + dy) - at(current, x, y));
                den += weight;
            };
            for (Vek32s dy = -2; dy <= 2; ++dy)
                for (Vek32s dx = -2; dx <= 2; ++dx)
                    if (dx != 0 || dy != 0) addPosition(current, dx, dy);
            for (Vek32s dy = -1; dy <= 1; ++dy)
                for (Vek32s dx = -1; dx <= 1; ++dx) {
                    addPosition(frames.previous, dx, dy);
                    addPosition(frames.next, dx, dy);
                }
            const int n = 2 * num + den, quotient = n / (2 * den) - (n % (2 * den) < 0 ? 1 : 0);  // floor
            dst.put(x, y, static_cast<Vek8u>(at(current, x, y) + quotient));
        }
}

}  // namespace plain
}  // namespace vekvc

#endif
