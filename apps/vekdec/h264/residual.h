// Residual data of a macroblock (H.264 7.3.5.3, 9.2): its coefficients as the packed stream that the library's
// reconstruction takes.
#pragma once

#include <array>
#include <memory>

#include "h264/neighbours.h"
#include "vekvc.h"

namespace vekdec::h264 {

// The decoding tables of clause 9.2, built once.
class CavlcTables {
  public:
    CavlcTables();

    const Vek32s* coeffToken[3];  // nC 0 and 1, 2 and 3, 4 to 7
    const Vek32s *coeffToken420Dc, *coeffToken422Dc;
    const Vek32s* totalZeros4x4[16] = {};
    const Vek32s* totalZeros2x2[4] = {};
    const Vek32s* totalZeros2x4[8] = {};
    const Vek32s* runBefore[15] = {};

  private:
    struct Release {
        void operator()(Vek32s* table) const { vekiHuffmanTableFree_32s(table); }
    };
    const Vek32s* build(const Vek32s* list);
    std::vector<std::unique_ptr<Vek32s, Release>> tables_;
};

// The coefficients of one macroblock in decoding order; 16 bits wide for 8-bit samples, 32 for others.
template <typename Coeff>
struct Residual {
    static constexpr int kMost = 16 + 256 + 2 * 8 + 2 * 128;
    Coeff* coeffs;           // as many as the bits say, kMost at most
    Vek32u coded = 0;        // the library's coded-block bits: luma, and chroma of 4:2:0
    Vek32u codedChroma = 0;  // those of 4:2:2 chroma
};

// Parses residual(): fills `residual`, whose coefficients have room for kMost, and the counts and bits of mb that
// neighbours and the deblocking filter read. mb.type, codedBlockPattern, transform8x8 and field are set. Returns the
// end of the coefficients. Throws BadSyntax.
template <typename Coeff>
Coeff* parseResidual(BitReader& bits, const CavlcTables& tables, const Neighbours& neighbours, int chromaFormatIdc,
                     Macroblock& mb, Residual<Coeff>& residual);

// The zig-zag scan of 8.5.6 and 8.5.7: raster positions by index. [0] frame, [1] field.
extern const Vek32s kScan4x4[2][16];
extern const std::uint8_t kScan8x8[2][64];
// Raster position of a 4x4 block in the macroblock by luma4x4BlkIdx (6.4.3), its own inverse.
inline constexpr std::uint8_t kBlockRaster[16] = {0, 1, 4, 5, 2, 3, 6, 7, 8, 9, 12, 13, 10, 11, 14, 15};

}  // namespace vekdec::h264
