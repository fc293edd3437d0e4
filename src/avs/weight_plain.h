// Weighted prediction and the average of two predictions as GB/T 20090.2 clause 9 defines them.
#ifndef VEKVC_AVS_WEIGHT_PLAIN_H
#define VEKVC_AVS_WEIGHT_PLAIN_H

#include "core/arith.h"
#include "core/check.h"
#include "core/memory.h"
#include "h264/weight_plain.h"

namespace vekvc {

namespace avs {

struct Weight {
    Vek32s scale, shift;  // 0 to 255; -128 to 127
};

// Do scale and shift fit a signed byte?
constexpr bool isSmall(const Weight& w) {
    return (static_cast<Vek32u>(w.scale) | (static_cast<Vek32u>(w.shift) + 128) >> 1) < 128;
}

}  // namespace avs

namespace plain {

inline int weightedAvs(int sample, const avs::Weight& w) { return clip255(((sample * w.scale + 16) >> 5) + w.shift); }

inline void weightAvsOne(Block<Vek8u> src, MutableBlock<Vek8u> dst, VekiSize size, const avs::Weight& w) {
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) dst.put(x, y, static_cast<Vek8u>(weightedAvs(src(x, y), w)));
}
inline void weightAvsInPlace(MutableBlock<Vek8u> block, std::uint64_t size, const avs::Weight& w) {
    weightAvsOne({block.base, static_cast<Vek32s>(block.step)}, block, unpackedSize(size), w);
}
inline void weightAvsTwo(Block<Vek8u> src1, Block<Vek8u> src2, MutableBlock<Vek8u> dst, VekiSize size,
                         const avs::Weight& w1, const avs::Weight& w2) {
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x)
            dst.put(x, y, static_cast<Vek8u>((weightedAvs(src1(x, y), w1) + weightedAvs(src2(x, y), w2) + 1) >> 1));
}
inline void averageAvs(Block<Vek8u> src1, Block<Vek8u> src2, MutableBlock<Vek8u> dst, VekiSize size) {
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) dst.put(x, y, static_cast<Vek8u>((src1(x, y) + src2(x, y) + 1) >> 1));
}

}  // namespace plain
}  // namespace vekvc

#endif
