// Luma interpolation in vectors: one row of 8 samples (16 where vectors have 256 bits) in 16-bit lanes.
//
// Sums of the quarter filters lie in -2550 .. 35190 and are kept less 16384, 128 times the filter's gain: the rounded
// result is then less 128, which the narrowing to signed bytes limits and a change of the sign bit puts back.
#ifndef VEKVC_AVS_INTERPOLATE_SIMD_H
#define VEKVC_AVS_INTERPOLATE_SIMD_H

#include <array>
#include <utility>

#include "avs/interpolate_plain.h"
#include "core/simd.h"
#include "h264/interpolate_chroma_simd.h"

namespace vekvc::simd {

template <int W>
struct AvsRow {
    using V = Vec<std::int16_t, W>;
    using D = Vec<std::int32_t, W / 2>;

    [[gnu::always_inline]] static V load(const Vek8u* p) {
        if constexpr (W == 8) return widenLow(loadBytes<u8x16, 8>(p));
#if VEKVC_VECTOR256
        else
            return widen(vekvc::load<u8x16>(p));
#endif
    }
    // Limited to 0..255; or of samples less 128.
    [[gnu::always_inline]] static void store(Vek8u* p, V v) {
        storeNarrow(p, as<Vec<std::uint8_t, 2 * W>>(narrowU8(v, v)));
    }
    [[gnu::always_inline]] static void storeCentred(Vek8u* p, V v) {
        using B = Vec<std::uint8_t, 2 * W>;
        storeNarrow(p, as<B>(narrowI8(v, v)) ^ splat<B>(0x80));
    }

    // (-1, 5, 5, -1), of samples or of sums of samples: within -10200 .. 26520.
    [[gnu::always_inline]] static V half(V a, V b, V c, V d) {
        const V middle = b + c;
        return (middle << 2) + middle - (a + d);
    }
    // (-1, -2, 96, 42, -7) less 16384, of samples: exact, for all that it wraps on the way.
    [[gnu::always_inline]] static V quarter(V a, V b, V c, V d, V e) {
        return c * constant<V, 96>() + d * constant<V, 42>() - e * constant<V, 7>() - a - (b + b) -
               constant<V, 16384>();
    }
    // The same of half-sample sums, rounded: (sum + 512) >> 10.
    [[gnu::always_inline]] static V quarterOfSums(V a, V b, V c, V d, V e) {
        const auto part = [&](auto join) {
            const D sum = mulAddPairs(join(a, b), as<V>(constant<D, -65537>())) +
                          mulAddPairs(join(c, d), as<V>(constant<D, 96 + 42 * 65536>())) +
                          mulAddPairs(join(e, e), as<V>(constant<D, 0xFFF9>()));
            return (sum + constant<D, 512>()) >> 10;
        };
        return narrowI16(part([](V x, V y) { return interleaveLow(x, y); }),
                         part([](V x, V y) { return interleaveHigh(x, y); }));
    }
    // The half filter on quarter sums less 16384, rounded, less 128: (sum + 512) >> 10.
    [[gnu::always_inline]] static V halfOfSums(V a, V b, V c, V d) {
        const auto part = [&](auto join) {
            const D sum = mulAddPairs(join(a, b), as<V>(constant<D, 0x5FFFF>())) +
                          mulAddPairs(join(c, d), as<V>(constant<D, 5 - 65536>()));
            return (sum + constant<D, 512>()) >> 10;
        };
        return narrowI16(part([](V x, V y) { return interleaveLow(x, y); }),
                         part([](V x, V y) { return interleaveHigh(x, y); }));
    }

    // The sums of the row at p with the taps of d: quarters less 16384.
    template <int d>
    [[gnu::always_inline]] static V across(const Vek8u* p) {
        if constexpr (d == 0) return load(p);
        if constexpr (d == 1) return quarter(load(p - 2), load(p - 1), load(p), load(p + 1), load(p + 2));
        if constexpr (d == 2) return half(load(p - 1), load(p), load(p + 1), load(p + 2));
        if constexpr (d == 3) return quarter(load(p + 3), load(p + 2), load(p + 1), load(p), load(p - 1));
    }

  private:
    [[gnu::always_inline]] static void storeNarrow(Vek8u* p, Vec<std::uint8_t, 2 * W> v) {
        if constexpr (W == 8) storeBytes<8>(p, v);
#if VEKVC_VECTOR256
        else
            vekvc::store(p, lowHalf(swapMiddleQuarters(v)));
#endif
    }
};

// (x + 2^(n - 1)) >> n
template <int n, class V>
[[gnu::always_inline]] inline V avsRounded(V x) {
    return mulHighRound(x, constant<V, 1 << (15 - n)>());
}

// A kernel ends its export: it gives vekStsOk.
template <int W, int dx, int dy>
VekStatus avsLumaColumn(const Vek8u* src, std::ptrdiff_t srcStep, Vek8u* dst, std::ptrdiff_t dstStep, int height) {
    using R = AvsRow<W>;
    using V = typename R::V;
    constexpr bool kBothOdd = dx % 2 != 0 && dy % 2 != 0;
    if constexpr (dx == 0 && dy == 0) {
        return copyColumn<W, 4>(src, srcStep, dst, dstStep, height);
    } else if constexpr (dy == 0) {
        do {
            if constexpr (dx == 2)
                R::store(dst, avsRounded<3>(R::template across<2>(src)));
            else
                R::storeCentred(dst, avsRounded<7>(R::template across<dx>(src)));
            src += srcStep, dst += dstStep;
        } while (--height != 0);
    } else {
        // Rows of sums -2 to 3 around the next one, those that dy needs.
        constexpr avs::Reach kReach = avs::lumaReach(dy, kBothOdd);
        constexpr int kFirst = 2 - kReach.before, kLast = 2 + kReach.behind;
        const auto row = [](const Vek8u* p) { return R::template across < kBothOdd ? 2 : dx > (p); };
        V r[6] = {};
        for (int k = kFirst; k < kLast; ++k) r[k] = row(src + (k - 2) * srcStep);
        const Vek8u* next = src + (kLast - 2) * srcStep;
        const Vek8u* corner = src + (dx == 3) + (dy == 3) * srcStep;
        do {
            r[kLast] = row(next);
            if constexpr (kBothOdd) {
                // 64 (D - 128) + (J - 8192), within +-26584
                const V sum = R::half(r[1], r[2], r[3], r[4]) + (R::load(corner) << 6) - constant<V, 16384>();
                R::storeCentred(dst, avsRounded<7>(sum));
                corner += srcStep;
            } else if constexpr (dy == 2) {
                if constexpr (dx % 2 != 0)
                    R::storeCentred(dst, R::halfOfSums(r[1], r[2], r[3], r[4]));
                else
                    R::store(dst, avsRounded < dx == 0 ? 3 : 6 > (R::half(r[1], r[2], r[3], r[4])));
            } else {
                constexpr bool kUp = dy == 3;  // the other quarter is the mirror image
                const V a = r[kUp ? 5 : 0], b = r[kUp ? 4 : 1], c = r[kUp ? 3 : 2], d = r[kUp ? 2 : 3],
                        e = r[kUp ? 1 : 4];
                if constexpr (dx == 0)
                    R::storeCentred(dst, avsRounded<7>(R::quarter(a, b, c, d, e)));
                else
                    R::store(dst, R::quarterOfSums(a, b, c, d, e));
            }
            for (int k = kFirst; k < kLast; ++k) r[k] = r[k + 1];
            next += srcStep, dst += dstStep;
        } while (--height != 0);
    }
    return vekStsOk;
}

using AvsLumaKernel = VekStatus (*)(const Vek8u*, std::ptrdiff_t, Vek8u*, std::ptrdiff_t, int);
template <int W>
inline constexpr auto kAvsLumaKernels = []<std::size_t... i>(std::index_sequence<i...>) {
    return std::array<AvsLumaKernel, 16>{avsLumaColumn<W, i % 4, i / 4>...};
}
(std::make_index_sequence<16>());

// Widths of 8 and 16.
[[gnu::always_inline]] inline VekStatus interpolateAvsLuma(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst,
                                                           Vek32s dstStep, Vek32s dx, Vek32s dy, VekiSize size) {
    const auto position = static_cast<Vek32u>(4 * dy + dx);
#if VEKVC_VECTOR256
    if (size.width == 16) return kAvsLumaKernels<16>[position](pSrc, srcStep, pDst, dstStep, size.height);
#else
    if (size.width == 16) kAvsLumaKernels<8>[position](pSrc + 8, srcStep, pDst + 8, dstStep, size.height);
#endif
    return kAvsLumaKernels<8>[position](pSrc, srcStep, pDst, dstStep, size.height);
}

// The same weights as those of H.264 8.4.2.2.2.
[[gnu::always_inline]] inline VekStatus interpolateAvsChroma(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst,
                                                             Vek32s dstStep, Vek32s dx, Vek32s dy, VekiSize size) {
    return interpolateChroma(pSrc, srcStep, pDst, dstStep, dx, dy, size);
}

}  // namespace vekvc::simd

#endif
