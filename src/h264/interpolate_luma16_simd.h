// Luma interpolation of 16-bit samples, H.264 8.4.2.2.1, up to 14 bits deep, in columns of 4 or 8 samples (16 with
// 256-bit vectors).
#ifndef VEKVC_H264_INTERPOLATE_LUMA16_SIMD_H
#define VEKVC_H264_INTERPOLATE_LUMA16_SIMD_H

#include <array>
#include <utility>

#include "core/memory.h"
#include "core/simd.h"

namespace vekvc::simd {

// Columns of W samples. A row's sums are 32 bits wide and come in two vectors: of the even and of the odd columns.
template <int W>
struct Luma16u {
    using U = Vec<std::uint16_t, W == 16 ? 16 : 8>;
    using I = Vec<std::int16_t, U::kBytes / 2>;
    using D = Vec<std::int32_t, U::kBytes / 4>;
    struct Sums {
        D even, odd;
    };

    [[gnu::always_inline]] static U load(const Vek16u* p) {
        if constexpr (W == 4)
            return loadBytes<U, 8>(p);
        else
            return vekvc::load<U>(p);
    }
    [[gnu::always_inline]] static void store(Vek16u* p, U v) {
        if constexpr (W == 4)
            storeBytes<8>(p, v);
        else
            vekvc::store(p, v);
    }

    // Samples are at most 2^14 - 1: as signed 16-bit values, products of pairs in 32 bits.
    [[gnu::always_inline]] static D taps(U first, U second, U third) {
        return mulAddPairs(as<I>(first), as<I>(splat<D>(1 - 5 * 65536))) +
               mulAddPairs(as<I>(second), as<I>(splat<D>(20 + 20 * 65536))) +
               mulAddPairs(as<I>(third), as<I>(splat<D>(65536 + 0xFFFB)));
    }
    [[gnu::always_inline]] static Sums horizontal(const Vek16u* p) {
        return {taps(load(p - 2), load(p), load(p + 2)), taps(load(p - 1), load(p + 1), load(p + 3))};
    }
    // r0 - 5 r1 + 20 r2 + 20 r3 - 5 r4 + r5: below 52^2 * 2^14 in magnitude for sums of sums.
    [[gnu::always_inline]] static D taps(D r0, D r1, D r2, D r3, D r4, D r5) {
        const D fifth = ((r2 + r3) << 2) - (r1 + r4);
        return r0 + r5 + (fifth << 2) + fifth;
    }
    [[gnu::always_inline]] static U clipped(D even, D odd, D max) {
        const D zeros = zero<D>();
        return as<U>(vekvc::min(vekvc::max(even, zeros), max) | (vekvc::min(vekvc::max(odd, zeros), max) << 16));
    }
    [[gnu::always_inline]] static U roundOnce(Sums s, D max) {
        const D half = splat<D>(16);
        return clipped((s.even + half) >> 5, (s.odd + half) >> 5, max);
    }
};

// What a position needs of the rows above and below, carried from row to row.
template <int W>
class Luma16uRows {
  public:
    using S = Luma16u<W>;
    using U = typename S::U;
    using D = typename S::D;
    using Sums = typename S::Sums;

    Luma16uRows(std::ptrdiff_t step, int maxSample) : step_(step), max_(splat<D>(maxSample)) {}

    U b(const Vek16u* p) const { return S::roundOnce(S::horizontal(p), max_); }

    // h at p: the rows' samples spread to even and odd 32-bit lanes.
    void startVertical(const Vek16u* p) {
        for (int k = 0; k < 5; ++k) rows_[k] = spread(S::load(row(p, k - 2)));
    }
    U h(const Vek16u* p) {
        rows_[5] = spread(S::load(row(p, 3)));
        return S::roundOnce(filterRows(rows_), max_);
    }

    void startCentre(const Vek16u* p) {
        for (int k = 0; k < 5; ++k) sums_[k] = S::horizontal(row(p, k - 2));
    }
    U j(const Vek16u* p) {
        sums_[5] = S::horizontal(row(p, 3));
        const Sums s = filterRows(sums_);
        const D half = splat<D>(512);
        return S::clipped((s.even + half) >> 10, (s.odd + half) >> 10, max_);
    }

  private:
    const Vek16u* row(const Vek16u* p, int k) const { return offsetBytes(p, k * step_); }
    static Sums spread(U samples) {
        const D both = as<D>(samples);
        return {both & splat<D>(0xFFFF), as<D>(as<Vec<std::uint32_t, U::kBytes / 4>>(both) >> 16)};
    }
    static Sums filterRows(Sums (&r)[6]) {
        const Sums sums{S::taps(r[0].even, r[1].even, r[2].even, r[3].even, r[4].even, r[5].even),
                        S::taps(r[0].odd, r[1].odd, r[2].odd, r[3].odd, r[4].odd, r[5].odd)};
        for (int k = 0; k < 5; ++k) r[k] = r[k + 1];
        return sums;
    }

    std::ptrdiff_t step_;
    D max_;
    Sums rows_[6], sums_[6];
};

template <int W, int dx, int dy>
void lumaColumn16u(const Vek16u* src, std::ptrdiff_t srcStep, Vek16u* dst, std::ptrdiff_t dstStep, int height,
                   int maxSample) {
    using S = Luma16u<W>;
    constexpr int right = dx == 3;
    const std::ptrdiff_t below = dy == 3 ? srcStep : 0;
    constexpr bool kJ = (dx == 2 && dy != 0) || (dy == 2 && dx != 0);
    constexpr bool kH = dy != 0 && dx != 2;
    Luma16uRows<W> rows(srcStep, maxSample);
    if constexpr (kH) rows.startVertical(src + right);
    if constexpr (kJ) rows.startCentre(src);
    for (int y = 0; y < height; ++y, src = offsetBytes(src, srcStep), dst = offsetBytes(dst, dstStep)) {
        if constexpr (dx == 0 && dy == 0)
            S::store(dst, S::load(src));
        else if constexpr (dy == 0)
            S::store(dst, dx == 2 ? rows.b(src) : average(S::load(src + right), rows.b(src)));
        else if constexpr (dx == 0)
            S::store(dst, dy == 2 ? rows.h(src) : average(S::load(offsetBytes(src, below)), rows.h(src)));
        else if constexpr (dx == 2 && dy == 2)
            S::store(dst, rows.j(src));
        else if constexpr (dx == 2)
            S::store(dst, average(rows.j(src), rows.b(offsetBytes(src, below))));
        else if constexpr (dy == 2)
            S::store(dst, average(rows.j(src), rows.h(src + right)));
        else
            S::store(dst, average(rows.b(offsetBytes(src, below)), rows.h(src + right)));
    }
}

using Luma16uKernel = void (*)(const Vek16u*, std::ptrdiff_t, Vek16u*, std::ptrdiff_t, int, int);
template <int W>
inline constexpr auto kLuma16uKernels = []<std::size_t... i>(std::index_sequence<i...>) {
    return std::array<Luma16uKernel, 16>{lumaColumn16u<W, i % 4, i / 4>...};
}
(std::make_index_sequence<16>());

inline VekStatus interpolateLuma(const Vek16u* pSrc, Vek32s srcStep, Vek16u* pDst, Vek32s dstStep, int dx, int dy,
                                 VekiSize size, int maxSample) {
    const auto position = static_cast<std::size_t>(4 * dy + dx);
    int x = 0;
    const auto column = [&](const auto& kernels, int width) {
        kernels[position](pSrc + x, srcStep, pDst + x, dstStep, size.height, maxSample);
        x += width;
    };
#if VEKVC_VECTOR256
    if (size.width & 16) column(kLuma16uKernels<16>, 16);
#else
    if (size.width & 16) column(kLuma16uKernels<8>, 8), column(kLuma16uKernels<8>, 8);
#endif
    if (size.width & 8) column(kLuma16uKernels<8>, 8);
    if (size.width & 4) column(kLuma16uKernels<4>, 4);
    return vekStsOk;
}

}  // namespace vekvc::simd

#endif
