// The descriptors of H.264 7.2 and 9.1, which AVS (GB/T 20090.2) has too.
#pragma once

#include <bit>
#include <cstdint>

#include "bits/word_reader.h"

namespace vekdec {

class BitReader : public WordReader {
  public:
    using WordReader::WordReader;

    std::uint32_t ue() {
        // Codes of up to 31 bits at once; longer ones, and what is none, by the general way.
        const std::uint32_t window = peek32();
        const int zeros = std::countl_zero(window);
        if (zeros > 15) return longUe();
        skip(static_cast<std::size_t>(2 * zeros + 1));
        checkEnd();
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

  private:
    std::uint32_t longUe();
};

}  // namespace vekdec
