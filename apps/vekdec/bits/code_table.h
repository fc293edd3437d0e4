// Prefix codes read from a byte cursor by one look-up.
#pragma once

#include <array>
#include <string>

#include "bits/byte_reader.h"
#include "tables/code_list.h"

namespace vekdec {

// Codes of up to `longest` bits, from a list written as in the standards.
template <int longest>
class CodeTable {
  public:
    constexpr explicit CodeTable(const auto& codes) {
        for (const vekvc_tables::Code& code : codes) {
            const int spare = longest - static_cast<int>(code.bits.size());
            const auto first = static_cast<std::size_t>(vekvc_tables::codeBits(code.bits)) << spare;
            for (std::size_t i = 0; i < std::size_t{1} << spare; ++i)
                entries_.at(first + i) = {static_cast<std::int16_t>(code.value),
                                          static_cast<std::uint8_t>(code.bits.size())};
        }
    }

    // BadSyntax names the element where no code matches.
    int read(ByteReader& bits, const char* element) const {
        const Entry entry = entries_[bits.peek32() >> (32 - longest)];
        if (entry.length == 0) throw BadSyntax(std::string("no valid ") + element);
        bits.skip(entry.length);
        return entry.value;
    }

  private:
    struct Entry {
        std::int16_t value = 0;
        std::uint8_t length = 0;
    };
    std::array<Entry, std::size_t{1} << longest> entries_{};
};

// Codes by their number: 0, 1, 2 ...
template <std::size_t n>
constexpr std::array<vekvc_tables::Code, n> numbered(const std::string_view (&bits)[n]) {
    std::array<vekvc_tables::Code, n> codes;
    for (std::size_t i = 0; i < n; ++i) codes[i] = {bits[i], static_cast<Vek32s>(i)};
    return codes;
}

}  // namespace vekdec
