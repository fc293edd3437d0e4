// A frame as it is shown: cropped planes, ready for output, and what a viewer must know of them. The same for all
// standards.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vekapp {

struct FramePlane {
    const std::uint8_t* data = nullptr;
    std::ptrdiff_t stride = 0;  // bytes
    int width = 0, height = 0;  // samples
};

struct Rational {
    int num = 0, den = 0;
    bool known() const { return num > 0 && den > 0; }
};

// Packed422: one plane of bytes Cb Y Cr Y for every two luma samples; its width counts bytes.
enum class Chroma : std::uint8_t { None, C411, C420, C422, Packed422 };
// Where the chroma samples of 4:2:0 lie: between the luma columns, in every second one, or as DV at 625 lines has them.
enum class ChromaPlace : std::uint8_t { Centre, Left, Dv };
enum class FieldOrder : std::uint8_t { Unknown, Progressive, TopFirst, BottomFirst, Mixed };
enum class ColourRange : std::uint8_t { Unknown, Limited, Full };

// Luma samples that share one chroma sample, as shifts.
constexpr int chromaShiftX(Chroma chroma) { return chroma == Chroma::C411 ? 2 : chroma == Chroma::None ? 0 : 1; }
constexpr int chromaShiftY(Chroma chroma) { return chroma == Chroma::C420 ? 1 : 0; }

struct Frame {
    FramePlane plane[3];  // without chroma: only the first
    int bitDepth = 8;     // 8: one byte per sample, more: 16-bit little endian words
    Chroma chroma = Chroma::C420;
    ChromaPlace chromaPlace = ChromaPlace::Left;
    int number = 0;         // in output order, from 0
    Rational rate;          // frames per second
    Rational sampleAspect;  // width of a sample to its height
    FieldOrder fields = FieldOrder::Unknown;
    ColourRange range = ColourRange::Unknown;
};

}  // namespace vekapp
