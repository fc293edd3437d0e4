// Fast forms of the prediction of intra coefficients.
#ifndef VEKVC_MPEG4_PREDICT_INTRA_SIMD_H
#define VEKVC_MPEG4_PREDICT_INTRA_SIMD_H

#include "core/simd.h"
#include "mpeg4/predict_intra_plain.h"

namespace vekvc::simd {

// (pred * predQP) // QP of four products. The quotient in single precision errs by less than 1 while it is below 2^16,
// whatever the rounding mode: one correction makes it exact. A larger one leaves -2048..2047 whatever it is added to.
[[gnu::always_inline]] inline i32x4 rescale(i32x4 product, i32x4 QP, i32x4 halfQP, f32x4 reciprocal) {
    const i32x4 n = abs(product) + halfQP;
    i32x4 quotient = truncate(toFloat(n) * reciprocal);
    const i32x4 rest = n - quotient * QP;
    quotient = quotient + (rest < zero<i32x4>());         // - 1
    quotient = quotient - (rest > QP - splat<i32x4>(1));  // + 1
    return withSign(quotient, product);
}

inline void predictIntraMpeg4(Vek16s* block, const Vek16s* pPred, Vek32s predQP, Vek32s QP, Vek32s dc, bool fromAbove,
                              bool acPrediction) {
    const Vek32s first = clip3(-2048, 2047, load<Vek16s>(block) + mpeg4::divideRound(load<Vek16s>(pPred), dc));
    if (acPrediction) {
        const auto pred = load<i16x8>(pPred);
        i32x4 low = widenLow(pred), high = widenHigh(pred);
        if (predQP != QP) {
            const auto qp = splat<i32x4>(QP), halfQP = splat<i32x4>(QP / 2), scale = splat<i32x4>(predQP);
            const auto reciprocal = splatFloat(1.0f / static_cast<float>(QP));
            low = rescale(low * scale, qp, halfQP, reciprocal);
            high = rescale(high * scale, qp, halfQP, reciprocal);
        }
        Vek16s column[8] = {};
        if (!fromAbove)
            for (int i = 1; i < 8; ++i) column[i] = load<Vek16s>(block + 8 * i);
        const auto levels = load<i16x8>(fromAbove ? block : column);
        const auto limit = [](i16x8 sums) { return min(max(sums, splat<i16x8>(-2048)), splat<i16x8>(2047)); };
        const auto sums = limit(narrowI16(widenLow(levels) + low, widenHigh(levels) + high));
        if (fromAbove) {
            store(block, sums);
        } else {
            store(column, sums);
            for (int i = 1; i < 8; ++i) store(block + 8 * i, column[i]);
        }
    }
    store(block, static_cast<Vek16s>(first));
}

// Sums saturate at 16 bits, far beyond the limits that follow.
inline void predictIntraAic(Vek16s* block, const Vek16s* pLeft, const Vek16s* pAbove, Vek32s intraMode) {
    const bool left = pLeft != nullptr && intraMode != 1, above = pAbove != nullptr && intraMode != 2;
    Vek32s p = 1024;
    if (left && above)
        p = (load<Vek16s>(pLeft) + load<Vek16s>(pAbove)) / 2;
    else if (left || above)
        p = load<Vek16s>(left ? pLeft : pAbove);
    const Vek32s dc = clip3(0, 2047, (load<Vek16s>(block) + p) | 1);  // made odd
    const auto limit = [](i16x8 sums) { return min(max(sums, splat<i16x8>(-2048)), splat<i16x8>(2047)); };
    i16x8 row = load<i16x8>(block);
    if (intraMode == 1 && above) row = addSat(row, load<i16x8>(pAbove));
    store(block, limit(row));
    const bool fromLeft = intraMode == 2 && left;
    for (int y = 1; y < 8; ++y) {
        row = load<i16x8>(block + 8 * y);
        if (fromLeft) row = addSat(row, loadBytes<i16x8, 2>(pLeft + y));
        store(block + 8 * y, limit(row));
    }
    store(block, static_cast<Vek16s>(dc));
}

}  // namespace vekvc::simd

#endif
