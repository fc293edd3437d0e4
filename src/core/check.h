// The argument checks of all exports. An export asks in the fixed order (null pointers, state tag, steps, then sizes,
// ranges and selectors in the order of the arguments) and returns the first status that applies:
//
//     if (anyNull(pSrc, pDst)) return vekStsErrNullPtr;
//     if (anyBelow(width, srcStep, dstStep)) return vekStsErrStep;
//     if (outside(qp, 0, 51)) return vekStsErrOutOfRange;
#ifndef VEKVC_CORE_CHECK_H
#define VEKVC_CORE_CHECK_H

#include <bit>
#include <cstdint>

#include "core/opaque.h"
#include "vekvc/types.h"

namespace vekvc {

// Is one of the pointers null?
template <class... T>
constexpr bool anyNull(const T*... pointers) {
    return ((pointers == nullptr) || ...);
}

// Is one of the values (steps, counts, fields of a size) below the least allowed one?
template <class... T>
constexpr bool anyBelow(Vek32s least, T... values) {
    return ((values < least) || ...);
}

// Is the value outside low..high?
constexpr bool outside(Vek32s value, Vek32s low, Vek32s high) { return value < low || value > high; }

// A size in one general register, the width in the low half, so that both numbers are asked for forbidden bits at once;
// GCC 12 would take a VekiSize apart in a vector.
constexpr std::uint64_t packedSize(Vek32u width, Vek32u height) { return width | std::uint64_t{height} << 32; }
inline std::uint64_t packedSize(VekiSize size) { return opaque(std::bit_cast<std::uint64_t>(size)); }
constexpr VekiSize unpackedSize(std::uint64_t size) {
    return {static_cast<Vek32s>(size), static_cast<Vek32s>(size >> 32)};
}

}  // namespace vekvc

#endif
