// Fast form of the edge predictor.
#ifndef VEKVC_PROCESSING_DEINTERLACE_EDGE_SIMD_H
#define VEKVC_PROCESSING_DEINTERLACE_EDGE_SIMD_H

#include "processing/deinterlace_field_simd.h"

namespace vekvc::simd {

// 16-bit values of a vector of columns: even columns, odd columns.
struct EvenOdd {
    RowI16 even, odd;
};
[[gnu::always_inline]] inline RowU8 mergedBytes(RowI16 even, RowI16 odd) {
    return (as<RowU8>(even) & as<RowU8>(constant<RowI16, 0x00ff>())) | as<RowU8>(as<RowU16>(odd) << 8);
}

// The walk along one sign of directions, for columns of 16 bits each: as long as the costs fall, the best so far.
class Following {
  public:
    explicit Following(RowI16 straight) : best_(as<RowU16>(straight + straight)), below_(straight) {}

    void startOver(RowI16 straight) { below_ = straight - splat<RowI16>(1); }
    // Where the cost is not below the last one, or one before was not.
    [[gnu::always_inline]] RowI16 stops(RowI16 cost) const { return cost > below_; }
    // Goes one step on; where the step is no better than the best so far. 3 * 1275 + 6 * 255 fits.
    [[gnu::always_inline]] RowI16 loses(RowI16 cost, RowI16 stop, RowI16 penalty) {
        below_ = andNot(stop, cost) - splat<RowI16>(1);  // -1 from the first stop on: no cost is below
        const RowU16 total = as<RowU16>((cost + cost + cost + penalty) | stop);
        const RowU16 best = min(best_, total);
        const RowU16 same = best == best_;
        best_ = best;
        return as<RowI16>(same);
    }

  private:
    RowU16 best_;
    RowI16 below_;  // the last cost less 1
};

// The predictor for one pair of rows, a tile of columns at a time: the differences of each direction are taken once.
class EdgePredictor {
  public:
    static constexpr Vek32s kColumns = 1024;

    explicit EdgePredictor(Vek32s threshold) : t_(threshold) {}

    // The tile of n columns from `first` on; n is kColumns or what is left of the row.
    void prepare(const Vek8u* rowA, const Vek8u* rowB, Vek32s w, Vek32s first, Vek32s n) {
        // The last patches reach into one vector more.
        const Vek32s whole = (n + 2 * kRowLanes - 1) / kRowLanes * kRowLanes;
        columnsLeft_ = first;
        columnsRight_ = w - first;
        copyRepeated(a_, rowA, w, first - kReach, whole + 2 * kReach);
        copyRepeated(b_, rowB, w, first - kReach, whole + 2 * kReach);
        for (Vek32s k = -3; k <= 3; ++k)
            for (Vek32s i = -2; i < 0; ++i) *differences(i, k) = static_cast<Vek8u>(std::abs(*a(i + k) - *b(i - k)));
        for (Vek32s i = 0; i < whole; i += kRowLanes)
#pragma GCC unroll 7
            for (Vek32s k = -3; k <= 3; ++k)
                store(differences(i, k), absDiff(load<RowU8>(a(i + k)), load<RowU8>(b(i - k))));
    }

    // Columns i to i + kRowLanes - 1 of the tile; results beyond the row mean nothing.
    [[gnu::always_inline]] RowU8 predict(Vek32s i, RowU8 a3, RowU8 b3) const {
        if (columnsLeft_ + i >= 3 && columnsRight_ - i >= kRowLanes + 3) return predict<false>(i, a3, b3);
        return atBorder(i, a3, b3);
    }

  private:
    static constexpr Vek32s kReach = 5;  // 3 steps and 2 columns of the patch

    [[gnu::noinline]] RowU8 atBorder(Vek32s i, RowU8 a3, RowU8 b3) const { return predict<true>(i, a3, b3); }

    template <bool border>
    [[gnu::always_inline]] RowU8 predict(Vek32s i, RowU8 a3, RowU8 b3) const {
        const RowU8 above = load<RowU8>(a(i)), below = load<RowU8>(b(i));
        // 9 (a + b) - (a3 + b3) + 8 lies within -502..4598.
        const auto rounded = [](RowI16 v) { return (v + splat<RowI16>(8)) >> 4; };
        const RowU8 vertical = narrowed(weighted<9, 9>(above, below) + weighted<-1, -1>(a3, b3), rounded);

        // A direction m steps away wins if 3 c + 2 t m < 2 c0: only where c0 > t.
        const EvenOdd straight = cost(i, 0);
        if (allZero(subSat(as<RowU16>(max(straight.even, straight.odd)), splat<RowU16>(t_)))) return vertical;
        Following even(straight.even), odd(straight.odd);
        RowU8 prediction = vertical;
#pragma GCC unroll 2
        for (const int sign : {-1, 1}) {
            even.startOver(straight.even);
            odd.startOver(straight.odd);
            // To stop where all costs have stopped falling would cost more in mispredicted jumps than it saves.
#pragma GCC unroll 3
            for (int m = 1; m <= 3; ++m) {
                const int k = sign * m;
                const EvenOdd here = cost(i, k);
                RowI16 stopsEven = even.stops(here.even), stopsOdd = odd.stops(here.odd);
                if constexpr (border) {
                    const EvenOdd outside = stepsOutside(i, m);
                    stopsEven = stopsEven | outside.even;
                    stopsOdd = stopsOdd | outside.odd;
                }
                const RowI16 penalty = splat<RowI16>(2 * t_ * m);
                const RowU8 loses =
                    mergedBytes(even.loses(here.even, stopsEven, penalty), odd.loses(here.odd, stopsOdd, penalty));
                prediction = select(loses, prediction, average(load<RowU8>(a(i + k)), load<RowU8>(b(i - k))));
            }
        }
        return max(min(prediction, max(max(above, below), vertical)), min(min(above, below), vertical));
    }

    // The sum of |A[x + k + j] - B[x - k + j]| over j = -2..2: of the differences in the columns from x - 2, x and x + 2
    // on, sums of pairs and a lone one. At most 1275.
    [[gnu::always_inline]] EvenOdd cost(Vek32s i, int k) const {
        const Vek8u* d = differences_[k + 3] + kRowLanes + i;
        const auto before = load<RowU8>(d - 2), here = load<RowU8>(d), behind = load<RowU8>(d + 2);
        const auto pairs = [](RowU8 v) __attribute__((always_inline)) { return mulAddPairs(v, constant<RowI8, 1>()); };
        const RowI16 middle = pairs(here);
        return {pairs(before) + middle + (as<RowI16>(behind) & constant<RowI16, 255>()),
                as<RowI16>(as<RowU16>(before) >> 8) + middle + pairs(behind)};
    }
    // The columns of which one end of a direction m steps away lies outside the row.
    [[gnu::always_inline]] EvenOdd stepsOutside(Vek32s i, int m) const {
        static constexpr Vek16s kEven[16] = {0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30};
        const RowI16 even = load<RowI16>(kEven), odd = even + splat<RowI16>(1);
        // Columns before the first that is far enough from the left, from the last that is from the right on.
        const RowI16 first = splat<RowI16>(clip3(0, 3, m - columnsLeft_ - i));
        const RowI16 last = splat<RowI16>(clip3(-1, 127, columnsRight_ - i - m - 1));
        return {(first > even) | (even > last), (first > odd) | (odd > last)};
    }

    const Vek8u* a(Vek32s i) const { return a_ + kReach + i; }
    const Vek8u* b(Vek32s i) const { return b_ + kReach + i; }

    // Of direction k; from column -2 on, at multiples of the vectors' size.
    Vek8u* differences(Vek32s i, Vek32s k) { return differences_[k + 3] + kRowLanes + i; }

    Vek32s t_, columnsLeft_ = 0, columnsRight_ = 0;
    Vek8u a_[kColumns + 2 * kReach + kRowLanes], b_[kColumns + 2 * kReach + kRowLanes];
    alignas(64) Vek8u differences_[7][kColumns + 2 * kRowLanes];
};

inline void deinterlaceEdgeDetect(Block<Vek8u> src, MutableBlock<Vek8u> dst, VekiSize roiSize, Vek32s field,
                                  Vek32s threshold) {
    EdgePredictor predictor(threshold);
    rebuildField(src, dst, roiSize, field, [&](Vek32s y) {
        const NeighbourRows rows(y, roiSize.height);
        const Vek8u *a3 = src.at(0, rows.above3), *b3 = src.at(0, rows.below3);
        forTiles(roiSize.width, EdgePredictor::kColumns, [&](Vek32s first, Vek32s n) {
            predictor.prepare(src.at(0, rows.above), src.at(0, rows.below), roiSize.width, first, n);
            forVectors(first, first + n, [&](Vek32s x, auto samples) {
                samples.store(dst.at(x, y), predictor.predict(x - first, samples.load(a3 + x), samples.load(b3 + x)));
            });
        });
    });
}

}  // namespace vekvc::simd

#endif
