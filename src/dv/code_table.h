// The variable-length codes of DV (IEC 61834-2, SMPTE 314M) as the standards print them.
#ifndef VEKVC_DV_CODE_TABLE_H
#define VEKVC_DV_CODE_TABLE_H

#include <cstdint>

namespace vekvc::dv {

// A code stands for `run` zeros and a coefficient of magnitude `amplitude`, whose sign bit follows; amplitude 0 is one
// more zero and has no sign.
struct Code {
    const char* bits;
    int run, amplitude;
};

// clang-format off
inline constexpr Code kCodes[] = {
    {"00", 0, 1}, {"010", 0, 2}, {"0111", 1, 1}, {"1000", 0, 3}, {"1001", 0, 4}, {"10100", 2, 1}, {"10101", 1, 2},
    {"10110", 0, 5}, {"10111", 0, 6}, {"110000", 3, 1}, {"110001", 4, 1}, {"110010", 0, 7}, {"110011", 0, 8},
    {"1101000", 5, 1}, {"1101001", 6, 1}, {"1101010", 2, 2}, {"1101011", 1, 3}, {"1101100", 1, 4}, {"1101101", 0, 9},
    {"1101110", 0, 10}, {"1101111", 0, 11}, {"11100000", 7, 1}, {"11100001", 8, 1}, {"11100010", 9, 1},
    {"11100011", 10, 1}, {"11100100", 3, 2}, {"11100101", 4, 2}, {"11100110", 2, 3}, {"11100111", 1, 5},
    {"11101000", 1, 6}, {"11101001", 1, 7}, {"11101010", 0, 12}, {"11101011", 0, 13}, {"11101100", 0, 14},
    {"11101101", 0, 15}, {"11101110", 0, 16}, {"11101111", 0, 17}, {"111100000", 11, 1}, {"111100001", 12, 1},
    {"111100010", 13, 1}, {"111100011", 14, 1}, {"111100100", 5, 2}, {"111100101", 6, 2}, {"111100110", 3, 3},
    {"111100111", 4, 3}, {"111101000", 2, 4}, {"111101001", 2, 5}, {"111101010", 1, 8}, {"111101011", 0, 18},
    {"111101100", 0, 19}, {"111101101", 0, 20}, {"111101110", 0, 21}, {"111101111", 0, 22}, {"1111100000", 5, 3},
    {"1111100001", 3, 4}, {"1111100010", 3, 5}, {"1111100011", 2, 6}, {"1111100100", 1, 9}, {"1111100101", 1, 10},
    {"1111100110", 1, 11}, {"11111001110", 0, 0}, {"11111001111", 1, 0}, {"11111010000", 6, 3}, {"11111010001", 4, 4},
    {"11111010010", 3, 6}, {"11111010011", 1, 12}, {"11111010100", 1, 13}, {"11111010101", 1, 14},
    {"111110101100", 2, 0}, {"111110101101", 3, 0}, {"111110101110", 4, 0}, {"111110101111", 5, 0},
    {"111110110000", 7, 2}, {"111110110001", 8, 2}, {"111110110010", 9, 2}, {"111110110011", 10, 2},
    {"111110110100", 7, 3}, {"111110110101", 8, 3}, {"111110110110", 4, 5}, {"111110110111", 3, 7},
    {"111110111000", 2, 7}, {"111110111001", 2, 8}, {"111110111010", 2, 9}, {"111110111011", 2, 10},
    {"111110111100", 2, 11}, {"111110111101", 1, 15}, {"111110111110", 1, 16}, {"111110111111", 1, 17},
};
// clang-format on

inline constexpr const char* kEndOfBlock = "0110";
// Two families: any run with a zero behind it, in 6 bits; any amplitude without a run, in 8 bits.
inline constexpr const char* kRunFamily = "1111110";
inline constexpr const char* kAmplitudeFamily = "1111111";
inline constexpr int kLongestCode = 16;  // with its sign

// What a code with its sign stands for.
struct Symbol {
    int length = 0;  // bits, the sign included; 0: none
    bool endOfBlock = false;
    int run = 0, level = 0;
};

// The code at the front of a window of 16 bits. Every window begins with exactly one.
constexpr Symbol readCode(std::uint32_t window) {
    const auto begins = [&](const char* bits, int& length) {
        std::uint32_t code = 0;
        for (length = 0; bits[length] != '\0'; ++length) code = 2 * code + (bits[length] == '1');
        return window >> (kLongestCode - length) == code;
    };
    const auto bit = [&](int at) { return window >> (kLongestCode - 1 - at) & 1; };
    const auto withSign = [&](int length, int run, int amplitude, bool sign) {
        if (!sign) return Symbol{length, false, run, 0};
        return Symbol{length + 1, false, run, bit(length) != 0 ? -amplitude : amplitude};
    };
    int length = 0;
    if (begins(kEndOfBlock, length)) return {length, true, 0, 0};
    if (begins(kRunFamily, length)) return {length + 6, false, static_cast<int>(window >> 3 & 63), 0};
    if (begins(kAmplitudeFamily, length)) return withSign(length + 8, 0, static_cast<int>(window >> 1 & 255), true);
    for (const Code& code : kCodes)
        if (begins(code.bits, length)) return withSign(length, code.run, code.amplitude, code.amplitude != 0);
    return {};
}

}  // namespace vekvc::dv

#endif
