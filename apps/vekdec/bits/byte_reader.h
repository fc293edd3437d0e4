// Streams in bytes, as the byte cursor of the library takes them.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

#include "bits/word_reader.h"

namespace vekdec {

// A copy of a packet's bytes followed by zeros, so that no export that reads on behind a broken end leaves the memory.
class BytePayload {
  public:
    static constexpr std::size_t kSlack = 4 * WordPayload::kSlackWords;

    void assign(std::span<const std::uint8_t> bytes) {
        bytes_.resize(bytes.size() + kSlack);
        if (!bytes.empty()) std::memcpy(bytes_.data(), bytes.data(), bytes.size());
        std::memset(bytes_.data() + bytes.size(), 0, kSlack);
    }
    std::size_t size() const { return bytes_.size() - kSlack; }
    const std::uint8_t* data() const { return bytes_.data(); }

  private:
    std::vector<std::uint8_t> bytes_ = std::vector<std::uint8_t>(kSlack);
};

// Reads bit fields; throws BadSyntax at the end of the payload, which it outlives not.
class ByteReader {
  public:
    explicit ByteReader(const BytePayload& payload)
        : base_(const_cast<Vek8u*>(payload.data())), byte_(base_), end_(8 * payload.size()) {}

    std::uint32_t u(int n) {  // n up to 32
        if (n == 0) return 0;
        if (position() + static_cast<std::size_t>(n) > end_) WordReader::throwEnd();
        const std::uint32_t bits = peek32() >> (32 - n);
        skip(static_cast<std::size_t>(n));
        return bits;
    }
    bool flag() { return u(1) != 0; }
    // The next 32 bits; zeros stand behind the end.
    std::uint32_t peek32() const {
        std::uint64_t window;
        std::memcpy(&window, byte_, sizeof window);
        if constexpr (std::endian::native == std::endian::little) window = __builtin_bswap64(window);
        return static_cast<std::uint32_t>(window << offset_ >> 32);
    }
    std::uint32_t peek(int n) const { return n == 0 ? 0 : peek32() >> (32 - n); }
    // Stops at a place where peek32() stays in the memory, however far it is asked to go.
    void skip(std::size_t bits) { seek(position() + bits); }
    void seek(std::size_t position) {
        const std::size_t most = end_ + 8 * (BytePayload::kSlack / 2);
        if (position > most) position = most;
        byte_ = base_ + position / 8;
        offset_ = static_cast<Vek32s>(position % 8);
    }
    void align() { seek((position() + 7) / 8 * 8); }
    std::size_t position() const {  // bits read
        return static_cast<std::size_t>(byte_ - base_) * 8 + static_cast<std::size_t>(offset_);
    }
    std::size_t end() const { return end_; }
    bool moreData() const { return position() < end_; }
    bool beyondEnd() const { return position() > end_; }
    void checkEnd() const {
        if (beyondEnd()) WordReader::throwEnd();
    }

    // The cursor itself, for the exports that decode from it.
    Vek8u** byte() { return &byte_; }
    Vek32s* offset() { return &offset_; }

  private:
    Vek8u* base_;
    Vek8u* byte_;
    Vek32s offset_ = 0;
    std::size_t end_;
};

}  // namespace vekdec
