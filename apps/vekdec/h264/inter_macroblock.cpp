// Inter macroblocks: mb_pred() and sub_mb_pred() (H.264 7.3.5.1, 7.3.5.2), and where their motion_ goes.
#include <algorithm>
#include <cstring>

#include "h264/direct_prediction.h"
#include "h264/macroblock_parser.h"

namespace vekdec::h264 {
namespace {

// Prediction lists of a partition.
enum : std::uint8_t { kL0 = 1, kL1 = 2, kBi = 3 };

// Table 7-14, mb_type 4 to 21 in pairs of 16x8 and 8x16: the lists of the two partitions.
constexpr std::uint8_t kPartitionLists[9][2] = {{kL0, kL0}, {kL1, kL1}, {kL0, kL1}, {kL1, kL0}, {kL0, kBi},
                                                {kL1, kBi}, {kBi, kL0}, {kBi, kL1}, {kBi, kBi}};
// Tables 7-17 and 7-18: a sub-macroblock's lists and the size of its blocks in units of 4 samples.
struct SubMbType {
    std::uint8_t lists, w, h;
};
constexpr SubMbType kSubMbTypesP[4] = {{kL0, 2, 2}, {kL0, 2, 1}, {kL0, 1, 2}, {kL0, 1, 1}};
constexpr SubMbType kSubMbTypesB[13] = {{0, 0, 0},   {kL0, 2, 2}, {kL1, 2, 2}, {kBi, 2, 2}, {kL0, 2, 1},
                                        {kL0, 1, 2}, {kL1, 2, 1}, {kL1, 1, 2}, {kBi, 2, 1}, {kBi, 1, 2},
                                        {kL0, 1, 1}, {kL1, 1, 1}, {kBi, 1, 1}};

}  // namespace

template <typename Syntax>
void MacroblockParser<Syntax>::predictSkipped() {
    Macroblock& mb = *current_.mb;
    mb.skipped = true;
    setQp(mb);
    gatherCorners(neighbours_, mb.field, isB() ? 2 : 1, motion_);
    if (isB()) {
        predictDirect();
    } else {
        if (context_->referenceCount[current_.view][0] == 0) throw BadSyntax("a skipped macroblock without references");
        const MotionVector mv = h264::predictSkipped(motion_);
        motion_.setWhole(0, 0, mv);
        mb.partitioning = Partitioning::Whole;
    }
    storeMotion();
    mb.type = MbType::Inter;
}

template <typename Syntax>
void MacroblockParser<Syntax>::parseInter(unsigned mbType) {
    Macroblock& mb = *current_.mb;
    const bool whole = isB() ? mbType < 4 : mbType == 0;
    if (whole)
        gatherCorners(neighbours_, mb.field, isB() ? 2 : 1, motion_);
    else
        gatherMotion(neighbours_, mb.field, isB() ? 2 : 1, motion_);
    bool transform8x8Allowed = true;
    if (isB() && mbType == 0) {
        predictDirect();
        transform8x8Allowed = context_->sps->direct8x8Inference;
    } else if (mbType == (isB() ? 22u : 3u) || (!isB() && mbType == 4)) {
        parseSubMacroblocks(!isB() && mbType == 4);
        transform8x8Allowed = mb.partitioning != Partitioning::Smaller;
    } else if (whole) {
        parseWhole(isB() ? static_cast<std::uint8_t>(mbType) : std::uint8_t{kL0});
    } else if (!isB()) {
        parsePartitions(static_cast<Partitioning>(mbType), kPartitionLists[0]);
    } else {
        parsePartitions(mbType % 2 == 0 ? Partitioning::Rows16x8 : Partitioning::Columns8x16,
                        kPartitionLists[(mbType - 4) / 2]);
    }
    storeMotion();
    mb.type = MbType::Inter;
    parsePatternAndResidual(transform8x8Allowed);
}

template <typename Syntax>
int MacroblockParser<Syntax>::parseRefIdx(int list, int x, int y, int w, int h) {
    const int count = context_->referenceCount[current_.view][static_cast<std::size_t>(list)];
    if (count == 0) throw BadSyntax("a reference index without references");
    return count == 1 ? 0 : syntax_.refIdx(list, x, y, w, h, count);
}

template <typename Syntax>
MotionVector MacroblockParser<Syntax>::parseVector(int list, int x, int y, int w, int h, MotionVector predicted) {
    const MotionVectorDifference mvd = syntax_.mvd(list, x, y, w, h);
    return {static_cast<std::int16_t>(static_cast<std::uint32_t>(predicted.x) + mvd.x),
            static_cast<std::int16_t>(static_cast<std::uint32_t>(predicted.y) + mvd.y)};
}

template <typename Syntax>
void MacroblockParser<Syntax>::parseWhole(std::uint8_t lists) {
    current_.mb->partitioning = Partitioning::Whole;
    syntax_.beginMotion(motion_, isB() ? 2 : 1);
    int ref[2];
    for (int list = 0; list < 2; ++list) ref[list] = lists >> list & 1 ? parseRefIdx(list, 0, 0, 4, 4) : -1;
    for (int list = 0; list < (isB() ? 2 : 1); ++list) {
        const int r = ref[list];
        motion_.setWhole(list, static_cast<std::int8_t>(r),
                         r < 0 ? MotionVector{} : parseVector(list, 0, 0, 4, 4, predictWhole(motion_, list, r)));
    }
}

// Two partitions of 16x8 or 8x16.
template <typename Syntax>
void MacroblockParser<Syntax>::parsePartitions(Partitioning partitioning, const std::uint8_t* lists) {
    current_.mb->partitioning = partitioning;
    const bool rows = partitioning == Partitioning::Rows16x8;
    const int w = rows ? 4 : 2, h = rows ? 2 : 4;
    const PartitionShape shape = rows ? PartitionShape::Wide16x8 : PartitionShape::Tall8x16;
    syntax_.beginMotion(motion_, isB() ? 2 : 1);
    int ref[2][2];
    for (int list = 0; list < 2; ++list)
        for (int i = 0; i < 2; ++i)
            ref[list][i] = lists[i] >> list & 1 ? parseRefIdx(list, i * (w & 3), i * (h & 3), w, h) : -1;
    for (int list = 0; list < (isB() ? 2 : 1); ++list)
        for (int i = 0; i < 2; ++i) {
            const int x = i * (w & 3), y = i * (h & 3), r = ref[list][i];
            const MotionVector mv =
                r < 0 ? MotionVector{}
                      : parseVector(list, x, y, w, h, predictMotionVector(motion_, list, x, y, w, r, shape));
            motion_.fill(list, x, y, w, h, static_cast<std::int8_t>(r), mv);
        }
}

template <typename Syntax>
void MacroblockParser<Syntax>::parseSubMacroblocks(bool refsAreZero) {
    Macroblock& mb = *current_.mb;
    const SubMbType* types[4];
    unsigned directQuadrants = 0;
    bool smaller = false;
    for (unsigned i = 0; i < 4; ++i) {
        const auto& type = types[i] = (isB() ? kSubMbTypesB : kSubMbTypesP) + syntax_.subMbType();
        const bool direct = type->lists == 0;
        if (direct) directQuadrants |= 1u << i;
        smaller = smaller || (direct ? !context_->sps->direct8x8Inference : type->w + type->h < 4);
    }
    mb.partitioning = smaller ? Partitioning::Smaller : Partitioning::Quadrants;
    syntax_.beginMotion(motion_, isB() ? 2 : 1);
    syntax_.setDirect(directQuadrants);
    int ref[2][4];
    for (int list = 0; list < 2; ++list)
        for (int i = 0; i < 4; ++i)
            ref[list][i] = (types[i]->lists >> list & 1) == 0 ? -1
                           : refsAreZero                      ? 0
                                                              : parseRefIdx(list, i % 2 * 2, i / 2 * 2, 2, 2);
    // Direct sub-macroblocks take their motion_ from outside the macroblock, but a block that comes before one must not
    // see it: they are filled in list by list in their turn.
    DirectPrediction direct(*context_, current_);
    MotionCache directMotion;
    if (directQuadrants != 0) {
        direct.prepare(motion_);
        for (int i = 0; i < 4; ++i)
            if (types[i]->lists == 0) direct.derive(i, directMotion);
    }
    for (int list = 0; list < (isB() ? 2 : 1); ++list)
        for (int i = 0; i < 4; ++i) {
            const int x0 = i % 2 * 2, y0 = i / 2 * 2;
            if (types[i]->lists == 0) {
                for (int k = 0; k < 4; ++k) {
                    const int at = MotionCache::at(x0 + k % 2, y0 + k / 2);
                    motion_.ref[list][at] = directMotion.ref[list][at];
                    motion_.mv[list][at] = directMotion.mv[list][at];
                }
                continue;
            }
            const auto r = static_cast<std::int8_t>(ref[list][i]);
            if (r < 0) {
                motion_.fill(list, x0, y0, 2, 2, MotionCache::kNotUsed, {});
                continue;
            }
            for (int y = y0; y < y0 + 2; y += types[i]->h)
                for (int x = x0; x < x0 + 2; x += types[i]->w)
                    motion_.fill(list, x, y, types[i]->w, types[i]->h, r,
                                 parseVector(list, x, y, types[i]->w, types[i]->h,
                                             predictMotionVector(motion_, list, x, y, types[i]->w, r)));
        }
}

// B_Skip and B_Direct_16x16.
template <typename Syntax>
void MacroblockParser<Syntax>::predictDirect() {
    Macroblock& mb = *current_.mb;
    syntax_.setDirect();
    DirectPrediction direct(*context_, current_);
    direct.prepare(motion_);
    mb.partitioning = direct.deriveAll(motion_)           ? Partitioning::Whole
                      : context_->sps->direct8x8Inference ? Partitioning::Quadrants
                                                          : Partitioning::Smaller;
}

// From the cache to the macroblock, for the neighbours_, later pictures and the deblocking filter.
template <typename Syntax>
void MacroblockParser<Syntax>::storeMotion() {
    Macroblock& mb = *current_.mb;
    for (std::size_t list = 0; list < 2; ++list) {
        if (list == 1 && !isB()) {
            std::memset(mb.refIdx[1], -1, sizeof mb.refIdx[1]);
            std::memset(mb.refPicId[1], -1, sizeof mb.refPicId[1]);
            continue;
        }
        if (mb.partitioning == Partitioning::Whole) {
            const std::size_t first = MotionCache::at(0, 0);
            const int ref = motion_.ref[list][first];
            std::fill_n(mb.mv[list], 16, motion_.mv[list][first]);
            std::memset(mb.refIdx[list], ref, 4);
            std::memset(mb.refPicId[list],
                        ref < 0 ? -1 : context_->references[current_.view][list][static_cast<std::size_t>(ref)].id, 4);
            continue;
        }
        for (int y = 0; y < 4; ++y)
            std::memcpy(&mb.mv[list][4 * y], &motion_.mv[list][MotionCache::at(0, y)], 4 * sizeof(MotionVector));
        for (int i = 0; i < 4; ++i) {
            const int ref = motion_.ref[list][MotionCache::at(i % 2 * 2, i / 2 * 2)];
            mb.refIdx[list][i] = static_cast<std::int8_t>(ref);
            mb.refPicId[list][i] = static_cast<std::int8_t>(
                ref < 0 ? -1 : context_->references[current_.view][list][static_cast<std::size_t>(ref)].id);
        }
    }
}

template void MacroblockParser<CavlcSyntax>::predictSkipped();
template void MacroblockParser<CabacSyntax>::predictSkipped();
template void MacroblockParser<CavlcSyntax>::parseInter(unsigned);
template void MacroblockParser<CabacSyntax>::parseInter(unsigned);

}  // namespace vekdec::h264
