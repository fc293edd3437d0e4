// A stream under construction, as characters '0' and '1', and the words it becomes.
#ifndef VEKVC_TESTS_BIT_WRITER_H
#define VEKVC_TESTS_BIT_WRITER_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "vekvc/types.h"

namespace vekvc_test {

struct BitWriter {
    std::string bits;

    void put(std::string_view code) { bits += code; }
    void put(std::uint64_t value, int n) {
        for (int i = n - 1; i >= 0; --i) bits += value >> i & 1 ? '1' : '0';
    }

    // Words that hold the bits from bit `offset` of the first word on; all other bits are `fill`, and so is one more
    // word at the end, the one that a reader may look at.
    std::vector<Vek32u> words(Vek32s offset, char fill = '0') const {
        std::string all = std::string(static_cast<std::size_t>(31 - offset), fill) + bits;
        all.resize((all.size() + 31) / 32 * 32 + 32, fill);
        std::vector<Vek32u> result(all.size() / 32);
        for (std::size_t i = 0; i < all.size(); ++i) result[i / 32] = result[i / 32] << 1 | (all[i] == '1' ? 1u : 0u);
        return result;
    }
};

// The bits of words from bit `offset` of the first one to the cursor.
inline std::string bitsUpTo(const std::vector<Vek32u>& words, Vek32s offset, const Vek32u* end, Vek32s endOffset) {
    std::string bits;
    const std::ptrdiff_t last = 32 * (end - words.data()) + 31 - endOffset;
    for (std::ptrdiff_t i = 31 - offset; i < last; ++i) {
        bits += words[static_cast<std::size_t>(i / 32)] >> (31 - i % 32) & 1 ? '1' : '0';
    }
    return bits;
}

// How many bits a cursor has moved on.
inline std::ptrdiff_t bitsBetween(const Vek32u* from, Vek32s fromOffset, const Vek32u* to, Vek32s toOffset) {
    return 32 * (to - from) + fromOffset - toOffset;
}

}  // namespace vekvc_test

#endif
