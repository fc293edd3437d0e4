// From the start codes of a stream to frames in output order (ISO 14496-2 6.1, 6.2).
#pragma once

#include <memory>
#include <vector>

#include "decoder.h"
#include "frames/pool.h"
#include "h263/post_filter.h"
#include "mpeg4/picture_decoder.h"
#include "spares.h"

namespace vekdec::mpeg4 {

class StreamDecoder : public Decoder {
  public:
    StreamDecoder(Sinks sinks, const DecoderOptions& options);

    void decode(const Packet& packet) override;
    void flush() override;
    Statistics statistics() const override;
    BlockMap blocks(const Frame& frame) const override;

  private:
    using PicturePtr = std::shared_ptr<Picture>;

    void decodeUnits(std::span<const std::uint8_t> bytes);
    void handle(std::span<const std::uint8_t> unit);
    bool decodeShortHeader(const Packet& packet);
    void handleLayer(ByteReader& bits);
    void handleVop(ByteReader& bits);
    std::int64_t timeOf(const Vop& vop);
    void setTimes(VopContext& context);
    void setWarp(VopTask& task);
    void retire(VopTask& task);
    void keepAnchor(PicturePtr picture);
    void show(const PicturePtr& picture);
    void showLast();
    void dropAnchors();
    void damage(const std::string& what);

    Sinks sinks_;
    DecoderOptions options_;
    h263::PostFilter postFilter_;
    std::unique_ptr<BytePayload> payload_ = std::make_unique<BytePayload>();
    Spares<BytePayload> sparePayloads_;
    PicturePool<Picture> pool_;
    std::unique_ptr<Decoder> shortHeader_;  // decodes all, once the stream turns out to have short headers

    std::shared_ptr<const Layer> layer_;
    std::shared_ptr<const Dequantizers> dequantizers_;  // of it
    bool refused_ = false;
    bool seenExtradata_ = false;
    // Whole seconds from which the next VOP but a B-VOP counts, and those from which B-VOPs count (6.3.5).
    std::int64_t seconds_ = 0, secondsB_ = 0;
    std::int64_t frameTicks_ = 0;  // of the first B-VOP behind its forward reference
    PicturePtr anchors_[2];        // older, newer
    bool newerShown_ = true;

    // Counted.
    long pictures_ = 0, packets_ = 0, leftOutPictures_ = 0, notCoded_ = 0;
    long kinds_[11] = {};
    std::uint64_t bytes_ = 0;
    double secondsVops_ = 0, secondsTotal_ = 0;

    PictureTasks<PictureDecoder, VopTask> tasks_;  // ends first
};

}  // namespace vekdec::mpeg4
