// Start codes 00 00 01 of byte streams: MPEG, H.264, VC-1, AVS.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace vekdec {

// The position of the next 00 00 01 at or behind `from`, or the stream's end.
std::size_t findStartCode(std::span<const std::uint8_t> stream, std::size_t from);

// One unit behind its start code, up to the next one or the end.
struct StartCodeUnit {
    std::span<const std::uint8_t> bytes;  // the byte behind 00 00 01 first; not empty
    std::size_t position = 0;             // of the start code
};

// Hands out the units of `stream` one after the other; what stands before the first start code is passed over.
class StartCodeReader {
  public:
    explicit StartCodeReader(std::span<const std::uint8_t> stream) : stream_(stream) {}
    bool next(StartCodeUnit& unit);  // false at the end

  private:
    std::span<const std::uint8_t> stream_;
    std::size_t at_ = 0;
};

// For the splitting of raw streams (see SplitPacket): a packet reaches from one start code to the next.
std::size_t splitAtStartCode(std::span<const std::uint8_t> bytes, std::size_t& searched);

}  // namespace vekdec
