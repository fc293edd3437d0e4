// What sources give and decoders take.
#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <span>
#include <string>

#include "frames/frame.h"

namespace vekapp {

inline constexpr std::int64_t kNoTime = std::numeric_limits<std::int64_t>::min();

// Coded bytes of a stream: of raw streams one unit between start codes (or one frame record), of containers what they
// hold as one sample. Valid until the source is asked for the next one.
struct Packet {
    std::span<const std::uint8_t> data;
    std::int64_t pts = kNoTime;               // presentation time in the container's units
    std::span<const std::uint8_t> extradata;  // the container's description of the stream, the same for all packets
    std::uint64_t position = 0;               // of the data in the file, as far as it is known
};

// What a container says of its stream; a raw stream says nothing.
struct StreamInfo {
    std::string codec;  // as libavcodec names it
    Rational rate, sampleAspect;
    int width = 0, height = 0;
};

// Where packets come from. Throws std::runtime_error where reading fails.
class Source {
  public:
    virtual ~Source() = default;
    virtual bool next(Packet& packet) = 0;  // false at the end
    virtual const StreamInfo& info() const = 0;
    virtual std::uint64_t done() const = 0;   // bytes of the file that are read
    virtual std::uint64_t total() const = 0;  // 0: not known
};

// The length of the packet with which `bytes` begin, or 0 if its end is not among them: then `searched` is set to the
// number of bytes that need not be looked at again.
using SplitPacket = std::size_t (*)(std::span<const std::uint8_t> bytes, std::size_t& searched);

}  // namespace vekapp
