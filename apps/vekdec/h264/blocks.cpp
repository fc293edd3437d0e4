#include "h264/blocks.h"

#include "h264/place.h"

namespace vekdec::h264 {
namespace {

enum Kind { kLost, kIntra4x4, kIntra8x8, kIntra16x16, kPcm, kInter, kInter8x8, kSkipped };
constexpr vekapp::BlockKind kKinds[] = {
    {"lost", {255, 0, 255}},
    {"intra 4x4", {230, 60, 60}},
    {"intra 8x8", {240, 130, 40}},
    {"intra 16x16", {240, 210, 60}},
    {"pcm", {255, 255, 255}},
    {"inter", {60, 120, 230}},
    {"inter, transform 8x8", {60, 190, 120}},
    {"skipped", {60, 60, 70}},
};

Kind kindOf(const Macroblock& mb) {
    switch (mb.type) {
        case MbType::I4x4:
            return kIntra4x4;
        case MbType::I8x8:
            return kIntra8x8;
        case MbType::I16x16:
            return kIntra16x16;
        case MbType::IPcm:
            return kPcm;
        case MbType::Inter:
            return mb.skipped ? kSkipped : mb.transform8x8 ? kInter8x8 : kInter;
        default:
            return kLost;
    }
}

void addVectors(const Macroblock& mb, const vekapp::Block& at, std::vector<vekapp::BlockVector>& vectors) {
    for (int list = 0; list < 2; ++list)
        for (int block = 0; block < 16; ++block) {
            const int x = block % 4, y = block / 4;
            if (mb.refIdx[list][x / 2 + y / 2 * 2] < 0) continue;
            const MotionVector mv = mb.mv[list][block];
            // One line for neighbouring blocks that move alike.
            if ((x > 0 && mv == mb.mv[list][block - 1]) || (y > 0 && mv == mb.mv[list][block - 4])) continue;
            vectors.push_back({at.x + 4 * x + 2, at.y + (4 * y + 2) * at.rowDistance, mv.x / 4,
                               mv.y / 4 * at.rowDistance, list == 1});
        }
}

}  // namespace

vekapp::BlockMap blocksOf(const Picture& picture, int left, int top) {
    vekapp::BlockMap map{kKinds, 0, 51, {}, {}};
    const int count = static_cast<int>(picture.mbs.size()), perField = count / 2;
    for (int i = 0; i < count; ++i) {
        const Macroblock& mb = picture.mbs[static_cast<std::size_t>(i)];
        const int structure = !picture.codedAsFields ? kFrame : i < perField ? kTopField : kBottomField;
        const Place at = placeOf(picture, structure, structure == kBottomField ? i - perField : i, 16, 16);
        map.blocks.push_back({at.x - left, at.y - top, 16, 16, at.rowDistance, kindOf(mb), mb.qp});
        if (mb.type == MbType::Inter) addVectors(mb, map.blocks.back(), map.vectors);
    }
    return map;
}

}  // namespace vekdec::h264
