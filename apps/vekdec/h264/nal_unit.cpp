#include "h264/nal_unit.h"

#include "bits/start_code.h"

namespace vekdec::h264 {

bool readNalUnit(std::span<const std::uint8_t> bytes, NalUnit& nal) {
    if (bytes.empty() || (bytes[0] & 0x80) != 0) return false;  // forbidden_zero_bit
    nal.refIdc = bytes[0] >> 5 & 3;
    nal.type = static_cast<NalUnitType>(bytes[0] & 31);
    nal.payload = bytes.subspan(1);
    return true;
}

bool parseDecoderConfiguration(std::span<const std::uint8_t> bytes, DecoderConfiguration& configuration) {
    if (bytes.size() < 7 || bytes[0] != 1) return false;
    DecoderConfiguration found;
    found.lengthBytes = (bytes[4] & 3) + 1;
    std::size_t at = 5;
    // Sequence parameter sets, their number in five bits, then picture parameter sets, in eight.
    for (const int mask : {31, 255}) {
        if (at >= bytes.size()) return false;
        for (int left = bytes[at++] & mask; left > 0; --left) {
            if (at + 2 > bytes.size()) return false;
            const std::size_t size = static_cast<std::size_t>(bytes[at] << 8 | bytes[at + 1]);
            at += 2;
            if (at + size > bytes.size()) return false;
            found.units.push_back(bytes.subspan(at, size));
            at += size;
        }
    }
    configuration = std::move(found);
    return true;
}

int probe(std::span<const std::uint8_t> begin) {
    StartCodeReader reader(begin);
    StartCodeUnit unit;
    bool parameterSet = false;
    for (int i = 0; i < 64 && reader.next(unit); ++i) {
        if (i == 0 && unit.position > 64) return 0;
        NalUnit nal;
        if (!readNalUnit(unit.bytes, nal)) continue;
        if (nal.type == NalUnitType::SequenceParameterSet && nal.payload.size() >= 4) parameterSet = true;
        const bool picture = nal.type == NalUnitType::Slice || nal.type == NalUnitType::IdrSlice ||
                             nal.type == NalUnitType::SlicePartitionA;
        if (parameterSet && (picture || nal.type == NalUnitType::PictureParameterSet)) return 90;
    }
    return 0;
}

}  // namespace vekdec::h264
