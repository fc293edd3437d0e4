#include "avs/loop_filter.h"

#include <algorithm>
#include <cstdlib>

#include "avs/tables.h"
#include "vekvc.h"

namespace vekdec::avs {
namespace {

constexpr int kIntraStrength = 2;

bool apart(const Motion& p, const Motion& q) {
    return p.ref != q.ref || std::abs(p.mv.x - q.mv.x) >= 4 || std::abs(p.mv.y - q.mv.y) >= 4;
}

// Of the edge between two blocks of inter macroblocks. A direction that none of them uses is equal.
Vek8u strength(const Macroblock& p, int i, const Macroblock& q, int k) {
    return apart(p.motion[kForward][i], q.motion[kForward][k]) || apart(p.motion[kBackward][i], q.motion[kBackward][k])
               ? 1
               : 0;
}

// Strengths of a direction's outer and inner edge, two halves of each.
struct Strengths {
    Vek8u value[4] = {};

    bool any(int edge) const { return (value[2 * edge] | value[2 * edge + 1]) != 0; }
};

// Thresholds of the outer and the inner edge.
struct Thresholds {
    Vek8u alpha[2] = {}, beta[2] = {}, clip[2] = {};

    void set(int edge, int qp, const PictureHeader& header) {
        const int a = std::clamp(qp + header.alphaOffset, 0, 63), b = std::clamp(qp + header.betaOffset, 0, 63);
        alpha[edge] = kAlpha[a];
        beta[edge] = kBeta[b];
        clip[edge] = kClip[a];
    }
};

int mean(int a, int b) { return (a + b + 1) >> 1; }

class LoopFilter {
  public:
    explicit LoopFilter(const PictureContext& context) : c_(context) {}

    void run(int y) const {
        for (int x = 0; x < c_.width; ++x) filterMacroblock(x, y);
    }

  private:
    void filterMacroblock(int x, int y) const {
        const Macroblock* mb = c_.mbs + y * c_.width + x;
        if (mb->kind == MbKind::Lost) return;
        const auto neighbour = [](bool there, const Macroblock* other) {
            return there && other->kind != MbKind::Lost ? other : nullptr;
        };
        const bool atSlice = c_.sliceBegins[static_cast<std::size_t>(y)] != 0;
        // The blocks of a vertical edge lie one below the other, those of a horizontal one side by side.
        filterDirection(x, y, *mb, neighbour(x > 0, mb - 1), 1, 2, kVertical);
        filterDirection(x, y, *mb, neighbour(y > 0 && !atSlice, mb - c_.width), 2, 1, kHorizontal);
    }

    using Filter = VekStatus (*)(Vek8u*, Vek32s, const Vek8u*, const Vek8u*, const Vek8u*, const Vek8u*);
    struct Filters {
        Filter luma, chroma;
    };
    static constexpr Filters kVertical = {vekiFilterDeblockingLuma_VerEdge_AVS_8u_C1IR,
                                          vekiFilterDeblockingChroma_VerEdge_AVS_8u_C1IR};
    static constexpr Filters kHorizontal = {vekiFilterDeblockingLuma_HorEdge_AVS_8u_C1IR,
                                            vekiFilterDeblockingChroma_HorEdge_AVS_8u_C1IR};

    // `across`, `along`: from one block to the next over the edge, and beside it.
    void filterDirection(int x, int y, const Macroblock& mb, const Macroblock* other, int across, int along,
                         const Filters& filters) const {
        Strengths s;
        for (int half = 0; half < 2; ++half) {
            const int block = half * along;
            if (other != nullptr)
                s.value[half] =
                    mb.isIntra() || other->isIntra() ? kIntraStrength : strength(*other, block + across, mb, block);
            s.value[2 + half] = mb.isIntra() ? kIntraStrength : strength(mb, block, mb, block + across);
        }
        if (!s.any(0) && !s.any(1)) return;
        Thresholds t;
        if (s.any(0)) t.set(0, mean(mb.qp, other->qp), *c_.header);
        t.set(1, mb.qp, *c_.header);
        const vekapp::Plane& luma = c_.plane[0];
        filters.luma(luma.at(16 * x, 16 * y), static_cast<Vek32s>(luma.stride), t.alpha, t.beta, t.clip, s.value);
        if (!s.any(0)) return;
        t.set(0, mean(kChromaQp[mb.qp], kChromaQp[other->qp]), *c_.header);
        for (int i = 1; i < 3; ++i) {
            const vekapp::Plane& chroma = c_.plane[i];
            filters.chroma(chroma.at(8 * x, 8 * y), static_cast<Vek32s>(chroma.stride), t.alpha, t.beta, t.clip,
                           s.value);
        }
    }

    const PictureContext& c_;
};

}  // namespace

void filterRow(const PictureContext& context, int y) { LoopFilter(context).run(y); }

}  // namespace vekdec::avs
