// Quantization of the transform coefficients (SMPTE 421M 8.1.3). The fast form of quantize_plain.h.
#ifndef VEKVC_VC1_QUANTIZE_SIMD_H
#define VEKVC_VC1_QUANTIZE_SIMD_H

#include "core/reciprocal.h"
#include "core/simd.h"
#include "vc1/quantize_plain.h"

namespace vekvc::simd {

// Rows of 8, or two rows of 4, at a time; a single last row of 4 comes with four zeros. Calls use(vector, isFirst) and
// stores what it returns.
template <class Use>
[[gnu::always_inline]] inline void forRows(MutableBlock<Vek16s> block, VekiSize size, Use&& use) {
    std::uint8_t* row = reinterpret_cast<std::uint8_t*>(block.base);
    int rows = size.height;
    if (size.width == 8) {
        store(row, use(load<i16x8>(row), true));
        while (--rows > 0) {
            row += block.step;
            store(row, use(load<i16x8>(row), false));
        }
        return;
    }
    bool first = true;
    for (; rows > 1; rows -= 2, row += 2 * block.step, first = false)
        storePair8(row, row + block.step, use(loadPair8<i16x8>(row, row + block.step), first));
    if (rows == 1) storeBytes<8>(row, use(loadBytes<i16x8, 8>(row), first));
}

template <bool intra, bool uniform>
void dequantizeVc1(MutableBlock<Vek16s> block, VekiSize size, const Vc1Quantizer& q) {
    const i16x8 step = splat<i16x8>(q.step), quant = splat<i16x8>(q.quant);
    const i16x8 firstStep = blend16<1>(step, splat<i16x8>(q.dcStep)), firstQuant = blend16<1>(quant, zero<i16x8>());
    forRows(block, size, [&](i16x8 level, bool isFirst) {
        const bool withDc = intra && isFirst;
        const i16x8 product = level * (withDc ? firstStep : step);
        return uniform ? product : product + withSign(withDc ? firstQuant : quant, level);
    });
}

// Steps up to 63, dividends up to 32768 + 62.
inline constexpr Reciprocals<63, 32830> kReciprocalsVc1;
static_assert(kReciprocalsVc1.proven);

template <bool intra, bool uniform>
Vek32s quantizeVc1(MutableBlock<Vek16s> block, VekiSize size, const Vc1Quantizer& q, int offset) {
    const Reciprocal& r = kReciprocalsVc1.of(q.step);
    const u16x8 factor = splat<u16x8>(r.factor), added = splat<u16x8>(offset), dead = splat<u16x8>(q.quant);
    const auto c = static_cast<Vek32s>(magnitude(load<Vek16s>(block.base)));
    const Reciprocal& rDc = kReciprocalsVc1.of(q.dcStep);
    const Vek32u dcLevel = (static_cast<Vek32u>(c + q.dcStep / 2) * rDc.factor) >> (16 + rDc.shift);
    i16x8 zeros = zero<i16x8>();  // counts them, negative
    forRows(block, size, [&](i16x8 coefficient, bool isFirst) {
        u16x8 n = as<u16x8>(abs(coefficient)) + added;
        if constexpr (!uniform) n = subSat(n, dead);  // what is below 0 gives level 0 as well
        u16x8 level = mulHigh(n, factor) >> r.shift;
        i16x8 isZero = as<i16x8>(level == zero<u16x8>());
        if (intra && isFirst) {
            level = blend16<1>(level, splat<u16x8>(dcLevel));
            isZero = blend16<1>(isZero, splat<i16x8>(-1));  // does not count
        }
        zeros += isZero;
        return withSign(as<i16x8>(level), coefficient);
    });
    const bool half = size.width == 4 && size.height % 2 != 0;  // the last row came with four zeros
    return size.width * size.height + (half ? 4 : 0) + sumLanes(zeros);
}

}  // namespace vekvc::simd

#endif
