// Weighted sample prediction as H.264 8.4.2.3 defines it. All of its formulas are one, with different roundings.
#ifndef VEKVC_H264_WEIGHT_PLAIN_H
#define VEKVC_H264_WEIGHT_PLAIN_H

#include "core/arith.h"
#include "core/memory.h"

namespace vekvc {

// ((p1 * weight1 + p2 * weight2 + round) >> shift) + offset, where round is half of 2^shift, or 0 for a shift of 0.
struct Weighting {
    Vek32s weight1;
    Vek32s weight2;
    Vek32s offset;
    int shift;  // at most 60, so that 64 bits hold every value: a product has at most 47 bits
};

// From a shift of 59 on, 2^shift exceeds twice any sum of two products, and the result is the same for all.
constexpr int cappedLog(Vek32u n) { return n < 59 ? static_cast<int>(n) : 59; }

// H.264 8.4.2.3.2, one prediction (8-298, 8-299) and two (8-300).
constexpr Weighting explicitOne(Vek32u logWD, Vek32s weight, Vek32s offset) {
    return {weight, 0, offset, cappedLog(logWD)};
}
constexpr Weighting explicitTwo(Vek32u logWD, Vek32s weight1, Vek32s offset1, Vek32s weight2, Vek32s offset2) {
    const std::int64_t offsets = std::int64_t{offset1} + offset2 + 1;
    return {weight1, weight2, static_cast<Vek32s>(offsets >> 1), cappedLog(logWD) + 1};
}
// The same with the implicit mode's logWD of 5 and offsets of 0.
constexpr Weighting implicitTwo(Vek32s weight1, Vek32s weight2) { return explicitTwo(5, weight1, 0, weight2, 0); }
// Unlike explicitTwo: the shift is logWD, and the one offset is added whole.
constexpr Weighting averageTwo(Vek32s weight1, Vek32s weight2, Vek32u logWD, Vek32s offset) {
    return {weight1, weight2, offset, cappedLog(logWD)};
}

namespace plain {

template <class T>
T weighted(const Weighting& w, int p1, int p2, int maxSample) {
    const std::int64_t round = w.shift >= 1 ? std::int64_t{1} << (w.shift - 1) : 0;
    const std::int64_t sum = p1 * std::int64_t{w.weight1} + p2 * std::int64_t{w.weight2} + round;
    return static_cast<T>(clip3(std::int64_t{0}, std::int64_t{maxSample}, (sum >> w.shift) + w.offset));
}

template <class T>
void weightOne(Block<T> src, MutableBlock<T> dst, VekiSize size, const Weighting& w, int maxSample) {
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) dst.put(x, y, weighted<T>(w, src(x, y), 0, maxSample));
}

template <class T>
void weightTwo(Block<T> src1, Block<T> src2, MutableBlock<T> dst, VekiSize size, const Weighting& w, int maxSample) {
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) dst.put(x, y, weighted<T>(w, src1(x, y), src2(x, y), maxSample));
}

// H.264 8.4.2.3.1, two predictions.
template <class T>
void averageBlocks(Block<T> src1, Block<T> src2, MutableBlock<T> dst, VekiSize size) {
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) dst.put(x, y, static_cast<T>((src1(x, y) + src2(x, y) + 1) >> 1));
}

}  // namespace plain
}  // namespace vekvc

#endif
