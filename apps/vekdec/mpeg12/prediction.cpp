#include "mpeg12/prediction.h"

#include "vekvc.h"

namespace vekdec::mpeg12 {
namespace {

using vekapp::Plane;

// One rectangle of a plane; `averaged` with what stands there (7.6.7.1).
template <int width>
void predictPlane(const Plane& to, const Plane& from, int x, int y, int height, MotionVector mv, bool averaged) {
    vekapp::ReferenceScratch scratch;
    const vekapp::ReferenceBlock block =
        vekapp::referenceBlock(from, std::int64_t{x} + (mv.x >> 1), std::int64_t{y} + (mv.y >> 1), width + (mv.x & 1),
                               height + (mv.y & 1), scratch);
    const Vek32s acc = (mv.x & 1) | (mv.y & 1) << 1;
    Vek8u* const dst = to.at(x, y);
    const auto step = static_cast<Vek32s>(to.stride);
    if constexpr (width == 16) {
        if (height == 16)
            (averaged ? vekiInterpolateAverage16x16_8u_C1IR : vekiCopy16x16HP_8u_C1R)(block.data, block.step, dst, step,
                                                                                      acc, 0);
        else
            (averaged ? vekiInterpolateAverage16x8_8u_C1IR : vekiCopy16x8HP_8u_C1R)(block.data, block.step, dst, step,
                                                                                    acc, 0);
    } else {
        if (height >= 8)
            (averaged ? vekiInterpolateAverage8x8_8u_C1IR : vekiCopy8x8HP_8u_C1R)(block.data, block.step, dst, step,
                                                                                  acc, 0);
        else
            (averaged ? vekiInterpolateAverage8x4_8u_C1IR : vekiCopy8x4HP_8u_C1R)(block.data, block.step, dst, step,
                                                                                  acc, 0);
        if (height == 16) {
            const Vek8u* below = block.data + 8 * std::ptrdiff_t{block.step};
            (averaged ? vekiInterpolateAverage8x8_8u_C1IR : vekiCopy8x8HP_8u_C1R)(below, block.step,
                                                                                  dst + 8 * to.stride, step, acc, 0);
        }
    }
}

// Luma and chroma of 16 x `height` luma samples from row y on (in luma rows of the planes); 7.6.3.7 for the chroma
// vector.
inline void predictBlock(vekapp::Chroma chroma, const PlaneSet& to, const PlaneSet& from, int x, int y, int height,
                         MotionVector mv, bool averaged) {
    from.await(y + height + 2 * ((mv.y + 3) >> 2));  // up to whole rows of chroma
    predictPlane<16>(to.plane[0], from.plane[0], x, y, height, mv, averaged);
    const bool halved = chroma == vekapp::Chroma::C420;
    const MotionVector c{mv.x / 2, halved ? mv.y / 2 : mv.y};
    for (int i = 1; i < 3; ++i)
        predictPlane<8>(to.plane[i], from.plane[i], x / 2, halved ? y / 2 : y, halved ? height / 2 : height, c,
                        averaged);
}

// The vector to the field of the other parity (7.6.3.6): the same motion over m half intervals of two, the correction
// that the stream sends, and the half line between the parities.
MotionVector oppositeVector(MotionVector v, int m, int e, const int (&dmvector)[2]) {
    const auto half = [](int value) { return (value + (value > 0)) >> 1; };  // rounds away from 0
    return {half(v.x * m) + dmvector[0], half(v.y * m) + e + dmvector[1]};
}

void predictDualPrime(const PictureContext& context, int x, int y, const Vectors& vectors) {
    const vekapp::Chroma chroma = context.sequence->chroma;
    const MotionVector v = vectors.mv[0][0];
    const PictureViews& reference = context.reference[0];
    if (!context.isFrame()) {
        const int parity = context.parity();
        const MotionVector w = oppositeVector(v, 1, parity == 0 ? -1 : 1, vectors.dmvector);
        predictBlock(chroma, context.target(), reference.field[parity], x, y, 16, v, false);
        predictBlock(chroma, context.target(), reference.field[1 - parity], x, y, 16, w, true);
        return;
    }
    for (int parity = 0; parity < 2; ++parity) {
        const bool first = (parity == 0) == context.header->topFieldFirst;
        const MotionVector w = oppositeVector(v, first ? 1 : 3, parity == 0 ? -1 : 1, vectors.dmvector);
        predictBlock(chroma, context.current.field[parity], reference.field[parity], x, y / 2, 8, v, false);
        predictBlock(chroma, context.current.field[parity], reference.field[1 - parity], x, y / 2, 8, w, true);
    }
}

}  // namespace

void predictMacroblock(const PictureContext& context, int mbX, int mbY, MotionType motion, const Vectors& vectors,
                       const bool (&uses)[2]) {
    const int x = 16 * mbX, y = 16 * mbY;
    if (motion == MotionType::DualPrime) {
        predictDualPrime(context, x, y, vectors);
        return;
    }
    const vekapp::Chroma chroma = context.sequence->chroma;
    bool averaged = false;
    for (std::size_t s = 0; s < 2; ++s) {
        if (!uses[s]) continue;
        const PictureViews& reference = context.reference[s];
        const auto fieldOf = [&](std::size_t r) -> const PlaneSet& {
            return reference.field[vectors.fieldSelect[r][s]];
        };
        if (motion == MotionType::Frame)
            predictBlock(chroma, context.current.frame, reference.frame, x, y, 16, vectors.mv[0][s], averaged);
        else if (motion == MotionType::Field && !context.isFrame())
            predictBlock(chroma, context.target(), fieldOf(0), x, y, 16, vectors.mv[0][s], averaged);
        else
            for (std::size_t r = 0; r < 2; ++r) {
                const bool halves = motion == MotionType::TwoHalves;
                const PlaneSet& to = halves ? context.target() : context.current.field[r];
                predictBlock(chroma, to, fieldOf(r), x, halves ? y + 8 * static_cast<int>(r) : y / 2, 8,
                             vectors.mv[r][s], averaged);
            }
        averaged = true;
    }
}

}  // namespace vekdec::mpeg12
