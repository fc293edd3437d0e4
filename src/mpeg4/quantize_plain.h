// Quantization and inverse quantization of ISO 14496-2 (7.4.4), H.263 (6.2.1, annexes I and T) and H.261 (4.2.4).
#ifndef VEKVC_MPEG4_QUANTIZE_PLAIN_H
#define VEKVC_MPEG4_QUANTIZE_PLAIN_H

#include "mpeg4/quantize_state.h"

namespace vekvc::plain {

// ---- inverse

constexpr Vek32s signOf(Vek32s x) { return x > 0 ? 1 : x < 0 ? -1 : 0; }

// One coefficient by the method of H.263 (14496-2 7.4.4.2).
constexpr Vek32s dequantizeH263(Vek32s level, Vek32s QP) {
    const auto size = static_cast<Vek32s>(magnitude(level));
    return signOf(level) * (QP * (2 * size + 1) - (QP % 2 == 0 ? 1 : 0));
}

// One coefficient by the MPEG method (7.4.4.1); the products keep 32 bits.
template <bool intra>
constexpr Vek32s dequantizeMpeg(Vek32s level, Vek32s weight, Vek32s QP) {
    return wrapMul(wrapMul(2 * level + (intra ? 0 : signOf(level)), weight), QP) / 16;
}

// Mismatch control: the sum of all coefficients is made odd (7.4.4.5).
inline void controlMismatchMpeg4(Vek16s* block) {
    Vek32s sum = 0;
    for (int i = 0; i < 64; ++i) sum += load<Vek16s>(block + i);
    const Vek32s last = load<Vek16s>(block + 63);
    if (sum % 2 == 0) store(block + 63, static_cast<Vek16s>(last % 2 != 0 ? last - 1 : last + 1));
}

// Blocks of MPEG-4. `dc` multiplies the level of an intra block's DC.
template <bool intra>
void quantInvMpeg4(Vek16s* block, const mpeg4::InverseQuantizer& q, Vek32s QP, Vek32s dc) {
    for (int i = 0; i < 64; ++i) {
        const Vek32s level = load<Vek16s>(block + i);
        const Vek32s c = intra && i == 0    ? dc * level
                         : q.hasMatrix != 0 ? dequantizeMpeg<intra>(level, q.weight[i], QP)
                                            : dequantizeH263(level, QP);
        store(block + i, static_cast<Vek16s>(clip3(-q.largest() - 1, q.largest(), c)));
    }
    if (q.hasMatrix != 0) controlMismatchMpeg4(block);
}

// Blocks of H.263 and H.261.
template <bool intra>
void quantInvH263(Vek16s* block, Vek32s QP) {
    for (int i = 0; i < 64; ++i) {
        const Vek32s level = load<Vek16s>(block + i);
        const Vek32s c = intra && i == 0 ? 8 * level : dequantizeH263(level, QP);
        store(block + i, static_cast<Vek16s>(clip3(-2048, 2047, c)));
    }
}

// Intra blocks of H.263 with annex I; the prediction that follows limits them further.
inline void quantInvAdvancedIntra(Vek16s* block, Vek32s QP) {
    for (int i = 0; i < 64; ++i) store(block + i, saturate16(2 * QP * load<Vek16s>(block + i)));
}

// ---- forward: not a matter of the standards

// |F| as a level by the method of H.263. In inter blocks half a QP more is lost.
template <bool intra>
constexpr Vek32s quantizeH263(Vek32s a, Vek32s QP, Vek32s largest) {
    const Vek32s y = (intra ? a : a > QP / 2 ? a - QP / 2 : 0) / (2 * QP);
    return y < largest ? y : largest;
}

// The same by the MPEG method.
template <bool intra>
constexpr Vek32s quantizeMpeg(Vek32s a, Vek32s weight, Vek32s QP, Vek32s largest) {
    const Vek32s t = (16 * a + weight / 2) / weight;
    const Vek32s y = (t + (intra ? (3 * QP + 2) / 4 : 0)) / (2 * QP);
    return y < largest ? y : largest;
}

// Quantizes all elements from `first` on; the number of levels other than 0 is the result.
template <class Quantize>
Vek32s quantizeFrom(int first, Vek16s* block, Quantize&& quantize) {
    Vek32s count = 0;
    for (int i = first; i < 64; ++i) {
        const Vek32s f = load<Vek16s>(block + i);
        const Vek32s y = quantize(i, static_cast<Vek32s>(magnitude(f)));
        store(block + i, static_cast<Vek16s>(f < 0 ? -y : y));
        count += y != 0 ? 1 : 0;
    }
    return count;
}

// Blocks of MPEG-4. `dc` is the step of an intra block's DC.
template <bool intra>
Vek32s quantMpeg4(Vek16s* block, const mpeg4::ForwardQuantizer& q, Vek32s QP, Vek32s dc) {
    if (intra) {
        const Vek32s level = mpeg4::divideRound(load<Vek16s>(block), dc);
        store(block, static_cast<Vek16s>(clip3(-q.largest() - 1, q.largest(), level)));
    }
    return quantizeFrom(intra ? 1 : 0, block, [&](int i, Vek32s a) {
        return q.hasMatrix != 0 ? quantizeMpeg<intra>(a, q.weight[i], QP, q.largest())
                                : quantizeH263<intra>(a, QP, q.largest());
    });
}

// Blocks of H.263 and H.261.
template <bool intra>
Vek32s quantH263(Vek16s* block, Vek32s QP, Vek32s largest) {
    if (intra) store(block, static_cast<Vek16s>(clip3(1, 254, mpeg4::divideRound(load<Vek16s>(block), 8))));
    return quantizeFrom(intra ? 1 : 0, block, [&](int, Vek32s a) { return quantizeH263<intra>(a, QP, largest); });
}

// Intra blocks of H.263 with annex I.
inline Vek32s quantAdvancedIntra(Vek16s* block, Vek32s QP, Vek32s largest) {
    return quantizeFrom(
        0, block, [&](int i, Vek32s a) { return i == 0 ? (a + QP) / (2 * QP) : quantizeH263<true>(a, QP, largest); });
}

}  // namespace vekvc::plain

#endif
