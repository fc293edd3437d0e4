// A decoded frame of VC-1: its samples, and what prediction, the loop filter, overlays and concealment ask of its
// macroblocks.
#pragma once

#include <cstdint>
#include <vector>

#include "frames/reference.h"
#include "plane_set.h"
#include "vc1/picture_header.h"

namespace vekdec::vc1 {

struct MotionVector {
    std::int16_t x = 0, y = 0;  // quarter samples
    bool operator==(const MotionVector&) const = default;
};

enum class MbKind : std::uint8_t { Lost, Intra, Inter, FourMv, Forward, Backward, Both, Direct, Skipped };

// Which sub-blocks an 8x8 block is transformed in.
enum class Transform : std::uint8_t { T8x8, T8x4, T4x8, T4x4 };

struct Macroblock {
    MbKind kind = MbKind::Lost;
    std::uint8_t quant = 0;       // MQUANT
    std::uint8_t intra = 0;       // bit k: block k; 0 to 3 luma, 4 Cb, 5 Cr
    std::uint8_t coded = 0;       // I pictures: bit k: luma block k has AC coefficients
    std::uint8_t otherField = 0;  // field pictures: bit k: vector k refers to the field of the other parity
    bool halfStep = false;        // MQUANT counts half a step more
    bool chromaOtherField = false;
    bool fieldTransform = false;
    bool overlap = false;           // OVERFLAGS
    bool uses[2] = {false, false};  // forward, backward
    std::uint8_t corners[6] = {};   // of each block: quarters with coded sub-blocks, bit 3 top left, 2 top right,
                                    // 1 bottom left, 0 bottom right
    Transform transform[6] = {};
    MotionVector mv[4];      // of the luma blocks; forward in B pictures
    MotionVector backward;   // B pictures
    MotionVector chroma;     // before it is rounded for fast chroma
    MotionVector colocated;  // of an anchor: what direct mode scales

    bool isIntra(int block) const { return (intra >> block & 1) != 0; }
};

struct Picture : vekapp::PictureMemory {
    explicit Picture(const vekapp::PictureFormat& format)
        : PictureMemory(format), mbs(static_cast<std::size_t>(format.width / 16 * (format.height / 16))) {}

    // By raster; of a frame of two fields the top field's from the beginning, the bottom field's from the middle on.
    std::vector<Macroblock> mbs;
    PictureType type = PictureType::I;  // of the frame or its first field
    bool fields = false, interlaced = false, topFieldFirst = true;
    bool rangeReduced = false;
    int rangeMapY = -1, rangeMapUv = -1;  // for output; -1: none
    RowProgress progress;                 // of samples and macroblocks
};

// How the samples of a reference change before they are used: intensity compensation and range reduction.
struct ReferenceMap {
    bool active = false;
    std::uint8_t luma[256], chroma[256];
};

// A frame or field that is predicted from. Samples beyond the planes repeat those at the borders.
struct Reference : PlaneSet {
    const ReferenceMap* map = nullptr;  // none: the samples as they are
};

// What the macroblocks of a frame or field are decoded from and into.
struct PictureContext {
    const Sequence* sequence = nullptr;
    const PictureHeader* header = nullptr;
    vekapp::Plane plane[3];  // whole macroblocks
    Macroblock* mbs = nullptr;
    int width = 0, height = 0;              // in macroblocks
    int codedWidth = 0, codedHeight = 0;    // in luma samples
    std::vector<std::uint8_t> sliceBegins;  // by row of macroblocks: no filter works across these rows' upper edges
    bool rounding = false;                  // RNDCTRL
    Reference forward, backward;            // of frames
    Reference field[2];                     // of fields, by parity
    const Macroblock* colocated = nullptr;  // of the later anchor; none: no motion

    const Macroblock& mb(int x, int y) const { return mbs[y * width + x]; }
};

}  // namespace vekdec::vc1
