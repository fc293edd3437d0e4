// Fast form of the motion-adaptive deinterlacer.
#ifndef VEKVC_PROCESSING_DEINTERLACE_MOTION_SIMD_H
#define VEKVC_PROCESSING_DEINTERLACE_MOTION_SIMD_H

#include "processing/deinterlace_edge_simd.h"

namespace vekvc::simd {

// The rows around missing row y that the motion-adaptive deinterlacer reads.
struct MotionRows {
    const Vek8u *a[3], *b[3];                                  // of K0, K1, K2
    const Vek8u *a3, *b3;                                      // of K1
    const Vek8u *before, *after;                               // P, N
    const Vek8u *upBefore, *upAfter, *downBefore, *downAfter;  // two rows away

    MotionRows(const MotionFrames& frames, Vek32s y, Vek32s h) {
        const NeighbourRows rows(y, h);
        const Block<Vek8u>* kept[] = {&frames.previous, &frames.current, &frames.next};
        for (int i = 0; i < 3; ++i) {
            a[i] = kept[i]->at(0, rows.above);
            b[i] = kept[i]->at(0, rows.below);
        }
        a3 = frames.current.at(0, rows.above3);
        b3 = frames.current.at(0, rows.below3);
        const Vek32s up = y >= 2 ? y - 2 : y, down = y < h - 2 ? y + 2 : y;
        before = frames.before().at(0, y);
        after = frames.after().at(0, y);
        upBefore = frames.before().at(0, up);
        upAfter = frames.after().at(0, up);
        downBefore = frames.before().at(0, down);
        downAfter = frames.after().at(0, down);
    }
};

// q of the columns from x on.
template <class Access>
[[gnu::always_inline]] inline RowU8 columnMotion(const MotionRows& rows, Vek32s x, Access samples) {
    const RowU8 a = samples.load(rows.a[1] + x), b = samples.load(rows.b[1] + x);
    const auto kept = [&](int i) __attribute__((always_inline)) {
        return averageDown(absDiff(samples.load(rows.a[i] + x), a), absDiff(samples.load(rows.b[i] + x), b));
    };
    const RowU8 missing = absDiff(samples.load(rows.before + x), samples.load(rows.after + x));
    return max(max(shiftedRight<1>(missing), kept(0)), kept(2));
}

// The row's columns from x on; q begins at column x, with a readable neighbour on both sides. Sums of motion that pass
// 255 stay there: the result's limits do not notice.
template <class Access>
[[gnu::always_inline]] inline RowU8 motionAdaptive(const MotionRows& rows, const EdgePredictor& predictor,
                                                   const Vek8u* q, Vek32s x, Vek32s first, Access samples) {
    const RowU8 p = samples.load(rows.before + x), n = samples.load(rows.after + x);
    const RowU8 a = samples.load(rows.a[1] + x), b = samples.load(rows.b[1] + x);
    const RowU8 woven = averageDown(p, n);
    const RowU8 comb = max(subSat(woven, max(a, b)), subSat(min(a, b), woven));
    RowU8 motion = max(load<RowU8>(q), averageDown(load<RowU8>(q - 1), load<RowU8>(q + 1)));
    motion = max(motion, min(comb, absDiff(p, n)));
    motion = addSat(motion, subSat(motion, splat<RowU8>(8)));

    const auto detail = [&](RowU8 s, const Vek8u* up, const Vek8u* down) __attribute__((always_inline)) {
        return weighted<1, -1>(s, samples.load(up + x)) + weighted<1, -1>(s, samples.load(down + x));
    };
    const WidePair f0 = detail(p, rows.upBefore, rows.downBefore), f1 = detail(n, rows.upAfter, rows.downAfter);
    const RowI16 none = zero<RowI16>();
    const auto rise = [&](RowI16 f, RowI16 g) __attribute__((always_inline)) { return max(min(f, g), none) >> 3; };
    const auto fall = [&](RowI16 f, RowI16 g) __attribute__((always_inline)) {
        return max(none - max(f, g), none) >> 3;
    };
    const RowU8 up = narrowU8(rise(f0.low, f1.low), rise(f0.high, f1.high));
    const RowU8 down = narrowU8(fall(f0.low, f1.low), fall(f0.high, f1.high));
    const RowU8 predicted = predictor.predict(x - first, samples.load(rows.a3 + x), samples.load(rows.b3 + x));
    const RowU8 interpolated = subSat(addSat(predicted, up), down);  // one of the two is 0

    return max(min(interpolated, addSat(woven, motion)), subSat(woven, motion));
}

inline void deinterlaceMotionAdaptive(const MotionFrames& frames, MutableBlock<Vek8u> dst, VekiSize roiSize,
                                      Vek32s field) {
    constexpr Vek32s kTile = EdgePredictor::kColumns, kMargin = kRowLanes;
    const Vek32s w = roiSize.width;
    EdgePredictor predictor(kMotionEdgeThreshold);
    rebuildField(frames.current, dst, roiSize, field, [&](Vek32s y) {
        const MotionRows rows(frames, y, roiSize.height);
        forTiles(w, kTile, [&](Vek32s first, Vek32s n) {
            predictor.prepare(rows.a[1], rows.b[1], w, first, n);
            // The motion of the tile's columns and of one more on both sides; outside the row that of the border.
            Vek8u motion[kMargin + kTile + 2 * kRowLanes];
            Vek8u* q = motion + kMargin;
            const Vek32s from = first > 0 ? first - 1 : 0, to = n < w - first ? first + n + 1 : w;
            forVectors(from, to,
                       [&](Vek32s x, auto samples) { store(q + (x - first), columnMotion(rows, x, samples)); });
            if (first == 0) q[-1] = q[0];
            if (n == w - first) q[n] = q[n - 1];
            forVectors(first, first + n, [&](Vek32s x, auto samples) {
                samples.store(dst.at(x, y), motionAdaptive(rows, predictor, q + (x - first), x, first, samples));
            });
        });
    });
}

}  // namespace vekvc::simd

#endif
