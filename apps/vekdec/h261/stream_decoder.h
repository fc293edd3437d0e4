// From picture start codes, which may stand at any bit, to frames (H.261 4.2.1).
#pragma once

#include <memory>
#include <vector>

#include "decoder.h"
#include "frames/pool.h"
#include "h261/picture_decoder.h"
#include "h263/post_filter.h"

namespace vekdec::h261 {

class StreamDecoder : public Decoder {
  public:
    StreamDecoder(Sinks sinks, const DecoderOptions& options)
        : sinks_(std::move(sinks)), stream_(options.stream), postFilter_(options.postProcessing) {}

    void decode(const Packet& packet) override;
    void flush() override;
    Statistics statistics() const override;
    BlockMap blocks(const Frame& frame) const override;

  private:
    using PicturePtr = std::shared_ptr<Picture>;

    void decodePicture(std::size_t begin, std::size_t end);
    void show(const Picture& picture);
    void damage(const std::string& what);

    Sinks sinks_;
    StreamInfo stream_;
    h263::PostFilter postFilter_;
    std::vector<std::uint8_t> waiting_;  // from the byte with the last start code on
    std::size_t start_ = 0;              // its position in bits
    std::size_t searched_ = 0;           // bits behind which no other one was found
    bool started_ = false;
    BytePayload payload_;
    PictureDecoder pictures_;
    PicturePool<Picture> pool_;
    PicturePtr reference_;
    const Picture* shown_ = nullptr;  // during Sinks::frame

    // Counted.
    long frames_ = 0, seen_ = 0, damaged_ = 0;
    long kinds_[5] = {};
    std::uint64_t bytes_ = 0;
    double secondsPictures_ = 0, secondsTotal_ = 0;
};

}  // namespace vekdec::h261
