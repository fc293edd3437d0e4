// The two kinds of state that callers hold: a specification buffer in the caller's own memory, and an allocated object.
#ifndef VEKVC_CORE_STATE_H
#define VEKVC_CORE_STATE_H

#include <cstdint>
#include <new>

#include "core/memory.h"
#include "vekcore.h"

namespace vekvc {

// ---- specification buffers: ...GetSize, ...Init, then the operations

// "RAMC" in memory order.
inline constexpr Vek32u kStateTag = 0x434d4152;

// What every specification buffer begins with.
struct TaggedState {
    Vek32u tag = kStateTag;
};

// The size that ...GetSize reports: the structure, and 15 bytes for its alignment to 16.
template <class State>
constexpr Vek32u specificationSize() {
    return sizeof(State) + 15;
}

// The structure's place in the caller's buffer: the first address that is a multiple of 16.
template <class State>
State* stateIn(void* buffer) {
    static_assert(alignof(State) <= 16);
    return reinterpret_cast<State*>((reinterpret_cast<std::uintptr_t>(buffer) + 15) & ~std::uintptr_t{15});
}
template <class State>
const State* stateIn(const void* buffer) {
    return stateIn<State>(const_cast<void*>(buffer));
}

// Was the buffer initialised? Operations ask right after their null checks; if not: vekStsErrContextMatch.
template <class State>
bool hasTag(const void* buffer) {
    return load<Vek32u>(stateIn<State>(buffer)) == kStateTag;
}

// ---- allocated state: ...InitAlloc and ...Free

// A header that owns one table; a header struct derives from it.
struct AllocatedState {
    void* table = nullptr;
};

// Allocates the header, stores it through ppState at once, then allocates its table. If the second allocation fails, or
// is larger than vekMalloc() can be asked for, the caller holds a header without table, which freeState() takes.
template <class State>
VekStatus allocateState(State** ppState, std::int64_t tableBytes) {
    void* memory = vekMalloc(static_cast<int>(sizeof(State)));
    if (memory == nullptr) return vekStsErrMemAlloc;
    State* state = new (memory) State;
    store(ppState, state);
    if (tableBytes <= INT32_MAX) state->table = vekMalloc(static_cast<int>(tableBytes));
    return state->table == nullptr ? vekStsErrMemAlloc : vekStsOk;
}

template <class State>
VekStatus freeState(State* state) {
    if (state == nullptr) return vekStsErrNullPtr;
    if (state->table != nullptr) vekFree(state->table);
    state->table = nullptr;
    vekFree(state);
    return vekStsOk;
}

}  // namespace vekvc

#endif
