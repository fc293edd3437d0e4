// Difference blocks: a block less its prediction. The fast form of difference_plain.h.
#ifndef VEKVC_COMMON_DIFFERENCE_SIMD_H
#define VEKVC_COMMON_DIFFERENCE_SIMD_H

#include "common/difference_plain.h"
#include "common/predict_simd.h"

namespace vekvc::simd {

using plain::Difference;
using plain::DifferencePlanes;

// R rows of W samples a at a time, less b, to where they go.
template <int W, int R>
class DifferenceWriter {
  public:
    explicit DifferenceWriter(const Difference& d) : p_(d.values), step_(ownStep(d.step)) {}

    [[gnu::always_inline]] void rows(u8x16 a, u8x16 b) {
        static_assert(W == 16 || (W == 8 && R == 2));
        const i16x8 low = differenceLow(a, b), high = differenceHigh(a, b);
        vekvc::store(p_, low);
        vekvc::store(W == 16 ? p_ + 8 : offsetBytes(p_, step_), high);
        p_ = offsetBytes(p_, R * step_);
    }

  private:
    // a - b from the bytes of a and b in turn: one instruction more than widening either, but none for the other.
    static i16x8 differenceLow(u8x16 a, u8x16 b) { return mulAddPairs(interleaveLow(a, b), plusMinus()); }
    static i16x8 differenceHigh(u8x16 a, u8x16 b) { return mulAddPairs(interleaveHigh(a, b), plusMinus()); }
    static i8x16 plusMinus() { return as<i8x16>(splat<i16x8>(-255)); }  // the bytes 1, -1

    Vek16s* p_;
    std::ptrdiff_t step_;
};

// Interleaved chroma: the even columns to one plane, the odd ones to the other.
class DifferencePlanesWriter {
  public:
    explicit DifferencePlanesWriter(const DifferencePlanes& d) : u_(d.u), v_(d.v), step_(ownStep(d.step)) {}

    [[gnu::always_inline]] void rows(u8x16 a, u8x16 b) {
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

template <int W, int R>
DifferenceWriter<W, R> writerOf(const Difference& d) {
    return DifferenceWriter<W, R>(d);
}
template <int W, int R>
DifferencePlanesWriter writerOf(const DifferencePlanes& d) {
    static_assert(W == 16 && R == 1);
    return DifferencePlanesWriter(d);
}

// One function for each case, whatever the height: 4 rows at a time.
template <int W, int next, Half half, int rounding, class Destination>
[[gnu::noinline]] void subtractCase(Block<Vek8u> s, const Vek8u* pRef, std::ptrdiff_t refStep, int height,
                                    Destination dst) {
    constexpr int R = 16 / W;
    TileReader<W, R> source(s.base, s.step);
    Predictor<W, R, half, rounding, next> p(pRef, refStep);
    auto out = writerOf<W, R>(dst);
    for (; height > 0; height -= 4) forTileRows<4, R>([&] { out.rows(source.rows(), p.rows()); });
}

template <int W, int H, int next, class Destination>
void subtractPrediction(Block<Vek8u> s, const Reference& ref, int rounding, Destination dst) {
    withCase(ref.half, rounding,
             [&]<Half half, int round>() { subtractCase<W, next, half, round>(s, ref.pixels, ref.step, H, dst); });
}

// The average with a prediction that stands in memory already.
template <int W, int next, Half half, int rounding, class Destination>
[[gnu::noinline]] void subtractAverageCase(Block<Vek8u> s, Block<Vek8u> other, const Vek8u* pRef,
                                           std::ptrdiff_t refStep, int height, Destination dst) {
    constexpr int R = 16 / W;
    TileReader<W, R> source(s.base, s.step), a(other.base, other.step);
    Predictor<W, R, half, rounding, next> p(pRef, refStep);
    auto out = writerOf<W, R>(dst);
    for (; height > 0; height -= 4) forTileRows<4, R>([&] { out.rows(source.rows(), average(a.rows(), p.rows())); });
}

template <int W, int H, int next, class Destination>
void subtractPrediction(Block<Vek8u> s, const Reference& f, const Reference& b, int rounding, Destination dst) {
    // The average does not mind the order: a full-sample reference serves as the one in memory.
    const bool swapped = b.half == Half::none;
    const Reference &memory = swapped ? b : f, &other = swapped ? f : b;
    const PredictedBlock<W, H, next> p(memory, rounding);
    withCase(other.half, rounding, [&]<Half half, int round>() {
        subtractAverageCase<W, next, half, round>(s, p.block(), other.pixels, other.step, H, dst);
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
