#include "bits/start_code.h"

#include <algorithm>
#include <cstring>

namespace vekdec {

std::size_t findStartCode(std::span<const std::uint8_t> stream, std::size_t from) {
    for (std::size_t i = from; i + 3 <= stream.size();) {
        const void* one = std::memchr(stream.data() + i + 2, 1, stream.size() - i - 2);
        if (one == nullptr) break;
        const auto at = static_cast<std::size_t>(static_cast<const std::uint8_t*>(one) - stream.data());
        if (stream[at - 1] == 0 && stream[at - 2] == 0) return at - 2;
        i = at - 1;
    }
    return stream.size();
}

bool StartCodeReader::next(StartCodeUnit& unit) {
    const std::size_t start = findStartCode(stream_, at_);
    at_ = stream_.size();
    if (start + 4 > stream_.size()) return false;
    at_ = findStartCode(stream_, start + 3);
    unit = {stream_.subspan(start + 3, at_ - start - 3), start};
    return true;
}

std::size_t splitAtStartCode(std::span<const std::uint8_t> bytes, std::size_t& searched) {
    const std::size_t end = findStartCode(bytes, std::max<std::size_t>(searched, 3));
    if (end < bytes.size()) return end;
    searched = bytes.size() < 2 ? 0 : bytes.size() - 2;  // a start code may have begun
    return 0;
}

}  // namespace vekdec
