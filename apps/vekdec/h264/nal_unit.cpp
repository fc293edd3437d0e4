#include "nal_unit.h"

#include <cstring>

namespace vekdec::h264 {

// The position of the next 00 00 01, or the stream's end.
std::size_t NalUnitReader::findStartCode(std::size_t from) const {
    for (std::size_t i = from; i + 3 <= stream_.size();) {
        const void* one = std::memchr(stream_.data() + i + 2, 1, stream_.size() - i - 2);
        if (one == nullptr) break;
        const auto at = static_cast<std::size_t>(static_cast<const std::uint8_t*>(one) - stream_.data());
        if (stream_[at - 1] == 0 && stream_[at - 2] == 0) return at - 2;
        i = at - 1;
    }
    return stream_.size();
}

bool NalUnitReader::next(NalUnit& nal) {
    for (;;) {
        const std::size_t start = findStartCode(at_);
        if (start + 4 > stream_.size()) {
            at_ = stream_.size();
            return false;
        }
        const std::size_t begin = start + 3;
        const std::size_t end = findStartCode(begin);
        at_ = end;
        const std::uint8_t header = stream_[begin];
        if (header & 0x80) continue;  // forbidden_zero_bit
        nal.position = start;
        nal.refIdc = header >> 5 & 3;
        nal.type = header & 31;
        nal.payload = stream_.subspan(begin + 1, end - begin - 1);
        return true;
    }
}

bool looksLikeH264(std::span<const std::uint8_t> stream) {
    NalUnitReader reader(stream.first(std::min(stream.size(), kBytesToKnow)));
    NalUnit nal;
    int parameterSets = 0;
    for (int i = 0; i < 64 && reader.next(nal); ++i) {
        if (i == 0 && nal.position > 64) return false;
        if (nal.type == 7 && nal.payload.size() >= 4) ++parameterSets;
        if (parameterSets > 0 && (nal.type == 1 || nal.type == 5 || nal.type == 8 || nal.type == 2)) return true;
    }
    return false;
}

}  // namespace vekdec::h264
