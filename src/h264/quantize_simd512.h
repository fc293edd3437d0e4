// Forward quantization of 16 coefficients at once.
#ifndef VEKVC_H264_QUANTIZE_SIMD512_H
#define VEKVC_H264_QUANTIZE_SIMD512_H

#include "h264/quantize_simd.h"

namespace vekvc::simd512 {

using simd::LevelCount;
using simd::QuantRounding;

// Counts levels 16 at a time; see simd::LevelCounter.
class LevelCounter {
  public:
    void add(Vek16u nonZero, const Vek16s* pScanPos) {
        levels_ += std::popcount(nonZero);
        last_ = max(last_, loadLanes<i16x16>(pScanPos, nonZero));
    }
    LevelCount result() const {
        const i16x8 last = max(lowHalf(last_), highHalf(last_));
        const auto ones = zero<u16x8>() == zero<u16x8>();
        return {levels_, minimum(as<u16x8>(last) ^ ones).value ^ 0xFFFF};
    }

  private:
    int levels_ = 0;
    i16x16 last_ = zero<i16x16>();
};

[[gnu::always_inline]] inline i32x16 quantizedMagnitudes(i32x16 c, i32x16 multipliers, QuantRounding r) {
    return shiftRight(c * multipliers + splat<i32x16>(r.f), splat<i32x16>(r.qbits));
}

[[gnu::always_inline]] inline i16x16 quantized(i16x16 c, const Vek16s* pMultipliers, QuantRounding r) {
    return simd::quantized(c, load<i16x16>(pMultipliers), r);
}
[[gnu::always_inline]] inline i16x16 quantized(i16x16 c, const Vek32u* pMultipliers, QuantRounding r) {
    const i32x16 magnitude = widen(as<u16x16>(abs(c)));
    return withSign(lowWords(quantizedMagnitudes(magnitude, load<i32x16>(pMultipliers), r)), c);
}

template <int n, class M>
[[gnu::always_inline]] inline LevelCount quantize(const Vek16s* pSrc, Vek16s* pDst, const M* pMultipliers,
                                                  QuantRounding r, const Vek16s* pScanPos) {
    LevelCounter counter;
    for (int k = 0; k < n; k += 16) {
        const i16x16 levels = quantized(load<i16x16>(pSrc + k), pMultipliers + k, r);
        store(pDst + k, levels);
        counter.add(nonZeroLanes(levels), pScanPos + k);
    }
    return counter.result();
}

[[gnu::always_inline]] inline i32x16 loadMultipliers(const Vek32u* p) { return load<i32x16>(p); }
[[gnu::always_inline]] inline i32x16 loadMultipliers(const Vek16s* p) { return widen(load<i16x16>(p)); }

template <int n, class M>
[[gnu::always_inline]] inline LevelCount quantize(const Vek32s* pSrc, Vek32s* pDst, const M* pMultipliers,
                                                  QuantRounding r, const Vek16s* pScanPos) {
    LevelCounter counter;
    for (int k = 0; k < n; k += 16) {
        const i32x16 c = load<i32x16>(pSrc + k);
        const i32x16 magnitude = quantizedMagnitudes(abs(c), loadMultipliers(pMultipliers + k), r);
        const i32x16 levels = negateLanes(magnitude, negativeLanes(c));
        store(pDst + k, levels);
        counter.add(nonZeroLanes(levels), pScanPos + k);
    }
    return counter.result();
}

// The lanes and factors of the core transform (8.6.1) as sums of products of neighbouring 16-bit lanes. Lane 4 * i + k
// of 32 bits is row i, column k of the result.
struct ForwardTransform {
    alignas(64) Vek32s rowPairs[2][16] = {};     // stage 1: two of row i's samples
    alignas(64) Vek16u columnPairs[2][32] = {};  // stage 2: two of column k's values
    alignas(64) Vek16s rowFactors[2][32] = {}, columnFactors[2][32] = {};

    constexpr ForwardTransform() {
        for (int pair = 0; pair < 2; ++pair)
            for (int i = 0; i < 4; ++i)
                for (int k = 0; k < 4; ++k) {
                    const int lane = 4 * i + k;
                    rowPairs[pair][lane] = 2 * i + pair;
                    for (int n = 0; n < 2; ++n) {
                        const int from = 2 * pair + n;
                        columnPairs[pair][2 * lane + n] = static_cast<Vek16u>(2 * (4 * from + k));
                        rowFactors[pair][2 * lane + n] = simd::kForwardMatrix[k][from];
                        columnFactors[pair][2 * lane + n] = simd::kForwardMatrix[i][from];
                    }
                }
    }
};
inline constexpr ForwardTransform kForwardTransform;

// The low 16 bits of each 32-bit lane are the coefficient.
[[gnu::always_inline]] inline i16x32 forward4x4(i16x16 samples) {
    const auto sums = [](i16x32 a, i16x32 b, const Vek16s(&factors)[2][32]) {
        return mulAddPairs(a, load<i16x32>(factors[0])) + mulAddPairs(b, load<i16x32>(factors[1]));
    };
    const auto rowPair = [&](int pair) {
        return as<i16x32>(permute(inLowHalf(as<i32x8>(samples)), load<i32x16>(kForwardTransform.rowPairs[pair])));
    };
    const i16x32 rows = as<i16x32>(sums(rowPair(0), rowPair(1), kForwardTransform.rowFactors));
    const auto columnPair = [&](int pair) { return permute(rows, load<u16x32>(kForwardTransform.columnPairs[pair])); };
    return as<i16x32>(sums(columnPair(0), columnPair(1), kForwardTransform.columnFactors));
}

inline LevelCount transformQuantFwd4x4(const Vek16s* pSrc, Vek16s* pDst, const Vek16s* pMultipliers, QuantRounding r,
                                       const Vek16s* pScanPos) {
    const i16x32 c = forward4x4(load<i16x16>(pSrc));
    // As in simd::quantized: the magnitudes negated, and a 0 as the multiplier of each lane's upper half.
    const i32x16 products = mulAddPairs(min(c, zero<i16x32>() - c), as<i16x32>(widen(load<u16x16>(pMultipliers))));
    const i32x16 magnitude = shiftRight(splat<i32x16>(r.f) - products, splat<i32x16>(r.qbits));
    const i16x16 levels = lowWords(negateLanes(magnitude, negativeLanes(as<i32x16>(c) << 16)));
    store(pDst, levels);
    LevelCounter counter;
    counter.add(nonZeroLanes(levels), pScanPos);
    return counter.result();
}

inline LevelCount transformQuantFwd4x4(const Vek16s* pSrc, Vek32s* pDst, const Vek16s* pMultipliers, QuantRounding r,
                                       const Vek16s* pScanPos) {
    i32x4 w[4];
    for (int i = 0; i < 4; ++i) w[i] = simd::loadWide4(pSrc + 4 * i);
    simd::forward4x4(w);
    for (int i = 0; i < 4; ++i) store(pDst + 4 * i, w[i]);
    return quantize<16>(pDst, pDst, pMultipliers, r, pScanPos);
}

}  // namespace vekvc::simd512

#endif
