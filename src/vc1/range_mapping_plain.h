// VC-1 range mapping (SMPTE 421M 8.1.1.4).
#ifndef VEKVC_VC1_RANGE_MAPPING_PLAIN_H
#define VEKVC_VC1_RANGE_MAPPING_PLAIN_H

#include "core/arith.h"
#include "core/memory.h"

namespace vekvc::plain {

inline Vek8u mapRange(Vek8u x, Vek32s rangeMapValue) {
    return clip255((((x - 128) * (rangeMapValue + 9) + 4) >> 3) + 128);
}

inline void mapRange(Block<Vek8u> src, MutableBlock<Vek8u> dst, VekiSize roiSize, Vek32s rangeMapValue) {
    for (int y = 0; y < roiSize.height; ++y)
        for (int x = 0; x < roiSize.width; ++x) dst.put(x, y, mapRange(src(x, y), rangeMapValue));
}

}  // namespace vekvc::plain

#endif
