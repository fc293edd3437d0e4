// Block prediction: copies, averages, motion compensation with residual. The fast form of predict_plain.h.
#ifndef VEKVC_COMMON_PREDICT_SIMD_H
#define VEKVC_COMMON_PREDICT_SIMD_H

#include "common/predict_plain.h"
#include "common/tile.h"

namespace vekvc::simd {

using plain::Residual;
using plain::ResidualPlanes;

// Copies and averages are made in their exports, which pass their arguments in registers.
template <int W, int H>
[[gnu::always_inline]] inline void copyBlock(const Reference& src, int rounding, Vek8u* pDst, Vek32s dstStep) {
    constexpr int R = kTileRows<W, H>;
    withCase(src.half, rounding, [&]<Half half, int round>() {
        Predictor<W, R, half, round> p(src.pixels, src.step);
        TileWriter<W, R> dst(pDst, dstStep);
        forTileRows<H, R>([&] { dst.rows(p.rows()); });
    });
}

template <int W, int H>
[[gnu::always_inline]] inline void averageBlock(const Reference& src, int rounding, const Vek8u* pA, Vek32s aStep,
                                                Vek8u* pDst, Vek32s dstStep) {
    constexpr int R = kTileRows<W, H>;
    withCase(src.half, rounding, [&]<Half half, int round>() {
        Predictor<W, R, half, round> p(src.pixels, src.step);
        TileReader<W, R> a(pA, aStep);
        TileWriter<W, R> dst(pDst, dstStep);
        forTileRows<H, R>([&] { dst.rows(average(a.rows(), p.rows())); });
    });
}

// A half-sample position's samples (with rounding 0) as a block of its own, W bytes to a row. One function for each
// case and width, whoever calls it.
template <int W, Half half>
[[gnu::noinline]] void copyPosition(const Vek8u* p, std::ptrdiff_t step, int rows, Vek8u* pDst) {
    Predictor<W, 1, half, 0> source(p, step);
#pragma GCC unroll 4
    for (; rows > 0; --rows, pDst += W) Tile<W, 1>::store(pDst, W, source.rows());
}

// For kernels with so much work on a prediction that they need not exist once for each case: its samples in `copy`.
template <int W, int H>
Block<Vek8u> halfSampleBlock(Block<Vek8u> ref, Half position, Vek8u (&copy)[W * H]) {
    withCase(position, 0, [&]<Half half, int>() {
        if constexpr (half != Half::none) copyPosition<W, half>(ref.base, ref.step, H, copy);
    });
    return {copy, W};
}

// R rows of residuals at a time, laid out as widenLow and widenHigh widen a tile's samples.
struct WideTile {
    i16x8 low, high;
    u8x16 addTo(u8x16 s) const { return narrowU8(addSat(widenLow(s), low), addSat(widenHigh(s), high)); }
};

template <int W, int R>
class ResidualReader {
  public:
    explicit ResidualReader(const Residual& r) : p_(r.values), step_(r.step) {}

    WideTile rows() {
        using V = i16x8;
        const auto at = [p = p_, step = step_](int row, int x) { return offsetBytes(p, row * step + 2 * x); };
        p_ = offsetBytes(p_, R * step_);
        if constexpr (W == 16) {
            return {load<V>(at(0, 0)), load<V>(at(0, 8))};
        } else if constexpr (W == 8) {
            return {load<V>(at(0, 0)), load<V>(at(1, 0))};
        } else if constexpr (W == 4 && R == 4) {
            return {loadPair8<V>(at(0, 0), at(1, 0)), loadPair8<V>(at(2, 0), at(3, 0))};
        } else if constexpr (W == 4) {
            return {loadPair8<V>(at(0, 0), at(1, 0)), zero<V>()};
        } else if constexpr (R == 4) {
            const V a = loadPair4<V>(at(0, 0), at(1, 0)), b = loadPair4<V>(at(2, 0), at(3, 0));
            return {as<V>(interleaveLow(as<u64x2>(a), as<u64x2>(b))), zero<V>()};
        } else {
            return {loadPair4<V>(at(0, 0), at(1, 0)), zero<V>()};
        }
    }

  private:
    const Vek16s* p_;
    std::ptrdiff_t step_;
};

class ResidualPlanesReader {
  public:
    explicit ResidualPlanesReader(const ResidualPlanes& r) : u_(r.u), v_(r.v), step_(r.step) {}

    WideTile rows() {
        const auto u = load<i16x8>(u_), v = load<i16x8>(v_);
        u_ = offsetBytes(u_, step_);
        v_ = offsetBytes(v_, step_);
        return {interleaveLow(u, v), interleaveHigh(u, v)};
    }

  private:
    const Vek16s *u_, *v_;
    std::ptrdiff_t step_;
};

template <int W, int R>
ResidualReader<W, R> readerOf(const Residual& r) {
    return ResidualReader<W, R>(r);
}
template <int W, int R>
ResidualPlanesReader readerOf(const ResidualPlanes& r) {
    static_assert(W == 16 && R == 1);
    return ResidualPlanesReader(r);
}

// Each case is a function of its own, so that none carries the others' registers; it ends its export.
template <int W, int H, int next, Half half, int rounding, class ResidualBlock>
[[gnu::noinline]] VekStatus predictAndAddCase(const Vek8u* pRef, std::ptrdiff_t refStep, ResidualBlock residualBlock,
                                              Vek8u* pDst, std::ptrdiff_t dstStep) {
    constexpr int R = kWideTileRows<W, H>;
    auto residual = readerOf<W, R>(residualBlock);
    TileWriter<W, R> dst(pDst, dstStep);
    if constexpr (W == 8 && half == Half::none) {  // widened while they are loaded
        const auto row = [](const Vek8u* p) { return widenLow(loadBytes<u8x16, 8>(p)); };
        forTileRows<H, R>([&] {
            const auto r = residual.rows();
            dst.rows(narrowU8(addSat(row(pRef), r.low), addSat(row(pRef + refStep), r.high)));
            pRef += 2 * refStep;
        });
    } else {
        Predictor<W, R, half, rounding, next> p(pRef, refStep);
        forTileRows<H, R>([&] { dst.rows(residual.rows().addTo(p.rows())); });
    }
    return vekStsOk;
}

template <int W, int H, int next, class ResidualBlock>
[[gnu::always_inline]] inline VekStatus predictAndAdd(const Reference& ref, int rounding, ResidualBlock residual,
                                                      Vek8u* pDst, Vek32s dstStep) {
    return withCase(ref.half, rounding, [&]<Half half, int round>() {
        return predictAndAddCase<W, H, next, half, round>(ref.pixels, ref.step, residual, pDst, dstStep);
    });
}

// Two references: a function for each pair of kinds of position.
template <int W, int H, int next, Mean meanA, Mean meanB, int rounding, class ResidualBlock>
[[gnu::noinline]] void averageAndAddCase(Reference refA, Reference refB, ResidualBlock residualBlock, Vek8u* pDst,
                                         std::ptrdiff_t dstStep) {
    constexpr int R = kWideTileRows<W, H>;
    Position<W, R, meanA, rounding, next> a(refA);
    Position<W, R, meanB, rounding, next> b(refB);
    auto residual = readerOf<W, R>(residualBlock);
    TileWriter<W, R> dst(pDst, dstStep);
    forTileRows<H, R>([&] { dst.rows(residual.rows().addTo(average(a.rows(), b.rows()))); });
}

template <int W, int H, int next, class ResidualBlock>
void predictAndAdd(const Reference& f, const Reference& b, int rounding, ResidualBlock residual, Vek8u* pDst,
                   Vek32s dstStep) {
    const auto use = [&]<Mean meanA, Mean meanB, int round>(const Reference& one, const Reference& other) {
        averageAndAddCase<W, H, next, meanA, meanB, round>(one, other, residual, pDst, dstStep);
    };
    withPositions<kWideTileRows<W, H> == 1>(f, b, rounding, use);
}

[[gnu::always_inline]] inline VekStatus addResidual8x8(const Residual& residual, Vek8u* pSrcDst, std::ptrdiff_t step) {
    const Vek16s* values = residual.values;
    const std::ptrdiff_t valueStep = residual.step;
#pragma GCC unroll 4
    for (int y = 0; y < 8; y += 2) {
        const i16x8 first = widenLow(loadBytes<u8x16, 8>(pSrcDst)),
                    second = widenLow(loadBytes<u8x16, 8>(pSrcDst + step));
        storePair8(
            pSrcDst, pSrcDst + step,
            narrowU8(addSat(first, load<i16x8>(values)), addSat(second, load<i16x8>(offsetBytes(values, valueStep)))));
        values = twoRowsOn(values, valueStep), pSrcDst = twoRowsOn(pSrcDst, step);
    }
    return vekStsOk;
}

inline void addConstant8x8(Vek16s value, Vek8u* pSrcDst, Vek32s srcDstStep) {
    const i16x8 addend = splat<i16x8>(value);
    TileReader<8, 2> src(pSrcDst, srcDstStep);
    TileWriter<8, 2> dst(pSrcDst, srcDstStep);
    forTileRows<8, 2>([&] {
        const u8x16 s = src.rows();
        dst.rows(narrowU8(widenLow(s) + addend, widenHigh(s) + addend));
    });
}

}  // namespace vekvc::simd

#endif
