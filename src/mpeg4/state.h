// What every specification buffer of this family begins with.
#ifndef VEKVC_MPEG4_STATE_H
#define VEKVC_MPEG4_STATE_H

#include <type_traits>

#include "core/state.h"

namespace vekvc::mpeg4 {

// Which operation a buffer was initialised for.
enum class Kind : Vek32u { quantIntra = 1, quantInter, quantInvIntra, quantInvInter, warp };

struct Specification : TaggedState {
    Kind kind;

    explicit Specification(Kind itsKind) : kind(itsKind) {}
};

// Was the buffer initialised, and for this operation? If not: vekStsErrContextMatch.
inline bool isSpecification(const void* buffer, Kind kind) {
    return hasTag<Specification>(buffer) && load<Kind>(&stateIn<Specification>(buffer)->kind) == kind;
}

// The bytes that ...GetSize reports, and within which State finds its place at any address.
inline constexpr Vek32u kQuantizerSize = 412, kInverseQuantizerSize = 156, kWarpSize = 384;
// ...GetSize.
inline VekStatus reportSize(Vek32u* pSpecSize, Vek32u size) {
    if (pSpecSize == nullptr) return vekStsErrNullPtr;
    store(pSpecSize, size);
    return vekStsOk;
}
template <class State>
constexpr bool fits(Vek32u size) {
    return specificationSize<State>() <= size;
}

// a // b of the standard: to the nearest integer, halves away from zero; b is positive.
template <class T>
constexpr T divideRound(std::type_identity_t<T> a, T b) {
    return a < 0 ? -((b / 2 - a) / b) : (b / 2 + a) / b;
}

}  // namespace vekvc::mpeg4

#endif
