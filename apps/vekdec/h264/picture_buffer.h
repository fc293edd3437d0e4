// The decoded picture buffer (H.264 8.2.1, 8.2.5, C.4): picture order counts, reference marking, output order.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <vector>

#include "h264/picture.h"
#include "h264/slice_header.h"

namespace vekdec::h264 {

class PictureBuffer {
  public:
    // Takes a frame that is due; it may still be in the work of other threads.
    using Output =
        std::function<void(const std::shared_ptr<const Picture>&, const std::shared_ptr<const SequenceParameterSet>&)>;
    explicit PictureBuffer(Output output) : output_(std::move(output)) {}

    // Begins the picture (or the second field) to which the slice belongs: gaps in frame_num are filled, an IDR picture
    // empties the buffer, and there is room. Returns the frame to decode into. Throws BadSyntax for order counts
    // outside 32 bits; no picture is begun then.
    Picture& begin(const SliceHeader& slice);
    // How many frames the stream lost right before the picture begun last: a gap that its SPS does not allow.
    int lost() const { return lost_; }
    // Ends it: reference marking, output of what is due.
    void end(const SliceHeader& slice);
    // Gives out all that is left, at the end of the stream.
    void flush();

    Picture* current() { return current_; }
    // All frames of the buffer, the current one with its first field included; for the reference lists.
    const std::vector<std::shared_ptr<Picture>>& pictures() const { return pictures_; }
    // The last picture given a place before the current one, for concealment; null if there is none.
    const Picture* previous() const { return previous_; }

  private:
    // TopFieldOrderCnt and BottomFieldOrderCnt of the picture, or of the field alone.
    struct OrderCounts {
        int top, bottom;
    };
    void activate(std::shared_ptr<const SequenceParameterSet> sps);
    Picture& allocate();
    Picture& store(std::shared_ptr<Picture> picture);
    void give(const Picture& picture);
    OrderCounts decodePicOrderCount(const SliceHeader& slice);
    void fillFrameNumGap(const SliceHeader& slice);
    void slidingWindow();
    void adaptiveMarking(const SliceHeader& slice);
    void unmarkAll();
    void storeCurrent();
    void makeRoom();
    bool bump();

    Output output_;
    std::vector<std::shared_ptr<Picture>> pictures_;      // in decoding order
    std::vector<std::shared_ptr<Picture>> spare_;         // to use again as soon as nobody else has them
    std::shared_ptr<const SequenceParameterSet> active_;  // the SPS that the pictures in the buffer follow
    Picture* current_ = nullptr;
    Picture* previous_ = nullptr;
    int dpbSize_ = 1, reorderDepth_ = 0, mostReferences_ = 1;
    int lost_ = 0;
    int maxLongTermFrameIdx_ = -1;  // "no long-term frame indices"
    // The state that picture order counts and gaps need of the picture before (8.2.1).
    int prevRefFrameNum_ = 0, prevFrameNum_ = 0, prevFrameNumOffset_ = 0;
    std::int64_t prevPocMsb_ = 0;
    int prevPocLsb_ = 0;
    bool lastHadMmco5_ = false;
};

// FrameNumWrap of all short-term frames against the current frame_num (8.2.4.1).
void deriveFrameNumWrap(const std::vector<std::shared_ptr<Picture>>& pictures, const SliceHeader& slice);

}  // namespace vekdec::h264
