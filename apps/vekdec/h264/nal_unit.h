// The byte stream format (H.264 Annex B): NAL units between start codes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace vekdec::h264 {

struct NalUnit {
    int refIdc = 0, type = 0;
    std::span<const std::uint8_t> payload;  // without the header byte, emulation prevention still in
    std::size_t position = 0;               // of the start code in the stream
};

// Hands out the NAL units of a whole stream in memory, one after the other.
class NalUnitReader {
  public:
    explicit NalUnitReader(std::span<const std::uint8_t> stream) : stream_(stream) {}
    bool next(NalUnit& nal);  // false at the end
    std::size_t position() const { return at_; }

  private:
    std::size_t findStartCode(std::size_t from) const;

    std::span<const std::uint8_t> stream_;
    std::size_t at_ = 0;
};

// Does the stream begin like one of H.264: zeros, a start code, parameter sets? Its first kBytesToKnow bytes tell.
inline constexpr std::size_t kBytesToKnow = 1 << 20;
bool looksLikeH264(std::span<const std::uint8_t> stream);

}  // namespace vekdec::h264
