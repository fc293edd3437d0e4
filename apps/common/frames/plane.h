// Planes of samples in memory, and the pictures made of them.
#pragma once

#include <memory>

#include "frames/frame.h"
#include "frames/sample_memory.h"

namespace vekapp {

// Samples that may be written; nothing may be read or written outside.
struct Plane {
    std::uint8_t* data = nullptr;
    std::ptrdiff_t stride = 0;  // bytes
    int width = 0, height = 0;  // samples

    // Every second row, as a plane of its own.
    Plane field(bool bottom) const {
        return {data + (bottom ? stride : 0), 2 * stride, width, (height + (bottom ? 0 : 1)) / 2};
    }
    // The row of an 8-bit plane.
    std::uint8_t* at(int x, int y) const { return data + stride * y + x; }
};

// The first `width` x `height` luma samples of a picture, and the chroma samples that belong to them, as the planes of
// a frame whose chroma format is set.
void showPlanes(Frame& frame, const Plane (&planes)[3], int width, int height);

// The rectangle of `to` as it is in `from`, or grey if there is none. Planes of 8 bits.
void copyOrGrey(const Plane& to, const Plane* from, int x, int y, int width, int height);

// The rows of one field over those of the other. Planes of 8 bits.
void repeatField(const Plane& plane, bool bottom);

// What the planes of a picture are like. Sizes are those of memory: whole macroblocks, before cropping.
struct PictureFormat {
    int width = 0, height = 0;  // luma samples
    Chroma chroma = Chroma::C420;
    int bitDepth = 8;

    int planes() const { return chroma == Chroma::None ? 1 : 3; }
    int bytesPerSample() const { return bitDepth > 8 ? 2 : 1; }
    int chromaWidth() const { return (width + (1 << chromaShiftX(chroma)) - 1) >> chromaShiftX(chroma); }
    int chromaHeight() const { return (height + (1 << chromaShiftY(chroma)) - 1) >> chromaShiftY(chroma); }
    bool operator==(const PictureFormat&) const = default;
};

// Planes that own their memory. Each lies alone, so that guarded memory sees every access outside. Samples are 0 at
// first. Throws std::bad_alloc.
struct PictureMemory {
    PictureMemory() = default;
    explicit PictureMemory(const PictureFormat& format);

    Plane plane[3];

  private:
    std::unique_ptr<SampleMemory> memory_[3];
};

}  // namespace vekapp
