// Block prediction: copies, averages, motion compensation with residual. The definition.
#ifndef VEKVC_COMMON_PREDICT_PLAIN_H
#define VEKVC_COMMON_PREDICT_PLAIN_H

#include "common/halfpel.h"
#include "core/arith.h"
#include "core/memory.h"

namespace vekvc::plain {

// The sample at (x, y) of a full- or half-sample position; `next` is the distance to the horizontal neighbour.
template <class T>
int samplePosition(Block<T> r, Half half, int rounding, int next, int x, int y) {
    switch (half) {
        case Half::horizontal:
            return (r(x, y) + r(x + next, y) + 1 - rounding) >> 1;
        case Half::vertical:
            return (r(x, y) + r(x, y + 1) + 1 - rounding) >> 1;
        case Half::both:
            return (r(x, y) + r(x + next, y) + r(x, y + 1) + r(x + next, y + 1) + 2 - rounding) >> 2;
        default:
            return r(x, y);
    }
}

template <int next = 1>
int samplePosition(const Reference& ref, int rounding, int x, int y) {
    return samplePosition(Block<Vek8u>(ref.pixels, ref.step), ref.half, rounding, next, x, y);
}

template <int W, int H>
void copyBlock(const Reference& src, int rounding, Vek8u* pDst, Vek32s dstStep) {
    const MutableBlock<Vek8u> dst(pDst, dstStep);
    for (int y = 0; y < H; ++y)
        for (int x = 0; x < W; ++x) dst.put(x, y, static_cast<Vek8u>(samplePosition(src, rounding, x, y)));
}

// dst = (a + p + 1) >> 1, p being src at its position.
template <int W, int H>
void averageBlock(const Reference& src, int rounding, const Vek8u* pA, Vek32s aStep, Vek8u* pDst, Vek32s dstStep) {
    const Block<Vek8u> a(pA, aStep);
    const MutableBlock<Vek8u> dst(pDst, dstStep);
    for (int y = 0; y < H; ++y)
        for (int x = 0; x < W; ++x)
            dst.put(x, y, static_cast<Vek8u>((a(x, y) + samplePosition(src, rounding, x, y) + 1) >> 1));
}

// A block of residuals, and one whose even and odd columns lie in two planes.
struct Residual {
    const Vek16s* values;
    Vek32s step;
    int operator()(int x, int y) const { return Block<Vek16s>(values, step)(x, y); }
};
struct ResidualPlanes {
    const Vek16s *u, *v;
    Vek32s step;
    int operator()(int x, int y) const { return Block<Vek16s>(x % 2 == 0 ? u : v, step)(x / 2, y); }
};

// dst = clip255(p + residual); `next` is 2 for interleaved chroma.
template <int W, int H, int next, class ResidualBlock>
void predictAndAdd(const Reference& ref, int rounding, ResidualBlock residual, Vek8u* pDst, Vek32s dstStep) {
    const MutableBlock<Vek8u> dst(pDst, dstStep);
    for (int y = 0; y < H; ++y)
        for (int x = 0; x < W; ++x)
            dst.put(x, y, clip255(saturate16(samplePosition<next>(ref, rounding, x, y) + residual(x, y))));
}

// dst = clip255(((f + b + 1) >> 1) + residual).
template <int W, int H, int next, class ResidualBlock>
void predictAndAdd(const Reference& f, const Reference& b, int rounding, ResidualBlock residual, Vek8u* pDst,
                   Vek32s dstStep) {
    const MutableBlock<Vek8u> dst(pDst, dstStep);
    for (int y = 0; y < H; ++y)
        for (int x = 0; x < W; ++x) {
            const int p = (samplePosition<next>(f, rounding, x, y) + samplePosition<next>(b, rounding, x, y) + 1) >> 1;
            dst.put(x, y, clip255(saturate16(p + residual(x, y))));
        }
}

// The samples are their own prediction.
inline void addResidual8x8(const Residual& residual, Vek8u* pSrcDst, Vek32s srcDstStep) {
    predictAndAdd<8, 8, 1>({pSrcDst, srcDstStep, Half::none}, 0, residual, pSrcDst, srcDstStep);
}

// Unlike the residual, the constant is added with wrap-around at 16 bits.
inline void addConstant8x8(Vek16s value, Vek8u* pSrcDst, Vek32s srcDstStep) {
    const MutableBlock<Vek8u> dst(pSrcDst, srcDstStep);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) dst.put(x, y, clip255(wrap16(dst(x, y) + value)));
}

}  // namespace vekvc::plain

#endif
