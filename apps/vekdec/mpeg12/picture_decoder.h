// One frame or field from its slices to samples: what a thread does, while others decode those before and behind.
#pragma once

#include <memory>
#include <vector>

#include "concealment.h"
#include "mpeg12/slice.h"
#include "picture_tasks.h"

namespace vekdec::mpeg12 {

struct SliceTask {
    WordPayload payload;
    int verticalPosition = 0;  // the start code's last byte
    int row = 0;               // of macroblocks, with which the slice begins
};

// A frame or a field.
struct PictureTask : vekdec::PictureTask {
    Sequence sequence;
    PictureHeader header;
    Matrices matrices;
    PictureContext context;                      // of these
    std::vector<std::shared_ptr<Picture>> kept;  // the pictures that it refers to, and its own
    PlaneSet before;                             // for concealment
    std::vector<std::unique_ptr<SliceTask>> slices;

    // Found in decoding.
    long kinds[6] = {};
    double seconds = 0;
};

// Holds what outlives a picture.
class PictureDecoder {
  public:
    // Decodes the slices and conceals what they leave out. The rows of references are awaited, those of the picture
    // published as they get final.
    void operator()(PictureTask& task);
    // Decodes the slices so far; more are to come.
    void decodeSlices(PictureTask& task);

  private:
    void begin(PictureTask& task);
    void decodeSlice(PictureTask& task, const SliceTask& slice, int nextRow);
    void finishRows(PictureTask& task, int endRow);

    SliceDecoder slices_;
    RowConcealment<Macroblock> concealment_;
};

}  // namespace vekdec::mpeg12
