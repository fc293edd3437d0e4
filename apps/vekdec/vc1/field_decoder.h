// One frame or field behind its header to samples: what a thread does, while others decode those before and behind.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "concealment.h"
#include "vc1/picture_decoder.h"

namespace vekdec::vc1 {

// The units of a picture.
struct PictureUnits {
    struct Unit {
        std::uint8_t code;
        std::size_t begin, size;  // of the bytes
    };
    std::vector<Unit> units;
    std::vector<std::uint8_t> bytes;
};

// A frame or a field.
struct FieldTask : PictureTask {
    Sequence sequence;
    PictureHeader header;
    PictureContext context;  // of these
    ReferenceMap maps[2];    // of its references: forward and backward, or by parity
    std::unique_ptr<WordPayload> payload;
    std::optional<WordReader> bits;             // of it, behind the header
    std::shared_ptr<const PictureUnits> units;  // Advanced profile
    std::size_t first = 0, end = 0;             // of them: the frame's or field's
    std::shared_ptr<Picture> picture;
    std::shared_ptr<Picture> kept[2];  // that it refers to
    PlaneSet before;                   // for concealment

    // Found in decoding.
    long slices = 0;
    long kinds[9] = {};
    double secondsMacroblocks = 0, secondsFilters = 0;
};

// Holds what outlives a field.
class FieldDecoder {
  public:
    // Decodes the slices, conceals what they leave out, filters. The rows of references are awaited, those of the field
    // published as they get final.
    void operator()(FieldTask& task);

  private:
    void decodeSlices(FieldTask& task);
    void decodeRows(FieldTask& task, WordReader& bits, int firstRow, int endRow);
    void finishRows(FieldTask& task, int endRow);

    WordPayload payload_;
    PictureDecoder decoder_;
    RowConcealment<Macroblock> concealment_;
};

}  // namespace vekdec::vc1
