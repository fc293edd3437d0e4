// The bits of one NAL unit behind the library's word cursor, and the descriptors of H.264 7.2 and 9.1.
#pragma once

#include <bit>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "vekvc.h"

namespace vekdec::h264 {

// The syntax holds something that the standard forbids or that the stream's end cuts off.
struct BadSyntax : std::runtime_error {
    using std::runtime_error::runtime_error;
};
// The stream uses a part of the standard that this decoder does not do; the sentence names it.
struct NotSupported : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The raw byte sequence payload of a NAL unit: emulation prevention bytes removed, gathered into native 32-bit words,
// and followed by words of zeros, so that no export that reads on behind a broken end leaves the memory. Reused for all
// units.
class Payload {
  public:
    static constexpr std::size_t kSlackWords = 128;  // more than the longest single block of coefficients can take
    void assign(const std::uint8_t* nal, std::size_t bytes);  // without the NAL unit header bytes
    const std::vector<Vek32u>& words() const { return words_; }
    std::size_t bits() const { return bits_; }  // up to rbsp_stop_one_bit, without it

  private:
    std::vector<Vek32u> words_;
    std::size_t bits_ = 0;
};

class BitReader {
  public:
    explicit BitReader(const Payload& payload);

    std::uint32_t u(int n);  // n up to 32
    bool flag() {
        const bool bit = (*word_ >> offset_ & 1) != 0;
        skip(1);
        if (beyondEnd()) throwEnd();
        return bit;
    }
    std::uint32_t ue() {
        // Codes of up to 31 bits at once; longer ones, and what is none, by the general way.
        const std::uint32_t window = peek32();
        const int zeros = std::countl_zero(window);
        if (zeros > 15) return longUe();
        skip(static_cast<std::size_t>(2 * zeros + 1));
        if (beyondEnd()) throwEnd();
        return (window >> (31 - 2 * zeros)) - 1;
    }
    std::int32_t se() {  // -2^31 + 1 to 2^31 - 1
        const std::uint32_t code = ue();
        return code & 1 ? static_cast<std::int32_t>(code >> 1) + 1 : -static_cast<std::int32_t>(code >> 1);
    }
    // ue(v) or se(v) within limits; BadSyntax names the element otherwise.
    int ue(const char* element, std::uint32_t most) {
        const std::uint32_t value = ue();
        if (value > most) throwOutside(element, value, 0, most);
        return static_cast<int>(value);
    }
    int se(const char* element, int least, int most) {
        const std::int32_t value = se();
        if (value < least || value > most) throwOutside(element, value, least, most);
        return value;
    }

    bool moreRbspData() const { return position() < end_; }
    std::size_t position() const {  // bits read
        return static_cast<std::size_t>(word_ - base_) * 32 + static_cast<std::size_t>(31 - offset_);
    }
    bool beyondEnd() const { return position() > end_; }

    // The cursor itself, for the exports that decode coefficients.
    Vek32u** word() { return &word_; }
    Vek32s* offset() { return &offset_; }
    void skip(std::size_t bits) {
        const std::size_t to = static_cast<std::size_t>(31 - offset_) + bits;
        word_ += to / 32;
        offset_ = 31 - static_cast<Vek32s>(to % 32);
    }

  private:
    // The next 32 bits; zeros stand behind the end.
    std::uint32_t peek32() const {
        const std::uint64_t window = std::uint64_t{word_[0]} << 32 | word_[1];
        return static_cast<std::uint32_t>(window << (31 - offset_) >> 32);
    }
    std::uint32_t longUe();
    [[noreturn]] static void throwEnd();
    [[noreturn]] static void throwOutside(const char* element, std::int64_t value, std::int64_t least,
                                          std::int64_t most);

    Vek32u* base_;
    Vek32u* word_;
    Vek32s offset_ = 31;
    std::size_t end_;
};

}  // namespace vekdec::h264
