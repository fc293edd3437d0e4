#include "mpeg4/prediction.h"

#include <algorithm>
#include <cstdlib>

namespace vekdec::mpeg4 {
namespace {

using h263::BlockShape;
using h263::Precision;

// The prediction of one macroblock from one direction.
struct Direction {
    const VopContext& context;
    int mbX, mbY;
    const PlaneSet& reference;
    bool averaged;

    int rounding() const { return context.vop->rounding; }
    bool quarter() const { return context.layer->quarterSample; }
    Precision precision() const { return quarter() ? Precision::Quarter : Precision::Half; }

    void luma(const BlockShape& shape, int x, int y, MotionVector mv) const {
        const vekapp::Plane& to = context.picture->plane[0];
        x += 16 * mbX;
        y += 16 * mbY;
        h263::predictBlock(shape, precision(), {&reference.plane[0]}, x, y, mv, rounding(), averaged, to.at(x, y),
                           to.stride);
    }
    void chroma(MotionVector mv) const {
        const int x = 8 * mbX, y = 8 * mbY;
        for (int i = 1; i < 3; ++i) {
            const vekapp::Plane& to = context.picture->plane[i];
            h263::predictBlock(h263::k8x8, Precision::Half, {&reference.plane[i]}, x, y, mv, rounding(), averaged,
                               to.at(x, y), to.stride);
        }
    }
    // The field `parity` of the macroblock from the field `from` of the reference.
    void field(int parity, int from, MotionVector mv) const {
        // 7.6.2.1, with quarter samples of a field's rows rounded down.
        const MotionVector chromaMv =
            quarter() ? MotionVector{h263::chromaComponent(mv.x / 2), h263::chromaComponent(mv.y >> 1)}
                      : MotionVector{h263::chromaComponent(mv.x), h263::chromaComponent(mv.y)};
        for (int i = 0; i < 3; ++i) {
            const vekapp::Plane& to = context.picture->plane[i];
            const int size = i == 0 ? 16 : 8, x = size * mbX, y = size / 2 * mbY;
            h263::predictBlock(i == 0 ? h263::k16x8 : h263::k8x4, i == 0 ? precision() : Precision::Half,
                               {&reference.plane[i], from, 2}, x, y, i == 0 ? mv : chromaMv, rounding(), averaged,
                               to.at(x, 2 * y + parity), 2 * to.stride);
        }
    }
};

void predictGlobal(const VopContext& context, int mbX, int mbY) {
    const vekapp::Plane(&from)[3] = context.reference[0].plane;
    context.reference[0].await(from[0].height);
    const vekapp::Plane(&to)[3] = context.picture->plane;
    const auto step = [](const vekapp::Plane& plane) { return static_cast<Vek32s>(plane.stride); };
    vekiWarpLuma_MPEG4_8u_C1R(from[0].data, step(from[0]), to[0].at(16 * mbX, 16 * mbY), step(to[0]), 16 * mbX,
                              16 * mbY, {16, 16}, context.warp);
    vekiWarpChroma_MPEG4_8u_P2R(from[1].data, step(from[1]), from[2].data, step(from[2]), to[1].at(8 * mbX, 8 * mbY),
                                step(to[1]), to[2].at(8 * mbX, 8 * mbY), step(to[2]), 8 * mbX, 8 * mbY, {8, 8},
                                context.warp);
}

// Of the vectors of one block or of four (7.6.2.1).
MotionVector chromaVector(const MotionVector (&mv)[4], bool four, bool quarter) {
    const auto halves = [&](int v) { return quarter ? v / 2 : v; };
    if (!four) return {h263::chromaComponent(halves(mv[0].x)), h263::chromaComponent(halves(mv[0].y))};
    int x = 0, y = 0;
    for (const MotionVector& v : mv) {
        x += halves(v.x);
        y += halves(v.y);
    }
    return {h263::chromaComponentOfFour(x), h263::chromaComponentOfFour(y)};
}

// How many rows below its own a macroblock is predicted from, at most. Luma takes a row more across a fraction; the
// chroma vector may be rounded up by a luma row, and takes a row more that is two of luma.
int rowsBelow(const VopContext& context, const Motion& motion, const MotionVector (&mv)[4]) {
    const int vectors = motion.type == MotionType::FourBlocks ? 4 : motion.type == MotionType::Fields ? 2 : 1;
    int most = mv[0].y;
    for (int k = 1; k < vectors; ++k) most = std::max<int>(most, mv[k].y);
    if (most == 0) return 0;
    const int rows = (most >> (context.layer->quarterSample ? 2 : 1)) + 4;
    return motion.type == MotionType::Fields ? 2 * rows : rows;
}

// To the nearest integer, halves away from zero.
std::int64_t divideRounding(std::int64_t a, std::int64_t b) {
    const std::int64_t half = std::abs(b) / 2;
    return (a < 0) == (b < 0) ? (std::abs(a) + half) / std::abs(b) : -((std::abs(a) + half) / std::abs(b));
}

}  // namespace

void predictMacroblock(const VopContext& context, int mbX, int mbY, const Motion& motion) {
    if (motion.type == MotionType::Global) {
        predictGlobal(context, mbX, mbY);
        return;
    }
    bool averaged = false;
    for (std::size_t s = 0; s < 2; ++s) {
        if (!motion.uses[s]) continue;
        const Direction direction{context, mbX, mbY, context.reference[s], averaged};
        const MotionVector(&mv)[4] = motion.mv[s];
        const bool four = motion.type == MotionType::FourBlocks;
        if (context.reference[s].progress != nullptr)
            context.reference[s].await(16 * (mbY + 1) + rowsBelow(context, motion, mv));
        if (motion.type == MotionType::Fields) {
            for (std::size_t parity = 0; parity < 2; ++parity)
                direction.field(static_cast<int>(parity), motion.fieldOf[s][parity], mv[parity]);
        } else {
            if (four)
                for (int k = 0; k < 4; ++k) direction.luma(h263::k8x8, k % 2 * 8, k / 2 * 8, mv[k]);
            else
                direction.luma(h263::k16x16, 0, 0, mv[0]);
            direction.chroma(chromaVector(mv, four, direction.quarter()));
        }
        averaged = true;
    }
}

Motion directMotion(const VopContext& context, const Macroblock& coLocated, MotionVector difference) {
    const bool fields = coLocated.kind == MbKind::Fields;
    const bool four = !fields && (context.layer->quarterSample || coLocated.kind == MbKind::FourVectors);
    Motion motion;
    motion.type = fields ? MotionType::Fields : four ? MotionType::FourBlocks : MotionType::Whole;
    motion.uses[0] = motion.uses[1] = true;
    for (std::size_t k = 0; k < (fields ? 2u : four ? 4u : 1u); ++k) {
        std::int64_t trb = context.trb, trd = context.trd;
        MotionVector mv = coLocated.mv[k];
        if (fields) {
            const int from = coLocated.fieldOf[k], field = static_cast<int>(k);
            const int apart = context.vop->topFieldFirst ? field - from : from - field;
            trb = context.trbFields + apart;
            trd = context.trdFields + apart;
            mv = coLocated.fieldMv[k];
            motion.fieldOf[0][k] = coLocated.fieldOf[k];
            motion.fieldOf[1][k] = static_cast<std::uint8_t>(k);
        }
        if (trd <= 0 || std::abs(trb) > trd) throw BadSyntax("direct mode between VOPs of such times");
        const auto component = [&](int v, int d, int& forward, int& backward) {
            forward = static_cast<int>(v * trb / trd) + d;
            backward = d == 0 ? static_cast<int>(v * (trb - trd) / trd) : forward - v;
        };
        component(mv.x, difference.x, motion.mv[0][k].x, motion.mv[1][k].x);
        component(mv.y, difference.y, motion.mv[0][k].y, motion.mv[1][k].y);
    }
    return motion;
}

std::int64_t fieldsBetween(std::int64_t later, std::int64_t earlier, std::int64_t frameTicks) {
    return 2 * (divideRounding(later, frameTicks) - divideRounding(earlier, frameTicks));
}

}  // namespace vekdec::mpeg4
