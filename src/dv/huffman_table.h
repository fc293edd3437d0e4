// The decoding table of DV's codes: one look-up for codes that do not begin with 11111, one for those that do.
#ifndef VEKVC_DV_HUFFMAN_TABLE_H
#define VEKVC_DV_HUFFMAN_TABLE_H

#include "core/memory.h"
#include "dv/code_table.h"
#include "vekvc/dv.h"

namespace vekvc::dv {

// Entries 0 to 1023 go by the first 10 bits, the others by the 11 bits behind 11111.
inline constexpr int kShortBits = 10, kLongPrefix = 5, kLongBits = kLongestCode - kLongPrefix;
inline constexpr int kTableEntries = (1 << kShortBits) + (1 << kLongBits);
inline constexpr int kEndOfBlockAdvance = 128;  // where other codes have run + 1: beyond every scan index

// A look-up's result: bits 0 to 7 the length with the sign, 8 to 15 run + 1, 16 to 31 the signed level.
struct Entry {
    Vek32s value;

    int length() const { return value & 0xff; }
    int advance() const { return value >> 8 & 0xff; }
    int level() const { return value >> 16; }
};
constexpr Vek32s packEntry(const Symbol& s) {
    const int advance = s.endOfBlock ? kEndOfBlockAdvance : s.run + 1;
    return static_cast<Vek32s>(static_cast<Vek32u>(s.level) << 16 | static_cast<Vek32u>(advance << 8 | s.length));
}

// The code at the top of a window of 64 bits.
inline Entry lookUp(const VekDVHuffmanTable_32s* table, std::uint64_t window) {
    constexpr std::uint64_t kLong = ~std::uint64_t{0} << (64 - kLongPrefix);
    std::uint64_t index = window >> (64 - kShortBits);
    if (window >= kLong) [[unlikely]]
        index = (1 << kShortBits) + (window << kLongPrefix >> (64 - kLongBits));
    return {load<Vek32s>(table + index)};
}

}  // namespace vekvc::dv

#endif
