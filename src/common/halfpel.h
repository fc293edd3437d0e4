// The full- and half-sample positions of block prediction, and how the exports' mode arguments name them.
#ifndef VEKVC_COMMON_HALFPEL_H
#define VEKVC_COMMON_HALFPEL_H

#include "vekvc/types.h"

namespace vekvc {

enum class Half { none, vertical, horizontal, both };

// mcType: bits 3 and 2.
constexpr Half halfOfMcType(Vek32s mcType) { return static_cast<Half>(mcType >> 2 & 3); }

// acc: bits 1 and 0; 1 is horizontal and 2 vertical, the other way round than in mcType.
constexpr Half halfOfAcc(Vek32s acc) {
    if ((acc & 3) == 0) return Half::none;
    if ((acc & 1) == 0) return Half::vertical;
    return (acc & 2) == 0 ? Half::horizontal : Half::both;
}

// roundControl, rounding: bit 0.
constexpr int roundingOf(Vek32s control) { return control & 1; }

// A reference block and the position at which it is read.
struct Reference {
    const Vek8u* pixels;
    Vek32s step;
    Half half;
};

// Gives use<half, rounding>() for values known at run time.
template <class Use>
inline auto withCase(Half half, int rounding, Use&& use) {
    if (half == Half::none) [[likely]]
        return use.template operator()<Half::none, 0>();
    switch (half) {
        case Half::vertical:
            return rounding ? use.template operator()<Half::vertical, 1>()
                            : use.template operator()<Half::vertical, 0>();
        case Half::horizontal:
            return rounding ? use.template operator()<Half::horizontal, 1>()
                            : use.template operator()<Half::horizontal, 0>();
        default:
            return rounding ? use.template operator()<Half::both, 1>() : use.template operator()<Half::both, 0>();
    }
}

}  // namespace vekvc

#endif
