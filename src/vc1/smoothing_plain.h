// VC-1 overlap smoothing (SMPTE 421M 8.5).
#ifndef VEKVC_VC1_SMOOTHING_PLAIN_H
#define VEKVC_VC1_SMOOTHING_PLAIN_H

#include "core/arith.h"
#include "core/memory.h"

namespace vekvc::vc1 {

// How the 16 rows of a block follow one another.
enum class Rows { frame, field };

// The row of a block that belongs to picture row y: a block of fields holds the even rows first.
constexpr int blockRow(Rows rows, int y) { return rows == Rows::frame ? y : (y >> 1) + 8 * (y & 1); }

// The halves of a luma edge that are smoothed.
constexpr bool smoothsHalf(Vek32s edgeSmoothFlag, int half) { return (edgeSmoothFlag >> 2 * half & 3) != 0; }

}  // namespace vekvc::vc1

namespace vekvc::plain {

// Four values across an edge; every operation limits its result to 16 bits.
struct Smoothed {
    Vek8u y[4];
};
inline Smoothed smooth(int x0, int x1, int x2, int x3, int r0) {
    const int r1 = 7 - r0;
    const auto sum = [](auto first, auto... rest) {
        int s = first;
        ((s = saturate16(s + rest)), ...);
        return s;
    };
    const auto times7 = [](int x) { return saturate16(7 * x); };
    const int y0 = sum(times7(x0), x3, r0);
    const int y1 = sum(saturate16(-x0), times7(x1), x2, x3, r1);
    const int y2 = sum(x0, x1, times7(x2), -x3, r0);
    const int y3 = sum(x0, times7(x3), r1);
    return {{clip255(y0 >> 3), clip255(y1 >> 3), clip255(y2 >> 3), clip255(y3 >> 3)}};
}

// Eight columns across a horizontal edge; results lie `pixel` bytes apart.
inline void smoothColumns(Block<Vek16s> upper, Block<Vek16s> bottom, Vek8u* dst, std::ptrdiff_t dstStep, int pixel) {
    for (int x = 0; x < 8; ++x) {
        const Smoothed s = smooth(upper(x, 0), upper(x, 1), bottom(x, 0), bottom(x, 1), 4 - (x & 1));
        for (int i = 0; i < 4; ++i) dst[(i - 2) * dstStep + x * pixel] = s.y[i];
    }
}
// Rows `first` to `first` + 7 of the picture across a vertical edge.
inline void smoothRows(Block<Vek16s> left, vc1::Rows leftRows, Block<Vek16s> right, vc1::Rows rightRows, Vek8u* dst,
                       std::ptrdiff_t dstStep, int pixel, int first) {
    for (int y = first; y < first + 8; ++y) {
        const int l = vc1::blockRow(leftRows, y), r = vc1::blockRow(rightRows, y);
        const Smoothed s = smooth(left(0, l), left(1, l), right(0, r), right(1, r), 4 - (y & 1));
        for (int i = 0; i < 4; ++i) dst[y * dstStep + (i - 2) * pixel] = s.y[i];
    }
}

inline void smoothHorizontalEdge(Block<Vek16s> upper, Block<Vek16s> bottom, Vek8u* dst, std::ptrdiff_t dstStep) {
    smoothColumns(upper, bottom, dst, dstStep, 1);
}
inline void smoothVerticalEdge(Block<Vek16s> left, vc1::Rows leftRows, Block<Vek16s> right, vc1::Rows rightRows,
                               Vek8u* dst, std::ptrdiff_t dstStep, int first) {
    smoothRows(left, leftRows, right, rightRows, dst, dstStep, 1, first);
}

// Two planes of values into interleaved chroma.
struct ValuePlanes {
    Block<Vek16s> u, v;
};
inline void smoothHorizontalEdge(ValuePlanes upper, ValuePlanes bottom, Vek8u* dst, std::ptrdiff_t dstStep) {
    smoothColumns(upper.u, bottom.u, dst, dstStep, 2);
    smoothColumns(upper.v, bottom.v, dst + 1, dstStep, 2);
}
inline void smoothVerticalEdge(ValuePlanes left, ValuePlanes right, Vek8u* dst, std::ptrdiff_t dstStep) {
    smoothRows(left.u, vc1::Rows::frame, right.u, vc1::Rows::frame, dst, dstStep, 2, 0);
    smoothRows(left.v, vc1::Rows::frame, right.v, vc1::Rows::frame, dst + 1, dstStep, 2, 0);
}

}  // namespace vekvc::plain

#endif
