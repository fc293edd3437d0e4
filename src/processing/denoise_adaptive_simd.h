// Fast form of the rows of the recursive denoiser. Rows of the state may be read and written in whole vectors; only the
// picture's own rows end where they end.
#ifndef VEKVC_PROCESSING_DENOISE_ADAPTIVE_SIMD_H
#define VEKVC_PROCESSING_DENOISE_ADAPTIVE_SIMD_H

#include "processing/denoise_adaptive.h"
#include "processing/filter_rows_simd.h"

namespace vekvc::simd {

inline void adaptiveDifferences(const VekDenoiseAdaptiveState& state, const Vek8u* pSrc, Vek32s y) {
    const Vek16u* estimate = state.estimate(y);
    Vek16s* e = state.differences(y);
    const Vek32s w = state.size.width;
    forVectors(0, w, [&](Vek32s x, auto samples) {
        const RowU8 s = samples.load(pSrc + x);
        store(e + x, (lowColumns(s) << 4) - load<RowI16>(estimate + x));
        store(e + x + kRowLanes16, (highColumns(s) << 4) - load<RowI16>(estimate + x + kRowLanes16));
    });
    e[-1] = e[0];
    e[w] = e[w - 1];
}

class AdaptiveEstimator {
  public:
    explicit AdaptiveEstimator(const VekDenoiseAdaptiveState& state)
        : gains_(state.gains), noise_(state.noise), reciprocal_(65536 / state.noise) {}

    // The gain k of each column from what is below lo = 4 noise and the gain so far.
    // sum: e(x - 1) + e(x + 1) and 2 e(x) of the sums down the columns, 32640 in magnitude at most; magnitudes: theirs.
    [[gnu::always_inline]] RowU16 gain(RowI16 outer, RowI16 inner, RowU16 magnitudes, RowI16 before) const {
        // |outer + inner|, up to 65280, as the distance of unsigned numbers.
        const RowI16 middle = constant<RowI16, -32768>();
        const RowU16 sum = absDiff(as<RowU16>(outer ^ middle), as<RowU16>((zero<RowI16>() - inner) ^ middle));
        const RowU16 motion = max(mulHigh(sum, splat<RowU16>(11 << 9)), magnitudes >> 4);
        // floor(256 d / lo) = floor(64 d / noise); the quotient by the rounded-down reciprocal is at most 1 too small.
        const RowU16 lo = splat<RowU16>(4 * noise_);
        const RowU16 n = min(subSat(motion, lo), lo) << 6;
        const RowU16 quotient = mulHigh(n, splat<RowU16>(reciprocal_));
        const RowI16 rest = as<RowI16>(n - quotient * splat<RowU16>(noise_));
        const RowI16 exact = as<RowI16>(quotient) - (rest > splat<RowI16>(noise_ - 1));
        return as<RowU16>(max(exact, before + splat<RowI16>(1)));
    }
    // The table's entries for so many gains; they are often all the same.
    [[gnu::always_inline]] RowI16 look(RowU16 k) const {
        Vek16u index[kRowLanes16];
        store(index, k);
        if (allZero(k ^ splat<RowU16>(index[0]))) return splat<RowI16>(load<Vek16s>(gains_ + index[0]));
        Vek16u found[kRowLanes16];
        for (Vek32s i = 0; i < kRowLanes16; ++i) found[i] = load<Vek16u>(gains_ + index[i]);
        return load<RowI16>(found);
    }

  private:
    const AdaptiveGain* gains_;
    Vek32s noise_, reciprocal_;
};

inline void adaptiveEstimate(const VekDenoiseAdaptiveState& state, Vek32s y) {
    static_assert(sizeof(AdaptiveGain) == 2);
    const Vek16s *above = state.differences(y > 0 ? y - 1 : y), *here = state.differences(y),
                 *below = state.differences(y < state.size.height - 1 ? y + 1 : y);
    const Vek32s w = state.size.width;
    // Sums down the columns, 1 2 1: of e and of |e|, at most 16320 in magnitude; with one column more on both sides.
    Vek16s *sums = state.columnSums(), *magnitudes = state.columnMagnitudes();
    for (Vek32s x = -kRowLanes16; x <= w; x += kRowLanes16) {
        const auto a = load<RowI16>(above + x), e = load<RowI16>(here + x), b = load<RowI16>(below + x);
        store(sums + x, a + b + (e + e));
        store(magnitudes + x, abs(a) + abs(b) + (abs(e) + abs(e)));
    }
    const AdaptiveEstimator estimator(state);
    Vek16u* estimate = state.estimate(y);
    Vek8u *gain = state.gain(y), *thresholds = state.thresholds(y), *samples = state.samples(y);
    for (Vek32s x = 0; x < w; x += kRowLanes) {
        const RowU8 gainsBefore = load<RowU8>(gain + x);
        RowI16 newEstimate[2], found[2];
        for (Vek32s half = 0; half < 2; ++half) {
            const Vek32s i = x + kRowLanes16 * half;
            const auto at = [&](const Vek16s* p, Vek32s dx) __attribute__((always_inline)) {
                return load<RowI16>(p + i + dx);
            };
            const RowI16 middle = at(sums, 0), middleMagnitude = at(magnitudes, 0);
            const RowU16 k = estimator.gain(
                at(sums, -1) + at(sums, 1), middle + middle,
                as<RowU16>(at(magnitudes, -1) + at(magnitudes, 1)) + as<RowU16>(middleMagnitude + middleMagnitude),
                half == 0 ? lowColumns(gainsBefore) : highColumns(gainsBefore));
            // (k e + 128) >> 8 with -128 k and -e, as 128 * 256 does not fit.
            const RowI16 none = zero<RowI16>(), e = load<RowI16>(here + i);
            newEstimate[half] = load<RowI16>(estimate + i) + mulHighRound((none - as<RowI16>(k)) << 7, none - e);
            store(estimate + i, newEstimate[half]);
            found[half] = estimator.look(k);
        }
        const RowI16 low = constant<RowI16, 255>(), round = splat<RowI16>(8);
        const auto high = [](RowI16 v) { return as<RowI16>(as<RowU16>(v) >> 8); };
        store(gain + x, joinColumns(found[0] & low, found[1] & low));
        store(thresholds + x, joinColumns(high(found[0]), high(found[1])));
        store(samples + x, joinColumns((newEstimate[0] + round) >> 4, (newEstimate[1] + round) >> 4));
    }
    samples[-2] = samples[-1] = samples[0];
    samples[w] = samples[w + 1] = samples[w - 1];
}

// 32-bit sums in the order in which a WidePair widens.
struct WideSums {
    RowI32 of[4];

    void add(WidePair p) {
        const RowI16 one = constant<RowI16, 1>(), none = zero<RowI16>();
        of[0] += mulAddPairs(interleaveLow(p.low, none), one);
        of[1] += mulAddPairs(interleaveHigh(p.low, none), one);
        of[2] += mulAddPairs(interleaveLow(p.high, none), one);
        of[3] += mulAddPairs(interleaveHigh(p.high, none), one);
    }
};

// The columns from x on. With T the greatest threshold, a product (T - |d|) |d| is at most T^2 / 4. Thresholds up to
// 127 leave the differences that count in 8 bits, and 8 products, 32256, in 16; beyond, 2 products are 32512.
template <bool wide>
[[gnu::always_inline]] inline RowU8 adaptiveSmooth(const Vek8u* const (&rows)[5], const Vek16u* estimate, RowU8 t,
                                                   Vek32s x) {
    const RowU8 c = load<RowU8>(rows[2] + x);
    WidePair weightSum = {zero<RowI16>(), zero<RowI16>()}, products = weightSum;
    WideSums num = {};
    const auto addPair = [&](const Vek8u* first, const Vek8u* second) __attribute__((always_inline)) {
        const RowU8 b1 = load<RowU8>(first), b2 = load<RowU8>(second);
        const RowU8 w1 = subSat(t, absDiff(b1, c)), w2 = subSat(t, absDiff(b2, c));
        const RowU8 wLow = interleaveLow(w1, w2), wHigh = interleaveHigh(w1, w2);
        const RowI8 ones = constant<RowI8, 1>();
        weightSum = weightSum + WidePair{mulAddPairs(wLow, ones), mulAddPairs(wHigh, ones)};
        if constexpr (wide) {
            const RowU8 none = zero<RowU8>();
            const auto product = [&](RowU8 w, RowU8 b) __attribute__((always_inline)) {
                const WidePair d = weighted<1, -1>(b, c);
                return WidePair{as<RowI16>(interleaveLow(w, none)) * d.low,
                                as<RowI16>(interleaveHigh(w, none)) * d.high};
            };
            num.add(product(w1, b1) + product(w2, b2));
        } else {
            const auto d1 = as<RowI8>(b1 - c), d2 = as<RowI8>(b2 - c);
            products = products +
                       WidePair{mulAddPairs(wLow, interleaveLow(d1, d2)), mulAddPairs(wHigh, interleaveHigh(d1, d2))};
        }
    };
    const auto flush = [&] {
        if constexpr (!wide) {
            num.add(products);
            products = {zero<RowI16>(), zero<RowI16>()};
        }
    };
    // 12 pairs: each row's outer two on both sides, and the middle columns.
    for (int j = 0; j < 5; ++j) {
        addPair(rows[j] + x - 2, rows[j] + x - 1);
        addPair(rows[j] + x + 1, rows[j] + x + 2);
        if (j % 2 == 1) flush();
    }
    addPair(rows[0] + x, rows[1] + x);
    addPair(rows[3] + x, rows[4] + x);
    flush();
    weightSum = weightSum + weighted<1, 0>(t, t);  // the centre

    // floor((32 num + den) / (2 den)): what the rounded quotient lacks or has too much shows in the rest.
    const auto quotient = [](RowI32 sum, RowI32 den) __attribute__((always_inline)) {
        const RowI32 n = (sum << 5) + den, d = den + den;
        const RowI32 q = truncate(toFloat(n) / toFloat(d));
        return q + ((n - q * d) >> 31);
    };
    const auto quotients = [&](RowI32 first, RowI32 second, RowI16 den) __attribute__((always_inline)) {
        const RowI16 none = zero<RowI16>();
        return narrowI16(quotient(first, as<RowI32>(interleaveLow(den, none))),
                         quotient(second, as<RowI32>(interleaveHigh(den, none))));
    };
    const WidePair change = {quotients(num.of[0], num.of[1], weightSum.low),
                             quotients(num.of[2], num.of[3], weightSum.high)};
    return narrowed(loadWide(estimate + x) + change, [](RowI16 v) { return (v + splat<RowI16>(8)) >> 4; });
}

inline void adaptiveSmooth(const VekDenoiseAdaptiveState& state, Vek8u* pDst, Vek32s y) {
    const Vek8u* rows[5];
    for (Vek32s j = 0; j < 5; ++j) rows[j] = state.samples(clip3(0, state.size.height - 1, y + j - 2));
    const Vek8u* thresholds = state.thresholds(y);
    const Vek16u* estimate = state.estimate(y);
    const bool wide = state.gains[256].threshold > 127;
    forVectors(0, state.size.width, [&](Vek32s x, auto samples) {
        const auto t = load<RowU8>(thresholds + x);
        samples.store(pDst + x,
                      wide ? adaptiveSmooth<true>(rows, estimate, t, x) : adaptiveSmooth<false>(rows, estimate, t, x));
    });
}

}  // namespace vekvc::simd

#endif
