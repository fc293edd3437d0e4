// The arithmetic decoding engine of CABAC (H.264 9.3.1.2, 9.3.3.2).
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "bits/bit_reader.h"

namespace vekdec::h264 {

// In one object, so that one register leads to all of it. A state is 2 * pStateIdx + valMPS.
struct CabacTables {
    std::array<std::uint8_t, 4 * 128> rangeLps;  // Table 9-44 (rangeTabLPS): 128 states for each qCodIRangeIdx
    std::array<std::uint8_t, 128> nextStateLps, nextStateMps;  // Table 9-45
    std::array<std::uint32_t, 256> reciprocal;                 // 2^39 / codIRange, rounded up, by codIRange - 256
};
extern const CabacTables kCabacTables;

// Keeps codIOffset with the bits that follow it in one register, so that renormalization is a shift. Small enough to be
// copied into registers for a loop and back.
class CabacEngine {
  public:
    static constexpr int kMostBypass = 16;

    CabacEngine() = default;
    // Begins where the reader stands, at the first bit of a byte. Throws BadSyntax where codIOffset is not below
    // codIRange, as it then stays.
    explicit CabacEngine(const BitReader& bits);

    // DecodeDecision, 9.3.3.2.1. A branch tells the two bins apart, as the one that the caller takes by them would; the
    // renormalization has none but for the next word.
    [[gnu::always_inline]] bool decide(std::uint8_t& context) {
        const unsigned state = context;
        const std::uint32_t lps = kCabacTables.rangeLps[2 * (range_ & 0xc0) + state], mps = range_ - lps;
        const std::uint64_t scaled = std::uint64_t{mps} << kFraction;
        if (offset_ < scaled) [[likely]] {
            context = kCabacTables.nextStateMps[state];
            range_ = mps;
            renormalize((mps >> 8) ^ 1);  // mps is 128 or more
            return (state & 1) != 0;
        }
        context = kCabacTables.nextStateLps[state];
        offset_ -= scaled;
        range_ = lps;
        renormalize(static_cast<std::uint32_t>(__builtin_clz(lps)) - 23);
        return (state & 1) == 0;
    }

    // DecodeBypass, 9.3.3.2.3.
    [[gnu::always_inline]] bool bypass() { return bypassMask() != 0; }
    // All ones for a bin of 1.
    [[gnu::always_inline]] std::uint32_t bypassMask() {
        if (bits_ == 0) [[unlikely]]
            feed();
        const std::uint64_t half = std::uint64_t{range_} << (kFraction - 1);
        const std::int64_t isOne = ~(static_cast<std::int64_t>(offset_ - half) >> 63);
        offset_ = (offset_ - (half & static_cast<std::uint64_t>(isOne))) << 1;
        --bits_;
        return static_cast<std::uint32_t>(isOne);
    }

    // kMostBypass bypass bins at once, the first in the highest bit: bins b of n make codIOffset * 2^n + bits - b *
    // codIRange less than codIRange, so that b is a quotient. They count as read once takeBypass() takes some of them.
    std::uint32_t peekBypass() {
        if (bits_ < kMostBypass) feed();
        // Below 2^25, so that the reciprocal's excess, at most 2^-39, adds less than 2^-14 to a quotient whose
        // fraction is at most 1 - 1 / 510.
        const std::uint64_t value = offset_ >> (kFraction - kMostBypass);
        return static_cast<std::uint32_t>(value * kCabacTables.reciprocal[range_ - 256] >> 39);
    }
    // `bins` are the first n of what peekBypass() gave.
    void takeBypass(int n, std::uint32_t bins) {
        offset_ = (offset_ - (std::uint64_t{bins} * range_ << (kFraction - n))) << n;
        bits_ -= n;
    }
    // The suffix of UEGk binarizations (9.3.2.3): Exp-Golomb of order k in bypass. Throws BadSyntax where no
    // valid stream goes.
    std::uint32_t expGolomb(int k) {
        const std::uint32_t bins = peekBypass();
        const int prefix = std::countl_one(bins << (32 - kMostBypass)), length = 2 * prefix + 1 + k;
        if (length > kMostBypass) return longExpGolomb(k);
        const std::uint32_t code = bins >> (kMostBypass - length);
        takeBypass(length, code);
        const int tail = prefix + k;
        return (((1u << prefix) - 1) << k) + (code & ((1u << tail) - 1));
    }

    // DecodeTerminate, 9.3.3.2.2.3: nothing but a new beginning follows on true.
    bool terminate() {
        range_ -= 2;
        if (offset_ >= std::uint64_t{range_} << kFraction) return true;
        renormalize(range_ < 256);
        return false;
    }

    // Bits read from the beginning of the payload, those in codIOffset included. After the bin that ends a slice the
    // last one is rbsp_stop_one_bit. Grows beyond the payload's end, but not without bound.
    std::size_t position() const {
        return static_cast<std::size_t>(next_ - words_) * 32 - static_cast<std::size_t>(bits_);
    }

  private:
    static constexpr int kFraction = 54;  // offset_ holds codIOffset in bits 62 to 54 and what follows below

    [[gnu::always_inline]] void renormalize(std::uint32_t shift) {
        range_ <<= shift;
        offset_ <<= shift;
        bits_ -= static_cast<int>(shift);
        if (bits_ < 0) [[unlikely]]
            feed();
    }
    // Takes the next word; from some words behind the payload on, zeros. bits_ is 22 or less.
    [[gnu::always_inline]] void feed() {
        offset_ |= std::uint64_t{*next_} << (22 - bits_);
        bits_ += 32;
        next_ += next_ != limit_;
    }
    std::uint32_t longExpGolomb(int k);

    std::uint64_t offset_ = 0;
    std::uint32_t range_ = 510;  // codIRange
    int bits_ = -9;              // that are known behind codIOffset
    const Vek32u* next_ = nullptr;
    const Vek32u* limit_ = nullptr;
    const Vek32u* words_ = nullptr;
};

}  // namespace vekdec::h264
