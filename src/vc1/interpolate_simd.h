// Fast forms of VC-1 interpolation.
#ifndef VEKVC_VC1_INTERPOLATE_SIMD_H
#define VEKVC_VC1_INTERPOLATE_SIMD_H

#include "core/simd.h"
#include "vc1/interpolate_plain.h"

namespace vekvc::simd {

using vc1::Interpolation;

// Runs one case in a function of its own, with all arguments in registers (sizes are at most 16). Together in one
// function, the cases share address arithmetic; and g++ 12 hands a structure over through memory, from which it is read
// before it is written (8x8 bilinear: 30 to 43 cycles).
template <class Case, int height>
[[gnu::noinline]] void runCase(const Vek8u* src, std::ptrdiff_t srcStep, Vek8u* dst, std::ptrdiff_t dstStep,
                               int modes) {
    const VekiSize size = {modes >> 8 & 255, height > 0 ? height : modes >> 16};
    Case()({src, srcStep, dst, dstStep, modes & 3, modes >> 2 & 3, modes >> 4 & 1, size});
}
template <class Case>
VEKVC_SIMD_INLINE void apart(const Interpolation& p, Case) {
    const int modes = p.dx | p.dy << 2 | p.RND << 4 | p.size.width << 8 | p.size.height << 16;
    const auto run = p.size.height == 8 ? runCase<Case, 8> : runCase<Case, 0>;  // the commonest height is unrolled
    run(p.src, p.srcStep, p.dst, p.dstStep, modes);
}

// ---- bicubic, in strips of eight columns and an even number of rows

// Two 8-bit weights for pairs of bytes.
template <class V>
using Weights = Vec<std::int8_t, V::kBytes>;
template <class V, int first, int second>
VEKVC_SIMD_INLINE Weights<V> weights() {
    return as<Weights<V>>(constant<Vec<Vek16s, V::kBytes / 2>, (first & 255) | second * 256>());
}

// The filter of fraction f on bytes: `before` holds the samples at -1 and 0 side by side, `behind` those at 1 and 2.
// Each sum is at most 71 * 255.
template <int f, class V>
VEKVC_SIMD_INLINE auto filtered(V before, V behind) {
    constexpr auto& taps = vc1::kBicubic[f].at;
    return mulAddPairs(before, weights<V, taps[0], taps[1]>()) + mulAddPairs(behind, weights<V, taps[2], taps[3]>());
}

// The horizontal filter of fraction f on the values that the vertical one leaves, rounded and shifted by 7. Those are at
// most 574 for the quarter filter (53 * 574 + 7 * 64 + 64 < 2^15) and 2295 for the half filter (9 * 2295 + 2 * 255 + 64),
// so that only the last addition can leave 16 bits, upwards: then the result is above 255 anyhow.
template <int f, class V>
VEKVC_SIMD_INLINE V filteredAcross(V a, V b, V c, V d, V rounding) {
    if constexpr (f == 2)
        return addSat(b * constant<V, 9>() + rounding - (a + d), c * constant<V, 9>()) >> 7;
    else if constexpr (f == 1)
        return addSat(b * constant<V, 53>() + rounding - (a << 2) - d * constant<V, 3>(), c * constant<V, 18>()) >> 7;
    else
        return filteredAcross<1>(d, c, b, a, rounding);
}

VEKVC_SIMD_INLINE u8x16 load8(const Vek8u* p) { return loadBytes<u8x16, 8>(p); }

template <int dy>
VEKVC_SIMD_INLINE void bicubicDown(const Interpolation& p, const Vek8u* src, Vek8u* dst) {
    constexpr int shift = vc1::kBicubic[dy].shift;
    const i16x8 rounding = splat<i16x8>((1 << (shift - 1)) - 1 + p.RND);
    const std::ptrdiff_t step = p.srcStep, dstStep = p.dstStep;
    u8x16 last = load8(src + step);
    const u8x16 row = load8(src);
    u8x16 before0 = interleaveLow(load8(src - step), row), before1 = interleaveLow(row, last);  // of two rows
#pragma GCC unroll 4
    for (int y = 0; y < p.size.height; y += 2) {
        const u8x16 next = load8(src + 2 * step), after = load8(src + 3 * step);
        const u8x16 behind0 = interleaveLow(last, next), behind1 = interleaveLow(next, after);
        const i16x8 a = (filtered<dy>(before0, behind0) + rounding) >> shift;
        const i16x8 b = (filtered<dy>(before1, behind1) + rounding) >> shift;
        storePair8(dst, dst + dstStep, narrowU8(a, b));
        before0 = behind0;
        before1 = behind1;
        last = after;
        src += 2 * step;
        dst += 2 * dstStep;
    }
}

template <int dx>
VEKVC_SIMD_INLINE void bicubicAcross(const Interpolation& p, const Vek8u* src, Vek8u* dst) {
    constexpr int shift = vc1::kBicubic[dx].shift;
    const i16x8 rounding = splat<i16x8>((1 << (shift - 1)) - p.RND);
    const std::ptrdiff_t step = p.srcStep, dstStep = p.dstStep;
    const auto row = [=](const Vek8u* s) {
        const u8x16 before = interleaveLow(load8(s - 1), load8(s)), behind = interleaveLow(load8(s + 1), load8(s + 2));
        return (filtered<dx>(before, behind) + rounding) >> shift;
    };
#pragma GCC unroll 4
    for (int y = 0; y < p.size.height; y += 2) {
        storePair8(dst, dst + dstStep, narrowU8(row(src), row(src + step)));
        src += 2 * step;
        dst += 2 * dstStep;
    }
}

// The 11 samples from column -1 to 9, at the low end of each half: of one row or of two.
VEKVC_SIMD_INLINE u8x16 load11(const Vek8u* p) { return loadPair8<u8x16>(p - 1, p + 2); }
template <class V>
VEKVC_SIMD_INLINE V inOrder11(V v) {
    alignas(32) static constexpr Vek8u kOrder[32] = {0, 1, 2, 3, 4, 5, 6, 7, 13, 14, 15, 128, 128, 128, 128, 128,
                                                     0, 1, 2, 3, 4, 5, 6, 7, 13, 14, 15, 128, 128, 128, 128, 128};
    return shuffleBytes(v, load<V>(kOrder));
}

// Bytes of two rows side by side, columns -1 to 6 and from 7 on.
template <class V>
struct RowsSideBySide {
    V left, right;
    VEKVC_SIMD_INLINE RowsSideBySide(V upper, V lower)
        : left(interleaveLow(upper, lower)), right(interleaveHigh(upper, lower)) {}
};

template <int dx, int dy, class V>
VEKVC_SIMD_INLINE auto bothFiltered(const RowsSideBySide<V>& before, const RowsSideBySide<V>& behind, int RND) {
    using S = Vec<Vek16s, V::kBytes / 2>;
    constexpr int shift = vc1::kBicubic[dx].shift + vc1::kBicubic[dy].shift - 7;
    const S rounding = splat<S>((1 << (shift - 1)) - 1 + RND);
    const S left = (filtered<dy>(before.left, behind.left) + rounding) >> shift;
    const S right = (filtered<dy>(before.right, behind.right) + rounding) >> shift;
    return filteredAcross<dx>(left, alignRight<2>(right, left), alignRight<4>(right, left), alignRight<6>(right, left),
                              splat<S>(64 - RND));
}

template <int dx, int dy>
VEKVC_SIMD_INLINE void bicubicBoth(const Interpolation& p, const Vek8u* src, Vek8u* dst) {
    const std::ptrdiff_t step = p.srcStep, dstStep = p.dstStep;
#if VEKVC_VECTOR256
    // Two rows at a time: the halves of `rows` are a row and the one below it.
    const auto loadTwo = [=](const Vek8u* s) { return inOrder11(join(load11(s), load11(s + step))); };
    u8x32 above = loadTwo(src - step), below = loadTwo(src + step);
    RowsSideBySide before(above, highThenLow(above, below));
#pragma GCC unroll 1
    for (int y = 0; y < p.size.height; y += 2) {
        const u8x32 next =
            y + 2 < p.size.height ? loadTwo(src + 3 * step) : inOrder11(join(load11(src + 3 * step), zero<u8x16>()));
        const RowsSideBySide behind(below, highThenLow(below, next));
        const i16x16 out = bothFiltered<dx, dy>(before, behind, p.RND);
        const u8x16 bytes = narrowU8(lowHalf(out), highHalf(out));
        storePair8(dst, dst + dstStep, bytes);
        before = behind;
        below = next;
        src += 2 * step;
        dst += 2 * dstStep;
    }
#else
    const auto loadOne = [=](const Vek8u* s) { return inOrder11(load11(s)); };
    const u8x16 row = loadOne(src);
    u8x16 last = loadOne(src + step);
    RowsSideBySide before0(loadOne(src - step), row), before1(row, last);
    for (int y = 0; y < p.size.height; ++y) {
        const u8x16 next = loadOne(src + 2 * step);
        const RowsSideBySide behind(last, next);
        const i16x8 out = bothFiltered<dx, dy>(before0, behind, p.RND);
        storeBytes<8>(dst, narrowU8(out, out));
        before0 = before1;
        before1 = behind;
        last = next;
        src += step;
        dst += dstStep;
    }
#endif
}

template <int n>
VEKVC_SIMD_INLINE void copyRows(const Interpolation& p) {
    const Vek8u* src = p.src;
    Vek8u* dst = p.dst;
#pragma GCC unroll 8
    for (int y = 0; y < p.size.height; ++y) {
        storeBytes<n>(dst, loadBytes<u8x16, n>(src));
        src += p.srcStep;
        dst += p.dstStep;
    }
}

template <int dx, int dy>
VEKVC_SIMD_INLINE void bicubic(const Interpolation& p) {
    if constexpr (dx == 0 && dy == 0) {
        return p.size.width == 16 ? copyRows<16>(p) : copyRows<8>(p);
    } else {
        for (int x = 0; x < p.size.width; x += 8) {
            if constexpr (dx == 0)
                bicubicDown<dy>(p, p.src + x, p.dst + x);
            else if constexpr (dy == 0)
                bicubicAcross<dx>(p, p.src + x, p.dst + x);
            else
                bicubicBoth<dx, dy>(p, p.src + x, p.dst + x);
        }
    }
}

VEKVC_SIMD_INLINE void interpolateBicubic(const Interpolation& p) {
    if (p.size.width <= 0 || p.size.height <= 0) return;
    const bool fits = (p.size.width == 8 || p.size.width == 16) && p.size.height % 2 == 0;
    if (!fits) return apart(p, [](const Interpolation& q) { plain::interpolateBicubic(q); });
    switch (p.dx + 4 * p.dy) {
        case 0:
            return apart(p, [](const Interpolation& q) { bicubic<0, 0>(q); });
        case 1:
            return apart(p, [](const Interpolation& q) { bicubic<1, 0>(q); });
        case 2:
            return apart(p, [](const Interpolation& q) { bicubic<2, 0>(q); });
        case 3:
            return apart(p, [](const Interpolation& q) { bicubic<3, 0>(q); });
        case 4:
            return apart(p, [](const Interpolation& q) { bicubic<0, 1>(q); });
        case 5:
            return apart(p, [](const Interpolation& q) { bicubic<1, 1>(q); });
        case 6:
            return apart(p, [](const Interpolation& q) { bicubic<2, 1>(q); });
        case 7:
            return apart(p, [](const Interpolation& q) { bicubic<3, 1>(q); });
        case 8:
            return apart(p, [](const Interpolation& q) { bicubic<0, 2>(q); });
        case 9:
            return apart(p, [](const Interpolation& q) { bicubic<1, 2>(q); });
        case 10:
            return apart(p, [](const Interpolation& q) { bicubic<2, 2>(q); });
        case 11:
            return apart(p, [](const Interpolation& q) { bicubic<3, 2>(q); });
        case 12:
            return apart(p, [](const Interpolation& q) { bicubic<0, 3>(q); });
        case 13:
            return apart(p, [](const Interpolation& q) { bicubic<1, 3>(q); });
        case 14:
            return apart(p, [](const Interpolation& q) { bicubic<2, 3>(q); });
        case 15:
            return apart(p, [](const Interpolation& q) { bicubic<3, 3>(q); });
    }
}

// ---- bilinear

// W bytes of each row, `rows` rows to a vector.
template <int W>
struct BilinearRow {
    using V = u8x16;
    static constexpr int rows = 1;
    VEKVC_SIMD_INLINE static V load(const Vek8u* p, std::ptrdiff_t) { return loadBytes<V, W>(p); }
    VEKVC_SIMD_INLINE static void store(Vek8u* p, std::ptrdiff_t, V v) { storeBytes<W>(p, v); }
};
template <>
struct BilinearRow<8> {
    using V = u8x16;
    static constexpr int rows = 2;
    VEKVC_SIMD_INLINE static V load(const Vek8u* p, std::ptrdiff_t step) { return loadPair8<V>(p, p + step); }
    VEKVC_SIMD_INLINE static void store(Vek8u* p, std::ptrdiff_t step, V v) { storePair8(p, p + step, v); }
};
#if VEKVC_VECTOR256
template <>
struct BilinearRow<16> {
    using V = u8x32;
    static constexpr int rows = 2;
    VEKVC_SIMD_INLINE static V load(const Vek8u* p, std::ptrdiff_t step) { return loadPair16<V>(p, p + step); }
    VEKVC_SIMD_INLINE static void store(Vek8u* p, std::ptrdiff_t step, V v) { storePair16(p, p + step, v); }
};
#endif

// Pairs of bytes of two vectors, weighted and added: the low 4 bytes, or all.
template <int W, class V>
struct PairSums {
    using S = Vec<Vek16s, V::kBytes / 2>;
    S low, high;

    VEKVC_SIMD_INLINE PairSums(V a, V b, Weights<V> w)
        : low(mulAddPairs(interleaveLow(a, b), w)), high(W >= 8 ? mulAddPairs(interleaveHigh(a, b), w) : low) {}
    VEKVC_SIMD_INLINE void add(const PairSums& other) {
        low += other.low;
        if constexpr (W >= 8) high += other.high;
    }
    VEKVC_SIMD_INLINE V rounded(S rounding, int shift) const {
        const S a = (low + rounding) >> shift;
        if constexpr (W >= 8) return narrowU8(a, (high + rounding) >> shift);
        return narrowU8(a, a);
    }
};

// Between two vectors of samples at fraction f of 4.
template <int W, class V>
struct Between {
    Weights<V> w;
    Vec<Vek16s, V::kBytes / 2> rounding;

    Between(int f, int RND)
        : w(as<Weights<V>>(splat<decltype(rounding)>((4 - f) | f << 8))),
          rounding(splat<decltype(rounding)>(2 - RND)) {}
    VEKVC_SIMD_INLINE V operator()(V a, V b) const { return PairSums<W, V>(a, b, w).rounded(rounding, 2); }
};
// In the middle: (a + b + 1 - RND) >> 1.
template <class V>
struct Middle {
    V RND;

    explicit Middle(int rnd) : RND(splat<V>(rnd)) {}
    VEKVC_SIMD_INLINE V operator()(V a, V b) const { return average(a, b) - ((a ^ b) & RND); }
};

template <int W, class Use>
VEKVC_SIMD_INLINE void forRows(const Interpolation& p, Use&& use) {
    using Row = BilinearRow<W>;
    const Vek8u* src = p.src;
    Vek8u* dst = p.dst;
    const std::ptrdiff_t step = p.srcStep, dstStep = p.dstStep;
#pragma GCC unroll 4
    for (int y = 0; y < p.size.height; y += 2) {
        for (int i = 0; i < 2; i += Row::rows) Row::store(dst + i * dstStep, dstStep, use(src + i * step, step));
        src += 2 * step;
        dst += 2 * dstStep;
    }
}

// Towards the neighbour at distance(step), at fraction f.
template <int W, class Distance>
VEKVC_SIMD_INLINE void bilinearTowards(const Interpolation& p, int f, Distance distance) {
    using Row = BilinearRow<W>;
    const auto run = [&](const auto& mean) {
        forRows<W>(p, [&](const Vek8u* s, std::ptrdiff_t step) {
            return mean(Row::load(s, step), Row::load(s + distance(step), step));
        });
    };
    if (f == 2)
        run(Middle<typename Row::V>(p.RND));
    else
        run(Between<W, typename Row::V>(f, p.RND));
}

template <int W, int channels>
VEKVC_SIMD_INLINE void bilinearBoth(const Interpolation& p) {
    using Row = BilinearRow<W>;
    using V = typename Row::V;
    using S = Vec<Vek16s, V::kBytes / 2>;
    const auto across = [&](int factor) { return as<Weights<V>>(splat<S>(factor * ((4 - p.dx) | p.dx << 8))); };
    const Weights<V> upper = across(4 - p.dy), lower = across(p.dy);
    const S rounding = splat<S>(8 - p.RND);
    if constexpr (W == 8) {  // row by row: each is loaded once for the row above and for its own
        const auto pairs = [](const Vek8u* s) { return interleaveLow(load8(s), load8(s + channels)); };
        const auto mean = [&](u8x16 above, u8x16 below) {
            return (mulAddPairs(above, upper) + mulAddPairs(below, lower) + rounding) >> 4;
        };
        const Vek8u* src = p.src;
        Vek8u* dst = p.dst;
        u8x16 last = pairs(src);
#pragma GCC unroll 4
        for (int y = 0; y < p.size.height; y += 2) {
            const u8x16 middle = pairs(src + p.srcStep), next = pairs(src + 2 * p.srcStep);
            storePair8(dst, dst + p.dstStep, narrowU8(mean(last, middle), mean(middle, next)));
            last = next;
            src += 2 * p.srcStep;
            dst += 2 * p.dstStep;
        }
    } else {
        forRows<W>(p, [&](const Vek8u* s, std::ptrdiff_t step) {
            PairSums<W, V> sums(Row::load(s, step), Row::load(s + channels, step), upper);
            sums.add({Row::load(s + step, step), Row::load(s + step + channels, step), lower});
            return sums.rounded(rounding, 4);
        });
    }
}

template <int W, int channels>
VEKVC_SIMD_INLINE void bilinear(const Interpolation& p) {
    if ((p.dx | p.dy) == 0) return apart(p, [](const Interpolation& q) { copyRows<W>(q); });
    if (p.dy == 0)
        return apart(
            p, [](const Interpolation& q) { bilinearTowards<W>(q, q.dx, [](std::ptrdiff_t) { return channels; }); });
    if (p.dx == 0)
        return apart(
            p, [](const Interpolation& q) { bilinearTowards<W>(q, q.dy, [](std::ptrdiff_t step) { return step; }); });
    apart(p, [](const Interpolation& q) { bilinearBoth<W, channels>(q); });
}

template <int channels>
VEKVC_SIMD_INLINE void interpolateBilinear(const Interpolation& p) {
    const int width = p.size.width * channels;
    if (p.size.width <= 0 || p.size.height <= 0) return;
    if (p.size.height % 2 != 0)
        apart(p, [](const Interpolation& q) { plain::interpolateBilinear<channels>(q); });
    else if (width == 8)
        bilinear<8, channels>(p);
    else if (width == 16)
        bilinear<16, channels>(p);
    else if (width == 4)
        bilinear<4, channels>(p);
    else
        apart(p, [](const Interpolation& q) { plain::interpolateBilinear<channels>(q); });
}

}  // namespace vekvc::simd

#endif
