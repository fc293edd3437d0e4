#include "avs/format.h"

#include "avs/stream_decoder.h"
#include "bits/start_code.h"

namespace vekdec::avs {
namespace {

// A sequence header of the profile, and behind it a picture. Its start code is one that MPEG-2 does not use; what
// follows may look like MPEG-2.
int probe(std::span<const std::uint8_t> begin) {
    StartCodeReader reader(begin);
    bool sequence = false;
    StartCodeUnit unit;
    for (int i = 0; i < 64 && reader.next(unit); ++i) {
        if (i == 0 && unit.position > 64) return 0;
        const std::uint8_t code = unit.bytes[0];
        if (code == kSequenceHeader) {
            if (unit.bytes.size() < 2 || unit.bytes[1] != kJizhun) return 0;
            sequence = true;
        }
        if (sequence && (code == kIntraPicture || code == kInterPicture)) return 98;
    }
    return 0;
}

constexpr const char* kCodecs[] = {"cavs"};

}  // namespace

Format format() {
    return {.name = "avs",
            .what = "AVS video (AVS1-P2, GB/T 20090.2): Jizhun profile, 4:2:0, without B fields",
            .codecs = kCodecs,
            .probe = probe,
            .split = splitAtStartCode,
            .make = makeDecoder<StreamDecoder>,
            .threaded = true};
}

}  // namespace vekdec::avs
