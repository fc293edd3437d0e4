// From packets to frames in output order: units, anchors, fields (SMPTE 421M 5, 6, Annexes E, J, L).
#pragma once

#include <memory>
#include <optional>

#include "decoder.h"
#include "frames/pool.h"
#include "vc1/picture_decoder.h"

namespace vekdec::vc1 {

class StreamDecoder : public Decoder {
  public:
    StreamDecoder(Sinks sinks, const DecoderOptions& options) : sinks_(std::move(sinks)), stream_(options.stream) {}

    void decode(const Packet& packet) override;
    void flush() override;
    Statistics statistics() const override;
    BlockMap blocks(const Frame& frame) const override;

  private:
    using PicturePtr = std::shared_ptr<Picture>;
    using Bytes = std::span<const std::uint8_t>;

    // A picture that others are predicted from. A skipped picture repeats the samples of the one before.
    struct Anchor {
        PicturePtr picture;
        bool skipped = false;
        ReferenceMap map[2];  // intensity compensation: of frames the first one, of fields by parity
    };
    // A unit that waits for the end of its picture, among the waiting bytes.
    struct Unit {
        std::uint8_t code;
        std::size_t begin, size;
    };

    void handleExtradata(Bytes extradata);
    void handleUnits(Bytes bytes, bool bareFrame);
    void handleUnit(Bytes unit);
    void keepUnit(std::uint8_t code, Bytes bytes);
    template <class Step>
    void guarded(Step step);

    void activate(const Sequence& sequence);
    void decodeSimpleMain(Bytes frame);
    void decodeWaiting();
    void skipPicture();
    bool beginFrame(const PictureHeader& header);  // false: it is left out
    void beginField(const PictureHeader& header);
    void setFrameReferences();
    void setFieldReferences();
    Reference referenceTo(const PicturePtr& picture, int field) const;
    // The slices of a frame or field: units from `first` to before `end`, of which the first one is begun already.
    void decodeSlices(WordReader& bits, std::size_t first, std::size_t end);
    void finishField();
    void conceal();
    void finishFrame(bool complete);
    void keepAnchor(Anchor anchor);
    void showLast();
    void forgetAnchors();
    void show(const PicturePtr& picture);
    void mapRange(const Picture& picture, int plane, const vekapp::Plane& to, int rangeMap) const;
    void damage(const std::string& what);

    Sinks sinks_;
    StreamInfo stream_;
    bool seenExtradata_ = false;
    WordPayload payload_;
    std::vector<std::uint8_t> waitingBytes_;
    std::vector<Unit> waiting_;
    PicturePool<Picture> pool_;
    PictureDecoder pictureDecoder_;
    std::optional<vekapp::PictureMemory> mapped_;  // for output
    vekapp::PictureFormat mappedFormat_;

    std::optional<Sequence> newSequence_;  // read, in force from its entry point on
    Sequence sequence_;
    bool haveSequence_ = false, haveEntryPoint_ = false;
    bool rounding_ = true;  // RNDCTRL of Simple and Main profile

    PictureHeader header_;  // of the frame or field being decoded
    PictureContext context_;
    PicturePtr current_;
    ReferenceMap currentMap_[2];  // of its first field, by parity
    ReferenceMap forwardMap_, backwardMap_;
    std::optional<Anchor> anchors_[2];  // older, newer
    bool newerShown_ = true;
    const Picture* shown_ = nullptr;  // during Sinks::frame

    // Counted.
    long frames_ = 0, pictures_ = 0, slicesSeen_ = 0, damaged_ = 0, leftOutPictures_ = 0, skippedPictures_ = 0;
    long repeated_ = 0;
    long kinds_[9] = {};
    std::uint64_t bytes_ = 0;
    double secondsMacroblocks_ = 0, secondsFilters_ = 0, secondsTotal_ = 0;
};

}  // namespace vekdec::vc1
