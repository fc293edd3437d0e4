#include "bits/word_reader.h"

#include <algorithm>
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
    bits_ = 8 * n;
    finish(n);
    trimToLastOne();
}

void WordPayload::assignUnstuffed(std::span<const std::uint8_t> bytes) {
    static constexpr std::uint8_t kStuffed[3] = {0, 0, 2};
    std::uint8_t* const to = room(bytes.size());
    std::size_t bits = 0;  // payload bits so far; those of a byte that is begun are there, zeros behind them
    const auto append = [&](std::span<const std::uint8_t> run) {
        std::uint8_t* at = to + bits / 8;
        const auto begun = static_cast<int>(bits % 8);
        if (begun == 0)
            std::copy(run.begin(), run.end(), at);
        else
            for (const std::uint8_t byte : run) {
                *at = static_cast<std::uint8_t>(*at | byte >> begun);
                *++at = static_cast<std::uint8_t>(byte << (8 - begun));
            }
        bits += 8 * run.size();
    };
    while (!bytes.empty()) {
        const auto* stuffed =
            static_cast<const std::uint8_t*>(memmem(bytes.data(), bytes.size(), kStuffed, sizeof kStuffed));
        if (stuffed == nullptr) {
            append(bytes);
            break;
        }
        const std::size_t run = static_cast<std::size_t>(stuffed - bytes.data()) + sizeof kStuffed;
        append(bytes.first(run));
        bits -= 2;
        to[bits / 8] = static_cast<std::uint8_t>(to[bits / 8] & 0xff << (8 - bits % 8));
        bytes = bytes.subspan(run);
    }
    bits_ = bits;
    finish((bits + 7) / 8);
}

void WordPayload::trimToLastOne() {
    std::size_t word = (bits_ + 31) / 32;
    while (word > 0 && words_[word - 1] == 0) --word;
    bits_ = word == 0 ? 0 : 32 * word - 1 - static_cast<std::size_t>(std::countr_zero(words_[word - 1]));
}

void WordReader::throwEnd() { throw BadSyntax("the data ends inside a syntax element"); }

void WordReader::throwOutside(const char* element, std::int64_t value, std::int64_t least, std::int64_t most) {
    throw BadSyntax(std::string(element) + " is " + std::to_string(value) + ", allowed are " + std::to_string(least) +
                    " to " + std::to_string(most));
}

}  // namespace vekdec
