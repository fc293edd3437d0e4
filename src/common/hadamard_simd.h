// Stages of the Hadamard transform on vectors of 16-bit lanes, and sums of the magnitudes of its results.
//
// A transform of 2^n values is n stages, in any order: one for each bit of a value's place, in which each value and its
// neighbour at the other value of this bit become their sum and their difference. Where the order and the signs of the
// results do not matter, a stage may also exchange the bit that it works on with that of the register.
#ifndef VEKVC_COMMON_HADAMARD_SIMD_H
#define VEKVC_COMMON_HADAMARD_SIMD_H

#include "core/memory.h"
#include "core/simd.h"

namespace vekvc::simd {

// The stage over two registers.
template <class V>
[[gnu::always_inline]] inline void butterfly(V& a, V& b) {
    const V sum = a + b;
    b = a - b;
    a = sum;
}
// The stages over registers that hold rows: all of them.
template <class V>
[[gnu::always_inline]] inline void butterflyRows(V& a, V& b, V& c, V& d) {
    butterfly(a, b);
    butterfly(c, d);
    butterfly(a, c);
    butterfly(b, d);
}
template <class V>
[[gnu::always_inline]] inline void butterflyRows(V& a, V& b, V& c, V& d, V& e, V& f, V& g, V& h) {
    butterflyRows(a, b, c, d);
    butterflyRows(e, f, g, h);
    butterfly(a, e);
    butterfly(b, f);
    butterfly(c, g);
    butterfly(d, h);
}
// The stages over the 64-bit halves, the pairs and the neighbours of the lanes (of each 128 bits).
template <class V>
[[gnu::always_inline]] inline void butterflyHalves(V& a, V& b) {
    const V low = joinLow(a, b), high = joinHigh(a, b);
    a = low + high;
    b = low - high;
}
template <class V>
[[gnu::always_inline]] inline void butterflyPairs(V& a, V& b) {
    const V even = evenLanes32(a, b), odd = oddLanes32(a, b);
    a = even + odd;
    b = even - odd;
}
template <class V>
[[gnu::always_inline]] inline void butterflyNeighbours(V& a, V& b) {
    const V mixed = blend16<0xAA>(a, b), other = swapNeighbours16(blend16<0xAA>(b, a));
    a = mixed + other;
    b = mixed - other;
}
// The last stage is that over the neighbours, and of its results only half the sum of the magnitudes is wanted:
// |x + y| + |x - y| = 2 max(|x|, |y|).
template <class V>
[[gnu::always_inline]] inline V halfSumOfNeighbours(V a, V b) {
    const V x = abs(a), y = abs(b);
    return max(blend16<0xAA>(x, y), swapNeighbours16(blend16<0xAA>(y, x)));
}

#if VEKVC_VECTOR256
// The stage over the 128-bit halves.
[[gnu::always_inline]] inline void butterflyAcross(i16x16& a, i16x16& b) {
    const i16x16 mixed = lowThenHigh(a, b), other = highThenLow(a, b);
    a = mixed + other;
    b = mixed - other;
}
#endif

// ---- the rows of an 8-bit block
//
// The first stage comes with the widening: of a row of 8 samples, the low half of a vector receives the sums of
// neighbours and the high half their differences; with 256 bits a row of 16 fills a vector in the same way, or two rows
// of 8 do. Lanes then are numbered by bits 1 and 2 (and 3) of the columns.

[[gnu::always_inline]] inline i16x8 firstStageOf8(const Vek8u* p) {
    return mulAddPairs(loadTwice8<u8x16>(p), lanes<i8x16>(1, 1, 1, 1, 1, 1, 1, 1, 1, -1, 1, -1, 1, -1, 1, -1));
}
#if VEKVC_VECTOR256
[[gnu::always_inline]] inline i16x16 firstStageOf8(const Vek8u* low, const Vek8u* high) {
    const i8x32 signs = lanes<i8x32>(1, 1, 1, 1, 1, 1, 1, 1, 1, -1, 1, -1, 1, -1, 1, -1,  //
                                     1, 1, 1, 1, 1, 1, 1, 1, 1, -1, 1, -1, 1, -1, 1, -1);
    return mulAddPairs(loadPairTwice8<u8x32>(low, high), signs);
}
// Of 8 rows of 8 samples, rows y and y + 4 in one vector.
class EightRows {
  public:
    explicit EightRows(Block<Vek8u> b) : row_(b.base, b.step) {}
    [[gnu::always_inline]] i16x16 firstStage(int y) const { return firstStageOf8(row_(y), row_(y + 4)); }

  private:
    EightRowAddresses<const Vek8u> row_;
};
[[gnu::always_inline]] inline i16x16 firstStageOf16(const Vek8u* p) {
    const i8x32 signs = lanes<i8x32>(1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1,  //
                                     1, -1, 1, -1, 1, -1, 1, -1, 1, -1, 1, -1, 1, -1, 1, -1);
    return mulAddPairs(loadTwice16<u8x32>(p), signs);
}
#endif

// Rows of a block, or of the difference of two, behind the first stage: row(y) is one register.

// Four registers that hold the rows of 4x4 blocks: half the sum of all |C|, in lanes of at most 2 * 8 * 255.
template <class Row>
[[gnu::always_inline]] inline auto halfSumOf4Rows(Row row) {
    auto a = row(0), b = row(1), c = row(2), d = row(3);
    butterflyRows(a, b, c, d);
    return halfSumOfNeighbours(a, b) + halfSumOfNeighbours(c, d);
}
// Eight registers that hold the rows of 8x8 blocks: in lanes of at most 4 * 32 * 255.
template <class Row>
[[gnu::always_inline]] inline auto halfSumOf8Rows(Row row) {
    auto a = row(0), b = row(1), c = row(2), d = row(3), e = row(4), f = row(5), g = row(6), h = row(7);
    butterflyRows(a, b, c, d, e, f, g, h);
    const auto rest = [](auto& v, auto& w) {
        butterflyPairs(v, w);
        return halfSumOfNeighbours(v, w);
    };
    return (rest(a, b) + rest(c, d)) + (rest(e, f) + rest(g, h));
}
#if VEKVC_VECTOR256
// Four registers that hold rows 0 to 3 of an 8x8 block in their low and rows 4 to 7 in their high halves: in lanes of
// at most 2 * 32 * 255.
template <class Row>
[[gnu::always_inline]] inline i16x16 halfSumOf8RowsIn4(Row row) {
    i16x16 a = row(0), b = row(1), c = row(2), d = row(3);
    butterflyRows(a, b, c, d);
    const auto rest = [](i16x16& v, i16x16& w) {
        butterflyAcross(v, w);
        butterflyPairs(v, w);
        return halfSumOfNeighbours(v, w);
    };
    return rest(a, b) + rest(c, d);
}
#endif

}  // namespace vekvc::simd

#endif
