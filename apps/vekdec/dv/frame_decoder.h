// One frame from its DIF blocks to samples: what a thread does, while others decode those before and behind.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "dv/system.h"
#include "picture_tasks.h"
#include "row_progress.h"
#include "vekvc.h"

namespace vekdec::dv {

struct Picture {
    Picture(const System& system, bool packed, int zoom);

    vekapp::PictureMemory planar;
    std::vector<std::uint8_t> interleaved;  // bytes Cb Y Cr Y in the place of planes, where they are asked for
    std::vector<Block> blocks;              // luma blocks
    RowProgress progress;
};

struct FrameTask : PictureTask {
    std::span<const std::uint8_t> bytes;
    std::vector<std::uint8_t> copy;  // that they are of, where the packet is gone before they are decoded
    const System* system = nullptr;
    std::shared_ptr<const std::vector<MacroblockPlace>> places;
    bool secondOfPair = false;  // 720 lines
    bool packed = false;
    int zoom = 0;  // as a shift
    std::shared_ptr<Picture> picture;
    std::shared_ptr<Picture> before;  // where this one is damaged it shows that; may be the same memory; null: none

    // Found in decoding.
    long segments = 0;
    long modes[2] = {}, ends[5] = {};
};

// Holds what outlives a frame.
class FrameDecoder {
  public:
    FrameDecoder();  // throws std::bad_alloc
    void operator()(FrameTask& task);

  private:
    int decodeSegment(const std::uint8_t* segment, const MacroblockPlace (&places)[kMacroblocks]);
    void storePlanar(Vek16s* coeffs, const VekDVBlockInfo* info, const MacroblockPlace& at);
    void storeBlock(Vek16s* coeffs, bool is248, std::uint8_t* to, std::ptrdiff_t step);
    void storePacked(Vek16s* coeffs, const VekDVBlockInfo* info, const MacroblockPlace& at);
    void noteBlocks(const VekDVBlockInfo* info, const MacroblockPlace& at);
    void keepBefore(const MacroblockPlace& at);

    struct FreeTable {
        void operator()(VekDVHuffmanTable_32s* table) const { vekiHuffmanTableFree_DV_32s(table); }
    };

    std::unique_ptr<VekDVHuffmanTable_32s, FreeTable> table_;

    // Of the frame.
    FrameTask* task_ = nullptr;
    const System* system_ = nullptr;
    Picture* picture_ = nullptr;
};

}  // namespace vekdec::dv
