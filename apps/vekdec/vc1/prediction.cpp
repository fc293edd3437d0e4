#include "vc1/prediction.h"

#include <algorithm>

#include "vekvc.h"

namespace vekdec::vc1 {
namespace {

using vekapp::Plane;

struct Range {
    int least, most;
};

// How far outside the reference a block may begin; farther ones see the same samples.
struct Limits {
    Range x, y;
};

Limits lumaLimits(const PictureContext& c) {
    if (!c.sequence->advanced()) return {{-16, 16 * c.width}, {-16, 16 * c.height}};
    return {{-17, c.codedWidth}, {-18, c.codedHeight + 1}};
}

Limits chromaLimits(const PictureContext& c) {
    if (!c.sequence->advanced()) return {{-8, 8 * c.width}, {-8, 8 * c.height}};
    return {{-8, c.codedWidth / 2}, {-8, c.codedHeight / 2}};
}

// The block of `size` samples of plane `index` at (x, y) moved by mv, to `to`. The reference's map is applied to its
// samples first.
void predictBlock(const Reference& reference, int index, const Limits& limits, int x, int y, int size, MotionVector mv,
                  bool bicubic, bool rounding, Vek8u* to, std::ptrdiff_t toStride) {
    const Plane& from = reference.plane[index];
    const std::uint8_t* map = reference.map == nullptr ? nullptr
                              : index == 0             ? reference.map->luma
                                                       : reference.map->chroma;
    x = std::clamp(x + (mv.x >> 2), limits.x.least, limits.x.most);
    y = std::clamp(y + (mv.y >> 2), limits.y.least, limits.y.most);
    const int dx = mv.x & 3, dy = mv.y & 3;
    if (reference.progress != nullptr) {
        const int endRow = y + size + (dy != 0 || map != nullptr ? 2 : 0);  // of what is read
        reference.await(index == 0 ? endRow : 2 * endRow);
    }
    if (map != nullptr) {
        VekVC1InterpolationBlockParams p{};
        p.pSrc = from.data;
        p.srcStep = static_cast<Vek32s>(from.stride);
        p.pDst = to;
        p.dstStep = static_cast<Vek32s>(toStride);
        p.pLUTTop = p.pLUTBottom = map;
        p.sizeFrame = {from.width, from.height};
        p.sizeBlock = {size, size};
        p.x = x;
        p.y = y;
        p.dx = dx;
        p.dy = dy;
        p.roundControl = rounding;
        (bicubic ? vekiInterpolateICBicubicBlock_VC1_8u_C1R : vekiInterpolateICBilinearBlock_VC1_8u_C1R)(&p);
        return;
    }
    // Bicubic reads one sample before the block and two behind, bilinear one behind, across a fraction.
    const int before = bicubic ? 1 : 0, more = bicubic ? 3 : 1;
    const int left = dx != 0 ? before : 0, top = dy != 0 ? before : 0;
    vekapp::ReferenceScratch scratch;
    const vekapp::ReferenceBlock block = vekapp::referenceBlock(from, x - left, y - top, size + (dx != 0 ? more : 0),
                                                                size + (dy != 0 ? more : 0), scratch);
    VekVC1InterpolationParams p;
    p.pSrc = block.data + top * std::ptrdiff_t{block.step} + left;
    p.srcStep = block.step;
    p.pDst = to;
    p.dstStep = static_cast<Vek32s>(toStride);
    p.dx = dx;
    p.dy = dy;
    p.roiSize = {size, size};
    p.roundControl = rounding;
    (bicubic ? vekiInterpolateQPBicubic_VC1_8u_C1R : vekiInterpolateQPBilinear_VC1_8u_C1R)(&p);
}

std::int16_t halved(int v) { return static_cast<std::int16_t>((v + ((v & 3) == 3)) >> 1); }
std::int16_t towardZeroToEven(int v) { return static_cast<std::int16_t>(v - v % 2); }

}  // namespace

MotionVector chromaVector(MotionVector luma) { return {halved(luma.x), halved(luma.y)}; }

MotionVector fastChromaVector(MotionVector c) { return {towardZeroToEven(c.x), towardZeroToEven(c.y)}; }

void predictLuma(const PictureContext& context, const Reference& reference, int x, int y, int size, MotionVector mv,
                 const Plane& to) {
    predictBlock(reference, 0, lumaLimits(context), x, y, size, mv, !context.header->bilinear(), context.rounding,
                 to.at(x, y), to.stride);
}

void predictChroma(const PictureContext& context, const Reference& reference, int x, int y, MotionVector mv,
                   const Plane* to) {
    const Limits limits = chromaLimits(context);
    for (int i = 1; i < 3; ++i)
        predictBlock(reference, i, limits, x, y, 8, mv, false, context.rounding, to[i].at(x, y), to[i].stride);
}

void averageMacroblock(const PictureContext& context, const Reference& reference, int mbX, int mbY, MotionVector luma,
                       MotionVector chroma) {
    alignas(16) Vek8u block[256];
    predictBlock(reference, 0, lumaLimits(context), 16 * mbX, 16 * mbY, 16, luma, !context.header->bilinear(),
                 context.rounding, block, 16);
    vekiAverage16x16_8u_C1IR(block, 16, context.plane[0].at(16 * mbX, 16 * mbY),
                             static_cast<Vek32s>(context.plane[0].stride));
    for (int i = 1; i < 3; ++i) {
        predictBlock(reference, i, chromaLimits(context), 8 * mbX, 8 * mbY, 8, chroma, false, context.rounding, block,
                     16);
        vekiAverage8x8_8u_C1IR(block, 16, context.plane[i].at(8 * mbX, 8 * mbY),
                               static_cast<Vek32s>(context.plane[i].stride));
    }
}

}  // namespace vekdec::vc1
