// The switch between the two forms of every kernel: `kernel` is the plain definition or the fast form, for the whole
// library, decided when it is compiled. An operation's .cpp includes its _plain.h and, if VEKVC_SIMD is set, its
// _simd.h, and calls kernel::name; a fast form that has nothing to add says `using plain::name;`.
#ifndef VEKVC_CORE_KERNEL_H
#define VEKVC_CORE_KERNEL_H

#include <type_traits>

#include "vekvc/types.h"

namespace vekvc {

namespace plain {}
namespace simd {}

#if VEKVC_SIMD
namespace kernel = simd;
#else
namespace kernel = plain;
#endif

// Ends an export with its kernel. Definitions return nothing; a fast form may end with the export's status, vekStsOk,
// so that the export is one jump to it.
template <class Call>
[[gnu::always_inline]] inline VekStatus finish(Call&& call) {
    if constexpr (std::is_void_v<decltype(call())>) {
        call();
        return vekStsOk;
    } else {
        return call();
    }
}

}  // namespace vekvc

#endif
