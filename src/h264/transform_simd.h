// Fast forms of the H.264 transforms, and the parts of macroblock reconstruction that they share: blocks in vectors.
//
// A 4x4 block of 16-bit values lies in two vectors, rows (transposed: columns) 0 and 1 and rows 2 and 3; with 256 bits
// each half holds a block of its own. A 4x4 block of 32-bit values lies in four vectors, 8x8 blocks in eight, one per
// row.
#ifndef VEKVC_H264_TRANSFORM_SIMD_H
#define VEKVC_H264_TRANSFORM_SIMD_H

#include "core/simd.h"
#include "h264/transform_plain.h"

namespace vekvc::simd {

using h264::Values;

#if VEKVC_VECTOR256
using Wide16 = i16x16;  // two blocks at once
using Wide32 = i32x8;
#endif

// The sums of the inverse transforms, as in the plain forms: 16-bit lanes saturate, 32-bit lanes wrap.
template <int n>
Vec<Vek16s, n> sum(Vec<Vek16s, n> a, Vec<Vek16s, n> b) {
    return addSat(a, b);
}
template <int n>
Vec<Vek16s, n> difference(Vec<Vek16s, n> a, Vec<Vek16s, n> b) {
    return subSat(a, b);
}
template <int n>
Vec<Vek32s, n> sum(Vec<Vek32s, n> a, Vec<Vek32s, n> b) {
    return a + b;
}
template <int n>
Vec<Vek32s, n> difference(Vec<Vek32s, n> a, Vec<Vek32s, n> b) {
    return a - b;
}

// ---- 4x4 blocks of 16-bit values

template <class V>
struct Rows {
    V top, bottom;  // rows 0, 1 and rows 2, 3
};

[[gnu::always_inline]] inline Rows<i16x8> loadRows(const Vek16s* p) { return {load<i16x8>(p), load<i16x8>(p + 8)}; }
[[gnu::always_inline]] inline void storeRows(Vek16s* p, Rows<i16x8> r) {
    store(p, r.top);
    store(p + 8, r.bottom);
}

template <class V>
[[gnu::always_inline]] inline Rows<V> transposed(Rows<V> r) {
    const V even = interleaveLow(r.top, r.bottom), odd = interleaveHigh(r.top, r.bottom);
    return {interleaveLow(even, odd), interleaveHigh(even, odd)};
}

// One dimension of 8.5.12.2 on rows w0 .. w3; the result's bottom is w3, w2.
template <class V>
[[gnu::always_inline]] inline Rows<V> inverse4(Rows<V> w) {
    const V e03 = sum(w.top, blend16<0xF0>(w.bottom, w.bottom >> 1));      // e0, e3
    const V e12 = difference(blend16<0xF0>(w.top, w.top >> 1), w.bottom);  // e1, e2
    const V e01 = joinLow(e03, e12), e32 = joinHigh(e03, e12);
    return {sum(e01, e32), difference(e01, e32)};
}

template <class V>
[[gnu::always_inline]] inline Rows<V> swapBottom(Rows<V> r) {
    return {r.top, swapHalves(r.bottom)};
}

// Scaled coefficients to the residual before its rounding; the bottom is row 3, row 2.
template <class V>
[[gnu::always_inline]] inline Rows<V> inverse4x4(Rows<V> w) {
    w = inverse4(transposed(w));
    return inverse4(transposed(swapBottom(w)));
}

// One dimension on vectors of one row (or column) each.
template <class V>
[[gnu::always_inline]] inline void inverse4(V (&w)[4]) {
    const V e0 = sum(w[0], w[2]), e1 = difference(w[0], w[2]);
    const V e2 = difference(w[1] >> 1, w[3]), e3 = sum(w[1], w[3] >> 1);
    w[0] = sum(e0, e3);
    w[1] = sum(e1, e2);
    w[2] = difference(e1, e2);
    w[3] = difference(e0, e3);
}

// (x + 32) >> 6, the sum limited to 16 bits.
template <class V>
[[gnu::always_inline]] inline V rounded(V x) {
    return addSat(x, constant<V, 32>()) >> 6;
}
// The same where the result is added to 8-bit samples: without the limit it is at most 512 instead of 511, and either
// makes any sample 255.
template <class V>
[[gnu::always_inline]] inline V roundedForSamples(V x) {
    return mulHighRound(x, constant<V, 512>());
}

// Scaling of 16-bit values: the low 16 bits of c * multiplier, or of (c * multiplier + 2^(right - 1)) >> right.
template <class V>
[[gnu::always_inline]] inline V scaled(V c, V multiplier, int right) {
    using U = Vec<Vek16u, V::kBytes / 2>;
    const V low = c * multiplier;
    if (right == 0) return low;
    // The rounding adds bit right - 1 of the product to the shifted product.
    const V shifted = mulHigh(c, multiplier) << (16 - right) | as<V>(as<U>(low) >> right);
    return shifted + (as<V>(as<U>(low) >> (right - 1)) & constant<V, 1>());
}

// The multiplier and shift of `fraction` (4 or 6, see plain::scaled) for one vector of level scales.
[[gnu::always_inline]] inline int rightShift(int qpDiv6, int fraction) {
    return qpDiv6 >= fraction ? 0 : fraction - qpDiv6;
}
template <class V>
[[gnu::always_inline]] inline V multiplier(V levelScale, int qpDiv6, int fraction) {
    return qpDiv6 >= fraction ? levelScale << (qpDiv6 - fraction) : levelScale;
}

// Scaling of 4x4 blocks with one QP.
template <class V>
struct Scaler {
    Rows<V> multipliers;
    int right;

    V top(V c) const { return scaled(c, multipliers.top, right); }
    V bottom(V c) const { return scaled(c, multipliers.bottom, right); }
};

// A null pLevelScale stands for flat scaling.
[[gnu::always_inline]] inline Scaler<i16x8> makeScaler(const Vek16s* pLevelScale, int qp) {
    if (!pLevelScale) return {loadRows(h264::flatMultipliers4x4[qp].data()), 0};
    const Rows<i16x8> scale = loadRows(pLevelScale);
    return {{multiplier(scale.top, qp / 6, 4), multiplier(scale.bottom, qp / 6, 4)}, rightShift(qp / 6, 4)};
}

// ---- adding to 8-bit samples

// Four rows of four samples in one vector.
[[gnu::always_inline]] inline u8x16 loadBlock4x4(Block<Vek8u> b) {
    return joinLow(loadPair4<u8x16>(b.at(0, 0), b.at(0, 1)), loadPair4<u8x16>(b.at(0, 2), b.at(0, 3)));
}
// Adds a residual before its rounding, the bottom being row 3, row 2.
[[gnu::always_inline]] inline void addRows(Rows<i16x8> r, Block<Vek8u> pred, MutableBlock<Vek8u> dst) {
    r = {roundedForSamples(r.top), roundedForSamples(r.bottom)};
    const u8x16 top = loadPair4<u8x16>(pred.at(0, 0), pred.at(0, 1));
    const u8x16 bottom = loadPair4<u8x16>(pred.at(0, 3), pred.at(0, 2));
    const u32x4 rows = as<u32x4>(narrowU8(addSat(r.top, widenLow(top)), addSat(r.bottom, widenLow(bottom))));
    storeBytes<4>(dst.at(0, 0), rows);
    store<Vek32u>(dst.at(0, 1), lane<1>(rows));
    store<Vek32u>(dst.at(0, 3), lane<2>(rows));
    store<Vek32u>(dst.at(0, 2), lane<3>(rows));
}

// ---- 4x4 blocks of 32-bit values

template <class V>
[[gnu::always_inline]] inline void inverse4x4(V (&w)[4]) {
    transpose4x4(w[0], w[1], w[2], w[3]);
    inverse4(w);
    transpose4x4(w[0], w[1], w[2], w[3]);
    inverse4(w);
    for (V& row : w) row = (row + constant<V, 32>()) >> 6;
}

template <class V>
[[gnu::always_inline]] inline V scaled32(V c, V multiplier, int right) {
    const V product = c * multiplier;
    return right == 0 ? product : (product + splat<V>(1 << (right - 1))) >> right;
}

[[gnu::always_inline]] inline i32x4 loadWide4(const Vek16s* p) { return widenLow(loadBytes<i16x8, 8>(p)); }

// Scaling of 4x4 blocks of 32-bit values with one QP.
template <class V>
struct Scaler32 {
    V multipliers[4];
    int right;

    V row(V c, int i) const { return scaled32(c, multipliers[i], right); }
};
[[gnu::always_inline]] inline Scaler32<i32x4> makeScaler32(const Vek16s* pLevelScale, int qp) {
    Scaler32<i32x4> s{{}, rightShift(qp / 6, 4)};
    pLevelScale = plain::levelScaleOrFlat(pLevelScale, qp);
    for (int i = 0; i < 4; ++i) s.multipliers[i] = multiplier(loadWide4(pLevelScale + 4 * i), qp / 6, 4);
    return s;
}

[[gnu::always_inline]] inline void addRows(const i32x4 (&r)[4], Block<Vek16u> pred, MutableBlock<Vek16u> dst,
                                           int bitDepth) {
    const u16x8 most = splat<u16x8>((1 << bitDepth) - 1);
    for (int y = 0; y < 4; y += 2) {
        const i32x4 a = r[y] + widenLow(loadBytes<u16x8, 8>(pred.at(0, y)));
        const i32x4 b = r[y + 1] + widenLow(loadBytes<u16x8, 8>(pred.at(0, y + 1)));
        storePair8(dst.at(0, y), dst.at(0, y + 1), min(narrowU16(a, b), most));
    }
}

// ---- the exports' kernels on single blocks

inline void transformResidual4x4Inv(const Vek16s* pSrc, Vek16s* pDst) {
    const Rows<i16x8> r = swapBottom(inverse4x4(loadRows(pSrc)));
    storeRows(pDst, {rounded(r.top), rounded(r.bottom)});
}
inline void transformResidual4x4Inv(const Vek32s* pSrc, Vek32s* pDst) {
    i32x4 w[4];
    for (int i = 0; i < 4; ++i) w[i] = load<i32x4>(pSrc + 4 * i);
    inverse4x4(w);
    for (int i = 0; i < 4; ++i) store(pDst + 4 * i, w[i]);
}

[[gnu::always_inline]] inline Rows<i16x8> withDC(Rows<i16x8> w, Vek16s dc) {
    return {blend16<1>(w.top, as<i16x8>(loadBytes<i16x8, 2>(&dc))), w.bottom};
}

template <class C, class P>
void transformQuantInvAddPred4x4(Block<P> pred, const C* pCoeffs, const C* pDC, MutableBlock<P> dst, int qp, bool hasAC,
                                 const Vek16s* pLevelScale, int bitDepth) {
    const auto dc = [&] {
        if (pDC) return load<C>(pDC);
        return plain::scaled(load<C>(pCoeffs), load<Vek16s>(plain::levelScaleOrFlat(pLevelScale, qp)), qp / 6, 4);
    };
    if constexpr (sizeof(C) == 2) {
        if (!hasAC) {
            const i16x8 everywhere = splat<i16x8>(dc());
            return addRows(Rows<i16x8>{everywhere, everywhere}, pred, dst);
        }
        const auto add = [&](Scaler<i16x8> scaler) {
            Rows<i16x8> w = loadRows(pCoeffs);
            w = {scaler.top(w.top), scaler.bottom(w.bottom)};
            if (pDC) w = withDC(w, load<C>(pDC));
            addRows(inverse4x4(w), pred, dst);
        };
        if (pLevelScale)
            add(makeScaler(pLevelScale, qp));
        else
            add(makeScaler(nullptr, qp));  // a product and nothing else
    } else {
        i32x4 w[4];
        if (hasAC) {
            const Scaler32<i32x4> scaler = makeScaler32(pLevelScale, qp);
            for (int i = 0; i < 4; ++i) w[i] = scaler.row(load<i32x4>(pCoeffs + 4 * i), i);
            if (pDC) w[0] = blend16<3>(w[0], loadBytes<i32x4, 4>(pDC));
            inverse4x4(w);
        } else {
            for (i32x4& row : w) row = splat<i32x4>(wrapAdd(dc(), 32) >> 6);
        }
        addRows(w, pred, dst, bitDepth);
    }
}

// ---- 8x8 blocks

// One dimension of 8.5.13.2 (see plain::inverse8).
template <class V>
[[gnu::always_inline]] inline void inverse8(V (&w)[8]) {
    const V a0 = sum(w[0], w[4]);
    const V a1 = difference(difference(difference(w[5], w[3]), w[7]), w[7] >> 1);
    const V a2 = difference(w[0], w[4]);
    const V a3 = difference(difference(sum(w[1], w[7]), w[3]), w[3] >> 1);
    const V a4 = difference(w[2] >> 1, w[6]);
    const V a5 = sum(sum(difference(w[7], w[1]), w[5]), w[5] >> 1);
    const V a6 = sum(w[2], w[6] >> 1);
    const V a7 = sum(sum(sum(w[3], w[5]), w[1]), w[1] >> 1);
    const V b0 = sum(a0, a6), b2 = sum(a2, a4), b4 = difference(a2, a4), b6 = difference(a0, a6);
    const V b1 = sum(a1, a7 >> 2), b3 = sum(a3, a5 >> 2), b5 = difference(a3 >> 2, a5), b7 = difference(a7, a1 >> 2);
    w[0] = sum(b0, b7);
    w[1] = sum(b2, b5);
    w[2] = sum(b4, b3);
    w[3] = sum(b6, b1);
    w[4] = difference(b6, b1);
    w[5] = difference(b4, b3);
    w[6] = difference(b2, b5);
    w[7] = difference(b0, b7);
}

template <class V>
[[gnu::always_inline]] inline void inverse8x8(V (&w)[8]) {
    transpose8x8(w);
    inverse8(w);
    transpose8x8(w);
    inverse8(w);
}

// Adds a residual before its rounding.
[[gnu::always_inline]] inline void addRows(const i16x8 (&r)[8], Block<Vek8u> pred, MutableBlock<Vek8u> dst) {
    for (int y = 0; y < 8; y += 2) {
        const i16x8 a = addSat(roundedForSamples(r[y]), widenLow(loadBytes<u8x16, 8>(pred.at(0, y))));
        const i16x8 b = addSat(roundedForSamples(r[y + 1]), widenLow(loadBytes<u8x16, 8>(pred.at(0, y + 1))));
        storePair8(dst.at(0, y), dst.at(0, y + 1), narrowU8(a, b));
    }
}

// An 8x8 block of 32-bit values.
struct Rows8 {
#if VEKVC_VECTOR256
    i32x8 w[8];

    void put(int y, i32x4 left, i32x4 right) { w[y] = join(left, right); }
    void inverse() {
        inverse8x8(w);
        for (i32x8& row : w) row = (row + constant<i32x8, 32>()) >> 6;
    }
    u16x8 row(int y, u16x8 pred) const {
        const i32x8 r = w[y] + widen(pred);
        return narrowU16(lowHalf(r), highHalf(r));
    }
#else
    i32x4 left[8], right[8];

    void put(int y, i32x4 l, i32x4 r) {
        left[y] = l;
        right[y] = r;
    }
    void inverse() {
        for (int dimension = 0; dimension < 2; ++dimension) {
            transpose8x8(left, right);
            inverse8(left);
            inverse8(right);
        }
        for (int y = 0; y < 8; ++y) {
            left[y] = (left[y] + constant<i32x4, 32>()) >> 6;
            right[y] = (right[y] + constant<i32x4, 32>()) >> 6;
        }
    }
    u16x8 row(int y, u16x8 pred) const { return narrowU16(left[y] + widenLow(pred), right[y] + widenHigh(pred)); }
#endif
    void add(Block<Vek16u> pred, MutableBlock<Vek16u> dst, int bitDepth) const {
        const u16x8 most = splat<u16x8>((1 << bitDepth) - 1);
        for (int y = 0; y < 8; ++y) store(dst.at(0, y), min(row(y, load<u16x8>(pred.at(0, y))), most));
    }
};

template <class C, class P>
void transformInvAddPred8x8(Block<P> pred, const C* pCoeffs, MutableBlock<P> dst, int bitDepth) {
    if constexpr (sizeof(C) == 2) {
        i16x8 w[8];
        for (int y = 0; y < 8; ++y) w[y] = load<i16x8>(pCoeffs + 8 * y);
        inverse8x8(w);
        addRows(w, pred, dst);
    } else {
        Rows8 rows;
        for (int y = 0; y < 8; ++y) rows.put(y, load<i32x4>(pCoeffs + 8 * y), load<i32x4>(pCoeffs + 8 * y + 4));
        rows.inverse();
        rows.add(pred, dst, bitDepth);
    }
}

inline void scaleBlock8x8(Vek16s* pSrcDst, const Vek16s* pLevelScale, int qpDiv6) {
    const int right = rightShift(qpDiv6, 6);
    for (int k = 0; k < 64; k += 8)
        store(pSrcDst + k,
              scaled(load<i16x8>(pSrcDst + k), multiplier(load<i16x8>(pLevelScale + k), qpDiv6, 6), right));
}
inline void scaleBlock8x8(Vek32s* pSrcDst, const Vek16s* pLevelScale, int qpDiv6) {
    const int right = rightShift(qpDiv6, 6);
    for (int k = 0; k < 64; k += 4)
        store(pSrcDst + k,
              scaled32(load<i32x4>(pSrcDst + k), multiplier(loadWide4(pLevelScale + k), qpDiv6, 6), right));
}

inline void dequantTransformResidual(MutableBlock<Vek16s> block, const Vek16s* pDC, int qp, bool hasAC) {
    const Scaler<i16x8> scaler = makeScaler(nullptr, qp);
    Rows<i16x8> w{zero<i16x8>(), zero<i16x8>()};
    if (hasAC)
        w = {loadPair8<i16x8>(block.at(0, 0), block.at(0, 1)), loadPair8<i16x8>(block.at(0, 2), block.at(0, 3))};
    else
        w.top = loadBytes<i16x8, 2>(block.at(0, 0));
    w = {scaler.top(w.top), scaler.bottom(w.bottom)};
    if (pDC) w = withDC(w, load<Vek16s>(pDC));
    const Rows<i16x8> r = inverse4x4(w);
    storePair8(block.at(0, 0), block.at(0, 1), rounded(r.top));
    storePair8(block.at(0, 3), block.at(0, 2), rounded(r.bottom));
}

// ---- forward transforms

// One dimension of the 4x4 core transform on rows w0 .. w3; the result's rows are in order.
[[gnu::always_inline]] inline Rows<i16x8> forward4(Rows<i16x8> w) {
    const i16x8 w32 = swapHalves(w.bottom);
    const i16x8 s = w.top + w32, d = w.top - w32;       // s03, s12 and d03, d12
    const i16x8 a = joinLow(s, d), b = joinHigh(s, d);  // s03, d03 and s12, d12
    const i16x8 weights = lanes<i16x8>(1, 1, 1, 1, 2, 2, 2, 2);
    return {a * weights + b, a - b * weights};
}
[[gnu::always_inline]] inline Rows<i16x8> forward4x4(Rows<i16x8> w) {
    return forward4(transposed(forward4(transposed(w))));
}

[[gnu::always_inline]] inline void forward4x4(i32x4 (&w)[4]) {
    for (int dimension = 0; dimension < 2; ++dimension) {
        transpose4x4(w[0], w[1], w[2], w[3]);
        const i32x4 s03 = w[0] + w[3], s12 = w[1] + w[2], d03 = w[0] - w[3], d12 = w[1] - w[2];
        w[0] = s03 + s12;
        w[1] = d03 + d03 + d12;
        w[2] = s03 - s12;
        w[3] = d03 - d12 - d12;
    }
}

inline void transformResidual4x4Fwd(const Vek16s* pSrc, Vek16s* pDst) { storeRows(pDst, forward4x4(loadRows(pSrc))); }
inline void transformResidual4x4Fwd(const Vek32s* pSrc, Vek32s* pDst) {
    i32x4 w[4];
    for (int i = 0; i < 4; ++i) w[i] = load<i32x4>(pSrc + 4 * i);
    forward4x4(w);
    for (int i = 0; i < 4; ++i) store(pDst + 4 * i, w[i]);
}

inline void transformPrediction(Block<Vek8u> pred, Vek16s* pDst) {
    const u8x16 rows = loadBlock4x4(pred);
    storeRows(pDst, forward4x4(Rows<i16x8>{widenLow(rows), widenHigh(rows)}));
}

// One dimension of the 8x8 transform (see plain::forward8).
template <class V>
[[gnu::always_inline]] inline void forward8(V (&w)[8]) {
    const V s07 = w[0] + w[7], s16 = w[1] + w[6], s25 = w[2] + w[5], s34 = w[3] + w[4];
    const V d07 = w[0] - w[7], d16 = w[1] - w[6], d25 = w[2] - w[5], d34 = w[3] - w[4];
    const V a0 = s07 + s34, a1 = s16 + s25, a2 = s07 - s34, a3 = s16 - s25;
    const V a4 = d16 + d25 + (d07 + (d07 >> 1)), a5 = d07 - d34 - (d25 + (d25 >> 1));
    const V a6 = d07 + d34 - (d16 + (d16 >> 1)), a7 = d16 - d25 + (d34 + (d34 >> 1));
    w[0] = a0 + a1;
    w[1] = a4 + (a7 >> 2);
    w[2] = a2 + (a3 >> 1);
    w[3] = a5 + (a6 >> 2);
    w[4] = a0 - a1;
    w[5] = a6 - (a5 >> 2);
    w[6] = (a2 >> 1) - a3;
    w[7] = (a4 >> 2) - a7;
}

inline void transformFwd8x8(const Vek16s* pSrc, Vek16s* pDst) {
    i16x8 w[8];
    for (int y = 0; y < 8; ++y) w[y] = load<i16x8>(pSrc + 8 * y);
    for (int dimension = 0; dimension < 2; ++dimension) {
        transpose8x8(w);
        forward8(w);
    }
    for (int y = 0; y < 8; ++y) store(pDst + 8 * y, w[y]);
}
inline void transformFwd8x8(const Vek16s* pSrc, Vek32s* pDst) {
    i32x4 left[8], right[8];
    for (int y = 0; y < 8; ++y) {
        left[y] = loadWide4(pSrc + 8 * y);
        right[y] = loadWide4(pSrc + 8 * y + 4);
    }
    for (int dimension = 0; dimension < 2; ++dimension) {
        transpose8x8(left, right);
        forward8(left);
        forward8(right);
    }
    for (int y = 0; y < 8; ++y) {
        store(pDst + 8 * y, left[y]);
        store(pDst + 8 * y + 4, right[y]);
    }
}

}  // namespace vekvc::simd

#endif
