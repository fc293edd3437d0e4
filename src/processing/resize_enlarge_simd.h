// Rows of an enlarged picture (or of one of the same size), from rows of the source taken apart.
#ifndef VEKVC_PROCESSING_RESIZE_ENLARGE_SIMD_H
#define VEKVC_PROCESSING_RESIZE_ENLARGE_SIMD_H

#include <cstring>

#include "processing/convert_bgr_simd.h"
#include "processing/convert_layout_simd.h"
#include "processing/resize_plain.h"
#include "processing/resize_tile.h"

namespace vekvc::simd {

using processing::halved;
using processing::Interpolation;
using processing::Resize;

using WidestWords = Words<WidestBytes>;
inline constexpr int kWordLanes = WidestBytes::kBytes / 2;

// Of one window: a few rows of the source, or of what the horizontal filter makes of them, the latest ones used.
template <int e>
class Enlarger {
  public:
    Enlarger(const Resize& r, const ResizeWindow& window, ResizeTile& tile)
        : r_(r),
          tile_(tile),
          first_((window.left & ~std::ptrdiff_t{3}) / e),
          columns_((window.right + e - 1) / e - first_),
          window_(window) {}

    // The tile's columns begin at a multiple of four, which is `left` or up to three columns before it.
    void run(Interpolation interpolation) {
        for (std::ptrdiff_t v = window_.top; v < window_.bottom; ++v) {
            const std::ptrdiff_t y = v - window_.top;
            if constexpr (e > 1) {
                if (interpolation == Interpolation::Linear) linear(v, y);
                if (interpolation == Interpolation::Smooth) cubic(v, y);
            }
            if (e == 1 || interpolation == Interpolation::Nearest) nearest(v, y);
        }
    }

  private:
    static constexpr int kColumns = kResizeColumns / e + 8;
    // Rows of samples begin kBefore columns before the window's first one, of which two are used.
    static constexpr int kBefore = 8, kSamples = kBefore + kColumns + 8 + 2 * WidestBytes::kBytes;
    static constexpr int kSlots = 4;
    static constexpr int slotOf(std::ptrdiff_t j) { return static_cast<int>(j & (kSlots - 1)); }

    Vek8u* samples(int component, std::ptrdiff_t j) { return samples_[component][slotOf(j)] + kBefore; }

    // Row j of the source, apart, with two columns more on both sides; rows and columns outside are the border's.
    void separate(std::ptrdiff_t j) {
        const int slot = slotOf(j);
        if (held_[slot] == j) return;
        held_[slot] = j;
        const std::ptrdiff_t w = r_.area.width;
        const std::ptrdiff_t first = std::max<std::ptrdiff_t>(0, first_ - 2) & ~std::ptrdiff_t{1};
        const std::ptrdiff_t last = std::min(w, first_ + columns_ + 2);
        const Vek8u* row = r_.from.row(clip3(0, r_.area.height - 1, j));
        Vek8u halves[2][kSamples];
        separateRow(row + 2 * first, samples(0, j) + first - first_, halves[0], halves[1], last - first);
        for (int c = 0; c < 2; ++c)
            interleaveChroma(halves[c], halves[c], samples(1 + c, j) + first - first_, halved(last - first));
        for (int c = 0; c < 3; ++c) {
            Vek8u* s = samples(c, j) - first_;
            for (std::ptrdiff_t x = first_ - 2; x < 0; ++x) s[x] = s[0];
            for (std::ptrdiff_t x = w; x < first_ + columns_ + 2; ++x) s[x] = s[w - 1];
        }
    }

    void nearest(std::ptrdiff_t v, std::ptrdiff_t y) {
        const std::ptrdiff_t j = v / e;
        separate(j);
        for (int c = 0; c < 3; ++c) {
            const Vek8u* from = samples(c, j);
            Vek8u* to = tile_.row(c, y);
            if constexpr (e == 1) {
                std::memcpy(to, from, static_cast<std::size_t>(columns_));
            } else if constexpr (e == 2) {
                interleaveChroma(from, from, to, columns_);
            } else {
                Vek8u twice[2 * kSamples];
                interleaveChroma(from, from, twice, columns_);
                interleaveChroma(twice, twice, to, 2 * columns_);
            }
        }
    }

    // e results for each of kWordLanes columns, 0..255, in the order of the picture.
    static void storeColumns(Vek8u* to, const WidestWords (&p)[e]) {
        if constexpr (e == 2) {
            store(to, p[0] | p[1] << 8);
        } else {
            const WidestWords first = p[0] | p[1] << 8, second = p[2] | p[3] << 8;
            storeInOrder(to, as<WidestBytes>(interleaveLow(first, second)),
                         as<WidestBytes>(interleaveHigh(first, second)));
        }
    }

    // The phases of the e results around a column, in eighths: the first half lies between it and the one before it.
    static constexpr int phase(int i) { return processing::phaseOf(e + i, e).eighths; }
    static constexpr bool before(int i) { return processing::phaseOf(e + i, e).before == 0; }

    // Rows are mixed first: sums of products are exact, and stay below 64 * 255 + 32.
    void linear(std::ptrdiff_t v, std::ptrdiff_t y) {
        using W = WidestWords;
        const auto [j, g] = processing::phaseOf(v, e);
        separate(j);
        separate(j + 1);
        const W weight = splat<W>(g);
        for (int c = 0; c < 3; ++c) {
            const Vek8u *upper = samples(c, j), *lower = samples(c, j + 1);
            const auto mixedRows = [&](std::ptrdiff_t k) {  // 8 a + g (b - a)
                const W a = loadWords<WidestBytes>(upper + k), b = loadWords<WidestBytes>(lower + k);
                return (a << 3) + weight * (b - a);
            };
            Vek8u* to = tile_.row(c, y);
            for (std::ptrdiff_t k = 0; k < columns_; k += kWordLanes) {
                const W here = mixedRows(k), left = mixedRows(k - 1), right = mixedRows(k + 1);
                W p[e];
                for (int i = 0; i < e; ++i) {
                    const W a = before(i) ? left : here, b = before(i) ? here : right;
                    p[i] = ((a << 3) + splat<W>(phase(i)) * (b - a) + splat<W>(32)) >> 6;
                }
                storeColumns(to + e * k, p);
            }
        }
    }

    // Sums of products with the weights of a phase, of four vectors as two pairs each.
    struct PairedWeights {
        WidestWords low, high;

        explicit PairedWeights(int eighths)
            : low(splatPair<WidestWords>(processing::kCubic[eighths][0], processing::kCubic[eighths][1])),
              high(splatPair<WidestWords>(processing::kCubic[eighths][2], processing::kCubic[eighths][3])) {}
    };
    // (sum + half) >> shift in 16 bits.
    template <int shift>
    [[gnu::always_inline]] static WidestWords weighted(WidestWords a, WidestWords b, WidestWords c, WidestWords d,
                                                       const PairedWeights& w) {
        using D = DoubleWords<WidestBytes>;
        const D half = splat<D>(1 << (shift - 1));
        const D low = mulAddPairs(interleaveLow(a, b), w.low) + mulAddPairs(interleaveLow(c, d), w.high);
        const D high = mulAddPairs(interleaveHigh(a, b), w.low) + mulAddPairs(interleaveHigh(c, d), w.high);
        return narrowI16((low + half) >> shift, (high + half) >> shift);
    }

    // Row j of the source after the horizontal filter: 16 times samples, beyond 0..4080 by less than a quarter.
    void filter(std::ptrdiff_t j) {
        if (filtered_[slotOf(j)] == j) return;
        filtered_[slotOf(j)] = j;
        separate(j);
        for (int i = 0; i < e; ++i) {
            const PairedWeights weights(phase(i));
            for (int c = 0; c < 3; ++c) {
                const Vek8u* from = samples(c, j) - (before(i) ? 2 : 1);
                Vek16s* to = filteredRow(c, j, i);
                const auto at = [&](std::ptrdiff_t k) { return loadWords<WidestBytes>(from + k); };
                for (std::ptrdiff_t k = 0; k < columns_; k += kWordLanes)
                    store(to + k, weighted<6>(at(k), at(k + 1), at(k + 2), at(k + 3), weights));
            }
        }
    }

    void cubic(std::ptrdiff_t v, std::ptrdiff_t y) {
        using W = WidestWords;
        const processing::Phase vertical = processing::phaseOf(v, e);
        const std::ptrdiff_t j = vertical.before;
        for (int i = -1; i <= 2; ++i) filter(j + i);
        const PairedWeights weights(vertical.eighths);
        for (int c = 0; c < 3; ++c) {
            Vek8u* to = tile_.row(c, y);
            for (std::ptrdiff_t k = 0; k < columns_; k += kWordLanes) {
                W p[e];
                for (int i = 0; i < e; ++i) {
                    const auto row = [&](int more) { return load<W>(filteredRow(c, j + more, i) + k); };
                    const W sum = weighted<14>(row(-1), row(0), row(1), row(2), weights);
                    p[i] = min(max(sum, zero<W>()), splat<W>(255));
                }
                storeColumns(to + e * k, p);
            }
        }
    }

    Vek16s* filteredRow(int component, std::ptrdiff_t j, int i) {
        return filteredSamples_[component][slotOf(j)] + i * kFiltered;
    }

    static constexpr int kFiltered = kColumns + kWordLanes;
    static constexpr std::ptrdiff_t kNone = PTRDIFF_MIN;

    const Resize& r_;
    ResizeTile& tile_;
    std::ptrdiff_t first_, columns_;  // of the source
    const ResizeWindow& window_;
    std::ptrdiff_t held_[kSlots] = {kNone, kNone, kNone, kNone}, filtered_[kSlots] = {kNone, kNone, kNone, kNone};
    Vek8u samples_[3][kSlots][kSamples] = {};
    Vek16s filteredSamples_[3][kSlots][e * kFiltered];
};

template <int e>
void enlargeTile(const Resize& r, const ResizeWindow& window, ResizeTile& tile) {
    Enlarger<e>(r, window, tile).run(r.interpolation);
}

}  // namespace vekvc::simd

#endif
