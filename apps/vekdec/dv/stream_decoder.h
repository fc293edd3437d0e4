// From frames of DIF blocks to pictures.
#pragma once

#include <memory>
#include <vector>

#include "decoder.h"
#include "dv/system.h"
#include "vekvc.h"

namespace vekdec::dv {

class StreamDecoder : public Decoder {
  public:
    StreamDecoder(Sinks sinks, const DecoderOptions& options);  // throws std::bad_alloc

    void decode(const Packet& packet) override;
    void flush() override {}
    Statistics statistics() const override;
    BlockMap blocks(const Frame& frame) const override;

  private:
    void begin(const System& system);
    int decodeSegment(const std::uint8_t* segment, const MacroblockPlace (&places)[kMacroblocks]);
    void storePlanar(Vek16s* coeffs, const VekDVBlockInfo* info, const MacroblockPlace& at);
    void storeBlock(Vek16s* coeffs, bool is248, std::uint8_t* to, std::ptrdiff_t step);
    void storePacked(Vek16s* coeffs, const VekDVBlockInfo* info, const MacroblockPlace& at);
    void noteBlocks(const VekDVBlockInfo* info, const MacroblockPlace& at);
    void show(std::span<const std::uint8_t> frame);

    struct FreeTable {
        void operator()(VekDVHuffmanTable_32s* table) const { vekiHuffmanTableFree_DV_32s(table); }
    };

    Sinks sinks_;
    StreamInfo stream_;
    bool packed_;
    int zoom_;  // as a shift
    std::unique_ptr<VekDVHuffmanTable_32s, FreeTable> table_;
    const System* system_ = nullptr;  // of the frames so far
    std::vector<MacroblockPlace> places_;
    vekapp::PictureMemory planar_;  // keeps what the frame before had where this one is damaged
    std::vector<std::uint8_t> interleaved_;
    std::vector<Block> blocks_;  // luma blocks of the frame

    long frames_ = 0, packets_ = 0, segments_ = 0, damaged_ = 0;
    long modes_[2] = {}, ends_[5] = {};
    std::uint64_t bytes_ = 0;
    double seconds_ = 0;
};

}  // namespace vekdec::dv
