// Pictures in RGB, and their PNG files.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "frames/frame.h"
#include "show/blocks.h"

namespace vekapp {

// 8-bit RGB.
struct Image {
    int width = 0, height = 0;
    std::vector<std::uint8_t> rgb;

    Image() = default;
    Image(int w, int h, Colour fill = {});
    std::uint8_t* at(int x, int y) { return rgb.data() + offset(x, y); }
    const std::uint8_t* at(int x, int y) const { return rgb.data() + offset(x, y); }

  private:
    std::size_t offset(int x, int y) const {
        return 3 * (static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x));
    }
};

// BT.601, chroma taken from the nearest sample.
Image toImage(const Frame& frame);
// Draws `part` with its top left corner at (x, y); what lies outside is cut off.
void paste(Image& image, const Image& part, int x, int y);
// Means of whole squares of samples, until the image is at most `width` wide.
Image shrink(const Image& image, int width);

void writePng(const Image& image, const std::string& file);  // throws std::runtime_error

}  // namespace vekapp
