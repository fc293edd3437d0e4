// The state of the filter against mosquito noise: the contrast of every 8x8 block, with a margin of one block of 0.
#ifndef VEKVC_PROCESSING_DENOISE_MOSQUITO_H
#define VEKVC_PROCESSING_DENOISE_MOSQUITO_H

#include <cstdint>

#include "core/state.h"
#include "vekvc/processing_denoise.h"

struct VekDenoiseMosquitoState : vekvc::AllocatedState {
    VekiSize size = {};

    Vek32s blocksAcross() const { return (size.width - 1) / 8 + 1; }
    Vek32s blocksDown() const { return (size.height - 1) / 8 + 1; }
    std::int64_t pitch() const { return std::int64_t{blocksAcross()} + 2; }
    std::int64_t tableBytes() const { return pitch() * (std::int64_t{blocksDown()} + 2); }
    // From column -1 and row -1 on.
    Vek8u& contrast(Vek32s bx, Vek32s by) const { return static_cast<Vek8u*>(table)[pitch() * (by + 1) + bx + 1]; }
};

namespace vekvc {

// The strengths of a block's filter: along its direction and across.
struct MosquitoStrengths {
    Vek32s along, across;

    // contrast: the greatest of the 3x3 blocks around; scale: the quantiser scale, 1 to 63. 47 and 16 at the most.
    constexpr MosquitoStrengths(Vek32s contrast, Vek32s scale) {
        const Vek32s f = 4 * contrast / scale < 16 ? 4 * contrast / scale : 16;
        along = ((3 * scale + 2) / 4 * f + 8) >> 4;
        across = ((scale + 2) / 4 * f + 8) >> 4;
    }
};

struct MosquitoStep {
    Vek32s x, y;
};

// The first and second steps along each of the eight directions.
inline constexpr MosquitoStep kMosquitoSteps[8][2] = {
    {{1, -1}, {2, -2}}, {{1, 0}, {2, -1}}, {{1, 0}, {2, 0}}, {{1, 0}, {2, 1}},
    {{1, 1}, {2, 2}},   {{0, 1}, {1, 2}},  {{0, 1}, {0, 2}}, {{0, 1}, {-1, 2}},
};

}  // namespace vekvc

#endif
