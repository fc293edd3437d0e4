// Residual data of a macroblock (H.264 7.3.5.3): its coefficients as the packed stream that the library takes.
#pragma once

#include <cstdint>

#include "vekvc/types.h"

namespace vekdec::h264 {

// The coefficients of one macroblock in decoding order; 16 bits wide for 8-bit samples, 32 for others.
template <typename Coeff>
struct Residual {
    static constexpr int kMost = 16 + 256 + 2 * 8 + 2 * 128;
    Coeff* coeffs;           // as many as the bits say, kMost at most
    Vek32u coded = 0;        // the library's coded-block bits: luma, and chroma of 4:2:0
    Vek32u codedChroma = 0;  // those of 4:2:2 chroma
};

// The zig-zag scan of 8.5.6 and 8.5.7: raster positions by index. [0] frame, [1] field.
extern const Vek32s kScan4x4[2][16];
extern const std::uint8_t kScan8x8[2][64];
// Raster position of a 4x4 block in the macroblock by luma4x4BlkIdx (6.4.3), its own inverse.
inline constexpr std::uint8_t kBlockRaster[16] = {0, 1, 4, 5, 2, 3, 6, 7, 8, 9, 12, 13, 10, 11, 14, 15};

}  // namespace vekdec::h264
