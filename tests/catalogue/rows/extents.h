// Extents that several families' rows share.
#ifndef VEKVC_TESTS_EXTENTS_H
#define VEKVC_TESTS_EXTENTS_H

#include "catalogue.h"

namespace catalogue {

// A block at the half-sample position that the named mcType argument chooses; `next` is the distance to the horizontal
// neighbour.
inline Extent atMcType(int width, int height, const char* argument, int next = 1) {
    return [=](const Call& c) {
        const auto mcType = c[argument];
        return Rect{0, 0, width + (mcType & 8 ? next : 0), height + (mcType & 4 ? 1 : 0)};
    };
}
// The same for the argument acc.
inline Extent atAcc(int width, int height) {
    return [=](const Call& c) { return Rect{0, 0, width + (c["acc"] & 1 ? 1 : 0), height + (c["acc"] & 2 ? 1 : 0)}; };
}

}  // namespace catalogue

#endif
