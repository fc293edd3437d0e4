#include "vc1/bit_plane.h"

#include "vc1/tables.h"

namespace vekdec::vc1 {
namespace {

// A plane, or a part of it that is coded by itself.
struct Region {
    std::uint8_t* first;
    std::size_t stride;
    int width, height;

    std::uint8_t& at(int x, int y) const {
        return first[static_cast<std::size_t>(y) * stride + static_cast<std::size_t>(x)];
    }
};

void parseRows(WordReader& bits, const Region& r) {
    for (int y = 0; y < r.height; ++y)
        if (bits.flag())
            for (int x = 0; x < r.width; ++x) r.at(x, y) = bits.flag();
}

void parseColumns(WordReader& bits, const Region& r) {
    for (int x = 0; x < r.width; ++x)
        if (bits.flag())
            for (int y = 0; y < r.height; ++y) r.at(x, y) = bits.flag();
}

void parsePairs(WordReader& bits, std::vector<std::uint8_t>& plane) {
    std::size_t i = 0;
    if (plane.size() % 2 != 0) plane[i++] = bits.flag();
    for (; i < plane.size(); i += 2) {
        const int pair = decode(bits, tables().norm2, "bit-plane pair");
        plane[i] = (pair & 1) != 0;
        plane[i + 1] = (pair & 2) != 0;
        bits.checkEnd();
    }
}

void parseTiles(WordReader& bits, const Region& r) {
    const bool tall = r.height % 3 == 0 && r.width % 3 != 0;
    const int tileWidth = tall ? 2 : 3, tileHeight = tall ? 3 : 2;
    const int left = r.width % tileWidth, top = r.height % tileHeight;
    for (int y = top; y < r.height; y += tileHeight)
        for (int x = left; x < r.width; x += tileWidth) {
            const int tile = decode(bits, tables().norm6, "bit-plane tile");
            for (int k = 0; k < 6; ++k) r.at(x + k % tileWidth, y + k / tileWidth) = (tile >> k & 1) != 0;
            bits.checkEnd();
        }
    // What no tile covers: columns at the left, then a row above the tiles.
    parseColumns(bits, {r.first, r.stride, left, r.height});
    if (top > 0) parseRows(bits, {r.first + left, r.stride, r.width - left, top});
}

// From differences to values (8.7.3.7).
void addPrediction(const Region& r, bool invert) {
    for (int y = 0; y < r.height; ++y)
        for (int x = 0; x < r.width; ++x) {
            std::uint8_t predicted = invert;
            if (x > 0 && (y == 0 || r.at(x - 1, y) == r.at(x, y - 1)))
                predicted = r.at(x - 1, y);
            else if (x == 0 && y > 0)
                predicted = r.at(x, y - 1);
            r.at(x, y) ^= predicted;
        }
}

}  // namespace

void BitPlane::parse(WordReader& bits, int width, int height) {
    const bool invert = bits.flag();
    const auto mode = static_cast<PlaneMode>(decode(bits, tables().planeMode, "bit-plane mode"));
    raw = mode == PlaneMode::Raw;
    bit.assign(raw ? 0 : static_cast<std::size_t>(width) * static_cast<std::size_t>(height), 0);
    if (raw) return;
    const Region whole{bit.data(), static_cast<std::size_t>(width), width, height};
    switch (mode) {
        case PlaneMode::Norm2:
        case PlaneMode::Diff2:
            parsePairs(bits, bit);
            break;
        case PlaneMode::Norm6:
        case PlaneMode::Diff6:
            parseTiles(bits, whole);
            break;
        case PlaneMode::RowSkip:
            parseRows(bits, whole);
            break;
        default:
            parseColumns(bits, whole);
            break;
    }
    bits.checkEnd();
    if (mode == PlaneMode::Diff2 || mode == PlaneMode::Diff6)
        addPrediction(whole, invert);
    else if (invert)
        for (std::uint8_t& b : bit) b ^= 1;
}

}  // namespace vekdec::vc1
