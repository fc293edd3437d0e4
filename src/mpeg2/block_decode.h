// What the two forms of the MPEG-1/MPEG-2 block decoders share: operands and inverse quantization.
#ifndef VEKVC_MPEG2_BLOCK_DECODE_H
#define VEKVC_MPEG2_BLOCK_DECODE_H

#include "core/arith.h"
#include "vlc/code_list.h"
#include "vlc/look_up.h"

namespace vekvc {

enum class Standard { mpeg1, mpeg2 };

struct BlockTarget {
    const Vek32s* pScanMatrix;
    Vek32s QP;
    const Vek16s* pQuantMatrix;
    Vek16s* pDstBlock;
    Vek32s* pDstSize;
};

// The DC of an intra block.
struct BlockDc {
    const Vek32s* pDCSizeTable;
    Vek16s* pDCPred;
    Vek32s shiftDCVal;  // MPEG-2
};

inline constexpr int kMaxDcSize = 32;  // what one read takes

// Stores the DC of an intra block and its prediction.
template <Standard standard>
inline void storeDc(const BlockDc& dc, Vek32s difference, Vek16s* pDstBlock) {
    const Vek16s pred = load<Vek16s>(dc.pDCPred);
    if constexpr (standard == Standard::mpeg1) {
        store<Vek16s>(pDstBlock, wrap16(wrapAdd(pred, wrapShl(difference, 3))));
        store<Vek16s>(dc.pDCPred, load<Vek16s>(pDstBlock));
    } else {
        store<Vek16s>(dc.pDCPred, wrap16(wrapAdd(pred, difference)));
        store<Vek16s>(pDstBlock, wrap16(wrapShl(load<Vek16s>(dc.pDCPred), dc.shiftDCVal & 31)));
    }
}

// Flips the last bit of the last coefficient if the sum is even (ISO 13818-2 7.4.4).
inline void controlMismatch(Vek32u sum, Vek16s* pDstBlock) {
    const Vek16s last = load<Vek16s>(pDstBlock + 63);
    store<Vek16s>(pDstBlock + 63, wrap16(last ^ static_cast<Vek32s>(~sum & 1)));
}

}  // namespace vekvc

#endif
