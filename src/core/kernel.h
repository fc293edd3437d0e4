// The switch between the forms of every kernel: `kernel` is the plain definition or the fast form, for the whole
// library, decided when it is compiled. An operation's .cpp includes its _plain.h and, if VEKVC_SIMD is set, its
// _simd.h, and calls kernel::name; a fast form that has nothing to add says `using plain::name;`. Where 512 bits gain,
// an _simd512.h, included if VEKVC_VECTOR512 is set, holds that form of the names that gain; the others stay those of
// _simd.h.
#ifndef VEKVC_CORE_KERNEL_H
#define VEKVC_CORE_KERNEL_H

#include <type_traits>

#include "core/simd/level.h"
#include "vekvc/types.h"

namespace vekvc {

namespace plain {}
namespace simd {}
namespace simd512 {
using namespace simd;  // what is looked up here and not declared here
}

#if !VEKVC_SIMD
namespace kernel = plain;
#elif VEKVC_VECTOR512
namespace kernel = simd512;
#else
namespace kernel = simd;
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
