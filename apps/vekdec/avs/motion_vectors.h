// Motion vectors: predictions from neighbours, and those that are derived from others (GB/T 20090.2 clause 9).
#pragma once

#include "avs/picture.h"

namespace vekdec::avs {

// A part of a macroblock that has vectors of its own, in blocks of 8x8 samples.
struct Partition {
    // The neighbour that is asked first: to the left, above, above to the right.
    enum class First : std::uint8_t { None, A, B, C };

    int x, y, width, height;
    First first = First::None;
};

inline constexpr Partition kWhole[] = {{0, 0, 2, 2}};
inline constexpr Partition kRows[] = {{0, 0, 2, 1, Partition::First::B}, {0, 1, 2, 1, Partition::First::A}};
inline constexpr Partition kColumns[] = {{0, 0, 1, 2, Partition::First::A}, {1, 0, 1, 2, Partition::First::C}};
inline constexpr Partition kQuarters[] = {{0, 0, 1, 1}, {1, 0, 1, 1}, {0, 1, 1, 1}, {1, 1, 1, 1}};

// A vector before it is known to be one.
struct VectorSum {
    std::int64_t x = 0, y = 0;

    MotionVector vector() const;  // throws BadSyntax where it leaves 16 bits
};

class VectorPredictor {
  public:
    void begin(const PictureContext& context);
    // The neighbours of a macroblock; nullptr: none in the slice.
    void beginMacroblock(const Macroblock* left, const Macroblock* above, const Macroblock* aboveLeft,
                         const Macroblock* aboveRight);

    // From what is set of the neighbours and of the macroblock itself.
    VectorSum predict(Direction direction, const Partition& partition, int ref) const;
    // What a skipped macroblock of a P picture moves by.
    MotionVector skipped() const;
    void set(Macroblock& mb, Direction direction, const Partition& partition, Motion motion);

    // B pictures: the backward vector of a symmetric partition.
    MotionVector symmetric(MotionVector forward) const;
    // Of direct mode: `vector` is that of the later anchor, to a reference at the distance `distance`.
    MotionVector direct(Direction direction, MotionVector vector, int distance) const;

  private:
    // The blocks of the macroblock and around it, three rows of four: above left, two above, above right; left, two of
    // the macroblock, and one to the right, which is never there; the same below.
    static constexpr int kColumns = 4, kFirst = kColumns + 1;
    struct Grid {
        Motion at[3 * kColumns];
    };

    std::int64_t scaled(int component, int ref, const Motion& from) const;

    const PictureContext* context_ = nullptr;
    int unit_[kMostReferences] = {};  // 512 / distance
    Grid grid_[2];
};

}  // namespace vekdec::avs
