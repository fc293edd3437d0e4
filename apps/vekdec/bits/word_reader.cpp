#include "bits/word_reader.h"

#include <bit>
#include <cstring>
#include <string>

namespace vekdec {

std::uint8_t* WordPayload::room(std::size_t bytes) {
    words_.resize(bytes / 4 + 1 + kSlackWords);
    return reinterpret_cast<std::uint8_t*>(words_.data());
}

// Zeros behind the bytes, and the first byte of each four into the top of its word.
void WordPayload::finish(std::size_t bytes) {
    std::memset(reinterpret_cast<std::uint8_t*>(words_.data()) + bytes, 0, words_.size() * sizeof words_[0] - bytes);
    if constexpr (std::endian::native == std::endian::little)
        for (std::size_t i = 0; 4 * i < bytes; ++i) words_[i] = __builtin_bswap32(words_[i]);
}

void WordPayload::assign(std::span<const std::uint8_t> bytes) {
    std::uint8_t* to = room(bytes.size());
    if (!bytes.empty()) std::memcpy(to, bytes.data(), bytes.size());
    bits_ = 8 * bytes.size();
    finish(bytes.size());
}

void WordPayload::assignUnescaped(std::span<const std::uint8_t> bytes) {
    static constexpr std::uint8_t kEscape[3] = {0, 0, 3};
    std::uint8_t* const to = room(bytes.size());
    std::size_t n = 0;  // payload bytes so far
    while (!bytes.empty()) {
        const auto* escape =
            static_cast<const std::uint8_t*>(memmem(bytes.data(), bytes.size(), kEscape, sizeof kEscape));
        const std::size_t run = escape == nullptr ? bytes.size() : static_cast<std::size_t>(escape - bytes.data()) + 2;
        std::memcpy(to + n, bytes.data(), run);
        n += run;
        bytes = bytes.subspan(escape == nullptr ? run : run + 1);
    }
    // The last one bit ends the data; zero bytes may lie behind it.
    while (n > 0 && to[n - 1] == 0) --n;
    bits_ = n == 0 ? 0 : 8 * n - 1 - static_cast<std::size_t>(std::countr_zero(to[n - 1]));
    finish(n);
}

void WordReader::throwEnd() { throw BadSyntax("the data ends inside a syntax element"); }

void WordReader::throwOutside(const char* element, std::int64_t value, std::int64_t least, std::int64_t most) {
    throw BadSyntax(std::string(element) + " is " + std::to_string(value) + ", allowed are " + std::to_string(least) +
                    " to " + std::to_string(most));
}

}  // namespace vekdec
