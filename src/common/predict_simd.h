// Block prediction: copies, averages, motion compensation with residual. The fast form of predict_plain.h.
#ifndef VEKVC_COMMON_PREDICT_SIMD_H
#define VEKVC_COMMON_PREDICT_SIMD_H

#include "common/predict_plain.h"
#include "common/tile.h"

namespace vekvc::simd {

using plain::Residual;
using plain::ResidualPlanes;

template <int W, int H>
void copyBlock(const Reference& src, int rounding, Vek8u* pDst, Vek32s dstStep) {
    constexpr int R = kTileRows<W, H>;
    withCase(src.half, rounding, [&]<Half half, int round>() {
        Predictor<W, R, half, round> p(src.pixels, src.step);
        forTileRows<H, R>([&](int y) { Tile<W, R>::store(pDst + std::ptrdiff_t{dstStep} * y, dstStep, p.rows()); });
    });
}

template <int W, int H>
void averageBlock(const Reference& src, int rounding, const Vek8u* pA, Vek32s aStep, Vek8u* pDst, Vek32s dstStep) {
    constexpr int R = kTileRows<W, H>;
    using T = Tile<W, R>;
    withCase(src.half, rounding, [&]<Half half, int round>() {
        Predictor<W, R, half, round> p(src.pixels, src.step);
        forTileRows<H, R>([&](int y) {
            const auto a = T::load(pA + std::ptrdiff_t{aStep} * y, aStep);
            T::store(pDst + std::ptrdiff_t{dstStep} * y, dstStep, average(a, p.rows()));
        });
    });
}

// The residuals of R rows of W samples, laid out as interleaveLow and interleaveHigh widen the tile's samples.
template <int W, int R>
struct WideTile {
    using Samples = typename Tile<W, R>::Vector;
    using Vector = Vec<Vek16s, Samples::kBytes / 2>;
    Vector low, high;

    static WideTile load(const Residual& r, int y) {
        const auto at = [&](int row, int x) { return Block<Vek16s>(r.values, r.step).at(x, y + row); };
        if constexpr (W * R == 32 && W == 16) {
            return {loadPair16<Vector>(at(0, 0), at(1, 0)), loadPair16<Vector>(at(0, 8), at(1, 8))};
        } else if constexpr (W * R == 32) {
            return {loadPair16<Vector>(at(0, 0), at(2, 0)), loadPair16<Vector>(at(1, 0), at(3, 0))};
        } else if constexpr (W == 16) {
            return {simd_load(at(0, 0)), simd_load(at(0, 8))};
        } else if constexpr (W == 8) {
            return {simd_load(at(0, 0)), simd_load(at(1, 0))};
        } else if constexpr (W == 4 && R == 4) {
            return {loadPair8<Vector>(at(0, 0), at(1, 0)), loadPair8<Vector>(at(2, 0), at(3, 0))};
        } else if constexpr (W == 4) {
            return {loadPair8<Vector>(at(0, 0), at(1, 0)), zero<Vector>()};
        } else {
            static_assert(W == 2);
            Vector v = loadPair4<Vector>(at(0, 0), at(1, 0));
            if constexpr (R == 4)
                v = as<Vector>(interleaveLow(as<u64x2>(v), as<u64x2>(loadPair4<Vector>(at(2, 0), at(3, 0)))));
            return {v, zero<Vector>()};
        }
    }

    static WideTile load(const ResidualPlanes& r, int y) {
        static_assert(W == 16);
        const auto row = [&](const Vek16s* plane) {
            const Block<Vek16s> b(plane, r.step);
            if constexpr (R == 2)
                return loadPair16<Vector>(b.at(0, y), b.at(0, y + 1));
            else
                return simd_load(b.at(0, y));
        };
        const Vector u = row(r.u), v = row(r.v);
        return {interleaveLow(u, v), interleaveHigh(u, v)};
    }

    Samples addTo(Samples s) const {
        const auto none = zero<Samples>();
        return narrowU8(addSat(as<Vector>(interleaveLow(s, none)), low),
                        addSat(as<Vector>(interleaveHigh(s, none)), high));
    }

  private:
    static Vector simd_load(const Vek16s* p) { return vekvc::load<Vector>(p); }
};

// One width's kernel serves all heights: the case and the rounding are compiled in, the height is not.
template <int W, int H, int next, class ResidualBlock>
void predictAndAdd(const Reference& ref, int rounding, ResidualBlock residual, Vek8u* pDst, Vek32s dstStep) {
    constexpr int R = kTileRows<W, H>;
    withCase(ref.half, rounding, [&]<Half half, int round>() {
        Predictor<W, R, half, round, next> p(ref.pixels, ref.step);
        forTileRows<H, R>([&](int y) {
            const auto sum = WideTile<W, R>::load(residual, y).addTo(p.rows());
            Tile<W, R>::store(pDst + std::ptrdiff_t{dstStep} * y, dstStep, sum);
        });
    });
}

template <int W, int R, Half halfF, Half halfB, int rounding, int next, class ResidualBlock>
[[gnu::noinline]] void predictAndAddCase(const Reference& f, const Reference& b, ResidualBlock residual, int height,
                                         Vek8u* pDst, std::ptrdiff_t dstStep) {
    Predictor<W, R, halfF, rounding, next> forward(f.pixels, f.step);
    Predictor<W, R, halfB, rounding, next> backward(b.pixels, b.step);
    for (int y = 0; y < height; y += R) {
        const auto mean = average(forward.rows(), backward.rows());
        Tile<W, R>::store(pDst + dstStep * y, dstStep, WideTile<W, R>::load(residual, y).addTo(mean));
    }
}

template <int W, int H, int next, class ResidualBlock>
void predictAndAdd(const Reference& f, const Reference& b, int rounding, ResidualBlock residual, Vek8u* pDst,
                   Vek32s dstStep) {
    constexpr int R = kTileRows<W, H>;
    withCase(f.half, rounding, [&]<Half halfF, int roundF>() {
        withCase(b.half, rounding, [&]<Half halfB, int roundB>() {
            constexpr int round = roundF | roundB;  // a full-sample case has no rounding of its own
            predictAndAddCase<W, R, halfF, halfB, round, next>(f, b, residual, H, pDst, dstStep);
        });
    });
}

inline void addConstant8x8(Vek16s value, Vek8u* pSrcDst, Vek32s srcDstStep) {
    const i16x8 addend = splat<i16x8>(value);
    using T = Tile<8, 2>;
    forTileRows<8, 2>([&](int y) {
        Vek8u* p = pSrcDst + std::ptrdiff_t{srcDstStep} * y;
        const u8x16 s = T::load(p, srcDstStep);
        T::store(p, srcDstStep, narrowU8(widenLow(s) + addend, widenHigh(s) + addend));
    });
}

}  // namespace vekvc::simd

#endif
