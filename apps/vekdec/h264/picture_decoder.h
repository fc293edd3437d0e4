// One picture from its slices to final samples: what a thread does, while others decode the pictures before and behind.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "h264/slice_decoder.h"
#include "picture_tasks.h"

namespace vekdec::h264 {

// A slice whose header is parsed and whose references are found.
struct SliceTask {
    WordPayload payload;
    std::optional<BitReader> bits;  // of the payload, at the slice data
    Slice slice;
    SliceContext context;
    bool ready = false;  // to be decoded: its references are found, and it was not decoded yet
};

// A frame or a field.
struct PictureTask : vekdec::PictureTask {
    std::vector<std::unique_ptr<SliceTask>> slices;
    std::vector<std::uint8_t> sliceGroupMap;
    std::vector<std::shared_ptr<Picture>> kept;  // the pictures that it may refer to, and its own
    const Picture* previous = nullptr;           // for concealment
    bool reported = false;                       // damage of it is reported already

    // Found in decoding.
    long macroblocks[8] = {};  // by MbType
    long skipped = 0;
    double secondsMacroblocks = 0, secondsDeblocking = 0;

    const Slice& last() const { return slices.back()->slice; }
};

// Holds what outlives a picture.
class PictureDecoder {
  public:
    // Decodes the slices that are ready, conceals what is left out, deblocks. The rows of references are awaited, those
    // of the picture published as they get final.
    void operator()(PictureTask& task);
    // Decodes the slices that are ready; more are to come.
    void decodeSlices(PictureTask& task);

  private:
    void begin(PictureTask& task);
    void finish(PictureTask& task);
    // Makes the macroblocks before `address` missing as far as they are not yet: a row at a time, so that they are in the
    // caches when the row is decoded.
    void clearTo(const Slice& slice, int address);
    void decodeSlice(PictureTask& task, SliceTask& slice);
    void finishRows(PictureTask& task, int endRow);

    SliceDecoder sliceDecoder_;
    int decodedTo_ = 0;     // macroblocks before this address are all decoded
    int clearedTo_ = 0;     // macroblocks before this address are missing or decoded
    int finishedRows_ = 0;  // macroblock rows (of MBAFF frames: rows of pairs) that are deblocked
};

}  // namespace vekdec::h264
