// What a decoder says of its blocks, drawn over a frame, and the legend that explains the colours.
#pragma once

#include <set>
#include <string>

#include "show/image.h"

namespace vekapp {

enum class Overlay { None, Kinds, Vectors, Qp };

void drawOverlay(Image& image, const BlockMap& map, Overlay overlay);

// Collects what was drawn, and says in a strip of its own what the colours mean.
class Legend {
  public:
    explicit Legend(Overlay overlay) : overlay_(overlay) {}
    void add(const BlockMap& map);
    Image strip(int width) const;

  private:
    Overlay overlay_;
    std::span<const BlockKind> kinds_;
    std::set<int> drawn_;  // of the kinds
    int finestQp_ = 0, coarsestQp_ = 51;
};

}  // namespace vekapp
