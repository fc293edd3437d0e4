// Forward quantization of 16 coefficients at once.
#ifndef VEKVC_H264_QUANTIZE_SIMD512_H
#define VEKVC_H264_QUANTIZE_SIMD512_H

#include "h264/quantize_simd.h"

namespace vekvc::simd512 {

using simd::LevelCount;
using simd::quantized;
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
        return {levels_, maximum(as<u16x8>(last))};
    }

  private:
    int levels_ = 0;
    i16x16 last_ = zero<i16x16>();
};

using Rounding16 = simd::Rounding<i32x16>;

// The low 16 bits of the levels.
[[gnu::always_inline]] inline i16x16 quantized(i16x16 c, const Vek32u* pMultipliers, const Rounding16& r) {
    const i32x16 magnitude = widen(as<u16x16>(abs(c)));
    return withSign(lowWords((magnitude * load<i32x16>(pMultipliers) + r.f) >> r.qbits), c);
}

template <int n, class M>
[[gnu::always_inline]] inline LevelCount quantize(const Vek16s* pSrc, Vek16s* pDst, const M* pMultipliers,
                                                  const QuantRounding& rounding, const Vek16s* pScanPos) {
    using D = std::conditional_t<sizeof(M) == 2, i32x8, i32x16>;
    const simd::Rounding<D> r(rounding);
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
                                                  const QuantRounding& rounding, const Vek16s* pScanPos) {
    const Rounding16 r(rounding);
    LevelCounter counter;
    for (int k = 0; k < n; k += 16) {
        const i32x16 c = load<i32x16>(pSrc + k);
        const i32x16 magnitude = (abs(c) * loadMultipliers(pMultipliers + k) + r.f) >> r.qbits;
        const i32x16 levels = negateLanes(magnitude, negativeLanes(c));
        store(pDst + k, levels);
        counter.add(nonZeroLanes(levels), pScanPos + k);
    }
    return counter.result();
}

}  // namespace vekvc::simd512

#endif
