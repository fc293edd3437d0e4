// Fast form of the spatio-temporal mean. The picture goes by in tiles of columns. For each of the 42 displacements, a
// tile keeps the absolute differences of the last 5 rows and their sum down each column, which slides from row to row;
// the sum of 5 neighbouring columns is then the distance of two patches.
#ifndef VEKVC_PROCESSING_DENOISE_CAST_SIMD_H
#define VEKVC_PROCESSING_DENOISE_CAST_SIMD_H

#include <initializer_list>

#include "processing/denoise_cast_plain.h"
#include "processing/filter_rows_simd.h"

namespace vekvc::simd {

// A position around a pixel: frame 0 is the current one, 1 and 2 are its neighbours.
struct CastPosition {
    Vek32s frame, dx, dy;
};
// Positions that follow one another in a row are taken two at a time; the last kCastSingles are left alone.
inline constexpr Vek32s kCastPositions = 42, kCastSingles = 10, kCastPairs = (kCastPositions - kCastSingles) / 2;
struct CastOrder {
    CastPosition at[kCastPositions];

    constexpr CastOrder() : at() {
        int n = 0;
        const auto add = [&](Vek32s frame, Vek32s dx, Vek32s dy) { at[n++] = {frame, dx, dy}; };
        for (Vek32s dy = -2; dy <= 2; ++dy) {
            add(0, -2, dy);
            add(0, -1, dy);
            add(0, dy == 0 ? 1 : 0, dy);
            add(0, dy == 0 ? 2 : 1, dy);
        }
        for (Vek32s frame = 1; frame <= 2; ++frame)
            for (Vek32s dy = -1; dy <= 1; ++dy) {
                add(frame, -1, dy);
                add(frame, 0, dy);
            }
        for (const Vek32s dy : {-2, -1, 1, 2}) add(0, 2, dy);
        for (Vek32s frame = 1; frame <= 2; ++frame)
            for (Vek32s dy = -1; dy <= 1; ++dy) add(frame, 1, dy);
    }
};
inline constexpr CastOrder kCastOrder;

class CastTile {
  public:
    static constexpr Vek32s kColumns = 60;  // and 2 on each side make whole vectors

    CastTile(const CastFrames& frames, VekiSize roiSize, CastWeights weights, Vek32s first, Vek32s n)
        : frames_{frames.current, frames.previous, frames.next},
          w_(roiSize.width),
          h_(roiSize.height),
          first_(first),
          n_(n),
          weights_(weights) {}

    void run(MutableBlock<Vek8u> dst) {
        for (Vek32s y = 0; y < 5 && y < h_; ++y) loadRows(y);
        for (Vek32s y = 0; y < 3 && y < h_; ++y)
            for (Vek32s p = 0; p < kCastPositions; ++p) addRow(p, y, y == 0 ? 3 : 1);
        for (Vek32s y = h_; y < 3; ++y)
            for (Vek32s p = 0; p < kCastPositions; ++p) slide(p, differences(p, h_ - 1), nullptr);
        for (Vek32s y = 0;; ++y) {
            repeatBorders();
            means(dst, y);
            if (y == h_ - 1) return;
            if (h_ - y > 5) loadRows(y + 5);
            for (Vek32s p = 0; p < kCastPositions; ++p) moveOn(p, y + 1);
        }
    }

  private:
    // Columns of sums: one per column of the tile from 2 before to 2 behind it.
    static constexpr Vek32s kSums = kColumns + 4, kSamples = kColumns + 8 + 4, kPitch = 96;
    static_assert(kSums % kRowLanes == 0);

    Vek32s clampedRow(Vek32s y) const { return clip3(0, h_ - 1, y); }
    // Row y of a frame, from 4 columns before the tile on; and the same with each sample's right neighbour above it.
    Vek8u* samples(Vek32s frame, Vek32s y) { return samples_[frame][y & 7]; }
    Vek16u* pairs(Vek32s frame, Vek32s y) { return pairs_[frame][y & 7]; }
    Vek8u* differences(Vek32s p, Vek32s y) { return differences_[p][y % 5]; }

    void loadRows(Vek32s y) {
        for (Vek32s frame = 0; frame < 3; ++frame) {
            Vek8u* to = samples(frame, y);
            copyRepeated(to, frames_[frame].at(0, y), w_, first_ - 4, kSamples);
            for (Vek32s i = 0; i < kSamples; i += kRowLanes) {
                const auto here = load<RowU8>(to + i), right = load<RowU8>(to + i + 1);
                store(pairs(frame, y) + i, lowColumns(here) | lowColumns(right) << 8);
                store(pairs(frame, y) + i + kRowLanes16, highColumns(here) | highColumns(right) << 8);
            }
        }
    }

    // The differences of row y at a position, from column i of the sums on.
    [[gnu::always_inline]] RowU8 difference(Vek32s p, Vek32s y, Vek32s i) {
        const CastPosition at = kCastOrder.at[p];
        const Vek8u* other = samples(at.frame, clampedRow(y + at.dy)) + 2 + at.dx;
        return absDiff(load<RowU8>(samples(0, y) + 2 + i), load<RowU8>(other + i));
    }
    // Takes row y into the sums so many times.
    void addRow(Vek32s p, Vek32s y, int times) {
        for (Vek32s i = 0; i < kSums; i += kRowLanes) store(differences(p, y) + i, difference(p, y, i));
        for (; times > 0; --times) slide(p, differences(p, y), nullptr);
    }
    // Adds a row of differences to the sums and takes another one out.
    void slide(Vek32s p, const Vek8u* in, const Vek8u* out) {
        for (Vek32s i = 0; i < kSums; i += kRowLanes)
            addTo(sums_[p] + i, load<RowU8>(in + i), out != nullptr ? load<RowU8>(out + i) : zero<RowU8>());
    }
    [[gnu::always_inline]] static void addTo(Vek16u* sums, RowU8 in, RowU8 out) {
        const auto low = load<RowI16>(sums), high = load<RowI16>(sums + kRowLanes16);
        store(sums, low + (lowColumns(in) - lowColumns(out)));
        store(sums + kRowLanes16, high + (highColumns(in) - highColumns(out)));
    }
    // From the sums of row y - 1 to those of row y: row y + 2 comes, row y - 3 goes, which have the same place.
    void moveOn(Vek32s p, Vek32s y) {
        const Vek8u* out = differences(p, y > 3 ? y - 3 : 0);
        if (y + 2 >= h_) return slide(p, differences(p, h_ - 1), out);
        Vek8u* in = differences(p, y + 2);
        for (Vek32s i = 0; i < kSums; i += kRowLanes) {
            const RowU8 d = difference(p, y + 2, i);
            addTo(sums_[p] + i, d, load<RowU8>(out + i));
            store(in + i, d);
        }
    }
    // Differences beyond the picture's sides are those of the border column, and so are their sums.
    void repeatBorders() {
        if (first_ > 0 && w_ - first_ >= kColumns + 2) return;
        for (Vek32s p = 0; p < kCastPositions; ++p) {
            Vek16u* s = sums_[p] + 2;
            if (first_ == 0) s[-2] = s[-1] = s[0];
            for (Vek32s i = w_ - first_; i < kColumns + 2 && i < w_ - first_ + 2; ++i) s[i] = s[w_ - first_ - 1];
        }
    }

    void means(MutableBlock<Vek8u> dst, Vek32s y) {
        const Vek16u* taken[kCastPositions];
        for (Vek32s p = 0; p < kCastPositions; ++p) {
            const CastPosition at = kCastOrder.at[p];
            taken[p] = pairs(at.frame, clampedRow(y + at.dy)) + 4 + at.dx;
        }
        for (Vek32s i = 0; i < n_; i += kRowLanes)
            storeInRow(dst.at(first_, y), i, n_, joinColumns(mean(taken, y, i), mean(taken, y, i + kRowLanes16)));
    }

    // A weighted sum of samples F is (2 (sum of w F) + den) / (2 den), rounded down, when the pixel itself counts with
    // weight 32. den is below 2^12, so that a quotient that is no integer is at least 2^-13 away from one, and single
    // precision, in any rounding mode, is off by less than 2^-15.
    [[gnu::always_inline]] RowI16 mean(const Vek16u* const* taken, Vek32s y, Vek32s i) {
        const RowI16 none = zero<RowI16>();
        RowI16 weightSum = splat<RowI16>(32);
        const RowU16 threshold = splat<RowU16>(weights_.threshold), reciprocal = splat<RowU16>(weights_.reciprocal);
        const auto weightOf = [&](Vek32s p) __attribute__((always_inline)) {
            const Vek16u* s = sums_[p] + i;
            RowU16 sad = load<RowU16>(s);
            for (int k = 1; k < 5; ++k) sad += load<RowU16>(s + k);                       // at most 6375
            const auto weight = as<RowI16>(mulHigh(subSat(threshold, sad), reciprocal));  // at most 64
            weightSum += weight;
            return weight;
        };
        const auto weighted = [&](Vek32s p, RowI16 weights) __attribute__((always_inline)) {
            return mulAddPairs(load<RowU8>(taken[p] + i), as<RowI8>(weights));
        };
        const auto pair = [&](Vek32s p) __attribute__((always_inline)) {
            const RowI16 first = weightOf(p);
            return weighted(p, first | weightOf(p + 1) << 8);  // at most 2 * 64 * 255, which fits
        };
        const auto single = [&](Vek32s p) __attribute__((always_inline)) { return weighted(p, weightOf(p)); };

        // Four products at most, 65280, in unsigned 16 bits; then 32 bits.
        const RowI16 here = as<RowI16>(load<RowU16>(pairs(0, y) + 4 + i)) & constant<RowI16, 255>();
        RowI32 low = as<RowI32>(interleaveLow(here << 5, none)), high = as<RowI32>(interleaveHigh(here << 5, none));
        const auto add = [&](RowI16 products) __attribute__((always_inline)) {
            low += as<RowI32>(interleaveLow(products, none));
            high += as<RowI32>(interleaveHigh(products, none));
        };
        for (Vek32s p = 0; p < 2 * kCastPairs; p += 4) add(pair(p) + pair(p + 2));
        Vek32s p = 2 * kCastPairs;
        for (; p + 4 <= kCastPositions; p += 4) add(single(p) + single(p + 1) + (single(p + 2) + single(p + 3)));
        add(single(p) + single(p + 1));

        const auto quotient = [&](RowI32 sum, RowI32 den) __attribute__((always_inline)) {
            return truncate(toFloat(sum + sum + den) / toFloat(den + den));
        };
        return narrowI16(quotient(low, as<RowI32>(interleaveLow(weightSum, none))),
                         quotient(high, as<RowI32>(interleaveHigh(weightSum, none))));
    }

    Block<Vek8u> frames_[3];
    Vek32s w_, h_, first_, n_;
    CastWeights weights_;
    Vek8u samples_[3][8][kPitch + kRowLanes] = {};
    Vek16u pairs_[3][8][kPitch] = {};
    Vek8u differences_[kCastPositions][5][kSums];
    Vek16u sums_[kCastPositions][kSums + 16] = {};
};

inline void denoiseCast(const CastFrames& frames, MutableBlock<Vek8u> dst, VekiSize roiSize, CastWeights weights) {
    forTiles(roiSize.width, CastTile::kColumns, [&](Vek32s first, Vek32s n) {
        CastTile tile(frames, roiSize, weights, first, n);
        tile.run(dst);
    });
}

}  // namespace vekvc::simd

#endif
