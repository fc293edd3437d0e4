// The definitions of the H.264 transforms and of scaling (clauses 8.5.10 to 8.5.13): what every fast form must equal.
#ifndef VEKVC_H264_TRANSFORM_PLAIN_H
#define VEKVC_H264_TRANSFORM_PLAIN_H

#include "core/arith.h"
#include "core/memory.h"
#include "h264/scaling_tables.h"

namespace vekvc::plain {

using h264::Values;

// n values copied from memory of any alignment.
template <int n, class C>
Values<n, C> loadValues(const C* p) {
    return load<Values<n, C>>(p);
}

// The sums of the inverse transforms: 16-bit values saturate, 32-bit values wrap.
inline Vek16s sum(Vek16s a, Vek16s b) { return saturate16(a + b); }
inline Vek16s difference(Vek16s a, Vek16s b) { return saturate16(a - b); }
inline Vek32s sum(Vek32s a, Vek32s b) { return wrapAdd(a, b); }
inline Vek32s difference(Vek32s a, Vek32s b) { return wrapSub(a, b); }
template <class C>
C shiftRight(C a, int n) {
    return static_cast<C>(a >> n);
}

// A 32-bit result kept in a coefficient: wraps to its width.
template <class C>
C keep(Vek32s x) {
    return static_cast<C>(x);
}

// ---- inverse transforms

// One dimension of 8.5.12.2 on four values that lie `stride` apart.
template <class C>
void inverse4(C* w, int stride) {
    C &w0 = w[0], &w1 = w[stride], &w2 = w[2 * stride], &w3 = w[3 * stride];
    const C e0 = sum(w0, w2);
    const C e1 = difference(w0, w2);
    const C e2 = difference(shiftRight(w1, 1), w3);
    const C e3 = sum(w1, shiftRight(w3, 1));
    w0 = sum(e0, e3);
    w1 = sum(e1, e2);
    w2 = difference(e1, e2);
    w3 = difference(e0, e3);
}

// One dimension of 8.5.13.2; sums of several terms are taken from left to right.
template <class C>
void inverse8(C* w, int stride) {
    C &w0 = w[0], &w1 = w[stride], &w2 = w[2 * stride], &w3 = w[3 * stride];
    C &w4 = w[4 * stride], &w5 = w[5 * stride], &w6 = w[6 * stride], &w7 = w[7 * stride];
    const C a0 = sum(w0, w4);
    const C a1 = difference(difference(difference(w5, w3), w7), shiftRight(w7, 1));
    const C a2 = difference(w0, w4);
    const C a3 = difference(difference(sum(w1, w7), w3), shiftRight(w3, 1));
    const C a4 = difference(shiftRight(w2, 1), w6);
    const C a5 = sum(sum(difference(w7, w1), w5), shiftRight(w5, 1));
    const C a6 = sum(w2, shiftRight(w6, 1));
    const C a7 = sum(sum(sum(w3, w5), w1), shiftRight(w1, 1));
    const C b0 = sum(a0, a6);
    const C b1 = sum(a1, shiftRight(a7, 2));
    const C b2 = sum(a2, a4);
    const C b3 = sum(a3, shiftRight(a5, 2));
    const C b4 = difference(a2, a4);
    const C b5 = difference(shiftRight(a3, 2), a5);
    const C b6 = difference(a0, a6);
    const C b7 = difference(a7, shiftRight(a1, 2));
    w0 = sum(b0, b7);
    w1 = sum(b2, b5);
    w2 = sum(b4, b3);
    w3 = sum(b6, b1);
    w4 = difference(b6, b1);
    w5 = difference(b4, b3);
    w6 = difference(b2, b5);
    w7 = difference(b0, b7);
}

// Rows, then columns, then (x + 32) >> 6.
template <class C>
void inverse4x4(Values<16, C>& w) {
    for (int i = 0; i < 4; ++i) inverse4(&w[4 * i], 1);
    for (int j = 0; j < 4; ++j) inverse4(&w[j], 4);
    for (C& x : w) x = shiftRight(sum(x, C{32}), 6);
}

template <class C>
void inverse8x8(Values<64, C>& w) {
    for (int i = 0; i < 8; ++i) inverse8(&w[8 * i], 1);
    for (int j = 0; j < 8; ++j) inverse8(&w[j], 8);
    for (C& x : w) x = shiftRight(sum(x, C{32}), 6);
}

template <class C>
void transformResidual4x4Inv(const C* pSrc, C* pDst) {
    Values<16, C> w = loadValues<16>(pSrc);
    inverse4x4(w);
    store(pDst, w);
}

// ---- scaling

// 8.5.12.1 (fraction 4), 8.5.10, 8.5.11.2 with QP'c,dc and 8.5.13.1 (fraction 6): c * levelScale * 2^(qp/6 - fraction),
// rounded.
template <class C>
C scaled(C c, int levelScale, int qpDiv6, int fraction) {
    const Vek32s product = wrapMul(c, levelScale);
    if (qpDiv6 >= fraction) return keep<C>(wrapShl(product, qpDiv6 - fraction));
    return keep<C>(wrapAdd(product, 1 << (fraction - 1 - qpDiv6)) >> (fraction - qpDiv6));
}

// LevelScale4x4 for qp, or the flat one where none is given.
inline const Vek16s* levelScaleOrFlat(const Vek16s* pLevelScale, int qp) {
    return pLevelScale ? pLevelScale : h264::flatLevelScale4x4[qp % 6].data();
}

// Scales a 4x4 block; position 0 takes the value at pDC, if given, as it stands. With hasAC unset all else is 0. A null
// pLevelScale stands for flat scaling.
template <class C>
Values<16, C> scaleBlock4x4(const C* pCoeffs, const C* pDC, const Vek16s* pLevelScale, int qp, bool hasAC) {
    Values<16, C> d{};
    const Vek16s* levelScale = levelScaleOrFlat(pLevelScale, qp);
    const auto at = [&](int k) { return scaled(load<C>(pCoeffs + k), load<Vek16s>(levelScale + k), qp / 6, 4); };
    if (hasAC)
        for (int k = 1; k < 16; ++k) d[k] = at(k);
    d[0] = pDC ? load<C>(pDC) : at(0);
    return d;
}

template <class C>
void scaleBlock8x8(C* pSrcDst, const Vek16s* pLevelScale, int qpDiv6) {
    for (int k = 0; k < 64; ++k)
        store<C>(pSrcDst + k, scaled(load<C>(pSrcDst + k), load<Vek16s>(pLevelScale + k), qpDiv6, 6));
}

// ---- adding to the prediction

// u = Clip1(pred + r) for a block of n x n residual values (8.5.14).
template <class C, class P, int size>
void addToPrediction(const Values<size, C>& r, Block<P> pred, MutableBlock<P> dst, int bitDepth) {
    constexpr int n = size == 16 ? 4 : 8;
    const std::int64_t most = (1 << bitDepth) - 1;
    for (int y = 0; y < n; ++y)
        for (int x = 0; x < n; ++x)
            dst.put(x, y, static_cast<P>(clip3<std::int64_t>(0, most, std::int64_t{pred(x, y)} + r[n * y + x])));
}

template <class C, class P>
void transformQuantInvAddPred4x4(Block<P> pred, const C* pCoeffs, const C* pDC, MutableBlock<P> dst, int qp, bool hasAC,
                                 const Vek16s* pLevelScale, int bitDepth) {
    Values<16, C> w = scaleBlock4x4(pCoeffs, pDC, pLevelScale, qp, hasAC);
    inverse4x4(w);
    addToPrediction(w, pred, dst, bitDepth);
}

template <class C, class P>
void transformInvAddPred8x8(Block<P> pred, const C* pCoeffs, MutableBlock<P> dst, int bitDepth) {
    Values<64, C> w = loadValues<64>(pCoeffs);
    inverse8x8(w);
    addToPrediction(w, pred, dst, bitDepth);
}

// A residual block in a plane of coefficients, in place.
inline void dequantTransformResidual(MutableBlock<Vek16s> block, const Vek16s* pDC, int qp, bool hasAC) {
    Values<16, Vek16s> c;
    for (int k = 0; k < 16; ++k) c[k] = hasAC || k == 0 ? block(k % 4, k / 4) : Vek16s{0};
    c = scaleBlock4x4<Vek16s>(c.data(), pDC, nullptr, qp, hasAC);
    inverse4x4(c);
    for (int k = 0; k < 16; ++k) block.put(k % 4, k / 4, c[k]);
}

// ---- DC blocks

// The Hadamard transform of 8.5.10 on `rows` x `columns` values (4x4, 2x2, or 4 rows of 2), without scaling.
template <int rows, int columns>
Values<rows * columns, std::int64_t> hadamard(Values<rows * columns, std::int64_t> c) {
    constexpr int sign4[4][4] = {{1, 1, 1, 1}, {1, 1, -1, -1}, {1, -1, -1, 1}, {1, -1, 1, -1}};
    constexpr int sign2[2][2] = {{1, 1}, {1, -1}};
    const auto sign = [&](int n, int i, int k) { return n == 4 ? sign4[i][k] : sign2[i][k]; };
    Values<rows * columns, std::int64_t> f{};
    for (int i = 0; i < rows; ++i)
        for (int j = 0; j < columns; ++j)
            for (int k = 0; k < rows; ++k)
                for (int l = 0; l < columns; ++l)
                    f[i * columns + j] += sign(rows, i, k) * sign(columns, l, j) * c[k * columns + l];
    return f;
}

template <int n, class C>
Values<n, std::int64_t> widened(const C* p) {
    Values<n, std::int64_t> wide{};
    for (int k = 0; k < n; ++k) wide[k] = load<C>(p + k);
    return wide;
}

// Inverse transform (results kept in the coefficient's width) and scaling of luma DC levels (8.5.10).
template <class C>
void inverseLumaDC(C* pSrcDst, int qp, int levelScale) {
    const auto f = hadamard<4, 4>(widened<16>(pSrcDst));
    for (int k = 0; k < 16; ++k) store<C>(pSrcDst + k, scaled(static_cast<C>(f[k]), levelScale, qp / 6, 6));
}

// 8.5.11 for 4:2:0.
template <class C>
void inverseChromaDC2x2(C* pSrcDst, int qp, int levelScale) {
    const auto f = hadamard<2, 2>(widened<4>(pSrcDst));
    for (int k = 0; k < 4; ++k)
        store<C>(pSrcDst + k, keep<C>(wrapShl(wrapMul(static_cast<C>(f[k]), levelScale), qp / 6) >> 5));
}

// 8.5.11 for 4:2:2; qpDC is QP'c + 3.
template <class C>
void inverseChromaDC2x4(C* pSrcDst, int qpDC, int levelScale) {
    const auto f = hadamard<4, 2>(widened<8>(pSrcDst));
    for (int k = 0; k < 8; ++k) store<C>(pSrcDst + k, scaled(static_cast<C>(f[k]), levelScale, qpDC / 6, 6));
}

// ---- forward transforms

// One dimension of the 4x4 core transform, the counterpart of 8.5.12.2; every result wraps to the coefficient's width.
template <class C>
void forward4(C* w, int stride) {
    C &w0 = w[0], &w1 = w[stride], &w2 = w[2 * stride], &w3 = w[3 * stride];
    const Vek32s s03 = wrapAdd(w0, w3), s12 = wrapAdd(w1, w2), d03 = wrapSub(w0, w3), d12 = wrapSub(w1, w2);
    w0 = keep<C>(wrapAdd(s03, s12));
    w1 = keep<C>(wrapAdd(wrapShl(d03, 1), d12));
    w2 = keep<C>(wrapSub(s03, s12));
    w3 = keep<C>(wrapSub(d03, wrapShl(d12, 1)));
}

template <class C>
void forward4x4(Values<16, C>& w) {
    for (int i = 0; i < 4; ++i) forward4(&w[4 * i], 1);
    for (int j = 0; j < 4; ++j) forward4(&w[j], 4);
}

template <class C>
void transformResidual4x4Fwd(const C* pSrc, C* pDst) {
    Values<16, C> w = loadValues<16>(pSrc);
    forward4x4(w);
    store(pDst, w);
}

// One dimension of the 8x8 transform, the counterpart of 8.5.13.2 (the same factors 3/2, 5/4 and so on, by shifts);
// every value wraps to the coefficient's width.
template <class C>
void forward8(C* w, int stride) {
    const auto at = [&](int k) -> C& { return w[k * stride]; };
    const auto add = [](C a, C b) { return keep<C>(wrapAdd(a, b)); };
    const auto sub = [](C a, C b) { return keep<C>(wrapSub(a, b)); };
    const auto threeHalves = [&](C a) { return add(a, shiftRight(a, 1)); };
    const C s07 = add(at(0), at(7)), s16 = add(at(1), at(6)), s25 = add(at(2), at(5)), s34 = add(at(3), at(4));
    const C d07 = sub(at(0), at(7)), d16 = sub(at(1), at(6)), d25 = sub(at(2), at(5)), d34 = sub(at(3), at(4));
    const C a0 = add(s07, s34), a1 = add(s16, s25), a2 = sub(s07, s34), a3 = sub(s16, s25);
    const C a4 = add(add(d16, d25), threeHalves(d07));
    const C a5 = sub(sub(d07, d34), threeHalves(d25));
    const C a6 = sub(add(d07, d34), threeHalves(d16));
    const C a7 = add(sub(d16, d25), threeHalves(d34));
    at(0) = add(a0, a1);
    at(1) = add(a4, shiftRight(a7, 2));
    at(2) = add(a2, shiftRight(a3, 1));
    at(3) = add(a5, shiftRight(a6, 2));
    at(4) = sub(a0, a1);
    at(5) = sub(a6, shiftRight(a5, 2));
    at(6) = sub(shiftRight(a2, 1), a3);
    at(7) = sub(shiftRight(a4, 2), a7);
}

template <class C>
void transformFwd8x8(const Vek16s* pSrc, C* pDst) {
    Values<64, C> w;
    for (int k = 0; k < 64; ++k) w[k] = load<Vek16s>(pSrc + k);
    for (int i = 0; i < 8; ++i) forward8(&w[8 * i], 1);
    for (int j = 0; j < 8; ++j) forward8(&w[j], 8);
    store(pDst, w);
}

inline void transformPrediction(Block<Vek8u> pred, Vek16s* pDst) {
    Values<16, Vek16s> w;
    for (int k = 0; k < 16; ++k) w[k] = pred(k % 4, k / 4);
    forward4x4(w);
    store(pDst, w);
}

}  // namespace vekvc::plain

#endif
