// Fast forms of the H.264 DC blocks: Hadamard transforms and the scaling of the inverse ones (8.5.10, 8.5.11).
#ifndef VEKVC_H264_TRANSFORM_DC_SIMD_H
#define VEKVC_H264_TRANSFORM_DC_SIMD_H

#include "h264/transform_simd.h"

namespace vekvc::simd {

// ---- 4x4

// One dimension of the Hadamard transform of 8.5.10 on rows w0 .. w3; the result's bottom is w3, w2.
[[gnu::always_inline]] inline Rows<i16x8> hadamard4(Rows<i16x8> w) {
    const i16x8 even = w.top + w.bottom, odd = w.top - w.bottom;  // w0 + w2, w1 + w3 and the differences
    const i16x8 a = joinLow(even, odd), b = joinHigh(even, odd);
    return {a + b, a - b};
}

inline void inverseLumaDC(Vek16s* pSrcDst, int qp, int levelScale) {
    const Rows<i16x8> f = swapBottom(hadamard4(transposed(swapBottom(hadamard4(loadRows(pSrcDst))))));
    const i16x8 m = multiplier(splat<i16x8>(levelScale), qp / 6, 6);
    const int right = rightShift(qp / 6, 6);
    storeRows(pSrcDst, transposed(Rows<i16x8>{scaled(f.top, m, right), scaled(f.bottom, m, right)}));
}
// Both dimensions, on 32-bit values.
[[gnu::always_inline]] inline void hadamard4(i32x4 (&w)[4]) {
    for (int dimension = 0; dimension < 2; ++dimension) {
        transpose4x4(w[0], w[1], w[2], w[3]);
        const i32x4 a = w[0] + w[1], b = w[2] + w[3], c = w[0] - w[1], d = w[2] - w[3];
        w[0] = a + b;
        w[1] = a - b;
        w[2] = c - d;
        w[3] = c + d;
    }
}

inline void inverseLumaDC(Vek32s* pSrcDst, int qp, int levelScale) {
    i32x4 w[4];
    for (int i = 0; i < 4; ++i) w[i] = load<i32x4>(pSrcDst + 4 * i);
    hadamard4(w);
    const i32x4 m = multiplier(splat<i32x4>(levelScale), qp / 6, 6);
    for (int i = 0; i < 4; ++i) store(pSrcDst + 4 * i, scaled32(w[i], m, rightShift(qp / 6, 6)));
}

// ---- 2x2 and 2x4: what is added or subtracted is brought to its place, then negated where it is subtracted

// Four 32-bit lanes to coefficients, with wrap-around.
[[gnu::always_inline]] inline void storeWrap4(Vek16s* p, i32x4 v) { storeBytes<8>(p, narrowWrap(v, v)); }
[[gnu::always_inline]] inline void storeWrap4(Vek32s* p, i32x4 v) { store(p, v); }

// The two values of each row: their sum and their difference.
[[gnu::always_inline]] inline i32x4 hadamardRows(i32x4 c) {
    return shuffle32<1, 0, 3, 2>(c) + withSign(c, lanes<i32x4>(1, -1, 1, -1));
}
[[gnu::always_inline]] inline i32x4 hadamard2x2(const Vek32s* p) {
    const i32x4 rows = hadamardRows(load<i32x4>(p));
    return swapHalves(rows) + withSign(rows, lanes<i32x4>(1, 1, -1, -1));
}
// Each lane's pair of products holds one of the two rows.
[[gnu::always_inline]] inline i32x4 hadamard2x2(const Vek16s* p) {
    const i16x8 c = loadBytes<i16x8, 8>(p);
    return mulAddPairs(shuffle32<0, 0, 0, 0>(c), lanes<i16x8>(1, 1, 1, -1, 1, 1, 1, -1)) +
           mulAddPairs(shuffle32<1, 1, 1, 1>(c), lanes<i16x8>(1, 1, 1, -1, -1, -1, -1, 1));
}

template <class C>
void inverseChromaDC2x2(C* pSrcDst, int qp, int levelScale) {
    const i32x4 f = hadamard2x2(pSrcDst);
    i32x4 product;
    if constexpr (sizeof(C) == 2)  // of the low 16 bits of f
        product = mulAddPairs(as<i16x8>(f), as<i16x8>(splat<i32x4>(levelScale & 0xFFFF)));
    else
        product = f * splat<i32x4>(levelScale);
    storeWrap4(pSrcDst, (product << qp / 6) >> 5);
}

// Rows 0, 1 and rows 2, 3 of two values each.
[[gnu::always_inline]] inline Rows<i32x4> hadamard2x4(Rows<i32x4> c) {
    const i32x4 top = hadamardRows(c.top), bottom = hadamardRows(c.bottom);
    const i32x4 even = top + bottom, odd = top - bottom;  // r0 + r2, r1 + r3 and the differences
    const i32x4 a = joinLow(even, odd), b = joinHigh(even, odd);
    return swapBottom(Rows<i32x4>{a + b, a - b});
}
[[gnu::always_inline]] inline i16x8 hadamard2x4(i16x8 c) {
    const i16x8 secondHalf = lanes<i16x8>(1, 1, 1, 1, -1, -1, -1, -1);
    const u8x16 swapped = lanes<u8x16>(2, 3, 0, 1, 6, 7, 4, 5, 10, 11, 8, 9, 14, 15, 12, 13);
    const i16x8 rows = shuffleBytes(c, swapped) + withSign(c, lanes<i16x8>(1, -1, 1, -1, 1, -1, 1, -1));
    const i16x8 p = swapHalves(rows) + withSign(rows, secondHalf);  // r0 + r2, r1 + r3 and the differences
    return shuffle32<0, 2, 2, 0>(p) + withSign(shuffle32<1, 3, 3, 1>(p), secondHalf);
}

inline void inverseChromaDC2x4(Vek16s* pSrcDst, int qpDC, int levelScale) {
    const i16x8 m = multiplier(splat<i16x8>(levelScale), qpDC / 6, 6);
    store(pSrcDst, scaled(hadamard2x4(load<i16x8>(pSrcDst)), m, rightShift(qpDC / 6, 6)));
}
inline void inverseChromaDC2x4(Vek32s* pSrcDst, int qpDC, int levelScale) {
    const Rows<i32x4> f = hadamard2x4({load<i32x4>(pSrcDst), load<i32x4>(pSrcDst + 4)});
    const i32x4 m = multiplier(splat<i32x4>(levelScale), qpDC / 6, 6);
    const int right = rightShift(qpDC / 6, 6);
    store(pSrcDst, scaled32(f.top, m, right));
    store(pSrcDst + 4, scaled32(f.bottom, m, right));
}

}  // namespace vekvc::simd

#endif
