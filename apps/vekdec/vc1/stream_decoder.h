// From packets to frames in output order: units, anchors, fields (SMPTE 421M 5, 6, Annexes E, J, L).
#pragma once

#include <memory>
#include <optional>

#include "decoder.h"
#include "frames/pool.h"
#include "spares.h"
#include "vc1/field_decoder.h"

namespace vekdec::vc1 {

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

    // A picture that others are predicted from. A skipped picture repeats the samples of the one before.
    struct Anchor {
        PicturePtr picture;
        bool skipped = false;
        ReferenceMap map[2];  // intensity compensation: of frames the first one, of fields by parity
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
    void decodeField(const PictureHeader& header, const WordReader& bits, std::shared_ptr<const PictureUnits> units,
                     std::size_t first, std::size_t end);
    void retire(FieldTask& task);
    void setFrameReferences(FieldTask& task);
    void setFieldReferences(FieldTask& task);
    Reference referenceTo(const PicturePtr& picture, int field) const;
    void finishFrame(bool complete);
    void keepAnchor(Anchor anchor);
    void showLast();
    void forgetAnchors();
    void show(const PicturePtr& picture);
    void setPlanes(const Picture& picture, const Sequence& sequence, Frame& frame);
    void damage(const std::string& what);

    StreamInfo stream_;
    bool seenExtradata_ = false;
    std::unique_ptr<WordPayload> payload_ = std::make_unique<WordPayload>();
    Spares<WordPayload> sparePayloads_;
    std::shared_ptr<PictureUnits> waiting_ = std::make_shared<PictureUnits>();  // for the end of their picture
    PicturePool<Picture> pool_;
    std::optional<vekapp::PictureMemory> mapped_;  // for output
    vekapp::PictureFormat mappedFormat_;

    std::optional<Sequence> newSequence_;  // read, in force from its entry point on
    Sequence sequence_;
    bool haveSequence_ = false, haveEntryPoint_ = false;
    bool rounding_ = true;  // RNDCTRL of Simple and Main profile

    PicturePtr current_;                // the frame being decoded
    ReferenceMap currentMap_[2];        // of its first field, by parity
    std::optional<Anchor> anchors_[2];  // older, newer
    bool newerShown_ = true;

    // Counted.
    long pictures_ = 0, slicesSeen_ = 0, leftOutPictures_ = 0, skippedPictures_ = 0;
    long repeated_ = 0;
    long kinds_[9] = {};
    std::uint64_t bytes_ = 0;
    double secondsMacroblocks_ = 0, secondsFilters_ = 0, secondsTotal_ = 0;

    PictureTasks<FieldDecoder, FieldTask> tasks_;  // ends first
};

}  // namespace vekdec::vc1
