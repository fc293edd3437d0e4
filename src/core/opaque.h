// Values that the compilers do not see through.
#ifndef VEKVC_CORE_OPAQUE_H
#define VEKVC_CORE_OPAQUE_H

namespace vekvc {

// The same number or pointer, in a general register, of which nothing more is known: what the compilers would do with
// its origin (share address arithmetic between cases and spill it, gather fields of a record in one vector load, build
// constants in registers) is not done. Each use says which.
template <class T>
[[gnu::always_inline]] inline T opaque(T value) {
    asm("" : "+r"(value));
    return value;
}

}  // namespace vekvc

#endif
