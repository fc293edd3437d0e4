#include "avs/prediction.h"

#include "vekvc.h"

namespace vekdec::avs {
namespace {

using vekapp::Plane;

// A rectangle of a plane.
struct Place {
    int x, y;
    VekiSize size;
};

// Samples to write.
struct Samples {
    Vek8u* data;
    Vek32s step;
};

using Interpolate = VekStatus (*)(const Vek8u*, Vek32s, Vek8u*, Vek32s, Vek32s, Vek32s);

// By size: bit 0 the larger width, bit 1 the larger height.
constexpr Interpolate kLuma[4] = {vekiInterpolateLuma8x8_AVS_8u_C1R, vekiInterpolateLuma16x8_AVS_8u_C1R,
                                  vekiInterpolateLuma8x16_AVS_8u_C1R, vekiInterpolateLuma16x16_AVS_8u_C1R};
constexpr Interpolate kChroma[4] = {vekiInterpolateChroma4x4_AVS_8u_C1R, vekiInterpolateChroma8x4_AVS_8u_C1R,
                                    vekiInterpolateChroma4x8_AVS_8u_C1R, vekiInterpolateChroma8x8_AVS_8u_C1R};

// Where a block moves to, with the samples that its interpolation may read around it, lies inside the plane.
bool inside(const Plane& plane, int x, int y, VekiSize size, int before, int behind) {
    return x >= before && y >= before && x + size.width + behind <= plane.width &&
           y + size.height + behind <= plane.height;
}

VekAVSInterpolationParams8u clampedBlock(const Plane& from, const Place& place, MotionVector mv) {
    VekAVSInterpolationParams8u params{};
    params.pSrcPlane[0] = from.data;
    params.srcPlaneStep = static_cast<Vek32s>(from.stride);
    params.planeSize = {from.width, from.height};
    params.blockSize = place.size;
    params.blockX = place.x;
    params.blockY = place.y;
    params.mvX = mv.x;
    params.mvY = mv.y;
    return params;
}

void predictLuma(const Plane& from, const Place& place, MotionVector mv, const Samples& to) {
    const int x = place.x + (mv.x >> 2), y = place.y + (mv.y >> 2);
    if (inside(from, x, y, place.size, 2, 3)) [[likely]] {
        const int form = (place.size.width == 16 ? 1 : 0) | (place.size.height == 16 ? 2 : 0);
        kLuma[form](from.at(x, y), static_cast<Vek32s>(from.stride), to.data, to.step, mv.x & 3, mv.y & 3);
        return;
    }
    VekAVSInterpolationParams8u params = clampedBlock(from, place, mv);
    params.pDstBlock[0] = to.data;
    params.dstBlockStep = to.step;
    vekiInterpolateLumaBlock_AVS_8u_P1R(&params);
}

// `from`, `to`: Cb, Cr.
void predictChroma(const Plane* from, const Place& place, MotionVector mv, const Samples* to) {
    const int x = place.x + (mv.x >> 3), y = place.y + (mv.y >> 3);
    if (inside(from[0], x, y, place.size, 0, 1)) [[likely]] {
        const int form = (place.size.width == 8 ? 1 : 0) | (place.size.height == 8 ? 2 : 0);
        for (int i = 0; i < 2; ++i)
            kChroma[form](from[i].at(x, y), static_cast<Vek32s>(from[i].stride), to[i].data, to[i].step, mv.x & 7,
                          mv.y & 7);
        return;
    }
    VekAVSInterpolationParams8u params = clampedBlock(from[0], place, mv);
    params.pSrcPlane[1] = from[1].data;
    for (int i = 0; i < 2; ++i) params.pDstBlock[i] = to[i].data;
    params.dstBlockStep = to[0].step;
    vekiInterpolateChromaBlock_AVS_8u_P2R(&params);
}

class BlockPredictor {
  public:
    BlockPredictor(const PictureContext& context, const Macroblock& mb, const Weight* weights)
        : context_(context), mb_(mb), weights_(weights) {}

    // The blocks from `block` on that move as it does: `luma` is where they lie.
    void predict(int block, const Place& luma) {
        const Place chroma{luma.x / 2, luma.y / 2, {luma.size.width / 2, luma.size.height / 2}};
        const Samples to[3] = {at(0, luma), at(1, chroma), at(2, chroma)};
        const Motion &forward = mb_.motion[kForward][block], &backward = mb_.motion[kBackward][block];
        if (!forward.used() || !backward.used()) {
            const Motion& motion = forward.used() ? forward : backward;
            predictFrom(motion, luma, chroma, to);
            if (weights_ != nullptr) weight(weights_[motion.ref], luma.size, chroma.size, to);
            return;
        }
        alignas(32) Vek8u other[16 * 16 + 2 * 8 * 8];
        const Samples second[3] = {{other, 16}, {other + 256, 8}, {other + 320, 8}};
        predictFrom(forward, luma, chroma, to);
        predictFrom(backward, luma, chroma, second);
        for (int i = 0; i < 3; ++i) {
            const VekiSize size = i == 0 ? luma.size : chroma.size;
            if (weights_ == nullptr) {
                vekiInterpolateBlock_AVS_8u_P3P1R(to[i].data, to[i].step, second[i].data, second[i].step, to[i].data,
                                                  to[i].step, size);
                continue;
            }
            const Weight &w = weights_[forward.ref], &v = weights_[backward.ref];
            vekiBiDirWeightBlock_AVS_8u_P3P1R(to[i].data, to[i].step, second[i].data, second[i].step, to[i].data,
                                              to[i].step, scale(w, i), shift(w, i), scale(v, i), shift(v, i), size);
        }
    }

  private:
    static Vek32s scale(const Weight& w, int plane) { return plane == 0 ? w.lumaScale : w.chromaScale; }
    static Vek32s shift(const Weight& w, int plane) { return plane == 0 ? w.lumaShift : w.chromaShift; }

    Samples at(int plane, const Place& place) const {
        const Plane& p = context_.plane[plane];
        return {p.at(place.x, place.y), static_cast<Vek32s>(p.stride)};
    }

    void predictFrom(const Motion& motion, const Place& luma, const Place& chroma, const Samples* to) const {
        const Reference& reference = context_.reference[motion.ref];
        // Luma reads three rows behind a fraction, chroma one, which is two of luma.
        if (reference.progress != nullptr)
            reference.await(luma.y + luma.size.height + (motion.mv.y >> 2) + ((motion.mv.y & 7) != 0 ? 3 : 0));
        predictLuma(reference.plane[0], luma, motion.mv, to[0]);
        predictChroma(reference.plane + 1, chroma, motion.mv, to + 1);
    }

    static void weight(const Weight& w, VekiSize luma, VekiSize chroma, const Samples* to) {
        for (int i = 0; i < 3; ++i)
            vekiUniDirWeightBlock_AVS_8u_C1IR(to[i].data, to[i].step, scale(w, i), shift(w, i), i == 0 ? luma : chroma);
    }

    const PictureContext& context_;
    const Macroblock& mb_;
    const Weight* weights_;
};

}  // namespace

void predictMacroblock(const PictureContext& context, int mbX, int mbY, const Macroblock& mb, const Weight* weights) {
    BlockPredictor predictor(context, mb, weights);
    const auto alike = [&](int i, int k) {
        return mb.motion[kForward][i] == mb.motion[kForward][k] && mb.motion[kBackward][i] == mb.motion[kBackward][k];
    };
    // Blocks that move alike are predicted together, whatever they were sent as.
    const bool rows = alike(0, 1) && alike(2, 3), columns = alike(0, 2) && alike(1, 3);
    const int width = rows ? 16 : 8, height = columns ? 16 : 8;
    for (int y = 0; y < 16; y += height)
        for (int x = 0; x < 16; x += width)
            predictor.predict(y / 8 * 2 + x / 8, {16 * mbX + x, 16 * mbY + y, {width, height}});
}

}  // namespace vekdec::avs
