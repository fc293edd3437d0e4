// From the blocks of a macroblock to interleaved 4:2:2, whole or reduced (IEC 61834-2, SMPTE 314M and 370M: arrangement
// of the blocks).
#ifndef VEKVC_DV_CONVERT_PLAIN_H
#define VEKVC_DV_CONVERT_PLAIN_H

#include "core/arith.h"
#include "core/memory.h"

namespace vekvc::dv {

// A sample's place: block, row, column.
struct Place {
    int block, row, column;
};

// Each kind of macroblock says where luma sample (x, y) and chroma sample (j, y) of 4:2:2 come from; a Cb block lies
// kCb, a Cr block kCr blocks further on.
struct Macroblock411 {
    static constexpr int kWidth = 32, kHeight = 8, kCr = 4, kCb = 5;
    static constexpr Place luma(int x, int y) { return {x >> 3, y, x & 7}; }
    static constexpr Place chroma(int j, int y) { return {0, y, j >> 1}; }
};
// At the right edge of the picture the chroma block is folded: its left half belongs to the upper rows.
struct Macroblock411Edge {
    static constexpr int kWidth = 16, kHeight = 16, kCr = 4, kCb = 5;
    static constexpr Place luma(int x, int y) { return {(x >> 3) + 2 * (y >> 3), y & 7, x & 7}; }
    static constexpr Place chroma(int j, int y) { return {0, y & 7, (j >> 1) + (y < 8 ? 0 : 4)}; }
};
// Chroma lines belong to fields; each serves two lines of its own.
struct Macroblock420 {
    static constexpr int kWidth = 16, kHeight = 16, kCr = 4, kCb = 5;
    static constexpr Place luma(int x, int y) { return {(x >> 3) + 2 * (y >> 3), y & 7, x & 7}; }
    static constexpr Place chroma(int j, int y) { return {0, 2 * (y >> 2) + (y & 1), j}; }
};
struct Macroblock422 {
    static constexpr int kWidth = 16, kHeight = 8, kCr = 2, kCb = 3;
    static constexpr Place luma(int x, int y) { return {x >> 3, y, x & 7}; }
    static constexpr Place chroma(int j, int y) { return {0, y, j}; }
};
struct Macroblock100Frame {
    static constexpr int kWidth = 16, kHeight = 16, kCr = 4, kCb = 6;
    static constexpr Place luma(int x, int y) { return {(x >> 3) + 2 * (y >> 3), y & 7, x & 7}; }
    static constexpr Place chroma(int j, int y) { return {y >> 3, y & 7, j}; }
};
struct Macroblock100Field {
    static constexpr int kWidth = 16, kHeight = 16, kCr = 4, kCb = 6;
    static constexpr Place luma(int x, int y) { return {(x >> 3) + 2 * (y & 1), y >> 1, x & 7}; }
    static constexpr Place chroma(int j, int y) { return {y & 1, y >> 1, j}; }
};
struct Macroblock100Bottom {
    static constexpr int kWidth = 32, kHeight = 8, kCr = 4, kCb = 6;
    static constexpr Place luma(int x, int y) { return {x >> 3, y, x & 7}; }
    static constexpr Place chroma(int j, int y) { return {j >> 3, y, j & 7}; }
};

}  // namespace vekvc::dv

namespace vekvc::plain {

// The 8-bit sample at a place.
inline int dvSample(const Vek16s* pSrc, dv::Place p) {
    return clip255(load<Vek16s>(pSrc + 64 * p.block + 8 * p.row + p.column) + 128);
}

template <class Macroblock>
void convert(const Vek16s* pSrc, Vek8u* pDst, std::ptrdiff_t dstStep, int zoom) {
    using M = Macroblock;
    const int n = 1 << zoom;
    // The mean of a box of n x n samples of one component.
    const auto box = [&](int left, int top, const auto& sample) {
        int sum = 0;
        for (int y = top; y < top + n; ++y)
            for (int x = left; x < left + n; ++x) sum += sample(x, y);
        return static_cast<Vek8u>((sum + n * n / 2) >> (2 * zoom));
    };
    const auto luma = [&](int x, int y) { return dvSample(pSrc, M::luma(x, y)); };
    const auto cb = [&](int j, int y) { return dvSample(pSrc + 64 * M::kCb, M::chroma(j, y)); };
    const auto cr = [&](int j, int y) { return dvSample(pSrc + 64 * M::kCr, M::chroma(j, y)); };
    for (int y = 0; y < M::kHeight >> zoom; ++y)
        for (int j = 0; j < M::kWidth / 2 >> zoom; ++j) {
            Vek8u* to = pDst + dstStep * y + 4 * j;
            to[0] = box(j * n, y * n, cb);
            to[1] = box(2 * j * n, y * n, luma);
            to[2] = box(j * n, y * n, cr);
            to[3] = box((2 * j + 1) * n, y * n, luma);
        }
}

}  // namespace vekvc::plain

#endif
