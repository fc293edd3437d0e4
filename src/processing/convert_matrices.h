// Luma and chroma of ITU-R BT.601 and BT.709 from and to R, G, B, in limited and full range.
#ifndef VEKVC_PROCESSING_CONVERT_MATRICES_H
#define VEKVC_PROCESSING_CONVERT_MATRICES_H

#include "vekvc/types.h"

namespace vekvc::processing {

// In units of 1/8192; all fit 16 signed bits, so that two products are one multiply-add.
struct ToBgr {
    int black;  // the luma code of black
    int y, crToR, cbToG, crToG, cbToB;
};
inline constexpr ToBgr kToBgr[4] = {
    {16, 9539, 13075, 3209, 6660, 16525},  // BT.601, luma 16..235, chroma 16..240
    {16, 9539, 14686, 1747, 4366, 17305},  // BT.709, likewise
    {0, 8192, 11485, 2819, 5850, 14516},   // BT.601, full range
    {0, 8192, 12901, 1535, 3835, 15201},   // BT.709, full range
};

// In units of 1/16384, for R, G, B.
struct FromBgr {
    int black;
    int y[3], cb[3], cr[3];
};
inline constexpr FromBgr kFromBgr[4] = {
    {16, {4207, 8260, 1604}, {-2428, -4768, 7196}, {7196, -6026, -1170}},
    {16, {2991, 10064, 1016}, {-1649, -5547, 7196}, {7196, -6536, -660}},
    {0, {4899, 9617, 1868}, {-2765, -5427, 8192}, {8192, -6860, -1332}},
    {0, {3483, 11718, 1183}, {-1877, -6315, 8192}, {8192, -7441, -751}},
};

constexpr bool isMatrix(Vek32s matrix) { return matrix >= 0 && matrix <= 3; }

}  // namespace vekvc::processing

#endif
