#include "h264/cabac_residual.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

namespace vekdec::h264 {
namespace {

// ctxBlockCat, Table 9-42.
enum BlockCategory : int { kLumaDc, kLumaAc, kLuma4x4, kChromaDc, kChromaAc, kLuma8x8 };

// ctxBlockCatOffset, Table 9-40; that of coded_block_flag is 4 * ctxBlockCat.
constexpr int kSignificantOffset[5] = {0, 15, 29, 44, 47};  // and of the last ones
constexpr int kLevelOffset[5] = {0, 10, 20, 30, 39};

// Table 9-43: ctxIdxInc of 8x8 blocks by coefficient. significant_coeff_flag: [0] frame, [1] field.
constexpr std::uint8_t kSignificant8x8[2][63] = {
    {0, 1, 2,  3,  4,  5,  5, 4, 4, 3, 3,  4,  4, 4, 5, 5,  4,  4,  4,  4, 3, 3,  6,  7, 7,  7,  8,  9,  10, 9,  8, 7,
     7, 6, 11, 12, 13, 11, 6, 7, 8, 9, 14, 10, 9, 8, 6, 11, 12, 13, 11, 6, 9, 14, 10, 9, 11, 12, 13, 11, 14, 10, 12},
    {0,  1,  1,  2,  2,  3,  3,  4,  5,  6,  7,  7,  7, 8,  4,  5,  6,  9,  10, 10, 8,
     11, 12, 11, 9,  9,  10, 10, 8,  11, 12, 11, 9,  9, 10, 10, 8,  11, 12, 11, 9,  9,
     10, 10, 8,  13, 13, 9,  9,  10, 10, 8,  13, 13, 9, 9,  10, 10, 14, 14, 14, 14, 14}};
constexpr std::uint8_t kLast8x8[63] = {0, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 2, 2, 2, 2, 2,
                                       2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 3, 3, 3, 3, 3, 3, 3, 3, 4, 4,
                                       4, 4, 4, 4, 4, 4, 5, 5, 5, 5, 6, 6, 6, 6, 7, 7, 7, 7, 8, 8, 8};

// Raster positions of chroma DC coefficients: 2x2, and 2x4 (8.5.11.1).
constexpr std::uint8_t kDcOrder420[4] = {0, 1, 2, 3};
constexpr std::uint8_t kDcOrder422[8] = {0, 2, 1, 4, 6, 3, 5, 7};

// How the contexts of the significance map go on from coefficient to coefficient.
struct OneByOne {  // 4x4 blocks, and the DC of 4:2:0, where Min(i, 2) is i
    static int significant(int i) { return i; }
    static int last(int i) { return i; }
};
struct Dc422 {
    static int significant(int i) { return std::min(i / 2, 2); }
    static int last(int i) { return std::min(i / 2, 2); }
};
struct Blocks8x8 {
    const std::uint8_t* increments;
    int significant(int i) const { return increments[i]; }
    static int last(int i) { return kLast8x8[i]; }
};

template <typename Coeff>
struct Parser {
    CabacEngine& engine;
    std::uint8_t* const contexts;
    const bool field;
    Coeff* next;

    bool codedBlockFlag(BlockCategory category, unsigned left, unsigned above) {
        return engine.decide(contexts[kCtxCodedBlockFlag + 4 * category + static_cast<int>(left + 2 * above)]);
    }

    // residual_block_cabac() behind coded_block_flag: coefficients 0 to `last`, of which the first comes to scan[0], in
    // a block of `size`.
    template <typename Increments, typename Scan>
    [[gnu::noinline]] void block(BlockCategory category, Increments increments, int last, const Scan* scan, int size) {
        std::uint8_t *significant, *lastOne, *level;
        if constexpr (std::is_same_v<Increments, Blocks8x8>) {
            significant = contexts + (field ? kCtxSignificant8x8Field : kCtxSignificant8x8Frame);
            lastOne = contexts + (field ? kCtxLast8x8Field : kCtxLast8x8Frame);
            level = contexts + kCtxCoeffAbsLevel8x8;
        } else {
            const int offset = kSignificantOffset[category];
            significant = contexts + (field ? kCtxSignificantField : kCtxSignificantFrame) + offset;
            lastOne = contexts + (field ? kCtxLastField : kCtxLastFrame) + offset;
            level = contexts + kCtxCoeffAbsLevel + kLevelOffset[category];
        }
        CabacEngine e = engine;  // in registers
        std::uint8_t positions[64];
        int count = 0;
        for (int i = 0;; ++i) {
            if (i == last) {  // no flag: the only one left
                positions[count++] = static_cast<std::uint8_t>(scan[i]);
                break;
            }
            if (!e.decide(significant[increments.significant(i)])) continue;
            positions[count++] = static_cast<std::uint8_t>(scan[i]);
            if (e.decide(lastOne[increments.last(i)])) break;
        }
        // Copied, since compilers make a string instruction, slow to start, of a fill.
        static constexpr Coeff kZeros[64] = {};
        std::memcpy(next, kZeros, static_cast<std::size_t>(size) * sizeof(Coeff));
        static constexpr std::uint8_t kAfterOne[5] = {0, 2, 3, 4, 4};
        // The levels come last first. Contexts of the first bin: 1 to 4 by the ones so far, 0 behind a larger level;
        // of the others: 5 and on by the larger levels so far.
        const int mostLarger = 9 - (category == kChromaDc);
        unsigned first = 1;
        int larger = 5;
        do {
            std::uint32_t magnitude = 1;
            if (!e.decide(level[first])) {
                first = kAfterOne[first];
            } else {
                constexpr std::uint32_t kEscape = 15;  // 14 bins of the prefix are ones
                std::uint8_t& context = level[larger];
                for (magnitude = 2; magnitude < kEscape && e.decide(context);) ++magnitude;
                if (magnitude == kEscape) {
                    CabacEngine escape = e;  // whose address may be taken
                    magnitude += escape.expGolomb(0);
                    e = escape;
                }
                first = 0;
                larger = std::min(larger + 1, mostLarger);
            }
            const std::uint32_t sign = e.bypassMask();
            next[positions[--count]] = static_cast<Coeff>((magnitude ^ sign) - sign);
        } while (count > 0);
        engine = e;
        next += size;
    }
};

// Coded-block flags of blocks around and in the macroblock: bit (y + 1) * 8 + x + 1 for block x, y.
struct FlagGrid {
    static constexpr int kStep = 8;
    std::uint64_t bits = 0;

    static int at(int x, int y) { return (y + 1) * kStep + x + 1; }
    unsigned left(int i) const { return bits >> (i - 1) & 1; }
    unsigned above(int i) const { return bits >> (i - kStep) & 1; }
    void set(int i, std::uint64_t flags = 1) { bits |= flags << i; }
};

FlagGrid gatherLuma(const CodedAround& around) {
    FlagGrid grid;
    grid.set(FlagGrid::at(0, -1), around.above.luma >> 12);
    for (int y = 0; y < 4; ++y) {
        const int entry = around.rows->luma[y];
        grid.set(FlagGrid::at(-1, y), around.left[entry >> 2].luma >> (4 * (entry & 3) + 3) & 1u);
    }
    return grid;
}

FlagGrid gatherChroma(const CodedAround& around, std::size_t component, int rows) {
    FlagGrid grid;
    grid.set(FlagGrid::at(0, -1), around.above.chroma[component] >> (2 * (rows - 1)) & 3u);
    for (int y = 0; y < rows; ++y) {
        const int entry = rows == 2 ? around.rows->chroma420[y] : around.rows->chroma422[y];
        grid.set(FlagGrid::at(-1, y), around.left[entry >> 2].chroma[component] >> (2 * (entry & 3) + 1) & 1u);
    }
    return grid;
}

}  // namespace

template <typename Coeff>
Coeff* parseCabacResidual(CabacEngine& engine, CabacContexts& contexts, const CodedAround& around, int chromaFormatIdc,
                          Macroblock& mb, CodedBlocks& coded, Residual<Coeff>& residual) {
    Parser<Coeff> parser{engine, contexts.data(), mb.field, residual.coeffs};
    const Vek32s* const scan = kScan4x4[mb.field];
    const bool is16x16 = mb.type == MbType::I16x16, is422 = chromaFormatIdc == 2;
    const CodedBlocks &left = around.left[around.rows->luma[0] >> 2], &above = around.above;
    Vek32u bits = 0, bitsChroma = 0;
    if (is16x16 && parser.codedBlockFlag(kLumaDc, left.dc & 1u, above.dc & 1u)) {
        parser.block(kLumaDc, OneByOne{}, 15, scan, 16);
        coded.dc = 1;
        bits = 1;
    }
    if ((mb.codedBlockPattern & 15) != 0) {
        unsigned flags = 0;
        if (mb.transform8x8) {
            for (int quadrant = 0; quadrant < 4; ++quadrant) {
                if ((mb.codedBlockPattern >> quadrant & 1) == 0) continue;
                parser.block(kLuma8x8, Blocks8x8{kSignificant8x8[mb.field]}, 63, kScan8x8[mb.field], 64);
                bits |= 2u << (4 * quadrant);
                flags |= 0x33u << (quadrant % 2 * 2 + quadrant / 2 * 8);
            }
        } else {
            FlagGrid grid = gatherLuma(around);
            const BlockCategory category = is16x16 ? kLumaAc : kLuma4x4;
            for (int i = 0; i < 16; ++i) {
                if ((mb.codedBlockPattern >> (i / 4) & 1) == 0) continue;
                const int raster = kBlockRaster[i], at = FlagGrid::at(raster & 3, raster >> 2);
                if (!parser.codedBlockFlag(category, grid.left(at), grid.above(at))) continue;
                parser.block(category, OneByOne{}, 15 - is16x16, scan + is16x16, 16);
                grid.set(at);
                bits |= 2u << i;
                flags |= 1u << raster;
            }
        }
        coded.luma = mb.nonZero = static_cast<std::uint16_t>(flags);
    }
    if (chromaFormatIdc != 0 && mb.codedBlockPattern >> 4 != 0) {
        for (unsigned component = 0; component < 2; ++component) {
            if (!parser.codedBlockFlag(kChromaDc, left.dc >> (1 + component) & 1u, above.dc >> (1 + component) & 1u))
                continue;
            if (is422)
                parser.block(kChromaDc, Dc422{}, 7, kDcOrder422, 8);
            else
                parser.block(kChromaDc, OneByOne{}, 3, kDcOrder420, 4);
            coded.dc = static_cast<std::uint8_t>(coded.dc | 2u << component);
            (is422 ? bitsChroma : bits) |= (is422 ? 1u : 1u << 17) << component;
        }
    }
    if (chromaFormatIdc != 0 && mb.codedBlockPattern >> 4 == 2) {
        const int rows = is422 ? 4 : 2;
        for (std::size_t component = 0; component < 2; ++component) {
            FlagGrid grid = gatherChroma(around, component, rows);
            unsigned flags = 0;
            for (int i = 0; i < 2 * rows; ++i) {
                const int at = FlagGrid::at(i % 2, i / 2);
                if (!parser.codedBlockFlag(kChromaAc, grid.left(at), grid.above(at))) continue;
                parser.block(kChromaAc, OneByOne{}, 14, scan + 1, 16);
                grid.set(at);
                flags |= 1u << i;
            }
            coded.chroma[component] = static_cast<std::uint8_t>(flags);
            if (is422)
                bitsChroma |= flags << (2 + 8 * component);
            else
                bits |= flags << (19 + 4 * component);
        }
    }
    residual.coded = bits;
    residual.codedChroma = bitsChroma;
    return parser.next;
}

template Vek16s* parseCabacResidual<Vek16s>(CabacEngine&, CabacContexts&, const CodedAround&, int, Macroblock&,
                                            CodedBlocks&, Residual<Vek16s>&);
template Vek32s* parseCabacResidual<Vek32s>(CabacEngine&, CabacContexts&, const CodedAround&, int, Macroblock&,
                                            CodedBlocks&, Residual<Vek32s>&);

}  // namespace vekdec::h264
