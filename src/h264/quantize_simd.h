// Fast forms of H.264 quantization.
#ifndef VEKVC_H264_QUANTIZE_SIMD_H
#define VEKVC_H264_QUANTIZE_SIMD_H

#include <bit>

#include "h264/quantize_plain.h"
#include "h264/transform_dc_simd.h"

namespace vekvc::simd {

using plain::LevelCount;
using plain::QuantRounding;
using plain::SpQuantizers;

#if VEKVC_VECTOR256
using Levels16 = i16x16;
using Levels32 = i32x8;
#else
using Levels16 = i16x8;
using Levels32 = i32x4;
#endif

// Counts levels vector by vector: how many are zero, and the largest scan index of the others.
template <class V>
class LevelCounter {
  public:
    // isZero: all ones in the 16-bit lanes of zero levels.
    void add(V isZero, V scanPos) {
        zeros_ += std::popcount(byteMask(isZero)) / 2;
        last_ = max(last_, andNot(isZero, scanPos));
    }
    LevelCount result(int lanes) const {
        i16x8 last;
#if VEKVC_VECTOR256
        if constexpr (!is128<V>)
            last = max(lowHalf(last_), highHalf(last_));
        else
#endif
            last = last_;
        const auto ones = zero<u16x8>() == zero<u16x8>();
        return {lanes - zeros_, minimum(as<u16x8>(last) ^ ones).value ^ 0xFFFF};
    }

  private:
    int zeros_ = 0;
    V last_ = zero<V>();
};

// ---- 16-bit coefficients

// |c| * multiplier + f keeps within 32 bits. -|c| is a signed 16-bit value also where |c| is not; the even and the odd
// lanes go apart, each with a 0 in place of its neighbour.
template <class V>
[[gnu::always_inline]] inline V quantized(V c, V multiplier, QuantRounding r) {
    using D = Vec<Vek32s, V::kBytes / 4>;
    const V negative = min(c, zero<V>() - c);
    const D f = splat<D>(r.f);
    const D even = (f - mulAddPairs(blend16<0xAA>(negative, zero<V>()), multiplier)) >> r.qbits,
            odd = (f - mulAddPairs(blend16<0x55>(negative, zero<V>()), multiplier)) >> r.qbits;
    return withSign(blend16<0xAA>(as<V>(even), as<V>(odd << 16)), c);
}

// 32-bit multipliers, from memory.
[[gnu::always_inline]] inline Levels16 quantized(Levels16 c, const Vek32u* pMultipliers, QuantRounding r) {
    const auto magnitude = abs(c);
    const auto product = [&](auto lanes, int k) {
        const auto m = load<decltype(lanes)>(pMultipliers + k);
        return (lanes * m + splat<decltype(lanes)>(r.f)) >> r.qbits;
    };
#if VEKVC_VECTOR256
    const i32x8 first = product(widen(as<u16x8>(lowHalf(magnitude))), 0),
                second = product(widen(as<u16x8>(highHalf(magnitude))), 8);
    return withSign(swapMiddleQuarters(narrowWrap(first, second)), c);
#else
    const i32x4 first = product(widenLow(as<u16x8>(magnitude)), 0),
                second = product(widenHigh(as<u16x8>(magnitude)), 4);
    return withSign(narrowWrap(first, second), c);
#endif
}

// ---- 32-bit coefficients

[[gnu::always_inline]] inline Levels32 loadMultipliers32(const Vek32u* p) { return load<Levels32>(p); }
[[gnu::always_inline]] inline Levels32 loadMultipliers32(const Vek16s* p) {
#if VEKVC_VECTOR256
    return widen(load<i16x8>(p));
#else
    return loadWide4(p);
#endif
}

template <class V>
[[gnu::always_inline]] inline V quantized32(V c, V multiplier, QuantRounding r) {
    return withSign((abs(c) * multiplier + splat<V>(r.f)) >> r.qbits, c);
}

// Quantizes 16 coefficients held in four vectors of four or two of eight.
template <int n, class M>
LevelCount quantize(const Vek32s* pSrc, Vek32s* pDst, const M* pMultipliers, QuantRounding r, const Vek16s* pScanPos) {
    constexpr int width = Levels32::kBytes / 4;
    LevelCounter<Levels16> counter;
    for (int k = 0; k < n; k += 2 * width) {
        const Levels32 first = quantized32(load<Levels32>(pSrc + k), loadMultipliers32(pMultipliers + k), r);
        const Levels32 second =
            quantized32(load<Levels32>(pSrc + k + width), loadMultipliers32(pMultipliers + k + width), r);
        store(pDst + k, first);
        store(pDst + k + width, second);
        const Levels32 none = zero<Levels32>();
        Levels16 isZero = narrowI16(first == none, second == none);
#if VEKVC_VECTOR256
        isZero = swapMiddleQuarters(isZero);
#endif
        counter.add(isZero, load<Levels16>(pScanPos + k));
    }
    return counter.result(n);
}

template <int n, class M>
LevelCount quantize(const Vek16s* pSrc, Vek16s* pDst, const M* pMultipliers, QuantRounding r, const Vek16s* pScanPos) {
    constexpr int width = Levels16::kBytes / 2;
    LevelCounter<Levels16> counter;
    for (int k = 0; k < n; k += width) {
        const Levels16 c = load<Levels16>(pSrc + k);
        Levels16 levels;
        if constexpr (sizeof(M) == 2)
            levels = quantized(c, load<Levels16>(pMultipliers + k), r);
        else
            levels = quantized(c, pMultipliers + k, r);
        store(pDst + k, levels);
        counter.add(levels == zero<Levels16>(), load<Levels16>(pScanPos + k));
    }
    return counter.result(n);
}

#if VEKVC_VECTOR256
// The core transform's matrix (8.6.1), and its factors for sums of products of neighbouring lanes.
inline constexpr Vek16s kForwardMatrix[4][4] = {{1, 1, 1, 1}, {2, 1, -1, -2}, {1, -1, -1, 1}, {1, -2, 2, -1}};
struct ForwardFactors {
    // [pair]: of the samples 0 and 1, 2 and 3 of a row.
    alignas(32) Vek16s rows[2][16] = {};
    // [i][pair]: of the values 0 and 1, 2 and 3 of a column, to rows 2i and 2i + 1.
    alignas(32) Vek16s columns[2][2][16] = {};

    constexpr ForwardFactors() {
        for (int pair = 0; pair < 2; ++pair)
            for (int n = 0; n < 16; ++n) {
                const int from = 2 * pair + n % 2;
                rows[pair][n] = kForwardMatrix[n / 2 % 4][from];
                for (int i = 0; i < 2; ++i) columns[i][pair][n] = kForwardMatrix[2 * i + n / 8][from];
            }
    }
};
inline constexpr ForwardFactors kForwardFactors;

// The core transform of 16 samples: rows 0 and 1 in the halves of one vector, rows 2 and 3 in those of the other, each
// coefficient in the low 16 bits of a lane.
[[gnu::always_inline]] inline Rows<i32x8> forwardInWideLanes(const Vek16s* pSrc) {
    const i32x8 samples = load<i32x8>(pSrc);  // lanes 0 and 1: rows 0 and 2; lanes 2 and 3: rows 1 and 3
    const auto sums = [](i32x8 a, i32x8 b, const Vek16s(&factors)[2][16]) {
        return mulAddPairs(as<i16x16>(a), load<i16x16>(factors[0])) +
               mulAddPairs(as<i16x16>(b), load<i16x16>(factors[1]));
    };
    const i32x8 even = sums(shuffle32<0, 0, 0, 0>(samples), shuffle32<1, 1, 1, 1>(samples), kForwardFactors.rows);
    const i32x8 odd = sums(shuffle32<2, 2, 2, 2>(samples), shuffle32<3, 3, 3, 3>(samples), kForwardFactors.rows);
    const i32x8 pairs = as<i32x8>(blend16<0xAA>(as<i16x16>(even), as<i16x16>(odd << 16)));
    const i32x8 upper = joinLowHalves(pairs, pairs), lower = joinHighHalves(pairs, pairs);
    return {sums(upper, lower, kForwardFactors.columns[0]), sums(upper, lower, kForwardFactors.columns[1])};
}
#endif

inline LevelCount transformQuantFwd4x4(const Vek16s* pSrc, Vek16s* pDst, const Vek16s* pMultipliers, QuantRounding r,
                                       const Vek16s* pScanPos) {
#if VEKVC_VECTOR256
    const Rows<i32x8> w = forwardInWideLanes(pSrc);
    // As in quantized(); a lane's upper half meets the 0 above a multiplier.
    const i32x8 f = splat<i32x8>(r.f);
    const auto magnitudes = [&](i32x8 c, const Vek16s* multipliers) {
        const i16x16 negative = min(as<i16x16>(c), zero<i16x16>() - as<i16x16>(c));
        return (f - mulAddPairs(negative, as<i16x16>(widen(load<u16x8>(multipliers))))) >> r.qbits;
    };
    // Rows 0 and 2 and rows 1 and 3 lane by lane, then in order.
    const auto together = [](i32x8 top, i32x8 bottom) {
        return blend16<0xAA>(as<i16x16>(top), as<i16x16>(bottom << 16));
    };
    const i16x16 mixed = withSign(together(magnitudes(w.top, pMultipliers), magnitudes(w.bottom, pMultipliers + 8)),
                                  together(w.top, w.bottom));
    const u8x32 order = lanes<u8x32>(0, 1, 4, 5, 8, 9, 12, 13, 2, 3, 6, 7, 10, 11, 14, 15,  //
                                     0, 1, 4, 5, 8, 9, 12, 13, 2, 3, 6, 7, 10, 11, 14, 15);
    const i16x16 levels = swapMiddleQuarters(shuffleBytes(mixed, order));
    store(pDst, levels);
    LevelCounter<Levels16> counter;
    counter.add(levels == zero<i16x16>(), load<i16x16>(pScanPos));
    return counter.result(16);
#else
    const Rows<i16x8> w = forward4x4(loadRows(pSrc));
    const Rows<i16x8> levels = {quantized(w.top, load<i16x8>(pMultipliers), r),
                                quantized(w.bottom, load<i16x8>(pMultipliers + 8), r)};
    storeRows(pDst, levels);
    LevelCounter<Levels16> counter;
    counter.add(levels.top == zero<i16x8>(), load<i16x8>(pScanPos));
    counter.add(levels.bottom == zero<i16x8>(), load<i16x8>(pScanPos + 8));
    return counter.result(16);
#endif
}

inline LevelCount transformQuantFwd4x4(const Vek16s* pSrc, Vek32s* pDst, const Vek16s* pMultipliers, QuantRounding r,
                                       const Vek16s* pScanPos) {
    i32x4 w[4];
    for (int i = 0; i < 4; ++i) w[i] = loadWide4(pSrc + 4 * i);
    forward4x4(w);
    for (int i = 0; i < 4; ++i) store(pDst + 4 * i, w[i]);
    return quantize<16>(pDst, pDst, pMultipliers, r, pScanPos);
}

// ---- DC blocks

template <int rows, int columns, class C>
void forwardDC(C* pSrcDst) {
    if constexpr (rows == 2) {
        storeWrap4(pSrcDst, hadamard2x2(pSrcDst));
    } else if constexpr (columns == 2 && sizeof(C) == 2) {
        store(pSrcDst, hadamard2x4(load<i16x8>(pSrcDst)));
    } else if constexpr (columns == 2) {
        const Rows<i32x4> f = hadamard2x4({load<i32x4>(pSrcDst), load<i32x4>(pSrcDst + 4)});
        store(pSrcDst, f.top);
        store(pSrcDst + 4, f.bottom);
    } else if constexpr (sizeof(C) == 2) {
        i32x4 w[4];
        for (int i = 0; i < 4; ++i) w[i] = loadWide4(pSrcDst + 4 * i);
        hadamard4(w);
        store(pSrcDst, narrowWrap(w[0] >> 1, w[1] >> 1));
        store(pSrcDst + 8, narrowWrap(w[2] >> 1, w[3] >> 1));
    } else {
        // The sums need more than 32 bits, but not those of the values' halves and of the bits that the halves lack: of
        // c = 2h + l, half the transform is the transform of h and half that of l.
        i32x4 h[4], l[4];
        for (int i = 0; i < 4; ++i) {
            const i32x4 c = load<i32x4>(pSrcDst + 4 * i);
            h[i] = c >> 1;
            l[i] = c & constant<i32x4, 1>();
        }
        hadamard4(h);
        hadamard4(l);
        for (int i = 0; i < 4; ++i) store(pSrcDst + 4 * i, h[i] + (l[i] >> 1));
    }
}

template <int n, class C>
LevelCount quantizeDC(const C* pSrc, C* pDst, Vek32s multiplier, QuantRounding r, const Vek16s* pScanPos) {
    LevelCounter<i16x8> counter;
    constexpr int step = n < 8 ? n : 8;
    for (int k = 0; k < n; k += step) {
        i16x8 isZero;
        if constexpr (sizeof(C) == 2) {
            const i16x8 levels = quantized(loadBytes<i16x8, 2 * step>(pSrc + k), splat<i16x8>(multiplier), r);
            storeBytes<2 * step>(pDst + k, levels);
            isZero = levels == zero<i16x8>();
        } else {
            i32x4 levels[2] = {quantized32(load<i32x4>(pSrc + k), splat<i32x4>(multiplier), r), zero<i32x4>()};
            if constexpr (step == 8) levels[1] = quantized32(load<i32x4>(pSrc + k + 4), splat<i32x4>(multiplier), r);
            for (int i = 0; i < step; i += 4) store(pDst + k + i, levels[i / 4]);
            isZero = narrowI16(levels[0] == zero<i32x4>(), levels[1] == zero<i32x4>());
        }
        // Raster order is scan order where no scan is given.
        counter.add(isZero, pScanPos ? load<i16x8>(pScanPos + k) : lanes<i16x8>(0, 1, 2, 3, 4, 5, 6, 7));
    }
    return counter.result(n < 8 ? 8 : n);
}

// ---- scales

template <int n>
void genScaleLevel(const Vek8u* pSrc, Vek16s* pDstInv, Vek16s* pDstFwd, int qpMod6) {
    const auto weights = plain::loadValues<n>(pSrc);
    const Vek16s* norms = n == 16 ? h264::flatMultipliers4x4[qpMod6].data() : h264::normAdjusts8x8[qpMod6].data();
    const Vek16s* multipliers =
        n == 16 ? h264::forwardMultipliers4x4[qpMod6].data() : h264::forwardMultipliers8x8[qpMod6].data();
    for (int k = 0; k < n; k += 8) {
        const i16x8 weight = widenLow(loadBytes<u8x16, 8>(&weights[k]));
        store(pDstInv + k, weight * load<i16x8>(norms + k));
        // A quotient of 14 bits by 8 bits that is not whole lies further from the next whole number than a float errs,
        // whatever the rounding mode.
        const i16x8 dividend = load<i16x8>(multipliers + k) + (weight >> 1), divisor = max(weight, splat<i16x8>(1));
        const i16x8 quotient = narrowI16(truncate(toFloat(widenLow(dividend)) / toFloat(widenLow(divisor))),
                                         truncate(toFloat(widenHigh(dividend)) / toFloat(widenHigh(divisor))));
        store(pDstFwd + k, andNot(weight == zero<i16x8>(), quotient));
    }
}

// ---- SP and SI slices (8.6)

// Requantized levels (see plain::requantized); `weights` are normAdjust4x4 * A of 8.6.1.
[[gnu::always_inline]] inline i32x4 requantized(i32x4 level, i32x4 pred, i32x4 multiplier, i32x4 weights,
                                                SpQuantizers q, int dcShift) {
    const QuantRounding nearest = {15 + dcShift + q.qs / 6, 1 << (14 + dcShift + q.qs / 6)};
    if (q.isSwitching) return level + quantized32(pred, multiplier, nearest);
    return quantized32(pred + ((level * weights << q.qp / 6) >> (6 - dcShift)), multiplier, nearest);
}

inline void dequantTransformResidualSISP(Vek16s* pSrcDst, const Vek16s* pPred, const Vek16s* pDC, SpQuantizers q) {
    const auto row = [&](int k) {
        return requantized(loadWide4(pSrcDst + k), loadWide4(pPred + k),
                           loadWide4(&h264::forwardMultipliers4x4[q.qs % 6][k]),
                           loadWide4(&h264::spWeights4x4[q.qp % 6][k]), q, 0);
    };
    const Scaler<i16x8> scaler = makeScaler(nullptr, q.qs);
    Rows<i16x8> w = {scaler.top(narrowWrap(row(0), row(4))), scaler.bottom(narrowWrap(row(8), row(12)))};
    if (pDC) w = withDC(w, load<Vek16s>(pDC));
    w = swapBottom(inverse4x4(w));
    storeRows(pSrcDst, {rounded(w.top), rounded(w.bottom)});
}

inline void dequantChromaDCSISP(Vek16s* pSrcDst, const Vek16s* pPred, SpQuantizers q) {
    storeWrap4(pSrcDst, requantized(loadWide4(pSrcDst), hadamard2x2(pPred),
                                    splat<i32x4>(h264::forwardMultipliers4x4[q.qs % 6][0]),
                                    splat<i32x4>(h264::spWeights4x4[q.qp % 6][0]), q, 1));
    inverseChromaDC2x2(pSrcDst, q.qs, h264::flatLevelScale4x4[q.qs % 6][0]);
}

}  // namespace vekvc::simd

#endif
