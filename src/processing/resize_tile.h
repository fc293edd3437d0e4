// A part of a resized picture on the stack, small enough for the first cache: three planes of the pixels' resolution.
#ifndef VEKVC_PROCESSING_RESIZE_TILE_H
#define VEKVC_PROCESSING_RESIZE_TILE_H

#include "processing/picture.h"

namespace vekvc::simd {

// The most columns and rows of a tile: long rows where they stay rows, few columns where they become rows.
struct ResizeShape {
    int columns, rows;
};
inline constexpr ResizeShape kUpright = {256, 32}, kTurned = {64, 32};
inline constexpr int kResizeColumns = kUpright.columns;

// Columns `left` to `right` - 1, rows `top` to `bottom` - 1 of the resized picture.
struct ResizeWindow {
    std::ptrdiff_t left, top, right, bottom;

    constexpr std::ptrdiff_t width() const { return right - left; }
    constexpr std::ptrdiff_t height() const { return bottom - top; }
};

// A row's columns begin kBefore bytes into it, or up to three later where they have to begin at a multiple of four.
// What vectors write before (less than 8 bytes) and behind them (less than 80) is nobody's.
class ResizeTile {
  public:
    // The shapes above, or the second one on its side.
    explicit ResizeTile(std::ptrdiff_t columns) : step_(columns + kAround) {}

    std::ptrdiff_t step() const { return step_; }
    Vek8u* row(int component, std::ptrdiff_t y) { return samples_[component] + y * step_ + kBefore; }

  private:
    static constexpr int kBefore = 32, kAround = kBefore + 96;
    static constexpr int kBytes =
        std::max({(kUpright.columns + kAround) * kUpright.rows, (kTurned.columns + kAround) * kTurned.rows,
                  (kTurned.rows + kAround) * kTurned.columns});

    std::ptrdiff_t step_;
    alignas(32) Vek8u samples_[3][kBytes];
};

}  // namespace vekvc::simd

#endif
