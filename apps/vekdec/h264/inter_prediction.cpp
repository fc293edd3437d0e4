#include "h264/inter_prediction.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <type_traits>

#include "h264/prefetch.h"
#include "vekvc.h"

namespace vekdec::h264 {
namespace {

template <typename Sample>
const Sample* sampleAt(const ReferencePlane& plane, int x, int y) {
    return reinterpret_cast<const Sample*>(plane.data + std::ptrdiff_t{plane.step} * y) + x;
}

template <typename Sample>
struct Block {
    Sample* data;
    int step;  // bytes
};

constexpr int kPatchStep = 32;  // samples; the widest patch is 16 + 5

// Copies the samples of columns x0 to x0 + w - 1 and rows y0 to y0 + h - 1, clamped to the plane (8.4.2.2), to `patch`.
template <typename Sample>
void copyClamped(const ReferencePlane& ref, int x0, int y0, int w, int h, Sample* patch) {
    const int left = std::clamp(-x0, 0, w), right = std::clamp(x0 + w - ref.width, 0, w);
    const int inside = w - left - right;
    for (int y = 0; y < h; ++y, patch += kPatchStep) {
        const auto* row = sampleAt<Sample>(ref, 0, std::clamp(y0 + y, 0, ref.height - 1));
        std::fill_n(patch, left, row[0]);
        if (inside > 0) std::memcpy(patch + left, row + x0 + left, static_cast<std::size_t>(inside) * sizeof(Sample));
        std::fill_n(patch + w - right, right, row[ref.width - 1]);
    }
}

// The samples that a block at (x, y) reads beside itself.
struct Margin {
    int before, behind;
};

enum class Component { Luma, Chroma };

// In a direction with that fraction.
template <Component component>
constexpr Margin marginOf(int fraction) {
    if (fraction == 0) return {0, 0};
    return component == Component::Luma ? Margin{2, 3} : Margin{0, 1};
}

template <Component component, typename Sample>
void interpolateInside(const Sample* src, int srcStep, const Block<Sample>& to, VekiSize size, int dx, int dy,
                       int bitDepth) {
    if constexpr (std::is_same_v<Sample, Vek8u>) {
        if constexpr (component == Component::Luma)
            vekiInterpolateLuma_H264_8u_C1R(src, srcStep, to.data, to.step, dx, dy, size);
        else
            vekiInterpolateChroma_H264_8u_C1R(src, srcStep, to.data, to.step, dx, dy, size);
    } else {
        if constexpr (component == Component::Luma)
            vekiInterpolateLuma_H264_16u_C1R(src, srcStep, to.data, to.step, dx, dy, size, bitDepth);
        else
            vekiInterpolateChroma_H264_16u_C1R(src, srcStep, to.data, to.step, dx, dy, size, bitDepth);
    }
}

// The same with `out` rows of the block above (`top`) or below the picture.
template <Component component, typename Sample>
void interpolateOutside(const Sample* src, int srcStep, const Block<Sample>& to, VekiSize size, int dx, int dy,
                        bool top, int out, int bitDepth) {
    if constexpr (std::is_same_v<Sample, Vek8u>) {
        const auto call = component == Component::Luma
                              ? (top ? vekiInterpolateLumaTop_H264_8u_C1R : vekiInterpolateLumaBottom_H264_8u_C1R)
                              : (top ? vekiInterpolateChromaTop_H264_8u_C1R : vekiInterpolateChromaBottom_H264_8u_C1R);
        call(src, srcStep, to.data, to.step, dx, dy, out, size);
    } else {
        const auto call =
            component == Component::Luma
                ? (top ? vekiInterpolateLumaTop_H264_16u_C1R : vekiInterpolateLumaBottom_H264_16u_C1R)
                : (top ? vekiInterpolateChromaTop_H264_16u_C1R : vekiInterpolateChromaBottom_H264_16u_C1R);
        call(src, srcStep, to.data, to.step, dx, dy, out, size, bitDepth);
    }
}

// A motion vector in the width of registers. Taken from one word, not from halves: g++ keeps such a half in memory and
// reads it back as a word, for which the processor waits until the store has left its buffers.
struct Vector {
    int x, y;
};
Vector vectorOf(MotionVector mv) {
    const auto word = std::bit_cast<std::uint32_t>(mv);
    constexpr bool xIsLow = std::endian::native == std::endian::little;
    const int low = static_cast<int>(word << 16) >> 16, high = static_cast<int>(word) >> 16;
    return xIsLow ? Vector{low, high} : Vector{high, low};
}

// Where in a reference plane a block comes from: its integer position and the fractions.
struct Position {
    int x, y, dx, dy;
};

// Interpolates a block that may read samples outside the reference.
template <Component component, typename Sample>
[[gnu::noinline]] void interpolateAtBorder(const ReferencePlane& ref, Position at, const Block<Sample>& to,
                                           VekiSize size, int bitDepth) {
    const Margin mx = marginOf<component>(at.dx), my = marginOf<component>(at.dy);
    constexpr Margin most = marginOf<component>(1);
    const int width = size.width, height = size.height;
    // Blocks further out see nothing but border samples: no need to go further.
    const int x = std::clamp(at.x, -width - most.behind, ref.width - 1 + most.before);
    const int y = std::clamp(at.y, -height - most.behind, ref.height - 1 + most.before);
    const bool above = y < my.before;
    const bool below = y + height + my.behind > ref.height;
    if (x - mx.before >= 0 && x + width + mx.behind <= ref.width && !(above && below)) {
        const Sample* src = sampleAt<Sample>(ref, x, y);
        if (above || below)
            interpolateOutside<component>(src, ref.step, to, size, at.dx, at.dy, above,
                                          above ? -y : y + height - ref.height, bitDepth);
        else
            interpolateInside<component>(src, ref.step, to, size, at.dx, at.dy, bitDepth);
        return;
    }
    alignas(32) Sample patch[kPatchStep * (16 + 5)];
    copyClamped(ref, x - most.before, y - most.before, width + most.before + most.behind,
                height + most.before + most.behind, patch);
    interpolateInside<component>(patch + most.before * (kPatchStep + 1), kPatchStep * static_cast<int>(sizeof(Sample)),
                                 to, size, at.dx, at.dy, bitDepth);
}

// A block with the largest margins lies inside: no fraction is asked, and a negative distance is a large one.
template <Component component>
bool liesInside(const ReferencePlane& ref, Position at, VekiSize size) {
    constexpr Margin most = marginOf<component>(1);
    const int right = ref.width - size.width - most.behind, bottom = ref.height - size.height - most.behind;
    return right >= most.before && bottom >= most.before &&
           static_cast<unsigned>(at.x - most.before) <= static_cast<unsigned>(right - most.before) &&
           static_cast<unsigned>(at.y - most.before) <= static_cast<unsigned>(bottom - most.before);
}

// Interpolates a block of luma, or the two of the chroma components, which move alike.
template <Component component, std::size_t first, std::size_t last, typename Sample>
void interpolate(const ReferencePlane (&refs)[3], Position at, const Block<Sample> (&to)[3], VekiSize size,
                 int bitDepth) {
    const ReferencePlane& ref = refs[first];
    if (liesInside<component>(ref, at, size)) [[likely]] {
        const std::ptrdiff_t offset = std::ptrdiff_t{ref.step} * at.y;
        for (std::size_t i = first; i <= last; ++i)
            interpolateInside<component>(reinterpret_cast<const Sample*>(refs[i].data + offset) + at.x, ref.step, to[i],
                                         size, at.dx, at.dy, bitDepth);
    } else {
        for (std::size_t i = first; i <= last; ++i) interpolateAtBorder<component>(refs[i], at, to[i], size, bitDepth);
    }
}

// ---- weighting, 8.4.2.3

struct BlockWeights {
    enum { Average, Uni, Bi, Implicit } kind;
    int logWD;
    int weight[2], offset[2];
};

template <typename Sample>
void weightOne(const Block<Sample>& b, VekiSize size, const BlockWeights& w, int list, int bitDepth) {
    if (w.kind != BlockWeights::Uni) return;
    if constexpr (std::is_same_v<Sample, Vek8u>) {
        vekiUniDirWeightBlock_H264_8u_C1IR(b.data, b.step, static_cast<Vek32u>(w.logWD), w.weight[list], w.offset[list],
                                           size);
    } else {
        const VekWeightParams16u p = {b.data,
                                      b.data,
                                      b.data,
                                      b.step,
                                      b.step,
                                      b.step,
                                      size.width,
                                      size.height,
                                      bitDepth,
                                      static_cast<Vek32u>(w.logWD),
                                      w.weight[list],
                                      w.offset[list] * (1 << (bitDepth - 8)),
                                      0,
                                      0};
        vekiUnidirWeight_H264_16u_IP2P1R(&p);
    }
}

// Joins the prediction in `to` with `second`, which has the same size.
template <typename Sample>
void weightTwo(const Block<Sample>& to, VekiSize size, const Sample* second, int secondStep, const BlockWeights& w,
               int bitDepth) {
    if constexpr (std::is_same_v<Sample, Vek8u>) {
        switch (w.kind) {
            case BlockWeights::Bi:
                vekiBiDirWeightBlock_H264_8u_P3P1R(to.data, second, to.data, to.step, secondStep, to.step,
                                                   static_cast<Vek32u>(w.logWD), w.weight[0], w.offset[0], w.weight[1],
                                                   w.offset[1], size);
                break;
            case BlockWeights::Implicit:
                vekiBiDirWeightBlockImplicit_H264_8u_P3P1R(to.data, second, to.data, to.step, secondStep, to.step,
                                                           w.weight[0], w.weight[1], size);
                break;
            default:
                vekiInterpolateBlock_H264_8u_P3P1R(to.data, second, to.data, size.width, size.height, to.step,
                                                   secondStep, to.step);
        }
    } else {
        const int scale = 1 << (bitDepth - 8);
        const VekWeightParams16u p = {to.data,     second,
                                      to.data,     to.step,
                                      secondStep,  to.step,
                                      size.width,  size.height,
                                      bitDepth,    static_cast<Vek32u>(w.logWD),
                                      w.weight[0], w.offset[0] * scale,
                                      w.weight[1], w.offset[1] * scale};
        switch (w.kind) {
            case BlockWeights::Bi:
                vekiBidirWeight_H264_16u_P2P1R(&p);
                break;
            case BlockWeights::Implicit:
                vekiBidirWeightImplicit_H264_16u_P2P1R(&p);
                break;
            default:
                vekiBidir_H264_16u_P2P1R(&p);
        }
    }
}

BlockWeights weightsOf(const SliceContext& context, std::size_t view, const int ref[2], std::size_t component) {
    BlockWeights w{BlockWeights::Average, 0, {}, {}};
    const bool both = ref[0] >= 0 && ref[1] >= 0;
    if (context.weightMode == WeightMode::Explicit) {
        const SliceHeader& header = context.slice->header;
        w.logWD = component == 0 ? header.lumaLog2WeightDenom : header.chromaLog2WeightDenom;
        bool plain = true;
        for (std::size_t list = 0; list < 2; ++list) {
            if (ref[list] < 0) continue;
            const Weight& x =
                header.weights[list][static_cast<std::size_t>(ref[list]) >> (view != kAsListed ? 1 : 0)][component];
            w.weight[list] = x.weight;
            w.offset[list] = x.offset;
            plain = plain && x.weight == 1 << w.logWD && x.offset == 0;
        }
        if (!plain) w.kind = both ? BlockWeights::Bi : BlockWeights::Uni;
    } else if (context.weightMode == WeightMode::Implicit && both) {
        w.weight[1] = context.implicitWeight1[view][ref[0]][ref[1]];
        w.weight[0] = 64 - w.weight[1];
        if (w.weight[0] != 32) w.kind = BlockWeights::Implicit;
    }
    return w;
}

template <typename Sample>
class Predictor {
  public:
    Predictor(const SliceContext& context, const CurrentMacroblock& current)
        : context_(context),
          current_(current),
          subY_(context.sps->chromaFormatIdc == 1 ? 1 : 0),
          planes_(context.sps->chromaFormatIdc == 0 ? 1 : 3) {}

    // Predicts the partition at (x, y) of size w x h, in units of 4 samples.
    void predict(int x, int y, int w, int h) const {
        const Macroblock& mb = *current_.mb;
        const int quadrant = (y >> 1) * 2 + (x >> 1);
        const int ref[2] = {mb.refIdx[0][quadrant], mb.refIdx[1][quadrant]};
        const Partition p{x, y, w, h, {4 * w, 4 * h}, {2 * w, 4 * h >> subY_}};
        Block<Sample> own[3];
        for (std::size_t i = 0; i < planes_; ++i) own[i] = block(i, x, y);
        if (ref[0] >= 0 && ref[1] >= 0) {
            predictTwice(p, ref, own);
            return;
        }
        const std::size_t list = ref[0] >= 0 ? 0 : 1;
        predictFrom(p, referenceOf(list, ref[list]), list, own);
        if (context_.weightMode != WeightMode::Explicit) return;
        for (std::size_t i = 0; i < planes_; ++i)
            weightOne(own[i], p.size(i), weightsOf(context_, current_.view, ref, i), static_cast<int>(list),
                      bitDepth(i));
    }

    // What macroblocks further right read if they move like this one.
    [[gnu::always_inline]] void prefetch() const {
        const Macroblock& mb = *current_.mb;
        for (std::size_t list = 0; list < 2; ++list) {
            if (mb.refIdx[list][0] < 0) continue;
            const ReferencePicture& reference =
                context_.references[current_.view][list][static_cast<std::size_t>(mb.refIdx[list][0])];
            const Vector mv = vectorOf(mb.mv[list][0]);
            prefetchIn<16>(reference.plane[0], current_.x + (mv.x >> 2), current_.y + (mv.y >> 2));
            if (planes_ == 1) continue;
            const int x = (current_.x >> 1) + (mv.x >> 3), y = (current_.y >> subY_) + (mv.y >> (2 + subY_));
            for (std::size_t i = 1; i < 3; ++i) prefetchIn<8>(reference.plane[i], x, y);
        }
    }

  private:
    // Sizes are built from numbers at hand, never read back in one piece from where they were stored in two.
    struct Partition {
        int x, y, w, h;
        VekiSize luma, chroma;
        VekiSize size(std::size_t component) const { return component == 0 ? luma : chroma; }
    };

    const ReferencePicture& referenceOf(std::size_t list, int ref) const {
        const ReferencePicture& reference = context_.references[current_.view][list][static_cast<std::size_t>(ref)];
        if (reference.picture == nullptr) throw BadSyntax("a reference picture is missing");
        return reference;
    }

    void predictFrom(const Partition& p, const ReferencePicture& reference, std::size_t list,
                     const Block<Sample> (&to)[3]) const {
        const Vector mv = vectorOf(current_.mb->mv[list][4 * p.y + p.x]);
        // The filter's rows, and those that chroma of the other parity may take further down.
        reference.await(current_.y + 4 * (p.y + p.h) + (mv.y >> 2) + 3 + 2);
        interpolate<Component::Luma, 0, 0>(reference.plane, lumaPosition(mv, 4 * p.x, 4 * p.y), to, p.luma,
                                           bitDepth(0));
        if (planes_ == 3)
            interpolate<Component::Chroma, 1, 2>(reference.plane, chromaPosition(reference, mv, 4 * p.x, 4 * p.y), to,
                                                 p.chroma, bitDepth(1));
    }

    [[gnu::noinline]] void predictTwice(const Partition& p, const int ref[2], const Block<Sample> (&own)[3]) const {
        const ReferencePicture &first = referenceOf(0, ref[0]), &second = referenceOf(1, ref[1]);
        alignas(32) Sample samples[3][16 * 16];
        constexpr int kStep = 16 * static_cast<int>(sizeof(Sample));
        predictFrom(p, first, 0, own);
        predictFrom(p, second, 1, {{samples[0], kStep}, {samples[1], kStep}, {samples[2], kStep}});
        BlockWeights weights{};
        for (std::size_t i = 0; i < planes_; ++i) {
            if (context_.weightMode == WeightMode::Explicit || (context_.weightMode == WeightMode::Implicit && i == 0))
                weights = weightsOf(context_, current_.view, ref, i);
            weightTwo(own[i], p.size(i), samples[i], kStep, weights, bitDepth(i));
        }
    }

    template <int width>
    [[gnu::always_inline]] static void prefetchIn(const ReferencePlane& plane, int x, int y) {
        const std::ptrdiff_t offset = std::ptrdiff_t{plane.step} * y + x * static_cast<std::ptrdiff_t>(sizeof(Sample));
        prefetchRight<width, Sample>(reinterpret_cast<std::uintptr_t>(plane.data) + static_cast<std::uintptr_t>(offset),
                                     plane.step, x);
    }
    int bitDepth(std::size_t component) const {
        return component == 0 ? context_.sps->bitDepthLuma : context_.sps->bitDepthChroma;
    }
    // Where samples of the picture lie that belong to 4x4 block (x, y) of the macroblock.
    Block<Sample> block(std::size_t component, int x, int y) const {
        const int sx = component == 0 ? 0 : 1, sy = component == 0 ? 0 : subY_;
        auto* row = current_.plane[component] + std::ptrdiff_t{current_.planeStep[component]} * (4 * y >> sy);
        return {reinterpret_cast<Sample*>(row) + (4 * x >> sx), current_.planeStep[component]};
    }
    // (x, y) is the partition's place in the macroblock, in luma samples.
    Position lumaPosition(Vector mv, int x, int y) const {
        return {current_.x + x + (mv.x >> 2), current_.y + y + (mv.y >> 2), mv.x & 3, mv.y & 3};
    }
    // 8.4.1.4: horizontally eighths of a chroma sample; vertically too in 4:2:0, quarters in 4:2:2.
    Position chromaPosition(const ReferencePicture& reference, Vector mv, int x, int y) const {
        x = (current_.x + x) / 2 + (mv.x >> 3);
        y += current_.y;
        if (subY_ == 0) return {x, y + (mv.y >> 2), mv.x & 7, (mv.y & 3) << 1};
        int mvY = mv.y;
        if (reference.structure != kFrame) {  // Table 8-9
            const int own = context_.mbaff ? current_.parity() : context_.slice->structure;
            if (own != reference.structure) mvY += own == kBottomField ? 2 : -2;
        }
        return {x, y / 2 + (mvY >> 3), mv.x & 7, mvY & 7};
    }

    const SliceContext& context_;
    const CurrentMacroblock& current_;
    int subY_;  // vertical shift from luma to chroma; the horizontal one is 1
    std::size_t planes_;
};

}  // namespace

template <typename Sample>
void predictInter(const SliceContext& context, const CurrentMacroblock& current) {
    const Predictor<Sample> predictor(context, current);
    predictor.prefetch();
    switch (current.mb->partitioning) {
        case Partitioning::Whole:
            predictor.predict(0, 0, 4, 4);
            return;
        case Partitioning::Rows16x8:
            predictor.predict(0, 0, 4, 2);
            predictor.predict(0, 2, 4, 2);
            return;
        case Partitioning::Columns8x16:
            predictor.predict(0, 0, 2, 4);
            predictor.predict(2, 0, 2, 4);
            return;
        default:
            break;
    }
    // Sub-macroblocks as far as their blocks move together.
    const Macroblock& mb = *current.mb;
    for (int quadrant = 0; quadrant < 4; ++quadrant) {
        const int x = quadrant % 2 * 2, y = quadrant / 2 * 2, i = 4 * y + x;
        const bool list1 = mb.refIdx[1][quadrant] >= 0;
        const auto same = [&](int a, int b) {
            return mb.mv[0][a] == mb.mv[0][b] && (!list1 || mb.mv[1][a] == mb.mv[1][b]);
        };
        const bool rows = same(i, i + 1) && same(i + 4, i + 5), columns = same(i, i + 4) && same(i + 1, i + 5);
        const int w = rows ? 2 : 1, h = columns ? 2 : 1;
        for (int dy = 0; dy < 2; dy += h)
            for (int dx = 0; dx < 2; dx += w) predictor.predict(x + dx, y + dy, w, h);
    }
}

template void predictInter<Vek8u>(const SliceContext&, const CurrentMacroblock&);
template void predictInter<Vek16u>(const SliceContext&, const CurrentMacroblock&);

}  // namespace vekdec::h264
