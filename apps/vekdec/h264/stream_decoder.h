// From the NAL units of a stream to frames in output order.
#pragma once

#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "decoder.h"
#include "h264/nal_unit.h"
#include "h264/parameter_set_store.h"
#include "h264/picture_buffer.h"
#include "h264/picture_decoder.h"
#include "task_threads.h"

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
    std::unique_ptr<SliceTask> takeSlice();
    void decodeHere();
    void finishPicture();
    void retire(PictureTask& task);
    void deliver(int mostTasks);
    void damage(const std::string& what);

    // What is to be told, in the order in which one thread would come to it: a sentence, a frame to show, or a picture
    // whose decoding must be over before what follows.
    struct Event {
        std::string report;
        std::shared_ptr<const Picture> picture;
        std::shared_ptr<const SequenceParameterSet> sps;
        Frame frame;
        std::unique_ptr<PictureTask> task;
    };

    Sinks sinks_;
    StreamInfo stream_;
    std::vector<std::uint8_t> configuration_;  // the extradata that is in force
    int lengthBytes_ = 0;                      // in front of each unit; 0: a byte stream
    ParameterSetStore parameterSets_;
    PictureBuffer buffer_;
    std::unique_ptr<PictureTask> task_;  // the picture whose slices come; null between pictures
    std::vector<std::unique_ptr<SliceTask>> spareSlices_;
    std::deque<Event> events_;
    int tasks_ = 0;  // among the events
    bool seenIntra_ = false;
    const Event* shown_ = nullptr;  // during Sinks::frame

    struct Counts {
        long frames = 0, pictures = 0, slices = 0, damaged = 0;
        std::uint64_t bytes = 0;
        long macroblocks[8] = {};  // by MbType
        long skipped = 0;
        double secondsMacroblocks = 0, secondsDeblocking = 0, secondsTotal = 0;
    } count_;

    // Pictures are decoded by these threads, or where there is one alone by `decoder_` at once. Both end first.
    int mostTasks_ = 0;           // that may be under way
    std::size_t mostSlices_ = 0;  // that may wait for the rest of their picture
    PictureDecoder decoder_;
    std::optional<TaskThreads<PictureDecoder, PictureTask>> threads_;
};

}  // namespace vekdec::h264
