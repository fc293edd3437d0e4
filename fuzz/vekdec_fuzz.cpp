// Whole streams through the decoder: any bytes must end without a crash, a hang or memory without bound.
#include <cstddef>
#include <cstdint>
#include <new>

#include "h264/decoder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vekdec;
    // A few bytes can name a picture of the largest level; the memory for it is legal, but slow to fuzz with.
    constexpr long kMostPictures = 200;
    std::uint64_t sum = 0;
    long shown = 0;
    h264::Decoder decoder(
        [&](const Frame& frame) {
            ++shown;
            for (const FramePlane& plane : frame.plane)  // every sample shown must be there
                for (int y = 0; y < plane.height && plane.data != nullptr; ++y) {
                    const std::ptrdiff_t last = (plane.width - 1) * (frame.bitDepth > 8 ? 2 : 1);
                    sum += plane.data[plane.stride * y] + plane.data[plane.stride * y + last];
                }
        },
        [](const std::string&) {});
    try {
        decoder.decode({data, size}, [&](std::size_t) { return decoder.statistics().pictures < kMostPictures; });
    } catch (const std::bad_alloc&) {
    }
    volatile std::uint64_t keep = sum;
    (void)keep;
    return 0;
}
