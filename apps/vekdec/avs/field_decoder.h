// One frame or field from its slices to samples: what a thread does, while others decode those before and behind.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "avs/slice.h"
#include "concealment.h"

namespace vekdec::avs {

struct SliceTask {
    WordPayload payload;
    std::optional<BitReader> bits;  // of it, at the slice's header
    int row = 0;                    // of macroblocks, with which the slice begins
};

// A frame or a field.
struct FieldTask : PictureTask {
    PictureHeader header;
    PictureContext context;  // of it
    std::shared_ptr<Picture> picture;
    int structure = RowProgress::kFrame;
    std::shared_ptr<Picture> kept[2];  // that it refers to
    PlaneSet before;                   // for concealment
    std::vector<std::unique_ptr<SliceTask>> slices;

    // Found in decoding.
    long kinds[7] = {};
    double secondsMacroblocks = 0, secondsFilter = 0;
};

// Holds what outlives a field.
class FieldDecoder {
  public:
    // Decodes the slices, conceals what they leave out, filters. The rows of references are awaited, those of the field
    // published as they get final.
    void operator()(FieldTask& task);
    // Decodes the slices so far; more are to come.
    void decodeSlices(FieldTask& task);

  private:
    void finishRows(FieldTask& task, int endRow);

    SliceDecoder slices_;
    RowConcealment<Macroblock> concealment_;
    int filteredRows_ = 0;
};

}  // namespace vekdec::avs
