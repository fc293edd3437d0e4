#include "frames/plane.h"

#include <cstring>

namespace vekapp {

void showPlanes(Frame& frame, const Plane (&planes)[3], int width, int height) {
    for (int i = 0; i < (frame.chroma == Chroma::None ? 1 : 3); ++i) {
        const int shiftX = i == 0 ? 0 : chromaShiftX(frame.chroma), shiftY = i == 0 ? 0 : chromaShiftY(frame.chroma);
        frame.plane[i] = {planes[i].data, planes[i].stride, (width + (1 << shiftX) - 1) >> shiftX,
                          (height + (1 << shiftY) - 1) >> shiftY};
    }
}

void copyOrGrey(const Plane& to, const Plane* from, int x, int y, int width, int height) {
    for (int row = y; row < y + height; ++row) {
        const auto bytes = static_cast<std::size_t>(width);
        if (from == nullptr)
            std::memset(to.at(x, row), 128, bytes);
        else
            std::memmove(to.at(x, row), from->at(x, row), bytes);
    }
}

void repeatField(const Plane& plane, bool bottom) {
    const int have = bottom ? 1 : 0;
    for (int y = 0; y + 1 < plane.height; y += 2)
        std::memcpy(plane.at(0, y + 1 - have), plane.at(0, y + have), static_cast<std::size_t>(plane.width));
}

PictureMemory::PictureMemory(const PictureFormat& format) {
    for (int i = 0; i < format.planes(); ++i) {
        Plane& p = plane[i];
        p.width = i == 0 ? format.width : format.chromaWidth();
        p.height = i == 0 ? format.height : format.chromaHeight();
        p.stride = static_cast<std::ptrdiff_t>(p.width) * format.bytesPerSample();
        memory_[i] =
            std::make_unique<SampleMemory>(static_cast<std::size_t>(p.stride) * static_cast<std::size_t>(p.height));
        p.data = memory_[i]->data();
    }
}

}  // namespace vekapp
