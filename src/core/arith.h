// Integer arithmetic with its width spelled out: clipping, saturation, wrap-around.
#ifndef VEKVC_CORE_ARITH_H
#define VEKVC_CORE_ARITH_H

#include <cstdint>
#include <type_traits>

namespace vekvc {

// Clip3 of the standards: x limited to low..high.
template <class T>
constexpr T clip3(std::type_identity_t<T> low, std::type_identity_t<T> high, T x) {
    return x < low ? low : x > high ? high : x;
}

// Clip1 for 8-bit samples.
constexpr std::uint8_t clip255(int x) { return static_cast<std::uint8_t>(clip3(0, 255, x)); }

// Clip1 for samples of bitDepth bits (at most 16).
constexpr std::uint16_t clipDepth(int x, int bitDepth) {
    return static_cast<std::uint16_t>(clip3(0, (1 << bitDepth) - 1, x));
}

// Limits x to the range of a signed 16-bit value.
constexpr std::int16_t saturate16(std::int32_t x) { return static_cast<std::int16_t>(clip3(-32768, 32767, x)); }

// The low 16 or 32 bits of x read as a signed value: storing with wrap-around.
template <class T>
constexpr std::int16_t wrap16(T x) {
    return static_cast<std::int16_t>(static_cast<std::uint16_t>(x));
}
template <class T>
constexpr std::int32_t wrap32(T x) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(x));
}

// 32-bit sums, differences and products with wrap-around.
constexpr std::int32_t wrapAdd(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}
constexpr std::int32_t wrapSub(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}
constexpr std::int32_t wrapMul(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) * static_cast<std::uint32_t>(b));
}
constexpr std::int32_t wrapShl(std::int32_t a, int n) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) << n);
}

// |x| as an unsigned value; right for the most negative x too.
constexpr std::uint32_t magnitude(std::int32_t x) {
    return x < 0 ? 0u - static_cast<std::uint32_t>(x) : static_cast<std::uint32_t>(x);
}

}  // namespace vekvc

#endif
