// A decoded frame (or complementary field pair): its samples, and what later pictures and the deblocking filter ask of
// its macroblocks.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "frames/plane.h"
#include "h264/parameter_sets.h"
#include "row_progress.h"

namespace vekdec::h264 {

struct alignas(4) MotionVector {
    std::int16_t x = 0, y = 0;  // quarter luma samples
    bool operator==(const MotionVector&) const = default;
};

enum class MbType : std::uint8_t { Missing, I4x4, I8x8, I16x16, IPcm, Inter };

// How the motion of an inter macroblock divides it: what may differ across its inner edges. Smaller: below 8x8.
enum class Partitioning : std::uint8_t { Whole, Rows16x8, Columns8x16, Quadrants, Smaller };

// One macroblock as the steps after parsing need it. Blocks 4x4 are in raster order here (x + 4 * y in units of 4
// samples), quadrants 8x8 likewise (x + 2 * y).
struct Macroblock {
    MbType type = MbType::Missing;
    bool field = false;  // field macroblock of an MBAFF frame, or any macroblock of a field picture
    bool skipped = false;
    bool transform8x8 = false;
    Partitioning partitioning = Partitioning::Whole;
    bool bypass = false;          // TransformBypassModeFlag
    std::uint16_t slice = 0;      // number of its slice in the picture; index into Picture::slices of it
    std::int8_t qp = 0;           // QPY
    std::int8_t qpc[2] = {0, 0};  // QPc of Cb and Cr, for deblocking
    std::uint8_t predMode16x16 = 0, predModeChroma = 0;
    std::uint8_t codedBlockPattern = 0;   // bits 0 to 3 luma quadrants, bits 4 and 5 chroma
    std::int8_t predMode4x4[16] = {};     // Intra4x4PredMode or Intra8x8PredMode of the quadrant; raster order
    std::uint8_t totalCoeff[16] = {};     // luma, raster order (8x8 transforms: as nC sees them, 9.2.1)
    std::uint8_t totalCoeffC[2][8] = {};  // chroma AC, raster order (two wide)
    std::uint16_t nonZero = 0;            // 4x4 luma blocks (8x8: all four of the quadrant) with coefficients, for bS 2
    std::int8_t refIdx[2][4] = {};        // per quadrant; -1: not used
    std::int8_t refPicId[2][4] = {};      // which picture that is: 4 * Picture::id + Structure; -1: none
    MotionVector mv[2][16];               // raster order; of list 1 only in B slices
    bool intra() const { return type >= MbType::I4x4 && type <= MbType::IPcm; }
};

// Asks the caches for a macroblock.
inline void prefetchMacroblock(const Macroblock& mb) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(&mb);
    for (std::size_t at = 0; at < sizeof mb; at += 64) __builtin_prefetch(bytes + at);
}

// What the deblocking filter must know of each slice after it is gone.
struct SliceParameters {
    int disableDeblockingIdc = 0, alphaC0Offset = 0, betaOffset = 0;
    std::array<int, 2> chromaQpIndexOffset{};
    bool isB = false;
};

enum Structure : int { kTopField = 1, kBottomField = 2, kFrame = 3 };

struct Picture {
    vekapp::Plane plane[3];  // without chroma in monochrome
    // Shared with frames of gaps in frame_num that stand for this one.
    std::shared_ptr<vekapp::PictureMemory> memory;
    std::shared_ptr<RowProgress> progress;
    int bytesPerSample = 1;
    int widthInMbs = 0, heightInMbs = 0;  // of the frame
    std::vector<Macroblock> mbs;  // by macroblock address of the frame as MBAFF counts if mbaff, else by raster; field
        // pictures: top field's macroblocks first, then the bottom field's; none if nonExisting
    std::vector<SliceParameters> slices[2];  // [1]: of a bottom field
    bool codedAsFields = false, mbaff = false;

    int poc[2] = {0, 0};  // TopFieldOrderCnt, BottomFieldOrderCnt
    int frameNum = 0, frameNumWrap = 0, longTermFrameIdx = 0;
    int decoded = 0;                  // Structure bits that were decoded
    int shortTerm = 0, longTerm = 0;  // Structure bits marked "used for reference"
    bool nonExisting = false;         // filled in for a gap in frame_num; its planes are those of the frame before
    bool idr = false;
    bool neededForOutput = false;
    int id = 0;  // unique among the pictures of the buffer, 0 to 31

    int pocOf(int structure) const {  // PicOrderCnt(), 8.2.1
        return structure == kTopField ? poc[0] : structure == kBottomField ? poc[1] : poc[0] < poc[1] ? poc[0] : poc[1];
    }
};

}  // namespace vekdec::h264
