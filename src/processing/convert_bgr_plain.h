// Rows of pixels to B, G, R and back. The definition.
#ifndef VEKVC_PROCESSING_CONVERT_BGR_PLAIN_H
#define VEKVC_PROCESSING_CONVERT_BGR_PLAIN_H

#include "core/arith.h"
#include "core/memory.h"
#include "processing/convert_matrices.h"
#include "processing/picture.h"

namespace vekvc::plain {

using processing::FromBgr;
using processing::halved;
using processing::ToBgr;

struct Ycc {
    int y, cb, cr;
};
struct Bgr {
    int b, g, r;
};
inline Bgr toBgr(Ycc p, const ToBgr& m) {
    const int t = m.y * (p.y - m.black) + 4096, u = p.cb - 128, v = p.cr - 128;
    return {clip255((t + m.cbToB * u) >> 13), clip255((t - m.cbToG * u - m.crToG * v) >> 13),
            clip255((t + m.crToR * v) >> 13)};
}

// ---- where a row's pixels come from; at(x, w): pixel x of w

// 4:2:0: chroma row a is the nearer one, b the next; chroma lies at the even columns, midway between rows.
struct Row420 {
    const Vek8u *y, *cbA, *cbB, *crA, *crB;

    static int chroma(const Vek8u* a, const Vek8u* b, std::ptrdiff_t x, std::ptrdiff_t w) {
        const std::ptrdiff_t i = x >> 1, n = std::min(i + 1, halved(w) - 1);
        return (x & 1) == 0 ? (3 * a[i] + b[i] + 2) >> 2 : (3 * (a[i] + a[n]) + b[i] + b[n] + 4) >> 3;
    }
    Ycc at(std::ptrdiff_t x, std::ptrdiff_t w) const { return {y[x], chroma(cbA, cbB, x, w), chroma(crA, crB, x, w)}; }
};

// Cb Y Cr Y: chroma lies at the even columns.
struct RowCbYCr {
    const Vek8u* from;

    Ycc at(std::ptrdiff_t x, std::ptrdiff_t w) const {
        const Vek8u *here = from + 4 * (x >> 1), *next = from + 4 * std::min((x >> 1) + 1, halved(w) - 1);
        if ((x & 1) == 0) return {here[1], here[0], here[2]};
        return {here[3], (here[0] + next[0] + 1) >> 1, (here[2] + next[2] + 1) >> 1};
    }
};

// Planes of which each chroma sample serves two columns.
struct RowRepeated {
    const Vek8u *y, *cb, *cr;

    Ycc at(std::ptrdiff_t x, std::ptrdiff_t) const { return {y[x], cb[x >> 1], cr[x >> 1]}; }
};

// ---- where they go

struct Bgr24 {
    void put(Vek8u* to, std::ptrdiff_t x, Bgr c) const {
        to[3 * x] = static_cast<Vek8u>(c.b);
        to[3 * x + 1] = static_cast<Vek8u>(c.g);
        to[3 * x + 2] = static_cast<Vek8u>(c.r);
    }
};
struct Bgr32 {
    void put(Vek8u* to, std::ptrdiff_t x, Bgr c) const {
        to[4 * x] = static_cast<Vek8u>(c.b);
        to[4 * x + 1] = static_cast<Vek8u>(c.g);
        to[4 * x + 2] = static_cast<Vek8u>(c.r);
        to[4 * x + 3] = 255;
    }
};
// 16 bits, after thresholds 0 to 15 (of 16) for four columns in turn have been added in units of what is cut off.
struct Bgr565 {
    Vek8u thresholds[4];

    void put(Vek8u* to, std::ptrdiff_t x, Bgr c) const {
        const int t = thresholds[x & 3];
        const int b = std::min(255, c.b + (t >> 1)) >> 3;
        const int g = std::min(255, c.g + (t >> 2)) >> 2;
        const int r = std::min(255, c.r + (t >> 1)) >> 3;
        store(to + 2 * x, static_cast<Vek16u>(b | g << 5 | r << 11));
    }
};

// ---- rows

// Pixels first to w - 1 of a row.
template <class Row, class Pixels>
void toBgrRow(const Row& from, const Pixels& pixels, Vek8u* to, std::ptrdiff_t first, std::ptrdiff_t w,
              const ToBgr& matrix) {
    for (std::ptrdiff_t x = first; x < w; ++x) pixels.put(to, x, toBgr(from.at(x, w), matrix));
}

// Pixels first (an even one) to w - 1 of B G R A to Cb Y Cr Y. Chroma is filtered by 1 2 1.
inline void fromBgrRow(const Vek8u* from, Vek8u* to, std::ptrdiff_t first, std::ptrdiff_t w, const FromBgr& m) {
    const auto luma = [&](std::ptrdiff_t x) {
        const Vek8u* p = from + 4 * x;
        return clip255(((m.y[0] * p[2] + m.y[1] * p[1] + m.y[2] * p[0] + 8192) >> 14) + m.black);
    };
    for (std::ptrdiff_t x = first; x < w; x += 2) {
        const Vek8u* left = from + 4 * std::max<std::ptrdiff_t>(0, x - 1);
        const Vek8u *here = from + 4 * x, *right = from + 4 * std::min(x + 1, w - 1);
        const auto four = [&](int colour) { return left[colour] + 2 * here[colour] + right[colour]; };
        const auto chroma = [&](const int(&weights)[3]) {
            const int sum = weights[0] * four(2) + weights[1] * four(1) + weights[2] * four(0);
            return clip255(((sum + 32768) >> 16) + 128);
        };
        to[2 * x] = chroma(m.cb);
        to[2 * x + 1] = luma(x);
        to[2 * x + 2] = chroma(m.cr);
        to[2 * x + 3] = luma(std::min(x + 1, w - 1));
    }
}

}  // namespace vekvc::plain

#endif
