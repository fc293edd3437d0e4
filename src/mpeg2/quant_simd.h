// MPEG-2 quantization and its inverse, a row of eight coefficients at a time.
#ifndef VEKVC_MPEG2_QUANT_SIMD_H
#define VEKVC_MPEG2_QUANT_SIMD_H

#include <bit>

#include "core/arith.h"
#include "core/memory.h"
#include "core/simd.h"

namespace vekvc::simd {

// Two bits for each coefficient of a row that is zero.
inline int zeroBits(i16x8 row) { return std::popcount(byteMask(row == zero<i16x8>())); }

inline Vek32s quantMatrix(Vek16s* pSrcDst, Vek32s QP, const Vek32f* pQuantMatrix, int first) {
    const auto scale = splatFloat(16.0f / static_cast<Vek32f>(QP));
    const auto low = splatFloat(-2047.0f), high = splatFloat(2047.0f);
    // Limits are whole numbers: limiting before truncation is the same as after it.
    const auto quantize = [&](i32x4 x, const Vek32f* weight) {
        const f32x4 product = toFloat(x) * scale * as<f32x4>(load<i32x4>(weight));
        return truncate(min(max(product, low), high));
    };
    const Vek16s dc = load<Vek16s>(pSrcDst);
    int zeros = 0;
    for (int row = 0; row < 64; row += 8) {
        const auto x = load<i16x8>(pSrcDst + row);
        const i16x8 y =
            narrowI16(quantize(widenLow(x), pQuantMatrix + row), quantize(widenHigh(x), pQuantMatrix + row + 4));
        store(pSrcDst + row, y);
        zeros += zeroBits(y);
    }
    Vek32s count = 64 - zeros / 2;
    if (first == 1) {
        count -= load<Vek16s>(pSrcDst) != 0 ? 1 : 0;
        store<Vek16s>(pSrcDst, dc);
    }
    return count;
}

inline Vek32s quantFlat(Vek16s* pSrcDst, Vek32s QP) {
    const Vek32u factor = QP >= 2 ? (static_cast<Vek32u>(QP) / 2 + 65536) / static_cast<Vek32u>(QP) : 0;
    int zeros = 0;
    for (int row = 0; row < 64; row += 8) {
        auto x = load<i16x8>(pSrcDst + row);
        if (QP >= 2) {
            const u16x8 size = min(as<u16x8>(abs(x)), splat<u16x8>(32767));
            const u16x8 q = min(mulHigh(size, splat<u16x8>(factor)), splat<u16x8>(2047));
            x = withSign(as<i16x8>(q), x);
            store(pSrcDst + row, x);
        }
        zeros += zeroBits(x);
    }
    return 64 - zeros / 2;
}

// Maps all rows and applies mismatch control; `map` gets a row and its number.
template <class Map>
[[gnu::always_inline]] inline void mapWithMismatch(Vek16s* pSrcDst, Map map) {
    auto sums = zero<i16x8>();
    for (int row = 0; row < 8; ++row) {
        const i16x8 y = map(load<i16x8>(pSrcDst + 8 * row), row);
        store(pSrcDst + 8 * row, y);
        sums = addSat(sums, y);
    }
    // The parity of the lanes' sum: how many of their last bits are set.
    const int odd = std::popcount(byteMask(sums << 15)) & 1;
    store<Vek16s>(pSrcDst + 63, static_cast<Vek16s>(load<Vek16s>(pSrcDst + 63) ^ (odd ^ 1)));
}

inline void quantInvIntra(Vek16s* pSrcDst, Vek32s QP, const Vek16s* pQuantMatrix) {
    const auto scale = splat<i16x8>(wrap16(QP));
    mapWithMismatch(pSrcDst, [&](i16x8 x, int row) {
        const i16x8 p = x * scale * load<i16x8>(pQuantMatrix + 8 * row);
        const auto rounding = as<i16x8>(as<u16x8>(x >> 15) >> 12);  // 15 where x is negative
        const i16x8 y = addSat(p, rounding) >> 4;
        return row == 0 ? select(lanes<i16x8>(-1, 0, 0, 0, 0, 0, 0, 0), x, y) : y;
    });
}

inline void quantInv(Vek16s* pSrcDst, Vek32s QP, const Vek16s* pQuantMatrix) {
    const auto scale = splat<i16x8>(wrap16(QP));
    mapWithMismatch(pSrcDst, [&](i16x8 x, int row) {
        const i16x8 m = scale * load<i16x8>(pQuantMatrix + 8 * row);
        const i16x8 p = x * m;
        const i16x8 negative = p >> 15;
        const i16x8 half = andNot(x == zero<i16x8>(), as<i16x8>(as<u16x8>(m) >> 1));
        const i16x8 signedHalf = (half ^ negative) - negative;
        const auto rounding = as<i16x8>(as<u16x8>(negative) >> 12);
        return addSat(addSat(p, signedHalf), rounding) >> 4;
    });
}

inline void quantInvFlat(Vek16s* pSrcDst, Vek32s QP) {
    const auto scale = splat<i16x8>(wrap16(QP));
    mapWithMismatch(pSrcDst, [&](i16x8 x, int) {
        const i16x8 t = addSat(addSat(x, x), withSign(splat<i16x8>(1), x));
        const i16x8 p = t * scale;
        // (p + 1) >> 1 for a negative x without the carry out of 16 bits.
        return (p >> 1) + (p & as<i16x8>(as<u16x8>(x >> 15) >> 15));
    });
}

}  // namespace vekvc::simd

#endif
