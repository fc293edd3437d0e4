// From the start codes of a stream to frames in output order (ISO 14496-2 6.1, 6.2).
#pragma once

#include <memory>
#include <optional>

#include "decoder.h"
#include "frames/pool.h"
#include "h263/post_filter.h"
#include "mpeg4/vop_decoder.h"

namespace vekdec::mpeg4 {

class StreamDecoder : public Decoder {
  public:
    StreamDecoder(Sinks sinks, const DecoderOptions& options)
        : sinks_(std::move(sinks)), options_(options), postFilter_(options.postProcessing) {}

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
    void setWarp(VopContext& context);
    void keepAnchor(PicturePtr picture);
    void show(const PicturePtr& picture);
    void showLast();
    void dropAnchors();
    void damage(const std::string& what);

    static constexpr std::size_t kWarpBytes = 384;  // as vekiWarpGetSize_MPEG4 tells

    Sinks sinks_;
    DecoderOptions options_;
    h263::PostFilter postFilter_;
    BytePayload payload_;
    VopDecoder vops_;
    Dequantizers dequantizers_;
    PicturePool<Picture> pool_;
    std::unique_ptr<Decoder> shortHeader_;  // decodes all, once the stream turns out to have short headers

    std::optional<Layer> layer_;
    bool refused_ = false;
    bool seenExtradata_ = false;
    // Whole seconds from which the next VOP but a B-VOP counts, and those from which B-VOPs count (6.3.5).
    std::int64_t seconds_ = 0, secondsB_ = 0;
    std::int64_t frameTicks_ = 0;  // of the first B-VOP behind its forward reference
    PicturePtr anchors_[2];        // older, newer
    bool newerShown_ = true;
    const Picture* shown_ = nullptr;  // during Sinks::frame
    Vek8u warp_[kWarpBytes];

    // Counted.
    long frames_ = 0, pictures_ = 0, damaged_ = 0, leftOutPictures_ = 0, notCoded_ = 0;
    long kinds_[11] = {};
    std::uint64_t bytes_ = 0;
    double secondsVops_ = 0, secondsTotal_ = 0;
};

}  // namespace vekdec::mpeg4
