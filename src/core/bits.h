// The two bit-stream cursors: the word form (32-bit words, each read from its most significant bit down) and the byte
// form. Both take a copy of the caller's cursor, work on it, and write it back with commit().
#ifndef VEKVC_CORE_BITS_H
#define VEKVC_CORE_BITS_H

#include <bit>

#include "core/memory.h"

namespace vekvc {

// Bytes in memory as a number, the first one most significant; and the number that becomes such bytes.
template <class T>
constexpr T bigEndian(T x) {
    static_assert(std::is_unsigned_v<T> && (sizeof(T) == 4 || sizeof(T) == 8));
    if constexpr (std::endian::native != std::endian::little)
        return x;
    else if constexpr (sizeof(T) == 4)
        return __builtin_bswap32(x);
    else
        return __builtin_bswap64(x);
}

// Two words as one number, the first one above the second.
inline std::uint64_t loadTwoWords(const Vek32u* words) {
    const auto both = load<std::uint64_t>(words);
    return std::endian::native == std::endian::little ? std::rotl(both, 32) : both;
}

// Puts the cursor `position` bits behind the first bit of the word.
inline void storeCursor(Vek32u** ppBitStream, Vek32s* pBitOffset, Vek32u* word, int position) {
    store(ppBitStream, word + (position >> 5));
    store<Vek32s>(pBitOffset, ~position & 31);
}

// The word form: the next bit is bit `offset` (31 down to 0) of the native 32-bit word at `word`.
class WordReader {
  public:
    WordReader(Vek32u* const* ppBitStream, const Vek32s* pBitOffset)
        : word_(load<Vek32u*>(ppBitStream)), offset_(load<Vek32s>(pBitOffset)) {}

    // The next n bits (0 to 32), the first one most significant, without moving on. Touches the next word only if the
    // bits reach into it.
    Vek32u peek(int n) const {
        const Vek32u here = load<Vek32u>(word_);
        const int below = offset_ + 1 - n;  // bits of this word that lie below the n bits
        if (below >= 0) return n == 0 ? 0 : here >> below & ones(n);
        return (here << -below | load<Vek32u>(word_ + 1) >> (32 + below)) & ones(n);
    }

    // Moves on by n bits (0 to 32).
    void skip(int n) {
        offset_ -= n;
        if (offset_ < 0) {
            ++word_;
            offset_ += 32;
        }
    }

    Vek32u read(int n) {
        const Vek32u bits = peek(n);
        skip(n);
        return bits;
    }

    // Hands back the last n bits read (0 to 255).
    void giveBack(int n) {
        const int position = offset_ + n;
        word_ -= position >> 5;
        offset_ = position & 31;
    }

    void commit(Vek32u** ppBitStream, Vek32s* pBitOffset) const {
        store(ppBitStream, word_);
        store(pBitOffset, offset_);
    }

  private:
    // n ones (1 to 32) in the low bits.
    static constexpr Vek32u ones(int n) { return ~Vek32u{0} >> (32 - n); }

    Vek32u* word_;
    Vek32s offset_;
};

// The word form for fast readers: the coming bits lie left-aligned in a 64-bit register, some of them valid,
// zeros behind those. It reads ahead at most to the word that follows the one holding the next bit to be consumed;
// therefore call need() only when at least one more bit is sure to be consumed.
class WordWindow {
  public:
    WordWindow(Vek32u* const* ppBitStream, const Vek32s* pBitOffset) {
        const Vek32u* word = load<Vek32u*>(ppBitStream);
        const Vek32s used = 31 - load<Vek32s>(pBitOffset);
        bits_ = loadTwoWords(word) << used;
        valid_ = 64 - used;
        next_ = word + 2;
    }

    // Goes on where a reader stands, whether or not more bits will be consumed.
    explicit WordWindow(const WordReader& reader) {
        Vek32u* word;
        Vek32s offset;
        reader.commit(&word, &offset);
        valid_ = offset + 1;
        if (valid_ == 32) valid_ = 0;
        bits_ = valid_ == 0 ? 0 : std::uint64_t{load<Vek32u>(word)} << (64 - valid_);
        next_ = valid_ == 0 ? word : word + 1;
    }

    // A reader that stands at the window's next bit.
    WordReader reader() const {
        Vek32u* word;
        Vek32s offset;
        commit(&word, &offset);
        return WordReader(&word, &offset);
    }

    std::uint64_t bits() const { return bits_; }
    // How many of them are valid.
    int valid() const { return valid_; }

    // Makes at least n bits (0 to 32) valid.
    void need(int n) {
        if (valid_ < n) [[unlikely]] {
            bits_ |= std::uint64_t{load<Vek32u>(next_++)} << (32 - valid_);
            valid_ += 32;
        }
    }

    // The first n bits (0 to 32) of those that need() made valid.
    std::uint64_t top(int n) const { return bits_ >> 1 >> (63 - n); }

    // Moves on by n bits (0 to 63, all valid).
    void drop(int n) {
        bits_ <<= n;
        valid_ -= n;
    }

    Vek32u read(int n) {
        need(n);
        const auto value = static_cast<Vek32u>(top(n));
        drop(n);
        return value;
    }

    // Writes the cursor back, n bits (0 to 255) before the next one.
    void commit(Vek32u** ppBitStream, Vek32s* pBitOffset, int n = 0) const {
        const int ahead = valid_ + n;
        store(ppBitStream, const_cast<Vek32u*>(next_ + (-ahead >> 5)));
        store<Vek32s>(pBitOffset, (ahead - 1) & 31);
    }

  private:
    std::uint64_t bits_;
    const Vek32u* next_;  // the word that follows those in bits_
    int valid_;
};

// Writing through the word form: bits go in at the cursor, most significant first; all other bits keep their values,
// and no word beyond the one that holds the last written bit is touched.
class WordWriter {
  public:
    WordWriter(Vek32u* const* ppBitStream, const Vek32s* pBitOffset)
        : word_(load<Vek32u*>(ppBitStream)), offset_(load<Vek32s>(pBitOffset)) {}

    // Appends the low n bits (0 to 32) of value.
    void put(Vek32u value, int n) {
        const int below = offset_ + 1 - n;
        if (below < 0) {  // the first part fills this word's low bits
            putHere(value >> -below, n + below, 0);
            ++word_;
            putHere(value, -below, 32 + below);
            offset_ = 31 + below;
            return;
        }
        putHere(value, n, below);
        offset_ = below - 1;
        if (offset_ < 0) {
            ++word_;
            offset_ = 31;
        }
    }

    void commit(Vek32u** ppBitStream, Vek32s* pBitOffset) const {
        store(ppBitStream, word_);
        store(pBitOffset, offset_);
    }

  private:
    void putHere(Vek32u value, int n, int shift) {
        if (n == 0) return;
        const Vek32u mask = ~Vek32u{0} >> (32 - n) << shift;
        store<Vek32u>(word_, (load<Vek32u>(word_) & ~mask) | (value << shift & mask));
    }

    Vek32u* word_;
    Vek32s offset_;
};

// The byte form: `offset` (0 to 7) bits of the byte at `byte` are already consumed, counted from its most significant.
class ByteReader {
  public:
    ByteReader(Vek8u* const* ppBitStream, const Vek32s* pBitOffset)
        : byte_(load<Vek8u*>(ppBitStream)), offset_(load<Vek32s>(pBitOffset)) {}

    static constexpr bool validOffset(Vek32s offset) { return offset >= 0 && offset <= 7; }

    // The next n bits (0 to 32), without moving on; touches only the bytes that hold them.
    Vek32u peek(int n) const {
        std::uint64_t bits = 0;
        const int bytes = (offset_ + n + 7) / 8;
        for (int i = 0; i < bytes; ++i) bits = bits << 8 | byte_[i];
        return static_cast<Vek32u>(bits >> (8 * bytes - offset_ - n) & ((std::uint64_t{1} << n) - 1));
    }

    void skip(int n) {
        offset_ += n;
        byte_ += offset_ >> 3;
        offset_ &= 7;
    }

    Vek32u read(int n) {
        const Vek32u bits = peek(n);
        skip(n);
        return bits;
    }

    void commit(Vek8u** ppBitStream, Vek32s* pBitOffset) const {
        store(ppBitStream, byte_);
        store(pBitOffset, offset_);
    }

  private:
    Vek8u* byte_;
    Vek32s offset_;
};

// The byte form for fast readers: the coming bits lie left-aligned in a 64-bit register, zeros behind those that are
// valid. It loads the eight bytes that begin with the one that holds the next bit; therefore make one, and call need(),
// only when at least one more bit is sure to be consumed.
class ByteWindow {
  public:
    ByteWindow(Vek8u* const* ppBitStream, const Vek32s* pBitOffset)
        : byte_(load<Vek8u*>(ppBitStream)), used_(load<Vek32s>(pBitOffset)) {
        fill();
    }

    std::uint64_t bits() const { return bits_; }

    // Makes at least n bits (0 to 57) valid.
    void need(int n) {
        if (used_ > 64 - n) [[unlikely]]
            fill();
    }

    // The first n bits (0 to 32) of those that need() made valid.
    Vek32u top(int n) const { return static_cast<Vek32u>(bits_ >> 1 >> (63 - n)); }

    // Moves on by n bits (0 to 57, all valid).
    void drop(int n) {
        bits_ <<= n;
        used_ += n;
    }

    // The next n bits (0 to 32), which need() made valid.
    Vek32u take(int n) {
        const Vek32u value = top(n);
        drop(n);
        return value;
    }

    void commit(Vek8u** ppBitStream, Vek32s* pBitOffset) const {
        store(ppBitStream, byte_ + (used_ >> 3));
        store<Vek32s>(pBitOffset, used_ & 7);
    }

  private:
    void fill() {
        byte_ += used_ >> 3;
        used_ &= 7;
        bits_ = bigEndian(load<std::uint64_t>(byte_)) << used_;
    }

    Vek8u* byte_;         // the first of the eight that were loaded
    Vek32s used_;         // bits of them that are consumed
    std::uint64_t bits_;  // the others
};

// Writing through the byte form: bits go in at the cursor, most significant first. The bits before the cursor keep
// their values, those behind the last one written become 0 in its byte, and no further byte is touched. Make one only
// when at least one bit will be written.
class ByteWriter {
  public:
    ByteWriter(Vek8u* const* ppBitStream, const Vek32s* pBitOffset)
        : byte_(load<Vek8u*>(ppBitStream)), count_(load<Vek32s>(pBitOffset)) {
        if (count_ > 0) bits_ = load<Vek8u>(byte_) >> (8 - count_);
    }

    // Appends n bits (0 to 32); value has no others.
    void put(std::uint64_t value, int n) {
        const int left = 64 - count_ - n;
        if (left > 0) {
            bits_ = bits_ << n | value;
            count_ += n;
        } else {
            store(byte_, bigEndian(bits_ << (n + left) | value >> -left));
            byte_ += 8;
            bits_ = value;
            count_ = -left;
        }
    }

    // Writes what is still to be written, and the cursor.
    void finish(Vek8u** ppBitStream, Vek32s* pBitOffset) const {
        // copyShort looks at 16 bytes behind those that it copies.
        const std::uint64_t bytes[3] = {bigEndian(bits_ << 1 << (63 - count_)), 0, 0};
        copyShort<8, 1>(byte_, bytes, static_cast<std::size_t>(count_ + 7) / 8);
        store(ppBitStream, byte_ + (count_ >> 3));
        store<Vek32s>(pBitOffset, count_ & 7);
    }

  private:
    Vek8u* byte_;
    Vek32s count_;            // bits that are not yet in memory, 0 to 63: the low ones of
    std::uint64_t bits_ = 0;  // these; those above have been written
};

}  // namespace vekvc

#endif
