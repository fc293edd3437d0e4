#include "frames/plane.h"

namespace vekapp {

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
