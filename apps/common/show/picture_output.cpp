#include "show/picture_output.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>

namespace vekapp {
namespace {

// The frame, and what is drawn over it.
class Painter {
  public:
    Painter(Overlay overlay, BlocksOf blocksOf) : overlay_(overlay), blocksOf_(std::move(blocksOf)), legend_(overlay) {}
    Image paint(const Frame& frame) {
        Image image = toImage(frame);
        if (overlay_ != Overlay::None) {
            const BlockMap map = blocksOf_(frame);
            drawOverlay(image, map, overlay_);
            legend_.add(map);
        }
        return image;
    }
    // With the legend, if there is one, below it.
    Image explained(const Image& image) const {
        if (overlay_ == Overlay::None) return image;
        const Image strip = legend_.strip(image.width);
        Image both(image.width, image.height + strip.height);
        paste(both, image, 0, 0);
        paste(both, strip, 0, image.height);
        return both;
    }

  private:
    Overlay overlay_;
    BlocksOf blocksOf_;
    Legend legend_;
};

class PngOutput : public FrameOutput {
  public:
    PngOutput(std::string directory, Overlay overlay, BlocksOf blocksOf)
        : directory_(std::move(directory)), painter_(overlay, std::move(blocksOf)) {}
    void add(const Frame& frame) override {
        if (!made_) std::filesystem::create_directories(directory_);
        made_ = true;
        char name[32];
        std::snprintf(name, sizeof name, "/frame-%05d.png", frame.number);
        writePng(painter_.explained(painter_.paint(frame)), directory_ + name);
    }

  private:
    std::string directory_;
    Painter painter_;
    bool made_ = false;
};

// Keeps every frame at first; when twice as many are kept as the sheet shows, every second one is let go.
class SheetOutput : public FrameOutput {
  public:
    SheetOutput(std::string file, Overlay overlay, BlocksOf blocksOf)
        : file_(std::move(file)), painter_(overlay, std::move(blocksOf)) {}
    void add(const Frame& frame) override {
        if (seen_++ % interval_ != 0) return;
        kept_.push_back(shrink(painter_.paint(frame), kCellWidth));
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
        Image sheet(columns * (cellWidth + kGap) + kGap, rows * (cellHeight + kGap) + kGap, {32, 32, 32});
        for (std::size_t i = 0; i < count; ++i)
            paste(sheet, *shown[i], kGap + static_cast<int>(i) % columns * (cellWidth + kGap),
                  kGap + static_cast<int>(i) / columns * (cellHeight + kGap));
        writePng(painter_.explained(sheet), file_);
        return true;
    }

  private:
    static constexpr std::size_t kShown = 12;
    static constexpr int kGap = 6, kCellWidth = 400;

    std::string file_;
    Painter painter_;
    std::vector<Image> kept_;
    std::size_t seen_ = 0, interval_ = 1;
};

}  // namespace

std::unique_ptr<FrameOutput> makePngOutput(const std::string& directory, Overlay overlay, BlocksOf blocksOf) {
    return std::make_unique<PngOutput>(directory, overlay, std::move(blocksOf));
}
std::unique_ptr<FrameOutput> makeSheetOutput(const std::string& file, Overlay overlay, BlocksOf blocksOf) {
    return std::make_unique<SheetOutput>(file, overlay, std::move(blocksOf));
}

}  // namespace vekapp
