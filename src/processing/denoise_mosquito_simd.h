// Fast form of the filter against mosquito noise: the search for a block's direction, and the filter along it on
// several rows of a block at once.
#ifndef VEKVC_PROCESSING_DENOISE_MOSQUITO_SIMD_H
#define VEKVC_PROCESSING_DENOISE_MOSQUITO_SIMD_H

#include <utility>

#include "processing/denoise_mosquito_plain.h"
#include "processing/filter_rows_simd.h"

namespace vekvc::simd {

// ---- contrast

// The contrasts of a row of blocks, h rows high.
inline void blockContrasts(const VekDenoiseMosquitoState& state, Block<Vek8u> src, Vek32s by, Vek32s h) {
    using Blocks = Vec<std::uint64_t, kRowLanes / 8>;
    const Vek32s w = state.size.width;
    for (Vek32s x = 0; x < w; x += kRowLanes) {
        RowU8 least = splat<RowU8>(255), greatest = zero<RowU8>();
        for (Vek32s y = 8 * by; y < 8 * by + h; ++y) {
            RowU8 s;
            if (x <= w - kRowLanes) {
                s = load<RowU8>(src.at(x, y));
            } else {  // columns that are not there must not count
                Vek8u row[kRowLanes];
                copyRepeated(row, src.at(0, y), w, x, kRowLanes);
                s = load<RowU8>(row);
            }
            least = min(least, s);
            greatest = max(greatest, s);
        }
        const auto reduce = [](RowU8 v, auto choose) {
            v = choose(v, as<RowU8>(as<Blocks>(v) >> 32));
            v = choose(v, as<RowU8>(as<Blocks>(v) >> 16));
            return choose(v, as<RowU8>(as<Blocks>(v) >> 8));
        };
        const auto lesser = [](RowU8 a, RowU8 b) { return min(a, b); };
        const auto larger = [](RowU8 a, RowU8 b) { return max(a, b); };
        Vek8u contrasts[kRowLanes];
        store(contrasts, reduce(greatest, larger) - reduce(least, lesser));
        for (Vek32s i = 0; i < kRowLanes && i < w - x; i += 8) state.contrast((x + i) / 8, by) = contrasts[i];
    }
}

// ---- direction

// Sums along the lines of a direction, as 16 lanes.
struct LineSums {
    i16x8 low, high;
};
// Row i moved i lanes up (or n - 1 - i), then all rows added.
template <bool falling, std::size_t... i>
[[gnu::always_inline]] inline LineSums slantedSums(const i16x8* rows, std::index_sequence<i...>) {
    constexpr int last = static_cast<int>(sizeof...(i)) - 1;
    constexpr auto lanesUp = [](std::size_t row) {
        return 2 * (falling ? last - static_cast<int>(row) : static_cast<int>(row));
    };
    return {(bytesLeft<lanesUp(i)>(rows[i]) + ...), (bytesRight<16 - lanesUp(i)>(rows[i]) + ...)};
}
// Squares of the sums times 840 / number of samples, in four parts; the lines that meet in a lane have equal numbers.
[[gnu::always_inline]] inline i32x4 scoreParts(i16x8 low, i16x8 high, i32x4 factors, i32x4 moreFactors) {
    const auto squares = [](i16x8 a) __attribute__((always_inline)) { return mulAddPairs(a, a); };
    return squares(interleaveLow(low, high)) * factors + squares(interleaveHigh(low, high)) * moreFactors;
}
// 15 lines of 1 to 8 and back to 1 samples: lines l and 14 - l belong together.
template <bool falling>
[[gnu::always_inline]] inline i32x4 diagonalScore(const i16x8* rows) {
    const LineSums s = slantedSums<falling>(rows, std::make_index_sequence<8>());
    const i16x8 mirrored = shuffleBytes(s.high, lanes<u8x16>(12, 13, 10, 11, 8, 9, 6, 7, 4, 5, 2, 3, 0, 1, 14, 15));
    return scoreParts(s.low, mirrored, lanes<i32x4>(840, 420, 280, 210), lanes<i32x4>(168, 140, 120, 105));
}
// 11 lines of 2, 4, 6, 8 and back to 2 samples, two rows being moved alike: lines l and 10 - l belong together.
template <bool falling>
[[gnu::always_inline]] inline i32x4 steepScore(const i16x8* pairs) {
    const LineSums s = slantedSums<falling>(pairs, std::make_index_sequence<4>());
    const i16x8 mirrored =
        shuffleBytes(s.high, lanes<u8x16>(4, 5, 2, 3, 0, 1, 255, 255, 255, 255, 255, 255, 255, 255,  //
                                          255, 255));
    const i32x4 full = splat<i32x4>(105);
    return scoreParts(s.low, mirrored, lanes<i32x4>(420, 210, 140, 105), full);
}

inline int blockDirection(Block<Vek8u> block) {
    i16x8 rows[8], columns[8];
    for (int i = 0; i < 8; ++i)
        columns[i] = rows[i] = widenLow(loadBytes<u8x16, 8>(block.at(0, i))) - splat<i16x8>(128);
    transpose8x8(columns);

    i32x4 parts[8];  // by direction
    parts[0] = diagonalScore<false>(rows);
    parts[4] = diagonalScore<true>(rows);
    // The three directions whose lines cross every row (every column) once or twice.
    const auto steep = [&](const i16x8* r, int straight, int rising, int falling) __attribute__((always_inline)) {
        const i16x8 pairs[4] = {r[0] + r[1], r[2] + r[3], r[4] + r[5], r[6] + r[7]};
        const i16x8 all = (pairs[0] + pairs[1]) + (pairs[2] + pairs[3]);
        parts[straight] = mulAddPairs(all, all) * splat<i32x4>(105);
        parts[rising] = steepScore<false>(pairs);
        parts[falling] = steepScore<true>(pairs);
    };
    steep(rows, 6, 7, 5);
    steep(columns, 2, 1, 3);

    Vek32s scores[8];
    for (int d = 0; d < 8; d += 4) {
        transpose4x4(parts[d], parts[d + 1], parts[d + 2], parts[d + 3]);
        store(scores + d, (parts[d] + parts[d + 1]) + (parts[d + 2] + parts[d + 3]));
    }
    int direction = 0;
    for (int d = 1; d < 8; ++d)
        if (scores[d] > scores[direction]) direction = d;
    return direction;
}

// ---- filter

// Rows of 8 samples in one vector.
inline constexpr Vek32s kMosquitoRows = kRowLanes / 8;
[[gnu::always_inline]] inline RowU8 loadRows8(const Vek8u* p, std::ptrdiff_t step) {
#if VEKVC_VECTOR256
    return loadFour8<RowU8>(p, p + step, p + 2 * step, p + 3 * step);
#else
    return loadPair8<RowU8>(p, p + step);
#endif
}
[[gnu::always_inline]] inline void storeRows8(Vek8u* p, std::ptrdiff_t step, RowU8 v) {
#if VEKVC_VECTOR256
    storePair8(p, p + step, lowHalf(v));
    storePair8(p + 2 * step, p + 3 * step, highHalf(v));
#else
    storePair8(p, p + step, v);
#endif
}

// What a tap with strength S gives: min(|d|, S - (|d| >> damping)) with the sign of d, at most 47 in magnitude.
class ConstrainedTap {
  public:
    explicit ConstrainedTap(Vek32s strength)
        : strength_(splat<RowU8>(strength)),
          damping_(std::max(0, 6 - static_cast<int>(std::bit_width(static_cast<unsigned>(std::max(1, strength)))))),
          kept_(splat<RowU8>(255 >> damping_)) {}

    [[gnu::always_inline]] RowI8 of(RowU8 tap, RowU8 c) const {
        const RowU8 up = subSat(tap, c), down = subSat(c, tap);
        const RowU8 reach = subSat(strength_, as<RowU8>(as<RowU16>(up | down) >> damping_) & kept_);
        return as<RowI8>(min(up, reach) - min(down, reach));
    }

  private:
    RowU8 strength_;
    int damping_;
    RowU8 kept_;
};

// A block with two samples around it; pInside, if it is not null, has the same shape and is 0 for the samples outside
// the picture.
[[gnu::always_inline]] inline void filterBlock(const Vek8u* pSrc, std::ptrdiff_t step, const Vek8u* pInside,
                                               Vek8u* pDst, std::ptrdiff_t dstStep, int direction,
                                               MosquitoStrengths strengths) {
    const ConstrainedTap along(strengths.along), across(strengths.across);
    for (Vek32s y = 0; y < 8; y += kMosquitoRows, pSrc += kMosquitoRows * step, pDst += kMosquitoRows * dstStep) {
        const RowU8 c = loadRows8(pSrc, step);
        RowU8 least = c, greatest = c;
        RowI8 alongSum[2], acrossSum[2];  // by distance: of 2 taps, 94 at most, and of 4 taps of 16 at most
        for (int k = 0; k < 2; ++k) {
            const auto taps = [&](int d, const ConstrainedTap& constrained) __attribute__((always_inline)) {
                const MosquitoStep s = kMosquitoSteps[d & 7][k];
                const std::ptrdiff_t offset = s.y * step + s.x;
                const auto tap = [&](std::ptrdiff_t at) __attribute__((always_inline)) {
                    RowU8 v = loadRows8(pSrc + at, step);
                    if (pInside != nullptr) v = select(loadRows8(pInside + y * step + at, step), v, c);
                    least = min(least, v);
                    greatest = max(greatest, v);
                    return constrained.of(v, c);
                };
                return tap(offset) + tap(-offset);
            };
            alongSum[k] = taps(direction, along);
            acrossSum[k] = taps(direction + 2, across) + taps(direction + 6, across);
        }
        const auto threes = as<RowU8>(constant<RowI16, 0x0303>()), twoOne = as<RowU8>(constant<RowI16, 0x0102>());
        const WidePair sum = {mulAddPairs(threes, interleaveLow(alongSum[0], alongSum[1])) +
                                  mulAddPairs(twoOne, interleaveLow(acrossSum[0], acrossSum[1])),
                              mulAddPairs(threes, interleaveHigh(alongSum[0], alongSum[1])) +
                                  mulAddPairs(twoOne, interleaveHigh(acrossSum[0], acrossSum[1]))};
        const auto rounded = [](RowI16 s) __attribute__((always_inline)) {
            return (s + (s >> 15) + splat<RowI16>(8)) >> 4;
        };
        const RowU8 moved =
            narrowed(weighted<1, 0>(c, c) + WidePair{rounded(sum.low), rounded(sum.high)}, [](RowI16 v) { return v; });
        storeRows8(pDst, dstStep, max(min(moved, greatest), least));
    }
}

class MosquitoFilter {
  public:
    MosquitoFilter(VekiSize size, Block<Vek8u> src, MutableBlock<Vek8u> dst)
        : w_(size.width), h_(size.height), src_(src), dst_(dst) {}

    void copy(Vek32s x, Vek32s y) const {
        if (x <= w_ - 8 && y <= h_ - 8) {
            for (Vek32s i = 0; i < 8; ++i) std::memcpy(dst_.at(x, y + i), src_.at(x, y + i), 8);
        } else {
            copyPart(x, y, src_.at(x, y), src_.step);
        }
    }
    void filter(Vek32s x, Vek32s y, MosquitoStrengths strengths) const {
        const int direction =
            blockDirection({src_.at(std::min(x, w_ - 8), std::min(y, h_ - 8)), static_cast<Vek32s>(src_.step)});
        if (x >= 2 && y >= 2 && x <= w_ - 10 && y <= h_ - 10)
            filterBlock(src_.at(x, y), src_.step, nullptr, dst_.at(x, y), dst_.step, direction, strengths);
        else
            filterAtBorder(x, y, direction, strengths);
    }

  private:
    // The samples of a block that lie inside the picture.
    void copyPart(Vek32s x, Vek32s y, const Vek8u* from, std::ptrdiff_t step) const {
        for (Vek32s i = 0; i < 8 && i < h_ - y; ++i)
            std::memcpy(dst_.at(x, y + i), from + i * step, static_cast<std::size_t>(std::min(8, w_ - x)));
    }
    [[gnu::noinline]] void filterAtBorder(Vek32s x, Vek32s y, int direction, MosquitoStrengths strengths) const {
        constexpr Vek32s kStep = 16;
        Vek8u samples[12 * kStep] = {}, inside[12 * kStep] = {}, filtered[8 * 8];
        for (Vek32s j = 0; j < 12; ++j)
            for (Vek32s i = 0; i < 12; ++i) {
                const Vek32s column = x + i - 2, row = y + j - 2;
                if (column < 0 || column >= w_ || row < 0 || row >= h_) continue;
                samples[j * kStep + i] = src_(column, row);
                inside[j * kStep + i] = 255;
            }
        const Vek32s corner = 2 * kStep + 2;
        filterBlock(samples + corner, kStep, inside + corner, filtered, 8, direction, strengths);
        copyPart(x, y, filtered, 8);
    }

    Vek32s w_, h_;
    Block<Vek8u> src_;
    MutableBlock<Vek8u> dst_;
};

inline void denoiseMosquito(const VekDenoiseMosquitoState& state, Block<Vek8u> src, MutableBlock<Vek8u> dst,
                            Vek32s scale) {
    const auto [w, h] = state.size;
    if (scale == 0) {
        for (Vek32s y = 0; y < h; ++y) std::memcpy(dst.at(0, y), src.at(0, y), static_cast<std::size_t>(w));
        return;
    }
    const MosquitoFilter filter(state.size, src, dst);
    const auto contrasts = [&, height = h](Vek32s by) {
        if (by < state.blocksDown()) blockContrasts(state, src, by, std::min(8, height - 8 * by));
    };
    contrasts(0);
    for (Vek32s by = 0; by < state.blocksDown(); ++by) {
        contrasts(by + 1);
        for (Vek32s bx = 0; bx < state.blocksAcross(); ++bx) {
            Vek32s contrast = 0;
            for (Vek32s j = -1; j <= 1; ++j)
                for (Vek32s i = -1; i <= 1; ++i) contrast = std::max<Vek32s>(contrast, state.contrast(bx + i, by + j));
            const MosquitoStrengths strengths(contrast, scale);
            if (strengths.along == 0 && strengths.across == 0)
                filter.copy(8 * bx, 8 * by);
            else
                filter.filter(8 * bx, 8 * by, strengths);
        }
    }
}

}  // namespace vekvc::simd

#endif
