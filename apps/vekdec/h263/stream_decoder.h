// From picture start codes to frames (H.263 5.1).
#pragma once

#include <memory>

#include "decoder.h"
#include "frames/pool.h"
#include "h263/picture_decoder.h"
#include "h263/post_filter.h"

namespace vekdec::h263 {

class StreamDecoder : public Decoder {
  public:
    StreamDecoder(Sinks sinks, const DecoderOptions& options)
        : sinks_(std::move(sinks)), stream_(options.stream), postFilter_(options.postProcessing) {}

    void decode(const Packet& packet) override;
    void flush() override {}
    Statistics statistics() const override;
    BlockMap blocks(const Frame& frame) const override;

  private:
    using PicturePtr = std::shared_ptr<Picture>;

    void decodePicture(std::span<const std::uint8_t> bytes);
    void show(const Picture& picture);
    void damage(const std::string& what);

    Sinks sinks_;
    StreamInfo stream_;
    h263::PostFilter postFilter_;
    BytePayload payload_;
    PictureDecoder pictures_;
    PicturePool<Picture> pool_;
    Modes modes_;  // of the picture before
    PicturePtr reference_;
    const Picture* shown_ = nullptr;  // during Sinks::frame

    // Counted.
    long frames_ = 0, seen_ = 0, damaged_ = 0;
    long kinds_[5] = {};
    std::uint64_t bytes_ = 0;
    double secondsPictures_ = 0, secondsTotal_ = 0;
};

}  // namespace vekdec::h263
