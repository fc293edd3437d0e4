// Fast forms of H.264 macroblock reconstruction. Blocks side by side are transformed together, one in each half of a
// 256-bit vector; a block without a residual takes part with zeros. Where both pairs of a square of four have one, all
// four go together, without the moves that keep two rows in one vector.
#ifndef VEKVC_H264_RECONSTRUCT_SIMD_H
#define VEKVC_H264_RECONSTRUCT_SIMD_H

#include "h264/intra_simd.h"
#include "h264/reconstruct_plain.h"
#include "h264/transform_dc_simd.h"

namespace vekvc::simd {

using h264::CodedBlocks;
using h264::Scaling;
using h264::takeCoeffs;
using plain::blockAt;
using plain::readable;

template <class C>
inline constexpr C zeroBlock[64] = {};

// The next coded block of the stream, or zeros.
template <class C>
[[gnu::always_inline]] inline const C* takeIf(C*& coeffs, bool isCoded, int n) {
    const C* block = isCoded ? coeffs : zeroBlock<C>;
    coeffs += isCoded ? n : 0;
    return block;
}

// Four blocks of 16, those coded from the stream.
template <class C>
struct Quad {
    const C* blocks[4];
};
template <class C>
[[gnu::always_inline]] inline Quad<C> takeQuad(C*& coeffs, Vek32u coded) {
    const C* block0 = takeIf(coeffs, coded & 1, 16);
    const C* block1 = takeIf(coeffs, coded & 2, 16);
    const C* block2 = takeIf(coeffs, coded & 4, 16);
    return {{block0, block1, block2, takeIf(coeffs, coded & 8, 16)}};
}

#if VEKVC_VECTOR256
// Transposes the 4x4 blocks of which vector i holds column i, one block in each 64 bits.
[[gnu::always_inline]] inline void transposeQuads(i16x16 (&w)[4]) {
    const i32x8 p0 = as<i32x8>(interleaveLow(w[0], w[1])), p1 = as<i32x8>(interleaveHigh(w[0], w[1]));
    const i32x8 p2 = as<i32x8>(interleaveLow(w[2], w[3])), p3 = as<i32x8>(interleaveHigh(w[2], w[3]));
    const i16x16 left01 = as<i16x16>(interleaveLow(p0, p2)), left23 = as<i16x16>(interleaveHigh(p0, p2));
    const i16x16 right01 = as<i16x16>(interleaveLow(p1, p3)), right23 = as<i16x16>(interleaveHigh(p1, p3));
    w[0] = joinLow(left01, right01);
    w[1] = joinHigh(left01, right01);
    w[2] = joinLow(left23, right23);
    w[3] = joinHigh(left23, right23);
}
#endif

// ---- residuals of 4x4 blocks, two side by side or four in a square

template <class C, class P>
class BlockAdder;

template <>
class BlockAdder<Vek16s, Vek8u> {
  public:
    BlockAdder(const Scaling& s, int) : one_(makeScaler(s.levelScale, s.qp)) {
#if VEKVC_VECTOR256
        two_ = {
            {join(one_.multipliers.top, one_.multipliers.top), join(one_.multipliers.bottom, one_.multipliers.bottom)},
            one_.right};
#endif
    }

    void add(const Vek16s* c, MutableBlock<Vek8u> block) const {
        const Rows<i16x8> w = loadRows(c);
        addRows(inverse4x4(Rows<i16x8>{one_.top(w.top), one_.bottom(w.bottom)}), readable(block), block);
    }

    // pDC: null, or two DC values that replace those of the blocks.
    void addPair(const Vek16s* a, const Vek16s* b, const Vek16s* pDC, MutableBlock<Vek8u> block) const {
#if VEKVC_VECTOR256
        i16x16 top = two_.top(loadPair16<i16x16>(a, b));
        if (pDC) {
            const i16x8 dc = loadBytes<i16x8, 4>(pDC);
            top = blend16<1>(top, join(dc, bytesRight<2>(dc)));
        }
        const Rows<i16x16> r = inverse4x4(Rows<i16x16>{top, two_.bottom(loadPair16<i16x16>(a + 8, b + 8))});
        const i16x16 top01 = swapMiddleQuarters(roundedForSamples(r.top));
        const i16x16 bottom32 = swapMiddleQuarters(roundedForSamples(r.bottom));
        const i16x16 sum01 = addSat(top01, widen(loadPair8<u8x16>(block.at(0, 0), block.at(0, 1))));
        const i16x16 sum32 = addSat(bottom32, widen(loadPair8<u8x16>(block.at(0, 3), block.at(0, 2))));
        const u8x32 rows = narrowU8(sum01, sum32);
        storePair8(block.at(0, 0), block.at(0, 3), lowHalf(rows));
        storePair8(block.at(0, 1), block.at(0, 2), highHalf(rows));
#else
        const Vek16s* blocks[2] = {a, b};
        for (int k = 0; k < 2; ++k) {
            if (blocks[k] == zeroBlock<Vek16s> && !(pDC && load<Vek16s>(pDC + k))) continue;
            Rows<i16x8> w = loadRows(blocks[k]);
            w = {one_.top(w.top), one_.bottom(w.bottom)};
            if (pDC) w = withDC(w, load<Vek16s>(pDC + k));
            const MutableBlock<Vek8u> half = blockAt(block, 4 * k, 0);
            addRows(inverse4x4(w), readable(half), half);
        }
#endif
    }

#if VEKVC_VECTOR256
    // Four blocks, two above two: each vector holds one row (or column) of all four. pDC: as for two.
    [[gnu::always_inline]] inline void addQuad(const Vek16s* const (&c)[4], const Vek16s* pDC,
                                               MutableBlock<Vek8u> block) const {
        // Block i and, below it, block i + 2.
        const auto columns = [&](int i) {
            const Vek16s *upper = c[i], *lower = c[i + 2];
            i16x16 top = two_.top(loadPair16<i16x16>(upper, lower));
            if (pDC) top = blend16<1>(top, join(loadBytes<i16x8, 2>(pDC + i), loadBytes<i16x8, 2>(pDC + i + 2)));
            return transposed(Rows<i16x16>{top, two_.bottom(loadPair16<i16x16>(upper + 8, lower + 8))});
        };
        const Rows<i16x16> a = columns(0), b = columns(1);
        i16x16 w[4] = {joinLow(a.top, b.top), joinHigh(a.top, b.top), joinLow(a.bottom, b.bottom),
                       joinHigh(a.bottom, b.bottom)};
        inverse4(w);
        transposeQuads(w);
        inverse4(w);
        for (int y = 0; y < 4; y += 2) {
            const auto samples = [&](int row) {
                return addSat(roundedForSamples(w[row]),
                              widen(loadPair8<u8x16>(block.at(0, row), block.at(0, row + 4))));
            };
            const u8x32 rows = narrowU8(samples(y), samples(y + 1));
            storePair8(block.at(0, y), block.at(0, y + 1), lowHalf(rows));
            storePair8(block.at(0, y + 4), block.at(0, y + 5), highHalf(rows));
        }
    }
#endif

    // Two blocks of which only the DC values are coded.
    void addPairDC(const Vek16s* pDC, MutableBlock<Vek8u> block) const {
        const i16x8 r = addSat(loadBytes<i16x8, 4>(pDC), splat<i16x8>(32)) >> 6;
        const i16x8 spread = shuffleBytes(r, lanes<u8x16>(0, 1, 0, 1, 0, 1, 0, 1, 2, 3, 2, 3, 2, 3, 2, 3));
        const u8x16 up = narrowU8(spread, spread), down = narrowU8(zero<i16x8>() - spread, zero<i16x8>() - spread);
        for (int y = 0; y < 4; y += 2) {
            const u8x16 rows = loadPair8<u8x16>(block.at(0, y), block.at(0, y + 1));
            storePair8(block.at(0, y), block.at(0, y + 1), subSat(addSat(rows, up), down));
        }
    }

  private:
    Scaler<i16x8> one_;
#if VEKVC_VECTOR256
    Scaler<i16x16> two_;
#endif
};

template <>
class BlockAdder<Vek32s, Vek16u> {
  public:
    BlockAdder(const Scaling& s, int bitDepth) : one_(makeScaler32(s.levelScale, s.qp)), bitDepth_(bitDepth) {
#if VEKVC_VECTOR256
        two_.right = one_.right;
        for (int i = 0; i < 4; ++i) two_.multipliers[i] = join(one_.multipliers[i], one_.multipliers[i]);
#endif
    }

    void add(const Vek32s* c, MutableBlock<Vek16u> block) const {
        i32x4 w[4];
        for (int i = 0; i < 4; ++i) w[i] = one_.row(load<i32x4>(c + 4 * i), i);
        inverse4x4(w);
        addRows(w, readable(block), block, bitDepth_);
    }

    void addPair(const Vek32s* a, const Vek32s* b, const Vek32s* pDC, MutableBlock<Vek16u> block) const {
#if VEKVC_VECTOR256
        i32x8 w[4];
        for (int i = 0; i < 4; ++i) w[i] = two_.row(loadPair16<i32x8>(a + 4 * i, b + 4 * i), i);
        if (pDC) {
            const i32x4 dc = loadBytes<i32x4, 8>(pDC);
            w[0] = blend16<3>(w[0], join(dc, bytesRight<4>(dc)));
        }
        inverse4x4(w);
        const u16x16 most = splat<u16x16>((1 << bitDepth_) - 1);
        for (int y = 0; y < 4; y += 2) {
            const i32x8 upper = w[y] + widen(load<u16x8>(block.at(0, y)));
            const i32x8 lower = w[y + 1] + widen(load<u16x8>(block.at(0, y + 1)));
            storePair16(block.at(0, y), block.at(0, y + 1), swapMiddleQuarters(min(narrowU16(upper, lower), most)));
        }
#else
        const Vek32s* blocks[2] = {a, b};
        for (int k = 0; k < 2; ++k) {
            if (blocks[k] == zeroBlock<Vek32s> && !(pDC && load<Vek32s>(pDC + k))) continue;
            i32x4 w[4];
            for (int i = 0; i < 4; ++i) w[i] = one_.row(load<i32x4>(blocks[k] + 4 * i), i);
            if (pDC) w[0] = blend16<3>(w[0], loadBytes<i32x4, 4>(pDC + k));
            inverse4x4(w);
            const MutableBlock<Vek16u> half = blockAt(block, 4 * k, 0);
            addRows(w, readable(half), half, bitDepth_);
        }
#endif
    }

    void addPairDC(const Vek32s* pDC, MutableBlock<Vek16u> block) const {
        const i32x4 r = (loadBytes<i32x4, 8>(pDC) + splat<i32x4>(32)) >> 6;
        const i32x4 left = shuffle32<0, 0, 0, 0>(r), right = shuffle32<1, 1, 1, 1>(r);
        const u16x8 most = splat<u16x8>((1 << bitDepth_) - 1);
        for (int y = 0; y < 4; ++y) {
            const u16x8 row = load<u16x8>(block.at(0, y));
            store(block.at(0, y), min(narrowU16(left + widenLow(row), right + widenHigh(row)), most));
        }
    }

  private:
    Scaler32<i32x4> one_;
#if VEKVC_VECTOR256
    Scaler32<i32x8> two_;
#endif
    int bitDepth_;
};

// ---- residuals of 8x8 blocks

template <class C, class P>
void addResidual8x8(const C* c, MutableBlock<P> block, const Scaling& s, int bitDepth) {
    const int right = rightShift(s.qp / 6, 6);
    if constexpr (sizeof(C) == 2) {
        i16x8 w[8];
        for (int y = 0; y < 8; ++y)
            w[y] = scaled(load<i16x8>(c + 8 * y), multiplier(load<i16x8>(s.levelScale + 8 * y), s.qp / 6, 6), right);
        inverse8x8(w);
        addRows(w, readable(block), block);
    } else {
        Rows8 rows;
        const auto quarter = [&](int k) {
            return scaled32(load<i32x4>(c + k), multiplier(loadWide4(s.levelScale + k), s.qp / 6, 6), right);
        };
        for (int y = 0; y < 8; ++y) rows.put(y, quarter(8 * y), quarter(8 * y + 4));
        rows.inverse();
        rows.add(readable(block), block, bitDepth);
    }
}

#if VEKVC_VECTOR256
// Two blocks side by side.
[[gnu::always_inline]] inline void addResidualPair8x8(const Vek16s* a, const Vek16s* b, MutableBlock<Vek8u> block,
                                                      const Scaling& s) {
    const int right = rightShift(s.qp / 6, 6);
    i16x16 w[8];
    for (int y = 0; y < 8; ++y) {
        const i16x8 m = multiplier(load<i16x8>(s.levelScale + 8 * y), s.qp / 6, 6);
        w[y] = scaled(loadPair16<i16x16>(a + 8 * y, b + 8 * y), join(m, m), right);
    }
    inverse8x8(w);
    for (int y = 0; y < 8; y += 2) {
        const i16x16 upper = addSat(roundedForSamples(w[y]), widen(load<u8x16>(block.at(0, y))));
        const i16x16 lower = addSat(roundedForSamples(w[y + 1]), widen(load<u8x16>(block.at(0, y + 1))));
        storePair16(block.at(0, y), block.at(0, y + 1), swapMiddleQuarters(narrowU8(upper, lower)));
    }
}
#endif

// ---- luma

template <class C, class P>
void reconstructInter4x4(C*& coeffs, MutableBlock<P> mb, Vek32u coded, const Scaling& s, int bitDepth) {
    if (s.bypass) return plain::reconstructInter4x4(coeffs, mb, coded, s, bitDepth);
    const BlockAdder<C, P> adder(s, bitDepth);
    C* next = coeffs;  // a copy that stays in a register
#pragma GCC unroll 4
    for (int k = 0; k < 16; k += 4) {
        const Vek32u quad = coded >> k & 15;
        const C* const noDC = nullptr;
#if VEKVC_VECTOR256
        if constexpr (sizeof(C) == 2)
            if ((quad & 3) != 0 && (quad & 12) != 0) {
                adder.addQuad(takeQuad(next, quad).blocks, noDC, blockAt(mb, h264::blockX4x4(k), h264::blockY4x4(k)));
                continue;
            }
#endif
        for (int half = 0; half < 4; half += 2) {
            const Vek32u pair = quad >> half & 3;
            if (pair == 0) continue;
            const C* a = takeIf(next, pair & 1, 16);
            const C* b = takeIf(next, pair & 2, 16);
            adder.addPair(a, b, noDC, blockAt(mb, h264::blockX4x4(k + half), h264::blockY4x4(k + half)));
        }
    }
    coeffs = next;
}

template <class C, class P>
void reconstructInter8x8(C*& coeffs, MutableBlock<P> mb, Vek32u coded, const Scaling& s, int bitDepth) {
    if (s.bypass) return plain::reconstructInter8x8(coeffs, mb, coded, s, bitDepth);
    for (int k = 0; k < 4; ++k) {
        if (!(coded >> 4 * k & 15)) continue;
        const MutableBlock<P> block = blockAt(mb, h264::blockX8x8(k), h264::blockY8x8(k));
#if VEKVC_VECTOR256
        if constexpr (sizeof(C) == 2)
            if (k % 2 == 0 && (coded >> 4 * (k + 1) & 15)) {
                const C* a = takeCoeffs(coeffs, 64);
                addResidualPair8x8(a, takeCoeffs(coeffs, 64), block, s);
                ++k;
                continue;
            }
#endif
        addResidual8x8(takeCoeffs(coeffs, 64), block, s, bitDepth);
    }
}

template <class C, class P>
bool reconstructIntra4x4(C*& coeffs, MutableBlock<P> mb, const Vek32u* pPredModes, Vek32u coded, Vek32u neighbours,
                         const Scaling& s, int bitDepth) {
    if (s.bypass) return plain::reconstructIntra4x4(coeffs, mb, pPredModes, coded, neighbours, s, bitDepth);
    const BlockAdder<C, P> adder(s, bitDepth);
    C* next = coeffs;
    bool lacking = false;
    for (int k = 0; k < 16; ++k) {
        const MutableBlock<P> block = blockAt(mb, h264::blockX4x4(k), h264::blockY4x4(k));
        const int mode = static_cast<int>(load<Vek32u>(pPredModes + k));
        lacking |= predictIntra4x4(block, mode, h264::blockNeighbours4x4(neighbours, k), bitDepth);
        if (coded >> k & 1) adder.add(takeCoeffs(next, 16), block);
    }
    coeffs = next;
    return lacking;
}

template <class C, class P>
bool reconstructIntra8x8(C*& coeffs, MutableBlock<P> mb, const Vek32u* pPredModes, Vek32u coded, Vek32u neighbours,
                         const Scaling& s, int bitDepth) {
    if (s.bypass) return plain::reconstructIntra8x8(coeffs, mb, pPredModes, coded, neighbours, s, bitDepth);
    bool lacking = false;
    for (int k = 0; k < 4; ++k) {
        const MutableBlock<P> block = blockAt(mb, h264::blockX8x8(k), h264::blockY8x8(k));
        const int mode = static_cast<int>(load<Vek32u>(pPredModes + k));
        lacking |= predictIntra8x8(block, mode, h264::blockNeighbours8x8(neighbours, k), bitDepth);
        if (coded >> 4 * k & 15) addResidual8x8(takeCoeffs(coeffs, 64), block, s, bitDepth);
    }
    return lacking;
}

// Pairs of blocks whose DC values were coded in a block of their own; block k of the pair at position at(k).
template <int blocks, class C, class P, class Position>
[[gnu::always_inline]] inline void addResidualWithDC(C*& coeffs, MutableBlock<P> plane, Vek32u coded, const C* dc,
                                                     Position at, const BlockAdder<C, P>& adder) {
    C* next = coeffs;
    for (int k = 0; k < blocks; k += 2) {
        const Vek32u pair = coded >> k & 3;
#if VEKVC_VECTOR256
        if constexpr (sizeof(C) == 2)
            if (k % 4 == 0 && pair != 0 && (coded >> k & 12) != 0) {
                adder.addQuad(takeQuad(next, coded >> k & 15).blocks, dc + k, at(plane, k));
                k += 2;
                continue;
            }
#endif
        if (pair != 0) {
            const C* a = takeIf(next, pair & 1, 16);
            const C* b = takeIf(next, pair & 2, 16);
            adder.addPair(a, b, dc + k, at(plane, k));
        } else if (dc[k] != 0 || dc[k + 1] != 0) {
            adder.addPairDC(dc + k, at(plane, k));
        }
    }
    coeffs = next;
}

template <class C, class P>
void reconstructIntra16x16(C*& coeffs, MutableBlock<P> mb, h264::Intra16x16Mode mode, CodedBlocks coded,
                           Vek32u neighbours, const Scaling& s, int bitDepth) {
    if (s.bypass) return plain::reconstructIntra16x16(coeffs, mb, mode, coded, neighbours, s, bitDepth);
    predictIntra16x16(mb, mode, neighbours, bitDepth);
    if (!coded.dc && coded.ac == 0) return;
    Values<16, C> raster{}, dc;
    if (coded.dc) {
        raster = plain::loadValues<16>(takeCoeffs(coeffs, 16));
        inverseLumaDC(raster.data(), s.qp, s.levelScaleDC);
    }
    for (int k = 0; k < 16; ++k) dc[k] = raster[h264::blockY4x4(k) + h264::blockX4x4(k) / 4];
    addResidualWithDC<16>(
        coeffs, mb, coded.ac, dc.data(),
        [](MutableBlock<P> b, int k) { return blockAt(b, h264::blockX4x4(k), h264::blockY4x4(k)); },
        BlockAdder<C, P>(s, bitDepth));
}

// ---- chroma

template <int height, class C, class P>
void reconstructChroma(C*& coeffs, const MutableBlock<P> (&planes)[2], const CodedBlocks (&coded)[2],
                       const Scaling (&scaling)[2], int bitDepth) {
    if (scaling[0].bypass) return plain::reconstructChroma<height>(coeffs, planes, coded, scaling, bitDepth);
    constexpr int blocks = height / 2;
    Values<blocks, C> dc[2]{};
    for (int plane = 0; plane < 2; ++plane) {
        const Scaling& s = scaling[plane];
        if (!coded[plane].dc) continue;
        dc[plane] = plain::loadValues<blocks>(takeCoeffs(coeffs, blocks));
        if constexpr (height == 8)
            inverseChromaDC2x2(dc[plane].data(), s.qp, s.levelScaleDC);
        else
            inverseChromaDC2x4(dc[plane].data(), s.qp + 3, s.levelScaleDC);
    }
    for (int plane = 0; plane < 2; ++plane) {
        if (!coded[plane].dc && coded[plane].ac == 0) continue;
        addResidualWithDC<blocks>(
            coeffs, planes[plane], coded[plane].ac, dc[plane].data(),
            [](MutableBlock<P> b, int k) { return blockAt(b, 0, k / 2 * 4); },
            BlockAdder<C, P>(scaling[plane], bitDepth));
    }
}

}  // namespace vekvc::simd

#endif
