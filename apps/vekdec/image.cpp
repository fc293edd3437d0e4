#include "image.h"

#include <png.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <stdexcept>

namespace vekdec {
namespace {

int sampleAt(const FramePlane& plane, int x, int y, int bitDepth) {
    const std::uint8_t* row = plane.data + plane.stride * y;
    if (bitDepth == 8) return row[x];
    std::uint16_t sample;
    std::memcpy(&sample, row + 2 * x, 2);
    return sample >> (bitDepth - 8);
}

std::uint8_t toByte(double v) { return static_cast<std::uint8_t>(std::clamp(v + 0.5, 0.0, 255.0)); }

class PngOutput : public FrameOutput {
  public:
    PngOutput(std::string directory, Overlay overlay, DrawOverlay draw)
        : directory_(std::move(directory)), overlay_(overlay), draw_(draw) {}
    void add(const Frame& frame) override {
        if (!made_) std::filesystem::create_directories(directory_);
        made_ = true;
        Image image = toImage(frame);
        if (overlay_ != Overlay::None) draw_(image, frame, overlay_);
        char name[32];
        std::snprintf(name, sizeof name, "/frame-%05d.png", frame.number);
        writePng(image, directory_ + name);
    }

  private:
    std::string directory_;
    Overlay overlay_;
    DrawOverlay draw_;
    bool made_ = false;
};

// Keeps every frame at first; when twice as many are kept as the sheet shows, every second one is let go.
class SheetOutput : public FrameOutput {
  public:
    SheetOutput(std::string file, Overlay overlay, DrawOverlay draw)
        : file_(std::move(file)), overlay_(overlay), draw_(draw) {}
    void add(const Frame& frame) override {
        if (seen_++ % interval_ != 0) return;
        Image image = toImage(frame);
        if (overlay_ != Overlay::None) draw_(image, frame, overlay_);
        kept_.push_back(shrink(image));
        if (kept_.size() < 2 * kShown) return;
        for (std::size_t i = 1; i < kShown; ++i) kept_[i] = std::move(kept_[2 * i]);
        kept_.resize(kShown);
        interval_ *= 2;
    }
    bool finish() override {
        if (kept_.empty()) return true;
        std::vector<const Image*> shown;
        const std::size_t count = std::min(kept_.size(), kShown);
        for (std::size_t i = 0; i < count; ++i) shown.push_back(&kept_[i * kept_.size() / count]);
        const int columns = std::min(4, static_cast<int>(count)),
                  rows = (static_cast<int>(count) + columns - 1) / columns;
        int cellWidth = 0, cellHeight = 0;
        for (const Image* image : shown) {
            cellWidth = std::max(cellWidth, image->width);
            cellHeight = std::max(cellHeight, image->height);
        }
        Image sheet;
        sheet.resize(columns * (cellWidth + kGap) + kGap, rows * (cellHeight + kGap) + kGap);
        std::fill(sheet.rgb.begin(), sheet.rgb.end(), std::uint8_t{32});
        for (std::size_t i = 0; i < count; ++i) {
            const int left = kGap + static_cast<int>(i) % columns * (cellWidth + kGap),
                      top = kGap + static_cast<int>(i) / columns * (cellHeight + kGap);
            const Image& image = *shown[i];
            for (int y = 0; y < image.height; ++y)
                std::copy_n(image.rgb.begin() + 3 * std::ptrdiff_t{image.width} * y, 3 * image.width,
                            sheet.at(left, top + y));
        }
        writePng(sheet, file_);
        return true;
    }

  private:
    static constexpr std::size_t kShown = 12;
    static constexpr int kGap = 6, kCellWidth = 400;

    // Means of whole squares of samples, until the image fits a cell.
    static Image shrink(const Image& image) {
        const int factor = (image.width + kCellWidth - 1) / kCellWidth;
        if (factor <= 1) return image;
        Image small;
        small.resize(image.width / factor, std::max(image.height / factor, 1));
        for (int y = 0; y < small.height; ++y)
            for (int x = 0; x < small.width; ++x)
                for (int c = 0; c < 3; ++c) {
                    int sum = 0;
                    for (int dy = 0; dy < factor; ++dy)
                        for (int dx = 0; dx < factor; ++dx)
                            sum += const_cast<Image&>(image).at(x * factor + dx,
                                                                std::min(y * factor + dy, image.height - 1))[c];
                    small.at(x, y)[c] = static_cast<std::uint8_t>(sum / (factor * factor));
                }
        return small;
    }

    std::string file_;
    Overlay overlay_;
    DrawOverlay draw_;
    std::vector<Image> kept_;
    std::size_t seen_ = 0, interval_ = 1;
};

}  // namespace

Image toImage(const Frame& frame) {
    Image image;
    image.resize(frame.plane[0].width, frame.plane[0].height);
    const int shiftX = frame.chromaFormatIdc == 0 ? 0 : 1, shiftY = frame.chromaFormatIdc == 1 ? 1 : 0;
    for (int y = 0; y < image.height; ++y)
        for (int x = 0; x < image.width; ++x) {
            const double luma = 1.164 * (sampleAt(frame.plane[0], x, y, frame.bitDepth) - 16);
            double cb = 0, cr = 0;
            if (frame.chromaFormatIdc != 0) {
                const int cx = std::min(x >> shiftX, frame.plane[1].width - 1),
                          cy = std::min(y >> shiftY, frame.plane[1].height - 1);
                cb = sampleAt(frame.plane[1], cx, cy, frame.bitDepth) - 128;
                cr = sampleAt(frame.plane[2], cx, cy, frame.bitDepth) - 128;
            }
            std::uint8_t* p = image.at(x, y);
            p[0] = toByte(luma + 1.596 * cr);
            p[1] = toByte(luma - 0.813 * cr - 0.392 * cb);
            p[2] = toByte(luma + 2.017 * cb);
        }
    return image;
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

std::unique_ptr<FrameOutput> makePngOutput(const std::string& directory, Overlay overlay, DrawOverlay draw) {
    return std::make_unique<PngOutput>(directory, overlay, draw);
}
std::unique_ptr<FrameOutput> makeSheetOutput(const std::string& file, Overlay overlay, DrawOverlay draw) {
    return std::make_unique<SheetOutput>(file, overlay, draw);
}

}  // namespace vekdec
