// Rows of one sample layout from rows of another: interleaving, separating, and chroma of 4:2:0 and 4:2:2 from each
// other. The definition.
#ifndef VEKVC_PROCESSING_CONVERT_LAYOUT_PLAIN_H
#define VEKVC_PROCESSING_CONVERT_LAYOUT_PLAIN_H

#include "processing/picture.h"

namespace vekvc::plain {

using processing::halved;

// The luma of w pixels of Cb Y Cr Y.
inline void separateLuma(const Vek8u* from, Vek8u* y, std::ptrdiff_t w) {
    for (std::ptrdiff_t x = 0; x < w; ++x) y[x] = from[2 * x + 1];
}

// w pixels of Cb Y Cr Y taken apart.
inline void separateRow(const Vek8u* from, Vek8u* y, Vek8u* cb, Vek8u* cr, std::ptrdiff_t w) {
    separateLuma(from, y, w);
    for (std::ptrdiff_t i = 0; i < halved(w); ++i) {
        cb[i] = from[4 * i];
        cr[i] = from[4 * i + 2];
    }
}

// Two rows of Cb Y Cr Y to their luma and one row of 4:2:0 chroma, in which the first counts `quarters`, the second
// 4 - quarters.
inline void separateRows(const Vek8u* const (&from)[2], Vek8u* const (&y)[2], Vek8u* cb, Vek8u* cr, int quarters,
                         std::ptrdiff_t w) {
    separateLuma(from[0], y[0], w);
    separateLuma(from[1], y[1], w);
    const auto mixed = [&](std::ptrdiff_t at) {
        return static_cast<Vek8u>((quarters * from[0][at] + (4 - quarters) * from[1][at] + 2) >> 2);
    };
    for (std::ptrdiff_t i = 0; i < halved(w); ++i) {
        cb[i] = mixed(4 * i);
        cr[i] = mixed(4 * i + 2);
    }
}

// One row of chroma of each kind; for a row of 4:2:2 from 4:2:0 two, of which the first counts `eighths`, the second
// 8 - eighths.
struct ChromaRow {
    const Vek8u *cb, *cr;

    Vek8u cbAt(std::ptrdiff_t i) const { return cb[i]; }
    Vek8u crAt(std::ptrdiff_t i) const { return cr[i]; }
};
struct MixedChromaRows {
    ChromaRow a, b;
    int eighths;

    Vek8u mixed(Vek8u s, Vek8u t) const { return static_cast<Vek8u>((eighths * s + (8 - eighths) * t + 4) >> 3); }
    Vek8u cbAt(std::ptrdiff_t i) const { return mixed(a.cb[i], b.cb[i]); }
    Vek8u crAt(std::ptrdiff_t i) const { return mixed(a.cr[i], b.cr[i]); }
};

// Pixels first to w - 1 of Cb Y Cr Y; `first` is even. The last group of an odd row has the last pixel's luma twice.
template <class Chroma>
void interleaveRow(const Vek8u* y, const Chroma& chroma, Vek8u* to, std::ptrdiff_t first, std::ptrdiff_t w) {
    for (std::ptrdiff_t i = first / 2; i < halved(w); ++i) {
        to[4 * i] = chroma.cbAt(i);
        to[4 * i + 1] = y[2 * i];
        to[4 * i + 2] = chroma.crAt(i);
        to[4 * i + 3] = y[std::min(2 * i + 1, w - 1)];
    }
}

// Pairs of chroma samples, n of each.
inline void interleaveChroma(const Vek8u* cb, const Vek8u* cr, Vek8u* to, std::ptrdiff_t n) {
    for (std::ptrdiff_t i = 0; i < n; ++i) {
        to[2 * i] = cb[i];
        to[2 * i + 1] = cr[i];
    }
}
inline void separateChroma(const Vek8u* from, Vek8u* cb, Vek8u* cr, std::ptrdiff_t n) {
    for (std::ptrdiff_t i = 0; i < n; ++i) {
        cb[i] = from[2 * i];
        cr[i] = from[2 * i + 1];
    }
}

}  // namespace vekvc::plain

#endif
