// From the NAL units of a stream to frames in output order.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "decoder.h"
#include "h264/nal_unit.h"
#include "h264/parameter_set_store.h"
#include "h264/picture_buffer.h"
#include "h264/picture_decoder.h"
#include "picture_tasks.h"
#include "spares.h"

namespace vekdec::h264 {

class StreamDecoder : public Decoder {
  public:
    StreamDecoder(Sinks sinks, const DecoderOptions& options);

    // Takes byte streams (Annex B) and, where the packet's extradata says so, units behind their lengths.
    void decode(const Packet& packet) override;
    void flush() override;
    Statistics statistics() const override;
    BlockMap blocks(const Frame&) const override { return tasks_.blocks(); }

  private:
    void handle(std::span<const std::uint8_t> bytes, std::uint64_t position);
    void handle(const NalUnit& nal);
    void configure(std::span<const std::uint8_t> extradata, std::uint64_t position);
    void handleSlice(const NalUnit& nal);
    void decodeHere();
    void finishPicture();
    void retire(PictureTask& task);
    void show(const std::shared_ptr<const Picture>& picture, const std::shared_ptr<const SequenceParameterSet>& sps);
    void damage(const std::string& what);

    StreamInfo stream_;
    std::vector<std::uint8_t> configuration_;  // the extradata that is in force
    int lengthBytes_ = 0;                      // in front of each unit; 0: a byte stream
    ParameterSetStore parameterSets_;
    PictureBuffer buffer_;
    std::unique_ptr<PictureTask> task_;  // the picture whose slices come; null between pictures
    Spares<SliceTask> spareSlices_;
    bool seenIntra_ = false;

    struct Counts {
        long pictures = 0, slices = 0;
        std::uint64_t bytes = 0;
        long macroblocks[8] = {};  // by MbType
        long skipped = 0;
        double secondsMacroblocks = 0, secondsDeblocking = 0, secondsTotal = 0;
    } count_;

    PictureTasks<PictureDecoder, PictureTask> tasks_;  // ends first
    std::size_t mostSlices_;                           // that may wait for the rest of their picture
};

}  // namespace vekdec::h264
