#include "bit_reader.h"

namespace vekdec::h264 {

void Payload::assign(const std::uint8_t* nal, std::size_t bytes) {
    words_.assign(bytes / 4 + 1 + kSlackWords, 0);
    std::size_t n = 0;  // payload bytes so far
    int zeros = 0;
    for (std::size_t i = 0; i < bytes; ++i) {
        if (zeros >= 2 && nal[i] == 3) {  // emulation_prevention_three_byte, 7.4.1
            zeros = 0;
            continue;
        }
        zeros = nal[i] == 0 ? zeros + 1 : 0;
        words_[n / 4] |= Vek32u{nal[i]} << (24 - 8 * (n % 4));
        ++n;
    }
    // The last one bit is rbsp_stop_one_bit; cabac_zero_words and trailing zero bytes lie behind it.
    while (n > 0 && (words_[(n - 1) / 4] >> (24 - 8 * ((n - 1) % 4)) & 0xff) == 0) --n;
    bits_ = 0;
    if (n > 0) {
        const Vek32u last = words_[(n - 1) / 4] >> (24 - 8 * ((n - 1) % 4)) & 0xff;
        int stop = 0;
        while ((last >> stop & 1) == 0) ++stop;
        bits_ = 8 * n - 1 - static_cast<std::size_t>(stop);
    }
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
    if (beyondEnd() || vekiDecodeExpGolombOne_H264_1u32s(&word_, &offset_, &value, 0) != vekStsOk || beyondEnd())
        throw BadSyntax("no valid Exp-Golomb code");
    return static_cast<std::uint32_t>(value);
}

int BitReader::ue(const char* element, std::uint32_t most) {
    const std::uint32_t value = ue();
    if (value > most)
        throw BadSyntax(std::string(element) + " is " + std::to_string(value) + ", allowed are 0 to " +
                        std::to_string(most));
    return static_cast<int>(value);
}

int BitReader::se(const char* element, int least, int most) {
    const std::int32_t value = se();
    if (value < least || value > most)
        throw BadSyntax(std::string(element) + " is " + std::to_string(value) + ", allowed are " +
                        std::to_string(least) + " to " + std::to_string(most));
    return value;
}

}  // namespace vekdec::h264
