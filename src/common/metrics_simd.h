// Block matching: sums of absolute and squared differences, and searches along a row. The fast form of metrics_plain.h.
#ifndef VEKVC_COMMON_METRICS_SIMD_H
#define VEKVC_COMMON_METRICS_SIMD_H

#include "common/metrics_plain.h"
#include "common/tile.h"

namespace vekvc::simd {

using plain::InterleavedSums;

// The sums are made in their exports, which a call would have save the place of the result.
template <int W, int H>
[[gnu::always_inline]] inline VekStatus putSumOfAbsoluteDifferences(Block<Vek8u> s, Block<Vek8u> ref, Half half,
                                                                    Vek32s* pResult) {
    constexpr int R = W == 4 ? 2 : 1;  // rows of 4 in pairs: to fill the vector costs more than to add once more
    u64x2 sum = zero<u64x2>();
    withCase(half, 0, [&]<Half h, int round>() {
        TileReader<W, R> source(s.base, s.step);
        Predictor<W, R, h, round> p(ref.base, ref.step);
        forTileRows<H, R>([&] { sum += sumAbsDiff(source.rows(), p.rows()); });
    });
    store(pResult, W == 16 ? sumLanes(sum) : lane<0>(as<i32x4>(sum)));
    return vekStsOk;
}

// ---- 16-bit samples: rows of 4, 8 or 16

#if VEKVC_VECTOR256
using Wide16u = u16x16;
#else
using Wide16u = u16x8;
#endif

// A row of n 16-bit samples, or as much of it as fits one vector.
template <int n>
struct Row16 {
    using Vector = std::conditional_t<(n > 8), Wide16u, u16x8>;
    static constexpr int kColumns = n < 8 ? n : Vector::kBytes / 2;
    static Vector load(const Vek16u* p) {
        if constexpr (n == 4)
            return loadBytes<Vector, 8>(p);
        else
            return vekvc::load<Vector>(p);
    }
};

// The sample position of one row with rounding 0; see Predictor for the corrections.
template <int n, Half half>
[[gnu::always_inline]] inline auto positionOfRow(Block<Vek16u> r, int x, int y) {
    using Row = Row16<n>;
    const auto ones = splat<typename Row::Vector>(1);
    const auto a = Row::load(r.at(x, y));
    if constexpr (half == Half::none) {
        return a;
    } else if constexpr (half == Half::horizontal) {
        return average(a, Row::load(r.at(x + 1, y)));
    } else if constexpr (half == Half::vertical) {
        return average(a, Row::load(r.at(x, y + 1)));
    } else {
        const auto b = Row::load(r.at(x + 1, y)), c = Row::load(r.at(x, y + 1)), d = Row::load(r.at(x + 1, y + 1));
        const auto top = average(a, b), low = average(c, d);
        return average(top, low) - ((top ^ low) & ((a ^ b) | (c ^ d)) & ones);
    }
}

// The differences of a block in any order, each given to use() once.
template <int W, int H, class Use>
[[gnu::always_inline]] inline void forDifferences(Block<Vek16u> s, Block<Vek16u> ref, Half half, Use&& use) {
    using Row = Row16<W>;
    withCase(half, 0, [&]<Half h, int>() {
        for (int x = 0; x < W; x += Row::kColumns)
#pragma GCC unroll 8
            for (int y = 0; y < H; ++y) use(Row::load(s.at(x, y)), positionOfRow<W, h>(ref, x, y));
    });
}

// For samples of any size: the differences have 16 bits without sign and are summed less 32768, as signed values.
template <int W, int H>
[[gnu::noinline, gnu::cold]] VekStatus putSumOfLargeDifferences(Block<Vek16u> s, Block<Vek16u> ref, Half half,
                                                                Vek32s* pResult) {
    using V = typename Row16<W>::Vector;
    using Signed = Vec<Vek16s, V::kBytes / 2>;
    using Sum = Vec<Vek32s, V::kBytes / 4>;
    constexpr Vek32s kBias = 32768 * H * (W / Row16<W>::kColumns) * (V::kBytes / 2);
    Sum sum = zero<Sum>();
    forDifferences<W, H>(s, ref, half, [&](V a, V b) {
        sum += mulAddPairs(as<Signed>(absDiff(a, b) ^ splat<V>(0x8000)), splat<Signed>(1));
    });
    store(pResult, sumLanes(sum) + kBias);
    return vekStsOk;
}

// Sums of real video fit 15 bits per lane; a lane that needs the 16th sends the block to the general form, which ends
// the export.
template <class V>
struct LimitedSums {
    V above = zero<V>(), below = zero<V>();

    [[gnu::always_inline]] void add(V a, V b) {
        above = addSat(above, subSat(a, b));
        below = addSat(below, subSat(b, a));
    }
    template <int W, int H>
    [[gnu::always_inline]] VekStatus put(Block<Vek16u> s, Block<Vek16u> ref, Half half, Vek32s* pResult) const {
        const V sum = addSat(above, below);
        if ((byteMask(sum) & 0xAAAAAAAA) != 0) [[unlikely]]
            return putSumOfLargeDifferences<W, H>(s, ref, half, pResult);
        store(pResult, sumLanes(as<Vec<Vek16s, V::kBytes / 2>>(sum)));
        return vekStsOk;
    }
};

template <int W, int H>
[[gnu::always_inline]] inline VekStatus putSumOfSmallDifferences(Block<Vek16u> s, Block<Vek16u> ref, Half half,
                                                                 Vek32s* pResult) {
    using V = typename Row16<W>::Vector;
    LimitedSums<V> sums;
    forDifferences<W, H>(s, ref, half, [&](V a, V b) { sums.add(a, b); });
    return sums.template put<W, H>(s, ref, half, pResult);
}
// A function of its own: inline, these cases would have all others save registers.
template <int W, int H>
[[gnu::noinline]] VekStatus putSumAtHalfSample(Block<Vek16u> s, Block<Vek16u> ref, Half half, Vek32s* pResult) {
    return putSumOfSmallDifferences<W, H>(s, ref, half, pResult);
}

#if VEKVC_VECTOR256
// Rows of 8, two in a vector.
[[gnu::always_inline]] inline VekStatus putSumOf8x8(Block<Vek16u> s, Block<Vek16u> ref, Vek32s* pResult) {
    const EightRowAddresses source(s.base, s.step), reference(ref.base, ref.step);
    LimitedSums<u16x16> sums;
#pragma GCC unroll 4
    for (int y = 0; y < 8; y += 2)
        sums.add(loadPair16<u16x16>(source(y), source(y + 1)), loadPair16<u16x16>(reference(y), reference(y + 1)));
    return sums.template put<8, 8>(s, ref, Half::none, pResult);
}
#endif
// Rows of 4, two in a vector.
[[gnu::always_inline]] inline VekStatus putSumOf4x4(Block<Vek16u> s, Block<Vek16u> ref, Vek32s* pResult) {
    const FourRowAddresses source(s.base, s.step), reference(ref.base, ref.step);
    LimitedSums<u16x8> sums;
#pragma GCC unroll 2
    for (int y = 0; y < 4; y += 2)
        sums.add(loadPair8<u16x8>(source(y), source(y + 1)), loadPair8<u16x8>(reference(y), reference(y + 1)));
    return sums.template put<4, 4>(s, ref, Half::none, pResult);
}

template <int W, int H>
[[gnu::always_inline]] inline VekStatus putSumOfAbsoluteDifferences(Block<Vek16u> s, Block<Vek16u> ref, Half half,
                                                                    Vek32s* pResult) {
    if (half != Half::none) return putSumAtHalfSample<W, H>(s, ref, half, pResult);
    if constexpr (W == 4 && H == 4) return putSumOf4x4(s, ref, pResult);
#if VEKVC_VECTOR256
    if constexpr (W == 8 && H == 8) return putSumOf8x8(s, ref, pResult);
#endif
    return putSumOfSmallDifferences<W, H>(s, ref, Half::none, pResult);
}

template <int W, int H>
[[gnu::always_inline]] inline Vek32s sumOfSquaredDifferences(Block<Vek8u> s, Block<Vek8u> ref, Half half) {
    constexpr int R = W * H >= 16 ? 16 / W : H;
    i32x4 sum = zero<i32x4>();
    withCase(half, 0, [&]<Half h, int round>() {
        if constexpr (W == 8 && h == Half::none) {  // widened while they are loaded
            const auto row = [](Block<Vek8u> b, int y) { return widenLow(loadBytes<u8x16, 8>(b.at(0, y))); };
            for (int y = 0; y < H; ++y) {
                const i16x8 difference = row(s, y) - row(ref, y);
                sum += mulAddPairs(difference, difference);
            }
            return;
        }
        TileReader<W, R> source(s.base, s.step);
        Predictor<W, R, h, round> p(ref.base, ref.step);
        forTileRows<H, R>([&] {
            const u8x16 difference = absDiff(source.rows(), p.rows());
            const i16x8 low = widenLow(difference), high = widenHigh(difference);
            sum += mulAddPairs(low, low) + mulAddPairs(high, high);
        });
    });
    return sumLanes(sum);
}

inline InterleavedSums sumsOfAbsoluteDifferences8x8(Block<Vek8u> s, Block<Vek8u> ref, Half half) {
    u64x2 even = zero<u64x2>(), both = zero<u64x2>();
    const u8x16 evenBytes = as<u8x16>(splat<u16x8>(0x00ff));
    withCase(half, 0, [&]<Half h, int round>() {
        TileReader<16, 1> source(s.base, s.step);
        Predictor<16, 1, h, round, 2> p(ref.base, ref.step);
        forTileRows<8, 1>([&] {
            const u8x16 difference = absDiff(source.rows(), p.rows());
            both += sumAbsDiff(difference, zero<u8x16>());
            even += sumAbsDiff(difference & evenBytes, zero<u8x16>());
        });
    });
    const Vek32s u = sumLanes(even);
    return {u, sumLanes(both) - u};
}

// ---- search

// The sums for eight consecutive positions. They take W + 7 bytes of each reference row; in the last group of a row not
// one more may be read, before that a whole vector may.
template <int W, int H, bool last>
[[gnu::always_inline]] inline u16x8 sumsOfEight(Block<Vek8u> s, const Vek8u* ref, std::ptrdiff_t refStep) {
    const Vek8u* source = s.base;
    const auto nextRow = [&] {
        source += s.step;
        ref += refStep;
    };
    if constexpr (W == 16) {
        // Two references, so that each sum finds its 11 bytes: from byte 0 on, and from byte 8 on.
        const auto fromByte8 = [&] { return last ? bytesRight<1>(load<u8x16>(ref + 7)) : load<u8x16>(ref + 8); };
#if VEKVC_VECTOR256
        u16x16 sum = zero<u16x16>();
#pragma GCC unroll 4
        for (int y = 0; y < H; ++y, nextRow()) {
            const u8x32 r = join(load<u8x16>(ref), fromByte8()), a = loadTwice16<u8x32>(source);
            sum += eightSums<0, 0, 0, 2>(r, a) + eightSums<1, 1, 1, 3>(r, a);
        }
        return lowHalf(sum) + highHalf(sum);
#else
        u16x8 sum = zero<u16x8>();
        for (int y = 0; y < H; ++y, nextRow()) {
            const u8x16 low = load<u8x16>(ref), high = fromByte8(), a = load<u8x16>(source);
            sum +=
                eightSums<0, 0>(low, a) + eightSums<1, 1>(low, a) + eightSums<0, 2>(high, a) + eightSums<1, 3>(high, a);
        }
        return sum;
#endif
    } else {
        u16x8 sum = zero<u16x8>();
        for (int y = 0; y < H; ++y, nextRow()) {
            u8x16 r;
            if constexpr (last) {  // 8 bytes, and the last 7 of 8 or 3 of 4
                const u8x16 tail = bytesRight<1>(loadBytes<u8x16, W>(ref + 7));
                r = as<u8x16>(interleaveLow(as<u64x2>(loadBytes<u8x16, 8>(ref)), as<u64x2>(tail)));
            } else {
                r = load<u8x16>(ref);
            }
            const u8x16 a = loadBytes<u8x16, W>(source);
            sum += eightSums<0, 0>(r, a);
            if constexpr (W == 8) sum += eightSums<1, 1>(r, a);
        }
        return sum;
    }
}

// A block and what a search for it keeps.
template <int W, int H>
class SearchedBlock {
  public:
    explicit SearchedBlock(Block<Vek8u> s) : source_(s) {}
    template <bool last>
    [[gnu::always_inline]] u16x8 eightPositions(const Vek8u* ref, std::ptrdiff_t refStep) const {
        return sumsOfEight<W, H, last>(source_, ref, refStep);
    }

  private:
    Block<Vek8u> source_;
};
#if VEKVC_VECTOR256
// Rows y and y + 4 in the halves of a vector, those of the source loaded once.
template <>
class SearchedBlock<8, 8> {
  public:
    explicit SearchedBlock(Block<Vek8u> s) {
        const EightRowAddresses row(s.base, s.step);
        for (int y = 0; y < 4; ++y) source_[y] = loadPairTwice8<u8x32>(row(y), row(y + 4));
    }
    template <bool last>
    [[gnu::always_inline]] u16x8 eightPositions(const Vek8u* ref, std::ptrdiff_t refStep) const {
        const EightRowAddresses row(ref, refStep);
        u16x16 sum = zero<u16x16>();
#pragma GCC unroll 4
        for (int y = 0; y < 4; ++y) {
            u8x32 r;
            if constexpr (last) {  // bytes 0 to 7 and 7 to 14 of each row
                const u8x32 overlapping = loadFour8<u8x32>(row(y), row(y) + 7, row(y + 4), row(y + 4) + 7);
                r = shuffleBytes(overlapping, lanes<u8x32>(0, 1, 2, 3, 4, 5, 6, 7, 9, 10, 11, 12, 13, 14, 15, 15,  //
                                                           0, 1, 2, 3, 4, 5, 6, 7, 9, 10, 11, 12, 13, 14, 15, 15));
            } else {
                r = loadPair16<u8x32>(row(y), row(y + 4));
            }
            sum += eightSums<0, 0, 0, 0>(r, source_[y]) + eightSums<1, 1, 1, 1>(r, source_[y]);
        }
        return lowHalf(sum) + highHalf(sum);
    }

  private:
    u8x32 source_[4];
};
#endif

template <int W, int H, bool wantIndex>
Vek32u searchRow(Block<Vek8u> s, Block<Vek8u> ref, Vek16u* pSad, Vek32s count) {
    Vek32u best = 0x10000;
    Vek32s index = 0;
    const auto take = [&](Vek32s i, u16x8 sums) {
        store(pSad + i, sums);
        if constexpr (wantIndex) {
            const Minimum least = minimum(sums);
            if (least.value < best) {
                best = least.value;
                index = i + least.index;
            }
        }
    };
    const SearchedBlock<W, H> block(s);
    Vek32s i = 0;
    for (; i < count - 8; i += 8) take(i, block.template eightPositions<false>(ref.base + i, ref.step));
    take(i, block.template eightPositions<true>(ref.base + i, ref.step));
    return static_cast<Vek32u>(index);
}

}  // namespace vekvc::simd

#endif
