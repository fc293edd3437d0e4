// What the two forms of the segment decoders share: how the bits of a macroblock are divided among its blocks.
#ifndef VEKVC_DV_SEGMENT_H
#define VEKVC_DV_SEGMENT_H

#include "core/memory.h"
#include "vekvc/dv.h"

namespace vekvc::dv {

inline constexpr int kDifBytes = 80, kSegmentBytes = 400, kMacroblocks = 5;
inline constexpr int kAreaHead = 12;  // bits of the DC, the DCT mode and the class

enum class Kind { dv, dv422, dv100 };

template <Kind kind>
struct Layout {
    static constexpr int kBlocks = kind == Kind::dv100 ? 8 : 6;  // of a macroblock as it is coded
    static constexpr bool kAlways88 = kind == Kind::dv100;       // the mode bit means another thing
    static constexpr int areaBytes(int block) {
        return kind == Kind::dv100 ? (block < 6 ? 10 : 8) : (block < 4 ? 14 : 10);
    }
    static constexpr int areaStart(int block) {  // from the DIF block's first byte
        int start = 4;
        for (int b = 0; b < block; ++b) start += areaBytes(b);
        return start;
    }
    // The filler blocks of 50 Mb/s are parsed like any other and dropped.
    static constexpr bool dropped(int block) { return kind == Kind::dv422 && (block == 1 || block == 3); }
};

}  // namespace vekvc::dv

#endif
