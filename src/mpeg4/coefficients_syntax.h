// What the two forms of the coefficient decoders share.
#ifndef VEKVC_MPEG4_COEFFICIENTS_SYNTAX_H
#define VEKVC_MPEG4_COEFFICIENTS_SYNTAX_H

#include "common/scan_tables.h"
#include "core/bits.h"
#include "mpeg4/coefficients_tables.h"

namespace vekvc::mpeg4 {

// How a block goes on where its table has no code: what follows an escape, and how the block ends.
enum class Syntax { mpeg4, reversible, h263, h261Intra, h261Inter };
constexpr bool isH261(Syntax syntax) { return syntax == Syntax::h261Intra || syntax == Syntax::h261Inter; }

// How a block is to be read.
struct BlockLayout {
    const Vek8u* scan;      // raster positions by scan index
    int start;              // scan index of the first coefficient, 0 or 1
    bool extended = false;  // EXTENDED-LEVEL may follow (H.263 annex T)
};

// The result of reading a block: the scan index of its last coefficient, or what is wrong with it.
inline constexpr int kNoCode = -1;   // the bits hold no code
inline constexpr int kPastEnd = -2;  // a coefficient behind index 63

// The table that the argument `scan` names.
inline const Vek8u* scanTable(Vek32s scan) {
    const Vek8u* table = nullptr;
    withScan(scan, [&]<const Vek8u(&named)[64]>() { table = named; });
    return table;
}

// The layouts of MPEG-4, and those of H.263 and H.261.
inline BlockLayout intraLayout(Vek32s noDCFlag, Vek32s scan) { return {scanTable(scan), noDCFlag != 0 ? 1 : 0}; }
inline BlockLayout interLayout(Vek32s scan) { return {scanTable(scan), 0}; }
constexpr BlockLayout zigzagLayout(int start, bool extended = false) { return {kZigzagScan, start, extended}; }

// Clears what the block's codes may fill.
inline void clearBlock(Vek16s* block, int start) {
    if (start == 0) store<Vek16s>(block, 0);
    std::memset(block + 1, 0, 63 * sizeof *block);
}

// The DC of MPEG-4 from the `size` bits behind its size (14496-2 6.3.8, dct_dc_differential): numbers whose first bit
// is 0 are negative.
constexpr Vek32s dcDifferential(Vek32u bits, int size) {
    const bool negative = size > 0 && bits >> (size - 1) == 0;
    return static_cast<Vek32s>(bits) - (negative ? (1 << size) - 1 : 0);
}

// INTRADC of H.263 (5.4.1) and H.261 (4.2.4.2) as a level; 0 for the two codes that are not used.
constexpr Vek32s dcLevel(Vek32u bits) { return bits == 128 ? 0 : bits == 255 ? 128 : static_cast<Vek32s>(bits); }

}  // namespace vekvc::mpeg4

#endif
