// Weighted sample prediction as H.264 8.4.2.3 defines it. All of its formulas are one, with different roundings.
#ifndef VEKVC_H264_WEIGHT_PLAIN_H
#define VEKVC_H264_WEIGHT_PLAIN_H

#include <array>

#include "core/arith.h"
#include "core/check.h"
#include "core/memory.h"

namespace vekvc {

// ((p1 * weight1 + p2 * weight2 + round) >> shift) + offset, where round is half of 2^shift, or 0 for a shift of 0.
struct Weighting {
    Vek32s weight1;
    Vek32s weight2;
    Vek32s offset;
    std::uint64_t shift;
};

// H.264 8.4.2.3.2, one prediction (8-298, 8-299) and two (8-300).
constexpr Weighting explicitOne(Vek32u logWD, Vek32s weight, Vek32s offset) { return {weight, 0, offset, logWD}; }
constexpr Weighting explicitTwo(Vek32u logWD, Vek32s weight1, Vek32s offset1, Vek32s weight2, Vek32s offset2) {
    const std::int64_t offsets = std::int64_t{offset1} + offset2 + 1;
    return {weight1, weight2, static_cast<Vek32s>(offsets >> 1), std::uint64_t{logWD} + 1};
}
// The same with the implicit mode's logWD of 5 and offsets of 0.
constexpr Weighting implicitTwo(Vek32s weight1, Vek32s weight2) { return explicitTwo(5, weight1, 0, weight2, 0); }
// Unlike explicitTwo: the shift is logWD, and the one offset is added whole.
constexpr Weighting averageTwo(Vek32s weight1, Vek32s weight2, Vek32u logWD, Vek32s offset) {
    return {weight1, weight2, offset, logWD};
}

// Sizes of blocks of motion compensation, with sides of 2, 4, 8 or 16: 4 log2(width) + log2(height), 0 for other sizes
// with even sides below 32. Both halves of the packed size, halved, make the index.
inline constexpr auto kBlockSizes = [] {
    std::array<std::uint8_t, 256> sizes = {};
    for (std::uint8_t w = 1; w <= 4; ++w)
        for (std::uint8_t h = 1; h <= 4; ++h)
            sizes[std::size_t{1} << (w - 1) | std::size_t{16} << (h - 1)] = static_cast<std::uint8_t>(4 * w + h);
    return sizes;
}();
constexpr std::uint8_t blockSizeIndex(std::uint64_t size) {
    if ((size & ~packedSize(30, 30)) != 0) return 0;
    return kBlockSizes[static_cast<std::uint8_t>(size >> 1 | size >> 29)];
}
constexpr bool isBlockSize(std::uint64_t size) { return blockSizeIndex(size) != 0; }

namespace plain {

// The block functions return vekStsOk, so that an export may end in calling one.

template <class T>
T weighted(const Weighting& w, int p1, int p2, int maxSample) {
    // A product has at most 47 bits. From a shift of 60 on, where 64 bits still hold every value, 2^shift exceeds twice
    // any sum of two products, and the result is the same for all.
    const int shift = w.shift < 60 ? static_cast<int>(w.shift) : 60;
    const std::int64_t round = shift >= 1 ? std::int64_t{1} << (shift - 1) : 0;
    const std::int64_t sum = p1 * std::int64_t{w.weight1} + p2 * std::int64_t{w.weight2} + round;
    return static_cast<T>(clip3(std::int64_t{0}, std::int64_t{maxSample}, (sum >> shift) + w.offset));
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

// Blocks of 8-bit samples, their size in one register.
template <bool hasOffset>
void weightTwo(Block<Vek8u> src1, Block<Vek8u> src2, MutableBlock<Vek8u> dst, std::uint64_t size, const Weighting& w) {
    weightTwo(src1, src2, dst, unpackedSize(size), w, 255);
}
inline void weightInPlace(MutableBlock<Vek8u> block, std::uint64_t size, const Weighting& w) {
    weightOne({block.base, static_cast<Vek32s>(block.step)}, block, unpackedSize(size), w, 255);
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
