// The filter against mosquito noise, block by block.
#ifndef VEKVC_PROCESSING_DENOISE_MOSQUITO_PLAIN_H
#define VEKVC_PROCESSING_DENOISE_MOSQUITO_PLAIN_H

#include <algorithm>
#include <bit>
#include <cstdlib>

#include "core/arith.h"
#include "core/memory.h"
#include "processing/denoise_mosquito.h"

namespace vekvc::plain {

// The greatest less the least sample of a block of w x h samples.
inline Vek8u blockContrast(Block<Vek8u> block, Vek32s w, Vek32s h) {
    int least = 255, greatest = 0;
    for (Vek32s y = 0; y < h; ++y)
        for (Vek32s x = 0; x < w; ++x) {
            least = std::min<int>(least, block(x, y));
            greatest = std::max<int>(greatest, block(x, y));
        }
    return static_cast<Vek8u>(greatest - least);
}

// The line to which the sample in column j of row i belongs in a direction.
constexpr int lineOf(int direction, int i, int j) {
    switch (direction) {
        case 0:
            return i + j;
        case 1:
            return i + (j >> 1);
        case 2:
            return i;
        case 3:
            return 3 + i - (j >> 1);
        case 4:
            return 7 + i - j;
        case 5:
            return 3 - (i >> 1) + j;
        case 6:
            return j;
        default:
            return (i >> 1) + j;
    }
}

// The direction whose lines are most even in themselves: the sum of the squares of their sums, each divided by the
// number of its samples, is greatest. 840 is a multiple of all these numbers.
inline int blockDirection(Block<Vek8u> block) {
    int best = -1, direction = 0;
    for (int d = 0; d < 8; ++d) {
        int sums[15] = {}, counts[15] = {};
        for (int i = 0; i < 8; ++i)
            for (int j = 0; j < 8; ++j) {
                sums[lineOf(d, i, j)] += block(j, i) - 128;
                ++counts[lineOf(d, i, j)];
            }
        int score = 0;  // at most 840 * 64 * 128^2, which fits 31 bits
        for (int line = 0; line < 15; ++line)
            if (counts[line] > 0) score += sums[line] * sums[line] * (840 / counts[line]);
        if (score > best) {
            best = score;
            direction = d;
        }
    }
    return direction;
}

// How far a tap that differs by d draws a sample: fully while |d| is small beside the strength, then less and less.
inline int constrained(int d, int strength) {
    const int damping = std::max(0, 6 - static_cast<int>(std::bit_width(static_cast<unsigned>(std::max(1, strength)))));
    const int reach = std::min(std::abs(d), std::max(0, strength - (std::abs(d) >> damping)));
    return d < 0 ? -reach : reach;
}

inline Vek8u mosquitoSample(Block<Vek8u> src, VekiSize size, Vek32s x, Vek32s y, int direction,
                            MosquitoStrengths strengths) {
    const int c = src(x, y);
    int sum = 0, least = c, greatest = c;
    for (int k = 0; k < 2; ++k) {
        const auto addTaps = [&](int alongWhat, int weight, int strength) {
            const MosquitoStep step = kMosquitoSteps[alongWhat & 7][k];
            for (const int sign : {-1, 1}) {
                const Vek32s tx = x + sign * step.x, ty = y + sign * step.y;
                if (tx < 0 || tx >= size.width || ty < 0 || ty >= size.height) continue;
                const int tap = src(tx, ty);
                sum += weight * constrained(tap - c, strength);
                least = std::min(least, tap);
                greatest = std::max(greatest, tap);
            }
        };
        addTaps(direction, 3, strengths.along);
        addTaps(direction + 2, k == 0 ? 2 : 1, strengths.across);
        addTaps(direction + 6, k == 0 ? 2 : 1, strengths.across);
    }
    return static_cast<Vek8u>(clip3(least, greatest, c + ((8 + sum - (sum < 0 ? 1 : 0)) >> 4)));
}

inline void denoiseMosquito(const VekDenoiseMosquitoState& state, Block<Vek8u> src, MutableBlock<Vek8u> dst,
                            Vek32s scale) {
    const auto [w, h] = state.size;
    const auto forBlocks = [&](auto use) {
        for (Vek32s by = 0; by < state.blocksDown(); ++by)
            for (Vek32s bx = 0; bx < state.blocksAcross(); ++bx) use(bx, by);
    };
    forBlocks([&, width = w, height = h](Vek32s bx, Vek32s by) {
        const Block<Vek8u> block(src.at(8 * bx, 8 * by), static_cast<Vek32s>(src.step));
        state.contrast(bx, by) = blockContrast(block, std::min(8, width - 8 * bx), std::min(8, height - 8 * by));
    });
    forBlocks([&, width = w, height = h](Vek32s bx, Vek32s by) {
        Vek32s contrast = 0;
        for (Vek32s j = -1; j <= 1; ++j)
            for (Vek32s i = -1; i <= 1; ++i) contrast = std::max<Vek32s>(contrast, state.contrast(bx + i, by + j));
        const Block<Vek8u> whole(src.at(std::min(8 * bx, width - 8), std::min(8 * by, height - 8)),
                                 static_cast<Vek32s>(src.step));
        const int direction = blockDirection(whole);
        for (Vek32s y = 8 * by; y < height && y - 8 * by < 8; ++y)
            for (Vek32s x = 8 * bx; x < width && x - 8 * bx < 8; ++x)
                dst.put(x, y,
                        scale == 0
                            ? src(x, y)
                            : mosquitoSample(src, state.size, x, y, direction, MosquitoStrengths(contrast, scale)));
    });
}

}  // namespace vekvc::plain

#endif
