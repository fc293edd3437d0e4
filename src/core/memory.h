// Unaligned access to memory, and blocks of samples addressed by pointer and step.
#ifndef VEKVC_CORE_MEMORY_H
#define VEKVC_CORE_MEMORY_H

#include <cstddef>
#include <cstdint>
#include <cstring>

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
