// The deinterlacers. A(x) and B(x) are the samples above and below in the rows of the other parity.
#ifndef VEKVC_PROCESSING_DEINTERLACE_PLAIN_H
#define VEKVC_PROCESSING_DEINTERLACE_PLAIN_H

#include <algorithm>
#include <cstdlib>

#include "processing/deinterlace_rows.h"

namespace vekvc::plain {

// Copies the rows of the kept parity and rebuilds the others, sample by sample.
template <class Rebuild>
void rebuildField(Block<Vek8u> kept, MutableBlock<Vek8u> dst, VekiSize roiSize, Vek32s field, Rebuild&& rebuild) {
    for (Vek32s y = 0; y < roiSize.height; ++y)
        for (Vek32s x = 0; x < roiSize.width; ++x)
            dst.put(x, y, static_cast<Vek8u>((y & 1) == field ? kept(x, y) : rebuild(x, y)));
}

// ---- triangle

inline void deinterlaceTriangle(Block<Vek8u> src, MutableBlock<Vek8u> dst, VekiSize roiSize, Vek32s field) {
    const auto mean = [&](Vek32s x, Vek32s y) {
        const NeighbourRows rows(y, roiSize.height);
        return (src(x, rows.above) + src(x, rows.below) + 1) >> 1;
    };
    rebuildField(src, dst, roiSize, field, mean);
}

inline int triangle(Block<Vek8u> src, VekiSize roiSize, Vek32s x, Vek32s y) {
    const NeighbourRows rows(y, roiSize.height);
    return (src(x, rows.above) + 2 * src(x, y) + src(x, rows.below) + 2) >> 2;
}

inline void mixFields(Block<Vek8u> src, MutableBlock<Vek8u> dst, VekiSize roiSize) {
    for (Vek32s y = 0; y < roiSize.height; ++y)
        for (Vek32s x = 0; x < roiSize.width; ++x) dst.put(x, y, static_cast<Vek8u>(triangle(src, roiSize, x, y)));
}

// ---- median with a threshold

inline int medianThreshold(int v, int a, int b, int threshold) {
    const int median = clip3(std::min(a, b), std::max(a, b), v);
    const int excursion = std::abs(v - median);
    const int rest = excursion <= threshold ? excursion : std::max(0, 2 * threshold - excursion);
    return v < median ? median - rest : median + rest;
}

inline void deinterlaceMedianThreshold(Block<Vek8u> src, MutableBlock<Vek8u> dst, VekiSize roiSize, Vek32s field,
                                       Vek32s threshold) {
    rebuildField(src, dst, roiSize, field, [&](Vek32s x, Vek32s y) {
        const NeighbourRows rows(y, roiSize.height);
        return medianThreshold(src(x, y), src(x, rows.above), src(x, rows.below), threshold);
    });
}

// ---- edges

// The sample of a missing row predicted from the other field, along the edge there: direction k leads from x + k above
// to x - k below. Each sign is followed as long as the cost falls; a direction must gain clearly on the vertical.
inline int predictAlongEdge(const Block<Vek8u>& src, VekiSize roiSize, Vek32s x, Vek32s y, Vek32s threshold) {
    const NeighbourRows rows(y, roiSize.height);
    const auto sample = [&](Vek32s column, Vek32s row) { return int{src(clip3(0, roiSize.width - 1, column), row)}; };
    const auto a = [&](Vek32s column) { return sample(column, rows.above); };
    const auto b = [&](Vek32s column) { return sample(column, rows.below); };
    const auto cost = [&](int k) {
        int sum = 0;
        for (int j = -2; j <= 2; ++j) sum += std::abs(a(x + k + j) - b(x - k + j));
        return sum;
    };

    const int vertical = clip255((9 * (a(x) + b(x)) - (src(x, rows.above3) + src(x, rows.below3)) + 8) >> 4);
    int best = 2 * cost(0), direction = 0;
    for (const int sign : {-1, 1}) {
        int last = cost(0);
        for (int m = 1; m <= 3; ++m) {
            if (x < m || x >= roiSize.width - m) break;
            const int here = cost(sign * m);
            if (here >= last) break;
            last = here;
            if (3 * here + 2 * threshold * m < best) {
                best = 3 * here + 2 * threshold * m;
                direction = sign * m;
            }
        }
    }
    if (direction == 0) return vertical;
    const int along = (a(x + direction) + b(x - direction) + 1) >> 1;
    return clip3(std::min({a(x), b(x), vertical}), std::max({a(x), b(x), vertical}), along);
}

inline void deinterlaceEdgeDetect(Block<Vek8u> src, MutableBlock<Vek8u> dst, VekiSize roiSize, Vek32s field,
                                  Vek32s threshold) {
    rebuildField(src, dst, roiSize, field,
                 [&](Vek32s x, Vek32s y) { return predictAlongEdge(src, roiSize, x, y, threshold); });
}

// ---- motion

inline void deinterlaceMotionAdaptive(const MotionFrames& frames, MutableBlock<Vek8u> dst, VekiSize roiSize,
                                      Vek32s field) {
    const Block<Vek8u>&k0 = frames.previous, &k1 = frames.current, &k2 = frames.next;
    const Block<Vek8u>&p = frames.before(), &n = frames.after();
    rebuildField(k1, dst, roiSize, field, [&](Vek32s x, Vek32s y) {
        const NeighbourRows rows(y, roiSize.height);

        // Motion of the missing field and of both intervals of the kept one.
        const auto q = [&](Vek32s column) {
            const Vek32s c = clip3(0, roiSize.width - 1, column);
            const auto kept = [&](const Block<Vek8u>& k) {
                return (std::abs(k(c, rows.above) - k1(c, rows.above)) +
                        std::abs(k(c, rows.below) - k1(c, rows.below))) >>
                       1;
            };
            return std::max({std::abs(p(c, y) - n(c, y)) >> 1, kept(k0), kept(k2)});
        };
        int motion = std::max(q(x), (q(x - 1) + q(x + 1)) >> 1);

        // A comb in the woven picture, as far as the two fields allow for it, is motion too.
        const int woven = (p(x, y) + n(x, y)) >> 1;
        const int a = k1(x, rows.above), b = k1(x, rows.below);
        const int comb = std::max({0, woven - std::max(a, b), std::min(a, b) - woven});
        motion = std::max(motion, std::min(comb, std::abs(p(x, y) - n(x, y))));
        motion += std::max(0, motion - 8);

        // Vertical detail that both fields show.
        const Vek32s u = y >= 2 ? y - 2 : y, l = y < roiSize.height - 2 ? y + 2 : y;
        const auto detail = [&](const Block<Vek8u>& f) { return 2 * f(x, y) - f(x, u) - f(x, l); };
        const int f0 = detail(p), f1 = detail(n);
        const int f = f0 > 0 && f1 > 0 ? std::min(f0, f1) : f0 < 0 && f1 < 0 ? std::max(f0, f1) : 0;
        const int interpolated = clip255(predictAlongEdge(k1, roiSize, x, y, kMotionEdgeThreshold) + f / 8);

        return clip3(std::max(0, woven - motion), std::min(255, woven + motion), interpolated);
    });
}

// ---- blend

inline void deinterlaceBlend(Block<Vek8u> src, MutableBlock<Vek8u> dst, VekiSize roiSize,
                             const VekDeinterlaceBlendState& state) {
    const auto column = [&](Vek32s x) { return clip3(0, roiSize.width - 1, x); };
    const auto inside = [&](Vek32s y) { return y >= 0 && y < roiSize.height; };

    // By how much a sample stands out of both its neighbours, with its sign.
    const auto peak = [&](Vek32s xAny, Vek32s y) {
        if (!inside(y)) return 0;
        const Vek32s x = column(xAny);
        const NeighbourRows rows(y, roiSize.height);
        const int d1 = src(x, y) - src(x, rows.above), d2 = src(x, y) - src(x, rows.below);
        return d1 > 0 && d2 > 0 ? std::min(d1, d2) : d1 < 0 && d2 < 0 ? std::max(d1, d2) : 0;
    };
    // A comb alternates from row to row; a thin line does not.
    const auto alternation = [&](Vek32s xAny, Vek32s y) {
        const Vek32s x = column(xAny);
        const int here = peak(x, y);
        int opposite = 0;
        for (const Vek32s row : {y - 1, y + 1})
            for (Vek32s i = -1; i <= 1; ++i) {
                const int there = peak(x + i, row);
                if ((here > 0 && there < 0) || (here < 0 && there > 0)) opposite = std::max(opposite, std::abs(there));
            }
        return std::min(std::abs(here), opposite);
    };
    for (Vek32s y = 0; y < roiSize.height; ++y)
        for (Vek32s x = 0; x < roiSize.width; ++x) {
            int comb = 0;
            for (Vek32s j = -1; j <= 1; ++j)
                for (Vek32s i = -1; i <= 1 && inside(y + j); ++i) comb = std::max(comb, alternation(x + i, y + j));
            const int change = triangle(src, roiSize, x, y) - src(x, y);
            dst.put(x, y, static_cast<Vek8u>(src(x, y) + ((state.weights()[comb] * change + 128) >> 8)));
        }
}

}  // namespace vekvc::plain

#endif
