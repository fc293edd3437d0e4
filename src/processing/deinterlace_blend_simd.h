// Fast form of the blend where rows comb: over tiles of columns, with the rows around in rings.
#ifndef VEKVC_PROCESSING_DEINTERLACE_BLEND_SIMD_H
#define VEKVC_PROCESSING_DEINTERLACE_BLEND_SIMD_H

#include "processing/deinterlace_field_simd.h"

namespace vekvc::simd {

// Weights 256 (c - low) / (high - low), negative and times 128, so that 256 fits 16 bits.
class BlendWeights {
  public:
    BlendWeights(Vek32s low, Vek32s high)
        : low_(low), range_(high - low), reciprocal_(range_ > 1 ? 65536 / range_ : 65535) {}

    bool anyAbove(RowU8 comb) const { return !allZero(subSat(comb, splat<RowU8>(low_))); }
    // s + ((weight (l - s) + 128) >> 8) of bytes.
    [[gnu::always_inline]] RowU8 blend(RowU8 comb, RowU8 s, RowU8 l) const {
        const RowU8 c = min(subSat(comb, splat<RowU8>(low_)), splat<RowU8>(range_));
        const WidePair change = weighted<1, -1>(s, l);  // -127..128
        const RowU8 none = zero<RowU8>();
        // 256 c in the high bytes; mulHighRound divides the products by 2^15.
        const RowI16 low = mulHighRound(negative(as<RowU16>(interleaveLow(none, c))), change.low);
        const RowI16 high = mulHighRound(negative(as<RowU16>(interleaveHigh(none, c))), change.high);
        return narrowU8(as<RowI16>(interleaveLow(s, none)) + low, as<RowI16>(interleaveHigh(s, none)) + high);
    }

  private:
    // -128 floor(n / range): the high half of the product with the rounded-down reciprocal is at most 1 too small.
    [[gnu::always_inline]] RowI16 negative(RowU16 n) const {
        const RowU16 quotient = mulHigh(n, splat<RowU16>(reciprocal_));
        const RowU16 rest = n - quotient * splat<RowU16>(range_);  // 0 to 2 range - 1
        const RowI16 more = as<RowI16>(rest) > splat<RowI16>(range_ - 1);
        return (more - as<RowI16>(quotient)) << 7;
    }

    Vek32s low_, range_, reciprocal_;
};

class BlendTile {
  public:
    static constexpr Vek32s kColumns = 512;

    BlendTile(Block<Vek8u> src, VekiSize roiSize, Vek32s first, Vek32s n)
        : src_(src), w_(roiSize.width), h_(roiSize.height), first_(first), n_(n) {}

    void run(MutableBlock<Vek8u> dst, const BlendWeights& weights) {
        for (Vek32s y = -2; y < h_; ++y) {
            peaks(y + 2);
            if (y >= -1) combs(y + 1);
            if (y >= 0) blend(dst, y, weights);
        }
    }

  private:
    static constexpr Vek32s kMargin = kRowLanes, kPitch = kMargin + kColumns + 2 * kRowLanes;
    struct Line {
        Vek8u samples[kPitch];
        Vek8u* at(Vek32s i) { return samples + kMargin + i; }
    };
    // Peaks that stand out upwards and downwards, the greatest of each three neighbours, and the greatest combs of each
    // three neighbours; rows y modulo 4.
    struct Peaks {
        Line up, down, upAround, downAround;
    };

    // Columns of the tile and `more` of them on both sides, as far as they exist, counted from the tile's first.
    Vek32s from(Vek32s more) const { return first_ > 0 ? -more : 0; }
    Vek32s end(Vek32s more) const { return w_ - first_ - n_ > more ? n_ + more : w_ - first_; }
    void repeat(Line& line) const {
        if (first_ == 0) *line.at(-1) = *line.at(0);
        if (n_ == w_ - first_) *line.at(n_) = *line.at(n_ - 1);
    }

    void peaks(Vek32s y) {
        Peaks& p = peaks_[y & 3];
        if (y >= h_) {
            p = {};
            return;
        }
        const NeighbourRows rows(y, h_);
        const Vek8u *above = src_.at(first_, rows.above), *here = src_.at(first_, y),
                    *below = src_.at(first_, rows.below);
        for (Vek32s i = from(2); i < end(2); i += kRowLanes) {
            const auto at = [&](const Vek8u* row) __attribute__((always_inline)) {
                return loadInRow(row, i, w_ - first_);
            };
            const RowU8 a = at(above), s = at(here), b = at(below);
            store(p.up.at(i), min(subSat(s, a), subSat(s, b)));
            store(p.down.at(i), min(subSat(a, s), subSat(b, s)));
        }
        repeat(p.up);
        repeat(p.down);
        for (Vek32s i = from(1); i < end(1); i += kRowLanes) {
            store(p.upAround.at(i), greatestOf3(p.up.at(i)));
            store(p.downAround.at(i), greatestOf3(p.down.at(i)));
        }
    }
    void combs(Vek32s y) {
        Line& around = combs_[y & 3];
        if (y >= h_) {
            around = {};
            return;
        }
        Peaks &above = peaks_[(y - 1) & 3], &here = peaks_[y & 3], &below = peaks_[(y + 1) & 3];
        for (Vek32s i = from(1); i < end(1); i += kRowLanes) {
            const auto opposite = [&](Line Peaks::*which) __attribute__((always_inline)) {
                return max(load<RowU8>((above.*which).at(i)), load<RowU8>((below.*which).at(i)));
            };
            store(alone_.at(i), max(min(load<RowU8>(here.up.at(i)), opposite(&Peaks::downAround)),
                                    min(load<RowU8>(here.down.at(i)), opposite(&Peaks::upAround))));
        }
        repeat(alone_);
        for (Vek32s i = 0; i < n_; i += kRowLanes) store(around.at(i), greatestOf3(alone_.at(i)));
    }
    void blend(MutableBlock<Vek8u> dst, Vek32s y, const BlendWeights& weights) {
        const NeighbourRows rows(y, h_);
        const Vek8u *above = src_.at(first_, rows.above), *here = src_.at(first_, y),
                    *below = src_.at(first_, rows.below);
        Vek8u* to = dst.at(first_, y);
        forVectors(0, n_, [&](Vek32s i, auto samples) {
            const auto combOf = [&](Vek32s row) __attribute__((always_inline)) {
                return load<RowU8>(combs_[row & 3].at(i));
            };
            const RowU8 comb = max(max(combOf(y - 1), combOf(y)), combOf(y + 1));
            const RowU8 s = samples.load(here + i);
            samples.store(to + i,
                          weights.anyAbove(comb)
                              ? weights.blend(comb, s, triangle(samples.load(above + i), s, samples.load(below + i)))
                              : s);
        });
    }
    [[gnu::always_inline]] static RowU8 greatestOf3(const Vek8u* p) {
        return max(max(load<RowU8>(p - 1), load<RowU8>(p)), load<RowU8>(p + 1));
    }

    Block<Vek8u> src_;
    Vek32s w_, h_, first_, n_;
    Peaks peaks_[4] = {};
    Line combs_[4] = {};
    Line alone_ = {};  // the combs of one row
};

inline void deinterlaceBlend(Block<Vek8u> src, MutableBlock<Vek8u> dst, VekiSize roiSize,
                             const VekDeinterlaceBlendState& state) {
    const BlendWeights weights(state.low, state.high);
    forTiles(roiSize.width, BlendTile::kColumns, [&](Vek32s first, Vek32s n) {
        BlendTile tile(src, roiSize, first, n);
        tile.run(dst, weights);
    });
}

}  // namespace vekvc::simd

#endif
