// The units of raw streams: those between start codes (SMPTE 421M Annex E), and the records of files of Simple and Main
// profile (Annex L).
#pragma once

#include <cstdint>
#include <span>

namespace vekdec::vc1 {

enum StartCode : std::uint8_t {
    kEndOfSequence = 0x0a,
    kSlice = 0x0b,
    kField = 0x0c,
    kFrame = 0x0d,
    kEntryPoint = 0x0e,
    kSequenceHeader = 0x0f,
};

// Little endian.
inline std::uint32_t word24(std::span<const std::uint8_t> bytes) {
    return bytes[0] | std::uint32_t{bytes[1]} << 8 | std::uint32_t{bytes[2]} << 16;
}

// The two take at least four bytes. A start code's last byte is neither.
inline bool isFileHeader(std::span<const std::uint8_t> bytes) { return bytes[3] == 0xc5; }
inline bool isFrameRecord(std::span<const std::uint8_t> bytes) { return (bytes[3] & 0x7f) == 0; }
// Of a frame record: its size, whether it can be decoded alone, its time.
inline constexpr std::size_t kRecordHead = 8;

}  // namespace vekdec::vc1
