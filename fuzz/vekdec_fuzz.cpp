// Whole streams through the decoder: any bytes must end without a crash, a hang or memory without bound.
#include <cstddef>
#include <cstdint>
#include <new>

#include "h264/format.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vekdec;
    // A few bytes can name a picture of the largest level; the memory for it is legal, but slow to fuzz with.
    constexpr long kMostPictures = 200;
    std::uint64_t sum = 0;
    const auto look = [&](const Frame& frame) {
        for (const FramePlane& plane : frame.plane)  // every sample shown must be there
            for (int y = 0; y < plane.height && plane.data != nullptr; ++y) {
                const std::ptrdiff_t last = (plane.width - 1) * (frame.bitDepth > 8 ? 2 : 1);
                sum += plane.data[plane.stride * y] + plane.data[plane.stride * y + last];
            }
    };
    try {
        const Format format = h264::format();
        const auto decoder = format.make({look, [](const std::string&) {}}, {});
        std::span<const std::uint8_t> left(data, size);
        while (!left.empty() && decoder->statistics().pictures < kMostPictures) {
            std::size_t searched = 0, length = format.split(left, searched);
            if (length == 0) length = left.size();
            Packet packet;
            packet.data = left.first(length);
            decoder->decode(packet);
            left = left.subspan(length);
        }
        decoder->flush();
    } catch (const std::bad_alloc&) {
    }
    volatile std::uint64_t keep = sum;
    (void)keep;
    return 0;
}
