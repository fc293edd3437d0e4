// The code tables of the MPEG-1/MPEG-2 macroblock layer (ISO 13818-2 Annex B) as decode tables of the library, scans
// and quantizer scales.
#pragma once

#include <memory>
#include <vector>

#include "bits/scan.h"
#include "bits/word_reader.h"
#include "vekvc.h"

namespace vekdec::mpeg12 {

// macroblock_type (Tables B.2 to B.4) as bits.
enum MacroblockFlags : unsigned { kQuant = 1, kForward = 2, kBackward = 4, kPattern = 8, kIntra = 16 };

// What macroblock_address_increment stands for besides 1 to 33.
inline constexpr int kAddressEscape = 34, kAddressStuffing = 35;

struct Tables {
    Tables();  // throws std::bad_alloc

    const Vek32s* addressIncrement;   // B.1
    const Vek32s* macroblockType[5];  // B.2 to B.4 and D pictures, by picture_coding_type
    const Vek32s* codedBlockPattern;  // B.9
    const Vek32s* motionCode;         // B.10, magnitude; a sign follows
    const Vek32s* dmvector;           // B.11
    const Vek32s* dcSize[2];          // B.12 luma, B.13 chroma
    const Vek32s* coefficients[2];    // B.14, B.15

  private:
    struct Free {
        void operator()(Vek32s* table) const { vekiHuffmanTableFree_32s(table); }
    };
    const Vek32s* keep(Vek32s* table, VekStatus status);
    std::vector<std::unique_ptr<Vek32s, Free>> tables_;
};

// The code at the reader's cursor; BadSyntax names the element where no code matches.
int decode(WordReader& bits, const Vek32s* table, const char* element);

extern const Vek32s kAlternateScan[64];         // raster position by scan index (7.3)
extern const Vek16s kDefaultIntraMatrix[64];    // 6.3.11, raster order
extern const std::uint8_t kNonLinearScale[32];  // Table 7-6, q_scale_type 1

}  // namespace vekdec::mpeg12
