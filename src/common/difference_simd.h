// Difference blocks: a block less its prediction. The fast form of difference_plain.h.
#ifndef VEKVC_COMMON_DIFFERENCE_SIMD_H
#define VEKVC_COMMON_DIFFERENCE_SIMD_H

#include "common/difference_plain.h"
#include "common/predict_simd.h"

namespace vekvc::simd {

using plain::Difference;
using plain::DifferencePlanes;

// Rows of W samples a less those of b, to where they go.
template <int W>
class DifferenceWriter {
  public:
    explicit DifferenceWriter(const Difference& d) : p_(d.values), step_(opaque(d.step)) {}

    [[gnu::always_inline]] void row(u8x16 a, u8x16 b) {
        if constexpr (W == 8) {
            vekvc::store(p_, widenLow(a) - widenLow(b));
        } else {  // from the bytes of both in turn: no more instructions than to widen one
            const i8x16 plusMinus = plusMinusOne();
            vekvc::store(p_, mulAddPairs(interleaveLow(a, b), plusMinus));
            vekvc::store(p_ + 8, mulAddPairs(interleaveHigh(a, b), plusMinus));
        }
        p_ = offsetBytes(p_, step_);
    }

  private:
    Vek16s* p_;
    std::ptrdiff_t step_;
};

// Interleaved chroma: the even columns to one plane, the odd ones to the other.
class DifferencePlanesWriter {
  public:
    explicit DifferencePlanesWriter(const DifferencePlanes& d) : u_(d.u), v_(d.v), step_(opaque(d.step)) {}

    [[gnu::always_inline]] void row(u8x16 a, u8x16 b) {
        const u16x8 x = as<u16x8>(a), y = as<u16x8>(b), even = splat<u16x8>(0xff);
        vekvc::store(u_, (x & even) - (y & even));
        vekvc::store(v_, (x >> 8) - (y >> 8));
        u_ = offsetBytes(u_, step_);
        v_ = offsetBytes(v_, step_);
    }

  private:
    Vek16s *u_, *v_;
    std::ptrdiff_t step_;
};

template <int W>
DifferenceWriter<W> writerOf(const Difference& d) {
    return DifferenceWriter<W>(d);
}
template <int W>
DifferencePlanesWriter writerOf(const DifferencePlanes& d) {
    static_assert(W == 16);
    return DifferencePlanesWriter(d);
}

// One function for each case, whatever the height: 4 rows at a time.
template <int W, int next, Half half, int rounding, class Destination>
[[gnu::noinline]] void subtractCase(Block<Vek8u> s, const Vek8u* pRef, std::ptrdiff_t refStep, int height,
                                    Destination dst) {
    TileReader<W, 1> source(s.base, s.step);
    Predictor<W, 1, half, rounding, next> p(pRef, refStep);
    auto out = writerOf<W>(dst);
    do {
        forTileRows<4, 1>([&] { out.row(source.rows(), p.rows()); });
    } while ((height -= 4) > 0);
}

// At full samples.
template <int W, int H, class Destination>
[[gnu::always_inline]] inline void subtractFull(Block<Vek8u> s, Block<Vek8u> ref, Destination dst) {
#if VEKVC_VECTOR256
    if constexpr (W == 16 && std::is_same_v<Destination, Difference>) {
        const std::ptrdiff_t step = dst.step;
#pragma GCC unroll 4
        for (int y = 0; y < H; ++y, s.base += s.step, ref.base += ref.step) {
            vekvc::store(dst.values, widen(load<u8x16>(s.base)) - widen(load<u8x16>(ref.base)));
            dst.values = offsetBytes(dst.values, step);
        }
        return;
    }
#endif
    auto out = writerOf<W>(dst);
#pragma GCC unroll 8
    for (int y = 0; y < H; ++y, s.base += s.step, ref.base += ref.step)
        out.row(loadBytes<u8x16, W>(s.base), loadBytes<u8x16, W>(ref.base));
}

template <int W, int H, int next, class Destination>
[[gnu::always_inline]] inline void subtractPrediction(Block<Vek8u> s, const Reference& ref, int rounding,
                                                      Destination dst) {
    if (ref.half == Half::none) return subtractFull<W, H>(s, {ref.pixels, ref.step}, dst);
    withCase(ref.half, rounding, [&]<Half half, int round>() {
        if constexpr (half != Half::none) subtractCase<W, next, half, round>(s, ref.pixels, ref.step, H, dst);
    });
}

// Two references: one function for each pair of kinds of position.
template <int W, int next, Mean meanA, Mean meanB, int rounding, class Destination>
[[gnu::noinline]] void subtractAverageCase(Block<Vek8u> s, Reference refA, Reference refB, int height,
                                           Destination dst) {
    TileReader<W, 1> source(s.base, s.step);
    Position<W, 1, meanA, rounding, next> a(refA);
    Position<W, 1, meanB, rounding, next> b(refB);
    auto out = writerOf<W>(dst);
    do {
        forTileRows<4, 1>([&] { out.row(source.rows(), average(a.rows(), b.rows())); });
    } while ((height -= 4) > 0);
}

template <int W, int H, int next, class Destination>
void subtractPrediction(Block<Vek8u> s, const Reference& f, const Reference& b, int rounding, Destination dst) {
    withPositions<true>(f, b, rounding,
                        [&]<Mean meanA, Mean meanB, int round>(const Reference& one, const Reference& other) {
                            subtractAverageCase<W, next, meanA, meanB, round>(s, one, other, H, dst);
                        });
}

// ---- full samples

template <int W, int H>
void subtractBlock(Block<Vek8u> s, Block<Vek8u> ref, Difference dst) {
    static_assert(W == 4 && H == 4);
    const auto block = [](Block<Vek8u> b) { return loadLanes32<u8x16>([&](int y) { return b.at(0, y); }); };
    const u8x16 a = block(s), b = block(ref);
    const auto row = [&](int y) { return offsetBytes(dst.values, y * static_cast<std::ptrdiff_t>(dst.step)); };
    storePair8(row(0), row(1), widenLow(a) - widenLow(b));
    storePair8(row(2), row(3), widenHigh(a) - widenHigh(b));
}

// Both less 32768, so that the difference is one of signed values, limited to their range.
template <int W, int H>
void subtractBlock(Block<Vek16u> s, Block<Vek16u> ref, Difference dst) {
    const auto row = [&](int y) { return offsetBytes(dst.values, y * static_cast<std::ptrdiff_t>(dst.step)); };
    const auto rows = [](Block<Vek16u> b, int y) {
        const u16x8 samples = W == 8 ? load<u16x8>(b.at(0, y)) : loadPair8<u16x8>(b.at(0, y), b.at(0, y + 1));
        return as<i16x8>(samples ^ splat<u16x8>(0x8000));
    };
    for (int y = 0; y < H; y += 8 / W) {
        const i16x8 difference = subSat(rows(s, y), rows(ref, y));
        if constexpr (W == 8)
            vekvc::store(row(y), difference);
        else
            storePair8(row(y), row(y + 1), difference);
    }
}

}  // namespace vekvc::simd

#endif
