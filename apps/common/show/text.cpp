#include "show/text.h"

#include <array>
#include <cctype>

namespace vekapp {
namespace {

constexpr int kWidth = 5, kHeight = 7;

// Seven rows of five samples, the left one in bit 4.
struct Glyph {
    char sign;
    std::array<std::uint8_t, kHeight> rows;
};
constexpr Glyph kGlyphs[] = {
    {'A', {14, 17, 17, 31, 17, 17, 17}}, {'B', {30, 17, 17, 30, 17, 17, 30}}, {'C', {14, 17, 16, 16, 16, 17, 14}},
    {'D', {30, 17, 17, 17, 17, 17, 30}}, {'E', {31, 16, 16, 30, 16, 16, 31}}, {'F', {31, 16, 16, 30, 16, 16, 16}},
    {'G', {14, 17, 16, 23, 17, 17, 15}}, {'H', {17, 17, 17, 31, 17, 17, 17}}, {'I', {14, 4, 4, 4, 4, 4, 14}},
    {'J', {7, 2, 2, 2, 2, 18, 12}},      {'K', {17, 18, 20, 24, 20, 18, 17}}, {'L', {16, 16, 16, 16, 16, 16, 31}},
    {'M', {17, 27, 21, 21, 17, 17, 17}}, {'N', {17, 25, 21, 19, 17, 17, 17}}, {'O', {14, 17, 17, 17, 17, 17, 14}},
    {'P', {30, 17, 17, 30, 16, 16, 16}}, {'Q', {14, 17, 17, 17, 21, 18, 13}}, {'R', {30, 17, 17, 30, 20, 18, 17}},
    {'S', {15, 16, 16, 14, 1, 1, 30}},   {'T', {31, 4, 4, 4, 4, 4, 4}},       {'U', {17, 17, 17, 17, 17, 17, 14}},
    {'V', {17, 17, 17, 17, 17, 10, 4}},  {'W', {17, 17, 17, 21, 21, 27, 17}}, {'X', {17, 17, 10, 4, 10, 17, 17}},
    {'Y', {17, 17, 10, 4, 4, 4, 4}},     {'Z', {31, 1, 2, 4, 8, 16, 31}},     {'0', {14, 17, 19, 21, 25, 17, 14}},
    {'1', {4, 12, 4, 4, 4, 4, 14}},      {'2', {14, 17, 1, 6, 8, 16, 31}},    {'3', {30, 1, 1, 14, 1, 1, 30}},
    {'4', {2, 6, 10, 18, 31, 2, 2}},     {'5', {31, 16, 30, 1, 1, 17, 14}},   {'6', {14, 16, 16, 30, 17, 17, 14}},
    {'7', {31, 1, 2, 4, 8, 8, 8}},       {'8', {14, 17, 17, 14, 17, 17, 14}}, {'9', {14, 17, 17, 15, 1, 1, 14}},
    {'-', {0, 0, 0, 31, 0, 0, 0}},       {'.', {0, 0, 0, 0, 0, 12, 12}},      {',', {0, 0, 0, 0, 12, 4, 8}},
    {':', {0, 12, 12, 0, 12, 12, 0}},    {'/', {1, 1, 2, 4, 8, 16, 16}},      {'(', {2, 4, 8, 8, 8, 4, 2}},
    {')', {8, 4, 2, 2, 2, 4, 8}},        {'+', {0, 4, 4, 31, 4, 4, 0}},       {'_', {0, 0, 0, 0, 0, 0, 31}},
    {'=', {0, 0, 31, 0, 31, 0, 0}},      {'%', {25, 25, 2, 4, 8, 19, 19}},
};

}  // namespace

int textWidth(const std::string& text) { return static_cast<int>(text.size()) * (kWidth + 1); }

void drawText(Image& image, const std::string& text, int x, int y, Colour colour) {
    for (const char c : text) {
        const char sign = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        for (const Glyph& glyph : kGlyphs) {
            if (glyph.sign != sign) continue;
            for (int row = 0; row < kHeight; ++row)
                for (int column = 0; column < kWidth; ++column)
                    if ((glyph.rows[static_cast<std::size_t>(row)] >> (kWidth - 1 - column) & 1) != 0)
                        paste(image, Image(1, 1, colour), x + column, y + row);
        }
        x += kWidth + 1;
    }
}

}  // namespace vekapp
