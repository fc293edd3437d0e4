// Weighted sample prediction as H.264 8.4.2.3 defines it. All of its formulas are one, with different roundings.
#ifndef VEKVC_H264_WEIGHT_PLAIN_H
#define VEKVC_H264_WEIGHT_PLAIN_H

#include "core/arith.h"
#include "core/memory.h"

namespace vekvc {

// ((p1 * weight1 + p2 * weight2 + round) >> shift) + offset. 64 bits hold every value for every argument: a product has
// at most 47 bits, round at most 60.
struct Weighting {
    std::int64_t weight1;
    std::int64_t weight2;
    std::int64_t round;
    int shift;
    std::int64_t offset;
};

// 2^n. From n = 59 on it exceeds twice any sum of two products, so that the result of a shift is the same for all of
// them.
constexpr int cappedLog(Vek32u n) { return n < 59 ? static_cast<int>(n) : 59; }
constexpr std::int64_t powerOf2(int n) { return std::int64_t{1} << n; }

// H.264 8.4.2.3.2, one prediction (8-298, 8-299) and two (8-300).
constexpr Weighting explicitOne(Vek32u logWD, Vek32s weight, Vek32s offset) {
    const int n = cappedLog(logWD);
    return {weight, 0, n >= 1 ? powerOf2(n - 1) : 0, n, offset};
}
constexpr Weighting explicitTwo(Vek32u logWD, Vek32s weight1, Vek32s offset1, Vek32s weight2, Vek32s offset2) {
    const int n = cappedLog(logWD);
    return {weight1, weight2, powerOf2(n), n + 1, (std::int64_t{offset1} + offset2 + 1) >> 1};
}
// The same with the implicit mode's logWD of 5 and offsets of 0.
constexpr Weighting implicitTwo(Vek32s weight1, Vek32s weight2) { return explicitTwo(5, weight1, 0, weight2, 0); }
// Unlike explicitTwo: the shift is logWD, and the one offset is added whole.
constexpr Weighting averageTwo(Vek32s weight1, Vek32s weight2, Vek32u logWD, Vek32s offset) {
    const int n = cappedLog(logWD);
    return {weight1, weight2, n >= 1 ? powerOf2(n - 1) : 0, n, offset};
}

namespace plain {

template <class T>
T weighted(const Weighting& w, int p1, int p2, int maxSample) {
    const std::int64_t sum = p1 * w.weight1 + p2 * w.weight2 + w.round;
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
