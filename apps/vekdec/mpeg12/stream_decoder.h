// From the start codes of a stream to frames in output order (ISO 13818-2 6.1, 6.2).
#pragma once

#include <memory>
#include <optional>

#include "decoder.h"
#include "frames/pool.h"
#include "mpeg12/slice.h"

namespace vekdec::mpeg12 {

class StreamDecoder : public Decoder {
  public:
    StreamDecoder(Sinks sinks, const DecoderOptions& options) : sinks_(std::move(sinks)), stream_(options.stream) {}

    void decode(const Packet& packet) override;
    void flush() override;
    Statistics statistics() const override;
    BlockMap blocks(const Frame& frame) const override;

  private:
    using PicturePtr = std::shared_ptr<Picture>;

    void handle(std::span<const std::uint8_t> unit);
    void handleExtension(WordReader& bits);
    void handleSlice(WordReader& bits, int verticalPosition);
    void activateSequence();
    bool beginPicture();  // false: it is left out
    void conceal();
    void finishField();
    void finishFrame();
    void show(const PicturePtr& picture);
    void showLast();
    void damage(const std::string& what);

    Sinks sinks_;
    StreamInfo stream_;
    WordPayload payload_;
    SliceDecoder slices_;
    PicturePool<Picture> pool_;

    std::optional<Sequence> newSequence_;  // read, in force from the next picture on
    Sequence sequence_;
    Matrices matrices_;
    bool haveSequence_ = false, refused_ = false, closedGroup_ = false;
    std::optional<PictureHeader> newPicture_;  // read, begins with its first slice
    bool newPictureExtended_ = false;
    bool seenExtradata_ = false;

    PictureHeader header_;  // of the frame or field being decoded
    PictureContext context_;
    PicturePtr current_;     // the frame being decoded
    int decodedFields_ = 0;  // Structure bits that are there
    bool inField_ = false;   // slices are expected
    bool leftOut_ = false;   // slices are of a picture that cannot be decoded
    PicturePtr anchors_[2];  // older, newer
    bool newerShown_ = true;
    const Picture* shown_ = nullptr;  // during Sinks::frame

    // Counted.
    long frames_ = 0, pictures_ = 0, slicesSeen_ = 0, damaged_ = 0, leftOutPictures_ = 0, repeated_ = 0;
    long kinds_[6] = {};
    std::uint64_t bytes_ = 0;
    double secondsSlices_ = 0, secondsTotal_ = 0;
};

}  // namespace vekdec::mpeg12
