// From the start codes of a stream to frames in output order (ISO 13818-2 6.1, 6.2).
#pragma once

#include <memory>
#include <optional>

#include "decoder.h"
#include "frames/pool.h"
#include "mpeg12/picture_decoder.h"
#include "spares.h"

namespace vekdec::mpeg12 {

class StreamDecoder : public Decoder {
  public:
    StreamDecoder(Sinks sinks, const DecoderOptions& options);

    void decode(const Packet& packet) override;
    void flush() override;
    Statistics statistics() const override;
    BlockMap blocks(const Frame&) const override { return tasks_.blocks(); }

  private:
    using PicturePtr = std::shared_ptr<Picture>;

    void handle(std::span<const std::uint8_t> unit);
    void handleExtension(WordReader& bits);
    void handleSlice(std::span<const std::uint8_t> bytes, int verticalPosition);
    void activateSequence();
    bool beginPicture();  // false: it is left out
    void beginTask();
    void finishField();
    void retire(PictureTask& task);
    void finishFrame();
    void show(const PicturePtr& picture);
    void showLast();
    void damage(const std::string& what);

    WordPayload payload_;  // of headers
    PicturePool<Picture> pool_;

    std::optional<Sequence> newSequence_;  // read, in force from the next picture on
    Sequence sequence_;
    Matrices matrices_;
    bool haveSequence_ = false, refused_ = false, closedGroup_ = false;
    std::optional<PictureHeader> newPicture_;  // read, begins with its first slice
    bool newPictureExtended_ = false;
    bool seenExtradata_ = false;

    PictureHeader header_;               // of the frame or field being decoded
    PicturePtr current_;                 // the frame being decoded
    int decodedFields_ = 0;              // Structure bits that are there
    std::unique_ptr<PictureTask> task_;  // the frame or field whose slices come
    Spares<SliceTask> spareSlices_;
    bool leftOut_ = false;   // slices are of a picture that cannot be decoded
    PicturePtr anchors_[2];  // older, newer
    bool newerShown_ = true;

    // Counted.
    long pictures_ = 0, slicesSeen_ = 0, leftOutPictures_ = 0, repeated_ = 0;
    long kinds_[6] = {};
    std::uint64_t bytes_ = 0;
    double secondsSlices_ = 0, secondsTotal_ = 0;

    PictureTasks<PictureDecoder, PictureTask> tasks_;  // ends first
    std::size_t mostSlices_;                           // that may wait for the rest of their picture
};

}  // namespace vekdec::mpeg12
