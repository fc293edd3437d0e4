// Overlap smoothing across the edges of intra blocks (SMPTE 421M 8.5).
#pragma once

#include <vector>

#include "vc1/picture.h"
#include "vekvc.h"

namespace vekdec::vc1 {

// The samples of intra blocks before they are limited to 8 bits, of a whole frame or field. Both directions of
// smoothing work on these: where they meet, in the corners of blocks, a first pass limited to 8 bits would lose what
// the second one needs.
class OverlapSmoother {
  public:
    void begin(const PictureContext& context);
    bool active() const { return active_; }
    // Where the 8x8 samples of the block go; steps are in bytes.
    Vek16s* block(int mbX, int mbY, int block);
    Vek32s step(int block) const { return static_cast<Vek32s>(plane_[block < 4 ? 0 : block - 3].stride * 2); }
    // Smooths and writes the samples of the intra blocks of a row of macroblocks into the picture, and smooths the edge
    // to the row above it. Rows come from the top.
    void finishRow(int mbY);

  private:
    struct Plane16 {
        std::vector<Vek16s> memory;
        std::ptrdiff_t stride = 0;  // values
        int shift = 0;              // blocks to macroblocks
        int first = 0;              // block of the macroblock
        Vek16s* at(int x, int y) { return memory.data() + stride * y + x; }
    };
    bool smooths(const Plane16& plane, int blockX, int blockY) const;
    bool isIntra(const Plane16& plane, int blockX, int blockY) const;
    void smoothVerticalEdges(Plane16& plane, int mbY);
    void smoothHorizontalEdges(Plane16& plane, int index, int mbY);
    void smoothInterlaced(int mbY);
    void write(Plane16& plane, int index, int mbY);

    const PictureContext* context_ = nullptr;
    bool active_ = false, selected_ = false;
    Plane16 plane_[3];
};

}  // namespace vekdec::vc1
