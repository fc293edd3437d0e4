// Fast forms of VC-1 interpolation.
#ifndef VEKVC_VC1_INTERPOLATE_SIMD_H
#define VEKVC_VC1_INTERPOLATE_SIMD_H

#include <array>
#include <utility>

#include "core/simd.h"
#include "vc1/interpolate_plain.h"

namespace vekvc::simd {

using vc1::Interpolation;

// Runs one case in a function of its own, with all arguments in registers (sizes are at most 16). Together in one
// function, the cases share address arithmetic; and g++ 12 hands a structure over through memory, from which it is read
// before it is written (8x8 bilinear: 30 to 43 cycles).
template <class Case>
[[gnu::noinline]] VekStatus runCase(const Vek8u* src, std::ptrdiff_t srcStep, Vek8u* dst, std::ptrdiff_t dstStep,
                                    int modes) {
    Case()({src, srcStep, dst, dstStep, modes & 3, modes >> 2 & 3, modes >> 4 & 1, {modes >> 8 & 255, modes >> 16}});
    return vekStsOk;
}
template <class Case>
[[gnu::always_inline]] inline VekStatus apart(const Interpolation& p, Case) {
    const int modes = p.dx | p.dy << 2 | p.RND << 4 | p.size.width << 8 | p.size.height << 16;
    return runCase<Case>(p.src, p.srcStep, p.dst, p.dstStep, modes);
}

// ---- bicubic, in strips of eight columns and an even number of rows

// Two 8-bit weights for pairs of bytes.
template <class V>
using Weights = Vec<std::int8_t, V::kBytes>;
template <class V, int first, int second>
[[gnu::always_inline]] inline Weights<V> weights() {
    return as<Weights<V>>(constant<Vec<Vek16s, V::kBytes / 2>, (first & 255) | second * 256>());
}

// The filter of fraction f on bytes: `before` holds the samples at -1 and 0 side by side, `behind` those at 1 and 2.
// Each sum is at most 71 * 255.
template <int f, class V>
[[gnu::always_inline]] inline auto filtered(V before, V behind) {
    constexpr auto& taps = vc1::kBicubic[f].at;
    return mulAddPairs(before, weights<V, taps[0], taps[1]>()) + mulAddPairs(behind, weights<V, taps[2], taps[3]>());
}

// The horizontal filter of fraction f on the values that the vertical one leaves, rounded and shifted by 7. Those are
// at most 574 for the quarter filter (53 * 574 + 7 * 64 + 64 < 2^15) and 2295 for the half filter (9 * 2295 + 2 * 255 +
// 64), so that only the last addition can leave 16 bits, upwards: then the result is above 255 anyhow.
template <int f, class V>
[[gnu::always_inline]] inline V filteredAcross(V a, V b, V c, V d, V rounding) {
    if constexpr (f == 2)
        return addSat(b * constant<V, 9>() + rounding - (a + d), c * constant<V, 9>()) >> 7;
    else if constexpr (f == 1)
        return addSat(b * constant<V, 53>() + rounding - (a << 2) - d * constant<V, 3>(), c * constant<V, 18>()) >> 7;
    else
        return filteredAcross<1>(d, c, b, a, rounding);
}

[[gnu::always_inline]] inline u8x16 load8(const Vek8u* p) { return loadBytes<u8x16, 8>(p); }

template <int dy>
[[gnu::always_inline]] inline void bicubicDown(const Interpolation& p, const Vek8u* src, Vek8u* dst) {
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
[[gnu::always_inline]] inline void bicubicAcross(const Interpolation& p, const Vek8u* src, Vek8u* dst) {
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
[[gnu::always_inline]] inline u8x16 load11(const Vek8u* p) { return loadPair8<u8x16>(p - 1, p + 2); }
template <class V>
[[gnu::always_inline]] inline V inOrder11(V v) {
    alignas(32) static constexpr Vek8u kOrder[32] = {0, 1, 2, 3, 4, 5, 6, 7, 13, 14, 15, 128, 128, 128, 128, 128,
                                                     0, 1, 2, 3, 4, 5, 6, 7, 13, 14, 15, 128, 128, 128, 128, 128};
    return shuffleBytes(v, load<V>(kOrder));
}

// Bytes of two rows side by side, columns -1 to 6 and from 7 on.
template <class V>
struct RowsSideBySide {
    V left, right;
    [[gnu::always_inline]] inline RowsSideBySide(V upper, V lower)
        : left(interleaveLow(upper, lower)), right(interleaveHigh(upper, lower)) {}
};

template <int dx, int dy, class V>
[[gnu::always_inline]] inline auto bothFiltered(const RowsSideBySide<V>& before, const RowsSideBySide<V>& behind,
                                                int RND) {
    using S = Vec<Vek16s, V::kBytes / 2>;
    constexpr int shift = vc1::kBicubic[dx].shift + vc1::kBicubic[dy].shift - 7;
    const S rounding = splat<S>((1 << (shift - 1)) - 1 + RND);
    const S left = (filtered<dy>(before.left, behind.left) + rounding) >> shift;
    const S right = (filtered<dy>(before.right, behind.right) + rounding) >> shift;
    return filteredAcross<dx>(left, alignRight<2>(right, left), alignRight<4>(right, left), alignRight<6>(right, left),
                              splat<S>(64 - RND));
}

template <int dx, int dy>
[[gnu::always_inline]] inline void bicubicBoth(const Interpolation& p, const Vek8u* src, Vek8u* dst) {
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
[[gnu::always_inline]] inline void copyRows(const Interpolation& p) {
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
[[gnu::always_inline]] inline void bicubic(const Interpolation& p) {
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

// Blocks of n x n have a function for each pair of fractions, found in a table (by dx + 4 dy).
using SquareKernel = VekStatus (*)(const Vek8u* src, std::ptrdiff_t srcStep, Vek8u* dst, std::ptrdiff_t dstStep,
                                   int RND);
template <int n, int fractions>
VekStatus bicubicSquare(const Vek8u* src, std::ptrdiff_t srcStep, Vek8u* dst, std::ptrdiff_t dstStep, int RND) {
    bicubic<fractions % 4, fractions / 4>({src, srcStep, dst, dstStep, 0, 0, RND, {n, n}});
    return vekStsOk;
}
template <int n, int... i>
constexpr std::array<SquareKernel, 16> bicubicSquares(std::integer_sequence<int, i...>) {
    return {bicubicSquare<n, i>...};
}
inline constexpr std::array<SquareKernel, 16> kBicubicSquares[2] = {
    bicubicSquares<8>(std::make_integer_sequence<int, 16>()),
    bicubicSquares<16>(std::make_integer_sequence<int, 16>())};

// Other sizes: of interlaced pictures, and of blocks at the edge of a picture.
template <int fractions>
VekStatus bicubicBlock(const Vek8u* src, std::ptrdiff_t srcStep, Vek8u* dst, std::ptrdiff_t dstStep, int RND,
                       VekiSize size) {
    bicubic<fractions % 4, fractions / 4>({src, srcStep, dst, dstStep, 0, 0, RND, size});
    return vekStsOk;
}
template <int... i>
constexpr auto bicubicBlocks(std::integer_sequence<int, i...>) {
    return std::array{bicubicBlock<i>...};
}
[[gnu::noinline]] inline VekStatus bicubicOfAnySize(const Vek8u* src, std::ptrdiff_t srcStep, Vek8u* dst,
                                                    std::ptrdiff_t dstStep, int modes, VekiSize block) {
    const int dx = modes & 3, dy = modes >> 2 & 3, RND = modes >> 4;
    const VekiSize size = vc1::bicubicSize(block);
    if (size.width <= 0 || size.height <= 0) return vekStsOk;
    if ((size.width == 8 || size.width == 16) && size.height % 2 == 0) {
        static constexpr auto kBlocks = bicubicBlocks(std::make_integer_sequence<int, 16>());
        return kBlocks[static_cast<std::size_t>(modes & 15)](src, srcStep, dst, dstStep, RND, size);
    }
    plain::interpolateBicubic({src, srcStep, dst, dstStep, dx, dy, RND, block});
    return vekStsOk;
}

[[gnu::always_inline]] inline VekStatus interpolateBicubic(const Interpolation& p) {
    const int fractions = p.dx + 4 * p.dy;
    if (p.size.width == p.size.height && (p.size.width == 8 || p.size.width == 16)) [[likely]]
        return kBicubicSquares[p.size.width / 16][static_cast<std::size_t>(fractions)](p.src, p.srcStep, p.dst,
                                                                                       p.dstStep, p.RND);
    return bicubicOfAnySize(p.src, p.srcStep, p.dst, p.dstStep, fractions | p.RND << 4, p.size);
}

// ---- bilinear

// W bytes of each row, `rows` rows to a vector.
template <int W>
struct BilinearRow {
    using V = u8x16;
    static constexpr int rows = 1;
    [[gnu::always_inline]] inline static V load(const Vek8u* p, std::ptrdiff_t) { return loadBytes<V, W>(p); }
    [[gnu::always_inline]] inline static void store(Vek8u* p, std::ptrdiff_t, V v) { storeBytes<W>(p, v); }
};
template <>
struct BilinearRow<8> {
    using V = u8x16;
    static constexpr int rows = 2;
    [[gnu::always_inline]] inline static V load(const Vek8u* p, std::ptrdiff_t step) {
        return loadPair8<V>(p, p + step);
    }
    [[gnu::always_inline]] inline static void store(Vek8u* p, std::ptrdiff_t step, V v) { storePair8(p, p + step, v); }
};
#if VEKVC_VECTOR256
template <>
struct BilinearRow<16> {
    using V = u8x32;
    static constexpr int rows = 2;
    [[gnu::always_inline]] inline static V load(const Vek8u* p, std::ptrdiff_t step) {
        return loadPair16<V>(p, p + step);
    }
    [[gnu::always_inline]] inline static void store(Vek8u* p, std::ptrdiff_t step, V v) { storePair16(p, p + step, v); }
};
#endif

// Pairs of bytes of two vectors, weighted and added: the low 4 bytes, or all.
template <int W, class V>
struct PairSums {
    using S = Vec<Vek16s, V::kBytes / 2>;
    S low, high;

    [[gnu::always_inline]] inline PairSums(V a, V b, Weights<V> w)
        : low(mulAddPairs(interleaveLow(a, b), w)), high(W >= 8 ? mulAddPairs(interleaveHigh(a, b), w) : low) {}
    [[gnu::always_inline]] inline void add(const PairSums& other) {
        low += other.low;
        if constexpr (W >= 8) high += other.high;
    }
    [[gnu::always_inline]] inline V rounded(S rounding, int shift) const {
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
    [[gnu::always_inline]] inline V operator()(V a, V b) const { return PairSums<W, V>(a, b, w).rounded(rounding, 2); }
};
// In the middle: (a + b + 1 - RND) >> 1.
template <class V>
struct Middle {
    V RND;

    explicit Middle(int rnd) : RND(splat<V>(rnd)) {}
    [[gnu::always_inline]] inline V operator()(V a, V b) const { return average(a, b) - ((a ^ b) & RND); }
};

template <int W, class Use>
[[gnu::always_inline]] inline void forRows(const Interpolation& p, Use&& use) {
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
[[gnu::always_inline]] inline void bilinearTowards(const Interpolation& p, int f, Distance distance) {
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

// Downwards at fraction f. Of rows of 8, each is loaded once for the row above and for its own.
template <int W>
[[gnu::always_inline]] inline void bilinearDown(const Interpolation& p, int f) {
    if constexpr (W == 8) {
        const Weights<u8x16> w = as<Weights<u8x16>>(splat<i16x8>((4 - f) | f << 8));
        const i16x8 rounding = splat<i16x8>(2 - p.RND);
        const auto mean = [&](u8x16 a, u8x16 b) { return (mulAddPairs(interleaveLow(a, b), w) + rounding) >> 2; };
        const Vek8u* src = p.src;
        Vek8u* dst = p.dst;
        u8x16 last = load8(src);
#pragma GCC unroll 4
        for (int y = 0; y < p.size.height; y += 2) {
            const u8x16 middle = load8(src + p.srcStep), next = load8(src + 2 * p.srcStep);
            storePair8(dst, dst + p.dstStep, narrowU8(mean(last, middle), mean(middle, next)));
            last = next;
            src += 2 * p.srcStep;
            dst += 2 * p.dstStep;
        }
    } else {
        bilinearTowards<W>(p, f, [](std::ptrdiff_t step) { return step; });
    }
}

template <int W, int channels>
[[gnu::always_inline]] inline void bilinearBoth(const Interpolation& p) {
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
[[gnu::always_inline]] inline VekStatus bilinear(const Interpolation& p) {
    if ((p.dx | p.dy) == 0) return apart(p, [](const Interpolation& q) { copyRows<W>(q); });
    if (p.dy == 0)
        return apart(
            p, [](const Interpolation& q) { bilinearTowards<W>(q, q.dx, [](std::ptrdiff_t) { return channels; }); });
    if (p.dx == 0) return apart(p, [](const Interpolation& q) { bilinearDown<W>(q, q.dy); });
    return apart(p, [](const Interpolation& q) { bilinearBoth<W, channels>(q); });
}

template <int channels>
[[gnu::noinline]] VekStatus bilinearOfAnySize(const Vek8u* src, std::ptrdiff_t srcStep, Vek8u* dst,
                                              std::ptrdiff_t dstStep, int modes, VekiSize block) {
    const VekiSize size = vc1::bilinearSizeOf<channels>(block);
    if (size.width <= 0 || size.height <= 0) return vekStsOk;
    const Interpolation p = {src, srcStep, dst, dstStep, modes & 3, modes >> 2 & 3, modes >> 4, size};
    const int width = size.width * channels;
    if (size.height % 2 == 0) {
        if (width == 8) return bilinear<8, channels>(p);
        if (width == 16) return bilinear<16, channels>(p);
        if (width == 4) return bilinear<4, channels>(p);
    }
    plain::interpolateBilinear<channels>(p);
    return vekStsOk;
}

// Blocks of n x n, as above.
template <int n, int channels, int fractions>
VekStatus bilinearSquare(const Vek8u* src, std::ptrdiff_t srcStep, Vek8u* dst, std::ptrdiff_t dstStep, int RND) {
    constexpr int W = n * channels, dx = fractions % 4, dy = fractions / 4;
    const Interpolation p = {src, srcStep, dst, dstStep, dx, dy, RND, {n, n}};
    if constexpr (fractions == 0)
        copyRows<W>(p);
    else if constexpr (dy == 0)
        bilinearTowards<W>(p, dx, [](std::ptrdiff_t) { return channels; });
    else if constexpr (dx == 0)
        bilinearDown<W>(p, dy);
    else
        bilinearBoth<W, channels>(p);
    return vekStsOk;
}
template <int n, int channels, int... i>
constexpr std::array<SquareKernel, 16> bilinearSquares(std::integer_sequence<int, i...>) {
    return {bilinearSquare<n, channels, i>...};
}

template <int channels>
[[gnu::always_inline]] inline VekStatus interpolateBilinear(const Interpolation& p) {
    static constexpr auto kSquares = bilinearSquares<8, channels>(std::make_integer_sequence<int, 16>());
    const int fractions = p.dx + 4 * p.dy;
    if (p.size.width == 8 && p.size.height == 8) [[likely]]
        return kSquares[static_cast<std::size_t>(fractions)](p.src, p.srcStep, p.dst, p.dstStep, p.RND);
    return bilinearOfAnySize<channels>(p.src, p.srcStep, p.dst, p.dstStep, fractions | p.RND << 4, p.size);
}

}  // namespace vekvc::simd

#endif
