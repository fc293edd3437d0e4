// residual() in CABAC (H.264 7.3.5.3.3, 9.3.3.1.1.9, 9.3.3.1.3).
#pragma once

#include "h264/cabac_contexts.h"
#include "h264/cabac_engine.h"
#include "h264/neighbours.h"
#include "h264/residual.h"

namespace vekdec::h264 {

// Which blocks of a macroblock have coefficients: their coded_block_flag, and what is inferred where none comes.
struct CodedBlocks {
    std::uint16_t luma = 0;                // 4x4 blocks (8x8: all four of the quadrant), raster order
    std::uint8_t dc = 0;                   // bit 0 Intra16x16DCLevel, bits 1 and 2 the DC of Cb and Cr
    std::array<std::uint8_t, 2> chroma{};  // AC of Cb and Cr, raster order (two wide)

    static constexpr CodedBlocks all() { return {0xffff, 7, {0xff, 0xff}}; }
};

// Those of the neighbours.
struct CodedAround {
    CodedBlocks above, left[2];  // as Neighbours::left
    const LeftRows* rows;
};

// Parses residual(): fills `residual`, whose coefficients have room for kMost, `coded`, and mb.nonZero. mb.type,
// codedBlockPattern, transform8x8 and field are set. Returns the end of the coefficients. Throws BadSyntax.
template <typename Coeff>
Coeff* parseCabacResidual(CabacEngine& engine, CabacContexts& contexts, const CodedAround& around, int chromaFormatIdc,
                          Macroblock& mb, CodedBlocks& coded, Residual<Coeff>& residual);

}  // namespace vekdec::h264
