// Direct prediction of B macroblocks (H.264 8.4.1.2): motion from the neighbours (spatial) or from the co-located
// macroblock (temporal).
#pragma once

#include "h264/motion_vector_prediction.h"

namespace vekdec::h264 {

// Asks the caches for the co-located macroblock of a later address: pictures' macroblocks do not stay in the second
// level.
void prefetchColocated(const SliceContext& context, int address);

// Derives the motion of direct quadrants. One object serves one macroblock: what its quadrants share is found once.
class DirectPrediction {
  public:
    DirectPrediction(const SliceContext& context, const CurrentMacroblock& current);

    // To be called before any of the macroblock's own motion is in the cache.
    void prepare(const MotionCache& cache);
    // Derives the quadrant (0 to 3) into the cache. Throws BadSyntax where a reference is missing.
    void derive(int quadrant, MotionCache& cache) const;
    // Derives all four; returns whether they move as one.
    bool deriveAll(MotionCache& cache) const;

  private:
    enum class VertMvScale { OneToOne, FrameToField, FieldToFrame };
    struct Colocated {
        int refIdx;  // -1: intra
        int refPicId;
        MotionVector mv;
    };
    void findColocated();
    void awaitColocated(const ReferencePicture& listed) const;
    Colocated colocated(int x, int y) const;
    bool colZero(int x, int y) const;
    bool colocatedCounts() const;
    MotionVector spatialVector(int list, bool still) const {
        return still && spatialRef_[list] == 0 ? MotionVector{} : spatialMv_[list];
    }
    void setSpatial(int x, int y, int size, bool still, MotionCache& cache) const;
    void deriveSpatial(int quadrant, MotionCache& cache) const;
    void deriveTemporal(int quadrant, MotionCache& cache) const;
    int mapColToList0(int refPicId) const;

    const SliceContext& context_;
    const CurrentMacroblock& current_;
    // The co-located macroblock: one for the upper and one for the lower half (they differ from a frame to a field),
    // and the row of its blocks for each of ours.
    const Macroblock* colMb_[2] = {};
    int colRow_[4] = {};
    VertMvScale vertMvScale_ = VertMvScale::OneToOne;
    int spatialRef_[2] = {-1, -1};
    MotionVector spatialMv_[2];
};

}  // namespace vekdec::h264
