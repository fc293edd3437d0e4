// One stream through the decoder, whatever its bytes are.
#ifndef VEKVC_FUZZ_DECODE_ANYTHING_H
#define VEKVC_FUZZ_DECODE_ANYTHING_H

#include <cstddef>
#include <cstdint>
#include <new>
#include <span>

#include "h264/decoder.h"

namespace vekvc_fuzz {

// Decodes, and reads the corners of every plane that is shown. Gives what the decoder counted.
inline vekdec::h264::Statistics decodeAnything(std::span<const std::uint8_t> stream) {
    using namespace vekdec;
    // A few bytes can name a picture of the largest level; the memory for it is legal, but slow to fuzz with.
    constexpr long kMostPictures = 200;
    std::uint64_t sum = 0;
    h264::Decoder decoder(
        [&](const Frame& frame) {
            for (const FramePlane& plane : frame.plane)  // every sample shown must be there
                for (int y = 0; y < plane.height && plane.data != nullptr; ++y) {
                    const std::ptrdiff_t last = (plane.width - 1) * (frame.bitDepth > 8 ? 2 : 1);
                    sum += plane.data[plane.stride * y] + plane.data[plane.stride * y + last];
                }
        },
        [](const std::string&) {});
    try {
        decoder.decode(stream, [&](std::size_t) { return decoder.statistics().pictures < kMostPictures; });
    } catch (const std::bad_alloc&) {
    }
    volatile std::uint64_t keep = sum;
    (void)keep;
    return decoder.statistics();
}

}  // namespace vekvc_fuzz

#endif
