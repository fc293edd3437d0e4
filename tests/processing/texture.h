// A picture to filter: edges of all directions, something that moves, and noise.
#ifndef VEKVC_TESTS_PROCESSING_TEXTURE_H
#define VEKVC_TESTS_PROCESSING_TEXTURE_H

#include <algorithm>
#include <vector>

#include "vekvc.h"

namespace vekvc_test {

constexpr Vek8u kUntouched = 0xa5;

constexpr Vek32u hash(Vek32u v) {
    v ^= v >> 16;
    v *= 0x7feb352du;
    v ^= v >> 15;
    v *= 0x846ca68bu;
    return v ^ v >> 16;
}

// A plane of samples: oblique ramps, a disc that moves with the time t, hatched bands, and noise of up to amp.
inline std::vector<Vek8u> makePlane(int width, int height, int seed, int amp, int t = 0) {
    std::vector<Vek8u> samples;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const int p = (5 * x + 3 * y + 11 * t + 17 * seed) & 511;
            int v = p < 256 ? p : 511 - p;
            const int dx = x - 8 - 3 * t, dy = y - 6 - t;
            if (dx * dx + dy * dy < 30) v = 255 - v;
            if (((x + 2 * t) & 15) < 3 && (y & 8) != 0) v >>= 1;
            if (amp > 0) {
                const auto place = static_cast<Vek32u>(seed) * 1000003u + static_cast<Vek32u>(t) * 8191u +
                                   static_cast<Vek32u>(y) * 131071u + static_cast<Vek32u>(x);
                v += static_cast<int>(hash(place) % static_cast<Vek32u>(2 * amp + 1)) - amp;
            }
            samples.push_back(static_cast<Vek8u>(std::clamp(v, 0, 255)));
        }
    return samples;
}

}  // namespace vekvc_test

#endif
