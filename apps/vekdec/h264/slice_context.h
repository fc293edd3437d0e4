// What the steps of the macroblock layer share: a slice with its references resolved to memory, and the macroblock
// being decoded.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "h264/slice.h"

namespace vekdec::h264 {

// A plane of a reference: a frame's, or one field's with twice the frame's step.
struct ReferencePlane {
    const std::uint8_t* data = nullptr;
    int step = 0;               // bytes
    int width = 0, height = 0;  // samples
};

// An entry of a reference picture list as a macroblock sees it: a frame, or one field as a picture of its own.
struct ReferencePicture {
    const Picture* picture = nullptr;  // null: the stream never sent it
    int structure = kFrame;
    int id = -1;  // 4 * Picture::id + structure
    int poc = 0;
    bool longTerm = false;
    ReferencePlane plane[3];
    RowProgress* progress = nullptr;

    // Returns when so many of its rows are final; the first one is, whatever the number: what lies above is its copy.
    void await(int rows) const {
        if (!progress->complete()) progress->await(structure, std::clamp(rows, 1, plane[0].height));
    }
};

// How the macroblocks of the picture see references: all of a field picture and frame macroblocks of a frame as the
// lists stand; field macroblocks of an MBAFF frame see the fields of each frame, their own parity first (8.4.2.1).
enum ReferenceView : std::size_t { kAsListed = 0, kFromTopField = 1, kFromBottomField = 2 };

enum class WeightMode { Default, Explicit, Implicit };

struct SliceContext {
    const Slice* slice = nullptr;
    const SequenceParameterSet* sps = nullptr;
    const PictureParameterSet* pps = nullptr;
    Picture* picture = nullptr;
    Macroblock* mbs = nullptr;  // of the frame or field being decoded
    int mbCount = 0, widthInMbs = 0;
    bool mbaff = false;
    WeightMode weightMode = WeightMode::Default;
    int currPoc[3] = {};  // by ReferenceView: PicOrderCnt of the current picture or of its field
    int colPoc[2] = {};   // of the fields of the first picture of list 1
    std::array<std::array<std::array<ReferencePicture, 32>, 2>, 3> references;
    std::array<std::array<int, 2>, 3> referenceCount{};
    std::int16_t implicitWeight1[3][32][32];  // w1 by view, refIdxL0, refIdxL1 (8.4.2.3.1); w0 is 64 - w1

    void begin(const Slice& s);
};

// The macroblock being decoded.
struct CurrentMacroblock {
    Macroblock* mb = nullptr;
    int address = 0;
    bool bottom = false;  // second macroblock of an MBAFF pair
    int x = 0, y = 0;     // its first luma sample in the picture that its references are pictures of
    int step = 1;         // rows of the frame between its rows: 2 in field macroblocks and field pictures
    std::size_t view = kAsListed;
    std::uint8_t* plane[3] = {};
    int planeStep[3] = {};  // bytes

    int parity() const { return view == kFromBottomField ? kBottomField : kTopField; }  // of MBAFF field macroblocks
};

// DistScaleFactor (8.4.1.2.3, 8.4.2.3.1) of the picture order counts; pic1 and pic0 must differ.
int distScaleFactor(int current, int poc0, int poc1);

}  // namespace vekdec::h264
