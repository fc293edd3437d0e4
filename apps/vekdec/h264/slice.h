// What the decoding of one slice works on: handed from the decoder to the macroblock layer.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "h264/picture.h"
#include "h264/slice_header.h"

namespace vekdec::h264 {

// One entry of a reference picture list: a frame, or one field of it. The picture is null where the stream never sent
// it.
struct Reference {
    Picture* picture = nullptr;
    int structure = kFrame;
    int poc() const { return picture->pocOf(structure); }
    bool longTerm() const { return (picture->longTerm & structure) == structure; }
    // The identity that Macroblock::refPicId keeps.
    int id() const { return picture == nullptr ? -1 : 4 * picture->id + structure; }
};

struct Slice {
    SliceHeader header;
    Picture* picture = nullptr;                                    // the current one
    int structure = kFrame;                                        // what of it is being decoded
    int number = 0;                                                // index into Picture::slices of it
    std::array<std::vector<Reference>, 2> refPicList;              // RefPicList0 and 1, num_ref_idx_active entries
    const std::vector<std::uint8_t>* mbToSliceGroupMap = nullptr;  // per macroblock address; null: one slice group
};

}  // namespace vekdec::h264
