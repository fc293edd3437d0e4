// The bases of the VC-1 transforms: row k is the basis of coefficient k.
#ifndef VEKVC_VC1_TRANSFORM_TABLES_H
#define VEKVC_VC1_TRANSFORM_TABLES_H

#include "vekvc/types.h"

namespace vekvc::vc1 {

template <int N>
struct Basis {
    Vek16s at[N][N];
};

// The inverse transform (SMPTE 421M annex A).
inline constexpr Basis<8> kInverse8 = {{{12, 12, 12, 12, 12, 12, 12, 12},
                                        {16, 15, 9, 4, -4, -9, -15, -16},
                                        {16, 6, -6, -16, -16, -6, 6, 16},
                                        {15, -4, -16, -9, 9, 16, 4, -15},
                                        {12, -12, -12, 12, 12, -12, -12, 12},
                                        {9, -16, 4, 15, -15, -4, 16, -9},
                                        {6, -16, 16, -6, -6, 16, -16, 6},
                                        {4, -9, 15, -16, 16, -15, 9, -4}}};
inline constexpr Basis<4> kInverse4 = {{{17, 17, 17, 17}, {22, 10, -10, -22}, {17, -17, -17, 17}, {10, -22, 22, -10}}};

// The forward transform, the library's own: the inverse's rows scaled by 2^21 (4 points: 2^20) over their squared norm,
// so that a forward and an inverse transform give the residual back.
inline constexpr Basis<8> kForward8 = {{{21845, 21845, 21845, 21845, 21845, 21845, 21845, 21845},
                                        {29026, 27212, 16327, 7257, -7257, -16327, -27212, -29026},
                                        {28728, 10773, -10773, -28728, -28728, -10773, 10773, 28728},
                                        {27212, -7257, -29026, -16327, 16327, 29026, 7257, -27212},
                                        {21845, -21845, -21845, 21845, 21845, -21845, -21845, 21845},
                                        {16327, -29026, 7257, 27212, -27212, -7257, 29026, -16327},
                                        {10773, -28728, 28728, -10773, -10773, 28728, -28728, 10773},
                                        {7257, -16327, 27212, -29026, 29026, -27212, 16327, -7257}}};
inline constexpr Basis<4> kForward4 = {{{15420, 15420, 15420, 15420},
                                        {19751, 8978, -8978, -19751},
                                        {15420, -15420, -15420, 15420},
                                        {8978, -19751, 19751, -8978}}};

template <int N>
constexpr const Basis<N>& inverseBasis() {
    if constexpr (N == 8)
        return kInverse8;
    else
        return kInverse4;
}
template <int N>
constexpr const Basis<N>& forwardBasis() {
    if constexpr (N == 8)
        return kForward8;
    else
        return kForward4;
}

// The forward passes' shifts: rows of W samples, columns of H.
template <int W>
inline constexpr int kForwardRowShift = W == 8 ? 12 : 11;
template <int H>
inline constexpr int kForwardColumnShift = H == 8 ? 20 : 19;

}  // namespace vekvc::vc1

#endif
