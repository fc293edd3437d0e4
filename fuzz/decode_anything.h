// One stream through a decoder of vekdec, whatever its bytes are.
#ifndef VEKVC_FUZZ_DECODE_ANYTHING_H
#define VEKVC_FUZZ_DECODE_ANYTHING_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <span>
#include <string_view>

#include "decoder.h"

namespace vekvc_fuzz {

inline const vekdec::Format& formatNamed(std::string_view name) {
    for (const vekdec::Format& format : vekdec::formats())
        if (name == format.name) return format;
    std::abort();
}

// Decodes, and reads the corners of every plane that is shown and its blocks. Gives what the decoder counted.
inline vekdec::Statistics decodeAnything(const vekdec::Format& format, std::span<const std::uint8_t> stream) {
    using namespace vekdec;
    // A few bytes can name a picture of the largest level; the memory for it is legal, but slow to fuzz with.
    constexpr long kMostPictures = 200;
    std::uint64_t sum = 0;
    std::unique_ptr<Decoder> decoder;
    const auto look = [&](const Frame& frame) {
        for (const FramePlane& plane : frame.plane)  // every sample shown must be there
            for (int y = 0; y < plane.height && plane.data != nullptr; ++y) {
                const std::ptrdiff_t last = (plane.width - 1) * (frame.bitDepth > 8 ? 2 : 1);
                sum += plane.data[plane.stride * y] + plane.data[plane.stride * y + last];
            }
        if (frame.number % 8 == 0) sum += decoder->blocks(frame).blocks.size();
    };
    decoder = format.make({look, [](const std::string&) {}}, {});
    try {
        while (!stream.empty() && decoder->statistics().pictures < kMostPictures) {
            std::size_t searched = 0, length = format.split(stream, searched);
            if (length == 0) length = stream.size();
            Packet packet;
            packet.data = stream.first(length);
            decoder->decode(packet);
            stream = stream.subspan(length);
        }
        decoder->flush();
    } catch (const std::bad_alloc&) {
    }
    volatile std::uint64_t keep = sum;
    (void)keep;
    return decoder->statistics();
}

}  // namespace vekvc_fuzz

#endif
