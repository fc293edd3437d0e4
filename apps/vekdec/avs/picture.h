// A decoded frame of AVS: its samples, and what prediction, the loop filter, overlays and concealment ask of its
// macroblocks.
#pragma once

#include <cstdint>
#include <vector>

#include "avs/headers.h"
#include "plane_set.h"

namespace vekdec::avs {

struct MotionVector {
    std::int16_t x = 0, y = 0;  // quarter samples
    bool operator==(const MotionVector&) const = default;
};

// What a block of 8x8 samples is predicted from in one direction.
struct Motion {
    static constexpr std::int32_t kNone = -1;         // another direction, or intra
    static constexpr std::int32_t kUnavailable = -2;  // for neighbours: outside the slice, or not yet decoded

    MotionVector mv;
    std::int32_t ref = kNone;  // number of the reference, from 0 on

    bool used() const { return ref >= 0; }
    bool operator==(const Motion&) const = default;
};

enum Direction : int { kForward = 0, kBackward = 1 };

enum class MbKind : std::uint8_t { Lost, Intra, Forward, Backward, Both, Direct, Skipped };

struct Macroblock {
    static constexpr std::int8_t kNoMode = -1;

    MbKind kind = MbKind::Lost;
    std::uint8_t qp = 0;
    std::int8_t intraMode[4] = {kNoMode, kNoMode, kNoMode, kNoMode};
    Motion motion[2][4];  // by direction, of the luma blocks in raster order

    bool isIntra() const { return kind == MbKind::Intra; }
};

struct Picture : vekapp::PictureMemory {
    explicit Picture(const vekapp::PictureFormat& format)
        : PictureMemory(format), mbs(static_cast<std::size_t>(format.width / 16 * (format.height / 16))) {}

    // By raster; of a frame of two fields the first field's, then the second field's.
    std::vector<Macroblock> mbs;
    PictureHeader header;
    int referenceDistance[kMostReferences] = {};  // of a frame: those that it was decoded with
    RowProgress progress;                         // of samples and macroblocks

    // Of the frame, or of its first (second) field, in units of fields, modulo 512.
    int time(bool second) const { return 2 * header.distance + (second ? 1 : 0); }
};

// A frame or field that is predicted from. Samples beyond the planes repeat those at the borders.
struct Reference : PlaneSet {
    int distance = 0;  // in time, from the current picture, 1 to 512
};

// What the macroblocks of a frame or field are decoded from and into. B pictures number their references 0 backward,
// 1 forward.
struct PictureContext {
    const PictureHeader* header = nullptr;
    PictureType type = PictureType::I;  // the second field of an I picture is a P field
    Syntax syntax = Syntax::Standard;
    vekapp::Plane plane[3];
    Macroblock* mbs = nullptr;
    int width = 0, height = 0;  // in macroblocks
    Reference reference[kMostReferences];
    int references = 0;                  // that the syntax knows; some may not be present
    const Picture* colocated = nullptr;  // of B pictures: what direct mode looks at
    // By row of macroblocks; no prediction or filter works across the upper edge of such a row.
    std::vector<std::uint8_t> sliceBegins;
};

}  // namespace vekdec::avs
