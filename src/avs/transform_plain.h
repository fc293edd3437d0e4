// Dequantization, the inverse 8x8 transform and the reconstruction of a block as GB/T 20090.2 clause 9 defines them.
#ifndef VEKVC_AVS_TRANSFORM_PLAIN_H
#define VEKVC_AVS_TRANSFORM_PLAIN_H

#include "avs/transform_tables.h"
#include "core/arith.h"
#include "core/memory.h"

namespace vekvc::plain {

// The product is below 2^31 in magnitude by more than the rounding: 32768 * 65535 + 2^13 < 2^31.
inline void quantInvAvs(const Vek16s* levels, Vek16s* coeffs, int qp) {
    const int shift = avs::kShift[qp];
    for (int i = 0; i < 64; ++i) {
        const Vek32s scaled = load<Vek16s>(levels + i) * static_cast<Vek32s>(avs::kMultiplier[qp]);
        store<Vek16s>(coeffs + i, saturate16((scaled + (1 << (shift - 1))) >> shift));
    }
}

// Rows, then columns. A sum is at most 57 * 2^15 in magnitude.
inline void transformInvAvs(Vek16s* block) {
    Vek16s h[8][8];
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) {
            Vek32s sum = 0;
            for (int k = 0; k < 8; ++k) sum += load<Vek16s>(block + 8 * y + k) * avs::kBasis[k][x];
            h[y][x] = saturate16((sum + 4) >> 3);
        }
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) {
            Vek32s sum = 0;
            for (int k = 0; k < 8; ++k) sum += h[k][x] * avs::kBasis[k][y];
            store<Vek16s>(block + 8 * y + x, saturate16((sum + 64) >> 7));
        }
}

// Adds the residual of 64 levels to the prediction.
inline void reconstructAvs(const Vek16s* levels, Vek8u* pSrcDst, Vek32s step, int qp) {
    Vek16s block[64];
    quantInvAvs(levels, block, qp);
    transformInvAvs(block);
    const MutableBlock<Vek8u> samples(pSrcDst, step);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) samples.put(x, y, clip255(samples(x, y) + block[8 * y + x]));
}

}  // namespace vekvc::plain

#endif
