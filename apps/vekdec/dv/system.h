// The systems of DV and DV100 (IEC 61834-2, SMPTE 314M, SMPTE 370M): their pictures, and where the macroblocks of a
// frame's video segments lie.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "frames/plane.h"

namespace vekdec::dv {

inline constexpr int kDifBytes = 80, kSequenceBytes = 150 * kDifBytes, kSegments = 27, kMacroblocks = 5;

enum class Sampling { C411, C420, C422, Dv100 };

struct System {
    const char* name;
    bool fiftyHertz;
    int width, height;
    Sampling sampling;
    int sequences, channels;
    vekapp::Rational rate;
    vekapp::FieldOrder fields;

    std::size_t frameBytes() const { return static_cast<std::size_t>(sequences * channels) * kSequenceBytes; }
    vekapp::Chroma chroma() const {
        return sampling == Sampling::C411   ? vekapp::Chroma::C411
               : sampling == Sampling::C420 ? vekapp::Chroma::C420
                                            : vekapp::Chroma::C422;
    }
    int blocksPerMacroblock() const { return sampling == Sampling::C422 ? 4 : sampling == Sampling::Dv100 ? 8 : 6; }
};

// Do the first DIF blocks have the kinds that a frame begins with?
bool beginsFrame(std::span<const std::uint8_t> bytes);
// The system of the frame that begins here, told from its first DIF sequence; null where it is none.
const System* systemOf(std::span<const std::uint8_t> frame);

// Whole: 16x16, or 16x8 of 4:2:2, or 32x8 of 4:1:1. Edge: 16x16 of 4:1:1 at the right. Bottom: 32x8 in the last rows of
// 1080 lines.
enum class Shape : std::uint8_t { None, Whole, Edge, Bottom };
struct MacroblockPlace {
    int x = 0, y = 0;           // of its first luma sample
    Shape shape = Shape::None;  // None: there is no video
};
// Of a macroblock (0 to 4) in a segment (0 to 26) of a DIF sequence; `channel` counts on from 2 in the second frames of
// pairs of 720 lines.
MacroblockPlace placeOf(const System& system, int channel, int sequence, int segment, int macroblock);

// Where segment 0 to 26 of a DIF sequence begins, in bytes.
constexpr std::size_t segmentOffset(int segment) {
    const int v = 5 * segment;
    return static_cast<std::size_t>(kDifBytes * (6 + 16 * (v / 15) + 1 + v % 15));
}

}  // namespace vekdec::dv
