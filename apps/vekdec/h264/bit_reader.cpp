#include "bit_reader.h"

#include <cstring>

namespace vekdec::h264 {

void Payload::assign(const std::uint8_t* nal, std::size_t bytes) {
    static constexpr std::uint8_t kEscape[3] = {0, 0, 3};
    words_.resize(bytes / 4 + 1 + kSlackWords);
    auto* const to = reinterpret_cast<std::uint8_t*>(words_.data());
    std::size_t n = 0;  // payload bytes so far
    while (bytes > 0) {
        // Up to an emulation_prevention_three_byte (7.4.1), which is left out, or to the end.
        const auto* escape = static_cast<const std::uint8_t*>(memmem(nal, bytes, kEscape, sizeof kEscape));
        const std::size_t run = escape == nullptr ? bytes : static_cast<std::size_t>(escape - nal) + 2;
        const std::size_t done = escape == nullptr ? run : run + 1;
        std::memcpy(to + n, nal, run);
        n += run;
        nal += done;
        bytes -= done;
    }
    // The last one bit is rbsp_stop_one_bit; cabac_zero_words and trailing zero bytes lie behind it.
    while (n > 0 && to[n - 1] == 0) --n;
    bits_ = n == 0 ? 0 : 8 * n - 1 - static_cast<std::size_t>(std::countr_zero(to[n - 1]));
    std::memset(to + n, 0, words_.size() * sizeof words_[0] - n);
    if constexpr (std::endian::native == std::endian::little)
        for (std::size_t i = 0; 4 * i < n; ++i) words_[i] = __builtin_bswap32(words_[i]);
}

BitReader::BitReader(const Payload& payload)
    : base_(const_cast<Vek32u*>(payload.words().data())), word_(base_), end_(payload.bits()) {}

void BitReader::throwEnd() { throw BadSyntax("the data ends inside a syntax element"); }

std::uint32_t BitReader::u(int n) {
    if (position() + static_cast<std::size_t>(n) > end_) throwEnd();
    if (n == 0) return 0;
    const std::uint64_t window = std::uint64_t{word_[0]} << 32 | word_[1];
    const std::uint64_t bits = window << (31 - offset_) >> (64 - n);
    skip(static_cast<std::size_t>(n));
    return static_cast<std::uint32_t>(bits);
}

std::uint32_t BitReader::longUe() {
    Vek32s value = 0;
    // More than 31 leading zeros are of no codeNum: the largest is 2^32 - 2 (7.2).
    if (beyondEnd() || peek32() == 0 || vekiDecodeExpGolombOne_H264_1u32s(&word_, &offset_, &value, 0) != vekStsOk ||
        beyondEnd())
        throw BadSyntax("no valid Exp-Golomb code");
    return static_cast<std::uint32_t>(value);
}

void BitReader::throwOutside(const char* element, std::int64_t value, std::int64_t least, std::int64_t most) {
    throw BadSyntax(std::string(element) + " is " + std::to_string(value) + ", allowed are " + std::to_string(least) +
                    " to " + std::to_string(most));
}

}  // namespace vekdec::h264
