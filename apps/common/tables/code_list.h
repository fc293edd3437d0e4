// Turns code tables, written as in the standards, into the code lists that the table builders take
// (include/vekvc/vlc.h describes the format). All of it at compile time.
#ifndef VEKVC_APPS_COMMON_CODE_LIST_H
#define VEKVC_APPS_COMMON_CODE_LIST_H

#include <array>
#include <cstddef>
#include <initializer_list>
#include <string_view>

#include "vekvc/types.h"

namespace vekvc_tables {

// One code: its bits as characters '0' and '1', and what it stands for.
struct Code {
    std::string_view bits;
    Vek32s value = 0;  // or run
    Vek32s level = 0;
};

// The code in a table's field; none where the field is empty.
constexpr std::string_view codeText(const char* field) { return field == nullptr ? std::string_view() : field; }

constexpr Vek32s codeBits(std::string_view bits) {
    Vek32s code = 0;
    for (const char bit : bits) code = 2 * code + (bit == '1' ? 1 : 0);
    return code;
}

// The list of `codes` (those with empty bits are left out) for lookups of the given widths; records of two words, or of
// three with the level. Too small a capacity does not compile.
template <std::size_t capacity>
constexpr std::array<Vek32s, capacity> makeList(const auto& codes, std::initializer_list<int> widths, bool withLevel) {
    std::array<Vek32s, capacity> list{};
    std::size_t used = 0;
    std::size_t longest = 0;
    for (const Code& code : codes) longest = code.bits.size() > longest ? code.bits.size() : longest;
    list.at(used++) = static_cast<Vek32s>(longest);
    list.at(used++) = static_cast<Vek32s>(widths.size());
    for (const int width : widths) list.at(used++) = width;
    for (std::size_t length = 1; length <= longest; ++length) {
        Vek32s& count = list.at(used++);
        for (const Code& code : codes) {
            if (code.bits.size() != length) continue;
            ++count;
            list.at(used++) = codeBits(code.bits);
            list.at(used++) = code.value;
            if (withLevel) list.at(used++) = code.level;
        }
    }
    list.at(used++) = -1;
    return list;
}

}  // namespace vekvc_tables

#endif
