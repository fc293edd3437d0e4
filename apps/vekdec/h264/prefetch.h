// Asks the caches for samples before they are read or written: the rows of a block lie too far apart for the processor
// to foresee.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vekdec::h264 {

// The line of 64 bytes to the right of a square block, for the blocks that follow it there: a line serves several, and
// each asks for its share of as many rows. `block` is the address of the first sample, `x` its place in its row.
// Addresses are numbers here: outside of the plane they do no harm, and asking whether they are would cost more.
// Inlined: g++ leaves out calls of functions that do nothing else.
template <int width, typename Sample>
[[gnu::always_inline]] inline void prefetchRight(std::uintptr_t block, std::ptrdiff_t step, int x) {
    constexpr int kLine = 64 / static_cast<int>(sizeof(Sample)), kRows = width * width / kLine;
    const auto stride = static_cast<std::uintptr_t>(step);
    auto at = block + 64 + stride * static_cast<std::uintptr_t>((x & (kLine - 1)) / width * kRows);
    for (int i = 0; i < kRows; ++i, at += stride) __builtin_prefetch(reinterpret_cast<const void*>(at));
}

}  // namespace vekdec::h264
