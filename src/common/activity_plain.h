// What the rows and neighbouring samples of one block differ by: activity in frame and field order, edges. The
// definition.
#ifndef VEKVC_COMMON_ACTIVITY_PLAIN_H
#define VEKVC_COMMON_ACTIVITY_PLAIN_H

#include "core/memory.h"

namespace vekvc::plain {

// The sums of |p(x, y) - p(x, y + 1)| within rows 0 to 7 and 8 to 15, and of |p(x, y) - p(x, y + 2)|: 14 pairs of rows
// each. 14 * 16 * 65535 fits 32 bits.
struct FrameField {
    Vek32s frame, field;
};
template <class T>
FrameField activityFrameField(Block<T> p) {
    const auto distance = [&](int x, int y, int toRow) {
        const int difference = p(x, y) - p(x, toRow);
        return difference < 0 ? -difference : difference;
    };
    FrameField sums = {0, 0};
    for (int y = 0; y < 14; ++y)
        for (int x = 0; x < 16; ++x) {
            const int inFrame = y < 7 ? y : y + 1;  // row 7 has no neighbour in its 8x8 blocks
            sums.frame += distance(x, inFrame, inFrame + 1);
            sums.field += distance(x, y, y + 2);
        }
    return sums;
}

// How many of the 240 horizontal and 240 vertical pairs of neighbours in a 16x16 block differ by more than `level`.
inline Vek32s countEdges(Block<Vek8u> s, Vek32s level) {
    Vek32s count = 0;
    const auto compare = [&](int a, int b) { count += (a < b ? b - a : a - b) > level; };
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x) {
            if (x < 15) compare(s(x, y), s(x + 1, y));
            if (y < 15) compare(s(x, y), s(x, y + 1));
        }
    return count;
}

}  // namespace vekvc::plain

#endif
