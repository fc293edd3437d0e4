// Difference blocks: a block less its prediction. The definition.
#ifndef VEKVC_COMMON_DIFFERENCE_PLAIN_H
#define VEKVC_COMMON_DIFFERENCE_PLAIN_H

#include "common/predict_plain.h"

namespace vekvc::plain {

// Where a difference goes: one block, or two planes for the even and odd columns of interleaved chroma.
struct Difference {
    Vek16s* values;
    Vek32s step;
    void put(int x, int y, int value) const {
        MutableBlock<Vek16s>(values, step).put(x, y, static_cast<Vek16s>(value));
    }
};
struct DifferencePlanes {
    Vek16s *u, *v;
    Vek32s step;
    void put(int x, int y, int value) const {
        MutableBlock<Vek16s>(x % 2 == 0 ? u : v, step).put(x / 2, y, static_cast<Vek16s>(value));
    }
};

// dst = s - p; `next` is the distance to the horizontal neighbour, 2 for interleaved chroma.
template <int W, int H, int next, class Destination>
void subtractPrediction(Block<Vek8u> s, const Reference& ref, int rounding, Destination dst) {
    for (int y = 0; y < H; ++y)
        for (int x = 0; x < W; ++x) dst.put(x, y, s(x, y) - samplePosition<next>(ref, rounding, x, y));
}

// dst = s - ((f + b + 1) >> 1).
template <int W, int H, int next, class Destination>
void subtractPrediction(Block<Vek8u> s, const Reference& f, const Reference& b, int rounding, Destination dst) {
    for (int y = 0; y < H; ++y)
        for (int x = 0; x < W; ++x) {
            const int p = (samplePosition<next>(f, rounding, x, y) + samplePosition<next>(b, rounding, x, y) + 1) >> 1;
            dst.put(x, y, s(x, y) - p);
        }
}

// Full samples of 8 or 16 bits, limited to the range of the difference.
template <int W, int H, class T>
void subtractBlock(Block<T> s, Block<T> ref, Difference dst) {
    for (int y = 0; y < H; ++y)
        for (int x = 0; x < W; ++x) dst.put(x, y, saturate16(s(x, y) - ref(x, y)));
}

}  // namespace vekvc::plain

#endif
