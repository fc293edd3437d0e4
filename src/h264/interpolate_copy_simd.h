// Blocks at whole-sample positions: rows of 2, 4, 8 or 16 samples copied.
#ifndef VEKVC_H264_INTERPOLATE_COPY_SIMD_H
#define VEKVC_H264_INTERPOLATE_COPY_SIMD_H

#include "core/memory.h"
#include "core/simd.h"

namespace vekvc::simd {

// n samples as one value. General registers take two short rows in the time in which a vector takes one.
template <int n>
using SampleRun =
    std::conditional_t<n == 2, std::uint16_t,
                       std::conditional_t<n == 4, std::uint32_t, std::conditional_t<n == 8, std::uint64_t, u8x16>>>;

// `rows` at a time, 2 or 4; they divide the height.
template <int W, int rows>
[[gnu::always_inline]] inline VekStatus copyColumn(const Vek8u* src, std::ptrdiff_t srcStep, Vek8u* dst,
                                                   std::ptrdiff_t dstStep, Vek32s height) {
    const auto twoRows = [&] {
        const auto row0 = load<SampleRun<W>>(src), row1 = load<SampleRun<W>>(src + srcStep);
        store(dst, row0);
        store(dst + dstStep, row1);
        src = twoRowsOn(src, srcStep), dst = twoRowsOn(dst, dstStep);
    };
    do {
        twoRows();
        if constexpr (rows == 4) twoRows();
    } while ((height -= rows) != 0);
    return vekStsOk;
}

}  // namespace vekvc::simd

#endif
