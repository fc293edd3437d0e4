#include "vc1/overlap.h"

namespace vekdec::vc1 {

void OverlapSmoother::begin(const PictureContext& context) {
    context_ = &context;
    const PictureHeader& header = *context.header;
    const bool coarse = header.pquant >= 9;
    selected_ = header.isIntra() && !coarse && header.conditionalOverlap == PictureHeader::Overlap::Selected;
    active_ = context.sequence->overlap && header.type != PictureType::B &&
              (coarse || (header.isIntra() && header.conditionalOverlap != PictureHeader::Overlap::None));
    if (!active_) return;
    for (int i = 0; i < 3; ++i) {
        Plane16& p = plane_[i];
        p.shift = i == 0 ? 1 : 0;
        p.first = i == 0 ? 0 : 3 + i;
        p.stride = (8 * context.width) << p.shift;
        p.memory.resize(static_cast<std::size_t>(p.stride * ((8 * context.height) << p.shift)));
    }
}

Vek16s* OverlapSmoother::block(int mbX, int mbY, int block) {
    if (block >= 4) return plane_[block - 3].at(8 * mbX, 8 * mbY);
    return plane_[0].at(16 * mbX + 8 * (block & 1), 16 * mbY + 8 * (block >> 1));
}

bool OverlapSmoother::isIntra(const Plane16& p, int blockX, int blockY) const {
    const Macroblock& mb = context_->mb(blockX >> p.shift, blockY >> p.shift);
    return mb.isIntra(p.shift == 0 ? p.first : (blockX & 1) | (blockY & 1) << 1);
}

bool OverlapSmoother::smooths(const Plane16& p, int blockX, int blockY) const {
    return isIntra(p, blockX, blockY) && (!selected_ || context_->mb(blockX >> p.shift, blockY >> p.shift).overlap);
}

// The edges left of blocks, kept in 16 bits (8.5, the arithmetic of vekiSmoothing..._VC1_16s8u).
void OverlapSmoother::smoothVerticalEdges(Plane16& p, int mbY) {
    const int columns = context_->width << p.shift;
    for (int by = mbY << p.shift; by < (mbY + 1) << p.shift; ++by)
        for (int bx = 1; bx < columns; ++bx) {
            if (!smooths(p, bx - 1, by) || !smooths(p, bx, by)) continue;
            Vek16s* x = p.at(8 * bx - 2, 8 * by);
            for (int row = 0; row < 8; ++row, x += p.stride) {
                const int r0 = 4 - (row & 1), r1 = 7 - r0;
                const int x0 = x[0], x1 = x[1], x2 = x[2], x3 = x[3];
                x[0] = static_cast<Vek16s>((7 * x0 + x3 + r0) >> 3);
                x[1] = static_cast<Vek16s>((-x0 + 7 * x1 + x2 + x3 + r1) >> 3);
                x[2] = static_cast<Vek16s>((x0 + x1 + 7 * x2 - x3 + r0) >> 3);
                x[3] = static_cast<Vek16s>((x0 + 7 * x3 + r1) >> 3);
            }
        }
}

void OverlapSmoother::smoothHorizontalEdges(Plane16& p, int index, int mbY) {
    const auto step = static_cast<Vek32s>(2 * p.stride);
    const vekapp::Plane& to = context_->plane[index];
    const auto dstStep = static_cast<Vek32s>(to.stride);
    const bool edgeAbove = mbY > 0 && context_->sliceBegins[static_cast<std::size_t>(mbY)] == 0;
    for (int by = (mbY << p.shift) + (edgeAbove ? 0 : 1); by < (mbY + 1) << p.shift; ++by) {
        for (int mbX = 0; mbX < context_->width; ++mbX) {
            const auto both = [&](int bx) { return smooths(p, bx, by - 1) && smooths(p, bx, by); };
            if (index == 0) {
                const int flags = (both(2 * mbX) ? 3 : 0) | (both(2 * mbX + 1) ? 12 : 0);
                if (flags != 0)
                    vekiSmoothingLuma_HorEdge_VC1_16s8u_C1R(p.at(16 * mbX, 8 * by - 2), step, p.at(16 * mbX, 8 * by),
                                                            step, to.at(16 * mbX, 8 * by), dstStep, flags);
            } else if (both(mbX)) {
                vekiSmoothingChroma_HorEdge_VC1_16s8u_C1R(p.at(8 * mbX, 8 * by - 2), step, p.at(8 * mbX, 8 * by), step,
                                                          to.at(8 * mbX, 8 * by), dstStep);
            }
        }
    }
}

// Frame-interlaced pictures have their vertical edges smoothed only, row by row of the frame.
void OverlapSmoother::smoothInterlaced(int mbY) {
    for (int mbX = 0; mbX < context_->width; ++mbX) {
        const Macroblock& mb = context_->mb(mbX, mbY);
        if (!smooths(plane_[0], 2 * mbX, 2 * mbY)) continue;
        const auto edge = [&](int x, int fields) {
            vekiSmoothingLuma_VerEdge_VC1_16s8u_C1R(plane_[0].at(x - 2, 16 * mbY), step(0), plane_[0].at(x, 16 * mbY),
                                                    step(0), context_->plane[0].at(x, 16 * mbY),
                                                    static_cast<Vek32s>(context_->plane[0].stride), fields, 15);
        };
        edge(16 * mbX + 8, mb.fieldTransform ? 3 : 0);
        if (mbX == 0 || !smooths(plane_[0], 2 * mbX - 1, 2 * mbY)) continue;
        edge(16 * mbX, (mb.fieldTransform ? 1 : 0) | (context_->mb(mbX - 1, mbY).fieldTransform ? 2 : 0));
        for (int i = 1; i < 3; ++i)
            vekiSmoothingChroma_VerEdge_VC1_16s8u_C1R(
                plane_[i].at(8 * mbX - 2, 8 * mbY), step(4), plane_[i].at(8 * mbX, 8 * mbY), step(4),
                context_->plane[i].at(8 * mbX, 8 * mbY), static_cast<Vek32s>(context_->plane[i].stride));
    }
}

void OverlapSmoother::write(Plane16& p, int index, int mbY) {
    static constexpr Vek8u kZeros[8] = {};
    const vekapp::Plane& to = context_->plane[index];
    const int columns = context_->width << p.shift;
    for (int by = mbY << p.shift; by < (mbY + 1) << p.shift; ++by)
        for (int bx = 0; bx < columns; ++bx) {
            if (!isIntra(p, bx, by)) continue;
            const bool fields = index == 0 && context_->mb(bx / 2, by / 2).fieldTransform;
            const int y = fields ? 16 * (by / 2) + (by & 1) : 8 * by;
            // Added to zeros: limited to 8 bits.
            vekiAdd8x8HP_16s8u_C1RS(p.at(8 * bx, 8 * by), static_cast<Vek32s>(2 * p.stride), kZeros, 0,
                                    to.at(8 * bx, y), static_cast<Vek32s>(fields ? 2 * to.stride : to.stride), 0, 0);
        }
}

void OverlapSmoother::finishRow(int mbY) {
    const bool interlaced = context_->header->coding == Coding::FrameInterlaced;
    for (int i = 0; i < 3; ++i) {
        if (!interlaced) smoothVerticalEdges(plane_[i], mbY);
        write(plane_[i], i, mbY);
        if (!interlaced) smoothHorizontalEdges(plane_[i], i, mbY);
    }
    if (interlaced) smoothInterlaced(mbY);
}

}  // namespace vekdec::vc1
