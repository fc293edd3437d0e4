// What a decoder says of the blocks of a frame, for overlays.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace vekapp {

struct Colour {
    int r = 0, g = 0, b = 0;
};

struct BlockKind {
    const char* name;
    Colour colour;
};

// A rectangle of luma samples of the frame as it is shown; it may reach beyond the borders. Rows of a block of one
// field lie two rows of the frame apart.
struct Block {
    int x = 0, y = 0, width = 0, height = 0, rowDistance = 1;
    int kind = 0;  // index into the map's kinds
    int qp = 0;
};

// Motion of the place (x, y) to (x + dx, y + dy) in a reference, in luma samples.
struct BlockVector {
    int x = 0, y = 0, dx = 0, dy = 0;
    bool backward = false;  // or of the second list
};

struct BlockMap {
    std::span<const BlockKind> kinds;
    int finestQp = 0, coarsestQp = 51;
    std::vector<Block> blocks;
    std::vector<BlockVector> vectors;
};

}  // namespace vekapp
