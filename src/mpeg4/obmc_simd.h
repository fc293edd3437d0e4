// Fast form of overlapped block motion compensation: two rows of eight bytes at a time.
#ifndef VEKVC_MPEG4_OBMC_SIMD_H
#define VEKVC_MPEG4_OBMC_SIMD_H

#include "core/simd.h"
#include "mpeg4/obmc_plain.h"

namespace vekvc::simd {

// (a + b + c + d + 2 - rounding) >> 2, by the averages of common/tile.h.
template <int rounding>
[[gnu::always_inline]] inline u8x16 meanOfFour(u8x16 a, u8x16 b, u8x16 c, u8x16 d) {
    const u8x16 top = average(a, b), low = average(c, d), differ = top ^ low, one = constant<u8x16, 1>();
    const u8x16 lost = rounding == 0 ? differ & ((a ^ b) | (c ^ d)) & one : (differ | ((a ^ b) & (c ^ d))) & one;
    return average(top, low) - lost;
}

// All positions are means of four samples: where a position does not lie between columns (rows), two of them are one,
// and (2 a + 2 b + 2 - r) >> 2 is (a + b + 1 - r) >> 1. No branch asks for the position, which no predictor knows.
struct OverlapReference {
    const Vek8u* p;
    std::ptrdiff_t right, below;

    explicit OverlapReference(const Reference& ref)
        : p(ref.pixels),
          right(static_cast<int>(ref.half) >> 1),
          below(ref.step & -std::ptrdiff_t{static_cast<int>(ref.half) & 1}) {
        static_assert(static_cast<int>(Half::vertical) == 1 && static_cast<int>(Half::horizontal) == 2 &&
                      static_cast<int>(Half::both) == 3);
    }
};

// The weights by which the bytes of a row are multiplied in pairs: of the current vector beside those of the one above
// or below, and of the one to the left or right beside a constant.
struct OverlapWeights {
    Vek8u first[8][16], second[8][16];

    constexpr OverlapWeights() : first(), second() {
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 8; ++x) {
                const int h0 = mpeg4::kWeightCurrent[y][x], h1 = mpeg4::kWeightAboveBelow[y][x];
                first[y][2 * x] = static_cast<Vek8u>(h0);
                first[y][2 * x + 1] = static_cast<Vek8u>(h1);
                second[y][2 * x] = static_cast<Vek8u>(8 - h0 - h1);
                second[y][2 * x + 1] = 1;
            }
    }
};
alignas(16) inline constexpr OverlapWeights kOverlapWeights;

template <int rounding>
[[gnu::noinline]] void overlapRows(const mpeg4::Overlapped& o, Vek8u* dst, std::ptrdiff_t dstStep) {
    const std::ptrdiff_t step = o.current.step;
    const OverlapReference current(o.current), left(o.left), right(o.right);
    const OverlapReference vertical[2] = {OverlapReference(o.above), OverlapReference(o.below)};
    const u8x16 four = constant<u8x16, 4>();
#pragma GCC unroll 1
    for (int y = 0; y < 8; y += 2) {
        const auto rows = [&](const OverlapReference& ref) {
            const auto at = [&](std::ptrdiff_t offset) {
                const Vek8u* const p = ref.p + y * step + offset;
                return loadPair8<u8x16>(p, p + step);
            };
            return meanOfFour<rounding>(at(0), at(ref.right), at(ref.below), at(ref.below + ref.right));
        };
        // Columns 0 to 3 of one reference and 4 to 7 of the other.
        const auto halves = [&](std::ptrdiff_t ofLeft, std::ptrdiff_t ofRight) {
            const Vek8u* const l = left.p + y * step + ofLeft;
            const Vek8u* const r = right.p + y * step + 4 + ofRight;
            return loadLanes32<u8x16>([=](int i) { return (i % 2 == 0 ? l : r) + i / 2 * step; });
        };
        const u8x16 q = rows(current), r = rows(vertical[y / 4]);
        const u8x16 s =
            meanOfFour<rounding>(halves(0, 0), halves(left.right, right.right), halves(left.below, right.below),
                                 halves(left.below + left.right, right.below + right.right));
        const auto sum = [](u8x16 qr, u8x16 s4, int row) {
            return (mulAddPairs(qr, load<i8x16>(kOverlapWeights.first[row])) +
                    mulAddPairs(s4, load<i8x16>(kOverlapWeights.second[row]))) >>
                   3;
        };
        const i16x8 upper = sum(interleaveLow(q, r), interleaveLow(s, four), y);
        const i16x8 lower = sum(interleaveHigh(q, r), interleaveHigh(s, four), y + 1);
        storePair8(dst, dst + dstStep, narrowU8(upper, lower));
        dst += 2 * dstStep;
    }
}

inline void overlap8x8(const mpeg4::Overlapped& o, Vek8u* dst, std::ptrdiff_t dstStep) {
    if (o.rounding == 0)
        overlapRows<0>(o, dst, dstStep);
    else
        overlapRows<1>(o, dst, dstStep);
}

}  // namespace vekvc::simd

#endif
