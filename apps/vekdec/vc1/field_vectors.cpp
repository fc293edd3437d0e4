#include "vc1/field_vectors.h"

#include <algorithm>
#include <cstdlib>

#include "vc1/motion_vectors.h"
#include "vc1/tables.h"

namespace vekdec::vc1 {
namespace {

constexpr int kRangeBitsX[4] = {9, 10, 12, 13}, kRangeBitsY[4] = {8, 9, 10, 11};  // by MVRANGE

// Between vectors to the fields of the two parities, by reference distance (Tables of 10.3.4.5.3).
struct Scales {
    int opposite[4], same1[4], same2[4], zoneX[4], zoneY[4], offsetX[4], offsetY[4];
};
constexpr Scales kScales[2] = {{{128, 192, 213, 224},
                                {512, 341, 307, 293},
                                {219, 236, 242, 245},
                                {32, 48, 53, 56},
                                {8, 12, 13, 14},
                                {37, 20, 14, 11},
                                {10, 5, 4, 3}},
                               {{128, 64, 43, 32},
                                {512, 1024, 1536, 2048},
                                {219, 204, 200, 198},
                                {32, 16, 11, 8},
                                {8, 4, 3, 2},
                                {37, 52, 56, 58},
                                {10, 13, 14, 15}}};

}  // namespace

void FieldVectorDecoder::begin(const PictureContext& context) {
    context_ = &context;
    firstRow_ = 0;
    const PictureHeader& header = *context.header;
    distance_ = std::min(header.referenceDistance, 3);
    bitsX_ = kRangeBitsX[header.mvRange];
    bitsY_ = kRangeBitsY[header.mvRange];
    rangeX_ = 1 << (bitsX_ - 1);
    rangeY_ = 1 << (bitsY_ - 1);
}

FieldVectorData FieldVectorDecoder::parse(WordReader& bits) const {
    const PictureHeader& header = *context_->header;
    const bool two = header.twoReferences;
    const int escape = two ? 126 : 72;
    const int index =
        1 +
        vc1::decode(bits, two ? tables().fieldMvTwo[header.mvTable] : tables().fieldMvOne[header.mvTable], "IMVDATA");
    FieldVectorData data;
    if (index == escape) {
        data.x = static_cast<int>(bits.u(bitsX_));
        data.y = static_cast<int>(bits.u(bitsY_));
        if (two) {
            data.unusual = (data.y & 1) != 0;
            data.y = (data.y + (data.y & 1)) >> 1;
        }
    } else {
        const auto component = [&](int c, bool extended) {
            if (c == 0) return 0;
            const int offset = extended ? (1 << c) - 1 : 1 << (c - 1);
            const auto v = static_cast<int>(bits.u(c + (extended ? 1 : 0)));
            const int magnitude = (v >> 1) + offset;
            return (v & 1) != 0 ? -magnitude : magnitude;
        };
        int row = index / 9;
        data.x = component(index % 9, header.extendedDmvX);
        if (two) {
            data.unusual = (row & 1) != 0;
            row >>= 1;
        }
        data.y = component(row, header.extendedDmvY);
    }
    if (header.halfPel()) {
        data.x *= 2;
        data.y *= 2;
    }
    return data;
}

FieldVectorDecoder::Neighbour FieldVectorDecoder::neighbour(int blockX, int blockY) const {
    if (blockX < 0 || blockX >= 2 * context_->width || blockY < 2 * firstRow_) return {};
    const Macroblock& mb = context_->mb(blockX >> 1, blockY >> 1);
    const int block = (blockX & 1) | (blockY & 1) << 1;
    return {!mb.isIntra(block), (mb.otherField >> block & 1) != 0, mb.mv[block]};
}

int FieldVectorDecoder::scaledToSame(int v, int zone, int offset, int most, int range) const {
    const Scales& s = kScales[context_->header->secondField ? 1 : 0];
    int result = v;
    if (std::abs(v) < zone)
        result = (v * s.same1[distance_]) >> 8;
    else if (std::abs(v) <= most)
        result = ((v * s.same2[distance_]) >> 8) + (v < 0 ? -offset : offset);
    return std::clamp(result, -range, range - 1);
}

MotionVector FieldVectorDecoder::scaled(MotionVector v, bool toOther) const {
    const PictureHeader& header = *context_->header;
    const Scales& s = kScales[header.secondField ? 1 : 0];
    const int half = header.halfPel() ? 1 : 0;
    int x = v.x >> half, y = v.y >> half;
    if (toOther) {
        x = (x * s.opposite[distance_]) >> 8;
        y = (y * s.opposite[distance_]) >> 8;
    } else {
        x = scaledToSame(x, s.zoneX[distance_], s.offsetX[distance_], 255, rangeX_);
        y = scaledToSame(y, s.zoneY[distance_], s.offsetY[distance_], 63, rangeY_ / 2);
    }
    return {static_cast<std::int16_t>(x * (1 << half)), static_cast<std::int16_t>(y * (1 << half))};
}

void FieldVectorDecoder::decode(WordReader& bits, int mbX, int mbY, int block, const FieldVectorData& data,
                                Macroblock& mb) const {
    const PictureHeader& header = *context_->header;
    const bool whole = block == kWhole, last = mbX == context_->width - 1;
    const int x = 2 * mbX + (whole ? 0 : block & 1), y = 2 * mbY + (whole ? 0 : block >> 1);
    int beside = 0;  // columns from here to B
    switch (block) {
        case 0:
            beside = mbX == 0 ? 1 : -1;
            break;
        case 1:
            beside = last ? -1 : 1;
            break;
        case 2:
            beside = 1;
            break;
        case 3:
            beside = -1;
            break;
        default:
            beside = !last ? 2 : header.mvMode == MvMode::Mixed ? -2 : -1;
            break;
    }
    Neighbour a = neighbour(x, y - 1), b = neighbour(x + beside, y - 1), c = neighbour(x - 1, y);
    bool other = !header.sameFieldReference;
    if (header.twoReferences) {
        int same = 0, opposite = 0;
        for (const Neighbour& n : {a, b, c})
            if (n.valid) ++(n.otherField ? opposite : same);
        other = (same <= opposite) != data.unusual;
    }
    int valid = 0;
    for (Neighbour* n : {&a, &b, &c}) {
        if (!n->valid)
            n->mv = {};
        else if (n->otherField != other)
            n->mv = scaled(n->mv, other);
        valid += n->valid;
    }
    MotionVector p;
    if (valid >= 2)
        p = {static_cast<std::int16_t>(median(a.mv.x, b.mv.x, c.mv.x)),
             static_cast<std::int16_t>(median(a.mv.y, b.mv.y, c.mv.y))};
    else if (valid == 1)
        p = a.valid ? a.mv : c.valid ? c.mv : b.mv;
    if (a.valid && c.valid) {  // hybrid prediction
        const auto far = [&](MotionVector v) { return std::abs(p.x - v.x) + std::abs(p.y - v.y) > 32; };
        if (far(a.mv) || far(c.mv)) p = bits.flag() ? a.mv : c.mv;
    }
    // A bottom field's vectors to a top field lie one line lower. The range counts samples of the mode's precision.
    const int unit = header.halfPel() ? 2 : 1, below = header.bottomField() && other ? 1 : 0;
    const auto wrapped = [](int v, int range) { return ((v + range) & (2 * range - 1)) - range; };
    const int vx = wrapped(p.x + data.x, unit * rangeX_);
    const int vy = wrapped(p.y + data.y - below, unit * (header.twoReferences ? rangeY_ / 2 : rangeY_)) + below;
    const MotionVector v{static_cast<std::int16_t>(vx), static_cast<std::int16_t>(vy)};
    if (whole) {
        for (MotionVector& m : mb.mv) m = v;
        mb.otherField = other ? 15 : 0;
    } else {
        mb.mv[block] = v;
        mb.otherField = static_cast<std::uint8_t>((mb.otherField & ~(1u << block)) | (other ? 1u << block : 0u));
    }
}

}  // namespace vekdec::vc1
