// Frames as pictures to look at.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "frame.h"
#include "output.h"

namespace vekdec {

// 8-bit RGB.
struct Image {
    int width = 0, height = 0;
    std::vector<std::uint8_t> rgb;
    std::uint8_t* at(int x, int y) {
        return rgb.data() +
               3 * (static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x));
    }
    void resize(int w, int h) {
        width = w;
        height = h;
        rgb.assign(3 * static_cast<std::size_t>(w) * static_cast<std::size_t>(h), 0);
    }
};

// BT.601 limited range, chroma taken from the nearest sample.
Image toImage(const Frame& frame);
void writePng(const Image& image, const std::string& file);  // throws std::runtime_error

// What is drawn over the frames: nothing, macroblock types, motion vectors or QP. Each standard draws its own.
enum class Overlay { None, MacroblockTypes, MotionVectors, Qp };
using DrawOverlay = void (*)(Image&, const Frame&, Overlay);

// DIR/frame-00000.png and so on.
std::unique_ptr<FrameOutput> makePngOutput(const std::string& directory, Overlay overlay, DrawOverlay draw);
// A contact sheet of up to 12 evenly spaced frames.
std::unique_ptr<FrameOutput> makeSheetOutput(const std::string& file, Overlay overlay, DrawOverlay draw);

}  // namespace vekdec
