// Block matching: sums of absolute and squared differences, and searches along a row. The fast form of metrics_plain.h.
#ifndef VEKVC_COMMON_METRICS_SIMD_H
#define VEKVC_COMMON_METRICS_SIMD_H

#include "common/metrics_plain.h"
#include "common/tile.h"

namespace vekvc::simd {

using plain::InterleavedSums;

template <int W, int H>
Vek32s sumOfAbsoluteDifferences(Block<Vek8u> s, Block<Vek8u> ref, Half half) {
    constexpr int R = kTileRows<W, H>;
    u64x2 sum = zero<u64x2>();
    withCase(half, 0, [&]<Half h, int round>() {
        TileReader<W, R> source(s.base, s.step);
        Predictor<W, R, h, round> p(ref.base, ref.step);
        forTileRows<H, R>([&] { sum += sumAbsDiff(source.rows(), p.rows()); });
    });
    return W == 16 || R > 1 ? sumLanes(sum) : lane<0>(as<i32x4>(sum));
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

template <int W, int H>
Vek32s sumOfAbsoluteDifferences(Block<Vek16u> s, Block<Vek16u> ref, Half half) {
    using Row = Row16<W>;
    using V = typename Row::Vector;
    using Signed = Vec<Vek16s, V::kBytes / 2>;
    using Sum = Vec<Vek32s, V::kBytes / 4>;
    // The differences have 16 bits without sign: they are summed less 32768, which the multiply-add takes as signed.
    constexpr Vek32s kBias = 32768 * H * (W / Row::kColumns) * (V::kBytes / 2);
    const auto toSigned = splat<V>(0x8000);
    const auto ones = splat<Signed>(1);
    Sum sum = zero<Sum>();
    withCase(half, 0, [&]<Half h, int>() {
        for (int x = 0; x < W; x += Row::kColumns)
            for (int y = 0; y < H; ++y) {
                const V difference = absDiff(Row::load(s.at(x, y)), positionOfRow<W, h>(ref, x, y));
                sum += mulAddPairs(as<Signed>(difference ^ toSigned), ones);
            }
    });
    return sumLanes(sum) + kBias;
}

template <int W, int H>
Vek32s sumOfSquaredDifferences(Block<Vek8u> s, Block<Vek8u> ref, Half half) {
    constexpr int R = W * H >= 16 ? 16 / W : H;
    i32x4 sum = zero<i32x4>();
    withCase(half, 0, [&]<Half h, int round>() {
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

// The sums for eight consecutive positions; reads W + 7 bytes of each reference row.
template <int W, int H>
[[gnu::always_inline]] inline u16x8 eightPositions(Block<Vek8u> s, const Vek8u* ref, std::ptrdiff_t refStep) {
    u16x8 sum = zero<u16x8>();
    TileReader<W, 1> source(s.base, s.step);
    for (int y = 0; y < H; ++y, ref += refStep) {
        const u8x16 a = source.rows();
        if constexpr (W == 4) {  // 11 bytes: 8 and the last 3 of 4
            const u8x16 tail = bytesRight<1>(loadBytes<u8x16, 4>(ref + 7));
            const u8x16 r = as<u8x16>(interleaveLow(as<u64x2>(loadBytes<u8x16, 8>(ref)), as<u64x2>(tail)));
            sum += eightSums<0, 0>(r, a);
        } else {  // 15 or 23 bytes
            const u8x16 tail = bytesRight<1>(loadBytes<u8x16, 8>(ref + W - 1));
            if constexpr (W == 8) {
                const u8x16 r = as<u8x16>(interleaveLow(as<u64x2>(loadBytes<u8x16, 8>(ref)), as<u64x2>(tail)));
                sum += eightSums<0, 0>(r, a) + eightSums<1, 1>(r, a);
            } else {
                const u8x16 low = load<u8x16>(ref), high = alignRight<8>(tail, low);
#if VEKVC_VECTOR256
                const u8x32 r = join(low, high), both = join(a, as<u8x16>(shuffle32<2, 3, 0, 1>(as<u32x4>(a))));
                const u16x16 sums = eightSums<0, 0>(r, both) + eightSums<1, 1>(r, both);
                sum += lowHalf(sums) + highHalf(sums);
#else
                sum += eightSums<0, 0>(low, a) + eightSums<1, 1>(low, a) + eightSums<0, 2>(high, a) +
                       eightSums<1, 3>(high, a);
#endif
            }
        }
    }
    return sum;
}

template <int W, int H>
void searchRow(Block<Vek8u> s, Block<Vek8u> ref, Vek16u* pSad, Vek32s count) {
    for (Vek32s i = 0; i < count; i += 8) store(pSad + i, eightPositions<W, H>(s, ref.base + i, ref.step));
}

inline Vek32u indexOfMinimum(const Vek16u* pSad, Vek32s count) {
    Vek32u best = 0x10000;
    Vek32s index = 0;
    for (Vek32s i = 0; i < count; i += 8) {
        const Minimum least = minimum(load<u16x8>(pSad + i));
        if (least.value < best) {
            best = least.value;
            index = i + least.index;
        }
    }
    return static_cast<Vek32u>(index);
}

}  // namespace vekvc::simd

#endif
