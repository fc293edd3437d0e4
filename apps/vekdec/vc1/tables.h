// The code tables of VC-1 as decode tables of the library, and the scans.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "bits/word_reader.h"
#include "vekvc.h"

namespace vekdec::vc1 {

// Bit-plane modes (IMODE).
enum class PlaneMode { Raw, Norm2, Norm6, RowSkip, ColumnSkip, Diff2, Diff6 };

// What the codes of a coding set stand for, in one value.
struct Coefficient {
    int last, run, level;
    static Coefficient unpack(int value) { return {value >> 16 & 1, value >> 8 & 0xff, value & 0xff}; }
    static int pack(int last, int run, int level) { return last << 16 | run << 8 | level; }
};
inline constexpr int kEscape = 1 << 17;

struct CoefficientSet {
    const Vek32s* table = nullptr;   // gives packed Coefficients, or kEscape
    std::uint8_t maxLevel[2][64]{};  // by last and run: escape mode 1 adds it
    std::uint8_t maxRun[2][64]{};    // by last and level: escape mode 2 adds it and 1
};

struct Tables {
    Tables();  // throws std::bad_alloc

    const Vek32s *planeMode, *norm2, *norm6;
    const Vek32s *range, *bFraction;        // MVRANGE, BFRACTION
    const Vek32s *dcLuma[2], *dcChroma[2];  // by TRANSDCTAB
    CoefficientSet coefficients[8];         // intra 0 to 3, inter 4 to 7: high rate, low, high motion, mid rate
    const Vek32s *mvData[4], *cbpI, *cbpP[4];
    const Vek32s *ttMb[3], *ttBlock[3], *subBlockPattern[3];  // by the class of PQUANT
    const Vek32s *fieldCbp[8], *fieldMvOne[4], *fieldMvTwo[8], *fourMvBlocks[4];
    const Vek32s *fieldMbMode[8], *fieldMbModeMixed[8];

  private:
    struct Free {
        void operator()(Vek32s* table) const { vekiHuffmanTableFree_32s(table); }
    };
    const Vek32s* keep(const std::vector<Vek32s>& list);
    const Vek32s* numbered(const char* codes, int first = 0);
    CoefficientSet coefficientSet(int index);
    std::vector<std::unique_ptr<Vek32s, Free>> tables_;
};

// Made when first asked for. Throws std::bad_alloc.
const Tables& tables();

// The code at the reader's cursor; BadSyntax names the element where no code matches.
int decode(WordReader& bits, const Vek32s* table, const char* element);

// Positions 8 * row + column by scan index.
extern const std::uint8_t kScanInter8x8[64], kScanIntra[64], kScanIntraHorizontal[64], kScanIntraVertical[64];
extern const std::uint8_t kScan8x4[32], kScan4x8[32], kScan8x4Advanced[32], kScan4x8Advanced[32], kScan4x4[16];
extern const std::uint8_t kScanInterlaced8x8[64], kScanInterlaced8x4[32], kScanInterlaced4x8[32],
    kScanInterlaced4x4[16];

}  // namespace vekdec::vc1
