// NAL units (H.264 7.3.1): their types, and the two ways in which streams hold them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace vekdec::h264 {

enum class NalUnitType : std::uint8_t {  // Table 7-1
    Slice = 1,
    SlicePartitionA = 2,
    SlicePartitionB = 3,
    SlicePartitionC = 4,
    IdrSlice = 5,
    Sei = 6,
    SequenceParameterSet = 7,
    PictureParameterSet = 8,
    AccessUnitDelimiter = 9,
    EndOfSequence = 10,
    EndOfStream = 11,
};

struct NalUnit {
    int refIdc = 0;
    NalUnitType type{};
    std::span<const std::uint8_t> payload;  // without the header byte, emulation prevention still in
    std::uint64_t position = 0;             // in the file, as far as it is known
};

// The unit in these bytes, the header byte first; false where they are none.
bool readNalUnit(std::span<const std::uint8_t> bytes, NalUnit& nal);

// The decoder configuration record of containers (ISO 14496-15 5.2.4.1): parameter sets, and how many bytes hold the
// length in front of each unit of a sample.
struct DecoderConfiguration {
    int lengthBytes = 0;
    std::vector<std::span<const std::uint8_t>> units;
};
// False where the bytes are no such record; it may still be a byte stream.
bool parseDecoderConfiguration(std::span<const std::uint8_t> bytes, DecoderConfiguration& configuration);

// How surely a byte stream (Annex B) is one of H.264: a start code, then parameter sets and slices.
int probe(std::span<const std::uint8_t> begin);

}  // namespace vekdec::h264
