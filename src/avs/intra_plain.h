// Intra prediction of 8x8 blocks as GB/T 20090.2 clause 9 defines it.
#ifndef VEKVC_AVS_INTRA_PLAIN_H
#define VEKVC_AVS_INTRA_PLAIN_H

#include "core/arith.h"
#include "core/memory.h"

namespace vekvc {

namespace avs {

// Neighbours of a block, as the exports' `availability` names them.
inline constexpr Vek32u kAbove = 1, kLeft = 2, kAboveLeft = 32, kAboveRight = 64, kBelowLeft = 128;
inline constexpr Vek32u kCorner = kAbove | kLeft | kAboveLeft;

inline constexpr int kLumaModes = 5, kChromaModes = 4;
// What a mode cannot do without: luma vertical, horizontal, DC, down-left, down-right; chroma DC, horizontal, vertical,
// plane.
inline constexpr Vek32u kLumaNeeds[kLumaModes] = {kAbove, kLeft, 0, kAbove | kLeft, kCorner};
inline constexpr Vek32u kChromaNeeds[kChromaModes] = {0, kLeft, kAbove, kCorner};

// The neighbours of luma block k of a macroblock with the neighbours `mb`.
constexpr Vek32u blockNeighbours(Vek32u mb, int k) {
    const bool above = (mb & kAbove) != 0, left = (mb & kLeft) != 0;
    switch (k) {
        case 0:
            return (mb & kCorner) | (above ? kAboveRight : 0) | (left ? kBelowLeft : 0);
        case 1:
            return kLeft | (above ? kAbove | kAboveLeft | (mb & kAboveRight) : 0);
        case 2:
            return kAbove | kAboveRight | (left ? kLeft | kAboveLeft : 0);
        default:
            return kCorner;
    }
}

}  // namespace avs

namespace plain {

// The neighbours of a block, from 1 on; what is missing is copied. Index 0 is the sample above left. Only what the
// prediction asks for is read.
struct AvsNeighbours {
    int t[18], l[18];

    AvsNeighbours(const MutableBlock<Vek8u>& b, Vek32u available, bool corner, int further) {
        const bool above = (available & avs::kAbove) != 0, left = (available & avs::kLeft) != 0;
        const bool right = above && (available & avs::kAboveRight) != 0;
        const bool below = left && (available & avs::kBelowLeft) != 0;
        for (int i = 1; i <= 8; ++i) {
            t[i] = above ? b(i - 1, -1) : 0;
            l[i] = left ? b(-1, i - 1) : 0;
        }
        for (int i = 9; i <= 16; ++i) {
            t[i] = right && i < 9 + further ? b(i - 1, -1) : t[8];
            l[i] = below && i < 9 + further ? b(-1, i - 1) : l[8];
        }
        t[17] = t[16], l[17] = l[16];
        t[0] = t[1], l[0] = l[1];
        if (corner && (available & avs::kCorner) == avs::kCorner) t[0] = l[0] = b(-1, -1);
    }
};
inline int filtered(const int (&a)[18], int i) { return (a[i - 1] + 2 * a[i] + a[i + 1] + 2) >> 2; }

inline void predictAvsVertical(const MutableBlock<Vek8u>& b) {
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) b.put(x, y, b(x, -1));
}
inline void predictAvsHorizontal(const MutableBlock<Vek8u>& b) {
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) b.put(x, y, b(-1, y));
}
inline void predictAvsDc(const MutableBlock<Vek8u>& b, Vek32u available) {
    const AvsNeighbours n(b, available, true, 1);
    const bool above = (available & avs::kAbove) != 0, left = (available & avs::kLeft) != 0;
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) {
            int value = 128;
            if (above && left) value = (filtered(n.t, x + 1) + filtered(n.l, y + 1)) >> 1;
            if (above && !left) value = filtered(n.t, x + 1);
            if (left && !above) value = filtered(n.l, y + 1);
            b.put(x, y, static_cast<Vek8u>(value));
        }
}
inline void predictAvsDownLeft(const MutableBlock<Vek8u>& b, Vek32u available) {
    const AvsNeighbours n(b, available, false, 8);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x)
            b.put(x, y, static_cast<Vek8u>((filtered(n.t, x + y + 2) + filtered(n.l, x + y + 2)) >> 1));
}
inline void predictAvsDownRight(const MutableBlock<Vek8u>& b) {
    const AvsNeighbours n(b, avs::kCorner, true, 0);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) {
            int value = (n.l[1] + 2 * n.t[0] + n.t[1] + 2) >> 2;
            if (x > y) value = filtered(n.t, x - y);
            if (x < y) value = filtered(n.l, y - x);
            b.put(x, y, static_cast<Vek8u>(value));
        }
}
inline void predictAvsPlane(const MutableBlock<Vek8u>& b) {
    const AvsNeighbours n(b, avs::kCorner, true, 0);
    int h = 0, v = 0;
    for (int i = 0; i < 4; ++i) {
        h += (i + 1) * (n.t[5 + i] - n.t[3 - i]);
        v += (i + 1) * (n.l[5 + i] - n.l[3 - i]);
    }
    const int slopeX = (17 * h + 16) >> 5, slopeY = (17 * v + 16) >> 5;
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) {
            const int sum = ((n.t[8] + n.l[8]) << 4) + (x - 3) * slopeX + (y - 3) * slopeY + 16;
            b.put(x, y, clip255(sum >> 5));
        }
}

}  // namespace plain
}  // namespace vekvc

#endif
