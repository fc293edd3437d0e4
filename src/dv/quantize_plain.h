// Inverse quantization and weighting of DV (IEC 61834-2, SMPTE 314M) and DV100 (SMPTE 370M).
#ifndef VEKVC_DV_QUANTIZE_PLAIN_H
#define VEKVC_DV_QUANTIZE_PLAIN_H

#include "core/arith.h"
#include "core/memory.h"
#include "dv/tables.h"
#include "vekvc/dv.h"

namespace vekvc::plain {

inline void quantInv(Vek16s* block, const VekDVBlockInfo& info) {
    const int mode = info.dctMode & 1, classNo = info.classNo & 3;
    const std::uint8_t* shifts = dv::kShift[(info.qNo & 15) + dv::kClassOffset[classNo]];
    store<Vek16s>(block, wrap16(4 * load<Vek16s>(block)));
    for (int i = 1; i < 64; ++i) {
        const int p = dv::kScan[mode][i];
        const int shift = shifts[dv::areaOf(i)] + (classNo == 3);
        const Vek16s scaled = wrap16(wrapShl(load<Vek16s>(block + p), shift + 2));
        store<Vek16s>(block + p, static_cast<Vek16s>((scaled * dv::kInverseWeight[mode][p] + 16384) >> 15));
    }
}

inline void quantInv100(Vek16s* block, const VekDVBlockInfo& info, int weightSet) {
    const int step = dv::kStep100[info.qNo & 15];
    store<Vek16s>(block, wrap16(4 * load<Vek16s>(block)));
    for (int p = 1; p < 64; ++p) {
        const Vek32s scaled = wrapShl(load<Vek16s>(block + p), info.classNo & 3);
        const Vek32s product = wrapMul(wrapMul(scaled, step), dv::kWeight100[weightSet][p]);
        store<Vek16s>(block + p, saturate16(wrapAdd(product, 16) >> 5));
    }
}

}  // namespace vekvc::plain

#endif
