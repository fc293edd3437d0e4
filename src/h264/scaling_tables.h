// The constants of scaling and quantization: normAdjust4x4 and normAdjust8x8 (H.264 equations 8-315 and 8-318), the
// scales and forward multipliers derived from them, and the zig-zag scan.
#ifndef VEKVC_H264_SCALING_TABLES_H
#define VEKVC_H264_SCALING_TABLES_H

#include <cstdint>

#include "vekvc/types.h"

namespace vekvc::h264 {

// n values in raster order.
template <int n, class T>
struct Values {
    T v[n];

    constexpr T& operator[](int k) { return v[k]; }
    constexpr const T& operator[](int k) const { return v[k]; }
    constexpr T* data() { return v; }
    constexpr const T* data() const { return v; }
    constexpr T* begin() { return v; }
    constexpr T* end() { return v + n; }
};

template <int n>
using Scale = Values<n, Vek16s>;
template <int n>
using ScaleBySixths = Values<6, Scale<n>>;  // indexed by QP%6

inline constexpr int normValues4x4[6][3] = {{10, 16, 13}, {11, 18, 14}, {13, 20, 16},
                                            {14, 23, 18}, {16, 25, 20}, {18, 29, 23}};
inline constexpr int normValues8x8[6][6] = {{20, 18, 32, 19, 25, 24}, {22, 19, 35, 21, 28, 26},
                                            {26, 23, 42, 24, 33, 31}, {28, 25, 45, 26, 35, 33},
                                            {32, 28, 51, 30, 40, 38}, {36, 32, 58, 34, 46, 43}};
inline constexpr int forwardValues4x4[6][3] = {{13107, 5243, 8066}, {11916, 4660, 7490}, {10082, 4194, 6554},
                                               {9362, 3647, 5825},  {8192, 3355, 5243},  {7282, 2893, 4559}};

// Which of the three values holds at raster position k: both coordinates even, both odd, mixed.
constexpr int class4x4(int k) {
    const int i = k / 4, j = k % 4;
    return i % 2 == 0 && j % 2 == 0 ? 0 : i % 2 == 1 && j % 2 == 1 ? 1 : 2;
}

// The same for the six values of 8x8.
constexpr int class8x8(int k) {
    const int i = k / 8, j = k % 8;
    if (i % 4 == 0 && j % 4 == 0) return 0;
    if (i % 2 == 1 && j % 2 == 1) return 1;
    if (i % 4 == 2 && j % 4 == 2) return 2;
    if ((i % 4 == 0 && j % 2 == 1) || (i % 2 == 1 && j % 4 == 0)) return 3;
    if ((i % 4 == 0 && j % 4 == 2) || (i % 4 == 2 && j % 4 == 0)) return 4;
    return 5;
}

constexpr int normAdjust4x4(int m, int k) { return normValues4x4[m][class4x4(k)]; }
constexpr int normAdjust8x8(int m, int k) { return normValues8x8[m][class8x8(k)]; }

// Forward multiplier of an 8x8 position: with basis functions of squared norm N (in units where the DC basis is all
// ones: 8 for rows 0 and 4, 289/32 for odd rows, 5 for rows 2 and 6), quantization and scaling cancel if multiplier *
// normAdjust * N_i * N_j = 2^24. Rounded to nearest.
constexpr int forwardMultiplier8x8(int m, int k) {
    constexpr auto norm32 = [](int i) { return i % 4 == 0 ? 256 : i % 2 == 1 ? 289 : 160; };  // 32 * N
    const std::int64_t divisor = std::int64_t{normAdjust8x8(m, k)} * norm32(k / 8) * norm32(k % 8);
    return static_cast<int>(((std::int64_t{1} << 34) + divisor / 2) / divisor);
}

// LevelScale4x4 with the flat weight 16.
inline constexpr ScaleBySixths<16> flatLevelScale4x4 = [] {
    ScaleBySixths<16> scale{};
    for (int m = 0; m < 6; ++m)
        for (int k = 0; k < 16; ++k) scale[m][k] = static_cast<Vek16s>(16 * normAdjust4x4(m, k));
    return scale;
}();

// Flat scaling for QP 0 to 51 in one product: normAdjust4x4 << (QP/6). No rounding is lost, since the flat
// LevelScale4x4 is a multiple of 16.
inline constexpr Values<52, Scale<16>> flatMultipliers4x4 = [] {
    Values<52, Scale<16>> scale{};
    for (int qp = 0; qp < 52; ++qp)
        for (int k = 0; k < 16; ++k) scale[qp][k] = static_cast<Vek16s>(normAdjust4x4(qp % 6, k) << qp / 6);
    return scale;
}();

// The forward multipliers without weights.
inline constexpr ScaleBySixths<16> forwardMultipliers4x4 = [] {
    ScaleBySixths<16> scale{};
    for (int m = 0; m < 6; ++m)
        for (int k = 0; k < 16; ++k) scale[m][k] = static_cast<Vek16s>(forwardValues4x4[m][class4x4(k)]);
    return scale;
}();

// The same for 8x8 blocks, with the normAdjust8x8 to which they belong.
inline constexpr ScaleBySixths<64> normAdjusts8x8 = [] {
    ScaleBySixths<64> scale{};
    for (int m = 0; m < 6; ++m)
        for (int k = 0; k < 64; ++k) scale[m][k] = static_cast<Vek16s>(normAdjust8x8(m, k));
    return scale;
}();
inline constexpr ScaleBySixths<64> forwardMultipliers8x8 = [] {
    ScaleBySixths<64> scale{};
    for (int m = 0; m < 6; ++m)
        for (int k = 0; k < 64; ++k) scale[m][k] = static_cast<Vek16s>(forwardMultiplier8x8(m, k));
    return scale;
}();

// The weights of levels in SP slices: normAdjust4x4 * A (8.6.1).
inline constexpr ScaleBySixths<16> spWeights4x4 = [] {
    constexpr int a[3] = {16, 25, 20};
    ScaleBySixths<16> scale{};
    for (int m = 0; m < 6; ++m)
        for (int k = 0; k < 16; ++k) scale[m][k] = static_cast<Vek16s>(normAdjust4x4(m, k) * a[class4x4(k)]);
    return scale;
}();

// Scan index of each raster position of the zig-zag scan (8.5.6).
inline constexpr Scale<16> zigzagPosition = {{0, 1, 5, 6, 2, 4, 7, 12, 3, 8, 11, 13, 9, 10, 14, 15}};

}  // namespace vekvc::h264

#endif
