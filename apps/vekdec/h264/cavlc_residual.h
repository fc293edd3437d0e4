// residual() in CAVLC (H.264 7.3.5.3, 9.2).
#pragma once

#include <memory>
#include <vector>

#include "h264/neighbours.h"
#include "h264/residual.h"
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

// Parses residual(): fills `residual`, whose coefficients have room for kMost, and the counts and bits of mb that
// neighbours and the deblocking filter read. mb.type, codedBlockPattern, transform8x8 and field are set. Returns the
// end of the coefficients. Throws BadSyntax.
template <typename Coeff>
Coeff* parseCavlcResidual(BitReader& bits, const CavlcTables& tables, const Neighbours& neighbours, int chromaFormatIdc,
                          Macroblock& mb, Residual<Coeff>& residual);

}  // namespace vekdec::h264
