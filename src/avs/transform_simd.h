// Fast forms of dequantization, transform and reconstruction. Nothing is transposed: a row's coefficients, as even and
// odd pairs in all lanes, give the even and odd parts of its eight samples; the column pass works on whole rows, whose
// samples 4 to 7 lie in reverse, as the row pass leaves them, until the end. The kernels end their exports: they give
// vekStsOk.
#ifndef VEKVC_AVS_TRANSFORM_SIMD_H
#define VEKVC_AVS_TRANSFORM_SIMD_H

#include <array>

#include "avs/transform_plain.h"
#include "core/simd.h"

namespace vekvc::simd {

// Weights of two coefficients side by side: of the even ones (0 and 2, 4 and 6) at the samples 0 to 3, then of the odd
// ones (1 and 3, 5 and 7).
struct AvsWeights {
    alignas(32) Vek16s at[2][8][2];

    constexpr AvsWeights() : at() {
        for (int half = 0; half < 2; ++half)
            for (int n = 0; n < 8; ++n)
                for (int k = 0; k < 2; ++k) at[half][n][k] = avs::kBasis[4 * half + 2 * k + n / 4][n % 4];
    }
};
inline constexpr AvsWeights kAvsWeights;

// Bytes of a row of 16-bit values: the pair of values k and k + 2 four times, for k = 0 and 1, and for k = 4 and 5.
struct AvsPairOrder {
    alignas(32) Vek8u at[2][32];

    constexpr AvsPairOrder() : at() {
        for (int half = 0; half < 2; ++half)
            for (int i = 0; i < 32; ++i)
                at[half][i] = static_cast<Vek8u>(2 * (4 * half + i / 16 + i % 4 / 2 * 2) + i % 2);
    }
};
inline constexpr AvsPairOrder kAvsPairOrder;

// What the dequantization of each QP needs, in memory, from where it fills vectors at once. The multipliers do not fit
// 16 bits with a sign; they come negated, as sums of two that do: of a level beside itself, the products' sum is exact.
struct AvsDequantization {
    Vek16s factors[2];
    Vek32s half, shift;
};
inline constexpr auto kAvsDequantizations = [] {
    std::array<AvsDequantization, avs::kMaxQP + 1> table = {};
    for (std::size_t qp = 0; qp <= avs::kMaxQP; ++qp) {
        const Vek32s m = avs::kMultiplier[qp], shift = avs::kShift[qp];
        table[qp] = {{static_cast<Vek16s>(-(m / 2)), static_cast<Vek16s>(m / 2 - m)}, 1 << (shift - 1), shift};
    }
    return table;
}();

template <class V>
class AvsQuantizer {
  public:
    [[gnu::always_inline]] explicit AvsQuantizer(int qp)
        : factors_(as<V>(splatFrom<D>(kAvsDequantizations[static_cast<std::size_t>(qp)].factors))),
          half_(splatFrom<D>(&kAvsDequantizations[static_cast<std::size_t>(qp)].half)),
          shift_(loadShiftCount<D>(&kAvsDequantizations[static_cast<std::size_t>(qp)].shift)) {}
    [[gnu::always_inline]] V operator()(V level) const {
        return narrowI16(scaled(interleaveLow(level, level)), scaled(interleaveHigh(level, level)));
    }

  private:
    using D = Vec<std::int32_t, V::kBytes / 4>;
    [[gnu::always_inline]] D scaled(V twice) const { return (half_ - mulAddPairs(twice, factors_)) >> shift_; }

    V factors_;
    D half_;
    ShiftCount<D> shift_;
};

#if VEKVC_VECTOR256

// A row in each half: the row pass, samples 4 to 7 in reverse. The tables are opaque: GCC would build their vectors in
// registers.
[[gnu::always_inline]] inline i16x16 avsRowPass(i16x16 rows) {
    const AvsPairOrder& order = *opaque(&kAvsPairOrder);
    const AvsWeights& weights = *opaque(&kAvsWeights);
    const auto part = [&](int odd) {
        const auto product = [&](int half) {
            const auto pairs = shuffleBytes(rows, loadTwice16<u8x32>(order.at[half] + 16 * odd));
            return mulAddPairs(pairs, loadTwice16<i16x16>(weights.at[half][4 * odd]));
        };
        return product(0) + product(1);
    };
    const i32x8 even = part(0) + constant<i32x8, 4>(), odd = part(1);
    return narrowI16((even + odd) >> 3, (even - odd) >> 3);
}
// rows[i]: rows 2i and 2i + 1 after the row pass. Gives the rows 0 and 1, 7 and 6, 2 and 3, 5 and 4 of the residual:
// each half of a vector has columns 0 to 3 (of its two rows) in the low half, 7 to 4 in the high half.
[[gnu::always_inline]] inline void avsColumnPass(const i16x16 (&rows)[4], i16x16 (&out)[4]) {
    // Rows 0 and 2, 1 and 3, 4 and 6, 5 and 7 side by side: columns 0 to 3, then 7 to 4.
    i16x16 pairs[4];
    for (int i = 0; i < 4; i += 2) {
        const i16x16 low = interleaveLow(rows[i], rows[i + 1]), high = interleaveHigh(rows[i], rows[i + 1]);
        pairs[i] = joinLowHalves(low, high);
        pairs[i + 1] = joinHighHalves(low, high);
    }
    const auto weight = [](int half, int n) { return as<i16x16>(splatFrom<i32x8>(kAvsWeights.at[half][n])); };
    i32x8 sums[4], differences[4];
    for (int n = 0; n < 4; ++n) {
        const i32x8 even =
            mulAddPairs(pairs[0], weight(0, n)) + mulAddPairs(pairs[2], weight(1, n)) + constant<i32x8, 64>();
        const i32x8 odd = mulAddPairs(pairs[1], weight(0, 4 + n)) + mulAddPairs(pairs[3], weight(1, 4 + n));
        sums[n] = (even + odd) >> 7;
        differences[n] = (even - odd) >> 7;
    }
    for (int n = 0; n < 4; n += 2) {
        out[n] = narrowI16(sums[n], sums[n + 1]);
        out[n + 1] = narrowI16(differences[n], differences[n + 1]);
    }
}
// The residual as avsColumnPass gives it; two[i]: rows 2i and 2i + 1.
[[gnu::always_inline]] inline void avsResidual(const i16x16 (&two)[4], i16x16 (&out)[4]) {
    const i16x16 passed[4] = {avsRowPass(two[0]), avsRowPass(two[1]), avsRowPass(two[2]), avsRowPass(two[3])};
    avsColumnPass(passed, out);
}
inline constexpr int kAvsFirstRow[4] = {0, 7, 2, 5}, kAvsSecondRow[4] = {1, 6, 3, 4};

inline VekStatus quantInvAvs(const Vek16s* levels, Vek16s* coeffs, int qp) {
    const AvsQuantizer<i16x16> quantizer(qp);
    for (int i = 0; i < 64; i += 16) store(coeffs + i, quantizer(load<i16x16>(levels + i)));
    return vekStsOk;
}

// Two rows in order: the quarters of v are columns 0 to 3 of the first, of the second, columns 7 to 4 of the first, of
// the second.
[[gnu::always_inline]] inline i16x16 avsInOrder(i16x16 v) {
    const i16x16 rows = swapMiddleQuarters(v);
    return shuffleBytes(rows, lanes<u8x32>(0, 1, 2, 3, 4, 5, 6, 7, 14, 15, 12, 13, 10, 11, 8, 9,  //
                                           0, 1, 2, 3, 4, 5, 6, 7, 14, 15, 12, 13, 10, 11, 8, 9));
}

inline VekStatus transformInvAvs(Vek16s* block) {
    i16x16 in[4], out[4];
    for (int i = 0; i < 4; ++i) in[i] = load<i16x16>(block + 16 * i);
    avsResidual(in, out);
    for (int i = 0; i < 4; ++i)
        storePair16(block + 8 * kAvsFirstRow[i], block + 8 * kAvsSecondRow[i], avsInOrder(out[i]));
    return vekStsOk;
}

inline VekStatus reconstructAvs(const Vek16s* levels, Vek8u* pSrcDst, Vek32s step, int qp) {
    const AvsQuantizer<i16x16> quantizer(qp);
    i16x16 in[4], out[4];
    for (int i = 0; i < 4; ++i) in[i] = quantizer(load<i16x16>(levels + 16 * i));
    avsResidual(in, out);
    // Samples come to the places of the residual: columns 0 to 3 of two rows, 7 to 4 of both. Four rows go back at once.
    const auto places = lanes<u8x32>(0, 128, 1, 128, 2, 128, 3, 128, 8, 128, 9, 128, 10, 128, 11, 128,  //
                                     7, 128, 6, 128, 5, 128, 4, 128, 15, 128, 14, 128, 13, 128, 12, 128);
    const auto reversed = lanes<u8x32>(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15,  //
                                       3, 2, 1, 0, 7, 6, 5, 4, 11, 10, 9, 8, 15, 14, 13, 12);
    for (int i = 0; i < 4; i += 2) {
        const auto row = [&](int n) { return offsetBytes(pSrcDst, n * std::ptrdiff_t{step}); };
        const auto sum = [&](int k) {
            const auto samples = loadPairInBoth8<u8x32>(row(kAvsFirstRow[k]), row(kAvsSecondRow[k]));
            return addSat(as<i16x16>(shuffleBytes(samples, places)), out[k]);
        };
        const auto columns = as<u32x8>(shuffleBytes(narrowU8(sum(i), sum(i + 1)), reversed));
        const u32x4 left = lowHalf(columns), right = highHalf(columns);
        storePair8(row(kAvsFirstRow[i]), row(kAvsSecondRow[i]), interleaveLow(left, right));
        storePair8(row(kAvsFirstRow[i + 1]), row(kAvsSecondRow[i + 1]), interleaveHigh(left, right));
    }
    return vekStsOk;
}

#else

// Of one row: its eight samples after the row pass, 4 to 7 in reverse.
struct AvsRowParts {
    i32x4 even, odd;
};
[[gnu::always_inline]] inline AvsRowParts avsRowParts(i16x8 row) {
    const auto part = [&](int odd) {
        const auto product = [&](int half) {
            const auto pairs = shuffleBytes(row, load<u8x16>(kAvsPairOrder.at[half] + 16 * odd));
            return mulAddPairs(pairs, load<i16x8>(kAvsWeights.at[half][4 * odd]));
        };
        return product(0) + product(1);
    };
    return {part(0), part(1)};
}
[[gnu::always_inline]] inline i16x8 avsRowPass(i16x8 row) {
    const AvsRowParts parts = avsRowParts(row);
    const i32x4 even = parts.even + constant<i32x4, 4>();
    return narrowI16((even + parts.odd) >> 3, (even - parts.odd) >> 3);
}
// The residual; put(n, row) takes row n with its columns in order.
template <class Put>
[[gnu::always_inline]] inline void avsResidual(const i16x8 (&in)[8], Put put) {
    i16x8 h[8];
    for (int i = 0; i < 8; ++i) h[i] = avsRowPass(in[i]);
    i16x8 low[4], high[4];  // rows 0 and 2, 1 and 3, 4 and 6, 5 and 7 side by side: columns 0 to 3, 7 to 4
    for (int i = 0; i < 4; ++i) {
        const int row = i < 2 ? i : i + 2;
        low[i] = interleaveLow(h[row], h[row + 2]);
        high[i] = interleaveHigh(h[row], h[row + 2]);
    }
    const auto order = lanes<u8x16>(0, 1, 2, 3, 4, 5, 6, 7, 14, 15, 12, 13, 10, 11, 8, 9);
    for (int n = 0; n < 4; ++n) {
        const auto weight = [](int half, int k) { return as<i16x8>(splatFrom<i32x4>(kAvsWeights.at[half][k])); };
        i32x4 sum[2], difference[2];
        for (int side = 0; side < 2; ++side) {
            const i16x8* p = side == 0 ? low : high;
            const i32x4 even =
                mulAddPairs(p[0], weight(0, n)) + mulAddPairs(p[2], weight(1, n)) + constant<i32x4, 64>();
            const i32x4 odd = mulAddPairs(p[1], weight(0, 4 + n)) + mulAddPairs(p[3], weight(1, 4 + n));
            sum[side] = (even + odd) >> 7;
            difference[side] = (even - odd) >> 7;
        }
        put(n, shuffleBytes(narrowI16(sum[0], sum[1]), order));
        put(7 - n, shuffleBytes(narrowI16(difference[0], difference[1]), order));
    }
}

inline VekStatus quantInvAvs(const Vek16s* levels, Vek16s* coeffs, int qp) {
    const AvsQuantizer<i16x8> quantizer(qp);
    for (int i = 0; i < 64; i += 8) store(coeffs + i, quantizer(load<i16x8>(levels + i)));
    return vekStsOk;
}

inline VekStatus transformInvAvs(Vek16s* block) {
    i16x8 in[8];
    for (int i = 0; i < 8; ++i) in[i] = load<i16x8>(block + 8 * i);
    avsResidual(in, [&](int n, i16x8 row) { store(block + 8 * n, row); });
    return vekStsOk;
}

inline VekStatus reconstructAvs(const Vek16s* levels, Vek8u* pSrcDst, Vek32s step, int qp) {
    const AvsQuantizer<i16x8> quantizer(qp);
    i16x8 in[8];
    for (int i = 0; i < 8; ++i) in[i] = quantizer(load<i16x8>(levels + 8 * i));
    avsResidual(in, [&](int n, i16x8 residual) {
        Vek8u* const row = offsetBytes(pSrcDst, n * std::ptrdiff_t{step});
        const i16x8 sum = addSat(widenLow(loadBytes<u8x16, 8>(row)), residual);
        storeBytes<8>(row, narrowU8(sum, sum));
    });
    return vekStsOk;
}

#endif

}  // namespace vekvc::simd

#endif
