// What the two forms of the quantizers share.
#ifndef VEKVC_MPEG4_QUANTIZE_STATE_H
#define VEKVC_MPEG4_QUANTIZE_STATE_H

#include "core/arith.h"
#include "core/memory.h"
#include "mpeg4/state.h"

namespace vekvc::mpeg4 {

// What every quantizer of MPEG-4 knows.
struct QuantizerState : Specification {
    Vek16u bitsPerPixel;
    Vek16u hasMatrix;  // 0: the H.263 method

    QuantizerState(Kind itsKind, Vek32s bits, bool matrix)
        : Specification(itsKind), bitsPerPixel(static_cast<Vek16u>(bits)), hasMatrix(matrix ? 1 : 0) {}

    Vek32s largestQp() const { return (1 << (bitsPerPixel - 3)) - 1; }
    // Coefficients and levels lie in -largest() - 1 .. largest().
    Vek32s largest() const { return (1 << (bitsPerPixel + 3)) - 1; }
};

struct InverseQuantizer : QuantizerState {
    Vek16s weight[64] = {};  // in raster order

    InverseQuantizer(Kind itsKind, const Vek8u* pQuantMatrix, Vek32s bits)
        : QuantizerState(itsKind, bits, pQuantMatrix != nullptr) {
        for (int i = 0; i < 64 && pQuantMatrix != nullptr; ++i) weight[i] = pQuantMatrix[i];
    }
};

// 1 / n to the nearest, whatever the caller's rounding mode.
struct FloatReciprocals {
    float of[256] = {};

    constexpr FloatReciprocals() {
        for (int n = 1; n < 256; ++n) of[n] = 1.0f / static_cast<float>(n);
    }
};
inline constexpr FloatReciprocals kFloatReciprocals;

struct ForwardQuantizer : QuantizerState {
    Vek16s weight[64] = {};
    float reciprocal[64] = {};  // of the weights

    ForwardQuantizer(Kind itsKind, const Vek8u* pQuantMatrix, Vek32s bits)
        : QuantizerState(itsKind, bits, pQuantMatrix != nullptr) {
        for (int i = 0; i < 64 && pQuantMatrix != nullptr; ++i) {
            weight[i] = pQuantMatrix[i];
            reciprocal[i] = kFloatReciprocals.of[pQuantMatrix[i]];
        }
    }
};

static_assert(fits<ForwardQuantizer>(kQuantizerSize) && fits<InverseQuantizer>(kInverseQuantizerSize));

// The DC's quantizer step (14496-2 table 7-1).
constexpr Vek32s dcScaler(Vek32s QP, bool chroma) {
    if (QP <= 4) return 8;
    if (chroma) return QP <= 24 ? (QP + 13) / 2 : QP - 6;
    return QP <= 8 ? 2 * QP : QP <= 24 ? QP + 8 : 2 * QP - 16;
}

// H.263 without and with annex T.
constexpr Vek32s largestLevelH263(bool modified) { return modified ? 1023 : 127; }

}  // namespace vekvc::mpeg4

#endif
