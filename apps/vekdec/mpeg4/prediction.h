// Motion compensation of macroblocks (ISO 14496-2 7.6, 7.7, 7.8), straight into the picture.
#pragma once

#include "h263/block_prediction.h"
#include "mpeg4/picture.h"
#include "plane_set.h"

namespace vekdec::mpeg4 {

// What the macroblocks of a VOP are decoded from and into.
struct VopContext {
    const Layer* layer = nullptr;
    const Vop* vop = nullptr;
    Picture* picture = nullptr;
    PlaneSet reference[2];                  // forward, backward
    const Macroblock* coLocated = nullptr;  // B-VOPs: those of the backward reference
    const Vek8u* warp = nullptr;            // the global motion as the library keeps it
    // B-VOPs: distances of this VOP and of the backward reference from the forward one, in ticks and in fields.
    std::int64_t trb = 0, trd = 0, trbFields = 0, trdFields = 0;
};

enum class MotionType { Whole, FourBlocks, Fields, Global };

// How a macroblock is predicted, by direction: forward, backward.
struct Motion {
    MotionType type = MotionType::Whole;
    bool uses[2] = {false, false};
    MotionVector mv[2][4];            // Whole: the first; Fields: of the top and the bottom field
    std::uint8_t fieldOf[2][2] = {};  // Fields: parity of the reference field of the top and the bottom field
};

void predictMacroblock(const VopContext& context, int mbX, int mbY, const Motion& motion);

// The motion of direct mode (7.6.9.5) from the co-located macroblock and the difference that the stream sends. Throws
// BadSyntax where the VOPs' times forbid it.
Motion directMotion(const VopContext& context, const Macroblock& coLocated, MotionVector difference);

// The distance of two times in fields, where a frame lasts `frameTicks` (7.7.2.2).
std::int64_t fieldsBetween(std::int64_t later, std::int64_t earlier, std::int64_t frameTicks);

}  // namespace vekdec::mpeg4
