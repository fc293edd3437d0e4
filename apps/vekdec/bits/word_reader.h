// Streams in native 32-bit words, as the word cursor of the library takes them.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

#include "bits/errors.h"
#include "vekvc.h"

namespace vekdec {

// Bytes gathered into native 32-bit words and followed by words of zeros, so that no export that reads on behind a
// broken end leaves the memory. Reused for all units.
class WordPayload {
  public:
    static constexpr std::size_t kSlackWords = 128;  // more than the longest single block of coefficients can take

    // All the bytes.
    void assign(std::span<const std::uint8_t> bytes);
    // Without the bytes 03 of 00 00 03 (H.264 7.4.1, SMPTE 421M E.2), and up to the last one bit, without it.
    void assignUnescaped(std::span<const std::uint8_t> bytes);
    // Without the two lowest bits of the bytes 02 of 00 00 02 (the stuffing of GB/T 20090.2).
    void assignUnstuffed(std::span<const std::uint8_t> bytes);
    // Ends before the last one bit.
    void trimToLastOne();

    const std::vector<Vek32u>& words() const { return words_; }
    std::size_t bits() const { return bits_; }

  private:
    std::uint8_t* room(std::size_t bytes);
    void finish(std::size_t bytes);

    std::vector<Vek32u> words_;
    std::size_t bits_ = 0;
};

// Reads bit fields; throws BadSyntax at the end of the payload, which it outlives not.
class WordReader {
  public:
    explicit WordReader(const WordPayload& payload)
        : base_(const_cast<Vek32u*>(payload.words().data())),
          word_(base_),
          end_(payload.bits()),
          endWord_(base_ + end_ / 32) {}

    std::uint32_t u(int n) {  // n up to 32
        if (n == 0) return 0;
        // Before the last two words no 32 bits reach the end.
        if (endWord_ - word_ < 2 && position() + static_cast<std::size_t>(n) > end_) throwEnd();
        const std::uint32_t bits = peek32() >> (32 - n);
        skip(static_cast<std::size_t>(n));
        return bits;
    }
    bool flag() {
        const bool bit = (*word_ >> offset_ & 1) != 0;
        skip(1);
        if (beyondEnd()) throwEnd();
        return bit;
    }
    // The next 32 bits; zeros stand behind the end.
    std::uint32_t peek32() const {
        std::uint64_t window;
        std::memcpy(&window, word_, sizeof window);
        if constexpr (std::endian::native == std::endian::little) window = std::rotl(window, 32);
        return static_cast<std::uint32_t>(window << (31 - offset_) >> 32);
    }
    void skip(std::size_t bits) {
        const std::size_t to = static_cast<std::size_t>(31 - offset_) + bits;
        word_ += to / 32;
        offset_ = 31 - static_cast<Vek32s>(to % 32);
    }
    std::size_t position() const {  // bits read
        return static_cast<std::size_t>(word_ - base_) * 32 + static_cast<std::size_t>(31 - offset_);
    }
    std::size_t end() const { return end_; }
    // The words alone tell nearly always.
    bool moreData() const { return word_ < endWord_ || position() < end_; }
    bool beyondEnd() const { return word_ >= endWord_ && position() > end_; }
    void checkEnd() const {
        if (beyondEnd()) throwEnd();
    }

    // The payload from its beginning, for engines that read it in their own way.
    const Vek32u* words() const { return base_; }
    // The cursor itself, for the exports that decode from it.
    Vek32u** word() { return &word_; }
    Vek32s* offset() { return &offset_; }

    [[noreturn]] static void throwEnd();
    [[noreturn]] static void throwOutside(const char* element, std::int64_t value, std::int64_t least,
                                          std::int64_t most);

  private:
    Vek32u* base_;
    Vek32u* word_;
    Vek32s offset_ = 31;
    std::size_t end_;
    const Vek32u* endWord_;  // with the bit behind the last one
};

}  // namespace vekdec
