#include "show/image.h"

#include <png.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <stdexcept>

namespace vekapp {
namespace {

int sampleAt(const FramePlane& plane, int x, int y, int bitDepth) {
    const std::uint8_t* row = plane.data + plane.stride * y;
    if (bitDepth == 8) return row[x];
    std::uint16_t sample;
    std::memcpy(&sample, row + 2 * x, 2);
    return sample >> (bitDepth - 8);
}

std::uint8_t toByte(double v) { return static_cast<std::uint8_t>(std::clamp(v + 0.5, 0.0, 255.0)); }

}  // namespace

Image::Image(int w, int h, Colour fill)
    : width(w), height(h), rgb(3 * static_cast<std::size_t>(w) * static_cast<std::size_t>(h)) {
    for (std::size_t i = 0; i < rgb.size(); i += 3) {
        rgb[i] = static_cast<std::uint8_t>(fill.r);
        rgb[i + 1] = static_cast<std::uint8_t>(fill.g);
        rgb[i + 2] = static_cast<std::uint8_t>(fill.b);
    }
}

Image toImage(const Frame& frame) {
    if (frame.chroma == Chroma::Packed422) {  // as three planes
        const FramePlane& all = frame.plane[0];
        const auto half = static_cast<std::size_t>(all.width / 4 * all.height);
        std::vector<std::uint8_t> luma(2 * half), cb(half), cr(half);
        for (int y = 0; y < all.height; ++y)
            for (int j = 0; j < all.width / 4; ++j) {
                const std::uint8_t* p = all.data + all.stride * y + 4 * j;
                const auto i = static_cast<std::size_t>(y * (all.width / 4) + j);
                cb[i] = p[0];
                luma[2 * i] = p[1];
                cr[i] = p[2];
                luma[2 * i + 1] = p[3];
            }
        Frame planar = frame;
        planar.chroma = Chroma::C422;
        planar.plane[0] = {luma.data(), all.width / 2, all.width / 2, all.height};
        planar.plane[1] = {cb.data(), all.width / 4, all.width / 4, all.height};
        planar.plane[2] = {cr.data(), all.width / 4, all.width / 4, all.height};
        return toImage(planar);
    }
    Image image(frame.plane[0].width, frame.plane[0].height);
    const int shiftX = chromaShiftX(frame.chroma), shiftY = chromaShiftY(frame.chroma);
    const bool full = frame.range == ColourRange::Full;
    const double black = full ? 0 : 16, lumaScale = full ? 1 : 255.0 / 219, chromaScale = full ? 1 : 255.0 / 224;
    for (int y = 0; y < image.height; ++y)
        for (int x = 0; x < image.width; ++x) {
            const double luma = lumaScale * (sampleAt(frame.plane[0], x, y, frame.bitDepth) - black);
            double cb = 0, cr = 0;
            if (frame.chroma != Chroma::None) {
                const int cx = std::min(x >> shiftX, frame.plane[1].width - 1),
                          cy = std::min(y >> shiftY, frame.plane[1].height - 1);
                cb = chromaScale * (sampleAt(frame.plane[1], cx, cy, frame.bitDepth) - 128);
                cr = chromaScale * (sampleAt(frame.plane[2], cx, cy, frame.bitDepth) - 128);
            }
            std::uint8_t* p = image.at(x, y);
            p[0] = toByte(luma + 1.402 * cr);
            p[1] = toByte(luma - 0.714 * cr - 0.344 * cb);
            p[2] = toByte(luma + 1.772 * cb);
        }
    return image;
}

void paste(Image& image, const Image& part, int x, int y) {
    const int left = std::max(0, -x), right = std::min(part.width, image.width - x);
    if (left >= right) return;
    for (int row = std::max(0, -y); row < std::min(part.height, image.height - y); ++row)
        std::copy_n(part.at(left, row), 3 * (right - left), image.at(x + left, y + row));
}

Image shrink(const Image& image, int width) {
    const int factor = (image.width + width - 1) / width;
    if (factor <= 1) return image;
    Image small(image.width / factor, std::max(image.height / factor, 1));
    for (int y = 0; y < small.height; ++y)
        for (int x = 0; x < small.width; ++x)
            for (int c = 0; c < 3; ++c) {
                int sum = 0;
                for (int dy = 0; dy < factor; ++dy)
                    for (int dx = 0; dx < factor; ++dx)
                        sum += image.at(x * factor + dx, std::min(y * factor + dy, image.height - 1))[c];
                small.at(x, y)[c] = static_cast<std::uint8_t>(sum / (factor * factor));
            }
    return small;
}

void writePng(const Image& image, const std::string& file) {
    png_image png = {};
    png.version = PNG_IMAGE_VERSION;
    png.width = static_cast<png_uint_32>(image.width);
    png.height = static_cast<png_uint_32>(image.height);
    png.format = PNG_FORMAT_RGB;
    // libpng's own way to a named file removes the name if the writing fails, be it a device.
    std::FILE* out = std::fopen(file.c_str(), "wb");
    if (out == nullptr) throw std::runtime_error("cannot write " + file + ": " + std::strerror(errno));
    const bool written = png_image_write_to_stdio(&png, out, 0, image.rgb.data(), 0, nullptr) != 0;
    const bool closed = std::fclose(out) == 0;
    if (!written) throw std::runtime_error("cannot write " + file + ": " + png.message);
    if (!closed) throw std::runtime_error("cannot write " + file + ": " + std::strerror(errno));
}

}  // namespace vekapp
