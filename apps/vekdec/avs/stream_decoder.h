// From the start codes of a stream to frames in output order (GB/T 20090.2 clauses 6 and 7).
#pragma once

#include <memory>
#include <optional>

#include "avs/field_decoder.h"
#include "decoder.h"
#include "frames/pool.h"
#include "spares.h"

namespace vekdec::avs {

class StreamDecoder : public Decoder {
  public:
    StreamDecoder(Sinks sinks, const DecoderOptions& options);

    void decode(const Packet& packet) override;
    void flush() override;
    Statistics statistics() const override;
    BlockMap blocks(const Frame&) const override { return tasks_.blocks(); }

  private:
    using PicturePtr = std::shared_ptr<Picture>;
    using Bytes = std::span<const std::uint8_t>;

    void handleAll(Bytes bytes);
    void handle(Bytes unit);
    void settleSyntax(std::uint8_t nextCode);
    void handlePicture(Bytes unit);
    void handleSlice(Bytes unit);
    template <class Step>
    void guarded(Step step);

    void activateSequence();
    bool beginPicture();  // false: it is left out
    void beginField(bool second);
    void setReferences(PictureContext& context, bool second);
    void takeSlice(std::unique_ptr<SliceTask> slice);
    void retire(FieldTask& task);
    void finishField();
    void finishPicture();
    void endSequence();
    void show(const PicturePtr& picture);
    void showLast();
    void damage(const std::string& what);

    StreamInfo stream_;
    Spares<SliceTask> spareSlices_;
    PicturePool<Picture> pool_;

    std::optional<Sequence> newSequence_;  // read, in force from the next picture on
    Sequence sequence_;
    bool haveSequence_ = false, refused_ = false;
    bool seenExtradata_ = false;
    std::optional<Syntax> syntax_;             // told by what follows the first picture's header
    std::vector<std::uint8_t> firstPicture_;   // its unit waits for that
    std::optional<PictureHeader> newPicture_;  // read, begins with its first slice

    PicturePtr current_;  // the picture being decoded; nullptr: slices are of none that can be
    bool secondField_ = false;
    std::unique_ptr<FieldTask> task_;  // its frame or field whose slices come
    PicturePtr anchors_[2];            // older, newer
    bool newerShown_ = true;

    // Counted.
    long pictures_ = 0, slicesSeen_ = 0, leftOutPictures_ = 0, repeated_ = 0;
    long kinds_[7] = {};
    std::uint64_t bytes_ = 0;
    double secondsMacroblocks_ = 0, secondsFilter_ = 0, secondsTotal_ = 0;

    PictureTasks<FieldDecoder, FieldTask> tasks_;  // ends first
    std::size_t mostSlices_;                       // that may wait for the rest of their picture
};

}  // namespace vekdec::avs
