// Fast form: 8 or 16 pixels at a time, in 32-bit sums of pairs of products; a row's ends by the definition.
#ifndef VEKVC_PROCESSING_CONVERT_BGR_SIMD_H
#define VEKVC_PROCESSING_CONVERT_BGR_SIMD_H

#include "processing/convert_bgr_plain.h"
#include "processing/convert_rows_simd.h"

namespace vekvc::simd {

// Pixels: luma as 16-bit lanes in order; (Cb, Cr) as pairs of 16-bit lanes, of each 128 bits of luma the low four
// pixels in one vector and the high four in the other.
template <class V>
struct YccVectors {
    Words<V> y, low, high;
};

// Bytes zero-extended to 16 bits.
template <class V>
[[gnu::always_inline]] inline Words<V> loadWords(const Vek8u* p) {
    if constexpr (is128<V>) return widenLow(loadBytes<u8x16, 8>(p));
#if VEKVC_VECTOR256
    else
        return widen(load<u8x16>(p));
#endif
}
// The chroma of V::kBytes / 4 groups as pairs of 16-bit lanes.
template <class V>
[[gnu::always_inline]] inline Words<V> loadChromaPairs(const Vek8u* cb, const Vek8u* cr) {
    if constexpr (is128<V>) return widenLow(interleaveLow(loadBytes<u8x16, 4>(cb), loadBytes<u8x16, 4>(cr)));
#if VEKVC_VECTOR256
    else
        return widen(interleaveLow(loadBytes<u8x16, 8>(cb), loadBytes<u8x16, 8>(cr)));
#endif
}
// `even`, `odd`: the chroma of the even and the odd pixels.
template <class V>
[[gnu::always_inline]] inline YccVectors<V> inPixels(Words<V> y, Words<V> even, Words<V> odd) {
    const auto e = as<DoubleWords<V>>(even), o = as<DoubleWords<V>>(odd);
    return {y, as<Words<V>>(interleaveLow(e, o)), as<Words<V>>(interleaveHigh(e, o))};
}

// Columns behind the ones asked for whose chroma is read too.
constexpr std::ptrdiff_t columnsAhead(const plain::Row420&) { return 2; }
constexpr std::ptrdiff_t columnsAhead(const plain::RowCbYCr&) { return 2; }
constexpr std::ptrdiff_t columnsAhead(const plain::RowRepeated&) { return 0; }

template <class V>
[[gnu::always_inline]] inline YccVectors<V> loadPixels(const plain::Row420& row, std::ptrdiff_t x) {
    using W = Words<V>;
    const auto quarters = [&](std::ptrdiff_t i) {  // 3a + b: at most 1020
        const W a = loadChromaPairs<V>(row.cbA + i, row.crA + i), b = loadChromaPairs<V>(row.cbB + i, row.crB + i);
        return (a << 1) + a + b;
    };
    const W here = quarters(x / 2), next = quarters(x / 2 + 1);
    return inPixels<V>(loadWords<V>(row.y + x), (here + splat<W>(2)) >> 2, (here + next + splat<W>(4)) >> 3);
}
template <class V>
[[gnu::always_inline]] inline YccVectors<V> loadPixels(const plain::RowCbYCr& row, std::ptrdiff_t x) {
    using W = Words<V>;
    using U = UnsignedWords<V>;
    const V groups = load<V>(row.from + 2 * x), next = load<V>(row.from + 2 * x + 4);
    const W low = splat<W>(255), even = as<W>(groups) & low;
    const W odd = as<W>(average(as<U>(even), as<U>(as<W>(next) & low)));
    return inPixels<V>(as<W>(as<U>(groups) >> 8), even, odd);
}
template <class V>
[[gnu::always_inline]] inline YccVectors<V> loadPixels(const plain::RowRepeated& row, std::ptrdiff_t x) {
    const Words<V> chroma = loadChromaPairs<V>(row.cb + x / 2, row.cr + x / 2);
    return inPixels<V>(loadWords<V>(row.y + x), chroma, chroma);
}

// 16-bit lanes in order, not yet limited to 0..255.
template <class V>
struct BgrVectors {
    Words<V> b, g, r;
};

// The products of a matrix in pairs: of (luma, 1) with the rounding, of (Cb, Cr) for each colour.
template <class V>
class ToBgrVectors {
    using W = Words<V>;
    using D = DoubleWords<V>;

  public:
    explicit ToBgrVectors(const processing::ToBgr& m)
        : black_(splat<W>(m.black)),
          y_(splatPair<W>(m.y, 4096)),
          b_(splatPair<W>(m.cbToB, 0)),
          g_(splatPair<W>(-m.cbToG, -m.crToG)),
          r_(splatPair<W>(0, m.crToR)) {}

    [[gnu::always_inline]] BgrVectors<V> operator()(const YccVectors<V>& p) const {
        const W y = p.y - black_, one = splat<W>(1), grey = splat<W>(128);
        const D lowY = mulAddPairs(interleaveLow(y, one), y_), highY = mulAddPairs(interleaveHigh(y, one), y_);
        const W low = p.low - grey, high = p.high - grey;
        const auto colour = [&](W weights) {  // magnitudes below 1 << 10: no saturation
            return narrowI16((lowY + mulAddPairs(low, weights)) >> 13, (highY + mulAddPairs(high, weights)) >> 13);
        };
        return {colour(b_), colour(g_), colour(r_)};
    }

  private:
    W black_, y_, b_, g_, r_;
};

// B G R A of the first four pixels of each 128 bits of luma, and of the others.
template <class V>
struct BgraVectors {
    V low, high;
};
template <class V>
[[gnu::always_inline]] inline BgraVectors<V> inBgra(const BgrVectors<V>& c) {
    using U = UnsignedWords<V>;
    const V br = narrowU8(c.b, c.r), ga = narrowU8(c.g, splat<Words<V>>(255));
    const U bg = as<U>(interleaveLow(br, ga)), ra = as<U>(interleaveHigh(br, ga));
    return {as<V>(interleaveLow(bg, ra)), as<V>(interleaveHigh(bg, ra))};
}

template <class V>
class Writer32 {
  public:
    explicit Writer32(const plain::Bgr32&) {}
    [[gnu::always_inline]] void put(Vek8u* to, std::ptrdiff_t x, const BgrVectors<V>& c) const {
        const BgraVectors<V> p = inBgra(c);
        storeInOrder(to + 4 * x, p.low, p.high);
    }
};

template <class V>
class Writer24 {
  public:
    explicit Writer24(const plain::Bgr24&) {}
    // Of 16 bytes stored, the last four are overwritten by the next four pixels.
    [[gnu::always_inline]] void put(Vek8u* to, std::ptrdiff_t x, const BgrVectors<V>& c) const {
        const u8x16 order = lanes<u8x16>(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 128, 128, 128, 128);
        const BgraVectors<V> p = inBgra(c);
        const V low = shuffleEach16(p.low, order), high = shuffleEach16(p.high, order);
        to += 3 * x;
        if constexpr (is128<V>) {
            store(to, low);
            storeBytes<12>(to + 12, high);
        }
#if VEKVC_VECTOR256
        else {
            store(to, lowHalf(low));
            store(to + 12, lowHalf(high));
            store(to + 24, highHalf(low));
            storeBytes<12>(to + 36, highHalf(high));
        }
#endif
    }
};

template <class V>
class Writer565 {
    using W = Words<V>;

  public:
    explicit Writer565(const plain::Bgr565& pixels) {
        for (int i = 0; i < kLanes; ++i) {
            const int t = pixels.thresholds[i & 3];
            five_[i] = static_cast<Vek16s>(t >> 1);
            six_[i] = static_cast<Vek16s>(t >> 2);
        }
    }
    [[gnu::always_inline]] void put(Vek8u* to, std::ptrdiff_t x, const BgrVectors<V>& c) const {
        const W five = load<W>(five_ + (x & 3)), six = load<W>(six_ + (x & 3));
        const auto cut = [](W v, W threshold, int n) { return min(max(v, zero<W>()) + threshold, splat<W>(255)) >> n; };
        store(to + 2 * x, cut(c.b, five, 3) | cut(c.g, six, 2) << 5 | cut(c.r, five, 3) << 11);
    }

  private:
    static constexpr int kLanes = V::kBytes / 2 + 4;
    Vek16s five_[kLanes], six_[kLanes];
};

template <class V>
Writer32<V> writerOf(const plain::Bgr32& pixels) {
    return Writer32<V>(pixels);
}
template <class V>
Writer24<V> writerOf(const plain::Bgr24& pixels) {
    return Writer24<V>(pixels);
}
template <class V>
Writer565<V> writerOf(const plain::Bgr565& pixels) {
    return Writer565<V>(pixels);
}

template <class Row, class Pixels>
void toBgrRow(const Row& from, const Pixels& pixels, Vek8u* to, std::ptrdiff_t first, std::ptrdiff_t w,
              const processing::ToBgr& matrix) {
    const std::ptrdiff_t last = (w & ~std::ptrdiff_t{1}) - columnsAhead(from);
    const auto cover = [&]<class V>(V) {
        const ToBgrVectors<V> toBgr(matrix);
        const auto writer = writerOf<V>(pixels);
        const auto use = [&](V, std::ptrdiff_t x) __attribute__((always_inline)) {
            writer.put(to, x, toBgr(loadPixels<V>(from, x)));
        };
        return coverBy<V>(V::kBytes / 2, first, last, use);
    };
    const bool done = cover(WidestBytes()) || (!is128<WidestBytes> && cover(u8x16()));
    plain::toBgrRow(from, pixels, to, done ? last : first, w, matrix);
}

// Pixels as 32-bit lanes: (B, R) and (G, A) as pairs of 16-bit lanes.
template <class V>
struct ColourPairs {
    Words<V> br, ga;

    explicit ColourPairs(DoubleWords<V> pixels)
        : br(as<Words<V>>(pixels) & splat<Words<V>>(255)), ga(as<Words<V>>(as<UnsignedWords<V>>(pixels) >> 8)) {}
};

inline void fromBgrRow(const Vek8u* from, Vek8u* to, std::ptrdiff_t first, std::ptrdiff_t w,
                       const processing::FromBgr& m) {
    if (first == 0) {  // the left neighbour of pixel 0 is itself
        plain::fromBgrRow(from, to, 0, std::min<std::ptrdiff_t>(w, 2), m);
        first = std::min<std::ptrdiff_t>(w, 2);
    }
    const std::ptrdiff_t last = w & ~std::ptrdiff_t{1};
    const auto cover = [&]<class V>(V) {
        using W = Words<V>;
        using D = DoubleWords<V>;
        struct Weights {
            W br, g;
        };
        const auto weights = [&](const int(&rgb)[3]) {
            return Weights{splatPair<W>(rgb[2], rgb[0]), splatPair<W>(rgb[1], 0)};
        };
        const Weights y = weights(m.y), cb = weights(m.cb), cr = weights(m.cr);
        const auto product = [](W br, W ga, const Weights& k) { return mulAddPairs(br, k.br) + mulAddPairs(ga, k.g); };
        const auto use = [&](V, std::ptrdiff_t x) __attribute__((always_inline)) {
            const auto pixels = [&](std::ptrdiff_t column) { return load<D>(from + 4 * column); };
            constexpr int kLanes = V::kBytes / 4;
            const D a = pixels(x), b = pixels(x + kLanes), aLeft = pixels(x - 1), bLeft = pixels(x - 1 + kLanes);
            const ColourPairs<V> even(evenLanes32(a, b)), odd(oddLanes32(a, b)), left(evenLanes32(aLeft, bLeft));
            const auto luma = [&](const ColourPairs<V>& c) {  // weights sum up to at most 16384: within 0..255
                return ((product(c.br, c.ga, y) + splat<D>(8192)) >> 14) + splat<D>(m.black);
            };
            const W br = left.br + even.br + even.br + odd.br, ga = left.ga + even.ga + even.ga + odd.ga;
            const auto chroma = [&](const Weights& k) {  // at most 8192 * 1020, at least its negative: 1..256
                return min(((product(br, ga, k) + splat<D>(32768)) >> 16) + splat<D>(128), splat<D>(255));
            };
            const D groups = chroma(cb) | luma(even) << 8 | chroma(cr) << 16 | luma(odd) << 24;
            store(to + 2 * x, inOrder(groups));
        };
        return coverBy<V>(V::kBytes / 2, first, last, use);
    };
    const bool done = cover(WidestBytes()) || (!is128<WidestBytes> && cover(u8x16()));
    plain::fromBgrRow(from, to, done ? last : first, w, m);
}

}  // namespace vekvc::simd

#endif
