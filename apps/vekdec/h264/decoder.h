// From the NAL units of a stream to frames in output order.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <span>
#include <string>

#include "frame.h"
#include "macroblock_layer.h"
#include "nal_unit.h"
#include "parameter_set_store.h"
#include "picture_buffer.h"

namespace vekdec::h264 {

struct Statistics {
    long frames = 0, pictures = 0, slices = 0, damagedSlices = 0;
    std::uint64_t bits = 0;
    long macroblocks[8] = {};  // by MbType
    long skipped = 0;
    double secondsParsing = 0, secondsDeblocking = 0, secondsTotal = 0;  // parsing includes reconstruction
};

class Decoder {
  public:
    using FrameSink = std::function<void(const Frame&)>;
    using Report = std::function<void(const std::string&)>;  // one sentence per unit left out or damaged
    Decoder(FrameSink sink, Report report);
    ~Decoder();

    // Decodes a whole byte stream; `progress` is told the bytes done and stops the decoding by returning false. What
    // is damaged, or of a kind that the decoder does not do, is reported and left out.
    void decode(std::span<const std::uint8_t> stream, const std::function<bool(std::size_t)>& progress = {});

    const Statistics& statistics() const { return statistics_; }

  private:
    void handle(const NalUnit& nal);
    void handleSlice(const NalUnit& nal);
    void finishRows(int endRow);
    void finishPicture();
    void show(const Picture& picture, const SequenceParameterSet& sps);
    void damage(const std::string& what);

    FrameSink sink_;
    Report report_;
    Statistics statistics_;
    Payload payload_;
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
};

}  // namespace vekdec::h264
