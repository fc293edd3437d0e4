// Motion vector prediction (H.264 8.4.1.1, 8.4.1.3) from the blocks around a partition.
#pragma once

#include <algorithm>

#include "h264/neighbours.h"

namespace vekdec::h264 {

// Vectors and reference indices of the 4x4 blocks in and around the macroblock, as the macroblock sees them: those of
// MBAFF neighbours of the other kind are converted (8.4.1.3.2).
struct MotionCache {
    static constexpr int kStep = 8;
    static constexpr std::int8_t kNotAvailable = -2, kNotUsed = -1;
    std::int8_t ref[2][5 * kStep];
    MotionVector mv[2][5 * kStep];
    // Blocks at the left that lie above-left of rows 1 to 3; element 0 is not used.
    std::int8_t leftAboveRef[2][4];
    MotionVector leftAboveMv[2][4];
    bool leftMixed = false;

    static constexpr int at(int x, int y) { return (y + 1) * kStep + x + 1; }  // in units of 4 samples
    // Of a macroblock that moves as a whole the first block says all.
    void setWhole(int list, std::int8_t refIdx, MotionVector vector) {
        ref[list][at(0, 0)] = refIdx;
        mv[list][at(0, 0)] = vector;
    }
    void fill(int list, int x, int y, int w, int h, std::int8_t refIdx, MotionVector vector) {
        // Widths as constants: a row is one or two stores.
        for (int row = y; row < y + h; ++row) {
            const int first = at(x, row);
            if (w == 4)
                fillRow<4>(list, first, refIdx, vector);
            else if (w == 2)
                fillRow<2>(list, first, refIdx, vector);
            else
                fillRow<1>(list, first, refIdx, vector);
        }
    }

  private:
    template <int w>
    void fillRow(int list, int first, std::int8_t refIdx, MotionVector vector) {
        std::fill_n(ref[list] + first, w, refIdx);
        std::fill_n(mv[list] + first, w, vector);
    }
};

// mvd_l0 or mvd_l1, modulo 2^32: only broken streams leave the range of vectors.
struct MotionVectorDifference {
    std::uint32_t x = 0, y = 0;
};

// Gathers what lies around the macroblock, for `lists` lists, and marks its own blocks as not yet decoded.
void gatherMotion(const Neighbours& neighbours, bool field, int lists, MotionCache& cache);
// As much of it as one prediction for the whole macroblock asks for: A, B, C and D of its first block.
void gatherCorners(const Neighbours& neighbours, bool field, int lists, MotionCache& cache);

// The neighbour C of a partition, or D in its place: its reference index and vector.
struct NeighbourMotion {
    int ref;
    MotionVector mv;
};
NeighbourMotion aboveRightMotion(const MotionCache& cache, int list, int x, int y, int w);

enum class PartitionShape { Other, Wide16x8, Tall8x16 };  // those with directional prediction
MotionVector predictMotionVector(const MotionCache& cache, int list, int x, int y, int w, int refIdx,
                                 PartitionShape shape = PartitionShape::Other);

// The same of a macroblock with one partition.
MotionVector predictWhole(const MotionCache& cache, int list, int refIdx);

// The vector of P_Skip (8.4.1.1); its reference index is 0.
MotionVector predictSkipped(const MotionCache& cache);

}  // namespace vekdec::h264
