// Fast form of VC-1 range mapping.
#ifndef VEKVC_VC1_RANGE_MAPPING_SIMD_H
#define VEKVC_VC1_RANGE_MAPPING_SIMD_H

#include "core/simd.h"
#include "vc1/range_mapping_plain.h"

namespace vekvc::simd {

// (((x - 128) m + 4) >> 3) + 128 = (x m + 1028 - 128 m) >> 3 in 16 bits: x m is at most 255 * 16.
struct RangeMap {
    i16x8 m, offset;

    explicit RangeMap(Vek32s rangeMapValue)
        : m(splat<i16x8>(rangeMapValue + 9)), offset(splat<i16x8>(1028 - 128 * (rangeMapValue + 9))) {}
    i16x8 of(i16x8 x) const { return (x * m + offset) >> 3; }
    u8x16 of(u8x16 x) const { return narrowU8(of(widenLow(x)), of(widenHigh(x))); }
};

inline void mapRange(Block<Vek8u> src, MutableBlock<Vek8u> dst, VekiSize roiSize, Vek32s rangeMapValue) {
    const RangeMap map(rangeMapValue);
    for (int y = 0; y < roiSize.height; ++y) {
        const Vek8u* from = src.at(0, y);
        Vek8u* to = dst.at(0, y);
        int x = 0;
        for (; x <= roiSize.width - 16; x += 16) store(to + x, map.of(load<u8x16>(from + x)));
        if (x <= roiSize.width - 8) {
            storeBytes<8>(to + x, map.of(loadBytes<u8x16, 8>(from + x)));
            x += 8;
        }
        for (; x < roiSize.width; ++x) to[x] = plain::mapRange(from[x], rangeMapValue);
    }
}

}  // namespace vekvc::simd

#endif
