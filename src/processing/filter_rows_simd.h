// Rows of samples of any width in whole vectors: the last piece of a row that fills none goes through the stack, so
// that no byte beyond the row is touched.
#ifndef VEKVC_PROCESSING_FILTER_ROWS_SIMD_H
#define VEKVC_PROCESSING_FILTER_ROWS_SIMD_H

#include <cstring>

#include "core/memory.h"
#include "core/simd.h"

namespace vekvc::simd {

#if VEKVC_VECTOR256
using RowU8 = u8x32;
using RowU16 = u16x16;
using RowI16 = i16x16;
using RowI32 = i32x8;
#else
using RowU8 = u8x16;
using RowU16 = u16x8;
using RowI16 = i16x8;
using RowI32 = i32x4;
#endif
using RowI8 = Vec<std::int8_t, RowU8::kBytes>;
inline constexpr Vek32s kRowLanes = RowU8::kBytes, kRowLanes16 = kRowLanes / 2;

// Access to samples of which all or only n are there.
struct WholeVector {
    RowU8 load(const Vek8u* p) const { return vekvc::load<RowU8>(p); }
    void store(Vek8u* p, RowU8 v) const { vekvc::store(p, v); }
};
struct PartOfVector {
    Vek32s n;

    RowU8 load(const Vek8u* p) const {
        Vek8u samples[kRowLanes] = {};
        std::memcpy(samples, p, static_cast<std::size_t>(n));
        return vekvc::load<RowU8>(samples);
    }
    void store(Vek8u* p, RowU8 v) const {
        Vek8u samples[kRowLanes];
        vekvc::store(samples, v);
        std::memcpy(p, samples, static_cast<std::size_t>(n));
    }
};

// Calls use(x, access) for the columns first to end - 1, a vector's worth at a time.
template <class Use>
[[gnu::always_inline]] inline void forVectors(Vek32s first, Vek32s end, Use&& use) {
    Vek32s x = first;
    for (; x <= end - kRowLanes; x += kRowLanes) use(x, WholeVector());
    if (x < end) use(x, PartOfVector{end - x});
}

// Calls use(first, n) for the tiles of a row.
template <class Use>
void forTiles(Vek32s w, Vek32s columns, Use&& use) {
    for (Vek32s first = 0;; first += columns) {
        const Vek32s n = w - first < columns ? w - first : columns;
        use(first, n);
        if (n == w - first) return;
    }
}

// Samples from column x on of a row of w; those from w on are 0.
[[gnu::always_inline]] inline RowU8 loadInRow(const Vek8u* row, Vek32s x, Vek32s w) {
    return x <= w - kRowLanes ? load<RowU8>(row + x) : PartOfVector{w - x}.load(row + x);
}
// Samples from column x on, of which those before column `end` are written.
[[gnu::always_inline]] inline void storeInRow(Vek8u* row, Vek32s x, Vek32s end, RowU8 v) {
    if (x <= end - kRowLanes)
        store(row + x, v);
    else
        PartOfVector{end - x}.store(row + x, v);
}

// The columns first to first + n - 1 of a row of w samples, some of them outside, where the border sample is repeated.
inline void copyRepeated(Vek8u* to, const Vek8u* row, Vek32s w, Vek32s first, Vek32s n) {
    const Vek32s before = first < 0 ? -first : 0;
    const Vek32s behind = n > w - first ? n - (w - first) : 0;
    std::memset(to, row[0], static_cast<std::size_t>(before));
    std::memcpy(to + before, row + (first + before), static_cast<std::size_t>(n - before - behind));
    std::memset(to + (n - behind), row[w - 1], static_cast<std::size_t>(behind));
}

// The bytes' products with the factors of pairs, added: x a + y b in 16 bits. Low and high halves of each 128 bits.
struct WidePair {
    RowI16 low, high;

    friend WidePair operator+(WidePair a, WidePair b) { return {a.low + b.low, a.high + b.high}; }
};
template <int x, int y>
[[gnu::always_inline]] inline WidePair weighted(RowU8 a, RowU8 b) {
    const auto factors = as<RowI8>(constant<RowI16, (x & 255) | static_cast<std::int16_t>(y * 256)>());
    return {mulAddPairs(interleaveLow(a, b), factors), mulAddPairs(interleaveHigh(a, b), factors)};
}
template <class F>
[[gnu::always_inline]] inline RowU8 narrowed(WidePair w, F&& f) {
    return narrowU8(f(w.low), f(w.high));
}

// Bytes as 16-bit lanes in the order of the columns, and back.
#if VEKVC_VECTOR256
[[gnu::always_inline]] inline RowI16 lowColumns(RowU8 a) { return widen(lowHalf(a)); }
[[gnu::always_inline]] inline RowI16 highColumns(RowU8 a) { return widen(highHalf(a)); }
[[gnu::always_inline]] inline RowU8 joinColumns(RowI16 low, RowI16 high) {
    return swapMiddleQuarters(narrowU8(low, high));
}
// 16-bit lanes of memory in the order of a WidePair.
[[gnu::always_inline]] inline WidePair loadWide(const void* p) {
    const auto a = load<RowI16>(p), b = load<RowI16>(static_cast<const Vek8u*>(p) + RowI16::kBytes);
    return {joinLowHalves(a, b), joinHighHalves(a, b)};
}
#else
[[gnu::always_inline]] inline RowI16 lowColumns(RowU8 a) { return widenLow(a); }
[[gnu::always_inline]] inline RowI16 highColumns(RowU8 a) { return widenHigh(a); }
[[gnu::always_inline]] inline RowU8 joinColumns(RowI16 low, RowI16 high) { return narrowU8(low, high); }
[[gnu::always_inline]] inline WidePair loadWide(const void* p) {
    return {load<RowI16>(p), load<RowI16>(static_cast<const Vek8u*>(p) + RowI16::kBytes)};
}
#endif

// a >> n of unsigned bytes.
template <int n>
[[gnu::always_inline]] inline RowU8 shiftedRight(RowU8 a) {
    return as<RowU8>(as<RowU16>(a) >> n) & constant<RowU8, (255 >> n)>();
}

}  // namespace vekvc::simd

#endif
