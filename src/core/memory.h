// Unaligned access to memory, and blocks of samples addressed by pointer and step.
#ifndef VEKVC_CORE_MEMORY_H
#define VEKVC_CORE_MEMORY_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "vekvc/types.h"

namespace vekvc {

// Reads or writes a T at any address.
template <class T>
inline T load(const void* p) {
    T value;
    std::memcpy(&value, p, sizeof value);
    return value;
}
template <class T>
inline void store(void* p, T value) {
    std::memcpy(p, &value, sizeof value);
}

// The pointer that lies `bytes` bytes further on; p needs no alignment.
template <class T>
inline T* offsetBytes(T* p, std::ptrdiff_t bytes) {
    return reinterpret_cast<T*>(reinterpret_cast<std::uintptr_t>(p) + static_cast<std::uintptr_t>(bytes));
}

// Copies n bytes (0 to most; a multiple of `unit`) without a branch: each 16 bytes, then each power of two that n
// holds, is one store, and those that n does not hold go to a spare place. Reads up to 16 bytes at src + n; a piece
// lies within 16 bytes of src that begin at a multiple of 16, so that it can be forwarded from a vector just stored
// there.
template <std::size_t most, std::size_t unit>
inline void copyShort(void* dst, const void* src, std::size_t n) {
    std::byte spare[16];
    auto* to = static_cast<std::byte*>(dst);
    const auto* from = static_cast<const std::byte*>(src);
    for (std::size_t end = 16; end <= most; end += 16)
        std::memcpy(n >= end ? to + end - 16 : spare, from + end - 16, 16);
    std::size_t done = n & ~std::size_t{15};
    const auto piece = [&](auto size) {
        std::memcpy((n & size()) != 0 ? to + done : spare, from + done, size());
        done += n & size();
    };
    if constexpr (most >= 8 && unit <= 8) piece(std::integral_constant<std::size_t, 8>());
    if constexpr (most >= 4 && unit <= 4) piece(std::integral_constant<std::size_t, 4>());
    if constexpr (most >= 2 && unit <= 2) piece(std::integral_constant<std::size_t, 2>());
    if constexpr (unit <= 1) piece(std::integral_constant<std::size_t, 1>());
}

// A block of samples: (x, y) reads the sample in column x of row y; either may be negative.
template <class T>
struct Block {
    const T* base;
    std::ptrdiff_t step;  // bytes from one row to the next

    Block(const T* p, Vek32s stepBytes) : base(p), step(stepBytes) {}
    T operator()(std::ptrdiff_t x, std::ptrdiff_t y) const { return load<T>(at(x, y)); }
    const T* at(std::ptrdiff_t x, std::ptrdiff_t y) const {
        return offsetBytes(base, y * step + x * static_cast<std::ptrdiff_t>(sizeof(T)));
    }
};

// A block that can be written too.
template <class T>
struct MutableBlock {
    T* base;
    std::ptrdiff_t step;

    MutableBlock(T* p, Vek32s stepBytes) : base(p), step(stepBytes) {}
    T operator()(std::ptrdiff_t x, std::ptrdiff_t y) const { return load<T>(at(x, y)); }
    void put(std::ptrdiff_t x, std::ptrdiff_t y, T value) const { store<T>(at(x, y), value); }
    T* at(std::ptrdiff_t x, std::ptrdiff_t y) const {
        return offsetBytes(base, y * step + x * static_cast<std::ptrdiff_t>(sizeof(T)));
    }
};

}  // namespace vekvc

#endif
