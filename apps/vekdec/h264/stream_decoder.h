// From the NAL units of a stream to frames in output order.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "decoder.h"
#include "h264/nal_unit.h"
#include "h264/parameter_set_store.h"
#include "h264/picture_buffer.h"
#include "h264/slice_decoder.h"

namespace vekdec::h264 {

class StreamDecoder : public Decoder {
  public:
    StreamDecoder(Sinks sinks, const DecoderOptions& options);
    ~StreamDecoder() override;

    // Takes byte streams (Annex B) and, where the packet's extradata says so, units behind their lengths.
    void decode(const Packet& packet) override;
    void flush() override;
    Statistics statistics() const override;
    BlockMap blocks(const Frame& frame) const override;

  private:
    void handle(std::span<const std::uint8_t> bytes, std::uint64_t position);
    void handle(const NalUnit& nal);
    void configure(std::span<const std::uint8_t> extradata, std::uint64_t position);
    void handleSlice(const NalUnit& nal);
    void finishRows(int endRow);
    void finishPicture();
    void show(const Picture& picture, const SequenceParameterSet& sps);
    void damage(const std::string& what);

    Sinks sinks_;
    StreamInfo stream_;
    std::vector<std::uint8_t> configuration_;  // the extradata that is in force
    int lengthBytes_ = 0;                      // in front of each unit; 0: a byte stream
    WordPayload payload_;
    ParameterSetStore parameterSets_;
    PictureBuffer buffer_;
    SliceDecoder sliceDecoder_;
    std::unique_ptr<Slice> slice_;  // the last slice of the picture being decoded; null between pictures
    Picture* picture_ = nullptr;
    long damagedBefore_ = 0;  // reports before the picture being decoded
    int decodedTo_ = 0;       // macroblocks before this address are all decoded
    int finishedRows_ = 0;    // macroblock rows that are deblocked
    std::vector<std::uint8_t> sliceGroupMap_;
    bool seenIntra_ = false;
    const Picture* shown_ = nullptr;  // during Sinks::frame
    const SequenceParameterSet* shownSps_ = nullptr;

    struct Counts {
        long frames = 0, pictures = 0, slices = 0, damaged = 0;
        std::uint64_t bytes = 0;
        long macroblocks[8] = {};  // by MbType
        long skipped = 0;
        double secondsMacroblocks = 0, secondsDeblocking = 0, secondsTotal = 0;
    } count_;
};

}  // namespace vekdec::h264
