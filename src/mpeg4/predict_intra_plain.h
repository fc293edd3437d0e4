// Prediction of the coefficients of intra blocks: ISO 14496-2 7.4.3 and H.263 annex I.3.
#ifndef VEKVC_MPEG4_PREDICT_INTRA_PLAIN_H
#define VEKVC_MPEG4_PREDICT_INTRA_PLAIN_H

#include "mpeg4/quantize_state.h"

namespace vekvc::plain {

// `dc` is the block's DC step; fromAbove predicts its first row, otherwise its first column.
inline void predictIntraMpeg4(Vek16s* block, const Vek16s* pPred, Vek32s predQP, Vek32s QP, Vek32s dc, bool fromAbove,
                              bool acPrediction) {
    const auto add = [&](int at, Vek32s prediction) {
        store(block + at, static_cast<Vek16s>(clip3(-2048, 2047, load<Vek16s>(block + at) + prediction)));
    };
    add(0, mpeg4::divideRound(load<Vek16s>(pPred), dc));
    if (!acPrediction) return;
    for (int i = 1; i < 8; ++i) add(fromAbove ? i : 8 * i, mpeg4::divideRound(load<Vek16s>(pPred + i) * predQP, QP));
}

// pLeft and pAbove may be null.
inline void predictIntraAic(Vek16s* block, const Vek16s* pLeft, const Vek16s* pAbove, Vek32s intraMode) {
    const bool left = pLeft != nullptr && intraMode != 1, above = pAbove != nullptr && intraMode != 2;
    Vek32s p = 1024;
    if (left && above)
        p = (load<Vek16s>(pLeft) + load<Vek16s>(pAbove)) / 2;
    else if (left || above)
        p = load<Vek16s>(left ? pLeft : pAbove);
    const Vek32s x = load<Vek16s>(block) + p;
    for (int i = 1; i < 64; ++i) {
        Vek32s c = load<Vek16s>(block + i);
        if (intraMode == 1 && above && i < 8) c += load<Vek16s>(pAbove + i);
        if (intraMode == 2 && left && i % 8 == 0) c += load<Vek16s>(pLeft + i / 8);
        store(block + i, static_cast<Vek16s>(clip3(-2048, 2047, c)));
    }
    store(block, static_cast<Vek16s>(clip3(0, 2047, x % 2 == 0 ? x + 1 : x)));
}

}  // namespace vekvc::plain

#endif
