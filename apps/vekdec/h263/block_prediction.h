// Prediction of rectangles from reference planes at half or quarter samples.
#pragma once

#include "frames/reference.h"
#include "h263/vectors.h"
#include "vekvc.h"

namespace vekdec::h263 {

// The kernels of one shape: they copy, or average with what stands there.
struct BlockShape {
    using Kernel = VekStatus (*)(const Vek8u*, Vek32s, Vek8u*, Vek32s, Vek32s, Vek32s);
    int width, height;
    Kernel half[2], quarter[2];  // copy, average
};
extern const BlockShape k16x16, k16x8, k8x8, k8x4;  // 8x4 has no quarter samples

// A reference plane, or one field of it. Where a vector leaves it the nearest row of the frame is taken, which may
// belong to the other field.
struct ReferencePlane {
    const vekapp::Plane* plane = nullptr;
    int firstRow = 0, rowDistance = 1;
};

enum class Precision { Half, Quarter };

// Predicts the block whose first sample is (x, y), counted in the rows of the frame or field, into `to`.
void predictBlock(const BlockShape& shape, Precision precision, ReferencePlane from, int x, int y, MotionVector mv,
                  int rounding, bool averaged, Vek8u* to, std::ptrdiff_t step);

}  // namespace vekdec::h263
