// Fast forms of the VC-1 transforms. Neither pass transposes: with columns in lanes, the row pass adds basis rows
// weighted by one row's coefficients, two at a time (SMPTE 421M annex A), and the column pass works on whole rows.
#ifndef VEKVC_VC1_TRANSFORM_SIMD_H
#define VEKVC_VC1_TRANSFORM_SIMD_H

#include "core/opaque.h"
#include "core/simd.h"
#include "vc1/transform_plain.h"

namespace vekvc::simd {

using vc1::Basis;

// One 32-bit value for each of W columns, in `parts` vectors.
template <int W>
struct ColumnLanes {
    using Sums = i32x4;
    using Pairs = i16x8;
    static constexpr int parts = W / 4;
};
#if VEKVC_VECTOR256
template <>
struct ColumnLanes<8> {
    using Sums = i32x8;
    using Pairs = i16x16;
    static constexpr int parts = 1;
};
#endif

template <int W>
struct ColumnSums {
    using Lanes = ColumnLanes<W>;
    using V = typename Lanes::Sums;
    V part[Lanes::parts];

    [[gnu::always_inline]] inline ColumnSums operator+(const ColumnSums& b) const {
        ColumnSums r;
        for (int i = 0; i < Lanes::parts; ++i) r.part[i] = part[i] + b.part[i];
        return r;
    }
    [[gnu::always_inline]] inline ColumnSums operator-(const ColumnSums& b) const {
        ColumnSums r;
        for (int i = 0; i < Lanes::parts; ++i) r.part[i] = part[i] - b.part[i];
        return r;
    }
    [[gnu::always_inline]] inline ColumnSums operator>>(int n) const {
        ColumnSums r;
        for (int i = 0; i < Lanes::parts; ++i) r.part[i] = part[i] >> n;
        return r;
    }
    template <int value>
    [[gnu::always_inline]] inline static ColumnSums all() {
        ColumnSums r;
        for (int i = 0; i < Lanes::parts; ++i) r.part[i] = constant<V, value>();
        return r;
    }
};

// The values of two rows, limited to 16 bits, side by side for each column.
template <int W>
struct RowPair {
    using Lanes = ColumnLanes<W>;
    using P = typename Lanes::Pairs;
    P part[Lanes::parts];

    RowPair() = default;
    [[gnu::always_inline]] inline RowPair(const ColumnSums<W>& first, const ColumnSums<W>& second) {
        for (int i = 0; i < Lanes::parts; ++i) {
            const P rows =
                narrowI16(first.part[i], second.part[i]);  // of each half: four of the first, four of the second
            part[i] = interleaveLow(rows, swapHalves(rows));
        }
    }
    // The pair's rows weighted by the two values at w and added.
    [[gnu::always_inline]] inline ColumnSums<W> weighted(const Vek16s* w) const {
        ColumnSums<W> r;
        const P weights = as<P>(splatFrom<typename Lanes::Sums>(w));
        for (int i = 0; i < Lanes::parts; ++i) r.part[i] = mulAddPairs(part[i], weights);
        return r;
    }
};

// Basis rows 2j and 2j + 1 side by side for each column: the row pass's weights for coefficients 2j and 2j + 1.
template <int N>
struct RowWeights {
    alignas(32) Vek16s at[N / 2][N][2];
};
template <int N, bool transposed>
constexpr RowWeights<N> rowWeights(const Basis<N>& basis) {
    RowWeights<N> w = {};
    for (int j = 0; j < N; ++j)
        for (int x = 0; x < N; ++x) w.at[j / 2][x][j & 1] = transposed ? basis.at[x][j] : basis.at[j][x];
    return w;
}
template <int N>
inline constexpr RowWeights<N> kInverseRow = rowWeights<N, false>(vc1::inverseBasis<N>());
template <int N>
inline constexpr RowWeights<N> kForwardRow = rowWeights<N, true>(vc1::forwardBasis<N>());

// One row pass over the first n values of a row.
template <int W, int n, int shift>
[[gnu::always_inline]] inline ColumnSums<W> rowPass(const Vek16s* row, const RowWeights<W>& weights) {
    using S = ColumnSums<W>;
    using P = typename RowPair<W>::P;
    S sum = S::template all<1 << (shift - 1)>();
    for (int j = 0; j < n / 2; ++j) {
        const P values = as<P>(splatFrom<typename S::V>(row + 2 * j));
        for (int i = 0; i < S::Lanes::parts; ++i)
            sum.part[i] += mulAddPairs(values, load<P>(weights.at[j][i * (W / S::Lanes::parts)]));
    }
    return sum >> shift;
}

// Stores two rows, limited to 16 bits.
template <int W>
[[gnu::always_inline]] inline void storeRows(Vek16s* first, Vek16s* second, const ColumnSums<W>& a,
                                             const ColumnSums<W>& b) {
    if constexpr (W == 4) {
        storePair8(first, second, narrowI16(a.part[0], b.part[0]));
    } else {
#if VEKVC_VECTOR256
        storePair16(first, second, swapMiddleQuarters(narrowI16(a.part[0], b.part[0])));
#else
        store(first, narrowI16(a.part[0], a.part[1]));
        store(second, narrowI16(b.part[0], b.part[1]));
#endif
    }
}

// The weights of the inverse column pass, by coefficients k and k + 2: for even k the even part of the sample n < H /
// 2, for odd k the odd part. The sample n is the sum of the two, H - 1 - n their difference.
template <int H>
struct ColumnWeights {
    Vek16s at[H / 2][H / 2][2];  // coefficients 0 and 2, 1 and 3, 4 and 6, 5 and 7; sample; which of the two
};
template <int H>
constexpr ColumnWeights<H> columnWeights() {
    ColumnWeights<H> w = {};
    for (int j = 0; j < H / 2; ++j)
        for (int n = 0; n < H / 2; ++n)
            for (int i = 0; i < 2; ++i) w.at[j][n][i] = vc1::inverseBasis<H>().at[j / 2 * 4 + j % 2 + 2 * i][n];
    return w;
}
template <int H>
inline constexpr ColumnWeights<H> kInverseColumn = columnWeights<H>();

// The inverse transform of the `columns` x `rows` leading coefficients of a W x H block. All is read before the first
// result is stored.
template <int W, int H, int columns, int rows>
[[gnu::always_inline]] inline void inverseOf(Block<Vek16s> src, MutableBlock<Vek16s> dst) {
    using S = ColumnSums<W>;
    constexpr int pairs = rows == 8 ? 4 : 2;
    RowPair<W> pair[pairs];
    for (int j = 0; j < pairs; ++j) {
        const int k = j / 2 * 4 + j % 2;
        const S first = rowPass<W, columns, 3>(src.at(0, k), kInverseRow<W>);
        if constexpr (rows == 2)
            pair[j] = {first, S::template all<0>()};
        else
            pair[j] = {first, rowPass<W, columns, 3>(src.at(0, k + 2), kInverseRow<W>)};
    }
    const auto& weights = *opaque(&kInverseColumn<H>);
    S upper[H / 2], lower[H / 2];
    for (int n = 0; n < H / 2; ++n) {
        S even = S::template all<64>() + pair[0].weighted(weights.at[0][n]);
        S odd = pair[1].weighted(weights.at[1][n]);
        if constexpr (pairs == 4) {
            even = even + pair[2].weighted(weights.at[2][n]);
            odd = odd + pair[3].weighted(weights.at[3][n]);
        }
        upper[n] = (even + odd) >> 7;
        lower[n] = ((H == 8 ? even + S::template all<1>() : even) - odd) >> 7;
        if (n & 1) {
            storeRows<W>(dst.at(0, n - 1), dst.at(0, n), upper[n - 1], upper[n]);
            storeRows<W>(dst.at(0, H - 1 - n), dst.at(0, H - n), lower[n], lower[n - 1]);
        }
    }
}

template <int W, int H>
[[gnu::noinline]] void transformRegion(const Vek16s* src, std::ptrdiff_t srcStep, Vek16s* dst, std::ptrdiff_t dstStep,
                                       VekiSize sizeNZ) {
    const Block<Vek16s> in(src, static_cast<Vek32s>(srcStep));
    const MutableBlock<Vek16s> out(dst, static_cast<Vek32s>(dstStep));
    const VekiSize coded = vc1::codedRegion<W, H>(sizeNZ);
    if (W == H && coded.width == 2)
        inverseOf<W, H, 2, 2>(in, out);
    else if (W * H > 16 && coded.width == 4 && coded.height == 4)
        inverseOf<W, H, 4, 4>(in, out);
    else
        inverseOf<W, H, W, H>(in, out);
}

template <int W, int H>
[[gnu::always_inline]] inline void transformInverse(Block<Vek16s> src, MutableBlock<Vek16s> dst, VekiSize sizeNZ) {
    if (vc1::isDCOnly(sizeNZ)) [[likely]] {  // by far the shortest
        const i16x8 value = splat<i16x8>(vc1::dcResidual<W, H>(src(0, 0)));
#pragma GCC unroll 8
        for (int y = 0; y < H; ++y) storeBytes<2 * W>(dst.at(0, y), value);
        return;
    }
    transformRegion<W, H>(src.base, src.step, dst.base, dst.step, sizeNZ);
}

// Sums wrap in 32 bits; a pair's products do not, since |basis| * 32768 * 2 < 2^31.
template <int W, int H>
[[gnu::always_inline]] inline void transformForward(Block<Vek16s> src, MutableBlock<Vek16s> dst) {
    using S = ColumnSums<W>;
    constexpr int rowShift = vc1::kForwardRowShift<W>, columnShift = vc1::kForwardColumnShift<H>;
    RowPair<W> pair[H / 2];
    for (int j = 0; j < H / 2; ++j)
        pair[j] = {rowPass<W, W, rowShift>(src.at(0, 2 * j), kForwardRow<W>),
                   rowPass<W, W, rowShift>(src.at(0, 2 * j + 1), kForwardRow<W>)};
    const auto& basis = *opaque(&vc1::forwardBasis<H>());
    for (int k = 0; k < H; k += 2) {
        S row[2];
        for (int i = 0; i < 2; ++i) {
            S sum = S::template all<1 << (columnShift - 1)>();
            for (int j = 0; j < H / 2; ++j) sum = sum + pair[j].weighted(basis.at[k + i] + 2 * j);
            row[i] = sum >> columnShift;
        }
        storeRows<W>(dst.at(0, k), dst.at(0, k + 1), row[0], row[1]);
    }
}

}  // namespace vekvc::simd

#endif
