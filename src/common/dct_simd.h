// Fast forms of the correctly rounded DCTs: two passes in single precision with a proven bound of their error; results
// that this does not decide are made anew from exact sums.
//
// Scaled by 8, the transform of ISO 13818-2 annex A is the one-dimensional transform with the factors K(0) = K(4) = 1,
// K(k) = sqrt(2) cos(k pi / 16) along columns, then along rows. The second pass scales by 2^13 and adds a bias, so
// that it ends, in integers, with
//
//     t = 2^16 X + 2^15 + e + d,  X the ideal result, d the error, |d| < e.
//
// Then 2^16 X + 2^15 lies between t - 2e and t, and if the low 16 bits of t are not below 2e, the high bits of t are X
// rounded. Else the result is undecided.
//
// The bound e. Let r be the greatest relative error of one rounding: 2^-24 to the nearest, 2^-23 in the other modes.
// Constants are rounded when they are compiled: K(1) is off by less than 0.67 * 2^-24, K(5) by less than 0.04 * 2^-24,
// the others by less than 0.83 * 2^-24 (asserted below), quotients by at most 2^-24; the scale is a power of two. An
// input value f with the basis value B in a result passes through n roundings, constants counted with their share of
// r, and adds at most |f| |B| ((1 + r)^n - 1) to the error.
//
// - Inverse. In one pass a value of odd frequency takes its constant, a product, three sums of the chain and the last
//   butterfly: 5 and the constant. With fused products, which round with their sums, it takes up to three sums and the
//   butterfly, a constant and but for the first of the chain a quotient: 4 and these two. Frequencies 2 and 6 take
//   less. 0 takes the sums e0, E0 and the butterfly; e0 is exact in the first pass, as a sum of two 16-bit integers,
//   and the second has one more sum, the bias: 2 and 4.
// - Forward. The first pass has exact sums (in 16 bits): odd frequencies take the constant, a product and three sums,
//   2 and 6 less, 0 and 4 nothing. In the second, odd ones take a difference, the constant, a product and four sums,
//   of which the first adds the bias. Together 10 and two constants again; fused, 8 and a quotient, and for both
//   constants one that is their product, rounded once. Where both frequencies are 0 or 4 nothing is rounded at all:
//   these results are exact, with a bias of 2^15, and always decided.
//
// So n |B| is at most (10 + 2 * 0.67) * K(1)^2 < 21.82: fused, K(1) is the first of its chain, or has the quotient
// K(1) / K(5) and then K(5), or stands further back in a shorter chain, and takes 5.04 at most. Elsewhere n |B| is
// below 20: two odd frequencies have 11.7 * K(1) K(3), 2 or 6 with an odd one 10.6 * K(1) K(2); for F(0, 0) it is 6.
// With S the sum of the magnitudes (in the inverse without F(0, 0)), the error of 2^16 X is at most 2^13 r (21.82 S +
// 6 |F(0, 0)|): in the other modes (10.91 S + 3 |F(0, 0)|) / 512, to the nearest half of that. Terms in r^2 make it at
// most 1 + 2^-19 times as large. To this add less than 2^16 * 4 r = 1/32 for the four roundings of the bias, less than
// 1 for the conversion, which truncates in every mode, and 2^-14 for the exact integer sum that defines the result,
// which differs from X by at most 2^-45 S. So floor((w + 1100) / 512) is more than the error, w being 11 S + 3 |F(0,
// 0)|, halved where roundings are to the nearest: 1100 / 512 leaves more than 0.1 for the terms in r^2.
//
// All of it holds while the magnitudes add up to at most kMostMagnitude: t fits 32 bits, as 2^13 * 1.93 * 32766 <
// 2^30, and the sums of the forward transform's first pass fit 16 bits. Else all results are made from exact sums, and
// no number is converted that does not fit: the caller may have set a trap for that.
//
// No value is subnormal: inputs are integers, constants and quotients multiples of 2^-26, and no value is the product
// of more than two of them in either pass; so every one, rounded or not, is a multiple of 2^-104.
#ifndef VEKVC_COMMON_DCT_SIMD_H
#define VEKVC_COMMON_DCT_SIMD_H

#include <algorithm>

#include "common/dct_exact_simd.h"
#include "common/dct_rows_simd.h"

namespace vekvc::simd {

inline constexpr Vek32s kMostMagnitude = 32766;

// ---- what both directions share

// e for w in the modes that are not to the nearest.
[[gnu::always_inline]] inline Vek32s errorBound(Vek32s weighted) {
    return ((weighted >> (roundsToNearest() ? 1 : 0)) + 1100) >> 9;
}

// K(k) = cos(k pi / 16) / cos(4 pi / 16), and K(0) = 1; right to 2^-41.
struct DctFactors {
    double k[8];
};
constexpr DctFactors dctFactors() {
    DctFactors f = {{1}};
    for (int k = 1; k < 8; ++k) f.k[k] = static_cast<double>(dct::cosine(k)) / static_cast<double>(dct::cosine(4));
    return f;
}
inline constexpr DctFactors kDctFactors = dctFactors();

// The distance of the compiled constant, in units of 2^-24 of its value.
constexpr double distanceOfFactor(int k) {
    const double distance =
        (static_cast<double>(static_cast<float>(kDctFactors.k[k])) / kDctFactors.k[k] - 1) * 16777216;
    return distance < 0 ? -distance : distance;
}
static_assert(distanceOfFactor(1) < 0.67 && distanceOfFactor(2) < 0.83 && distanceOfFactor(3) < 0.83 &&
              distanceOfFactor(5) < 0.04 && distanceOfFactor(6) < 0.83 && distanceOfFactor(7) < 0.83);

// K(k), scaled.
template <class V, int k, int scale = 1>
[[gnu::always_inline]] inline V factor() {
    return splatFloat<V>(static_cast<float>(kDctFactors.k[k] * scale));
}

// A sum of values times factors. With fused products the first factor waits for a later product, where it costs
// nothing, and the others are divided by it.
template <class V, int first, int scale>
struct WeightedSum {
    V sum;

    [[gnu::always_inline]] inline explicit WeightedSum(V z) : sum(kFused ? z : z * factor<V, first, scale>()) {}
    template <int k>
    [[gnu::always_inline]] inline static V weight() {
        return splatFloat<V>(
            static_cast<float>(kFused ? kDctFactors.k[k] / kDctFactors.k[first] : kDctFactors.k[k] * scale));
    }
    template <int k>
    [[gnu::always_inline]] inline void add(V z) {
        sum = mulAdd(z, weight<k>(), sum);
    }
    template <int k>
    [[gnu::always_inline]] inline void subtract(V z) {
        sum = mulSub(z, weight<k>(), sum);
    }
    [[gnu::always_inline]] inline V addedTo(V even) const {
        return kFused ? mulAdd(sum, factor<V, first, scale>(), even) : even + sum;
    }
    [[gnu::always_inline]] inline V subtractedFrom(V even) const {
        return kFused ? mulSub(sum, factor<V, first, scale>(), even) : even - sum;
    }
};

// What odd frequencies give to samples 0 to 3, and differences of samples to odd frequencies: the same sums, named
// after their first factor.
template <class V, int scale, int terms>
struct OddPart {
    WeightedSum<V, 1, scale> s1;
    WeightedSum<V, 3, scale> s3;
    WeightedSum<V, 5, scale> s5;
    WeightedSum<V, 7, scale> s7;

    [[gnu::always_inline]] inline OddPart(V a, V b, V c, V d) : s1(a), s3(a), s5(a), s7(a) {
        if constexpr (terms > 2) {
            s1.template add<3>(b);
            s3.template subtract<7>(b);
            s5.template subtract<1>(b);
            s7.template subtract<5>(b);
        }
        if constexpr (terms > 4) {
            s1.template add<5>(c);
            s3.template subtract<1>(c);
            s5.template add<7>(c);
            s7.template add<3>(c);
            s1.template add<7>(d);
            s3.template subtract<5>(d);
            s5.template add<3>(d);
            s7.template subtract<1>(d);
        }
    }
};

[[gnu::always_inline]] inline void transposeParts(DctFloats (&a)[kDctParts][8]) {
    DctInts bits[kDctParts][8];
    for (int p = 0; p < kDctParts; ++p)
        for (int i = 0; i < 8; ++i) bits[p][i] = as<DctInts>(a[p][i]);
#if VEKVC_VECTOR256
    transpose8x8(bits[0]);
#else
    transpose8x8(bits[0], bits[1]);
#endif
    for (int p = 0; p < kDctParts; ++p)
        for (int i = 0; i < 8; ++i) a[p][i] = as<DctFloats>(bits[p][i]);
}

// The sum of all magnitudes; more than kMostMagnitude if it is not exact.
template <class V, std::size_t n>
[[gnu::always_inline]] inline Vek32s sumOfMagnitudes(const V (&values)[n]) {
    using U = Vec<std::uint16_t, V::kBytes / 2>;
    U sum = as<U>(abs(values[0]));
    for (std::size_t i = 1; i < n; ++i) sum = addSat(sum, as<U>(abs(values[i])));
    return sumLanes(sum);
}

// Is the fraction of a sum below the margin?
[[gnu::always_inline]] inline bool anyBelowMargin(const DctSums& sums, Vek32s margin) {
    using U = Vec<std::uint16_t, DctInts::kBytes / 2>;
    U least = as<U>(sums.at[0][0]);
    for (int p = 0; p < kDctParts; ++p)
        for (int i = p == 0 ? 1 : 0; i < 8; ++i) least = min(least, as<U>(sums.at[p][i]));
    return !allZero(subSat(as<U>(splat<DctInts>(margin)), least));  // the margin's high halves are 0
}

// The high halves, transposed.
[[gnu::always_inline]] inline DctRows roundedRows(const DctSums& sums) {
    using W = Vec<std::int16_t, DctInts::kBytes / 2>;
    using U = Vec<std::uint32_t, DctInts::kBytes / 4>;
    DctRows rows;
    for (int p = 0; p < kDctParts; ++p) {
        DctInts pairs[4];  // columns 2j and 2j + 1
        for (int j = 0; j < 4; ++j)
            pairs[j] = as<DctInts>(blend16<0xAA>(as<W>(as<U>(sums.at[p][2 * j]) >> 16), as<W>(sums.at[p][2 * j + 1])));
        transpose4x4(pairs[0], pairs[1], pairs[2], pairs[3]);
        for (int i = 0; i < 4; ++i) {
#if VEKVC_VECTOR256
            rows.pair[i] = as<W>(pairs[i]);
#else
            rows.row[4 * p + i] = as<W>(pairs[i]);
#endif
        }
    }
    return rows;
}

// ---- inverse

// One pass over frequencies 0 to terms - 1, the others being 0; the last pass scales and adds the bias.
template <int terms, bool last, class V>
[[gnu::always_inline]] inline void inversePass(V (&z)[8], V bias) {
    constexpr int scale = last ? 8192 : 1;
    V even[4];
    if constexpr (last)
        even[0] = mulAdd(z[0], factor<V, 0, scale>(), bias);
    else
        even[0] = z[0];
    even[3] = even[2] = even[1] = even[0];
    if constexpr (terms > 4) {
        const V e0 = even[0];
        even[0] = even[3] = last ? mulAdd(z[4], factor<V, 4, scale>(), e0) : e0 + z[4];
        even[1] = even[2] = last ? mulSub(z[4], factor<V, 4, scale>(), e0) : e0 - z[4];
    }
    if constexpr (terms > 2) {
        WeightedSum<V, 2, scale> outer(z[2]);
        WeightedSum<V, 6, scale> inner(z[2]);
        if constexpr (terms > 4) {
            outer.template add<6>(z[6]);
            inner.template subtract<2>(z[6]);
        }
        even[0] = outer.addedTo(even[0]);
        even[1] = inner.addedTo(even[1]);
        even[2] = inner.subtractedFrom(even[2]);
        even[3] = outer.subtractedFrom(even[3]);
    }
    const OddPart<V, scale, terms> odd(z[1], z[3], z[5], z[7]);
    z[0] = odd.s1.addedTo(even[0]);
    z[1] = odd.s3.addedTo(even[1]);
    z[2] = odd.s5.addedTo(even[2]);
    z[3] = odd.s7.addedTo(even[3]);
    z[4] = odd.s7.subtractedFrom(even[3]);
    z[5] = odd.s5.subtractedFrom(even[2]);
    z[6] = odd.s3.subtractedFrom(even[1]);
    z[7] = odd.s1.subtractedFrom(even[0]);
}

// The samples of frequency 1.
inline constexpr float kFirstFrequency[8] = {
    static_cast<float>(kDctFactors.k[1]),  static_cast<float>(kDctFactors.k[3]),  static_cast<float>(kDctFactors.k[5]),
    static_cast<float>(kDctFactors.k[7]),  -static_cast<float>(kDctFactors.k[7]), -static_cast<float>(kDctFactors.k[5]),
    -static_cast<float>(kDctFactors.k[3]), -static_cast<float>(kDctFactors.k[1])};

template <int i>
[[gnu::always_inline]] inline DctFloats splatLane(f32x4 v) {
    const f32x4 all = shuffle32<i, i, i, i>(v);
#if VEKVC_VECTOR256
    return as<DctFloats>(join(as<i32x4>(all), as<i32x4>(all)));
#else
    return all;
#endif
}

// The first pass: z[p][u] then holds column u of its results.
template <int corner>
[[gnu::always_inline]] inline void inverseColumns(const Vek16s* src, DctFloats (&z)[kDctParts][8]) {
    if constexpr (corner == 8) {
        for (int v = 0; v < 8; ++v) {
#if VEKVC_VECTOR256
            z[0][v] = toFloat(widen(load<i16x8>(src + 8 * v)));
#else
            z[0][v] = toFloat(widenLow(loadBytes<i16x8, 8>(src + 8 * v)));
            z[1][v] = toFloat(widenLow(loadBytes<i16x8, 8>(src + 8 * v + 4)));
#endif
        }
        for (int p = 0; p < kDctParts; ++p) inversePass<8, false>(z[p], z[p][0]);
        transposeParts(z);
    } else if constexpr (corner == 2) {
        const f32x4 values = toFloat(widenLow(loadPair4<i16x8>(src, src + 8)));  // two rows of two
        for (int p = 0; p < kDctParts; ++p) {
            const auto first = as<DctFloats>(load<DctInts>(kFirstFrequency + p * 8 / kDctParts));
            z[p][0] = mulAdd(splatLane<2>(values), first, splatLane<0>(values));
            z[p][1] = mulAdd(splatLane<3>(values), first, splatLane<1>(values));
        }
    } else {
        f32x4 rows[8];
        for (int v = 0; v < 4; ++v) rows[v] = toFloat(widenLow(loadBytes<i16x8, 8>(src + 8 * v)));
        inversePass<4, false>(rows, rows[0]);
        for (int p = 0; p < kDctParts; ++p) {
            DctInts columns[4];
            for (int i = 0; i < 4; ++i) {
#if VEKVC_VECTOR256
                columns[i] = join(as<i32x4>(rows[i]), as<i32x4>(rows[i + 4]));
#else
                columns[i] = as<i32x4>(rows[4 * p + i]);
#endif
            }
            transpose4x4(columns[0], columns[1], columns[2], columns[3]);
            for (int i = 0; i < 4; ++i) z[p][i] = as<DctFloats>(columns[i]);
        }
    }
}

template <int corner>
[[gnu::always_inline]] inline Vek32s magnitudesOfCorner(const Vek16s* src) {
    if constexpr (corner == 8) {
        using V = Vec<std::int16_t, DctInts::kBytes / 2>;
        V values[4 * kDctParts];
        for (int i = 0; i < 4 * kDctParts; ++i) values[i] = load<V>(src + 16 / kDctParts * i);
        return sumOfMagnitudes(values);
    } else if constexpr (corner == 4) {
        const i16x8 values[2] = {loadPair8<i16x8>(src, src + 8), loadPair8<i16x8>(src + 16, src + 24)};
        return sumOfMagnitudes(values);
    } else {
        const i16x8 values[1] = {loadPair4<i16x8>(src, src + 8)};
        return sumOfMagnitudes(values);
    }
}

// The results where F(0, 0) alone is not 0.
[[gnu::always_inline]] inline DctRows rowsOfOne(Vek32s first) {
    using W = Vec<std::int16_t, DctInts::kBytes / 2>;
    const W value = splat<W>((first + 4) >> 3);
#if VEKVC_VECTOR256
    return {{value, value, value, value}};
#else
    return {{value, value, value, value, value, value, value, value}};
#endif
}

template <int corner>
[[gnu::always_inline]] inline void loadCorner(const Vek16s* src, i16x8 (&rows)[8]) {
    for (int v = 0; v < 8; ++v) rows[v] = v < corner ? loadBytes<i16x8, 2 * corner>(src + 8 * v) : zero<i16x8>();
}

template <int corner, class Destination>
void dctInverse(const Vek16s* src, Destination dst) {
    const Vek32s all = magnitudesOfCorner<corner>(src);
    const Vek32s first = load<Vek16s>(src), magnitudeOfFirst = first < 0 ? -first : first;
    if (all == magnitudeOfFirst) return storeRows(dst, rowsOfOne(first));
    if (all > kMostMagnitude) [[unlikely]] {
        i16x8 coefficients[8];
        loadCorner<corner>(src, coefficients);
        return storeRows(dst, roundedRows(exactSums(coefficients, kExactTables.ofPlace)));
    }
    const Vek32s e = errorBound(11 * all - 8 * magnitudeOfFirst);
    const DctFloats bias = toFloat(splat<DctInts>(32768 + e));
    DctFloats z[kDctParts][8];
    inverseColumns<corner>(src, z);
    DctSums sums;
    for (int p = 0; p < kDctParts; ++p) {
        inversePass<corner, true>(z[p], bias);
        for (int i = 0; i < 8; ++i) sums.at[p][i] = truncate(z[p][i]);
    }
    if (anyBelowMargin(sums, 2 * e)) [[unlikely]] {
        DctSpill spilled(sums);
        i16x8 coefficients[8];
        loadCorner<corner>(src, coefficients);
        decideInverse(coefficients, spilled, 2 * e);
        spilled.fetch(sums);
    }
    storeRows(dst, roundedRows(sums));
}

// ---- forward

// The forward transform's sums below the margin, but for the exact ones. Where values are large but near to each other,
// the bound e of the error is too, and counts anew from their mean: to inexact coefficients a constant adds nothing.
[[gnu::noinline]] inline void decideForward(const i16x8 (&rows)[8], DctSpill& sums, Vek32s e) {
    i32x4 total = zero<i32x4>();
    for (const i16x8 row : rows) total += mulAddPairs(row, splat<i16x8>(1));
    const i16x8 mean = splat<i16x8>((sumLanes(total) + 32) >> 6);
    i16x8 fromMean[8];
    for (int i = 0; i < 8; ++i) fromMean[i] = rows[i] - mean;
    const Vek32s least = std::min(e, errorBound(11 * sumOfMagnitudes(fromMean)));
    const auto corners = std::uint64_t{0x11} | std::uint64_t{0x11} << 32;
    if (least < e)
        for (auto& column : sums.at)
            for (Vek32s& sum : column) sum -= e - least;
    decide(sums, undecided(sums, 2 * least) & ~corners, rows, kExactTables.ofFrequency);
    if (least < e)
        for (const int u : {0, 4})
            for (const int v : {0, 4}) sums.at[u][v] += e - least;
}

template <int part>
[[gnu::always_inline]] inline DctFloats floatsOf(i16x8 row) {
#if VEKVC_VECTOR256
    return toFloat(widen(row));
#else
    return toFloat(part == 0 ? widenLow(row) : widenHigh(row));
#endif
}

// Along columns, exact but for the products.
template <int part>
[[gnu::always_inline]] inline void forwardColumns(const i16x8 (&row)[8], DctFloats (&y)[8]) {
    using V = DctFloats;
    i16x8 s[4];
    V d[4];
    for (int i = 0; i < 4; ++i) {
        s[i] = row[i] + row[7 - i];
        d[i] = floatsOf<part>(row[i] - row[7 - i]);
    }
    const i16x8 outer = s[0] + s[3], inner = s[1] + s[2];
    const V p = floatsOf<part>(s[0] - s[3]), q = floatsOf<part>(s[1] - s[2]);
    y[0] = floatsOf<part>(outer + inner);
    y[4] = floatsOf<part>(outer - inner);
    WeightedSum<V, 2, 1> y2(p);
    WeightedSum<V, 6, 1> y6(p);
    y2.template add<6>(q);
    y6.template subtract<2>(q);
    y[2] = y2.sum;
    y[6] = y6.sum;
    const OddPart<V, 1, 8> odd(d[0], d[1], d[2], d[3]);
    y[1] = odd.s1.sum;
    y[3] = odd.s3.sum;
    y[5] = odd.s5.sum;
    y[7] = odd.s7.sum;
}

// Factors of the second pass, for each v with the one that waits since the first.
struct RowFactors {
    float at[8][8];
};
constexpr RowFactors rowFactors() {
    RowFactors t = {};
    for (int k = 0; k < 8; ++k)
        for (int v = 0; v < 8; ++v)
            t.at[k][v] = static_cast<float>(8192 * kDctFactors.k[k] * (kFused ? kDctFactors.k[v] : 1));
    return t;
}
alignas(32) inline constexpr RowFactors kRowFactors = rowFactors();

// Along rows, with a bias of their own for coefficients 0 and 4.
template <int part, class V>
[[gnu::always_inline]] inline void forwardRows(V (&y)[8], V bias, V biasOf04) {
    V s[4], d[4], k[8];
    for (int i = 0; i < 8; ++i) k[i] = as<V>(load<DctInts>(kRowFactors.at[i] + 4 * part));
    for (int i = 0; i < 4; ++i) {
        s[i] = y[i] + y[7 - i];
        d[i] = y[i] - y[7 - i];
    }
    const V outer = s[0] + s[3], inner = s[1] + s[2], p = s[0] - s[3], q = s[1] - s[2];
    y[0] = mulAdd(outer + inner, k[0], biasOf04);
    y[4] = mulAdd(outer - inner, k[4], biasOf04);
    y[2] = mulAdd(q, k[6], mulAdd(p, k[2], bias));
    y[6] = mulSub(q, k[2], mulAdd(p, k[6], bias));
    y[1] = mulAdd(d[3], k[7], mulAdd(d[2], k[5], mulAdd(d[1], k[3], mulAdd(d[0], k[1], bias))));
    y[3] = mulSub(d[3], k[5], mulSub(d[2], k[1], mulSub(d[1], k[7], mulAdd(d[0], k[3], bias))));
    y[5] = mulAdd(d[3], k[3], mulAdd(d[2], k[7], mulSub(d[1], k[1], mulAdd(d[0], k[5], bias))));
    y[7] = mulSub(d[3], k[1], mulAdd(d[2], k[3], mulSub(d[1], k[5], mulAdd(d[0], k[7], bias))));
}

template <class T>
void dctForward(Block<T> src, Vek16s* dst) {
    i16x8 row[8];
    Vek32s all;
    if constexpr (sizeof(T) == 1) {
        // The sum of the magnitudes from the mean, as in decideForward; the sums of the first pass fit whatever it is.
        u8x16 samples[4];
        u64x2 sums = zero<u64x2>(), deviations = zero<u64x2>();
        for (int i = 0; i < 4; ++i) {
            samples[i] = loadPair8<u8x16>(src.at(0, 2 * i), src.at(0, 2 * i + 1));
            sums += sumAbsDiff(samples[i], zero<u8x16>());
        }
        const u8x16 mean = splat<u8x16>((sumLanes(sums) + 32) >> 6);
        for (int i = 0; i < 4; ++i) deviations += sumAbsDiff(samples[i], mean);
        all = sumLanes(deviations);
        for (int i = 0; i < 8; ++i) row[i] = widenLow(loadBytes<u8x16, 8>(src.at(0, i)));
    } else {
        for (int i = 0; i < 8; ++i) row[i] = load<i16x8>(src.at(0, i));
        all = sumOfMagnitudes(row);
        if (all > kMostMagnitude) [[unlikely]]
            return storeRows(dct::Residual{{dst, 16}}, roundedRows(exactSums(row, kExactTables.ofFrequency)));
    }
    const Vek32s e = errorBound(11 * all);
    const auto bias = splat<DctInts>(32768);
#if VEKVC_VECTOR256
    const auto inexact = lanes<DctInts>(0, -1, -1, -1, 0, -1, -1, -1);
#else
    const auto inexact = lanes<DctInts>(0, -1, -1, -1);
#endif
    const auto error = splat<DctInts>(e);
    DctFloats y[kDctParts][8];
    forwardColumns<0>(row, y[0]);
    if constexpr (kDctParts == 2) forwardColumns<1>(row, y[kDctParts - 1]);
    transposeParts(y);
    DctSums sums;
    const DctFloats usual = toFloat(bias + error), of04 = toFloat(bias + (error & inexact));
    forwardRows<0>(y[0], usual, of04);
    if constexpr (kDctParts == 2) forwardRows<1>(y[kDctParts - 1], usual, of04);
    for (int p = 0; p < kDctParts; ++p)
        for (int i = 0; i < 8; ++i) sums.at[p][i] = truncate(y[p][i]);
    DctSums tested = sums;
    for (int p = 0; p < kDctParts; ++p)
        for (const int i : {0, 4}) tested.at[p][i] = andNot(inexact, splat<DctInts>(-1)) | sums.at[p][i];
    if (anyBelowMargin(tested, 2 * e)) [[unlikely]] {
        DctSpill spilled(sums);
        decideForward(row, spilled, e);
        spilled.fetch(sums);
    }
    storeRows(dct::Residual{{dst, 16}}, roundedRows(sums));
}

}  // namespace vekvc::simd

#endif
