// Fractional sample interpolation as H.264 8.4.2.2 defines it, sample by sample.
#ifndef VEKVC_H264_INTERPOLATE_PLAIN_H
#define VEKVC_H264_INTERPOLATE_PLAIN_H

#include "core/arith.h"
#include "core/memory.h"

namespace vekvc::plain {

// The sample values around integer positions, named as in Figure 8-4; (x, y) is the position of G in the reference.
template <class T>
class LumaSamples {
  public:
    LumaSamples(const T* pSrc, Vek32s srcStep, int maxSample) : G(pSrc, srcStep), max_(maxSample) {}

    const Block<T> G;

    int b(int x, int y) const { return clip((b1(x, y) + 16) >> 5); }
    int h(int x, int y) const {
        return clip((sixTap(G(x, y - 2), G(x, y - 1), G(x, y), G(x, y + 1), G(x, y + 2), G(x, y + 3)) + 16) >> 5);
    }
    int j(int x, int y) const {
        return clip((sixTap(b1(x, y - 2), b1(x, y - 1), b1(x, y), b1(x, y + 1), b1(x, y + 2), b1(x, y + 3)) + 512) >>
                    10);
    }
    int m(int x, int y) const { return h(x + 1, y); }
    int s(int x, int y) const { return b(x, y + 1); }

  private:
    // At most 52^2 * 2^14 in magnitude after two applications: 32 bits hold it.
    static int sixTap(int E, int F, int G0, int H, int I, int J) { return E - 5 * F + 20 * G0 + 20 * H - 5 * I + J; }
    int b1(int x, int y) const {
        return sixTap(G(x - 2, y), G(x - 1, y), G(x, y), G(x + 1, y), G(x + 2, y), G(x + 3, y));
    }
    int clip(int value) const { return clip3(0, max_, value); }

    int max_;
};

// H.264 8.4.2.2.1: the prediction at the quarter-sample position (dx, dy), Table 8-12.
template <class T>
int lumaSample(const LumaSamples<T>& at, int x, int y, int dx, int dy) {
    const auto average = [](int a, int b) { return (a + b + 1) >> 1; };
    switch (4 * dy + dx) {
        case 0:
            return at.G(x, y);
        case 1:
            return average(at.G(x, y), at.b(x, y));  // a
        case 2:
            return at.b(x, y);
        case 3:
            return average(at.b(x, y), at.G(x + 1, y));  // c
        case 4:
            return average(at.G(x, y), at.h(x, y));  // d
        case 5:
            return average(at.b(x, y), at.h(x, y));  // e
        case 6:
            return average(at.b(x, y), at.j(x, y));  // f
        case 7:
            return average(at.b(x, y), at.m(x, y));  // g
        case 8:
            return at.h(x, y);
        case 9:
            return average(at.h(x, y), at.j(x, y));  // i
        case 10:
            return at.j(x, y);
        case 11:
            return average(at.j(x, y), at.m(x, y));  // k
        case 12:
            return average(at.h(x, y), at.G(x, y + 1));  // n
        case 13:
            return average(at.h(x, y), at.s(x, y));  // p
        case 14:
            return average(at.j(x, y), at.s(x, y));  // q
        default:
            return average(at.s(x, y), at.m(x, y));  // r
    }
}

template <class T>
void interpolateLuma(const T* pSrc, Vek32s srcStep, T* pDst, Vek32s dstStep, int dx, int dy, VekiSize size,
                     int maxSample) {
    const LumaSamples<T> at(pSrc, srcStep, maxSample);
    const MutableBlock<T> out(pDst, dstStep);
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) out.put(x, y, static_cast<T>(lumaSample(at, x, y, dx, dy)));
}

// H.264 8.4.2.2.2, for one component of a plane with `channels` interleaved ones. A neighbour whose weight is 0 is not
// read.
template <class T>
void interpolateChromaChannel(const T* pSrc, Vek32s srcStep, int channels, T* pDst, Vek32s dstStep, int dx, int dy,
                              VekiSize size) {
    const Block<T> in(pSrc, srcStep);
    const MutableBlock<T> out(pDst, dstStep);
    const int right = dx != 0 ? channels : 0;
    const int below = dy != 0 ? 1 : 0;
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            const int A = in(x * channels, y), B = in(x * channels + right, y);
            const int C = in(x * channels, y + below), D = in(x * channels + right, y + below);
            out.put(x, y,
                    static_cast<T>(
                        ((8 - dx) * (8 - dy) * A + dx * (8 - dy) * B + (8 - dx) * dy * C + dx * dy * D + 32) >> 6));
        }
}

template <class T>
void interpolateChroma(const T* pSrc, Vek32s srcStep, T* pDst, Vek32s dstStep, int dx, int dy, VekiSize size) {
    interpolateChromaChannel(pSrc, srcStep, 1, pDst, dstStep, dx, dy, size);
}

// Both components of an interleaved plane.
inline void interpolateChromaPairs(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDstCb, Vek8u* pDstCr, Vek32s dstStep,
                                   int dx, int dy, VekiSize size) {
    interpolateChromaChannel(pSrc, srcStep, 2, pDstCb, dstStep, dx, dy, size);
    interpolateChromaChannel(pSrc + 1, srcStep, 2, pDstCr, dstStep, dx, dy, size);
}

}  // namespace vekvc::plain

#endif
