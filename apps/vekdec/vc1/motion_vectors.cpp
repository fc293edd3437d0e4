#include "vc1/motion_vectors.h"

#include <algorithm>
#include <cstdlib>

#include "vc1/tables.h"

namespace vekdec::vc1 {
namespace {

constexpr int kRangeBitsX[4] = {9, 10, 12, 13}, kRangeBitsY[4] = {8, 9, 10, 11};  // by MVRANGE

int wrapped(int v, int range) { return ((v + range) & (2 * range - 1)) - range; }

}  // namespace

void VectorDecoder::begin(const PictureContext& context) {
    context_ = &context;
    firstRow_ = 0;
    const PictureHeader& header = *context.header;
    const int halves = header.halfPel() ? 1 : 0;
    escapeBitsX_ = kRangeBitsX[header.mvRange] - halves;
    escapeBitsY_ = kRangeBitsY[header.mvRange] - halves;
    rangeX_ = 1 << (kRangeBitsX[header.mvRange] - 1);
    rangeY_ = 1 << (kRangeBitsY[header.mvRange] - 1);
}

// 8.3.5.2.
VectorData VectorDecoder::parse(WordReader& bits) const {
    static constexpr int kOffset[6] = {0, 1, 3, 7, 15, 31}, kBits[6] = {0, 2, 3, 4, 5, 8};
    const PictureHeader& header = *context_->header;
    const bool halfPel = header.halfPel();
    VectorData data;
    int index = decode(bits, tables().mvData[header.mvTable], "MVDATA") + 1;
    if (index > 36) {
        data.coefficients = true;
        index -= 37;
    }
    if (index == 36) {
        data.intra = true;
        return data;
    }
    if (index == 35) {
        data.x = static_cast<int>(bits.u(escapeBitsX_));
        data.y = static_cast<int>(bits.u(escapeBitsY_));
    } else {
        const auto component = [&](int c) {
            const auto v = static_cast<int>(bits.u(kBits[c] - (c == 5 && halfPel ? 1 : 0)));
            const int magnitude = (v >> 1) + kOffset[c];
            return (v & 1) != 0 ? -magnitude : magnitude;
        };
        data.x = component(index % 6);
        data.y = component(index / 6);
    }
    if (halfPel) {
        data.x *= 2;
        data.y *= 2;
    }
    return data;
}

MotionVector VectorDecoder::sum(int x, int y, const VectorData& data) const {
    return {static_cast<std::int16_t>(wrapped(x + data.x, rangeX_)),
            static_cast<std::int16_t>(wrapped(y + data.y, rangeY_))};
}

// 8.3.5.3.1.
VectorDecoder::Neighbours VectorDecoder::neighbours(int mbX, int mbY, int block) const {
    const bool whole = block == kWhole, last = mbX == context_->width - 1;
    const int x = 2 * mbX + (whole ? 0 : block & 1), y = 2 * mbY + (whole ? 0 : block >> 1);
    int besideX = x;
    switch (block) {
        case 0:
            besideX += mbX == 0 ? 1 : -1;
            break;
        case 1:
            besideX += last ? -1 : 1;
            break;
        case 2:
            besideX += 1;
            break;
        case 3:
            besideX -= 1;
            break;
        default:
            besideX += last ? -1 : 2;
            break;
    }
    Neighbours n;
    if (y > 2 * firstRow_) {
        n.above = &context_->mb(mbX, (y - 1) >> 1);
        n.aboveBlock = (x & 1) | ((y - 1) & 1) << 1;
        if (besideX >= 0 && besideX < 2 * context_->width) {
            n.beside = &context_->mb(besideX >> 1, (y - 1) >> 1);
            n.besideBlock = (besideX & 1) | ((y - 1) & 1) << 1;
        }
    }
    if (x > 0) {
        n.left = &context_->mb((x - 1) >> 1, mbY);
        n.leftBlock = ((x - 1) & 1) | (y & 1) << 1;
    }
    return n;
}

MotionVector VectorDecoder::vector(WordReader& bits, int mbX, int mbY, int block, const VectorData& data) const {
    const Neighbours n = neighbours(mbX, mbY, block);
    const auto of = [](const Macroblock* mb, int b) { return mb == nullptr ? MotionVector{} : mb->mv[b]; };
    const MotionVector a = of(n.above, n.aboveBlock), b = of(n.beside, n.besideBlock), c = of(n.left, n.leftBlock);
    int x = 0, y = 0;
    if (n.above != nullptr && context_->width == 1) {
        x = a.x;
        y = a.y;
    } else if (n.above != nullptr) {
        x = median(a.x, b.x, c.x);
        y = median(a.y, b.y, c.y);
    } else {
        x = c.x;
        y = c.y;
    }
    // 8.3.5.3.4: not too far outside the picture.
    const bool whole = block == kWhole;
    const int atX = 64 * mbX + (!whole && (block & 1) != 0 ? 32 : 0), atY = 64 * mbY + (!whole && block >= 2 ? 32 : 0);
    const int least = whole ? -60 : -28;
    x = std::clamp(x, least - atX, 64 * context_->width - 4 - atX);
    y = std::clamp(y, least - atY, 64 * context_->height - 4 - atY);
    // 8.3.5.3.5: hybrid prediction.
    if (n.above != nullptr && n.left != nullptr) {
        // Intra blocks have stored zero vectors.
        const auto far = [&](MotionVector v) { return std::abs(x - v.x) + std::abs(y - v.y) > 32; };
        if (far(a) || far(c)) {
            const MotionVector chosen = bits.flag() ? a : c;
            x = chosen.x;
            y = chosen.y;
        }
    }
    return sum(x, y, data);
}

// 8.4.5.3.
MotionVector VectorDecoder::vectorB(int mbX, int mbY, bool backward, const VectorData& data) const {
    const Neighbours n = neighbours(mbX, mbY, kWhole);
    const auto of = [&](const Macroblock* mb) {
        return mb == nullptr ? MotionVector{} : backward ? mb->backward : mb->mv[0];
    };
    const MotionVector a = of(n.above), b = of(n.beside), c = of(n.left);
    int x = 0, y = 0;
    if (n.above != nullptr && context_->width > 1) {
        x = median(a.x, b.x, c.x);
        y = median(a.y, b.y, c.y);
    } else {
        const MotionVector& only = n.above != nullptr ? a : c;
        x = only.x;
        y = only.y;
    }
    // Main profile counts the positions in half of Advanced profile's units.
    const int unit = context_->sequence->advanced() ? 64 : 32, least = 4 - unit;
    x = std::clamp(x, least - unit * mbX, unit * (context_->width - mbX) - 4);
    y = std::clamp(y, least - unit * mbY, unit * (context_->height - mbY) - 4);
    return sum(x, y, data);
}

// 8.4.5.4.
void VectorDecoder::direct(int mbX, int mbY, MotionVector& forward, MotionVector& backward) const {
    forward = backward = {};
    if (context_->colocated == nullptr) return;
    context_->backward.await(16 * (mbY + 1));
    const MotionVector v = context_->colocated[mbY * context_->width + mbX].colocated;
    const PictureHeader& header = *context_->header;
    const auto scaled = [&](int value, int factor) {
        return header.halfPel() ? 2 * ((value * factor + 255) >> 9) : (value * factor + 128) >> 8;
    };
    const auto limited = [](int value, int macroblock, int count) {
        return static_cast<std::int16_t>(std::clamp(value, -60 - 64 * macroblock, 64 * (count - macroblock) - 4));
    };
    const auto both = [&](int factor) {
        return MotionVector{limited(scaled(v.x, factor), mbX, context_->width),
                            limited(scaled(v.y, factor), mbY, context_->height)};
    };
    forward = both(header.scaleFactor);
    backward = both(header.scaleFactor - 256);
}

}  // namespace vekdec::vc1
