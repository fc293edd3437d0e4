#include "vc1/loop_filter.h"

#include "vekvc.h"

namespace vekdec::vc1 {
namespace {

// Quarters of a block, as bits of Macroblock::corners.
enum Corner : unsigned { kTopLeft = 8, kTopRight = 4, kBottomLeft = 2, kBottomRight = 1 };

// Of an edge of two segments of 4 samples: those to be filtered, bit 0 the first one.
constexpr unsigned segments(bool first, bool second) { return (first ? 1u : 0u) | (second ? 2u : 0u); }

// The filter's view of one block.
struct BlockView {
    const Macroblock* mb;
    int block;

    unsigned corners() const { return mb->corners[block]; }
    bool intra() const { return mb->isIntra(block); }
    // Whether they move alike: neither is intra, and both have the same vector to the same field.
    bool movesAs(const BlockView& other) const {
        if (intra() || other.intra()) return false;
        if (block >= 4) return mb->chroma == other.mb->chroma && mb->chromaOtherField == other.mb->chromaOtherField;
        return mb->mv[block] == other.mb->mv[other.block] &&
               (mb->otherField >> block & 1) == (other.mb->otherField >> other.block & 1);
    }
};

inline unsigned edgeBelow(const BlockView& upper, const BlockView& lower) {
    if (!upper.movesAs(lower)) return 3;
    const unsigned u = upper.corners(), l = lower.corners();
    return segments((u & kBottomLeft) != 0 || (l & kTopLeft) != 0, (u & kBottomRight) != 0 || (l & kTopRight) != 0);
}

inline unsigned edgeRight(const BlockView& left, const BlockView& right) {
    if (!left.movesAs(right)) return 3;
    const unsigned l = left.corners(), r = right.corners();
    return segments((l & kTopRight) != 0 || (r & kTopLeft) != 0, (l & kBottomRight) != 0 || (r & kBottomLeft) != 0);
}

inline unsigned horizontalMiddle(const BlockView& b) {
    const Transform t = b.mb->transform[b.block];
    if (t != Transform::T8x4 && t != Transform::T4x4) return 0;
    const unsigned c = b.corners();
    return segments((c & (kTopLeft | kBottomLeft)) != 0, (c & (kTopRight | kBottomRight)) != 0);
}

inline unsigned verticalMiddle(const BlockView& b) {
    const Transform t = b.mb->transform[b.block];
    if (t != Transform::T4x8 && t != Transform::T4x4) return 0;
    const unsigned c = b.corners();
    return segments((c & (kTopLeft | kTopRight)) != 0, (c & (kBottomLeft | kBottomRight)) != 0);
}

class LoopFilter {
  public:
    explicit LoopFilter(const PictureContext& context)
        : c_(context), quant_(context.header->pquant), byBlocks_(context.header->type == PictureType::P) {}

    void run(int mbY) {
        if (c_.header->coding == Coding::FrameInterlaced) {
            if (mbY + 1 < c_.height) return;
            for (int plane = 0; plane < 3; ++plane) {
                for (const bool bottom : {false, true}) filterFieldLines(plane, c_.plane[plane].field(bottom));
            }
            return;
        }
        for (int plane = 0; plane < 3; ++plane) {
            const int blocks = plane == 0 ? 2 : 1, first = blocks * mbY, end = first + blocks;
            // Rows of edges in the order of dependence: the middles behind both edges of their blocks, vertical edges
            // behind the horizontal ones that change their samples.
            for (int row = first + 1; row <= end; ++row) {
                const bool there = row < end || (mbY + 1 < c_.height && !sliceBegins(mbY + 1));
                if (there) horizontalEdges(plane, row, false);
                if (byBlocks_) horizontalEdges(plane, row - 1, true);
            }
            verticalEdges(plane, first, false);
            if (byBlocks_) verticalEdges(plane, first, true);
        }
    }

  private:
    // The block at a column and row of the plane's blocks.
    BlockView view(int plane, int x, int y) const {
        if (plane != 0) return {&c_.mb(x, y), 3 + plane};
        return {&c_.mb(x >> 1, y >> 1), (x & 1) | (y & 1) << 1};
    }

    bool sliceBegins(int mbY) const { return c_.sliceBegins[static_cast<std::size_t>(mbY)] != 0; }

    void horizontalEdges(int plane, int row, bool middle) const {
        const vekapp::Plane& p = c_.plane[plane];
        const auto step = static_cast<Vek32s>(p.stride);
        const int y = 8 * row + (middle ? 4 : 0);
        const auto of = [&](int x) {
            if (!byBlocks_) return 3u;
            return middle ? horizontalMiddle(view(plane, x, row))
                          : edgeBelow(view(plane, x, row - 1), view(plane, x, row));
        };
        for (int mbX = 0; mbX < c_.width; ++mbX) {
            if (plane == 0) {
                const unsigned wanted = of(2 * mbX) | of(2 * mbX + 1) << 2;
                if (wanted != 0)
                    vekiFilterDeblockingLuma_HorEdge_VC1_8u_C1IR(p.at(16 * mbX, y), quant_, step,
                                                                 static_cast<Vek32s>(15 & ~wanted));
            } else if (const unsigned wanted = of(mbX); wanted != 0) {
                vekiFilterDeblockingChroma_HorEdge_VC1_8u_C1IR(p.at(8 * mbX, y), quant_, step,
                                                               static_cast<Vek32s>((3 & ~wanted) << 1));
            }
        }
    }

    // Of one row of macroblocks. All edges come before all middles, which lie at least 4 samples from the next edge.
    void verticalEdges(int plane, int row, bool middle) const {
        const vekapp::Plane& p = c_.plane[plane];
        const auto step = static_cast<Vek32s>(p.stride);
        const int columns = plane == 0 ? 2 * c_.width : c_.width;
        const auto of = [&](int x, int y) {
            if (!byBlocks_) return 3u;
            return middle ? verticalMiddle(view(plane, x, y)) : edgeRight(view(plane, x - 1, y), view(plane, x, y));
        };
        for (int x = middle ? 0 : 1; x < columns; ++x) {
            Vek8u* const at = p.at(8 * x + (middle ? 4 : 0), 8 * row);
            if (plane == 0) {
                const unsigned wanted = of(x, row) | of(x, row + 1) << 2;
                if (wanted != 0)
                    vekiFilterDeblockingLuma_VerEdge_VC1_8u_C1IR(at, quant_, step, static_cast<Vek32s>(15 & ~wanted));
            } else if (const unsigned wanted = of(x, row); wanted != 0) {
                vekiFilterDeblockingChroma_VerEdge_VC1_8u_C1IR(at, quant_, step,
                                                               static_cast<Vek32s>((3 & ~wanted) << 1));
            }
        }
    }

    // Frame-interlaced intra pictures: the lines of each field by themselves. Horizontal edges lie between macroblocks,
    // and inside those whose luma blocks lie one below the other; vertical edges are as in other pictures.
    void filterFieldLines(int plane, const vekapp::Plane& p) const {
        const auto step = static_cast<Vek32s>(p.stride);
        const bool luma = plane == 0;
        const int size = luma ? 16 : 8;  // of a macroblock; half as many lines of a field
        const auto horizontalEdge =
            luma ? vekiFilterDeblockingLuma_HorEdge_VC1_8u_C1IR : vekiFilterDeblockingChroma_HorEdge_VC1_8u_C1IR;
        for (int mbY = 0; mbY < c_.height; ++mbY)
            for (int mbX = 0; mbX < c_.width; ++mbX) {
                Vek8u* const at = p.at(size * mbX, size / 2 * mbY);
                if (mbY > 0 && !sliceBegins(mbY)) horizontalEdge(at, quant_, step, 0);
                if (luma && !c_.mb(mbX, mbY).fieldTransform) horizontalEdge(at + 4 * p.stride, quant_, step, 0);
            }
        // The exports filter two rows of macroblocks at once; the second half of the last one may not be there.
        for (int mbY = 0; mbY < c_.height; mbY += 2)
            for (int x = 8; x < size * c_.width; x += 8) {
                Vek8u* const at = p.at(x, size / 2 * mbY);
                const bool two = mbY + 1 < c_.height;
                if (luma)
                    vekiFilterDeblockingLuma_VerEdge_VC1_8u_C1IR(at, quant_, step, two ? 0 : 12);
                else
                    vekiFilterDeblockingChroma_VerEdge_VC1_8u_C1IR(at, quant_, step, two ? 0 : 4);
            }
    }

    const PictureContext& c_;
    const int quant_;
    const bool byBlocks_;  // P pictures choose by blocks; others filter all edges between blocks, and no middles
};

}  // namespace

void filterRow(const PictureContext& context, int mbY) { LoopFilter(context).run(mbY); }

}  // namespace vekdec::vc1
