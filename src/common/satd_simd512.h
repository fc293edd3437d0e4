// Sums of absolute transformed differences of 16x16 blocks in 512 bits.
#ifndef VEKVC_COMMON_SATD_SIMD512_H
#define VEKVC_COMMON_SATD_SIMD512_H

#include "common/satd_simd.h"

namespace vekvc::simd512 {

struct FirstStageSigns {
    alignas(64) std::int8_t lane[64] = {};
    constexpr FirstStageSigns() {
        for (int i = 0; i < 64; ++i) lane[i] = i % 32 >= 16 && i % 2 == 1 ? -1 : 1;
    }
};
inline constexpr FirstStageSigns kFirstStageSigns;

// Of 8 rows of 16 samples, rows y and y + 4 in the halves of one vector, behind the first stage (see
// simd::firstStageOf16).
class EightWideRows {
  public:
    explicit EightWideRows(const Vek8u* p, std::ptrdiff_t step) : step_(step), even_{p} {
        for (int i = 1; i < 4; ++i) even_[i] = twoRowsOn(even_[i - 1], step);
    }
    [[gnu::always_inline]] i16x32 firstStage(int y, i8x64 signs) const {
        return mulAddPairs(loadPairTwice16(row(y), row(y + 4)), signs);
    }
    const Vek8u* below() const { return twoRowsOn(even_[3], step_); }

  private:
    const Vek8u* row(int y) const { return even_[y / 2] + (y % 2 == 0 ? 0 : step_); }
    std::ptrdiff_t step_;
    const Vek8u* even_[4];
};

// As simd::halfSumOfNeighbours.
[[gnu::always_inline]] inline i16x32 halfSumOfNeighbours(i16x32 a, i16x32 b) {
    const i16x32 x = abs(a), y = abs(b);
    return max(evenThenOdd(x, y), swapNeighbours(evenThenOdd(y, x)));
}

template <int W, int H>
[[gnu::always_inline]] inline Vek32s satd4x4(Block<Vek8u> s, Block<Vek8u> ref) {
    if constexpr (W != 16) {
        return simd::satd4x4<W, H>(s, ref);
    } else {
        const i8x64 signs = load<i8x64>(kFirstStageSigns.lane);
        i16x32 sum = zero<i16x32>();
        for (int top = 0; top < H; top += 8) {
            const EightWideRows source(s.base, s.step), reference(ref.base, ref.step);
            s.base = source.below();
            ref.base = reference.below();
            const auto row = [&](int y) { return source.firstStage(y, signs) - reference.firstStage(y, signs); };
            i16x32 a = row(0), b = row(1), c = row(2), d = row(3);
            simd::butterflyRows(a, b, c, d);
            sum += halfSumOfNeighbours(a, b) + halfSumOfNeighbours(c, d);
        }
        return sumLanes(lowHalf(sum) + highHalf(sum));
    }
}

template <int W, int H>
[[gnu::always_inline]] inline Vek32s satd4x4(Block<Vek16u> s, Block<Vek16u> ref) {
    return simd::satd4x4<W, H>(s, ref);
}

}  // namespace vekvc::simd512

#endif
