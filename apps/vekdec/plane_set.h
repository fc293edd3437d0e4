// A picture to predict from, which another thread may still be decoding.
#pragma once

#include <algorithm>

#include "frames/plane.h"
#include "row_progress.h"

namespace vekdec {

// The planes of a frame or of one of its fields.
struct PlaneSet {
    PlaneSet() = default;
    // Of the planes of a frame: those of `structure`, bit 0 the top field, bit 1 the bottom field.
    PlaneSet(const vekapp::Plane (&frame)[3], RowProgress& rows, int which = RowProgress::kFrame)
        : structure(which), progress(rows.complete() ? nullptr : &rows) {
        for (int i = 0; i < 3; ++i) plane[i] = which == RowProgress::kFrame ? frame[i] : frame[i].field(which == 2);
    }
    bool present() const { return plane[0].data != nullptr; }
    // Returns when so many luma rows are final; the first one is, whatever the number: what lies above is its copy.
    void await(int rows) const {
        if (progress != nullptr) progress->await(structure, std::clamp(rows, 1, plane[0].height));
    }

    vekapp::Plane plane[3];
    int structure = RowProgress::kFrame;
    RowProgress* progress = nullptr;  // null: all rows are final
};

}  // namespace vekdec
