// Block prediction: copies, averages, motion compensation with residual. The fast form of predict_plain.h.
// Every case of position and rounding is a function of its own, so that none carries the others' registers.
#ifndef VEKVC_COMMON_PREDICT_SIMD_H
#define VEKVC_COMMON_PREDICT_SIMD_H

#include "common/predict_plain.h"
#include "common/tile.h"

namespace vekvc::simd {

using plain::Residual;
using plain::ResidualPlanes;

template <int W, int H, Half half, int rounding>
[[gnu::noinline]] void copyCase(const Vek8u* pSrc, std::ptrdiff_t srcStep, Vek8u* pDst, std::ptrdiff_t dstStep) {
    constexpr int R = kTileRows<W, H>;
    Predictor<W, R, half, rounding> p(pSrc, srcStep);
    TileWriter<W, R> dst(pDst, dstStep);
    forTileRows<H, R>([&] { dst.rows(p.rows()); });
}

template <int W, int H>
void copyBlock(const Reference& src, int rounding, Vek8u* pDst, Vek32s dstStep) {
    withCase(src.half, rounding,
             [&]<Half half, int round>() { copyCase<W, H, half, round>(src.pixels, src.step, pDst, dstStep); });
}

template <int W, int H, Half half, int rounding>
[[gnu::noinline]] void averageCase(const Vek8u* pSrc, std::ptrdiff_t srcStep, const Vek8u* pA, std::ptrdiff_t aStep,
                                   Vek8u* pDst, std::ptrdiff_t dstStep) {
    constexpr int R = kTileRows<W, H>;
    Predictor<W, R, half, rounding> p(pSrc, srcStep);
    TileReader<W, R> a(pA, aStep);
    TileWriter<W, R> dst(pDst, dstStep);
    forTileRows<H, R>([&] { dst.rows(average(a.rows(), p.rows())); });
}

template <int W, int H>
void averageBlock(const Reference& src, int rounding, const Vek8u* pA, Vek32s aStep, Vek8u* pDst, Vek32s dstStep) {
    withCase(src.half, rounding, [&]<Half half, int round>() {
        averageCase<W, H, half, round>(src.pixels, src.step, pA, aStep, pDst, dstStep);
    });
}

// R rows of residuals at a time, laid out as interleaveLow and interleaveHigh widen a tile's samples.
template <int W, int R>
struct WideTile {
    using Samples = typename Tile<W, R>::Vector;
    using Vector = Vec<Vek16s, Samples::kBytes / 2>;
    Vector low, high;

    Samples addTo(Samples s) const {
        const auto none = zero<Samples>();
        return narrowU8(addSat(as<Vector>(interleaveLow(s, none)), low),
                        addSat(as<Vector>(interleaveHigh(s, none)), high));
    }
};

template <int W, int R>
class ResidualReader {
  public:
    explicit ResidualReader(const Residual& r) : p_(r.values), step_(r.step) {}

    WideTile<W, R> rows() {
        using V = typename WideTile<W, R>::Vector;
        const auto at = [p = p_, step = step_](int row, int x) { return offsetBytes(p, row * step + 2 * x); };
        p_ = offsetBytes(p_, R * step_);
        if constexpr (W * R == 32 && W == 16) {
            return {loadPair16<V>(at(0, 0), at(1, 0)), loadPair16<V>(at(0, 8), at(1, 8))};
        } else if constexpr (W * R == 32) {
            return {loadPair16<V>(at(0, 0), at(2, 0)), loadPair16<V>(at(1, 0), at(3, 0))};
        } else if constexpr (W == 16) {
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

template <int R>
class ResidualPlanesReader {
  public:
    explicit ResidualPlanesReader(const ResidualPlanes& r) : u_(r.u), v_(r.v), step_(r.step) {}

    WideTile<16, R> rows() {
        const auto u = next(u_), v = next(v_);
        return {interleaveLow(u, v), interleaveHigh(u, v)};
    }

  private:
    using V = typename WideTile<16, R>::Vector;
    V next(const Vek16s*& p) const {
        const Vek16s* row = p;
        p = offsetBytes(p, R * step_);
        if constexpr (R == 2)
            return loadPair16<V>(row, offsetBytes(row, step_));
        else
            return load<V>(row);
    }

    const Vek16s *u_, *v_;
    std::ptrdiff_t step_;
};

template <int W, int R>
ResidualReader<W, R> readerOf(const Residual& r) {
    return ResidualReader<W, R>(r);
}
template <int W, int R>
ResidualPlanesReader<R> readerOf(const ResidualPlanes& r) {
    static_assert(W == 16);
    return ResidualPlanesReader<R>(r);
}

template <int W, int H, int next, Half half, int rounding, class ResidualBlock>
[[gnu::noinline]] void predictAndAddCase(const Vek8u* pRef, std::ptrdiff_t refStep, ResidualBlock residualBlock,
                                         Vek8u* pDst, std::ptrdiff_t dstStep) {
    constexpr int R = kTileRows<W, H>;
    Predictor<W, R, half, rounding, next> p(pRef, refStep);
    auto residual = readerOf<W, R>(residualBlock);
    TileWriter<W, R> dst(pDst, dstStep);
    forTileRows<H, R>([&] { dst.rows(residual.rows().addTo(p.rows())); });
}

template <int W, int H, int next, class ResidualBlock>
void predictAndAdd(const Reference& ref, int rounding, ResidualBlock residual, Vek8u* pDst, Vek32s dstStep) {
    withCase(ref.half, rounding, [&]<Half half, int round>() {
        predictAndAddCase<W, H, next, half, round>(ref.pixels, ref.step, residual, pDst, dstStep);
    });
}

template <int W, int H, int next, Half halfF, Half halfB, int rounding, class ResidualBlock>
[[gnu::noinline]] void predictAndAddCase(const Vek8u* pF, std::ptrdiff_t stepF, const Vek8u* pB, std::ptrdiff_t stepB,
                                         ResidualBlock residualBlock, Vek8u* pDst, std::ptrdiff_t dstStep) {
    constexpr int R = kTileRows<W, H>;
    Predictor<W, R, halfF, rounding, next> f(pF, stepF);
    Predictor<W, R, halfB, rounding, next> b(pB, stepB);
    auto residual = readerOf<W, R>(residualBlock);
    TileWriter<W, R> dst(pDst, dstStep);
    forTileRows<H, R>([&] { dst.rows(residual.rows().addTo(average(f.rows(), b.rows()))); });
}

template <int W, int H, int next, class ResidualBlock>
void predictAndAdd(const Reference& f, const Reference& b, int rounding, ResidualBlock residual, Vek8u* pDst,
                   Vek32s dstStep) {
    withCase(f.half, rounding, [&]<Half halfF, int roundF>() {
        withCase(b.half, rounding, [&]<Half halfB, int roundB>() {
            constexpr int round = roundF | roundB;  // a full-sample case has no rounding of its own
            predictAndAddCase<W, H, next, halfF, halfB, round>(f.pixels, f.step, b.pixels, b.step, residual, pDst,
                                                               dstStep);
        });
    });
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
