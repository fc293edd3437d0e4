// From frames of DIF blocks to pictures.
#pragma once

#include <memory>
#include <vector>

#include "decoder.h"
#include "dv/frame_decoder.h"

namespace vekdec::dv {

class StreamDecoder : public Decoder {
  public:
    StreamDecoder(Sinks sinks, const DecoderOptions& options);

    void decode(const Packet& packet) override;
    void flush() override;
    Statistics statistics() const override;
    BlockMap blocks(const Frame&) const override { return tasks_.blocks(); }

  private:
    void begin(const System& system);
    std::shared_ptr<Picture> nextPicture();
    void retire(const FrameTask& task);
    void show(std::span<const std::uint8_t> frame);

    bool packed_;
    int zoom_;                        // as a shift
    const System* system_ = nullptr;  // of the frames so far
    std::shared_ptr<const std::vector<MacroblockPlace>> places_;
    std::vector<std::shared_ptr<Picture>> pictures_;
    std::shared_ptr<Picture> picture_;  // of the last frame

    long frames_ = 0, packets_ = 0, segments_ = 0;
    long modes_[2] = {}, ends_[5] = {};
    std::uint64_t bytes_ = 0;
    double seconds_ = 0;

    PictureTasks<FrameDecoder, FrameTask> tasks_;  // ends first
};

}  // namespace vekdec::dv
