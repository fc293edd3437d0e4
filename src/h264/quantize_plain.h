// The definitions of forward quantization, of the scale generators and of SP decoding's requantization.
#ifndef VEKVC_H264_QUANTIZE_PLAIN_H
#define VEKVC_H264_QUANTIZE_PLAIN_H

#include "h264/transform_plain.h"

namespace vekvc::plain {

// The shift and rounding offset of a quantizer.
struct QuantRounding {
    int qbits;
    Vek32s f;
};

// f = floor(2^qbits / 3) for intra, floor(2^qbits / 6) for inter.
constexpr QuantRounding quantRounding(int qbits, bool isIntra) {
    return {qbits, isIntra ? (1 << qbits) / 3 : (1 << qbits) / 6};
}

// sign(c) * ((|c| * multiplier + f) >> qbits), the sum in 32 bits.
inline Vek32s quantized(Vek32s c, Vek32s multiplier, QuantRounding rounding) {
    const Vek32s level = wrapAdd(wrapMul(wrap32(magnitude(c)), multiplier), rounding.f) >> rounding.qbits;
    return c < 0 ? wrapSub(0, level) : level;
}

struct LevelCount {
    Vek32s numLevels;  // non-zero levels
    Vek32s lastPos;    // largest scan index of one, or 0
};

// Quantizes n coefficients with one multiplier per position.
template <int n, class S, class D, class M>
LevelCount quantize(const S* pSrc, D* pDst, const M* pMultipliers, QuantRounding rounding, const Vek16s* pScanPos) {
    LevelCount count = {0, 0};
    for (int k = 0; k < n; ++k) {
        const D level = keep<D>(quantized(load<S>(pSrc + k), static_cast<Vek32s>(load<M>(pMultipliers + k)), rounding));
        store<D>(pDst + k, level);
        if (level == 0) continue;
        ++count.numLevels;
        if (load<Vek16s>(pScanPos + k) > count.lastPos) count.lastPos = load<Vek16s>(pScanPos + k);
    }
    return count;
}

// Forward core transform in the width of the levels, then quantization.
template <class D>
LevelCount transformQuantFwd4x4(const Vek16s* pSrc, D* pDst, const Vek16s* pMultipliers, QuantRounding rounding,
                                const Vek16s* pScanPos) {
    Values<16, D> w;
    for (int k = 0; k < 16; ++k) w[k] = load<Vek16s>(pSrc + k);
    forward4x4(w);
    return quantize<16>(w.data(), pDst, pMultipliers, rounding, pScanPos);
}

// Forward Hadamard transform of DC values in place: exact sums, halved for 4x4, kept in the coefficient's width.
template <int rows, int columns, class C>
void forwardDC(C* pSrcDst) {
    const auto f = hadamard<rows, columns>(widened<rows * columns>(pSrcDst));
    for (int k = 0; k < rows * columns; ++k)
        store<C>(pSrcDst + k, static_cast<C>(rows * columns == 16 ? f[k] >> 1 : f[k]));
}

// Quantizes n DC values with one multiplier; pScanPos may be null, then raster order is scan order.
template <int n, class C>
LevelCount quantizeDC(const C* pSrc, C* pDst, Vek32s multiplier, QuantRounding rounding, const Vek16s* pScanPos) {
    LevelCount count = {0, 0};
    for (int k = 0; k < n; ++k) {
        const C level = keep<C>(quantized(load<C>(pSrc + k), multiplier, rounding));
        store<C>(pDst + k, level);
        if (level == 0) continue;
        ++count.numLevels;
        const Vek32s position = pScanPos ? load<Vek16s>(pScanPos + k) : k;
        if (position > count.lastPos) count.lastPos = position;
    }
    return count;
}

// Both scales of one QP%6 from the n weights of a scaling list (8.5.9).
template <int n>
void genScaleLevel(const Vek8u* pSrc, Vek16s* pDstInv, Vek16s* pDstFwd, int qpMod6) {
    const auto weights = loadValues<n>(pSrc);
    for (int k = 0; k < n; ++k) {
        const int weight = weights[k];
        const int norm = n == 16 ? h264::normAdjust4x4(qpMod6, k) : h264::normAdjust8x8(qpMod6, k);
        const int multiplier =
            n == 16 ? h264::forwardMultipliers4x4[qpMod6][k & 15] : h264::forwardMultiplier8x8(qpMod6, k);
        store<Vek16s>(pDstInv + k, keep<Vek16s>(weight * norm));
        store<Vek16s>(pDstFwd + k, keep<Vek16s>(weight == 0 ? 0 : (multiplier + weight / 2) / weight));
    }
}

// ---- SP and SI slices (8.6)

// The quantizer of a block of an SP or SI slice: QP of the residual, QS of the requantized sum.
struct SpQuantizers {
    int qp, qs;
    bool isSwitching;
};

// The requantized level at position k of a 4x4 block, or (dcShift 1) of a transformed chroma DC.
inline Vek32s requantized(Vek32s level, Vek32s pred, int k, SpQuantizers q, int dcShift) {
    constexpr int a[3] = {16, 25, 20};  // A_ij of 8.6.1
    const QuantRounding nearest = {15 + dcShift + q.qs / 6, 1 << (14 + dcShift + q.qs / 6)};
    const Vek32s multiplier = h264::forwardMultipliers4x4[q.qs % 6][k];
    if (q.isSwitching) return level + quantized(pred, multiplier, nearest);
    const Vek32s weight = h264::normAdjust4x4(q.qp % 6, k) * a[h264::class4x4(k)];
    const Vek32s summed = wrapAdd(pred, wrapShl(wrapMul(level, weight), q.qp / 6) >> (6 - dcShift));
    return quantized(summed, multiplier, nearest);
}

inline void dequantTransformResidualSISP(Vek16s* pSrcDst, const Vek16s* pPred, const Vek16s* pDC, SpQuantizers q) {
    Values<16, Vek16s> c = loadValues<16>(pSrcDst);
    const auto pred = loadValues<16>(pPred);
    for (int k = 0; k < 16; ++k) c[k] = keep<Vek16s>(requantized(c[k], pred[k], k, q, 0));
    c = scaleBlock4x4<Vek16s>(c.data(), pDC, nullptr, q.qs, true);
    inverse4x4(c);
    store(pSrcDst, c);
}

inline void dequantChromaDCSISP(Vek16s* pSrcDst, const Vek16s* pPred, SpQuantizers q) {
    const auto pred = hadamard<2, 2>(widened<4>(pPred));
    for (int k = 0; k < 4; ++k)
        store<Vek16s>(pSrcDst + k,
                      keep<Vek16s>(requantized(load<Vek16s>(pSrcDst + k), static_cast<Vek32s>(pred[k]), 0, q, 1)));
    inverseChromaDC2x2(pSrcDst, q.qs, h264::flatLevelScale4x4[q.qs % 6][0]);
}

}  // namespace vekvc::plain

#endif
