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

// Counts levels vector by vector: how many are not zero, and the largest scan index of these.
template <class V>
class LevelCounter {
  public:
    // isZero: all ones in the 16-bit lanes of zero levels.
    void add(V isZero, V scanPos) {
        bytes_ += static_cast<Vek32u>(std::popcount(byteMask(isZero) ^ kAllBytes));
        last_ = max(last_, andNot(isZero, scanPos));
    }
    LevelCount result() const {
        i16x8 last;
#if VEKVC_VECTOR256
        if constexpr (!is128<V>)
            last = max(lowHalf(last_), highHalf(last_));
        else
#endif
            last = last_;
        return {static_cast<Vek32s>(bytes_) / 2, maximum(as<u16x8>(last))};
    }

  private:
    static constexpr std::uint32_t kAllBytes = ~0u >> (32 - V::kBytes);
    Vek32u bytes_ = 0;  // of levels that are not zero
    V last_ = zero<V>();
};

// A quantizer's offset and shift as its sums need them, from memory once.
template <class D>
struct Rounding {
    explicit Rounding(const QuantRounding& r) : f(splatFrom<D>(&r.f)), qbits(loadShiftCount<D>(&r.qbits)) {}
    D f;
    ShiftCount<D> qbits;
};
template <class V>
using RoundingOf = Rounding<Vec<Vek32s, V::kBytes / 4>>;

// ---- 16-bit coefficients

// |c| * multiplier + f keeps within 32 bits. -|c| is a signed 16-bit value also where |c| is not; the even and the odd
// lanes go apart, each with a 0 in place of its neighbour.
template <class V>
[[gnu::always_inline]] inline V quantized(V c, V multiplier, const RoundingOf<V>& r) {
    const V negative = min(c, zero<V>() - c);
    const auto even = (r.f - mulAddPairs(blend16<0xAA>(negative, zero<V>()), multiplier)) >> r.qbits,
               odd = (r.f - mulAddPairs(blend16<0x55>(negative, zero<V>()), multiplier)) >> r.qbits;
    return withSign(blend16<0xAA>(as<V>(even), as<V>(odd << 16)), c);
}

[[gnu::always_inline]] inline Levels16 quantized(Levels16 c, const Vek16s* pMultipliers,
                                                 const RoundingOf<Levels16>& r) {
    return quantized(c, load<Levels16>(pMultipliers), r);
}
// The low 16 bits of the levels.
[[gnu::always_inline]] inline Levels16 quantized(Levels16 c, const Vek32u* pMultipliers,
                                                 const RoundingOf<Levels16>& r) {
    const Levels16 none = zero<Levels16>();
#if VEKVC_VECTOR256
    c = swapMiddleQuarters(c);
#endif
    const Levels16 magnitude = abs(c);
    const auto low = [&](Levels16 wide, const Vek32u* multipliers) {
        const Levels32 sum = as<Levels32>(wide) * load<Levels32>(multipliers) + r.f;
        return as<Levels32>(blend16<0xAA>(as<Levels16>(sum >> r.qbits), none));
    };
    const Levels32 first = low(interleaveLow(magnitude, none), pMultipliers),
                   second = low(interleaveHigh(magnitude, none), pMultipliers + Levels32::kBytes / 4);
    const Levels16 levels = withSign(as<Levels16>(narrowU16(first, second)), c);
#if VEKVC_VECTOR256
    return swapMiddleQuarters(levels);
#else
    return levels;
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
[[gnu::always_inline]] inline V quantized32(V c, V multiplier, const Rounding<V>& r) {
    return withSign((abs(c) * multiplier + r.f) >> r.qbits, c);
}

// Quantizes and counts as many coefficients as a vector has 16-bit lanes.
template <class M>
[[gnu::always_inline]] inline void quantize32(Levels32 c0, Levels32 c1, Vek32s* pDst, const M* pMultipliers,
                                              const Rounding<Levels32>& r, const Vek16s* pScanPos,
                                              LevelCounter<Levels16>& counter) {
    constexpr int width = Levels32::kBytes / 4;
    const Levels32 first = quantized32(c0, loadMultipliers32(pMultipliers), r),
                   second = quantized32(c1, loadMultipliers32(pMultipliers + width), r), none = zero<Levels32>();
    store(pDst, first);
    store(pDst + width, second);
    Levels16 isZero = narrowI16(first == none, second == none);
#if VEKVC_VECTOR256
    isZero = swapMiddleQuarters(isZero);
#endif
    counter.add(isZero, load<Levels16>(pScanPos));
}

template <int n, class M>
LevelCount quantize(const Vek32s* pSrc, Vek32s* pDst, const M* pMultipliers, const QuantRounding& rounding,
                    const Vek16s* pScanPos) {
    constexpr int width = Levels32::kBytes / 4;
    const Rounding<Levels32> r(rounding);
    LevelCounter<Levels16> counter;
    for (int k = 0; k < n; k += 2 * width)
        quantize32(load<Levels32>(pSrc + k), load<Levels32>(pSrc + k + width), pDst + k, pMultipliers + k, r,
                   pScanPos + k, counter);
    return counter.result();
}

template <int n, class M>
LevelCount quantize(const Vek16s* pSrc, Vek16s* pDst, const M* pMultipliers, const QuantRounding& rounding,
                    const Vek16s* pScanPos) {
    constexpr int width = Levels16::kBytes / 2;
    const RoundingOf<Levels16> r(rounding);
    LevelCounter<Levels16> counter;
    for (int k = 0; k < n; k += width) {
        const Levels16 levels = quantized(load<Levels16>(pSrc + k), pMultipliers + k, r);
        store(pDst + k, levels);
        counter.add(levels == zero<Levels16>(), load<Levels16>(pScanPos + k));
    }
    return counter.result();
}

#if VEKVC_VECTOR256
// What the lanes of two rows meet in the forward transforms, alike in both halves of a vector or not.
struct CoreTransformLanes {
    // Core transform of the columns: of the sum and of the difference of rows 0 and 3, and of rows 1 and 2.
    Vek16s outerRows[16] = {1, 1, 1, 1, 2, 2, 2, 2, 1, 1, 1, 1, 1, 1, 1, 1};
    Vek16s innerRows[16] = {1, 1, 1, 1, 1, 1, 1, 1, -1, -1, -1, -1, -2, -2, -2, -2};
    // Of the rows: the signs of sums with the reversed rows; where the sums and differences go, their factors.
    Vek16s mirrored[16] = {1, 1, -1, -1, 1, 1, -1, -1, 1, 1, -1, -1, 1, 1, -1, -1};
    Vek16s outer[16] = {1, 2, 1, 1, 1, 2, 1, 1, 1, 2, 1, 1, 1, 2, 1, 1};
    Vek16s inner[16] = {1, 1, -1, -2, 1, 1, -1, -2, 1, 1, -1, -2, 1, 1, -1, -2};
    Vek8u reversed[32] = {}, toOuter[32] = {}, toInner[32] = {};

    constexpr CoreTransformLanes() {
        const auto place = [](Vek8u(&index)[32], int a, int b, int c, int d) {
            const int columns[4] = {a, b, c, d};
            for (int n = 0; n < 32; ++n) index[n] = static_cast<Vek8u>(n / 8 % 2 * 8 + 2 * columns[n / 2 % 4] + n % 2);
        };
        place(reversed, 3, 2, 1, 0);
        place(toOuter, 0, 3, 0, 3);
        place(toInner, 1, 2, 1, 2);
    }
};
inline constexpr CoreTransformLanes kCoreTransformLanes;

// The core transform (8.6.1) of 16 samples, with wrap-around.
[[gnu::always_inline]] inline i16x16 forward4x4(const Vek16s* pSrc) {
    const CoreTransformLanes& l = *opaque(&kCoreTransformLanes);
    const i16x16 outer = loadTwice16<i16x16>(pSrc), inner = swapHalves(loadTwice16<i16x16>(pSrc + 8));
    const i16x16 sums = outer + inner, differences = outer - inner;  // of rows 0 and 3, of rows 1 and 2
    const i16x16 w = joinLow(sums, differences) * load<i16x16>(l.outerRows) +
                     joinHigh(sums, differences) * load<i16x16>(l.innerRows);
    // w0 + w3, w1 + w2, w1 - w2, w0 - w3
    const i16x16 v = shuffleBytes(w, load<u8x32>(l.reversed)) + withSign(w, load<i16x16>(l.mirrored));
    return shuffleBytes(v, load<u8x32>(l.toOuter)) * load<i16x16>(l.outer) +
           shuffleBytes(v, load<u8x32>(l.toInner)) * load<i16x16>(l.inner);
}
#endif

inline LevelCount transformQuantFwd4x4(const Vek16s* pSrc, Vek16s* pDst, const Vek16s* pMultipliers,
                                       const QuantRounding& rounding, const Vek16s* pScanPos) {
    const RoundingOf<Levels16> r(rounding);
    LevelCounter<Levels16> counter;
#if VEKVC_VECTOR256
    const i16x16 levels = quantized(forward4x4(pSrc), pMultipliers, r);
    store(pDst, levels);
    counter.add(levels == zero<i16x16>(), load<i16x16>(pScanPos));
#else
    const Rows<i16x8> w = forward4x4(loadRows(pSrc));
    const Rows<i16x8> levels = {quantized(w.top, pMultipliers, r), quantized(w.bottom, pMultipliers + 8, r)};
    storeRows(pDst, levels);
    counter.add(levels.top == zero<i16x8>(), load<i16x8>(pScanPos));
    counter.add(levels.bottom == zero<i16x8>(), load<i16x8>(pScanPos + 8));
#endif
    return counter.result();
}

inline LevelCount transformQuantFwd4x4(const Vek16s* pSrc, Vek32s* pDst, const Vek16s* pMultipliers,
                                       const QuantRounding& rounding, const Vek16s* pScanPos) {
    i32x4 w[4];
    for (int i = 0; i < 4; ++i) w[i] = loadWide4(pSrc + 4 * i);
    forward4x4(w);
    const Rounding<Levels32> r(rounding);
    LevelCounter<Levels16> counter;
#if VEKVC_VECTOR256
    quantize32(join(w[0], w[1]), join(w[2], w[3]), pDst, pMultipliers, r, pScanPos, counter);
#else
    quantize32(w[0], w[1], pDst, pMultipliers, r, pScanPos, counter);
    quantize32(w[2], w[3], pDst + 8, pMultipliers + 8, r, pScanPos + 8, counter);
#endif
    return counter.result();
}

// ---- DC blocks

#if VEKVC_VECTOR256
// The Hadamard transform of 16 values, halved, with wrap-around.
[[gnu::always_inline]] inline i16x16 halfHadamard4x4(i16x16 c) {
    // x0 + x1, x2 + x3 of each row, and the differences; then x0 + x1, x0 - x1, x2 + x3, x2 - x3 of rows 0 and 2 and of
    // rows 1 and 3.
    const i32x8 sums = mulAddPairs(c, constant<i16x16, 1>()),
                differences = mulAddPairs(c, as<i16x16>(constant<i32x8, 1 - 65536>()));
    const i32x8 even = interleaveLow(sums, differences), odd = interleaveHigh(sums, differences);
    const i32x8 a = even + odd, b = even - odd;  // rows 0 + 1 and 2 + 3, 0 - 1 and 2 - 3
    const i32x8 first = joinLowHalves(a, b), second = joinHighHalves(a, b);
    const i32x8 f03 = first + second, f12 = first - second;  // rows 0 and 3, 1 and 2, of the result
    const i32x8 left = joinLow(f03, f12), right = joinHigh(f03, f12);
    // Columns 0, 3 and 1, 2 of rows 0, 1 and 3, 2; of each sum bits 1 to 16.
    const i16x16 mixed = blend16<0xAA>(as<i16x16>((left + right) >> 1), as<i16x16>((left - right) << 15));
    return shuffleBytes(mixed, lanes<u8x32>(0, 1, 2, 3, 6, 7, 4, 5, 8, 9, 10, 11, 14, 15, 12, 13,  //
                                            8, 9, 10, 11, 14, 15, 12, 13, 0, 1, 2, 3, 6, 7, 4, 5));
}
#endif

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
#if VEKVC_VECTOR256
        store(pSrcDst, halfHadamard4x4(load<i16x16>(pSrcDst)));
#else
        i32x4 w[4];
        for (int i = 0; i < 4; ++i) w[i] = loadWide4(pSrcDst + 4 * i);
        hadamard4(w);
        store(pSrcDst, narrowWrap(w[0] >> 1, w[1] >> 1));
        store(pSrcDst + 8, narrowWrap(w[2] >> 1, w[3] >> 1));
#endif
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
LevelCount quantizeDC(const C* pSrc, C* pDst, Vek32s multiplier, const QuantRounding& rounding,
                      const Vek16s* pScanPos) {
    const Rounding<i32x4> r(rounding);
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
    return counter.result();
}
#if VEKVC_VECTOR256
template <>
inline LevelCount quantizeDC<16>(const Vek16s* pSrc, Vek16s* pDst, Vek32s multiplier, const QuantRounding& rounding,
                                 const Vek16s* pScanPos) {
    const i16x16 levels = quantized(load<i16x16>(pSrc), splat<i16x16>(multiplier), RoundingOf<i16x16>(rounding));
    store(pDst, levels);
    LevelCounter<i16x16> counter;
    counter.add(levels == zero<i16x16>(), load<i16x16>(pScanPos));
    return counter.result();
}
#endif

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
    const QuantRounding rounding = {15 + dcShift + q.qs / 6, 1 << (14 + dcShift + q.qs / 6)};
    const Rounding<i32x4> nearest(rounding);
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
