// MPEG-2 quantization of one 8x8 block and its inverse (ISO 13818-2 7.4.2), coefficient by coefficient.
#ifndef VEKVC_MPEG2_QUANT_PLAIN_H
#define VEKVC_MPEG2_QUANT_PLAIN_H

#include "core/arith.h"
#include "core/memory.h"

namespace vekvc::plain {

// A product truncated toward zero and limited to -2047 .. 2047 (on purpose not to -2048). Limiting comes first, so that
// any product, infinite ones included, converts; what is not a number counts as negative.
inline Vek16s quantized(Vek32f product) {
    if (!(product > -2047.0f)) return -2047;
    return product < 2047.0f ? static_cast<Vek16s>(product) : Vek16s{2047};
}

// Quantizes coefficients `first` to 63 with reciprocal weights; returns how many of them are not zero.
inline Vek32s quantMatrix(Vek16s* pSrcDst, Vek32s QP, const Vek32f* pQuantMatrix, int first) {
    const Vek32f scale = 16.0f / static_cast<Vek32f>(QP);
    Vek32s count = 0;
    for (int i = first; i < 64; ++i) {
        const Vek32f scaled = static_cast<Vek32f>(load<Vek16s>(pSrcDst + i)) * scale;
        const Vek16s y = quantized(scaled * load<Vek32f>(pQuantMatrix + i));
        store<Vek16s>(pSrcDst + i, y);
        count += y != 0 ? 1 : 0;
    }
    return count;
}

// Quantizes all coefficients with one weight of 16, in integers. Below QP 2 the block stays as it is.
inline Vek32s quantFlat(Vek16s* pSrcDst, Vek32s QP) {
    const Vek32u factor = QP >= 2 ? (static_cast<Vek32u>(QP) / 2 + 65536) / static_cast<Vek32u>(QP) : 0;
    Vek32s count = 0;
    for (int i = 0; i < 64; ++i) {
        Vek32s x = load<Vek16s>(pSrcDst + i);
        if (QP >= 2) {
            const Vek32u size = x == -32768 ? 32767 : magnitude(x);
            const Vek32u q = size * factor >> 16;  // at most 2^15 * 2^15 before the shift
            const Vek32s y = static_cast<Vek32s>(q < 2047 ? q : 2047);
            x = x < 0 ? -y : y;
            store<Vek16s>(pSrcDst + i, static_cast<Vek16s>(x));
        }
        count += x != 0 ? 1 : 0;
    }
    return count;
}

// Mismatch control (7.4.4): flips the last bit of the last coefficient if the sum is even. The sum is formed in eight
// lanes that saturate at 16 bits; joining them does not.
inline void controlMismatchMpeg2(Vek16s* pSrcDst) {
    Vek32s sum = 0;
    for (int lane = 0; lane < 8; ++lane) {
        Vek16s lanes = 0;
        for (int row = 0; row < 8; ++row) lanes = saturate16(lanes + load<Vek16s>(pSrcDst + 8 * row + lane));
        sum += lanes;
    }
    if (sum % 2 == 0) store<Vek16s>(pSrcDst + 63, static_cast<Vek16s>(load<Vek16s>(pSrcDst + 63) ^ 1));
}

inline void quantInvIntra(Vek16s* pSrcDst, Vek32s QP, const Vek16s* pQuantMatrix) {
    for (int i = 1; i < 64; ++i) {
        const Vek32s x = load<Vek16s>(pSrcDst + i);
        const Vek16s p = wrap16(wrapMul(wrapMul(x, QP), load<Vek16s>(pQuantMatrix + i)));
        store<Vek16s>(pSrcDst + i, static_cast<Vek16s>(saturate16(p + (x < 0 ? 15 : 0)) >> 4));
    }
    controlMismatchMpeg2(pSrcDst);
}

inline void quantInv(Vek16s* pSrcDst, Vek32s QP, const Vek16s* pQuantMatrix) {
    for (int i = 0; i < 64; ++i) {
        const Vek32s x = load<Vek16s>(pSrcDst + i);
        const Vek16s m = wrap16(wrapMul(QP, load<Vek16s>(pQuantMatrix + i)));
        const Vek16s p = wrap16(wrapMul(x, m));
        const Vek32s half = x != 0 ? static_cast<Vek16u>(m) >> 1 : 0;
        const Vek16s withHalf = saturate16(p + (p < 0 ? -half : half));
        store<Vek16s>(pSrcDst + i, static_cast<Vek16s>(saturate16(withHalf + (p < 0 ? 15 : 0)) >> 4));
    }
    controlMismatchMpeg2(pSrcDst);
}

// The same with all weights 16.
inline void quantInvFlat(Vek16s* pSrcDst, Vek32s QP) {
    for (int i = 0; i < 64; ++i) {
        const Vek32s x = load<Vek16s>(pSrcDst + i);
        const Vek16s t = saturate16(2 * x + (x > 0 ? 1 : x < 0 ? -1 : 0));
        const Vek16s p = wrap16(wrapMul(t, QP));
        store<Vek16s>(pSrcDst + i, static_cast<Vek16s>((p + (x < 0 ? 1 : 0)) >> 1));
    }
    controlMismatchMpeg2(pSrcDst);
}

}  // namespace vekvc::plain

#endif
