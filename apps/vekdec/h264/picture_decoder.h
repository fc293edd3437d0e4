// One picture from its slices to final samples: what a thread does, while others decode the pictures before and behind.
#pragma once

#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "h264/slice_decoder.h"

namespace vekdec::h264 {

// A slice whose header is parsed and whose references are found.
struct SliceTask {
    WordPayload payload;
    std::optional<BitReader> bits;  // of the payload, at the slice data
    Slice slice;
    SliceContext context;
    bool whole = false;  // else its references could not be found
};

// A frame or a field. Whoever reads the stream fills it; all that later headers change is copied into it.
struct PictureTask {
    int number = 0;  // in decoding order, for reports
    std::vector<std::unique_ptr<SliceTask>> slices;
    std::vector<std::uint8_t> sliceGroupMap;
    std::vector<std::shared_ptr<Picture>> kept;  // the pictures that it may refer to, and its own
    const Picture* previous = nullptr;           // for concealment
    bool reported = false;                       // damage of it is reported already

    // Found in decoding.
    std::vector<std::string> damage;
    long macroblocks[8] = {};  // by MbType
    long skipped = 0;
    double secondsMacroblocks = 0, secondsDeblocking = 0;
    std::exception_ptr failure;  // other than of the stream

    const Slice& last() const { return slices.back()->slice; }
};

// Holds what outlives a picture.
class PictureDecoder {
  public:
    // Decodes the slices, conceals what they leave out, deblocks. The rows of references are awaited, those of the
    // picture published as they get final.
    void operator()(PictureTask& task);

  private:
    void decode(PictureTask& task);
    void decodeSlice(PictureTask& task, SliceTask& slice);
    void finishRows(PictureTask& task, int endRow);

    SliceDecoder sliceDecoder_;
    int decodedTo_ = 0;     // macroblocks before this address are all decoded
    int finishedRows_ = 0;  // macroblock rows (of MBAFF frames: rows of pairs) that are deblocked
};

}  // namespace vekdec::h264
