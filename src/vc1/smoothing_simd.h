// Fast forms of VC-1 overlap smoothing: eight places along an edge at once.
#ifndef VEKVC_VC1_SMOOTHING_SIMD_H
#define VEKVC_VC1_SMOOTHING_SIMD_H

#include "core/simd.h"
#include "vc1/smoothing_plain.h"

namespace vekvc::simd {

using plain::ValuePlanes;

// 7 x limited to 16 bits: sums of values of one sign stay at the limit once they reach it.
[[gnu::always_inline]] inline i16x8 times7(i16x8 x) {
    const i16x8 x2 = addSat(x, x), x3 = addSat(x2, x);
    return addSat(addSat(x3, x3), x);
}

// The values across an edge in eight places, which become the pixels before they are clipped; r0 alternates.
struct Across {
    i16x8 x[4];

    [[gnu::always_inline]] inline void smooth() {
        const i16x8 r0 = as<i16x8>(constant<i32x4, 0x00030004>()), r1 = as<i16x8>(constant<i32x4, 0x00040003>());
        const i16x8 y0 = addSat(addSat(times7(x[0]), x[3]), r0);
        const i16x8 y1 = addSat(addSat(addSat(addSat(subSat(zero<i16x8>(), x[0]), times7(x[1])), x[2]), x[3]), r1);
        const i16x8 y2 = addSat(subSat(addSat(addSat(x[0], x[1]), times7(x[2])), x[3]), r0);
        const i16x8 y3 = addSat(addSat(x[0], times7(x[3])), r1);
        x[0] = y0 >> 3;
        x[1] = y1 >> 3;
        x[2] = y2 >> 3;
        x[3] = y3 >> 3;
    }
};

[[gnu::always_inline]] inline Across smoothedColumns(Block<Vek16s> upper, Block<Vek16s> bottom) {
    Across a = {{load<i16x8>(upper.at(0, 0)), load<i16x8>(upper.at(0, 1)), load<i16x8>(bottom.at(0, 0)),
                 load<i16x8>(bottom.at(0, 1))}};
    a.smooth();
    return a;
}

[[gnu::always_inline]] inline void smoothHorizontalEdge(Block<Vek16s> upper, Block<Vek16s> bottom, Vek8u* dst,
                                                        std::ptrdiff_t dstStep) {
    const Across a = smoothedColumns(upper, bottom);
    storePair8(dst - 2 * dstStep, dst - dstStep, narrowU8(a.x[0], a.x[1]));
    storePair8(dst, dst + dstStep, narrowU8(a.x[2], a.x[3]));
}
[[gnu::always_inline]] inline void smoothHorizontalEdge(ValuePlanes upper, ValuePlanes bottom, Vek8u* dst,
                                                        std::ptrdiff_t dstStep) {
    const Across u = smoothedColumns(upper.u, bottom.u), v = smoothedColumns(upper.v, bottom.v);
    for (int i = 0; i < 4; i += 2) {
        const u8x16 U = narrowU8(u.x[i], u.x[i + 1]), V = narrowU8(v.x[i], v.x[i + 1]);
        store(dst + (i - 2) * dstStep, interleaveLow(U, V));
        store(dst + (i - 1) * dstStep, interleaveHigh(U, V));
    }
}

// Two values each of the block's rows that belong to picture rows y and y + 1.
template <vc1::Rows rows>
struct RowReader {
    const Vek16s* p;
    std::ptrdiff_t pair, odd;  // bytes from one pair of picture rows to the next, and from its even row to its odd row

    RowReader(Block<Vek16s> b, int first)
        : p(b.at(0, rows == vc1::Rows::frame ? first : first / 2)),
          pair(rows == vc1::Rows::frame ? 2 * b.step : b.step),
          odd(rows == vc1::Rows::frame ? b.step : 8 * b.step) {}
    [[gnu::always_inline]] inline const Vek16s* at(int i) const { return offsetBytes(p, i / 2 * pair + i % 2 * odd); }
};

// The smoothed pixels of eight rows, four bytes each: rows 0 to 3 and rows 4 to 7.
struct EightRows {
    u8x16 top, bottom;
};
template <vc1::Rows leftRows, vc1::Rows rightRows>
[[gnu::always_inline]] inline EightRows smoothedRows(Block<Vek16s> left, Block<Vek16s> right, int first) {
    const RowReader<leftRows> l(left, first);
    const RowReader<rightRows> r(right, first);
    // Two values of four rows in 32-bit lanes, the first one low.
    const auto fourRows = [](const auto& reader, int from) {
        return loadLanes32<i32x4>([&](int i) { return reader.at(from + i); });
    };
    const auto firsts = [](i32x4 top, i32x4 bottom) { return narrowWrap(top, bottom); };
    const auto seconds = [](i32x4 top, i32x4 bottom) { return narrowI16(top >> 16, bottom >> 16); };
    const i32x4 l0 = fourRows(l, 0), l4 = fourRows(l, 4), r0 = fourRows(r, 0), r4 = fourRows(r, 4);
    Across a = {{firsts(l0, l4), seconds(l0, l4), firsts(r0, r4), seconds(r0, r4)}};
    a.smooth();
    const u8x16 y02 = narrowU8(a.x[0], a.x[2]), y13 = narrowU8(a.x[1], a.x[3]);
    const u16x8 y01 = as<u16x8>(interleaveLow(y02, y13)), y23 = as<u16x8>(interleaveHigh(y02, y13));
    return {as<u8x16>(interleaveLow(y01, y23)), as<u8x16>(interleaveHigh(y01, y23))};
}

template <vc1::Rows leftRows, vc1::Rows rightRows>
[[gnu::always_inline]] inline void smoothVerticalEdge(Block<Vek16s> left, Block<Vek16s> right, Vek8u* dst,
                                                      std::ptrdiff_t dstStep, int first) {
    const EightRows pixels = smoothedRows<leftRows, rightRows>(left, right, first);
    Vek8u* p = dst - 2 + first * dstStep;
    storeLanes32([=](int i) { return p + i * dstStep; }, as<u32x4>(pixels.top));
    storeLanes32([=](int i) { return p + (i + 4) * dstStep; }, as<u32x4>(pixels.bottom));
}
[[gnu::always_inline]] inline void smoothVerticalEdge(Block<Vek16s> left, vc1::Rows leftRows, Block<Vek16s> right,
                                                      vc1::Rows rightRows, Vek8u* dst, std::ptrdiff_t dstStep,
                                                      int first) {
    using vc1::Rows;
    if (leftRows == Rows::frame && rightRows == Rows::frame)
        smoothVerticalEdge<Rows::frame, Rows::frame>(left, right, dst, dstStep, first);
    else if (leftRows == Rows::frame)
        smoothVerticalEdge<Rows::frame, Rows::field>(left, right, dst, dstStep, first);
    else if (rightRows == Rows::frame)
        smoothVerticalEdge<Rows::field, Rows::frame>(left, right, dst, dstStep, first);
    else
        smoothVerticalEdge<Rows::field, Rows::field>(left, right, dst, dstStep, first);
}
[[gnu::always_inline]] inline void smoothVerticalEdge(ValuePlanes left, ValuePlanes right, Vek8u* dst,
                                                      std::ptrdiff_t dstStep) {
    using vc1::Rows;
    const EightRows u = smoothedRows<Rows::frame, Rows::frame>(left.u, right.u, 0);
    const EightRows v = smoothedRows<Rows::frame, Rows::frame>(left.v, right.v, 0);
    Vek8u* p = dst - 4;
    storePair8(p, p + dstStep, interleaveLow(u.top, v.top));
    storePair8(p + 2 * dstStep, p + 3 * dstStep, interleaveHigh(u.top, v.top));
    storePair8(p + 4 * dstStep, p + 5 * dstStep, interleaveLow(u.bottom, v.bottom));
    storePair8(p + 6 * dstStep, p + 7 * dstStep, interleaveHigh(u.bottom, v.bottom));
}

}  // namespace vekvc::simd

#endif
