#include "h263/block_prediction.h"

namespace vekdec::h263 {

const BlockShape k16x16 = {16,
                           16,
                           {vekiCopy16x16HP_8u_C1R, vekiInterpolateAverage16x16_8u_C1IR},
                           {vekiCopy16x16QP_MPEG4_8u_C1R, vekiInterpolateAverage16x16QP_MPEG4_8u_C1IR}};
const BlockShape k16x8 = {16,
                          8,
                          {vekiCopy16x8HP_8u_C1R, vekiInterpolateAverage16x8_8u_C1IR},
                          {vekiCopy16x8QP_MPEG4_8u_C1R, vekiInterpolateAverage16x8QP_MPEG4_8u_C1IR}};
const BlockShape k8x8 = {8,
                         8,
                         {vekiCopy8x8HP_8u_C1R, vekiInterpolateAverage8x8_8u_C1IR},
                         {vekiCopy8x8QP_MPEG4_8u_C1R, vekiInterpolateAverage8x8QP_MPEG4_8u_C1IR}};
const BlockShape k8x4 = {8, 4, {vekiCopy8x4HP_8u_C1R, vekiInterpolateAverage8x4_8u_C1IR}, {nullptr, nullptr}};

void predictBlock(const BlockShape& shape, Precision precision, ReferencePlane from, int x, int y, MotionVector mv,
                  int rounding, bool averaged, Vek8u* to, std::ptrdiff_t step) {
    const int bits = precision == Precision::Quarter ? 2 : 1, mask = (1 << bits) - 1;
    const int dx = mv.x & mask, dy = mv.y & mask;
    vekapp::ReferenceScratch scratch;
    const vekapp::ReferenceBlock block =
        vekapp::referenceBlock(*from.plane, x + (mv.x >> bits), from.firstRow + (y + (mv.y >> bits)) * from.rowDistance,
                               shape.width + (dx != 0), shape.height + (dy != 0), scratch, from.rowDistance);
    const auto& kernels = precision == Precision::Quarter ? shape.quarter : shape.half;
    kernels[averaged](block.data, block.step, to, static_cast<Vek32s>(step), dx | dy << bits, rounding);
}

}  // namespace vekdec::h263
