// What both forms of the deinterlacers share: the rows that they read around a row, and the state of the blend.
#ifndef VEKVC_PROCESSING_DEINTERLACE_ROWS_H
#define VEKVC_PROCESSING_DEINTERLACE_ROWS_H

#include "core/arith.h"
#include "core/memory.h"
#include "core/state.h"
#include "vekvc/processing_deinterlace.h"

// The table holds the 256 weights, Vek16u each. The fast form divides by itself, with the limits.
struct VekDeinterlaceBlendState : vekvc::AllocatedState {
    Vek32s low = 0, high = 0;

    const Vek16u* weights() const { return static_cast<const Vek16u*>(table); }
};

namespace vekvc {

// The nearest rows of the other parity around row y of h rows: one and three rows away. A row beyond the border is
// replaced by the one on the other side; the only row of a picture is its own neighbour.
struct NeighbourRows {
    Vek32s above, below, above3, below3;

    constexpr NeighbourRows(Vek32s y, Vek32s h)
        : above(y > 0   ? y - 1
                : h > 1 ? 1
                        : 0),
          below(y < h - 1 ? y + 1 : above),
          above3(y >= 3 ? y - 3 : above),
          below3(y < h - 3 ? y + 3 : below) {}
};

// The two fields of the other parity around the kept field of pCur in time: those of pPrev and pCur if the kept field
// is the first of its frame, else those of pCur and pNext.
struct MotionFrames {
    Block<Vek8u> previous, current, next;  // K0, K1, K2
    bool keepsFirst;

    const Block<Vek8u>& before() const { return keepsFirst ? previous : current; }
    const Block<Vek8u>& after() const { return keepsFirst ? current : next; }
};

// The threshold of the edge predictor inside the motion-adaptive deinterlacer.
inline constexpr Vek32s kMotionEdgeThreshold = 8;

}  // namespace vekvc

#endif
