#include "vc1/format.h"

#include "bits/start_code.h"
#include "vc1/stream_decoder.h"
#include "vc1/units.h"

namespace vekdec::vc1 {
namespace {

// A file header of Simple or Main profile, or a sequence header of Advanced profile and an entry point soon behind it.
int probe(std::span<const std::uint8_t> begin) {
    if (begin.size() >= 36 && isFileHeader(begin) && begin[5] == 0 && begin[6] == 0 && begin[7] == 0) {
        const unsigned profile = begin[8] >> 4;
        return profile == 0 || profile == 4 ? 90 : 0;
    }
    StartCodeReader reader(begin);
    bool sequence = false;
    StartCodeUnit unit;
    for (int i = 0; i < 32 && reader.next(unit); ++i) {
        if (i == 0 && unit.position > 1) return 0;
        const std::uint8_t code = unit.bytes[0];
        if (i == 0 && code == kSequenceHeader) {
            if (unit.bytes.size() < 6 || unit.bytes[1] >> 6 != 3) return 0;
            sequence = true;
        }
        if (sequence && code == kEntryPoint) return 95;
    }
    return 0;
}

// The file header, a frame record, or a unit between start codes: the fourth byte tells which.
std::size_t split(std::span<const std::uint8_t> bytes, std::size_t& searched) {
    const auto whole = [&](std::size_t length) { return bytes.size() >= length ? length : 0; };
    if (bytes.size() < 8) return 0;
    if (isFileHeader(bytes)) {
        const std::size_t size = word24(bytes.subspan(4));
        if (size > 64) return bytes.size();
        if (bytes.size() < size + 20) return 0;
        return whole(size + 20 + word24(bytes.subspan(size + 16)) % 256);
    }
    if (isFrameRecord(bytes)) return whole(kRecordHead + word24(bytes));
    return splitAtStartCode(bytes, searched);
}

constexpr const char* kCodecs[] = {"wmv3", "vc1"};

}  // namespace

Format format() {
    return {
        .name = "vc1",
        .what =
            "VC-1 video (SMPTE 421M): Simple, Main and Advanced profile, without frame-interlaced P and B pictures, "
            "nor B fields",
        .codecs = kCodecs,
        .probe = probe,
        .split = split,
        .make = makeDecoder<StreamDecoder>,
        .threaded = true};
}

}  // namespace vekdec::vc1
