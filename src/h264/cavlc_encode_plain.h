// The syntax elements of residual_block_cavlc() (H.264 7.3.5.3.2) found by one walk from the highest frequency down.
#ifndef VEKVC_H264_CAVLC_ENCODE_PLAIN_H
#define VEKVC_H264_CAVLC_ENCODE_PLAIN_H

#include "h264/cavlc_encode.h"

namespace vekvc::plain {

// Looks at scan indices last down to first; the raster position of scan index k is position(k).
template <class T, class Position>
void analyzeCavlc(const T* pSrc, int first, int last, Position position, const CavlcElements<T>& out) {
    int trailingOnes = 0;
    int signs = 0;
    int total = 0;
    int zeros = 0;  // since the last coefficient
    int totalZeros = 0;
    bool onesMayFollow = true;
    for (int k = last; k >= first; --k) {
        const T c = load<T>(pSrc + position(k));
        if (c == 0) {
            ++zeros;
            continue;
        }
        if (onesMayFollow && (c == 1 || c == -1)) {
            signs = signs << 1 | (c < 0 ? 1 : 0);
            onesMayFollow = ++trailingOnes < 3;
        } else {
            store<T>(out.pLevels + total - trailingOnes, c);
            onesMayFollow = false;
        }
        if (total > 0) {
            out.pRuns[total - 1] = static_cast<Vek8u>(zeros);
            totalZeros += zeros;
        }
        ++total;
        zeros = 0;
    }
    *out.pTrailingOnes = static_cast<Vek8u>(trailingOnes);
    *out.pTrailingOneSigns = static_cast<Vek8u>(signs);
    *out.pTotalCoeff = static_cast<Vek8u>(total);
    *out.pTotalZeros = static_cast<Vek8u>(totalZeros + zeros);
}

// A 4x4 block, placed by the caller's scan.
template <class T>
void analyzeCavlc4x4(const T* pSrc, int first, int last, const Vek32s* pScan, const CavlcElements<T>& out) {
    analyzeCavlc(
        pSrc, first, last, [pScan](int k) { return load<Vek32s>(pScan + k); }, out);
}

// A chroma DC block of one of the fixed layouts.
template <class T, class Layout>
void analyzeCavlcChromaDc(const T* pSrc, Layout layout, const CavlcElements<T>& out) {
    analyzeCavlc(
        pSrc, 0, Layout::kSize - 1, [layout](int k) { return layout.position(k); }, out);
}

}  // namespace vekvc::plain

#endif
