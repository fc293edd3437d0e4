// Fast form of the loop filter of H.261: a row in 16-bit lanes.
#ifndef VEKVC_MPEG4_LOOP_FILTER_SIMD_H
#define VEKVC_MPEG4_LOOP_FILTER_SIMD_H

#include "core/simd.h"
#include "mpeg4/loop_filter_plain.h"

namespace vekvc::simd {

// 16-bit lanes of a row that is filtered along columns; the outer two are not filtered along the row.
[[gnu::always_inline]] inline i16x8 filterAlongRow(i16x8 t) {
    const i16x8 inner = bytesLeft<2>(t) + bytesRight<2>(t) + t + t;
    return (blend16<0x81>(inner, t << 2) + constant<i16x8, 8>()) >> 4;
}

// Each row is read before the one above it is written: both may be the same block.
[[gnu::always_inline]] inline VekStatus filterLoop8x8(const Vek8u* src, std::ptrdiff_t srcStep, Vek8u* dst,
                                                      std::ptrdiff_t dstStep) {
    const auto row = [&] {
        const i16x8 v = widenLow(loadBytes<u8x16, 8>(src));
        src += srcStep;
        return v;
    };
    i16x8 above = row(), here = row();
    i16x8 waiting = filterAlongRow(above << 2);
#pragma GCC unroll 3
    for (int y = 1; y < 7; y += 2) {
        const i16x8 below = row(), last = row();
        storePair8(dst, dst + dstStep, narrowU8(waiting, filterAlongRow(above + here + here + below)));
        waiting = filterAlongRow(here + below + below + last);
        dst += 2 * dstStep;
        above = below;
        here = last;
    }
    storePair8(dst, dst + dstStep, narrowU8(waiting, filterAlongRow(here << 2)));
    return vekStsOk;
}

}  // namespace vekvc::simd

#endif
