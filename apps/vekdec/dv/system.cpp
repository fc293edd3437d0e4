#include "dv/system.h"

namespace vekdec::dv {
namespace {

using vekapp::FieldOrder;

constexpr System kSystems[] = {
    {"DV 525/60, 4:1:1", false, 720, 480, Sampling::C411, 10, 1, {30000, 1001}, FieldOrder::BottomFirst},
    {"DV 625/50, 4:2:0", true, 720, 576, Sampling::C420, 12, 1, {25, 1}, FieldOrder::BottomFirst},
    {"DV 625/50, 4:1:1", true, 720, 576, Sampling::C411, 12, 1, {25, 1}, FieldOrder::BottomFirst},
    {"DV 525/60, 4:2:2, 50 Mb/s", false, 720, 480, Sampling::C422, 10, 2, {30000, 1001}, FieldOrder::BottomFirst},
    {"DV 625/50, 4:2:2, 50 Mb/s", true, 720, 576, Sampling::C422, 12, 2, {25, 1}, FieldOrder::BottomFirst},
    {"DV100 1080/60i", false, 1280, 1080, Sampling::Dv100, 10, 4, {30000, 1001}, FieldOrder::TopFirst},
    {"DV100 1080/50i", true, 1440, 1080, Sampling::Dv100, 12, 4, {25, 1}, FieldOrder::TopFirst},
    {"DV100 720/60p", false, 960, 720, Sampling::Dv100, 10, 2, {60000, 1001}, FieldOrder::Progressive},
    {"DV100 720/50p", true, 960, 720, Sampling::Dv100, 12, 2, {50, 1}, FieldOrder::Progressive},
};

// Super blocks and macroblocks shuffled over the picture (SMPTE 314M, 370M).
constexpr int kRowShift[kMacroblocks] = {2, 6, 8, 0, 4}, kColumn[kMacroblocks] = {2, 1, 3, 0, 4};
constexpr int kSnake[6] = {0, 1, 2, 2, 1, 0};

MacroblockPlace place411(const System& s, int q, int k, int m) {
    const int r = (q + kRowShift[m]) % s.sequences;
    const int j = kColumn[m] % 2 != 0 ? k + 3 : k;
    const int column = 9 * kColumn[m] / 2 + j / 6;
    const int row = j / 6 % 2 == 0 ? j % 6 : 5 - j % 6;
    if (column < 22) return {32 * column, 8 * (6 * r + row), Shape::Whole};
    return {704, 48 * r + 16 * row, Shape::Edge};
}

MacroblockPlace place1080i60(int c, int q, int k, int m) {
    const int b = 27 * (10 * c + q) + k;
    const int r = (4 * c + q / 5 + 2 * b + kRowShift[m]) % 10, i = b / 5 % 27;
    const int x = 18 * kColumn[m] + 9 * (c & 1) + i % 9, y = 2 * (3 * r + i / 9) + c / 2 + 4;
    if (x < 80) return {16 * x, 16 * y, Shape::Whole};
    const int t = x - 80;  // the columns behind the picture are its top and bottom
    if (y < 36) return {16 * (10 * ((y - 4) / 4) + t), 16 * ((y - 4) % 4), Shape::Whole};
    if (y < 60) return {16 * (10 * ((y - 36) / 3) + t), 16 * (64 + (y - 36) % 3), Shape::Whole};
    return {32 * (10 * (y - 60) + t), 1072, Shape::Bottom};
}

MacroblockPlace place1080i50(int c, int q, int k, int m) {
    if (q == 11) {
        if (c != 0) return {};
        const int z = 27 * m + k;
        return z < 90 ? MacroblockPlace{16 * z, 0, Shape::Whole} : MacroblockPlace{32 * (z - 90), 1072, Shape::Bottom};
    }
    const int b = 27 * (11 * c + q) + k;
    const int r = (4 * c + b + kRowShift[m]) % 11, i = b / 11 % 27;
    return {16 * (18 * kColumn[m] + 9 * (c & 1) + i % 9), 16 * (2 * (3 * r + i / 9) + c / 2 + 1), Shape::Whole};
}

MacroblockPlace place720(int c, int q, int k, int m) {
    static constexpr int kRows[10] = {0, 4, 9, 13, 18, 22, 27, 31, 36, 40};
    if (q >= 10) return {};
    const int b = 27 * (10 * c + q) + k;
    const int r = (4 * c + q / 5 + 2 * b + kRowShift[m]) % 10, i = b / 5 % 27 + 3 * (r & 1);
    return {16 * (12 * kColumn[m] + i % 6 + 6 * (c & 1)), 16 * (kRows[r] + i / 6), Shape::Whole};
}

}  // namespace

bool beginsFrame(std::span<const std::uint8_t> bytes) {
    // Section types of DIF blocks 0 to 7: header, subcode, VAUX, audio, video.
    static constexpr int kSections[8] = {0, 1, 1, 2, 2, 2, 3, 4};
    if (bytes.size() < 8 * kDifBytes) return false;
    for (std::size_t i = 0; i < 8; ++i)
        if (bytes[i * kDifBytes] >> 5 != kSections[i]) return false;
    return true;
}

const System* systemOf(std::span<const std::uint8_t> frame) {
    if (!beginsFrame(frame)) return nullptr;
    const bool fiftyHertz = (frame[3] & 0x80) != 0;
    const bool smpte = (frame[4] & 7) != 0;
    int type = 0;  // STYPE of the VAUX source pack
    for (std::size_t pack = 0; pack < 45; ++pack) {
        const std::uint8_t* p = frame.data() + kDifBytes * (3 + pack / 15) + 3 + 5 * (pack % 15);
        if (p[0] == 0x60) type = p[3] & 31;
    }
    const auto find = [&](Sampling sampling, int height) -> const System* {
        for (const System& s : kSystems)
            if (s.fiftyHertz == fiftyHertz && s.sampling == sampling && (height == 0 || s.height == height)) return &s;
        return nullptr;
    };
    switch (type) {
        case 0x00:
        case 0x01:
            return find(fiftyHertz && !smpte ? Sampling::C420 : Sampling::C411, 0);
        case 0x04:
            return find(Sampling::C422, 0);
        case 0x14:
            return find(Sampling::Dv100, 1080);
        case 0x18:
            return find(Sampling::Dv100, 720);
        default:
            return nullptr;
    }
}

MacroblockPlace placeOf(const System& s, int c, int q, int k, int m) {
    switch (s.sampling) {
        case Sampling::C411:
            return place411(s, q, k, m);
        case Sampling::C420: {
            const int r = (q + kRowShift[m]) % s.sequences;
            return {16 * (9 * kColumn[m] + k / 3), 16 * (3 * r + kSnake[k % 6]), Shape::Whole};
        }
        case Sampling::C422: {
            const int r = 2 * ((q + kRowShift[m]) % s.sequences) + c;
            return {16 * (9 * kColumn[m] + k / 3), 8 * (3 * r + kSnake[k % 6]), Shape::Whole};
        }
        case Sampling::Dv100:
            return s.height == 720 ? place720(c, q, k, m)
                   : s.fiftyHertz  ? place1080i50(c, q, k, m)
                                   : place1080i60(c, q, k, m);
    }
    return {};
}

}  // namespace vekdec::dv
